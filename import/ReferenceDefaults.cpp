// The conversions and look-ups every importer leans on, and the host's default records.
// None of them catches errors: a failure belongs to the importer that called.
#include "core/Text.h"
#include "import/KitraExecutioner.h"

namespace kitra {

std::string KitraExecutioner::CleanText(const std::string& text) {
    // Host fields receive plain text only: codes 32 to 175 stay, which also drops the accented
    // letters (192 and above) and every character Windows-1252 cannot represent.
    std::string cleaned;
    cleaned.reserve(text.size());
    for (char32_t c : DecodeUtf8(text)) {
        const int code = Windows1252Code(c);
        if (code >= 32 && code <= 175) AppendUtf8(cleaned, c);
    }
    return cleaned;
}

std::int16_t KitraExecutioner::GetTaxableGroupForRate(double rate) const {
    std::int16_t group = 0;
    for (const TaxableGroupMapping& row : settings_->TaxableGroupEquivalence) {
        // Equivalences are written with "." whatever the host's own separator; a row whose
        // rate is not such a number (say "23,0") matches no rate.
        double rowRate = 0;
        try {
            rowRate = services_.utility->ParseNumber(row.KitraVAT, '.');
        } catch (const Error&) {
            continue;
        }
        if (rowRate == rate) {
            group = row.TaxableGroupID;
            break;
        }
    }
    if (group == 0) group = settings_->DefaultTaxableGroup;
    if (group == 0) group = services_.tax->TaxableGroupForRate(rate, services_.company->GetTaxContext());
    return group;
}

double KitraExecutioner::CalculateWithTaxableGroup(double value, std::int32_t taxableGroup) const {
    if (value == 0) return 0;
    if (!transactionObject_) {
        return services_.tax->ValueWithTaxableGroup(value, taxableGroup,
                                                    services_.company->GetTaxContext(),
                                                    host::TaxCalculation::RemoveTax);
    }
    const std::pair key{taxableGroup, std::bit_cast<std::uint64_t>(value)};
    if (auto known = valuesWithoutTax_.find(key); known != valuesWithoutTax_.end())
        return known->second;
    if (!taxContext_) taxContext_ = services_.company->GetTaxContext();
    const double withoutTax = services_.tax->ValueWithTaxableGroup(
        value, taxableGroup, *taxContext_, host::TaxCalculation::RemoveTax);
    valuesWithoutTax_.emplace(key, withoutTax);
    return withoutTax;
}

double KitraExecutioner::ParseHundredths(const std::string& text) const {
    return services_.utility->ParseNumber(text, ',') / 100;
}

void KitraExecutioner::EnsureHostDefaults() {
    if (!services_.salesmen->Exists(1.0)) {
        host::Salesman salesman;
        salesman.SalesmanID = 1.0;
        salesman.Name = "Vendedor Geral";
        services_.salesmen->Save(salesman, 1.0, true);
    }
    if (!services_.customerTypes->Exists(1)) {
        host::CustomerType type;  // its price line stays as the host's record starts it
        type.CustomerTypeID = 1;
        type.Description = "Geral";
        services_.customerTypes->Save(type, 1, true);
    }
    if (!services_.tenders->Exists(1)) {
        host::Tender cash;
        cash.TenderID = 1;
        cash.Description = "Dinheiro";
        cash.GivesChange = true;
        cash.MaximumAmount = 0;
        cash.CommissionPercent = 0;
        cash.OpensCashDrawer = true;
        services_.tenders->Save(cash, 1, true);
    }
    if (!services_.salesZones->Exists(1)) {
        const host::TaxContext context = services_.company->GetTaxContext();
        host::SalesZone zone;
        zone.SalesZoneID = 1;
        zone.Description = "Geral";
        zone.CountryID = context.CountryID;
        zone.TaxRegionID = context.TaxRegionID;
        zone.CurrencyID = services_.company->CurrencyID();
        zone.ZoneType = 0;
        services_.salesZones->Save(zone, 1, true);
    }
    if (!services_.paymentTerms->Exists(1)) {
        host::PaymentTerm term;
        term.PaymentTermID = 1;
        term.Description = "Geral";
        services_.paymentTerms->Save(term, 1, true);
    }
    const std::pair<std::int32_t, const char*> places[] = {{1, "Local de carga"},
                                                           {2, "Local de descarga"}};
    for (const auto& [id, description] : places) {
        if (!services_.places->Exists(id)) {
            host::Place place;
            place.PlaceID = id;
            place.Description = description;
            services_.places->Save(place, id, true);
        }
    }
}

}  // namespace kitra
