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

// Calls `each` with every line of the text, without its line end (LF, or CR LF).
template <typename Each>
void ForEachLine(std::string_view contents, Each each) {
    while (!contents.empty()) {
        const std::size_t end = contents.find('\n');
        std::string_view line = contents.substr(0, end);
        contents = end == std::string_view::npos ? std::string_view() : contents.substr(end + 1);
        while (!line.empty() && line.back() == '\r') line.remove_suffix(1);
        each(line);
    }
}

bool IsErrorLine(std::string_view line) {
    return line.find(kErrorMark) != std::string_view::npos || StartsWith(line, kLogNotRead);
}

bool IsWarningLine(std::string_view line) {
    if (IsErrorLine(line)) return false;
    const std::size_t separator = line.find(kSectionSeparator);
    return separator != std::string_view::npos &&
           StartsWith(line.substr(separator + kSectionSeparator.size()), kLeftOut);
}

}  // namespace

LogProblems CountLogProblems(std::string_view contents) {
    LogProblems problems;
    ForEachLine(contents, [&problems](std::string_view line) {
        if (IsErrorLine(line)) {
            ++problems.errors;
        } else if (IsWarningLine(line)) {
            ++problems.warnings;
        }
    });
    return problems;
}

std::vector<std::string> WarningLines(std::string_view contents) {
    std::vector<std::string> lines;
    ForEachLine(contents, [&lines](std::string_view line) {
        if (IsWarningLine(line)) lines.emplace_back(line);
    });
    return lines;
}

std::vector<std::string> ErrorLines(std::string_view contents) {
    std::vector<std::string> lines;
    ForEachLine(contents, [&lines](std::string_view line) {
        if (IsErrorLine(line)) lines.emplace_back(line);
    });
    return lines;
}

}  // namespace kitra::backoffice
