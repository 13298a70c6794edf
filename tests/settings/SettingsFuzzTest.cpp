// Ten thousand deterministic mutations of a valid settings text through the settings reader:
// cut short, bytes flipped, a huge attribute, deep nesting, entity declarations, bytes that are
// not UTF-8, the whole text in UTF-16, control characters. None may crash or throw, memory stays
// bounded (entities are never expanded), and a text that is not well-formed changes nothing.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cstdint>
#include <string>

#include "backoffice/UtilityService.h"
#include "settings/KitraConnectorSetting.h"
#include "SettingsSamples.h"

namespace kitra {
namespace {

// A small generator of our own, so the same seed gives the same mutations everywhere.
class SplitMix {
public:
    explicit SplitMix(std::uint64_t seed) : state_(seed) {}
    std::uint64_t Next() {
        std::uint64_t z = (state_ += 0x9E3779B97F4A7C15ull);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
        return z ^ (z >> 31);
    }
    // 0 <= value < bound
    std::size_t Below(std::size_t bound) { return static_cast<std::size_t>(Next() % bound); }

private:
    std::uint64_t state_;
};

long PeakMemoryKb() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

std::string Utf16(const std::string& text, bool bigEndian, bool byteOrderMark) {
    std::string out;
    const auto unit = [&](char16_t u) {
        const char high = static_cast<char>(u >> 8), low = static_cast<char>(u & 0xFF);
        out += bigEndian ? high : low;
        out += bigEndian ? low : high;
    };
    if (byteOrderMark) unit(0xFEFF);
    for (const unsigned char c : text) unit(c);  // the sample text is ASCII
    return out;
}

class SettingsFuzzTest : public ::testing::Test {
protected:
    void SetUp() override {
        KitraConnectorSetting reference(numbers);
        test::FillSample(reference);
        full = reference.ToXML();
    }

    // Reads the text into a filled settings object and returns what it then holds.
    std::string Read(const std::string& text) {
        KitraConnectorSetting s(numbers);
        test::FillSample(s);
        EXPECT_NO_THROW(s.FromXML(text));
        last = s.Restaurants.Count() > 0 ? s.Restaurants.Item(1) : Restaurant{};
        return s.ToXML();
    }

    void ExpectUnchanged(const std::string& text, const char* kind) {
        EXPECT_EQ(Read(text), full) << kind << ": " << text.substr(0, 200);
    }

    backoffice::UtilityService numbers;
    std::string full;
    Restaurant last;
};

TEST_F(SettingsFuzzTest, TenThousandMutations) {
    SplitMix random(20261122u);
    const long memoryBefore = PeakMemoryKb();
    const std::string firstServer = "ServerName=\"srv-Lisboa\"";
    ASSERT_NE(full.find(firstServer), std::string::npos);
    const std::size_t restaurantsAt = full.find("<Restaurants>");
    const std::size_t rootEnd = full.rfind("</KitraConnectorSetting>");
    ASSERT_NE(restaurantsAt, std::string::npos);
    int wellFormedRead = 0;

    for (int n = 0; n < 10000; ++n) {
        SCOPED_TRACE(n);
        std::string text = full;
        switch (n % 8) {
            case 0: {  // cut short: the root is never closed
                text.resize(random.Below(full.size()));
                ExpectUnchanged(text, "truncated");
                break;
            }
            case 1: {  // bytes flipped: read or refused, but never half-read into a crash
                const std::size_t flips = 1 + random.Below(8);
                for (std::size_t f = 0; f < flips; ++f) {
                    text[random.Below(text.size())] ^= static_cast<char>(1 + random.Below(255));
                }
                const std::string held = Read(text);
                KitraConnectorSetting again(numbers);
                again.FromXML(held);
                EXPECT_EQ(again.ToXML(), held);
                break;
            }
            case 2: {  // a huge attribute arrives whole
                const std::string huge(64 * 1024 + random.Below(128 * 1024), 'x');
                text.replace(full.find(firstServer), firstServer.size(),
                             "ServerName=\"" + huge + "\"");
                Read(text);
                EXPECT_EQ(last.ServerName.size(), huge.size());
                ++wellFormedRead;
                break;
            }
            case 3: {  // deep nesting around the restaurants, closed or left open
                const std::size_t depth = 1000 + random.Below(3000);
                const bool closed = random.Below(2) == 0;
                std::string open, close;
                for (std::size_t d = 0; d < depth; ++d) open += "<a>";
                for (std::size_t d = 0; d < depth; ++d) close += "</a>";
                text.insert(rootEnd, closed ? close : std::string());
                text.insert(restaurantsAt, open);
                if (closed) {
                    Read(text);
                    EXPECT_EQ(last.Name, "Lisboa");
                    ++wellFormedRead;
                } else {
                    ExpectUnchanged(text, "nesting left open");
                }
                break;
            }
            case 4: {  // entity declarations that would grow a billionfold: never expanded
                std::string doctype = "<!DOCTYPE KitraConnectorSetting [<!ENTITY e0 \"lol\">";
                for (int e = 1; e <= 9; ++e) {
                    doctype += "<!ENTITY e" + std::to_string(e) + " \"";
                    for (int k = 0; k < 10; ++k) doctype += "&e" + std::to_string(e - 1) + ";";
                    doctype += "\">";
                }
                doctype += "]>";
                text.replace(full.find(firstServer), firstServer.size(), "ServerName=\"&e9;\"");
                const std::string held = Read(doctype + text);
                EXPECT_LT(held.size(), 2 * (doctype.size() + text.size()));
                EXPECT_LT(last.ServerName.size(), 100u);
                break;
            }
            case 5: {  // bytes that are not UTF-8
                static const char* const kBroken[] = {"\xC3\x28", "\xA0\xA1", "\xE2\x28\xA1",
                                                      "\xF0\x28\x8C\xBC", "\xFF", "\xC0\xAF",
                                                      "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xC3"};
                text.insert(random.Below(text.size() + 1), kBroken[random.Below(9)]);
                ExpectUnchanged(text, "not UTF-8");
                break;
            }
            case 6: {  // the whole text in UTF-16, either byte order, with or without a mark
                ExpectUnchanged(Utf16(full, random.Below(2) == 0, random.Below(2) == 0), "UTF-16");
                break;
            }
            default: {  // a character XML does not allow: NUL and the other control characters
                static const char kControls[] = {'\0', '\x01', '\x08', '\x0B', '\x0C', '\x1F'};
                text.insert(random.Below(text.size() + 1), 1, kControls[random.Below(6)]);
                ExpectUnchanged(text, "control character");
                break;
            }
        }
        if (HasFailure()) break;
    }
    // Every huge attribute and about half the nestings were well-formed and read.
    EXPECT_GT(wellFormedRead, 1250 + 400);
#if defined(__SANITIZE_ADDRESS__)
    // The address sanitizer keeps freed memory in quarantine, so the peak says nothing there.
    (void)memoryBefore;
#else
    // The largest text is a fifth of a megabyte; everything read from it stays far below this.
    EXPECT_LT(PeakMemoryKb() - memoryBefore, 256 * 1024);
#endif
}

}  // namespace
}  // namespace kitra
