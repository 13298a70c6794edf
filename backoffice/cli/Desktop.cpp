#include "backoffice/cli/Desktop.h"

#include <dlfcn.h>

#include <filesystem>

#include "backoffice/cli/ComponentLoader.h"
#include "core/Error.h"

#ifndef KITRA_HOST_DESKTOP_MODULE_BUILT
#define KITRA_HOST_DESKTOP_MODULE_BUILT ""
#endif

namespace kitra::backoffice::cli {
namespace fs = std::filesystem;
namespace {

constexpr const char* kModuleFile = "kitra-host-desktop.so";

using OpenEntry = host::IMessageBoxService* (*)(std::string& error);
using CloseEntry = void (*)();

}  // namespace

std::string DesktopModulePath() {
    std::error_code ec;
    const fs::path self = fs::read_symlink("/proc/self/exe", ec);
    if (!ec) {
        if (const fs::path beside = self.parent_path() / kModuleFile; fs::exists(beside, ec)) {
            return beside.string();
        }
    }
    if (std::string installed = InstalledModulePath(kModuleFile); !installed.empty()) return installed;
    return KITRA_HOST_DESKTOP_MODULE_BUILT;
}

Desktop::Desktop() {
    const std::string path = DesktopModulePath();
    // Kept loaded for the process's life: a window system does not take being unloaded well.
    handle_ = path.empty() ? nullptr : ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    if (handle_ == nullptr) {
        const char* why = path.empty() ? nullptr : ::dlerror();
        throw Error("Não foi possível carregar a parte gráfica do kitra-host (" + std::string(kModuleFile) +
                    "): " + (why != nullptr ? why : "o módulo não foi encontrado"));
    }
    auto open = reinterpret_cast<OpenEntry>(::dlsym(handle_, "KitraHostDesktopOpen"));
    if (open == nullptr) throw Error("O módulo '" + path + "' não tem a entrada KitraHostDesktopOpen.");
    std::string error;
    boxes_ = open(error);
    if (boxes_ == nullptr) throw Error("Não é possível abrir janelas: " + error + ".");
}

Desktop::~Desktop() {
    if (auto close = reinterpret_cast<CloseEntry>(::dlsym(handle_, "KitraHostDesktopClose"))) close();
}

}  // namespace kitra::backoffice::cli
