#include "settings/SettingsXml.h"

#include <algorithm>
#include <cstring>
#include <sstream>
#include <string_view>
#include <vector>

#include "core/Numbers.h"
#include "core/Text.h"
#include "core/StrictXml.h"

namespace kitra::settings_xml {
namespace {

// Sorting the names keeps the check at n log n: an element with a hundred thousand attributes is
// checked in milliseconds, where comparing every pair took seconds.
bool HasDuplicateAttribute(pugi::xml_node element, std::vector<std::string_view>& names) {
    names.clear();
    for (pugi::xml_attribute a = element.first_attribute(); a; a = a.next_attribute()) {
        names.emplace_back(a.name());
    }
    if (names.size() < 2) return false;
    std::sort(names.begin(), names.end());
    return std::adjacent_find(names.begin(), names.end()) != names.end();
}

// The parser lets through a few things that are not XML: text or a second element beside the
// root, an attribute given twice, a bare "&" or "<" inside a value, an unknown entity. Those
// texts are refused like any other broken text (Load checks the last two).
bool IsWellFormedTree(const pugi::xml_document& document) {
    int elements = 0;
    for (pugi::xml_node node : document.children()) {
        if (node.type() == pugi::node_element) {
            ++elements;
        } else if (node.type() == pugi::node_pcdata || node.type() == pugi::node_cdata) {
            return false;
        }
    }
    if (elements != 1) return false;

    struct DuplicateFinder : pugi::xml_tree_walker {
        bool found = false;
        std::vector<std::string_view> names;  // reused from element to element
        bool for_each(pugi::xml_node& node) override {
            if (node.type() == pugi::node_element && HasDuplicateAttribute(node, names)) {
                found = true;
            }
            return !found;
        }
    } finder;
    if (HasDuplicateAttribute(document.document_element(), finder.names)) return false;
    document.document_element().traverse(finder);
    return !finder.found;
}

// A settings text is UTF-8 and holds only characters XML allows: no NUL, none of the other
// control characters but tab, line feed and carriage return, no U+FFFE or U+FFFF. The parser
// would read past such bytes (or stop at a NUL as if the text ended there), so they are
// refused here, and so is a text in another encoding, such as UTF-16.
bool HasOnlyXmlCharacters(std::string_view text) {
    if (!IsValidUtf8(text)) return false;
    // In valid UTF-8 a byte below 0x80 is always a character of its own, and U+FFFE and U+FFFF
    // are always EF BF BE and EF BF BF, so the bytes can be checked without decoding.
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto c = static_cast<unsigned char>(text[i]);
        if (c < 0x20 && c != '\t' && c != '\n' && c != '\r') return false;
        if (c == 0xEF && i + 2 < text.size() && static_cast<unsigned char>(text[i + 1]) == 0xBF &&
            (static_cast<unsigned char>(text[i + 2]) & 0xFE) == 0xBE) {
            return false;
        }
    }
    return true;
}

}  // namespace

bool Load(std::string_view text, pugi::xml_document& document) noexcept {
    try {
        if (!HasOnlyXmlCharacters(text)) return false;
        // Fragment mode keeps stray text beside the root as nodes, so the check above can see it.
        const unsigned options = pugi::parse_default | pugi::parse_fragment;
        const pugi::xml_parse_result result =
            document.load_buffer(text.data(), text.size(), options, pugi::encoding_utf8);
        return result && IsWellFormedTree(document) && !FindNonStrictXml(text);
    } catch (...) {
        return false;
    }
}

std::string Render(const pugi::xml_document& document) {
    std::ostringstream out;
    // format_raw: no indentation and no line breaks; format_no_declaration: the text starts at
    // the root element, as the settings were always stored.
    document.save(out, "", pugi::format_raw | pugi::format_no_declaration, pugi::encoding_utf8);
    return out.str();
}

void MoveUnder(pugi::xml_node parent, pugi::xml_node made) noexcept {
    if (!made) return;
    if (!parent.append_move(made)) made.parent().remove_child(made);
}

pugi::xml_node FindDescendant(pugi::xml_node element, const char* name) noexcept {
    return element.find_node([name](pugi::xml_node node) {
        return node.type() == pugi::node_element && std::strcmp(node.name(), name) == 0;
    });
}

std::string NormaliseVat(std::string_view text, const host::IUtilityService& numbers) {
    return FormatNormalisedVat(numbers.ParseNumber(text, kVatSeparator));
}

void ReadText(pugi::xml_node element, const char* name, std::string& field) noexcept {
    Guarded([&] {
        if (pugi::xml_attribute attribute = element.attribute(name)) field = attribute.value();
    });
}

void ReadInt16(pugi::xml_node element, const char* name, std::int16_t& field,
               const host::IUtilityService& numbers) noexcept {
    Guarded([&] {
        if (pugi::xml_attribute attribute = element.attribute(name)) {
            field = RoundToInt16(numbers.ParseNumber(attribute.value(), kNumberSeparator));
        }
    });
}

void ReadNumber(pugi::xml_node element, const char* name, double& field,
                const host::IUtilityService& numbers) noexcept {
    Guarded([&] {
        if (pugi::xml_attribute attribute = element.attribute(name)) {
            field = numbers.ParseNumber(attribute.value(), kNumberSeparator);
        }
    });
}

void ReadFlag(pugi::xml_node element, const char* name, bool& field,
              const host::IUtilityService& numbers) noexcept {
    Guarded([&] {
        if (pugi::xml_attribute attribute = element.attribute(name)) {
            // Written as "1" or "0"; read back as a number, where every non-zero value is true.
            field = numbers.ParseNumber(attribute.value(), kNumberSeparator) != 0;
        }
    });
}

void ReadVat(pugi::xml_node element, const char* name, std::string& field,
             const host::IUtilityService& numbers) noexcept {
    Guarded([&] {
        if (pugi::xml_attribute attribute = element.attribute(name)) {
            field = NormaliseVat(attribute.value(), numbers);
        }
    });
}

void WriteText(pugi::xml_node element, const char* name, std::string_view value) noexcept {
    Guarded([&] { element.append_attribute(name).set_value(value.data(), value.size()); });
}

void WriteInteger(pugi::xml_node element, const char* name, long value) noexcept {
    Guarded([&] { WriteText(element, name, std::to_string(value)); });
}

void WriteNumber(pugi::xml_node element, const char* name, double value) noexcept {
    // Written with the separator the number reads use, so that the value comes back as it was:
    // one and a half is stored as "1,5".
    Guarded([&] { WriteText(element, name, FormatHostNumber(value, kNumberSeparator)); });
}

void WriteFlag(pugi::xml_node element, const char* name, bool value) noexcept {
    WriteText(element, name, value ? "1" : "0");
}

}  // namespace kitra::settings_xml
