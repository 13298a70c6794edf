// The set of record keys a step's documents were matched to: every key in it is found, no key
// outside it is, whatever the keys (far apart, negative, the edges of a page of bits).
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <set>
#include <vector>

#include "backoffice/KeySet.h"

namespace kitra::backoffice {
namespace {

TEST(KeySetTest, FindsExactlyTheKeysPutIn) {
    const std::vector<std::int32_t> keys = {0,     1,     63,    64,    4095, 4096, 4097, 123456,
                                            -1,    -4096, -4097, 2000000000,
                                            std::numeric_limits<std::int32_t>::max(),
                                            std::numeric_limits<std::int32_t>::min()};
    KeySet set;
    std::set<std::int32_t> reference;
    for (const std::int32_t key : keys) {
        set.insert(key);
        reference.insert(key);
    }
    set.insert(4096);  // twice is once
    EXPECT_EQ(set.size(), reference.size());
    for (std::int64_t key = -10000; key <= 10000; ++key) {
        const auto k = static_cast<std::int32_t>(key);
        ASSERT_EQ(set.contains(k), reference.contains(k)) << key;
    }
    for (const std::int32_t key : keys) EXPECT_TRUE(set.contains(key)) << key;
    EXPECT_FALSE(set.contains(2000000001));
    EXPECT_FALSE(set.contains(std::numeric_limits<std::int32_t>::max() - 1));
    EXPECT_FALSE(set.contains(std::numeric_limits<std::int32_t>::min() + 1));

    set.clear();
    EXPECT_TRUE(set.empty());
    EXPECT_FALSE(set.contains(4096));
}

TEST(KeySetTest, AMillionKeysGivenOneAfterAnotherAreAllFound) {
    KeySet set;
    for (std::int32_t key = 1; key <= 1000000; ++key) set.insert(key);
    EXPECT_EQ(set.size(), 1000000u);
    for (std::int32_t key = 1; key <= 1000000; key += 997) ASSERT_TRUE(set.contains(key));
    EXPECT_FALSE(set.contains(0));
    EXPECT_FALSE(set.contains(1000001));
}

}  // namespace
}  // namespace kitra::backoffice
