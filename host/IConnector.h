#pragma once
// The host's connector contract: the one interface through which the host talks to a connector
// component. Members are in the order of the interface's slots.
#include <memory>
#include <string>

#include "core/Variant.h"
#include "host/Com.h"

namespace kitra::host {

class IEventNotifier;

// {6A0C2B51-3E0F-4B8A-9D61-2F4C7E1A90B3}
inline constexpr Guid kIID_IConnector{0x6A0C2B51, 0x3E0F, 0x4B8A,
                                      {0x9D, 0x61, 0x2F, 0x4C, 0x7E, 0x1A, 0x90, 0xB3}};

class IConnector : public IUnknown {
public:
    virtual std::string KITRA_COM_CALL ConnectorID() = 0;                         // 1
    virtual std::string KITRA_COM_CALL Description() = 0;                         // 2
    virtual std::string KITRA_COM_CALL Signature(const std::string& text) = 0;    // 3
    virtual bool KITRA_COM_CALL HasUISetting() = 0;                               // 4
    virtual std::string KITRA_COM_CALL Version() = 0;                             // 5
    virtual bool KITRA_COM_CALL Config() = 0;                                     // 6
    virtual bool KITRA_COM_CALL Init() = 0;                                       // 7
    virtual void KITRA_COM_CALL Dispose() = 0;                                    // 8
    virtual void KITRA_COM_CALL Execute() = 0;                                    // 9
    virtual bool KITRA_COM_CALL ValidateSettings() = 0;                           // 10
    // 11 (write-only)
    virtual void KITRA_COM_CALL EventNotifier(std::shared_ptr<IEventNotifier> notifier) = 0;
    virtual bool KITRA_COM_CALL HasUITrace() = 0;                                 // 12
    virtual bool KITRA_COM_CALL LoadDefaults(const std::string& xml) = 0;         // 13
    virtual bool KITRA_COM_CALL Save() = 0;                                       // 14
    virtual bool KITRA_COM_CALL Delete() = 0;                                     // 15
    virtual void KITRA_COM_CALL ShowTrace() = 0;                                  // 16
    virtual std::string KITRA_COM_CALL FunctionalLevel() = 0;                     // 17
    virtual void KITRA_COM_CALL ResetData() = 0;                                  // 18
    virtual bool KITRA_COM_CALL HandleImportExport() = 0;                         // 19
    virtual bool KITRA_COM_CALL HandleReExport() = 0;                             // 20
    virtual void KITRA_COM_CALL ImportData() = 0;                                 // 21
    virtual void KITRA_COM_CALL ExportData() = 0;                                 // 22
    virtual void KITRA_COM_CALL ReExport(const Variant& a, const Variant& b, const Variant& c,
                                         const Variant& d) = 0;  // 23

protected:
    ~IConnector() = default;
};

// A client reaches the connector through a bare pointer whose first word is the table of
// methods, IUnknown's three first.
static_assert(sizeof(IConnector) == sizeof(void*));

}  // namespace kitra::host
