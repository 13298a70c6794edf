// Statements read ahead on further connections: each runs exactly once, its result is the one
// the connection itself would have read, its failure is raised where it is asked for, and
// statements asked for out of order or after the reading ahead stopped still run. Every
// statement takes the next value of a sequence, so the server itself counts how often
// statements ran.
#include <gtest/gtest.h>

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <string>
#include <thread>
#include <vector>

#include "ado/Connection.h"
#include "ado/Recordset.h"
#include "ado/ThreadPriority.h"
#include "core/Error.h"
#include "tests/ado/ScratchConnectionTest.h"

namespace kitra::ado {
namespace {

class ReadAheadTest : public ScratchConnectionTest {
protected:
    ReadAheadTest() : ScratchConnectionTest("readahead") {}

    void SetUp() override {
        OpenAfter("CREATE SEQUENCE runs START WITH 1 INCREMENT BY 1 NOCACHE;"
                  "CREATE TABLE t (id INT PRIMARY KEY, name VARCHAR(20));"
                  "INSERT INTO t VALUES (1, 'um'), (2, 'dois'), (3, 'três')");
    }

    // Statement number i: counts one run and returns the one row of t that i names.
    static std::string Numbered(int i) {
        return "SELECT NEXT VALUE FOR runs AS run, t.id, t.name, " + std::to_string(i) +
               " AS asked FROM t WHERE t.id = " + std::to_string(i % 3 + 1);
    }

    static std::vector<std::string> Statements(int count) {
        std::vector<std::string> statements;
        for (int i = 0; i < count; ++i) statements.push_back(Numbered(i));
        return statements;
    }

    // How many statements ran since the test began (NOCACHE: every value taken is a run). Read
    // from the sequence's table, which takes no value itself.
    long Runs() const {
        return std::stol(database.QueryValue("SELECT next_not_cached_value FROM runs")) - 1;
    }
};

TEST_F(ReadAheadTest, EveryStatementRunsOnceAndGivesItsOwnRows) {
    connection.ReadAhead(Statements(40), 2, 8);
    std::vector<long> runsSeen;
    for (int i = 0; i < 40; ++i) {
        Recordset rows = Select(Numbered(i));
        ASSERT_EQ(rows.RecordCount(), 1) << i;
        EXPECT_EQ(rows.Field("asked").ToInt32(), i);
        EXPECT_EQ(rows.Field("name").ToText(), (std::vector<std::string>{"um", "dois", "três"}[i % 3]));
        runsSeen.push_back(rows.Field("run").ToInt32());
    }
    connection.StopReadAhead();
    // 40 statements, 40 runs: none ran twice and none was skipped.
    EXPECT_EQ(Runs(), 40);
    std::sort(runsSeen.begin(), runsSeen.end());
    EXPECT_EQ(std::adjacent_find(runsSeen.begin(), runsSeen.end()), runsSeen.end());
}

TEST_F(ReadAheadTest, ManyStatementsThroughASmallWindowEachRunOnceInOrder) {
    // More connections than a quarter of the window, so workers often wait for room and are
    // woken in batches while the caller takes results one by one: none may be lost, run twice
    // or left waiting.
    constexpr int kCount = 1500;
    connection.ReadAhead(Statements(kCount), 3, 5);
    for (int i = 0; i < kCount; ++i) {
        Recordset rows = Select(Numbered(i));
        ASSERT_EQ(rows.Field("asked").ToInt32(), i);
    }
    connection.StopReadAhead();
    EXPECT_EQ(Runs(), kCount);
}

TEST_F(ReadAheadTest, NeverRunsMoreThanTheWindowAheadOfTheCaller) {
    connection.ReadAhead(Statements(100), 2, 6);
    for (int i = 0; i < 10; ++i) Select(Numbered(i));
    connection.StopReadAhead();
    // What was asked for, and at most the window beyond it.
    EXPECT_GE(Runs(), 10);
    EXPECT_LE(Runs(), 16);
}

TEST_F(ReadAheadTest, AStatementAskedOutOfOrderRunsOnTheConnectionItself) {
    connection.ReadAhead(Statements(10), 1, 4);
    Recordset other = Select("SELECT name FROM t WHERE id = 3");
    EXPECT_EQ(other.Field("name").ToText(), "três");
    // The expected ones still come in order afterwards.
    for (int i = 0; i < 10; ++i) EXPECT_EQ(Select(Numbered(i)).Field("asked").ToInt32(), i);
    connection.StopReadAhead();
    EXPECT_EQ(Runs(), 10);
}

TEST_F(ReadAheadTest, StatementsNeverAskedForArePassedOver) {
    connection.ReadAhead(Statements(20), 2, 10);
    EXPECT_EQ(Select(Numbered(0)).Field("asked").ToInt32(), 0);
    EXPECT_EQ(Select(Numbered(5)).Field("asked").ToInt32(), 5);  // 1..4 are never asked for
    EXPECT_EQ(Select(Numbered(6)).Field("asked").ToInt32(), 6);
    connection.StopReadAhead();
    EXPECT_LE(Runs(), 17);  // at most the window beyond the last one asked for
}

TEST_F(ReadAheadTest, AFailingStatementFailsWhereItIsAskedForWithTheDriversMessage) {
    std::vector<std::string> statements = Statements(6);
    statements[3] = "SELECT missing_column FROM t";
    connection.ReadAhead(statements, 2, 8);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(Select(Numbered(i)).Field("asked").ToInt32(), i);
    try {
        Select("SELECT missing_column FROM t");
        FAIL() << "the failing statement did not fail";
    } catch (const Error& error) {
        EXPECT_NE(error.Description().find("missing_column"), std::string::npos) << error.Description();
        EXPECT_EQ(error.Number(), 1054);
    }
    // The connection and the statements after it are still good.
    EXPECT_EQ(connection.State(), StateOpen);
    for (int i = 4; i < 6; ++i) EXPECT_EQ(Select(Numbered(i)).Field("asked").ToInt32(), i);
    connection.StopReadAhead();
    EXPECT_EQ(Runs(), 5);
}

TEST_F(ReadAheadTest, WithNoFurtherConnectionEveryStatementRunsHere) {
    connection.ReadAhead(Statements(5), 0, 8);
    for (int i = 0; i < 5; ++i) EXPECT_EQ(Select(Numbered(i)).Field("asked").ToInt32(), i);
    EXPECT_EQ(Runs(), 5);
}

TEST_F(ReadAheadTest, FurtherConnectionsThatCannotOpenLeaveTheStatementsToTheConnection) {
    // A user allowed one connection at a time: the further ones are refused.
    const std::string user = "ra_" + database.Name().substr(0, 20);
    database.Execute("CREATE USER '" + user + "'@'%' IDENTIFIED BY 'pw' WITH MAX_USER_CONNECTIONS 1;"
                     "GRANT ALL ON " + database.Name() + ".* TO '" + user + "'@'%'");
    Connection limited(database.ConnectionString(user, "pw"));
    limited.SetCursorLocation(CursorLocationEnum::UseClient);
    limited.Open();
    limited.ReadAhead(Statements(12), 2, 8);
    for (int i = 0; i < 12; ++i) {
        Recordset rows;
        rows.Open(Numbered(i), limited);
        EXPECT_EQ(rows.Field("asked").ToInt32(), i);
    }
    limited.Close();
    database.Execute("DROP USER '" + user + "'@'%'");
    EXPECT_EQ(Runs(), 12);
}

TEST_F(ReadAheadTest, AStatementsTextIsMadeOnlyWhenItIsWithinTheWindow) {
    // A million statements expected, three asked for: only the window's texts are ever made.
    std::atomic<long> made{0};
    std::atomic<std::size_t> highest{0};
    connection.ReadAhead(
        1000000,
        [&](std::size_t i) {
            ++made;
            std::size_t seen = highest.load();
            while (i > seen && !highest.compare_exchange_weak(seen, i)) {
            }
            return Numbered(static_cast<int>(i));
        },
        2, 8);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(Select(Numbered(i)).Field("asked").ToInt32(), i);
    connection.StopReadAhead();
    EXPECT_LE(highest.load(), 3u + 8u);
    EXPECT_LE(made.load(), 3 + 8 + 3);
    EXPECT_LE(Runs(), 3 + 8);
}

TEST_F(ReadAheadTest, ClosingTheConnectionStopsTheReadingAhead) {
    connection.ReadAhead(Statements(50), 2, 5);
    Select(Numbered(0));
    connection.Close();
    EXPECT_EQ(connection.State(), StateClosed);
    // Closing waited for the further connections: nothing runs any more.
    const long runs = Runs();
    EXPECT_LE(runs, 6);
    Connection other(database.ConnectionString());
    other.Open();
    other.Close();
    EXPECT_EQ(Runs(), runs);
}

// The reading threads run below the thread that saves: their own niceness is higher, the
// caller's is untouched.
TEST(ReadAheadThreads, RunBelowTheThreadThatWaitsForTheirWork) {
    const auto niceness = [] {
        errno = 0;
        const int value = ::getpriority(PRIO_PROCESS, static_cast<id_t>(::gettid()));
        EXPECT_EQ(errno, 0);
        return value;
    };
    const int caller = niceness();
    int worker = caller;
    bool lowered = false;
    std::thread thread([&] {
        lowered = RunBelowOtherThreads();
        worker = niceness();
    });
    thread.join();
    if (!lowered) {
        EXPECT_EQ(worker, caller);
        GTEST_SKIP() << "this system keeps the thread's priority (niceness " << caller << ")";
    }
    EXPECT_GT(worker, caller);
    EXPECT_EQ(niceness(), caller);
}

}  // namespace
}  // namespace kitra::ado
