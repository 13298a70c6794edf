#include "core/Environment.h"

#include <cerrno>
#include <cstdlib>

namespace kitra {

std::optional<long> WholeNumberWithin(const char* text, long lowest, long highest) {
    if (text == nullptr || *text == '\0') return std::nullopt;
    char* end = nullptr;
    errno = 0;
    const long value = std::strtol(text, &end, 10);
    if (errno != 0 || end == text || *end != '\0') return std::nullopt;
    if (value < lowest || value > highest) return std::nullopt;
    return value;
}

long WholeNumberFromEnvironment(const char* variable, long standard, long lowest, long highest) {
    return WholeNumberWithin(std::getenv(variable), lowest, highest).value_or(standard);
}

}  // namespace kitra
