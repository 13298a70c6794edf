#pragma once
// Base of the document importers' tests: a restaurant database on the private server with taxes,
// payment types, salesmen, customers and items, a real back office that knows some of them, the
// settings that map the document types and tenders, and helpers that add restaurant headers,
// lines and tenders and read what the back office holds.
#include <optional>
#include <string>
#include <vector>

#include "backoffice/Database.h"
#include "import/DocumentImport.h"
#include "tests/import/MasterDataImportTest.h"

namespace kitra {

class DocumentImportTest : public MasterDataImportTest {
protected:
    void SetUp() override {
        MasterDataImportTest::SetUp();
        Database().Execute(
            "INSERT INTO taxes (uid, TaxRate) VALUES (1, 23.00), (2, 13.00), (3, 6.00), (4, 99.00);"
            "INSERT INTO paymenttypes (uid, code, Description) VALUES (1, '1', 'Dinheiro'),"
            " (2, '2', 'Multibanco'), (3, '3', 'Visa'), (4, '4', 'MB Way'), (5, '5', 'Cheque'),"
            " (6, '9999', 'Conta Corrente'), (7, '9998', 'Oferta'), (8, '8', 'Refeição');"
            "INSERT INTO salesmans (uid, SalesmanID, SalesmanName) VALUES (10012, 12, 'Ana'),"
            " (10007, 7, 'Rui'), (10000, 10000, 'Geral'), (10055, 55, 'Sem ficha');"
            "INSERT INTO customers (uid, CustomerID, Name) VALUES (1, 31, 'Conta'),"
            " (2, 99, 'Desconhecido');"
            "INSERT INTO plus (UID, ItemID, Description, SubFamilyID, PropertyUID) VALUES"
            " (1, '100', 'Cerveja', 1, 1), (2, '200', 'Picanha', 1, 1), (3, '300', 'Novo', 1, 1)");
        // The host knows items C100 (stocked) and C200 (sold by weight), customer 31 and the
        // salesmen 12 and 7.
        host::Item beer;
        beer.Description = "Cerveja";
        beer.TaxableGroupID = 1;
        beer.StockManagement = true;
        Host().items->Save(beer, "C100", true);
        host::Item meat = beer;
        meat.Description = "Picanha";
        meat.ReadQuantityFromScale = true;
        Host().items->Save(meat, "C200", true);
        host::Customer customer;
        customer.OrganizationName = "Conta";
        Host().customers->Save(customer, 31.0, true);
        for (double id : {12.0, 7.0}) {
            host::Salesman salesman;
            salesman.Name = "Empregado";
            Host().salesmen->Save(salesman, id, true);
        }

        settings = std::make_unique<KitraConnectorSetting>(*Host().utility);
        settings->InvoiceTransDocument = "VB";
        settings->CreditTransDocument = "FAC";
        settings->StockTransDocument = "GT";
        settings->CashEntranceTransDocument = "EC";
        settings->CashWithdrawalTransDocument = "SC";
        settings->CustomerPaymentTransDocument = "PCL";
        settings->CustomerPaymentAccountDocument = "ADC";
        settings->DefaultTenderPayment = 1;
        settings->TaxableGroupEquivalence = {{1, "23"}, {2, "13"}, {3, "6"}};
        settings->TenderEquivalence = {{1, "1"}, {2, "2"}, {3, "3"}, {2, "4"}, {6, "5"}};
        Use(*settings);
        restaurant.ItemIDPrefix = "C";
        restaurant.TransSerial = "EXT";
        restaurant.WorkstationID = 1;
        restaurant.DefaultWarehouseID = 1;
    }

    void Use(const KitraConnectorSetting& s) { engine.UseSettings(s); }

    // A closed transaction changed on 2024-06-01 (or at `modified`).
    void AddHeader(int uid, int type, const std::string& documentId, int total,
                   const std::string& salesmanUid = "10012", const std::string& customerUid = "1",
                   const std::string& status = "N",
                   const std::string& modified = "2024-06-01 10:00:00") {
        Database().Execute(
            "INSERT INTO transactionsheaders (UID, DocumentTypeUID, DocumentID, CreateSalesmanUID,"
            " CustomerUID, TransactionStatus, TableTotal, CreateDate, ModifyDate) VALUES (" +
            std::to_string(uid) + ", " + std::to_string(type) + ", '" + documentId + "', " +
            salesmanUid + ", " + customerUid + ", '" + status + "', " + std::to_string(total) +
            ", '2024-05-31 21:30:00', '" + modified + "')");
    }
    void AddLine(int header, int plu, const std::string& name, int quantity, int price,
                 int saleValue, int tax = 1, const std::string& salesmanUid = "10012",
                 const std::string& percent = "0", int discountValue = 0) {
        Database().Execute(
            "INSERT INTO transactionsdetails (TransactionUID, PluUid, PluName, Quantity,"
            " PluUnitPrice, DiscountPercentage, DiscountValue, SaleValue, SaleTaxUID, SalesmanUID)"
            " VALUES (" + std::to_string(header) + ", " + std::to_string(plu) + ", '" + name +
            "', " + std::to_string(quantity) + ", " + std::to_string(price) + ", " + percent +
            ", " + std::to_string(discountValue) + ", " + std::to_string(saleValue) + ", " +
            std::to_string(tax) + ", " + salesmanUid + ")");
    }
    void AddTender(int header, int paymentType, int value, const std::string& receipt = "NULL") {
        Database().Execute(
            "INSERT INTO transactionstenders (TransactionUID, PaymentTypeUID, value,"
            " ReceiptMovementuid) VALUES (" + std::to_string(header) + ", " +
            std::to_string(paymentType) + ", " + std::to_string(value) + ", " + receipt + ")");
    }
    // A cash drawer movement by salesman 12 on 2024-06-01 12:00 (or at `date`).
    void AddMovement(int uid, int type, int flow, int value, const std::string& documentId = "",
                     const std::string& customerUid = "NULL",
                     const std::string& description = "NULL",
                     const std::string& date = "2024-06-01 12:00:00") {
        Database().Execute(
            "INSERT INTO cashdrawer_movements (UID, MovementTypeID, MovementFlow, SalesmanUID,"
            " EntityUID, Date, value, DocumentID, description) VALUES (" + std::to_string(uid) +
            ", " + std::to_string(type) + ", " + std::to_string(flow) + ", 10012, " + customerUid +
            ", '" + date + "', " + std::to_string(value) + ", '" + documentId + "', " +
            description + ")");
    }
    // A one-line invoice of 3,00 (2 × C100 at 1,50) paid in cash.
    void AddInvoice(int uid, const std::string& documentId, const std::string& status = "N",
                    const std::string& modified = "2024-06-01 10:00:00") {
        AddHeader(uid, 17, documentId, 300, "10012", "1", status, modified);
        AddLine(uid, 1, "Cerveja", 2, 150, 300);
        AddTender(uid, 1, 300);
    }

    std::optional<host::SavedDocument> Document(const std::string& type, std::int32_t number) {
        return Host().transactions->Find(type, "EXT", number);
    }

    std::string HostValue(const std::string& sql) {
        backoffice::Statement statement(office.Office().GetDatabase(), sql);
        return statement.Step() ? statement.ColumnText(0) : "(none)";
    }
    int Documents() { return std::stoi(HostValue("SELECT COUNT(*) FROM documents")); }
    double Stock(const std::string& item) {
        return std::stod(HostValue("SELECT COALESCE(SUM(Quantity), 0) FROM item_stock WHERE ItemID = '" +
                                   item + "'"));
    }

    static std::string Unmapped(const std::string& documentId) {
        return Line("Transacções", "Não foi possível adicionar a Transacção '" + documentId +
                                       "' porque não existe o tipo de documento não está mapeado.");
    }

    std::vector<std::string> DocumentStatuses() const {
        std::vector<std::string> shown;
        for (const std::string& s : office.notifier->statuses)
            if (s.starts_with("Documento: ")) shown.push_back(s.substr(11));
        return shown;
    }

    std::unique_ptr<KitraConnectorSetting> settings;
};

}  // namespace kitra
