// The restaurant server failing inside a document: killed while a document's lines are being
// fetched, frozen while its payments are, and killed while the lines are being read ahead. The document being built is never saved, so the back
// office holds no half document (a header without its lines, lines without their payments);
// the documents saved before it are whole; and once the dates are rewound, the next run imports
// every document whole.
#include <gtest/gtest.h>

#include <functional>
#include <thread>

#include "tests/faults/FaultRun.h"

namespace kitra::test {
namespace {

constexpr const char* kDocumentError =
    "Transacções - ## Erro ## ao importar a tabela de Transacções. Transacção: ";

class DocumentFaultsTest : public FaultRunTest {
protected:
    // At the first line of Centro's turn for which `now` is true, holds a lock on the
    // restaurant's `table`, so that the next statement on it waits; `strike` then kills or
    // freezes the server while it waits.
    void StrikeAt(std::function<bool(const std::string&)> now, const std::string& table,
                  void (FaultServer::*strike)()) {
        RestoreServerBeforePraia([this, now, table, strike](const std::string& line) {
            if (line == "A integrar Restaurante: Praia") centrosTurn_ = false;
            if (!centrosTurn_ || striker_.joinable() || !now(line)) return;
            server.HoldTableLock(centroDatabase->Name(), table);
            striker_ = std::thread([this, table, strike] {
                if (server.WaitForStatementOnLock(table)) (server.*strike)();
            });
        });
    }

    void JoinStriker() {
        if (striker_.joinable()) striker_.join();
    }
    // What the faulted run must leave: Centro's documents importer ended at the document it
    // was building, every document saved before it is whole, nothing of it is there, the two
    // importers after it found no server; Praia imported whole; the dates moved, as they do
    // after every run that reaches its end; exit 3 naming Centro.
    void ExpectNoHalfDocument(const HostRun& run) {
        ExpectCentrosDocumentsEndedByTheLostServer(run);
        const std::size_t saved = ExpectSomeDocumentsEachWhole("CEN");
        EXPECT_EQ(SummaryOf(run, "Centro").at(5), " - Transacções: " + std::to_string(saved));
    }

    // What every fault inside Centro's documents leaves, whatever it found saved: the
    // importer's one error line with the lost link, no server for the two importers after it,
    // Praia imported whole, the dates moved, exit 3 naming Centro.
    void ExpectCentrosDocumentsEndedByTheLostServer(const HostRun& run) {
        server.ReleaseLock();  // for the run without faults that shows what whole is
        EXPECT_EQ(run.exit, 3) << run.out << run.err;
        EXPECT_TRUE(ErrorLineOf(run, "Centro").starts_with(kDocumentError)) << run.err;
        EXPECT_EQ(ErrorLineOf(run, "Praia"), "") << run.err;
        EXPECT_EQ(IntegrityCheck(), "ok");
        const std::string log = LogOf("Centro");
        EXPECT_EQ(Occurrences(log, kDocumentError), 1u) << log;
        EXPECT_NE(log.find("Lost connection"), std::string::npos) << log;
        EXPECT_EQ(Occurrences(log, kNoServer), 2u) << log;
        EXPECT_EQ(Orphans(), 0);
        EXPECT_EQ(DocumentsOf(Data(), "PRA"), ReferenceDocuments("PRA"));
        ExpectDatesWithin(DatesOf("Centro"), run, "Centro");
        ExpectDatesWithin(DatesOf("Praia"), run, "Praia");
    }

    // Rewinds Centro's transactions date as the run told to, and runs again without a fault.
    void ExpectTheNextRunImportsEveryDocumentWhole() {
        onLine = nullptr;
        NextSecond();
        ASSERT_EQ(Host({"state", "set", "Centro", "--transactions", "2000-01-01 00:00:00"}), 0);
        const HostRun again = Execute();
        EXPECT_EQ(again.exit, 0) << again.out << again.err;
        EXPECT_EQ(IntegrityCheck(), "ok");
        EXPECT_EQ(DocumentsOf(Data(), "CEN"), ReferenceDocuments("CEN"));
        EXPECT_EQ(Orphans(), 0);
    }

    // The whole story: the run with the strike, what it left, and the next run.
    void RunStrikingInsideADocument(const std::string& table, void (FaultServer::*strike)(),
                                    const char* commandTimeout) {
        StoreSettings(true);
        StrikeAt([this](const std::string& line) {
            return line.starts_with("Documento: ") && ++documents_ == 5;
        }, table, strike);
        ::setenv("KITRA_COMMAND_TIMEOUT", commandTimeout, 1);
        // The fifth document's own statement is the one that meets the fault: read where it is
        // needed, not ahead (reading ahead meets it in the test below).
        ::setenv("KITRA_READ_AHEAD_CONNECTIONS", "0", 1);
        const HostRun run = Execute();
        JoinStriker();
        ExpectNoHalfDocument(run);
        ExpectTheNextRunImportsEveryDocumentWhole();
    }

    void TearDown() override {
        ::unsetenv("KITRA_READ_AHEAD_CONNECTIONS");
        JoinStriker();
        FaultRunTest::TearDown();
    }

    bool centrosTurn_ = true;
    int documents_ = 0;
    std::thread striker_;
};

TEST_F(DocumentFaultsTest, ServerKilledWhileADocumentsLinesAreFetched) {
    // The lines' statement waits for the lock far longer than the striker needs to see it.
    RunStrikingInsideADocument("transactionsdetails", &FaultServer::Kill, "30");
}

TEST_F(DocumentFaultsTest, ServerKilledWhileTheLinesAreReadAhead) {
    // Centro's lines are locked before its documents importer starts: the first lines statement
    // read ahead waits on the lock, and the server is killed then. The importer meets the lost
    // link at its first document, so none of Centro's documents is there, and nothing of one.
    StoreSettings(true);
    StrikeAt([](const std::string& line) { return line == "A importar Transacções"; },
             "transactionsdetails", &FaultServer::Kill);
    ::setenv("KITRA_COMMAND_TIMEOUT", "30", 1);
    const HostRun run = Execute();
    JoinStriker();
    ExpectCentrosDocumentsEndedByTheLostServer(run);
    EXPECT_TRUE(DocumentsOf(Data(), "CEN").empty());
    ExpectTheNextRunImportsEveryDocumentWhole();
}

TEST_F(DocumentFaultsTest, ServerFrozenWhileADocumentsPaymentsAreFetched) {
    // The payments' statement gives up 3 s after the freeze; Praia's turn resumes the server.
    RunStrikingInsideADocument("transactionstenders", &FaultServer::Freeze, "3");
}

}  // namespace
}  // namespace kitra::test
