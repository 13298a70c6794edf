#include "core/win32/Dialog.h"

#include <algorithm>
#include <cstdlib>

#include "core/Error.h"
#include "core/ScreenUnits.h"
#include "core/Text.h"

namespace kitra::win32 {
namespace {

// The dialogs' font: the system's dialog font at 8 points, as the window system's own dialogs.
constexpr WORD kFontPoints = 8;
constexpr const wchar_t* kFontName = L"MS Shell Dlg";

void AppendText(std::vector<WORD>& words, const wchar_t* text) {
    do {
        words.push_back(static_cast<WORD>(*text));
    } while (*text++ != L'\0');
}

// Every control class the dialogs use, registered once per process.
void InitControls() {
    static const bool done = [] {
        INITCOMMONCONTROLSEX controls{sizeof(INITCOMMONCONTROLSEX),
                                      ICC_LISTVIEW_CLASSES | ICC_DATE_CLASSES |
                                          ICC_STANDARD_CLASSES | ICC_UPDOWN_CLASS};
        return ::InitCommonControlsEx(&controls) != FALSE;
    }();
    (void)done;
}

}  // namespace

std::wstring Wide(const std::string& text) { return WideFromUtf8(text); }
std::string Narrow(const std::wstring& text) { return Utf8FromWide(text); }

std::string WindowText(HWND window) {
    const int length = ::GetWindowTextLengthW(window);
    if (length <= 0) return {};
    std::wstring text(static_cast<std::size_t>(length) + 1, L'\0');
    text.resize(static_cast<std::size_t>(::GetWindowTextW(window, text.data(), length + 1)));
    return Narrow(text);
}

void SetWindowTextUtf8(HWND window, const std::string& text) {
    ::SetWindowTextW(window, Wide(text).c_str());
}

HINSTANCE ThisModule() {
    HMODULE module = nullptr;
    ::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                             GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                         reinterpret_cast<LPCWSTR>(&ThisModule), &module);
    return module;
}

HWND DefaultOwner() { return ::GetActiveWindow(); }

INT_PTR Dialog::ShowModal(HWND owner, const std::string& caption, int widthUnits, int heightUnits) {
    InitControls();
    // The template: the dialog's frame and font only; OnInit makes the controls.
    std::vector<WORD> words(sizeof(DLGTEMPLATE) / sizeof(WORD), 0);
    auto* frame = reinterpret_cast<DLGTEMPLATE*>(words.data());
    frame->style = WS_POPUP | WS_CAPTION | WS_SYSMENU | DS_MODALFRAME | DS_SETFONT | DS_CENTER |
                   (resizable_ ? WS_THICKFRAME | WS_MAXIMIZEBOX : 0);
    frame->cdit = 0;
    frame->cx = static_cast<short>(widthUnits);
    frame->cy = static_cast<short>(heightUnits);
    words.push_back(0);  // no menu
    words.push_back(0);  // the dialog class
    AppendText(words, Wide(caption).c_str());
    words.push_back(kFontPoints);
    AppendText(words, kFontName);
    // The system reads the template as DWORD-aligned.
    std::vector<DWORD> aligned((words.size() + 1) / 2, 0);
    std::copy(words.begin(), words.end(), reinterpret_cast<WORD*>(aligned.data()));
    failure_.clear();
    const INT_PTR result =
        ::DialogBoxIndirectParamW(ThisModule(), reinterpret_cast<DLGTEMPLATE*>(aligned.data()),
                                  owner, &Dialog::Procedure, reinterpret_cast<LPARAM>(this));
    window_ = nullptr;
    if (!failure_.empty()) throw Error(failure_);
    return result;
}

INT_PTR CALLBACK Dialog::Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    Dialog* self = nullptr;
    if (message == WM_INITDIALOG) {
        self = reinterpret_cast<Dialog*>(lParam);
        self->window_ = window;
        ::SetWindowLongPtrW(window, DWLP_USER, lParam);
    } else {
        self = reinterpret_cast<Dialog*>(::GetWindowLongPtrW(window, DWLP_USER));
    }
    if (self == nullptr) return FALSE;
    // An error must not unwind through the window system's frames: it closes the dialog, and
    // ShowModal raises it again on the caller's side.
    try {
        return self->Dispatch(message, wParam, lParam);
    } catch (const std::exception& error) {
        if (self->failure_.empty()) self->failure_ = DescriptionOf(error);
        ::EndDialog(window, -1);
        return TRUE;
    }
}

INT_PTR Dialog::Dispatch(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_INITDIALOG: {
        font_ = reinterpret_cast<HFONT>(::SendMessageW(window_, WM_GETFONT, 0, 0));
        OnInit();
        RECT client{};
        ::GetClientRect(window_, &client);
        OnSize(client.right, client.bottom);
        // A view that put the focus somewhere keeps it there; otherwise the window system gives
        // it to the first control (selecting all of an edit box's text).
        HWND focus = ::GetFocus();
        return focus != nullptr && ::IsChild(window_, focus) ? FALSE : TRUE;
    }
    case WM_COMMAND: {
        const int id = LOWORD(wParam);
        const int code = HIWORD(wParam);
        if (OnCommand(id, code, reinterpret_cast<HWND>(lParam))) return TRUE;
        if (id == IDCANCEL && code == BN_CLICKED) {
            OnCancel();
            return TRUE;
        }
        return FALSE;
    }
    case WM_NOTIFY: {
        LRESULT result = 0;
        if (!OnNotify(*reinterpret_cast<const NMHDR*>(lParam), result)) return FALSE;
        ::SetWindowLongPtrW(window_, DWLP_MSGRESULT, result);
        return TRUE;
    }
    case WM_SIZE:
        OnSize(LOWORD(lParam), HIWORD(lParam));
        return TRUE;
    case WM_MEASUREITEM: {
        auto& item = *reinterpret_cast<MEASUREITEMSTRUCT*>(lParam);
        for (TwoColumnList* list : drawnLists_) {
            if (static_cast<int>(item.CtlID) == list->Id()) {
                list->Measure(item);
                return TRUE;
            }
        }
        return FALSE;
    }
    case WM_DRAWITEM: {
        const auto& item = *reinterpret_cast<const DRAWITEMSTRUCT*>(lParam);
        for (TwoColumnList* list : drawnLists_) {
            if (item.hwndItem == list->Handle()) {
                list->Draw(item);
                return TRUE;
            }
        }
        return FALSE;
    }
    case WM_CLOSE:
        OnCancel();
        return TRUE;
    default: {
        INT_PTR result = FALSE;
        return OnMessage(message, wParam, lParam, result) ? result : FALSE;
    }
    }
}

bool Dialog::OnMessage(UINT, WPARAM, LPARAM, INT_PTR&) { return false; }

bool Dialog::OnCommand(int, int, HWND) { return false; }
bool Dialog::OnNotify(const NMHDR&, LRESULT&) { return false; }
void Dialog::OnSize(int, int) {}

void Dialog::End(INT_PTR result) { ::EndDialog(window_, result); }

int Dialog::PixelsX(int units) const {
    RECT rect{0, 0, units, 0};
    ::MapDialogRect(window_, &rect);
    return rect.right;
}

int Dialog::PixelsY(int units) const {
    RECT rect{0, 0, 0, units};
    ::MapDialogRect(window_, &rect);
    return rect.bottom;
}

HWND Dialog::Add(const wchar_t* windowClass, int id, const std::string& text, DWORD style, int x,
                 int y, int width, int height, DWORD extendedStyle) {
    RECT rect{x, y, x + width, y + height};
    ::MapDialogRect(window_, &rect);
    HWND control = ::CreateWindowExW(extendedStyle, windowClass, Wide(text).c_str(),
                                     WS_CHILD | WS_VISIBLE | style, rect.left, rect.top,
                                     rect.right - rect.left, rect.bottom - rect.top, window_,
                                     reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)),
                                     ThisModule(), nullptr);
    if (control != nullptr && font_ != nullptr) {
        ::SendMessageW(control, WM_SETFONT, reinterpret_cast<WPARAM>(font_), FALSE);
    }
    return control;
}

HWND Dialog::Label(int id, const std::string& text, int x, int y, int width, int height) {
    return Add(L"STATIC", id, text, SS_LEFT | SS_NOPREFIX, x, y, width, height);
}

HWND Dialog::TextBox(int id, int x, int y, int width, int height, DWORD extraStyle) {
    return Add(L"EDIT", id, "", WS_TABSTOP | WS_BORDER | ES_AUTOHSCROLL | extraStyle, x, y, width,
               height, WS_EX_CLIENTEDGE);
}

HWND Dialog::Button(int id, const std::string& text, int x, int y, int width, int height,
                    bool isDefault) {
    return Add(L"BUTTON", id, text, WS_TABSTOP | (isDefault ? BS_DEFPUSHBUTTON : BS_PUSHBUTTON), x,
               y, width, height);
}

HWND Dialog::CheckBox(int id, const std::string& text, int x, int y, int width, int height) {
    return Add(L"BUTTON", id, text, WS_TABSTOP | BS_AUTOCHECKBOX, x, y, width, height);
}

HWND Dialog::GroupBox(int id, const std::string& text, int x, int y, int width, int height) {
    return Add(L"BUTTON", id, text, BS_GROUPBOX, x, y, width, height);
}

HWND Dialog::DatePicker(int id, int x, int y, int width, int height, bool time) {
    HWND picker = Add(DATETIMEPICK_CLASSW, id, "",
                      WS_TABSTOP | (time ? DTS_TIMEFORMAT | DTS_UPDOWN : DTS_SHORTDATEFORMAT), x, y,
                      width, height);
    // The import moments read as everywhere else in the connector (its log, the log list), not
    // in the machine's regional format.
    ::SendMessageW(picker, DTM_SETFORMATW, 0,
                   reinterpret_cast<LPARAM>(time ? L"HH':'mm':'ss" : L"dd'-'MM'-'yyyy"));
    return picker;
}

void Dialog::MakeList(TwoColumnList& list, int id, std::vector<int> widthsPoints, int x, int y,
                      int width, int height) {
    // The drawing code must know the list before the window system measures its entries, which
    // it does while making the control.
    HDC screen = ::GetDC(window_);
    const int dpi = ::GetDeviceCaps(screen, LOGPIXELSX);
    ::ReleaseDC(window_, screen);
    std::vector<int> pixels;
    for (int points : widthsPoints) pixels.push_back(PointsToPixels(points, dpi));
    list.Attach(nullptr, id, pixels);
    if (std::find(drawnLists_.begin(), drawnLists_.end(), &list) == drawnLists_.end()) {
        drawnLists_.push_back(&list);
    }
    // The height is the closed box's and its open list's together.
    HWND control = Add(L"COMBOBOX", id, "",
                       WS_TABSTOP | WS_VSCROLL | CBS_DROPDOWNLIST | CBS_OWNERDRAWFIXED |
                           CBS_HASSTRINGS,
                       x, y, width, height);
    list.Attach(control, id, pixels);
}

void Dialog::MakeGrid(Grid& grid, int id, const std::vector<std::string>& headings,
                      const std::vector<int>& widthsPixels, bool severalSelected, int x, int y,
                      int width, int height) {
    HWND control = Add(WC_LISTVIEWW, id, "",
                       WS_TABSTOP | WS_BORDER | LVS_REPORT | LVS_SHOWSELALWAYS |
                           (severalSelected ? 0 : LVS_SINGLESEL),
                       x, y, width, height);
    grid.Attach(control, headings, widthsPixels);
}

void Dialog::Place(int id, int x, int y, int width, int height) const {
    ::MoveWindow(Item(id), x, y, width, height, TRUE);
}

void Dialog::PlaceFillAndButtons(int fill, const std::vector<int>& buttons, int width, int height,
                                 int margin, int buttonWidth, int buttonHeight) const {
    const int edge = PixelsX(margin), across = PixelsX(buttonWidth), tall = PixelsY(buttonHeight),
              gap = PixelsX(4);
    const int buttonsTop = height - edge - tall;
    Place(fill, edge, edge, width - 2 * edge, buttonsTop - gap - edge);
    int right = width - edge;
    for (int button : buttons) {
        Place(button, right - across, buttonsTop, across, tall);
        right -= across + gap;
    }
}

void TwoColumnList::Attach(HWND control, int id, std::vector<int> widthsPixels) {
    window_ = control;
    id_ = id;
    widthsPixels_ = std::move(widthsPixels);
}

void TwoColumnList::SetEntries(const std::vector<ListChoice>& entries) {
    entries_ = entries;
    ::SendMessageW(window_, CB_RESETCONTENT, 0, 0);
    for (const ListChoice& entry : entries_) {
        ::SendMessageW(window_, CB_ADDSTRING, 0,
                       reinterpret_cast<LPARAM>(Wide(entry.code).c_str()));
    }
    ::SendMessageW(window_, CB_SETCURSEL, static_cast<WPARAM>(-1), 0);
}

std::string TwoColumnList::Code() const {
    const LRESULT index = ::SendMessageW(window_, CB_GETCURSEL, 0, 0);
    if (index < 0 || static_cast<std::size_t>(index) >= entries_.size()) return {};
    return entries_[static_cast<std::size_t>(index)].code;
}

std::optional<std::int16_t> TwoColumnList::Number() const {
    const std::string code = Code();
    if (code.empty()) return std::nullopt;
    return static_cast<std::int16_t>(std::atoi(code.c_str()));
}

void TwoColumnList::SelectCode(const std::string& code) {
    WPARAM index = static_cast<WPARAM>(-1);
    for (std::size_t entry = 0; entry < entries_.size(); ++entry) {
        if (!code.empty() && entries_[entry].code == code) {
            index = entry;
            break;
        }
    }
    ::SendMessageW(window_, CB_SETCURSEL, index, 0);
}

void TwoColumnList::SelectNumber(const std::optional<std::int16_t>& number) {
    SelectCode(number ? std::to_string(*number) : std::string());
}

void TwoColumnList::Measure(MEASUREITEMSTRUCT& item) const {
    HWND owner = window_ != nullptr ? ::GetParent(window_) : nullptr;
    HDC dc = ::GetDC(owner);
    HFONT font = owner != nullptr ? reinterpret_cast<HFONT>(::SendMessageW(owner, WM_GETFONT, 0, 0))
                                  : nullptr;
    HGDIOBJ old = font != nullptr ? ::SelectObject(dc, font) : nullptr;
    TEXTMETRICW metrics{};
    ::GetTextMetricsW(dc, &metrics);
    if (old != nullptr) ::SelectObject(dc, old);
    ::ReleaseDC(owner, dc);
    item.itemHeight = static_cast<UINT>(metrics.tmHeight + 2);
}

void TwoColumnList::Draw(const DRAWITEMSTRUCT& item) const {
    const bool selected = (item.itemState & ODS_SELECTED) != 0;
    ::FillRect(item.hDC, &item.rcItem,
               ::GetSysColorBrush(selected ? COLOR_HIGHLIGHT : COLOR_WINDOW));
    if (item.itemID == static_cast<UINT>(-1) || item.itemID >= entries_.size()) return;
    const ListChoice& entry = entries_[item.itemID];
    ::SetBkMode(item.hDC, TRANSPARENT);
    ::SetTextColor(item.hDC, ::GetSysColor(selected ? COLOR_HIGHLIGHTTEXT : COLOR_WINDOWTEXT));
    // The closed box shows one column: the code, unless the code column is hidden.
    const bool closedBox = (item.itemState & ODS_COMBOBOXEDIT) != 0;
    RECT cell = item.rcItem;
    cell.left += 2;
    const std::vector<std::string> texts{entry.code, entry.description};
    for (std::size_t column = 0; column < texts.size() && column < widthsPixels_.size(); ++column) {
        const int width = widthsPixels_[column];
        if (width == 0) continue;
        const bool last = column + 1 == texts.size() || closedBox;
        RECT part = cell;
        if (!last) part.right = std::min<LONG>(cell.right, cell.left + width);
        const std::wstring text = Wide(texts[column]);
        ::DrawTextW(item.hDC, text.c_str(), static_cast<int>(text.size()), &part,
                    DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX | DT_END_ELLIPSIS);
        if (closedBox) break;
        cell.left += width;
    }
    if ((item.itemState & ODS_FOCUS) != 0) ::DrawFocusRect(item.hDC, &item.rcItem);
}

void Grid::Attach(HWND control, const std::vector<std::string>& headings,
                  const std::vector<int>& widthsPixels) {
    window_ = control;
    columns_ = static_cast<int>(headings.size());
    ListView_SetExtendedListViewStyle(window_, LVS_EX_FULLROWSELECT | LVS_EX_GRIDLINES);
    for (int column = 0; column < columns_; ++column) {
        std::wstring heading = Wide(headings[static_cast<std::size_t>(column)]);
        LVCOLUMNW entry{};
        entry.mask = LVCF_TEXT | LVCF_WIDTH | LVCF_SUBITEM;
        entry.pszText = heading.data();
        entry.cx = widthsPixels.at(static_cast<std::size_t>(column));
        entry.iSubItem = column;
        ::SendMessageW(window_, LVM_INSERTCOLUMNW, static_cast<WPARAM>(column),
                       reinterpret_cast<LPARAM>(&entry));
    }
}

void Grid::Clear() { ListView_DeleteAllItems(window_); }

int Grid::AddRow(const std::vector<std::string>& cells) {
    LVITEMW item{};
    item.mask = LVIF_TEXT;
    item.iItem = RowCount();
    std::wstring first = Wide(cells.empty() ? std::string() : cells.front());
    item.pszText = first.data();
    const int row = static_cast<int>(
        ::SendMessageW(window_, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item)));
    for (std::size_t column = 1; column < cells.size(); ++column) {
        SetCell(row, static_cast<int>(column), cells[column]);
    }
    return row;
}

void Grid::RemoveRow(int row) { ListView_DeleteItem(window_, row); }

int Grid::RowCount() const { return ListView_GetItemCount(window_); }

std::string Grid::Cell(int row, int column) const {
    std::wstring text(1024, L'\0');
    LVITEMW item{};
    item.iSubItem = column;
    item.pszText = text.data();
    item.cchTextMax = static_cast<int>(text.size());
    const LRESULT length = ::SendMessageW(window_, LVM_GETITEMTEXTW, static_cast<WPARAM>(row),
                                          reinterpret_cast<LPARAM>(&item));
    text.resize(static_cast<std::size_t>(std::max<LRESULT>(length, 0)));
    return Narrow(text);
}

void Grid::SetCell(int row, int column, const std::string& text) {
    std::wstring wide = Wide(text);
    LVITEMW item{};
    item.iSubItem = column;
    item.pszText = wide.data();
    ::SendMessageW(window_, LVM_SETITEMTEXTW, static_cast<WPARAM>(row),
                   reinterpret_cast<LPARAM>(&item));
}

std::vector<int> Grid::SelectedRows() const {
    std::vector<int> rows;
    for (int row = ListView_GetNextItem(window_, -1, LVNI_SELECTED); row >= 0;
         row = ListView_GetNextItem(window_, row, LVNI_SELECTED)) {
        rows.push_back(row);
    }
    return rows;
}

int Grid::CurrentRow() const {
    const int focused = ListView_GetNextItem(window_, -1, LVNI_FOCUSED);
    if (focused >= 0 && ListView_GetItemState(window_, focused, LVIS_SELECTED) != 0) return focused;
    return ListView_GetNextItem(window_, -1, LVNI_SELECTED);
}

void Grid::SetCurrentRow(int row) {
    ListView_SetItemState(window_, -1, 0, LVIS_SELECTED | LVIS_FOCUSED);
    if (row < 0) return;
    ListView_SetItemState(window_, row, LVIS_SELECTED | LVIS_FOCUSED, LVIS_SELECTED | LVIS_FOCUSED);
    ListView_EnsureVisible(window_, row, FALSE);
}

RECT Grid::CellRect(int row, int column) const {
    RECT rect{};
    ListView_GetSubItemRect(window_, row, column, LVIR_BOUNDS, &rect);
    if (column == 0) {
        // The first column's rectangle is the whole row's; it ends where the second begins.
        RECT second{};
        if (columns_ > 1 && ListView_GetSubItemRect(window_, row, 1, LVIR_BOUNDS, &second)) {
            rect.right = second.left;
        }
    }
    ::MapWindowPoints(window_, ::GetParent(window_), reinterpret_cast<POINT*>(&rect), 2);
    return rect;
}

DateTime DateOfPicker(HWND picker) {
    SYSTEMTIME time{};
    DateTime_GetSystemtime(picker, &time);
    return {time.wYear, time.wMonth, time.wDay, time.wHour, time.wMinute, time.wSecond};
}

void SetPicker(HWND picker, const DateTime& moment) {
    SYSTEMTIME time{};
    time.wYear = static_cast<WORD>(moment.year);
    time.wMonth = static_cast<WORD>(moment.month);
    time.wDay = static_cast<WORD>(moment.day);
    time.wHour = static_cast<WORD>(moment.hour);
    time.wMinute = static_cast<WORD>(moment.minute);
    time.wSecond = static_cast<WORD>(moment.second);
    DateTime_SetSystemtime(picker, GDT_VALID, &time);
}

DateTime LocalNow() {
    SYSTEMTIME now{};
    ::GetLocalTime(&now);
    return {now.wYear, now.wMonth, now.wDay, now.wHour, now.wMinute, now.wSecond};
}

}  // namespace kitra::win32
