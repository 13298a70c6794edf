#include "tests/support/ScratchDatabase.h"

#include <unistd.h>

#include <atomic>
#include <cctype>
#include <stdexcept>

#include "tests/support/Process.h"

#ifndef KITRA_RESTAURANT_SCHEMA
#define KITRA_RESTAURANT_SCHEMA ""
#endif
#ifndef KITRA_RESTAURANT_GEN
#define KITRA_RESTAURANT_GEN ""
#endif

namespace kitra::test {

namespace {
std::string UniqueName(std::string_view label) {
    static std::atomic<int> counter{0};
    std::string clean;
    for (const char c : label) {
        const auto u = static_cast<unsigned char>(c);
        if (std::isalnum(u)) {
            clean += static_cast<char>(std::tolower(u));
        } else if (!clean.empty() && clean.back() != '_') {
            clean += '_';
        }
        if (clean.size() >= 40) break;
    }
    return "kt_" + clean + "_" + std::to_string(getpid()) + "_" + std::to_string(++counter);
}
}  // namespace

ScratchDatabase::ScratchDatabase(std::string_view label, const MariaDbServer& server)
    : server_(server), client_(server_), name_(UniqueName(label)) {
    client_.Execute("DROP DATABASE IF EXISTS `" + name_ + "`; CREATE DATABASE `" + name_ +
                    "` CHARACTER SET utf8mb4;");
}

ScratchDatabase::~ScratchDatabase() {
    try {
        client_.Execute("DROP DATABASE IF EXISTS `" + name_ + "`;");
    } catch (...) {
        // The server is wiped when the suite ends; a leftover database harms no other test.
    }
}

std::string ScratchDatabase::ConnectionString() const {
    return ConnectionString(server_.user, server_.password);
}

std::string ScratchDatabase::ConnectionString(const std::string& user,
                                              const std::string& password) const {
    return RestaurantConnectionString(server_.host, name_, user, password,
                                      std::to_string(server_.port));
}

void ScratchDatabase::Execute(const std::string& sql) const { client_.Execute(sql, name_); }

void ScratchDatabase::ExecuteFile(const std::string& path) const {
    client_.ExecuteFile(path, name_);
}

std::vector<std::vector<std::string>> ScratchDatabase::Query(const std::string& sql) const {
    return client_.Query(sql, name_);
}

std::string ScratchDatabase::QueryValue(const std::string& sql) const {
    return client_.QueryValue(sql, name_);
}

std::string ScratchDatabase::RestaurantSchemaPath() { return KITRA_RESTAURANT_SCHEMA; }
std::string ScratchDatabase::GeneratorPath() { return KITRA_RESTAURANT_GEN; }

void ScratchDatabase::LoadRestaurantSchema() const { ExecuteFile(RestaurantSchemaPath()); }

void ScratchDatabase::LoadGeneratedData(const std::vector<std::string>& generatorArguments) const {
    TemporaryFile sql;
    std::vector<std::string> argv = {GeneratorPath()};
    argv.insert(argv.end(), generatorArguments.begin(), generatorArguments.end());
    argv.push_back("--output");
    argv.push_back(sql.Path());
    const ProcessResult result = RunProcess(argv);
    if (result.exitCode != 0) {
        throw std::runtime_error("the restaurant data generator failed: " + result.err);
    }
    ExecuteFile(sql.Path());
}

}  // namespace kitra::test
