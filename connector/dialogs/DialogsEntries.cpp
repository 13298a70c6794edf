// The dialogs module's exported entry points: each makes sure a Qt application object exists
// (a host without one of its own gets one for the dialog's lifetime), then shows its dialog
// modally.
#include <QApplication>
#include <cstdlib>
#include <memory>
#include <type_traits>

#include "connector/DialogsModule.h"
#include "connector/Platform.h"
#include "core/Error.h"
#include "log/qt/frmKitraLog.h"
#include "settings/qt/frmSettings.h"

namespace kitra::connector {
namespace {

// The host's own application object, or one made here when the host has none and a screen is
// there to show windows on.
class ApplicationForDialogs {
public:
    bool Ready(std::string& error) {
        if (QApplication::instance() != nullptr) return true;
        if (!ScreenAvailable()) {
            error = "não há ecrã disponível (DISPLAY, WAYLAND_DISPLAY e QT_QPA_PLATFORM não estão "
                    "definidos)";
            return false;
        }
        static int argc = 1;
        static char name[] = "POSConnectorKitra";
        static char* argv[] = {name, nullptr};
        owned_ = std::make_unique<QApplication>(argc, argv);
        return true;
    }

private:
    static bool ScreenAvailable() {
#if defined(_WIN32)
        return true;
#else
        for (const char* variable : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
            const char* value = std::getenv(variable);
            if (value != nullptr && *value != '\0') return true;
        }
        return false;
#endif
    }

    std::unique_ptr<QApplication> owned_;
};

}  // namespace
}  // namespace kitra::connector

using namespace kitra;
using namespace kitra::connector;

extern "C" KITRA_EXPORT bool KitraShowTrace(const host::HostServices& services, std::string& error);
static_assert(std::is_same_v<decltype(&KitraShowTrace), ShowTraceEntry>);
extern "C" KITRA_EXPORT bool KitraConfig(const host::HostServices& services,
                                         KitraConnectorSetting& setting, bool& accepted,
                                         std::string& error);
static_assert(std::is_same_v<decltype(&KitraConfig), ConfigEntry>);

extern "C" KITRA_EXPORT bool KitraShowTrace(const host::HostServices& services, std::string& error) {
    try {
        ApplicationForDialogs application;
        if (!application.Ready(error)) return false;
        frmKitraLog dialog(services);
        dialog.exec();
        return true;
    } catch (const std::exception& e) {
        error = DescriptionOf(e);
        return false;
    }
}

extern "C" KITRA_EXPORT bool KitraConfig(const host::HostServices& services,
                                         KitraConnectorSetting& setting, bool& accepted,
                                         std::string& error) {
    try {
        ApplicationForDialogs application;
        if (!application.Ready(error)) return false;
        frmSettings dialog(services);
        accepted = dialog.Edit(setting);
        return true;
    } catch (const std::exception& e) {
        error = DescriptionOf(e);
        return false;
    }
}
