#include <gtest/gtest.h>

#include "connector/KitraConnector.h"

namespace kitra::connector {
namespace {

TEST(Version, PadsMinorAndRevisionButNeverMajor) {
    EXPECT_EQ(FormatComponentVersion(1, 2, 3), "1.02.03");
    EXPECT_EQ(FormatComponentVersion(10, 0, 7), "10.00.07");
    EXPECT_EQ(FormatComponentVersion(0, 12, 34), "0.12.34");
    EXPECT_EQ(FormatComponentVersion(2, 100, 5), "2.100.05");
}

}  // namespace
}  // namespace kitra::connector
