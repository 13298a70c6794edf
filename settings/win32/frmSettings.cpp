#include "settings/win32/frmSettings.h"

#include <algorithm>

#include "settings/DialogTexts.h"
#include "settings/win32/ControlIds.h"
#include "settings/win32/ListChoices.h"
#include "settings/win32/frmAddRestaurant.h"

namespace kitra::win32 {
namespace texts = dialog_texts;
namespace captions = dialog_texts::settings_captions;
namespace {

// Ends a cell's edit on the dialog's next turn: the editor that asks for it is still in the
// middle of its own message.
constexpr UINT kEndCellEdit = WM_APP + 1;

constexpr std::array<int, kDocumentCombos> kDocumentIds{
    IDC_cboInvoiceTransDocument, IDC_cboCreditSales, IDC_cboStockDocument,
    IDC_cboCashEntranceTransDocument, IDC_cboCashWithdrawalTransDocument,
    IDC_cboCustomerPaymentTransDocument, IDC_cboCustomerPaymentAccountDocument};
constexpr std::array<int, kDocumentCombos> kLabelIds{
    IDC_lblInvoiceTransDocument, IDC_lblCreditSales, IDC_lblStockDocument,
    IDC_lblCashEntranceTransDocument, IDC_lblCashWithdrawalTransDocument,
    IDC_lblCustumerPaymentTransDocument, IDC_lblCustumerPaymentAccountDocument};
// The host's codes in a cell's list: code and description.
const std::vector<int> kListColumnWidths{35, 150};

template <std::size_t N>
std::vector<std::string> Headings(const char* const (&headings)[N]) {
    return std::vector<std::string>(std::begin(headings), std::end(headings));
}

// The keys a cell's text box hands back to the dialog: Enter keeps the entry, Escape drops it,
// and in the VAT column the typed keys go through the settings rules' filter.
struct CellKeys {
    HWND dialog;
    const SettingsEditor* vatFilter;
};

LRESULT CALLBACK CellTextKeys(HWND box, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR,
                              DWORD_PTR data) {
    const auto& keys = *reinterpret_cast<const CellKeys*>(data);
    switch (message) {
    case WM_GETDLGCODE:
        return DLGC_WANTALLKEYS | ::DefSubclassProc(box, message, wParam, lParam);
    case WM_KEYDOWN:
        if (wParam == VK_RETURN || wParam == VK_ESCAPE) {
            ::PostMessageW(keys.dialog, kEndCellEdit, wParam == VK_RETURN, 0);
            return 0;
        }
        break;
    case WM_CHAR: {
        if (wParam == L'\r' || wParam == 0x1b) return 0;
        if (keys.vatFilter == nullptr) break;
        if (wParam > 0x7f) return 0;
        const std::string text = WindowText(box);
        const std::optional<char> kept = keys.vatFilter->FilterVatKey(static_cast<char>(wParam), text);
        if (!kept) return 0;
        return ::DefSubclassProc(box, message, static_cast<WPARAM>(static_cast<unsigned char>(*kept)), lParam);
    }
    case WM_KILLFOCUS:
        ::PostMessageW(keys.dialog, kEndCellEdit, TRUE, 0);
        break;
    case WM_NCDESTROY:
        delete &keys;
        ::RemoveWindowSubclass(box, &CellTextKeys, 1);
        break;
    default:
        break;
    }
    return ::DefSubclassProc(box, message, wParam, lParam);
}

// Enter on the restaurant grid opens the selected restaurant, as a double click does.
LRESULT CALLBACK GridWantsEnter(HWND grid, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR,
                                DWORD_PTR) {
    if (message == WM_GETDLGCODE && lParam != 0 &&
        reinterpret_cast<const MSG*>(lParam)->message == WM_KEYDOWN && wParam == VK_RETURN) {
        return DLGC_WANTALLKEYS | ::DefSubclassProc(grid, message, wParam, lParam);
    }
    return ::DefSubclassProc(grid, message, wParam, lParam);
}

}  // namespace

frmSettings::frmSettings(const host::HostServices& services) : services_(services), editor_(services) {}

bool frmSettings::Edit(KitraConnectorSetting& setting, HWND owner) {
    setting_ = &setting;
    resizable_ = false;
    const INT_PTR result = ShowModal(owner, editor_.Title(), 500, 312);
    setting_ = nullptr;
    return result == IDOK;
}

void frmSettings::OnInit() {
    // The nine lists and their captions, one under the other.
    constexpr int labelX = 7, labelWidth = 140, listX = 150, listWidth = 120;
    for (int combo = 0; combo < kDocumentCombos; ++combo) {
        const int y = 7 + 16 * combo;
        Label(kLabelIds[combo], SettingsEditor::DocumentLabel(DocumentCombo(combo)), labelX, y + 2,
              labelWidth, 9);
        MakeList(documents_[combo], kDocumentIds[combo], {35, 150}, listX, y, listWidth, 150);
    }
    Label(IDC_lblDefaultTenderPayment, texts::lblDefaultTenderPayment, labelX, 7 + 16 * 7 + 2,
          labelWidth, 9);
    MakeList(cboDefaultTenderPayment_, IDC_cboDefaultTenderPayment, {0, 150}, listX, 7 + 16 * 7,
             listWidth, 150);
    Label(IDC_lblDefaultTaxableGroup, texts::lblDefaultTaxableGroup, labelX, 7 + 16 * 8 + 2,
          labelWidth, 9);
    MakeList(cboDefaultTaxableGroup_, IDC_cboDefaultTaxableGroup, {20, 150}, listX, 7 + 16 * 8,
             listWidth, 150);

    // The two equivalence grids on the right, each with its caption above and its buttons beside.
    const auto equivalence = [this](Grid& grid, int gridId, int labelId, const char* caption,
                                    std::vector<std::string> headings, int addId, int deleteId, int y) {
        Label(labelId, caption, 280, y, 160, 9);
        const int valueWidth = PixelsX(55), codeWidth = PixelsX(40), descriptionWidth = PixelsX(60);
        MakeGrid(grid, gridId, headings, {valueWidth, codeWidth, descriptionWidth}, false, 280, y + 11,
                 160, 60);
        Button(addId, captions::kAdd, 445, y + 11, 48, 14);
        Button(deleteId, captions::kDelete, 445, y + 27, 48, 14);
    };
    equivalence(vsfPayments_, IDC_vsfPayments, IDC_lblPayments, texts::lblPayments,
                Headings(captions::kPaymentsHeadings), IDC_btnAddPayment, IDC_btnDeletePayment, 7);
    equivalence(vsfTaxableGroups_, IDC_vsfTaxableGroups, IDC_lblTaxableGroups, texts::lblTaxableGroups,
                Headings(captions::kTaxableGroupsHeadings), IDC_btnAddTaxableGroup,
                IDC_btnDeleteTaxableGroup, 84);

    // The restaurants, across the dialog; never edited in place.
    Label(IDC_lblRestaurants, texts::lblRestaurants, 7, 162, 160, 9);
    MakeGrid(vsfRestaurant_, IDC_vsfRestaurant, Headings(captions::kRestaurantsHeadings),
             {PixelsX(160), PixelsX(250)}, true, 7, 173, 433, 110);
    Button(IDC_btnAddRestaurant, captions::kAdd, 445, 173, 48, 14);
    Button(IDC_btnEditRestaurant, captions::kEdit, 445, 189, 48, 14);
    Button(IDC_btnDeleteRestaurant, captions::kDelete, 445, 205, 48, 14);
    ::SetWindowSubclass(vsfRestaurant_.Handle(), &GridWantsEnter, 1, 0);

    Button(IDC_cmdDefaults, captions::kDefaults, 7, 291, 90, 14);
    Button(IDC_cmdOk, "OK", 389, 291, 50, 14, true);
    Button(IDC_cmdCancel, captions::kCancel, 443, 291, 50, 14);

    FillLists();
    KitraConnectorSetting scratch(*services_.utility);
    Fill(editor_.Open(setting_ != nullptr ? *setting_ : scratch));
}

void frmSettings::FillLists() {
    const std::vector<ListChoice> documentTypes = Choices(editor_.DocumentTypeList());
    for (TwoColumnList& combo : documents_) combo.SetEntries(documentTypes);
    tenders_ = editor_.TenderList();
    groups_ = editor_.TaxableGroupList();
    cboDefaultTenderPayment_.SetEntries(Choices(tenders_));
    cboDefaultTaxableGroup_.SetEntries(Choices(groups_));
}

void frmSettings::Fill(const SettingsForm& form) {
    for (int combo = 0; combo < kDocumentCombos; ++combo) documents_[combo].SelectCode(form.documents[combo]);
    cboDefaultTenderPayment_.SelectNumber(form.cboDefaultTenderPayment);
    cboDefaultTaxableGroup_.SelectNumber(form.cboDefaultTaxableGroup);
    vsfPayments_.Clear();
    for (const TenderRow& row : form.vsfPayments) {
        vsfPayments_.AddRow({row.kitraTenderId, row.posTender, row.description});
    }
    vsfTaxableGroups_.Clear();
    for (const TaxableGroupRow& row : form.vsfTaxableGroups) {
        vsfTaxableGroups_.AddRow({editor_.VatShown(row.vat), row.taxableGroup, row.description});
    }
    restaurants_ = form.vsfRestaurant;
    vsfRestaurant_.Clear();
    for (const Restaurant& restaurant : restaurants_) {
        vsfRestaurant_.AddRow({restaurant.Name, restaurant.ServerName});
    }
}

void frmSettings::FillRestaurantRow(int row) {
    vsfRestaurant_.SetCell(row, 0, restaurants_.at(static_cast<std::size_t>(row)).Name);
    vsfRestaurant_.SetCell(row, 1, restaurants_.at(static_cast<std::size_t>(row)).ServerName);
}

SettingsForm frmSettings::Form() const {
    SettingsForm form;
    for (int combo = 0; combo < kDocumentCombos; ++combo) form.documents[combo] = documents_[combo].Code();
    form.cboDefaultTenderPayment = cboDefaultTenderPayment_.Number();
    form.cboDefaultTaxableGroup = cboDefaultTaxableGroup_.Number();
    for (int row = 0; row < vsfPayments_.RowCount(); ++row) {
        form.vsfPayments.push_back({vsfPayments_.Cell(row, kRestaurantValue),
                                    vsfPayments_.Cell(row, kHostCode),
                                    vsfPayments_.Cell(row, kDescription)});
    }
    for (int row = 0; row < vsfTaxableGroups_.RowCount(); ++row) {
        form.vsfTaxableGroups.push_back({vsfTaxableGroups_.Cell(row, kRestaurantValue),
                                         vsfTaxableGroups_.Cell(row, kHostCode),
                                         vsfTaxableGroups_.Cell(row, kDescription)});
    }
    form.vsfRestaurant = restaurants_;
    return form;
}

bool frmSettings::OnCommand(int id, int code, HWND) {
    if (id == IDC_CellList) {
        if (code == CBN_SELENDOK) {
            CellPicked();
        } else if (code == CBN_SELENDCANCEL || code == CBN_KILLFOCUS) {
            ::PostMessageW(Handle(), kEndCellEdit, FALSE, 0);
        }
        return true;
    }
    if (code != BN_CLICKED) return false;
    const auto addRow = [](Grid& grid) {
        const int row = grid.AddRow({"", "", ""});
        grid.SetCurrentRow(row);
    };
    const auto deleteRow = [](Grid& grid) {
        const int row = grid.CurrentRow();
        if (row >= 0) grid.RemoveRow(row);
    };
    switch (id) {
    case IDC_cmdOk:
        EndCellEdit(true);
        Ok();
        return true;
    case IDC_btnAddPayment:
        addRow(vsfPayments_);
        return true;
    case IDC_btnDeletePayment:
        deleteRow(vsfPayments_);
        return true;
    case IDC_btnAddTaxableGroup:
        addRow(vsfTaxableGroups_);
        return true;
    case IDC_btnDeleteTaxableGroup:
        deleteRow(vsfTaxableGroups_);
        return true;
    case IDC_btnAddRestaurant:
        AddRestaurant();
        return true;
    case IDC_btnEditRestaurant:
        EditRestaurant();
        return true;
    case IDC_btnDeleteRestaurant:
        DeleteRestaurants();
        return true;
    case IDC_cmdDefaults: {
        const SettingsForm defaults = editor_.Defaults(Form());
        FillLists();  // the defaults may have made document types
        Fill(defaults);
        return true;
    }
    default:
        return false;
    }
}

bool frmSettings::OnNotify(const NMHDR& header, LRESULT& result) {
    if (header.hwndFrom == vsfRestaurant_.Handle()) {
        if (header.code == NM_DBLCLK || header.code == NM_RETURN) {
            EditRestaurant();
            result = 0;
            return true;
        }
        return false;
    }
    Grid* grid = header.hwndFrom == vsfPayments_.Handle()       ? &vsfPayments_
                 : header.hwndFrom == vsfTaxableGroups_.Handle() ? &vsfTaxableGroups_
                                                                 : nullptr;
    if (grid == nullptr || header.code != NM_DBLCLK) return false;
    const auto& activated = reinterpret_cast<const NMITEMACTIVATE&>(header);
    if (activated.iItem >= 0) BeginCellEdit(*grid, activated.iItem, activated.iSubItem);
    result = 0;
    return true;
}

bool frmSettings::OnMessage(UINT message, WPARAM wParam, LPARAM, INT_PTR& result) {
    if (message != kEndCellEdit) return false;
    EndCellEdit(wParam != FALSE);
    result = TRUE;
    return true;
}

void frmSettings::BeginCellEdit(Grid& grid, int row, int column) {
    EndCellEdit(true);
    if (column == kDescription) return;  // filled from the host's code, never typed
    const RECT rect = grid.CellRect(row, column);
    cell_ = {&grid, row, column, nullptr};
    if (column == kHostCode) {
        MakeList(cellList_, IDC_CellList, kListColumnWidths, 0, 0, 10, 10);
        cell_.control = cellList_.Handle();
        cellList_.SetEntries(Choices(&grid == &vsfPayments_ ? tenders_ : groups_));
        cellList_.SelectCode(grid.Cell(row, column));
        ::MoveWindow(cell_.control, rect.left, rect.top, std::max<LONG>(rect.right - rect.left, 120),
                     PixelsY(150), TRUE);
        ::SetWindowPos(cell_.control, HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
        ::SetFocus(cell_.control);
        ::SendMessageW(cell_.control, CB_SHOWDROPDOWN, TRUE, 0);
        return;
    }
    cell_.control = Add(L"EDIT", IDC_CellText, grid.Cell(row, column), WS_BORDER | ES_AUTOHSCROLL, 0,
                        0, 10, 10);
    ::MoveWindow(cell_.control, rect.left, rect.top, rect.right - rect.left, rect.bottom - rect.top, TRUE);
    ::SetWindowPos(cell_.control, HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
    ::SetWindowSubclass(cell_.control, &CellTextKeys, 1,
                        reinterpret_cast<DWORD_PTR>(new CellKeys{
                            Handle(), &grid == &vsfTaxableGroups_ ? &editor_ : nullptr}));
    ::SendMessageW(cell_.control, EM_SETSEL, 0, -1);
    ::SetFocus(cell_.control);
}

void frmSettings::EndCellEdit(bool keep) {
    if (cell_.control == nullptr) return;
    const CellEdit ended = cell_;
    cell_ = {};
    if (ended.column == kRestaurantValue && keep) {
        const std::string text = WindowText(ended.control);
        // A refused entry leaves the cell as it was.
        if (ended.grid == &vsfPayments_ && SettingsEditor::TenderIdAccepted(text)) {
            ended.grid->SetCell(ended.row, ended.column, text);
        } else if (ended.grid == &vsfTaxableGroups_ && editor_.VatAccepted(text)) {
            ended.grid->SetCell(ended.row, ended.column, editor_.VatShown(text));
        }
    }
    ::DestroyWindow(ended.control);
    ::SetFocus(ended.grid->Handle());
}

void frmSettings::CellPicked() {
    if (cell_.control == nullptr || cell_.column != kHostCode) return;
    const std::optional<std::int16_t> code = cellList_.Number();
    Grid& grid = *cell_.grid;
    const int row = cell_.row;
    if (code) {
        if (&grid == &vsfPayments_) {
            TenderRow values{grid.Cell(row, 0), grid.Cell(row, 1), grid.Cell(row, 2)};
            editor_.TenderPicked(values, *code);
            grid.SetCell(row, 0, values.kitraTenderId);
            grid.SetCell(row, 1, values.posTender);
            grid.SetCell(row, 2, values.description);
        } else {
            TaxableGroupRow values{grid.Cell(row, 0), "", ""};
            editor_.TaxableGroupPicked(values, *code);
            grid.SetCell(row, 1, values.taxableGroup);
            grid.SetCell(row, 2, values.description);
        }
    }
    ::PostMessageW(Handle(), kEndCellEdit, FALSE, 0);
}

void frmSettings::Ok() {
    // Shown without Edit, the dialog still checks its controls; there is nothing to write into.
    KitraConnectorSetting scratch(*services_.utility);
    if (editor_.Accept(Form(), setting_ != nullptr ? *setting_ : scratch)) End(IDOK);
}

void frmSettings::AddRestaurant() {
    Restaurant record;
    frmAddRestaurant dialog(services_);
    if (!dialog.Edit(record, Handle())) return;
    restaurants_.push_back(record);
    vsfRestaurant_.AddRow({record.Name, record.ServerName});
}

void frmSettings::EditRestaurant() {
    const int row = vsfRestaurant_.CurrentRow();
    if (row < 0 || row >= static_cast<int>(restaurants_.size())) return;
    Restaurant record = restaurants_[static_cast<std::size_t>(row)];
    frmAddRestaurant dialog(services_);
    if (!dialog.Edit(record, Handle())) return;
    restaurants_[static_cast<std::size_t>(row)] = record;
    FillRestaurantRow(row);
}

void frmSettings::DeleteRestaurants() {
    std::vector<int> rows = vsfRestaurant_.SelectedRows();
    std::sort(rows.rbegin(), rows.rend());
    for (int row : rows) {
        restaurants_.erase(restaurants_.begin() + row);
        vsfRestaurant_.RemoveRow(row);
    }
}

}  // namespace kitra::win32
