#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "tests/cli/KitraHostRun.h"

namespace kitra {
namespace {
namespace fs = std::filesystem;

using testing::KitraHostTest;
using Result = testing::HostResult;

const std::string kOneRestaurant =
    "<KitraConnectorSetting InvoiceTransDocument=\"FAC\" DefaultTenderPayment=\"1\" "
    "DefaultTaxableGroup=\"1\"><Restaurants><Restaurant Name=\"Centro\" ServerName=\"127.0.0.1\" "
    "ServerPort=\"1\" ServerDBName=\"r\" ServerUser=\"u\" ServerPassword=\"p\" "
    "ImportDateEntities=\"2010-01-01 00:00:00\" ImportDateTransactions=\"2010-01-01 00:00:00\"/>"
    "</Restaurants><TenderEquivalence/><TaxableGroupEquivalence/></KitraConnectorSetting>";

// Settings an import accepts, of one restaurant on a server that is not there.
const std::string kRunnableRestaurant =
    "<KitraConnectorSetting InvoiceTransDocument=\"VB\" CreditTransDocument=\"FAC\" "
    "StockTransDocument=\"GT\" CashEntranceTransDocument=\"EC\" CashWithdrawalTransDocument=\"SC\" "
    "CustomerPaymentTransDocument=\"PCL\" CustomerPaymentAccountDocument=\"ADC\" "
    "DefaultTenderPayment=\"1\" DefaultTaxableGroup=\"1\"><Restaurants><Restaurant Name=\"Centro\" "
    "ServerName=\"127.0.0.1\" ServerPort=\"1\" ServerDBName=\"r\" ServerUser=\"u\" ServerPassword=\"p\" "
    "WorkstationID=\"1\" DefaultWarehouseID=\"1\" DefaultSupplierID=\"1\" TransSerial=\"EXT\" "
    "ImportDateEntities=\"2010-01-01 00:00:00\" ImportDateTransactions=\"2010-01-01 00:00:00\"/>"
    "</Restaurants><TenderEquivalence/><TaxableGroupEquivalence/></KitraConnectorSetting>";

TEST_F(KitraHostTest, InfoShowsTheConnectorsIdentity) {
    const Result r = Run("info");
    EXPECT_EQ(r.exit, 0) << r.out;
    EXPECT_NE(r.out.find("ConnectorID: Quarn.Mercatill.Connector.Kitra\n"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("Description: Integrador KitranaII\n"), std::string::npos);
    EXPECT_NE(r.out.find("\nFunctionalLevel: SQL09\n"), std::string::npos);
    EXPECT_NE(r.out.find("\nHasUISetting: True\nHasUITrace: True\nHandleImportExport: False\n"
                         "HandleReExport: False\n"),
              std::string::npos);
    EXPECT_NE(r.out.find("\nVersion: "), std::string::npos);
}

TEST_F(KitraHostTest, ACommandsHelpIsThatCommandsOwn) {
    const Result help = Run("state --help");
    EXPECT_EQ(help.exit, 0);
    EXPECT_TRUE(help.out.starts_with("Uso: kitra-host [--data PASTA] state")) << help.out;
    EXPECT_NE(help.out.find("Todos os comandos, as opções e os códigos de saída: kitra-host --help"),
              std::string::npos)
        << help.out;
    EXPECT_EQ(help.out.find("Comandos:"), std::string::npos) << help.out;  // not the whole help
    EXPECT_EQ(Run("settings --help").out.find("Uso: kitra-host [--data PASTA] settings load"), 0u);
    // An unknown command's --help is the whole help.
    EXPECT_NE(Run("nenhum --help").out.find("Comandos:"), std::string::npos);
}

TEST_F(KitraHostTest, SettingsLoadShowDelete) {
    EXPECT_EQ(Run("settings show").exit, 1);
    const Result load = Run("settings load " + WriteSettings("\n  " + kOneRestaurant + "\n"));
    EXPECT_EQ(load.exit, 0) << load.out;
    const Result show = Run("settings show");
    EXPECT_EQ(show.exit, 0);
    EXPECT_TRUE(show.out.starts_with("<KitraConnectorSetting InvoiceTransDocument=\"FAC\" "
                                     "CreditTransDocument=\"\""))
        << show.out;
    EXPECT_NE(show.out.find("<Restaurant Name=\"Centro\""), std::string::npos);
    EXPECT_EQ(Run("settings delete").exit, 2);  // the import dates would go too: --yes first
    EXPECT_EQ(Run("settings show").exit, 0);
    EXPECT_EQ(Run("settings delete --yes").exit, 0);
    EXPECT_EQ(Run("settings show").exit, 1);
}

TEST_F(KitraHostTest, UsageMistakesAndMissingFiles) {
    EXPECT_EQ(Run("settings load " + Quote((folder / "none.xml").string())).exit, 1);
    EXPECT_EQ(Run("settings").exit, 2);
    EXPECT_EQ(Run("settings frobnicate").exit, 2);
    EXPECT_EQ(Run("info extra").exit, 2);
    EXPECT_EQ(Run("nonsense").exit, 2);
    EXPECT_EQ(Run("log show Centro ontem").exit, 2);
    const Result help = Run("--help");
    EXPECT_EQ(help.exit, 0);
    for (const char* command : {"init", "info", "settings", "validate", "config", "check", "execute",
                                "state", "log", "trace", "reset-data", "register", "unregister"}) {
        EXPECT_NE(help.out.find(std::string("\n  ") + command), std::string::npos) << command;
    }
}

TEST_F(KitraHostTest, ValidateNeedsStoredSettings) {
    EXPECT_EQ(Run("validate").exit, 1);
    ASSERT_EQ(Run("settings load " + WriteSettings(kRunnableRestaurant)).exit, 0);
    const Result valid = Run("validate");
    EXPECT_EQ(valid.exit, 0) << valid.out;
    EXPECT_EQ(valid.out, "As configurações são válidas.\n");
}

// Every failing rule of the settings dialog's validation is printed, in the dialog's order.
TEST_F(KitraHostTest, ValidatePrintsEveryFailingRule) {
    ASSERT_EQ(Run("settings load " + WriteSettings(kOneRestaurant)).exit, 0);
    const Result r = Run("validate");
    EXPECT_EQ(r.exit, 1);
    const auto credit = r.out.find("Seleccione um valor em Documento de Vendas a Crédito:\n");
    const auto stock = r.out.find("Seleccione um valor em Documento de Guia de Transporte:\n");
    const auto series = r.out.find("As séries usadas na integração de dados");
    EXPECT_NE(credit, std::string::npos) << r.out;
    EXPECT_NE(stock, std::string::npos);
    EXPECT_LT(credit, stock);
    EXPECT_EQ(r.out.find("Seleccione um valor em Documento de Vendas:"), std::string::npos);  // "FAC" is known
    EXPECT_EQ(series, std::string::npos);  // its series is empty: not another kind
    EXPECT_NE(r.out.find("As configurações não são válidas.\n"), std::string::npos);
}

TEST_F(KitraHostTest, ExecuteWithoutSettingsSaysSoOnStderr) {
    const Result r = Run("execute");
    EXPECT_EQ(r.exit, 1) << r.out;
    EXPECT_EQ(r.out.find("A importação chegou ao fim."), std::string::npos);
    EXPECT_NE(r.err.find("não há configurações guardadas"), std::string::npos) << r.err;
}

TEST_F(KitraHostTest, ExecuteThenLogListShowDelete) {
    ASSERT_EQ(Run("settings load " + WriteSettings(kRunnableRestaurant)).exit, 0);
    const Result run = Run("execute");
    EXPECT_EQ(run.exit, 3) << run.out;  // nothing listens on port 1
    EXPECT_NE(run.out.find("A integrar Restaurante: Centro\n"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("Resumo Importação Restaurante: Centro\n"), std::string::npos);
    EXPECT_NE(run.out.find("A importação chegou ao fim."), std::string::npos);
    // Not a terminal: plain lines only.
    EXPECT_EQ(run.out.find('\r'), std::string::npos);
    EXPECT_EQ(run.out.find('\033'), std::string::npos);

    const Result list = Run("log list");
    ASSERT_EQ(list.exit, 0);
    ASSERT_TRUE(list.out.starts_with("Centro\t")) << list.out;
    const std::string when = list.out.substr(7, 19);

    const Result show = Run("log show Centro " + Quote(when));
    EXPECT_EQ(show.exit, 0);
    EXPECT_TRUE(show.out.starts_with(" - # START # ")) << show.out;
    EXPECT_NE(show.out.find("\r\nRestaurantes - A integrar Restaurante: Centro\r\n"), std::string::npos);

    // The list's third column: the log's error and warning lines. The server cannot be reached,
    // so every importer logs one error line.
    int errors = 0;
    for (std::size_t at = show.out.find("## Erro ##"); at != std::string::npos;
         at = show.out.find("## Erro ##", at + 1)) {
        ++errors;
    }
    ASSERT_GT(errors, 1);
    EXPECT_EQ(list.out, "Centro\t" + when + "\t" + std::to_string(errors) + " erros, 0 avisos\n");

    // The newest log, of all or of one restaurant, without its moment.
    EXPECT_EQ(Run("log show latest").out, show.out);
    EXPECT_EQ(Run("log show Centro").out, show.out);
    const Result none = Run("log show Praia");
    EXPECT_EQ(none.exit, 1);
    EXPECT_NE(none.out.find("Não existe registo de log do restaurante 'Praia'."), std::string::npos);

    EXPECT_EQ(Run("log show Praia " + Quote(when)).exit, 1);
    EXPECT_EQ(Run("log delete Centro " + Quote(when)).exit, 0);
    EXPECT_EQ(Run("log list").out, "");
    EXPECT_EQ(Run("log delete Centro " + Quote(when)).exit, 1);
}

TEST_F(KitraHostTest, LogShowLatestOfAnEmptyLogSaysSo) {
    const Result r = Run("log show latest");
    EXPECT_EQ(r.exit, 1);
    EXPECT_NE(r.out.find("O log de importações está vazio."), std::string::npos) << r.out;
}

// The log window needs a screen; without one the command says so instead of failing obscurely.
TEST_F(KitraHostTest, TraceWithoutAScreenSaysWhy) {
    const Result r = Run("trace", "env -u DISPLAY -u WAYLAND_DISPLAY -u QT_QPA_PLATFORM ");
    EXPECT_EQ(r.exit, 1);
    EXPECT_NE(r.out.find("Não é possível abrir janelas: não há ecrã disponível"), std::string::npos) << r.out;
    EXPECT_EQ(Run("trace extra").exit, 2);
    const Result config = Run("config", "env -u DISPLAY -u WAYLAND_DISPLAY -u QT_QPA_PLATFORM ");
    EXPECT_EQ(config.exit, 1);
    EXPECT_NE(config.out.find("Não é possível abrir janelas: não há ecrã disponível"), std::string::npos);
}

TEST_F(KitraHostTest, ResetDataEmptiesTheLog) {
    ASSERT_EQ(Run("settings load " + WriteSettings(kRunnableRestaurant)).exit, 0);
    ASSERT_EQ(Run("execute").exit, 3);
    ASSERT_NE(Run("log list").out, "");
    EXPECT_EQ(Run("reset-data").exit, 0);
    EXPECT_EQ(Run("log list").out, "");
}

TEST_F(KitraHostTest, RegisterAndUnregister) {
    const Result reg = Run("register");
    EXPECT_EQ(reg.exit, 0) << reg.out;
    std::ifstream in(folder / "registry");
    std::string line;
    ASSERT_TRUE(std::getline(in, line));
    EXPECT_TRUE(line.starts_with("{3F6E9A24-71C8-4D5B-A0E2-8B9C4D17F5A6}\tPOSConnectorKitra.KitraConnector\t/"))
        << line;
    EXPECT_TRUE(line.ends_with("POSConnectorKitra.so")) << line;
    // The back office's module beside it, the business layer's class, is registered with it.
    ASSERT_TRUE(std::getline(in, line));
    EXPECT_TRUE(line.starts_with("{1C192219-07BF-4A43-95DD-552B008C5A9D}\tKitraBackOffice.BusinessLayer\t/"))
        << line;
    EXPECT_TRUE(line.ends_with("/KitraBackOffice.so")) << line;
    EXPECT_NE(reg.out.find("KitraBackOffice.so"), std::string::npos) << reg.out;
    EXPECT_EQ(Run("info").exit, 0);  // found through the registry now
    EXPECT_EQ(Run("unregister").exit, 0);
    std::ifstream after(folder / "registry");
    EXPECT_FALSE(std::getline(after, line));
}

}  // namespace
}  // namespace kitra
