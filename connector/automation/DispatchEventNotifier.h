#pragma once
// The host's event notifier as an automation object: any object with the methods
// NotifyProgress(position, total, text) and NotifyStatus(text), called late-bound by name (a
// script class with these two subs is one). The import engine sees a plain IEventNotifier.
// A member the object lacks, or a call that fails, is passed over: the notifier only reports,
// and a run never ends because of it. Objects that name their members only through IDispatchEx
// (some script engines' class instances) are asked there.
#include <windows.h>

#include <dispex.h>
#include <oaidl.h>

#include "host/IEventNotifier.h"

namespace kitra::connector::automation {

class DispatchEventNotifier final : public host::IEventNotifier {
public:
    explicit DispatchEventNotifier(IDispatch* notifier);  // keeps a reference
    ~DispatchEventNotifier() override;
    DispatchEventNotifier(const DispatchEventNotifier&) = delete;
    DispatchEventNotifier& operator=(const DispatchEventNotifier&) = delete;

    void NotifyProgress(long position, long total, const std::string& text) override;
    void NotifyStatus(const std::string& text) override;

private:
    // The member's dispatch id, looked up once; DISPID_UNKNOWN when the object has none.
    DISPID Member(const wchar_t* name, DISPID& cached, bool& looked);
    void Call(DISPID member, VARIANT* arguments, UINT count);

    IDispatch* notifier_;
    IDispatchEx* extended_ = nullptr;  // when the object has it
    DISPID progress_ = DISPID_UNKNOWN;
    DISPID status_ = DISPID_UNKNOWN;
    bool progressLooked_ = false;
    bool statusLooked_ = false;
};

}  // namespace kitra::connector::automation
