#include "connector/KitraConnector.h"

#include <fmt/format.h>

#include "connector/DialogsModule.h"
#include "connector/Module.h"
#include "connector/Platform.h"
#include "core/Text.h"
#include "import/KitraExecutioner.h"
#include "log/DSOKitraLog.h"
#include "settings/KitraConnectorSetting.h"
#include "settings/SettingsEditor.h"

#ifndef KITRA_VERSION_MAJOR
#error "the build gives the component's version"
#endif

namespace kitra::connector {
namespace {

// The host's business layer for one member call: created by its class, released when the
// member returns.
host::HostBusinessLayerCall Host() { return host::HostBusinessLayerCall(ModulePath()); }

}  // namespace

std::string FormatComponentVersion(int major, int minor, int revision) {
    return fmt::format("{}.{:02}.{:02}", major, minor, revision);
}

KitraConnector::KitraConnector() { ObjectCreated(); }

KitraConnector::~KitraConnector() { ObjectDestroyed(); }

host::HResult KITRA_COM_CALL KitraConnector::QueryInterface(const host::Guid& iid, void** object) {
    if (object == nullptr) return host::kPointer;
    if (iid == host::kIID_IUnknown || iid == host::kIID_IConnector) {
        *object = static_cast<host::IConnector*>(this);
        AddRef();
        return host::kOk;
    }
    *object = nullptr;
    return host::kNoInterface;
}

std::uint32_t KITRA_COM_CALL KitraConnector::AddRef() { return ++references_; }

std::uint32_t KITRA_COM_CALL KitraConnector::Release() {
    const std::uint32_t left = --references_;
    if (left == 0) delete this;
    return left;
}

std::string KITRA_COM_CALL KitraConnector::ConnectorID() { return "Quarn.Mercatill.Connector.Kitra"; }

std::string KITRA_COM_CALL KitraConnector::Description() { return "Integrador KitranaII"; }

std::string KITRA_COM_CALL KitraConnector::Signature(const std::string& text) {
    // Trapped like every other public member: a host without a signature service, or one whose
    // service fails, gets an empty signature rather than an exception across the interface.
    try {
        const auto host = Host();
        const host::ISignatureService* signature = host.Services().signature;
        return signature != nullptr ? signature->Sign(text) : std::string();
    } catch (...) {
        return {};
    }
}

bool KITRA_COM_CALL KitraConnector::HasUISetting() { return true; }

std::string KITRA_COM_CALL KitraConnector::Version() {
    return FormatComponentVersion(KITRA_VERSION_MAJOR, KITRA_VERSION_MINOR, KITRA_VERSION_PATCH);
}

bool KITRA_COM_CALL KitraConnector::Config() {
    try {
        const auto host = Host();
        const host::HostServices& services = host.Services();
        if (!services.application->ExternalUnsignedSeriesActive()) {
            if (services.messageBoxes != nullptr) {
                services.messageBoxes->Show(
                    "Para poder executar este conector tem que ter séries não assinadas externas "
                    "activas",
                    host::MessageStyle::Information, host::MessageButtons::Ok,
                    services.application->Title());
            }
            return false;
        }
        // The stored settings, or new ones when nothing is stored yet; what OK accepts is stored.
        KitraConnectorSetting setting(*services.utility);
        services.settingsStore->Load(setting);
        if (!ConfigDialog(services, setting)) return false;
        services.settingsStore->Save(setting);
        return true;
    } catch (...) {
        return false;
    }
}

bool KITRA_COM_CALL KitraConnector::Init() { return true; }

void KITRA_COM_CALL KitraConnector::Dispose() { eventNotifier_.reset(); }

void KITRA_COM_CALL KitraConnector::Execute() {
    try {
        const auto host = Host();
        KitraExecutioner engine(host.Services());
        engine.SetEventNotifier(eventNotifier_);
        engine.StartImport();
    } catch (...) {
        // The run reports its own outcome; Execute raises nothing to the host.
    }
}

bool KITRA_COM_CALL KitraConnector::ValidateSettings() {
    try {
        const auto host = Host();
        const host::HostServices& services = host.Services();
        KitraConnectorSetting setting(*services.utility);
        if (!services.settingsStore->Load(setting)) return false;
        // The settings dialog's own validation, over the controls as the dialog would fill
        // them, without showing it; every failing rule is told, not only the first.
        const SettingsEditor editor(services);
        std::string failedZone;
        const SettingsForm form = editor.Load(setting, &failedZone);
        std::vector<std::string> failures;
        if (!failedZone.empty()) failures.push_back(SettingsEditor::ZoneMessage(failedZone));
        for (std::string& failure : editor.Failures(form)) failures.push_back(std::move(failure));
        if (services.messageBoxes != nullptr) {
            for (const std::string& failure : failures) {
                services.messageBoxes->Show(failure, host::MessageStyle::Information,
                                            host::MessageButtons::Ok, services.application->Title());
            }
        }
        return failures.empty();
    } catch (...) {
        return false;
    }
}

void KITRA_COM_CALL KitraConnector::EventNotifier(std::shared_ptr<host::IEventNotifier> notifier) {
    eventNotifier_ = std::move(notifier);
}

bool KITRA_COM_CALL KitraConnector::HasUITrace() { return true; }

bool KITRA_COM_CALL KitraConnector::LoadDefaults(const std::string& xml) {
    try {
        const auto host = Host();
        const host::HostServices& services = host.Services();
        KitraConnectorSetting setting(*services.utility);
        setting.FromXML(Trim(xml));
        services.settingsStore->Save(setting);
        return true;
    } catch (...) {
        return false;
    }
}

bool KITRA_COM_CALL KitraConnector::Save() { return false; }

bool KITRA_COM_CALL KitraConnector::Delete() {
    try {
        const auto host = Host();
        const host::HostServices& services = host.Services();
        KitraConnectorSetting setting(*services.utility);
        services.settingsStore->Delete(setting);
        return true;
    } catch (...) {
        return false;
    }
}

void KITRA_COM_CALL KitraConnector::ShowTrace() {
    try {
        const auto host = Host();
        ShowTraceDialog(host.Services());
    } catch (...) {
        // Nothing to tell the host: the dialog could not even be asked for.
    }
}

std::string KITRA_COM_CALL KitraConnector::FunctionalLevel() { return "SQL09"; }

void KITRA_COM_CALL KitraConnector::ResetData() {
    try {
        const auto host = Host();
        DSOKitraLog(host.Services()).ResetLog();
    } catch (...) {
        // Nothing to tell the host: the log table is left as it was.
    }
}

bool KITRA_COM_CALL KitraConnector::HandleImportExport() { return false; }

bool KITRA_COM_CALL KitraConnector::HandleReExport() { return false; }

void KITRA_COM_CALL KitraConnector::ImportData() {}

void KITRA_COM_CALL KitraConnector::ExportData() {}

void KITRA_COM_CALL KitraConnector::ReExport(const Variant&, const Variant&, const Variant&, const Variant&) {}

}  // namespace kitra::connector
