#include "util/dates.h"

#include <QDateTime>
#include <QTimeZone>

#include <gtest/gtest.h>

using namespace quendle;

namespace {

// The expectations below are Sydney wall-clock times, also when the binary runs outside ctest.
const bool kSydney = [] {
    qputenv("TZ", "Australia/Sydney");
    resetdatezone();
    return true;
}();

Date at(int y, int mo, int d, int h, int mi, int s = 0) { return datefromcivil({y, mo, d, h, mi, s}); }

void expectcivil(Date d, CivilTime want)
{
    const CivilTime c = civilfromdate(d);
    EXPECT_EQ(c.year, want.year);
    EXPECT_EQ(c.month, want.month);
    EXPECT_EQ(c.day, want.day);
    EXPECT_EQ(c.hour, want.hour);
    EXPECT_EQ(c.minute, want.minute);
    EXPECT_EQ(c.second, want.second);
}

} // namespace

TEST(Dates, CivilTimeFollowsSydneyClockAcrossDaylightSaving)
{
    ASSERT_TRUE(kSydney);
    EXPECT_EQ(at(2014, 3, 9, 17, 4, 50).secs, 1394345090);   // summer time, +11
    EXPECT_EQ(at(2014, 7, 1, 8, 0).secs, 1404165600);        // standard time, +10
    // Lenient fields roll over.
    EXPECT_EQ(at(2014, 3, 9, 17, 75), at(2014, 3, 9, 18, 15));
    EXPECT_EQ(at(2014, 13, 1, 0, 0), at(2015, 1, 1, 0, 0));
    EXPECT_EQ(at(2014, 3, 0, 0, 0), at(2014, 2, 28, 0, 0));
    // The hour that is skipped reads as the hour after; the repeated one as its second pass.
    expectcivil(at(2014, 10, 5, 2, 30), {2014, 10, 5, 3, 30, 0});
    EXPECT_EQ(at(2014, 4, 6, 2, 30).secs, 1396715400);

    // Every reading near both changes of 2014 agrees with the system's own local time.
    for (const qint64 start : {qint64(1396706400), qint64(1412438400)}) {
        for (qint64 t = start - 2 * 86400; t < start + 2 * 86400; t += 37 * 60 + 13) {
            const QDateTime q = QDateTime::fromSecsSinceEpoch(t, Qt::LocalTime);
            const CivilTime c = civilfromdate(Date{double(t)});
            ASSERT_EQ(QDate(c.year, c.month, c.day), q.date()) << t;
            ASSERT_EQ(QTime(c.hour, c.minute, c.second), q.time()) << t;
            if (q.offsetFromUtc() == QDateTime::fromSecsSinceEpoch(t + 3600).offsetFromUtc()
                && q.offsetFromUtc() == QDateTime::fromSecsSinceEpoch(t - 3600).offsetFromUtc()) {
                ASSERT_EQ(datefromcivil(c).secs, double(t)) << t;
            }
        }
    }
}

TEST(Dates, PipeDateRoundTripAndFallbacks)
{
    const Date d = at(2015, 1, 1, 0, 7);
    EXPECT_EQ(lumdatetostr(d), "0|7|0|1|1|2015");
    EXPECT_EQ(lumstrtodate("0|7|0|1|1|2015"), d);
    EXPECT_EQ(lumdatetostr(at(2014, 3, 9, 17, 5, 42)), "17|5|0|9|3|2014");   // second always 0
    EXPECT_EQ(lumstrtodate("07|05|x|09|03|2014"), at(2014, 3, 9, 7, 5, 0));

    const Date now = at(2014, 3, 9, 12, 0);
    for (const QString bad : {"", "12|30", "1|2|3|4|5"}) {
        expectcivil(lumstrtodate(bad), {1, 1, 1, 1, 1, 1});
        EXPECT_EQ(lumstrtodatebadvalprotect(bad, now), now.plusSeconds(-900.0 * 86400)) << qPrintable(bad);
        EXPECT_FALSE(canthisbeconvertedtodate(bad));
    }
    EXPECT_EQ(lumstrtodatebadvalprotect("0|7|0|1|1|2015", now), d);
    EXPECT_TRUE(canthisbeconvertedtodate("0|7|0|1|1|2015"));
    EXPECT_EQ(strtodatemanual("9/3/2014"), at(2014, 3, 9, 0, 0));
}

TEST(Dates, DisplayTexts)
{
    EXPECT_EQ(datetoshrtstr(at(2014, 3, 9, 0, 0)), "12:00AM");
    EXPECT_EQ(datetoshrtstr(at(2014, 3, 9, 12, 0)), "12:00PM");
    EXPECT_EQ(datetoshrtstr(at(2014, 3, 9, 13, 9)), "1:09PM");
    EXPECT_EQ(datetoshrtstr(at(2014, 3, 9, 11, 59)), "11:59AM");

    const Date d = at(2014, 3, 9, 17, 7);
    EXPECT_EQ(lumdatedisplay(d), "Sun 9 Mar 5:07PM");
    EXPECT_EQ(lumfixdatedis(d), "Sun 9 Mar 5:07PM");
    EXPECT_EQ(lumdatetostrdisplaiable(d), "9 March 2014");
    EXPECT_EQ(datetoshrtdate(d), "9/3");
    EXPECT_EQ(getyear(d), "2014");
    EXPECT_EQ(getmonthstr(d), 3);

    EXPECT_EQ(hrfromdatestr("5.07pm"), 5);
    EXPECT_EQ(minfromdatestr("5.07pm"), 7);
    EXPECT_EQ(hrfromdatestr("noon"), 0);
    EXPECT_EQ(minfromdatestr("noon"), 0);

    // Weekdays go by Sydney's calendar day, not UTC's: 00:30 on Monday is Sunday in UTC.
    EXPECT_EQ(datetodayofweek(at(2014, 3, 10, 0, 30)), 2);
    EXPECT_EQ(datetodayofweek(at(2014, 3, 8, 23, 59)), 7);
    EXPECT_EQ(weekdayabbrev(datetodayofweek(at(2014, 3, 13, 9, 0))), "Thur");
    EXPECT_EQ(weekdayabbrev(0), "Sat");
    EXPECT_EQ(weekdayabbrev(13), "xxx");
    EXPECT_EQ(weekdayabbrev(-1), "xxx");
}

TEST(Dates, MonthTablesKeepTheirOddEntries)
{
    EXPECT_EQ(monthnametonum("March"), 3);
    EXPECT_EQ(monthnametonum("march"), 12);
    EXPECT_EQ(monthnametonum("dunmatch"), 0);
    EXPECT_EQ(monthnumtoname(0), "January");
    EXPECT_EQ(monthnumtoname(12), "December");
    EXPECT_EQ(monthnumtoname(13), "");
    EXPECT_EQ(monthnumtoname(-1), "");
}

TEST(Dates, ServiceTimesRollPastMidnightAndCarry17Seconds)
{
    const Date day = at(2014, 3, 9, 23, 59);
    EXPECT_EQ(twenfourhranddatetodate(905, day), at(2014, 3, 9, 9, 5, 17));
    EXPECT_EQ(twenfourhranddatetodate(2530, day), at(2014, 3, 10, 1, 30, 17));
    EXPECT_EQ(twenfourhranddatetodate(2400, at(2014, 3, 9, 0, 0)), at(2014, 3, 10, 0, 0, 17));
    // On the day summer time ends the table time is still the wall-clock time.
    expectcivil(twenfourhranddatetodate(1000, at(2014, 4, 6, 1, 0)), {2014, 4, 6, 10, 0, 17});
    expectcivil(twenfourhranddatetodate(2530, at(2014, 4, 5, 12, 0)), {2014, 4, 6, 1, 30, 17});

    EXPECT_EQ(zerosecondsdate(Date{1394345090.5}), Date{1394345040});
    EXPECT_EQ(zerosecondsdate(Date{-30}), Date{-60});
    expectcivil(getupcomingfiveam(), {1, 1, 1, 5, 0, 0});
}

TEST(Dates, ComparisonsAreStrict)
{
    const Date a = at(2014, 3, 9, 12, 0), now = at(2014, 3, 9, 11, 0);
    EXPECT_FALSE(testlumdateearlier(a, a));
    EXPECT_TRUE(testlumdateearlier(a, a.plusSeconds(1)));
    EXPECT_FALSE(testlumdateearlier(a.plusSeconds(1), a));
    EXPECT_TRUE(testlumdateearlierbyatleastaday(a, a.plusSeconds(60)));   // no day is added
    EXPECT_FALSE(testlumdateearlierbyatleastthesemins(a, addminstodate(a, 10), 10));
    EXPECT_TRUE(testlumdateearlierbyatleastthesemins(a, addminstodate(a, 10).plusSeconds(1), 10));
    EXPECT_TRUE(lumdateearlier(a, a.plusSeconds(-1), now));
    EXPECT_FALSE(lumdateearlier(a, a, now));
    EXPECT_FALSE(lumdateearlier(a, a.plusSeconds(1), now));
}

TEST(Dates, RelativeDates)
{
    const Date now = at(2014, 3, 9, 12, 0);   // a Sunday
    EXPECT_EQ(relativedate(now.plusSeconds(-30), now), "");
    EXPECT_EQ(relativedatejustday(now.plusSeconds(-30), now), "");
    EXPECT_EQ(relativedate(at(2014, 3, 9, 17, 7), now), "5:07PM");
    EXPECT_EQ(relativedate(at(2014, 3, 10, 11, 59), now), "11:59AM");
    EXPECT_EQ(relativedate(at(2014, 3, 10, 12, 0), now), "Mon 12:00PM");
    EXPECT_EQ(relativedate(at(2014, 3, 11, 17, 7), now), "Tue 5:07PM");
    EXPECT_EQ(relativedate(at(2014, 3, 14, 17, 7), now), "Fri 5:07PM");
    EXPECT_EQ(relativedate(at(2014, 3, 15, 17, 7), now), "Sat 15 Mar 5:07PM");
    EXPECT_EQ(relativedate(at(2014, 3, 16, 17, 7), now), "Sun 16 Mar 5:07PM");
    EXPECT_EQ(relativedatejustday(at(2014, 3, 9, 17, 7), now), "Sun ");
}

TEST(Dates, ComponentDifferencesDropMonthsAndSeconds)
{
    const Date from = at(2014, 3, 9, 12, 0);
    const Date three = at(2014, 3, 12, 14, 5);
    EXPECT_EQ(calcdaysdiffint(from, three), 3);
    EXPECT_EQ(calctimediffint(from, three), 3 * 1440 + 125);
    EXPECT_EQ(calctimediffmin(from, three), 3 * 1440 + 125);
    EXPECT_EQ(calctimediffint(three, from), -(3 * 1440 + 125));
    EXPECT_EQ(calcdaysdiffint(three, from), -3);
    EXPECT_EQ(calctimediffint(from, from.plusSeconds(59)), 0);
    EXPECT_EQ(calctimediffint(from, from.plusSeconds(119)), 1);
    EXPECT_EQ(calctimediffint(from, from.plusSeconds(-119)), -1);

    // 40 days is one month and 9 or 10 days; one month and 3 days leaves the 3 days.
    EXPECT_EQ(calcdaysdiffint(at(2014, 3, 1, 10, 0), at(2014, 4, 10, 10, 0)), 9);
    EXPECT_EQ(calctimediffint(at(2014, 3, 1, 10, 0), at(2014, 4, 10, 10, 0)), 9 * 1440);
    EXPECT_EQ(calctimediffint(at(2014, 2, 1, 8, 0), at(2014, 3, 4, 9, 30)), 3 * 1440 + 90);

    // Summer time ends on 6 April: noon to noon is one calendar day though 25 hours pass,
    // while adddaystodate adds a plain 24 hours and the wall clock moves back an hour.
    const Date sat = at(2014, 4, 5, 12, 0), sun = at(2014, 4, 6, 12, 0);
    EXPECT_EQ(sun.secs - sat.secs, 25 * 3600);
    EXPECT_EQ(calctimediffint(sat, sun), 1440);
    EXPECT_EQ(calctimediffint(at(2014, 4, 6, 1, 30), at(2014, 4, 6, 3, 30)), 180);
    expectcivil(adddaystodate(sat, 1), {2014, 4, 6, 11, 0, 0});
    expectcivil(addminstodate(sat, -90), {2014, 4, 5, 10, 30, 0});
}

TEST(Dates, IsoTextsAndRetiredFormats)
{
    const Date d = at(2014, 3, 9, 17, 4, 50);
    EXPECT_EQ(isolocal(d), "2014-03-09T17:04:50+11:00");
    EXPECT_EQ(isolocal(at(2014, 7, 1, 8, 0)), "2014-07-01T08:00:00+10:00");

    Date p;
    for (const char* text : {"2014-03-09T17:04:50+11:00", "2014-03-09T06:04:50Z",
                              "2014-03-09T17:04:50", "2014-03-09T01:04:50-05:00"}) {
        ASSERT_TRUE(parseiso(text, &p)) << text;
        EXPECT_EQ(p, d) << text;
    }
    ASSERT_TRUE(parseiso("2014-03-09T17:04", &p));
    EXPECT_EQ(p, at(2014, 3, 9, 17, 4));
    for (const char* bad : {"", "hello", "2014-13-01T00:00", "2014-02-29T10:00",
                            "2014-03-09T17:04:50+11:00 and more", "2014-03-09"})
        EXPECT_FALSE(parseiso(bad, &p)) << bad;

    EXPECT_TRUE(datetostrjunfix(d).contains("2014-03-09 06:04:50")) << qPrintable(datetostrjunfix(d));
    EXPECT_EQ(lumdatetostrfuturefix(d), "");
    EXPECT_EQ(lumdatetostrfukfix(d), "zbzbzbzbzbzbzzzz");
}

TEST(Dates, OneReadingOfAnIsoInstant)
{
    Date d;
    QString why;
    EXPECT_TRUE(parseiso("2014-03-09T17:04:50", &d));
    EXPECT_EQ(d.secs, 1394345090);
    EXPECT_TRUE(parseiso("2014-03-09 17:04", &d));
    EXPECT_EQ(d.secs, 1394345040);
    EXPECT_TRUE(parseiso("2014-03-09T06:04:50.25Z", &d));
    EXPECT_EQ(d.secs, 1394345090.25);
    // The hour shown twice when summer time ends reads as its second pass.
    EXPECT_TRUE(parseiso("2014-04-06T02:30:00", &d));
    EXPECT_EQ(d.secs, 1396715400);

    const std::vector<std::pair<QString, QString>> refused = {
        {"", "it is empty"},
        {"   ", "it is empty"},
        {"9 March 2014", "it is not an ISO 8601 date and time"},
        {"2014-03-09T17:04:50junk", "it is not an ISO 8601 date and time"},
        {"2014-02-29T10:00:00", "there is no such date"},
        {"2014-13-09T17:04:50", "there is no such date or time"},
        {"0000-01-01T00:00:00", "year 0000 is not a usable year"},
        {"2016-12-31T23:59:60Z", "second 60 is a leap second, which the clock does not keep"},
        {"2014-10-05T02:30:00", "the local clock skips that time when daylight saving begins"},
        {"2014-03-09T17:04:50+24:00", "there is no such offset from UTC"},
    };
    for (const auto& [text, reason] : refused) {
        d = Date{42};
        EXPECT_FALSE(parseiso(text, &d, &why)) << qPrintable(text);
        EXPECT_EQ(why, reason) << qPrintable(text);
        EXPECT_EQ(d, Date{42});
    }
    // With an offset the instant is plain, even inside the skipped hour's wall time.
    EXPECT_TRUE(parseiso("2014-10-05T02:30:00+10:00", &d));
    EXPECT_EQ(d.secs, 1412440200);
}
