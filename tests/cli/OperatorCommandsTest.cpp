// kitra-host as an operator's tool, without a restaurant server: failures that show in the exit
// code and on stderr, the run lock, the import state, settings that are checked before they are
// stored and kept when they are replaced, a locked back office, a log row that could not be
// stored, and back-office files that are not back offices.
#include <gtest/gtest.h>

#include <cctype>
#include <filesystem>
#include <vector>
#include <utility>
#include <thread>
#include <set>
#include <ctime>
#include <chrono>
#include <algorithm>
#include <fstream>
#include <string>

#include "backoffice/BackOffice.h"
#include "backoffice/RunLock.h"
#include "backoffice/SettingsDocument.h"
#include "tests/cli/KitraHostRun.h"

namespace kitra {
namespace {
namespace fs = std::filesystem;

using testing::HostResult;
using testing::KitraHostTest;

// The series of a restaurant of these tests: the first three letters of its name, in capitals.
std::string SeriesOf(const std::string& name) {
    std::string series;
    for (char c : name) {
        if (std::isalpha(static_cast<unsigned char>(c)) && series.size() < 3)
            series += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    }
    return series;
}

// A restaurant an import accepts (its series, workstation, warehouses and supplier are the back
// office's) on a server that is not there.
std::string Restaurant(const std::string& name, const std::string& password = "p",
                       const std::string& extra = "") {
    return "<Restaurant Name=\"" + name + "\" ServerName=\"127.0.0.1\" ServerPort=\"1\" ServerDBName=\"r\" "
           "ServerUser=\"u\" ServerPassword=\"" + password + "\" WorkstationID=\"1\" "
           "DefaultWarehouseID=\"1\" WasteWarehouseID=\"2\" DefaultSupplierID=\"1\" TransSerial=\"" +
           SeriesOf(name) + "\" ImportDateEntities=\"2010-01-01 00:00:00\" "
           "ImportDateTransactions=\"2010-01-01 00:00:00\"" + extra + "/>";
}

std::string Settings(const std::string& restaurants) {
    return "<KitraConnectorSetting InvoiceTransDocument=\"FAC\" CreditTransDocument=\"FAC\" "
           "StockTransDocument=\"GT\" CashEntranceTransDocument=\"EC\" "
           "CashWithdrawalTransDocument=\"SC\" CustomerPaymentTransDocument=\"PCL\" "
           "CustomerPaymentAccountDocument=\"ADC\" DefaultTenderPayment=\"1\" "
           "DefaultTaxableGroup=\"1\"><Restaurants>" + restaurants +
           "</Restaurants><TenderEquivalence/><TaxableGroupEquivalence/></KitraConnectorSetting>";
}

class OperatorTest : public KitraHostTest {
protected:
    void SetUp() override {
        KitraHostTest::SetUp();
        // Each restaurant these tests run has a series of its own.
        for (const char* series : {"CEN", "PRA", "NOR", "FOZ", "RES"})
            ASSERT_EQ(Run(std::string("series add ") + series + " Restaurante").exit, 0);
    }
};

TEST_F(OperatorTest, AnUnreachableRestaurantExitsThreeAndIsNamedOnStderr) {
    ASSERT_EQ(Run("settings load " + WriteSettings(Settings(Restaurant("Centro") + Restaurant("Praia")))).exit, 0);
    const HostResult run = Run("execute");
    EXPECT_EQ(run.exit, 3) << run.out;
    for (const char* name : {"Centro", "Praia"}) {
        EXPECT_NE(run.err.find(std::string("o restaurante '") + name + "' teve erros: Vendedores - ## Erro ## "
                               "Não foi possível estabelecer comunicação com o Servidor."),
                  std::string::npos)
            << run.err;
        // Pasted anywhere, the command rewinds this back office: the program and the data
        // folder by their absolute paths.
        EXPECT_NE(run.err.find(std::string(KITRA_HOST_PROGRAM) + " --data " + Data().string() +
                               " state set " + name +
                               " --entities '2010-01-01 00:00:00' --transactions '2010-01-01 00:00:00'"),
                  std::string::npos)
            << run.err;
    }
    EXPECT_NE(run.err.find(" log show Centro '"), std::string::npos) << run.err;
    EXPECT_NE(run.err.find(" --data " + Data().string() + " check\n"), std::string::npos) << run.err;
    // The run reached its end, which is said on the output as always.
    EXPECT_EQ(run.err.find("A importação chegou ao fim."), std::string::npos);
    EXPECT_NE(run.out.find("A importação chegou ao fim."), std::string::npos);
}

TEST_F(OperatorTest, QuietRunShowsOnlyTheSummary) {
    ASSERT_EQ(Run("settings load " + WriteSettings(Settings(Restaurant("Centro")))).exit, 0);
    const HostResult run = Run("execute --quiet");
    EXPECT_EQ(run.exit, 3);
    const std::string out = run.out.substr(0, run.out.size() - run.err.size());
    EXPECT_EQ(out.find("A integrar Restaurante"), std::string::npos) << out;
    EXPECT_NE(out.find("Resumo Importação Restaurante: Centro\n"), std::string::npos) << out;
    EXPECT_NE(out.find(" - Recibos: 0\n"), std::string::npos) << out;
    EXPECT_EQ(Run("execute --quiet --verbose").exit, 2);
}

TEST_F(OperatorTest, ARunWithoutAUsableLogFolderDoesNotStartAndExitsOne) {
    ASSERT_EQ(Run("settings load " + WriteSettings(Settings(Restaurant("Centro")))).exit, 0);
    // The log folder is a file: no restaurant's log could be written. (A run that stops half-way
    // is tried by the fault suite.)
    fs::remove_all(Data() / "logs");
    std::ofstream(Data() / "logs") << "not a folder";
    const HostResult run = Run("execute");
    EXPECT_EQ(run.exit, 1) << run.out;
    EXPECT_NE(run.err.find("é um ficheiro, não uma pasta"), std::string::npos) << run.err;
    EXPECT_NE(run.err.find("A importação não começou"), std::string::npos) << run.err;
    EXPECT_NE(Run("state").out.find("\nCentro\t2010-01-01 00:00:00\t2010-01-01 00:00:00\t-\t2010-01-01 00:00:00\n"),
              std::string::npos);
}

TEST_F(OperatorTest, ASecondRunAndSettingsChangesRefuseWhileARunHoldsTheLock) {
    ASSERT_EQ(Run("settings load " + WriteSettings(Settings(Restaurant("Centro")))).exit, 0);
    const std::string before = Run("settings show --reveal").out;
    {
        backoffice::RunLock held(Data(), "a importação");  // as a run in another program holds it
        for (const std::string& command :
             {std::string("execute"), "settings load " + WriteSettings(Settings(Restaurant("Praia")), "other.xml"),
              std::string("settings delete --yes"), std::string("state set Centro --entities '2020-01-01 00:00:00'"),
              std::string("reset-data"), std::string("settings restore 1")}) {
            const HostResult r = Run(command);
            EXPECT_EQ(r.exit, 1) << command << "\n" << r.out;
            EXPECT_NE(r.err.find("Está a decorrer uma importação nesta retaguarda (processo "), std::string::npos)
                << command << "\n" << r.err;
        }
        EXPECT_EQ(Run("settings show --reveal").out, before);
        EXPECT_EQ(Run("state").exit, 0);  // reading is fine
    }
    EXPECT_EQ(Run("state set Centro --entities '2020-01-01 00:00:00'").exit, 0);
}

TEST_F(OperatorTest, StateListsAndMovesTheImportDates) {
    EXPECT_EQ(Run("state").exit, 1);  // nothing stored yet
    ASSERT_EQ(Run("settings load " + WriteSettings(Settings(Restaurant("Centro") + Restaurant("Praia")))).exit, 0);
    // Without a run of this host, each restaurant's next import starts at its dates.
    EXPECT_EQ(Run("state").out,
              "Restaurante\tEntidades\tTransacções\tInício da importação anterior\tPróxima importação desde\n"
              "Centro\t2010-01-01 00:00:00\t2010-01-01 00:00:00\t-\t2010-01-01 00:00:00\n"
              "Praia\t2010-01-01 00:00:00\t2010-01-01 00:00:00\t-\t2010-01-01 00:00:00\n");
    EXPECT_EQ(Run("state set Praia --transactions '2024-01-05 10:00:00'").exit, 0);
    EXPECT_EQ(Run("state set Centro --entities '2023-12-31 23:59:59' --transactions '2024-01-01 00:00:00'").exit, 0);
    EXPECT_EQ(Run("state").out,
              "Restaurante\tEntidades\tTransacções\tInício da importação anterior\tPróxima importação desde\n"
              "Centro\t2023-12-31 23:59:59\t2024-01-01 00:00:00\t-\tentidades 2023-12-31 23:59:59, "
              "transacções 2024-01-01 00:00:00\n"
              "Praia\t2010-01-01 00:00:00\t2024-01-05 10:00:00\t-\tentidades 2010-01-01 00:00:00, "
              "transacções 2024-01-05 10:00:00\n");
    for (const char* wrong : {"'2024-1-5 10:00:00'", "'2024-02-30 00:00:00'", "ontem", "'2024-01-05 10'"}) {
        const HostResult r = Run(std::string("state set Centro --entities ") + wrong);
        EXPECT_EQ(r.exit, 2) << wrong;
        EXPECT_NE(r.err.find("aaaa-mm-dd hh:mm:ss"), std::string::npos) << r.err;
    }
    EXPECT_EQ(Run("state set Centro").exit, 2);
    EXPECT_EQ(Run("state set Norte --entities '2024-01-05 10:00:00'").exit, 1);
    // A name is the restaurant's whatever its letter case, as the import tells names apart.
    const HostResult lower = Run("state set centro --entities '2024-02-01 00:00:00'");
    EXPECT_EQ(lower.exit, 0) << lower.err;
    EXPECT_EQ(lower.out, "Datas de importação de 'Centro': entidades 2024-02-01 00:00:00, transacções "
                         "2024-01-01 00:00:00.\n");
    // Every change is kept: the history shows who replaced what.
    const std::string history = Run("settings history").out;
    EXPECT_NE(history.find("\tstate set Praia\t2"), std::string::npos) << history;
    EXPECT_NE(history.find("\tstate set Centro\t2"), std::string::npos) << history;
    EXPECT_NE(history.find("\tsettings load\t"), std::string::npos) << history;
}

// 'state set' takes the dates 'report' takes: a moment, or a day for its 00:00:00.
TEST_F(OperatorTest, StateSetTakesADayAloneAsItsMidnight) {
    ASSERT_EQ(Run("settings load " + WriteSettings(Settings(Restaurant("Centro")))).exit, 0);
    const HostResult set = Run("state set Centro --entities 2024-01-05 --transactions '2024-02-01 10:30:00'");
    EXPECT_EQ(set.exit, 0) << set.out;
    EXPECT_NE(Run("state").out.find("Centro\t2024-01-05 00:00:00\t2024-02-01 10:30:00\t"), std::string::npos);
    for (const char* bad : {"2024-1-5", "2024-01-05 10:00", "05-01-2024", "2024-02-30"}) {
        const HostResult r = Run(std::string("state set Centro --entities '") + bad + "'");
        EXPECT_EQ(r.exit, 2) << bad;
        EXPECT_NE(r.err.find("\"aaaa-mm-dd hh:mm:ss\" ou aaaa-mm-dd"), std::string::npos) << r.err;
    }
}

TEST_F(OperatorTest, ASettingsFileThatIsNotUsableLeavesTheStoredSettingsByteForByte) {
    ASSERT_EQ(Run("settings load " + WriteSettings(Settings(Restaurant("Centro")))).exit, 0);
    const std::string stored = Run("settings show --reveal").out;
    const std::string binary("<KitraConnectorSetting\0/>", 25);
    struct Case {
        std::string text;
        std::string said;
    };
    const Case cases[] = {
        {"", "está vazio"},
        {" \n\t", "está vazio"},
        {binary, "não é texto UTF-8"},
        {"\xff\xfe<\0K\0", "não é texto UTF-8"},
        {"<KitraConnectorSetting>\n  <Restaurants>\n  </Restaurant>", "linha 3, coluna 5"},
        {"<KitraConnectorSetting", "linha 1"},
        {"<Other/>", "O elemento de topo é <Other>"},
        {"<KitraConnectorSetting/><KitraConnectorSetting/>", "segundo elemento"},
        {"<KitraConnectorSetting InvoiceTransDocument=\"A & B\"/>", "\"&\""},
        {"<KitraConnectorSetting InvoiceTransDocument=\"A &nbsp; B\"/>", "\"&\""},
        {"<KitraConnectorSetting InvoiceTransDocument=\"a<b\"/>", "linha 1"},
        {"<KitraConnectorSetting A=\"1\" A=\"2\"/>", "repete um atributo"},
        {Settings(Restaurant("Centro", "pa;ss")), "palavra-passe"},
        {Settings(Restaurant("Centro").replace(Restaurant("Centro").find("ServerDBName=\"r\""), 16,
                                               "ServerDBName=\"x;Server=other\"")),
         "x;Server=other"},
        {Settings(Restaurant("Um nome com mais de vinte e cinco")), "mais de 25 caracteres"},
        {Settings(Restaurant("Centro").replace(Restaurant("Centro").find("2010-01-01 00:00:00"), 19, "2010-1-1")),
         "ImportDateEntities '2010-1-1'"},
        {Settings(Restaurant("Centro") + Restaurant("Centro")), "repete-se"},
    };
    for (const Case& c : cases) {
        const HostResult r = Run("settings load " + WriteSettings(c.text, "bad.xml"));
        EXPECT_EQ(r.exit, 1) << c.text << "\n" << r.out;
        EXPECT_NE(r.err.find("foram recusadas; as configurações guardadas ficaram como estavam"), std::string::npos)
            << r.err;
        EXPECT_NE(r.err.find(c.said), std::string::npos) << c.text << "\n" << r.err;
        EXPECT_EQ(r.err.find("pa;ss"), std::string::npos) << r.err;  // a password is never shown
        EXPECT_EQ(Run("settings show --reveal").out, stored) << c.text;
    }
    EXPECT_EQ(Run("settings history").out, "Não há versões anteriores das configurações.\n");
}

// A restaurant with one attribute set to a value (added when the restaurant has none).
std::string With(std::string restaurant, const std::string& attribute, const std::string& value) {
    const std::string key = " " + attribute + "=\"";
    if (const auto at = restaurant.find(key); at != std::string::npos) {
        const auto start = at + key.size();
        return restaurant.replace(start, restaurant.find('"', start) - start, value);
    }
    return restaurant.replace(restaurant.size() - 2, 0, key + value + "\"");
}

// Values the import would read as something else (a port of 'abc' connects to the driver's
// default, '69963' to 4427, a workstation 'abc' is workstation 0) and names that the import and
// the log could not tell apart are refused by every command that checks the settings, naming
// the restaurant and the field.
TEST_F(OperatorTest, NumbersTheImportWouldMisreadAndNamesItCouldNotTellApartAreRefused) {
    struct Case {
        std::string restaurants;
        std::string said;
    };
    const Case cases[] = {
        {With(Restaurant("Centro"), "ServerPort", "abc"), "Restaurante 'Centro': a porta (ServerPort) 'abc'"},
        {With(Restaurant("Centro"), "ServerPort", "-1"), "Restaurante 'Centro': a porta (ServerPort) '-1'"},
        {With(Restaurant("Centro"), "ServerPort", "3427abc"), "a porta (ServerPort) '3427abc'"},
        {With(Restaurant("Centro"), "ServerPort", "69963"), "a porta (ServerPort) '69963'"},
        {With(Restaurant("Centro"), "ServerPort", "0"), "a porta (ServerPort) '0'"},
        {With(Restaurant("Centro"), "ServerPort", " 3306"), "a porta (ServerPort) ' 3306'"},
        {With(Restaurant("Centro"), "WorkstationID", "abc"), "Restaurante 'Centro': o posto (WorkstationID) 'abc'"},
        {With(Restaurant("Centro"), "WorkstationID", "40000"), "o posto (WorkstationID) '40000'"},
        {With(Restaurant("Centro"), "WorkstationID", "1,5"), "o posto (WorkstationID) '1,5'"},
        {With(Restaurant("Centro"), "DefaultWarehouseID", "x"), "o armazém (DefaultWarehouseID) 'x'"},
        {With(Restaurant("Centro"), "WasteWarehouseID", "-3"), "o armazém de quebras (WasteWarehouseID) '-3'"},
        {With(Restaurant("Centro"), "DefaultSupplierID", "1,5"), "o fornecedor (DefaultSupplierID) '1,5'"},
        {With(Restaurant("Centro"), "StockManagement", "yes"), "a gestão de stocks (StockManagement) 'yes'"},
        {Restaurant("Centro") + Restaurant("centro"), "Restaurante 'centro': o nome é o de 'Centro'"},
        {Restaurant("Centro") + Restaurant("Centro "), "Restaurante 'Centro ': o nome é o de 'Centro'"},
        {Restaurant("São João") + Restaurant("SÃO JOÃO"), "o nome é o de 'São João'"},
        {Restaurant("   "), "Há um restaurante sem nome"},
    };
    for (const Case& c : cases) {
        const HostResult load = Run("settings load " + WriteSettings(Settings(c.restaurants), "bad.xml"));
        EXPECT_EQ(load.exit, 1) << c.restaurants << "\n" << load.out;
        EXPECT_NE(load.err.find(c.said), std::string::npos) << c.restaurants << "\n" << load.err;
        // Settings stored otherwise (an older program, the settings window) are refused when
        // checked.
        {
            backoffice::BackOffice office(Data());
            office.settingsStore.SaveText(backoffice::kSettingsKey1, backoffice::kSettingsKey2,
                                          Settings(c.restaurants));
        }
        const HostResult validate = Run("validate");
        EXPECT_EQ(validate.exit, 1) << c.restaurants;
        EXPECT_NE(validate.err.find(c.said), std::string::npos) << c.restaurants << "\n" << validate.err;
        const HostResult check = Run("check");
        EXPECT_NE(check.exit, 0) << c.restaurants;
        EXPECT_NE(check.err.find(c.said), std::string::npos) << c.restaurants << "\n" << check.err;
        EXPECT_NE(check.out.find("ERRO: as configurações não são válidas"), std::string::npos) << check.out;
    }
    // What the import reads as written: an empty port is the driver's own 3306, as the restaurant
    // window shows it.
    for (const std::string& restaurants :
         {With(Restaurant("Centro"), "ServerPort", ""), With(Restaurant("Centro"), "ServerPort", "65535"),
          With(With(With(With(With(Restaurant("Centro"), "WorkstationID", "32767"), "DefaultWarehouseID", "0"),
                          "WasteWarehouseID", "2"),
                     "DefaultSupplierID", "12"),
               "StockManagement", "0"),
          Restaurant("Centro") + With(Restaurant("Centro Norte"), "TransSerial", "NOR")}) {
        const HostResult load = Run("settings load " + WriteSettings(Settings(restaurants), "good.xml"));
        EXPECT_EQ(load.exit, 0) << restaurants << "\n" << load.out;
    }
}

// A folder is refused as any other file that is not a settings text is, in the same words.
TEST_F(OperatorTest, LoadingAFolderIsRefusedInTheWordsOfEveryRefusal) {
    ASSERT_EQ(Run("settings load " + WriteSettings(Settings(Restaurant("Centro")))).exit, 0);
    const std::string stored = Run("settings show --reveal").out;
    fs::create_directories(folder / "a folder");
    const HostResult r = Run("settings load " + Quote((folder / "a folder").string()));
    EXPECT_EQ(r.exit, 1) << r.out;
    EXPECT_EQ(r.err, "kitra-host: as configurações de '" + (folder / "a folder").string() +
                         "' foram recusadas; as configurações guardadas ficaram como estavam.\n"
                         "  '" + (folder / "a folder").string() + "' é uma pasta, não um ficheiro.\n");
    EXPECT_EQ(Run("settings show --reveal").out, stored);
    const HostResult missing = Run("settings load " + Quote((folder / "none.xml").string()));
    EXPECT_EQ(missing.exit, 1);
    EXPECT_NE(missing.err.find("foram recusadas; as configurações guardadas ficaram como estavam.\n"
                               "  Não foi possível ler o ficheiro"),
              std::string::npos)
        << missing.err;
}

// The settings are shown one element a line, indented; what is stored stays as it was written.
TEST_F(OperatorTest, ShowIndentsTheSettingsAndKeepsTheStoredText) {
    const std::string text = Settings(Restaurant("Centro", "segredo") + Restaurant("Praia", "outro"));
    ASSERT_EQ(Run("settings load " + WriteSettings(text)).exit, 0);
    const std::string stored = Run("settings show --reveal").out;
    EXPECT_EQ(stored.find("\n  <"), std::string::npos) << stored;
    const HostResult shown = Run("settings show");
    EXPECT_EQ(shown.exit, 0);
    EXPECT_TRUE(shown.out.starts_with("<KitraConnectorSetting InvoiceTransDocument=\"FAC\""));
    EXPECT_NE(shown.out.find("\">\n  <Restaurants>\n    <Restaurant Name=\"Centro\""), std::string::npos)
        << shown.out;
    EXPECT_NE(shown.out.find("\n    <Restaurant Name=\"Praia\""), std::string::npos) << shown.out;
    EXPECT_NE(shown.out.find("\n  </Restaurants>\n  <TenderEquivalence />\n"), std::string::npos) << shown.out;
    EXPECT_TRUE(shown.out.ends_with("\n</KitraConnectorSetting>\n")) << shown.out;
    EXPECT_EQ(shown.out.find("segredo"), std::string::npos);
    EXPECT_NE(stored.find("ServerPassword=\"segredo\""), std::string::npos);  // --reveal: the stored text
}

TEST_F(OperatorTest, ARestaurantNameIsMeasuredInCharacters) {
    // 25 characters in 27 bytes: what the log table holds.
    const std::string name = "Restaurante São João Baptis";
    ASSERT_EQ(Run("settings load " + WriteSettings(Settings(Restaurant(name.substr(0, name.size() - 2))))).exit, 0);
    EXPECT_EQ(Run("settings load " + WriteSettings(Settings(Restaurant(name + "ta")))).exit, 1);
}

TEST_F(OperatorTest, UnknownAttributesAreWarnings) {
    const HostResult r = Run("settings load " +
                             WriteSettings(Settings(Restaurant("Centro", "p", " SeverPort=\"3306\""))));
    EXPECT_EQ(r.exit, 0) << r.out;
    EXPECT_NE(r.err.find("aviso: Atributo desconhecido SeverPort no elemento <Restaurant>"), std::string::npos)
        << r.err;
}

TEST_F(OperatorTest, ShowMasksPasswordsUnlessRevealed) {
    ASSERT_EQ(Run("settings load " + WriteSettings(Settings(Restaurant("Centro", "segredo")))).exit, 0);
    const HostResult shown = Run("settings show");
    EXPECT_EQ(shown.exit, 0);
    EXPECT_EQ(shown.out.find("segredo"), std::string::npos) << shown.out;
    EXPECT_NE(shown.out.find("ServerPassword=\"********\""), std::string::npos) << shown.out;
    EXPECT_NE(Run("settings show --reveal").out.find("ServerPassword=\"segredo\""), std::string::npos);
}

// A file loaded over stored settings does not send a restaurant back to the file's dates.
TEST_F(OperatorTest, LoadKeepsAStoredRestaurantsDatesUnlessAskedAndSaysSo) {
    ASSERT_EQ(Run("settings load " + WriteSettings(Settings(Restaurant("Centro") + Restaurant("Praia")))).exit, 0);
    ASSERT_EQ(Run("state set Centro --entities \"2026-01-02 03:04:05\" --transactions \"2026-01-02 03:04:06\"").exit, 0);
    // The same file, edited for a password, and with a restaurant that is new.
    const std::string edited = WriteSettings(
        Settings(Restaurant("centro ", "nova") + Restaurant("Praia") + Restaurant("Foz")));
    const HostResult load = Run("settings load " + edited);
    ASSERT_EQ(load.exit, 0) << load.err;
    EXPECT_NE(load.out.find("Restaurante 'centro ': ImportDateEntities fica 2026-01-02 03:04:05, a data "
                            "guardada (o ficheiro tem 2010-01-01 00:00:00; para a tomar do ficheiro, use "
                            "--dates-from-file)."),
              std::string::npos)
        << load.out;
    EXPECT_NE(load.out.find("ImportDateTransactions fica 2026-01-02 03:04:06"), std::string::npos) << load.out;
    EXPECT_EQ(load.out.find("'Praia'"), std::string::npos) << load.out;  // same dates: nothing to say
    const std::string stored = Run("settings show --reveal").out;
    EXPECT_NE(stored.find("ServerPassword=\"nova\""), std::string::npos) << stored;
    EXPECT_NE(stored.find("ImportDateEntities=\"2026-01-02 03:04:05\" "
                          "ImportDateTransactions=\"2026-01-02 03:04:06\""),
              std::string::npos)
        << stored;
    EXPECT_NE(stored.find("Name=\"Foz\""), std::string::npos);

    // Asked: the file's dates, said too.
    const HostResult rewind = Run("settings load --dates-from-file " + edited);
    ASSERT_EQ(rewind.exit, 0) << rewind.err;
    EXPECT_NE(rewind.out.find("Restaurante 'centro ': ImportDateEntities passa de 2026-01-02 03:04:05 "
                              "para 2010-01-01 00:00:00 (do ficheiro)."),
              std::string::npos)
        << rewind.out;
    EXPECT_EQ(Run("settings show --reveal").out.find("2026-01-02"), std::string::npos);
}

// settings show > f; settings load f: the passwords stay what they were.
TEST_F(OperatorTest, AMaskedPasswordKeepsTheStoredOne) {
    ASSERT_EQ(Run("settings load " + WriteSettings(Settings(Restaurant("Centro", "segredo") +
                                                             Restaurant("Praia", "outro")))).exit, 0);
    const std::string before = Run("settings show --reveal").out;
    const HostResult shown = Run("settings show");
    ASSERT_EQ(shown.exit, 0);
    ASSERT_NE(shown.out.find("********"), std::string::npos);
    const HostResult load = Run("settings load " + WriteSettings(shown.out));
    ASSERT_EQ(load.exit, 0) << load.err;
    EXPECT_EQ(Run("settings show --reveal").out, before);
    // A masked password for a restaurant nothing is stored for cannot be kept: refused whole.
    const HostResult refused = Run("settings load " + WriteSettings(Settings(
                                   Restaurant("Centro", "********") + Restaurant("Nova", "********"))));
    EXPECT_EQ(refused.exit, 1);
    EXPECT_NE(refused.err.find("Restaurante 'Nova': a palavra-passe está mascarada (********) e não há "
                               "nenhuma guardada para este restaurante"),
              std::string::npos)
        << refused.err;
    EXPECT_EQ(Run("settings show --reveal").out, before);
}

TEST_F(OperatorTest, SetChangesOneAttributeCheckedAndKeptInTheHistory) {
    EXPECT_EQ(Run("settings set Centro ServerPort 3307").exit, 1);  // nothing stored yet
    ASSERT_EQ(Run("settings load " + WriteSettings(Settings(Restaurant("Centro", "segredo") +
                                                             Restaurant("Praia")))).exit, 0);
    const std::string before = Run("settings show --reveal").out;
    const HostResult port = Run("settings set centro ServerPort 3307");
    ASSERT_EQ(port.exit, 0) << port.err;
    EXPECT_EQ(port.out, "Restaurante 'centro': ServerPort = 3307 (a versão anterior das configurações "
                        "ficou no histórico).\n");
    const HostResult password = Run("settings set Centro ServerPassword nova");
    ASSERT_EQ(password.exit, 0) << password.err;
    EXPECT_EQ(password.out.find("nova"), std::string::npos) << password.out;  // not shown
    std::string expected = before;
    const auto replace = [&](const std::string& from, const std::string& to) {
        expected.replace(expected.find(from), from.size(), to);
    };
    replace("ServerPort=\"1\"", "ServerPort=\"3307\"");
    replace("ServerPassword=\"segredo\"", "ServerPassword=\"nova\"");
    EXPECT_EQ(Run("settings show --reveal").out, expected);
    const HostResult history = Run("settings history");
    EXPECT_NE(history.out.find("\tsettings set\t"), std::string::npos) << history.out;

    // Refused, and nothing changes: a value a load refuses, an unknown attribute or restaurant.
    const HostResult badPort = Run("settings set Centro ServerPort 70000");
    EXPECT_EQ(badPort.exit, 1);
    EXPECT_NE(badPort.err.find("ServerPort"), std::string::npos) << badPort.err;
    const HostResult unknown = Run("settings set Centro SeverPort 3306");
    EXPECT_EQ(unknown.exit, 1);
    EXPECT_NE(unknown.err.find("'SeverPort' não é um atributo de um restaurante"), std::string::npos)
        << unknown.err;
    EXPECT_EQ(Run("settings set Nenhum ServerPort 3306").exit, 1);
    EXPECT_EQ(Run("settings set Centro ServerPort").exit, 2);
    EXPECT_EQ(Run("settings show --reveal").out, expected);
}

TEST_F(OperatorTest, HistoryKeepsReplacedSettingsAndRestoreBringsThemBack) {
    ASSERT_EQ(Run("settings load " + WriteSettings(Settings(Restaurant("Centro") + Restaurant("Praia")))).exit, 0);
    const std::string first = Run("settings show --reveal").out;
    ASSERT_EQ(Run("settings load " + WriteSettings(Settings(Restaurant("Norte")))).exit, 0);
    ASSERT_EQ(Run("settings delete --yes").exit, 0);
    const HostResult history = Run("settings history");
    ASSERT_EQ(history.exit, 0);
    EXPECT_TRUE(history.out.starts_with("N\tguardada em\tpor\tsubstituída em\tpor\trestaurantes\n2\t"))
        << history.out;
    EXPECT_NE(history.out.find("\tsettings load\t"), std::string::npos);
    EXPECT_NE(history.out.find("\tsettings delete\t1\n"), std::string::npos) << history.out;
    EXPECT_NE(history.out.find("\n1\t"), std::string::npos);
    EXPECT_TRUE(history.out.ends_with("\tsettings load\t2\n")) << history.out;

    const HostResult restore = Run("settings restore 1");
    EXPECT_EQ(restore.exit, 0) << restore.out;
    EXPECT_EQ(Run("settings show --reveal").out, first);
    EXPECT_EQ(Run("settings restore 99").exit, 1);
    EXPECT_EQ(Run("settings restore x").exit, 2);
}

TEST_F(OperatorTest, ALockedBackOfficeSaysSoInsteadOfTheLogTableMessage) {
    ASSERT_EQ(Run("settings load " + WriteSettings(Settings(Restaurant("Centro")))).exit, 0);
    backoffice::Database other(backoffice::BackOffice::FileIn(Data()), backoffice::Database::OpenMode::Existing);
    other.Exec("BEGIN IMMEDIATE");  // another program's write, never finished
    const HostResult run = Run("execute", "KITRA_HOST_RUN_BUSY_TIMEOUT_MS=200");
    EXPECT_EQ(run.exit, 1) << run.out;
    EXPECT_NE(run.err.find("está bloqueada por outro programa"), std::string::npos) << run.err;
    EXPECT_EQ(run.out.find("criar/abrir a tabela de Log"), std::string::npos) << run.out;
    const HostResult load = Run("settings load " + WriteSettings(Settings(Restaurant("Praia"))),
                                "KITRA_HOST_BUSY_TIMEOUT_MS=200");
    EXPECT_EQ(load.exit, 1);
    EXPECT_NE(load.err.find("está bloqueada por outro programa"), std::string::npos) << load.err;
    other.Exec("ROLLBACK");
    EXPECT_NE(Run("state").out.find("Centro\t"), std::string::npos);
}

TEST_F(OperatorTest, ALogRowThatCannotBeStoredIsKeptInTheLogFolderAndReported) {
    // Settings stored by an older program, with a name longer than the log table holds.
    const std::string name = "Restaurante do Centro Historico";
    {
        backoffice::BackOffice office(Data());
        office.settingsStore.SaveText(backoffice::kSettingsKey1, backoffice::kSettingsKey2,
                                      Settings(Restaurant(name)));
    }
    const HostResult run = Run("execute");
    EXPECT_EQ(run.exit, 3) << run.out;
    EXPECT_NE(run.err.find("o registo de log do restaurante '" + name + "' não foi guardado na retaguarda"),
              std::string::npos)
        << run.err;
    int kept = 0;
    for (const auto& entry : fs::directory_iterator(Data() / "logs")) {
        const std::string file = entry.path().filename().string();
        ASSERT_TRUE(file.starts_with(name) && file.ends_with("-NAO-GUARDADO.txt")) << file;
        EXPECT_NE(run.err.find(entry.path().string()), std::string::npos) << run.err;
        const std::string text = testing::KitraHostTest::ReadWhole(entry.path());
        EXPECT_TRUE(text.starts_with(" - # START # ")) << text;
        EXPECT_NE(text.find("# END # "), std::string::npos);
        ++kept;
    }
    EXPECT_EQ(kept, 1);
}

TEST_F(OperatorTest, ARunOverUnreadableSettingsDoesNotStartAndTheirTextCanBeRestored) {
    // A text stored by an older program, with a bare "&": the connector would read it as empty
    // settings and save them over it.
    const std::string unreadable = Settings(Restaurant("Centro", "a&b"));
    {
        backoffice::BackOffice office(Data());
        office.settingsStore.SaveText(backoffice::kSettingsKey1, backoffice::kSettingsKey2, unreadable);
    }
    const HostResult run = Run("execute");
    EXPECT_EQ(run.exit, 1) << run.out;
    EXPECT_NE(run.err.find("as configurações guardadas não se deixam ler"), std::string::npos) << run.err;
    EXPECT_NE(run.err.find("a importação não começou"), std::string::npos) << run.err;
    EXPECT_NE(run.err.find("kitra-host settings restore N"), std::string::npos) << run.err;
    EXPECT_EQ(run.out.find("A integrar Restaurante"), std::string::npos) << run.out;
    // Left as they were, not saved empty.
    EXPECT_EQ(Run("settings show --reveal").out, unreadable + "\n");
    EXPECT_EQ(Run("settings history").out, "Não há versões anteriores das configurações.\n");
}

TEST_F(OperatorTest, CommandsOnAFolderWithoutABackOfficeLeaveNothingThere) {
    fs::remove_all(Data());
    fs::create_directories(Data());
    for (const char* command : {"execute", "state set Centro --entities '2020-01-01 00:00:00'", "reset-data"}) {
        const HostResult r = Run(command);
        EXPECT_EQ(r.exit, 1) << command;
        EXPECT_NE(r.err.find("Não existe nenhuma retaguarda na pasta"), std::string::npos) << r.err;
    }
    EXPECT_TRUE(fs::is_empty(Data()));
}

TEST_F(OperatorTest, AnEmptyOrForeignBackOfficeFileIsRefused) {
    fs::remove_all(Data());
    fs::create_directories(Data());
    std::ofstream(Data() / "backoffice.sqlite").close();
    for (const char* command : {"state", "settings show", "log list", "execute"}) {
        const HostResult r = Run(command);
        EXPECT_EQ(r.exit, 1) << command;
        EXPECT_NE(r.err.find("existe mas está vazio: não é uma retaguarda"), std::string::npos) << r.err;
    }
    EXPECT_EQ(fs::file_size(Data() / "backoffice.sqlite"), 0u);
    const HostResult init = Run("init");
    EXPECT_EQ(init.exit, 1);
    EXPECT_NE(init.err.find("está vazio"), std::string::npos) << init.err;

    fs::remove(Data() / "backoffice.sqlite");
    {
        backoffice::Database foreign(backoffice::BackOffice::FileIn(Data()), backoffice::Database::OpenMode::CreateNew);
        foreign.Exec("CREATE TABLE invoices (id INTEGER)");
    }
    const HostResult r = Run("state");
    EXPECT_EQ(r.exit, 1);
    EXPECT_NE(r.err.find("é uma base de dados de outro programa, não uma retaguarda (tabelas: invoices)"),
              std::string::npos)
        << r.err;
    EXPECT_NE(Run("init").err.find("(tabelas: invoices)"), std::string::npos);

    std::ofstream(Data() / "backoffice.sqlite", std::ios::trunc) << "just some text, long enough to not be empty";
    EXPECT_NE(Run("state").err.find("não é uma base de dados SQLite"), std::string::npos);
}

TEST_F(OperatorTest, RegisteringALibraryThatIsNotAComponentFailsClearly) {
    const std::string library = (folder / "libother.so").string();
    // Any shared library without the component's entry points: the test program's SQLite will do.
    fs::copy_file(KITRA_SQLITE_LIBRARY, library);
    const HostResult r = Run("register " + Quote(library));
    EXPECT_EQ(r.exit, 1) << r.out;  // not an abort
    EXPECT_NE(r.err.find("não é um componente: não exporta DllGetClassObject"), std::string::npos) << r.err;
    EXPECT_FALSE(fs::exists(folder / "registry") && !ReadWhole(folder / "registry").empty());
}

TEST_F(OperatorTest, UnregisterWorksWhenTheRegisteredModuleIsGone) {
    const std::string copy = (folder / "POSConnectorKitra.so").string();
    fs::copy_file(KITRA_CONNECTOR_MODULE_FILE, copy);
    ASSERT_EQ(Run("register " + Quote(copy)).exit, 0);
    fs::remove(copy);
    const HostResult info = Run("info");
    EXPECT_EQ(info.exit, 1);
    // The message says where the registry is and how to mend it.
    EXPECT_NE(info.err.find("O registo de componentes é o ficheiro '" + (folder / "registry").string() + "'"),
              std::string::npos)
        << info.err;
    EXPECT_NE(info.err.find("kitra-host register"), std::string::npos);
    const HostResult r = Run("unregister");
    EXPECT_EQ(r.exit, 0) << r.out;
    EXPECT_NE(r.out.find("já não existe; o registo do componente foi anulado"), std::string::npos) << r.out;
    EXPECT_EQ(ReadWhole(folder / "registry"), "");
    EXPECT_EQ(Run("info").exit, 0);  // the module built beside the program again
}

// Settings the connector's own rules reject are refused before the run, not run with every
// counter sale left out as a warning and the dates moved past them.
TEST_F(OperatorTest, ExecuteRefusesSettingsTheConnectorRejectsAndNothingIsRun) {
    std::string text = Settings(Restaurant("Centro"));
    text.replace(text.find(" CreditTransDocument=\"FAC\""), 26, "");
    const HostResult load = Run("settings load " + WriteSettings(text));
    EXPECT_EQ(load.exit, 0) << load.out;  // stored, with what a run would refuse
    EXPECT_NE(load.err.find("a importação recusa estas configurações"), std::string::npos) << load.err;
    EXPECT_NE(load.err.find("Seleccione um valor em Documento de Vendas a Crédito:"), std::string::npos)
        << load.err;
    const std::string before = Run("settings show --reveal").out;

    const HostResult run = Run("execute");
    EXPECT_EQ(run.exit, 1) << run.out;
    EXPECT_NE(run.err.find("kitra-host: O conector recusa as configurações: Seleccione um valor em "
                           "Documento de Vendas a Crédito:"),
              std::string::npos)
        << run.err;
    EXPECT_NE(run.err.find("a importação não começou: nada foi importado e as datas de importação "
                           "ficaram como estavam."),
              std::string::npos)
        << run.err;
    EXPECT_EQ(run.out.find("A integrar Restaurante"), std::string::npos) << run.out;
    EXPECT_EQ(Run("log list").out, "");
    EXPECT_EQ(Run("settings show --reveal").out, before);
    EXPECT_EQ(Run("validate").exit, 1);
    EXPECT_EQ(Run("check").exit, 3);
}

// A series, workstation, warehouse or supplier the back office lacks: the run would stop at the
// first document or save them all without it. Every command that looks at settings names the
// restaurant, the attribute and the record; the run starts once they exist.
TEST_F(OperatorTest, SettingsThatNameRecordsTheBackOfficeLacksAreRefusedUntilTheyExist) {
    std::string restaurant = Restaurant("Centro");
    for (const auto& [from, to] : {std::pair<std::string, std::string>{"WorkstationID=\"1\"", "WorkstationID=\"7\""},
                                   {"DefaultWarehouseID=\"1\"", "DefaultWarehouseID=\"5\""},
                                   {"WasteWarehouseID=\"2\"", "WasteWarehouseID=\"6\""},
                                   {"DefaultSupplierID=\"1\"", "DefaultSupplierID=\"9\""},
                                   {"TransSerial=\"CEN\"", "TransSerial=\"ZZZ\""}}) {
        restaurant.replace(restaurant.find(from), from.size(), to);
    }
    const std::vector<std::string> missing = {
        "Restaurante 'Centro': a série de documentos (TransSerial) 'ZZZ' não existe na retaguarda",
        "Restaurante 'Centro': o posto (WorkstationID) 7 não existe na retaguarda",
        "Restaurante 'Centro': o armazém (DefaultWarehouseID) 5 não existe na retaguarda",
        "Restaurante 'Centro': o armazém de quebras (WasteWarehouseID) 6 não existe na retaguarda",
        "Restaurante 'Centro': o fornecedor (DefaultSupplierID) 9 não existe na retaguarda"};
    const HostResult load = Run("settings load " + WriteSettings(Settings(restaurant)));
    EXPECT_EQ(load.exit, 0) << load.out;
    const HostResult validate = Run("validate");
    EXPECT_EQ(validate.exit, 1);
    const HostResult run = Run("execute");
    EXPECT_EQ(run.exit, 1) << run.out;
    for (const std::string& text : missing) {
        EXPECT_NE(load.err.find(text), std::string::npos) << load.err;
        EXPECT_NE(validate.err.find(text), std::string::npos) << validate.err;
        EXPECT_NE(run.err.find("kitra-host: " + text), std::string::npos) << run.err;
    }
    EXPECT_NE(run.err.find("'kitra-host workstation add 7 DESCRIÇÃO'"), std::string::npos) << run.err;
    EXPECT_EQ(run.out.find("A integrar Restaurante"), std::string::npos) << run.out;
    EXPECT_EQ(Run("log list").out, "");
    EXPECT_NE(Run("state").out.find("\nCentro\t2010-01-01 00:00:00\t2010-01-01 00:00:00\t"), std::string::npos);
    const HostResult check = Run("check");
    EXPECT_EQ(check.exit, 3);
    EXPECT_NE(check.out.find("Centro: ERRO: o posto (WorkstationID) 7 não existe na retaguarda"),
              std::string::npos)
        << check.out;

    for (const char* add : {"series add ZZZ Centro", "workstation add 7 Posto", "warehouse add 5 Loja",
                            "warehouse add 6 Quebras", "supplier add 9 Fornecedor"})
        ASSERT_EQ(Run(add).exit, 0) << add;
    EXPECT_EQ(Run("validate").exit, 0);
    const HostResult now = Run("execute");
    EXPECT_EQ(now.exit, 3) << now.out;  // it runs; the server is not there
    EXPECT_NE(now.out.find("A integrar Restaurante: Centro"), std::string::npos) << now.out;
}

// A run right after another, in the same second, would end in the second the last one logged
// and its log row would not be stored; it starts in the next second instead.
TEST_F(OperatorTest, ARunRightAfterAnotherStoresItsOwnLogRow) {
    ASSERT_EQ(Run("settings load " + WriteSettings(Settings(Restaurant("Centro")))).exit, 0);
    ASSERT_EQ(Run("execute").exit, 3);
    std::string last;
    {
        // The last run logged in this very second, as a run that has just ended.
        backoffice::BackOffice office(Data());
        const std::time_t start = std::time(nullptr);
        while (std::time(nullptr) == start) std::this_thread::sleep_for(std::chrono::milliseconds(5));
        char stamp[20];
        const std::time_t now = std::time(nullptr);
        std::strftime(stamp, sizeof stamp, "%Y-%m-%d %H:%M:%S", std::localtime(&now));
        last = stamp;
        office.GetDatabase().Exec("INSERT INTO Kitra2Log (RestaurantID, Contents, ImportDate) VALUES "
                                  "('Centro', 'antes', '" + last + "')");
    }
    const HostResult run = Run("execute");
    EXPECT_EQ(run.exit, 3) << run.out;
    EXPECT_EQ(run.err.find("não foi guardado"), std::string::npos) << run.err;
    for (const auto& entry : fs::directory_iterator(Data() / "logs"))
        ADD_FAILURE() << "left in the log folder: " << entry.path();
    const std::string list = Run("log list").out;
    const std::string newest = list.substr(list.find('\t') + 1, 19);
    EXPECT_GT(newest, last) << list;
    EXPECT_EQ(std::count(list.begin(), list.end(), '\n'), 3) << list;
}

// Runs whose log rows cannot be stored each keep theirs under a name of its own, also within
// one second.
TEST_F(OperatorTest, LogsThatCannotBeStoredKeepANameEachWithinOneSecond) {
    const std::string name = "Restaurante do Centro Historico";  // longer than the log table holds
    {
        backoffice::BackOffice office(Data());
        office.settingsStore.SaveText(backoffice::kSettingsKey1, backoffice::kSettingsKey2,
                                      Settings(Restaurant(name)));
    }
    for (int run = 0; run < 3; ++run) ASSERT_EQ(Run("execute --quiet").exit, 3);
    std::set<std::string> kept;
    for (const auto& entry : fs::directory_iterator(Data() / "logs")) {
        const std::string file = entry.path().filename().string();
        EXPECT_TRUE(file.starts_with(name) && file.ends_with("-NAO-GUARDADO.txt")) << file;
        kept.insert(file);
    }
    EXPECT_EQ(kept.size(), 3u);
}

}  // namespace
}  // namespace kitra
