// A module loaded at run time, as a component is: it answers which host services it sees.
#include "host/HostServices.h"

extern "C" __attribute__((visibility("default"))) const kitra::host::HostServices*
ProbeCurrentHostServices() {
    return kitra::host::HostServicesInstalled() ? &kitra::host::CurrentHostServices() : nullptr;
}
