// A Windows host for the component, as a Windows host creates it: the reference back office
// (over SQLite) provides the host services, and the connector is created through the system's
// component library by its registered class (CoCreateInstance), never by linking it.
//
//   kitra-windows-host DATA identity       the identity constants and the module's life count
//   kitra-windows-host DATA load FILE      LoadDefaults with the file's text; prints what it stored
//   kitra-windows-host DATA validate       ValidateSettings and the messages it showed
//   kitra-windows-host DATA dialogs        Config and ShowTrace, which say there are no windows
//   kitra-windows-host DATA execute        Execute (one import run), its statuses and messages
//   kitra-windows-host DATA reset          ResetData
// Exits 0 when every check of the command held, 1 when one failed, 2 on a usage error.
#include <windows.h>

#include <fcntl.h>
#include <io.h>
#include <objbase.h>

#include <cstdio>
#include <fstream>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>

#include "backoffice/BackOffice.h"
#include "backoffice/RecordingServices.h"
#include "backoffice/SettingsDocument.h"
#include "connector/Module.h"
#include "core/Error.h"
#include "host/HostServices.h"
#include "host/IConnector.h"

namespace {

using namespace kitra;

static_assert(sizeof(GUID) == sizeof(host::Guid));

const GUID& SystemGuid(const host::Guid& guid) { return reinterpret_cast<const GUID&>(guid); }

int failures = 0;

void Expect(bool held, const std::string& what) {
    std::cout << (held ? "ok: " : "FALHOU: ") << what << "\n";
    if (!held) ++failures;
}

std::string YesNo(bool value) { return value ? "Verdadeiro" : "Falso"; }

void PrintBoxes(const backoffice::RecordingMessageBoxes& boxes) {
    for (const auto& box : boxes.shown) std::cout << "mensagem: " << box.text << "\n";
}

// The connector as the system's component library creates it; fails with an Error otherwise.
host::ComPtr<host::IConnector> CreateConnector() {
    host::ComPtr<host::IConnector> connector;
    const HRESULT result = ::CoCreateInstance(SystemGuid(connector::kCLSID_KitraConnector),
                                              nullptr, CLSCTX_INPROC_SERVER,
                                              SystemGuid(host::kIID_IConnector), connector.Out());
    if (FAILED(result)) {
        char text[160];
        std::snprintf(text, sizeof text,
                      "CoCreateInstance da classe registada falhou (0x%08lX); registe o módulo "
                      "com regsvr32",
                      static_cast<unsigned long>(result));
        throw Error(text);
    }
    return connector;
}

// What the module says when asked whether it may be unloaded: S_OK or S_FALSE.
host::HResult CanUnloadNow() {
    HMODULE module = ::GetModuleHandleW(L"POSConnectorKitra.dll");
    if (module == nullptr) return host::kFail;
    void* entry = reinterpret_cast<void*>(::GetProcAddress(module, "DllCanUnloadNow"));
    return entry != nullptr ? reinterpret_cast<host::DllCanUnloadNowFn>(entry)() : host::kFail;
}

int Identity() {
    {
        host::ComPtr<host::IConnector> connector = CreateConnector();
        Expect(connector->ConnectorID() == "Quarn.Mercatill.Connector.Kitra",
               "ConnectorID = " + connector->ConnectorID());
        Expect(connector->Description() == "Integrador KitranaII",
               "Description = " + connector->Description());
        Expect(connector->Version() == "1.00.00", "Version = " + connector->Version());
        Expect(connector->FunctionalLevel() == "SQL09",
               "FunctionalLevel = " + connector->FunctionalLevel());
        Expect(connector->HasUISetting() && connector->HasUITrace(), "HasUISetting e HasUITrace");
        Expect(connector->Init(), "Init devolve Verdadeiro");
        Expect(!connector->Save() && !connector->HandleImportExport() &&
                   !connector->HandleReExport(),
               "Save, HandleImportExport e HandleReExport devolvem Falso");
        host::ComPtr<host::IUnknown> unknown;
        Expect(connector->QueryInterface(host::kIID_IUnknown, unknown.Out()) == host::kOk &&
                   unknown.Get() == static_cast<host::IUnknown*>(connector.Get()),
               "QueryInterface(IUnknown) devolve o mesmo objecto");
        Expect(CanUnloadNow() == host::kFalse, "DllCanUnloadNow = S_FALSE com o objecto vivo");
    }
    Expect(CanUnloadNow() == host::kOk, "DllCanUnloadNow = S_OK sem objectos vivos");
    return failures == 0 ? 0 : 1;
}

int Load(backoffice::BackOffice& office, const std::string& file) {
    std::ifstream in(file, std::ios::binary);
    if (!in) throw Error("Não foi possível ler '" + file + "'");
    std::ostringstream text;
    text << in.rdbuf();
    Expect(CreateConnector()->LoadDefaults(text.str()), "LoadDefaults devolve Verdadeiro");
    const auto stored =
        office.settingsStore.StoredText(backoffice::kSettingsKey1, backoffice::kSettingsKey2);
    Expect(stored.has_value(), "as configurações ficaram guardadas");
    if (stored) std::cout << "guardado: " << *stored << "\n";
    return failures == 0 ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    // The output is compared byte for byte with the Linux run's: no CR before each LF.
    ::_setmode(::_fileno(stdout), _O_BINARY);
    if (argc < 3) {
        std::cerr << "uso: kitra-windows-host PASTA identity|load FICHEIRO|validate|dialogs|"
                     "execute|reset\n";
        return 2;
    }
    const std::string command = argv[2];
    if (FAILED(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))) {
        std::cerr << "kitra-windows-host: CoInitializeEx falhou\n";
        return 1;
    }
    int status = 0;
    try {
        backoffice::BackOffice office(argv[1]);
        // The settings' history says which command stored them, named as kitra-host names its
        // own, so that the two hosts' back offices can be compared row by row.
        office.settingsStore.SetOrigin(command == "load" ? "settings load" : command);
        auto notifier = std::make_shared<backoffice::RecordingEventNotifier>();
        backoffice::RecordingMessageBoxes boxes;
        const host::HostServices services = office.Services(notifier.get(), &boxes);
        host::InstallHostServices(&services);
        if (command == "identity") {
            status = Identity();
        } else if (command == "load" && argc == 4) {
            status = Load(office, argv[3]);
        } else if (command == "validate") {
            std::cout << "ValidateSettings = " << YesNo(CreateConnector()->ValidateSettings())
                      << "\n";
            PrintBoxes(boxes);
        } else if (command == "dialogs") {
            host::ComPtr<host::IConnector> connector = CreateConnector();
            Expect(!connector->Config(), "Config devolve Falso");
            connector->ShowTrace();
            PrintBoxes(boxes);
            Expect(boxes.shown.size() == 2, "Config e ShowTrace dizem que não há janelas");
            status = failures == 0 ? 0 : 1;
        } else if (command == "execute") {
            host::ComPtr<host::IConnector> connector = CreateConnector();
            connector->EventNotifier(notifier);
            connector->Execute();
            connector->Dispose();
            for (const std::string& text : notifier->statuses) {
                std::cout << "estado: " << text << "\n";
            }
            PrintBoxes(boxes);
        } else if (command == "reset") {
            CreateConnector()->ResetData();
        } else {
            std::cerr << "kitra-windows-host: comando desconhecido: " << command << "\n";
            status = 2;
        }
        host::InstallHostServices(nullptr);
    } catch (const Error& error) {
        std::cerr << "kitra-windows-host: " << error.Description() << "\n";
        status = 1;
    }
    ::CoUninitialize();
    return status;
}
