#pragma once
// The component module's identity and its live-object bookkeeping: the module may be unloaded
// only when no object it made and no server lock is alive.
#include "host/Com.h"

namespace kitra::connector {

// {3F6E9A24-71C8-4D5B-A0E2-8B9C4D17F5A6}
inline constexpr host::Guid kCLSID_KitraConnector{
    0x3F6E9A24, 0x71C8, 0x4D5B, {0xA0, 0xE2, 0x8B, 0x9C, 0x4D, 0x17, 0xF5, 0xA6}};
inline constexpr const char* kProgID_KitraConnector = "POSConnectorKitra.KitraConnector";

void ObjectCreated();
void ObjectDestroyed();
void ServerLocked();
void ServerUnlocked();
bool CanUnload();

}  // namespace kitra::connector
