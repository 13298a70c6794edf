#pragma once
// The host's customers. Numeric keys are whole numbers (see ISalesmanService.h).
#include <cstdint>
#include <string>

#include "core/DateTime.h"
#include "host/IMasterData.h"

namespace kitra::host {

struct Customer {
    double CustomerID = 0;
    std::string OrganizationName;
    std::string CardID;
    double DirectDiscount = 0;  // percent
    std::string AddressLine1;
    std::string AddressLine2;
    std::string PostalCode;
    std::string Telephone;
    std::string MobileTelephone;
    std::string Email;
    std::string FederalTaxID;
    // What the customer refers to; a new customer takes them from the company's defaults.
    std::string CountryID;
    std::int32_t TaxRegionID = 0;
    std::string CurrencyID;
    std::int32_t SalesZoneID = 0;
    std::int32_t CustomerTypeID = 0;
    std::int32_t PaymentTermID = 0;
    std::int16_t TenderID = 0;
    std::int16_t PriceLineID = 0;
    DateTime UpdateDate;  // when the record was last written from its source
    bool Active = false;
    bool SubjectToTax = false;
    bool AllowCreditSales = false;
    bool SendAccountStatements = false;

    bool operator==(const Customer&) const = default;
};

class ICustomerService : public IMasterData<Customer, double> {};

}  // namespace kitra::host
