// ImportReceipts: the restaurant's customer receipts (cash drawer movements of type 8 or 9 with
// a DocumentID) since its last transactions import, into host customer payments that settle the
// credit sales they paid in the customer's current account.
#include "core/Numbers.h"
#include "core/Text.h"
#include "import/DocumentImport.h"
#include "import/Importers.h"
#include "import/MasterDataImport.h"
#include "restaurant/Statements.h"

namespace kitra {
namespace {

constexpr const char* kSection = "Recibos";

std::vector<std::string> SplitAtCommas(const std::string& text) {
    std::vector<std::string> parts;
    std::size_t start = 0;
    for (std::size_t comma; (comma = text.find(',', start)) != std::string::npos; start = comma + 1)
        parts.push_back(text.substr(start, comma - start));
    parts.push_back(text.substr(start));
    return parts;
}

// The invoice's total as the restaurant gives it (hundredths), for the account line; a value
// the list does not have, or that is not a number, is 0.
double InvoiceValueAt(const std::vector<std::string>& values, std::size_t index) {
    return index < values.size() ? LeadingNumber(values[index]) / 100 : 0.0;
}

}  // namespace

bool ImportReceipts(KitraExecutioner& engine, ado::Connection& connection, Restaurant& restaurant) {
    static constexpr MasterDataImportTexts kTexts{
        .section = kSection,
        .startText = "A importar Recibos",
        .errorText = "## Erro ## ao importar a tabela de Recibos. Recibo: ",
        .counter = Counter::Receipts,
        .progress = RowProgressText::StartText,
        .idBeforeFirstRow = "0",
        .date = ImportDateKind::Transactions,
    };
    const host::HostServices& services = engine.Services();
    // The account transaction business object lives for the whole step.
    const std::unique_ptr<host::IAccountTransactionBusiness> account =
        services.accountTransactions->NewAccountTransactionBusiness();
    return ImportMasterData(
        engine, connection, restaurant, kTexts, kitra::restaurant::ReceiptsStatement,
        [&services, &account](MasterDataRow& row) {
            KitraExecutioner& engine = row.Engine();
            const Restaurant& restaurant = row.RestaurantBeingImported();
            const KitraConnectorSetting& settings = *engine.Settings();

            row.Step("receiptID-check");
            const std::int32_t number =
                RoundToInt32(KitraExecutioner::DocumentNumberFromID(row["ReceiptID"].ToText()));
            row.Identify(std::to_string(number));
            row.Announce("Recibo: " + std::to_string(number));

            row.Step("customerID");
            const std::int32_t customer = KnownCustomerCode(services, row["CustomerID"]);
            row.Step("salesmanID");
            const std::int32_t salesman = KnownSalesmanCode(services, row["SalesmanID"]);

            row.Step("docDate");
            const DateTime date = row["date"].ToDate();
            row.Step("InvoiceID");
            const std::vector<std::string> invoices = SplitAtCommas(row["InvoiceID"].ToText());
            const std::vector<std::string> invoiceValues =
                row["InvoiceValue"].IsNull() ? std::vector<std::string>{}
                                             : SplitAtCommas(row["InvoiceValue"].ToText());
            row.Step("value");
            const double amount = engine.ParseHundredths(row["value"].ToText());

            if (settings.CustomerPaymentTransDocument.empty() || settings.CreditTransDocument.empty()) {
                row.LeaveOut("Não foi possível adicionar o Recibo '" + std::to_string(number) +
                                 "' porque não existem tipos de documento associados. ",
                             kSection);
                return;
            }

            row.Step("InitNewTransaction");
            account->InitNewTransaction(settings.CustomerPaymentTransDocument, restaurant.TransSerial);
            host::AccountTransaction& receipt = account->Current();
            receipt.CustomerID = customer;
            receipt.SalesmanID = salesman;
            receipt.DocumentDate = date;
            // The receipt keeps the restaurant's number, so a receipt imported again replaces
            // itself instead of settling its invoices a second time.
            receipt.DocumentNumber = number;

            row.Step("LedgerAccountList");
            const host::LedgerAccounts ledger = account->LedgerAccountList();
            std::vector<std::pair<host::LedgerEntry, double>> found;
            for (std::size_t i = 0; i < invoices.size(); ++i) {
                const std::int32_t invoiceNumber =
                    RoundToInt32(KitraExecutioner::DocumentNumberFromID(invoices[i]));
                if (const host::LedgerEntry* entry = ledger.Find(
                        settings.CreditTransDocument, restaurant.TransSerial, invoiceNumber)) {
                    found.emplace_back(*entry, InvoiceValueAt(invoiceValues, i));
                }
            }
            if (found.empty()) {
                row.LeaveOut("Não foi possível adicionar o Recibo '" + std::to_string(number) +
                                 "' porque não existe nenhuma factura válida associada",
                             kSection);
                return;
            }

            row.Step("oAccountTransaction");
            for (const auto& [entry, invoiceValue] : found) account->AddAccountLine(entry, invoiceValue);
            row.Step("WorkstationStamp");
            account->WorkstationStamp(restaurant.WorkstationID, engine.GetClock().Now());
            host::TransactionPayment payment = account->NewPayment(settings.DefaultTenderPayment);
            SetPaymentAmount(services, payment, amount);
            account->AppendPayment(payment);
            row.Step("Calculate");
            account->Calculate();
            row.Step("SaveDocument");
            services.accountTransactions->Save(receipt);
            ++engine.Count(Counter::Receipts);
        });
}

}  // namespace kitra
