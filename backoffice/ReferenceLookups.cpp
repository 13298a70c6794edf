#include "backoffice/ReferenceLookups.h"

#include "backoffice/DocumentStore.h"
#include "backoffice/TaxService.h"

namespace kitra::backoffice {

ReferenceLookups::ReferenceLookups(const Database& database)
    : database_(database),
      kinds_(database, {"document_types"}),
      activeSeries_(database, {"document_series"}),
      keepsStock_(database, {"items"}),
      company_(database, {"company"}),
      warehouses_(database, {"workstations", "warehouses"}),
      rates_(database, {"taxable_group_rates"}) {}

host::DocumentKind ReferenceLookups::KindOfDocumentType(const std::string& documentTypeID) const {
    return kinds_.Get(documentTypeID,
                      [&] { return backoffice::KindOfDocumentType(database_, documentTypeID); });
}

void ReferenceLookups::CheckSeries(const std::string& seriesID) const {
    // Only an active series is kept: the others fail every time, with their reason.
    activeSeries_.Get(seriesID, [&] {
        backoffice::CheckSeries(database_, seriesID);
        return true;
    });
}

bool ReferenceLookups::KeepsStock(const std::string& itemID) const {
    return keepsStock_.Get(itemID, [&] {
        // The item with exactly the line's code: a restaurant item left out because its code
        // differs from a back-office item's only in letter case must not move that item's stock.
        Statement stocked(database_,
                          "SELECT StockManagement FROM items WHERE ItemID=?1 AND ItemID=?1 COLLATE BINARY");
        stocked.BindValues(itemID);
        return stocked.Step() && stocked.Column(0).ToBool();
    });
}

CompanyTerms ReferenceLookups::Company() const {
    return company_.Get(0, [&] {
        Statement company(database_, "SELECT CountryID, TaxRegionID, CurrencyID FROM company");
        if (!company.Step()) throw Error("A retaguarda não tem empresa definida.");
        return CompanyTerms{{company.ColumnText(0), company.Column(1).ToInt32()}, company.ColumnText(2)};
    });
}

std::int16_t ReferenceLookups::WarehouseOf(std::int16_t workstationID) const {
    return warehouses_.Get(workstationID, [&] {
        Statement warehouse(database_,
                            "SELECT COALESCE((SELECT WarehouseID FROM workstations WHERE "
                            "WorkstationID=?), (SELECT MIN(WarehouseID) FROM warehouses), 0)");
        warehouse.BindValues(workstationID);
        warehouse.Step();
        return warehouse.Column(0).ToInt16();
    });
}

double ReferenceLookups::Rate(std::int16_t taxableGroupID, const host::TaxContext& context) const {
    return rates_.Get(RateKey{taxableGroupID, context.TaxRegionID, context.CountryID},
                      [&] { return TaxableGroupRate(database_, taxableGroupID, context); });
}

std::size_t ReferenceLookups::RateKeyHash::operator()(const RateKey& key) const noexcept {
    std::size_t hash = std::hash<std::string>{}(key.country);
    hash = hash * 31 + static_cast<std::size_t>(key.region);
    return hash * 31 + static_cast<std::size_t>(key.group);
}

}  // namespace kitra::backoffice
