#include "core/DateTime.h"

#include <gtest/gtest.h>

#include "core/Clock.h"
#include "core/Error.h"

namespace kitra {
namespace {

TEST(DateTime, IsoFormRoundTrips) {
    const DateTime d{2011, 3, 1, 9, 5, 7};
    EXPECT_EQ(FormatIsoDateTime(d), "2011-03-01 09:05:07");
    ASSERT_TRUE(ParseIsoDateTime("2011-03-01 09:05:07"));
    EXPECT_EQ(*ParseIsoDateTime("2011-03-01 09:05:07"), d);
}

TEST(DateTime, IsoFormPadsEveryPartAndKeepsAnyValueItCannotPad) {
    EXPECT_EQ(FormatIsoDateTime(DateTime{}), "1899-12-30 00:00:00");
    EXPECT_EQ(FormatIsoDateTime(DateTime{7, 1, 2, 3, 4, 5}), "0007-01-02 03:04:05");
    EXPECT_EQ(FormatIsoDateTime(DateTime{9999, 12, 31, 23, 59, 59}), "9999-12-31 23:59:59");
    EXPECT_EQ(FormatIsoDateTime(DateTime{0, 0, 0, 0, 0, 0}), "0000-00-00 00:00:00");
    // Out of the form's widths: every part as it is, nothing cut.
    EXPECT_EQ(FormatIsoDateTime(DateTime{12345, 1, 2, 3, 4, 5}), "12345-01-02 03:04:05");
    EXPECT_EQ(FormatIsoDateTime(DateTime{2011, 3, 1, 100, 4, -5}), "2011-03-01 100:04:-5");
}

TEST(DateTime, IsoFormRejectsInvalidTexts) {
    for (const char* bad : {"", "2011-03-01", "2011-03-01 9:05:07", "2011-02-30 00:00:00",
                            "2011-13-01 00:00:00", "2011-03-01 24:00:00", "2011-03-01 23:60:00",
                            "2011-03-01 23:00:60", "2011/03/01 00:00:00", "2011-03-01 00:00:00 ",
                            "0000-00-00 00:00:00", "2011-03-01 00:00:0x",
                            "2011-03-01' OR '1'='1"}) {
        EXPECT_FALSE(IsIsoDateTime(bad)) << bad;
    }
    EXPECT_TRUE(IsIsoDateTime("2012-02-29 23:59:59"));
    EXPECT_FALSE(IsIsoDateTime("2011-02-29 00:00:00"));
    EXPECT_FALSE(IsIsoDateTime("1900-02-29 00:00:00"));
    EXPECT_TRUE(IsIsoDateTime("2000-02-29 00:00:00"));
}

TEST(DateTime, FileStamp) {
    EXPECT_EQ(FormatFileStamp({2011, 3, 1, 9, 5, 7}), "20110301_090507");
}

TEST(DateTime, GeneralDateFormOfTheReferenceHost) {
    const DateTime d{2011, 3, 1, 9, 5, 7};
    EXPECT_EQ(FormatDatePattern(d, "dd-mm-yyyy hh:nn:ss"), "01-03-2011 09:05:07");
    EXPECT_EQ(ParseDatePattern("01-03-2011 09:05:07", "dd-mm-yyyy hh:nn:ss"), d);
    EXPECT_FALSE(ParseDatePattern("31-02-2011 09:05:07", "dd-mm-yyyy hh:nn:ss"));
}

TEST(DateTime, SerialNumbers) {
    EXPECT_EQ((DateTime{1899, 12, 30, 0, 0, 0}.ToSerial()), 0);
    EXPECT_EQ((DateTime{1900, 1, 1, 12, 0, 0}.ToSerial()), 2.5);
    EXPECT_EQ((DateTime{2011, 3, 1, 0, 0, 0}.ToSerial()), 40603);
    const DateTime d{2011, 3, 1, 9, 5, 7};
    EXPECT_EQ(DateTime::FromSerial(d.ToSerial()), d);
    EXPECT_THROW(DateTime::FromSerial(1e9), Error);
}

TEST(Clock, FixedClockIsInjectable) {
    FixedClock clock({2011, 3, 1, 9, 5, 7});
    const Clock& asClock = clock;
    EXPECT_EQ(FormatIsoDateTime(asClock.Now()), "2011-03-01 09:05:07");
    clock.Set({2012, 1, 2, 3, 4, 5});
    EXPECT_EQ(FormatIsoDateTime(asClock.Now()), "2012-01-02 03:04:05");
    EXPECT_TRUE(SystemClock().Now().IsValid());
}

}  // namespace
}  // namespace kitra
