#pragma once
// A value as it travels between the restaurant database, the host and the importers: empty,
// null, text, number, 16/32-bit integer, boolean or date-time, with the host's conversions.
#include <cstdint>
#include <string>
#include <variant>

#include "core/DateTime.h"

namespace kitra {

// How the host writes numbers and dates as text: its decimal separator and its general date
// form (a pattern for FormatDatePattern). The reference host: "," and "dd-mm-yyyy hh:nn:ss".
struct TextConventions {
    char decimalSeparator = ',';
    std::string generalDateForm = "dd-mm-yyyy hh:nn:ss";
};

class Variant {
public:
    enum class Type { Empty, Null, Integer, Long, Double, Boolean, Date, String };

    Variant() = default;  // Empty
    static Variant Null();
    Variant(std::int16_t value) : value_(value) {}
    Variant(std::int32_t value) : value_(value) {}
    Variant(double value) : value_(value) {}
    Variant(bool value) : value_(value) {}
    Variant(const DateTime& value) : value_(value) {}
    Variant(std::string value) : value_(std::move(value)) {}
    Variant(const char* value) : value_(std::string(value)) {}

    Type GetType() const;
    bool IsNull() const { return GetType() == Type::Null; }
    bool IsEmpty() const { return GetType() == Type::Empty; }
    bool IsNumeric() const;  // Integer, Long, Double (and Boolean/Empty, as the host counts them)

    // Conversions. Null fails with "Invalid use of Null"; text that is not a number where a
    // number is needed fails with "Type mismatch"; out of range fails with "Overflow".
    // Text is read as a number with the conventions' decimal separator.
    std::string ToText(const TextConventions& conv = {}) const;
    double ToDouble(const TextConventions& conv = {}) const;
    std::int16_t ToInt16(const TextConventions& conv = {}) const;
    std::int32_t ToInt32(const TextConventions& conv = {}) const;
    bool ToBool(const TextConventions& conv = {}) const;
    DateTime ToDate(const TextConventions& conv = {}) const;

    // Direct access for callers that checked the type.
    const std::string* AsString() const { return std::get_if<std::string>(&value_); }

    bool operator==(const Variant& other) const { return value_ == other.value_; }

private:
    struct NullTag {
        bool operator==(const NullTag&) const = default;
    };
    using Storage = std::variant<std::monostate, NullTag, std::int16_t, std::int32_t, double, bool,
                                 DateTime, std::string>;
    Storage value_;
};

}  // namespace kitra
