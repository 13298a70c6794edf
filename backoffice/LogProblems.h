#pragma once
// For the terminal's log list: how many lines of an import log report an error and how many a
// tolerated, unexpected situation (a warning), read from the log's text alone.
#include <string_view>

namespace kitra::backoffice {

struct LogProblems {
    int errors = 0;
    int warnings = 0;
    bool operator==(const LogProblems&) const = default;
};

// An error line holds "## Erro ##" or says that the log file could not be read back; a warning
// line's text (after the section and " - ") starts with "Não foi possível adicionar", the
// words of every record an importer leaves out and goes on.
LogProblems CountLogProblems(std::string_view contents);

}  // namespace kitra::backoffice
