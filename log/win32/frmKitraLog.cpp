#include "log/win32/frmKitraLog.h"

#include "core/ScreenUnits.h"
#include "log/KitraLogContents.h"
#include "log/KitraLogViewer.h"
#include "log/win32/ControlIds.h"

namespace kitra::win32 {

// The list's grid over the dialog's report grid; the grid's header is its fixed header row.
class ListViewLogGrid final : public IKitraLogGrid {
public:
    explicit ListViewLogGrid(Grid& grid) : grid_(grid) {}

    void ClearRows() override { grid_.Clear(); }
    void AddRow(const std::string& restaurantId, const std::string& importDate) override {
        grid_.AddRow({restaurantId, importDate, ""});
    }
    int RowCount() const override { return grid_.RowCount(); }
    std::string Cell(int row, int column) const override { return grid_.Cell(row, column); }
    std::vector<int> SelectedRows() const override { return grid_.SelectedRows(); }
    void RemoveRow(int row) override { grid_.RemoveRow(row); }

private:
    Grid& grid_;
};

namespace {

constexpr const char* kDeleteCaption = "Apagar";
constexpr const char* kExitCaption = "Sair";
// The buttons' size and the margins around the grid and the text box, in dialog units.
constexpr int kMargin = 7, kButtonWidth = 50, kButtonHeight = 14;

}  // namespace

frmKitraLog::frmKitraLog(const host::HostServices& services)
    : services_(services),
      grid_(std::make_unique<ListViewLogGrid>(vsfImportLog_)),
      viewer_(std::make_unique<KitraLogViewer>(services, *grid_)) {}

frmKitraLog::~frmKitraLog() = default;

bool frmKitraLog::Changed() const { return viewer_->Changed(); }

void frmKitraLog::Show(HWND owner) {
    resizable_ = true;
    ShowModal(owner, viewer_->Title(), 340, 200);
}

void frmKitraLog::OnInit() {
    // Three columns of 3000, 3700 and 285 twips: restaurant, import date, a narrow margin.
    HDC screen = ::GetDC(Handle());
    const int dpi = ::GetDeviceCaps(screen, LOGPIXELSX);
    ::ReleaseDC(Handle(), screen);
    std::vector<int> widths;
    for (int twips : KitraLogViewer::kColumnWidthsTwips) widths.push_back(TwipsToPixels(twips, dpi));
    MakeGrid(vsfImportLog_, IDC_vsfImportLog,
             std::vector<std::string>(KitraLogViewer::kHeadings.begin(), KitraLogViewer::kHeadings.end()),
             widths, true, kMargin, kMargin, 326, 160);
    Button(IDC_cmdDelete, kDeleteCaption, 229, 179, kButtonWidth, kButtonHeight);
    Button(IDC_cmdExit, kExitCaption, 283, 179, kButtonWidth, kButtonHeight);
    viewer_->Load();
}

bool frmKitraLog::OnCommand(int id, int code, HWND) {
    if (code != BN_CLICKED) return false;
    if (id == IDC_cmdDelete) {
        viewer_->DeleteSelected();
        return true;
    }
    if (id == IDC_cmdExit) {
        End(IDOK);
        return true;
    }
    return false;
}

bool frmKitraLog::OnNotify(const NMHDR& header, LRESULT& result) {
    if (header.hwndFrom != vsfImportLog_.Handle() || header.code != NM_DBLCLK) return false;
    // A double click on a data row opens its log; on the header or below the rows, nothing.
    const auto& activated = reinterpret_cast<const NMITEMACTIVATE&>(header);
    if (const std::optional<KitraLog> record = viewer_->OpenRow(activated.iItem)) {
        frmKitraLogContents contents(services_);
        contents.ShowLog(*record, Handle());
    }
    result = 0;
    return true;
}

void frmKitraLog::OnSize(int width, int height) {
    // The grid fills the dialog; the buttons stay under it on the right whatever the size.
    PlaceFillAndButtons(IDC_vsfImportLog, {IDC_cmdExit, IDC_cmdDelete}, width, height, kMargin,
                        kButtonWidth, kButtonHeight);
}

void frmKitraLogContents::ShowLog(const KitraLog& record, HWND owner) {
    record_ = &record;
    resizable_ = true;
    ShowModal(owner, LogContentsCaption(services_, record), 400, 260);
    record_ = nullptr;
    if (fixedFont_ != nullptr) ::DeleteObject(fixedFont_);
    fixedFont_ = nullptr;
}

void frmKitraLogContents::OnInit() {
    Add(L"EDIT", IDC_txtLog, "",
        WS_TABSTOP | WS_BORDER | WS_VSCROLL | WS_HSCROLL | ES_MULTILINE | ES_READONLY |
            ES_AUTOVSCROLL | ES_AUTOHSCROLL,
        kMargin, kMargin, 386, 220, WS_EX_CLIENTEDGE);
    Button(IDC_LogContentsOk, services_.application->Text(kLogContentsOkText), 343, 239,
           kButtonWidth, kButtonHeight, true);
    // The log's columns line up only in a fixed-width font.
    LOGFONTW font{};
    font.lfHeight = -PixelsY(8);
    font.lfPitchAndFamily = FIXED_PITCH | FF_MODERN;
    lstrcpynW(font.lfFaceName, L"Courier New", LF_FACESIZE);
    fixedFont_ = ::CreateFontIndirectW(&font);
    ::SendMessageW(Item(IDC_txtLog), WM_SETFONT, reinterpret_cast<WPARAM>(fixedFont_), FALSE);
    // The rules give every line ended by a carriage return and a line feed, as the box wants.
    if (record_ != nullptr) SetItemText(IDC_txtLog, LogContentsText(record_->Contents));
    ::SetFocus(Item(IDC_LogContentsOk));
}

bool frmKitraLogContents::OnCommand(int id, int code, HWND) {
    if (id == IDC_LogContentsOk && code == BN_CLICKED) {
        End(IDOK);
        return true;
    }
    return false;
}

void frmKitraLogContents::OnSize(int width, int height) {
    PlaceFillAndButtons(IDC_txtLog, {IDC_LogContentsOk}, width, height, kMargin, kButtonWidth,
                        kButtonHeight);
}

}  // namespace kitra::win32
