#include "import/Importers.h"

namespace kitra {

const std::vector<ImporterStep>& ImporterOrder() {
    static const std::vector<ImporterStep> order = {
        {"ImportSalesmen", ImportSalesmen, true},
        {"ImportCustomers", ImportCustomers, true},
        {"ImportFamilies", ImportFamilies, true},
        {"ImportSubfamilies", ImportSubfamilies, true},
        {"ImportItems", ImportItems, true},
        {"ImportSaleDocuments", ImportSaleDocuments, false},
        {"ImportCashMovements", ImportCashMovements, false},
        {"ImportReceipts", ImportReceipts, false},
    };
    return order;
}

}  // namespace kitra
