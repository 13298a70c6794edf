#pragma once
// The statements the connector issues against a restaurant database, character for character:
// blanks, letter case and repeated columns included. The importers issue them from here and the
// schema's tests run them from here, so the two cannot drift apart. Dates are inserted as the
// "yyyy-mm-dd hh:mm:ss" texts the settings keep; header UIDs are inserted unquoted.
#include <string>
#include <string_view>

namespace kitra::restaurant {

// Salesmen changed since the last import of master data, by SalesmanID.
inline std::string SalesmenStatement(std::string_view entityImportDate) {
    return "SELECT SalesmanID,SalesmanName,SalesmanPassword,Telephone,MobilePhone, AddressLine1, AddressLine2, PostalCode, EmailAddress, Locality FROM salesmans WHERE RecordDeleted = 0 AND DATE_FORMAT(ModifyDate,'%Y-%m-%d %H:%i:%s') > STR_TO_DATE('" +
           std::string(entityImportDate) +
           "','%Y-%m-%d %H:%i:%s') order by SalesmanID";
}

// Customers changed since the last import of master data, by CustomerID (FederalTaxID is
// selected twice).
inline std::string CustomersStatement(std::string_view entityImportDate) {
    return "SELECT CustomerID,Name,GlobalDiscount,CardID,FederalTaxID,EmailAddress,PartyAddressLine1,PartyAddressLine2,PartyPostalCode,PartyCountryID,Telephone1,MobileTelephone1, PartyLocationID, FederalTaxID FROM customers WHERE RecordDeleted = 0 AND DATE_FORMAT(ModifyDate,'%Y-%m-%d %H:%i:%s') > STR_TO_DATE('" +
           std::string(entityImportDate) +
           "','%Y-%m-%d %H:%i:%s') order by CustomerID";
}

// Item families changed since the last import of master data, by code.
inline std::string FamiliesStatement(std::string_view entityImportDate) {
    return "SELECT code,description FROM families WHERE RecordDeleted = 0 AND DATE_FORMAT(ModifyDate,'%Y-%m-%d %H:%i:%s') > STR_TO_DATE('" +
           std::string(entityImportDate) +
           "','%Y-%m-%d %H:%i:%s') order by code";
}

// Subfamilies changed since the last import of master data, with their family; only the
// subfamily's own change date counts.
inline std::string SubfamiliesStatement(std::string_view entityImportDate) {
    return "SELECT subfamilies.code,families.code,families.description,subfamilies.Description FROM subfamilies INNER JOIN families on families.uid = subfamilies.familyuid WHERE subfamilies.RecordDeleted = 0 AND DATE_FORMAT(subfamilies.ModifyDate,'%Y-%m-%d %H:%i:%s') > STR_TO_DATE('" +
           std::string(entityImportDate) +
           "','%Y-%m-%d %H:%i:%s') order by subfamilies.code";
}

// Sale items (PLUs) changed since the last import of master data, with their prices, tax rate
// and subfamily code.
inline std::string ItemsStatement(std::string_view entityImportDate) {
    return "SELECT pl.ItemID ItemID, pl.description Description, pl.ShortDescription1 ShortDescription1, tx.TaxRate TaxRate, pl.BarCode BarCode, sf.code SubFamilyCode , pl.StockManagement StockManagement, p.ReadQuantityFromScale ReadQuantityFromScale, p.SalesPrice1 SalesPrice1, p.SalesPrice2 SalesPrice2, p.SalesPrice3 SalesPrice3, p.SalesPrice4 SalesPrice4, p.SalesPrice5 SalesPrice5 FROM plus pl INNER JOIN  properties p on pl.PropertyUID = p.UID INNER JOIN taxes tx on tx.uid = p.ItemTaxID1 INNER JOIN subFamilies sf on sf.uid = pl.SubFamilyID WHERE pl.RecordDeleted = 0 AND DATE_FORMAT(pl.ModifyDate,'%Y-%m-%d %H:%i:%s') > STR_TO_DATE('" +
           std::string(entityImportDate) +
           "','%Y-%m-%d %H:%i:%s') order by pl.ItemID";
}

// Transaction headers of the three imported document types (11, 17, 13) changed since the
// last import of transactions, in DocumentID order.
inline std::string SaleDocumentsStatement(std::string_view transactionsImportDate) {
    return "SELECT th.UID, salesmans.SalesmanID SalesmanID, th.CreateDate CreateDate,  th.ModifyDate ModifyDate, DocumentID, customers.CustomerID CustomerID, DocumentTypeUID, TransactionStatus, TransactionStartTerminalUID, th.TableTotal TableTotal FROM transactionsheaders th LEFT OUTER JOIN salesmans on salesmans.uid = th.CreateSalesmanUID LEFT OUTER JOIN customers on customers.uid = th. CustomerUID WHERE DATE_FORMAT(th.ModifyDate,'%Y-%m-%d %H:%i:%s') > STR_TO_DATE('" +
           std::string(transactionsImportDate) +
           "','%Y-%m-%d %H:%i:%s') AND th.DocumentTypeUID in (11,17,13) order by DocumentID";
}

// The lines of one transaction header, with item code and tax rate; the header UID is
// appended as it is, unquoted (DiscountPercentage is selected twice).
inline std::string DocumentLinesStatement(std::string_view headerUid) {
    return "SELECT td.UID UID, td.CreateDate CreateDate, td.PluName PluName, td.PluUid PluUid, pl.ItemID ItemID, td.Quantity Quantity, td.PluUnitPrice PluUnitPrice, td.SaleValue SaleValue, td.DiscountPercentage DiscountPercentage, td.DiscountValue DiscountValue, td.DiscountPercentage DiscountPercentage, td.SalesmanUID SalesmanUID, td.Waste Waste, tx.taxrate TaxRate from transactionsdetails td INNER JOIN taxes tx on tx.uid = td.SaleTaxUID INNER JOIN plus pl on td.PluUid = pl.UID Where TransactionUID = " +
           std::string(headerUid);
}

// The payments of one transaction header, with the payment type's code; the header UID is
// appended as it is, unquoted.
inline std::string DocumentTendersStatement(std::string_view headerUid) {
    return "SELECT tt.UID UID, tt.PaymentTypeUID PaymentTypeUID , tt.value value, tt.PaymentType PaymentType, pt.code PaymentTypeCode FROM transactionstenders tt inner join PaymentTypes pt on tt.PaymentTypeUID = pt.uid Where tt.TransactionUID = " +
           std::string(headerUid);
}

// Cash drawer movements that belong to no document (empty DocumentID), since the last
// import of transactions, by UID.
inline std::string CashMovementsStatement(std::string_view transactionsImportDate) {
    return "SELECT cm.UID UID, salesmans.SalesmanID SalesmanID, customers.customerid customerid,cm.date date, value, MovementTypeID, MovementFlow, DocumentID, cm.description description FROM cashdrawer_movements cm INNER JOIN salesmans on salesmans.uid = cm.SalesmanUID LEFT JOIN customers on customers.uid = cm.entityuid INNER JOIN cashdrawermovementtypes mt on cm.MovementTypeID = mt.uid WHERE documentid = '' AND DATE_FORMAT(cm.Date,'%Y-%m-%d %H:%i:%s') > STR_TO_DATE('" +
           std::string(transactionsImportDate) +
           "','%Y-%m-%d %H:%i:%s') order by cm.UID";
}

// Customer receipts (movements of type 8 or 9 with a DocumentID) since the last import of
// transactions, one row per receipt with the paid documents' numbers and totals joined by ",".
inline std::string ReceiptsStatement(std::string_view transactionsImportDate) {
    return "SELECT cm.UID UID, GROUP_CONCAT(th.documentid SEPARATOR ',') InvoiceID , GROUP_CONCAT(th.tabletotal SEPARATOR ',') InvoiceValue,c.customerid ,tt.ReceiptMovementuid , salesmans.SalesmanID SalesmanID, c.customerid customerid,cm.date date, cm.value value, cm.DocumentID ReceiptID from transactionsheaders th inner join transactionstenders tt on tt.transactionuid = th.uid inner join customers c on c.uid = th.customeruid inner join cashdrawer_movements cm on cm.uid = tt.ReceiptMovementuid INNER JOIN salesmans on salesmans.uid = cm.SalesmanUID WHERE cm.MovementTypeid in (8,9) AND DATE_FORMAT(Date,'%Y-%m-%d %H:%i:%s') > STR_TO_DATE('" +
           std::string(transactionsImportDate) +
           "','%Y-%m-%d %H:%i:%s') and cm.DocumentID  <> '' group by ReceiptID order by cm.DocumentID";
}

}  // namespace kitra::restaurant
