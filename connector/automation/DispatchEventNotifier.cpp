#include "connector/automation/DispatchEventNotifier.h"

#include "connector/automation/Bstr.h"

namespace kitra::connector::automation {
namespace {

// {A6EF9860-C720-11D0-9337-00A0C90DCAA9}, which not every import library of the system carries.
constexpr IID kIID_IDispatchEx{0xA6EF9860, 0xC720, 0x11D0,
                               {0x93, 0x37, 0x00, 0xA0, 0xC9, 0x0D, 0xCA, 0xA9}};

}  // namespace

DispatchEventNotifier::DispatchEventNotifier(IDispatch* notifier) : notifier_(notifier) {
    notifier_->AddRef();
    if (FAILED(notifier_->QueryInterface(kIID_IDispatchEx, reinterpret_cast<void**>(&extended_)))) {
        extended_ = nullptr;
    }
}

DispatchEventNotifier::~DispatchEventNotifier() {
    if (extended_ != nullptr) extended_->Release();
    notifier_->Release();
}

DISPID DispatchEventNotifier::Member(const wchar_t* name, DISPID& cached, bool& looked) {
    if (!looked) {
        looked = true;
        LPOLESTR names[] = {const_cast<LPOLESTR>(name)};
        if (FAILED(notifier_->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &cached))) {
            cached = DISPID_UNKNOWN;
            BSTR text = ::SysAllocString(name);
            if (extended_ == nullptr || text == nullptr ||
                FAILED(extended_->GetDispID(text, fdexNameCaseInsensitive, &cached))) {
                cached = DISPID_UNKNOWN;
            }
            ::SysFreeString(text);
        }
    }
    return cached;
}

void DispatchEventNotifier::Call(DISPID member, VARIANT* arguments, UINT count) {
    if (member == DISPID_UNKNOWN) return;
    DISPPARAMS parameters{arguments, nullptr, count, 0};
    EXCEPINFO exception{};
    VARIANT result;
    ::VariantInit(&result);
    UINT wrongArgument = 0;
    const HRESULT outcome =
        extended_ != nullptr
            ? extended_->InvokeEx(member, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters, &result,
                                  &exception, nullptr)
            : notifier_->Invoke(member, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters,
                                &result, &exception, &wrongArgument);
    ::VariantClear(&result);
    if (outcome == DISP_E_EXCEPTION) {
        ::SysFreeString(exception.bstrSource);
        ::SysFreeString(exception.bstrDescription);
        ::SysFreeString(exception.bstrHelpFile);
    }
}

void DispatchEventNotifier::NotifyProgress(long position, long total, const std::string& text) {
    const DISPID member = Member(L"NotifyProgress", progress_, progressLooked_);
    if (member == DISPID_UNKNOWN) return;
    // Automation passes arguments last first.
    VARIANT arguments[3];
    arguments[0].vt = VT_BSTR;
    arguments[0].bstrVal = BstrFromUtf8(text);
    arguments[1].vt = VT_I4;
    arguments[1].lVal = total;
    arguments[2].vt = VT_I4;
    arguments[2].lVal = position;
    Call(member, arguments, 3);
    ::SysFreeString(arguments[0].bstrVal);
}

void DispatchEventNotifier::NotifyStatus(const std::string& text) {
    const DISPID member = Member(L"NotifyStatus", status_, statusLooked_);
    if (member == DISPID_UNKNOWN) return;
    VARIANT argument;
    argument.vt = VT_BSTR;
    argument.bstrVal = BstrFromUtf8(text);
    Call(member, &argument, 1);
    ::SysFreeString(argument.bstrVal);
}

}  // namespace kitra::connector::automation
