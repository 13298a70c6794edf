#pragma once
// For the terminal's log list and a run's report: which lines of an import log report an error
// and how many a tolerated, unexpected situation (a warning), read from the log's text alone.
#include <string>
#include <string_view>
#include <vector>

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

// The error lines themselves, in the order they were written, without their line ends.
std::vector<std::string> ErrorLines(std::string_view contents);

// The warning lines themselves, in the order they were written, without their line ends.
std::vector<std::string> WarningLines(std::string_view contents);

}  // namespace kitra::backoffice
