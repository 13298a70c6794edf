// The connection's two time-outs: what the driver is given for them, and that they hold against
// a server that never answers, a host that cannot be reached and a statement that outlasts them.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>

#include "ado/Connection.h"
#include "ado/Recordset.h"
#include "core/Error.h"
#include "tests/support/ScratchDatabase.h"
#include "tests/support/SilentServer.h"

namespace kitra::ado {
namespace {

using test::RestaurantConnectionString;
using test::ScratchDatabase;
using test::SilentServer;
using Clock = std::chrono::steady_clock;

double SecondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

const std::string kRunsString =
    "Driver={MySQL ODBC 5.1 Driver};Server=127.0.0.1;Database=r1; User=u;Password=p;Option=3;"
    "Port=3306";

TEST(ConnectionTimeouts, AdosDefaults) {
    Connection connection;
    EXPECT_EQ(connection.ConnectionTimeout(), 15);
    EXPECT_EQ(connection.CommandTimeout(), 30);
}

TEST(ConnectionTimeouts, TheEnvironmentMayGiveOtherStartingValues) {
    ::setenv("KITRA_CONNECTION_TIMEOUT", "2", 1);
    ::setenv("KITRA_COMMAND_TIMEOUT", "0", 1);
    const Connection given;
    const Connection givenWithAString(kRunsString);
    // Anything but whole seconds leaves ADO's defaults.
    ::setenv("KITRA_CONNECTION_TIMEOUT", "2s", 1);
    ::setenv("KITRA_COMMAND_TIMEOUT", "-5", 1);
    const Connection refused;
    ::unsetenv("KITRA_CONNECTION_TIMEOUT");
    ::unsetenv("KITRA_COMMAND_TIMEOUT");
    EXPECT_EQ(given.ConnectionTimeout(), 2);
    EXPECT_EQ(given.CommandTimeout(), 0);
    EXPECT_EQ(givenWithAString.ConnectionTimeout(), 2);
    EXPECT_EQ(givenWithAString.ConnectionString(), kRunsString);
    EXPECT_EQ(refused.ConnectionTimeout(), 15);
    EXPECT_EQ(refused.CommandTimeout(), 30);
}

TEST(ConnectionTimeouts, NegativeSecondsAreRefused) {
    Connection connection;
    EXPECT_THROW(connection.SetConnectionTimeout(-1), Error);
    EXPECT_THROW(connection.SetCommandTimeout(-1), Error);
    EXPECT_EQ(connection.ConnectionTimeout(), 15);
    EXPECT_EQ(connection.CommandTimeout(), 30);
}

TEST(ConnectionTimeouts, TheDriverGetsThemAfterTheRunsStringWhichStaysAsItIs) {
    EXPECT_EQ(DriverConnectionString(kRunsString, 15, 30),
              kRunsString + ";CONN_TIMEOUT=15;READ_TIMEOUT=30;WRITE_TIMEOUT=30");
    EXPECT_EQ(DriverConnectionString(kRunsString + ";", 2, 3),
              kRunsString + ";CONN_TIMEOUT=2;READ_TIMEOUT=3;WRITE_TIMEOUT=3");
    EXPECT_EQ(DriverConnectionString("", 2, 3), "CONN_TIMEOUT=2;READ_TIMEOUT=3;WRITE_TIMEOUT=3");
}

TEST(ConnectionTimeouts, ZeroWaitsWithoutLimit) {
    EXPECT_EQ(DriverConnectionString(kRunsString, 0, 0), kRunsString);
    EXPECT_EQ(DriverConnectionString(kRunsString, 0, 30),
              kRunsString + ";READ_TIMEOUT=30;WRITE_TIMEOUT=30");
}

TEST(ConnectionTimeouts, OptionsTheStringSetsItselfAreLeftToIt) {
    const std::string own = kRunsString + "; read_timeout = 90;{x}=1;Pwd={a;CONN_TIMEOUT=1}";
    EXPECT_EQ(DriverConnectionString(own, 15, 30), own + ";CONN_TIMEOUT=15;WRITE_TIMEOUT=30");
}

TEST(ConnectionTimeouts, AnOpenConnectionKeepsItsConnectionTimeout) {
    ScratchDatabase database("timeouts");
    Connection connection(database.ConnectionString());
    connection.Open();
    EXPECT_THROW(connection.SetConnectionTimeout(3), Error);
    EXPECT_EQ(connection.ConnectionTimeout(), 15);
    connection.SetCommandTimeout(3);  // for the next Open
    EXPECT_EQ(connection.CommandTimeout(), 3);
    // What the connection calls its string is the text it was given.
    EXPECT_EQ(connection.ConnectionString(), database.ConnectionString());
}

// Open against a port that never answers: it fails within the time-out and stays closed.
void ExpectOpenGivesUp(SilentServer::Silence silence) {
    SilentServer silent(silence);
    Connection connection(RestaurantConnectionString("127.0.0.1", "r1", "kitra", "segredo",
                                                     std::to_string(silent.Port())));
    connection.SetConnectionTimeout(1);
    const Clock::time_point start = Clock::now();
    try {
        connection.Open();
        ADD_FAILURE() << "Open succeeded against a silent server";
    } catch (const Error& error) {
        EXPECT_EQ(error.Number(), silence == SilentServer::Silence::AfterConnecting ? 2013 : 2002)
            << error.Description();
        EXPECT_NE(error.Description().find("[ma-"), std::string::npos) << error.Description();
    }
    // Bounded by the time-out, with room for a loaded machine; without one it never returns.
    EXPECT_LT(SecondsSince(start), 10.0);
    EXPECT_EQ(connection.State(), StateClosed);
}

TEST(ConnectionTimeouts, OpeningASilentServerGivesUp) {
    ExpectOpenGivesUp(SilentServer::Silence::AfterConnecting);
}

TEST(ConnectionTimeouts, OpeningAnUnreachableHostGivesUp) {
    ExpectOpenGivesUp(SilentServer::Silence::BeforeConnecting);
}

class CommandTimeoutTest : public ::testing::Test {
protected:
    ScratchDatabase database{"command_timeout"};
    Connection connection{database.ConnectionString()};
};

TEST_F(CommandTimeoutTest, AStatementThatOutlastsItFailsAndClosesTheConnection) {
    connection.SetCommandTimeout(1);
    connection.Open();
    const Clock::time_point start = Clock::now();
    try {
        Recordset slow;
        slow.Open("SELECT SLEEP(20) AS s", connection);
        ADD_FAILURE() << "the statement outlasted the command time-out";
    } catch (const Error& error) {
        EXPECT_EQ(error.Number(), 2013) << error.Description();
        EXPECT_NE(error.Description().find("Lost connection"), std::string::npos)
            << error.Description();
    }
    EXPECT_LT(SecondsSince(start), 15.0);
    // The link is gone, so the connection says it is closed and can be opened again.
    EXPECT_EQ(connection.State(), StateClosed);
    connection.Open();
    Recordset one;
    one.Open("SELECT 1 AS n", connection);
    EXPECT_EQ(one.Field("n").ToInt32(), 1);
}

TEST_F(CommandTimeoutTest, ExecuteKeepsToItToo) {
    connection.SetCommandTimeout(1);
    connection.Open();
    EXPECT_THROW(connection.Execute("DO SLEEP(20)"), Error);
    EXPECT_EQ(connection.State(), StateClosed);
}

TEST_F(CommandTimeoutTest, AStatementWithinItRuns) {
    connection.SetCommandTimeout(3);
    connection.Open();
    Recordset quick;
    quick.Open("SELECT SLEEP(1) AS s", connection);
    EXPECT_EQ(quick.Field("s").ToInt32(), 0);
    EXPECT_EQ(connection.State(), StateOpen);
}

TEST_F(CommandTimeoutTest, AnErrorOfTheStatementKeepsTheConnectionOpen) {
    connection.Open();
    EXPECT_THROW(connection.Execute("SELEC 1"), Error);
    EXPECT_EQ(connection.State(), StateOpen);
}

}  // namespace
}  // namespace kitra::ado
