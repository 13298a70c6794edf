#pragma once
// The current company of the host: the values that tax calculations, new master records and new
// customers take from it.
#include <cstdint>
#include <string>

namespace kitra::host {

// Where taxes are due: the country and its tax region (rates differ between regions).
struct TaxContext {
    std::string CountryID;          // "PT"
    std::int32_t TaxRegionID = 0;   // 1 mainland, 2 Azores, 3 Madeira
};

// What a customer created by an import refers to unless told otherwise.
struct CustomerDefaults {
    std::string CountryID;
    std::int32_t TaxRegionID = 0;
    std::string CurrencyID;
    std::int32_t SalesZoneID = 0;
    std::int32_t CustomerTypeID = 0;
    std::int32_t PaymentTermID = 0;
    std::int16_t TenderID = 0;       // the usual means of payment
    std::int16_t PriceLineID = 0;    // which of the items' five prices the customer pays
};

class ICompanyContext {
public:
    virtual ~ICompanyContext() = default;
    // The two values the tax service needs beside a rate or a taxable group.
    virtual TaxContext GetTaxContext() const = 0;
    // The company's currency, the third value that regional master records copy.
    virtual std::string CurrencyID() const = 0;
    // The unit an item is sold in unless it is weighed.
    virtual std::string DefaultUnitOfSaleID() const = 0;
    virtual CustomerDefaults GetCustomerDefaults() const = 0;
};

}  // namespace kitra::host
