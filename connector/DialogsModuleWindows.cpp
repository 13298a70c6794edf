// The connector's dialogs on Windows: this build has no windows yet (its dialogs are Qt
// widgets, and there is no Qt for Windows here). Asking for a dialog says so in the host's
// message box and shows nothing; Config then returns false, as for a dialog that was not
// accepted. The dialogs' rules (settings/, log/) are plain classes that Win32 dialogs can bind.
#include "connector/DialogsModule.h"

namespace kitra::connector {
namespace {

void SayNoWindows(const host::HostServices& services, const std::string& dialog) {
    if (services.messageBoxes == nullptr) return;
    services.messageBoxes->Show("Esta versão do conector para Windows ainda não tem janelas: " +
                                    dialog + " não pode ser aberta.",
                                host::MessageStyle::Information, host::MessageButtons::Ok,
                                services.application->Title());
}

}  // namespace

bool ConfigDialog(const host::HostServices& services, KitraConnectorSetting&) {
    SayNoWindows(services, "a janela de configuração do conector");
    return false;
}

void ShowTraceDialog(const host::HostServices& services) {
    SayNoWindows(services, "a janela do log de importações");
}

}  // namespace kitra::connector
