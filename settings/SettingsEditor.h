#pragma once
// The rules of the settings dialog frmSettings, with no window system: its lists, the loading of
// the settings zone by zone, the validation in its order with its messages, the restaurant
// checks, taking the controls back into the settings, the equivalence grids' editing rules and
// the defaults. A view (Qt today) binds its widgets to a SettingsForm; ValidateSettings runs the
// same validation over the stored settings without any view.
#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/HostServices.h"
#include "settings/KitraConnectorSetting.h"
#include "settings/RestaurantEditor.h"

namespace kitra {

// A row of vsfPayments: column 0 the restaurant's tender, column 1 the host tender's code, and
// the host tender's description beside them.
struct TenderRow {
    std::string kitraTenderId, posTender, description;
    bool operator==(const TenderRow&) const = default;
};
// A row of vsfTaxableGroups: column 0 the VAT rate as shown ("##0.00", host separator), column 1
// the host taxable group's code, and its description.
struct TaxableGroupRow {
    std::string vat, taxableGroup, description;
    bool operator==(const TaxableGroupRow&) const = default;
};

// The seven document-type combos, in the dialog's order.
enum DocumentCombo {
    cboInvoiceTransDocument, cboCreditSales, cboStockDocument, cboCashEntranceTransDocument,
    cboCashWithdrawalTransDocument, cboCustomerPaymentTransDocument,
    cboCustomerPaymentAccountDocument, kDocumentCombos
};

// The dialog's controls, as values. An empty code or an absent number: nothing selected.
struct SettingsForm {
    std::array<std::string, kDocumentCombos> documents;
    std::optional<std::int16_t> cboDefaultTenderPayment, cboDefaultTaxableGroup;
    std::vector<TenderRow> vsfPayments;
    std::vector<TaxableGroupRow> vsfTaxableGroups;
    std::vector<Restaurant> vsfRestaurant;
    bool operator==(const SettingsForm&) const = default;
};

class SettingsEditor {
public:
    // An edit of a restaurant tender this long or longer is refused.
    static constexpr std::size_t kTenderIdLimit = 16;
    static constexpr int kTenderTypeVoucher = 5;

    explicit SettingsEditor(const host::HostServices& services) : services_(services) {}

    std::string Title() const;
    // The caption of a document combo's label.
    static const char* DocumentLabel(DocumentCombo combo);

    std::vector<ListEntry> DocumentTypeList() const;
    std::vector<ListEntry> TenderList() const;
    std::vector<ListEntry> TaxableGroupList() const;

    // Fills the controls zone by zone; when a zone cannot be shown, loading stops there and its
    // key comes back in `failedZone` (later zones stay empty).
    SettingsForm Load(const KitraConnectorSetting& setting, std::string* failedZone) const;
    // Opening the dialog: Load, then the first thing the user must hear about what was loaded,
    // in a message box: the zone that could not be shown (plain), else a restaurant check's
    // failure (information icon).
    SettingsForm Open(const KitraConnectorSetting& setting) const;
    // The message that names a zone that could not be loaded.
    static std::string ZoneMessage(const std::string& zone);

    // Every failing rule's message, in the dialog's order (the dialog shows the first).
    std::vector<std::string> Failures(const SettingsForm& form) const;
    // The restaurant checks' first failure: none defined, or a series of another kind.
    std::optional<std::string> RestaurantFailure(const std::vector<Restaurant>& restaurants) const;
    // OK: the first failure is shown (information icon) and nothing is written; otherwise the
    // controls go into the settings. True when accepted.
    bool Accept(const SettingsForm& form, KitraConnectorSetting& setting) const;
    // The controls into the settings, without validation.
    void Take(const SettingsForm& form, KitraConnectorSetting& setting) const;

    // vsfPayments: the user picked a host tender on a row. A voucher is refused (the message is
    // shown and the row's cells are cleared); otherwise the row's description is filled.
    void TenderPicked(TenderRow& row, std::int16_t tenderId) const;
    // vsfPayments' first column: whether an edit of that text is kept.
    static bool TenderIdAccepted(const std::string& text);
    // vsfTaxableGroups: the user picked a host taxable group; its description fills the row.
    void TaxableGroupPicked(TaxableGroupRow& row, std::int16_t taxableGroupId) const;
    // A key typed into the VAT column: the character that goes in, or nothing when it is dropped.
    // Control keys (Enter, Tab, Escape, Backspace) are passed as their control characters.
    std::optional<char> FilterVatKey(char key, const std::string& cellText) const;
    // Leaving the VAT column: whether the entry is kept (it reads as a number above -1).
    bool VatAccepted(const std::string& text) const;
    // The VAT column shows its entries "##0.00" with the host's separator ("6,5" as "6,50");
    // an entry that is not a number shows as typed.
    std::string VatShown(const std::string& typed) const;

    // cmdDefaults: the host's default document types, tender and taxable group, and empty
    // grids; the restaurants stay. Missing "DEV" and "PCL" document types are created.
    SettingsForm Defaults(const SettingsForm& current) const;

    // A label's caption in a message; the two default messages drop one final ":".
    static std::string CaptionWithoutColon(const std::string& caption);

private:
    void Say(const std::string& text, host::MessageStyle style) const;

    const host::HostServices& services_;
};

}  // namespace kitra
