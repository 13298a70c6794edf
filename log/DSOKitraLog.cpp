#include "log/DSOKitraLog.h"

#include <exception>

#include "core/Error.h"

namespace kitra {

ado::Recordset DSOKitraLog::GetKitraLogRS() {
    return services_.connection->Query(
        host::SqlStatement("SELECT RestaurantID,ImportDate FROM Kitra2Log ORDER BY ImportDate DESC"));
}

bool DSOKitraLog::Delete(const std::string& restaurantId, const DateTime& importDate) {
    try {
        // The delete condition writes the moment as "yyyy-mm-dd hh:mm:ss".
        services_.connection->Execute(services_.statements->Delete(
            kTable, {{"RestaurantID", restaurantId}, {"ImportDate", FormatIsoDateTime(importDate)}}));
        return true;
    } catch (...) {
        return false;
    }
}

bool DSOKitraLog::Save(const KitraLog& record) {
    try {
        if (record.IsNew) {
            services_.connection->Execute(services_.statements->Insert(
                kTable, {{"RestaurantID", record.RestaurantID},
                         {"ImportDate", Variant(record.ImportDate)},
                         {"Contents", record.Contents}}));
        } else {
            // The update condition writes the moment in the host's general date form, unlike
            // Delete; both forms name the same moment.
            const std::string generalDate =
                FormatDatePattern(record.ImportDate, services_.application->GeneralDateForm());
            services_.connection->Execute(services_.statements->Update(
                kTable, {{"Contents", record.Contents}},
                {{"RestaurantID", record.RestaurantID}, {"ImportDate", generalDate}}));
        }
        return true;
    } catch (...) {
        return false;
    }
}

std::optional<KitraLog> DSOKitraLog::GetLogInfo(const std::string& restaurantId,
                                                const DateTime& importDate, bool withContents) {
    try {
        std::vector<std::string> columns{"ImportDate"};
        if (withContents) columns.push_back("Contents");
        ado::Recordset rs = services_.connection->Query(services_.statements->Select(
            kTable, columns,
            {{"RestaurantID", restaurantId}, {"ImportDate", FormatIsoDateTime(importDate)}}));
        if (rs.Bof() && rs.Eof()) return std::nullopt;
        KitraLog log;
        log.IsNew = false;
        log.RestaurantID = restaurantId;
        log.ImportDate = rs["ImportDate"].ToDate();
        if (withContents) log.Contents = rs["Contents"].IsNull() ? "" : rs["Contents"].ToText();
        return log;
    } catch (const std::exception& e) {
        if (services_.messageBoxes != nullptr) {
            services_.messageBoxes->Show(
                "Ocorreu uma excepção na leitura do log\r\n\r\n" + DescriptionOf(e),
                host::MessageStyle::Exclamation, host::MessageButtons::Ok, "Erro");
        }
        return std::nullopt;
    }
}

bool DSOKitraLog::CheckOrCreateKitraLogTable() {
    try {
        if (services_.schema->TableExists(kTable)) return true;
        host::TableDefinition table;
        table.name = kTable;
        table.columns = {{"RestaurantID", host::ado_type::kVarWChar, 25},
                         {"Contents", host::ado_type::kLongVarWChar, 0},
                         {"ImportDate", host::ado_type::kDate, 0}};
        table.indexes = {{kIndex, {"RestaurantID", "ImportDate"}, true, true}};
        services_.schema->AppendTable(table);
        return true;
    } catch (...) {
        return false;
    }
}

void DSOKitraLog::ResetLog() {
    services_.connection->Execute(host::SqlStatement("DELETE FROM Kitra2Log"));
}

}  // namespace kitra
