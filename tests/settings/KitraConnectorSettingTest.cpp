#include "settings/KitraConnectorSetting.h"

#include <gtest/gtest.h>

#include <vector>

#include "backoffice/UtilityService.h"
#include "SettingsSamples.h"

namespace kitra {
namespace {

const std::string kEmptyXml =
    "<KitraConnectorSetting InvoiceTransDocument=\"\" CreditTransDocument=\"\""
    " StockTransDocument=\"\" CashEntranceTransDocument=\"\" CashWithdrawalTransDocument=\"\""
    " CustomerPaymentTransDocument=\"\" CustomerPaymentAccountDocument=\"\""
    " SelfConsumptionTransDocument=\"\" DefaultTenderPayment=\"0\" DefaultTaxableGroup=\"0\">"
    "<Restaurants/><TenderEquivalence/><TaxableGroupEquivalence/></KitraConnectorSetting>";

std::vector<Restaurant> ListOf(const Restaurants& list) {
    return std::vector<Restaurant>(list.begin(), list.end());
}

void ExpectSameSettings(const KitraConnectorSetting& a, const KitraConnectorSetting& b) {
    EXPECT_EQ(a.InvoiceTransDocument, b.InvoiceTransDocument);
    EXPECT_EQ(a.CreditTransDocument, b.CreditTransDocument);
    EXPECT_EQ(a.StockTransDocument, b.StockTransDocument);
    EXPECT_EQ(a.RefundTransDocument, b.RefundTransDocument);
    EXPECT_EQ(a.CashEntranceTransDocument, b.CashEntranceTransDocument);
    EXPECT_EQ(a.CashWithdrawalTransDocument, b.CashWithdrawalTransDocument);
    EXPECT_EQ(a.CustomerPaymentTransDocument, b.CustomerPaymentTransDocument);
    EXPECT_EQ(a.CustomerPaymentAccountDocument, b.CustomerPaymentAccountDocument);
    EXPECT_EQ(a.SelfConsumptionTransDocument, b.SelfConsumptionTransDocument);
    EXPECT_EQ(a.DefaultTenderPayment, b.DefaultTenderPayment);
    EXPECT_EQ(a.DefaultTaxableGroup, b.DefaultTaxableGroup);
    EXPECT_EQ(ListOf(a.Restaurants), ListOf(b.Restaurants));
    EXPECT_EQ(a.TenderEquivalence, b.TenderEquivalence);
    EXPECT_EQ(a.TaxableGroupEquivalence, b.TaxableGroupEquivalence);
}

class KitraConnectorSettingTest : public ::testing::Test {
protected:
    backoffice::UtilityService numbers;

    // The rows read from a document holding only the given taxable-group rows.
    std::vector<TaxableGroupMapping> ReadTaxableGroups(const std::string& rows) {
        KitraConnectorSetting s(numbers);
        s.FromXML("<KitraConnectorSetting><TaxableGroupEquivalence>" + rows +
                  "</TaxableGroupEquivalence></KitraConnectorSetting>");
        return s.TaxableGroupEquivalence;
    }

    std::string VatReadFrom(const std::string& text) {
        const auto rows = ReadTaxableGroups("<TaxableGroup TaxableGroupID=\"1\" KitraVAT=\"" +
                                            text + "\"/>");
        EXPECT_EQ(rows.size(), 1u);
        return rows.empty() ? "<no row>" : rows[0].KitraVAT;
    }
};

TEST_F(KitraConnectorSettingTest, NewObjectHoldsEmptyTextsZeroDefaultsAndEmptyLists) {
    KitraConnectorSetting s(numbers);
    EXPECT_EQ(s.InvoiceTransDocument, "");
    EXPECT_EQ(s.RefundTransDocument, "");
    EXPECT_EQ(s.SelfConsumptionTransDocument, "");
    EXPECT_EQ(s.DefaultTenderPayment, 0);
    EXPECT_EQ(s.DefaultTaxableGroup, 0);
    EXPECT_EQ(s.Restaurants.Count(), 0);
    EXPECT_TRUE(s.TenderEquivalence.empty());
    EXPECT_TRUE(s.TaxableGroupEquivalence.empty());
}

TEST_F(KitraConnectorSettingTest, ToXmlOfNewObjectHasTenAttributesAndThreeEmptyChildren) {
    KitraConnectorSetting s(numbers);
    EXPECT_EQ(s.ToXML(), kEmptyXml);
}

TEST_F(KitraConnectorSettingTest, ToXmlWritesAttributesAndElementsInTheirFixedOrder) {
    KitraConnectorSetting s(numbers);
    test::FillSample(s);
    EXPECT_EQ(s.ToXML(), test::SampleXml());
}

TEST_F(KitraConnectorSettingTest, ToXmlHasNoDeclarationAndNoLineBreaks) {
    KitraConnectorSetting s(numbers);
    test::FillSample(s);
    const std::string xml = s.ToXML();
    EXPECT_EQ(xml.rfind("<KitraConnectorSetting ", 0), 0u);
    EXPECT_EQ(xml.find("<?xml"), std::string::npos);
    EXPECT_EQ(xml.find('\n'), std::string::npos);
}

TEST_F(KitraConnectorSettingTest, FullDocumentRoundTripsToTheIdenticalText) {
    KitraConnectorSetting written(numbers);
    test::FillSample(written);
    const std::string xml = written.ToXML();

    KitraConnectorSetting read(numbers);
    read.FromXML(xml);
    EXPECT_EQ(read.ToXML(), xml);
}

TEST_F(KitraConnectorSettingTest, RoundTripReproducesEveryFieldAndEveryOrder) {
    KitraConnectorSetting written(numbers);
    test::FillSample(written);

    KitraConnectorSetting read(numbers);
    read.FromXML(written.ToXML());

    ExpectSameSettings(read, written);
    ASSERT_EQ(read.Restaurants.Count(), 3);
    EXPECT_EQ(read.Restaurants.Item(1).Name, "Lisboa");
    EXPECT_EQ(read.Restaurants.Item(2).Name, "Porto");
    EXPECT_EQ(read.Restaurants.Item(3).Name, "Braga");
    ASSERT_EQ(read.TenderEquivalence.size(), 3u);
    EXPECT_EQ(read.TenderEquivalence[2].KitraTenderID, "CC");
    ASSERT_EQ(read.TaxableGroupEquivalence.size(), 5u);
    EXPECT_EQ(read.TaxableGroupEquivalence[4].KitraVAT, ".5");
}

TEST_F(KitraConnectorSettingTest, ReadFromXmlReadsLikeFromXml) {
    KitraConnectorSetting viaInterface(numbers);
    KitraConnectorSetting viaMethod(numbers);
    static_cast<host::IGenericSetting&>(viaInterface).FromXML(test::SampleXml());
    viaMethod.ReadFromXml(test::SampleXml());
    ExpectSameSettings(viaMethod, viaInterface);
    EXPECT_EQ(viaMethod.InvoiceTransDocument, "FS");
    EXPECT_EQ(viaMethod.Restaurants.Count(), 3);
}

TEST_F(KitraConnectorSettingTest, KeysAndExportFlagAreConstant) {
    KitraConnectorSetting s(numbers);
    const host::IGenericSetting& setting = s;
    EXPECT_EQ(setting.Key1(), "Quarn.Mercatill.Connector");
    EXPECT_EQ(setting.Key2(), "Kitra");
    EXPECT_FALSE(setting.ExportToBranch());

    test::FillSample(s);
    s.FromXML("<KitraConnectorSetting Key1=\"x\" Key2=\"y\" ExportToBranch=\"1\"/>");
    EXPECT_EQ(setting.Key1(), "Quarn.Mercatill.Connector");
    EXPECT_EQ(setting.Key2(), "Kitra");
    EXPECT_FALSE(setting.ExportToBranch());
    EXPECT_EQ(setting.ToXML().find("Key1"), std::string::npos);
}

TEST_F(KitraConnectorSettingTest, NotWellFormedTextChangesNothing) {
    const std::vector<std::string> broken = {
        "",
        "   ",
        "not xml at all",
        "<KitraConnectorSetting InvoiceTransDocument=\"X\"",
        "<KitraConnectorSetting InvoiceTransDocument=\"X\"><Restaurants>",
        "<KitraConnectorSetting InvoiceTransDocument=\"X\"></Restaurants>",
        "<KitraConnectorSetting InvoiceTransDocument=X/>",
        "<KitraConnectorSetting InvoiceTransDocument=\"X\" InvoiceTransDocument=\"Y\"/>",
        "<KitraConnectorSetting InvoiceTransDocument=\"X\"/><KitraConnectorSetting/>",
        "<KitraConnectorSetting InvoiceTransDocument=\"X\"/>trailing text",
        "leading text<KitraConnectorSetting InvoiceTransDocument=\"X\"/>",
        // What a strict XML parser refuses and a lenient one lets through.
        "<KitraConnectorSetting InvoiceTransDocument=\"A & B\"/>",
        "<KitraConnectorSetting InvoiceTransDocument=\"A &B; C\"/>",
        "<KitraConnectorSetting InvoiceTransDocument=\"&nbsp;\"/>",
        "<KitraConnectorSetting InvoiceTransDocument=\"a<b\"/>",
        "<KitraConnectorSetting InvoiceTransDocument=\"&#0;\"/>",
        "<KitraConnectorSetting InvoiceTransDocument=\"&#xZZ;\"/>",
        "<KitraConnectorSetting InvoiceTransDocument=\"X\">a & b</KitraConnectorSetting>",
        "<KitraConnectorSetting InvoiceTransDocument=\"A\x18" "B\"/>",
    };
    for (const std::string& text : broken) {
        SCOPED_TRACE(text);
        KitraConnectorSetting s(numbers);
        test::FillSample(s);
        s.RefundTransDocument = "NC";
        KitraConnectorSetting before = s;

        s.FromXML(text);

        ExpectSameSettings(s, before);
        EXPECT_EQ(s.ToXML(), test::SampleXml());
    }
}

TEST_F(KitraConnectorSettingTest, PredefinedEntitiesAndCharacterReferencesAreRead) {
    KitraConnectorSetting s(numbers);
    s.FromXML("<KitraConnectorSetting InvoiceTransDocument=\"A &amp; B &lt;&gt; &quot;&apos; &#65;&#x42;\"/>");
    EXPECT_EQ(s.InvoiceTransDocument, "A & B <> \"' AB");
}

TEST_F(KitraConnectorSettingTest, BareRootEmptiesRestaurantsButKeepsBothTables) {
    KitraConnectorSetting s(numbers);
    test::FillSample(s);
    const auto tenders = s.TenderEquivalence;
    const auto groups = s.TaxableGroupEquivalence;

    s.FromXML("<KitraConnectorSetting/>");

    EXPECT_EQ(s.Restaurants.Count(), 0);
    EXPECT_EQ(s.TenderEquivalence, tenders);
    EXPECT_EQ(s.TaxableGroupEquivalence, groups);
    // The attributes are absent too, so the document types keep their values.
    EXPECT_EQ(s.InvoiceTransDocument, "FS");
    EXPECT_EQ(s.DefaultTaxableGroup, 4);
}

TEST_F(KitraConnectorSettingTest, PresentButEmptyTablesAreEmptied) {
    KitraConnectorSetting s(numbers);
    test::FillSample(s);
    s.FromXML("<KitraConnectorSetting><TenderEquivalence/><TaxableGroupEquivalence/>"
              "</KitraConnectorSetting>");
    EXPECT_TRUE(s.TenderEquivalence.empty());
    EXPECT_TRUE(s.TaxableGroupEquivalence.empty());
}

TEST_F(KitraConnectorSettingTest, OneTableAbsentKeepsItsRowsWhileTheOtherIsReplaced) {
    KitraConnectorSetting s(numbers);
    test::FillSample(s);
    const auto groups = s.TaxableGroupEquivalence;
    s.FromXML("<KitraConnectorSetting><TenderEquivalence>"
              "<Tender POSTenderID=\"8\" KitraTenderID=\"VALE\"/>"
              "</TenderEquivalence></KitraConnectorSetting>");
    EXPECT_EQ(s.TenderEquivalence, (std::vector<TenderMapping>{{8, "VALE"}}));
    EXPECT_EQ(s.TaxableGroupEquivalence, groups);
}

TEST_F(KitraConnectorSettingTest, TaxableGroupTableIsFirstCreatedByARead) {
    // Before any read there is no row to write; the table element is still there, empty.
    KitraConnectorSetting s(numbers);
    s.FromXML("<KitraConnectorSetting/>");
    EXPECT_TRUE(s.TaxableGroupEquivalence.empty());
    EXPECT_NE(s.ToXML().find("<TaxableGroupEquivalence/>"), std::string::npos);
}

TEST_F(KitraConnectorSettingTest, VatWrittenWithTrailingZeroIsReadNormalised) {
    EXPECT_EQ(VatReadFrom("23.0"), "23");
    EXPECT_EQ(VatReadFrom("23"), "23");
    EXPECT_EQ(VatReadFrom("6.50"), "6.5");
    EXPECT_EQ(VatReadFrom(" 13 "), "13");
}

TEST_F(KitraConnectorSettingTest, VatBetweenMinusOneAndOneHasNoLeadingZero) {
    EXPECT_EQ(VatReadFrom("0.5"), ".5");
    EXPECT_EQ(VatReadFrom(".5"), ".5");
    EXPECT_EQ(VatReadFrom("-0.5"), "-.5");
    EXPECT_EQ(VatReadFrom("-.5"), "-.5");
    EXPECT_EQ(VatReadFrom("0"), "0");
    EXPECT_EQ(VatReadFrom("0.0"), "0");
}

TEST_F(KitraConnectorSettingTest, VatWithCommaIsNotReadAsSixAndAHalf) {
    // "," is not the VAT separator: the reference host's parser refuses "6,5", so the row is
    // kept with the rate left empty.
    const auto rows = ReadTaxableGroups("<TaxableGroup TaxableGroupID=\"2\" KitraVAT=\"6,5\"/>");
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_NE(rows[0].KitraVAT, "6.5");
    EXPECT_EQ(rows[0].KitraVAT, "");
    EXPECT_EQ(rows[0].TaxableGroupID, 2);
}

TEST_F(KitraConnectorSettingTest, ToXmlNormalisesVatStoredInAnotherForm) {
    KitraConnectorSetting s(numbers);
    s.TaxableGroupEquivalence = {{1, "23.0"}, {2, "0.50"}, {3, "-0.25"}};
    const std::string xml = s.ToXML();
    EXPECT_NE(xml.find("<TaxableGroup TaxableGroupID=\"1\" KitraVAT=\"23\"/>"), std::string::npos);
    EXPECT_NE(xml.find("<TaxableGroup TaxableGroupID=\"2\" KitraVAT=\".5\"/>"), std::string::npos);
    EXPECT_NE(xml.find("<TaxableGroup TaxableGroupID=\"3\" KitraVAT=\"-.25\"/>"), std::string::npos);
}

TEST_F(KitraConnectorSettingTest, ToXmlLeavesOutAVatThatIsNotANumber) {
    KitraConnectorSetting s(numbers);
    s.TaxableGroupEquivalence = {{1, "6,5"}, {2, ""}, {3, "13"}};
    const std::string xml = s.ToXML();
    EXPECT_NE(xml.find("<TaxableGroupEquivalence><TaxableGroup TaxableGroupID=\"1\"/>"
                       "<TaxableGroup TaxableGroupID=\"2\"/>"
                       "<TaxableGroup TaxableGroupID=\"3\" KitraVAT=\"13\"/>"
                       "</TaxableGroupEquivalence>"),
              std::string::npos)
        << xml;
}

TEST_F(KitraConnectorSettingTest, RowsWithMissingAttributesAreStillAppended) {
    KitraConnectorSetting s(numbers);
    s.FromXML("<KitraConnectorSetting>"
              "<TenderEquivalence><Tender/><Tender KitraTenderID=\"MB\"/>"
              "<Tender POSTenderID=\"7\"/></TenderEquivalence>"
              "<TaxableGroupEquivalence><TaxableGroup/><TaxableGroup KitraVAT=\"23\"/>"
              "<TaxableGroup TaxableGroupID=\"3\"/></TaxableGroupEquivalence>"
              "</KitraConnectorSetting>");
    EXPECT_EQ(s.TenderEquivalence, (std::vector<TenderMapping>{{0, ""}, {0, "MB"}, {7, ""}}));
    EXPECT_EQ(s.TaxableGroupEquivalence,
              (std::vector<TaxableGroupMapping>{{0, ""}, {0, "23"}, {3, ""}}));
}

TEST_F(KitraConnectorSettingTest, RowsAreReadWhateverTheirElementName) {
    KitraConnectorSetting s(numbers);
    s.FromXML("<KitraConnectorSetting>"
              "<TenderEquivalence><Row POSTenderID=\"2\" KitraTenderID=\"A\"/>"
              "<Tender POSTenderID=\"3\" KitraTenderID=\"B\"/></TenderEquivalence>"
              "<TaxableGroupEquivalence><Rate TaxableGroupID=\"1\" KitraVAT=\"23\"/>"
              "</TaxableGroupEquivalence></KitraConnectorSetting>");
    EXPECT_EQ(s.TenderEquivalence, (std::vector<TenderMapping>{{2, "A"}, {3, "B"}}));
    EXPECT_EQ(s.TaxableGroupEquivalence, (std::vector<TaxableGroupMapping>{{1, "23"}}));
}

TEST_F(KitraConnectorSettingTest, SectionsAreFoundAnywhereBelowTheRootFirstOneWins) {
    KitraConnectorSetting s(numbers);
    s.FromXML("<KitraConnectorSetting><Wrapper>"
              "<Restaurants><Restaurant Name=\"Nested\"/></Restaurants>"
              "<TenderEquivalence><Tender POSTenderID=\"4\" KitraTenderID=\"N\"/></TenderEquivalence>"
              "</Wrapper>"
              "<Restaurants><Restaurant Name=\"Second\"/><Restaurant Name=\"Third\"/></Restaurants>"
              "<TenderEquivalence/>"
              "</KitraConnectorSetting>");
    ASSERT_EQ(s.Restaurants.Count(), 1);
    EXPECT_EQ(s.Restaurants.Item(1).Name, "Nested");
    EXPECT_EQ(s.TenderEquivalence, (std::vector<TenderMapping>{{4, "N"}}));
}

TEST_F(KitraConnectorSettingTest, RefundDocumentIsNeitherWrittenNorRead) {
    KitraConnectorSetting s(numbers);
    s.RefundTransDocument = "NC";
    EXPECT_EQ(s.ToXML(), kEmptyXml);

    KitraConnectorSetting read(numbers);
    read.FromXML("<KitraConnectorSetting RefundTransDocument=\"NC\"/>");
    EXPECT_EQ(read.RefundTransDocument, "");
}

TEST_F(KitraConnectorSettingTest, NonNumericIntegerAttributeLeavesFieldWhileRestIsRead) {
    KitraConnectorSetting s(numbers);
    s.DefaultTenderPayment = 7;
    s.FromXML("<KitraConnectorSetting InvoiceTransDocument=\"FS\" DefaultTenderPayment=\"abc\""
              " DefaultTaxableGroup=\"3\"><TenderEquivalence>"
              "<Tender POSTenderID=\"x1\" KitraTenderID=\"MB\"/>"
              "</TenderEquivalence></KitraConnectorSetting>");
    EXPECT_EQ(s.DefaultTenderPayment, 7);
    EXPECT_EQ(s.DefaultTaxableGroup, 3);
    EXPECT_EQ(s.InvoiceTransDocument, "FS");
    EXPECT_EQ(s.TenderEquivalence, (std::vector<TenderMapping>{{0, "MB"}}));
}

TEST_F(KitraConnectorSettingTest, EmptyIntegerAttributeLeavesField) {
    KitraConnectorSetting s(numbers);
    s.DefaultTaxableGroup = 2;
    s.FromXML("<KitraConnectorSetting DefaultTaxableGroup=\"\"/>");
    EXPECT_EQ(s.DefaultTaxableGroup, 2);
}

TEST_F(KitraConnectorSettingTest, IntegerAttributesAreReadWithCommaAndRoundedHalfToEven) {
    KitraConnectorSetting s(numbers);
    s.FromXML("<KitraConnectorSetting DefaultTenderPayment=\"2,5\" DefaultTaxableGroup=\"3,5\">"
              "<TenderEquivalence><Tender POSTenderID=\"-1,5\"/><Tender POSTenderID=\"4,49\"/>"
              "<Tender POSTenderID=\"1.5\"/></TenderEquivalence></KitraConnectorSetting>");
    EXPECT_EQ(s.DefaultTenderPayment, 2);
    EXPECT_EQ(s.DefaultTaxableGroup, 4);
    ASSERT_EQ(s.TenderEquivalence.size(), 3u);
    EXPECT_EQ(s.TenderEquivalence[0].POSTenderID, -2);
    EXPECT_EQ(s.TenderEquivalence[1].POSTenderID, 4);
    EXPECT_EQ(s.TenderEquivalence[2].POSTenderID, 0);  // "." is not the separator: not read
}

TEST_F(KitraConnectorSettingTest, SixteenBitOverflowLeavesFieldUnchanged) {
    KitraConnectorSetting s(numbers);
    s.DefaultTenderPayment = 5;
    s.DefaultTaxableGroup = 6;
    s.FromXML("<KitraConnectorSetting DefaultTenderPayment=\"32768\""
              " DefaultTaxableGroup=\"-32769\"/>");
    EXPECT_EQ(s.DefaultTenderPayment, 5);
    EXPECT_EQ(s.DefaultTaxableGroup, 6);

    s.FromXML("<KitraConnectorSetting DefaultTenderPayment=\"32767\""
              " DefaultTaxableGroup=\"-32768\"/>");
    EXPECT_EQ(s.DefaultTenderPayment, 32767);
    EXPECT_EQ(s.DefaultTaxableGroup, -32768);

    // 32767.5 rounds to the even 32768, which no longer fits.
    s.DefaultTenderPayment = 1;
    s.FromXML("<KitraConnectorSetting DefaultTenderPayment=\"32767,5\"/>");
    EXPECT_EQ(s.DefaultTenderPayment, 1);
}

TEST_F(KitraConnectorSettingTest, OlderDocumentWithFewerAttributesLoads) {
    KitraConnectorSetting s(numbers);
    s.FromXML("<KitraConnectorSetting InvoiceTransDocument=\"FS\" CreditTransDocument=\"FC\""
              " StockTransDocument=\"GT\" DefaultTenderPayment=\"2\">"
              "<Restaurants><Restaurant Name=\"Faro\" ServerName=\"10.0.0.5\" ServerPort=\"3306\""
              " ServerDBName=\"kitra\" ServerUser=\"u\" ServerPassword=\"p\" WorkstationID=\"2\"/>"
              "</Restaurants>"
              "<TenderEquivalence><Tender POSTenderID=\"1\" KitraTenderID=\"NUM\"/>"
              "</TenderEquivalence></KitraConnectorSetting>");
    EXPECT_EQ(s.InvoiceTransDocument, "FS");
    EXPECT_EQ(s.CreditTransDocument, "FC");
    EXPECT_EQ(s.StockTransDocument, "GT");
    EXPECT_EQ(s.CashEntranceTransDocument, "");
    EXPECT_EQ(s.SelfConsumptionTransDocument, "");
    EXPECT_EQ(s.DefaultTenderPayment, 2);
    EXPECT_EQ(s.DefaultTaxableGroup, 0);
    ASSERT_EQ(s.Restaurants.Count(), 1);
    const Restaurant& faro = s.Restaurants.Item(1);
    EXPECT_EQ(faro.Name, "Faro");
    EXPECT_EQ(faro.WorkstationID, 2);
    EXPECT_EQ(faro.ItemIDPrefix, "");
    EXPECT_EQ(faro.DefaultSupplierID, 0.0);
    EXPECT_FALSE(faro.StockManagement);
    EXPECT_EQ(faro.ImportDateEntities, "");
    EXPECT_EQ(s.TenderEquivalence, (std::vector<TenderMapping>{{1, "NUM"}}));
    EXPECT_TRUE(s.TaxableGroupEquivalence.empty());
}

TEST_F(KitraConnectorSettingTest, SpecialCharactersAndAccentsInTextsSurviveARoundTrip) {
    const std::string tricky = "Açaí & \"Pão\" <Crème> l'été";
    KitraConnectorSetting s(numbers);
    s.InvoiceTransDocument = tricky;
    s.SelfConsumptionTransDocument = "Autoconsumo ç/ã";
    s.TenderEquivalence = {{2, tricky}};
    const std::string xml = s.ToXML();

    KitraConnectorSetting read(numbers);
    read.FromXML(xml);
    EXPECT_EQ(read.InvoiceTransDocument, tricky);
    EXPECT_EQ(read.SelfConsumptionTransDocument, "Autoconsumo ç/ã");
    EXPECT_EQ(read.TenderEquivalence, s.TenderEquivalence);
    EXPECT_EQ(read.ToXML(), xml);
}

TEST_F(KitraConnectorSettingTest, ReadingReplacesTheRestaurantListAndDropsKeys) {
    KitraConnectorSetting s(numbers);
    s.Restaurants.Add(test::SampleRestaurant("Lisboa", 1));
    s.FromXML("<KitraConnectorSetting><Restaurants><Restaurant Name=\"Lisboa\"/>"
              "<Restaurant Name=\"Porto\"/></Restaurants></KitraConnectorSetting>");
    ASSERT_EQ(s.Restaurants.Count(), 2);
    EXPECT_EQ(s.Restaurants.Item(1).ServerName, "");
    // Read restaurants carry no key, so the name can be added again.
    EXPECT_FALSE(s.Restaurants.Exists("Lisboa"));
    EXPECT_NO_THROW(s.Restaurants.Add(test::SampleRestaurant("Lisboa", 1)));
    EXPECT_EQ(s.Restaurants.Count(), 3);
}

}  // namespace
}  // namespace kitra
