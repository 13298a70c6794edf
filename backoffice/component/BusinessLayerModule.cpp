// The reference back office as a component module: the class KitraBackOffice.BusinessLayer,
// its class factory and the four entry points of an in-process component server. An object of
// the class serves the back office the host program attached, or else the one the machine's
// setting names, opened when first asked for and closed when the last object goes.
#include <atomic>
#include <memory>
#include <mutex>
#include <string>

#include "backoffice/BackOffice.h"
#include "backoffice/component/MachineSetting.h"
#include "core/ComponentRegistry.h"
#include "core/Error.h"
#include "core/ModulePath.h"
#include "core/Paths.h"
#include "host/ClassFactory.h"
#include "host/IHostBusinessLayer.h"

#if defined(_WIN32)
// The entry points are exported by the module definition file under their plain names.
#define KITRA_BACKOFFICE_ENTRY_POINT
#else
#define KITRA_BACKOFFICE_ENTRY_POINT __attribute__((visibility("default")))
#endif

namespace kitra::backoffice {
namespace {

std::atomic<long> g_objects{0};
std::atomic<long> g_locks{0};

// The process's back office, as the objects of the class serve it.
struct ProcessBackOffice {
    std::mutex mutex;
    const host::HostServices* attached = nullptr;
    // The machine's back office, when nothing is attached; lives while objects do.
    std::unique_ptr<host::IMessageBoxService> boxes;
    std::unique_ptr<BackOffice> own;
    host::HostServices ownServices;
    long users = 0;
};

ProcessBackOffice& Process() {
    static ProcessBackOffice* process = new ProcessBackOffice();  // outlives every object
    return *process;
}

class BusinessLayer final : public host::IHostBusinessLayer {
public:
    BusinessLayer() {
        ++g_objects;
        std::lock_guard lock(Process().mutex);
        ++Process().users;
    }
    BusinessLayer(const BusinessLayer&) = delete;
    BusinessLayer& operator=(const BusinessLayer&) = delete;

    host::HResult KITRA_COM_CALL QueryInterface(const host::Guid& iid, void** object) override {
        if (object == nullptr) return host::kPointer;
        if (iid == host::kIID_IUnknown || iid == host::kIID_IHostBusinessLayer) {
            *object = static_cast<host::IHostBusinessLayer*>(this);
            AddRef();
            return host::kOk;
        }
        *object = nullptr;
        return host::kNoInterface;
    }
    std::uint32_t KITRA_COM_CALL AddRef() override { return ++references_; }
    std::uint32_t KITRA_COM_CALL Release() override {
        const std::uint32_t left = --references_;
        if (left == 0) delete this;
        return left;
    }

    host::HResult KITRA_COM_CALL Services(const host::HostServices** services,
                                          const char** reason) override {
        if (services == nullptr) return host::kPointer;
        *services = nullptr;
        ProcessBackOffice& process = Process();
        std::lock_guard lock(process.mutex);
        reason_.clear();
        if (process.attached != nullptr) {
            *services = process.attached;
            return host::kOk;
        }
        try {
            if (!process.own) {
                const std::string folder = DataFolderSetting();
                if (folder.empty()) {
                    throw Error("Nenhum back office está aberto neste processo e " +
                                DataFolderSettingName() + " não indica a pasta de nenhum.");
                }
                if (!process.boxes) process.boxes = ProcessMessageBoxes();
                process.own = std::make_unique<BackOffice>(PathFromUtf8(folder));
                process.own->settingsStore.SetOrigin(ProcessProgramName());
                process.ownServices = process.own->Services(nullptr, process.boxes.get());
            }
            *services = &process.ownServices;
            return host::kOk;
        } catch (const Error& error) {
            reason_ = error.Description();
        } catch (const std::exception& error) {
            reason_ = error.what();
        }
        if (reason != nullptr) *reason = reason_.c_str();
        return host::kFail;
    }

    host::HResult KITRA_COM_CALL Attach(const host::HostServices* services) override {
        ProcessBackOffice& process = Process();
        std::lock_guard lock(process.mutex);
        process.attached = services;
        return host::kOk;
    }

private:
    ~BusinessLayer() {
        ProcessBackOffice& process = Process();
        {
            std::lock_guard lock(process.mutex);
            // The machine's back office is closed with its last user, so that its file is free
            // for others between a host's calls.
            if (--process.users == 0) process.own.reset();
        }
        --g_objects;
    }

    std::atomic<std::uint32_t> references_{1};
    std::string reason_;
};

void CountLock(bool lock) {
    if (lock) {
        ++g_locks;
    } else {
        --g_locks;
    }
}

host::ClassFactory<BusinessLayer> g_factory(&CountLock);

std::string ThisModule() { return ModulePathOf(reinterpret_cast<const void*>(&ThisModule)); }

}  // namespace
}  // namespace kitra::backoffice

using namespace kitra;

extern "C" KITRA_BACKOFFICE_ENTRY_POINT host::HResult KITRA_COM_CALL
DllGetClassObject(const host::Guid& clsid, const host::Guid& iid, void** object) {
    if (object == nullptr) return host::kPointer;
    *object = nullptr;
    if (!(clsid == host::kCLSID_HostBusinessLayer)) return host::kClassNotAvailable;
    return backoffice::g_factory.QueryInterface(iid, object);
}

extern "C" KITRA_BACKOFFICE_ENTRY_POINT host::HResult KITRA_COM_CALL DllCanUnloadNow() {
    return backoffice::g_objects.load() == 0 && backoffice::g_locks.load() == 0 ? host::kOk
                                                                                : host::kFalse;
}

extern "C" KITRA_BACKOFFICE_ENTRY_POINT host::HResult KITRA_COM_CALL DllRegisterServer() {
    try {
        RegisterComponent({host::GuidToString(host::kCLSID_HostBusinessLayer),
                           host::kProgID_HostBusinessLayer, backoffice::ThisModule()});
        return host::kOk;
    } catch (...) {
        return host::kSelfRegClass;
    }
}

extern "C" KITRA_BACKOFFICE_ENTRY_POINT host::HResult KITRA_COM_CALL DllUnregisterServer() {
    try {
        UnregisterComponent(host::GuidToString(host::kCLSID_HostBusinessLayer));
        return host::kOk;
    } catch (...) {
        return host::kSelfRegClass;
    }
}
