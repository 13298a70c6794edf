// The module's four exported entry points and its class factory.
#include "connector/Module.h"

#include <type_traits>

#include "connector/KitraConnector.h"
#include "connector/Platform.h"
#include "core/ComponentRegistry.h"
#include "host/ClassFactory.h"

namespace kitra::connector {
namespace {

void CountLock(bool lock) {
    if (lock) {
        ServerLocked();
    } else {
        ServerUnlocked();
    }
}

host::ClassFactory<KitraConnector> g_factory(&CountLock);

}  // namespace

}  // namespace kitra::connector

using namespace kitra;
using namespace kitra::connector;

extern "C" KITRA_ENTRY_POINT host::HResult KITRA_COM_CALL
DllGetClassObject(const host::Guid& clsid, const host::Guid& iid, void** object) {
    if (object == nullptr) return host::kPointer;
    *object = nullptr;
    if (!(clsid == kCLSID_KitraConnector)) return host::kClassNotAvailable;
    return g_factory.QueryInterface(iid, object);
}

extern "C" KITRA_ENTRY_POINT host::HResult KITRA_COM_CALL DllCanUnloadNow() {
    return CanUnload() ? host::kOk : host::kFalse;
}

extern "C" KITRA_ENTRY_POINT host::HResult KITRA_COM_CALL DllRegisterServer() {
    try {
        RegisterComponent({host::GuidToString(kCLSID_KitraConnector), kProgID_KitraConnector,
                           ModulePath()});
        return host::kOk;
    } catch (...) {
        return host::kSelfRegClass;
    }
}

extern "C" KITRA_ENTRY_POINT host::HResult KITRA_COM_CALL DllUnregisterServer() {
    try {
        UnregisterComponent(host::GuidToString(kCLSID_KitraConnector));
        return host::kOk;
    } catch (...) {
        return host::kSelfRegClass;
    }
}

// The entry points have the shapes a host calls them by.
static_assert(std::is_same_v<decltype(&DllGetClassObject), host::DllGetClassObjectFn>);
static_assert(std::is_same_v<decltype(&DllCanUnloadNow), host::DllCanUnloadNowFn>);
static_assert(std::is_same_v<decltype(&DllRegisterServer), host::DllRegisterServerFn>);
static_assert(std::is_same_v<decltype(&DllUnregisterServer), host::DllUnregisterServerFn>);
