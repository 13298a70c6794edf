#include "backoffice/CompanyContext.h"

namespace kitra::backoffice {
namespace {

// Reads the columns of the company row; fails when the back office has no company.
Statement& CompanyRow(Statement& statement) {
    if (!statement.Step()) throw Error("A retaguarda não tem empresa definida.");
    return statement;
}

}  // namespace

host::TaxContext CompanyContext::GetTaxContext() const {
    Statement company(database_, "SELECT CountryID, TaxRegionID FROM company");
    CompanyRow(company);
    return {company.ColumnText(0), company.Column(1).ToInt32()};
}

std::string CompanyContext::CurrencyID() const {
    Statement company(database_, "SELECT CurrencyID FROM company");
    return CompanyRow(company).ColumnText(0);
}

std::string CompanyContext::DefaultUnitOfSaleID() const {
    Statement company(database_, "SELECT DefaultUnitOfSaleID FROM company");
    return CompanyRow(company).ColumnText(0);
}

host::CustomerDefaults CompanyContext::GetCustomerDefaults() const {
    Statement company(database_,
                      "SELECT CountryID, TaxRegionID, CurrencyID, DefaultSalesZoneID, "
                      "DefaultCustomerTypeID, DefaultPaymentTermID, DefaultTenderID, "
                      "DefaultPriceLineID FROM company");
    CompanyRow(company);
    host::CustomerDefaults defaults;
    defaults.CountryID = company.ColumnText(0);
    defaults.TaxRegionID = company.Column(1).ToInt32();
    defaults.CurrencyID = company.ColumnText(2);
    defaults.SalesZoneID = company.Column(3).ToInt32();
    defaults.CustomerTypeID = company.Column(4).ToInt32();
    defaults.PaymentTermID = company.Column(5).ToInt32();
    defaults.TenderID = company.Column(6).ToInt16();
    defaults.PriceLineID = company.Column(7).ToInt16();
    return defaults;
}

}  // namespace kitra::backoffice
