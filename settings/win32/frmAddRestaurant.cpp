#include "settings/win32/frmAddRestaurant.h"

#include <cstdlib>

#include "core/Numbers.h"
#include "settings/DialogTexts.h"
#include "settings/win32/ControlIds.h"
#include "settings/win32/ListChoices.h"

namespace kitra::win32 {
namespace texts = dialog_texts;
namespace {

// A time part is shown on today's date: the picker holds whole moments.
void SetTimePicker(HWND picker, const DateTime& time) {
    DateTime shown = LocalNow();
    shown.hour = time.hour;
    shown.minute = time.minute;
    shown.second = time.second;
    SetPicker(picker, shown);
}

// Enter is swallowed in the name, and moves on to the warehouse from the item prefix; the
// dialog would otherwise take it for its default button.
LRESULT CALLBACK EnterKeys(HWND box, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR,
                           DWORD_PTR data) {
    if (message == WM_GETDLGCODE && lParam != 0 &&
        reinterpret_cast<const MSG*>(lParam)->message == WM_KEYDOWN && wParam == VK_RETURN) {
        return DLGC_WANTALLKEYS | ::DefSubclassProc(box, message, wParam, lParam);
    }
    if (message == WM_KEYDOWN && wParam == VK_RETURN) {
        HWND next = reinterpret_cast<HWND>(data);
        if (next != nullptr) ::SetFocus(next);
        return 0;
    }
    if (message == WM_CHAR && wParam == L'\r') return 0;
    return ::DefSubclassProc(box, message, wParam, lParam);
}

// The supplier search: the suppliers whose name or number holds the typed text; OK or a double
// click takes the selected one.
class frmSearchSupplier final : public Dialog {
public:
    explicit frmSearchSupplier(const RestaurantEditor& editor) : editor_(editor) {}
    std::optional<double> chosen;

private:
    void OnInit() override {
        TextBox(IDC_txtSearch, 7, 7, 226, 12);
        Add(L"LISTBOX", IDC_lstSuppliers, "",
            WS_TABSTOP | WS_BORDER | WS_VSCROLL | LBS_NOTIFY | LBS_NOINTEGRALHEIGHT, 7, 23, 226, 120);
        Button(IDC_cmdOk, "OK", 129, 149, 50, 14, true);
        Button(IDC_cmdCancel, "Cancelar", 183, 149, 50, 14);
        Refill();
    }
    bool OnCommand(int id, int code, HWND) override {
        if (id == IDC_txtSearch && code == EN_CHANGE) {
            Refill();
            return true;
        }
        if ((id == IDC_cmdOk && code == BN_CLICKED) || (id == IDC_lstSuppliers && code == LBN_DBLCLK)) {
            const LRESULT index = ::SendMessageW(Item(IDC_lstSuppliers), LB_GETCURSEL, 0, 0);
            if (index >= 0 && static_cast<std::size_t>(index) < found_.size()) {
                chosen = found_[static_cast<std::size_t>(index)].SupplierID;
            }
            End(IDOK);
            return true;
        }
        return false;
    }
    void Refill() {
        HWND list = Item(IDC_lstSuppliers);
        ::SendMessageW(list, LB_RESETCONTENT, 0, 0);
        found_ = editor_.SearchSuppliers(ItemText(IDC_txtSearch));
        for (const host::Supplier& supplier : found_) {
            ::SendMessageW(list, LB_ADDSTRING, 0,
                           reinterpret_cast<LPARAM>(Wide(RestaurantEditor::SupplierEntry(supplier)).c_str()));
        }
        if (!found_.empty()) ::SendMessageW(list, LB_SETCURSEL, 0, 0);
    }

    const RestaurantEditor& editor_;
    std::vector<host::Supplier> found_;
};

}  // namespace

frmAddRestaurant::frmAddRestaurant(const host::HostServices& services) : editor_(services) {}

bool frmAddRestaurant::Edit(Restaurant& record, HWND owner) {
    record_ = &record;
    const INT_PTR result = ShowModal(owner, editor_.Title(), kWidth, 290);
    record_ = nullptr;
    return result == IDOK;
}

void frmAddRestaurant::OnInit() {
    namespace captions = texts::restaurant_captions;
    constexpr int labelX = 7, labelWidth = 130, controlX = 140, controlWidth = kWidth - 7 - controlX,
                  height = 12;
    int label = IDC_RestaurantLabel;
    int y = 7;
    const auto row = [&](const char* caption) {
        Label(label++, caption, labelX, y + 2, labelWidth, 9);
        const int top = y;
        y += 16;
        return top;
    };
    TextBox(IDC_txtName, controlX, row(captions::kName), controlWidth, height);
    TextBox(IDC_txtServerName, controlX, row(captions::kServer), controlWidth, height);
    TextBox(IDC_txtServerPort, controlX, row(captions::kPort), 50, height);
    TextBox(IDC_txtServerDB, controlX, row(captions::kDatabase), controlWidth, height);
    TextBox(IDC_txtServerUser, controlX, row(captions::kUser), controlWidth, height);
    TextBox(IDC_txtServerPwd, controlX, row(captions::kPassword), controlWidth, height, ES_PASSWORD);
    Button(IDC_cmdTestConnection, captions::kTestConnection, controlX, y, 80, 14);
    y += 18;
    TextBox(IDC_txtItemIDPrefix, controlX, row(captions::kItemPrefix), controlWidth, height);
    MakeList(cboDefaultWarehouseID_, IDC_cboDefaultWarehouseID, {0, 150}, controlX,
             row(captions::kWarehouse), controlWidth, 120);
    MakeList(cboWasteWarehouseID_, IDC_cboWasteWarehouseID, {0, 150}, controlX,
             row(captions::kWasteWarehouse), controlWidth, 120);
    MakeList(cboWorkstation_, IDC_cboWorkstation, {0, 150}, controlX, row(captions::kWorkstation),
             controlWidth, 120);
    const int supplier = row(captions::kSupplier);
    TextBox(IDC_numDefaultSupplierID, controlX, supplier, 50, height, ES_NUMBER);
    Button(IDC_cmdSearchSupplier, "...", controlX + 52, supplier - 1, 16, 14);
    Label(IDC_stfDefaultSupplierID, "", controlX + 71, supplier + 2, controlWidth - 71, 9);
    Add(L"COMBOBOX", IDC_cboTransSerial, "", WS_TABSTOP | WS_VSCROLL | CBS_DROPDOWNLIST, controlX,
        row(captions::kSeries), controlWidth, 120);
    CheckBox(IDC_chkStockManagement, captions::kStockManagement, controlX, y, controlWidth, 10);
    y += 16;
    const int entities = row(captions::kEntitiesImport);
    DatePicker(IDC_dtpEntityImport, controlX, entities, 70, 13, false);
    DatePicker(IDC_dtpEntityImportTime, controlX + 74, entities, 60, 13, true);
    const int transactions = row(captions::kTransactionsImport);
    DatePicker(IDC_dtpTransactionsImport, controlX, transactions, 70, 13, false);
    DatePicker(IDC_dtpTransactionsImportTime, controlX + 74, transactions, 60, 13, true);
    Button(IDC_cmdOk, "OK", kWidth - 111, 270, 50, 14, true);
    Button(IDC_cmdCancel, "Cancelar", kWidth - 57, 270, 50, 14);

    // The lists, filled each time the dialog is made.
    HWND series = Item(IDC_cboTransSerial);
    for (const std::string& code : editor_.SeriesList()) {
        ::SendMessageW(series, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(Wide(code).c_str()));
    }
    cboDefaultWarehouseID_.SetEntries(Choices(editor_.WarehouseList()));
    cboWasteWarehouseID_.SetEntries(Choices(editor_.WarehouseList()));
    cboWorkstation_.SetEntries(Choices(editor_.WorkstationList()));
    ::SetWindowSubclass(Item(IDC_txtName), &EnterKeys, 1, 0);
    ::SetWindowSubclass(Item(IDC_txtItemIDPrefix), &EnterKeys, 1,
                        reinterpret_cast<DWORD_PTR>(cboDefaultWarehouseID_.Handle()));

    Fill(editor_.Show(record_ != nullptr ? *record_ : Restaurant{}, LocalNow()));
    ::SetFocus(Item(IDC_txtName));
}

bool frmAddRestaurant::OnCommand(int id, int code, HWND) {
    if (code == BN_CLICKED) {
        switch (id) {
        case IDC_cmdOk:
            Ok();
            return true;
        case IDC_cmdTestConnection:
            editor_.TestConnection(Form());
            return true;
        case IDC_cmdSearchSupplier:
            SearchSupplier();
            return true;
        default:
            break;
        }
    }
    if (id == IDC_numDefaultSupplierID && code == EN_CHANGE) {
        ShowSupplierName();
        return true;
    }
    return false;
}

void frmAddRestaurant::Fill(const RestaurantForm& form) {
    SetItemText(IDC_txtName, form.txtName);
    SetItemText(IDC_txtServerName, form.txtServerName);
    SetItemText(IDC_txtServerPort, form.txtServerPort);
    SetItemText(IDC_txtServerDB, form.txtServerDB);
    SetItemText(IDC_txtServerUser, form.txtServerUser);
    SetItemText(IDC_txtServerPwd, form.txtServerPwd);
    SetItemText(IDC_txtItemIDPrefix, form.txtItemIDPrefix);
    // The series is found as the rules found it: its text, letter case aside.
    const LRESULT series =
        form.cboTransSerial.empty()
            ? CB_ERR
            : ::SendMessageW(Item(IDC_cboTransSerial), CB_FINDSTRINGEXACT, static_cast<WPARAM>(-1),
                             reinterpret_cast<LPARAM>(Wide(form.cboTransSerial).c_str()));
    ::SendMessageW(Item(IDC_cboTransSerial), CB_SETCURSEL, static_cast<WPARAM>(series), 0);
    cboDefaultWarehouseID_.SelectNumber(form.cboDefaultWarehouseID);
    cboWasteWarehouseID_.SelectNumber(form.cboWasteWarehouseID);
    cboWorkstation_.SelectNumber(form.cboWorkstation);
    ::SendMessageW(Item(IDC_chkStockManagement), BM_SETCHECK,
                   form.stockManagement ? BST_CHECKED : BST_UNCHECKED, 0);
    SetItemText(IDC_numDefaultSupplierID, FormatHostNumber(form.numDefaultSupplierID));
    ShowSupplierName();
    SetPicker(Item(IDC_dtpEntityImport), form.dtpEntityImport);
    SetTimePicker(Item(IDC_dtpEntityImportTime), form.dtpEntityImportTime);
    SetPicker(Item(IDC_dtpTransactionsImport), form.dtpTransactionsImport);
    SetTimePicker(Item(IDC_dtpTransactionsImportTime), form.dtpTransactionsImportTime);
}

RestaurantForm frmAddRestaurant::Form() const {
    RestaurantForm form;
    form.txtName = ItemText(IDC_txtName);
    form.txtServerName = ItemText(IDC_txtServerName);
    form.txtServerPort = ItemText(IDC_txtServerPort);
    form.txtServerDB = ItemText(IDC_txtServerDB);
    form.txtServerUser = ItemText(IDC_txtServerUser);
    form.txtServerPwd = ItemText(IDC_txtServerPwd);
    form.txtItemIDPrefix = ItemText(IDC_txtItemIDPrefix);
    const LRESULT series = ::SendMessageW(Item(IDC_cboTransSerial), CB_GETCURSEL, 0, 0);
    if (series >= 0) {
        std::wstring text(static_cast<std::size_t>(::SendMessageW(
                              Item(IDC_cboTransSerial), CB_GETLBTEXTLEN, static_cast<WPARAM>(series), 0)) + 1,
                          L'\0');
        const LRESULT length = ::SendMessageW(Item(IDC_cboTransSerial), CB_GETLBTEXT,
                                              static_cast<WPARAM>(series), reinterpret_cast<LPARAM>(text.data()));
        text.resize(static_cast<std::size_t>(length < 0 ? 0 : length));
        form.cboTransSerial = Narrow(text);
    }
    form.cboDefaultWarehouseID = cboDefaultWarehouseID_.Number();
    form.cboWasteWarehouseID = cboWasteWarehouseID_.Number();
    form.cboWorkstation = cboWorkstation_.Number();
    form.stockManagement = ::SendMessageW(Item(IDC_chkStockManagement), BM_GETCHECK, 0, 0) == BST_CHECKED;
    form.numDefaultSupplierID = std::strtod(ItemText(IDC_numDefaultSupplierID).c_str(), nullptr);
    form.dtpEntityImport = RestaurantEditor::DatePart(DateOfPicker(Item(IDC_dtpEntityImport)));
    form.dtpEntityImportTime = RestaurantEditor::TimePart(DateOfPicker(Item(IDC_dtpEntityImportTime)));
    form.dtpTransactionsImport = RestaurantEditor::DatePart(DateOfPicker(Item(IDC_dtpTransactionsImport)));
    form.dtpTransactionsImportTime = RestaurantEditor::TimePart(DateOfPicker(Item(IDC_dtpTransactionsImportTime)));
    return form;
}

void frmAddRestaurant::Ok() {
    Restaurant taken = record_ != nullptr ? *record_ : Restaurant{};
    if (!editor_.Accept(Form(), taken)) return;  // the rule said why; the dialog stays open
    if (record_ != nullptr) *record_ = taken;
    End(IDOK);
}

void frmAddRestaurant::ShowSupplierName() {
    SetItemText(IDC_stfDefaultSupplierID,
                editor_.SupplierName(std::strtod(ItemText(IDC_numDefaultSupplierID).c_str(), nullptr)));
}

void frmAddRestaurant::SearchSupplier() {
    frmSearchSupplier search(editor_);
    if (search.ShowModal(Handle(), texts::restaurant_captions::kSuppliers, 240, 170) == IDOK &&
        search.chosen) {
        SetItemText(IDC_numDefaultSupplierID, FormatHostNumber(*search.chosen));
    }
}

}  // namespace kitra::win32
