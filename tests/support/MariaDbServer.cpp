#include "tests/support/MariaDbServer.h"

#include <cstdlib>
#include <fstream>
#include <map>
#include <stdexcept>

#include "tests/support/Process.h"

#ifndef KITRA_TEST_MARIADB_ENV
#define KITRA_TEST_MARIADB_ENV ""
#endif

namespace kitra::test {

MariaDbServer MariaDbServer::FromFile(const std::string& path) {
    std::ifstream in(path);
    if (!in) {
        throw std::runtime_error(
            "no private MariaDB server: " + path +
            " does not exist. Run the tests through ctest (the \"mariadb\" fixture starts the "
            "server), or start one with tools/mariadb start DIR and set "
            "KITRA_MARIADB_ENV=DIR/mariadb.env.");
    }
    std::map<std::string, std::string> values;
    std::string line;
    while (std::getline(in, line)) {
        const auto equals = line.find('=');
        if (line.empty() || line[0] == '#' || equals == std::string::npos) continue;
        values[line.substr(0, equals)] = line.substr(equals + 1);
    }
    const auto value = [&](const std::string& key) {
        const auto found = values.find(key);
        if (found == values.end()) throw std::runtime_error(path + " has no " + key);
        return found->second;
    };
    MariaDbServer server;
    server.host = value("KITRA_MARIADB_HOST");
    server.port = std::stoi(value("KITRA_MARIADB_PORT"));
    server.user = value("KITRA_MARIADB_USER");
    server.password = value("KITRA_MARIADB_PASSWORD");
    server.rootUser = value("KITRA_MARIADB_ROOT_USER");
    server.rootPassword = value("KITRA_MARIADB_ROOT_PASSWORD");
    server.socket = value("KITRA_MARIADB_SOCKET");
    server.clientConfig = value("KITRA_MARIADB_CLIENT_CNF");
    return server;
}

const MariaDbServer& MariaDbServer::Get() {
    static const MariaDbServer server = [] {
        const char* given = std::getenv("KITRA_MARIADB_ENV");
        return FromFile(given && *given ? given : KITRA_TEST_MARIADB_ENV);
    }();
    return server;
}

std::string RestaurantConnectionString(const std::string& server, const std::string& database,
                                       const std::string& user, const std::string& password,
                                       const std::string& port) {
    return "Driver={MySQL ODBC 5.1 Driver};Server=" + server + ";Database=" + database +
           "; User=" + user + ";Password=" + password + ";Option=3;Port=" + port;
}

std::string MariaDbClient::Run(const std::vector<std::string>& options,
                               const std::string& stdinFile, const std::string& database) const {
    std::vector<std::string> argv = {"mariadb", "--defaults-file=" + server_.clientConfig};
    argv.insert(argv.end(), options.begin(), options.end());
    if (!database.empty()) argv.push_back(database);
    const ProcessResult result = RunProcess(argv, stdinFile);
    if (result.exitCode != 0) {
        throw std::runtime_error("mariadb client failed (exit " +
                                 std::to_string(result.exitCode) + "): " + result.err);
    }
    return result.out;
}

void MariaDbClient::Execute(const std::string& sql, const std::string& database) const {
    TemporaryFile script(sql);
    Run({}, script.Path(), database);
}

void MariaDbClient::ExecuteFile(const std::string& path, const std::string& database) const {
    Run({}, path, database);
}

namespace {
// Undoes the client's batch-mode escapes (\t, \n, \\, \0).
std::string Unescape(const std::string& field) {
    std::string out;
    for (std::size_t i = 0; i < field.size(); ++i) {
        if (field[i] != '\\' || i + 1 == field.size()) {
            out += field[i];
            continue;
        }
        const char next = field[++i];
        out += next == 't' ? '\t' : next == 'n' ? '\n' : next == '0' ? '\0' : next;
    }
    return out;
}
}  // namespace

std::vector<std::vector<std::string>> MariaDbClient::Query(const std::string& sql,
                                                           const std::string& database) const {
    TemporaryFile script(sql);
    const std::string text = Run({"--batch", "--skip-column-names"}, script.Path(), database);
    std::vector<std::vector<std::string>> rows;
    std::size_t start = 0;
    while (start < text.size()) {
        std::size_t end = text.find('\n', start);
        if (end == std::string::npos) end = text.size();
        const std::string line = text.substr(start, end - start);
        std::vector<std::string> row;
        std::size_t from = 0;
        for (;;) {
            const std::size_t tab = line.find('\t', from);
            row.push_back(Unescape(line.substr(from, tab == std::string::npos ? std::string::npos
                                                                              : tab - from)));
            if (tab == std::string::npos) break;
            from = tab + 1;
        }
        rows.push_back(std::move(row));
        start = end + 1;
    }
    return rows;
}

std::string MariaDbClient::QueryValue(const std::string& sql, const std::string& database) const {
    const auto rows = Query(sql, database);
    if (rows.empty() || rows.front().empty()) {
        throw std::runtime_error("the query returned no value: " + sql);
    }
    return rows.front().front();
}

}  // namespace kitra::test
