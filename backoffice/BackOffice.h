#pragma once
// One back office: the SQLite file backoffice.sqlite in a data folder, and every host service
// over it. Opening a back office upgrades its schema; creating one makes the file complete
// (schema and starting data) under a temporary name and only then gives it its real name, so a
// back office either exists whole or not at all.
#include <filesystem>
#include <memory>

#include "backoffice/AccountTransactionService.h"
#include "backoffice/Application.h"
#include "backoffice/CompanyContext.h"
#include "backoffice/ConnectorSettingsStore.h"
#include "backoffice/Database.h"
#include "backoffice/DatabaseCompaction.h"
#include "backoffice/HostConnection.h"
#include "backoffice/ItemService.h"
#include "backoffice/MasterDataServices.h"
#include "backoffice/SchemaCatalogue.h"
#include "backoffice/SignatureService.h"
#include "backoffice/SqlStatementBuilder.h"
#include "backoffice/TaxService.h"
#include "backoffice/TaxableGroupService.h"
#include "backoffice/TransactionService.h"
#include "backoffice/UtilityService.h"
#include "host/HostServices.h"

namespace kitra::backoffice {

inline constexpr const char* kBackOfficeFileName = "backoffice.sqlite";

class BackOffice {
    // First, so that they are built before the services that refer to them.
    std::filesystem::path dataFolder_;
    Database database_;

public:
    // Opens the back office of the data folder; fails with an Error when there is none.
    explicit BackOffice(const std::filesystem::path& dataFolder);
    BackOffice(const BackOffice&) = delete;
    BackOffice& operator=(const BackOffice&) = delete;

    // Creates a new back office in the data folder (made when missing) with a Portuguese
    // company and the records a restaurant import needs. Refuses, changing nothing, when the
    // folder already holds a back office.
    static void Create(const std::filesystem::path& dataFolder);

    // Fails with the Error that opening would give when the data folder holds no back office
    // (no file, or a file that is empty or another program's); opens nothing.
    static void Require(const std::filesystem::path& dataFolder);

    static std::filesystem::path FileIn(const std::filesystem::path& dataFolder) {
        return dataFolder / kBackOfficeFileName;
    }

    // Every service, with the notifier and message boxes of the program that runs the host.
    host::HostServices Services(host::IEventNotifier* notifier,
                                host::IMessageBoxService* messageBoxes);

    const std::filesystem::path& DataFolder() const { return dataFolder_; }
    Database& GetDatabase() { return database_; }

    Application application;
    SignatureService signature;
    ConnectorSettingsStore settingsStore;
    HostConnection connection;
    SchemaCatalogue schema;
    SqlStatementBuilder statements;
    DatabaseCompaction compaction;
    UtilityService utility;
    CompanyContext company;
    TaxService tax;
    SalesmanService salesmen;
    CustomerService customers;
    FamilyService families;
    ItemService items;
    TenderService tenders;
    TaxableGroupService taxableGroups;
    DocumentTypeService documentTypes;
    DocumentSeriesService documentSeries;
    WarehouseService warehouses;
    WorkstationService workstations;
    SupplierService suppliers;
    PlaceService places;
    UnitOfSaleService unitsOfSale;
    CustomerTypeService customerTypes;
    SalesZoneService salesZones;
    PaymentTermService paymentTerms;
    TransactionService transactions;
    AccountTransactionService accountTransactions;

private:
    BackOffice(const std::filesystem::path& dataFolder, const std::filesystem::path& file,
               Database::OpenMode mode);
};

}  // namespace kitra::backoffice
