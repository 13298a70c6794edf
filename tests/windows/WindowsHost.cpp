// A Windows host for the component, as a Windows host creates and calls it: the reference
// back office (over SQLite) is this program's own, attached to the business layer's class
// (KitraBackOffice.BusinessLayer, registered by regsvr32) as kitra-host attaches its own; the
// connector is created by its registered class (CoCreateInstance) and called through the
// automation interface IConnector of its type library, early-bound, and once late-bound
// through IDispatch; the event notifier it is given is an automation object called by name.
//
//   kitra-windows-host DATA identity       the identity members, early- and late-bound, and the
//                                          module's life count
//   kitra-windows-host DATA load FILE      LoadDefaults with the file's text; prints what it stored
//   kitra-windows-host DATA validate       ValidateSettings and the messages it showed
//   kitra-windows-host DATA dialogs        Config and ShowTrace, their windows driven by a user at
//                                          the screen (a second thread): Cancel, then OK, then Sair
//   kitra-windows-host DATA execute        Execute (one import run), its statuses and messages
//   kitra-windows-host DATA reset          ResetData
// Exits 0 when every check of the command held, 1 when one failed, 2 on a usage error.
#include <windows.h>

#include <fcntl.h>
#include <io.h>
#include <objbase.h>
#include <oleauto.h>

#include <cstdio>
#include <fstream>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "POSConnectorKitra_h.h"
#include "backoffice/BackOffice.h"
#include "backoffice/RecordingServices.h"
#include "backoffice/SettingsDocument.h"
#include "connector/automation/Bstr.h"
#include "connector/Module.h"
#include "core/Error.h"
#include "core/Text.h"
#include "host/HostBusinessLayer.h"
#include "log/DSOKitraLog.h"
#include "log/KitraLogContents.h"
#include "log/KitraLogViewer.h"
#include "log/win32/ControlIds.h"
#include "settings/DialogTexts.h"
#include "settings/win32/ControlIds.h"
#include "tests/windows/UserAtTheScreen.h"

namespace {

using namespace kitra;

int failures = 0;

void Expect(bool held, const std::string& what) {
    std::cout << (held ? "ok: " : "FALHOU: ") << what << "\n";
    if (!held) ++failures;
}

std::string YesNo(VARIANT_BOOL value) { return value != VARIANT_FALSE ? "Verdadeiro" : "Falso"; }

void Check(HRESULT result, const std::string& what) {
    if (FAILED(result)) throw Error(what + " falhou (" + host::HResultText(result) + ")");
}

// A BSTR that frees itself.
class Text {
public:
    Text() = default;
    explicit Text(const std::string& utf8) : value_(connector::automation::BstrFromUtf8(utf8)) {}
    ~Text() { ::SysFreeString(value_); }
    Text(const Text&) = delete;
    Text& operator=(const Text&) = delete;
    BSTR* Out() {
        ::SysFreeString(value_);
        value_ = nullptr;
        return &value_;
    }
    BSTR Get() const { return value_; }
    std::string Utf8() const {
        return connector::automation::Utf8FromBstr(value_);
    }

private:
    BSTR value_ = nullptr;
};

void PrintBoxes(const backoffice::RecordingMessageBoxes& boxes) {
    for (const auto& box : boxes.shown) std::cout << "mensagem: " << box.text << "\n";
}

// The host's event notifier as an automation object: NotifyProgress and NotifyStatus are
// found by name and called through Invoke, as the connector calls any host's notifier.
class DispatchNotifier final : public IDispatch {
public:
    enum : DISPID { kProgress = 1, kStatus = 2 };

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        if (object == nullptr) return E_POINTER;
        if (IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IDispatch)) {
            *object = static_cast<IDispatch*>(this);
            AddRef();
            return S_OK;
        }
        *object = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }  // lives on the stack
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
        *count = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID,
                                            DISPID* ids) override {
        HRESULT result = S_OK;
        for (UINT i = 0; i < count; ++i) {
            const std::string name = Utf8FromWide(names[i]);
            ids[i] = DISPID_UNKNOWN;
            if (EqualsNoCase(name, "NotifyProgress")) ids[i] = kProgress;
            if (EqualsNoCase(name, "NotifyStatus")) ids[i] = kStatus;
            if (ids[i] == DISPID_UNKNOWN) result = DISP_E_UNKNOWNNAME;
        }
        return result;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID, LCID, WORD flags, DISPPARAMS* parameters,
                                     VARIANT*, EXCEPINFO*, UINT*) override {
        if ((flags & DISPATCH_METHOD) == 0) return DISP_E_MEMBERNOTFOUND;
        const auto text = [&](UINT at) {
            const VARIANT& v = parameters->rgvarg[at];
            return v.vt == VT_BSTR ? connector::automation::Utf8FromBstr(v.bstrVal)
                                   : std::string("<não é texto>");
        };
        if (member == kStatus && parameters->cArgs == 1) {
            statuses.push_back(text(0));
            return S_OK;
        }
        if (member == kProgress && parameters->cArgs == 3) {
            // Last argument first: text, total, position.
            if (parameters->rgvarg[1].vt != VT_I4 || parameters->rgvarg[2].vt != VT_I4) {
                return DISP_E_TYPEMISMATCH;
            }
            ++progressCalls;
            return S_OK;
        }
        return DISP_E_BADPARAMCOUNT;
    }

    ULONG references = 1;
    std::vector<std::string> statuses;
    long progressCalls = 0;
};

// The connector as the system's component library creates it, by its registered class.
IConnector* CreateConnector() {
    CLSID clsid{};
    Check(::CLSIDFromProgID(L"POSConnectorKitra.KitraConnector", &clsid),
          "CLSIDFromProgID(POSConnectorKitra.KitraConnector): registe o módulo com regsvr32;");
    IConnector* connector = nullptr;
    Check(::CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IConnector,
                             reinterpret_cast<void**>(&connector)),
          "CoCreateInstance da classe registada");
    return connector;
}

// Holds one reference to the connector.
struct Connector {
    Connector() : p(CreateConnector()) {}
    ~Connector() { p->Release(); }
    Connector(const Connector&) = delete;
    Connector& operator=(const Connector&) = delete;
    IConnector* operator->() const { return p; }
    IConnector* p;
};

// What the module says when asked whether it may be unloaded: S_OK or S_FALSE.
HRESULT CanUnloadNow() {
    HMODULE module = ::GetModuleHandleW(L"POSConnectorKitra.dll");
    if (module == nullptr) return E_FAIL;
    using CanUnloadNowFn = HRESULT(STDAPICALLTYPE*)();
    void* entry = reinterpret_cast<void*>(::GetProcAddress(module, "DllCanUnloadNow"));
    return entry != nullptr ? reinterpret_cast<CanUnloadNowFn>(entry)() : E_FAIL;
}

// A property read late-bound: the name looked up, then Invoke, as a script engine does.
std::string LateBoundText(IDispatch* object, const wchar_t* name) {
    DISPID id = DISPID_UNKNOWN;
    LPOLESTR names[] = {const_cast<LPOLESTR>(name)};
    Check(object->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id), "GetIDsOfNames");
    DISPPARAMS none{nullptr, nullptr, 0, 0};
    VARIANT result;
    ::VariantInit(&result);
    Check(object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &none, &result,
                         nullptr, nullptr),
          "Invoke");
    std::string text = result.vt == VT_BSTR
                           ? connector::automation::Utf8FromBstr(result.bstrVal)
                           : "<não é texto>";
    ::VariantClear(&result);
    return text;
}

int Identity() {
    {
        Connector connector;
        Text text;
        VARIANT_BOOL answer = VARIANT_FALSE;
        Check(connector->get_ConnectorID(text.Out()), "ConnectorID");
        Expect(text.Utf8() == "Quarn.Mercatill.Connector.Kitra", "ConnectorID = " + text.Utf8());
        Check(connector->get_Description(text.Out()), "Description");
        Expect(text.Utf8() == "Integrador KitranaII", "Description = " + text.Utf8());
        Check(connector->get_Version(text.Out()), "Version");
        Expect(text.Utf8() == "1.00.00", "Version = " + text.Utf8());
        Check(connector->get_FunctionalLevel(text.Out()), "FunctionalLevel");
        Expect(text.Utf8() == "SQL09", "FunctionalLevel = " + text.Utf8());
        VARIANT_BOOL trace = VARIANT_FALSE;
        Check(connector->get_HasUISetting(&answer), "HasUISetting");
        Check(connector->get_HasUITrace(&trace), "HasUITrace");
        Expect(answer == VARIANT_TRUE && trace == VARIANT_TRUE, "HasUISetting e HasUITrace");
        Check(connector->Init(&answer), "Init");
        Expect(answer == VARIANT_TRUE, "Init devolve Verdadeiro");
        VARIANT_BOOL save = VARIANT_TRUE, importExport = VARIANT_TRUE, reExport = VARIANT_TRUE;
        Check(connector->Save(&save), "Save");
        Check(connector->HandleImportExport(&importExport), "HandleImportExport");
        Check(connector->HandleReExport(&reExport), "HandleReExport");
        Expect(save == VARIANT_FALSE && importExport == VARIANT_FALSE && reExport == VARIANT_FALSE,
               "Save, HandleImportExport e HandleReExport devolvem Falso");
        VARIANT a, b, c, d;
        ::VariantInit(&a);
        ::VariantInit(&b);
        ::VariantInit(&d);
        c.vt = VT_I4;
        c.lVal = 7;
        Expect(SUCCEEDED(connector->ImportData()) && SUCCEEDED(connector->ExportData()) &&
                   SUCCEEDED(connector->ReExport(a, b, c, d)),
               "ImportData, ExportData e ReExport nada fazem");
        IUnknown* unknown = nullptr;
        Expect(connector->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&unknown)) == S_OK &&
                   unknown == static_cast<IUnknown*>(connector.p),
               "QueryInterface(IUnknown) devolve o mesmo objecto");
        if (unknown != nullptr) unknown->Release();
        IDispatch* dispatch = nullptr;
        Check(connector->QueryInterface(IID_IDispatch, reinterpret_cast<void**>(&dispatch)),
              "QueryInterface(IDispatch)");
        Expect(LateBoundText(dispatch, L"ConnectorID") == "Quarn.Mercatill.Connector.Kitra",
               "ConnectorID por nome (IDispatch)");
        UINT count = 0;
        ITypeInfo* info = nullptr;
        Expect(dispatch->GetTypeInfoCount(&count) == S_OK && count == 1 &&
                   dispatch->GetTypeInfo(0, 0, &info) == S_OK && info != nullptr,
               "o objecto dá a descrição da sua interface");
        if (info != nullptr) info->Release();
        dispatch->Release();
        Expect(CanUnloadNow() == S_FALSE, "DllCanUnloadNow = S_FALSE com o objecto vivo");
    }
    Expect(CanUnloadNow() == S_OK, "DllCanUnloadNow = S_OK sem objectos vivos");
    return failures == 0 ? 0 : 1;
}

// Config and ShowTrace as a host's menu calls them: the dialog opens modally on this thread
// while the user at the screen works it.
int Dialogs(backoffice::BackOffice& office, const host::HostServices& services,
            backoffice::RecordingMessageBoxes& boxes) {
    using testing::UserAtTheScreen;
    const auto stored = [&] {
        return office.settingsStore.StoredText(backoffice::kSettingsKey1, backoffice::kSettingsKey2)
            .value_or("");
    };
    const std::string settingsTitle = services.application->Text(dialog_texts::kSettingsTitle);
    const std::string before = stored();
    const std::size_t versions =
        office.settingsStore.History(backoffice::kSettingsKey1, backoffice::kSettingsKey2).size();
    Connector connector;

    // Cancel: False, and nothing stored.
    std::string firstRestaurant;
    {
        UserAtTheScreen user([&](UserAtTheScreen& u) {
            HWND dialog = u.WaitForDialog(settingsTitle);
            firstRestaurant = u.Cell(dialog, win32::IDC_vsfRestaurant, 0, 0);
            u.Click(dialog, win32::IDC_cmdCancel);
        });
        VARIANT_BOOL accepted = VARIANT_TRUE;
        Check(connector->Config(&accepted), "Config");
        const std::string failure = user.Failure();
        Expect(failure.empty(), "o utilizador trabalhou a janela de configuração" +
                                    (failure.empty() ? std::string() : ": " + failure));
        Expect(accepted == VARIANT_FALSE, "Config cancelado devolve Falso");
    }
    Expect(!firstRestaurant.empty(), "a janela mostra os restaurantes guardados (" + firstRestaurant + ")");
    Expect(stored() == before, "Cancelar não guarda nada");

    // OK after a look at the first restaurant in its editor: True, and the settings stored again.
    std::string editedName;
    {
        UserAtTheScreen user([&](UserAtTheScreen& u) {
            HWND dialog = u.WaitForDialog(settingsTitle);
            u.SelectRows(dialog, win32::IDC_vsfRestaurant, {0});
            u.ClickToOpen(dialog, win32::IDC_btnEditRestaurant);
            HWND editor = u.WaitForDialog(services.application->Text(dialog_texts::kRestaurantTitle));
            editedName = u.Text(editor, win32::IDC_txtName);
            u.Click(editor, win32::IDC_cmdCancel);
            u.WaitUntilClosed(editor);
            u.Click(dialog, win32::IDC_cmdOk);
        });
        VARIANT_BOOL accepted = VARIANT_FALSE;
        Check(connector->Config(&accepted), "Config");
        const std::string failure = user.Failure();
        Expect(failure.empty(), "o utilizador trabalhou a janela de configuração" +
                                    (failure.empty() ? std::string() : ": " + failure));
        Expect(accepted == VARIANT_TRUE, "Config aceite devolve Verdadeiro");
    }
    Expect(editedName == firstRestaurant, "o editor abre o restaurante escolhido");
    Expect(office.settingsStore.History(backoffice::kSettingsKey1, backoffice::kSettingsKey2).size() ==
               versions + 1,
           "OK guarda as configurações");

    // ShowTrace: the log list of a back office that has imported once; a double click opens
    // the import's log, then Sair.
    DSOKitraLog log(services);
    Expect(log.CheckOrCreateKitraLogTable(), "a tabela do log existe");
    KitraLog record;
    record.RestaurantID = "Praça";
    record.ImportDate = DateTime{2011, 3, 2, 9, 5, 7};
    record.Contents = "Início da importação\nFim da importação";
    Expect(log.Save(record), "um log guardado");
    int rows = -1;
    std::string contents;
    {
        UserAtTheScreen user([&](UserAtTheScreen& u) {
            HWND list = u.WaitForDialog(services.application->Text(kLogListTitleText));
            rows = u.RowCount(list, win32::IDC_vsfImportLog);
            u.DoubleClickCellToOpen(list, win32::IDC_vsfImportLog, 0, 0);
            HWND shown = u.WaitForDialog(LogContentsCaption(services, record));
            contents = u.Text(shown, win32::IDC_txtLog);
            u.Click(shown, win32::IDC_LogContentsOk);
            u.WaitUntilClosed(shown);
            u.Click(list, win32::IDC_cmdExit);
        });
        Check(connector->ShowTrace(), "ShowTrace");
        const std::string failure = user.Failure();
        Expect(failure.empty(), "o utilizador fechou o log de importações" +
                                    (failure.empty() ? std::string() : ": " + failure));
    }
    Expect(rows == 1, "o log de importações mostra a importação");
    Expect(contents == "Início da importação\r\nFim da importação", "o log da importação abre com o seu texto");
    PrintBoxes(boxes);
    Expect(boxes.shown.empty(), "nenhuma janela deu mensagem");
    return failures == 0 ? 0 : 1;
}

int Load(backoffice::BackOffice& office, const std::string& file) {
    std::ifstream in(file, std::ios::binary);
    if (!in) throw Error("Não foi possível ler '" + file + "'");
    std::ostringstream text;
    text << in.rdbuf();
    Connector connector;
    VARIANT_BOOL stored = VARIANT_FALSE;
    Text xml(text.str());
    Check(connector->LoadDefaults(xml.Get(), &stored), "LoadDefaults");
    Expect(stored == VARIANT_TRUE, "LoadDefaults devolve Verdadeiro");
    const auto kept =
        office.settingsStore.StoredText(backoffice::kSettingsKey1, backoffice::kSettingsKey2);
    Expect(kept.has_value(), "as configurações ficaram guardadas");
    if (kept) std::cout << "guardado: " << *kept << "\n";
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
        const host::HostAttachment attachment(services, "");
        if (command == "identity") {
            status = Identity();
        } else if (command == "load" && argc == 4) {
            status = Load(office, argv[3]);
        } else if (command == "validate") {
            VARIANT_BOOL valid = VARIANT_FALSE;
            Check(Connector()->ValidateSettings(&valid), "ValidateSettings");
            std::cout << "ValidateSettings = " << YesNo(valid) << "\n";
            PrintBoxes(boxes);
        } else if (command == "dialogs") {
            status = Dialogs(office, services, boxes);
        } else if (command == "execute") {
            DispatchNotifier dispatchNotifier;
            {
                Connector connector;
                Check(connector->put_EventNotifier(&dispatchNotifier), "EventNotifier");
                Check(connector->Execute(), "Execute");
                Check(connector->Dispose(), "Dispose");
            }
            for (const std::string& text : dispatchNotifier.statuses) {
                std::cout << "estado: " << text << "\n";
            }
            PrintBoxes(boxes);
            Expect(dispatchNotifier.progressCalls > 0, "o notificador recebeu o progresso");
            Expect(dispatchNotifier.references == 1, "o conector largou o notificador");
            status = failures == 0 ? 0 : 1;
        } else if (command == "reset") {
            Check(Connector()->ResetData(), "ResetData");
        } else {
            std::cerr << "kitra-windows-host: comando desconhecido: " << command << "\n";
            status = 2;
        }
    } catch (const Error& error) {
        std::cerr << "kitra-windows-host: " << error.Description() << "\n";
        status = 1;
    }
    ::CoUninitialize();
    return status;
}
