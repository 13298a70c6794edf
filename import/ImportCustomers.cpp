// ImportCustomers: the restaurant's customers changed since its last entity import, into the
// host's customers, each written whole with the company's defaults for what the restaurant does
// not know.
#include "core/Numbers.h"
#include "import/Importers.h"
#include "import/MasterDataImport.h"
#include "restaurant/Statements.h"

namespace kitra {

bool ImportCustomers(KitraExecutioner& engine, ado::Connection& connection, Restaurant& restaurant) {
    static constexpr MasterDataImportTexts kTexts{
        .section = "Clientes",
        .startText = "A importar Clientes",
        .errorText = "## Erro ## ao importar a tabela de clientes. Cliente: ",
        .counter = Counter::Customers,
        .progress = RowProgressText::StartText,
        .idBeforeFirstRow = "0",
    };
    return ImportMasterData(
        engine, connection, restaurant, kTexts, kitra::restaurant::CustomersStatement,
        [](MasterDataRow& row) {
            const host::HostServices& services = row.Services();

            row.Step("CustomerID-Check");
            const double id = LeadingNumber(row["CustomerID"].ToText());
            row.Identify(FormatHostNumber(id));
            row.Step("Customer-Check");
            const std::string name = CleanedOrEmpty(row["Name"]);
            if (!row.WithinKeyLimit(id)) return;

            row.Announce("Cliente: " + name);
            const bool isNew = !services.customers->Exists(id);

            host::Customer customer;
            row.Step("CustomerID");
            customer.CustomerID = id;
            row.Step("OrganizationName");
            customer.OrganizationName = CleanedOrEmpty(row["Name"]);
            row.Step("CardID");
            customer.CardID = CleanedOrEmpty(row["CardID"]);
            row.Step("DirectDiscount");
            // Read with the plain parse: "12,5" is 12.
            const Variant& discount = row["GlobalDiscount"];
            customer.DirectDiscount =
                discount.IsNull() || discount.ToText().empty() || discount.ToText() == "0"
                    ? 0
                    : LeadingNumber(discount.ToText());
            row.Step("AddressLine1");
            customer.AddressLine1 = CleanedOrEmpty(row["PartyAddressLine1"]);
            row.Step("AddressLine2");
            customer.AddressLine2 = CleanedOrEmpty(row["PartyAddressLine2"]);
            row.Step("location");
            const std::string location = CleanedOrEmpty(row["PartyLocationID"]);
            // The postal code gets the location twice ("Lisboa Lisboa"): customers have always
            // arrived so, and they keep arriving so.
            row.Step("PartyLocationID");
            customer.PostalCode = CleanedOrEmpty(row["PartyLocationID"]);
            if (!location.empty()) customer.PostalCode += " " + location;
            row.Step("Telephone1");
            customer.Telephone = CleanedOrEmpty(row["Telephone1"]);
            row.Step("MobileTelephone1");
            customer.MobileTelephone = CleanedOrEmpty(row["MobileTelephone1"]);
            row.Step("EmailAddress");
            customer.Email = CleanedOrEmpty(row["EmailAddress"]);
            row.Step("FederalTaxID");
            customer.FederalTaxID = CleanedBeforeNullTest(row["FederalTaxID"]);

            row.Step("Defaults");
            const host::CustomerDefaults defaults = services.company->GetCustomerDefaults();
            customer.CountryID = defaults.CountryID;
            customer.TaxRegionID = defaults.TaxRegionID;
            customer.CurrencyID = defaults.CurrencyID;
            customer.SalesZoneID = defaults.SalesZoneID;
            customer.CustomerTypeID = defaults.CustomerTypeID;
            customer.PaymentTermID = defaults.PaymentTermID;
            customer.TenderID = defaults.TenderID;
            customer.PriceLineID = defaults.PriceLineID;
            customer.UpdateDate = row.Engine().GetClock().Now();
            customer.Active = true;
            customer.SubjectToTax = true;
            customer.AllowCreditSales = true;
            customer.SendAccountStatements = true;

            row.Save(*services.customers, customer, id, isNew);
        });
}

}  // namespace kitra
