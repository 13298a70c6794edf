// The connector's dialogs on Windows: Win32 dialogs built into the component's module, over the
// same rules as the Qt dialogs of other systems. Each is modal on the host's thread, over the
// host's active window.
#include "connector/DialogsModule.h"

#include "core/Error.h"
#include "core/win32/Dialog.h"
#include "log/win32/frmKitraLog.h"
#include "settings/win32/frmSettings.h"

namespace kitra::connector {
namespace {

void SayNotShown(const host::HostServices& services, const std::string& dialog,
                 const std::string& error) {
    if (services.messageBoxes == nullptr) return;
    services.messageBoxes->Show("Não foi possível abrir " + dialog + ": " + error + ".",
                                host::MessageStyle::Critical, host::MessageButtons::Ok,
                                services.application->Title());
}

}  // namespace

bool ConfigDialog(const host::HostServices& services, KitraConnectorSetting& setting) {
    try {
        win32::frmSettings dialog(services);
        return dialog.Edit(setting, win32::DefaultOwner());
    } catch (const std::exception& e) {
        SayNotShown(services, "a janela de configuração do conector", DescriptionOf(e));
        return false;
    }
}

void ShowTraceDialog(const host::HostServices& services) {
    try {
        win32::frmKitraLog dialog(services);
        dialog.Show(win32::DefaultOwner());
    } catch (const std::exception& e) {
        SayNotShown(services, "a janela do log de importações", DescriptionOf(e));
    }
}

}  // namespace kitra::connector
