#pragma once
// The one object the host creates and talks to. It carries the connector's identity, starts an
// import run on Execute, and files the connector's settings through the host's store. Between
// calls it keeps only the host's event notifier.
#include <atomic>
#include <memory>
#include <string>

#include "host/HostBusinessLayer.h"
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
    host::HResult KITRA_COM_CALL QueryInterface(const host::Guid& iid, void** object) override;
    std::uint32_t KITRA_COM_CALL AddRef() override;
    std::uint32_t KITRA_COM_CALL Release() override;

    // IConnector, in slot order
    std::string KITRA_COM_CALL ConnectorID() override;
    std::string KITRA_COM_CALL Description() override;
    std::string KITRA_COM_CALL Signature(const std::string& text) override;
    bool KITRA_COM_CALL HasUISetting() override;
    std::string KITRA_COM_CALL Version() override;
    bool KITRA_COM_CALL Config() override;
    bool KITRA_COM_CALL Init() override;
    void KITRA_COM_CALL Dispose() override;
    void KITRA_COM_CALL Execute() override;
    bool KITRA_COM_CALL ValidateSettings() override;
    void KITRA_COM_CALL EventNotifier(std::shared_ptr<host::IEventNotifier> notifier) override;
    bool KITRA_COM_CALL HasUITrace() override;
    bool KITRA_COM_CALL LoadDefaults(const std::string& xml) override;
    bool KITRA_COM_CALL Save() override;
    bool KITRA_COM_CALL Delete() override;
    void KITRA_COM_CALL ShowTrace() override;
    std::string KITRA_COM_CALL FunctionalLevel() override;
    void KITRA_COM_CALL ResetData() override;
    bool KITRA_COM_CALL HandleImportExport() override;
    bool KITRA_COM_CALL HandleReExport() override;
    void KITRA_COM_CALL ImportData() override;
    void KITRA_COM_CALL ExportData() override;
    void KITRA_COM_CALL ReExport(const Variant& a, const Variant& b, const Variant& c,
                                 const Variant& d) override;

private:
    ~KitraConnector();  // through Release only

    std::atomic<std::uint32_t> references_{1};
    std::shared_ptr<host::IEventNotifier> eventNotifier_;
};

}  // namespace kitra::connector
