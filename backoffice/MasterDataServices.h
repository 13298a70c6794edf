#pragma once
// The back office's master-data services whose records live in one table each. Items and
// taxable groups, which have rows in a second table, have files of their own.
#include "backoffice/MasterDataTable.h"
#include "host/ICustomerService.h"
#include "host/ICustomerTypeService.h"
#include "host/IDocumentSeriesService.h"
#include "host/IDocumentTypeService.h"
#include "host/IFamilyService.h"
#include "host/IPaymentTermService.h"
#include "host/IPlaceService.h"
#include "host/ISalesZoneService.h"
#include "host/ISalesmanService.h"
#include "host/ISupplierService.h"
#include "host/ITenderService.h"
#include "host/IUnitOfSaleService.h"
#include "host/IWarehouseService.h"
#include "host/IWorkstationService.h"

namespace kitra::backoffice {

#define KITRA_MASTER_DATA_SERVICE(Name, Interface)                 \
    class Name final : public MasterDataTable<host::Interface> {   \
    public:                                                        \
        explicit Name(Database& database);                         \
    };

KITRA_MASTER_DATA_SERVICE(SalesmanService, ISalesmanService)
KITRA_MASTER_DATA_SERVICE(CustomerService, ICustomerService)
KITRA_MASTER_DATA_SERVICE(FamilyService, IFamilyService)
KITRA_MASTER_DATA_SERVICE(TenderService, ITenderService)
KITRA_MASTER_DATA_SERVICE(DocumentTypeService, IDocumentTypeService)
KITRA_MASTER_DATA_SERVICE(DocumentSeriesService, IDocumentSeriesService)
KITRA_MASTER_DATA_SERVICE(WarehouseService, IWarehouseService)
KITRA_MASTER_DATA_SERVICE(WorkstationService, IWorkstationService)
KITRA_MASTER_DATA_SERVICE(SupplierService, ISupplierService)
KITRA_MASTER_DATA_SERVICE(PlaceService, IPlaceService)
KITRA_MASTER_DATA_SERVICE(UnitOfSaleService, IUnitOfSaleService)
KITRA_MASTER_DATA_SERVICE(CustomerTypeService, ICustomerTypeService)
KITRA_MASTER_DATA_SERVICE(SalesZoneService, ISalesZoneService)
KITRA_MASTER_DATA_SERVICE(PaymentTermService, IPaymentTermService)

#undef KITRA_MASTER_DATA_SERVICE

}  // namespace kitra::backoffice
