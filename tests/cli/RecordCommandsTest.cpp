// kitra-host's record commands (document-type, tender, taxable-group, warehouse, workstation,
// supplier, company) run as a user runs them, on a new back office.
#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "backoffice/BackOffice.h"
#include "tests/cli/KitraHostRun.h"

namespace kitra {
namespace {

using testing::KitraHostTest;
using Result = testing::HostResult;

bool Has(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

// The line of the text that holds both parts, in that order; empty when there is none.
std::string LineWith(const std::string& text, const std::string& first, const std::string& second) {
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        const auto at = line.find(first);
        if (at != std::string::npos && line.find(second, at + first.size()) != std::string::npos) return line;
    }
    return {};
}

// Settings that name records of every kind: document types, tender 2 (by default and in the
// equivalence), taxable group 3, workstation 3, warehouses 1 and 2, supplier 1.
const std::string kSettings =
    "<KitraConnectorSetting InvoiceTransDocument=\"VB\" CreditTransDocument=\"FAC\" "
    "StockTransDocument=\"GT\" CashEntranceTransDocument=\"EC\" CashWithdrawalTransDocument=\"SC\" "
    "CustomerPaymentTransDocument=\"PCL\" CustomerPaymentAccountDocument=\"ADC\" "
    "SelfConsumptionTransDocument=\"ac\" DefaultTenderPayment=\"1\" DefaultTaxableGroup=\"1\">"
    "<Restaurants><Restaurant Name=\"Centro\" ServerName=\"127.0.0.1\" ServerPort=\"1\" "
    "ServerDBName=\"r\" ServerUser=\"u\" WorkstationID=\"3\" DefaultWarehouseID=\"1\" "
    "WasteWarehouseID=\"2\" TransSerial=\"EXT\" DefaultSupplierID=\"1\" "
    "ImportDateEntities=\"2024-01-01 00:00:00\" ImportDateTransactions=\"2024-01-01 00:00:00\"/>"
    "</Restaurants><TenderEquivalence><Tender POSTenderID=\"2\" KitraTenderID=\"MB\"/>"
    "</TenderEquivalence><TaxableGroupEquivalence><TaxableGroup TaxableGroupID=\"3\" KitraVAT=\"6\"/>"
    "</TaxableGroupEquivalence></KitraConnectorSetting>";

class RecordCommandsTest : public KitraHostTest {
protected:
    // Runs a command that must be refused: its exit code, and its message on stderr only.
    void ExpectRefused(const std::string& arguments, int exit, const std::string& message) {
        const Result r = Run(arguments);
        EXPECT_EQ(r.exit, exit) << arguments << "\n" << r.out;
        EXPECT_TRUE(Has(r.err, message)) << arguments << "\n" << r.err;
        EXPECT_EQ(r.out, r.err) << arguments;  // nothing on stdout
    }
    void ExpectDone(const std::string& arguments, const std::string& said) {
        const Result r = Run(arguments);
        EXPECT_EQ(r.exit, 0) << arguments << "\n" << r.out;
        EXPECT_EQ(r.out, said) << arguments;
    }
    std::string List(const std::string& command) {
        const Result r = Run(command);
        EXPECT_EQ(r.exit, 0) << command << "\n" << r.out;
        EXPECT_EQ(r.err, "") << command;
        return r.out;
    }
    void LoadSettings() { ASSERT_EQ(Run("settings load " + WriteSettings(kSettings)).exit, 0); }
};

// ---- document types ----

TEST_F(RecordCommandsTest, DocumentTypesAreListedAddedChangedAndRemoved) {
    EXPECT_TRUE(List("document-type list").starts_with("AC\tautoconsumo\tAUTOCONSUMO\n"));
    ExpectDone("document-type add TKA " + Quote("Venda take-away") + " venda",
               "Tipo de documento 'TKA' criado.\n");
    ExpectDone("document-type add NCR " + Quote("Nota de crédito") + " devolucao",
               "Tipo de documento 'NCR' criado.\n");
    const std::string list = List("document-type list");
    EXPECT_TRUE(Has(list, "\nTKA\tvenda\tVenda take-away\n")) << list;
    EXPECT_TRUE(Has(list, "\nNCR\tdevolução\tNota de crédito\n")) << list;
    EXPECT_TRUE(Has(List("document-type list --json"),
                    "{\"code\":\"TKA\",\"description\":\"Venda take-away\",\"kind\":1,"
                    "\"kindName\":\"venda\"}"));
    EXPECT_TRUE(List("document-type list --json").starts_with("[{\"code\":\"AC\""));

    ExpectDone("document-type set tka --description " + Quote("Take-away") + " --kind venda-a-crédito",
               "Tipo de documento 'TKA' alterado.\n");
    EXPECT_TRUE(Has(List("document-type list"), "\nTKA\tvenda-a-crédito\tTake-away\n"));
    ExpectDone("document-type set TKA --kind 9", "Tipo de documento 'TKA' alterado.\n");
    EXPECT_TRUE(Has(List("document-type list"), "\nTKA\tautoconsumo\tTake-away\n"));

    ExpectDone("document-type remove tka", "Tipo de documento 'TKA' apagado.\n");
    EXPECT_FALSE(Has(List("document-type list"), "TKA"));
}

TEST_F(RecordCommandsTest, DocumentTypeRefusals) {
    ExpectRefused("document-type add VB2 Outra venda extra", 2, "Uso: kitra-host document-type list [--json]");
    ExpectRefused("document-type add vb Outra venda", 1, "Já existe o tipo de documento com o código VB.");
    ExpectRefused("document-type add VB2 '' venda", 2, "A descrição não pode ficar vazia.");
    ExpectRefused("document-type add VB2 '   ' venda", 2, "A descrição não pode ficar vazia.");
    ExpectRefused("document-type add VB2 " + Quote("a\tb") + " venda", 2, "Sem tabulações");
    ExpectRefused("document-type add '' Venda venda", 2, "deve ter de 1 a 10 caracteres");
    ExpectRefused("document-type add ABCDEFGHIJK Venda venda", 2,
                  "O código do tipo de documento deve ter de 1 a 10 caracteres, sem espaços nem aspas.");
    ExpectRefused("document-type add 'V B' Venda venda", 2, "sem espaços nem aspas");
    ExpectRefused("document-type add VB2 Venda leilão", 2,
                  "Natureza de documento desconhecida: 'leilão'. Use uma destas: venda (1), "
                  "venda-a-crédito (2), devolução (3)");
    ExpectRefused("document-type add VB2 Venda 10", 2, "Natureza de documento desconhecida: '10'");
    ExpectRefused("document-type set XX --description Nada", 1, "Não existe o tipo de documento com o código XX.");
    ExpectRefused("document-type set VB", 2, "Diga o que muda.");
    ExpectRefused("document-type set VB --colour azul", 2, "Opção desconhecida: '--colour'");
    ExpectRefused("document-type remove XX", 1, "Não existe o tipo de documento com o código XX.");
    ExpectRefused("document-type", 2, "Uso: kitra-host document-type");
    ExpectRefused("document-type delete VB", 2, "Uso: kitra-host document-type");
    ExpectRefused("document-type list extra", 2, "Uso: kitra-host document-type");
    // Nothing was written by any of them.
    EXPECT_EQ(List("document-type list").find("VB2"), std::string::npos);
}

TEST_F(RecordCommandsTest, ADocumentTypeTheSettingsNameIsNotRemoved) {
    LoadSettings();
    // Named by the settings in another letter case ("ac"), which the back office takes as AC.
    ExpectRefused("document-type remove AC", 1,
                  "Não é possível apagar o tipo de documento AC: ainda há quem lhe faça referência: "
                  "configurações do conector (SelfConsumptionTransDocument).");
    ExpectDone("document-type remove DEV", "Tipo de documento 'DEV' apagado.\n");
}

// ---- tenders ----

TEST_F(RecordCommandsTest, TendersAreListedAddedChangedAndRemoved) {
    EXPECT_TRUE(List("tender list").starts_with("1\tdinheiro\tDinheiro\n2\tcartão\tMultibanco\n"));
    ExpectDone("tender add 7 " + Quote("MB Way") + " cartao", "Modalidade de pagamento 7 criada.\n");
    EXPECT_TRUE(Has(List("tender list"), "\n7\tcartão\tMB Way\n"));
    EXPECT_TRUE(Has(List("tender list --json"),
                    "{\"code\":7,\"description\":\"MB Way\",\"type\":4,\"typeName\":\"cartão\","
                    "\"givesChange\":false,\"opensCashDrawer\":false}"));
    ExpectDone("tender set 7 --type dinheiro --description " + Quote("Numerário 2"),
               "Modalidade de pagamento 7 alterada.\n");
    EXPECT_TRUE(Has(List("tender list --json"),
                    "{\"code\":7,\"description\":\"Numerário 2\",\"type\":1,\"typeName\":\"dinheiro\","
                    "\"givesChange\":true,\"opensCashDrawer\":true}"));
    ExpectDone("tender remove 7", "Modalidade de pagamento 7 apagada.\n");
    EXPECT_FALSE(Has(List("tender list"), "\n7\t"));
}

TEST_F(RecordCommandsTest, TenderRefusals) {
    ExpectRefused("tender add 2 Outro cartão", 1, "Já existe a modalidade de pagamento com o código 2.");
    ExpectRefused("tender add 0 Nada dinheiro", 2,
                  "O código da modalidade de pagamento deve ser um número inteiro de 1 a 32767; '0' não é.");
    ExpectRefused("tender add 32768 Nada dinheiro", 2, "de 1 a 32767; '32768' não é.");
    ExpectRefused("tender add 7x Nada dinheiro", 2, "'7x' não é.");
    ExpectRefused("tender add 7 '' dinheiro", 2, "A descrição não pode ficar vazia.");
    ExpectRefused("tender add 7 Bitcoin cripto", 2,
                  "Tipo de modalidade de pagamento desconhecida: 'cripto'. Use uma destas: dinheiro (1), "
                  "cheque (2), transferência (3), cartão (4), vale (5), conta-corrente (6).");
    ExpectRefused("tender set 9 --description Nada", 1, "Não existe a modalidade de pagamento com o código 9.");
    ExpectRefused("tender set 2 --type 0", 2, "Tipo de modalidade de pagamento desconhecida: '0'");
    ExpectRefused("tender remove 9", 1, "Não existe a modalidade de pagamento com o código 9.");
    // Tender 1 is the company's default for new customers.
    ExpectRefused("tender remove 1", 1,
                  "Não é possível apagar a modalidade de pagamento 1: ainda há quem lhe faça "
                  "referência: a empresa, como modalidade dos clientes novos (DefaultTenderID).");
    EXPECT_FALSE(Has(List("tender list"), "\n7\t"));
}

TEST_F(RecordCommandsTest, ATenderTheSettingsUseIsNotRemovedNorMadeAVoucher) {
    LoadSettings();
    ExpectRefused("tender remove 2", 1,
                  "Não é possível apagar a modalidade de pagamento 2: ainda há quem lhe faça "
                  "referência: configurações do conector, TenderEquivalence (POSTenderID).");
    ExpectRefused("tender set 2 --type vale", 1,
                  "A modalidade de pagamento 2 não pode passar a vale: o conector não aceita vales "
                  "onde a usa (configurações do conector, TenderEquivalence (POSTenderID)).");
    EXPECT_TRUE(Has(List("tender list"), "\n2\tcartão\tMultibanco\n"));
    ExpectDone("tender set 3 --type vale", "Modalidade de pagamento 3 alterada.\n");
    ExpectDone("tender remove 3", "Modalidade de pagamento 3 apagada.\n");
}

// ---- taxable groups ----

TEST_F(RecordCommandsTest, TaxableGroupsAreListedAddedChangedAndRemoved) {
    EXPECT_TRUE(List("taxable-group list").starts_with("1\t1=23 2=16 3=22\tTaxa normal\n"));
    ExpectDone("taxable-group add 5 " + Quote("Taxa de parque") + " --rate 1=6,5 --rate 3=5.25",
               "Taxa de IVA 5 criada.\n");
    EXPECT_TRUE(Has(List("taxable-group list"), "\n5\t1=6,5 3=5,25\tTaxa de parque\n"));
    EXPECT_TRUE(Has(List("taxable-group list --json"),
                    "{\"code\":5,\"description\":\"Taxa de parque\",\"rates\":[{\"country\":\"PT\","
                    "\"region\":1,\"rate\":6.5},{\"country\":\"PT\",\"region\":3,\"rate\":5.25}]}"));
    ExpectDone("taxable-group set 5 --rate 2=4 --rate 1=7 --description Parque",
               "Taxa de IVA 5 alterada.\n");
    EXPECT_TRUE(Has(List("taxable-group list"), "\n5\t1=7 2=4 3=5,25\tParque\n"));
    ExpectDone("taxable-group remove 5", "Taxa de IVA 5 apagada.\n");
    EXPECT_FALSE(Has(List("taxable-group list"), "\n5\t"));
    {
        // Its rates went with it.
        backoffice::BackOffice office(Data());
        backoffice::Statement rates(office.GetDatabase(),
                                    "SELECT COUNT(*) FROM taxable_group_rates WHERE TaxableGroupID = 5");
        ASSERT_TRUE(rates.Step());
        EXPECT_EQ(rates.Column(0).ToInt32(), 0);
    }
    ExpectDone("taxable-group add 5 Outra --rate 1=13", "Taxa de IVA 5 criada.\n");
    EXPECT_TRUE(List("taxable-group list").ends_with("\n5\t1=13\tOutra\n"));
}

TEST_F(RecordCommandsTest, TaxableGroupRefusals) {
    ExpectRefused("taxable-group add 1 Outra --rate 1=23", 1, "Já existe a taxa de IVA com o código 1.");
    ExpectRefused("taxable-group add 5 Outra --rate 1=100", 2,
                  "A taxa '100' não é uma percentagem de IVA que a retaguarda possa usar: deve ser "
                  "de 0 até menos de 100");
    ExpectRefused("taxable-group add 5 Outra --rate 1=-1", 2, "A taxa '-1' não é uma percentagem");
    ExpectRefused("taxable-group add 5 Outra --rate 1=abc", 2, "A taxa 'abc' não é uma percentagem");
    ExpectRefused("taxable-group add 5 Outra --rate 1", 2, "'--rate 1' deve ser REGIÃO=TAXA");
    ExpectRefused("taxable-group add 5 Outra --rate 1=23 --rate 1=6", 2, "A região fiscal 1 tem mais de uma taxa.");
    ExpectRefused("taxable-group add 5 Outra --rate 9=23", 1, "Não existe a região fiscal PT 9.");
    ExpectRefused("taxable-group add 5 Outra --rate 2=16", 1,
                  "A taxa de IVA 5 precisa de uma taxa na região fiscal da empresa (PT 1): dê-a com "
                  "--rate 1=TAXA.");
    ExpectRefused("taxable-group add 5 Outra", 1, "precisa de uma taxa na região fiscal da empresa");
    ExpectRefused("taxable-group add 40000 Outra --rate 1=23", 2,
                  "O código da taxa de IVA deve ser um número inteiro de 1 a 32767");
    ExpectRefused("taxable-group add 5 '' --rate 1=23", 2, "A descrição não pode ficar vazia.");
    ExpectRefused("taxable-group set 9 --rate 1=23", 1, "Não existe a taxa de IVA com o código 9.");
    ExpectRefused("taxable-group set 1", 2, "Diga o que muda.");
    ExpectRefused("taxable-group remove 9", 1, "Não existe a taxa de IVA com o código 9.");
    EXPECT_FALSE(Has(List("taxable-group list"), "\n5\t"));
    EXPECT_TRUE(List("taxable-group list").starts_with("1\t1=23 2=16 3=22\tTaxa normal\n"));
}

TEST_F(RecordCommandsTest, ATaxableGroupTheSettingsNameIsNotRemoved) {
    LoadSettings();
    ExpectRefused("taxable-group remove 1", 1,
                  "Não é possível apagar a taxa de IVA 1: ainda há quem lhe faça referência: "
                  "configurações do conector (DefaultTaxableGroup).");
    ExpectRefused("taxable-group remove 3", 1,
                  "configurações do conector, TaxableGroupEquivalence (TaxableGroupID).");
    ExpectDone("taxable-group remove 2", "Taxa de IVA 2 apagada.\n");
}

// ---- warehouses and workstations ----

TEST_F(RecordCommandsTest, WarehousesAreListedAddedChangedAndRemoved) {
    EXPECT_EQ(List("warehouse list"), "1\tArmazém principal\n2\tArmazém de quebras\n");
    ExpectDone("warehouse add 3 " + Quote("Armazém da Baixa"), "Armazém 3 criado.\n");
    ExpectDone("warehouse set 3 --description " + Quote("Cave da Baixa"), "Armazém 3 alterado.\n");
    EXPECT_EQ(List("warehouse list --json"),
              "[{\"code\":1,\"description\":\"Armazém principal\"},{\"code\":2,\"description\":"
              "\"Armazém de quebras\"},{\"code\":3,\"description\":\"Cave da Baixa\"}]\n");
    ExpectDone("warehouse remove 3", "Armazém 3 apagado.\n");
    EXPECT_EQ(List("warehouse list"), "1\tArmazém principal\n2\tArmazém de quebras\n");
}

TEST_F(RecordCommandsTest, WarehouseRefusals) {
    ExpectRefused("warehouse add 1 Outro", 1, "Já existe o armazém com o código 1.");
    ExpectRefused("warehouse add 3 ' '", 2, "A descrição não pode ficar vazia.");
    ExpectRefused("warehouse add -3 Outro", 2, "Opção desconhecida: '-3'");
    ExpectRefused("warehouse add 99999 Outro", 2, "O código do armazém deve ser um número inteiro de 1 a 32767");
    ExpectRefused("warehouse set 3 --description Outro", 1, "Não existe o armazém com o código 3.");
    ExpectRefused("warehouse set 1", 2, "Diga o que muda.");
    ExpectRefused("warehouse remove 3", 1, "Não existe o armazém com o código 3.");
    // The three workstations of a new back office keep their stock in warehouse 1.
    ExpectRefused("warehouse remove 1", 1,
                  "Não é possível apagar o armazém 1: ainda há quem lhe faça referência: os postos 1, 2, 3.");
    LoadSettings();
    ExpectRefused("warehouse remove 2", 1,
                  "Não é possível apagar o armazém 2: ainda há quem lhe faça referência: "
                  "configurações do conector, restaurante 'Centro' (WasteWarehouseID).");
    EXPECT_EQ(List("warehouse list"), "1\tArmazém principal\n2\tArmazém de quebras\n");
}

TEST_F(RecordCommandsTest, WorkstationsAreListedAddedChangedAndRemoved) {
    EXPECT_EQ(List("workstation list"), "1\t1\tPosto 1\n2\t1\tPosto 2\n3\t1\tPosto 3\n");
    ExpectDone("workstation add 4 " + Quote("Esplanada") + " --warehouse 2", "Posto 4 criado.\n");
    ExpectDone("workstation add 5 Bar", "Posto 5 criado.\n");
    ExpectDone("workstation set 5 --warehouse 2", "Posto 5 alterado.\n");
    ExpectDone("workstation set 4 --description " + Quote("Esplanada norte"), "Posto 4 alterado.\n");
    EXPECT_EQ(List("workstation list --json"),
              "[{\"code\":1,\"description\":\"Posto 1\",\"warehouse\":1},{\"code\":2,\"description\":"
              "\"Posto 2\",\"warehouse\":1},{\"code\":3,\"description\":\"Posto 3\",\"warehouse\":1},"
              "{\"code\":4,\"description\":\"Esplanada norte\",\"warehouse\":2},{\"code\":5,"
              "\"description\":\"Bar\",\"warehouse\":2}]\n");
    // Warehouse 2 is now where workstations 4 and 5 keep their stock.
    ExpectRefused("warehouse remove 2", 1, "referência: os postos 4, 5.");
    ExpectDone("workstation remove 4", "Posto 4 apagado.\n");
    EXPECT_TRUE(Has(List("workstation list"), "\n5\t2\tBar\n"));
    EXPECT_FALSE(Has(List("workstation list"), "\n4\t"));
}

TEST_F(RecordCommandsTest, WorkstationRefusals) {
    ExpectRefused("workstation add 1 Outro", 1, "Já existe o posto com o código 1.");
    ExpectRefused("workstation add 4 Outro --warehouse 7", 1,
                  "Não existe o armazém com o código 7; crie-o com 'kitra-host warehouse add 7 DESCRIÇÃO' "
                  "ou escolha outro.");
    ExpectRefused("workstation add 4 Outro --warehouse 0", 2, "O código do armazém deve ser");
    ExpectRefused("workstation add 4 ''", 2, "A descrição não pode ficar vazia.");
    ExpectRefused("workstation add abc Outro", 2, "O código do posto deve ser um número inteiro de 1 a 32767; 'abc' não é.");
    ExpectRefused("workstation set 9 --description Outro", 1, "Não existe o posto com o código 9.");
    ExpectRefused("workstation set 1 --warehouse 9", 1, "Não existe o armazém com o código 9;");
    ExpectRefused("workstation set 1", 2, "Diga o que muda.");
    ExpectRefused("workstation remove 9", 1, "Não existe o posto com o código 9.");
    LoadSettings();
    ExpectRefused("workstation remove 3", 1,
                  "Não é possível apagar o posto 3: ainda há quem lhe faça referência: configurações "
                  "do conector, restaurante 'Centro' (WorkstationID).");
    EXPECT_EQ(List("workstation list"), "1\t1\tPosto 1\n2\t1\tPosto 2\n3\t1\tPosto 3\n");
}

// ---- suppliers ----

TEST_F(RecordCommandsTest, SuppliersAreListedAddedChangedAndRemoved) {
    EXPECT_EQ(List("supplier list"), "1\t508234565\tDistribuidora Alimentar do Centro, Lda.\n");
    ExpectDone("supplier add 2 " + Quote("Peixaria Atlântica, Lda.") + " --tax-number 501964843",
               "Fornecedor 2 criado.\n");
    ExpectDone("supplier add 3 " + Quote("Vinos del Duero"), "Fornecedor 3 criado.\n");
    ExpectDone("supplier set 3 --tax-number ESB12345678 --name " + Quote("Vinos del Duero, S.L."),
               "Fornecedor 3 alterado.\n");
    EXPECT_EQ(List("supplier list --json"),
              "[{\"code\":1,\"name\":\"Distribuidora Alimentar do Centro, Lda.\",\"taxNumber\":"
              "\"508234565\"},{\"code\":2,\"name\":\"Peixaria Atlântica, Lda.\",\"taxNumber\":"
              "\"501964843\"},{\"code\":3,\"name\":\"Vinos del Duero, S.L.\",\"taxNumber\":"
              "\"ESB12345678\"}]\n");
    ExpectDone("supplier remove 3", "Fornecedor 3 apagado.\n");
    EXPECT_TRUE(List("supplier list").ends_with("\n2\t501964843\tPeixaria Atlântica, Lda.\n"));
}

TEST_F(RecordCommandsTest, SupplierRefusals) {
    ExpectRefused("supplier add 1 Outro", 1, "Já existe o fornecedor com o código 1.");
    ExpectRefused("supplier add 2 Outro --tax-number 501964844", 2,
                  "O número de contribuinte '501964844' não é válido");
    ExpectRefused("supplier add 2 Outro --tax-number 12345", 2, "O número de contribuinte '12345' não é válido");
    ExpectRefused("supplier add 2 ''", 2, "O nome não pode ficar vazio.");
    ExpectRefused("supplier add 2147483648 Outro", 2,
                  "O código do fornecedor deve ser um número inteiro de 1 a 2147483647");
    ExpectRefused("supplier set 2 --name Outro", 1, "Não existe o fornecedor com o código 2.");
    ExpectRefused("supplier set 1 --name ''", 2, "O nome não pode ficar vazio.");
    ExpectRefused("supplier set 1", 2, "Diga o que muda.");
    ExpectRefused("supplier remove 2", 1, "Não existe o fornecedor com o código 2.");
    LoadSettings();
    ExpectRefused("supplier remove 1", 1,
                  "Não é possível apagar o fornecedor 1: ainda há quem lhe faça referência: "
                  "configurações do conector, restaurante 'Centro' (DefaultSupplierID).");
    EXPECT_EQ(List("supplier list"), "1\t508234565\tDistribuidora Alimentar do Centro, Lda.\n");
}

// ---- series, the records the settings already could make ----

TEST_F(RecordCommandsTest, SeriesAreListedAlsoAsJson) {
    EXPECT_EQ(List("series list"), "A\tassinada\tactiva\tSérie principal\nEXT\texterna\tactiva\t"
                                   "Série externa dos restaurantes\n");
    ExpectDone("series add PRAIA " + Quote("Restaurante da Praia"), "Série externa 'PRAIA' criada.\n");
    EXPECT_EQ(List("series list --json"),
              "[{\"code\":\"A\",\"kind\":\"assinada\",\"active\":true,\"description\":\"Série "
              "principal\"},{\"code\":\"EXT\",\"kind\":\"externa\",\"active\":true,\"description\":"
              "\"Série externa dos restaurantes\"},{\"code\":\"PRAIA\",\"kind\":\"externa\",\"active\":"
              "true,\"description\":\"Restaurante da Praia\"}]\n");
    ExpectRefused("series add praia Outra", 1, "Já existe a série com o código praia.");
    ExpectRefused("series list --xml", 2, "Uso: kitra-host series list [--json]");
}

// ---- the company ----

TEST_F(RecordCommandsTest, TheCompanyIsShownAndChanged) {
    EXPECT_EQ(List("company show"),
              "Nome: Restaurantes do Mondego, Lda.\nContribuinte: 509123457\nMoeda: EUR\n"
              "Região fiscal: PT 1 (Continente)\n");
    ExpectDone("company set --name " + Quote("Sabores da Ilha, Lda.") +
                   " --tax-number 501964843 --currency eur --tax-region 3",
               "Empresa alterada.\n");
    EXPECT_EQ(List("company show --json"),
              "{\"name\":\"Sabores da Ilha, Lda.\",\"taxNumber\":\"501964843\",\"currency\":\"EUR\","
              "\"country\":\"PT\",\"taxRegion\":3,\"taxRegionName\":\"Região Autónoma da Madeira\"}\n");
    // A taxable group now needs its rate in Madeira, the company's region.
    ExpectRefused("taxable-group add 5 Outra --rate 1=23", 1, "região fiscal da empresa (PT 3)");
}

TEST_F(RecordCommandsTest, CompanyRefusals) {
    ExpectRefused("company set --name ''", 2, "O nome da empresa não pode ficar vazio.");
    ExpectRefused("company set --tax-number 509123458", 2, "O número de contribuinte '509123458' não é válido");
    ExpectRefused("company set --currency EURO", 2, "A moeda 'EURO' não é um código de moeda: são três letras (EUR).");
    ExpectRefused("company set --currency E1R", 2, "A moeda 'E1R' não é um código de moeda");
    ExpectRefused("company set --tax-region 4", 1, "Não existe a região fiscal PT 4.");
    ExpectRefused("company set --tax-region x", 2, "O código da região fiscal deve ser um número inteiro");
    ExpectRefused("company set", 2, "Diga o que muda.");
    ExpectRefused("company list", 2, "Uso: kitra-host company show [--json]");
    ASSERT_EQ(Run("taxable-group add 5 Continente --rate 1=23").exit, 0);
    ExpectRefused("company set --tax-region 2", 1,
                  "A empresa não pode passar à região fiscal PT 2: as taxas de IVA 5 não têm taxa "
                  "nessa região; dê-lhes uma com 'kitra-host taxable-group set CÓDIGO --rate 2=TAXA'.");
    ASSERT_EQ(Run("taxable-group set 5 --rate 2=16").exit, 0);
    ExpectDone("company set --tax-region 2", "Empresa alterada.\n");
    EXPECT_TRUE(Has(List("company show"), "\nRegião fiscal: PT 2 (Região Autónoma dos Açores)\n"));
    EXPECT_TRUE(Has(List("company show"), "\nContribuinte: 509123457\n"));
}

// ---- what the records are for ----

TEST_F(RecordCommandsTest, TheSettingsAreValidatedAgainstTheRecordsTheCommandsMake) {
    std::string settings = kSettings;
    settings.replace(settings.find("\"VB\""), 4, "\"TKA\"");
    ASSERT_EQ(Run("settings load " + WriteSettings(settings)).exit, 0);
    const Result before = Run("validate");
    EXPECT_NE(before.exit, 0);
    EXPECT_TRUE(Has(before.out, "Seleccione um valor em Documento de Vendas")) << before.out;
    ASSERT_EQ(Run("document-type add TKA Take-away venda").exit, 0);
    const Result after = Run("validate");
    EXPECT_FALSE(Has(after.out, "Seleccione um valor em Documento de Vendas")) << after.out;
}

TEST_F(RecordCommandsTest, TheReportsShowTheRecordsTheCommandsMakeWhichThenStay) {
    ASSERT_EQ(Run("document-type add TKA " + Quote("Venda take-away") + " venda").exit, 0);
    ASSERT_EQ(Run("tender add 7 " + Quote("MB Way") + " cartão").exit, 0);
    {
        // A take-away sale paid with the new tender, as an import saves it.
        backoffice::BackOffice office(Data());
        auto business = office.transactions.NewTransactionBusiness();
        business->InitNewTransaction("TKA", "EXT");
        business->SetTransactionDefaults(*office.documentTypes.Get("TKA"), 1);
        host::Transaction& sale = business->Current();
        sale.DocumentNumber = 1;
        sale.DocumentDate = sale.DueDate = DateTime{2025, 1, 10, 12, 0, 0};
        host::TransactionLine line = business->NewLine();
        line.ItemID = "B1";
        line.Description = "Bifana";
        line.TaxableGroupID = 1;
        line.Quantity = 2;
        line.UnitPrice = 3.5;
        business->CalculateLine(line);
        business->AppendLine(line);
        host::TransactionPayment payment = business->NewPayment(7);
        payment.Amount = business->CalculatedTotal();
        business->AppendPayment(payment);
        office.transactions.Save(sale);
    }
    const std::string report = List("report sales");
    EXPECT_NE(LineWith(report, "TKA", "Venda take-away"), "") << report;
    EXPECT_NE(LineWith(report, "7", "MB Way"), "") << report;

    ExpectDone("tender set 7 --description " + Quote("MB Way (telemóvel)"), "Modalidade de pagamento 7 alterada.\n");
    EXPECT_NE(LineWith(List("report sales"), "7", "MB Way (telemóvel)"), "");

    // What documents refer to stays.
    ExpectRefused("document-type remove TKA", 1,
                  "Não é possível apagar o tipo de documento TKA: ainda há quem lhe faça referência: "
                  "1 documento.");
    ExpectRefused("tender remove 7", 1,
                  "Não é possível apagar a modalidade de pagamento 7: ainda há quem lhe faça "
                  "referência: 1 documento pago com ela.");
    ExpectRefused("taxable-group remove 1", 1, "referência: 1 linha de documento.");
    ExpectRefused("workstation remove 1", 1, "referência: 1 documento.");
}

TEST_F(RecordCommandsTest, TheHelpShowsEveryRecordCommand) {
    const std::string help = List("--help");
    for (const char* line : {"\n  document-type list|add|set|remove ...\n", "\n  tender list|add|set|remove ...\n",
                             "\n  taxable-group list|add|set|remove ...\n", "\n  warehouse list|add|set|remove ...\n",
                             "\n  workstation list|add|set|remove ...\n", "\n  supplier list|add|set|remove ...\n",
                             "\n  company show [--json]|set ...\n"}) {
        EXPECT_TRUE(Has(help, line)) << line;
    }
}

}  // namespace
}  // namespace kitra
