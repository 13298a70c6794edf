#include "connector/automation/AutomationConnector.h"

#include <mutex>
#include <new>

#include "connector/KitraConnector.h"
#include "connector/Platform.h"
#include "connector/automation/Bstr.h"
#include "connector/automation/DispatchEventNotifier.h"
#include "core/Text.h"
#include "core/Variant.h"

namespace kitra::connector::automation {
namespace {

// The interface's description, for late-bound calls: one per process, kept.
ITypeInfo* InterfaceTypeInfo() {
    static std::once_flag once;
    static ITypeInfo* info = nullptr;
    std::call_once(once, [] {
        ITypeLib* library = EmbeddedTypeLibrary();
        if (library == nullptr) return;
        if (FAILED(library->GetTypeInfoOfGuid(IID_IConnector, &info))) info = nullptr;
        library->Release();
    });
    return info;
}

HRESULT Text(const std::string& value, BSTR* out) {
    if (out == nullptr) return E_POINTER;
    *out = BstrFromUtf8(value);
    return *out != nullptr ? S_OK : E_OUTOFMEMORY;
}

HRESULT Boolean(bool value, VARIANT_BOOL* out) {
    if (out == nullptr) return E_POINTER;
    *out = AutomationBool(value);
    return S_OK;
}

// What ReExport's arguments carry, as the connector's own values (the member ignores them).
kitra::Variant FromAutomation(const VARIANT& value) {
    VARIANT plain;
    ::VariantInit(&plain);
    switch (value.vt) {
        case VT_EMPTY: return kitra::Variant();
        case VT_NULL: return kitra::Variant::Null();
        case VT_BSTR: return kitra::Variant(Utf8FromBstr(value.bstrVal));
        default:
            if (SUCCEEDED(::VariantChangeType(&plain, const_cast<VARIANT*>(&value), 0, VT_R8))) {
                return kitra::Variant(plain.dblVal);
            }
            return kitra::Variant();
    }
}

// Every member traps what goes wrong below it: a failure is an HRESULT, never an exception
// across the boundary.
template <typename Action>
HRESULT Trapped(Action action) {
    try {
        return action();
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (...) {
        return E_FAIL;
    }
}

// A member that answers nothing: S_OK once it has run.
template <typename Action>
HRESULT Done(Action action) {
    return Trapped([&] {
        action();
        return S_OK;
    });
}

}  // namespace

ITypeLib* EmbeddedTypeLibrary() {
    const std::wstring path = WideFromUtf8(ModulePath());
    ITypeLib* library = nullptr;
    if (FAILED(::LoadTypeLibEx(path.c_str(), REGKIND_NONE, &library))) return nullptr;
    return library;
}

AutomationConnector::AutomationConnector() : connector_(new KitraConnector()) {}

AutomationConnector::~AutomationConnector() = default;

HRESULT STDMETHODCALLTYPE AutomationConnector::QueryInterface(REFIID iid, void** object) {
    if (object == nullptr) return E_POINTER;
    if (IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IDispatch) ||
        IsEqualIID(iid, IID_IConnector)) {
        *object = static_cast<::IConnector*>(this);
        AddRef();
        return S_OK;
    }
    *object = nullptr;
    return E_NOINTERFACE;
}

ULONG STDMETHODCALLTYPE AutomationConnector::AddRef() { return ++references_; }

ULONG STDMETHODCALLTYPE AutomationConnector::Release() {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
}

HRESULT STDMETHODCALLTYPE AutomationConnector::GetTypeInfoCount(UINT* count) {
    if (count == nullptr) return E_POINTER;
    *count = InterfaceTypeInfo() != nullptr ? 1 : 0;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE AutomationConnector::GetTypeInfo(UINT index, LCID, ITypeInfo** info) {
    if (info == nullptr) return E_POINTER;
    *info = nullptr;
    if (index != 0) return DISP_E_BADINDEX;
    ITypeInfo* described = InterfaceTypeInfo();
    if (described == nullptr) return E_FAIL;
    described->AddRef();
    *info = described;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE AutomationConnector::GetIDsOfNames(REFIID iid, LPOLESTR* names,
                                                             UINT count, LCID, DISPID* ids) {
    if (!IsEqualIID(iid, IID_NULL)) return DISP_E_UNKNOWNINTERFACE;
    ITypeInfo* described = InterfaceTypeInfo();
    if (described == nullptr) return E_FAIL;
    return ::DispGetIDsOfNames(described, names, count, ids);
}

HRESULT STDMETHODCALLTYPE AutomationConnector::Invoke(DISPID member, REFIID iid, LCID, WORD flags,
                                                      DISPPARAMS* parameters, VARIANT* result,
                                                      EXCEPINFO* exception,
                                                      UINT* wrongArgument) {
    if (!IsEqualIID(iid, IID_NULL)) return DISP_E_UNKNOWNINTERFACE;
    ITypeInfo* described = InterfaceTypeInfo();
    if (described == nullptr) return E_FAIL;
    // The notifier is an object: clients assign it with "Set", a put by reference; the
    // interface has one put for it.
    if ((flags & DISPATCH_PROPERTYPUTREF) != 0) {
        flags = static_cast<WORD>((flags & ~DISPATCH_PROPERTYPUTREF) | DISPATCH_PROPERTYPUT);
    }
    return ::DispInvoke(static_cast<::IConnector*>(this), described, member, flags, parameters,
                        result, exception, wrongArgument);
}

HRESULT STDMETHODCALLTYPE AutomationConnector::get_ConnectorID(BSTR* id) {
    return Trapped([&] { return Text(connector_->ConnectorID(), id); });
}

HRESULT STDMETHODCALLTYPE AutomationConnector::get_Description(BSTR* description) {
    return Trapped([&] { return Text(connector_->Description(), description); });
}

HRESULT STDMETHODCALLTYPE AutomationConnector::Signature(BSTR text, BSTR* signature) {
    return Trapped([&] { return Text(connector_->Signature(Utf8FromBstr(text)), signature); });
}

HRESULT STDMETHODCALLTYPE AutomationConnector::get_HasUISetting(VARIANT_BOOL* has) {
    return Trapped([&] { return Boolean(connector_->HasUISetting(), has); });
}

HRESULT STDMETHODCALLTYPE AutomationConnector::get_Version(BSTR* version) {
    return Trapped([&] { return Text(connector_->Version(), version); });
}

HRESULT STDMETHODCALLTYPE AutomationConnector::Config(VARIANT_BOOL* accepted) {
    return Trapped([&] { return Boolean(connector_->Config(), accepted); });
}

HRESULT STDMETHODCALLTYPE AutomationConnector::Init(VARIANT_BOOL* done) {
    return Trapped([&] { return Boolean(connector_->Init(), done); });
}

HRESULT STDMETHODCALLTYPE AutomationConnector::Dispose() {
    return Done([&] { connector_->Dispose(); });
}

HRESULT STDMETHODCALLTYPE AutomationConnector::Execute() {
    return Done([&] { connector_->Execute(); });
}

HRESULT STDMETHODCALLTYPE AutomationConnector::ValidateSettings(VARIANT_BOOL* valid) {
    return Trapped([&] { return Boolean(connector_->ValidateSettings(), valid); });
}

HRESULT STDMETHODCALLTYPE AutomationConnector::put_EventNotifier(IDispatch* notifier) {
    return Done([&] {
        connector_->EventNotifier(notifier != nullptr
                                      ? std::make_shared<DispatchEventNotifier>(notifier)
                                      : nullptr);
    });
}

HRESULT STDMETHODCALLTYPE AutomationConnector::get_HasUITrace(VARIANT_BOOL* has) {
    return Trapped([&] { return Boolean(connector_->HasUITrace(), has); });
}

HRESULT STDMETHODCALLTYPE AutomationConnector::LoadDefaults(BSTR xml, VARIANT_BOOL* stored) {
    return Trapped([&] { return Boolean(connector_->LoadDefaults(Utf8FromBstr(xml)), stored); });
}

HRESULT STDMETHODCALLTYPE AutomationConnector::Save(VARIANT_BOOL* saved) {
    return Trapped([&] { return Boolean(connector_->Save(), saved); });
}

HRESULT STDMETHODCALLTYPE AutomationConnector::Delete(VARIANT_BOOL* deleted) {
    return Trapped([&] { return Boolean(connector_->Delete(), deleted); });
}

HRESULT STDMETHODCALLTYPE AutomationConnector::ShowTrace() {
    return Done([&] { connector_->ShowTrace(); });
}

HRESULT STDMETHODCALLTYPE AutomationConnector::get_FunctionalLevel(BSTR* level) {
    return Trapped([&] { return Text(connector_->FunctionalLevel(), level); });
}

HRESULT STDMETHODCALLTYPE AutomationConnector::ResetData() {
    return Done([&] { connector_->ResetData(); });
}

HRESULT STDMETHODCALLTYPE AutomationConnector::HandleImportExport(VARIANT_BOOL* handles) {
    return Trapped([&] { return Boolean(connector_->HandleImportExport(), handles); });
}

HRESULT STDMETHODCALLTYPE AutomationConnector::HandleReExport(VARIANT_BOOL* handles) {
    return Trapped([&] { return Boolean(connector_->HandleReExport(), handles); });
}

HRESULT STDMETHODCALLTYPE AutomationConnector::ImportData() {
    return Done([&] { connector_->ImportData(); });
}

HRESULT STDMETHODCALLTYPE AutomationConnector::ExportData() {
    return Done([&] { connector_->ExportData(); });
}

HRESULT STDMETHODCALLTYPE AutomationConnector::ReExport(VARIANT a, VARIANT b, VARIANT c, VARIANT d) {
    return Done([&] {
        connector_->ReExport(FromAutomation(a), FromAutomation(b), FromAutomation(c),
                             FromAutomation(d));
    });
}

}  // namespace kitra::connector::automation
