#pragma once
// The one object the host creates and talks to. It carries the connector's identity, starts an
// import run on Execute, and files the connector's settings through the host's store. Between
// calls it keeps only the host's event notifier.
#include <atomic>
#include <memory>
#include <string>

#include "host/HostServices.h"
#include "host/IConnector.h"

namespace kitra::connector {

// major, a point, minor as two digits, a point, revision as two digits: 1.2.3 -> "1.02.03".
std::string FormatComponentVersion(int major, int minor, int revision);

class KitraConnector final : public host::IConnector {
public:
    KitraConnector();
    KitraConnector(const KitraConnector&) = delete;
    KitraConnector& operator=(const KitraConnector&) = delete;

    // IUnknown
    host::HResult QueryInterface(const host::Guid& iid, void** object) override;
    std::uint32_t AddRef() override;
    std::uint32_t Release() override;

    // IConnector, in slot order
    std::string ConnectorID() override;
    std::string Description() override;
    std::string Signature(const std::string& text) override;
    bool HasUISetting() override;
    std::string Version() override;
    bool Config() override;
    bool Init() override;
    void Dispose() override;
    void Execute() override;
    bool ValidateSettings() override;
    void EventNotifier(std::shared_ptr<host::IEventNotifier> notifier) override;
    bool HasUITrace() override;
    bool LoadDefaults(const std::string& xml) override;
    bool Save() override;
    bool Delete() override;
    void ShowTrace() override;
    std::string FunctionalLevel() override;
    void ResetData() override;
    bool HandleImportExport() override;
    bool HandleReExport() override;
    void ImportData() override;
    void ExportData() override;
    void ReExport(const Variant& a, const Variant& b, const Variant& c, const Variant& d) override;

private:
    ~KitraConnector();  // through Release only

    std::atomic<std::uint32_t> references_{1};
    std::shared_ptr<host::IEventNotifier> eventNotifier_;
};

}  // namespace kitra::connector
