#pragma once
// Settings a site or a test gives through the environment.
namespace kitra {

// The whole number the environment variable holds when it lies within [lowest, highest];
// `standard` when it is unset, empty, not a whole number, or out of that range.
long WholeNumberFromEnvironment(const char* variable, long standard, long lowest, long highest);

}  // namespace kitra
