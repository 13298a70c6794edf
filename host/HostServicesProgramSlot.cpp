// The host program's one slot of host services, exported by name so that the component modules
// it loads find the same slot (host/HostServicesSlotWindows.cpp). Only host programs link this.
#include "host/HostServices.h"

extern "C" __declspec(dllexport) const kitra::host::HostServices** KitraHostServicesSlot() {
    static const kitra::host::HostServices* current = nullptr;
    return &current;
}
