// ImportCashMovements: the restaurant's cash drawer movements of their own (no DocumentID) since
// its last transactions import, into host cash documents: entrances, withdrawals and customer
// payments on account, each with one payment of the default tender for the movement's amount in
// whole euros.
#include <array>

#include "core/Numbers.h"
#include "import/DocumentImport.h"
#include "import/Importers.h"
#include "import/MasterDataImport.h"
#include "restaurant/Statements.h"

namespace kitra {
namespace {

constexpr const char* kSection = "Mov.Caixa";
constexpr std::int32_t kPaymentOnAccount = 8;
constexpr std::int32_t kMoneyOut = 0;

std::string MovementTypeText(std::int32_t type) {
    static constexpr std::array<const char*, 8> kTexts = {
        "Fundo Maneio", "Fundo Maneio Prox", "Sangria",   "Compra Direta",
        "Vale",         "Empréstimo",        "Devolução", "Pag.Conta Corrente"};
    return type >= 1 && type <= 8 ? kTexts[static_cast<std::size_t>(type - 1)] : "";
}

}  // namespace

std::string CashDocumentTypeKeyFor(const KitraConnectorSetting& settings, std::int32_t movementType,
                                   std::int32_t movementFlow, std::int32_t customer) {
    if (movementType == kPaymentOnAccount) {
        return customer != 0 ? settings.CustomerPaymentAccountDocument : std::string();
    }
    // A flow that is neither in nor out (2) counts as money in.
    return movementFlow == kMoneyOut ? settings.CashWithdrawalTransDocument
                                     : settings.CashEntranceTransDocument;
}

bool ImportCashMovements(KitraExecutioner& engine, ado::Connection& connection,
                         Restaurant& restaurant) {
    static constexpr MasterDataImportTexts kTexts{
        .section = kSection,
        .startText = "A importar Movimentos Caixa",
        .errorText = "## Erro ## ao importar a tabela de Movimentos de Caixa. Mov.Caixa: ",
        .counter = Counter::CashMovements,
        .progress = RowProgressText::StartText,
        .idBeforeFirstRow = "",
        .date = ImportDateKind::Transactions,
    };
    const host::HostServices& services = engine.Services();
    // The cash transaction business object lives for the whole step.
    const std::unique_ptr<host::ITransactionBusiness> cash =
        services.transactions->NewTransactionBusiness();
    return ImportMasterData(
        engine, connection, restaurant, kTexts, kitra::restaurant::CashMovementsStatement,
        [&services, &cash](MasterDataRow& row) {
            KitraExecutioner& engine = row.Engine();
            const Restaurant& restaurant = row.RestaurantBeingImported();

            row.Step("movUID-check");
            const std::string uid = row["UID"].ToText();
            row.Identify(uid);
            row.Announce("Mov.Caixa UID: " + uid);

            row.Step("customerID");
            const std::int32_t customer = KnownCustomerCode(services, row["customerid"]);
            row.Step("salesmanID");
            const std::int32_t salesman = KnownSalesmanCode(services, row["SalesmanID"]);

            row.Step("docDate");
            const DateTime date = row["date"].ToDate();
            row.Step("movType");
            const std::int32_t movementType = row["MovementTypeID"].ToInt32();
            row.Step("value");
            // Cash movements arrive in whole euros, a half going to the even neighbour.
            const std::int32_t amount = RoundToInt32(engine.ParseHundredths(row["value"].ToText()));
            row.Step("movFlow");
            const std::int32_t movementFlow = row["MovementFlow"].ToInt32();
            const std::string key =
                CashDocumentTypeKeyFor(*engine.Settings(), movementType, movementFlow, customer);

            row.Step("comments");
            const std::string description =
                row["description"].IsNull() ? std::string() : row["description"].ToText();
            std::string comment = MovementTypeText(movementType);
            if (!description.empty()) comment += "\r\n" + description;

            if (key.empty()) {
                row.LeaveOut("Não foi possível adicionar o Mov.Caixa '" + uid +
                                 "' porque não foi possivel associar nenhum tipo de documento",
                             kSection);
                return;
            }
            row.Step("InitNewTransaction");
            cash->InitNewTransaction(key, restaurant.TransSerial);
            row.Step("oDocument");
            if (!services.documentTypes->Exists(key))
                throw Error("Não existe o tipo de documento '" + key + "'.");

            host::Transaction& document = cash->Current();
            document.CustomerID = customer;
            document.SalesmanID = salesman;
            document.DocumentDate = date;
            document.DueDate = date;
            document.Comment = comment;
            cash->WorkstationStamp(restaurant.WorkstationID, engine.GetClock().Now());
            const std::int16_t tender = engine.Settings()->DefaultTenderPayment;
            host::TransactionPayment payment = cash->NewPayment(tender);
            SetPaymentAmount(services, payment, amount);
            cash->AppendPayment(payment);
            cash->Calculate();
            services.transactions->Save(document);
            ++engine.Count(Counter::CashMovements);
        });
}

}  // namespace kitra
