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

// The Windows-1252 code (0..255) of a character, or -1 when Windows-1252 cannot represent it.
int Windows1252Code(char32_t codePoint);

// Case-insensitive equality as the host compares keys (ASCII and Latin-1 letters fold).
bool EqualsNoCase(std::string_view a, std::string_view b);
// Upper-case form used as a case-insensitive key.
std::string FoldCase(std::string_view text);

// Removes blanks (space, tab, CR, LF) at both ends.
std::string Trim(std::string_view text);

}  // namespace kitra
