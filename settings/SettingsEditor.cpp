#include "settings/SettingsEditor.h"

#include <algorithm>

#include <fmt/format.h>

#include "core/Numbers.h"
#include "settings/DialogTexts.h"
#include "settings/SettingsXml.h"

namespace kitra {
namespace texts = dialog_texts;
namespace {

constexpr std::array<const char*, kDocumentCombos> kDocumentLabels{
    texts::lblInvoiceTransDocument,         texts::lblCreditSales,
    texts::lblStockDocument,                texts::lblCashEntranceTransDocument,
    texts::lblCashWithdrawalTransDocument,  texts::lblCustumerPaymentTransDocument,
    texts::lblCustumerPaymentAccountDocument};

bool Listed(const std::vector<ListEntry>& list, const std::string& code) {
    return std::any_of(list.begin(), list.end(), [&](const ListEntry& e) { return e.code == code; });
}

std::string DescriptionIn(const std::vector<ListEntry>& list, const std::string& code) {
    for (const ListEntry& entry : list) {
        if (entry.code == code) return entry.description;
    }
    return {};
}

// A zone that cannot be shown stops the loading; its key travels in the exception.
struct ZoneFailure {
    std::string zone;
};

// The code of a selected host record, or nothing for the zero that means none; a code the host
// does not list cannot be shown.
std::optional<std::int16_t> SelectedNumber(std::int16_t code, const std::vector<ListEntry>& list,
                                           const char* zone) {
    if (code == 0) return std::nullopt;
    if (!Listed(list, std::to_string(code))) throw ZoneFailure{zone};
    return code;
}

// The VAT column's form "##0.00" with the host's separator; a half cent is rounded away from
// zero, by the host's rounding, as a formatted number is (0,125 shows "0,13").
std::string VatText(double rate, char separator, const host::IUtilityService& utility) {
    std::string text = fmt::format("{:.2f}", utility.Round(rate, 2));
    std::replace(text.begin(), text.end(), '.', separator);
    return text;
}

}  // namespace

std::string SettingsEditor::Title() const {
    return services_.application->Text(texts::kSettingsTitle);
}

const char* SettingsEditor::DocumentLabel(DocumentCombo combo) { return kDocumentLabels.at(combo); }

std::vector<ListEntry> SettingsEditor::DocumentTypeList() const {
    std::vector<ListEntry> entries;
    for (const host::DocumentType& type : services_.documentTypes->List()) {
        entries.push_back({type.DocumentTypeID, type.Description});
    }
    return entries;
}

std::vector<ListEntry> SettingsEditor::TenderList() const {
    std::vector<ListEntry> entries;
    for (const host::Tender& tender : services_.tenders->List()) {
        entries.push_back({std::to_string(tender.TenderID), tender.Description});
    }
    return entries;
}

std::vector<ListEntry> SettingsEditor::TaxableGroupList() const {
    std::vector<ListEntry> entries;
    for (const host::TaxableGroup& group : services_.taxableGroups->List()) {
        entries.push_back({std::to_string(group.TaxableGroupID), group.Description});
    }
    return entries;
}

SettingsForm SettingsEditor::Open(const KitraConnectorSetting& setting) const {
    std::string failedZone;
    SettingsForm form = Load(setting, &failedZone);
    if (services_.messageBoxes == nullptr) return form;
    if (!failedZone.empty()) {
        services_.messageBoxes->Show(ZoneMessage(failedZone), host::MessageStyle::Plain,
                                     host::MessageButtons::Ok, services_.application->Title());
    } else if (const auto failure = RestaurantFailure(form.vsfRestaurant)) {
        services_.messageBoxes->Show(*failure, host::MessageStyle::Information,
                                     host::MessageButtons::Ok, services_.application->Title());
    }
    return form;
}

std::string SettingsEditor::ZoneMessage(const std::string& zone) {
    return texts::kZoneFailure + zone + "'";
}

SettingsForm SettingsEditor::Load(const KitraConnectorSetting& setting, std::string* failedZone) const {
    SettingsForm form;
    const std::vector<ListEntry> documentTypes = DocumentTypeList();
    // The two customer-payment combos are not zones: each shows its code when the host lists it.
    for (auto [combo, code] : {std::pair{cboCustomerPaymentTransDocument, &setting.CustomerPaymentTransDocument},
                               std::pair{cboCustomerPaymentAccountDocument, &setting.CustomerPaymentAccountDocument}}) {
        if (Listed(documentTypes, *code)) form.documents[combo] = *code;
    }
    try {
        const std::pair<DocumentCombo, const std::string*> zones[] = {
            {cboInvoiceTransDocument, &setting.InvoiceTransDocument},
            {cboCreditSales, &setting.CreditTransDocument},
            {cboStockDocument, &setting.StockTransDocument},
            {cboCashEntranceTransDocument, &setting.CashEntranceTransDocument},
            {cboCashWithdrawalTransDocument, &setting.CashWithdrawalTransDocument}};
        const char* keys[] = {"InvoiceTransDocument", "CreditTransDocument", "StockTransDocument",
                              "CashEntranceTransDocument", "CashWithdrawalTransDocument"};
        for (std::size_t i = 0; i < std::size(zones); ++i) {
            const std::string& code = *zones[i].second;
            // An empty code is a choice not made yet, not an error.
            if (!code.empty() && !Listed(documentTypes, code)) throw ZoneFailure{keys[i]};
            form.documents[zones[i].first] = code;
        }
        const std::vector<ListEntry> tenders = TenderList();
        const std::vector<ListEntry> groups = TaxableGroupList();
        form.cboDefaultTenderPayment =
            SelectedNumber(setting.DefaultTenderPayment, tenders, "DefaultTenderPayment");
        form.cboDefaultTaxableGroup =
            SelectedNumber(setting.DefaultTaxableGroup, groups, "DefaultTaxableGroup");

        const char separator = services_.application->DecimalSeparator();
        std::vector<TaxableGroupRow> taxableRows;
        for (const TaxableGroupMapping& mapping : setting.TaxableGroupEquivalence) {
            const std::string code = std::to_string(mapping.TaxableGroupID);
            if (!Listed(groups, code)) throw ZoneFailure{"TaxableGroupEquivalence"};
            const double rate = services_.utility->ParseNumber(mapping.KitraVAT, settings_xml::kVatSeparator);
            taxableRows.push_back({VatText(rate, separator, *services_.utility), code, DescriptionIn(groups, code)});
        }
        form.vsfTaxableGroups = std::move(taxableRows);

        std::vector<TenderRow> tenderRows;
        for (const TenderMapping& mapping : setting.TenderEquivalence) {
            const std::string code = std::to_string(mapping.POSTenderID);
            if (!Listed(tenders, code)) throw ZoneFailure{"TenderEquivalence"};
            tenderRows.push_back({mapping.KitraTenderID, code, DescriptionIn(tenders, code)});
        }
        form.vsfPayments = std::move(tenderRows);

        form.vsfRestaurant.assign(setting.Restaurants.begin(), setting.Restaurants.end());
    } catch (const ZoneFailure& failure) {
        if (failedZone != nullptr) *failedZone = failure.zone;
    } catch (const std::exception&) {
        if (failedZone != nullptr) *failedZone = "TaxableGroupEquivalence";
    }
    return form;
}

std::string SettingsEditor::CaptionWithoutColon(const std::string& caption) {
    if (!caption.empty() && caption.back() == ':') return caption.substr(0, caption.size() - 1);
    return caption;
}

std::optional<std::string> SettingsEditor::RestaurantFailure(
    const std::vector<Restaurant>& restaurants) const {
    if (restaurants.empty()) {
        return services_.application->Text(texts::kAtLeastOneIn) + texts::lblRestaurants;
    }
    for (const Restaurant& restaurant : restaurants) {
        const auto series = services_.documentSeries->Get(restaurant.TransSerial);
        if (series && series->Kind != host::SeriesKind::ExternalUnsigned) {
            return std::string(texts::kSeriesNotExternalUnsigned);
        }
    }
    return std::nullopt;
}

std::vector<std::string> SettingsEditor::Failures(const SettingsForm& form) const {
    const host::IApplication& application = *services_.application;
    const std::string chooseIn = application.Text(texts::kChooseAValueIn);
    std::vector<std::string> failures;

    for (int combo = 0; combo < kDocumentCombos; ++combo) {
        if (form.documents[combo].empty()) failures.push_back(chooseIn + kDocumentLabels[combo]);
    }

    const std::string incompleteIn = application.Text(texts::kIncompleteRowsIn);
    if (std::any_of(form.vsfTaxableGroups.begin(), form.vsfTaxableGroups.end(),
                    [](const TaxableGroupRow& r) { return r.vat.empty() || r.taxableGroup.empty(); })) {
        failures.push_back(incompleteIn + texts::lblTaxableGroups);
    }
    if (std::any_of(form.vsfPayments.begin(), form.vsfPayments.end(),
                    [](const TenderRow& r) { return r.kitraTenderId.empty() || r.posTender.empty(); })) {
        failures.push_back(incompleteIn + texts::lblPayments);
    }

    const auto isVoucher = [&](const std::string& code) {
        try {
            const auto tender = services_.tenders->Get(RoundToInt16(ParseNumberStrict(code, '.')));
            return tender && tender->TenderType == kTenderTypeVoucher;
        } catch (const std::exception&) {
            return false;
        }
    };
    if (std::any_of(form.vsfPayments.begin(), form.vsfPayments.end(),
                    [&](const TenderRow& r) { return isVoucher(r.posTender); })) {
        failures.push_back(std::string(texts::kVoucherMappedIn) + texts::lblPayments);
    }
    // No default tender at all is refused with the same message: the import needs one.
    if (!form.cboDefaultTenderPayment || isVoucher(std::to_string(*form.cboDefaultTenderPayment))) {
        failures.push_back(chooseIn + CaptionWithoutColon(texts::lblDefaultTenderPayment) +
                           texts::kVoucherAsDefault);
    }
    if (!form.cboDefaultTaxableGroup) {
        failures.push_back(chooseIn + CaptionWithoutColon(texts::lblDefaultTaxableGroup));
    }
    if (auto restaurants = RestaurantFailure(form.vsfRestaurant)) failures.push_back(*restaurants);
    return failures;
}

bool SettingsEditor::Accept(const SettingsForm& form, KitraConnectorSetting& setting) const {
    const std::vector<std::string> failures = Failures(form);
    if (!failures.empty()) {
        Say(failures.front(), host::MessageStyle::Information);
        return false;
    }
    // Restaurants are added by name: two with the same name (letter case aside) are refused
    // before anything is written.
    Restaurants restaurants;
    try {
        for (const Restaurant& restaurant : form.vsfRestaurant) restaurants.Add(restaurant);
    } catch (const std::exception& error) {
        Say(DescriptionOf(error), host::MessageStyle::Information);
        return false;
    }
    Take(form, setting);
    return true;
}

void SettingsEditor::Take(const SettingsForm& form, KitraConnectorSetting& setting) const {
    setting.InvoiceTransDocument = form.documents[cboInvoiceTransDocument];
    setting.CreditTransDocument = form.documents[cboCreditSales];
    setting.StockTransDocument = form.documents[cboStockDocument];
    setting.CashEntranceTransDocument = form.documents[cboCashEntranceTransDocument];
    setting.CashWithdrawalTransDocument = form.documents[cboCashWithdrawalTransDocument];
    setting.CustomerPaymentTransDocument = form.documents[cboCustomerPaymentTransDocument];
    setting.CustomerPaymentAccountDocument = form.documents[cboCustomerPaymentAccountDocument];
    setting.DefaultTenderPayment = form.cboDefaultTenderPayment.value_or(0);
    setting.DefaultTaxableGroup = form.cboDefaultTaxableGroup.value_or(0);

    const host::IUtilityService& numbers = *services_.utility;
    setting.TenderEquivalence.clear();
    for (const TenderRow& row : form.vsfPayments) {
        setting.TenderEquivalence.push_back(
            {RoundToInt16(numbers.ParseNumber(row.posTender, ',')), row.kitraTenderId});
    }
    setting.TaxableGroupEquivalence.clear();
    for (const TaxableGroupRow& row : form.vsfTaxableGroups) {
        // The rate is typed with "," and kept in the normalised "." form.
        setting.TaxableGroupEquivalence.push_back(
            {RoundToInt16(numbers.ParseNumber(row.taxableGroup, ',')),
             FormatNormalisedVat(numbers.ParseNumber(row.vat, ','))});
    }
    setting.Restaurants.Clear();
    for (const Restaurant& restaurant : form.vsfRestaurant) setting.Restaurants.Add(restaurant);
}

void SettingsEditor::TenderPicked(TenderRow& row, std::int16_t tenderId) const {
    const auto tender = services_.tenders->Get(tenderId);
    if (tender && tender->TenderType == kTenderTypeVoucher) {
        Say(texts::kVoucherPicked, host::MessageStyle::Information);
        row = TenderRow{};
        return;
    }
    row.posTender = std::to_string(tenderId);
    row.description = tender ? tender->Description : std::string();
}

bool SettingsEditor::TenderIdAccepted(const std::string& text) {
    return CharacterCount(text) < kTenderIdLimit;
}

void SettingsEditor::TaxableGroupPicked(TaxableGroupRow& row, std::int16_t taxableGroupId) const {
    const auto group = services_.taxableGroups->Get(taxableGroupId);
    row.taxableGroup = std::to_string(taxableGroupId);
    row.description = group ? group->Description : std::string();
}

std::optional<char> SettingsEditor::FilterVatKey(char key, const std::string& cellText) const {
    constexpr char kEnter = '\r', kTab = '\t', kEscape = '\x1b', kBackspace = '\b';
    if ((key >= '0' && key <= '9') || key == '-' || key == '+' || key == ',') return key;
    if (key == kEnter || key == kTab || key == kEscape || key == kBackspace) return key;
    if (key == '.') {
        const char separator = services_.application->DecimalSeparator();
        // A "." stands for the host's "," separator, once: a second one is dropped. A typed ","
        // is not checked for a second occurrence; the check on leaving the cell catches it.
        if (separator != ',') return std::nullopt;
        if (cellText.find(separator) != std::string::npos) return std::nullopt;
        return separator;
    }
    return std::nullopt;
}

std::string SettingsEditor::VatShown(const std::string& typed) const {
    try {
        return VatText(services_.utility->ParseNumber(typed, ','), services_.application->DecimalSeparator(),
                       *services_.utility);
    } catch (const std::exception&) {
        return typed;
    }
}

bool SettingsEditor::VatAccepted(const std::string& text) const {
    try {
        return services_.utility->ParseNumber(text, ',') > -1;
    } catch (const std::exception&) {
        return false;
    }
}

SettingsForm SettingsEditor::Defaults(const SettingsForm& current) const {
    // Missing "DEV" and "PCL" are made, so that every combo has its default to show.
    const std::pair<const char*, std::pair<const char*, host::DocumentKind>> made[] = {
        {"DEV", {"DEVOLUÇÃO", host::DocumentKind::Return}},
        {"PCL", {"PAGAMENTO DE CLIENTES", host::DocumentKind::CustomerPayment}}};
    for (const auto& [code, what] : made) {
        if (!services_.documentTypes->Exists(code)) {
            services_.documentTypes->Save({code, what.first, what.second}, code, true);
        }
    }
    const std::vector<ListEntry> documentTypes = DocumentTypeList();
    const auto listedOrNone = [&](const char* code) {
        return Listed(documentTypes, code) ? std::string(code) : std::string();
    };

    SettingsForm form;
    form.documents[cboInvoiceTransDocument] = listedOrNone("VB");
    form.documents[cboCreditSales] = listedOrNone("FAC");
    form.documents[cboStockDocument] = listedOrNone("DEV");
    form.documents[cboCashEntranceTransDocument] = listedOrNone("PCL");
    form.documents[cboCashWithdrawalTransDocument] = listedOrNone("DEV");
    form.documents[cboCustomerPaymentTransDocument] = listedOrNone("PCL");
    form.documents[cboCustomerPaymentAccountDocument] = listedOrNone("PCL");
    // The first cash tender, and the first taxable group the host lists.
    for (const host::Tender& tender : services_.tenders->List()) {
        if (tender.TenderType == host::tender_type::kCash) {
            form.cboDefaultTenderPayment = tender.TenderID;
            break;
        }
    }
    const std::vector<host::TaxableGroup> groups = services_.taxableGroups->List();
    if (!groups.empty()) form.cboDefaultTaxableGroup = groups.front().TaxableGroupID;
    form.vsfRestaurant = current.vsfRestaurant;
    return form;
}

void SettingsEditor::Say(const std::string& text, host::MessageStyle style) const {
    if (services_.messageBoxes == nullptr) return;
    services_.messageBoxes->Show(text, style, host::MessageButtons::Ok, services_.application->Title());
}

}  // namespace kitra
