#pragma once
// The file of the module (shared library, DLL or program) that holds a given address: how a
// component finds its own file to register it and the files installed beside it.
#include <string>

namespace kitra {

// Full path of the module holding `address`; empty when the system cannot tell.
std::string ModulePathOf(const void* address);

}  // namespace kitra
