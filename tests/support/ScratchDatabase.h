#pragma once
// A fresh, uniquely named database on the private server, dropped again when the object goes.
// Tests running in parallel each get their own, so no test sees another's rows.
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/MariaDbServer.h"

namespace kitra::test {

class ScratchDatabase {
public:
    // The name is made of the label (lower-cased, letters, digits and "_" only), the process id
    // and a counter, within MariaDB's 64 characters.
    explicit ScratchDatabase(std::string_view label, const MariaDbServer& server = MariaDbServer::Get());
    ~ScratchDatabase();
    ScratchDatabase(const ScratchDatabase&) = delete;
    ScratchDatabase& operator=(const ScratchDatabase&) = delete;

    const std::string& Name() const { return name_; }
    const MariaDbServer& Server() const { return server_; }

    // The connector's connection string for this database, as the non-root test user.
    std::string ConnectionString() const;
    std::string ConnectionString(const std::string& user, const std::string& password) const;

    // SQL as root in this database (through the mariadb client, independent of the code under
    // test).
    void Execute(const std::string& sql) const;
    void ExecuteFile(const std::string& path) const;
    std::vector<std::vector<std::string>> Query(const std::string& sql) const;
    std::string QueryValue(const std::string& sql) const;

    // The restaurant database's tables (restaurant/schema.sql), empty.
    void LoadRestaurantSchema() const;
    // Rows from the restaurant data generator, e.g. {"--size", "tiny", "--seed", "7"}; the
    // schema must be loaded first.
    void LoadGeneratedData(const std::vector<std::string>& generatorArguments) const;

    // Where the project's restaurant files are.
    static std::string RestaurantSchemaPath();
    static std::string GeneratorPath();

private:
    MariaDbServer server_;
    MariaDbClient client_;
    std::string name_;
};

}  // namespace kitra::test
