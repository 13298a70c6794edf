#include "backoffice/cli/ComponentLoader.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "core/ComponentRegistry.h"
#include "core/Error.h"

#ifndef KITRA_CONNECTOR_MODULE_BUILT
#define KITRA_CONNECTOR_MODULE_BUILT ""
#endif
#ifndef KITRA_MODULE_FOLDER_FROM_PROGRAM
#define KITRA_MODULE_FOLDER_FROM_PROGRAM "../lib/kitra"
#endif

namespace kitra::backoffice::cli {
namespace fs = std::filesystem;

namespace {
// The class id of the connector this program was built with; the registry may name another.
constexpr host::Guid kBuiltConnectorClassId{
    0x3F6E9A24, 0x71C8, 0x4D5B, {0xA0, 0xE2, 0x8B, 0x9C, 0x4D, 0x17, 0xF5, 0xA6}};

fs::path ProgramFolder() {
    std::error_code ec;
    const fs::path self = fs::read_symlink("/proc/self/exe", ec);
    return ec ? fs::path() : self.parent_path();
}
}  // namespace

std::string InstalledModulePath(const std::string& fileName) {
    const fs::path folder = ProgramFolder();
    if (folder.empty()) return {};
    std::error_code ec;
    const fs::path module = (folder / KITRA_MODULE_FOLDER_FROM_PROGRAM / fileName).lexically_normal();
    return fs::exists(module, ec) ? module.string() : std::string();
}

ComponentModule::ComponentModule(const std::string& path) : path_(path) {
    handle_ = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle_ == nullptr) {
        const char* why = ::dlerror();
        throw Error("Não foi possível carregar o componente '" + path + "': " +
                    (why != nullptr ? why : "erro desconhecido"));
    }
    // A library that is not an in-process component lacks the entry points; it is refused here,
    // before anything of it is called.
    for (const char* entry :
         {"DllGetClassObject", "DllCanUnloadNow", "DllRegisterServer", "DllUnregisterServer"}) {
        if (::dlsym(handle_, entry) == nullptr) {
            ::dlclose(handle_);
            handle_ = nullptr;
            throw Error("'" + path + "' não é um componente: não exporta " + entry +
                        ". Indique o ficheiro POSConnectorKitra.so.");
        }
    }
}

ComponentModule::~ComponentModule() {
    if (handle_ != nullptr && CanUnloadNow()) ::dlclose(handle_);
}

void* ComponentModule::Symbol(const char* name) {
    void* symbol = ::dlsym(handle_, name);
    if (symbol == nullptr) {
        throw Error("O componente '" + path_ + "' não exporta " + name + ".");
    }
    return symbol;
}

host::HResult ComponentModule::RegisterServer() {
    return reinterpret_cast<host::DllRegisterServerFn>(Symbol("DllRegisterServer"))();
}

host::HResult ComponentModule::UnregisterServer() {
    return reinterpret_cast<host::DllUnregisterServerFn>(Symbol("DllUnregisterServer"))();
}

bool ComponentModule::CanUnloadNow() {
    return reinterpret_cast<host::DllCanUnloadNowFn>(Symbol("DllCanUnloadNow"))() == host::kOk;
}

host::ComPtr<host::IConnector> ComponentModule::CreateConnector(const host::Guid& clsid) {
    auto getClassObject =
        reinterpret_cast<host::DllGetClassObjectFn>(Symbol("DllGetClassObject"));
    host::ComPtr<host::IConnector> connector;
    bool noClass = false;
    const host::HResult result = host::CreateThroughClassFactory(
        getClassObject, clsid, host::kIID_IConnector, connector.Out(), noClass);
    if (noClass) {
        throw Error("O componente '" + path_ + "' não tem a classe " + host::GuidToString(clsid) +
                    " (" + host::HResultText(result) + ").");
    }
    if (result != host::kOk) {
        throw Error("Não foi possível criar o conector (" + host::HResultText(result) + ").");
    }
    return connector;
}

std::string ComponentHelp() {
    return "O registo de componentes é o ficheiro '" + ComponentRegistryPath().string() +
           "' (a variável KITRA_COMPONENT_REGISTRY escolhe outro; sem ela, o da máquina, '" +
           MachineComponentRegistryPath().string() + "', também conta). Registe o componente com "
           "'kitra-host register [MÓDULO]', ou indique o ficheiro do componente em "
           "KITRA_CONNECTOR_MODULE.";
}

std::string ConnectorModulePath() {
    if (auto entry = FindComponent(kConnectorProgId)) return entry->modulePath;
    if (const char* explicitPath = std::getenv("KITRA_CONNECTOR_MODULE");
        explicitPath != nullptr && *explicitPath != '\0') {
        return explicitPath;
    }
    std::error_code ec;
    if (const fs::path beside = ProgramFolder() / "POSConnectorKitra.so"; fs::exists(beside, ec)) {
        return beside.string();
    }
    if (std::string installed = InstalledModulePath("POSConnectorKitra.so"); !installed.empty()) {
        return installed;
    }
    if (std::string built = KITRA_CONNECTOR_MODULE_BUILT; !built.empty() && fs::exists(built, ec)) {
        return built;
    }
    throw Error("O componente POSConnectorKitra não está registado nem foi encontrado. " +
                ComponentHelp());
}

host::Guid ConnectorClassId() {
    if (auto entry = FindComponent(kConnectorProgId)) {
        if (auto clsid = host::GuidFromString(entry->clsid)) return *clsid;
    }
    return kBuiltConnectorClassId;
}

}  // namespace kitra::backoffice::cli
