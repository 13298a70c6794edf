#include "import/MasterDataImport.h"

#include "core/Error.h"
#include "import/ImportDateGuard.h"

namespace kitra {
namespace {

constexpr const char* kNoServer =
    "## Erro ## Não foi possível estabelecer comunicação com o Servidor. Verifique as suas "
    "credenciais de acesso ou se o servidor está acessivel.";

// The import date is pasted into the statement; the guard keeps out what could change it.
std::string StatementFor(MasterDataStatement statement, const Restaurant& restaurant,
                         ImportDateKind kind) {
    if (kind == ImportDateKind::Entities)
        return statement(GuardedImportDate(restaurant.ImportDateEntities, "entidades"));
    return statement(GuardedImportDate(restaurant.ImportDateTransactions, "transacções"));
}

}  // namespace

MasterDataRow::MasterDataRow(KitraExecutioner& engine, const Restaurant& restaurant,
                             const MasterDataImportTexts& texts)
    : engine_(engine), restaurant_(restaurant), texts_(texts), id_(texts.idBeforeFirstRow) {}

bool MasterDataRow::WithinKeyLimit(double key) const {
    return key > 0 && key <= engine_.Services().utility->KeyLimit(10);
}

void MasterDataRow::Announce(std::string text) {
    engine_.SetStatusText(std::move(text));
    engine_.NotifyStatus(engine_.StatusText());
}

void MasterDataRow::LeaveOut(std::string text, std::string_view section) {
    engine_.SetStatusText(std::move(text));
    engine_.WriteLog(std::string(section), engine_.StatusText());
    // Shown as well as logged: whoever watches the run sees what was left out as it happens.
    engine_.NotifyStatus(engine_.StatusText());
    ++engine_.WarningCount();
}

bool ImportMasterData(KitraExecutioner& engine, ado::Connection& connection,
                      const Restaurant& restaurant, const MasterDataImportTexts& texts,
                      MasterDataStatement statement,
                      const std::function<void(MasterDataRow&)>& importRow,
                      const std::function<void(ado::Recordset&)>& beforeRows) {
    const std::string section(texts.section);
    MasterDataRow row(engine, restaurant, texts);
    engine.SetStep("");
    try {
        engine.SetStatusText(std::string(texts.startText));
        engine.NotifyStatus(engine.StatusText());
        // The section title: its section is a line break and the section word, so that every
        // importer's lines start after a blank line of the log.
        engine.WriteLog("\r\n" + section, engine.StatusText());

        if (connection.State() != ado::StateOpen) {
            try {
                connection.Open();
            } catch (const Error&) {
                // Whether the server was reached is told by the state below.
            }
        }
        if (connection.State() != ado::StateOpen) {
            // Not an error of the import: nothing is counted and the count line still follows.
            engine.SetStatusText(kNoServer);
            engine.WriteLog(section, engine.StatusText());
            if (engine.showErrorMessageBoxs) {
                engine.ShowBox(engine.StatusText(), host::MessageStyle::Critical,
                               "Erro Acesso Servidor.");
            }
        } else {
            ado::Recordset recordset;
            recordset.Open(StatementFor(statement, restaurant, texts.date), connection);
            if (beforeRows) {
                beforeRows(recordset);
                recordset.MoveFirst();
            }
            row.recordset_ = &recordset;
            for (long number = 1; !recordset.Eof(); ++number) {
                engine.NotifyProgress(number, recordset.RecordCount() - 1,
                                      texts.progress == RowProgressText::StartText
                                          ? std::string(texts.startText)
                                          : engine.StatusText());
                importRow(row);
                recordset.MoveNext();
            }
            row.recordset_ = nullptr;
            connection.Close();
        }

        engine.SetStatusText("Registos importados:" + std::to_string(engine.CountOf(texts.counter)));
        engine.WriteLog(section, engine.StatusText());
        return true;
    } catch (const std::exception& error) {
        // The rows saved so far stay saved; the connection stays as it is, and the next
        // importer uses it open.
        engine.SetStatusText(std::string(texts.errorText) + row.id_ + " : " + engine.StepLabel() + " - " +
                             DescriptionOf(error));
        engine.WriteLog(section, engine.StatusText());
        if (engine.showErrorMessageBoxs) {
            engine.ShowBox(engine.StatusText(), host::MessageStyle::Information, "Error");
        }
        ++engine.ErrorCount();
        return false;
    }
}

std::string CleanedOrEmpty(const Variant& value) {
    if (value.IsNull()) return {};
    return KitraExecutioner::CleanText(value.ToText());
}

std::string CleanedBeforeNullTest(const Variant& value) {
    const std::string cleaned = KitraExecutioner::CleanText(value.ToText());
    return value.IsNull() ? std::string() : cleaned;
}

}  // namespace kitra
