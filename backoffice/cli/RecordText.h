#pragma once
// What the record commands (document types, tenders, taxable groups, warehouses, workstations,
// suppliers, the company) accept from the command line, and how they find what refers to a
// record before they remove it.
#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "backoffice/BackOffice.h"
#include "backoffice/cli/Command.h"

namespace kitra::backoffice::cli {

// A name for a code the back office keeps as a number: "venda" for document kind 1.
struct NamedCode {
    int code;
    const char* name;   // as the lists show it and as it is typed
    const char* plain;  // the same without accents, also accepted
};

// The text a user gave for a name or a description: refused (UsageError `message`) when blank,
// and when it holds tabs, line breaks or other control characters, which would break the lists.
std::string RecordText(const std::string& text, const std::string& message);

// A numeric code from 1 to `largest` (the widest key its column holds); `what` names it with
// its article: "do armazém".
std::int32_t NumericCode(const std::string& text, const std::string& what, std::int32_t largest);

// One of the named codes, by number or by name (letter case aside); `what` says what was
// expected in the refusal: "Natureza de documento".
int PickNamed(const std::vector<NamedCode>& names, const std::string& text, const std::string& what);
const char* NameOf(const std::vector<NamedCode>& names, int code);

// A VAT rate in percent, "23", "6,5" or "6.5", from 0 to less than 100.
double VatRate(const std::string& text);
// A rate as the lists show it: "23", "6,5".
std::string RateText(double rate);

// A Portuguese tax number (NIF): nine digits whose last one checks the others.
bool IsPortugueseTaxNumber(const std::string& text);

// The first word of the arguments (list, add, set, remove, show), taken; `usage` when none.
std::string TakeAction(CommandContext& context, const std::string& usage);

// "1 documento", "3 documentos".
std::string Counted(long long count, const std::string& one, const std::string& many);

// How many rows the query (one `?`, bound to `key`) counts; every query counts with COUNT(*).
long long CountRows(BackOffice& office, const std::string& sql, const Variant& key);

// The places in the stored connector settings where an attribute named in `attributes` (pairs
// of element and attribute: {"KitraConnectorSetting", "DefaultTenderPayment"}, {"Restaurant",
// "WorkstationID"}) holds a value for which `matches` is true, each said as the user finds it: "configurações do
// conector, restaurante 'Centro' (WorkstationID)". Nothing when no settings are stored.
std::vector<std::string> SettingsUses(BackOffice& office,
                                      const std::vector<std::pair<std::string, std::string>>& attributes,
                                      const std::function<bool(const std::string&)>& matches);
// Whether an integer attribute of the settings, read as the connector reads it (a number with
// "," as the decimal separator, rounded half to even), is `code`.
bool SettingsNumberIs(const std::string& value, std::int32_t code);

// Refuses (Error, exit 1) to remove `record` ("o armazém 2") while `references` is not empty.
void RefuseWhileReferred(const std::string& record, const std::vector<std::string>& references);

}  // namespace kitra::backoffice::cli
