// The connection against a server that is frozen (SIGSTOP) and resumed, and one that is killed:
// every call comes back within its time-out with the driver's message, and once the server is
// back the same connection object opens again.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <initializer_list>

#include "ado/Connection.h"
#include "ado/Recordset.h"
#include "core/Error.h"
#include "tests/faults/FaultServer.h"
#include "tests/support/ScratchDatabase.h"

namespace kitra::ado {
namespace {

using test::FaultServer;
using test::ScratchDatabase;
using SteadyClock = std::chrono::steady_clock;

class ConnectionFaultsTest : public ::testing::Test {
protected:
    void SetUp() override {
        database = std::make_unique<ScratchDatabase>("connection_faults", server.Info());
        connection.SetConnectionString(database->ConnectionString());
        connection.SetConnectionTimeout(2);
        connection.SetCommandTimeout(2);
    }
    void TearDown() override {
        server.Ensure();
        database.reset();
    }

    // Runs the call, expecting it to fail with one of the driver's errors; returns its seconds.
    template <class Call>
    double FailureSeconds(Call call, std::initializer_list<long> numbers) {
        const SteadyClock::time_point start = SteadyClock::now();
        try {
            call();
            ADD_FAILURE() << "no error";
        } catch (const Error& error) {
            EXPECT_NE(std::find(numbers.begin(), numbers.end(), error.Number()), numbers.end())
                << error.Number() << " " << error.Description();
            EXPECT_EQ(error.Description().rfind("[ma-", 0), 0u) << error.Description();
        }
        return std::chrono::duration<double>(SteadyClock::now() - start).count();
    }

    int SelectOne() {
        Recordset one;
        one.Open("SELECT 1 AS n", connection);
        return one.Field("n").ToInt32();
    }

    FaultServer server;
    std::unique_ptr<ScratchDatabase> database;
    Connection connection;
};

TEST_F(ConnectionFaultsTest, AFrozenServerTimesOutAStatementAndAnOpenThenServesAgain) {
    connection.Open();
    server.Freeze();
    // Limits with room for a loaded machine: without the time-outs neither call returns.
    EXPECT_LT(FailureSeconds([&] { SelectOne(); }, {2013}), 20.0);
    EXPECT_EQ(connection.State(), StateClosed);
    EXPECT_LT(FailureSeconds([&] { connection.Open(); }, {2013}), 20.0);
    EXPECT_EQ(connection.State(), StateClosed);

    server.Resume();
    connection.Open();
    EXPECT_EQ(SelectOne(), 1);
}

TEST_F(ConnectionFaultsTest, AKilledServerFailsTheNextStatementAndTheNextOpenAtOnce) {
    connection.Open();
    server.Kill();
    const double statement = FailureSeconds([&] { SelectOne(); }, {2006, 2013});
    EXPECT_EQ(connection.State(), StateClosed);
    const double open = FailureSeconds([&] { connection.Open(); }, {2002});
    EXPECT_LT(statement + open, 20.0);

    server.Ensure();
    connection.Open();
    EXPECT_EQ(SelectOne(), 1);
    connection.Close();
}

}  // namespace
}  // namespace kitra::ado
