#include "core/ModulePath.h"

#if defined(_WIN32)
#include <windows.h>

#include "core/Text.h"
#else
#include <dlfcn.h>

#include <filesystem>
#endif

namespace kitra {

std::string ModulePathOf(const void* address) {
#if defined(_WIN32)
    HMODULE module = nullptr;
    if (!::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                                  GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                              static_cast<LPCWSTR>(address), &module)) {
        return {};
    }
    wchar_t path[MAX_PATH] = {};
    const DWORD length = ::GetModuleFileNameW(module, path, MAX_PATH);
    return Utf8FromWide(std::wstring_view(path, length));
#else
    Dl_info info{};
    if (::dladdr(address, &info) == 0 || info.dli_fname == nullptr) return {};
    std::error_code ec;
    const auto absolute = std::filesystem::absolute(info.dli_fname, ec);
    return ec ? std::string(info.dli_fname) : absolute.string();
#endif
}

}  // namespace kitra
