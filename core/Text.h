#pragma once
// Text helpers: UTF-8 decoding, Windows-1252 codes and case-insensitive comparison.
#include <string>
#include <string_view>
#include <vector>

namespace kitra {

// Decodes UTF-8 into code points; an invalid byte becomes U+FFFD.
std::u32string DecodeUtf8(std::string_view text);
std::string EncodeUtf8(std::u32string_view text);
// Whether every byte belongs to a well-formed UTF-8 character.
bool IsValidUtf8(std::string_view text);
void AppendUtf8(std::string& out, char32_t codePoint);

// UTF-16, the text of the Windows component platform (BSTR, wide strings), and back. An
// invalid UTF-8 byte or a lone surrogate becomes U+FFFD.
std::u16string Utf16FromUtf8(std::string_view text);
std::string Utf8FromUtf16(std::u16string_view text);
#if defined(_WIN32)
// Windows' wide strings are UTF-16.
inline std::wstring WideFromUtf8(std::string_view text) {
    const std::u16string wide = Utf16FromUtf8(text);
    return std::wstring(wide.begin(), wide.end());
}
inline std::string Utf8FromWide(std::wstring_view text) {
    return Utf8FromUtf16(std::u16string(text.begin(), text.end()));
}
#endif

// The Windows-1252 code (0..255) of a character, or -1 when Windows-1252 cannot represent it.
int Windows1252Code(char32_t codePoint);

// Case-insensitive equality as the host compares keys (ASCII and Latin-1 letters fold).
bool EqualsNoCase(std::string_view a, std::string_view b);
// Upper-case form used as a case-insensitive key.
std::string FoldCase(std::string_view text);

// Removes blanks (space, tab, CR, LF) at both ends.
std::string Trim(std::string_view text);

}  // namespace kitra
