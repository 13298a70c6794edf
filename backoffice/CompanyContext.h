#pragma once
// The back office's company: the one row of table `company`, read afresh on every call so
// that a change made by another program is seen at once.
#include "backoffice/Database.h"
#include "host/ICompanyContext.h"

namespace kitra::backoffice {

class CompanyContext final : public host::ICompanyContext {
public:
    explicit CompanyContext(Database& database) : database_(database) {}
    host::TaxContext GetTaxContext() const override;
    std::string CurrencyID() const override;
    std::string DefaultUnitOfSaleID() const override;
    host::CustomerDefaults GetCustomerDefaults() const override;

private:
    Database& database_;
};

}  // namespace kitra::backoffice
