// Where a Windows module finds the process's host services: the host program exports its slot
// as KitraHostServicesSlot. A program that exports none (a test program that links the
// connector's classes directly) keeps the slot in the module itself, which is then the only one.
#include <windows.h>

#include "host/HostServices.h"

namespace kitra::host::detail {

const HostServices*& CurrentHostServicesSlot() {
    using ProgramSlot = const HostServices** (*)();
    static const HostServices** const slot = [] {
        static const HostServices* own = nullptr;
        void* exported = reinterpret_cast<void*>(
            ::GetProcAddress(::GetModuleHandleW(nullptr), "KitraHostServicesSlot"));
        return exported != nullptr ? reinterpret_cast<ProgramSlot>(exported)() : &own;
    }();
    return *slot;
}

}  // namespace kitra::host::detail
