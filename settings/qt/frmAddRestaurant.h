#pragma once
// The restaurant editor as a Qt dialog: the controls of RestaurantForm under their own names
// (txtName, cboTransSerial, dtpEntityImport, ...), bound to the editor's rules.
#include <QDialog>

#include "host/HostServices.h"
#include "settings/RestaurantEditor.h"

class QCheckBox;
class QComboBox;
class QDateEdit;
class QDoubleSpinBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTimeEdit;

namespace kitra {

class TwoColumnCombo;

class frmAddRestaurant final : public QDialog {
public:
    explicit frmAddRestaurant(const host::HostServices& services, QWidget* parent = nullptr);

    // Shows the record modally; true (and the record filled) when OK accepted it.
    bool Edit(Restaurant& record);
    // Fills the controls from the record, without showing the dialog.
    void ShowRecord(const Restaurant& record);
    RestaurantForm Form() const;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void Fill(const RestaurantForm& form);
    void Ok();
    void SearchSupplier();

    RestaurantEditor editor_;
    Restaurant* record_ = nullptr;
    QLineEdit *txtName_, *txtServerName_, *txtServerPort_, *txtServerDB_, *txtServerUser_,
        *txtServerPwd_, *txtItemIDPrefix_;
    QComboBox* cboTransSerial_;
    TwoColumnCombo *cboDefaultWarehouseID_, *cboWasteWarehouseID_, *cboWorkstation_;
    QDoubleSpinBox* numDefaultSupplierID_;
    QLabel* stfDefaultSupplierID_;
    QCheckBox* chkStockManagement_;
    QDateEdit *dtpEntityImport_, *dtpTransactionsImport_;
    QTimeEdit *dtpEntityImportTime_, *dtpTransactionsImportTime_;
    QPushButton *cmdOk_, *cmdCancel_, *cmdTestConnection_, *cmdSearchSupplier_;
};

}  // namespace kitra
