// ImportSubfamilies: the restaurant's subfamilies changed since its last entity import, into the
// host's family tree under their family. A subfamily's key is its code plus 10000, which keeps
// it apart from the families in the host's one family table.
#include "core/Numbers.h"
#include "import/Importers.h"
#include "import/MasterDataImport.h"
#include "restaurant/Statements.h"

namespace kitra {
namespace {

// The statement names two columns "code" and two "description", so they are read by position.
enum Column : std::size_t { SubfamilyCode, FamilyCode, FamilyDescription, SubfamilyDescription };

}  // namespace

bool ImportSubfamilies(KitraExecutioner& engine, ado::Connection& connection,
                       Restaurant& restaurant) {
    static constexpr MasterDataImportTexts kTexts{
        .section = "SubFamílias",
        .startText = "A importar SubFamílias",
        .errorText = "## Erro ## ao importar a tabela de SubFamílias. SubFamília: ",
        .counter = Counter::Subfamilies,
        .progress = RowProgressText::CurrentStatus,
        .idBeforeFirstRow = "0",
    };
    return ImportMasterData(
        engine, connection, restaurant, kTexts, kitra::restaurant::SubfamiliesStatement,
        [](MasterDataRow& row) {
            const host::HostServices& services = row.Services();

            row.Step("SubFamilyID-Check");
            const double id = LeadingNumber(row.At(SubfamilyCode).ToText()) + kSubfamilyKeyOffset;
            row.Identify(FormatHostNumber(id));
            row.Step("FamilyID-Check");
            const double parentId = LeadingNumber(row.At(FamilyCode).ToText());
            const bool parentExists = services.families->Exists(parentId);
            row.Step("familyName");
            const std::string familyName = CleanedOrEmpty(row.At(FamilyDescription));
            row.Step("SubFamilyName");
            const std::string description = CleanedOrEmpty(row.At(SubfamilyDescription));

            if (!parentExists) {
                row.LeaveOut("Não foi possível adicionar a SubFamília '" + description +
                                 "' porque não existe a família com o código '" +
                                 FormatHostNumber(parentId) + "'",
                             "SubFamílias");
                return;
            }
            if (!row.WithinKeyLimit(id)) return;

            row.Announce("SubFamília: " + description);
            const bool isNew = !services.families->Exists(id);

            host::Family subfamily;
            row.Step("Code");
            subfamily.FamilyID = id;
            row.Step("Description");
            subfamily.Description = description;
            row.Step("ParentID");
            subfamily.ParentFamilyID = parentId;
            row.Step("ParentDescription");
            const auto parent = services.families->Get(parentId);
            subfamily.ParentDescription =
                parent ? KitraExecutioner::CleanText(parent->Description) : std::string();
            row.Step("FullPath");
            subfamily.FullPath = familyName + "\\" + subfamily.Description;
            row.Step("Defaults");
            subfamily.Discount = 0;
            subfamily.UnitOfSaleID = services.company->DefaultUnitOfSaleID();
            subfamily.MaximumDiscountPercent = 100;

            row.Save(*services.families, subfamily, id, isNew);
        });
}

}  // namespace kitra
