#pragma once
// The settings dialog as a Windows dialog: the controls of SettingsForm under their own
// identifiers (settings/win32/ControlIds.h), bound to the settings rules. The equivalence grids
// are edited in place: a double click on a typed cell opens a text box over it, on a host code
// cell the host's list; the restaurants are edited in the restaurant editor.
#include <array>

#include "core/win32/Dialog.h"
#include "host/HostServices.h"
#include "settings/SettingsEditor.h"

namespace kitra::win32 {

class frmSettings final : public Dialog {
public:
    // The equivalence grids' columns: the restaurant's value, the host's code, its description.
    enum { kRestaurantValue = 0, kHostCode = 1, kDescription = 2 };

    explicit frmSettings(const host::HostServices& services);

    // Shows the settings modally over `owner`; true (and the settings filled) when OK accepted.
    bool Edit(KitraConnectorSetting& setting, HWND owner);

private:
    void OnInit() override;
    bool OnCommand(int id, int code, HWND control) override;
    bool OnNotify(const NMHDR& header, LRESULT& result) override;
    bool OnMessage(UINT message, WPARAM wParam, LPARAM lParam, INT_PTR& result) override;

    void FillLists();
    void Fill(const SettingsForm& form);
    SettingsForm Form() const;
    void FillRestaurantRow(int row);
    void Ok();
    void AddRestaurant();
    void EditRestaurant();
    void DeleteRestaurants();

    // Editing a cell of an equivalence grid in place.
    void BeginCellEdit(Grid& grid, int row, int column);
    void EndCellEdit(bool keep);
    void CellPicked();

    const host::HostServices& services_;
    SettingsEditor editor_;
    KitraConnectorSetting* setting_ = nullptr;
    std::array<TwoColumnList, kDocumentCombos> documents_;
    TwoColumnList cboDefaultTenderPayment_, cboDefaultTaxableGroup_;
    Grid vsfPayments_, vsfTaxableGroups_, vsfRestaurant_;
    std::vector<Restaurant> restaurants_;
    std::vector<ListEntry> tenders_, groups_;

    struct CellEdit {
        Grid* grid = nullptr;
        int row = -1, column = -1;
        HWND control = nullptr;
    } cell_;
    TwoColumnList cellList_;
};

}  // namespace kitra::win32
