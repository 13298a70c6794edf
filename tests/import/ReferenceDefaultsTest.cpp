// The conversions and host defaults every importer leans on, against a real back office.
#include <gtest/gtest.h>

#include "core/Error.h"
#include "import/KitraExecutioner.h"
#include "tests/hostsupport/TestBackOffice.h"

namespace kitra {
namespace {

class ReferenceDefaultsTest : public ::testing::Test {
protected:
    void UseEquivalences(std::vector<TaxableGroupMapping> rows, std::int16_t defaultGroup) {
        KitraConnectorSetting settings(*office.Services().utility);
        settings.TaxableGroupEquivalence = std::move(rows);
        settings.DefaultTaxableGroup = defaultGroup;
        engine.UseSettings(settings);
    }

    testing::TestBackOffice office;
    KitraExecutioner engine{office.Services()};
};

TEST(CleanText, KeepsCodes32To175Only) {
    EXPECT_EQ(KitraExecutioner::CleanText("Café Ñ ok"), "Caf  ok");
    EXPECT_EQ(KitraExecutioner::CleanText("\t\r\n\x01"), "");
    EXPECT_EQ(KitraExecutioner::CleanText(""), "");
    EXPECT_EQ(KitraExecutioner::CleanText("O'Neill; \"x\""), "O'Neill; \"x\"");
    // Kept from the upper range: the euro sign (128), "ª" (170); dropped: "º" (186), "°" (176),
    // Greek and emoji, which Windows-1252 cannot represent.
    EXPECT_EQ(KitraExecutioner::CleanText("€ ª º ° Ω 😀"), "€ ª    ");
    EXPECT_EQ(KitraExecutioner::CleanText("Pão com chouriço"), "Po com chourio");
}

TEST_F(ReferenceDefaultsTest, FirstEqualRateWins) {
    UseEquivalences({{2, "13"}, {1, "23.0"}, {3, "23"}}, 0);
    EXPECT_EQ(engine.GetTaxableGroupForRate(23), 1);
    EXPECT_EQ(engine.GetTaxableGroupForRate(13), 2);
}

TEST_F(ReferenceDefaultsTest, RatesAreReadWithAPointOnly) {
    // "23,0" is not twenty-three; with no default the host answers for 23%.
    UseEquivalences({{3, "23,0"}}, 0);
    EXPECT_EQ(engine.GetTaxableGroupForRate(23), 1);  // the host's normal rate group
    UseEquivalences({{3, "23,0"}}, 4);
    EXPECT_EQ(engine.GetTaxableGroupForRate(23), 4);
}

TEST_F(ReferenceDefaultsTest, NoToleranceInTheComparison) {
    UseEquivalences({{3, "6.5"}}, 2);
    EXPECT_EQ(engine.GetTaxableGroupForRate(6.5), 3);
    EXPECT_EQ(engine.GetTaxableGroupForRate(6.5000001), 2);
}

TEST_F(ReferenceDefaultsTest, DefaultGroupBeforeTheHost) {
    // 7.5% has no group in the host: asking the host would fail, so the default is used
    // without asking.
    UseEquivalences({}, 2);
    EXPECT_EQ(engine.GetTaxableGroupForRate(7.5), 2);
    UseEquivalences({{0, "7.5"}}, 2);  // a matching row without a group falls to the default
    EXPECT_EQ(engine.GetTaxableGroupForRate(7.5), 2);
}

TEST_F(ReferenceDefaultsTest, HostIsAskedWhenThereIsNoDefault) {
    UseEquivalences({}, 0);
    EXPECT_EQ(engine.GetTaxableGroupForRate(6), 3);
    EXPECT_EQ(engine.GetTaxableGroupForRate(0), 4);
    EXPECT_THROW(engine.GetTaxableGroupForRate(7.5), Error);
}

TEST_F(ReferenceDefaultsTest, CalculateWithTaxableGroup) {
    // Zero never reaches the host: group 99 does not exist and would fail.
    EXPECT_EQ(engine.CalculateWithTaxableGroup(0, 99), 0);
    EXPECT_THROW(engine.CalculateWithTaxableGroup(1, 99), Error);
    EXPECT_DOUBLE_EQ(engine.CalculateWithTaxableGroup(12.3, 1), 10);
    EXPECT_DOUBLE_EQ(engine.CalculateWithTaxableGroup(2.5, 1), 2.03);
}

TEST_F(ReferenceDefaultsTest, ParseHundredths) {
    EXPECT_DOUBLE_EQ(engine.ParseHundredths("1234,5"), 12.345);
    EXPECT_DOUBLE_EQ(engine.ParseHundredths("250"), 2.5);
    EXPECT_DOUBLE_EQ(engine.ParseHundredths("0"), 0);
    EXPECT_THROW(engine.ParseHundredths("12.5"), Error);
    EXPECT_THROW(engine.ParseHundredths(""), Error);
}

TEST_F(ReferenceDefaultsTest, EnsureHostDefaultsCreatesMissingRecords) {
    const host::HostServices& s = office.Services();
    for (const char* table : {"places", "salesmen", "payment_terms"}) {
        s.connection->Execute(host::SqlStatement(std::string("DELETE FROM ") + table));
    }
    engine.EnsureHostDefaults();
    ASSERT_TRUE(s.salesmen->Get(1.0));
    EXPECT_EQ(s.salesmen->Get(1.0)->Name, "Vendedor Geral");
    ASSERT_TRUE(s.paymentTerms->Get(1));
    EXPECT_EQ(s.paymentTerms->Get(1)->Description, "Geral");
    ASSERT_TRUE(s.tenders->Get(1));
    EXPECT_EQ(s.tenders->Get(1)->Description, "Dinheiro");
    ASSERT_TRUE(s.customerTypes->Get(1));
    ASSERT_TRUE(s.salesZones->Get(1));
    ASSERT_TRUE(s.places->Get(1));
    EXPECT_EQ(s.places->Get(1)->Description, "Local de carga");
    ASSERT_TRUE(s.places->Get(2));
    EXPECT_EQ(s.places->Get(2)->Description, "Local de descarga");
}

TEST_F(ReferenceDefaultsTest, EnsureHostDefaultsNeverOverwrites) {
    const host::HostServices& s = office.Services();
    engine.EnsureHostDefaults();
    host::Salesman changed = *s.salesmen->Get(1.0);
    changed.Name = "Gerente";
    s.salesmen->Save(changed, 1.0, false);
    host::Place place = *s.places->Get(2);
    place.Description = "Armazém";
    s.places->Save(place, 2, false);
    const auto countOf = [&](const char* table) {
        return s.connection->Query(host::SqlStatement(std::string("SELECT * FROM ") + table))
            .RecordCount();
    };
    const long salesmen = countOf("salesmen"), places = countOf("places"),
               tenders = countOf("tenders");
    engine.EnsureHostDefaults();
    EXPECT_EQ(s.salesmen->Get(1.0)->Name, "Gerente");
    EXPECT_EQ(s.places->Get(2)->Description, "Armazém");
    EXPECT_EQ(countOf("salesmen"), salesmen);
    EXPECT_EQ(countOf("places"), places);
    EXPECT_EQ(countOf("tenders"), tenders);
}

}  // namespace
}  // namespace kitra
