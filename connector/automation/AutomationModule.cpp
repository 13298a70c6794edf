// The Windows module's four entry points: the class factory makes the automation object, and
// registration writes, besides the class and its programmatic id, the embedded type library
// (its TypeLib key, and the interface key with the automation marshaler), all of which
// unregistration removes.
#include <windows.h>

#include <oleauto.h>
#include <olectl.h>

#include <new>

#include "connector/Module.h"
#include "connector/Platform.h"
#include "connector/automation/AutomationConnector.h"
#include "core/ComponentRegistry.h"
#include "core/Text.h"

namespace kitra::connector::automation {
namespace {

// A static object: it does not count as a live object of the module.
class AutomationConnectorFactory final : public IClassFactory {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        if (object == nullptr) return E_POINTER;
        if (IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IClassFactory)) {
            *object = static_cast<IClassFactory*>(this);
            return S_OK;
        }
        *object = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }

    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** object) override {
        if (object == nullptr) return E_POINTER;
        *object = nullptr;
        if (outer != nullptr) return CLASS_E_NOAGGREGATION;
        AutomationConnector* connector = nullptr;
        try {
            connector = new AutomationConnector();
        } catch (...) {
            return E_OUTOFMEMORY;
        }
        const HRESULT result = connector->QueryInterface(iid, object);
        connector->Release();
        return result;
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override {
        if (lock) {
            ServerLocked();
        } else {
            ServerUnlocked();
        }
        return S_OK;
    }
};

AutomationConnectorFactory g_factory;

constexpr SYSKIND kThisSystem = sizeof(void*) == 8 ? SYS_WIN64 : SYS_WIN32;

// The class names its type library, so that a client holding only the class finds it.
void NameTypeLibraryOfClass(const GUID& library) {
    wchar_t text[40];
    ::StringFromGUID2(library, text, 40);
    const std::wstring key =
        L"CLSID\\" + WideFromUtf8(host::GuidToString(kCLSID_KitraConnector)) + L"\\TypeLib";
    ::RegSetKeyValueW(HKEY_CLASSES_ROOT, key.c_str(), nullptr, REG_SZ, text,
                      static_cast<DWORD>((lstrlenW(text) + 1) * sizeof(wchar_t)));
}

HRESULT RegisterTypeLibrary() {
    ITypeLib* library = EmbeddedTypeLibrary();
    if (library == nullptr) return TYPE_E_CANTLOADLIBRARY;
    std::wstring path = WideFromUtf8(ModulePath());
    HRESULT result = ::RegisterTypeLib(library, path.data(), nullptr);
    TLIBATTR* attributes = nullptr;
    if (SUCCEEDED(result) && SUCCEEDED(library->GetLibAttr(&attributes))) {
        NameTypeLibraryOfClass(attributes->guid);
        library->ReleaseTLibAttr(attributes);
    }
    library->Release();
    return result;
}

HRESULT UnregisterTypeLibrary() {
    ITypeLib* library = EmbeddedTypeLibrary();
    if (library == nullptr) return TYPE_E_CANTLOADLIBRARY;
    TLIBATTR* attributes = nullptr;
    HRESULT result = library->GetLibAttr(&attributes);
    if (SUCCEEDED(result)) {
        result = ::UnRegisterTypeLib(attributes->guid, attributes->wMajorVerNum,
                                     attributes->wMinorVerNum, attributes->lcid, kThisSystem);
        // Never registered is as good as removed.
        if (result == TYPE_E_REGISTRYACCESS || result == TYPE_E_LIBNOTREGISTERED) result = S_OK;
        library->ReleaseTLibAttr(attributes);
    }
    library->Release();
    return result;
}

}  // namespace
}  // namespace kitra::connector::automation

using namespace kitra;
using namespace kitra::connector;

extern "C" HRESULT STDAPICALLTYPE DllGetClassObject(REFCLSID clsid, REFIID iid, void** object) {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    if (!IsEqualCLSID(clsid, reinterpret_cast<const CLSID&>(kCLSID_KitraConnector))) {
        return CLASS_E_CLASSNOTAVAILABLE;
    }
    return automation::g_factory.QueryInterface(iid, object);
}

extern "C" HRESULT STDAPICALLTYPE DllCanUnloadNow() { return CanUnload() ? S_OK : S_FALSE; }

extern "C" HRESULT STDAPICALLTYPE DllRegisterServer() {
    try {
        RegisterComponent({host::GuidToString(kCLSID_KitraConnector), kProgID_KitraConnector,
                           ModulePath()});
    } catch (...) {
        return SELFREG_E_CLASS;
    }
    const HRESULT result = automation::RegisterTypeLibrary();
    return SUCCEEDED(result) ? S_OK : SELFREG_E_TYPELIB;
}

extern "C" HRESULT STDAPICALLTYPE DllUnregisterServer() {
    const HRESULT library = automation::UnregisterTypeLibrary();
    try {
        UnregisterComponent(host::GuidToString(kCLSID_KitraConnector));
    } catch (...) {
        return SELFREG_E_CLASS;
    }
    return SUCCEEDED(library) ? S_OK : SELFREG_E_TYPELIB;
}
