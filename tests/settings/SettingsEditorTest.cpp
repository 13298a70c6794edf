// The settings dialog's rules without a window, over a real back office: the zone-by-zone
// loading, each validation rule in its order with its message, taking the controls back, the
// equivalence grids' editing rules, the caption rule and the defaults.
#include "settings/SettingsEditor.h"

#include <gtest/gtest.h>

#include "settings/DialogTexts.h"
#include "tests/hostsupport/TestBackOffice.h"

namespace kitra {
namespace {
namespace texts = dialog_texts;

const std::string kValidXml =
    "<KitraConnectorSetting InvoiceTransDocument=\"VB\" CreditTransDocument=\"FAC\" "
    "StockTransDocument=\"GT\" CashEntranceTransDocument=\"EC\" CashWithdrawalTransDocument=\"SC\" "
    "CustomerPaymentTransDocument=\"PCL\" CustomerPaymentAccountDocument=\"ADC\" "
    "SelfConsumptionTransDocument=\"AC\" DefaultTenderPayment=\"1\" DefaultTaxableGroup=\"1\">"
    "<Restaurants><Restaurant Name=\"Centro\" ServerName=\"127.0.0.1\" ServerPort=\"3306\" "
    "ServerDBName=\"centro\" ServerUser=\"u\" ServerPassword=\"p\" TransSerial=\"EXT\" "
    "DefaultSupplierID=\"1\"/></Restaurants>"
    "<TenderEquivalence><Tender POSTenderID=\"2\" KitraTenderID=\"MB\"/>"
    "<Tender POSTenderID=\"1\" KitraTenderID=\"DIN\"/></TenderEquivalence>"
    "<TaxableGroupEquivalence><TaxableGroup TaxableGroupID=\"1\" KitraVAT=\"23\"/>"
    "<TaxableGroup TaxableGroupID=\"3\" KitraVAT=\"6.5\"/><TaxableGroup TaxableGroupID=\"4\" "
    "KitraVAT=\".5\"/></TaxableGroupEquivalence></KitraConnectorSetting>";

class SettingsEditorTest : public ::testing::Test {
protected:
    KitraConnectorSetting Setting(const std::string& xml) {
        KitraConnectorSetting setting(*office.Services().utility);
        setting.FromXML(xml);
        return setting;
    }
    SettingsForm Loaded(const std::string& xml, std::string* zone = nullptr) {
        std::string failed;
        SettingsForm form = editor.Load(Setting(xml), &failed);
        if (zone != nullptr) *zone = failed;
        return form;
    }
    std::string Text(long id) { return office.Services().application->Text(id); }

    testing::TestBackOffice office;
    SettingsEditor editor{office.Services()};
};

TEST_F(SettingsEditorTest, LoadingFillsEveryControlInTheGridsOrder) {
    std::string zone;
    const SettingsForm form = Loaded(kValidXml, &zone);
    EXPECT_EQ(zone, "");
    EXPECT_EQ(form.documents, (std::array<std::string, kDocumentCombos>{"VB", "FAC", "GT", "EC", "SC", "PCL", "ADC"}));
    EXPECT_EQ(form.cboDefaultTenderPayment, std::optional<std::int16_t>(1));
    EXPECT_EQ(form.cboDefaultTaxableGroup, std::optional<std::int16_t>(1));
    EXPECT_EQ(form.vsfPayments, (std::vector<TenderRow>{{"MB", "2", "Multibanco"}, {"DIN", "1", "Dinheiro"}}));
    // The VAT column shows "##0.00" with the host's ",".
    EXPECT_EQ(form.vsfTaxableGroups,
              (std::vector<TaxableGroupRow>{{"23,00", "1", "Taxa normal"},
                                            {"6,50", "3", "Taxa reduzida"},
                                            {"0,50", "4", "Isento"}}));
    ASSERT_EQ(form.vsfRestaurant.size(), 1u);
    EXPECT_EQ(form.vsfRestaurant[0].Name, "Centro");
    EXPECT_TRUE(editor.Failures(form).empty()) << editor.Failures(form).front();
}

TEST_F(SettingsEditorTest, AnUnknownStockDocumentStopsLoadingAtItsZone) {
    std::string xml = kValidXml;
    xml.replace(xml.find("StockTransDocument=\"GT\""), 23, "StockTransDocument=\"XX\"");
    std::string zone;
    const SettingsForm form = Loaded(xml, &zone);
    EXPECT_EQ(zone, "StockTransDocument");
    EXPECT_EQ(SettingsEditor::ZoneMessage(zone),
              "Foi encontrado um erro na leitura da configuração na zona 'StockTransDocument'");
    // The zones before it are shown, those after it stay empty; the two customer-payment combos
    // are not zones.
    EXPECT_EQ(form.documents[cboInvoiceTransDocument], "VB");
    EXPECT_EQ(form.documents[cboCreditSales], "FAC");
    EXPECT_EQ(form.documents[cboStockDocument], "");
    EXPECT_EQ(form.documents[cboCashEntranceTransDocument], "");
    EXPECT_EQ(form.documents[cboCustomerPaymentTransDocument], "PCL");
    EXPECT_FALSE(form.cboDefaultTenderPayment);
    EXPECT_TRUE(form.vsfPayments.empty());
    EXPECT_TRUE(form.vsfRestaurant.empty());
}

TEST_F(SettingsEditorTest, UnknownCodesInLaterZonesNameTheirZone) {
    const std::pair<std::pair<std::string, std::string>, std::string> cases[] = {
        {{"DefaultTenderPayment=\"1\"", "DefaultTenderPayment=\"99\""}, "DefaultTenderPayment"},
        {{"DefaultTaxableGroup=\"1\"", "DefaultTaxableGroup=\"99\""}, "DefaultTaxableGroup"},
        {{"TaxableGroupID=\"3\"", "TaxableGroupID=\"99\""}, "TaxableGroupEquivalence"},
        {{"POSTenderID=\"2\"", "POSTenderID=\"99\""}, "TenderEquivalence"},
        {{"CreditTransDocument=\"FAC\"", "CreditTransDocument=\"ZZ\""}, "CreditTransDocument"},
    };
    for (const auto& [change, zone] : cases) {
        std::string xml = kValidXml;
        xml.replace(xml.find(change.first), change.first.size(), change.second);
        std::string failed;
        Loaded(xml, &failed);
        EXPECT_EQ(failed, zone);
    }
    // A new settings object (empty codes, zero defaults) is not a loading error.
    std::string failed;
    Loaded("<KitraConnectorSetting/>", &failed);
    EXPECT_EQ(failed, "");
}

TEST_F(SettingsEditorTest, NoRestaurantIsReportedWithTheListsCaption) {
    std::string xml = kValidXml;
    const auto from = xml.find("<Restaurants>");
    xml.replace(from, xml.find("</Restaurants>") + 14 - from, "<Restaurants/>");
    const SettingsForm form = Loaded(xml);
    EXPECT_TRUE(form.vsfRestaurant.empty());
    EXPECT_EQ(editor.RestaurantFailure(form.vsfRestaurant),
              Text(texts::kAtLeastOneIn) + "Restaurantes:");
}

TEST_F(SettingsEditorTest, ARestaurantWhoseSeriesIsOfAnotherKindIsReported) {
    std::string xml = kValidXml;
    xml.replace(xml.find("TransSerial=\"EXT\""), 17, "TransSerial=\"A\"");
    EXPECT_EQ(editor.RestaurantFailure(Loaded(xml).vsfRestaurant),
              "As séries usadas na integração de dados têm que ser do tipo 'Não assinadas externas'");
    // A series the host does not have is not this check's business.
    xml.replace(xml.find("TransSerial=\"A\""), 15, "TransSerial=\"Q\"");
    EXPECT_EQ(editor.RestaurantFailure(Loaded(xml).vsfRestaurant), std::nullopt);
}

// Each rule, in order: with the rule broken the dialog shows its message first.
TEST_F(SettingsEditorTest, EachRuleInOrderWithItsMessage) {
    const std::string chooseIn = Text(texts::kChooseAValueIn);
    const std::string incompleteIn = Text(texts::kIncompleteRowsIn);
    struct Case {
        void (*breakIt)(SettingsForm&);
        std::string message;
    };
    const std::vector<Case> cases = {
        {[](SettingsForm& f) { f.documents[cboInvoiceTransDocument] = ""; }, chooseIn + "Documento de Vendas:"},
        {[](SettingsForm& f) { f.documents[cboCreditSales] = ""; }, chooseIn + "Documento de Vendas a Crédito:"},
        {[](SettingsForm& f) { f.documents[cboStockDocument] = ""; }, chooseIn + "Documento de Guia de Transporte:"},
        {[](SettingsForm& f) { f.documents[cboCashEntranceTransDocument] = ""; }, chooseIn + texts::lblCashEntranceTransDocument},
        {[](SettingsForm& f) { f.documents[cboCashWithdrawalTransDocument] = ""; }, chooseIn + texts::lblCashWithdrawalTransDocument},
        {[](SettingsForm& f) { f.documents[cboCustomerPaymentTransDocument] = ""; }, chooseIn + texts::lblCustumerPaymentTransDocument},
        {[](SettingsForm& f) { f.documents[cboCustomerPaymentAccountDocument] = ""; }, chooseIn + texts::lblCustumerPaymentAccountDocument},
        {[](SettingsForm& f) { f.vsfTaxableGroups[1].taxableGroup = ""; }, incompleteIn + texts::lblTaxableGroups},
        {[](SettingsForm& f) { f.vsfPayments[0].kitraTenderId = ""; }, incompleteIn + texts::lblPayments},
        {[](SettingsForm& f) { f.vsfPayments[1].posTender = "5"; },
         "Não pode mapear modalidades do tipo vale na " + std::string(texts::lblPayments)},
        {[](SettingsForm& f) { f.cboDefaultTenderPayment = 5; },
         chooseIn + "Modalidade de Pagamento por Omissão que nao seja do tipo vale."},
        {[](SettingsForm& f) { f.cboDefaultTaxableGroup.reset(); }, chooseIn + "Taxa de IVA por Omissão"},
        {[](SettingsForm& f) { f.vsfRestaurant.clear(); }, Text(texts::kAtLeastOneIn) + "Restaurantes:"},
    };
    SettingsForm form = Loaded(kValidXml);
    for (auto c = cases.rbegin(); c != cases.rend(); ++c) {
        c->breakIt(form);
        const std::vector<std::string> failures = editor.Failures(form);
        ASSERT_FALSE(failures.empty());
        EXPECT_EQ(failures.front(), c->message);

        office.boxes.shown.clear();
        KitraConnectorSetting untouched = Setting(kValidXml);
        const std::string before = untouched.ToXML();
        EXPECT_FALSE(editor.Accept(form, untouched));
        ASSERT_EQ(office.boxes.shown.size(), 1u);
        EXPECT_EQ(office.boxes.shown[0].text, c->message);
        EXPECT_EQ(office.boxes.shown[0].style, host::MessageStyle::Information);
        EXPECT_EQ(untouched.ToXML(), before);  // nothing written
    }
    // Every broken rule is among the failures, in the dialog's order.
    EXPECT_EQ(editor.Failures(form).size(), cases.size());
}

TEST_F(SettingsEditorTest, AcceptingTakesTheControlsInGridOrder) {
    SettingsForm form = Loaded(kValidXml);
    form.vsfTaxableGroups.push_back({"13,0", "2", ""});
    form.vsfPayments.push_back({"CH", "4", ""});
    Restaurant second = form.vsfRestaurant[0];
    second.Name = "Praia";
    form.vsfRestaurant.push_back(second);
    KitraConnectorSetting setting = Setting("<KitraConnectorSetting SelfConsumptionTransDocument=\"AC\"/>");
    ASSERT_TRUE(editor.Accept(form, setting));
    EXPECT_EQ(setting.InvoiceTransDocument, "VB");
    EXPECT_EQ(setting.CustomerPaymentAccountDocument, "ADC");
    EXPECT_EQ(setting.SelfConsumptionTransDocument, "AC");  // no control: left as it was
    EXPECT_EQ(setting.DefaultTenderPayment, 1);
    EXPECT_EQ(setting.TenderEquivalence,
              (std::vector<TenderMapping>{{2, "MB"}, {1, "DIN"}, {4, "CH"}}));
    EXPECT_EQ(setting.TaxableGroupEquivalence,
              (std::vector<TaxableGroupMapping>{{1, "23"}, {3, "6.5"}, {4, ".5"}, {2, "13"}}));
    ASSERT_EQ(setting.Restaurants.Count(), 2);
    EXPECT_TRUE(setting.Restaurants.Exists("praia"));  // added by name
}

TEST_F(SettingsEditorTest, TwoRestaurantsOfOneNameAreRefusedWithNothingWritten) {
    SettingsForm form = Loaded(kValidXml);
    Restaurant twin = form.vsfRestaurant[0];
    twin.Name = "CENTRO";
    form.vsfRestaurant.push_back(twin);
    KitraConnectorSetting setting = Setting(kValidXml);
    const std::string before = setting.ToXML();
    EXPECT_FALSE(editor.Accept(form, setting));
    EXPECT_EQ(office.boxes.shown.size(), 1u);
    EXPECT_EQ(setting.ToXML(), before);
}

TEST_F(SettingsEditorTest, PickingAVoucherTenderIsRefusedAndClearsTheRow) {
    TenderRow row{"VALE", "1", "Dinheiro"};
    editor.TenderPicked(row, 5);
    EXPECT_EQ(row, TenderRow{});
    ASSERT_EQ(office.boxes.shown.size(), 1u);
    EXPECT_EQ(office.boxes.shown[0].text, "Não pode mapear modalidades do tipo vale!");
    row = {"MB", "", ""};
    editor.TenderPicked(row, 2);
    EXPECT_EQ(row, (TenderRow{"MB", "2", "Multibanco"}));
    EXPECT_EQ(office.boxes.shown.size(), 1u);
}

TEST_F(SettingsEditorTest, PickingATaxableGroupFillsItsDescription) {
    TaxableGroupRow row{"13,00", "", ""};
    editor.TaxableGroupPicked(row, 2);
    EXPECT_EQ(row, (TaxableGroupRow{"13,00", "2", "Taxa intermédia"}));
}

TEST_F(SettingsEditorTest, ARestaurantTenderOf16CharactersOrMoreIsRefused) {
    EXPECT_TRUE(SettingsEditor::TenderIdAccepted(std::string(15, 'x')));
    EXPECT_FALSE(SettingsEditor::TenderIdAccepted(std::string(16, 'x')));
    EXPECT_TRUE(SettingsEditor::TenderIdAccepted("Cartão de créd."));  // 15 characters
}

TEST_F(SettingsEditorTest, TheVatKeyFilter) {
    for (char key : std::string("0123456789-+,")) EXPECT_EQ(editor.FilterVatKey(key, ""), key);
    for (char key : {'\r', '\t', '\x1b', '\b'}) EXPECT_EQ(editor.FilterVatKey(key, "1"), key);
    for (char key : std::string("aZ ;%e")) EXPECT_EQ(editor.FilterVatKey(key, ""), std::nullopt);
    // "." becomes the host's ",", and is dropped when the cell already holds one.
    EXPECT_EQ(editor.FilterVatKey('.', "23"), ',');
    EXPECT_EQ(editor.FilterVatKey('.', "23,5"), std::nullopt);
    // A typed "," is not checked for a second one.
    EXPECT_EQ(editor.FilterVatKey(',', "23,5"), ',');
}

TEST_F(SettingsEditorTest, LeavingTheVatCellKeepsOnlyANumberAboveMinusOne) {
    EXPECT_TRUE(editor.VatAccepted("23"));
    EXPECT_TRUE(editor.VatAccepted("6,5"));
    EXPECT_TRUE(editor.VatAccepted("-0,5"));
    EXPECT_FALSE(editor.VatAccepted("-1"));
    EXPECT_FALSE(editor.VatAccepted("1,2,3"));
    EXPECT_FALSE(editor.VatAccepted(""));
    EXPECT_FALSE(editor.VatAccepted("abc"));
}

TEST_F(SettingsEditorTest, TheVatColumnShowsItsNumbersWithTwoDecimals) {
    EXPECT_EQ(editor.VatShown("6,5"), "6,50");
    EXPECT_EQ(editor.VatShown("23"), "23,00");
    EXPECT_EQ(editor.VatShown("0,125"), "0,13");
    EXPECT_EQ(editor.VatShown("-0,5"), "-0,50");
    // What is not a number shows as typed; leaving the cell refuses it.
    EXPECT_EQ(editor.VatShown("1,2,3"), "1,2,3");
    EXPECT_EQ(editor.VatShown(""), "");
}

TEST_F(SettingsEditorTest, OnlyAFinalColonLeavesACaption) {
    EXPECT_EQ(SettingsEditor::CaptionWithoutColon("Taxa:"), "Taxa");
    EXPECT_EQ(SettingsEditor::CaptionWithoutColon("Taxa::"), "Taxa:");
    EXPECT_EQ(SettingsEditor::CaptionWithoutColon("Taxa"), "Taxa");
    EXPECT_EQ(SettingsEditor::CaptionWithoutColon(""), "");
}

TEST_F(SettingsEditorTest, DefaultsChooseTheHostsDocumentTypesAndMakeTheMissingOnes) {
    host::IDocumentTypeService& types = *office.Services().documentTypes;
    ASSERT_TRUE(types.Exists("DEV"));
    SettingsForm current = Loaded(kValidXml);
    const SettingsForm form = editor.Defaults(current);
    EXPECT_EQ(form.documents, (std::array<std::string, kDocumentCombos>{"VB", "FAC", "DEV", "PCL", "DEV", "PCL", "PCL"}));
    EXPECT_EQ(form.cboDefaultTenderPayment, std::optional<std::int16_t>(1));  // the first cash tender
    EXPECT_EQ(form.cboDefaultTaxableGroup, std::optional<std::int16_t>(1));
    EXPECT_TRUE(form.vsfPayments.empty());
    EXPECT_TRUE(form.vsfTaxableGroups.empty());
    EXPECT_EQ(form.vsfRestaurant, current.vsfRestaurant);
}

TEST_F(SettingsEditorTest, DefaultsMakeDevAndPclWhenTheHostLacksThem) {
    // A host without them: the back office's two types are removed.
    testing::TestBackOffice bare;
    bare.Services().connection->Execute(host::SqlStatement("DELETE FROM document_types WHERE DocumentTypeID IN ('DEV','PCL')"));
    ASSERT_FALSE(bare.Services().documentTypes->Exists("DEV"));
    const SettingsForm form = SettingsEditor(bare.Services()).Defaults(SettingsForm{});
    const auto dev = bare.Services().documentTypes->Get("DEV");
    const auto pcl = bare.Services().documentTypes->Get("PCL");
    ASSERT_TRUE(dev && pcl);
    EXPECT_EQ(dev->Description, "DEVOLUÇÃO");
    EXPECT_EQ(pcl->Description, "PAGAMENTO DE CLIENTES");
    EXPECT_EQ(form.documents[cboStockDocument], "DEV");
    EXPECT_EQ(form.documents[cboCustomerPaymentTransDocument], "PCL");
}

}  // namespace
}  // namespace kitra
