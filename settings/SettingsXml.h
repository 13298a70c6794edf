#pragma once
// The XML plumbing shared by the settings object and the restaurants: loading and rendering the
// settings text, and reading or writing one attribute at a time.
//
// Every attribute read is a step of its own. When it fails (the attribute is absent, its text is
// not a number, the number does not fit) the field keeps what it held and the caller goes on with
// the next attribute: a settings text from an older version, or one with a damaged value, still
// loads everything else.
#include <cstdint>
#include <string>
#include <string_view>

#include <pugixml.hpp>

#include "host/IUtilityService.h"

namespace kitra::settings_xml {

// Integer and decimal attributes are numbers written with "," as decimal separator; VAT rates
// are written with ".".
inline constexpr char kNumberSeparator = ',';
inline constexpr char kVatSeparator = '.';

// Runs one step; whatever it throws is swallowed so that the next step still runs.
template <typename Step>
void Guarded(Step&& step) noexcept {
    try {
        step();
    } catch (...) {
    }
}

// Parses a settings text into `document`. False when the text is not well-formed XML with exactly
// one top-level element; `document` is then to be ignored.
bool Load(std::string_view text, pugi::xml_document& document) noexcept;

// The document's XML text: no XML declaration, no indentation and no line breaks, so the stored
// text is one compact line and a load followed by a render gives back the identical text.
std::string Render(const pugi::xml_document& document);

// Moves an element made by a WriteXml (left at the document's top level) under `parent`; if it
// cannot be moved it is removed, so no stray element ends up beside the root.
void MoveUnder(pugi::xml_node parent, pugi::xml_node made) noexcept;

// The first element named `name` below `element` (not `element` itself), in document order.
pugi::xml_node FindDescendant(pugi::xml_node element, const char* name) noexcept;

// The VAT rate in its normalised form: read with "." as separator and written back as the
// shortest decimal text ("23.0" -> "23", "0.5" -> ".5"). Throws when the text is not a number.
std::string NormaliseVat(std::string_view text, const host::IUtilityService& numbers);

// Reads: absent attribute or failed conversion -> the field is left as it was.
void ReadText(pugi::xml_node element, const char* name, std::string& field) noexcept;
// Parsed with "," then rounded half to even to 16 bits; out of range leaves the field.
void ReadInt16(pugi::xml_node element, const char* name, std::int16_t& field,
               const host::IUtilityService& numbers) noexcept;
void ReadNumber(pugi::xml_node element, const char* name, double& field,
                const host::IUtilityService& numbers) noexcept;
// Parsed as a number; any non-zero number is true ("1" gives true, "0" false).
void ReadFlag(pugi::xml_node element, const char* name, bool& field,
              const host::IUtilityService& numbers) noexcept;
// Parsed with "." and stored normalised.
void ReadVat(pugi::xml_node element, const char* name, std::string& field,
             const host::IUtilityService& numbers) noexcept;

// Writes append the attribute after those already on the element, so the call order is the
// attribute order of the text.
void WriteText(pugi::xml_node element, const char* name, std::string_view value) noexcept;
void WriteInteger(pugi::xml_node element, const char* name, long value) noexcept;
// A decimal number in the form the number reads expect back: "," as separator ("1,5").
void WriteNumber(pugi::xml_node element, const char* name, double value) noexcept;
// "1" for true, "0" for false.
void WriteFlag(pugi::xml_node element, const char* name, bool value) noexcept;

}  // namespace kitra::settings_xml
