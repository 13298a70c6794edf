#pragma once
// The private MariaDB server that the test suite runs against (tools/mariadb, started by the
// ctest fixture "mariadb"), as its connection file describes it.
#include <string>
#include <vector>

namespace kitra::test {

struct MariaDbServer {
    std::string host;
    int port = 0;
    std::string user;      // a non-root user that may create and drop databases
    std::string password;
    std::string rootUser;
    std::string rootPassword;
    std::string socket;
    std::string clientConfig;  // option file for the mariadb client as root

    // The server of this test run: the file named by KITRA_MARIADB_ENV, else the build's
    // default. Read once. Fails with std::runtime_error saying how to get a server.
    static const MariaDbServer& Get();
    static MariaDbServer FromFile(const std::string& path);
};

// The connection string exactly as the connector builds it, blank before "User=" included.
std::string RestaurantConnectionString(const std::string& server, const std::string& database,
                                       const std::string& user, const std::string& password,
                                       const std::string& port);

// Runs SQL through the mariadb client as root (optionally in a database). Execute fails with
// std::runtime_error carrying the client's message; Query returns the rows, each value as the
// client prints it (SQL NULL as the text "NULL").
class MariaDbClient {
public:
    explicit MariaDbClient(const MariaDbServer& server) : server_(server) {}

    void Execute(const std::string& sql, const std::string& database = {}) const;
    void ExecuteFile(const std::string& path, const std::string& database = {}) const;
    std::vector<std::vector<std::string>> Query(const std::string& sql,
                                                const std::string& database = {}) const;
    // The first value of the first row; fails when there is none.
    std::string QueryValue(const std::string& sql, const std::string& database = {}) const;

private:
    std::string Run(const std::vector<std::string>& options, const std::string& stdinFile,
                    const std::string& database) const;

    MariaDbServer server_;
};

}  // namespace kitra::test
