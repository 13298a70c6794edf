#pragma once
// The host's document types ("FAC", "VB", ...), each of one kind of document.
#include <cstdint>
#include <string>

#include "host/IMasterData.h"

namespace kitra::host {

enum class DocumentKind : std::int16_t {
    Sale = 1,                      // paid at once
    CreditSale = 2,                // on the customer's account
    Return = 3,
    StockTransport = 4,            // moves stock; a transport document
    CashEntrance = 5,
    CashWithdrawal = 6,
    CustomerPayment = 7,           // settles credit sales (a receipt)
    CustomerPaymentOnAccount = 8,  // money received before any sale it settles
    SelfConsumption = 9,
};

struct DocumentType {
    std::string DocumentTypeID;  // the code
    std::string Description;
    DocumentKind Kind = DocumentKind::Sale;

    bool operator==(const DocumentType&) const = default;
};

class IDocumentTypeService : public IMasterData<DocumentType, std::string> {};

}  // namespace kitra::host
