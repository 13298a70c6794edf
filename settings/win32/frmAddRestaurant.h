#pragma once
// The restaurant editor as a Windows dialog: the controls of RestaurantForm under their own
// identifiers (settings/win32/ControlIds.h), bound to the editor's rules.
#include "core/win32/Dialog.h"
#include "host/HostServices.h"
#include "settings/RestaurantEditor.h"

namespace kitra::win32 {

class frmAddRestaurant final : public Dialog {
public:
    explicit frmAddRestaurant(const host::HostServices& services);

    // Shows the record modally over `owner`; true (and the record filled) when OK accepted it.
    bool Edit(Restaurant& record, HWND owner);

private:
    // Wide enough for the longest caption ("Última importação de transacções:") and a supplier's
    // name beside its number, in dialog units.
    static constexpr int kWidth = 360;
    void OnInit() override;
    bool OnCommand(int id, int code, HWND control) override;

    void Fill(const RestaurantForm& form);
    RestaurantForm Form() const;
    void Ok();
    void SearchSupplier();
    void ShowSupplierName();

    RestaurantEditor editor_;
    Restaurant* record_ = nullptr;
    TwoColumnList cboDefaultWarehouseID_, cboWasteWarehouseID_, cboWorkstation_;
};

}  // namespace kitra::win32
