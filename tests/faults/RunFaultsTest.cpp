// Whole import runs against a restaurant server that fails in every way a network and a
// machine can fail: refused, wrong password, missing database, silent, killed while the
// importer waits for its rows and while it works through them, frozen and resumed. After each
// the back office must be intact, the log must say what happened, the failed importer's
// successors and the next restaurant must still have run, and both restaurants' import dates
// must have moved as a run moves them.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <thread>

#include "backoffice/BackOffice.h"
#include "import/KitraExecutioner.h"
#include "log/DSOKitraLog.h"
#include "tests/faults/FaultServer.h"
#include "tests/hostsupport/TestBackOffice.h"
#include "tests/support/ScratchDatabase.h"
#include "tests/support/SilentServer.h"

namespace kitra {
namespace {

using test::FaultServer;
using test::ScratchDatabase;
using test::SilentServer;
using SteadyClock = std::chrono::steady_clock;

constexpr DateTime kMoment{2025, 3, 1, 8, 30, 0};
constexpr const char* kMomentText = "2025-03-01 08:30:00";
const std::string kNoServer =
    "## Erro ## Não foi possível estabelecer comunicação com o Servidor. Verifique as suas "
    "credenciais de acesso ou se o servidor está acessivel.";

// The engine's notifications, kept, with a hook that lets a test strike at a given moment.
class StrikingNotifier final : public host::IEventNotifier {
public:
    void NotifyStatus(const std::string& text) override {
        statuses.push_back(text);
        if (onStatus) onStatus(text);
    }
    void NotifyProgress(long position, long total, const std::string& text) override {
        if (onProgress) onProgress(position, total, text);
    }

    std::vector<std::string> statuses;
    std::function<void(const std::string&)> onStatus;
    std::function<void(long, long, const std::string&)> onProgress;
};

// What a restaurant database holds that the master-data import brings over.
struct Counts {
    int salesmen = 0, customers = 0, families = 0, subfamilies = 0, items = 0;
};

Counts CountsOf(const ScratchDatabase& database) {
    const auto count = [&](const std::string& sql) { return std::stoi(database.QueryValue(sql)); };
    Counts c;
    c.salesmen = count("SELECT COUNT(*) FROM salesmans WHERE RecordDeleted = 0 AND SalesmanID > 0");
    c.customers = count("SELECT COUNT(*) FROM customers WHERE RecordDeleted = 0 AND CustomerID > 0");
    c.families = count("SELECT COUNT(*) FROM families WHERE RecordDeleted = 0");
    c.subfamilies = count(
        "SELECT COUNT(*) FROM subfamilies s JOIN families f ON f.uid = s.FamilyUID"
        " WHERE s.RecordDeleted = 0 AND f.RecordDeleted = 0");
    c.items = count(
        "SELECT COUNT(*) FROM plus pl JOIN properties p ON pl.PropertyUID = p.UID"
        " JOIN taxes tx ON tx.uid = p.ItemTaxID1 JOIN subfamilies s ON s.uid = pl.SubFamilyID"
        " JOIN families f ON f.uid = s.FamilyUID"
        " WHERE pl.RecordDeleted = 0 AND s.RecordDeleted = 0 AND f.RecordDeleted = 0");
    return c;
}

std::vector<std::string> Summary(const Counts& c) {
    return {" - Clientes: " + std::to_string(c.customers),
            " - Vendedores: " + std::to_string(c.salesmen),
            " - Famílias: " + std::to_string(c.families),
            " - SubFamílias: " + std::to_string(c.subfamilies),
            " - Artigos: " + std::to_string(c.items),
            " - Transacções: 0",
            " - Mov.Caixa: 0",
            " - Recibos: 0"};
}

std::size_t Occurrences(const std::string& text, const std::string& part) {
    std::size_t n = 0;
    for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++n;
    return n;
}

class RunFaultsTest : public ::testing::Test {
protected:
    void SetUp() override {
        centroDatabase = std::make_unique<ScratchDatabase>("faults_centro", server.Info());
        praiaDatabase = std::make_unique<ScratchDatabase>("faults_praia", server.Info());
        for (const auto* database : {centroDatabase.get(), praiaDatabase.get()}) {
            database->LoadRestaurantSchema();
            database->LoadGeneratedData({"--size", "tiny", "--seed", "5"});
        }
        centro = On(*centroDatabase, "Centro", "C");
        praia = On(*praiaDatabase, "Praia", "P");
        expected = CountsOf(*praiaDatabase);
    }

    void TearDown() override {
        server.ReleaseLock();
        server.Ensure();  // so that the scratch databases can be dropped
        centroDatabase.reset();
        praiaDatabase.reset();
    }

    Restaurant On(const ScratchDatabase& database, const std::string& name,
                  const std::string& itemPrefix) {
        Restaurant r;
        r.Name = name;
        r.ServerName = server.Info().host;
        r.ServerPort = std::to_string(server.Info().port);
        r.ServerDBName = database.Name();
        r.ServerUser = server.Info().user;
        r.ServerPassword = server.Info().password;
        r.ItemIDPrefix = itemPrefix;
        r.DefaultSupplierID = 1;
        r.TransSerial = "EXT";
        r.ImportDateEntities = "2000-01-01 00:00:00";
        r.ImportDateTransactions = "2000-01-01 00:00:00";
        return r;
    }

    // Runs the import of Centro, then Praia, with short time-outs; returns its seconds.
    double Run(long connectionSeconds = 2, long commandSeconds = 2) {
        KitraConnectorSetting settings(*Host().utility);
        settings.TaxableGroupEquivalence = {{1, "23"}, {2, "13"}, {3, "6"}};
        settings.Restaurants.Add(centro);
        settings.Restaurants.Add(praia);
        Host().settingsStore->Save(settings);

        KitraExecutioner engine(Host(), clock);
        engine.SetConnectionTimeouts(connectionSeconds, commandSeconds);
        engine.SetEventNotifier(notifier);
        const SteadyClock::time_point start = SteadyClock::now();
        engine.StartImport();
        return std::chrono::duration<double>(SteadyClock::now() - start).count();
    }

    // Brings the server back when Praia's turn comes.
    void RestoreServerBeforePraia() {
        notifier->onStatus = [this](const std::string& text) {
            if (text == "A integrar Restaurante: Praia") server.Ensure();
        };
    }

    std::string LogOf(const std::string& name) {
        DSOKitraLog log(Host());
        const auto row = log.GetLogInfo(name, kMoment, true);
        return row ? row->Contents : "(no log row)";
    }

    std::vector<std::string> SummaryOf(const std::string& name) const {
        const auto& s = notifier->statuses;
        const auto at = std::find(s.begin(), s.end(), "Resumo Importação Restaurante: " + name);
        if (at == s.end() || s.end() - at < 10) return {};
        return std::vector<std::string>(at + 2, at + 10);
    }

    int ItemsWithPrefix(const std::string& prefix) const {
        const auto items = Host().items->List();
        return static_cast<int>(std::count_if(items.begin(), items.end(), [&](const host::Item& i) {
            return i.ItemID.rfind(prefix, 0) == 0;
        }));
    }

    std::string IntegrityCheck() const {
        const std::string path = (office.Folder() / backoffice::kBackOfficeFileName).string();
        sqlite3* db = nullptr;
        std::string result = "cannot open";
        if (sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READONLY, nullptr) == SQLITE_OK) {
            sqlite3_stmt* statement = nullptr;
            result.clear();
            sqlite3_prepare_v2(db, "PRAGMA integrity_check", -1, &statement, nullptr);
            while (sqlite3_step(statement) == SQLITE_ROW) {
                result += reinterpret_cast<const char*>(sqlite3_column_text(statement, 0));
            }
            sqlite3_finalize(statement);
        }
        sqlite3_close(db);
        return result;
    }

    // What every fault must leave: a run that reached its end, an intact back office, both
    // restaurants logged with their dates moved to the run's moment, and Praia imported whole.
    void ExpectTheRunWentOn() {
        EXPECT_EQ(IntegrityCheck(), "ok");
        ASSERT_FALSE(office.boxes.shown.empty());
        EXPECT_EQ(office.boxes.shown.back().text, "A importação chegou ao fim.");
        KitraConnectorSetting stored(*Host().utility);
        ASSERT_TRUE(Host().settingsStore->Load(stored));
        ASSERT_EQ(stored.Restaurants.Count(), 2);
        for (const Restaurant& r : stored.Restaurants) {
            EXPECT_EQ(r.ImportDateEntities, kMomentText) << r.Name;
            EXPECT_EQ(r.ImportDateTransactions, kMomentText) << r.Name;
        }
        EXPECT_TRUE(office.LogFiles().empty());
        EXPECT_EQ(SummaryOf("Praia"), Summary(expected));
        EXPECT_EQ(LogOf("Praia").find("## Erro ##"), std::string::npos) << LogOf("Praia");
        EXPECT_EQ(ItemsWithPrefix("P"), expected.items);
    }

    // Centro could not be reached at all: each importer said so and nothing came from it.
    void ExpectCentroUnreachable() {
        const std::string log = LogOf("Centro");
        EXPECT_EQ(Occurrences(log, kNoServer), 8u) << log;
        EXPECT_EQ(Occurrences(log, "## Erro ##"), 8u) << log;
        EXPECT_EQ(SummaryOf("Centro"), Summary({}));
        EXPECT_EQ(ItemsWithPrefix("C"), 0);
    }

    const host::HostServices& Host() const { return office.Services(); }

    FaultServer server;
    std::unique_ptr<ScratchDatabase> centroDatabase, praiaDatabase;
    Restaurant centro, praia;
    Counts expected;
    testing::TestBackOffice office;
    std::shared_ptr<StrikingNotifier> notifier = std::make_shared<StrikingNotifier>();
    FixedClock clock{kMoment};
};

TEST_F(RunFaultsTest, RefusedConnection) {
    centro.ServerPort = "1";  // nothing listens there
    Run();
    ExpectCentroUnreachable();
    ExpectTheRunWentOn();
}

TEST_F(RunFaultsTest, WrongPassword) {
    centro.ServerPassword = "nao-e-esta";
    Run();
    ExpectCentroUnreachable();
    ExpectTheRunWentOn();
}

TEST_F(RunFaultsTest, MissingDatabase) {
    centro.ServerDBName = "nao_existe";
    Run();
    ExpectCentroUnreachable();
    ExpectTheRunWentOn();
}

TEST_F(RunFaultsTest, SilentServer) {
    SilentServer silent;
    centro.ServerPort = std::to_string(silent.Port());
    const double seconds = Run(1, 1);
    ExpectCentroUnreachable();
    ExpectTheRunWentOn();
    // Eight importers, each giving up after a second; without the time-out it never ends.
    EXPECT_LT(seconds, 60.0);
}

TEST_F(RunFaultsTest, ServerKilledWhileTheImporterWaitsForItsRows) {
    server.HoldTableLock(centroDatabase->Name(), "customers");
    std::thread striker([this] {
        if (server.WaitForStatementOnLock("customers")) server.Kill();
    });
    RestoreServerBeforePraia();
    // The statement waits for the lock far longer than the striker needs to see it.
    Run(2, 30);
    striker.join();

    const std::string log = LogOf("Centro");
    // The salesmen came before the crash and stay; the customers' import failed with the
    // driver's message; the six importers after it found no server.
    EXPECT_EQ(SummaryOf("Centro")[1], " - Vendedores: " + std::to_string(expected.salesmen));
    EXPECT_EQ(SummaryOf("Centro")[0], " - Clientes: 0");
    EXPECT_NE(log.find("Clientes - ## Erro ## ao importar a tabela de clientes."), std::string::npos)
        << log;
    EXPECT_NE(log.find("Lost connection"), std::string::npos) << log;
    EXPECT_EQ(Occurrences(log, kNoServer), 6u) << log;
    EXPECT_EQ(ItemsWithPrefix("C"), 0);
    ExpectTheRunWentOn();
}

TEST_F(RunFaultsTest, ServerKilledWhileTheImporterWorksThroughItsRows) {
    bool centrosTurn = true;
    notifier->onStatus = [&](const std::string& text) {
        if (text == "A integrar Restaurante: Praia") {
            centrosTurn = false;
            server.Ensure();
        }
    };
    notifier->onProgress = [&](long position, long, const std::string& text) {
        if (centrosTurn && text == "A importar Clientes" && position == 3) server.Kill();
    };
    Run();

    const std::string log = LogOf("Centro");
    // The rows were read whole before the crash: every customer arrived, and the importers
    // after it found no server.
    const auto summary = SummaryOf("Centro");
    ASSERT_EQ(summary.size(), 8u);
    EXPECT_EQ(summary[0], " - Clientes: " + std::to_string(expected.customers));
    EXPECT_EQ(summary[1], " - Vendedores: " + std::to_string(expected.salesmen));
    EXPECT_EQ(summary[2], " - Famílias: 0");
    EXPECT_EQ(Occurrences(log, kNoServer), 6u) << log;
    EXPECT_EQ(ItemsWithPrefix("C"), 0);
    ExpectTheRunWentOn();
}

TEST_F(RunFaultsTest, ServerFrozenWhileTheImporterWaitsThenResumed) {
    server.HoldTableLock(centroDatabase->Name(), "customers");
    std::thread striker([this] {
        if (server.WaitForStatementOnLock("customers")) server.Freeze();
    });
    RestoreServerBeforePraia();  // resumes it
    // The freeze comes while the statement waits for the lock, well within its time-out.
    const double seconds = Run(2, 5);
    striker.join();

    const std::string log = LogOf("Centro");
    // The customers' statement gave up after the command time-out, the next six importers
    // after the connection time-out each.
    EXPECT_EQ(SummaryOf("Centro")[1], " - Vendedores: " + std::to_string(expected.salesmen));
    EXPECT_EQ(SummaryOf("Centro")[0], " - Clientes: 0");
    EXPECT_NE(log.find("Clientes - ## Erro ## ao importar a tabela de clientes."), std::string::npos)
        << log;
    EXPECT_NE(log.find("Lost connection"), std::string::npos) << log;
    EXPECT_EQ(Occurrences(log, kNoServer), 6u) << log;
    EXPECT_LT(seconds, 90.0);
    ExpectTheRunWentOn();
}

}  // namespace
}  // namespace kitra
