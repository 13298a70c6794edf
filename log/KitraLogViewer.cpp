#include "log/KitraLogViewer.h"

#include "log/KitraLogContents.h"

namespace kitra {

KitraLogViewer::KitraLogViewer(const host::HostServices& services, IKitraLogGrid& grid)
    : services_(services), grid_(grid), log_(services) {}

std::string KitraLogViewer::Title() const {
    return services_.application->Text(kLogListTitleText);
}

void KitraLogViewer::Load() {
    grid_.ClearRows();
    // A back office that has never imported has no log table yet: its list is empty, not an
    // error. The table is made as the first import would make it.
    log_.CheckOrCreateKitraLogTable();
    // The date is shown as the recordset gives it: a date, in the host's general date form.
    const TextConventions conventions = HostTextConventions(*services_.application);
    ado::Recordset rs = log_.GetKitraLogRS();
    if (rs.Bof() && rs.Eof()) return;
    for (; !rs.Eof(); rs.MoveNext()) {
        grid_.AddRow(rs["RestaurantID"].ToText(conventions), rs["ImportDate"].ToText(conventions));
    }
}

std::optional<KitraLog> KitraLogViewer::OpenRow(int row) {
    if (row < 0 || row >= grid_.RowCount()) return std::nullopt;
    const TextConventions conventions = HostTextConventions(*services_.application);
    DateTime importDate;
    try {
        importDate = Variant(grid_.Cell(row, 1)).ToDate(conventions);
    } catch (const std::exception&) {
        return std::nullopt;  // not a row the list filled
    }
    return log_.GetLogInfo(grid_.Cell(row, 0), importDate, true);
}

void KitraLogViewer::DeleteSelected() {
    const std::vector<int> selected = grid_.SelectedRows();
    if (selected.empty()) return;
    const host::MessageAnswer answer = services_.messageBoxes->Show(
        kDeleteQuestion, host::MessageStyle::Question, host::MessageButtons::YesNo, Title());
    if (answer != host::MessageAnswer::Yes) return;

    const TextConventions conventions = HostTextConventions(*services_.application);
    for (auto row = selected.rbegin(); row != selected.rend(); ++row) {
        const std::string restaurant = grid_.Cell(*row, 0);
        try {
            log_.Delete(restaurant, Variant(grid_.Cell(*row, 1)).ToDate(conventions));
        } catch (const std::exception&) {
            // A date that cannot be read names no row of the table; the grid row goes anyway.
        }
        grid_.RemoveRow(*row);
    }
    changed_ = true;
}

}  // namespace kitra
