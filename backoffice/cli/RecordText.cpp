#include "backoffice/cli/RecordText.h"

#include <cmath>
#include <cstdlib>

#include <fmt/format.h>
#include <pugixml.hpp>

#include "backoffice/SettingsDocument.h"
#include "core/Error.h"

namespace kitra::backoffice::cli {
namespace {

std::string AsciiLower(std::string text) {
    for (char& c : text) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return text;
}

bool AllDigits(const std::string& text) {
    if (text.empty()) return false;
    for (char c : text) {
        if (c < '0' || c > '9') return false;
    }
    return true;
}

}  // namespace

std::string RecordText(const std::string& text, const std::string& message) {
    if (text.find_first_not_of(" \t") == std::string::npos) throw UsageError(message);
    for (unsigned char c : text) {
        if (c < 0x20 || c == 0x7F)
            throw UsageError(message + " Sem tabulações nem mudanças de linha.");
    }
    return text;
}

std::int32_t NumericCode(const std::string& text, const std::string& what, std::int32_t largest) {
    const std::string refusal =
        fmt::format("O código {} deve ser um número inteiro de 1 a {}; '{}' não é.", what, largest, text);
    if (!AllDigits(text) || text.size() > 10) throw UsageError(refusal);
    const long long value = std::strtoll(text.c_str(), nullptr, 10);
    if (value < 1 || value > largest) throw UsageError(refusal);
    return static_cast<std::int32_t>(value);
}

int PickNamed(const std::vector<NamedCode>& names, const std::string& text, const std::string& what) {
    const std::string wanted = AsciiLower(text);
    for (const NamedCode& named : names) {
        if (wanted == std::to_string(named.code) || wanted == AsciiLower(named.name) ||
            wanted == named.plain) {
            return named.code;
        }
    }
    std::string choices;
    for (const NamedCode& named : names)
        choices += fmt::format("{}{} ({})", choices.empty() ? "" : ", ", named.name, named.code);
    throw UsageError(fmt::format("{} desconhecida: '{}'. Use uma destas: {}.", what, text, choices));
}

const char* NameOf(const std::vector<NamedCode>& names, int code) {
    for (const NamedCode& named : names) {
        if (named.code == code) return named.name;
    }
    return "?";
}

double VatRate(const std::string& text) {
    std::string number = text;
    const std::size_t separator = number.find_first_of(",.");
    if (separator != std::string::npos) number[separator] = '.';
    const std::string whole = number.substr(0, separator);
    const std::string decimals = separator == std::string::npos ? "" : number.substr(separator + 1);
    const bool wellFormed = AllDigits(whole) && whole.size() <= 3 &&
                            (separator == std::string::npos || (AllDigits(decimals) && decimals.size() <= 4));
    const double rate = wellFormed ? std::strtod(number.c_str(), nullptr) : -1;
    if (!wellFormed || rate < 0 || rate >= 100) {
        throw UsageError(fmt::format(
            "A taxa '{}' não é uma percentagem de IVA que a retaguarda possa usar: deve ser de 0 "
            "até menos de 100, com vírgula ou ponto antes das casas decimais (6,5).",
            text));
    }
    return rate;
}

std::string RateText(double rate) {
    std::string text = fmt::format("{}", rate);
    for (char& c : text) {
        if (c == '.') c = ',';
    }
    return text;
}

bool IsPortugueseTaxNumber(const std::string& text) {
    if (text.size() != 9 || !AllDigits(text)) return false;
    int sum = 0;
    for (int i = 0; i < 8; ++i) sum += (text[i] - '0') * (9 - i);
    int check = 11 - sum % 11;
    if (check >= 10) check = 0;
    return check == text[8] - '0';
}

std::string TakeAction(CommandContext& context, const std::string& usage) {
    if (context.arguments.empty()) throw UsageError("Uso: kitra-host " + usage);
    std::string action = context.arguments.front();
    context.arguments.erase(context.arguments.begin());
    return action;
}

std::string Counted(long long count, const std::string& one, const std::string& many) {
    return fmt::format("{} {}", count, count == 1 ? one : many);
}

long long CountRows(BackOffice& office, const std::string& sql, const Variant& key) {
    Statement count(office.GetDatabase(), sql);
    count.Bind({key});
    if (!count.Step()) return 0;
    return static_cast<long long>(count.Column(0).ToDouble());
}

bool SettingsNumberIs(const std::string& value, std::int32_t code) {
    std::string number = value;
    for (char& c : number) {
        if (c == ',') c = '.';
    }
    char* end = nullptr;
    const double parsed = std::strtod(number.c_str(), &end);
    if (end == number.c_str() || *end != '\0') return false;
    return std::nearbyint(parsed) == static_cast<double>(code);
}

std::vector<std::string> SettingsUses(BackOffice& office,
                                      const std::vector<std::pair<std::string, std::string>>& attributes,
                                      const std::function<bool(const std::string&)>& matches) {
    std::vector<std::string> uses;
    const auto stored = office.settingsStore.StoredText(kSettingsKey1, kSettingsKey2);
    if (!stored) return uses;
    pugi::xml_document document;
    if (!document.load_string(stored->c_str())) return uses;
    const auto named = [&](const pugi::xml_node& element, const pugi::xml_attribute& attribute) {
        for (const auto& [elementName, attributeName] : attributes) {
            if (elementName == element.name() && attributeName == attribute.name()) return true;
        }
        return false;
    };
    const std::function<void(const pugi::xml_node&)> visit = [&](const pugi::xml_node& element) {
        for (const pugi::xml_attribute& attribute : element.attributes()) {
            if (!named(element, attribute) || !matches(attribute.value())) continue;
            const std::string name = element.name();
            if (name == "Restaurant") {
                uses.push_back(fmt::format("configurações do conector, restaurante '{}' ({})",
                                           element.attribute("Name").value(), attribute.name()));
            } else if (element == document.document_element()) {
                uses.push_back(fmt::format("configurações do conector ({})", attribute.name()));
            } else {
                uses.push_back(fmt::format("configurações do conector, {} ({})",
                                           element.parent().name(), attribute.name()));
            }
        }
        for (const pugi::xml_node& child : element.children()) {
            if (child.type() == pugi::node_element) visit(child);
        }
    };
    visit(document.document_element());
    return uses;
}

void RefuseWhileReferred(const std::string& record, const std::vector<std::string>& references) {
    if (references.empty()) return;
    std::string list;
    for (const std::string& reference : references) list += (list.empty() ? "" : "; ") + reference;
    throw Error(fmt::format("Não é possível apagar {}: ainda há quem lhe faça referência: {}.",
                            record, list));
}

}  // namespace kitra::backoffice::cli
