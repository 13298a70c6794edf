// The module's four exported entry points and its class factory.
#include "connector/Module.h"

#include <new>
#include <type_traits>

#include "connector/KitraConnector.h"
#include "connector/Platform.h"
#include "core/ComponentRegistry.h"

namespace kitra::connector {
namespace {

// The class factory is a static object: it does not count as a live object of the module,
// only LockServer holds the module in memory on its behalf.
class KitraConnectorFactory final : public host::IClassFactory {
public:
    host::HResult KITRA_COM_CALL QueryInterface(const host::Guid& iid, void** object) override {
        if (object == nullptr) return host::kPointer;
        if (iid == host::kIID_IUnknown || iid == host::kIID_IClassFactory) {
            *object = static_cast<host::IClassFactory*>(this);
            AddRef();
            return host::kOk;
        }
        *object = nullptr;
        return host::kNoInterface;
    }
    std::uint32_t KITRA_COM_CALL AddRef() override { return 2; }
    std::uint32_t KITRA_COM_CALL Release() override { return 1; }

    host::HResult KITRA_COM_CALL CreateInstance(host::IUnknown* outer, const host::Guid& iid,
                                                void** object) override {
        if (object == nullptr) return host::kPointer;
        *object = nullptr;
        if (outer != nullptr) return host::kNoAggregation;
        auto* connector = new (std::nothrow) KitraConnector();
        if (connector == nullptr) return host::kOutOfMemory;
        // The object starts with one reference; QueryInterface adds the caller's, Release
        // drops ours, so a failed query leaves nothing alive.
        const host::HResult result = connector->QueryInterface(iid, object);
        connector->Release();
        return result;
    }

    host::HResult KITRA_COM_CALL LockServer(std::int32_t lock) override {
        if (lock != 0) {
            ServerLocked();
        } else {
            ServerUnlocked();
        }
        return host::kOk;
    }
};

KitraConnectorFactory g_factory;

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
