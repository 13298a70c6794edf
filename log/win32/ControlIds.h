#pragma once
// The control identifiers of the two import log dialogs on Windows, named after the controls
// they stand for.
namespace kitra::win32 {

enum LogListControl : int { IDC_vsfImportLog = 1301, IDC_cmdDelete, IDC_cmdExit };
enum LogContentsControl : int { IDC_txtLog = 1401 };
// The contents dialog's cmdOk is the window system's own OK.
inline constexpr int IDC_LogContentsOk = 1;

}  // namespace kitra::win32
