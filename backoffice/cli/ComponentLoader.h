#pragma once
// How kitra-host reaches the connector: it finds the component's module, loads it, asks its
// class factory for the class and gets the IConnector interface. Nothing else of the module is
// called directly.
#include <string>

#include "host/Com.h"
#include "host/IConnector.h"

namespace kitra::backoffice::cli {

inline constexpr const char* kConnectorProgId = "POSConnectorKitra.KitraConnector";

// A loaded component module; unloaded when it goes, if the module agrees (DllCanUnloadNow).
class ComponentModule {
public:
    explicit ComponentModule(const std::string& path);
    ~ComponentModule();
    ComponentModule(const ComponentModule&) = delete;
    ComponentModule& operator=(const ComponentModule&) = delete;

    const std::string& Path() const { return path_; }
    host::HResult RegisterServer();
    host::HResult UnregisterServer();
    bool CanUnloadNow();
    // Creates an object of the class through the module's class factory.
    host::ComPtr<host::IConnector> CreateConnector(const host::Guid& clsid);

private:
    void* Symbol(const char* name);

    std::string path_;
    void* handle_ = nullptr;
};

// Where the component registry is and how to register the component, for the messages of
// commands that could not load it.
std::string ComponentHelp();

// The module file of the connector: the component registry's entry for its programmatic id,
// else $KITRA_CONNECTOR_MODULE, else the module beside this program, else the one in the
// installed layout's module folder (../lib/kitra from this program's folder, so that a tree
// unpacked anywhere finds its own), else the one built with this program.
std::string ConnectorModulePath();

// A module of the installed layout, found from this program's own folder; empty when absent.
std::string InstalledModulePath(const std::string& fileName);

// The class id the registry gives the connector, or the one this program was built with.
host::Guid ConnectorClassId();

}  // namespace kitra::backoffice::cli
