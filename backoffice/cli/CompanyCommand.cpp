// kitra-host company: the back office's one company, whose tax region decides the VAT rate of
// every document and item and whose currency every imported document takes.
#include <ostream>

#include <fmt/format.h>

#include "backoffice/BackOffice.h"
#include "backoffice/cli/Command.h"
#include "backoffice/cli/JsonText.h"
#include "backoffice/cli/RecordText.h"
#include "core/Error.h"

namespace kitra::backoffice::cli {
namespace {

constexpr const char* kUsage =
    "company show [--json] | set [--name NOME] [--tax-number NIF] [--currency MOEDA] "
    "[--tax-region REGIÃO]";

struct Company {
    std::string name, taxNumber, currency, country, regionName;
    std::int32_t region = 0;
};

Company Read(BackOffice& office) {
    Statement row(office.GetDatabase(),
                  "SELECT c.Name, c.FederalTaxID, c.CurrencyID, c.CountryID, c.TaxRegionID, "
                  "COALESCE(r.Description, '') FROM company c LEFT JOIN tax_regions r "
                  "ON r.CountryID = c.CountryID AND r.TaxRegionID = c.TaxRegionID");
    if (!row.Step()) throw Error("A retaguarda não tem empresa definida.");
    return {row.ColumnText(0), row.ColumnText(1), row.ColumnText(2),
            row.ColumnText(3), row.ColumnText(5), row.Column(4).ToInt32()};
}

// A currency as ISO 4217 writes it: three letters (EUR), in capitals.
std::string Currency(const std::string& text) {
    std::string currency = text;
    bool letters = currency.size() == 3;
    for (char& c : currency) {
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
        letters = letters && c >= 'A' && c <= 'Z';
    }
    if (!letters) {
        throw UsageError(fmt::format(
            "A moeda '{}' não é um código de moeda: são três letras (EUR).", text));
    }
    return currency;
}

}  // namespace

int RunCompany(CommandContext& context) {
    const std::string action = TakeAction(context, kUsage);
    if (action == "show") {
        const bool json = context.TakeFlag("--json");
        ExpectArguments(context, 0, kUsage);
        BackOffice office(context.dataFolder);
        const Company company = Read(office);
        if (json) {
            context.out << fmt::format(
                "{{\"name\":{},\"taxNumber\":{},\"currency\":{},\"country\":{},\"taxRegion\":{},"
                "\"taxRegionName\":{}}}\n",
                Json(company.name), Json(company.taxNumber), Json(company.currency),
                Json(company.country), company.region, Json(company.regionName));
        } else {
            context.out << "Nome: " << company.name << "\n"
                        << "Contribuinte: " << company.taxNumber << "\n"
                        << "Moeda: " << company.currency << "\n"
                        << fmt::format("Região fiscal: {} {} ({})\n", company.country,
                                       company.region, company.regionName);
        }
        return kExitOk;
    }
    if (action != "set") throw UsageError(std::string("Uso: kitra-host ") + kUsage);
    const auto name = context.TakeOption("--name");
    const auto taxNumber = context.TakeOption("--tax-number");
    const auto currency = context.TakeOption("--currency");
    const auto regionText = context.TakeOption("--tax-region");
    ExpectArguments(context, 0, kUsage);
    if (!name && !taxNumber && !currency && !regionText)
        throw UsageError(std::string("Diga o que muda. Uso: kitra-host ") + kUsage);
    Company company;
    if (name) company.name = RecordText(*name, "O nome da empresa não pode ficar vazio.");
    if (currency) company.currency = Currency(*currency);
    if (regionText) company.region = NumericCode(*regionText, "da região fiscal", 2147483647);

    BackOffice office(context.dataFolder);
    const Company stored = Read(office);
    if (taxNumber) {
        // The company's own number goes on every document it issues: in Portugal a valid NIF.
        const bool valid = stored.country == "PT" ? IsPortugueseTaxNumber(*taxNumber)
                                                  : !taxNumber->empty() && taxNumber->size() <= 20;
        if (!valid) {
            throw UsageError(fmt::format(
                "O número de contribuinte '{}' não é válido: um NIF português tem 9 algarismos e "
                "o último confere com os outros.",
                *taxNumber));
        }
    }
    if (regionText) {
        Statement known(office.GetDatabase(),
                        "SELECT 1 FROM tax_regions WHERE CountryID = ? AND TaxRegionID = ?");
        if (!known.Bind({Variant(stored.country), Variant(company.region)}).Step()) {
            throw Error(fmt::format("Não existe a região fiscal {} {}.", stored.country, company.region));
        }
        // Every taxable group needs its rate in the company's region, or no document could be
        // taxed with it.
        std::string missing;
        for (const host::TaxableGroup& group : office.taxableGroups.List()) {
            if (!group.RateIn({stored.country, company.region}))
                missing += (missing.empty() ? "" : ", ") + std::to_string(group.TaxableGroupID);
        }
        if (!missing.empty()) {
            throw Error(fmt::format(
                "A empresa não pode passar à região fiscal {} {}: as taxas de IVA {} não têm taxa "
                "nessa região; dê-lhes uma com 'kitra-host taxable-group set CÓDIGO --rate {}=TAXA'.",
                stored.country, company.region, missing, company.region));
        }
    }
    Transaction transaction(office.GetDatabase());
    Statement update(office.GetDatabase(),
                     "UPDATE company SET Name = ?, FederalTaxID = ?, CurrencyID = ?, TaxRegionID = ?");
    update
        .Bind({Variant(name ? company.name : stored.name),
               Variant(taxNumber ? *taxNumber : stored.taxNumber),
               Variant(currency ? company.currency : stored.currency),
               Variant(regionText ? company.region : stored.region)})
        .Run();
    transaction.Commit();
    context.out << "Empresa alterada.\n";
    return kExitOk;
}

}  // namespace kitra::backoffice::cli
