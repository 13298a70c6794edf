#pragma once
// The settings dialog as a Qt dialog: the controls of SettingsForm under their own names
// (cboInvoiceTransDocument, vsfPayments, btnAddTaxableGroup, ...), bound to the settings
// dialog's rules; restaurants are edited one at a time in frmAddRestaurant.
#include <QDialog>
#include <array>
#include <vector>

#include "host/HostServices.h"
#include "settings/SettingsEditor.h"

class QLabel;
class QPushButton;
class QTableWidget;

namespace kitra {

class TwoColumnCombo;

class frmSettings final : public QDialog {
public:
    explicit frmSettings(const host::HostServices& services, QWidget* parent = nullptr);

    // Fills the controls from the settings (telling a zone that cannot be shown, and the
    // restaurant checks' failure), shows the dialog modally and, when OK accepts the controls,
    // writes them into the settings. True when accepted.
    bool Edit(KitraConnectorSetting& setting);
    // Only the filling of Edit, without showing the dialog.
    void Open(const KitraConnectorSetting& setting);
    SettingsForm Form() const;

    // The grids' columns.
    enum { kRestaurantValue = 0, kHostCode = 1, kDescription = 2 };
    // The host-code column's "..." lists (tenders, taxable groups): code and description, in
    // points.
    static inline const std::vector<int> kListColumnWidths{35, 150};

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void FillLists();
    void Fill(const SettingsForm& form);
    void FillRestaurantRow(int row);
    void Ok();
    void AddRestaurant();
    void EditRestaurant();
    void DeleteRestaurants();

    const host::HostServices& services_;
    SettingsEditor editor_;
    KitraConnectorSetting* setting_ = nullptr;
    std::array<TwoColumnCombo*, kDocumentCombos> documents_{};
    std::array<QLabel*, kDocumentCombos> documentLabels_{};
    TwoColumnCombo* cboDefaultTenderPayment_;
    TwoColumnCombo* cboDefaultTaxableGroup_;
    QTableWidget *vsfPayments_, *vsfTaxableGroups_, *vsfRestaurant_;
    std::vector<Restaurant> restaurants_;  // the records behind vsfRestaurant's rows
    QPushButton *cmdOk_, *cmdCancel_, *cmdDefaults_;
};

}  // namespace kitra
