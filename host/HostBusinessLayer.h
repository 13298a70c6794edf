#pragma once
// Reaching the host's business layer by its class (host/IHostBusinessLayer.h): a component
// holds one for the length of a call; a host program that has its own back office open
// attaches it for as long as it runs components.
#include <string>
#include <vector>

#include "host/IHostBusinessLayer.h"

namespace kitra::host {

// The file name of the reference back office's component module on this platform.
const char* BusinessLayerModuleFileName();

// The reference back office's module installed beside `componentModule` (whether or not it is
// there): components are installed together.
std::string BusinessLayerModuleBeside(const std::string& componentModule);

// Where the class is looked for when the platform has no registration of it: the module
// beside `componentModule` (the module of whoever asks; components are installed together),
// then the one built with this program.
std::vector<std::string> BusinessLayerFallbackModules(const std::string& componentModule);

// The host's services for the length of one call: the business layer's object is created by
// class and released when this goes. Fails with an Error that says why.
class HostBusinessLayerCall {
public:
    explicit HostBusinessLayerCall(const std::string& componentModule);
    HostBusinessLayerCall(const HostBusinessLayerCall&) = delete;
    HostBusinessLayerCall& operator=(const HostBusinessLayerCall&) = delete;

    const HostServices& Services() const { return *services_; }

private:
    ComPtr<IHostBusinessLayer> layer_;
    const HostServices* services_ = nullptr;
};

// A host program's own back office, attached to the business layer's class while this lives:
// every object of the class that a component creates in this process serves it.
class HostAttachment {
public:
    HostAttachment(const HostServices& services, const std::string& componentModule);
    ~HostAttachment();
    HostAttachment(const HostAttachment&) = delete;
    HostAttachment& operator=(const HostAttachment&) = delete;

    // Attaches another set (a test that swaps a service).
    void Attach(const HostServices& services);

private:
    ComPtr<IHostBusinessLayer> layer_;
};

}  // namespace kitra::host
