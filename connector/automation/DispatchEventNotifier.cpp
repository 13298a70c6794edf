#include "connector/automation/DispatchEventNotifier.h"

#include "connector/automation/Bstr.h"

namespace kitra::connector::automation {

DispatchEventNotifier::DispatchEventNotifier(IDispatch* notifier) : notifier_(notifier) {
    notifier_->AddRef();
}

DispatchEventNotifier::~DispatchEventNotifier() { notifier_->Release(); }

DISPID DispatchEventNotifier::Member(const wchar_t* name, DISPID& cached, bool& looked) {
    if (!looked) {
        looked = true;
        LPOLESTR names[] = {const_cast<LPOLESTR>(name)};
        if (FAILED(notifier_->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &cached))) {
            cached = DISPID_UNKNOWN;
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
    const HRESULT outcome = notifier_->Invoke(member, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD,
                                              &parameters, &result, &exception, &wrongArgument);
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
