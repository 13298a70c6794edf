#pragma once
// The rules of the import log list frmKitraLog, with no window system: the grid's layout, filling
// it newest first, opening a row's log, and deleting the selected rows after asking. A view
// (Qt today) binds its widgets to these rules through IKitraLogGrid.
#include <array>
#include <optional>
#include <string>

#include "host/HostServices.h"
#include "log/DSOKitraLog.h"
#include "log/IKitraLogGrid.h"
#include "log/KitraLog.h"

namespace kitra {

// The host's texts for the two log dialogs: the list's title, the contents dialog's title
// (followed in its caption by the restaurant and the moment) and the caption of its OK button.
inline constexpr long kLogListTitleText = 4130011;
inline constexpr long kLogContentsTitleText = 4130012;
inline constexpr long kLogContentsOkText = 4130013;

class KitraLogViewer {
public:
    // Restaurant, import date and a narrow empty margin, in twips.
    static constexpr std::array<int, 3> kColumnWidthsTwips{3000, 3700, 285};
    static constexpr std::array<const char*, 3> kHeadings{"Restaurante", "Data Importação", ""};
    static constexpr const char* kDeleteQuestion = "Deseja mesmo apagar estes registos?";

    KitraLogViewer(const host::HostServices& services, IKitraLogGrid& grid);

    // The list's caption, from the host.
    std::string Title() const;
    // Fills the grid from the log table: one row per import, newest first (none, and the table
    // made, in a back office that has never imported).
    void Load();
    // The log of a data row, with its contents; nothing for a row that is not a data row, for a
    // row that is no longer in the table, or when the read failed (the failure is shown).
    std::optional<KitraLog> OpenRow(int row);
    // Asks, then deletes the selected rows from the table and the grid, the last one first so
    // that removing a row does not move the rows still to be visited. A row whose delete fails
    // still leaves the grid; it shows again the next time the list is loaded.
    void DeleteSelected();
    // True once rows have been deleted.
    bool Changed() const { return changed_; }

private:
    const host::HostServices& services_;
    IKitraLogGrid& grid_;
    DSOKitraLog log_;
    bool changed_ = false;
};

}  // namespace kitra
