#pragma once
// What the connector's Windows dialogs are made of: a modal dialog built in memory (no resource
// script: the controls are made in code, laid out in dialog units), and the few controls whose
// behaviour the dialogs share: a two-column drop-down list, a report grid, and the conversions
// between the system's UTF-8 texts and the window system's UTF-16 ones. The dialogs' rules live
// in classes with no window system; these views only bind controls to them.
#include <windows.h>

#include <commctrl.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "core/DateTime.h"

namespace kitra::win32 {

std::wstring Wide(const std::string& text);
std::string Narrow(const std::wstring& text);

// The text of a window (an edit box, a caption, a button), as UTF-8.
std::string WindowText(HWND window);
void SetWindowTextUtf8(HWND window, const std::string& text);

// The module the dialogs are built into: their windows belong to it.
HINSTANCE ThisModule();

// The window that owns a dialog opened on the calling thread: the thread's active window, so
// that the host's own window is disabled while the dialog is open.
HWND DefaultOwner();

class TwoColumnList;
class Grid;

// A modal dialog. The derived view makes its controls in OnInit and answers their
// notifications; ShowModal blocks the calling thread until End is called.
class Dialog {
public:
    Dialog() = default;
    virtual ~Dialog() = default;
    Dialog(const Dialog&) = delete;
    Dialog& operator=(const Dialog&) = delete;

    // Shows the dialog with the caption and a client area of the given size in dialog units;
    // returns what End was given, or -1 when the dialog could not be made. An error raised while
    // the dialog was open closes it and is raised again here.
    INT_PTR ShowModal(HWND owner, const std::string& caption, int widthUnits, int heightUnits);
    HWND Handle() const { return window_; }
    HWND Item(int id) const { return ::GetDlgItem(window_, id); }

protected:
    virtual void OnInit() = 0;
    // A control's command (a click, a list's change); true when handled.
    virtual bool OnCommand(int id, int code, HWND control);
    // A common control's notification; `result` is what the dialog answers.
    virtual bool OnNotify(const NMHDR& header, LRESULT& result);
    // The client area's new size, in pixels.
    virtual void OnSize(int width, int height);
    // Any other message; true when handled, `result` then being the dialog procedure's answer.
    virtual bool OnMessage(UINT message, WPARAM wParam, LPARAM lParam, INT_PTR& result);
    // Closing by the window's close box or Escape: as the Cancel button.
    virtual void OnCancel() { End(IDCANCEL); }
    void End(INT_PTR result);
    // Whether the user may resize the dialog (its views then lay themselves out in OnSize).
    bool resizable_ = false;

    // Controls, placed in dialog units; each gets the dialog's font.
    HWND Add(const wchar_t* windowClass, int id, const std::string& text, DWORD style, int x, int y,
             int width, int height, DWORD extendedStyle = 0);
    HWND Label(int id, const std::string& text, int x, int y, int width, int height);
    HWND TextBox(int id, int x, int y, int width, int height, DWORD extraStyle = 0);
    HWND Button(int id, const std::string& text, int x, int y, int width, int height,
                bool isDefault = false);
    HWND CheckBox(int id, const std::string& text, int x, int y, int width, int height);
    HWND GroupBox(int id, const std::string& text, int x, int y, int width, int height);
    HWND DatePicker(int id, int x, int y, int width, int height, bool time);
    // A two-column list (widths in points) and a report grid (widths in pixels).
    void MakeList(TwoColumnList& list, int id, std::vector<int> widthsPoints, int x, int y,
                  int width, int height);
    void MakeGrid(Grid& grid, int id, const std::vector<std::string>& headings,
                  const std::vector<int>& widthsPixels, bool severalSelected, int x, int y,
                  int width, int height);
    // Moves a control to a rectangle given in pixels.
    void Place(int id, int x, int y, int width, int height) const;
    // The layout of a resizable dialog in a client area of width × height pixels: the control
    // `fill` takes all of it but a margin around and a row of buttons under it, on the right,
    // `buttons` from right to left; margin and button sizes in dialog units.
    void PlaceFillAndButtons(int fill, const std::vector<int>& buttons, int width, int height,
                             int margin, int buttonWidth, int buttonHeight) const;
    // Dialog units to pixels, horizontally and vertically.
    int PixelsX(int units) const;
    int PixelsY(int units) const;

    std::string ItemText(int id) const { return WindowText(Item(id)); }
    void SetItemText(int id, const std::string& text) const { SetWindowTextUtf8(Item(id), text); }

private:
    static INT_PTR CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    INT_PTR Dispatch(UINT message, WPARAM wParam, LPARAM lParam);

    HWND window_ = nullptr;
    HFONT font_ = nullptr;
    std::string failure_;
    std::vector<TwoColumnList*> drawnLists_;
};

// One entry of a two-column list: the host's code and its description.
struct ListChoice {
    std::string code, description;
};

// A drop-down list of code and description, drawn in two columns of the given widths in points;
// a column of width 0 is hidden (the code column, in the lists that show only descriptions).
// Each entry's text is its code, so that the list is searched, and read, by code.
class TwoColumnList {
public:
    TwoColumnList() = default;
    // Makes the control in `dialog`; its drawing comes back to Draw through the dialog.
    // Takes over a control the dialog made (Dialog::MakeList).
    void Attach(HWND control, int id, std::vector<int> widthsPixels);
    HWND Handle() const { return window_; }
    int Id() const { return id_; }

    void SetEntries(const std::vector<ListChoice>& entries);
    // The selected entry's code; empty when none is selected.
    std::string Code() const;
    std::optional<std::int16_t> Number() const;
    // Selects the entry whose code is `code`; none when it is empty or not in the list.
    void SelectCode(const std::string& code);
    void SelectNumber(const std::optional<std::int16_t>& number);

    void Measure(MEASUREITEMSTRUCT& item) const;
    void Draw(const DRAWITEMSTRUCT& item) const;

private:
    HWND window_ = nullptr;
    int id_ = 0;
    std::vector<int> widthsPixels_;
    std::vector<ListChoice> entries_;
};

// A report grid over the window system's list view: a header row of captions, rows of cells,
// whole rows selected.
class Grid {
public:
    // Takes over a control the dialog made (Dialog::MakeGrid).
    void Attach(HWND control, const std::vector<std::string>& headings,
                const std::vector<int>& widthsPixels);
    HWND Handle() const { return window_; }

    void Clear();
    int AddRow(const std::vector<std::string>& cells);
    void RemoveRow(int row);
    int RowCount() const;
    std::string Cell(int row, int column) const;
    void SetCell(int row, int column, const std::string& text);
    std::vector<int> SelectedRows() const;
    // The row with the focus, else the first selected one; -1 when there is none.
    int CurrentRow() const;
    void SetCurrentRow(int row);
    // A cell's rectangle in the dialog's client coordinates.
    RECT CellRect(int row, int column) const;

private:
    HWND window_ = nullptr;
    int columns_ = 0;
};

// The date and time parts of a date picker, and the other way.
DateTime DateOfPicker(HWND picker);
void SetPicker(HWND picker, const DateTime& moment);
// The local date and time now, to the second.
DateTime LocalNow();

}  // namespace kitra::win32
