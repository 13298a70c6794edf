#pragma once
// Creating a registered class by its programmatic id, as the component platform does: on
// Windows through the system's component library (the class must be registered, by regsvr32);
// elsewhere through the component registry (core/ComponentRegistry.h), whose entry names the
// module that is loaded and asked for the class. A module is loaded once per process and stays
// loaded, so every object of a class made in one process comes from the same module.
#include <string>
#include <vector>

#include "host/Com.h"

namespace kitra::host {

// The class a caller asks for: its programmatic id, and the class id its module answers to
// (used where no registration maps the one to the other).
struct ClassName {
    std::string progId;
    Guid clsid;
};

// An object of the class that answers `iid`, with one reference for the caller. Where the
// platform has no registration for the class, the `fallbackModules` are tried in order (the
// first that exists); Windows uses registrations only. Fails with an Error that names the class
// and says why.
void* CreateObject(const ClassName& name, const Guid& iid,
                   const std::vector<std::string>& fallbackModules = {});

template <typename Interface>
ComPtr<Interface> CreateObject(const ClassName& name, const Guid& iid,
                               const std::vector<std::string>& fallbackModules = {}) {
    return ComPtr<Interface>(static_cast<Interface*>(CreateObject(name, iid, fallbackModules)));
}

}  // namespace kitra::host
