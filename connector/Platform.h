#pragma once
// The few things that differ between platforms for an in-process component module.
#include <string>

#if defined(_WIN32)
#define KITRA_EXPORT __declspec(dllexport)
// The component module's four entry points are exported by its module definition file, under
// their plain names: a __declspec would add the 32-bit decorated names (DllGetClassObject@12).
#define KITRA_ENTRY_POINT
#else
#define KITRA_EXPORT __attribute__((visibility("default")))
#define KITRA_ENTRY_POINT KITRA_EXPORT
#endif

namespace kitra::connector {

// Full path of the module file that holds this code.
std::string ModulePath();

}  // namespace kitra::connector
