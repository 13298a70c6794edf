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
    virtual std::string ConnectorID() = 0;                          // 1
    virtual std::string Description() = 0;                         // 2
    virtual std::string Signature(const std::string& text) = 0;     // 3
    virtual bool HasUISetting() = 0;                                // 4
    virtual std::string Version() = 0;                              // 5
    virtual bool Config() = 0;                                      // 6
    virtual bool Init() = 0;                                        // 7
    virtual void Dispose() = 0;                                     // 8
    virtual void Execute() = 0;                                     // 9
    virtual bool ValidateSettings() = 0;                            // 10
    virtual void EventNotifier(std::shared_ptr<IEventNotifier> notifier) = 0;  // 11 (write-only)
    virtual bool HasUITrace() = 0;                                  // 12
    virtual bool LoadDefaults(const std::string& xml) = 0;          // 13
    virtual bool Save() = 0;                                        // 14
    virtual bool Delete() = 0;                                      // 15
    virtual void ShowTrace() = 0;                                   // 16
    virtual std::string FunctionalLevel() = 0;                      // 17
    virtual void ResetData() = 0;                                   // 18
    virtual bool HandleImportExport() = 0;                          // 19
    virtual bool HandleReExport() = 0;                              // 20
    virtual void ImportData() = 0;                                  // 21
    virtual void ExportData() = 0;                                  // 22
    virtual void ReExport(const Variant& a, const Variant& b, const Variant& c,
                          const Variant& d) = 0;                    // 23

protected:
    ~IConnector() = default;
};

}  // namespace kitra::host
