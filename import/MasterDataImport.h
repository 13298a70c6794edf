#pragma once
// The shape that every master-data importer (salesmen, customers, families, subfamilies, items)
// shares: the section title, the connection check, one statement over what changed since the
// restaurant's last entity import, a row loop with progress, a fresh host record per row saved
// as new or over the existing one, the counter, the count line, and one error handler that logs
// the row's ID and step label. Each importer states only its texts, its statement and what it
// does with one row.
#include <functional>
#include <string>
#include <string_view>

#include "ado/Connection.h"
#include "ado/Recordset.h"
#include "core/Variant.h"
#include "host/IMasterData.h"
#include "import/KitraExecutioner.h"
#include "settings/Restaurant.h"

namespace kitra {

// What each row's progress report shows beside its position.
enum class RowProgressText {
    StartText,      // the importer's own "A importar ..." text
    CurrentStatus,  // the engine's status text as it is when the row starts
};

// Which of the restaurant's two last-import dates the statement selects from.
enum class ImportDateKind {
    Entities,      // master data
    Transactions,  // documents, cash movements, receipts
};

struct MasterDataImportTexts {
    // The log section of every line the importer writes ("Vendedores").
    std::string_view section;
    // The status text the importer starts with ("A importar Vendedores"); also the text of the
    // section title.
    std::string_view startText;
    // The start of the error line, which the ID, the step label and the description complete
    // ("## Erro ## ao importar a tabela de vendedores. Vendedor: ").
    std::string_view errorText;
    Counter counter;
    RowProgressText progress;
    // How the error line names the ID before a row was read: "0" for numeric IDs, "" for texts.
    std::string_view idBeforeFirstRow;
    ImportDateKind date = ImportDateKind::Entities;
};

// The importer's statement for the restaurant's last import date ("yyyy-mm-dd hh:mm:ss").
using MasterDataStatement = std::string (*)(std::string_view entityImportDate);

// One row of the importer's result and what the importer does with it.
class MasterDataRow {
public:
    MasterDataRow(KitraExecutioner& engine, const Restaurant& restaurant,
                  const MasterDataImportTexts& texts);

    // The step label that an error from here on is reported with.
    void Step(std::string_view label) { engine_.SetStep(label); }
    // The row's ID as the error line names it.
    void Identify(std::string id) { id_ = std::move(id); }

    // The row's values, by column name (any letter case) or by position.
    const Variant& operator[](std::string_view column) const { return recordset_->Field(column); }
    const Variant& At(std::size_t position) const { return recordset_->Field(position); }

    // Only keys the host accepts for a key of ten digits are imported: 0 < key <= that limit.
    bool WithinKeyLimit(double key) const;

    // Makes the text the status text and tells the host.
    void Announce(std::string text);
    // A row that cannot be imported and is left out: the text becomes the status text, shown
    // and written as a log line under `section`, and counts as one unexpected situation of the
    // restaurant.
    void LeaveOut(std::string text, std::string_view section);

    // Files the record under the key (a new key is inserted, an existing one overwritten) and
    // counts it.
    template <class Record, class Key>
    void Save(host::IMasterData<Record, Key>& service, const Record& record, const Key& key,
              bool isNew) {
        service.Save(record, key, isNew);
        ++engine_.Count(texts_.counter);
    }

    KitraExecutioner& Engine() const { return engine_; }
    const host::HostServices& Services() const { return engine_.Services(); }
    const Restaurant& RestaurantBeingImported() const { return restaurant_; }

private:
    friend bool ImportMasterData(KitraExecutioner&, ado::Connection&, const Restaurant&,
                                 const MasterDataImportTexts&, MasterDataStatement,
                                 const std::function<void(MasterDataRow&)>&,
                                 const std::function<void(ado::Recordset&)>&);

    KitraExecutioner& engine_;
    const Restaurant& restaurant_;
    const MasterDataImportTexts& texts_;
    const ado::Recordset* recordset_ = nullptr;
    std::string id_;
};

// Runs one master-data importer: `importRow` is called once per row of `statement`;
// `beforeRows`, when given, once with the whole result before the first row (it leaves the
// recordset at its first row). Returns true when the import ran to its end, also when the
// server could not be reached (the log says so); false when an error ended it (the error line
// is logged and counted; what was saved stays).
bool ImportMasterData(KitraExecutioner& engine, ado::Connection& connection,
                      const Restaurant& restaurant, const MasterDataImportTexts& texts,
                      MasterDataStatement statement,
                      const std::function<void(MasterDataRow&)>& importRow,
                      const std::function<void(ado::Recordset&)>& beforeRows = {});

// A text column as host fields receive it: cleaned, and empty for NULL.
std::string CleanedOrEmpty(const Variant& value);

// The same, but the value becomes text before it is tested for NULL, so a NULL fails with
// "Invalid use of Null" and ends the import. The columns that have always been read so keep it:
// their rows stay out of the host until the restaurant fills them.
std::string CleanedBeforeNullTest(const Variant& value);

}  // namespace kitra
