#include "core/Environment.h"

#include <cerrno>
#include <cstdlib>

namespace kitra {

long WholeNumberFromEnvironment(const char* variable, long standard, long lowest, long highest) {
    const char* text = std::getenv(variable);
    if (text == nullptr || *text == '\0') return standard;
    char* end = nullptr;
    errno = 0;
    const long value = std::strtol(text, &end, 10);
    if (errno != 0 || end == text || *end != '\0') return standard;
    return value >= lowest && value <= highest ? value : standard;
}

}  // namespace kitra
