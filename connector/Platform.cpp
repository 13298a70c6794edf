#include "connector/Platform.h"

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>

#include <filesystem>
#endif

namespace kitra::connector {

std::string ModulePath() {
#if defined(_WIN32)
    HMODULE module = nullptr;
    GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                           GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<LPCSTR>(&ModulePath), &module);
    char path[MAX_PATH] = {};
    GetModuleFileNameA(module, path, MAX_PATH);
    return path;
#else
    Dl_info info{};
    if (dladdr(reinterpret_cast<void*>(&ModulePath), &info) == 0 || info.dli_fname == nullptr) {
        return {};
    }
    std::error_code ec;
    const auto absolute = std::filesystem::absolute(info.dli_fname, ec);
    return ec ? std::string(info.dli_fname) : absolute.string();
#endif
}

}  // namespace kitra::connector
