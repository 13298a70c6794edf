#include "backoffice/Schema.h"

#include <algorithm>

#include <fmt/format.h>

namespace kitra::backoffice {
namespace {

// Version 1: the company, tax, master data, and the connectors' settings. Documents (sales,
// stock, cash, account transactions) come in later versions.
// Texts are NOT NULL with '' as default so that readers never meet a null where a record has
// an empty text. Text keys compare without regard to letter case, as users type codes.
constexpr const char* kVersion1 = R"sql(
CREATE TABLE company (
    CompanyID INTEGER PRIMARY KEY CHECK (CompanyID = 1),
    Name TEXT NOT NULL,
    FederalTaxID TEXT NOT NULL DEFAULT '',
    AddressLine1 TEXT NOT NULL DEFAULT '',
    AddressLine2 TEXT NOT NULL DEFAULT '',
    PostalCode TEXT NOT NULL DEFAULT '',
    Locality TEXT NOT NULL DEFAULT '',
    CountryID TEXT NOT NULL,
    TaxRegionID INTEGER NOT NULL,
    CurrencyID TEXT NOT NULL,
    DefaultUnitOfSaleID TEXT NOT NULL,
    DefaultSalesZoneID INTEGER NOT NULL,
    DefaultCustomerTypeID INTEGER NOT NULL,
    DefaultPaymentTermID INTEGER NOT NULL,
    DefaultTenderID INTEGER NOT NULL,
    DefaultPriceLineID INTEGER NOT NULL CHECK (DefaultPriceLineID BETWEEN 1 AND 5),
    FOREIGN KEY (CountryID, TaxRegionID) REFERENCES tax_regions (CountryID, TaxRegionID)
);

CREATE TABLE tax_regions (
    CountryID TEXT NOT NULL,
    TaxRegionID INTEGER NOT NULL,
    Description TEXT NOT NULL DEFAULT '',
    PRIMARY KEY (CountryID, TaxRegionID)
);

CREATE TABLE taxable_groups (
    TaxableGroupID INTEGER PRIMARY KEY,
    Description TEXT NOT NULL DEFAULT ''
);

CREATE TABLE taxable_group_rates (
    TaxableGroupID INTEGER NOT NULL REFERENCES taxable_groups (TaxableGroupID) ON DELETE CASCADE,
    CountryID TEXT NOT NULL,
    TaxRegionID INTEGER NOT NULL,
    Rate REAL NOT NULL,
    PRIMARY KEY (TaxableGroupID, CountryID, TaxRegionID),
    FOREIGN KEY (CountryID, TaxRegionID) REFERENCES tax_regions (CountryID, TaxRegionID)
);
CREATE INDEX taxable_group_rates_by_rate ON taxable_group_rates (CountryID, TaxRegionID, Rate);

CREATE TABLE salesmen (
    SalesmanID INTEGER PRIMARY KEY,
    Name TEXT NOT NULL DEFAULT '',
    Password TEXT NOT NULL DEFAULT '',
    Telephone TEXT NOT NULL DEFAULT '',
    MobilePhone TEXT NOT NULL DEFAULT '',
    AddressLine1 TEXT NOT NULL DEFAULT '',
    AddressLine2 TEXT NOT NULL DEFAULT '',
    Locality TEXT NOT NULL DEFAULT '',
    PostalCode TEXT NOT NULL DEFAULT '',
    Email TEXT NOT NULL DEFAULT ''
);

CREATE TABLE customers (
    CustomerID INTEGER PRIMARY KEY,
    OrganizationName TEXT NOT NULL DEFAULT '',
    CardID TEXT NOT NULL DEFAULT '',
    DirectDiscount REAL NOT NULL DEFAULT 0,
    AddressLine1 TEXT NOT NULL DEFAULT '',
    AddressLine2 TEXT NOT NULL DEFAULT '',
    PostalCode TEXT NOT NULL DEFAULT '',
    Telephone TEXT NOT NULL DEFAULT '',
    MobileTelephone TEXT NOT NULL DEFAULT '',
    Email TEXT NOT NULL DEFAULT '',
    FederalTaxID TEXT NOT NULL DEFAULT '',
    CountryID TEXT NOT NULL DEFAULT '',
    TaxRegionID INTEGER NOT NULL DEFAULT 0,
    CurrencyID TEXT NOT NULL DEFAULT '',
    SalesZoneID INTEGER NOT NULL DEFAULT 0,
    CustomerTypeID INTEGER NOT NULL DEFAULT 0,
    PaymentTermID INTEGER NOT NULL DEFAULT 0,
    TenderID INTEGER NOT NULL DEFAULT 0,
    PriceLineID INTEGER NOT NULL DEFAULT 0,
    UpdateDate DATETIME,
    Active BOOLEAN NOT NULL DEFAULT 0,
    SubjectToTax BOOLEAN NOT NULL DEFAULT 0,
    AllowCreditSales BOOLEAN NOT NULL DEFAULT 0,
    SendAccountStatements BOOLEAN NOT NULL DEFAULT 0
);
CREATE INDEX customers_by_tax_id ON customers (FederalTaxID);

CREATE TABLE families (
    FamilyID INTEGER PRIMARY KEY,
    Description TEXT NOT NULL DEFAULT '',
    Description2 TEXT NOT NULL DEFAULT '',
    FullPath TEXT NOT NULL DEFAULT '',
    ParentFamilyID INTEGER NOT NULL DEFAULT 0,
    ParentDescription TEXT NOT NULL DEFAULT '',
    Discount REAL NOT NULL DEFAULT 0,
    UnitOfSaleID TEXT NOT NULL DEFAULT '',
    MaximumDiscountPercent REAL NOT NULL DEFAULT 100
);
CREATE INDEX families_by_parent ON families (ParentFamilyID);

CREATE TABLE items (
    ItemID TEXT NOT NULL COLLATE NOCASE PRIMARY KEY,
    Description TEXT NOT NULL DEFAULT '',
    ShortDescription TEXT NOT NULL DEFAULT '',
    TaxableGroupID INTEGER NOT NULL DEFAULT 0,
    BarCode TEXT NOT NULL DEFAULT '',
    ReadQuantityFromScale BOOLEAN NOT NULL DEFAULT 0,
    UnitOfSaleID TEXT NOT NULL DEFAULT '',
    FamilyID INTEGER NOT NULL DEFAULT 0,
    StockManagement BOOLEAN NOT NULL DEFAULT 0,
    SupplierID INTEGER NOT NULL DEFAULT 0,
    ItemType INTEGER NOT NULL DEFAULT 0
);
CREATE INDEX items_by_family ON items (FamilyID);
CREATE INDEX items_by_bar_code ON items (BarCode);

CREATE TABLE item_prices (
    ItemID TEXT NOT NULL COLLATE NOCASE
        REFERENCES items (ItemID) ON DELETE CASCADE ON UPDATE CASCADE,
    PriceLineID INTEGER NOT NULL CHECK (PriceLineID BETWEEN 1 AND 5),
    PriceWithTax REAL NOT NULL DEFAULT 0,
    PriceWithoutTax REAL NOT NULL DEFAULT 0,
    PRIMARY KEY (ItemID, PriceLineID)
);

CREATE TABLE tenders (
    TenderID INTEGER PRIMARY KEY,
    Description TEXT NOT NULL DEFAULT '',
    TenderType INTEGER NOT NULL,
    GivesChange BOOLEAN NOT NULL DEFAULT 0,
    MaximumAmount REAL NOT NULL DEFAULT 0,
    CommissionPercent REAL NOT NULL DEFAULT 0,
    OpensCashDrawer BOOLEAN NOT NULL DEFAULT 0
);

CREATE TABLE document_types (
    DocumentTypeID TEXT NOT NULL COLLATE NOCASE PRIMARY KEY,
    Description TEXT NOT NULL DEFAULT '',
    Kind INTEGER NOT NULL CHECK (Kind BETWEEN 1 AND 9)
);

CREATE TABLE document_series (
    SeriesID TEXT NOT NULL COLLATE NOCASE PRIMARY KEY,
    Description TEXT NOT NULL DEFAULT '',
    Kind INTEGER NOT NULL CHECK (Kind BETWEEN 1 AND 3),
    Active BOOLEAN NOT NULL DEFAULT 1
);

CREATE TABLE warehouses (
    WarehouseID INTEGER PRIMARY KEY,
    Description TEXT NOT NULL DEFAULT ''
);

CREATE TABLE workstations (
    WorkstationID INTEGER PRIMARY KEY,
    Description TEXT NOT NULL DEFAULT ''
);

CREATE TABLE suppliers (
    SupplierID INTEGER PRIMARY KEY,
    OrganizationName TEXT NOT NULL DEFAULT '',
    FederalTaxID TEXT NOT NULL DEFAULT ''
);

CREATE TABLE places (
    PlaceID INTEGER PRIMARY KEY,
    Description TEXT NOT NULL DEFAULT ''
);

CREATE TABLE units_of_sale (
    UnitOfSaleID TEXT NOT NULL COLLATE NOCASE PRIMARY KEY,
    Description TEXT NOT NULL DEFAULT ''
);

CREATE TABLE customer_types (
    CustomerTypeID INTEGER PRIMARY KEY,
    Description TEXT NOT NULL DEFAULT '',
    PriceLineID INTEGER NOT NULL DEFAULT 1 CHECK (PriceLineID BETWEEN 1 AND 5)
);

CREATE TABLE sales_zones (
    SalesZoneID INTEGER PRIMARY KEY,
    Description TEXT NOT NULL DEFAULT '',
    CountryID TEXT NOT NULL DEFAULT '',
    TaxRegionID INTEGER NOT NULL DEFAULT 0,
    CurrencyID TEXT NOT NULL DEFAULT '',
    ZoneType INTEGER NOT NULL DEFAULT 0 CHECK (ZoneType BETWEEN 0 AND 2)
);

CREATE TABLE payment_terms (
    PaymentTermID INTEGER PRIMARY KEY,
    Description TEXT NOT NULL DEFAULT '',
    DueDays INTEGER NOT NULL DEFAULT 0 CHECK (DueDays >= 0)
);

CREATE TABLE connector_settings (
    Key1 TEXT NOT NULL,
    Key2 TEXT NOT NULL,
    SettingXml TEXT NOT NULL,
    ExportToBranch BOOLEAN NOT NULL DEFAULT 0,
    UpdateDate DATETIME NOT NULL,
    PRIMARY KEY (Key1, Key2)
);

PRAGMA user_version=1;
)sql";

// Version 2: what the back office's users keep on an item beside what an import brings (its
// cost and notes), so that updating an imported item never loses them.
constexpr const char* kVersion2 = R"sql(
ALTER TABLE items ADD COLUMN CostPrice REAL NOT NULL DEFAULT 0;
ALTER TABLE items ADD COLUMN Notes TEXT NOT NULL DEFAULT '';

PRAGMA user_version=2;
)sql";

// Version 3: the connectors' settings remember which command or run stored them, and every
// settings text is kept in a history before another replaces or deletes it, so that no
// settings are lost to a mistaken load or to a run that could not read them.
constexpr const char* kVersion3 = R"sql(
ALTER TABLE connector_settings ADD COLUMN UpdatedBy TEXT NOT NULL DEFAULT '';

CREATE TABLE connector_settings_history (
    HistoryID INTEGER PRIMARY KEY,
    Key1 TEXT NOT NULL,
    Key2 TEXT NOT NULL,
    SettingXml TEXT NOT NULL,
    StoredDate DATETIME NOT NULL,
    StoredBy TEXT NOT NULL DEFAULT '',
    ReplacedDate DATETIME NOT NULL,
    ReplacedBy TEXT NOT NULL DEFAULT ''
);
CREATE INDEX connector_settings_history_by_keys ON connector_settings_history (Key1, Key2, HistoryID);

PRAGMA user_version=3;
)sql";

// Version 4: documents. A document (sale, credit sale, stock or cash document) is identified by
// type + series + number; its lines, VAT by taxable group, payments (with the card detail of
// card payments), stock movements and current-account entry hang off its DocumentKey and are
// written in the same transaction as the document. Replaced and voided versions are kept in
// document_history. A workstation names the warehouse its documents move stock in by default.
constexpr const char* kVersion4 = R"sql(
ALTER TABLE workstations ADD COLUMN WarehouseID INTEGER NOT NULL DEFAULT 1;

CREATE TABLE documents (
    DocumentKey INTEGER PRIMARY KEY,
    DocumentTypeID TEXT NOT NULL COLLATE NOCASE,
    SeriesID TEXT NOT NULL COLLATE NOCASE,
    DocumentNumber INTEGER NOT NULL CHECK (DocumentNumber > 0),
    NumberAssigned BOOLEAN NOT NULL DEFAULT 0,
    Kind INTEGER NOT NULL CHECK (Kind BETWEEN 1 AND 9),
    StockDirection INTEGER NOT NULL DEFAULT 0 CHECK (StockDirection IN (-1, 0, 1)),
    CustomerID INTEGER NOT NULL DEFAULT 0,
    SalesmanID INTEGER NOT NULL DEFAULT 0,
    PriceLineID INTEGER NOT NULL DEFAULT 1,
    ExchangeRate REAL NOT NULL DEFAULT 1,
    PricesIncludeTax BOOLEAN NOT NULL DEFAULT 1,
    WarehouseID INTEGER NOT NULL DEFAULT 0,
    DocumentDate DATETIME NOT NULL,
    DueDate DATETIME NOT NULL,
    CurrencyID TEXT NOT NULL DEFAULT '',
    CountryID TEXT NOT NULL DEFAULT '',
    TaxRegionID INTEGER NOT NULL DEFAULT 0,
    WorkstationID INTEGER NOT NULL DEFAULT 0,
    StampDate DATETIME,
    Comment TEXT NOT NULL DEFAULT '',
    CreditSale BOOLEAN NOT NULL DEFAULT 0,
    LinesTotal REAL NOT NULL DEFAULT 0,
    TotalNet REAL NOT NULL DEFAULT 0,
    TotalTax REAL NOT NULL DEFAULT 0,
    TotalAdjustment REAL NOT NULL DEFAULT 0,
    Total REAL NOT NULL DEFAULT 0,
    PaidAmount REAL NOT NULL DEFAULT 0,
    State INTEGER NOT NULL DEFAULT 0,
    SavedAt DATETIME NOT NULL,
    UNIQUE (DocumentTypeID, SeriesID, DocumentNumber)
);
CREATE INDEX documents_by_date ON documents (DocumentDate);
CREATE INDEX documents_by_customer ON documents (CustomerID);

CREATE TABLE document_lines (
    DocumentKey INTEGER NOT NULL REFERENCES documents (DocumentKey) ON DELETE CASCADE,
    LineNumber INTEGER NOT NULL,
    ItemID TEXT NOT NULL DEFAULT '' COLLATE NOCASE,
    Description TEXT NOT NULL DEFAULT '',
    TaxableGroupID INTEGER NOT NULL DEFAULT 0,
    TaxRate REAL NOT NULL DEFAULT 0,
    SalesmanID INTEGER NOT NULL DEFAULT 0,
    WarehouseID INTEGER NOT NULL DEFAULT 0,
    TargetWarehouseID INTEGER NOT NULL DEFAULT 0,
    Quantity REAL NOT NULL DEFAULT 0,
    UnitPrice REAL NOT NULL DEFAULT 0,
    UnitPriceWithoutTax REAL NOT NULL DEFAULT 0,
    DiscountPercent REAL NOT NULL DEFAULT 0,
    DiscountValue REAL NOT NULL DEFAULT 0,
    GrossValue REAL NOT NULL DEFAULT 0,
    DiscountAmount REAL NOT NULL DEFAULT 0,
    TotalWithTax REAL NOT NULL DEFAULT 0,
    NetValue REAL NOT NULL DEFAULT 0,
    TaxValue REAL NOT NULL DEFAULT 0,
    PRIMARY KEY (DocumentKey, LineNumber)
);
CREATE INDEX document_lines_by_item ON document_lines (ItemID);

CREATE TABLE document_taxes (
    DocumentKey INTEGER NOT NULL REFERENCES documents (DocumentKey) ON DELETE CASCADE,
    TaxableGroupID INTEGER NOT NULL,
    Rate REAL NOT NULL,
    TaxableAmount REAL NOT NULL,
    TaxAmount REAL NOT NULL,
    TotalWithTax REAL NOT NULL,
    PRIMARY KEY (DocumentKey, TaxableGroupID)
);

CREATE TABLE document_payments (
    DocumentKey INTEGER NOT NULL REFERENCES documents (DocumentKey) ON DELETE CASCADE,
    LineNumber INTEGER NOT NULL,
    TenderID INTEGER NOT NULL,
    Amount REAL NOT NULL,
    PRIMARY KEY (DocumentKey, LineNumber)
);
CREATE INDEX document_payments_by_tender ON document_payments (TenderID);

CREATE TABLE card_payments (
    DocumentKey INTEGER NOT NULL,
    LineNumber INTEGER NOT NULL,
    Amount REAL NOT NULL,
    PRIMARY KEY (DocumentKey, LineNumber),
    FOREIGN KEY (DocumentKey, LineNumber)
        REFERENCES document_payments (DocumentKey, LineNumber) ON DELETE CASCADE
);

CREATE TABLE stock_movements (
    MovementID INTEGER PRIMARY KEY,
    DocumentKey INTEGER NOT NULL REFERENCES documents (DocumentKey) ON DELETE CASCADE,
    LineNumber INTEGER NOT NULL,
    ItemID TEXT NOT NULL COLLATE NOCASE,
    WarehouseID INTEGER NOT NULL,
    Quantity REAL NOT NULL,
    MovementDate DATETIME NOT NULL,
    Reversal BOOLEAN NOT NULL DEFAULT 0
);
CREATE INDEX stock_movements_by_item ON stock_movements (ItemID, WarehouseID);
CREATE INDEX stock_movements_by_document ON stock_movements (DocumentKey);

CREATE VIEW item_stock AS
    SELECT ItemID, WarehouseID, SUM(Quantity) AS Quantity
    FROM stock_movements GROUP BY ItemID, WarehouseID;

CREATE TABLE account_entries (
    EntryID INTEGER PRIMARY KEY,
    DocumentKey INTEGER NOT NULL UNIQUE REFERENCES documents (DocumentKey) ON DELETE CASCADE,
    EntryType TEXT NOT NULL DEFAULT 'D' CHECK (EntryType IN ('D', 'C')),
    CustomerID INTEGER NOT NULL,
    DocumentTypeID TEXT NOT NULL COLLATE NOCASE,
    SeriesID TEXT NOT NULL COLLATE NOCASE,
    DocumentNumber INTEGER NOT NULL,
    DocumentDate DATETIME NOT NULL,
    DueDate DATETIME NOT NULL,
    Total REAL NOT NULL,
    Amount REAL NOT NULL,
    OpenAmount REAL NOT NULL CHECK (OpenAmount >= 0)
);
CREATE INDEX account_entries_by_customer ON account_entries (CustomerID, DocumentDate);
CREATE INDEX account_entries_by_document
    ON account_entries (DocumentTypeID, SeriesID, DocumentNumber);

CREATE TABLE account_settlements (
    SettlementID INTEGER PRIMARY KEY,
    ReceiptKey INTEGER NOT NULL REFERENCES documents (DocumentKey) ON DELETE CASCADE,
    EntryID INTEGER NOT NULL REFERENCES account_entries (EntryID),
    Amount REAL NOT NULL CHECK (Amount > 0),
    InvoiceValue REAL NOT NULL DEFAULT 0,
    UNIQUE (ReceiptKey, EntryID)
);
CREATE INDEX account_settlements_by_entry ON account_settlements (EntryID);

CREATE TABLE cash_movements (
    MovementID INTEGER PRIMARY KEY,
    DocumentKey INTEGER NOT NULL REFERENCES documents (DocumentKey) ON DELETE CASCADE,
    WorkstationID INTEGER NOT NULL,
    TenderID INTEGER NOT NULL,
    Amount REAL NOT NULL,
    MovementDate DATETIME NOT NULL
);
CREATE INDEX cash_movements_by_date ON cash_movements (MovementDate);

CREATE TABLE document_history (
    HistoryID INTEGER PRIMARY KEY,
    DocumentKey INTEGER NOT NULL,
    DocumentTypeID TEXT NOT NULL COLLATE NOCASE,
    SeriesID TEXT NOT NULL COLLATE NOCASE,
    DocumentNumber INTEGER NOT NULL,
    Event TEXT NOT NULL CHECK (Event IN ('replaced', 'voided')),
    EventDate DATETIME NOT NULL,
    FormerVersion TEXT NOT NULL
);
CREATE INDEX document_history_by_document ON document_history (DocumentKey);

PRAGMA user_version=4;
)sql";

// Version 5: documents the back office numbered itself (the source gave number 0) are found
// again by their source's moment, customer and salesman when they are imported again.
constexpr const char* kVersion5 = R"sql(
CREATE INDEX documents_numbered_here ON documents (SeriesID, DocumentTypeID, DocumentDate)
    WHERE NumberAssigned = 1;

PRAGMA user_version=5;
)sql";

// Version 6: a document keeps its source record's own key (SourceUID, a restaurant
// transaction's UID), by which a document the back office numbered itself is found again; such a
// document moves to the series' next free number when its source's own document with that number
// arrives, and the history says so (event 'renumbered').
constexpr const char* kVersion6 = R"sql(
ALTER TABLE documents ADD COLUMN SourceUID TEXT;
CREATE INDEX documents_by_source ON documents (SeriesID, DocumentTypeID, SourceUID)
    WHERE NumberAssigned = 1 AND SourceUID IS NOT NULL;

CREATE TABLE document_history_6 (
    HistoryID INTEGER PRIMARY KEY,
    DocumentKey INTEGER NOT NULL,
    DocumentTypeID TEXT NOT NULL COLLATE NOCASE,
    SeriesID TEXT NOT NULL COLLATE NOCASE,
    DocumentNumber INTEGER NOT NULL,
    Event TEXT NOT NULL CHECK (Event IN ('replaced', 'voided', 'renumbered')),
    EventDate DATETIME NOT NULL,
    FormerVersion TEXT NOT NULL
);
INSERT INTO document_history_6 SELECT HistoryID, DocumentKey, DocumentTypeID, SeriesID,
    DocumentNumber, Event, EventDate, FormerVersion FROM document_history;
DROP TABLE document_history;
ALTER TABLE document_history_6 RENAME TO document_history;
CREATE INDEX document_history_by_document ON document_history (DocumentKey);

PRAGMA user_version=6;
)sql";

// Version 7: each restaurant's last import as the host runs it (the second it began and the
// import dates it left), so that the next run starts again from that second and what changed
// while the import went on, or in the second it ended, comes again. A document can be taken out
// of the back office; its history keeps the version taken out ("removed").
constexpr const char* kVersion7 = R"sql(
CREATE TABLE restaurant_imports (
    RestaurantKey TEXT NOT NULL PRIMARY KEY,
    RestaurantName TEXT NOT NULL,
    StartedAt DATETIME NOT NULL,
    EntitiesLeft TEXT NOT NULL,
    TransactionsLeft TEXT NOT NULL
);

CREATE TABLE document_history_events (
    HistoryID INTEGER PRIMARY KEY,
    DocumentKey INTEGER NOT NULL,
    DocumentTypeID TEXT NOT NULL COLLATE NOCASE,
    SeriesID TEXT NOT NULL COLLATE NOCASE,
    DocumentNumber INTEGER NOT NULL,
    Event TEXT NOT NULL CHECK (Event IN ('replaced', 'voided', 'renumbered', 'removed')),
    EventDate DATETIME NOT NULL,
    FormerVersion TEXT NOT NULL
);
INSERT INTO document_history_events SELECT HistoryID, DocumentKey, DocumentTypeID, SeriesID,
    DocumentNumber, Event, EventDate, FormerVersion FROM document_history;
DROP TABLE document_history;
ALTER TABLE document_history_events RENAME TO document_history;
CREATE INDEX document_history_by_document ON document_history (DocumentKey);
CREATE INDEX document_history_by_number ON document_history (DocumentTypeID, SeriesID, DocumentNumber);

PRAGMA user_version=7;
)sql";

// Version 8: a document's cash movements are found by its key, as its other rows are: saving a
// document again reads them for the former version and replaces them, and a scan of the whole
// table for each document made importing a back office again grow with the square of its size.
constexpr const char* kVersion8 = R"sql(
CREATE INDEX cash_movements_by_document ON cash_movements (DocumentKey);

PRAGMA user_version=8;
)sql";

// Step k brings a file of version k-1 to version k, and ends by writing k as the version.
constexpr const char* kSteps[] = {kVersion1, kVersion2, kVersion3, kVersion4, kVersion5,
                                  kVersion6, kVersion7, kVersion8};
static_assert(std::size(kSteps) == kSchemaVersion);

}  // namespace

void UpgradeSchema(Database& database) {
    if (database.UserVersion() == kSchemaVersion) return;
    // The write lock first, then the version: two programs opening an old file at once must not
    // both run the same step.
    Transaction transaction(database);
    const int version = database.UserVersion();
    if (version > kSchemaVersion) {
        throw Error(fmt::format(
            "Esta retaguarda tem a versão {} do esquema, mais recente do que a versão {} que este "
            "programa conhece. Actualize o programa.",
            version, kSchemaVersion));
    }
    for (int step = version + 1; step <= kSchemaVersion; ++step) database.Exec(kSteps[step - 1]);
    if (database.UserVersion() != kSchemaVersion)
        throw Error("A actualização do esquema da retaguarda não chegou à versão esperada.");
    transaction.Commit();
}

std::vector<std::string> SchemaTables() {
    std::vector<std::string> tables = {
        "account_entries", "account_settlements", "card_payments", "cash_movements",
        "document_history", "document_lines", "document_payments", "document_taxes",
        "restaurant_imports",
        "documents", "item_stock", "stock_movements", "connector_settings_history",
        "company",        "connector_settings", "customer_types", "customers",
        "document_series", "document_types",    "families",       "item_prices",
        "items",          "payment_terms",      "places",         "sales_zones",
        "salesmen",       "suppliers",          "tax_regions",    "taxable_group_rates",
        "taxable_groups", "tenders",            "units_of_sale",  "warehouses",
        "workstations"};
    std::sort(tables.begin(), tables.end());
    return tables;
}

}  // namespace kitra::backoffice
