#pragma once
// The host's services as one set: what a component receives from the host's business layer
// (host/IHostBusinessLayer.h) for the length of one call.
#include "core/Error.h"
#include "host/IAccountTransactionService.h"
#include "host/IApplication.h"
#include "host/ICompanyContext.h"
#include "host/IConnectorSettingsStore.h"
#include "host/ICustomerService.h"
#include "host/ICustomerTypeService.h"
#include "host/IDatabaseCompaction.h"
#include "host/IDocumentSeriesService.h"
#include "host/IDocumentTypeService.h"
#include "host/IEventNotifier.h"
#include "host/IFamilyService.h"
#include "host/IHostConnection.h"
#include "host/IItemService.h"
#include "host/IMessageBoxService.h"
#include "host/IPaymentTermService.h"
#include "host/IPlaceService.h"
#include "host/ISalesZoneService.h"
#include "host/ISalesmanService.h"
#include "host/ISchemaCatalogue.h"
#include "host/ISignatureService.h"
#include "host/ISqlStatementBuilder.h"
#include "host/ISupplierService.h"
#include "host/ITaxService.h"
#include "host/ITaxableGroupService.h"
#include "host/ITenderService.h"
#include "host/ITransactionService.h"
#include "host/IUnitOfSaleService.h"
#include "host/IUtilityService.h"
#include "host/IWarehouseService.h"
#include "host/IWorkstationService.h"

namespace kitra::host {

// Pointers owned by the host; they stay valid while the set is installed.
struct HostServices {
    // The notifier the host hands to components that report progress (may be null).
    IEventNotifier* eventNotifier = nullptr;
    IMessageBoxService* messageBoxes = nullptr;
    IApplication* application = nullptr;
    ISignatureService* signature = nullptr;
    IConnectorSettingsStore* settingsStore = nullptr;
    // The database layer.
    IHostConnection* connection = nullptr;
    ISchemaCatalogue* schema = nullptr;
    ISqlStatementBuilder* statements = nullptr;
    IDatabaseCompaction* compaction = nullptr;
    IUtilityService* utility = nullptr;
    ICompanyContext* company = nullptr;
    ITaxService* tax = nullptr;
    // Master data.
    ISalesmanService* salesmen = nullptr;
    ICustomerService* customers = nullptr;
    IFamilyService* families = nullptr;
    IItemService* items = nullptr;
    ITenderService* tenders = nullptr;
    ITaxableGroupService* taxableGroups = nullptr;
    IDocumentTypeService* documentTypes = nullptr;
    IDocumentSeriesService* documentSeries = nullptr;
    IWarehouseService* warehouses = nullptr;
    IWorkstationService* workstations = nullptr;
    ISupplierService* suppliers = nullptr;
    IPlaceService* places = nullptr;
    IUnitOfSaleService* unitsOfSale = nullptr;
    ICustomerTypeService* customerTypes = nullptr;
    ISalesZoneService* salesZones = nullptr;
    IPaymentTermService* paymentTerms = nullptr;
    // Documents.
    ITransactionService* transactions = nullptr;
    IAccountTransactionService* accountTransactions = nullptr;
};

}  // namespace kitra::host
