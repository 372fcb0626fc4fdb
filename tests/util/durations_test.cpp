#include "util/dates.h"
#include "util/durations.h"
#include "util/text.h"

#include <gtest/gtest.h>

using namespace quendle;

namespace {

const bool kSydney = [] {
    qputenv("TZ", "Australia/Sydney");
    resetdatezone();
    return true;
}();

Date at(int d, int h, int mi, int s = 0) { return datefromcivil({2026, 11, d, h, mi, s}); }

} // namespace

TEST(Durations, WordsAndCompactForms)
{
    EXPECT_EQ(mintohrminstr(65), "1 h 5 min");
    EXPECT_EQ(mintohrminstr(60), "1 h ");
    EXPECT_EQ(mintohrminstr(20), "20 min");
    EXPECT_EQ(mintohrminstr(0), "");
    EXPECT_EQ(mintohrminstr(-5), "");
    EXPECT_EQ(mintostr(75), "1h15m");
    EXPECT_EQ(mintostr(60), "1h");
    EXPECT_EQ(mintostr(5), "5m");
    EXPECT_EQ(mintostr(0), "");
    EXPECT_EQ(mintostr(-61), "");
}

// The minute goes on the later of the two moments: a wait reads one minute long, a
// departure that has already happened reads nothing at all.
TEST(Durations, TimeDifferenceAddsTheMinuteToTheLaterMoment)
{
    const Date now = at(24, 8, 5, 40);
    EXPECT_EQ(calctimediff(now, now), " 1 min");
    EXPECT_EQ(calctimediff(now, now.plusSeconds(61 * 60)), " 1h 2m");
    EXPECT_EQ(calctimediff(now, now.plusSeconds(10)), " 1m");
    EXPECT_EQ(calctimediff(now, now.plusSeconds(-32)), "");
    EXPECT_EQ(calctimediff(now, now.plusSeconds(-90)), "");
    EXPECT_EQ(calctimediff(now, now.plusSeconds(-3 * 3600)), "");
    // Whole days and hours, each behind a blank; zero parts are left out.
    EXPECT_EQ(calctimediff(at(24, 8, 0), at(26, 8, 59)), " 2d 1h");
    EXPECT_EQ(calctimediff(at(24, 23, 30, 17), at(25, 0, 10, 17)), " 41m");

    EXPECT_EQ(calctimediffabbrev(now, now, 0), " 1 min");
    EXPECT_EQ(calctimediffabbrev(now, now.plusSeconds(20), 7), " 1 minute");
    EXPECT_EQ(calctimediffabbrev(now, now.plusSeconds(61 * 60), 0), " 1h 2 minutes");
    EXPECT_EQ(calctimediffabbrev(now, now.plusSeconds(-32), 0), "");
}

TEST(Durations, ShortLineNames)
{
    EXPECT_EQ(abbreviatelinename("T1 North Shore & Western Line"), "Western");
    EXPECT_EQ(abbreviatelinename("T2 Leppington & Inner West Line"), "Inner West");
    EXPECT_EQ(abbreviatelinename("Blue Mountains Line"), "Blue Mountains");
    EXPECT_EQ(abbreviatelinename("Central Coast & Newcastle Line"), "Newcastle");
    EXPECT_EQ(abbreviatelinename("T8 Airport & South"), "");
    EXPECT_EQ(abbreviatelinename(""), "");
}
