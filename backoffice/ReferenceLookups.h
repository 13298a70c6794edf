#pragma once
// What saving a document asks of the back office's reference tables, once per document or per
// line (the document type's kind, whether the series is active, whether an item keeps stock,
// the company's tax context and currency, a workstation's warehouse, a VAT rate), kept between
// documents while it holds (KeptReads): an import's documents ask the same few things
// thousands of times.
#include <cstdint>
#include <string>

#include "backoffice/KeptReads.h"
#include "host/ICompanyContext.h"
#include "host/ITransactionService.h"

namespace kitra::backoffice {

struct CompanyTerms {
    host::TaxContext tax;
    std::string currencyID;
};

class ReferenceLookups {
public:
    explicit ReferenceLookups(const Database& database);

    // As KindOfDocumentType and CheckSeries.
    host::DocumentKind KindOfDocumentType(const std::string& documentTypeID) const;
    void CheckSeries(const std::string& seriesID) const;
    // Whether the item with exactly that code (letter case included) keeps stock: false for an
    // item the back office does not have.
    bool KeepsStock(const std::string& itemID) const;
    // The company's tax context and currency; fails when the back office has no company.
    CompanyTerms Company() const;
    // The workstation's warehouse; a workstation the back office does not know takes the first
    // warehouse (0 when there is none).
    std::int16_t WarehouseOf(std::int16_t workstationID) const;
    // The rate of the taxable group in the tax context; fails when it has none there.
    double Rate(std::int16_t taxableGroupID, const host::TaxContext& context) const;

private:
    struct RateKey {
        std::int16_t group = 0;
        std::int32_t region = 0;
        std::string country;
        bool operator==(const RateKey&) const = default;
    };
    struct RateKeyHash {
        std::size_t operator()(const RateKey& key) const noexcept;
    };

    const Database& database_;
    KeptReads<std::string, host::DocumentKind> kinds_;
    KeptReads<std::string, bool> activeSeries_;
    KeptReads<std::string, bool> keepsStock_;
    KeptReads<int, CompanyTerms> company_;
    KeptReads<std::int16_t, std::int16_t> warehouses_;
    KeptReads<RateKey, double, RateKeyHash> rates_;
};

}  // namespace kitra::backoffice
