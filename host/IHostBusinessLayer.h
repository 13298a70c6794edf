#pragma once
// The host's business layer as a registered class. A connector creates it by its programmatic
// id, as it creates any of the host's objects, whenever a member needs the host (the settings
// store, the signature service, the application object, the database, master data, documents)
// and releases it before the member returns. Any process can therefore run the connector: a
// host program that has its back office open attaches it to the class, and a process that has
// none (a script, a third-party host) gets the back office the machine's setting names.
#include "host/Com.h"
#include "host/HostServices.h"

namespace kitra::host {

// {1C192219-07BF-4A43-95DD-552B008C5A9D}
inline constexpr Guid kCLSID_HostBusinessLayer{
    0x1C192219, 0x07BF, 0x4A43, {0x95, 0xDD, 0x55, 0x2B, 0x00, 0x8C, 0x5A, 0x9D}};
inline constexpr const char* kProgID_HostBusinessLayer = "KitraBackOffice.BusinessLayer";

// {78486731-80C0-44DB-969A-B75E01C8A8CE}
inline constexpr Guid kIID_IHostBusinessLayer{
    0x78486731, 0x80C0, 0x44DB, {0x96, 0x9A, 0xB7, 0x5E, 0x01, 0xC8, 0xA8, 0xCE}};

class IHostBusinessLayer : public IUnknown {
public:
    // The host's services, valid while this object is alive. Fails (kFail) when the process
    // has no back office attached and the machine's setting names none that opens; the
    // reason is then in `reason` (a text owned by the object, valid while it lives).
    virtual HResult KITRA_COM_CALL Services(const HostServices** services,
                                            const char** reason) = 0;
    // The host program that has its own back office open makes it the one every object of the
    // class serves in this process (nullptr: none again). The services stay the host's; they
    // must outlive the attachment.
    virtual HResult KITRA_COM_CALL Attach(const HostServices* services) = 0;

protected:
    ~IHostBusinessLayer() = default;
};

static_assert(sizeof(IHostBusinessLayer) == sizeof(void*));

}  // namespace kitra::host
