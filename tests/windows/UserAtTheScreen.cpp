#include "tests/windows/UserAtTheScreen.h"

#include <chrono>

#include "core/Text.h"
#include "core/win32/Dialog.h"

namespace kitra::testing {
namespace {

constexpr auto kPatience = std::chrono::seconds(20);
constexpr auto kStep = std::chrono::milliseconds(10);
// A private message the test's thread answers only after every message queued before it.
constexpr UINT kSettle = WM_APP + 77;

std::string WindowTextOf(HWND window) {
    const int length = static_cast<int>(::SendMessageW(window, WM_GETTEXTLENGTH, 0, 0));
    std::wstring text(static_cast<std::size_t>(length) + 1, L'\0');
    const int got = static_cast<int>(
        ::SendMessageW(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data())));
    text.resize(static_cast<std::size_t>(got < 0 ? 0 : got));
    return Utf8FromWide(text);
}

struct Search {
    std::wstring caption;
    HWND found = nullptr;
    bool enabledOnly = true;
};

BOOL CALLBACK FindDialog(HWND window, LPARAM data) {
    auto& search = *reinterpret_cast<Search*>(data);
    wchar_t className[64] = {};
    ::GetClassNameW(window, className, 64);
    if (std::wstring(className) != L"#32770" || !::IsWindowVisible(window)) return TRUE;
    if (search.enabledOnly && !::IsWindowEnabled(window)) return TRUE;
    if (WideFromUtf8(WindowTextOf(window)) != search.caption) return TRUE;
    search.found = window;
    return FALSE;
}

BOOL CALLBACK CollectDialog(HWND window, LPARAM data) {
    wchar_t className[64] = {};
    ::GetClassNameW(window, className, 64);
    if (std::wstring(className) == L"#32770") reinterpret_cast<std::vector<HWND>*>(data)->push_back(window);
    return TRUE;
}

template <class Condition>
bool WaitFor(Condition condition) {
    const auto end = std::chrono::steady_clock::now() + kPatience;
    while (std::chrono::steady_clock::now() < end) {
        if (condition()) return true;
        std::this_thread::sleep_for(kStep);
    }
    return false;
}

HWND Control(HWND dialog, int id) {
    HWND control = ::GetDlgItem(dialog, id);
    if (control == nullptr) throw std::runtime_error("the dialog has no control " + std::to_string(id));
    return control;
}

}  // namespace

LRESULT CALLBACK UserAtTheScreen::MarkerProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == kSettle) {
        reinterpret_cast<std::atomic<int>*>(::GetWindowLongPtrW(window, GWLP_USERDATA))->fetch_add(1);
        return 0;
    }
    return ::DefWindowProcW(window, message, wParam, lParam);
}

UserAtTheScreen::UserAtTheScreen(std::function<void(UserAtTheScreen&)> script)
    : testThread_(::GetCurrentThreadId()) {
    static const ATOM markerClass = [] {
        WNDCLASSW windowClass{};
        windowClass.lpfnWndProc = &UserAtTheScreen::MarkerProcedure;
        windowClass.hInstance = ::GetModuleHandleW(nullptr);
        windowClass.lpszClassName = L"KitraTestMarker";
        return ::RegisterClassW(&windowClass);
    }();
    marker_ = ::CreateWindowExW(0, reinterpret_cast<LPCWSTR>(static_cast<ULONG_PTR>(markerClass)), L"", 0, 0, 0,
                                0, 0, HWND_MESSAGE, nullptr, ::GetModuleHandleW(nullptr), nullptr);
    ::SetWindowLongPtrW(marker_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(&settled_));
    thread_ = std::thread([this, script = std::move(script)] {
        try {
            script(*this);
        } catch (const std::exception& error) {
            failure_ = error.what();
            CloseEverything();
        }
    });
}

UserAtTheScreen::~UserAtTheScreen() {
    if (thread_.joinable()) thread_.join();
    ::DestroyWindow(marker_);
}

std::string UserAtTheScreen::Failure() {
    if (thread_.joinable()) thread_.join();
    return failure_;
}

void UserAtTheScreen::CloseEverything() {
    // Innermost first: each close gives the dialog under it its turn.
    for (int round = 0; round < 20; ++round) {
        std::vector<HWND> dialogs;
        ::EnumThreadWindows(testThread_, &CollectDialog, reinterpret_cast<LPARAM>(&dialogs));
        if (dialogs.empty()) return;
        for (HWND dialog : dialogs) {
            if (::IsWindowEnabled(dialog)) ::PostMessageW(dialog, WM_COMMAND, MAKEWPARAM(IDCANCEL, BN_CLICKED), 0);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
    }
}

bool UserAtTheScreen::HasDialog(const std::string& caption) const {
    Search search{WideFromUtf8(caption), nullptr, false};
    ::EnumThreadWindows(testThread_, &FindDialog, reinterpret_cast<LPARAM>(&search));
    return search.found != nullptr;
}

HWND UserAtTheScreen::WaitForDialog(const std::string& caption) {
    Search search{WideFromUtf8(caption)};
    WaitFor([&] {
        search.found = nullptr;
        ::EnumThreadWindows(testThread_, &FindDialog, reinterpret_cast<LPARAM>(&search));
        return search.found != nullptr;
    });
    if (search.found == nullptr) throw std::runtime_error("no dialog \"" + caption + "\" opened");
    Settle(search.found);
    return search.found;
}

void UserAtTheScreen::WaitUntilClosed(HWND window) {
    if (!WaitFor([&] { return !::IsWindow(window) || !::IsWindowVisible(window); })) {
        throw std::runtime_error("the window \"" + Caption(window) + "\" stayed open");
    }
}

HWND UserAtTheScreen::WaitForControl(HWND dialog, int id) {
    HWND control = nullptr;
    WaitFor([&] { return (control = ::GetDlgItem(dialog, id)) != nullptr; });
    if (control == nullptr) throw std::runtime_error("no control " + std::to_string(id) + " appeared");
    return control;
}

void UserAtTheScreen::WaitUntilNoControl(HWND dialog, int id) {
    if (!WaitFor([&] { return ::GetDlgItem(dialog, id) == nullptr; })) {
        throw std::runtime_error("the control " + std::to_string(id) + " stayed");
    }
}

void UserAtTheScreen::Settle(HWND) {
    // Posted messages are handled in the order they were posted: once the marker posted now has
    // come through, everything queued before it has been handled. Twice, for what those
    // messages queued in turn.
    for (int round = 0; round < 2; ++round) {
        const int before = settled_.load();
        ::PostMessageW(marker_, kSettle, 0, 0);
        if (!WaitFor([&] { return settled_.load() > before; })) {
            throw std::runtime_error("the test's thread stopped handling its messages");
        }
    }
}

void UserAtTheScreen::WaitUntilEnabled(HWND dialog) {
    // A dialog under a modal one that was just closed is enabled again only when the inner
    // one's message loop has ended, a moment after it disappeared; a button of a disabled
    // dialog takes no click (the window system refuses its capture).
    if (!WaitFor([&] { return !::IsWindow(dialog) || ::IsWindowEnabled(dialog); })) {
        throw std::runtime_error("the window \"" + Caption(dialog) + "\" stayed disabled");
    }
}

void UserAtTheScreen::Click(HWND dialog, int id) {
    WaitUntilEnabled(dialog);
    ::SendMessageW(Control(dialog, id), BM_CLICK, 0, 0);
}

void UserAtTheScreen::ClickToOpen(HWND dialog, int id) {
    WaitUntilEnabled(dialog);
    ::PostMessageW(Control(dialog, id), BM_CLICK, 0, 0);
}

void UserAtTheScreen::TypeInto(HWND control, const std::string& text) {
    for (const char16_t unit : Utf16FromUtf8(text)) ::SendMessageW(control, WM_CHAR, unit, 1);
}

void UserAtTheScreen::Retype(HWND dialog, int id, const std::string& text) {
    HWND box = Control(dialog, id);
    ::SendMessageW(box, EM_SETSEL, 0, -1);
    ::SendMessageW(box, WM_CHAR, VK_BACK, 1);
    TypeInto(box, text);
}

void UserAtTheScreen::PressKey(HWND control, WPARAM key) {
    ::PostMessageW(control, WM_KEYDOWN, key, 1);
    ::PostMessageW(control, WM_KEYUP, key, static_cast<LPARAM>(0xC0000001));
    Settle(control);
}

bool UserAtTheScreen::Pick(HWND dialog, int id, const std::string& text) {
    HWND list = Control(dialog, id);
    const LRESULT index = ::SendMessageW(list, CB_FINDSTRINGEXACT, static_cast<WPARAM>(-1),
                                         reinterpret_cast<LPARAM>(WideFromUtf8(text).c_str()));
    if (index == CB_ERR) return false;
    ::SendMessageW(list, CB_SETCURSEL, static_cast<WPARAM>(index), 0);
    ::SendMessageW(dialog, WM_COMMAND, MAKEWPARAM(id, CBN_SELCHANGE), reinterpret_cast<LPARAM>(list));
    ::SendMessageW(dialog, WM_COMMAND, MAKEWPARAM(id, CBN_SELENDOK), reinterpret_cast<LPARAM>(list));
    return true;
}

void UserAtTheScreen::SetChecked(HWND dialog, int id, bool checked) {
    if (Checked(dialog, id) != checked) Click(dialog, id);
}

void UserAtTheScreen::SetPicker(HWND dialog, int id, const DateTime& moment) {
    win32::SetPicker(Control(dialog, id), moment);
}

int UserAtTheScreen::RowCount(HWND dialog, int id) const {
    return static_cast<int>(::SendMessageW(Control(dialog, id), LVM_GETITEMCOUNT, 0, 0));
}

std::string UserAtTheScreen::Cell(HWND dialog, int id, int row, int column) const {
    std::wstring text(1024, L'\0');
    LVITEMW item{};
    item.iSubItem = column;
    item.pszText = text.data();
    item.cchTextMax = static_cast<int>(text.size());
    const LRESULT length = ::SendMessageW(Control(dialog, id), LVM_GETITEMTEXTW,
                                          static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item));
    text.resize(static_cast<std::size_t>(length < 0 ? 0 : length));
    return Utf8FromWide(text);
}

void UserAtTheScreen::SelectRows(HWND dialog, int id, const std::vector<int>& rows) {
    HWND grid = Control(dialog, id);
    LVITEMW none{};
    none.stateMask = LVIS_SELECTED | LVIS_FOCUSED;
    ::SendMessageW(grid, LVM_SETITEMSTATE, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>(&none));
    for (int row : rows) {
        LVITEMW selected{};
        selected.stateMask = LVIS_SELECTED | LVIS_FOCUSED;
        selected.state = LVIS_SELECTED | LVIS_FOCUSED;
        ::SendMessageW(grid, LVM_SETITEMSTATE, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&selected));
    }
}

namespace {

LPARAM CellCentre(HWND grid, int row, int column) {
    RECT cell{};
    cell.top = column;
    cell.left = LVIR_BOUNDS;
    ::SendMessageW(grid, LVM_GETSUBITEMRECT, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&cell));
    if (column == 0) {
        // The first column's rectangle is the row's; its cells end where the second column begins.
        RECT second{};
        second.top = 1;
        second.left = LVIR_BOUNDS;
        if (::SendMessageW(grid, LVM_GETSUBITEMRECT, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&second))) {
            cell.right = second.left;
        }
    }
    return MAKELPARAM((cell.left + cell.right) / 2, (cell.top + cell.bottom) / 2);
}

}  // namespace

void UserAtTheScreen::DoubleClickCell(HWND dialog, int id, int row, int column) {
    DoubleClickCellToOpen(dialog, id, row, column);
    Settle(dialog);
}

void UserAtTheScreen::DoubleClickCellToOpen(HWND dialog, int id, int row, int column) {
    WaitUntilEnabled(dialog);
    HWND grid = Control(dialog, id);
    const LPARAM at = CellCentre(grid, row, column);
    ::PostMessageW(grid, WM_LBUTTONDOWN, MK_LBUTTON, at);
    ::PostMessageW(grid, WM_LBUTTONUP, 0, at);
    ::PostMessageW(grid, WM_LBUTTONDBLCLK, MK_LBUTTON, at);
    ::PostMessageW(grid, WM_LBUTTONUP, 0, at);
}

std::string UserAtTheScreen::Text(HWND dialog, int id) const { return WindowTextOf(Control(dialog, id)); }

std::string UserAtTheScreen::Caption(HWND window) const { return WindowTextOf(window); }

std::string UserAtTheScreen::Selected(HWND dialog, int id) const {
    HWND list = Control(dialog, id);
    const LRESULT index = ::SendMessageW(list, CB_GETCURSEL, 0, 0);
    if (index < 0) return {};
    const LRESULT length = ::SendMessageW(list, CB_GETLBTEXTLEN, static_cast<WPARAM>(index), 0);
    std::wstring text(static_cast<std::size_t>(length < 0 ? 0 : length) + 1, L'\0');
    const LRESULT got = ::SendMessageW(list, CB_GETLBTEXT, static_cast<WPARAM>(index),
                                       reinterpret_cast<LPARAM>(text.data()));
    text.resize(static_cast<std::size_t>(got < 0 ? 0 : got));
    return Utf8FromWide(text);
}

int UserAtTheScreen::EntryCount(HWND dialog, int id) const {
    return static_cast<int>(::SendMessageW(Control(dialog, id), CB_GETCOUNT, 0, 0));
}

bool UserAtTheScreen::Checked(HWND dialog, int id) const {
    return ::SendMessageW(Control(dialog, id), BM_GETCHECK, 0, 0) == BST_CHECKED;
}

DateTime UserAtTheScreen::Picker(HWND dialog, int id) const {
    return win32::DateOfPicker(Control(dialog, id));
}

HWND UserAtTheScreen::Focus() const {
    GUITHREADINFO info{};
    info.cbSize = sizeof(info);
    if (!::GetGUIThreadInfo(testThread_, &info)) return nullptr;
    return info.hwndFocus;
}

}  // namespace kitra::testing
