// The import run end to end against a real temporary back office with a fixed clock.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "import/Importers.h"
#include "import/KitraExecutioner.h"
#include "log/DSOKitraLog.h"
#include "tests/hostsupport/TestBackOffice.h"

namespace kitra {
namespace {
namespace fs = std::filesystem;

const DateTime kMoment{2011, 3, 1, 9, 5, 7};
const std::string kNoServer =
    "## Erro ## Não foi possível estabelecer comunicação com o Servidor. Verifique as suas "
    "credenciais de acesso ou se o servidor está acessivel.";

class RunTest : public ::testing::Test {
protected:
    Restaurant MakeRestaurant(const std::string& name) {
        Restaurant r;
        r.Name = name;
        r.ServerName = "127.0.0.1";
        r.ServerPort = "1";  // nothing listens there
        r.ServerDBName = "restaurante";
        r.ServerUser = "kitra";
        r.ServerPassword = "segredo";
        r.ImportDateEntities = "2010-01-01 00:00:00";
        r.ImportDateTransactions = "2010-01-02 00:00:00";
        r.TransSerial = "EXT";
        return r;
    }

    void Store(const std::vector<Restaurant>& restaurants) {
        KitraConnectorSetting settings(*office.Services().utility);
        settings.DefaultTaxableGroup = 1;
        settings.TaxableGroupEquivalence = {{1, "23"}};
        for (const auto& r : restaurants) settings.Restaurants.Add(r);
        office.Services().settingsStore->Save(settings);
    }

    KitraConnectorSetting Stored() {
        KitraConnectorSetting settings(*office.Services().utility);
        EXPECT_TRUE(office.Services().settingsStore->Load(settings));
        return settings;
    }

    void Run() {
        KitraExecutioner engine(office.Services(), clock);
        engine.SetEventNotifier(office.notifier);
        engine.StartImport();
    }

    std::vector<KitraLog> LogRows() {
        DSOKitraLog log(office.Services());
        std::vector<KitraLog> rows;
        ado::Recordset rs = log.GetKitraLogRS();
        for (; !rs.Eof(); rs.MoveNext()) {
            rows.push_back(
                *log.GetLogInfo(rs["RestaurantID"].ToText(), rs["ImportDate"].ToDate(), true));
        }
        return rows;
    }

    bool Shown(const std::string& text) {
        return std::any_of(office.boxes.shown.begin(), office.boxes.shown.end(),
                           [&](const auto& box) { return box.text == text; });
    }

    bool Said(const std::string& text) {
        const auto& s = office.notifier->statuses;
        return std::find(s.begin(), s.end(), text) != s.end();
    }

    testing::TestBackOffice office;
    FixedClock clock{kMoment};
};

TEST_F(RunTest, NothingStoredDoesNothingAndSaysNothing) {
    Run();
    EXPECT_TRUE(office.boxes.shown.empty());
    EXPECT_TRUE(office.notifier->statuses.empty());
    EXPECT_FALSE(office.Services().schema->TableExists("Kitra2Log"));
    EXPECT_TRUE(office.LogFiles().empty());
}

TEST_F(RunTest, EmptyRestaurantList) {
    Store({});
    const std::string before = Stored().ToXML();
    Run();
    EXPECT_TRUE(office.LogFiles().empty());
    EXPECT_TRUE(office.Services().schema->TableExists("Kitra2Log"));
    EXPECT_TRUE(LogRows().empty());
    EXPECT_EQ(Stored().ToXML(), before);
    EXPECT_EQ(office.notifier->statuses,
              (std::vector<std::string>{" ", "Vai-se proceder à compactação da base de dados. ",
                                        "Este processo poderá demorar alguns minutos. Por favor aguarde..."}));
    ASSERT_EQ(office.boxes.shown.size(), 1u);
    EXPECT_EQ(office.boxes.shown[0].text, "A importação chegou ao fim.");
    EXPECT_EQ(office.boxes.shown[0].style, host::MessageStyle::Information);
}

// What each master-data importer logs when the restaurant's server cannot be reached: its
// section title after a blank line, the connection line and its count line.
std::string Unreachable(const std::string& section, const std::string& startText) {
    return "\r\n" + section + " - " + startText + "\r\n" + section + " - " + kNoServer + "\r\n" +
           section + " - Registos importados:0\r\n";
}

TEST_F(RunTest, ExactLogTextOfARestaurant) {
    Store({MakeRestaurant("Centro")});
    Run();
    const auto rows = LogRows();
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0].RestaurantID, "Centro");
    EXPECT_EQ(rows[0].ImportDate, kMoment);
    EXPECT_EQ(rows[0].Contents,
              " - # START # 01-03-2011 09:05:07 #\r\n"
              "Restaurantes - A integrar Restaurante: Centro\r\n"
              "Restaurantes - Last entity date import: '2010-01-01 00:00:00'\r\n"
              "Restaurantes - Last transactions date import: '2010-01-02 00:00:00'\r\n" +
                  Unreachable("Vendedores", "A importar Vendedores") +
                  Unreachable("Clientes", "A importar Clientes") +
                  Unreachable("Famílias", "A importar Famílias") +
                  Unreachable("SubFamílias", "A importar SubFamílias") +
                  Unreachable("Artigos", "A importar Artigos") +
                  Unreachable("Transacções", "A importar Transacções") +
                  Unreachable("Mov.Caixa", "A importar Movimentos Caixa") +
                  Unreachable("Recibos", "A importar Recibos") +
                  " - # END # 01-03-2011 09:05:07 #\r\n");
    // The file lived only during the import.
    EXPECT_TRUE(office.LogFiles().empty());
    // A failed connection is no error of the run: no boxes, the dates move and the run ends.
    ASSERT_EQ(office.boxes.shown.size(), 1u);
    EXPECT_EQ(office.boxes.shown[0].text, "A importação chegou ao fim.");
    const Restaurant after = *Stored().Restaurants.begin();
    EXPECT_EQ(after.ImportDateEntities, "2011-03-01 09:05:07");
    EXPECT_EQ(after.ImportDateTransactions, "2011-03-01 09:05:07");
    // The host heard each importer start; the connection line is only logged.
    for (const std::string text : {"A importar Vendedores", "A importar Clientes",
                                   "A importar Famílias", "A importar SubFamílias",
                                   "A importar Artigos", "A importar Transacções",
                                   "A importar Movimentos Caixa", "A importar Recibos"}) {
        EXPECT_TRUE(Said(text)) << text;
    }
    EXPECT_FALSE(Said(kNoServer));
}

TEST_F(RunTest, TheImportersRunInTheirOrder) {
    const std::vector<ImporterStep>& order = ImporterOrder();
    ASSERT_EQ(order.size(), 8u);
    const std::pair<const char*, ImporterFunction> importers[] = {
        {"ImportSalesmen", ImportSalesmen},       {"ImportCustomers", ImportCustomers},
        {"ImportFamilies", ImportFamilies},       {"ImportSubfamilies", ImportSubfamilies},
        {"ImportItems", ImportItems},             {"ImportSaleDocuments", ImportSaleDocuments},
        {"ImportCashMovements", ImportCashMovements}, {"ImportReceipts", ImportReceipts}};
    for (std::size_t i = 0; i < std::size(importers); ++i) {
        EXPECT_STREQ(order[i].name, importers[i].first);
        EXPECT_EQ(order[i].run, importers[i].second) << order[i].name;
        // The first five are master data; a failure of any later one is a transaction failure.
        EXPECT_EQ(order[i].masterData, i < 5) << order[i].name;
    }
}

TEST_F(RunTest, EachImporterReachesTheEndWhenTheServerCannotBeReached) {
    KitraConnectorSetting settings(*office.Services().utility);
    KitraExecutioner engine(office.Services(), clock);
    engine.UseSettings(settings);
    Restaurant restaurant = MakeRestaurant("Centro");
    engine.BeginRestaurant(restaurant.Name);
    ado::Connection connection;
    connection.SetConnectionString(
        "Driver={MySQL ODBC 5.1 Driver};Server=127.0.0.1;Database=restaurante; User=kitra;"
        "Password=segredo;Option=3;Port=1");
    connection.SetCursorLocation(ado::CursorLocationEnum::UseClient);
    engine.Count(Counter::Items) = 4;  // the count line shows the counter as it stands
    engine.Count(Counter::Receipts) = 3;

    // Outside a run the engine shows the failure as well.
    for (ImporterFunction importer :
         {ImportSalesmen, ImportCustomers, ImportFamilies, ImportSubfamilies, ImportItems,
          ImportSaleDocuments, ImportCashMovements, ImportReceipts}) {
        EXPECT_TRUE(importer(engine, connection, restaurant));
        EXPECT_EQ(connection.State(), ado::StateClosed);
    }
    EXPECT_EQ(engine.ErrorCount(), 0);
    EXPECT_EQ(engine.WarningCount(), 0);
    EXPECT_EQ(engine.StatusText(), "Registos importados:3");
    ASSERT_EQ(office.boxes.shown.size(), 8u);
    for (const auto& box : office.boxes.shown) {
        EXPECT_EQ(box.text, kNoServer);
        EXPECT_EQ(box.style, host::MessageStyle::Critical);
        EXPECT_EQ(box.title, "Erro Acesso Servidor.");
    }
    std::ifstream in(engine.LogFilePath(), std::ios::binary);
    const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    std::string items = Unreachable("Artigos", "A importar Artigos");
    items.replace(items.find("importados:0"), 12, "importados:4");
    std::string receipts = Unreachable("Recibos", "A importar Recibos");
    receipts.replace(receipts.find("importados:0"), 12, "importados:3");
    EXPECT_EQ(text, Unreachable("Vendedores", "A importar Vendedores") +
                        Unreachable("Clientes", "A importar Clientes") +
                        Unreachable("Famílias", "A importar Famílias") +
                        Unreachable("SubFamílias", "A importar SubFamílias") + items +
                        Unreachable("Transacções", "A importar Transacções") +
                        Unreachable("Mov.Caixa", "A importar Movimentos Caixa") + receipts);
}

TEST_F(RunTest, TwoRestaurantsGiveTwoLogsTwoSummariesAndNewDates) {
    Store({MakeRestaurant("Centro"), MakeRestaurant("Praia")});
    Run();
    const auto rows = LogRows();
    ASSERT_EQ(rows.size(), 2u);
    std::vector<std::string> names{rows[0].RestaurantID, rows[1].RestaurantID};
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (std::vector<std::string>{"Centro", "Praia"}));
    for (const auto& row : rows) {
        EXPECT_NE(row.Contents.find("A integrar Restaurante: " + row.RestaurantID), std::string::npos);
    }
    // The summaries, in order, with counters starting again at 0 for the second.
    for (const std::string name : {"Centro", "Praia"}) {
        const auto& s = office.notifier->statuses;
        auto at = std::find(s.begin(), s.end(), "Resumo Importação Restaurante: " + name);
        ASSERT_NE(at, s.end()) << name;
        ASSERT_GE(s.end() - at, 10);
        EXPECT_EQ(*(at - 1), "----------------");
        EXPECT_EQ(*(at + 1), "----------------");
        EXPECT_EQ(*(at + 2), " - Clientes: 0");
        EXPECT_EQ(*(at + 3), " - Vendedores: 0");
        EXPECT_EQ(*(at + 4), " - Famílias: 0");
        EXPECT_EQ(*(at + 5), " - SubFamílias: 0");
        EXPECT_EQ(*(at + 6), " - Artigos: 0");
        EXPECT_EQ(*(at + 7), " - Transacções: 0");
        EXPECT_EQ(*(at + 8), " - Mov.Caixa: 0");
        EXPECT_EQ(*(at + 9), " - Recibos: 0");
    }
    EXPECT_TRUE(Said("A integrar Restaurante: Centro"));
    EXPECT_TRUE(Said("A integrar Restaurante: Praia"));
    // Both dates of both restaurants moved to the present moment and were saved.
    const KitraConnectorSetting after = Stored();
    ASSERT_EQ(after.Restaurants.Count(), 2);
    for (const Restaurant& r : after.Restaurants) {
        EXPECT_EQ(r.ImportDateEntities, "2011-03-01 09:05:07");
        EXPECT_EQ(r.ImportDateTransactions, "2011-03-01 09:05:07");
    }
    EXPECT_TRUE(Shown("A importação chegou ao fim."));
    EXPECT_TRUE(office.LogFiles().empty());
}

TEST_F(RunTest, SameRestaurantTwiceInOneSecondKeepsTheFirstRowAndGoesOn) {
    Store({MakeRestaurant("Centro"), MakeRestaurant("Praia")});
    Run();
    Run();  // same fixed moment: every row collides and the run still ends
    EXPECT_EQ(LogRows().size(), 2u);
    EXPECT_EQ(std::count_if(office.boxes.shown.begin(), office.boxes.shown.end(),
                            [](const auto& b) { return b.text == "A importação chegou ao fim."; }),
              2);
}

TEST_F(RunTest, ErrorInsideTheRunEndsItAndKeepsNothing) {
    Store({MakeRestaurant("Centro"), MakeRestaurant("Praia")});
    const std::string before = Stored().ToXML();
    // The host defaults cannot be written: the first restaurant fails after its log started.
    office.Services().connection->Execute(host::SqlStatement("DROP TABLE places"));
    Run();
    const std::string handlerText =
        "## Erro ## Ocorreu um erro na importação no módulo de importação de restaurantes. - ";
    ASSERT_EQ(office.boxes.shown.size(), 1u);
    EXPECT_TRUE(office.boxes.shown[0].text.starts_with(handlerText)) << office.boxes.shown[0].text;
    EXPECT_EQ(office.boxes.shown[0].title, "Error");
    EXPECT_EQ(office.boxes.shown[0].style, host::MessageStyle::Information);
    // Nothing saved, no compaction, no second restaurant, no row; the log file stays.
    EXPECT_EQ(Stored().ToXML(), before);
    EXPECT_FALSE(Said("Vai-se proceder à compactação da base de dados. "));
    EXPECT_FALSE(Said("A integrar Restaurante: Praia"));
    EXPECT_TRUE(LogRows().empty());
    ASSERT_EQ(office.LogFiles(), (std::vector<std::string>{"Centro20110301_090507.txt"}));
    std::ifstream in(fs::path(office.Services().application->LogFolder()) / "Centro20110301_090507.txt",
                     std::ios::binary);
    const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    EXPECT_TRUE(text.starts_with(" - # START # 01-03-2011 09:05:07 #\r\n")) << text;
    EXPECT_NE(text.find("\r\nRestaurantes - " + handlerText), std::string::npos) << text;
    EXPECT_TRUE(text.ends_with("\r\n"));
}

TEST_F(RunTest, RestaurantNameCannotPlaceTheLogFileOutsideTheLogFolder) {
    Store({MakeRestaurant("../x/y")});
    Run();
    const auto rows = LogRows();
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0].RestaurantID, "../x/y");
    EXPECT_TRUE(rows[0].Contents.starts_with(" - # START #")) << rows[0].Contents;
    const fs::path logs = office.Services().application->LogFolder();
    EXPECT_FALSE(fs::exists(logs.parent_path() / "x"));
    EXPECT_FALSE(fs::exists(logs / ".." / "x"));
    EXPECT_TRUE(office.LogFiles().empty());
}

}  // namespace
}  // namespace kitra
