// ImportSaleDocuments: the restaurant's closed transactions of the three imported types, changed
// since its last transactions import, into host documents (invoices, credit sales, stock
// documents) with their lines and payments. A header whose type is not mapped in the settings is
// left out with one log line; a refunded header is saved and then refunded.
#include "core/Numbers.h"
#include "import/DocumentImport.h"
#include "import/DocumentReadAhead.h"
#include "import/Importers.h"
#include "import/MasterDataImport.h"
#include "restaurant/Statements.h"

namespace kitra {
namespace {

constexpr const char* kSection = "Transacções";

// Restaurant document types and the settings key each is imported under.
constexpr std::int32_t kCreditSaleType = 11;
constexpr std::int32_t kStockDocumentType = 13;
constexpr std::int32_t kInvoiceType = 17;

// A header's restaurant document type, read through the host's number parser as the row reads
// it.
std::int32_t DocumentTypeOf(const host::HostServices& services, const Variant& documentTypeUid) {
    return RoundToInt32(services.utility->ParseNumber(documentTypeUid.ToText(), ','));
}

// Ends the reading ahead however the importer ends: the workers stop with it.
class ReadAheadScope {
public:
    explicit ReadAheadScope(ado::Connection& connection) : connection_(connection) {}
    ~ReadAheadScope() { connection_.StopReadAhead(); }
    ReadAheadScope(const ReadAheadScope&) = delete;
    ReadAheadScope& operator=(const ReadAheadScope&) = delete;

private:
    ado::Connection& connection_;
};

}  // namespace

std::string DocumentTypeKeyFor(const KitraConnectorSetting& settings, std::int32_t documentTypeUid) {
    switch (documentTypeUid) {
        case kInvoiceType: return settings.InvoiceTransDocument;
        case kCreditSaleType: return settings.CreditTransDocument;
        case kStockDocumentType: return settings.StockTransDocument;
        default: return {};
    }
}

bool ImportSaleDocuments(KitraExecutioner& engine, ado::Connection& connection,
                         Restaurant& restaurant) {
    static constexpr MasterDataImportTexts kTexts{
        .section = kSection,
        .startText = "A importar Transacções",
        .errorText = "## Erro ## ao importar a tabela de Transacções. Transacção: ",
        .counter = Counter::Transactions,
        .progress = RowProgressText::StartText,
        .idBeforeFirstRow = "",
        .date = ImportDateKind::Transactions,
    };
    const host::HostServices& services = engine.Services();
    // The business object lives for the whole step and builds one document at a time.
    TransactionObjectScope transactionObject(engine);
    ReadAheadScope readAhead(connection);
    // The statements of the headers' lines and payments, in the order the rows below issue
    // them: a header whose type is mapped and whose UID can go into a statement.
    const auto readAheadStatements = [&services, &engine, &connection](ado::Recordset& headers) {
        // The UIDs one after another in one text: a restaurant's whole history is a million
        // of them, which as separate strings would cost more than the headers themselves.
        std::string uids;
        std::vector<std::uint32_t> uidEnds;
        for (; !headers.Eof(); headers.MoveNext()) {
            const std::string uid = headers["UID"].ToText();
            if (!IsWholeHeaderUid(uid)) continue;
            std::int32_t type = 0;
            try {
                type = DocumentTypeOf(services, headers["DocumentTypeUID"]);
            } catch (const std::exception&) {
                continue;  // the row itself fails on it, and the import ends there
            }
            if (DocumentTypeKeyFor(*engine.Settings(), type).empty()) continue;
            uids += uid;
            uidEnds.push_back(static_cast<std::uint32_t>(uids.size()));
        }
        // Statement 2i reads the lines of header i, 2i + 1 its payments.
        const std::size_t count = uidEnds.size() * 2;
        connection.ReadAhead(
            count,
            [uids = std::move(uids), uidEnds = std::move(uidEnds)](std::size_t i) {
                const std::size_t header = i / 2;
                const std::size_t begin = header == 0 ? 0 : uidEnds[header - 1];
                const std::string_view uid =
                    std::string_view(uids).substr(begin, uidEnds[header] - begin);
                return i % 2 == 0 ? kitra::restaurant::DocumentLinesStatement(uid)
                                  : kitra::restaurant::DocumentTendersStatement(uid);
            },
            DocumentReadAheadConnections(), kDocumentReadAheadWindow);
    };
    return ImportMasterData(
        engine, connection, restaurant, kTexts, kitra::restaurant::SaleDocumentsStatement,
        [&services, &connection](MasterDataRow& row) {
            KitraExecutioner& engine = row.Engine();
            const Restaurant& restaurant = row.RestaurantBeingImported();

            row.Step("docNumber-check");
            const std::string headerUid = row["UID"].ToText();
            const std::string documentId = row["DocumentID"].ToText();
            row.Identify(documentId);
            row.Announce("Documento: " + documentId);

            row.Step("customerID");
            const std::int32_t customer = KnownCustomerCode(services, row["CustomerID"]);

            row.Step("TableTotal");
            const double tableTotal = engine.ParseHundredths(row["TableTotal"].ToText());

            row.Step("salesmanID");
            const std::int32_t salesman = KnownSalesmanCode(services, row["SalesmanID"]);

            row.Step("docType");
            const std::int32_t documentType = DocumentTypeOf(services, row["DocumentTypeUID"]);
            row.Step("docDate");
            const DateTime documentDate = row["CreateDate"].ToDate();
            row.Step("refundDoc");
            const bool refund = row["TransactionStatus"].ToText() != "N";

            const std::string key = DocumentTypeKeyFor(*engine.Settings(), documentType);
            if (key.empty()) {
                // Each reason overwrites the one before, so the document type's always wins and
                // a skipped header gets exactly one line.
                std::string message;
                if (salesman == 0) {
                    message = "Não foi possível adicionar a Transacção '" + documentId +
                              "' porque não existe o empregado com o código '" + "0" + "'";
                }
                if (customer == 0) {
                    message = "Não foi possível adicionar a Transacção '" + documentId +
                              "' porque não existe o cliente com o código '" + "0" + "'";
                }
                message = "Não foi possível adicionar a Transacção '" + documentId +
                          "' porque não existe o tipo de documento não está mapeado.";
                row.LeaveOut(message, kSection);
                return;
            }
            const std::int16_t warehouse = restaurant.DefaultWarehouseID;

            host::ITransactionBusiness& transaction = *engine.TransactionObject();
            row.Step("oDocument");
            const std::optional<host::DocumentType> definition = services.documentTypes->Get(key);
            if (!definition) throw Error("Não existe o tipo de documento '" + key + "'.");
            row.Step("InitNewTransaction");
            transaction.InitNewTransaction(key, restaurant.TransSerial);
            row.Step("SetTransactionDefaults");
            transaction.SetTransactionDefaults(*definition, restaurant.WorkstationID);

            host::Transaction& header = transaction.Current();
            header.CustomerID = customer;
            header.SalesmanID = engine.MapSalesmanCode(std::to_string(salesman));
            header.PriceLineID = 1;
            header.SeriesID = restaurant.TransSerial;
            header.DocumentTypeID = key;
            header.DocumentNumber = RoundToInt32(KitraExecutioner::DocumentNumberFromID(documentId));
            // The header's own key: what tells the host's documents apart when the restaurant
            // gives no number (DocumentID of 7 characters or fewer).
            header.SourceUID = headerUid;
            header.ExchangeRate = 1;
            header.PricesIncludeTax = true;
            header.WarehouseID = warehouse;
            header.DocumentDate = documentDate;
            header.DueDate = documentDate;

            ImportDocumentLines(engine, connection, headerUid, restaurant, *definition);
            ImportDocumentTenders(engine, connection, headerUid, restaurant, *definition);

            row.Step("WorkstationStamp");
            transaction.WorkstationStamp(restaurant.WorkstationID, engine.GetClock().Now());

            row.Step("Credit-check");
            const host::CreditCheckAmounts amounts = transaction.CreditCheck();
            const double worth = services.utility->Round(amounts.DocumentTotal, 4);
            const double covered = services.utility->Round(amounts.PaidAmount, 4);
            header.CreditSale = covered < worth;

            const double calculated = transaction.CalculatedTotal();
            if (tableTotal != calculated) transaction.SetTotalAdjustment(tableTotal - calculated);

            row.Step("oDSOItemTransaction.Save");
            transaction.Calculate();
            services.transactions->Save(header);

            row.Step("refundDoc");
            if (refund) {
                header.StateCode = host::document_state::kVoid;
                services.transactions->Refund(header);
            }
            ++engine.Count(Counter::Transactions);
        },
        readAheadStatements);
}

}  // namespace kitra
