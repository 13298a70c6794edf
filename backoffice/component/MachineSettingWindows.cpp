#include <windows.h>

#include <cstdio>
#include <iostream>
#include <optional>

#include "backoffice/ConsoleServices.h"
#include "backoffice/component/MachineSetting.h"
#include "core/Text.h"

namespace kitra::backoffice {
namespace {

constexpr const wchar_t* kSettingKey = L"Software\\Kitra\\BackOffice";

std::optional<std::string> ReadSetting(HKEY root) {
    wchar_t value[4096];
    DWORD size = sizeof value;
    if (::RegGetValueW(root, kSettingKey, L"DataFolder", RRF_RT_REG_SZ, nullptr, value, &size) != ERROR_SUCCESS) {
        return std::nullopt;
    }
    return Utf8FromWide(value);
}

// The system's message box, owned by the process's active window when it has one.
class SystemMessageBoxes final : public host::IMessageBoxService {
public:
    host::MessageAnswer Show(const std::string& text, host::MessageStyle style,
                             host::MessageButtons buttons, const std::string& title) override {
        UINT type = buttons == host::MessageButtons::Ok ? MB_OK : MB_YESNO;
        switch (style) {
            case host::MessageStyle::Plain: break;
            case host::MessageStyle::Information: type |= MB_ICONINFORMATION; break;
            case host::MessageStyle::Critical: type |= MB_ICONERROR; break;
            case host::MessageStyle::Exclamation: type |= MB_ICONWARNING; break;
            case host::MessageStyle::Question: type |= MB_ICONQUESTION; break;
        }
        const int answer = ::MessageBoxW(::GetActiveWindow(), WideFromUtf8(text).c_str(),
                                         WideFromUtf8(title).c_str(), type | MB_TASKMODAL);
        if (buttons == host::MessageButtons::Ok) return host::MessageAnswer::Ok;
        return answer == IDYES ? host::MessageAnswer::Yes : host::MessageAnswer::No;
    }
};

}  // namespace

std::string DataFolderSettingName() {
    return "o valor DataFolder de HKEY_CURRENT_USER\\Software\\Kitra\\BackOffice (ou de "
           "HKEY_LOCAL_MACHINE\\Software\\Kitra\\BackOffice)";
}

std::string DataFolderSetting() {
    if (auto folder = ReadSetting(HKEY_CURRENT_USER)) return *folder;
    return ReadSetting(HKEY_LOCAL_MACHINE).value_or("");
}

std::string ProcessProgramName() {
    wchar_t path[MAX_PATH] = {};
    const DWORD length = ::GetModuleFileNameW(nullptr, path, MAX_PATH);
    const std::wstring_view whole(path, length);
    const auto slash = whole.find_last_of(L"\\/");
    return Utf8FromWide(slash == std::wstring_view::npos ? whole : whole.substr(slash + 1));
}

std::unique_ptr<host::IMessageBoxService> ProcessMessageBoxes() {
    const HANDLE out = ::GetStdHandle(STD_OUTPUT_HANDLE);
    if (out != nullptr && out != INVALID_HANDLE_VALUE && ::GetFileType(out) != FILE_TYPE_UNKNOWN) {
        return std::make_unique<ConsoleMessageBoxes>(nullptr, std::cout);
    }
    return std::make_unique<SystemMessageBoxes>();
}

}  // namespace kitra::backoffice
