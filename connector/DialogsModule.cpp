#include "connector/DialogsModule.h"

#include <filesystem>

#include "connector/Platform.h"

#include <dlfcn.h>

namespace kitra::connector {
namespace {

constexpr const char* kDialogsModuleFile = "POSConnectorKitraDialogs.so";

// Finds an entry point of the dialogs module; the module stays loaded for the process's life,
// as a window system does not take being unloaded well.
void* DialogsEntry(const char* name, std::string& error) {
    const std::string path = DialogsModulePath();
    void* module = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    if (module == nullptr) {
        const char* reason = ::dlerror();
        error = reason != nullptr ? reason : "não foi possível carregar o módulo '" + path + "'";
        return nullptr;
    }
    void* entry = ::dlsym(module, name);
    if (entry == nullptr) error = "o módulo '" + path + "' não tem a entrada " + name;
    return entry;
}

void SayNotShown(const host::HostServices& services, const std::string& dialog,
                 const std::string& error) {
    if (services.messageBoxes == nullptr) return;
    services.messageBoxes->Show("Não foi possível abrir " + dialog + ": " + error + ".",
                                host::MessageStyle::Critical, host::MessageButtons::Ok,
                                services.application->Title());
}

}  // namespace

std::string DialogsModulePath() {
    return (std::filesystem::path(ModulePath()).parent_path() / kDialogsModuleFile).string();
}

void ShowTraceDialog(const host::HostServices& services) {
    const std::string dialog = "a janela do log de importações";
    std::string error;
    auto entry = reinterpret_cast<ShowTraceEntry>(DialogsEntry(kShowTraceEntry, error));
    if (entry == nullptr || !entry(services, error)) SayNotShown(services, dialog, error);
}

}  // namespace kitra::connector

namespace kitra::connector {

bool ConfigDialog(const host::HostServices& services, KitraConnectorSetting& setting) {
    std::string error;
    bool accepted = false;
    auto entry = reinterpret_cast<ConfigEntry>(DialogsEntry(kConfigEntry, error));
    if (entry == nullptr || !entry(services, setting, accepted, error)) {
        SayNotShown(services, "a janela de configuração do conector", error);
        return false;
    }
    return accepted;
}

}  // namespace kitra::connector
