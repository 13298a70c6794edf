#pragma once
// The import log's two dialogs on Windows: the list frmKitraLog (the grid vsfImportLog and the
// buttons cmdDelete and cmdExit, bound to the list's rules, KitraLogViewer) and the contents
// frmKitraLogContents that a double click on a data row opens.
#include <memory>

#include "core/win32/Dialog.h"
#include "host/HostServices.h"
#include "log/KitraLog.h"

namespace kitra {
class KitraLogViewer;
}

namespace kitra::win32 {

class ListViewLogGrid;

class frmKitraLog final : public Dialog {
public:
    explicit frmKitraLog(const host::HostServices& services);
    ~frmKitraLog() override;

    // Shows the list modally over `owner` until cmdExit (or the close box) ends it.
    void Show(HWND owner);
    // True once rows have been deleted.
    bool Changed() const;

private:
    void OnInit() override;
    bool OnCommand(int id, int code, HWND control) override;
    bool OnNotify(const NMHDR& header, LRESULT& result) override;
    void OnSize(int width, int height) override;
    void OnCancel() override { End(IDCANCEL); }

    const host::HostServices& services_;
    Grid vsfImportLog_;
    std::unique_ptr<ListViewLogGrid> grid_;
    std::unique_ptr<KitraLogViewer> viewer_;
};

class frmKitraLogContents final : public Dialog {
public:
    explicit frmKitraLogContents(const host::HostServices& services) : services_(services) {}

    // Fills the dialog from the record and shows it modally over `owner`; cmdOk closes it.
    void ShowLog(const KitraLog& record, HWND owner);

private:
    void OnInit() override;
    bool OnCommand(int id, int code, HWND control) override;
    void OnSize(int width, int height) override;

    const host::HostServices& services_;
    const KitraLog* record_ = nullptr;
    HFONT fixedFont_ = nullptr;
};

}  // namespace kitra::win32
