#include "host/HostBusinessLayer.h"

#include <filesystem>

#include "core/Error.h"
#include "host/CreateObject.h"

namespace kitra::host {
namespace {

ComPtr<IHostBusinessLayer> CreateBusinessLayer(const std::string& componentModule) {
    return CreateObject<IHostBusinessLayer>({kProgID_HostBusinessLayer, kCLSID_HostBusinessLayer},
                                            kIID_IHostBusinessLayer,
                                            BusinessLayerFallbackModules(componentModule));
}

}  // namespace

const char* BusinessLayerModuleFileName() {
#if defined(_WIN32)
    return "KitraBackOffice.dll";
#else
    return "KitraBackOffice.so";
#endif
}

std::string BusinessLayerModuleBeside(const std::string& componentModule) {
    return (std::filesystem::path(componentModule).parent_path() / BusinessLayerModuleFileName())
        .string();
}

std::vector<std::string> BusinessLayerFallbackModules(const std::string& componentModule) {
    std::vector<std::string> modules;
    if (!componentModule.empty()) modules.push_back(BusinessLayerModuleBeside(componentModule));
#ifdef KITRA_BACKOFFICE_MODULE_BUILT
    modules.push_back(KITRA_BACKOFFICE_MODULE_BUILT);
#endif
    return modules;
}

HostBusinessLayerCall::HostBusinessLayerCall(const std::string& componentModule)
    : layer_(CreateBusinessLayer(componentModule)) {
    const char* reason = nullptr;
    if (layer_->Services(&services_, &reason) != kOk || services_ == nullptr) {
        throw Error(reason != nullptr ? reason : "O back office não deu os seus serviços.");
    }
}

HostAttachment::HostAttachment(const HostServices& services, const std::string& componentModule)
    : layer_(CreateBusinessLayer(componentModule)) {
    Attach(services);
}

HostAttachment::~HostAttachment() { layer_->Attach(nullptr); }

void HostAttachment::Attach(const HostServices& services) {
    if (layer_->Attach(&services) != kOk) throw Error("O back office recusou ser ligado a este programa.");
}

}  // namespace kitra::host
