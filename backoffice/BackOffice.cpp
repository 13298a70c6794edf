#include "backoffice/BackOffice.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

#include <fmt/format.h>

#include "backoffice/Schema.h"
#include "backoffice/StartingData.h"

namespace kitra::backoffice {
namespace {

bool PathTaken(const std::filesystem::path& path) {
    std::error_code error;
    return std::filesystem::symlink_status(path, error).type() !=
           std::filesystem::file_type::not_found;
}

Error AlreadyThere(const std::filesystem::path& dataFolder) {
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
      connection(database_),
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

void BackOffice::Create(const std::filesystem::path& dataFolder) {
    const std::filesystem::path file = FileIn(dataFolder);
    if (PathTaken(file)) throw AlreadyThere(dataFolder);

    std::error_code error;
    std::filesystem::create_directories(dataFolder, error);
    if (error) {
        throw Error(fmt::format("Não foi possível criar a pasta de dados '{}': {}",
                                dataFolder.string(), error.message()));
    }
    // Built complete under a name of its own, then linked to the real name: link() fails when
    // the name is taken, so of two programs creating at once, exactly one succeeds and the
    // other changes nothing.
    const std::filesystem::path draft =
        dataFolder / fmt::format(".{}.new-{}", kBackOfficeFileName, ::getpid());
    RemoveDatabaseFiles(draft);
    try {
        BackOffice backOffice(dataFolder, draft, Database::OpenMode::CreateNew);
        WriteStartingData(backOffice);
    } catch (...) {
        RemoveDatabaseFiles(draft);
        throw;
    }
    if (::link(draft.c_str(), file.c_str()) != 0) {
        const int cause = errno;
        RemoveDatabaseFiles(draft);
        if (cause == EEXIST) throw AlreadyThere(dataFolder);
        throw Error(fmt::format("Não foi possível criar '{}': {}", file.string(),
                                std::strerror(cause)));
    }
    RemoveDatabaseFiles(draft);
    std::filesystem::create_directories(dataFolder / "logs", error);
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
