#include "core/Variant.h"

#include "core/Error.h"
#include "core/Numbers.h"
#include "core/Text.h"

namespace kitra {

Variant Variant::Null() {
    Variant value;
    value.value_.emplace<NullTag>();
    return value;
}

Variant::Type Variant::GetType() const {
    switch (value_.index()) {
        case 0: return Type::Empty;
        case 1: return Type::Null;
        case 2: return Type::Integer;
        case 3: return Type::Long;
        case 4: return Type::Double;
        case 5: return Type::Boolean;
        case 6: return Type::Date;
        default: return Type::String;
    }
}

bool Variant::IsNumeric() const {
    switch (GetType()) {
        case Type::Empty:
        case Type::Integer:
        case Type::Long:
        case Type::Double:
        case Type::Boolean: return true;
        default: return false;
    }
}

std::string Variant::ToText(const TextConventions& conv) const {
    switch (GetType()) {
        case Type::Empty: return {};
        case Type::Null: throw errors::InvalidUseOfNull();
        case Type::Integer: return std::to_string(std::get<std::int16_t>(value_));
        case Type::Long: return std::to_string(std::get<std::int32_t>(value_));
        case Type::Double: return FormatHostNumber(std::get<double>(value_), conv.decimalSeparator);
        case Type::Boolean: return std::get<bool>(value_) ? "True" : "False";
        case Type::Date: return FormatDatePattern(std::get<DateTime>(value_), conv.generalDateForm);
        case Type::String: return std::get<std::string>(value_);
    }
    return {};
}

double Variant::ToDouble(const TextConventions& conv) const {
    switch (GetType()) {
        case Type::Empty: return 0;
        case Type::Null: throw errors::InvalidUseOfNull();
        case Type::Integer: return std::get<std::int16_t>(value_);
        case Type::Long: return std::get<std::int32_t>(value_);
        case Type::Double: return std::get<double>(value_);
        // The host's True is -1.
        case Type::Boolean: return std::get<bool>(value_) ? -1 : 0;
        case Type::Date: return std::get<DateTime>(value_).ToSerial();
        case Type::String:
            return ParseNumberStrict(std::get<std::string>(value_), conv.decimalSeparator);
    }
    return 0;
}

std::int16_t Variant::ToInt16(const TextConventions& conv) const {
    return RoundToInt16(ToDouble(conv));
}

std::int32_t Variant::ToInt32(const TextConventions& conv) const {
    return RoundToInt32(ToDouble(conv));
}

bool Variant::ToBool(const TextConventions& conv) const {
    if (const std::string* text = AsString()) {
        if (EqualsNoCase(Trim(*text), "True")) return true;
        if (EqualsNoCase(Trim(*text), "False")) return false;
    }
    return ToDouble(conv) != 0;
}

DateTime Variant::ToDate(const TextConventions& conv) const {
    switch (GetType()) {
        case Type::Null: throw errors::InvalidUseOfNull();
        case Type::Date: return std::get<DateTime>(value_);
        case Type::String: {
            const std::string text = Trim(std::get<std::string>(value_));
            if (auto iso = ParseIsoDateTime(text)) return *iso;
            if (auto general = ParseDatePattern(text, conv.generalDateForm)) return *general;
            throw errors::TypeMismatch();
        }
        default: return DateTime::FromSerial(ToDouble(conv));
    }
}

}  // namespace kitra
