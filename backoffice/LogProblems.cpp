#include "backoffice/LogProblems.h"

namespace kitra::backoffice {
namespace {

constexpr std::string_view kErrorMark = "## Erro ##";
constexpr std::string_view kLogNotRead = "Erro na leitura do ficheiro de log";
constexpr std::string_view kLeftOut = "Não foi possível adicionar";
// Between a line's section and its text.
constexpr std::string_view kSectionSeparator = " - ";

bool StartsWith(std::string_view text, std::string_view start) {
    return text.substr(0, start.size()) == start;
}

}  // namespace

LogProblems CountLogProblems(std::string_view contents) {
    LogProblems problems;
    while (!contents.empty()) {
        const std::size_t end = contents.find('\n');
        std::string_view line = contents.substr(0, end);
        contents = end == std::string_view::npos ? std::string_view() : contents.substr(end + 1);

        if (line.find(kErrorMark) != std::string_view::npos || StartsWith(line, kLogNotRead)) {
            ++problems.errors;
            continue;
        }
        const std::size_t separator = line.find(kSectionSeparator);
        if (separator != std::string_view::npos &&
            StartsWith(line.substr(separator + kSectionSeparator.size()), kLeftOut)) {
            ++problems.warnings;
        }
    }
    return problems;
}

}  // namespace kitra::backoffice
