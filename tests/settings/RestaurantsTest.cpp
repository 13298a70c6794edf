#include "settings/Restaurants.h"

#include <gtest/gtest.h>

#include <vector>

#include "backoffice/UtilityService.h"
#include "core/Error.h"
#include "settings/SettingsXml.h"

namespace kitra {
namespace {

Restaurant Named(const std::string& name) {
    Restaurant r;
    r.Name = name;
    r.ServerName = "srv-" + name;
    return r;
}

std::vector<std::string> NamesOf(const Restaurants& list) {
    std::vector<std::string> names;
    for (const Restaurant& r : list) names.push_back(r.Name);
    return names;
}

// Runs `call` and returns the number of the kitra::Error it raises, or 0 when it raises none.
template <typename Call>
long ErrorNumberOf(Call&& call) {
    try {
        call();
    } catch (const Error& e) {
        return e.Number();
    }
    return 0;
}

class RestaurantsTest : public ::testing::Test {
protected:
    backoffice::UtilityService numbers;

    Restaurants ReadList(const std::string& xml) {
        pugi::xml_document document;
        EXPECT_TRUE(document.load_string(xml.c_str())) << xml;
        Restaurants list;
        list.ReadXml(document.document_element(), numbers);
        return list;
    }

    static std::string Write(const Restaurants& list) {
        pugi::xml_document document;
        list.WriteXml(document);
        return settings_xml::Render(document);
    }
};

TEST_F(RestaurantsTest, AddAppendsInOrderAndCounts) {
    Restaurants list;
    EXPECT_EQ(list.Count(), 0);
    list.Add(Named("Lisboa"));
    list.Add(Named("Porto"));
    list.Add(Named("Braga"));
    EXPECT_EQ(list.Count(), 3);
    EXPECT_EQ(NamesOf(list), (std::vector<std::string>{"Lisboa", "Porto", "Braga"}));
}

TEST_F(RestaurantsTest, AddOfADuplicateNameFailsVisiblyAndAddsNothing) {
    Restaurants list;
    list.Add(Named("Lisboa"));
    try {
        list.Add(Named("Lisboa"));
        FAIL() << "the second Add should fail";
    } catch (const Error& e) {
        EXPECT_EQ(e.Number(), 457);
        EXPECT_EQ(e.Description(),
                  "This key is already associated with an element of this collection");
    }
    EXPECT_EQ(list.Count(), 1);
}

TEST_F(RestaurantsTest, AddOfNamesDifferingOnlyInCaseFailsOnTheSecond) {
    Restaurants list;
    list.Add(Named("Lisboa"));
    EXPECT_EQ(ErrorNumberOf([&] { list.Add(Named("LISBOA")); }), 457);
    EXPECT_EQ(ErrorNumberOf([&] { list.Add(Named("lisboa")); }), 457);

    list.Add(Named("São João"));
    EXPECT_EQ(ErrorNumberOf([&] { list.Add(Named("SÃO JOÃO")); }), 457);
    EXPECT_EQ(list.Count(), 2);
}

TEST_F(RestaurantsTest, ItemByPositionIsOneBased) {
    Restaurants list;
    list.Add(Named("Lisboa"));
    list.Add(Named("Porto"));
    EXPECT_EQ(list.Item(1).Name, "Lisboa");
    EXPECT_EQ(list.Item(2).Name, "Porto");
    EXPECT_EQ(ErrorNumberOf([&] { list.Item(0); }), 5);
    EXPECT_EQ(ErrorNumberOf([&] { list.Item(3); }), 5);
    EXPECT_EQ(ErrorNumberOf([&] { list.Item(-1); }), 5);
}

TEST_F(RestaurantsTest, ItemByKeyIsCaseInsensitive) {
    Restaurants list;
    list.Add(Named("Lisboa"));
    list.Add(Named("Porto"));
    EXPECT_EQ(list.Item("porto").ServerName, "srv-Porto");
    EXPECT_EQ(list.Item(std::string("LISBOA")).ServerName, "srv-Lisboa");
    try {
        list.Item("Faro");
        FAIL() << "an unknown key should fail";
    } catch (const Error& e) {
        EXPECT_EQ(e.Number(), 5);
        EXPECT_EQ(e.Description(), "Invalid procedure call or argument");
    }
}

TEST_F(RestaurantsTest, ItemGivesTheStoredRestaurantToChange) {
    Restaurants list;
    list.Add(Named("Lisboa"));
    list.Item(1).ImportDateEntities = "2024-06-01 12:00:00";
    EXPECT_EQ(list.Item("Lisboa").ImportDateEntities, "2024-06-01 12:00:00");
}

TEST_F(RestaurantsTest, RemoveByPosition) {
    Restaurants list;
    list.Add(Named("Lisboa"));
    list.Add(Named("Porto"));
    list.Add(Named("Braga"));
    list.Remove(2);
    EXPECT_EQ(NamesOf(list), (std::vector<std::string>{"Lisboa", "Braga"}));
    EXPECT_FALSE(list.Exists("Porto"));
    EXPECT_TRUE(list.Exists("Braga"));
    EXPECT_EQ(list.Item("Braga").Name, "Braga");
    EXPECT_EQ(ErrorNumberOf([&] { list.Remove(3); }), 5);
    EXPECT_EQ(ErrorNumberOf([&] { list.Remove(0); }), 5);
    EXPECT_EQ(list.Count(), 2);
}

TEST_F(RestaurantsTest, RemoveByKey) {
    Restaurants list;
    list.Add(Named("Lisboa"));
    list.Add(Named("Porto"));
    list.Remove("LISBOA");
    EXPECT_EQ(NamesOf(list), (std::vector<std::string>{"Porto"}));
    EXPECT_EQ(ErrorNumberOf([&] { list.Remove("Lisboa"); }), 5);
    // The key is free again.
    EXPECT_NO_THROW(list.Add(Named("Lisboa")));
    EXPECT_EQ(NamesOf(list), (std::vector<std::string>{"Porto", "Lisboa"}));
}

TEST_F(RestaurantsTest, ExistsOnEmptyCollectionIsFalse) {
    const Restaurants list;
    EXPECT_FALSE(list.Exists(""));
    EXPECT_FALSE(list.Exists("Lisboa"));
}

TEST_F(RestaurantsTest, ExistsLooksTheNameUpCaseInsensitively) {
    Restaurants list;
    list.Add(Named("Lisboa"));
    EXPECT_TRUE(list.Exists("Lisboa"));
    EXPECT_TRUE(list.Exists("lIsBoA"));
    EXPECT_FALSE(list.Exists("Porto"));
    EXPECT_FALSE(list.Exists(""));
}

TEST_F(RestaurantsTest, ClearEmptiesTheCollectionAndItsKeys) {
    Restaurants list;
    list.Add(Named("Lisboa"));
    list.Add(Named("Porto"));
    list.Clear();
    EXPECT_EQ(list.Count(), 0);
    EXPECT_FALSE(list.Exists("Lisboa"));
    EXPECT_NO_THROW(list.Add(Named("Lisboa")));
    EXPECT_EQ(list.Count(), 1);
}

TEST_F(RestaurantsTest, ForEachVisitsInCollectionOrderAndCanChange) {
    Restaurants list;
    list.Add(Named("C"));
    list.Add(Named("A"));
    list.Add(Named("B"));
    int n = 0;
    for (Restaurant& r : list) r.WorkstationID = static_cast<std::int16_t>(++n);
    EXPECT_EQ(NamesOf(list), (std::vector<std::string>{"C", "A", "B"}));
    EXPECT_EQ(list.Item("C").WorkstationID, 1);
    EXPECT_EQ(list.Item("B").WorkstationID, 3);
}

TEST_F(RestaurantsTest, WriteXmlOfEmptyCollectionIsAnEmptyElement) {
    EXPECT_EQ(Write(Restaurants{}), "<Restaurants/>");
}

TEST_F(RestaurantsTest, WriteXmlHoldsOneElementPerRestaurantInOrder) {
    Restaurants list;
    list.Add(Named("Lisboa"));
    list.Add(Named("Porto"));
    pugi::xml_document document;
    const pugi::xml_node element = list.WriteXml(document);
    ASSERT_STREQ(element.name(), "Restaurants");
    std::vector<std::string> names;
    for (pugi::xml_node child : element.children()) {
        EXPECT_STREQ(child.name(), "Restaurant");
        names.push_back(child.attribute("Name").value());
    }
    EXPECT_EQ(names, (std::vector<std::string>{"Lisboa", "Porto"}));
    // Nothing else was left beside it.
    EXPECT_EQ(std::distance(document.children().begin(), document.children().end()), 1);
}

TEST_F(RestaurantsTest, ReadXmlOfEmptyElementLeavesAnEmptyCollection) {
    EXPECT_EQ(ReadList("<Restaurants/>").Count(), 0);
}

TEST_F(RestaurantsTest, ReadXmlOfThreeChildrenGivesThreeInDocumentOrder) {
    const Restaurants list = ReadList(
        "<Restaurants><Restaurant Name=\"Porto\" WorkstationID=\"2\"/>"
        "<Restaurant Name=\"Lisboa\" WorkstationID=\"1\"/>"
        "<Restaurant Name=\"Braga\" WorkstationID=\"3\"/></Restaurants>");
    EXPECT_EQ(list.Count(), 3);
    EXPECT_EQ(NamesOf(list), (std::vector<std::string>{"Porto", "Lisboa", "Braga"}));
    EXPECT_EQ(list.Item(3).WorkstationID, 3);
}

TEST_F(RestaurantsTest, ReadXmlReplacesWhatWasThere) {
    pugi::xml_document document;
    ASSERT_TRUE(document.load_string("<Restaurants><Restaurant Name=\"Faro\"/></Restaurants>"));
    Restaurants list;
    list.Add(Named("Lisboa"));
    list.Add(Named("Porto"));
    list.ReadXml(document.document_element(), numbers);
    EXPECT_EQ(NamesOf(list), (std::vector<std::string>{"Faro"}));
    EXPECT_FALSE(list.Exists("Lisboa"));
}

TEST_F(RestaurantsTest, ReadXmlTakesEveryChildWhateverItsName) {
    const Restaurants list = ReadList(
        "<Restaurants><Restaurant Name=\"A\"/><Other Name=\"B\"/>"
        "<Restaurant Name=\"C\"/></Restaurants>");
    EXPECT_EQ(NamesOf(list), (std::vector<std::string>{"A", "B", "C"}));
}

TEST_F(RestaurantsTest, StrayTextInTheListBecomesARestaurantWithNothingSet) {
    const Restaurants list =
        ReadList("<Restaurants><Restaurant Name=\"A\"/>stray<Restaurant Name=\"C\"/></Restaurants>");
    ASSERT_EQ(list.Count(), 3);
    EXPECT_EQ(list.Item(2), Restaurant{});
}

TEST_F(RestaurantsTest, RestaurantsReadFromXmlCarryNoKey) {
    Restaurants list = ReadList(
        "<Restaurants><Restaurant Name=\"Lisboa\"/><Restaurant Name=\"Lisboa\"/></Restaurants>");
    EXPECT_EQ(list.Count(), 2);  // the same name twice is no conflict
    EXPECT_FALSE(list.Exists("Lisboa"));
    EXPECT_EQ(ErrorNumberOf([&] { list.Item("Lisboa"); }), 5);
    EXPECT_EQ(ErrorNumberOf([&] { list.Remove("Lisboa"); }), 5);

    // A restaurant added later may share the name and is the one found by it.
    Restaurant added = Named("Lisboa");
    added.ServerName = "added";
    list.Add(added);
    EXPECT_TRUE(list.Exists("LISBOA"));
    EXPECT_EQ(list.Item("Lisboa").ServerName, "added");
    EXPECT_EQ(list.Count(), 3);
}

TEST_F(RestaurantsTest, WriteThenReadKeepsEveryRestaurantInOrder) {
    Restaurants list;
    for (const char* name : {"Lisboa", "Porto", "Braga"}) {
        Restaurant r = Named(name);
        r.DefaultSupplierID = 10.25;
        r.StockManagement = true;
        list.Add(r);
    }
    const Restaurants back = ReadList(Write(list));
    ASSERT_EQ(back.Count(), 3);
    for (std::int32_t i = 1; i <= 3; ++i) EXPECT_EQ(back.Item(i), list.Item(i));
}

}  // namespace
}  // namespace kitra
