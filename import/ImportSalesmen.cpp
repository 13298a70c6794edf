// ImportSalesmen: the restaurant's salesmen changed since its last entity import, into the
// host's salesmen, each written whole (new ones inserted, existing ones overwritten).
#include "core/Numbers.h"
#include "import/Importers.h"
#include "import/MasterDataImport.h"
#include "restaurant/Statements.h"

namespace kitra {

bool ImportSalesmen(KitraExecutioner& engine, ado::Connection& connection, Restaurant& restaurant) {
    static constexpr MasterDataImportTexts kTexts{
        .section = "Vendedores",
        .startText = "A importar Vendedores",
        .errorText = "## Erro ## ao importar a tabela de vendedores. Vendedor: ",
        .counter = Counter::Salesmen,
        .progress = RowProgressText::StartText,
        .idBeforeFirstRow = "0",
    };
    return ImportMasterData(
        engine, connection, restaurant, kTexts, kitra::restaurant::SalesmenStatement,
        [](MasterDataRow& row) {
            host::ISalesmanService& salesmen = *row.Services().salesmen;

            row.Step("salesmanID-Check");
            const double id = row["SalesmanID"].ToDouble();
            row.Identify(FormatHostNumber(id));
            row.Step("salesmanName-Check");
            const std::string name = CleanedOrEmpty(row["SalesmanName"]);
            if (!row.WithinKeyLimit(id)) return;

            row.Announce("Vendedor: " + name);
            const bool isNew = !salesmen.Exists(id);

            host::Salesman salesman;
            row.Step("salesmanID-Check");
            salesman.SalesmanID = id;
            row.Step("Name");
            salesman.Name = CleanedOrEmpty(row["SalesmanName"]);
            row.Step("Password");
            salesman.Password = CleanedOrEmpty(row["SalesmanPassword"]);
            row.Step("Telephone");
            salesman.Telephone = CleanedBeforeNullTest(row["Telephone"]);
            row.Step("MobilePhone");
            salesman.MobilePhone = CleanedBeforeNullTest(row["MobilePhone"]);
            row.Step("AddressLine1");
            salesman.AddressLine1 = CleanedOrEmpty(row["AddressLine1"]);
            row.Step("AddressLine2");
            salesman.AddressLine2 = CleanedOrEmpty(row["AddressLine2"]);
            row.Step("Location");
            salesman.Locality = CleanedOrEmpty(row["Locality"]);
            row.Step("PostalCode");
            salesman.PostalCode = CleanedOrEmpty(row["PostalCode"]);
            row.Step("Email");
            salesman.Email = CleanedOrEmpty(row["EmailAddress"]);
            // The restaurant system writes "0" for a salesman without a password.
            row.Step("Password");
            if (salesman.Password == "0") salesman.Password.clear();

            row.Save(salesmen, salesman, id, isNew);
        });
}

}  // namespace kitra
