#include "import/LogFileName.h"

#include <gtest/gtest.h>

namespace kitra {
namespace {

const DateTime kMoment{2011, 3, 1, 9, 5, 7};

TEST(LogFileName, PlainNameAndStampWithoutSeparator) {
    EXPECT_EQ(LogFileName("Centro", kMoment), "Centro20110301_090507.txt");
    EXPECT_EQ(LogFileName("Praia da Rocha", kMoment), "Praia da Rocha20110301_090507.txt");
    EXPECT_EQ(LogFileName("Conceição", kMoment), "Conceição20110301_090507.txt");
}

TEST(LogFileName, PathSeparatorsAndRefusedCharactersBecomeUnderscores) {
    EXPECT_EQ(LogFileName("../x/y", kMoment), ".._x_y20110301_090507.txt");
    EXPECT_EQ(LogFileName("..\\x\\y", kMoment), ".._x_y20110301_090507.txt");
    EXPECT_EQ(LogFileName("a:b*c?d\"e<f>g|h", kMoment), "a_b_c_d_e_f_g_h20110301_090507.txt");
    EXPECT_EQ(LogFileName("tab\there\nnew", kMoment), "tab_here_new20110301_090507.txt");
    EXPECT_EQ(LogFileName("/", kMoment), "_20110301_090507.txt");
    EXPECT_EQ(LogFileName("", kMoment), "20110301_090507.txt");
}

TEST(LogFileName, LongNamesAreCutAtACharacterBoundary) {
    std::string name;
    for (int i = 0; i < 150; ++i) name += "ã";  // two bytes each
    const std::string file = LogFileName(name, kMoment);
    const std::string stem = file.substr(0, file.size() - std::string("20110301_090507.txt").size());
    EXPECT_EQ(stem.size(), 200u);
    EXPECT_EQ(stem.substr(0, 2), "ã");
    EXPECT_EQ(stem.substr(198), "ã");
}

}  // namespace
}  // namespace kitra
