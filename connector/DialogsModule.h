#pragma once
// The connector's dialogs live in a module of their own, POSConnectorKitraDialogs, beside the
// component's module, and are loaded only when a dialog is asked for: an import, a validation
// and everything else the host calls never load a window system.
#include <string>

#include "host/HostServices.h"
#include "settings/KitraConnectorSetting.h"

namespace kitra::connector {

// The entry points the dialogs module exports. Each returns true when the dialog could be shown
// (whatever the user did in it); otherwise `error` says why not.
using ShowTraceEntry = bool (*)(const host::HostServices& services, std::string& error);

inline constexpr const char* kShowTraceEntry = "KitraShowTrace";
// Shows the settings dialog on `setting`; `accepted` tells whether OK took the controls into it.
using ConfigEntry = bool (*)(const host::HostServices& services, KitraConnectorSetting& setting,
                             bool& accepted, std::string& error);
inline constexpr const char* kConfigEntry = "KitraConfig";

// The dialogs module file: beside the module that holds this code.
std::string DialogsModulePath();

// Shows the settings dialog modally on `setting` through the dialogs module; true when OK
// accepted it. When the module or a screen is missing, the host's message box says so.
bool ConfigDialog(const host::HostServices& services, KitraConnectorSetting& setting);

// Shows the import log list modally through the dialogs module. When the module or a screen is
// missing, the host's message box says so and nothing else happens.
void ShowTraceDialog(const host::HostServices& services);

}  // namespace kitra::connector
