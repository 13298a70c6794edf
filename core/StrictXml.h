#pragma once
// What XML allows in the raw text of an attribute value or of character data: "&" only as the
// start of one of the five predefined entities or of a character reference to a character XML
// allows, no "<" at all, and no control character but tab, line feed and carriage return. pugixml lets such texts through; the settings reader and the
// host's settings check both hold a text to these rules, so that what a strict XML parser
// refuses is refused by both. Header-only: its users link pugixml themselves.
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <pugixml.hpp>

namespace kitra {

// Whether `code` is a character XML 1.0 allows in a document.
inline bool IsXmlCharacter(std::uint32_t code) {
    return code == 0x9 || code == 0xA || code == 0xD || (code >= 0x20 && code <= 0xD7FF) ||
           (code >= 0xE000 && code <= 0xFFFD) || (code >= 0x10000 && code <= 0x10FFFF);
}

// The offset in `raw` of the first "&", "<" or control character that XML does not allow
// there; nothing when the text is clean.
inline std::optional<std::size_t> FirstBadXmlReference(std::string_view raw) {
    for (std::size_t i = 0; i < raw.size(); ++i) {
        if (raw[i] == '<') return i;
        if (static_cast<unsigned char>(raw[i]) < 0x20 && !IsXmlCharacter(static_cast<unsigned char>(raw[i])))
            return i;
        if (raw[i] != '&') continue;
        const std::size_t end = raw.find(';', i + 1);
        if (end == std::string_view::npos) return i;
        const std::string_view name = raw.substr(i + 1, end - i - 1);
        if (name == "amp" || name == "lt" || name == "gt" || name == "quot" || name == "apos") {
            i = end;
            continue;
        }
        if (name.size() < 2 || name[0] != '#') return i;
        const bool hex = name[1] == 'x';
        const std::string_view digits = name.substr(hex ? 2 : 1);
        if (digits.empty() || digits.size() > 8) return i;
        std::uint32_t code = 0;
        for (char c : digits) {
            int digit = -1;
            if (c >= '0' && c <= '9') digit = c - '0';
            else if (hex && c >= 'a' && c <= 'f') digit = c - 'a' + 10;
            else if (hex && c >= 'A' && c <= 'F') digit = c - 'A' + 10;
            if (digit < 0) return i;
            code = code * (hex ? 16 : 10) + static_cast<std::uint32_t>(digit);
        }
        if (!IsXmlCharacter(code)) return i;
        i = end;
    }
    return std::nullopt;
}

// A value that breaks the rules above, found in a text pugixml parsed: where its element starts
// (an offset into the text) and what it is.
struct NonStrictXml {
    std::ptrdiff_t elementOffset = 0;
    std::string where;  // "o atributo X do elemento Y" or "o texto do elemento Y"
};

// Parses `text` again without expanding references and checks every attribute value and every
// piece of character data; nothing when all are clean (or when the text does not parse at all,
// which the caller's own parse reports).
inline std::optional<NonStrictXml> FindNonStrictXml(std::string_view text) {
    pugi::xml_document raw;
    const unsigned options = (pugi::parse_default | pugi::parse_fragment) & ~pugi::parse_escapes;
    if (!raw.load_buffer(text.data(), text.size(), options, pugi::encoding_utf8)) return std::nullopt;
    struct Walker : pugi::xml_tree_walker {
        std::optional<NonStrictXml> found;
        bool for_each(pugi::xml_node& node) override {
            if (node.type() == pugi::node_pcdata && FirstBadXmlReference(node.value())) {
                found = NonStrictXml{node.parent().offset_debug(),
                                     std::string("o texto do elemento ") + node.parent().name()};
            }
            if (node.type() != pugi::node_element) return !found;
            for (pugi::xml_attribute a = node.first_attribute(); a && !found; a = a.next_attribute()) {
                if (FirstBadXmlReference(a.value())) {
                    found = NonStrictXml{node.offset_debug(), std::string("o atributo ") + a.name() +
                                                                  " do elemento " + node.name()};
                }
            }
            return !found;
        }
    } walker;
    raw.traverse(walker);
    return walker.found;
}

}  // namespace kitra
