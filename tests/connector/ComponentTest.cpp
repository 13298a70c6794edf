// The connector reached only as a host reaches it: the module's exported entry points, its class
// factory and the IConnector interface, over a real temporary back office.
#include <dlfcn.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "core/ComponentRegistry.h"
#include "host/Com.h"
#include "host/IConnector.h"
#include "tests/hostsupport/TempFolder.h"
#include "tests/hostsupport/TestBackOffice.h"

namespace kitra {
namespace {
namespace fs = std::filesystem;
using host::ComPtr;
using host::IConnector;

constexpr host::Guid kClsid{0x3F6E9A24, 0x71C8, 0x4D5B,
                            {0xA0, 0xE2, 0x8B, 0x9C, 0x4D, 0x17, 0xF5, 0xA6}};
constexpr host::Guid kOther{0x12345678, 0x1234, 0x1234, {1, 2, 3, 4, 5, 6, 7, 8}};

// Whether any Qt library is loaded in this process.
bool QtLoaded() {
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        if (line.find("libQt6") != std::string::npos) return true;
    }
    return false;
}

// No display of any kind for as long as it lives.
class WithoutScreen {
public:
    WithoutScreen() {
        for (const char* variable : kVariables) {
            if (const char* value = std::getenv(variable)) saved_.emplace_back(variable, value);
            ::unsetenv(variable);
        }
    }
    ~WithoutScreen() {
        for (const auto& [variable, value] : saved_) ::setenv(variable.c_str(), value.c_str(), 1);
    }

private:
    static constexpr const char* kVariables[] = {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"};
    std::vector<std::pair<std::string, std::string>> saved_;
};

class Module {
public:
    Module() {
        handle = ::dlopen(KITRA_CONNECTOR_MODULE, RTLD_NOW | RTLD_LOCAL);
        if (handle == nullptr) throw std::runtime_error(::dlerror());
        getClassObject = reinterpret_cast<host::DllGetClassObjectFn>(::dlsym(handle, "DllGetClassObject"));
        canUnloadNow = reinterpret_cast<host::DllCanUnloadNowFn>(::dlsym(handle, "DllCanUnloadNow"));
        registerServer = reinterpret_cast<host::DllRegisterServerFn>(::dlsym(handle, "DllRegisterServer"));
        unregisterServer =
            reinterpret_cast<host::DllUnregisterServerFn>(::dlsym(handle, "DllUnregisterServer"));
    }
    ~Module() { ::dlclose(handle); }

    ComPtr<host::IClassFactory> Factory() {
        ComPtr<host::IClassFactory> factory;
        EXPECT_EQ(getClassObject(kClsid, host::kIID_IClassFactory, factory.Out()), host::kOk);
        return factory;
    }
    ComPtr<IConnector> Create() {
        ComPtr<IConnector> connector;
        EXPECT_EQ(Factory()->CreateInstance(nullptr, host::kIID_IConnector, connector.Out()),
                  host::kOk);
        return connector;
    }

    void* handle = nullptr;
    host::DllGetClassObjectFn getClassObject = nullptr;
    host::DllCanUnloadNowFn canUnloadNow = nullptr;
    host::DllRegisterServerFn registerServer = nullptr;
    host::DllUnregisterServerFn unregisterServer = nullptr;
};

class ComponentTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(module.getClassObject && module.canUnloadNow && module.registerServer &&
                    module.unregisterServer);
        office.AttachAsHost(KITRA_CONNECTOR_MODULE);
        connector = module.Create();
        ASSERT_TRUE(connector);
    }
    void TearDown() override {
        connector.Reset();
        EXPECT_EQ(module.canUnloadNow(), host::kOk);
    }

    std::string StoredXml() {
        return office.Office()
            .settingsStore.StoredText("Quarn.Mercatill.Connector", "Kitra")
            .value_or("<nothing>");
    }

    testing::TestBackOffice office;
    Module module;
    ComPtr<IConnector> connector;
};

const std::string kSettings =
    "<KitraConnectorSetting InvoiceTransDocument=\"FAC\" CreditTransDocument=\"VC\" "
    "StockTransDocument=\"GT\" CashEntranceTransDocument=\"EC\" CashWithdrawalTransDocument=\"SC\" "
    "CustomerPaymentTransDocument=\"PCL\" CustomerPaymentAccountDocument=\"PAC\" "
    "SelfConsumptionTransDocument=\"AC\" DefaultTenderPayment=\"1\" DefaultTaxableGroup=\"1\">"
    "<Restaurants/><TenderEquivalence/><TaxableGroupEquivalence/></KitraConnectorSetting>";

TEST_F(ComponentTest, Identity) {
    EXPECT_EQ(connector->ConnectorID(), "Quarn.Mercatill.Connector.Kitra");
    EXPECT_EQ(connector->Description(), "Integrador KitranaII");
    EXPECT_EQ(connector->FunctionalLevel(), "SQL09");
    EXPECT_EQ(connector->Version(), std::to_string(KITRA_VERSION_MAJOR) + "." +
                                        (KITRA_VERSION_MINOR < 10 ? "0" : "") +
                                        std::to_string(KITRA_VERSION_MINOR) + "." +
                                        (KITRA_VERSION_PATCH < 10 ? "0" : "") +
                                        std::to_string(KITRA_VERSION_PATCH));
    EXPECT_TRUE(connector->HasUISetting());
    EXPECT_TRUE(connector->HasUITrace());
}

TEST_F(ComponentTest, FixedAnswersWhateverTheState) {
    for (int round = 0; round < 2; ++round) {
        EXPECT_TRUE(connector->Init());
        EXPECT_FALSE(connector->Save());
        EXPECT_FALSE(connector->HandleImportExport());
        EXPECT_FALSE(connector->HandleReExport());
        connector->ImportData();
        connector->ExportData();
        connector->ReExport(Variant(1.0), Variant("x"), Variant::Null(), Variant());
        ASSERT_TRUE(connector->LoadDefaults(kSettings));
        connector->Dispose();
    }
    EXPECT_TRUE(office.boxes.shown.empty());
}

TEST_F(ComponentTest, SignatureIsTheHostsOwn) {
    EXPECT_EQ(connector->Signature("texto"), office.Services().signature->Sign("texto"));
    EXPECT_NE(connector->Signature("texto"), connector->Signature("outro"));
}

TEST_F(ComponentTest, SignatureTrapsTheHostsFailures) {
    struct FailingSignature final : host::ISignatureService {
        std::string Sign(const std::string&) const override { throw std::runtime_error("sem chave"); }
    } failing;
    host::HostServices services = office.Services();
    services.signature = &failing;
    office.AttachServices(services);
    EXPECT_EQ(connector->Signature("texto"), "");
    services.signature = nullptr;
    EXPECT_EQ(connector->Signature("texto"), "");
    office.AttachServices(office.Services());
}

TEST_F(ComponentTest, LoadDefaultsTrimsBlanksAndStores) {
    ASSERT_TRUE(connector->LoadDefaults(kSettings));
    const std::string plain = StoredXml();
    ASSERT_TRUE(connector->Delete());
    EXPECT_EQ(StoredXml(), "<nothing>");
    ASSERT_TRUE(connector->LoadDefaults("  \r\n\t" + kSettings + " \r\n"));
    EXPECT_EQ(StoredXml(), plain);
    EXPECT_NE(plain.find("InvoiceTransDocument=\"FAC\""), std::string::npos);
}

TEST_F(ComponentTest, DeleteWithNothingStoredSucceeds) {
    EXPECT_TRUE(connector->Delete());
    EXPECT_EQ(StoredXml(), "<nothing>");
}

TEST_F(ComponentTest, ValidateSettingsWithNothingStoredIsFalseAndSilent) {
    EXPECT_FALSE(connector->ValidateSettings());
    EXPECT_TRUE(office.boxes.shown.empty());
}

// The settings dialog's validation over the stored settings, without the dialog: every failing
// rule is told through the host's message boxes.
TEST_F(ComponentTest, ValidateSettingsRunsTheDialogsValidation) {
    std::string valid = kSettings;
    valid.replace(valid.find("\"VC\""), 4, "\"FAC\"");
    ASSERT_TRUE(connector->LoadDefaults(valid));
    EXPECT_FALSE(connector->ValidateSettings());
    ASSERT_EQ(office.boxes.shown.size(), 2u);
    EXPECT_EQ(office.boxes.shown[0].text, "Seleccione um valor em Documento de Adiantamento de Clientes:");
    EXPECT_EQ(office.boxes.shown[1].text, "Tem que definir pelo menos um registo em Restaurantes:");
    EXPECT_EQ(office.boxes.shown[1].style, host::MessageStyle::Information);

    office.boxes.shown.clear();
    valid.replace(valid.find("\"PAC\""), 5, "\"ADC\"");
    valid.replace(valid.find("<Restaurants/>"), 14,
                  "<Restaurants><Restaurant Name=\"Centro\" TransSerial=\"EXT\"/></Restaurants>");
    ASSERT_TRUE(connector->LoadDefaults(valid));
    EXPECT_TRUE(connector->ValidateSettings());
    EXPECT_TRUE(office.boxes.shown.empty());

    // A code the host does not know stops the loading at its zone, which is told first.
    valid.replace(valid.find("StockTransDocument=\"GT\""), 23, "StockTransDocument=\"XX\"");
    ASSERT_TRUE(connector->LoadDefaults(valid));
    EXPECT_FALSE(connector->ValidateSettings());
    ASSERT_FALSE(office.boxes.shown.empty());
    EXPECT_EQ(office.boxes.shown[0].text,
              "Foi encontrado um erro na leitura da configuração na zona 'StockTransDocument'");
}

TEST_F(ComponentTest, ConfigRefusesWithoutExternalUnsignedSeries) {
    for (host::DocumentSeries series : office.Services().documentSeries->List()) {
        if (series.Kind == host::SeriesKind::ExternalUnsigned && series.Active) {
            series.Active = false;
            office.Services().documentSeries->Save(series, series.SeriesID, false);
        }
    }
    EXPECT_FALSE(connector->Config());
    ASSERT_EQ(office.boxes.shown.size(), 1u);
    EXPECT_EQ(office.boxes.shown[0].text,
              "Para poder executar este conector tem que ter séries não assinadas externas activas");
    EXPECT_EQ(office.boxes.shown[0].style, host::MessageStyle::Information);
    EXPECT_EQ(office.boxes.shown[0].buttons, host::MessageButtons::Ok);
    EXPECT_EQ(office.boxes.shown[0].title, office.Services().application->Title());
}

TEST_F(ComponentTest, ConfigWithoutAScreenSaysWhyAndStoresNothing) {
    WithoutScreen noScreen;
    EXPECT_FALSE(connector->Config());
    ASSERT_EQ(office.boxes.shown.size(), 1u);
    EXPECT_EQ(office.boxes.shown[0].text.rfind(
                  "Não foi possível abrir a janela de configuração do conector: não há ecrã", 0),
              0u)
        << office.boxes.shown[0].text;
    EXPECT_EQ(StoredXml(), "<nothing>");
}

// Without a screen (and without a Qt application of the host's) the log list cannot show; the
// host's message box says why, and nothing else happens.
TEST_F(ComponentTest, ShowTraceWithoutAScreenSaysWhy) {
    WithoutScreen noScreen;
    connector->ShowTrace();
    ASSERT_EQ(office.boxes.shown.size(), 1u);
    EXPECT_EQ(office.boxes.shown[0].text.rfind("Não foi possível abrir a janela do log de importações: "
                                               "não há ecrã disponível",
                                               0),
              0u)
        << office.boxes.shown[0].text;
    EXPECT_EQ(office.boxes.shown[0].style, host::MessageStyle::Critical);
}

// The import path (settings, execution, validation, the log reset) runs in a fresh process and
// never loads the window system; only a dialog does.
TEST(ComponentWindowSystem, OnlyTheDialogsLoadIt) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            testing::TestBackOffice office;
            office.AttachAsHost(KITRA_CONNECTOR_MODULE);
            Module module;
            ComPtr<IConnector> connector = module.Create();
            connector->LoadDefaults(kSettings);
            connector->Execute();
            connector->ValidateSettings();
            connector->ResetData();
            std::exit(QtLoaded() ? 1 : 0);
        },
        ::testing::ExitedWithCode(0), "");
    EXPECT_EXIT(
        {
            testing::TestBackOffice office;
            office.AttachAsHost(KITRA_CONNECTOR_MODULE);
            WithoutScreen noScreen;
            Module module;
            ComPtr<IConnector> connector = module.Create();
            connector->ShowTrace();
            std::exit(QtLoaded() ? 0 : 1);
        },
        ::testing::ExitedWithCode(0), "");
}

TEST_F(ComponentTest, ExecuteReportsThroughTheNotifierItWasGiven) {
    ASSERT_TRUE(connector->LoadDefaults(kSettings));
    connector->EventNotifier(office.notifier);
    connector->Execute();
    EXPECT_FALSE(office.notifier->statuses.empty());
    ASSERT_FALSE(office.boxes.shown.empty());
    EXPECT_EQ(office.boxes.shown.back().text, "A importação chegou ao fim.");

    // After Dispose the notifier is gone: a run still ends but reports nothing.
    office.notifier->statuses.clear();
    connector->Dispose();
    connector->Execute();
    EXPECT_TRUE(office.notifier->statuses.empty());
    EXPECT_EQ(office.boxes.shown.back().text, "A importação chegou ao fim.");
}

TEST_F(ComponentTest, ExecuteWithNothingStoredDoesNothing) {
    connector->EventNotifier(office.notifier);
    connector->Execute();
    EXPECT_TRUE(office.notifier->statuses.empty());
    EXPECT_TRUE(office.boxes.shown.empty());
}

TEST_F(ComponentTest, ResetDataEmptiesTheLogButKeepsTheDates) {
    const std::string withRestaurant =
        "<KitraConnectorSetting DefaultTaxableGroup=\"1\"><Restaurants>"
        "<Restaurant Name=\"Centro\" ServerName=\"127.0.0.1\" ServerPort=\"1\" "
        "ImportDateEntities=\"2010-01-01 00:00:00\" ImportDateTransactions=\"2010-01-01 00:00:00\"/>"
        "</Restaurants><TenderEquivalence/><TaxableGroupEquivalence/></KitraConnectorSetting>";
    ASSERT_TRUE(connector->LoadDefaults(withRestaurant));
    connector->Execute();
    const std::string afterRun = StoredXml();
    EXPECT_EQ(afterRun.find("2010-01-01 00:00:00"), std::string::npos) << afterRun;
    ASSERT_EQ(office.Services().connection->Query(host::SqlStatement("SELECT * FROM Kitra2Log")).RecordCount(), 1);
    connector->ResetData();
    EXPECT_EQ(office.Services().connection->Query(host::SqlStatement("SELECT * FROM Kitra2Log")).RecordCount(), 0);
    EXPECT_TRUE(office.Services().schema->TableExists("Kitra2Log"));
    EXPECT_EQ(StoredXml(), afterRun);  // the import dates stay where the run left them
}

TEST(ComponentModule, ClassFactoryAndUnloadRules) {
    Module module;
    void* object = reinterpret_cast<void*>(1);
    EXPECT_EQ(module.getClassObject(kOther, host::kIID_IClassFactory, &object), host::kClassNotAvailable);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(module.getClassObject(kClsid, host::kIID_IClassFactory, nullptr), host::kPointer);
    EXPECT_EQ(module.canUnloadNow(), host::kOk);

    ComPtr<host::IClassFactory> factory = module.Factory();
    ASSERT_TRUE(factory);
    ComPtr<host::IUnknown> unknown;
    EXPECT_EQ(factory->QueryInterface(host::kIID_IUnknown, unknown.Out()), host::kOk);

    // Aggregation is refused; an interface the class lacks leaves nothing alive.
    ComPtr<IConnector> none;
    EXPECT_EQ(factory->CreateInstance(unknown.Get(), host::kIID_IConnector, none.Out()),
              host::kNoAggregation);
    EXPECT_EQ(factory->CreateInstance(nullptr, kOther, none.Out()), host::kNoInterface);
    EXPECT_FALSE(none);
    EXPECT_EQ(module.canUnloadNow(), host::kOk);

    // A live object or a lock keeps the module loaded.
    ComPtr<IConnector> connector = module.Create();
    EXPECT_EQ(module.canUnloadNow(), host::kFalse);
    ComPtr<host::IUnknown> asUnknown;
    ASSERT_EQ(connector->QueryInterface(host::kIID_IUnknown, asUnknown.Out()), host::kOk);
    ComPtr<host::IClassFactory> notAFactory;
    EXPECT_EQ(connector->QueryInterface(host::kIID_IClassFactory, notAFactory.Out()), host::kNoInterface);
    connector.Reset();
    EXPECT_EQ(module.canUnloadNow(), host::kFalse);  // asUnknown still holds it
    asUnknown.Reset();
    EXPECT_EQ(module.canUnloadNow(), host::kOk);
    EXPECT_EQ(factory->LockServer(true), host::kOk);
    EXPECT_EQ(module.canUnloadNow(), host::kFalse);
    EXPECT_EQ(factory->LockServer(false), host::kOk);
    EXPECT_EQ(module.canUnloadNow(), host::kOk);
}

TEST(ComponentModule, RegistersAndUnregistersExactlyItsEntry) {
    testing::TempFolder temp;
    const fs::path registry = temp.Path() / "components.registry";
    ::setenv("KITRA_COMPONENT_REGISTRY", registry.c_str(), 1);
    RegisterComponent({"{11111111-1111-1111-1111-111111111111}", "Outro.Componente", "/opt/outro.so"});

    Module module;
    ASSERT_EQ(module.registerServer(), host::kOk);
    auto entry = FindComponent("POSConnectorKitra.KitraConnector");
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->clsid, host::GuidToString(kClsid));
    EXPECT_EQ(fs::canonical(entry->modulePath), fs::canonical(KITRA_CONNECTOR_MODULE));
    ASSERT_EQ(module.registerServer(), host::kOk);  // again: still one entry
    EXPECT_EQ(ReadComponentRegistry().size(), 2u);

    ASSERT_EQ(module.unregisterServer(), host::kOk);
    EXPECT_FALSE(FindComponent("POSConnectorKitra.KitraConnector"));
    ASSERT_EQ(ReadComponentRegistry().size(), 1u);
    EXPECT_EQ(ReadComponentRegistry()[0].progId, "Outro.Componente");

    ::unsetenv("KITRA_COMPONENT_REGISTRY");
}

}  // namespace
}  // namespace kitra
