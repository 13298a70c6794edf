#pragma once
// The connector's dialogs live in a module of their own, POSConnectorKitraDialogs, beside the
// component's module, and are loaded only when a dialog is asked for: an import, a validation
// and everything else the host calls never load a window system.
#include <string>

#include "host/HostServices.h"

namespace kitra::connector {

// The entry points the dialogs module exports. Each returns true when the dialog could be shown
// (whatever the user did in it); otherwise `error` says why not.
using ShowTraceEntry = bool (*)(const host::HostServices& services, std::string& error);

inline constexpr const char* kShowTraceEntry = "KitraShowTrace";

// The dialogs module file: beside the module that holds this code.
std::string DialogsModulePath();

// Shows the import log list modally through the dialogs module. When the module or a screen is
// missing, the host's message box says so and nothing else happens.
void ShowTraceDialog(const host::HostServices& services);

}  // namespace kitra::connector
