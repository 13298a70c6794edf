#pragma once
// The host's services as one set, and the process's current set. A component is created
// through a class factory that takes no arguments, so the host installs its services before it
// creates a component, and the component finds them here. This is the one piece of process-wide
// state of the platform.
//
// The slot is the static of an inline function, so there is one per process as long as the
// host program exports its symbols to the modules it loads (on Linux: link it with
// -rdynamic / ENABLE_EXPORTS; on Windows: the program exports the slot by name, below).
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

namespace detail {
#if defined(_WIN32)
// A Windows module's statics are its own, whatever it links: the slot is the host program's,
// which the program exports by name (host/HostServicesProgramSlot.cpp), and every module of the
// process finds it there (host/HostServicesSlotWindows.cpp).
const HostServices*& CurrentHostServicesSlot();
#else
inline const HostServices*& CurrentHostServicesSlot() {
    static const HostServices* current = nullptr;
    return current;
}
#endif
}  // namespace detail

// Makes `services` the process's current set (nullptr: none). The host calls it before it
// creates a component and again with nullptr once the component is gone.
inline void InstallHostServices(const HostServices* services) {
    detail::CurrentHostServicesSlot() = services;
}

inline bool HostServicesInstalled() { return detail::CurrentHostServicesSlot() != nullptr; }

// The current set; fails with an Error when the host installed none.
inline const HostServices& CurrentHostServices() {
    const HostServices* current = detail::CurrentHostServicesSlot();
    if (current == nullptr) throw Error("Os serviços do anfitrião não estão instalados.");
    return *current;
}

}  // namespace kitra::host
