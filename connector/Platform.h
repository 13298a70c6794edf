#pragma once
// The few things that differ between platforms for an in-process component module.
#include <string>

#if defined(_WIN32)
#define KITRA_EXPORT __declspec(dllexport)
#else
#define KITRA_EXPORT __attribute__((visibility("default")))
#endif

namespace kitra::connector {

// Full path of the module file that holds this code.
std::string ModulePath();

}  // namespace kitra::connector
