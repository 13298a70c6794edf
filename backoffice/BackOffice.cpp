#include "backoffice/BackOffice.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <vector>

#include <sqlite3.h>

#include <fmt/format.h>

#include "backoffice/PrivateFiles.h"
#include "backoffice/Schema.h"
#include "backoffice/StartingData.h"

namespace kitra::backoffice {
namespace {

bool PathTaken(const std::filesystem::path& path) {
    std::error_code error;
    return std::filesystem::symlink_status(path, error).type() !=
           std::filesystem::file_type::not_found;
}

// What a file named backoffice.sqlite holds, looked at read-only: nothing is changed in a file
// that turns out not to be a back office.
struct FileContents {
    // Locked: another program held the file for longer than the busy timeout, so what it holds
    // could not be read; the open that follows waits and says so in its own words.
    enum class Kind { BackOffice, Empty, NotADatabase, Foreign, Locked } kind = Kind::Empty;
    std::string detail;  // the foreign file's tables, or SQLite's reason
};

FileContents Inspect(const std::filesystem::path& file) {
    std::error_code error;
    if (std::filesystem::is_regular_file(file, error) && std::filesystem::file_size(file, error) == 0)
        return {FileContents::Kind::Empty, {}};
    // The first connection of the process starts SQLite: its settings have to be made first, or
    // every connection after it runs without them.
    ConfigureSqlite();
    sqlite3* db = nullptr;
    // SQLite takes the name in UTF-8 on every platform.
    const std::u8string name = file.u8string();
    int rc = sqlite3_open_v2(reinterpret_cast<const char*>(name.c_str()), &db, SQLITE_OPEN_READONLY,
                             nullptr);
    // Another program opening or closing the same back office holds it for a moment (the WAL's
    // recovery and last checkpoint); this look waits for it like every other connection.
    if (db != nullptr) sqlite3_busy_timeout(db, BusyTimeoutMilliseconds());
    FileContents contents;
    std::vector<std::string> tables;
    bool hasCompany = false;
    int version = 0;
    sqlite3_stmt* statement = nullptr;
    if (rc == SQLITE_OK) {
        rc = sqlite3_prepare_v2(db,
                                "SELECT name FROM sqlite_master WHERE type='table' AND name NOT "
                                "LIKE 'sqlite_%' ORDER BY name",
                                -1, &statement, nullptr);
    }
    while (rc == SQLITE_OK || rc == SQLITE_ROW) {
        rc = sqlite3_step(statement);
        if (rc != SQLITE_ROW) break;
        const std::string name = reinterpret_cast<const char*>(sqlite3_column_text(statement, 0));
        hasCompany = hasCompany || name == "company";
        tables.push_back(name);
    }
    sqlite3_finalize(statement);
    if (rc == SQLITE_DONE &&
        sqlite3_prepare_v2(db, "PRAGMA user_version", -1, &statement, nullptr) == SQLITE_OK &&
        sqlite3_step(statement) == SQLITE_ROW) {
        version = sqlite3_column_int(statement, 0);
    }
    sqlite3_finalize(statement);
    if ((rc & 0xff) == SQLITE_BUSY || (rc & 0xff) == SQLITE_LOCKED) {
        contents.kind = FileContents::Kind::Locked;
    } else if (rc != SQLITE_DONE) {
        contents.kind = FileContents::Kind::NotADatabase;
        contents.detail = db != nullptr ? sqlite3_errmsg(db) : sqlite3_errstr(rc);
    } else if (tables.empty()) {
        contents.kind = FileContents::Kind::Empty;
    } else if (hasCompany && version >= 1) {
        contents.kind = FileContents::Kind::BackOffice;
    } else {
        contents.kind = FileContents::Kind::Foreign;
        for (const std::string& table : tables)
            contents.detail += (contents.detail.empty() ? "" : ", ") + table;
    }
    sqlite3_close(db);
    return contents;
}

// What is in the way, said so that the user knows what to do with it; empty for a back office.
std::string WhatIsThere(const std::filesystem::path& file) {
    const FileContents contents = Inspect(file);
    switch (contents.kind) {
        case FileContents::Kind::BackOffice:
        case FileContents::Kind::Locked:
            return {};
        case FileContents::Kind::Empty:
            return fmt::format("O ficheiro '{}' existe mas está vazio: não é uma retaguarda.",
                               file.string());
        case FileContents::Kind::NotADatabase:
            return fmt::format("O ficheiro '{}' não é uma base de dados SQLite ({}).",
                               file.string(), contents.detail);
        case FileContents::Kind::Foreign:
            return fmt::format(
                "O ficheiro '{}' é uma base de dados de outro programa, não uma retaguarda "
                "(tabelas: {}).",
                file.string(), contents.detail);
    }
    return {};
}

Error AlreadyThere(const std::filesystem::path& dataFolder) {
    const std::string what = WhatIsThere(BackOffice::FileIn(dataFolder));
    if (!what.empty()) {
        return Error(what + " Nada foi alterado. Mude-o de sítio (ou apague-o, se não for "
                            "preciso) ou escolha outra pasta de dados com --data.");
    }
    return Error(fmt::format("Já existe uma retaguarda na pasta '{}'. Nada foi alterado.",
                             dataFolder.string()));
}

void RemoveDatabaseFiles(const std::filesystem::path& file) {
    std::error_code ignored;
    for (const char* suffix : {"", "-wal", "-shm", "-journal"})
        std::filesystem::remove(file.string() + suffix, ignored);
}

std::filesystem::path OpenableFile(const std::filesystem::path& dataFolder) {
    const std::filesystem::path file = BackOffice::FileIn(dataFolder);
    if (!PathTaken(file)) {
        throw Error(fmt::format(
            "Não existe nenhuma retaguarda na pasta '{}'. Crie-a com 'kitra-host init'.",
            dataFolder.string()));
    }
    // An empty or foreign file would otherwise be given the schema and become a back office
    // without a company.
    if (const std::string what = WhatIsThere(file); !what.empty()) {
        throw Error(what + " Nada foi alterado. Crie uma retaguarda com 'kitra-host init' "
                           "numa pasta de dados sem esse ficheiro.");
    }
    return file;
}

}  // namespace

BackOffice::BackOffice(const std::filesystem::path& dataFolder)
    : BackOffice(dataFolder, OpenableFile(dataFolder), Database::OpenMode::Existing) {}

BackOffice::BackOffice(const std::filesystem::path& dataFolder, const std::filesystem::path& file,
                       Database::OpenMode mode)
    : dataFolder_(dataFolder),
      database_(file, mode),
      application(database_, dataFolder_),
      settingsStore(database_),
      connection(database_, application),
      schema(database_),
      statements(database_, application.GeneralDateForm()),
      compaction(database_),
      company(database_),
      tax(database_),
      salesmen(database_),
      customers(database_),
      families(database_),
      items(database_),
      tenders(database_),
      taxableGroups(database_),
      documentTypes(database_),
      documentSeries(database_),
      warehouses(database_),
      workstations(database_),
      suppliers(database_),
      places(database_),
      unitsOfSale(database_),
      customerTypes(database_),
      salesZones(database_),
      paymentTerms(database_),
      transactions(database_),
      accountTransactions(database_) {
    UpgradeSchema(database_);
}

void BackOffice::Require(const std::filesystem::path& dataFolder) { OpenableFile(dataFolder); }

void BackOffice::Create(const std::filesystem::path& dataFolder) {
    const std::filesystem::path file = FileIn(dataFolder);
    if (PathTaken(file)) throw AlreadyThere(dataFolder);

    // The back office holds the restaurants' passwords: its folder, the database and what SQLite
    // makes beside it are the owner's only, whatever the umask of the program that creates it.
    const OwnerOnlyFiles ownerOnly;
    MakePrivateFolder(dataFolder, "a pasta de dados");
    // Built complete under a name of its own, then linked to the real name: a hard link fails when
    // the name is taken, so of two programs creating at once, exactly one succeeds and the
    // other changes nothing.
    const std::filesystem::path draft =
        dataFolder / fmt::format(".{}.new-{}", kBackOfficeFileName, ::getpid());
    RemoveDatabaseFiles(draft);
    try {
        BackOffice backOffice(dataFolder, draft, Database::OpenMode::CreateNew);
        MakePrivateFile(draft);
        WriteStartingData(backOffice);
    } catch (...) {
        RemoveDatabaseFiles(draft);
        throw;
    }
    std::error_code linked;
    std::filesystem::create_hard_link(draft, file, linked);
    if (linked) {
        RemoveDatabaseFiles(draft);
        if (linked == std::errc::file_exists) throw AlreadyThere(dataFolder);
        throw Error(fmt::format("Não foi possível criar '{}': {}", file.string(),
                                linked.message()));
    }
    RemoveDatabaseFiles(draft);
    try {
        MakePrivateFolder(dataFolder / "logs", "a pasta de registos");
    } catch (const Error&) {
        // A run makes it again when it is missing, and says why when it cannot.
    }
}

host::HostServices BackOffice::Services(host::IEventNotifier* notifier,
                                        host::IMessageBoxService* messageBoxes) {
    host::HostServices services;
    services.eventNotifier = notifier;
    services.messageBoxes = messageBoxes;
    services.application = &application;
    services.signature = &signature;
    services.settingsStore = &settingsStore;
    services.connection = &connection;
    services.schema = &schema;
    services.statements = &statements;
    services.compaction = &compaction;
    services.utility = &utility;
    services.company = &company;
    services.tax = &tax;
    services.salesmen = &salesmen;
    services.customers = &customers;
    services.families = &families;
    services.items = &items;
    services.tenders = &tenders;
    services.taxableGroups = &taxableGroups;
    services.documentTypes = &documentTypes;
    services.documentSeries = &documentSeries;
    services.warehouses = &warehouses;
    services.workstations = &workstations;
    services.suppliers = &suppliers;
    services.places = &places;
    services.unitsOfSale = &unitsOfSale;
    services.customerTypes = &customerTypes;
    services.salesZones = &salesZones;
    services.paymentTerms = &paymentTerms;
    services.transactions = &transactions;
    services.accountTransactions = &accountTransactions;
    return services;
}

}  // namespace kitra::backoffice
