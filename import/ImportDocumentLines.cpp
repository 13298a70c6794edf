// ImportDocumentLines: the lines of one restaurant transaction (transactionsdetails) added to the
// host document being built: item (with the restaurant's prefix), description, taxable group of
// the line's rate, salesman, warehouse, quantity (thousandths made whole units for items sold by
// weight), discounts, unit price with and without tax, and value; each calculated by the host.
#include "core/Error.h"
#include "import/DocumentImport.h"
#include "restaurant/Statements.h"

namespace kitra {

bool IsWholeHeaderUid(const std::string& headerUid) {
    return !headerUid.empty() && headerUid.size() <= 10 &&
           headerUid.find_first_not_of("0123456789") == std::string::npos;
}

const std::string& CheckedHeaderUid(const std::string& headerUid) {
    if (!IsWholeHeaderUid(headerUid)) {
        throw Error("O UID '" + headerUid +
                    "' do cabeçalho da transacção não é um número inteiro; as linhas e os "
                    "pagamentos não foram lidos.");
    }
    return headerUid;
}

void ImportDocumentLines(KitraExecutioner& engine, ado::Connection& connection,
                         const std::string& headerUid, const Restaurant& restaurant,
                         const host::DocumentType& /*documentDefinition*/) {
    if (connection.State() != ado::StateOpen) return;
    host::ITransactionBusiness& transaction = *engine.TransactionObject();

    ado::Recordset lines;
    lines.Open(kitra::restaurant::DocumentLinesStatement(CheckedHeaderUid(headerUid)), connection);
    std::int32_t lineNumber = 0;
    for (; !lines.Eof(); lines.MoveNext()) {
        if (lineNumber == INT32_MAX) throw Error("Overflow", 6);
        ++lineNumber;
        std::string itemCode = lines["itemID"].ToText();
        if (!restaurant.ItemIDPrefix.empty()) itemCode = restaurant.ItemIDPrefix + itemCode;

        host::TransactionLine line = transaction.NewLine();
        line.LineNumber = lineNumber;
        line.ItemID = itemCode;
        line.Description = lines["PluName"].ToText();
        line.TaxableGroupID = engine.GetTaxableGroupForRate(lines["TaxRate"].ToDouble());
        line.SalesmanID = engine.MapSalesmanCode(lines["SalesmanUID"].ToText());
        line.WarehouseID = restaurant.DefaultWarehouseID;
        line.TargetWarehouseID = restaurant.DefaultWarehouseID;

        double quantity = lines["Quantity"].ToDouble();
        // Items sold by weight: the restaurant counts them in thousandths (grams).
        if (engine.ItemSoldByWeight(itemCode)) quantity /= 1000;
        line.Quantity = quantity;

        line.DiscountValue = engine.ParseHundredths(lines["DiscountValue"].ToText());
        line.DiscountPercent = lines["DiscountPercentage"].ToDouble();
        line.UnitPrice = engine.ParseHundredths(lines["PluUnitPrice"].ToText());
        line.UnitPriceWithoutTax = engine.CalculateWithTaxableGroup(line.UnitPrice, line.TaxableGroupID);
        // The line's value as the restaurant keeps it: the host's calculation keeps it.
        line.GivenValueHundredths = lines["SaleValue"].ToDouble();

        transaction.CalculateLine(line);
        transaction.AppendLine(line);
    }
}

}  // namespace kitra
