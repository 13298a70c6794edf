// The windowed part of kitra-host, a module of its own that only the commands opening a dialog
// load: the Qt application object (unless the process already has one) and the real message
// boxes. Every other command of the program runs without a window system.
#include <QApplication>
#include <cstdlib>
#include <memory>
#include <string>

#include "backoffice/desktop/QtMessageBoxes.h"

namespace {

std::unique_ptr<QApplication> g_application;  // only when made here
std::unique_ptr<kitra::backoffice::QtMessageBoxes> g_boxes;

bool ScreenAvailable() {
    for (const char* variable : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
        const char* value = std::getenv(variable);
        if (value != nullptr && *value != '\0') return true;
    }
    return false;
}

}  // namespace

// The message boxes of the desktop, with a Qt application object ready; nothing, with `error`
// saying why, when there is no screen to show windows on.
extern "C" __attribute__((visibility("default"))) kitra::host::IMessageBoxService*
KitraHostDesktopOpen(std::string& error) {
    if (QApplication::instance() == nullptr) {
        if (!ScreenAvailable()) {
            error = "não há ecrã disponível (DISPLAY, WAYLAND_DISPLAY e QT_QPA_PLATFORM não estão "
                    "definidos)";
            return nullptr;
        }
        static int argc = 1;
        static char name[] = "kitra-host";
        static char* argv[] = {name, nullptr};
        g_application = std::make_unique<QApplication>(argc, argv);
    }
    if (!g_boxes) g_boxes = std::make_unique<kitra::backoffice::QtMessageBoxes>();
    return g_boxes.get();
}

// Ends what KitraHostDesktopOpen made.
extern "C" __attribute__((visibility("default"))) void KitraHostDesktopClose() {
    g_boxes.reset();
    g_application.reset();
}
