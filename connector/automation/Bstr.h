#pragma once
// Automation text at the component's boundary: BSTR (UTF-16, counted) to the system's UTF-8
// and back, and the automation boolean.
#include <windows.h>

#include <oleauto.h>

#include <string>

#include "core/Text.h"

namespace kitra::connector::automation {

inline std::string Utf8FromBstr(BSTR text) {
    if (text == nullptr) return {};
    return Utf8FromUtf16(
        std::u16string_view(reinterpret_cast<const char16_t*>(text), ::SysStringLen(text)));
}

// A new BSTR for the caller to free; null when memory ran out.
inline BSTR BstrFromUtf8(const std::string& text) {
    const std::u16string wide = Utf16FromUtf8(text);
    return ::SysAllocStringLen(reinterpret_cast<const OLECHAR*>(wide.data()),
                               static_cast<UINT>(wide.size()));
}

inline VARIANT_BOOL AutomationBool(bool value) { return value ? VARIANT_TRUE : VARIANT_FALSE; }

}  // namespace kitra::connector::automation
