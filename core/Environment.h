#pragma once
// Settings a site or a test gives through the environment or on a command line.
#include <optional>

namespace kitra {

// The whole number `text` holds when it is nothing but one and lies within [lowest, highest];
// nothing otherwise (also for null or empty text).
std::optional<long> WholeNumberWithin(const char* text, long lowest, long highest);

// The whole number the environment variable holds when it lies within [lowest, highest];
// `standard` when it is unset, empty, not a whole number, or out of that range.
long WholeNumberFromEnvironment(const char* variable, long standard, long lowest, long highest);

}  // namespace kitra
