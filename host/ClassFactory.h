#pragma once
// The class factory of a component module for one class. It is a static object of the module:
// it does not count as a live object, only LockServer holds the module in memory on its behalf.
#include <new>

#include "host/Com.h"

namespace kitra::host {

// `Object` is made with `new`, starts with one reference and dies through Release.
template <typename Object>
class ClassFactory final : public IClassFactory {
public:
    // Called with true for each lock and false for each unlock.
    using LockCount = void (*)(bool lock);
    explicit constexpr ClassFactory(LockCount count) : count_(count) {}

    HResult KITRA_COM_CALL QueryInterface(const Guid& iid, void** object) override {
        if (object == nullptr) return kPointer;
        if (iid == kIID_IUnknown || iid == kIID_IClassFactory) {
            *object = static_cast<IClassFactory*>(this);
            return kOk;
        }
        *object = nullptr;
        return kNoInterface;
    }
    std::uint32_t KITRA_COM_CALL AddRef() override { return 2; }
    std::uint32_t KITRA_COM_CALL Release() override { return 1; }

    HResult KITRA_COM_CALL CreateInstance(IUnknown* outer, const Guid& iid,
                                          void** object) override {
        if (object == nullptr) return kPointer;
        *object = nullptr;
        if (outer != nullptr) return kNoAggregation;
        auto* made = new (std::nothrow) Object();
        if (made == nullptr) return kOutOfMemory;
        // The object's own reference goes once the caller has one, so a failed query leaves
        // nothing alive.
        const HResult result = made->QueryInterface(iid, object);
        made->Release();
        return result;
    }

    HResult KITRA_COM_CALL LockServer(std::int32_t lock) override {
        count_(lock != 0);
        return kOk;
    }

private:
    LockCount count_;
};

}  // namespace kitra::host
