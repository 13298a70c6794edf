// kitra-dialog-screenshots.exe: pictures of the connector's Windows dialogs over a back office,
// for the project's documentation; the Windows twin of the Qt views' kitra-dialog-screenshots.
//   kitra-dialog-screenshots.exe --data FOLDER --out FOLDER
// writes win32-log-list.png (the import log list), win32-log-contents.png (the newest log's
// contents), win32-settings.png (the settings dialog on the stored settings) and
// win32-restaurant.png (the editor on the first restaurant).
//
// Each dialog is shown modally on this thread, as the host shows it; a second thread waits until
// it is on the screen, copies it, frame included, into a bitmap, saves
// that as PNG through GDI+ and closes the dialog. tools/win32-screenshots runs it under Wine on a
// virtual X display.
#include <windows.h>

// The build leaves OLE out of <windows.h>; GDI+ needs its property types.
#include <objidl.h>
#include <gdiplus.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <iostream>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "backoffice/BackOffice.h"
#include "backoffice/RecordingServices.h"
#include "core/Text.h"
#include "log/DSOKitraLog.h"
#include "log/KitraLogContents.h"
#include "log/KitraLogViewer.h"
#include "log/win32/frmKitraLog.h"
#include "settings/DialogTexts.h"
#include "settings/win32/frmAddRestaurant.h"
#include "settings/win32/frmSettings.h"

namespace {

using namespace std::chrono_literals;

struct Search {
    std::wstring caption;
    HWND found = nullptr;
};

std::wstring WindowText(HWND window) {
    std::wstring text(static_cast<std::size_t>(::GetWindowTextLengthW(window)) + 1, L'\0');
    text.resize(static_cast<std::size_t>(::GetWindowTextW(window, text.data(), static_cast<int>(text.size()))));
    return text;
}

BOOL CALLBACK FindDialog(HWND window, LPARAM data) {
    auto& search = *reinterpret_cast<Search*>(data);
    wchar_t className[16] = {};
    ::GetClassNameW(window, className, 16);
    if (std::wstring(className) != L"#32770" || !::IsWindowVisible(window)) return TRUE;
    if (WindowText(window) != search.caption) return TRUE;
    search.found = window;
    return FALSE;
}

std::optional<CLSID> PngEncoder() {
    UINT count = 0, size = 0;
    if (Gdiplus::GetImageEncodersSize(&count, &size) != Gdiplus::Ok || size == 0) return std::nullopt;
    std::vector<unsigned char> buffer(size);
    auto* encoders = reinterpret_cast<Gdiplus::ImageCodecInfo*>(buffer.data());
    if (Gdiplus::GetImageEncoders(count, size, encoders) != Gdiplus::Ok) return std::nullopt;
    for (UINT i = 0; i < count; ++i) {
        if (std::wstring(encoders[i].MimeType) == L"image/png") return encoders[i].Clsid;
    }
    return std::nullopt;
}

// The dialog as it paints itself, frame included, saved as PNG.
bool SavePicture(HWND dialog, const std::filesystem::path& file) {
    RECT bounds{};
    ::GetWindowRect(dialog, &bounds);
    const int width = bounds.right - bounds.left, height = bounds.bottom - bounds.top;
    HDC screen = ::GetDC(nullptr);
    HDC memory = ::CreateCompatibleDC(screen);
    HBITMAP bitmap = ::CreateCompatibleBitmap(screen, width, height);
    ::ReleaseDC(nullptr, screen);
    HGDIOBJ previous = ::SelectObject(memory, bitmap);
    // What the window shows, frame and child controls together: a copy from its own window DC.
    // (WM_PRINT, which PrintWindow sends, leaves the child controls out under Wine.)
    HDC window = ::GetWindowDC(dialog);
    const bool printed = ::BitBlt(memory, 0, 0, width, height, window, 0, 0, SRCCOPY) != FALSE;
    ::ReleaseDC(dialog, window);
    ::SelectObject(memory, previous);
    ::DeleteDC(memory);
    bool saved = false;
    if (printed) {
        const std::optional<CLSID> png = PngEncoder();
        Gdiplus::Bitmap picture(bitmap, nullptr);
        saved = png && picture.Save(file.wstring().c_str(), &*png, nullptr) == Gdiplus::Ok;
    }
    ::DeleteObject(bitmap);
    return saved;
}

// On a second thread: waits for the dialog of this caption on the shower's thread, pictures it
// into the file and closes it. Closing also when the picture fails keeps the program from
// waiting on a dialog nobody will close.
class Photographer {
public:
    Photographer(const std::string& caption, std::filesystem::path file)
        : shower_(::GetCurrentThreadId()), file_(std::move(file)) {
        thread_ = std::thread([this, caption = kitra::WideFromUtf8(caption)] { Work(caption); });
    }
    ~Photographer() { Finish(); }

    // True once the picture is saved.
    bool Finish() {
        if (thread_.joinable()) thread_.join();
        return saved_;
    }

private:
    void Work(const std::wstring& caption) {
        Search search{caption};
        for (int i = 0; i < 2000 && search.found == nullptr; ++i) {
            ::EnumThreadWindows(shower_, &FindDialog, reinterpret_cast<LPARAM>(&search));
            if (search.found == nullptr) std::this_thread::sleep_for(10ms);
        }
        if (search.found == nullptr) {
            std::cerr << "kitra-dialog-screenshots: a janela \"" << kitra::Utf8FromWide(caption)
                      << "\" não abriu\n";
            return;
        }
        // Whatever the dialog queued while opening (its first paint among them) is done before
        // this message comes back.
        // Active, as a dialog the user just opened: its caption in the active colours.
        // The shower's thread is asked to activate it with its own input state.
        ::AttachThreadInput(::GetCurrentThreadId(), shower_, TRUE);
        ::SetForegroundWindow(search.found);
        ::SetActiveWindow(search.found);
        ::AttachThreadInput(::GetCurrentThreadId(), shower_, FALSE);
        DWORD_PTR ignored = 0;
        ::SendMessageTimeoutW(search.found, WM_NULL, 0, 0, SMTO_NORMAL, 5000, &ignored);
        std::this_thread::sleep_for(300ms);
        saved_ = SavePicture(search.found, file_);
        if (saved_) std::cout << file_.string() << "\n";
        else std::cerr << "kitra-dialog-screenshots: não foi possível gravar " << file_.string() << "\n";
        ::PostMessageW(search.found, WM_COMMAND, MAKEWPARAM(IDCANCEL, BN_CLICKED), 0);
    }

    DWORD shower_;
    std::filesystem::path file_;
    std::atomic<bool> saved_{false};
    std::thread thread_;
};

}  // namespace

int main(int argc, char** argv) {
    std::filesystem::path data, out;
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string option = argv[i];
        if (option == "--data") data = kitra::WideFromUtf8(argv[i + 1]);
        else if (option == "--out") out = kitra::WideFromUtf8(argv[i + 1]);
    }
    if (data.empty() || out.empty()) {
        std::cerr << "Uso: kitra-dialog-screenshots --data PASTA --out PASTA\n";
        return 2;
    }
    Gdiplus::GdiplusStartupInput startup;
    ULONG_PTR token = 0;
    if (Gdiplus::GdiplusStartup(&token, &startup, nullptr) != Gdiplus::Ok) {
        std::cerr << "kitra-dialog-screenshots: o GDI+ não arrancou\n";
        return 1;
    }
    int status = 0;
    try {
        kitra::backoffice::BackOffice office(data);
        kitra::backoffice::RecordingMessageBoxes boxes;
        const kitra::host::HostServices services = office.Services(nullptr, &boxes);

        kitra::DSOKitraLog log(services);
        kitra::ado::Recordset newest = log.GetKitraLogRS();
        if (newest.Eof()) throw std::runtime_error("o log de importações está vazio");
        const auto record = log.GetLogInfo(newest["RestaurantID"].ToText(), newest["ImportDate"].ToDate(), true);
        if (!record) throw std::runtime_error("não foi possível ler o log mais recente");
        {
            kitra::win32::frmKitraLog list(services);
            Photographer photographer(services.application->Text(kitra::kLogListTitleText),
                                      out / "win32-log-list.png");
            list.Show(nullptr);
            if (!photographer.Finish()) status = 1;
        }
        {
            kitra::win32::frmKitraLogContents contents(services);
            Photographer photographer(kitra::LogContentsCaption(services, *record),
                                      out / "win32-log-contents.png");
            contents.ShowLog(*record, nullptr);
            if (!photographer.Finish()) status = 1;
        }
        kitra::KitraConnectorSetting setting(*services.utility);
        if (!services.settingsStore->Load(setting) || setting.Restaurants.Count() == 0) {
            throw std::runtime_error("não há configurações com restaurantes");
        }
        {
            kitra::win32::frmSettings settings(services);
            Photographer photographer(services.application->Text(kitra::dialog_texts::kSettingsTitle),
                                      out / "win32-settings.png");
            kitra::KitraConnectorSetting shown = setting;
            settings.Edit(shown, nullptr);
            if (!photographer.Finish()) status = 1;
        }
        {
            kitra::win32::frmAddRestaurant restaurant(services);
            Photographer photographer(services.application->Text(kitra::dialog_texts::kRestaurantTitle),
                                      out / "win32-restaurant.png");
            kitra::Restaurant first = setting.Restaurants.Item(1);
            restaurant.Edit(first, nullptr);
            if (!photographer.Finish()) status = 1;
        }
    } catch (const std::exception& e) {
        std::cerr << "kitra-dialog-screenshots: " << e.what() << "\n";
        status = 1;
    }
    Gdiplus::GdiplusShutdown(token);
    return status;
}
