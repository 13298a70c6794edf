#pragma once
// KitraConnector as automation clients reach it: the dual interface IConnector of the
// component's type library. Each member converts its automation arguments (BSTR, VARIANT_BOOL,
// VARIANT, IDispatch) to the connector's own types, calls the same KitraConnector as every
// other host, and converts the answer back; late-bound calls go through the type library's
// description of the interface. Nothing below this layer knows automation types.
#include <windows.h>

#include <atomic>

#include "POSConnectorKitra_h.h"
#include "host/Com.h"
#include "host/IConnector.h"

namespace kitra::connector::automation {

class AutomationConnector final : public ::IConnector {
public:
    AutomationConnector();
    AutomationConnector(const AutomationConnector&) = delete;
    AutomationConnector& operator=(const AutomationConnector&) = delete;

    // IUnknown
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;

    // IDispatch, from the type library
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override;
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID locale, ITypeInfo** info) override;
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID locale,
                                            DISPID* ids) override;
    HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID iid, LCID locale, WORD flags,
                                     DISPPARAMS* parameters, VARIANT* result,
                                     EXCEPINFO* exception, UINT* wrongArgument) override;

    // IConnector, in slot order
    HRESULT STDMETHODCALLTYPE get_ConnectorID(BSTR* id) override;
    HRESULT STDMETHODCALLTYPE get_Description(BSTR* description) override;
    HRESULT STDMETHODCALLTYPE Signature(BSTR text, BSTR* signature) override;
    HRESULT STDMETHODCALLTYPE get_HasUISetting(VARIANT_BOOL* has) override;
    HRESULT STDMETHODCALLTYPE get_Version(BSTR* version) override;
    HRESULT STDMETHODCALLTYPE Config(VARIANT_BOOL* accepted) override;
    HRESULT STDMETHODCALLTYPE Init(VARIANT_BOOL* done) override;
    HRESULT STDMETHODCALLTYPE Dispose() override;
    HRESULT STDMETHODCALLTYPE Execute() override;
    HRESULT STDMETHODCALLTYPE ValidateSettings(VARIANT_BOOL* valid) override;
    HRESULT STDMETHODCALLTYPE put_EventNotifier(IDispatch* notifier) override;
    HRESULT STDMETHODCALLTYPE get_HasUITrace(VARIANT_BOOL* has) override;
    HRESULT STDMETHODCALLTYPE LoadDefaults(BSTR xml, VARIANT_BOOL* stored) override;
    HRESULT STDMETHODCALLTYPE Save(VARIANT_BOOL* saved) override;
    HRESULT STDMETHODCALLTYPE Delete(VARIANT_BOOL* deleted) override;
    HRESULT STDMETHODCALLTYPE ShowTrace() override;
    HRESULT STDMETHODCALLTYPE get_FunctionalLevel(BSTR* level) override;
    HRESULT STDMETHODCALLTYPE ResetData() override;
    HRESULT STDMETHODCALLTYPE HandleImportExport(VARIANT_BOOL* handles) override;
    HRESULT STDMETHODCALLTYPE HandleReExport(VARIANT_BOOL* handles) override;
    HRESULT STDMETHODCALLTYPE ImportData() override;
    HRESULT STDMETHODCALLTYPE ExportData() override;
    HRESULT STDMETHODCALLTYPE ReExport(VARIANT a, VARIANT b, VARIANT c, VARIANT d) override;

private:
    ~AutomationConnector();  // through Release only

    std::atomic<ULONG> references_{1};
    host::ComPtr<host::IConnector> connector_;  // the connector itself
};

// The type library embedded in this module (resource TYPELIB 1), loaded once per process; null
// when it cannot be loaded. The caller gets its own reference.
ITypeLib* EmbeddedTypeLibrary();

}  // namespace kitra::connector::automation
