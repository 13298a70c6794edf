#include "core/Text.h"

#include <array>

namespace kitra {

namespace {

// The character that starts at text[i]: its code point and byte length. False, with length 1,
// when the bytes there are not UTF-8 (a stray continuation byte, a sequence cut short, an
// over-long form, a surrogate or a code point beyond U+10FFFF).
bool DecodeAt(std::string_view text, std::size_t i, char32_t& cp, std::size_t& length) {
    const auto byte = [&](std::size_t k) { return static_cast<unsigned char>(text[k]); };
    const unsigned char lead = byte(i);
    length = 1;
    int extra = 0;
    char32_t min = 0;
    if (lead < 0x80) {
        cp = lead;
        return true;
    } else if ((lead & 0xE0) == 0xC0) {
        extra = 1, cp = lead & 0x1F, min = 0x80;
    } else if ((lead & 0xF0) == 0xE0) {
        extra = 2, cp = lead & 0x0F, min = 0x800;
    } else if ((lead & 0xF8) == 0xF0) {
        extra = 3, cp = lead & 0x07, min = 0x10000;
    } else {
        return false;
    }
    if (i + static_cast<std::size_t>(extra) >= text.size()) return false;
    for (int k = 1; k <= extra; ++k) {
        const unsigned char next = byte(i + static_cast<std::size_t>(k));
        if ((next & 0xC0) != 0x80) return false;
        cp = (cp << 6) | (next & 0x3F);
    }
    if (cp < min || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) return false;
    length = static_cast<std::size_t>(extra) + 1;
    return true;
}

}  // namespace

std::u32string DecodeUtf8(std::string_view text) {
    std::u32string out;
    out.reserve(text.size());
    std::size_t length = 0;
    for (std::size_t i = 0; i < text.size(); i += length) {
        char32_t cp = 0;
        out.push_back(DecodeAt(text, i, cp, length) ? cp : 0xFFFD);
    }
    return out;
}

std::u16string Utf16FromUtf8(std::string_view text) {
    std::u16string out;
    out.reserve(text.size());
    for (const char32_t cp : DecodeUtf8(text)) {
        if (cp >= 0x10000) {
            out += static_cast<char16_t>(0xD800 + ((cp - 0x10000) >> 10));
            out += static_cast<char16_t>(0xDC00 + ((cp - 0x10000) & 0x3FF));
        } else if (cp >= 0xD800 && cp <= 0xDFFF) {
            out += u'\uFFFD';
        } else {
            out += static_cast<char16_t>(cp);
        }
    }
    return out;
}

std::string Utf8FromUtf16(std::u16string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char16_t unit = text[i];
        if (unit >= 0xD800 && unit <= 0xDBFF && i + 1 < text.size() && text[i + 1] >= 0xDC00 &&
            text[i + 1] <= 0xDFFF) {
            AppendUtf8(out, 0x10000 + ((static_cast<char32_t>(unit) - 0xD800) << 10) +
                                (static_cast<char32_t>(text[i + 1]) - 0xDC00));
            ++i;
        } else if (unit >= 0xD800 && unit <= 0xDFFF) {
            AppendUtf8(out, 0xFFFD);
        } else {
            AppendUtf8(out, unit);
        }
    }
    return out;
}

bool IsValidUtf8(std::string_view text) {
    std::size_t length = 0;
    for (std::size_t i = 0; i < text.size(); i += length) {
        char32_t cp = 0;
        if (!DecodeAt(text, i, cp, length)) return false;
    }
    return true;
}

void AppendUtf8(std::string& out, char32_t cp) {
    if (cp < 0x80) {
        out += static_cast<char>(cp);
    } else if (cp < 0x800) {
        out += static_cast<char>(0xC0 | (cp >> 6));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else if (cp < 0x10000) {
        out += static_cast<char>(0xE0 | (cp >> 12));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (cp >> 18));
        out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    }
}

std::string EncodeUtf8(std::u32string_view text) {
    std::string out;
    out.reserve(text.size());
    for (char32_t cp : text) AppendUtf8(out, cp);
    return out;
}

int Windows1252Code(char32_t cp) {
    // 0x80..0x9F is where Windows-1252 differs from Latin-1; five of those codes are unused.
    static constexpr std::array<char32_t, 32> kHigh = {
        0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
        0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0,      0x017D, 0,
        0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
        0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};
    if (cp < 0x80 || (cp >= 0xA0 && cp <= 0xFF)) return static_cast<int>(cp);
    for (std::size_t k = 0; k < kHigh.size(); ++k) {
        if (kHigh[k] != 0 && kHigh[k] == cp) return static_cast<int>(0x80 + k);
    }
    return -1;
}

namespace {
char32_t FoldChar(char32_t cp) {
    if (cp >= 'a' && cp <= 'z') return cp - 32;
    // Latin-1 lower-case letters, except the division sign and ÿ (whose capital is elsewhere).
    if (cp >= 0xE0 && cp <= 0xFE && cp != 0xF7) return cp - 32;
    return cp;
}
}  // namespace

std::string FoldCase(std::string_view text) {
    std::u32string folded = DecodeUtf8(text);
    for (char32_t& cp : folded) cp = FoldChar(cp);
    return EncodeUtf8(folded);
}

bool EqualsNoCase(std::string_view a, std::string_view b) {
    // Names of columns and keys are plain ASCII nearly always: compared byte by byte, with no
    // decoding and no allocation. Any other byte takes the whole folding.
    if (a.size() == b.size()) {
        bool ascii = true;
        for (std::size_t i = 0; i < a.size() && ascii; ++i) {
            const auto x = static_cast<unsigned char>(a[i]);
            const auto y = static_cast<unsigned char>(b[i]);
            if (x >= 0x80 || y >= 0x80) {
                ascii = false;
            } else if (x != y) {
                const auto upper = [](unsigned char c) { return c >= 'a' && c <= 'z' ? c - 32 : c; };
                if (upper(x) != upper(y)) return false;
            }
        }
        if (ascii) return true;
    } else {
        // Texts of different lengths can still fold equal only when one has a byte beyond ASCII.
        const auto ascii = [](std::string_view t) {
            for (const char c : t) if (static_cast<unsigned char>(c) >= 0x80) return false;
            return true;
        };
        if (ascii(a) && ascii(b)) return false;
    }
    return FoldCase(a) == FoldCase(b);
}

std::string Trim(std::string_view text) {
    const auto blank = [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; };
    std::size_t begin = 0;
    std::size_t end = text.size();
    while (begin < end && blank(text[begin])) ++begin;
    while (end > begin && blank(text[end - 1])) --end;
    return std::string(text.substr(begin, end - begin));
}

}  // namespace kitra
