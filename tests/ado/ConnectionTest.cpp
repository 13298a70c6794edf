// Opening and closing connections to the private MariaDB server with the connection string the
// connector builds, and the driver's messages when that fails.
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include "ado/Connection.h"
#include "ado/Recordset.h"
#include "core/Error.h"
#include "tests/support/ScratchDatabase.h"

namespace kitra::ado {
namespace {

using test::MariaDbServer;
using test::RestaurantConnectionString;
using test::ScratchDatabase;

// A loopback port where nothing listens: one the system just handed out and took back.
int ClosedPort() {
    const int fd = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = 0;
    bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address);
    socklen_t length = sizeof address;
    getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length);
    close(fd);
    return ntohs(address.sin_port);
}

// The error Open raises, or a failure when it raises none.
Error OpenError(Connection& connection) {
    try {
        connection.Open();
    } catch (const Error& error) {
        return error;
    }
    ADD_FAILURE() << "Open succeeded with " << connection.ConnectionString();
    return Error("");
}

std::string CurrentUser(Connection& connection) {
    Recordset user;
    user.Open("SELECT CURRENT_USER() AS who", connection);
    return *user.Field("who").AsString();
}

class ConnectionTest : public ::testing::Test {
protected:
    ScratchDatabase database{"connection"};
    const MariaDbServer& server = database.Server();
};

TEST_F(ConnectionTest, StartsClosedAndRemembersItsSettings) {
    Connection connection;
    EXPECT_EQ(connection.State(), StateClosed);
    EXPECT_EQ(connection.State(), 0);
    connection.SetConnectionString("Driver={X};Server=h");
    connection.SetCursorLocation(CursorLocationEnum::UseClient);
    EXPECT_EQ(connection.ConnectionString(), "Driver={X};Server=h");
    EXPECT_EQ(static_cast<long>(connection.CursorLocation()), 3);
}

TEST_F(ConnectionTest, TheConnectorsExactStringLogsInAsTheUserItNames) {
    // Not root: the string's user must be the one the server sees, blank before "User=" and all.
    ASSERT_NE(server.user, "root");
    const std::string text = RestaurantConnectionString(server.host, database.Name(), server.user,
                                                        server.password, std::to_string(server.port));
    ASSERT_NE(text.find(";Database=" + database.Name() + "; User=" + server.user + ";Password="),
              std::string::npos);
    Connection connection(text);
    connection.SetCursorLocation(CursorLocationEnum::UseClient);
    connection.Open();
    EXPECT_EQ(connection.State(), StateOpen);
    EXPECT_EQ(connection.State(), 1);
    EXPECT_EQ(CurrentUser(connection), server.user + "@127.0.0.1");
    Recordset current;
    current.Open("SELECT DATABASE() AS db", connection);
    EXPECT_EQ(current.Field("db"), Variant(database.Name()));
    connection.Close();
    EXPECT_EQ(connection.State(), StateClosed);
}

TEST_F(ConnectionTest, RootLogsInAsRoot) {
    Connection connection(database.ConnectionString(server.rootUser, server.rootPassword));
    connection.Open();
    EXPECT_EQ(CurrentUser(connection), "root@127.0.0.1");
}

TEST_F(ConnectionTest, OpenWithAStringMakesItTheConnectionsOwn) {
    Connection connection;
    connection.Open(database.ConnectionString());
    EXPECT_EQ(connection.ConnectionString(), database.ConnectionString());
    connection.Close();
    // Reopening with an empty string uses the string it kept.
    connection.Open("");
    EXPECT_EQ(connection.State(), StateOpen);
}

TEST_F(ConnectionTest, TheSettingsDialogsLowerCasePortWorksToo) {
    std::string text = database.ConnectionString();
    text.replace(text.rfind(";Port="), 6, ";port=");
    Connection connection(text);
    connection.Open();
    EXPECT_EQ(CurrentUser(connection), server.user + "@127.0.0.1");
}

TEST_F(ConnectionTest, AWrongPasswordFailsWithTheDriversMessage) {
    Connection connection(database.ConnectionString(server.user, "not-the-password"));
    const Error error = OpenError(connection);
    EXPECT_NE(error.Description().find("Access denied for user '" + server.user + "'"),
              std::string::npos)
        << error.Description();
    EXPECT_EQ(error.Number(), 1045);
    EXPECT_EQ(connection.State(), StateClosed);
}

TEST_F(ConnectionTest, AnUnknownDatabaseFailsWithTheDriversMessage) {
    Connection connection(RestaurantConnectionString(server.host, "no_such_restaurant", server.user,
                                                     server.password, std::to_string(server.port)));
    const Error error = OpenError(connection);
    EXPECT_NE(error.Description().find("Unknown database 'no_such_restaurant'"), std::string::npos)
        << error.Description();
    EXPECT_EQ(error.Number(), 1049);
    EXPECT_EQ(connection.State(), StateClosed);
}

TEST_F(ConnectionTest, AClosedPortFailsWithTheDriversMessage) {
    Connection connection(RestaurantConnectionString(server.host, database.Name(), server.user,
                                                     server.password, std::to_string(ClosedPort())));
    const Error error = OpenError(connection);
    EXPECT_NE(error.Description().find("Can't connect to server on '127.0.0.1'"), std::string::npos)
        << error.Description();
    EXPECT_EQ(error.Number(), 2002);
    EXPECT_EQ(connection.State(), StateClosed);
}

TEST_F(ConnectionTest, AnUnknownDriverNameFailsWithTheDriverManagersMessage) {
    std::string text = database.ConnectionString();
    text.replace(0, text.find('}') + 1, "Driver={No Such Driver}");
    Connection connection(text);
    const Error error = OpenError(connection);
    EXPECT_NE(error.Description().find("No Such Driver"), std::string::npos) << error.Description();
}

TEST_F(ConnectionTest, ABadStatementFailsWithTheDriversMessage) {
    Connection connection(database.ConnectionString());
    connection.Open();
    Recordset recordset;
    try {
        recordset.Open("SELEC 1", connection);
        FAIL() << "the statement ran";
    } catch (const Error& error) {
        EXPECT_NE(error.Description().find("You have an error in your SQL syntax"), std::string::npos)
            << error.Description();
        EXPECT_NE(error.Description().find("'SELEC 1'"), std::string::npos) << error.Description();
        EXPECT_EQ(error.Number(), 1064);
    }
    EXPECT_FALSE(recordset.IsOpen());
    // The connection survives a failed statement.
    EXPECT_EQ(connection.State(), StateOpen);
    EXPECT_EQ(CurrentUser(connection), server.user + "@127.0.0.1");
}

TEST_F(ConnectionTest, AnUnknownTableFailsWithTheDriversMessage) {
    Connection connection(database.ConnectionString());
    connection.Open();
    Recordset recordset;
    try {
        recordset.Open("SELECT * FROM nowhere", connection);
        FAIL() << "the statement ran";
    } catch (const Error& error) {
        EXPECT_NE(error.Description().find("nowhere' doesn't exist"), std::string::npos)
            << error.Description();
        EXPECT_EQ(error.Number(), 1146);
    }
}

TEST_F(ConnectionTest, WrongStatesFailAsTheyDoInAdo) {
    Connection connection(database.ConnectionString());
    Recordset recordset;
    try {
        recordset.Open("SELECT 1", connection);
        FAIL() << "a closed connection ran a statement";
    } catch (const Error& error) {
        EXPECT_EQ(error.Description(), "Operation is not allowed when the object is closed.");
    }
    EXPECT_THROW(connection.Close(), Error);
    EXPECT_THROW(connection.Execute("SELECT 1"), Error);
    connection.Open();
    try {
        connection.Open();
        FAIL() << "an open connection opened again";
    } catch (const Error& error) {
        EXPECT_EQ(error.Description(), "Operation is not allowed when the object is open.");
    }
    EXPECT_THROW(connection.SetConnectionString("x"), Error);
    recordset.Open("SELECT 1 AS one", connection);
    EXPECT_THROW(recordset.Open("SELECT 1 AS one", connection), Error);
    recordset.Close();
    recordset.Open("SELECT 2 AS two", connection);
    EXPECT_EQ(recordset.Field("two"), Variant(std::int32_t{2}));
}

TEST_F(ConnectionTest, ExecuteReturnsTheRowsItAffected) {
    Connection connection(database.ConnectionString());
    connection.Open();
    connection.Execute("CREATE TABLE t (id INT PRIMARY KEY, name VARCHAR(20))");
    EXPECT_EQ(connection.Execute("INSERT INTO t VALUES (1, 'a'), (2, 'b'), (3, 'c')"), 3);
    EXPECT_EQ(connection.Execute("UPDATE t SET name = 'z' WHERE id > 1"), 2);
    EXPECT_EQ(connection.Execute("DELETE FROM t WHERE id = 99"), 0);
    EXPECT_EQ(database.QueryValue("SELECT GROUP_CONCAT(name ORDER BY id) FROM t"), "a,z,z");
}

TEST_F(ConnectionTest, AConnectionCanBeMovedWhileOpen) {
    Connection first(database.ConnectionString());
    first.Open();
    Connection second = std::move(first);
    EXPECT_EQ(second.State(), StateOpen);
    EXPECT_EQ(CurrentUser(second), server.user + "@127.0.0.1");
}

}  // namespace
}  // namespace kitra::ado
