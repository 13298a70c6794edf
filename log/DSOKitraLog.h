#pragma once
// The import log table Kitra2Log and every operation on it: created on first use, listed, read,
// saved, deleted and emptied through the host's database layer; no connection of its own.
#include <optional>
#include <string>

#include "ado/Recordset.h"
#include "host/HostServices.h"
#include "log/KitraLog.h"

namespace kitra {

class DSOKitraLog {
public:
    static constexpr const char* kTable = "Kitra2Log";
    static constexpr const char* kIndex = "Kitra2Log_IDX";

    explicit DSOKitraLog(const host::HostServices& services) : services_(services) {}

    // Every row's RestaurantID and ImportDate, newest first (Contents is not read).
    ado::Recordset GetKitraLogRS();
    // Deletes the row of that restaurant and moment; true when the statement ran (also when no
    // row matched).
    bool Delete(const std::string& restaurantId, const DateTime& importDate);
    // Inserts a new record, or updates the Contents of an existing one; true when it ran.
    bool Save(const KitraLog& record);
    // The row of that restaurant and moment, with its Contents when asked; nothing when there is
    // no such row. A failure is shown in a box and also gives nothing.
    std::optional<KitraLog> GetLogInfo(const std::string& restaurantId, const DateTime& importDate,
                                       bool withContents);
    // Makes sure the table and its index exist; false when that failed.
    bool CheckOrCreateKitraLogTable();
    // Empties the table; the table stays.
    void ResetLog();

private:
    const host::HostServices& services_;
};

}  // namespace kitra
