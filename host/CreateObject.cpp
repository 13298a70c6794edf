// Creating a class through the component registry: the module its entry names (or the first
// fallback module that exists) is loaded, and its class factory makes the object.
#include "host/CreateObject.h"

#include <dlfcn.h>

#include <filesystem>

#include "core/ComponentRegistry.h"
#include "core/Error.h"

namespace kitra::host {

void* CreateObject(const ClassName& name, const Guid& iid,
                   const std::vector<std::string>& fallbackModules) {
    const std::string& progId = name.progId;
    std::string module;
    Guid clsid = name.clsid;
    if (const auto entry = FindComponent(progId)) {
        module = entry->modulePath;
        if (const auto registered = GuidFromString(entry->clsid)) clsid = *registered;
    } else {
        for (const std::string& candidate : fallbackModules) {
            std::error_code ec;
            if (!candidate.empty() && std::filesystem::is_regular_file(candidate, ec)) {
                module = candidate;
                break;
            }
        }
        if (module.empty()) {
            throw Error("A classe '" + progId + "' não está registada no registo de componentes.");
        }
    }
    // Loaded once and kept: objects of the class may outlive whoever asked first.
    void* handle = ::dlopen(module.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    if (handle == nullptr) {
        const char* why = ::dlerror();
        throw Error("Não foi possível carregar o módulo '" + module + "' da classe '" + progId +
                    "': " + (why != nullptr ? why : "?"));
    }
    auto getClassObject =
        reinterpret_cast<DllGetClassObjectFn>(::dlsym(handle, "DllGetClassObject"));
    if (getClassObject == nullptr) {
        throw Error("O módulo '" + module + "' não é um componente (não tem DllGetClassObject).");
    }
    void* object = nullptr;
    bool noClass = false;
    const HResult result = CreateThroughClassFactory(getClassObject, clsid, iid, &object, noClass);
    if (noClass) {
        throw Error("O módulo '" + module + "' não dá a classe '" + progId + "' (" +
                    HResultText(result) + ").");
    }
    if (result != kOk) {
        throw Error("Não foi possível criar um objecto da classe '" + progId + "' (" +
                    HResultText(result) + ").");
    }
    return object;
}

}  // namespace kitra::host
