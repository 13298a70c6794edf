#pragma once
// A user at the screen, for tests of the Windows dialogs: a second thread that waits for a
// dialog of the test's thread to open, finds its controls by identifier, types into them
// character by character, picks in lists, double-clicks grid cells and clicks buttons, all
// through the window messages the window system itself sends. The test's own thread shows the
// dialog modally meanwhile, as a host does.
#include <windows.h>

#include <commctrl.h>

#include <atomic>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "core/DateTime.h"

namespace kitra::testing {

class UserAtTheScreen {
public:
    // Starts `script` on its own thread at once; the destructor waits for it to end. When the
    // script fails (a dialog that never opens, say), every dialog still open is closed so that
    // the test's thread gets its control back, and Failure() says why.
    explicit UserAtTheScreen(std::function<void(UserAtTheScreen&)> script);
    ~UserAtTheScreen();
    UserAtTheScreen(const UserAtTheScreen&) = delete;
    UserAtTheScreen& operator=(const UserAtTheScreen&) = delete;

    // Waits for the script to end; then its failure, empty when it ran to its end.
    std::string Failure();

    // The enabled (topmost modal) dialog of the test's thread with this caption; waits up to 20 s.
    HWND WaitForDialog(const std::string& caption);
    // Waits until the window is gone.
    void WaitUntilClosed(HWND window);
    // Waits until the dialog takes input again (after the modal dialog over it has ended).
    void WaitUntilEnabled(HWND dialog);
    // Waits until the dialog has (or no longer has) a control with this identifier.
    HWND WaitForControl(HWND dialog, int id);
    void WaitUntilNoControl(HWND dialog, int id);
    bool HasDialog(const std::string& caption) const;

    // A button clicked: the dialog has done everything the click asks once this returns. When
    // the click opens another modal window, use ClickToOpen, which does not wait.
    void Click(HWND dialog, int id);
    void ClickToOpen(HWND dialog, int id);
    // Replaces a text box's text by typing `text` (UTF-8), one character at a time.
    void Retype(HWND dialog, int id, const std::string& text);
    // Types into the window that has the keyboard now, one character at a time.
    void TypeInto(HWND control, const std::string& text);
    // A key pressed in a control: Enter, Escape, ... (queued, as keys are, and then waited for).
    void PressKey(HWND control, WPARAM key);
    // Picks the entry whose text (a list's code) is `text` in a drop-down list, as the list
    // reports a pick to its dialog; false when the list has no such entry.
    bool Pick(HWND dialog, int id, const std::string& text);
    // Checks or clears a check box by clicking it when needed.
    void SetChecked(HWND dialog, int id, bool checked);
    void SetPicker(HWND dialog, int id, const DateTime& moment);

    // A grid (list view): its rows, a cell's text, selecting rows, and a double click on a cell
    // (ToOpen: when it opens another modal window).
    int RowCount(HWND dialog, int id) const;
    std::string Cell(HWND dialog, int id, int row, int column) const;
    void SelectRows(HWND dialog, int id, const std::vector<int>& rows);
    void DoubleClickCell(HWND dialog, int id, int row, int column);
    void DoubleClickCellToOpen(HWND dialog, int id, int row, int column);

    // What a control shows and holds.
    std::string Text(HWND dialog, int id) const;
    std::string Caption(HWND window) const;
    // A drop-down list's selected entry's text (its code); empty when none.
    std::string Selected(HWND dialog, int id) const;
    int EntryCount(HWND dialog, int id) const;
    bool Checked(HWND dialog, int id) const;
    DateTime Picker(HWND dialog, int id) const;
    // The control that has the keyboard in the test's thread.
    HWND Focus() const;
    // Waits until the test's thread has handled every message queued to it so far.
    void Settle(HWND dialog);

private:
    void CloseEverything();
    static LRESULT CALLBACK MarkerProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

    DWORD testThread_;
    // A window of the test's thread that counts the markers Settle posts to it.
    HWND marker_ = nullptr;
    std::atomic<int> settled_{0};
    std::string failure_;
    std::thread thread_;
};

}  // namespace kitra::testing
