#include "backoffice/MasterDataServices.h"

namespace kitra::backoffice {

using namespace host;

SalesmanService::SalesmanService(Database& database)
    : MasterDataTable(database, {"salesmen",
                                 "o vendedor",
                                 MapColumn("SalesmanID", &Salesman::SalesmanID),
                                 {MapColumn("Name", &Salesman::Name),
                                  MapColumn("Password", &Salesman::Password),
                                  MapColumn("Telephone", &Salesman::Telephone),
                                  MapColumn("MobilePhone", &Salesman::MobilePhone),
                                  MapColumn("AddressLine1", &Salesman::AddressLine1),
                                  MapColumn("AddressLine2", &Salesman::AddressLine2),
                                  MapColumn("Locality", &Salesman::Locality),
                                  MapColumn("PostalCode", &Salesman::PostalCode),
                                  MapColumn("Email", &Salesman::Email)}}) {}

CustomerService::CustomerService(Database& database)
    : MasterDataTable(database,
                      {"customers",
                       "o cliente",
                       MapColumn("CustomerID", &Customer::CustomerID),
                       {MapColumn("OrganizationName", &Customer::OrganizationName),
                        MapColumn("CardID", &Customer::CardID),
                        MapColumn("DirectDiscount", &Customer::DirectDiscount),
                        MapColumn("AddressLine1", &Customer::AddressLine1),
                        MapColumn("AddressLine2", &Customer::AddressLine2),
                        MapColumn("PostalCode", &Customer::PostalCode),
                        MapColumn("Telephone", &Customer::Telephone),
                        MapColumn("MobileTelephone", &Customer::MobileTelephone),
                        MapColumn("Email", &Customer::Email),
                        MapColumn("FederalTaxID", &Customer::FederalTaxID),
                        MapColumn("CountryID", &Customer::CountryID),
                        MapColumn("TaxRegionID", &Customer::TaxRegionID),
                        MapColumn("CurrencyID", &Customer::CurrencyID),
                        MapColumn("SalesZoneID", &Customer::SalesZoneID),
                        MapColumn("CustomerTypeID", &Customer::CustomerTypeID),
                        MapColumn("PaymentTermID", &Customer::PaymentTermID),
                        MapColumn("TenderID", &Customer::TenderID),
                        MapColumn("PriceLineID", &Customer::PriceLineID),
                        MapColumn("UpdateDate", &Customer::UpdateDate),
                        MapColumn("Active", &Customer::Active),
                        MapColumn("SubjectToTax", &Customer::SubjectToTax),
                        MapColumn("AllowCreditSales", &Customer::AllowCreditSales),
                        MapColumn("SendAccountStatements", &Customer::SendAccountStatements)}}) {}

FamilyService::FamilyService(Database& database)
    : MasterDataTable(database,
                      {"families",
                       "a família",
                       MapColumn("FamilyID", &Family::FamilyID),
                       {MapColumn("Description", &Family::Description),
                        MapColumn("Description2", &Family::Description2),
                        MapColumn("FullPath", &Family::FullPath),
                        MapColumn("ParentFamilyID", &Family::ParentFamilyID),
                        MapColumn("ParentDescription", &Family::ParentDescription),
                        MapColumn("Discount", &Family::Discount),
                        MapColumn("UnitOfSaleID", &Family::UnitOfSaleID),
                        MapColumn("MaximumDiscountPercent", &Family::MaximumDiscountPercent)}}) {}

TenderService::TenderService(Database& database)
    : MasterDataTable(database, {"tenders",
                                 "a modalidade de pagamento",
                                 MapColumn("TenderID", &Tender::TenderID),
                                 {MapColumn("Description", &Tender::Description),
                                  MapColumn("TenderType", &Tender::TenderType),
                                  MapColumn("GivesChange", &Tender::GivesChange),
                                  MapColumn("MaximumAmount", &Tender::MaximumAmount),
                                  MapColumn("CommissionPercent", &Tender::CommissionPercent),
                                  MapColumn("OpensCashDrawer", &Tender::OpensCashDrawer)}}) {}

DocumentTypeService::DocumentTypeService(Database& database)
    : MasterDataTable(database, {"document_types",
                                 "o tipo de documento",
                                 MapColumn("DocumentTypeID", &DocumentType::DocumentTypeID),
                                 {MapColumn("Description", &DocumentType::Description),
                                  MapColumn("Kind", &DocumentType::Kind)}}) {}

DocumentSeriesService::DocumentSeriesService(Database& database)
    : MasterDataTable(database, {"document_series",
                                 "a série",
                                 MapColumn("SeriesID", &DocumentSeries::SeriesID),
                                 {MapColumn("Description", &DocumentSeries::Description),
                                  MapColumn("Kind", &DocumentSeries::Kind),
                                  MapColumn("Active", &DocumentSeries::Active)}}) {}

WarehouseService::WarehouseService(Database& database)
    : MasterDataTable(database, {"warehouses",
                                 "o armazém",
                                 MapColumn("WarehouseID", &Warehouse::WarehouseID),
                                 {MapColumn("Description", &Warehouse::Description)}}) {}

WorkstationService::WorkstationService(Database& database)
    : MasterDataTable(database, {"workstations",
                                 "o posto",
                                 MapColumn("WorkstationID", &Workstation::WorkstationID),
                                 {MapColumn("Description", &Workstation::Description),
                                  MapColumn("WarehouseID", &Workstation::WarehouseID)}}) {}

SupplierService::SupplierService(Database& database)
    : MasterDataTable(database, {"suppliers",
                                 "o fornecedor",
                                 MapColumn("SupplierID", &Supplier::SupplierID),
                                 {MapColumn("OrganizationName", &Supplier::OrganizationName),
                                  MapColumn("FederalTaxID", &Supplier::FederalTaxID)}}) {}

PlaceService::PlaceService(Database& database)
    : MasterDataTable(database, {"places",
                                 "o local de carga/descarga",
                                 MapColumn("PlaceID", &Place::PlaceID),
                                 {MapColumn("Description", &Place::Description)}}) {}

UnitOfSaleService::UnitOfSaleService(Database& database)
    : MasterDataTable(database, {"units_of_sale",
                                 "a unidade de venda",
                                 MapColumn("UnitOfSaleID", &UnitOfSale::UnitOfSaleID),
                                 {MapColumn("Description", &UnitOfSale::Description)}}) {}

CustomerTypeService::CustomerTypeService(Database& database)
    : MasterDataTable(database, {"customer_types",
                                 "o tipo de cliente",
                                 MapColumn("CustomerTypeID", &CustomerType::CustomerTypeID),
                                 {MapColumn("Description", &CustomerType::Description),
                                  MapColumn("PriceLineID", &CustomerType::PriceLineID)}}) {}

SalesZoneService::SalesZoneService(Database& database)
    : MasterDataTable(database, {"sales_zones",
                                 "a zona",
                                 MapColumn("SalesZoneID", &SalesZone::SalesZoneID),
                                 {MapColumn("Description", &SalesZone::Description),
                                  MapColumn("CountryID", &SalesZone::CountryID),
                                  MapColumn("TaxRegionID", &SalesZone::TaxRegionID),
                                  MapColumn("CurrencyID", &SalesZone::CurrencyID),
                                  MapColumn("ZoneType", &SalesZone::ZoneType)}}) {}

PaymentTermService::PaymentTermService(Database& database)
    : MasterDataTable(database, {"payment_terms",
                                 "a condição de pagamento",
                                 MapColumn("PaymentTermID", &PaymentTerm::PaymentTermID),
                                 {MapColumn("Description", &PaymentTerm::Description),
                                  MapColumn("DueDays", &PaymentTerm::DueDays)}}) {}

}  // namespace kitra::backoffice
