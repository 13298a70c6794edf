#include "settings/Restaurant.h"

#include <gtest/gtest.h>

#include "backoffice/UtilityService.h"
#include "settings/SettingsXml.h"

namespace kitra {
namespace {

class RestaurantTest : public ::testing::Test {
protected:
    backoffice::UtilityService numbers;

    // Reads the first element of `xml` into `restaurant`.
    void Read(const std::string& xml, Restaurant& restaurant) {
        pugi::xml_document document;
        ASSERT_TRUE(document.load_string(xml.c_str())) << xml;
        restaurant.ReadXml(document.document_element(), numbers);
    }

    Restaurant Read(const std::string& xml) {
        Restaurant restaurant;
        Read(xml, restaurant);
        return restaurant;
    }

    // The restaurant's element as text.
    static std::string Write(const Restaurant& restaurant) {
        pugi::xml_document document;
        restaurant.WriteXml(document);
        return settings_xml::Render(document);
    }

    Restaurant RoundTrip(const Restaurant& restaurant) { return Read(Write(restaurant)); }
};

Restaurant Filled() {
    Restaurant r;
    r.Name = "Lisboa";
    r.ServerName = "192.168.1.20";
    r.ServerPort = "3307";
    r.ServerDBName = "kitrana";
    r.ServerUser = "importer";
    r.ServerPassword = "pw";
    r.WorkstationID = 12;
    r.ItemIDPrefix = "LX";
    r.DefaultWarehouseID = 2;
    r.WasteWarehouseID = -3;
    r.DefaultSupplierID = 1.5;
    r.TransSerial = "A";
    r.StockManagement = true;
    r.ImportDateEntities = "2024-01-31 10:00:00";
    r.ImportDateTransactions = "2024-02-01 00:00:01";
    return r;
}

TEST_F(RestaurantTest, NewRestaurantHasEmptyTextsZeroNumbersAndNoStock) {
    const Restaurant r;
    EXPECT_EQ(r.Name, "");
    EXPECT_EQ(r.ServerPort, "");
    EXPECT_EQ(r.WorkstationID, 0);
    EXPECT_EQ(r.DefaultFamilyID, 0);
    EXPECT_EQ(r.DefaultSupplierID, 0.0);
    EXPECT_FALSE(r.StockManagement);
    EXPECT_EQ(r.ImportDateTransactions, "");
}

TEST_F(RestaurantTest, WriteXmlSetsTheFifteenAttributesInOrder) {
    EXPECT_EQ(Write(Filled()),
              "<Restaurant Name=\"Lisboa\" ServerName=\"192.168.1.20\" ServerPort=\"3307\""
              " ServerDBName=\"kitrana\" ServerUser=\"importer\" ServerPassword=\"pw\""
              " WorkstationID=\"12\" ItemIDPrefix=\"LX\" DefaultWarehouseID=\"2\""
              " WasteWarehouseID=\"-3\" DefaultSupplierID=\"1,5\" TransSerial=\"A\""
              " StockManagement=\"1\" ImportDateEntities=\"2024-01-31 10:00:00\""
              " ImportDateTransactions=\"2024-02-01 00:00:01\"/>");
}

TEST_F(RestaurantTest, WriteXmlOfNewRestaurantWritesZerosAndEmptyTexts) {
    EXPECT_EQ(Write(Restaurant{}),
              "<Restaurant Name=\"\" ServerName=\"\" ServerPort=\"\" ServerDBName=\"\""
              " ServerUser=\"\" ServerPassword=\"\" WorkstationID=\"0\" ItemIDPrefix=\"\""
              " DefaultWarehouseID=\"0\" WasteWarehouseID=\"0\" DefaultSupplierID=\"0\""
              " TransSerial=\"\" StockManagement=\"0\" ImportDateEntities=\"\""
              " ImportDateTransactions=\"\"/>");
}

TEST_F(RestaurantTest, WriteXmlDoesNotAppendTheElementToTheRoot) {
    pugi::xml_document document;
    pugi::xml_node root = document.append_child("Root");
    const pugi::xml_node made = Filled().WriteXml(document);
    EXPECT_TRUE(made);
    EXPECT_TRUE(root.children().begin() == root.children().end());
    EXPECT_TRUE(root.append_move(made));
    EXPECT_STREQ(root.first_child().attribute("Name").value(), "Lisboa");
}

TEST_F(RestaurantTest, RoundTripKeepsEveryWrittenField) {
    const Restaurant original = Filled();
    EXPECT_EQ(RoundTrip(original), original);
}

TEST_F(RestaurantTest, DefaultFamilyIsNeitherWrittenNorRead) {
    Restaurant r = Filled();
    r.DefaultFamilyID = 7;
    EXPECT_EQ(Write(r).find("DefaultFamilyID"), std::string::npos);
    EXPECT_EQ(Read("<Restaurant DefaultFamilyID=\"7\"/>").DefaultFamilyID, 0);
}

TEST_F(RestaurantTest, StockManagementMissingIsFalse) {
    EXPECT_FALSE(Read("<Restaurant Name=\"A\"/>").StockManagement);
}

TEST_F(RestaurantTest, StockManagementOneIsTrueAndIsWrittenBackAsOne) {
    const Restaurant r = Read("<Restaurant StockManagement=\"1\"/>");
    EXPECT_TRUE(r.StockManagement);
    EXPECT_NE(Write(r).find(" StockManagement=\"1\" "), std::string::npos);
}

TEST_F(RestaurantTest, StockManagementZeroIsFalseAndIsWrittenBackAsZero) {
    Restaurant r;
    r.StockManagement = true;
    Read("<Restaurant StockManagement=\"0\"/>", r);
    EXPECT_FALSE(r.StockManagement);
    EXPECT_NE(Write(r).find(" StockManagement=\"0\" "), std::string::npos);
}

TEST_F(RestaurantTest, StockManagementMissingOrUnreadableLeavesTheFlag) {
    Restaurant r;
    r.StockManagement = true;
    Read("<Restaurant/>", r);
    EXPECT_TRUE(r.StockManagement);
    Read("<Restaurant StockManagement=\"yes\"/>", r);
    EXPECT_TRUE(r.StockManagement);
}

TEST_F(RestaurantTest, StockManagementOtherNonZeroNumbersAreTrue) {
    EXPECT_TRUE(Read("<Restaurant StockManagement=\"-1\"/>").StockManagement);
    EXPECT_TRUE(Read("<Restaurant StockManagement=\"2\"/>").StockManagement);
}

TEST_F(RestaurantTest, ServerPortIsKeptAsTheTextGiven) {
    EXPECT_EQ(Read("<Restaurant ServerPort=\"03306\"/>").ServerPort, "03306");
    EXPECT_EQ(Read("<Restaurant ServerPort=\" 3306 \"/>").ServerPort, " 3306 ");
    EXPECT_EQ(Read("<Restaurant ServerPort=\"mysql\"/>").ServerPort, "mysql");
    EXPECT_EQ(Read("<Restaurant ServerPort=\"3306,5\"/>").ServerPort, "3306,5");

    Restaurant r = Filled();
    r.ServerPort = "";
    const Restaurant back = RoundTrip(r);
    EXPECT_EQ(back.ServerPort, "");
    EXPECT_NE(Write(r).find(" ServerPort=\"\" "), std::string::npos);
}

TEST_F(RestaurantTest, DefaultSupplierKeepsAFractionalValue) {
    Restaurant r;
    r.DefaultSupplierID = 1.5;
    EXPECT_NE(Write(r).find(" DefaultSupplierID=\"1,5\" "), std::string::npos);
    EXPECT_EQ(RoundTrip(r).DefaultSupplierID, 1.5);

    r.DefaultSupplierID = 1234567.25;
    EXPECT_EQ(RoundTrip(r).DefaultSupplierID, 1234567.25);
    r.DefaultSupplierID = -0.125;
    EXPECT_EQ(RoundTrip(r).DefaultSupplierID, -0.125);

    EXPECT_EQ(Read("<Restaurant DefaultSupplierID=\"2,75\"/>").DefaultSupplierID, 2.75);
}

TEST_F(RestaurantTest, DefaultSupplierWithPointIsNotANumberAndLeavesTheField) {
    Restaurant r;
    r.DefaultSupplierID = 4;
    Read("<Restaurant DefaultSupplierID=\"1.5\"/>", r);
    EXPECT_EQ(r.DefaultSupplierID, 4.0);
}

TEST_F(RestaurantTest, NonNumericIntegerLeavesTheFieldAndTheRestIsRead) {
    Restaurant r;
    r.WorkstationID = 5;
    r.DefaultWarehouseID = 6;
    Read("<Restaurant Name=\"Porto\" WorkstationID=\"abc\" ItemIDPrefix=\"PT\""
         " DefaultWarehouseID=\"\" WasteWarehouseID=\"8\" TransSerial=\"B\""
         " StockManagement=\"1\" ImportDateTransactions=\"2024-05-05 05:05:05\"/>",
         r);
    EXPECT_EQ(r.WorkstationID, 5);
    EXPECT_EQ(r.DefaultWarehouseID, 6);
    EXPECT_EQ(r.Name, "Porto");
    EXPECT_EQ(r.ItemIDPrefix, "PT");
    EXPECT_EQ(r.WasteWarehouseID, 8);
    EXPECT_EQ(r.TransSerial, "B");
    EXPECT_TRUE(r.StockManagement);
    EXPECT_EQ(r.ImportDateTransactions, "2024-05-05 05:05:05");
}

TEST_F(RestaurantTest, SixteenBitOverflowLeavesTheField) {
    Restaurant r;
    r.WorkstationID = 3;
    r.DefaultWarehouseID = 4;
    r.WasteWarehouseID = 5;
    Read("<Restaurant WorkstationID=\"40000\" DefaultWarehouseID=\"-32768,5\""
         " WasteWarehouseID=\"99999\" ServerName=\"still read\"/>",
         r);
    EXPECT_EQ(r.WorkstationID, 3);
    EXPECT_EQ(r.DefaultWarehouseID, -32768);  // -32768.5 rounds to the even -32768
    EXPECT_EQ(r.WasteWarehouseID, 5);
    EXPECT_EQ(r.ServerName, "still read");

    Read("<Restaurant DefaultWarehouseID=\"-32769\"/>", r);
    EXPECT_EQ(r.DefaultWarehouseID, -32768);
    Read("<Restaurant WorkstationID=\"32767\"/>", r);
    EXPECT_EQ(r.WorkstationID, 32767);
}

TEST_F(RestaurantTest, AbsentAttributesLeaveTheirFields) {
    Restaurant r = Filled();
    Read("<Restaurant ServerName=\"other\"/>", r);
    Restaurant expected = Filled();
    expected.ServerName = "other";
    EXPECT_EQ(r, expected);
}

TEST_F(RestaurantTest, AccentsAndXmlSpecialCharactersInEveryTextFieldSurvive) {
    Restaurant r;
    r.Name = "Tasca do Zé & Filhos <Sé>";
    r.ServerName = "srv\"quoted\"";
    r.ServerPort = "'3306'";
    r.ServerDBName = "kitrana_ção";
    r.ServerUser = "joão&maria";
    r.ServerPassword = "p<a>&\"s's\"";
    r.ItemIDPrefix = "Ç&";
    r.TransSerial = "Série \"A\"";
    r.ImportDateEntities = "2024-01-01 <00>:00:00";
    r.ImportDateTransactions = "Ação 'pendente' & \"nova\"";
    r.WorkstationID = -7;
    r.DefaultSupplierID = 0.5;
    r.StockManagement = true;
    EXPECT_EQ(RoundTrip(r), r);
}

TEST_F(RestaurantTest, ReadingAnElementWithoutAttributesChangesNothing) {
    Restaurant r = Filled();
    Read("<Restaurant/>", r);
    EXPECT_EQ(r, Filled());
}

TEST_F(RestaurantTest, ReadingANodeThatIsNotAnElementChangesNothing) {
    pugi::xml_document document;
    ASSERT_TRUE(document.load_string("<Restaurants>stray text</Restaurants>"));
    Restaurant r = Filled();
    r.ReadXml(document.document_element().first_child(), numbers);
    EXPECT_EQ(r, Filled());
    r.ReadXml(pugi::xml_node(), numbers);
    EXPECT_EQ(r, Filled());
}

}  // namespace
}  // namespace kitra
