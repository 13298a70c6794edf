// kitra-host reconcile against a real restaurant database on the private MariaDB server and a
// real back office filled by `kitra-host execute`: what matches after a clean import, and what a
// change made while a run went on, a deleted document, a late cash movement or receipt, and an
// unreachable server look like; the printed rewind brings in what was missing.
#include <gtest/gtest.h>

#include <cctype>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <map>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "tests/cli/KitraHostRun.h"
#include "tests/support/ScratchDatabase.h"

namespace kitra {
namespace {

using testing::HostResult;

// Just enough JSON reading to walk reconcile's output: it fails on anything that is not JSON.
struct JsonValue {
    enum class Type { Null, Boolean, Number, Text, Array, Object } type = Type::Null;
    bool boolean = false;
    double number = 0;
    std::string text;
    std::vector<JsonValue> items;
    std::map<std::string, JsonValue> members;

    const JsonValue& operator[](const std::string& key) const {
        if (type != Type::Object) throw std::runtime_error("not an object where '" + key + "' was looked for");
        const auto found = members.find(key);
        if (found == members.end()) throw std::runtime_error("no key '" + key + "'");
        return found->second;
    }
    const JsonValue& operator[](std::size_t index) const { return items.at(index); }
};

class JsonReader {
public:
    static JsonValue Parse(const std::string& text) {
        JsonReader reader(text);
        JsonValue value = reader.Value();
        reader.Blanks();
        if (reader.at_ != text.size()) reader.Fail("text after the value");
        return value;
    }

private:
    explicit JsonReader(const std::string& text) : text_(text) {}

    [[noreturn]] void Fail(const std::string& what) const {
        throw std::runtime_error("JSON: " + what + " at " + std::to_string(at_));
    }
    void Blanks() {
        while (at_ < text_.size() && std::isspace(static_cast<unsigned char>(text_[at_]))) ++at_;
    }
    bool Take(char c) {
        Blanks();
        if (at_ < text_.size() && text_[at_] == c) {
            ++at_;
            return true;
        }
        return false;
    }
    void Expect(char c) {
        if (!Take(c)) Fail(std::string("'") + c + "' expected");
    }
    bool Word(const std::string& word) {
        if (text_.compare(at_, word.size(), word) != 0) return false;
        at_ += word.size();
        return true;
    }
    std::string Text() {
        Expect('"');
        std::string text;
        while (true) {
            if (at_ >= text_.size()) Fail("unterminated text");
            const char c = text_[at_++];
            if (c == '"') return text;
            if (static_cast<unsigned char>(c) < 0x20) Fail("control character in text");
            if (c != '\\') {
                text += c;
                continue;
            }
            if (at_ >= text_.size()) Fail("unterminated escape");
            const char e = text_[at_++];
            if (e == 'u') {
                if (at_ + 4 > text_.size()) Fail("short \\u escape");
                const long code = std::stol(text_.substr(at_, 4), nullptr, 16);
                at_ += 4;
                if (code >= 0x80) Fail("reconcile escapes only control characters");
                text += static_cast<char>(code);
            } else if (e == '"' || e == '\\' || e == '/') {
                text += e;
            } else if (e == 'n') {
                text += '\n';
            } else if (e == 'r') {
                text += '\r';
            } else if (e == 't') {
                text += '\t';
            } else {
                Fail("unknown escape");
            }
        }
    }
    JsonValue Value() {
        Blanks();
        JsonValue value;
        if (at_ >= text_.size()) Fail("value expected");
        const char c = text_[at_];
        if (c == '{') {
            value.type = JsonValue::Type::Object;
            ++at_;
            if (Take('}')) return value;
            do {
                Blanks();
                std::string key = Text();
                Expect(':');
                if (!value.members.emplace(key, Value()).second) Fail("key '" + key + "' twice");
            } while (Take(','));
            Expect('}');
        } else if (c == '[') {
            value.type = JsonValue::Type::Array;
            ++at_;
            if (Take(']')) return value;
            do {
                value.items.push_back(Value());
            } while (Take(','));
            Expect(']');
        } else if (c == '"') {
            value.type = JsonValue::Type::Text;
            value.text = Text();
        } else if (Word("true")) {
            value.type = JsonValue::Type::Boolean;
            value.boolean = true;
        } else if (Word("false")) {
            value.type = JsonValue::Type::Boolean;
        } else if (Word("null")) {
            value.type = JsonValue::Type::Null;
        } else {
            std::size_t used = 0;
            try {
                value.number = std::stod(text_.substr(at_), &used);
            } catch (const std::exception&) {
                Fail("value expected");
            }
            value.type = JsonValue::Type::Number;
            at_ += used;
        }
        return value;
    }

    const std::string& text_;
    std::size_t at_ = 0;
};

class ReconcileTest : public testing::KitraHostTest {
protected:
    void SetUp() override {
        KitraHostTest::SetUp();
        const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
        database_ = std::make_unique<test::ScratchDatabase>(std::string("rec_") + info->name());
        database_->LoadRestaurantSchema();
        // Salesman 12 (uid 10012) and salesman 10005 (uid 20005, the back office keeps his documents
        // under 5); customer 31 is imported, customer 99 is deleted and never reaches the back office.
        Restaurant(
            "INSERT INTO taxes (uid, TaxRate) VALUES (1, 23.00);"
            "INSERT INTO plus (UID, ItemID, Description, SubFamilyID, PropertyUID) VALUES"
            " (1, '100', 'Cerveja', 1, 1);"
            "INSERT INTO paymenttypes (uid, code, Description) VALUES (1, '1', 'Dinheiro'),"
            " (6, '9999', 'Conta Corrente');"
            "INSERT INTO salesmans (uid, SalesmanID, SalesmanName, SalesmanPassword, Telephone,"
            " MobilePhone, AddressLine1, AddressLine2, PostalCode, EmailAddress, Locality, ModifyDate)"
            " VALUES (10012, 12, 'Ana', '', '', '', '', '', '', '', '', '2024-01-01 00:00:00'),"
            " (20005, 10005, 'Geral', '', '', '', '', '', '', '', '', '2024-01-01 00:00:00');"
            "INSERT INTO customers (uid, CustomerID, Name, GlobalDiscount, CardID, FederalTaxID,"
            " EmailAddress, PartyAddressLine1, PartyAddressLine2, PartyPostalCode, PartyCountryID,"
            " PartyLocationID, Telephone1, MobileTelephone1, RecordDeleted, ModifyDate) VALUES"
            " (1, 31, 'Conta', '0', '', '', '', '', '', '', 'PT', '', '', '', 0, '2024-01-01 00:00:00'),"
            " (2, 99, 'Antigo', '0', '', '', '', '', '', '', 'PT', '', '', '', 1, '2024-01-01 00:00:00')");
        // Two sales, a credit sale of customer 31, a refunded stock document, and two sales whose
        // short DocumentIDs give number 0 (one of a customer the back office lacks, one of
        // salesman 10005).
        AddHeader(1, 17, "FT0000001", 300, "2024-06-01 10:00:00");
        AddHeader(2, 17, "FT0000002", 450, "2024-06-01 11:00:00");
        AddHeader(3, 11, "CC0000001", 1200, "2024-06-02 12:00:00", "10012", "1");
        AddHeader(4, 13, "GT0000001", 800, "2024-06-02 13:00:00", "10012", "NULL", "A");
        AddHeader(5, 17, "VD123", 275, "2024-06-02 14:00:00", "10012", "2");
        AddHeader(6, 17, "VD124", 125, "2024-06-02 14:00:00", "20005", "1");
        Restaurant("INSERT INTO transactionstenders (TransactionUID, PaymentTypeUID, value, ReceiptMovementuid)"
                   " VALUES (1, 1, 300, NULL), (2, 1, 450, NULL), (3, 6, 1200, 50), (5, 1, 275, NULL),"
                   " (6, 1, 125, NULL)");
        // A float of 50,00 with a note, a withdrawal of 20,50 (20 in whole euros), and the receipt
        // that settles the credit sale.
        AddMovement(40, 1, 1, 5000, "2024-06-01 09:00:00", "", "NULL", "'Troco'");
        AddMovement(41, 3, 0, 2050, "2024-06-02 20:00:00");
        AddMovement(50, 9, 1, 1200, "2024-06-03 10:00:00", "RC0000001", "1");
    }

    void Restaurant(const std::string& sql) { database_->Execute(sql); }

    // A closed transaction created (and changed) at `created`, with one line worth its total.
    void AddHeader(int uid, int type, const std::string& documentId, int total, const std::string& created,
                   const std::string& salesmanUid = "10012", const std::string& customerUid = "NULL",
                   const std::string& status = "N") {
        Restaurant("INSERT INTO transactionsheaders (UID, DocumentTypeUID, DocumentID, CreateSalesmanUID,"
                   " CustomerUID, TransactionStatus, TableTotal, CreateDate, ModifyDate) VALUES (" +
                   std::to_string(uid) + ", " + std::to_string(type) + ", '" + documentId + "', " +
                   salesmanUid + ", " + customerUid + ", '" + status + "', " + std::to_string(total) +
                   ", '" + created + "', '" + created + "');"
                   "INSERT INTO transactionsdetails (TransactionUID, PluUid, PluName, Quantity, PluUnitPrice,"
                   " SaleValue, SaleTaxUID, SalesmanUID) VALUES (" + std::to_string(uid) + ", 1, 'Cerveja', 1, " +
                   std::to_string(total) + ", " + std::to_string(total) + ", 1, " + salesmanUid + ")");
    }
    void AddMovement(int uid, int type, int flow, int value, const std::string& date,
                     const std::string& documentId = "", const std::string& customerUid = "NULL",
                     const std::string& description = "NULL") {
        Restaurant("INSERT INTO cashdrawer_movements (UID, MovementTypeID, MovementFlow, SalesmanUID,"
                   " EntityUID, Date, value, DocumentID, description) VALUES (" + std::to_string(uid) +
                   ", " + std::to_string(type) + ", " + std::to_string(flow) + ", 10012, " + customerUid +
                   ", '" + date + "', " + std::to_string(value) + ", '" + documentId + "', " +
                   description + ")");
    }

    std::string Settings(const std::string& password) const {
        const test::MariaDbServer& server = database_->Server();
        return "<KitraConnectorSetting InvoiceTransDocument=\"VB\" CreditTransDocument=\"FAC\" "
               "StockTransDocument=\"GT\" CashEntranceTransDocument=\"EC\" "
               "CashWithdrawalTransDocument=\"SC\" CustomerPaymentTransDocument=\"PCL\" "
               "CustomerPaymentAccountDocument=\"ADC\" DefaultTenderPayment=\"1\" "
               "DefaultTaxableGroup=\"1\"><Restaurants><Restaurant Name=\"Centro\" ServerName=\"" +
               server.host + "\" ServerPort=\"" + std::to_string(server.port) + "\" ServerDBName=\"" +
               database_->Name() + "\" ServerUser=\"" + server.user + "\" ServerPassword=\"" + password +
               "\" WorkstationID=\"1\" ItemIDPrefix=\"C\" DefaultWarehouseID=\"1\" WasteWarehouseID=\"2\" "
               "DefaultSupplierID=\"1\" TransSerial=\"EXT\" StockManagement=\"1\" "
               "ImportDateEntities=\"2010-01-01 00:00:00\" ImportDateTransactions=\"2010-01-01 00:00:00\"/>"
               "</Restaurants><TenderEquivalence><Tender POSTenderID=\"1\" KitraTenderID=\"1\"/>"
               "</TenderEquivalence><TaxableGroupEquivalence><TaxableGroup TaxableGroupID=\"1\" "
               "KitraVAT=\"23\"/></TaxableGroupEquivalence></KitraConnectorSetting>";
    }

    // The settings stored and one clean run.
    void Import() {
        ASSERT_EQ(Run("settings load " + WriteSettings(Settings(database_->Server().password))).exit, 0);
        const HostResult run = Run("execute");
        ASSERT_EQ(run.exit, 0) << run.out;
        NextSecond();
    }

    // Two runs of one restaurant within one second would write the same log key.
    static void NextSecond() {
        const std::time_t now = std::time(nullptr);
        while (std::time(nullptr) == now) std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }

    // The printed line that holds `words`, without its indentation.
    static std::string LineWith(const std::string& text, const std::string& words) {
        std::istringstream lines(text);
        for (std::string line; std::getline(lines, line);) {
            if (line.find(words) != std::string::npos) return line.substr(line.find_first_not_of(' '));
        }
        return {};
    }

    // Runs a printed command exactly as printed, through the shell, from another folder.
    int RunPrinted(const std::string& command) {
        const std::string line = "cd / && KITRA_COMPONENT_REGISTRY=" + Quote((folder / "registry").string()) +
                                 " sh -c " + Quote(command) + " >/dev/null 2>&1";
        const int status = std::system(line.c_str());
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    std::unique_ptr<test::ScratchDatabase> database_;
};

TEST_F(ReconcileTest, AfterACleanImportEverythingMatches) {
    Import();
    const HostResult r = Run("reconcile");
    EXPECT_EQ(r.exit, 0) << r.out;
    // Six documents (7,00 of them refunded, all counted), two cash movements (50 + 20 whole euros),
    // one receipt, the same on both sides.
    EXPECT_NE(r.out.find("Restaurante Centro (série EXT)\n"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("Documentos             6         31,50           6         31,50        0          0\n"),
              std::string::npos)
        << r.out;
    EXPECT_NE(r.out.find("Mov.Caixa              2         70,00           2         70,00        0          0\n"),
              std::string::npos)
        << r.out;
    EXPECT_NE(r.out.find("Recibos                1         12,00           1         12,00        0          0\n"),
              std::string::npos)
        << r.out;
    EXPECT_NE(r.out.find("Tudo igual."), std::string::npos) << r.out;
    EXPECT_EQ(r.out.find("state set"), std::string::npos) << r.out;

    const HostResult json = Run("reconcile --json");
    EXPECT_EQ(json.exit, 0) << json.out;
    const JsonValue root = JsonReader::Parse(json.out);
    EXPECT_TRUE(root["ok"].boolean);
    EXPECT_EQ(root["period"]["from"].type, JsonValue::Type::Null);
    ASSERT_EQ(root["restaurants"].items.size(), 1u);
    const JsonValue& centro = root["restaurants"][0];
    EXPECT_EQ(centro["name"].text, "Centro");
    EXPECT_TRUE(centro["readable"].boolean);
    EXPECT_EQ(centro["error"].type, JsonValue::Type::Null);
    EXPECT_EQ(centro["summaries"]["documents"]["restaurantCount"].number, 6);
    EXPECT_EQ(centro["summaries"]["documents"]["backOfficeTotal"].number, 31.5);
    EXPECT_EQ(centro["summaries"]["cashMovements"]["backOfficeTotal"].number, 70);
    EXPECT_EQ(centro["summaries"]["receipts"]["differing"].number, 0);
    EXPECT_TRUE(centro["differences"].items.empty());
    EXPECT_EQ(centro["rewind"].type, JsonValue::Type::Null);
}

TEST_F(ReconcileTest, AChangeMadeWhileARunWentOnIsShownAndThePrintedRewindBringsItIn) {
    Import();
    // Changed in the restaurant while the run went on: its ModifyDate lies before the import date
    // the run stored, so no later run selects it.
    Restaurant("UPDATE transactionsheaders SET TableTotal = 500, ModifyDate = '2024-06-05 08:00:00' WHERE UID = 2");
    const HostResult r = Run("reconcile");
    EXPECT_EQ(r.exit, 3) << r.out;
    EXPECT_NE(r.out.find("Documentos             6         32,00           6         31,50        1          0\n"),
              std::string::npos)
        << r.out;
    EXPECT_NE(r.out.find("Documentos  2024-06-01  VB EXT/2  [FT0000002, alterado em 2024-06-05 08:00:00]  "
                         "total: restaurante 5,00, retaguarda 4,50\n"),
              std::string::npos)
        << r.out;
    const std::string rewind = LineWith(r.out, " state set ");
    EXPECT_NE(rewind.find("state set Centro --transactions '2024-06-05 07:59:59'"), std::string::npos) << r.out;
    EXPECT_NE(rewind.find(" --data " + Data().string() + " state set "), std::string::npos) << rewind;
    EXPECT_NE(LineWith(r.out, " execute"), "") << r.out;

    ASSERT_EQ(RunPrinted(rewind), 0) << rewind;
    const HostResult again = Run("execute");
    EXPECT_EQ(again.exit, 0) << again.out;
    const HostResult after = Run("reconcile");
    EXPECT_EQ(after.exit, 0) << after.out;
    EXPECT_NE(after.out.find("Documentos             6         32,00           6         32,00        0          0\n"),
              std::string::npos)
        << after.out;
}

TEST_F(ReconcileTest, ARefundAfterTheImportIsAStateThatDiffers) {
    Import();
    Restaurant("UPDATE transactionsheaders SET TransactionStatus = 'A', ModifyDate = '2024-06-05 09:30:00' WHERE UID = 1");
    const HostResult r = Run("reconcile --json");
    EXPECT_EQ(r.exit, 3) << r.out;
    const JsonValue root = JsonReader::Parse(r.out);
    EXPECT_FALSE(root["ok"].boolean);
    const JsonValue& differences = root["restaurants"][0]["differences"];
    ASSERT_EQ(differences.items.size(), 1u) << r.out;
    EXPECT_EQ(differences[0]["kind"].text, "documents");
    EXPECT_EQ(differences[0]["identity"].text, "VB EXT/1");
    EXPECT_EQ(differences[0]["differs"][0].text, "state");
    EXPECT_TRUE(differences[0]["restaurant"]["voided"].boolean);
    EXPECT_FALSE(differences[0]["backOffice"]["voided"].boolean);
    EXPECT_NE(root["restaurants"][0]["rewind"].text.find("state set Centro --transactions '2024-06-05 09:29:59'"),
              std::string::npos)
        << r.out;
}

TEST_F(ReconcileTest, ADocumentMovedToAnotherMomentAndCustomerDiffers) {
    Import();
    Restaurant("UPDATE transactionsheaders SET CustomerUID = 1, CreateDate = '2024-06-01 10:30:00',"
               " ModifyDate = '2024-06-05 00:00:00' WHERE UID = 1");
    const HostResult r = Run("reconcile");
    EXPECT_EQ(r.exit, 3) << r.out;
    EXPECT_NE(r.out.find("VB EXT/1  [FT0000001, alterado em 2024-06-05 00:00:00]  data: restaurante 2024-06-01 "
                         "10:30:00, retaguarda 2024-06-01 10:00:00; cliente: restaurante 31, retaguarda 0\n"),
              std::string::npos)
        << r.out;
}

TEST_F(ReconcileTest, ADocumentTheImportCannotSaveIsNamedWithWhatItLacks) {
    Restaurant("ALTER TABLE transactionsheaders MODIFY TableTotal INT NULL");
    Import();
    Restaurant("UPDATE transactionsheaders SET TableTotal = NULL, ModifyDate = '2024-06-05 00:00:00' WHERE UID = 2");
    const HostResult r = Run("reconcile");
    EXPECT_EQ(r.exit, 3) << r.out;
    EXPECT_NE(r.out.find("VB EXT/2  [FT0000002, alterado em 2024-06-05 00:00:00]  total: restaurante 0,00, "
                         "retaguarda 4,50 (o restaurante não lhe dá TableTotal: a importação pára nele e não "
                         "guarda os seguintes)\n"),
              std::string::npos)
        << r.out;
    EXPECT_NE(r.out.find("Corrija primeiro no restaurante"), std::string::npos) << r.out;
    EXPECT_EQ(r.out.find("state set"), std::string::npos) << r.out;
}

TEST_F(ReconcileTest, ADocumentNumberedByTheBackOfficeIsFoundByItsRestaurantUid) {
    Import();
    // The sale of salesman 10005 (kept under 5) whose DocumentID gives no number: another total.
    Restaurant("UPDATE transactionsheaders SET TableTotal = 150, ModifyDate = '2024-06-05 10:00:00' WHERE UID = 6");
    const HostResult r = Run("reconcile --json");
    EXPECT_EQ(r.exit, 3) << r.out;
    const JsonValue root = JsonReader::Parse(r.out);
    const JsonValue& differences = root["restaurants"][0]["differences"];
    ASSERT_EQ(differences.items.size(), 1u) << r.out;
    EXPECT_EQ(differences[0]["differs"][0].text, "total");
    EXPECT_EQ(differences[0]["restaurant"]["total"].number, 1.5);
    EXPECT_EQ(differences[0]["backOffice"]["total"].number, 1.25);
    EXPECT_EQ(differences[0]["backOffice"]["salesman"].number, 5);
    EXPECT_EQ(differences[0]["restaurant"]["source"].text, "VD124");
}

// Two sales without a number at one second, of one salesman and customer: each is matched by its
// own UID. When the restaurant swaps their totals, both are shown (matched by their moment and
// total, they would look unchanged), and the rewind mends them.
TEST_F(ReconcileTest, TwoDocumentsWithoutANumberAtOneMomentAreMatchedByTheirOwnUid) {
    AddHeader(7, 17, "S1", 6420, "2024-06-04 12:00:00");
    AddHeader(8, 17, "S2", 6920, "2024-06-04 12:00:00");
    Import();
    EXPECT_EQ(Run("reconcile").exit, 0);
    Restaurant("UPDATE transactionsheaders SET TableTotal = 13340 - TableTotal, ModifyDate = '2024-06-05 10:00:00'"
               " WHERE UID IN (7, 8);"
               "UPDATE transactionsdetails SET PluUnitPrice = 13340 - PluUnitPrice, SaleValue = 13340 - SaleValue"
               " WHERE TransactionUID IN (7, 8)");
    const HostResult r = Run("reconcile --json");
    EXPECT_EQ(r.exit, 3) << r.out;
    const JsonValue root = JsonReader::Parse(r.out);
    const JsonValue& differences = root["restaurants"][0]["differences"];
    ASSERT_EQ(differences.items.size(), 2u) << r.out;
    for (const JsonValue* d : {&differences[0], &differences[1]}) {
        EXPECT_EQ((*d)["differs"][0].text, "total") << r.out;
        EXPECT_EQ((*d)["backOffice"]["total"].number, (*d)["restaurant"]["source"].text == "S1" ? 64.2 : 69.2)
            << r.out;
    }
    ASSERT_EQ(RunPrinted(root["restaurants"][0]["rewind"].text), 0) << r.out;
    EXPECT_EQ(Run("execute").exit, 0);
    const HostResult after = Run("reconcile");
    EXPECT_EQ(after.exit, 0) << after.out;
}

TEST_F(ReconcileTest, ADocumentSavedWhileItsSalesmanWasUnknownIsOneDifferenceThatTheRewindMends) {
    Import();
    // The sale without a number as it is saved when the back office does not have its salesman
    // yet (another restaurant brings it later): salesman 0.
    const std::string sql =
        "UPDATE documents SET SalesmanID = 0 WHERE NumberAssigned = 1 AND DocumentTypeID = 'VB' "
        "AND CustomerID = 31";
    ASSERT_EQ(std::system(("sqlite3 " + Quote((Data() / "backoffice.sqlite").string()) + " " + Quote(sql)).c_str()), 0);
    const HostResult r = Run("reconcile --json");
    EXPECT_EQ(r.exit, 3) << r.out;
    const JsonValue root = JsonReader::Parse(r.out);
    const JsonValue& differences = root["restaurants"][0]["differences"];
    ASSERT_EQ(differences.items.size(), 1u) << r.out;  // one document, not one missing and one extra
    EXPECT_EQ(differences[0]["differs"][0].text, "salesman");
    EXPECT_EQ(differences[0]["restaurant"]["salesman"].number, 5);
    EXPECT_EQ(differences[0]["backOffice"]["salesman"].number, 0);

    ASSERT_EQ(RunPrinted(root["restaurants"][0]["rewind"].text), 0) << r.out;
    EXPECT_EQ(Run("execute").exit, 0);
    const HostResult after = Run("reconcile");
    EXPECT_EQ(after.exit, 0) << after.out;  // completed, not doubled
}

TEST_F(ReconcileTest, ADocumentDeletedInTheRestaurantIsOnlyInTheBackOffice) {
    Import();
    Restaurant("DELETE FROM transactionstenders WHERE TransactionUID = 1; DELETE FROM transactionsheaders WHERE UID = 1");
    const HostResult r = Run("reconcile");
    EXPECT_EQ(r.exit, 3) << r.out;
    EXPECT_NE(r.out.find("Documentos             5         28,50           6         31,50        1          0\n"),
              std::string::npos)
        << r.out;
    EXPECT_NE(r.out.find("Documentos  2024-06-01  VB EXT/1  [-]  só na retaguarda (total 3,00)"), std::string::npos)
        << r.out;
    EXPECT_NE(r.out.find("Dias que diferem:\nDocumentos  2024-06-01"), std::string::npos) << r.out;
    // Importing again does not take it out of the back office: no rewind is offered, but the
    // command that takes it out is.
    EXPECT_EQ(r.out.find("state set"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("Recuar as datas não resolve estas diferenças."), std::string::npos) << r.out;
    const std::string remove = LineWith(r.out, " document remove VB EXT/1");
    ASSERT_EQ(remove, std::string(KITRA_HOST_PROGRAM) + " --data " + Data().string() +
                          " document remove VB EXT/1")
        << r.out;
    const JsonValue json = JsonReader::Parse(Run("reconcile --json").out);
    EXPECT_EQ(json["restaurants"][0]["differences"][0]["remove"].text, remove);

    ASSERT_EQ(RunPrinted(remove), 0) << remove;
    const HostResult after = Run("reconcile");
    EXPECT_EQ(after.exit, 0) << after.out;
    EXPECT_NE(after.out.find("Documentos             5         28,50           5         28,50        0          0\n"),
              std::string::npos)
        << after.out;
    // The version taken out is in the document's history.
    const HostResult history = Run("document history VB EXT/1");
    EXPECT_EQ(history.exit, 0);
    EXPECT_NE(history.out.find(" removido; a versão anterior:\nVB EXT/1 de 2024-06-01 10:00:00;"),
              std::string::npos)
        << history.out;
    EXPECT_EQ(Run("document remove VB EXT/1").exit, 1);  // gone
}

TEST_F(ReconcileTest, ACashMovementWhoseDateTheRestaurantChangedIsTakenOutByThePrintedCommand) {
    Import();
    // The float's date changed in the restaurant after it was imported: the next runs select it by
    // its new date, which lies before their import date, and the old one stays behind.
    Restaurant("UPDATE cashdrawer_movements SET Date = '2024-06-01 09:30:00' WHERE UID = 40");
    const HostResult r = Run("reconcile");
    EXPECT_EQ(r.exit, 3) << r.out;
    const std::string remove = LineWith(r.out, " cash-movement remove EC EXT/");
    ASSERT_FALSE(remove.empty()) << r.out;
    const std::string rewind = LineWith(r.out, " state set Centro --transactions ");
    ASSERT_FALSE(rewind.empty()) << r.out;
    ASSERT_EQ(RunPrinted(remove), 0) << remove;
    ASSERT_EQ(RunPrinted(rewind), 0) << rewind;
    const HostResult run = Run("execute");
    EXPECT_EQ(run.exit, 0) << run.out;
    const HostResult after = Run("reconcile");
    EXPECT_EQ(after.exit, 0) << after.out;
    // The drawer counts the float once.
    const HostResult cash = Run("report cash");
    EXPECT_EQ(cash.exit, 0);
    EXPECT_NE(Run("reconcile --json").out.find("\"backOfficeTotal\":70.00"), std::string::npos);
}

TEST_F(ReconcileTest, WhatAReceiptSettlesIsRefusedUntilTheReceiptIsTakenOut) {
    Import();
    // The credit sale FAC EXT/1 is settled by the receipt PCL EXT/1.
    const HostResult refused = Run("document remove FAC EXT/1");
    EXPECT_EQ(refused.exit, 1) << refused.out;
    EXPECT_NE(refused.err.find("FAC EXT/1 é liquidado pelo recibo PCL EXT/1"), std::string::npos)
        << refused.err;
    EXPECT_NE(refused.err.find("'kitra-host receipt remove PCL EXT/1'"), std::string::npos) << refused.err;
    EXPECT_EQ(Run("document void FAC EXT/1").exit, 1);
    // Each command takes its own kind and names the right one for another.
    const HostResult wrong = Run("cash-movement remove FAC EXT/1");
    EXPECT_EQ(wrong.exit, 1);
    EXPECT_NE(wrong.err.find("use 'kitra-host document remove FAC EXT/1'"), std::string::npos) << wrong.err;
    EXPECT_EQ(Run("document remove VB EXT/99").exit, 1);
    EXPECT_EQ(Run("document remove VB 12").exit, 2);
    EXPECT_EQ(Run("document void").exit, 2);

    // Voided, the receipt gives back what it settled: the credit sale is open again.
    const HostResult voided = Run("receipt void PCL EXT/1");
    EXPECT_EQ(voided.exit, 0) << voided.out;
    EXPECT_NE(voided.out.find("O recibo PCL EXT/1 foi anulado"), std::string::npos) << voided.out;
    const std::string account = Run("report account 31").out;
    const std::string credit = LineWith(account, "FAC EXT/1 ");
    EXPECT_TRUE(credit.starts_with("FAC EXT/1 ") && credit.ends_with(" 12,00") &&
                credit.find(" 12,00 ") != std::string::npos)
        << account;  // its value and what is open of it
    EXPECT_EQ(Run("receipt void PCL EXT/1").out, "O recibo PCL EXT/1 já estava anulado; nada mudou.\n");
    const HostResult sale = Run("document void FAC EXT/1");
    EXPECT_EQ(sale.exit, 0) << sale.out;
    const HostResult history = Run("document history FAC EXT/1");
    EXPECT_NE(history.out.find(" anulado; a versão anterior:\nFAC EXT/1 de 2024-06-02 12:00:00;"),
              std::string::npos)
        << history.out;
    EXPECT_NE(Run("receipt history PCL EXT/1").out.find(" anulado; a versão anterior:\nPCL EXT/1"),
              std::string::npos);
}

TEST_F(ReconcileTest, AChangeMadeInTheLastSecondOfARunIsImportedByTheNextRun) {
    Import();
    // The run stored the second it ended as the import dates; the state shows where it began and
    // where the next run starts: one second before that.
    const std::string row = LineWith(Run("state").out, "Centro\t");
    std::vector<std::string> columns;
    std::istringstream cells(row);
    for (std::string cell; std::getline(cells, cell, '\t');) columns.push_back(cell);
    ASSERT_EQ(columns.size(), 5u) << row;
    const std::string& ended = columns[2];
    const std::string& began = columns[3];
    const std::string& next = columns[4];
    ASSERT_EQ(began.size(), 19u) << row;
    EXPECT_LE(began, ended);
    EXPECT_LT(next, began);
    // Changed in that same second, after the run had read the documents.
    Restaurant("UPDATE transactionsheaders SET TableTotal = 500, ModifyDate = '" + ended + "' WHERE UID = 2");
    const HostResult run = Run("execute");
    EXPECT_EQ(run.exit, 0) << run.out;
    EXPECT_NE(run.out.find("Restaurante 'Centro': as datas de importação recuam para " + next +
                           ", um segundo antes do início da importação anterior (" + began + ")"),
              std::string::npos)
        << run.out;
    const HostResult after = Run("reconcile");
    EXPECT_EQ(after.exit, 0) << after.out;
    EXPECT_NE(after.out.find("Documentos             6         32,00           6         32,00        0          0\n"),
              std::string::npos)
        << after.out;
    // The history tells the move back apart from the run's own save.
    EXPECT_NE(Run("settings history").out.find("\texecute (início da importação anterior)\t"),
              std::string::npos);
}

TEST_F(ReconcileTest, AMissingCashMovementAndReceiptAreShownAndTheRewindBringsThemIn) {
    Import();
    // Made during the run, dated before the import date it stored: a float, and a credit sale
    // with its receipt.
    AddMovement(42, 1, 1, 1000, "2024-06-04 08:00:00", "", "NULL", "'Moedas'");
    AddHeader(7, 11, "CC0000002", 700, "2024-06-04 12:00:00", "10012", "1");
    Restaurant("INSERT INTO transactionstenders (TransactionUID, PaymentTypeUID, value, ReceiptMovementuid)"
               " VALUES (7, 6, 700, 51)");
    AddMovement(51, 9, 1, 700, "2024-06-04 13:00:00", "RC0000002", "1");
    const HostResult r = Run("reconcile");
    EXPECT_EQ(r.exit, 3) << r.out;
    EXPECT_NE(r.out.find("Mov.Caixa   2024-06-04  EC EXT/- de 2024-06-04 08:00:00  [UID 42]  falta na retaguarda "
                         "(total 10,00, Fundo Maneio)"),
              std::string::npos)
        << r.out;
    EXPECT_NE(r.out.find("Recibos     2024-06-04  PCL EXT/2  [RC0000002]  falta na retaguarda (total 7,00, liquida FAC EXT/2)"),
              std::string::npos)
        << r.out;
    EXPECT_NE(r.out.find("Documentos  2024-06-04  FAC EXT/2  [CC0000002, alterado em 2024-06-04 12:00:00]  "
                         "falta na retaguarda (total 7,00)"),
              std::string::npos)
        << r.out;
    EXPECT_NE(r.out.find("Mov.Caixa   2024-06-04  Fundo Maneio         restaurante 1 / 10,00, retaguarda 0 / 0,00"),
              std::string::npos)
        << r.out;
    // The earliest of the three, less a second.
    const std::string rewind = LineWith(r.out, " state set ");
    EXPECT_NE(rewind.find("state set Centro --transactions '2024-06-04 07:59:59'"), std::string::npos) << r.out;

    ASSERT_EQ(RunPrinted(rewind), 0) << rewind;
    const HostResult again = Run("execute");
    EXPECT_EQ(again.exit, 0) << again.out;
    const HostResult after = Run("reconcile");
    EXPECT_EQ(after.exit, 0) << after.out;
    EXPECT_NE(after.out.find("Recibos                2         19,00           2         19,00        0          0\n"),
              std::string::npos)
        << after.out;
}

TEST_F(ReconcileTest, AReceiptThatSettlesMoreInTheRestaurantIsShownAndImportedAgain) {
    Import();
    // While the run went on, the receipt of 12,00 became one of 19,00 that also pays a new
    // credit sale of 7,00.
    AddHeader(7, 11, "CC0000003", 700, "2024-06-03 09:00:00", "10012", "1");
    Restaurant("INSERT INTO transactionstenders (TransactionUID, PaymentTypeUID, value, ReceiptMovementuid)"
               " VALUES (7, 6, 700, 50); UPDATE cashdrawer_movements SET value = 1900 WHERE UID = 50");
    const HostResult r = Run("reconcile");
    EXPECT_EQ(r.exit, 3) << r.out;
    EXPECT_NE(r.out.find("Recibos     2024-06-03  PCL EXT/1  [RC0000001]  total: restaurante 19,00, retaguarda 12,00\n"),
              std::string::npos)
        << r.out;
    EXPECT_NE(r.out.find("Documentos  2024-06-03  FAC EXT/3  [CC0000003, alterado em 2024-06-03 09:00:00]  "
                         "falta na retaguarda (total 7,00)\n"),
              std::string::npos)
        << r.out;
    const std::string rewind = LineWith(r.out, " state set ");
    EXPECT_NE(rewind.find("--transactions '2024-06-03 08:59:59'"), std::string::npos) << r.out;

    ASSERT_EQ(RunPrinted(rewind), 0) << rewind;
    const HostResult again = Run("execute");
    EXPECT_EQ(again.exit, 0) << again.out;
    const HostResult after = Run("reconcile --json");
    EXPECT_EQ(after.exit, 0) << after.out;
    const JsonValue receipts = JsonReader::Parse(after.out)["restaurants"][0]["summaries"]["receipts"];
    EXPECT_EQ(receipts["backOfficeTotal"].number, 19);
}

TEST_F(ReconcileTest, AReceiptOfARefundedCreditSaleIsLeftOutAsTheImportLeavesItOut) {
    // The restaurant's receipt pays a credit sale that was refunded: there is nothing to settle.
    AddHeader(7, 11, "CC0000004", 500, "2024-06-02 15:00:00", "10012", "1", "A");
    Restaurant("INSERT INTO transactionstenders (TransactionUID, PaymentTypeUID, value, ReceiptMovementuid)"
               " VALUES (7, 6, 500, 52)");
    AddMovement(52, 9, 1, 500, "2024-06-03 11:00:00", "RC0000004", "1");
    Import();
    const HostResult r = Run("reconcile");
    EXPECT_EQ(r.exit, 0) << r.out;
    EXPECT_NE(r.out.find("Recibos                1         12,00           1         12,00        0          0\n"),
              std::string::npos)
        << r.out;
    // Made a normal sale again in the restaurant while a run went on: the refunded one differs.
    Restaurant("UPDATE transactionsheaders SET TransactionStatus = 'N', ModifyDate = '2024-06-05 00:00:00' WHERE UID = 7");
    const HostResult changed = Run("reconcile");
    EXPECT_EQ(changed.exit, 3) << changed.out;
    EXPECT_NE(changed.out.find("estado: restaurante normal, retaguarda anulado"), std::string::npos) << changed.out;
}

TEST_F(ReconcileTest, WhatTheNextRunSelectsAnywayIsPendingNotLost) {
    Import();
    // Changed after the import date: the next run brings it.
    AddHeader(7, 17, "FT0000003", 990, "2024-06-04 12:00:00");
    Restaurant("UPDATE transactionsheaders SET ModifyDate = '2099-01-01 00:00:00' WHERE UID = 7");
    const HostResult r = Run("reconcile");
    EXPECT_EQ(r.exit, 0) << r.out;
    EXPECT_NE(r.out.find("Documentos             7         41,40           6         31,50        0          1\n"),
              std::string::npos)
        << r.out;
    EXPECT_NE(r.out.find("VB EXT/3  [FT0000003, alterado em 2099-01-01 00:00:00]  falta na retaguarda (total 9,90) "
                         "(pendente: a próxima importação escolhe-o)"),
              std::string::npos)
        << r.out;
    EXPECT_EQ(r.out.find("state set"), std::string::npos) << r.out;
}

TEST_F(ReconcileTest, AtMostTwentyDifferencesUnlessAll) {
    Import();
    std::string rows;
    for (int i = 0; i < 25; ++i) {
        rows += std::string(i ? "," : "") + "(" + std::to_string(100 + i) +
                ", 1, 1, 10012, NULL, '2024-06-04 08:00:" + (i < 10 ? "0" : "") + std::to_string(i) +
                "', 100, '', NULL)";
    }
    Restaurant("INSERT INTO cashdrawer_movements (UID, MovementTypeID, MovementFlow, SalesmanUID, EntityUID,"
               " Date, value, DocumentID, description) VALUES " + rows);
    const HostResult r = Run("reconcile");
    EXPECT_EQ(r.exit, 3) << r.out;
    EXPECT_NE(r.out.find("[UID 119]"), std::string::npos) << r.out;
    EXPECT_EQ(r.out.find("[UID 120]"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("... e mais 5 (--all mostra todas as diferenças).\n"), std::string::npos) << r.out;
    const HostResult all = Run("reconcile --all");
    EXPECT_NE(all.out.find("[UID 124]"), std::string::npos) << all.out;
    EXPECT_EQ(all.out.find("... e mais"), std::string::npos) << all.out;
    const JsonValue json = JsonReader::Parse(Run("reconcile --json").out);
    EXPECT_EQ(json["restaurants"][0]["differences"].items.size(), 20u);
    EXPECT_EQ(json["restaurants"][0]["differencesLeftOut"].number, 5);
}

TEST_F(ReconcileTest, FromAndToLimitThePeriodToTheDocumentsOwnDates) {
    Import();
    Restaurant("DELETE FROM transactionstenders WHERE TransactionUID = 1; DELETE FROM transactionsheaders WHERE UID = 1");
    // The deleted sale was made on 2024-06-01: a period after it matches.
    const HostResult later = Run("reconcile --from 2024-06-02");
    EXPECT_EQ(later.exit, 0) << later.out;
    EXPECT_NE(later.out.find("Período: de 2024-06-02 00:00:00 em diante\n"), std::string::npos) << later.out;
    EXPECT_NE(later.out.find("Documentos             4         24,00           4         24,00        0          0\n"),
              std::string::npos)
        << later.out;
    const HostResult before = Run("reconcile --to 2024-06-01");
    EXPECT_EQ(before.exit, 3) << before.out;
    EXPECT_NE(before.out.find("Período: até 2024-06-01 23:59:59\n"), std::string::npos) << before.out;
    const HostResult day = Run("reconcile Centro --from '2024-06-01' --to=2024-06-01 --json");
    EXPECT_EQ(day.exit, 3) << day.out;
    const JsonValue json = JsonReader::Parse(day.out);
    EXPECT_EQ(json["period"]["from"].text, "2024-06-01 00:00:00");
    EXPECT_EQ(json["period"]["to"].text, "2024-06-01 23:59:59");
    const JsonValue& documents = json["restaurants"][0]["summaries"]["documents"];
    EXPECT_EQ(documents["restaurantCount"].number, 1);
    EXPECT_EQ(documents["backOfficeCount"].number, 2);
    EXPECT_EQ(documents["days"][0]["day"].text, "2024-06-01");
    EXPECT_EQ(json["restaurants"][0]["differences"][0]["differs"][0].text, "onlyInBackOffice");
    // To the second: the sale of 11:00 is outside a period that ends at 10:59:59.
    const HostResult moment = Run("reconcile --from '2024-06-01 10:00:00' --to '2024-06-01 10:59:59'");
    EXPECT_NE(moment.out.find("Período: de 2024-06-01 10:00:00 a 2024-06-01 10:59:59\n"), std::string::npos)
        << moment.out;
    const HostResult momentJson = Run("reconcile --from '2024-06-01 10:00:00' --to '2024-06-01 10:59:59' --json");
    EXPECT_EQ(JsonReader::Parse(momentJson.out)["restaurants"][0]["summaries"]["documents"]["backOfficeCount"].number, 1);
}

TEST_F(ReconcileTest, AnUnreachableRestaurantIsNamedWithTheDriversReason) {
    ASSERT_EQ(Run("settings load " + WriteSettings(Settings("wrong"))).exit, 0);
    const HostResult r = Run("reconcile");
    EXPECT_EQ(r.exit, 1) << r.out;
    EXPECT_NE(r.err.find("kitra-host: Centro: ERRO: Não foi possível ligar ao servidor: "), std::string::npos) << r.err;
    EXPECT_NE(r.err.find("Access denied for user"), std::string::npos) << r.err;
    const HostResult json = Run("reconcile --json");
    EXPECT_EQ(json.exit, 1) << json.out;
    const JsonValue root = JsonReader::Parse(json.out);
    EXPECT_FALSE(root["ok"].boolean);
    EXPECT_FALSE(root["restaurants"][0]["readable"].boolean);
    EXPECT_NE(root["restaurants"][0]["error"].text.find("Access denied for user"), std::string::npos) << json.out;
}

TEST_F(ReconcileTest, AWrongCommandLineOrRestaurantIsRefusedWithAClearMessage) {
    Import();
    HostResult r = Run("reconcile --from 2024-13-01");
    EXPECT_EQ(r.exit, 2) << r.out;
    EXPECT_NE(r.err.find("A data de '--from' deve ter a forma aaaa-mm-dd ou \"aaaa-mm-dd hh:mm:ss\": '2024-13-01'."),
              std::string::npos)
        << r.err;
    r = Run("reconcile --to '2024-06-01 25:00:00'");
    EXPECT_EQ(r.exit, 2) << r.out;
    r = Run("reconcile --from 2024-06-02 --to 2024-06-01");
    EXPECT_EQ(r.exit, 2) << r.out;
    EXPECT_NE(r.err.find("O período termina antes de começar"), std::string::npos) << r.err;
    r = Run("reconcile Centro Praia");
    EXPECT_EQ(r.exit, 2) << r.out;
    r = Run("reconcile --depressa");
    EXPECT_EQ(r.exit, 2) << r.out;
    EXPECT_NE(r.err.find("Opção desconhecida: '--depressa'"), std::string::npos) << r.err;
    r = Run("reconcile Porto");
    EXPECT_EQ(r.exit, 1) << r.out;
    EXPECT_NE(r.err.find("não há nenhum restaurante 'Porto' nas configurações guardadas (há 'Centro')."),
              std::string::npos)
        << r.err;
}

}  // namespace
}  // namespace kitra
