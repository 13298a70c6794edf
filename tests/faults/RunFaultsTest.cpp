// Whole import runs (kitra-host execute) against a restaurant server that fails in every way a
// network and a machine can fail: refused, wrong password, missing database, silent, killed
// while the importer waits for its rows and while it works through them, frozen and resumed.
// After each the back office must be intact, the log must say what happened, the failed
// importer's successors and the next restaurant must still have run, both restaurants' import
// dates must have moved to the run's moment, and the run must exit 3 naming the restaurant
// that failed on stderr, and only that one.
#include <gtest/gtest.h>

#include <thread>

#include "tests/faults/FaultRun.h"
#include "tests/support/SilentServer.h"

namespace kitra::test {
namespace {

class RunFaultsTest : public FaultRunTest {
protected:
    // What every fault must leave: a run that reached its end and names Centro alone, an
    // intact back office, both restaurants logged with their dates moved to the run's moment,
    // and Praia imported whole.
    void ExpectTheRunWentOn(const HostRun& run) {
        EXPECT_EQ(run.exit, 3) << run.out;
        EXPECT_NE(ErrorLineOf(run, "Centro"), "") << run.err;
        EXPECT_NE(run.err.find("kitra-host --data " + Data().string() +
                               " state set Centro --entities '2000-01-01 00:00:00'"),
                  std::string::npos)
            << run.err;
        // Praia's records left out are warnings (their line names it too), never errors.
        EXPECT_EQ(ErrorLineOf(run, "Praia"), "") << run.err;
        EXPECT_EQ(run.err.find("o restaurante 'Praia' teve erros"), std::string::npos) << run.err;
        EXPECT_NE(run.out.find("A importação chegou ao fim."), std::string::npos) << run.out;
        EXPECT_EQ(IntegrityCheck(), "ok");
        ExpectDatesWithin(DatesOf("Centro"), run, "Centro");
        ExpectDatesWithin(DatesOf("Praia"), run, "Praia");
        EXPECT_TRUE(LogFiles().empty());
        EXPECT_EQ(SummaryOf(run, "Praia"), Summary(expected));
        EXPECT_EQ(LogOf("Praia").find("## Erro ##"), std::string::npos) << LogOf("Praia");
        EXPECT_EQ(ItemsWithPrefix("P"), expected.items);
    }

    // Centro could not be reached at all: each importer said so and nothing came from it.
    void ExpectCentroUnreachable(const HostRun& run) {
        const std::string log = LogOf("Centro");
        EXPECT_EQ(Occurrences(log, kNoServer), 8u) << log;
        EXPECT_EQ(Occurrences(log, "## Erro ##"), 8u) << log;
        EXPECT_EQ(SummaryOf(run, "Centro"), Summary({}));
        EXPECT_EQ(ItemsWithPrefix("C"), 0);
        EXPECT_EQ(ErrorLineOf(run, "Centro"), "Vendedores - " + kNoServer) << run.err;
        EXPECT_NE(run.err.find("Para ver a razão dada pelo servidor ou pelo controlador ODBC:\n    "
                               "kitra-host --data " + Data().string() + " check\n"),
                  std::string::npos)
            << run.err;
    }
};

TEST_F(RunFaultsTest, RefusedConnection) {
    centro.ServerPort = "1";  // nothing listens there
    StoreSettings();
    const HostRun run = Execute();
    ExpectCentroUnreachable(run);
    ExpectTheRunWentOn(run);
}

TEST_F(RunFaultsTest, WrongPassword) {
    centro.ServerPassword = "nao-e-esta";
    StoreSettings();
    const HostRun run = Execute();
    ExpectCentroUnreachable(run);
    ExpectTheRunWentOn(run);
}

TEST_F(RunFaultsTest, MissingDatabase) {
    centro.ServerDBName = "nao_existe";
    StoreSettings();
    const HostRun run = Execute();
    ExpectCentroUnreachable(run);
    ExpectTheRunWentOn(run);
}

TEST_F(RunFaultsTest, SilentServer) {
    SilentServer silent;
    centro.ServerPort = std::to_string(silent.Port());
    StoreSettings();
    ::setenv("KITRA_CONNECTION_TIMEOUT", "1", 1);
    const HostRun run = Execute();
    ExpectCentroUnreachable(run);
    ExpectTheRunWentOn(run);
    // Eight importers, each giving up after a second; without the time-out it never ends.
    EXPECT_LT(run.seconds, 60.0);
}

TEST_F(RunFaultsTest, ServerKilledWhileTheImporterWaitsForItsRows) {
    StoreSettings();
    server.HoldTableLock(centroDatabase->Name(), "customers");
    std::thread striker([this] {
        if (server.WaitForStatementOnLock("customers")) server.Kill();
    });
    RestoreServerBeforePraia();
    // The statement waits for the lock far longer than the striker needs to see it.
    ::setenv("KITRA_COMMAND_TIMEOUT", "30", 1);
    const HostRun run = Execute();
    striker.join();

    const std::string log = LogOf("Centro");
    // The salesmen came before the crash and stay; the customers' import failed with the
    // driver's message; the six importers after it found no server.
    const auto summary = SummaryOf(run, "Centro");
    ASSERT_EQ(summary.size(), 8u) << run.out;
    EXPECT_EQ(summary[1], " - Vendedores: " + std::to_string(expected.salesmen));
    EXPECT_EQ(summary[0], " - Clientes: 0");
    EXPECT_NE(log.find("Clientes - ## Erro ## ao importar a tabela de clientes."), std::string::npos)
        << log;
    EXPECT_NE(log.find("Lost connection"), std::string::npos) << log;
    EXPECT_EQ(Occurrences(log, kNoServer), 6u) << log;
    EXPECT_TRUE(ErrorLineOf(run, "Centro").starts_with(
        "Clientes - ## Erro ## ao importar a tabela de clientes."))
        << run.err;
    EXPECT_EQ(ItemsWithPrefix("C"), 0);
    ExpectTheRunWentOn(run);
}

TEST_F(RunFaultsTest, ServerKilledWhileTheImporterWorksThroughItsRows) {
    StoreSettings();
    int customers = 0;
    RestoreServerBeforePraia([&](const std::string& line) {
        if (line.starts_with("Cliente: ") && ++customers == 3) server.Kill();
    });
    const HostRun run = Execute();

    const std::string log = LogOf("Centro");
    // The rows were read whole before the crash: every customer arrived, and the importers
    // after it found no server.
    const auto summary = SummaryOf(run, "Centro");
    ASSERT_EQ(summary.size(), 8u) << run.out;
    EXPECT_EQ(summary[0], " - Clientes: " + std::to_string(expected.customers));
    EXPECT_EQ(summary[1], " - Vendedores: " + std::to_string(expected.salesmen));
    EXPECT_EQ(summary[2], " - Famílias: 0");
    EXPECT_EQ(Occurrences(log, kNoServer), 6u) << log;
    EXPECT_EQ(Count("SELECT COUNT(*) FROM customers WHERE CustomerID > 0"), expected.customers);
    EXPECT_EQ(ItemsWithPrefix("C"), 0);
    EXPECT_TRUE(ErrorLineOf(run, "Centro").ends_with(" - " + kNoServer)) << run.err;
    ExpectTheRunWentOn(run);
}

TEST_F(RunFaultsTest, ServerFrozenWhileTheImporterWaitsThenResumed) {
    StoreSettings();
    server.HoldTableLock(centroDatabase->Name(), "customers");
    std::thread striker([this] {
        if (server.WaitForStatementOnLock("customers")) server.Freeze();
    });
    RestoreServerBeforePraia();  // resumes it
    // The freeze comes while the statement waits for the lock, well within its time-out.
    ::setenv("KITRA_COMMAND_TIMEOUT", "5", 1);
    ::setenv("KITRA_CONNECTION_TIMEOUT", "1", 1);
    const HostRun run = Execute();
    striker.join();

    const std::string log = LogOf("Centro");
    // The customers' statement gave up after the command time-out, the next six importers
    // after the connection time-out each.
    const auto summary = SummaryOf(run, "Centro");
    ASSERT_EQ(summary.size(), 8u) << run.out;
    EXPECT_EQ(summary[1], " - Vendedores: " + std::to_string(expected.salesmen));
    EXPECT_EQ(summary[0], " - Clientes: 0");
    EXPECT_NE(log.find("Clientes - ## Erro ## ao importar a tabela de clientes."), std::string::npos)
        << log;
    EXPECT_NE(log.find("Lost connection"), std::string::npos) << log;
    EXPECT_EQ(Occurrences(log, kNoServer), 6u) << log;
    EXPECT_TRUE(ErrorLineOf(run, "Centro").starts_with("Clientes - ## Erro ##")) << run.err;
    EXPECT_LT(run.seconds, 90.0);
    ExpectTheRunWentOn(run);
}

}  // namespace
}  // namespace kitra::test
