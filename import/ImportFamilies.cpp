// ImportFamilies: the restaurant's item families changed since its last entity import, into the
// top level of the host's family tree, keyed by their code.
#include "core/Numbers.h"
#include "import/Importers.h"
#include "import/MasterDataImport.h"
#include "restaurant/Statements.h"

namespace kitra {

bool ImportFamilies(KitraExecutioner& engine, ado::Connection& connection, Restaurant& restaurant) {
    static constexpr MasterDataImportTexts kTexts{
        .section = "Famílias",
        .startText = "A importar Famílias",
        .errorText = "## Erro ## ao importar a tabela de famílias. Família: ",
        .counter = Counter::Families,
        .progress = RowProgressText::CurrentStatus,
        .idBeforeFirstRow = "0",
    };
    return ImportMasterData(
        engine, connection, restaurant, kTexts, kitra::restaurant::FamiliesStatement,
        [](MasterDataRow& row) {
            const host::HostServices& services = row.Services();

            row.Step("FamilyID-Check");
            const double id = LeadingNumber(row["code"].ToText());
            row.Identify(FormatHostNumber(id));
            row.Step("FamilyName");
            const std::string description = CleanedOrEmpty(row["description"]);
            if (!row.WithinKeyLimit(id)) return;

            row.Announce("Família: " + description);
            const bool isNew = !services.families->Exists(id);

            host::Family family;
            row.Step("Code");
            family.FamilyID = id;
            row.Step("Description");
            family.Description = description;
            row.Step("FullPath");
            family.FullPath = family.Description;
            row.Step("Defaults");
            family.Description2 = family.Description;
            family.Discount = 0;
            family.UnitOfSaleID = services.company->DefaultUnitOfSaleID();
            family.MaximumDiscountPercent = 100;

            row.Save(*services.families, family, id, isNew);
        });
}

}  // namespace kitra
