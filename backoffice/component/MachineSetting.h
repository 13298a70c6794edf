#pragma once
// What the back office component takes from the machine when no host program has attached its
// own back office: where the back office lives, and how its message boxes reach the user.
#include <memory>
#include <string>

#include "host/IMessageBoxService.h"

namespace kitra::backoffice {

// Where the machine's setting of the data folder lives, for messages that tell the user.
std::string DataFolderSettingName();

// The data folder the machine's setting names; empty when it names none.
//   Windows: the text value DataFolder of HKEY_CURRENT_USER\Software\Kitra\BackOffice, else of
//            HKEY_LOCAL_MACHINE\Software\Kitra\BackOffice;
//   elsewhere: $KITRA_HOST_DATA, as for kitra-host.
std::string DataFolderSetting();

// The name of the process's program ("cscript.exe"): what the settings' history says saved the
// settings when the machine's back office serves the process.
std::string ProcessProgramName();

// The message boxes of a process that attached no back office of its own: printed on the
// process's standard output when it has one (a console program, a script host), else shown
// as the system's own message boxes (Windows).
std::unique_ptr<host::IMessageBoxService> ProcessMessageBoxes();

}  // namespace kitra::backoffice
