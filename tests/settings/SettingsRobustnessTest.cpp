// Damaged settings texts: reading them must never crash or throw, a text that is cut short
// changes nothing, and whatever was read is written back as a text that reads back the same.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "backoffice/UtilityService.h"
#include "settings/KitraConnectorSetting.h"
#include "SettingsSamples.h"

namespace kitra {
namespace {

class SettingsRobustnessTest : public ::testing::Test {
protected:
    backoffice::UtilityService numbers;

    // The loaded settings written out must read back to the same text.
    void ExpectStableRender(const KitraConnectorSetting& s) {
        const std::string xml = s.ToXML();
        ASSERT_FALSE(xml.empty());
        KitraConnectorSetting again(numbers);
        again.FromXML(xml);
        EXPECT_EQ(again.ToXML(), xml);
    }
};

std::string Corrupt(const std::string& text, std::mt19937& random) {
    static const char kChars[] = "<>/&\"'= ;#!?-,.0123456789xA\xC3\xA7\x00\x80\xFF";
    static const std::string kInteresting(kChars, sizeof kChars - 1);  // keeps the NUL
    std::string out = text;
    std::uniform_int_distribution<int> edits(1, 4);
    const int count = edits(random);
    for (int e = 0; e < count && !out.empty(); ++e) {
        std::uniform_int_distribution<std::size_t> at(0, out.size() - 1);
        std::uniform_int_distribution<std::size_t> length(1, 12);
        std::uniform_int_distribution<std::size_t> pick(0, kInteresting.size() - 1);
        std::uniform_int_distribution<int> anyByte(0, 255);
        const std::size_t pos = at(random);
        switch (std::uniform_int_distribution<int>(0, 5)(random)) {
            case 0:  // replace one character by a character that matters to XML
                out[pos] = kInteresting[pick(random)];
                break;
            case 1:  // replace one character by any byte
                out[pos] = static_cast<char>(anyByte(random));
                break;
            case 2:  // delete a run
                out.erase(pos, length(random));
                break;
            case 3:  // duplicate a run somewhere else
                out.insert(at(random), out.substr(pos, length(random)));
                break;
            case 4:  // insert a character that matters to XML
                out.insert(out.begin() + static_cast<std::ptrdiff_t>(pos), kInteresting[pick(random)]);
                break;
            default:  // truncate
                out.resize(pos);
                break;
        }
    }
    return out;
}

TEST_F(SettingsRobustnessTest, EveryTruncationOfAValidDocumentChangesNothing) {
    KitraConnectorSetting reference(numbers);
    test::FillSample(reference);
    const std::string full = reference.ToXML();
    ASSERT_GT(full.size(), 1000u);

    for (std::size_t length = 0; length < full.size(); ++length) {
        SCOPED_TRACE(length);
        KitraConnectorSetting s(numbers);
        test::FillSample(s);
        EXPECT_NO_THROW(s.FromXML(full.substr(0, length)));
        ASSERT_EQ(s.ToXML(), full);
    }
}

TEST_F(SettingsRobustnessTest, RandomCorruptionsNeverThrowAndLeaveAConsistentObject) {
    KitraConnectorSetting reference(numbers);
    test::FillSample(reference);
    const std::string full = reference.ToXML();

    std::mt19937 random(20240531u);
    int accepted = 0;
    for (int variant = 0; variant < 4000; ++variant) {
        const std::string text = Corrupt(full, random);
        SCOPED_TRACE(text);
        KitraConnectorSetting s(numbers);
        test::FillSample(s);
        EXPECT_NO_THROW(s.FromXML(text));
        if (s.ToXML() != full) ++accepted;
        ExpectStableRender(s);
        if (HasFatalFailure() || HasFailure()) break;
    }
    // Some damage is harmless to the structure and gets read; the test must have seen such cases
    // as well as refused texts to mean anything.
    EXPECT_GT(accepted, 100);
    EXPECT_LT(accepted, 4000);
}

TEST_F(SettingsRobustnessTest, CorruptionsOfAnEmptyObjectNeverThrow) {
    std::mt19937 random(7u);
    const std::string base = test::SampleXml();
    for (int variant = 0; variant < 2000; ++variant) {
        const std::string text = Corrupt(Corrupt(base, random), random);
        KitraConnectorSetting s(numbers);
        EXPECT_NO_THROW(s.FromXML(text));
        EXPECT_NO_THROW(s.ReadFromXml(text));
    }
}

TEST_F(SettingsRobustnessTest, DeeplyNestedTextIsReadWithoutExhaustingTheStack) {
    std::string text = "<KitraConnectorSetting InvoiceTransDocument=\"FS\">";
    for (int i = 0; i < 200000; ++i) text += "<a>";
    text += "<TenderEquivalence><Tender POSTenderID=\"6\" KitraTenderID=\"deep\"/></TenderEquivalence>";
    for (int i = 0; i < 200000; ++i) text += "</a>";
    text += "</KitraConnectorSetting>";

    KitraConnectorSetting s(numbers);
    EXPECT_NO_THROW(s.FromXML(text));
    EXPECT_EQ(s.InvoiceTransDocument, "FS");
    EXPECT_EQ(s.TenderEquivalence, (std::vector<TenderMapping>{{6, "deep"}}));
}

}  // namespace
}  // namespace kitra
