#include "core/Text.h"

#include <gtest/gtest.h>

namespace kitra {
namespace {

TEST(Windows1252, CodesOfCharacters) {
    EXPECT_EQ(Windows1252Code(U'A'), 65);
    EXPECT_EQ(Windows1252Code(U' '), 32);
    EXPECT_EQ(Windows1252Code(U'\t'), 9);
    EXPECT_EQ(Windows1252Code(U'é'), 233);
    EXPECT_EQ(Windows1252Code(U'Ç'), 199);
    EXPECT_EQ(Windows1252Code(U'ª'), 170);
    EXPECT_EQ(Windows1252Code(U'º'), 186);
    EXPECT_EQ(Windows1252Code(U'€'), 128);
    EXPECT_EQ(Windows1252Code(U'“'), 147);
    EXPECT_EQ(Windows1252Code(U'Ÿ'), 159);
    EXPECT_EQ(Windows1252Code(U'ÿ'), 255);
    // Not representable in Windows-1252: Greek, emoji, C1 controls, the code points it leaves out.
    EXPECT_EQ(Windows1252Code(U'Ω'), -1);
    EXPECT_EQ(Windows1252Code(U'😀'), -1);
    EXPECT_EQ(Windows1252Code(0x81), -1);
    EXPECT_EQ(Windows1252Code(0x9D), -1);
}

TEST(Utf8, DecodeEncodeRoundTrip) {
    const std::string text = "Açúcar ΩΣ 😀 €";
    EXPECT_EQ(EncodeUtf8(DecodeUtf8(text)), text);
    EXPECT_EQ(DecodeUtf8("ã").size(), 1u);
    EXPECT_EQ(DecodeUtf8("😀").size(), 1u);
}

TEST(Utf8, InvalidBytesBecomeReplacementCharacters) {
    const std::u32string decoded = DecodeUtf8(std::string("a\xff" "b\xc3", 4));
    ASSERT_EQ(decoded.size(), 4u);
    EXPECT_EQ(decoded[1], 0xFFFDu);
    EXPECT_EQ(decoded[3], 0xFFFDu);
    EXPECT_EQ(Windows1252Code(decoded[1]), -1);
}

TEST(Utf8, ValidityOfWholeTexts) {
    using namespace std::string_literals;
    EXPECT_TRUE(IsValidUtf8(""));
    EXPECT_TRUE(IsValidUtf8("Conceição 中文 🍕 \xEF\xBF\xBD \xF4\x8F\xBF\xBF"));
    EXPECT_TRUE(IsValidUtf8("a\0b"s));  // NUL is a character like any other
    for (const char* broken : {"\xC3", "\xC3\x28", "\xA0", "\xC0\xAF", "\xE0\x80\xAF",
                               "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xF8\x88\x80\x80\x80",
                               "\xFF", "ok\xE2\x82"}) {
        EXPECT_FALSE(IsValidUtf8(broken)) << broken;
    }
    // What the decoder replaces is exactly what the check refuses.
    EXPECT_EQ(DecodeUtf8("a\xC0\xAF" "b"), U"a\uFFFD\uFFFDb");
}

TEST(Utf16, AccentsAndCharactersBeyondTheBasicPlaneRoundTrip) {
    const std::string text = "A importação chegou ao fim. € 𝄞";
    const std::u16string wide = Utf16FromUtf8(text);
    EXPECT_EQ(wide, u"A importação chegou ao fim. € 𝄞");
    EXPECT_EQ(wide.size(), 32u);  // 𝄞 takes two units
    EXPECT_EQ(Utf8FromUtf16(wide), text);
    EXPECT_EQ(Utf8FromUtf16(u""), "");
}

TEST(Utf16, BrokenInputBecomesReplacementCharacters) {
    EXPECT_EQ(Utf16FromUtf8("a\xFF" "b"), u"a\uFFFDb");
    const char16_t loneHigh[] = {u'x', 0xD800, u'y'};
    EXPECT_EQ(Utf8FromUtf16(std::u16string_view(loneHigh, 3)), "x\xEF\xBF\xBDy");
    const char16_t loneLowAtEnd[] = {u'x', 0xDC00};
    EXPECT_EQ(Utf8FromUtf16(std::u16string_view(loneLowAtEnd, 2)), "x\xEF\xBF\xBD");
}

TEST(Text, CaseInsensitiveKeys) {
    EXPECT_TRUE(EqualsNoCase("Centro", "CENTRO"));
    EXPECT_TRUE(EqualsNoCase("Conceição", "CONCEIÇÃO"));
    EXPECT_FALSE(EqualsNoCase("Centro", "Centro "));
    EXPECT_EQ(FoldCase("praia"), "PRAIA");
    // Only letters fold: "@" and "`" sit 32 places from letters and stay apart from them.
    EXPECT_FALSE(EqualsNoCase("@", "`"));
    EXPECT_FALSE(EqualsNoCase("itemid", "itemix"));
    EXPECT_TRUE(EqualsNoCase("itemID", "ITEMid"));
    // Plain ASCII first, then a letter beyond it: still folded as a whole.
    EXPECT_TRUE(EqualsNoCase("Descriçao", "DESCRIÇAO"));
    EXPECT_FALSE(EqualsNoCase("Descriçao", "DESCRIÇAA"));
    EXPECT_FALSE(EqualsNoCase("ab", "abc"));
    EXPECT_FALSE(EqualsNoCase("", "ç"));
    EXPECT_TRUE(EqualsNoCase("", ""));
}

TEST(Text, Trim) {
    EXPECT_EQ(Trim("  <a/> \r\n"), "<a/>");
    EXPECT_EQ(Trim(""), "");
    EXPECT_EQ(Trim("   "), "");
}

}  // namespace
}  // namespace kitra
