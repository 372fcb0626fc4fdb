#include "app/appmodel.h"
#include "support/tables.h"
#include "util/dates.h"
#include "util/durations.h"

#include "platform/system/manualtimers.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace quendle;
using namespace quendle::fixtures;

namespace {

// Monday 10 March 2014, Sydney (daylight saving until April).
Date at(int h, int m, int s = 0, int d = 10) { return datefromcivil({2014, 3, d, h, m, s}); }

QString stop(const QString& name, double lon, double lat)
{
    return name + "|" + QString::number(lon, 'f', 6) + "|" + QString::number(lat, 'f', 6);
}

// A journey engine on a table written for the test, with a clock and timers the test drives.
class JourneyTest : public ::testing::Test {
protected:
    void load(const QStringList& lines, Date start)
    {
        ASSERT_TRUE(home.isValid());
        clock.set(start);
        platform.clock = &clock;
        platform.timers = &timers;
        platform.homeDir = home.path();
        Folders folders(home.path());
        writeto(folders.gettablesfold(), "Test.vq", table("1 March 2014 9:00:00 AM", lines));
        app = std::make_unique<AppModel>(platform, AppModel::Options{false});
        app->timetable().setbundledtablepath(home.path() + "/no-built-in-table.vq");
        app->setupstuff();
    }
    void journey(const QStringList& stations)
    {
        app->journey().myjournstr = stations;
        app->calctripoptimizelater();
    }
    Journey& j() { return app->journey(); }
    Date shownDeparture(int leg) { return j().myservsmultid[leg][j().myindexes[leg]].deptime; }

    QTemporaryDir home;
    ManualClock clock;
    ManualTimers timers{clock};
    Platform platform;
    std::unique_ptr<AppModel> app;
};

const QString kEvery = "0123456";

} // namespace

TEST_F(JourneyTest, ServicesAfterMidnightMoveToTheNextDay)
{
    // In the first service the last stop time falls by more than 500: that stop and the
    // arrival fall on the next day. Departures then fall from 2330 to 5: that service and
    // every later one that day (the flags stay set) leave a day later.
    load({lineblock("Night Line#Upton to Downs",
                    stop("Upton", 151.0, -33.0) + "," + stop("Middle", 151.0, -33.05) + ","
                        + stop("Downs", 151.0, -33.1),
                    {dayblock(kEvery, {"2355,2359,3,}", "2330,2338,2345,}", "5,12,20,}", "2350,2355,2405,}"})}),
          // Times of 2400 and more never count as a fall, so a small time after them stays
          // on the service day's own date.
          lineblock("Owl Line#Owlton to Dawnby", stop("Owlton", 151.5, -33.0) + "," + stop("Dawnby", 151.5, -33.1),
                    {dayblock(kEvery, {"2350,2405,}", "2410,2420,}", "30,40,}"})})},
         at(12, 0));
    journey({"Upton", "Downs"});
    const auto& leg = j().myservsmultid[0];
    ASSERT_EQ(leg.size(), 12u);   // four a day over three days, in arrival order
    EXPECT_EQ(leg[0].deptime, at(23, 30));
    EXPECT_EQ(leg[0].desttime, at(23, 45, 17));
    EXPECT_EQ(leg[1].deptime, at(23, 55));
    EXPECT_EQ(leg[1].desttime, at(0, 3, 17, 11));
    EXPECT_EQ(leg[1].stoptimes().back(), at(0, 3, 17, 11));
    EXPECT_EQ(leg[1].stoptimes().front(), at(23, 55, 17));
    EXPECT_EQ(leg[1].depcrossedmid, 0);
    EXPECT_EQ(leg[1].destcrossedmid, 0);
    EXPECT_EQ(leg[1].debugstops(), "2355,2359,3,");
    EXPECT_EQ(leg[1].stopnums().size(), 3u);
    EXPECT_EQ(leg[2].deptime, at(0, 5, 0, 11));
    EXPECT_EQ(leg[2].desttime, at(0, 20, 17, 11));
    EXPECT_EQ(leg[2].depcrossedmid, 1);
    EXPECT_EQ(leg[2].destcrossedmid, 1);
    EXPECT_EQ(leg[5].deptime, at(23, 50, 0, 11));
    EXPECT_EQ(leg[5].desttime, at(0, 5, 17, 12));

    journey({"Owlton", "Dawnby"});
    const auto& owl = j().myservsmultid[0];
    ASSERT_EQ(owl.size(), 9u);
    EXPECT_EQ(owl[0].deptime, at(0, 30));   // 30 after 2410: same date, early that morning
    EXPECT_EQ(owl[0].depcrossedmid, 0);
    EXPECT_EQ(owl[1].deptime, at(23, 50));
    EXPECT_EQ(owl[1].desttime, at(0, 5, 17, 11));
    EXPECT_EQ(owl[2].deptime, at(0, 10, 0, 11));
}

TEST_F(JourneyTest, ConnectionsNeedMoreThanTwoMinutesAndAChainReachesEveryLeg)
{
    const QString west = stop("Westgate", 151.0, -33.0), yard = stop("Yardley", 151.0, -33.1),
                  zed = stop("Zedbury", 151.0, -33.2), far = stop("Farley", 151.0, -33.3);
    load({lineblock("Alpha Line#Westgate to Yardley", west + "," + yard, {dayblock(kEvery, {"750,800,}"})}),
          lineblock("Beta Line#Yardley to Zedbury", yard + "," + zed, {dayblock(kEvery, {"802,810,}", "803,811,}"})}),
          lineblock("Gamma Line#Zedbury to Farley", zed + "," + far, {dayblock("9", {"900,910,}"})})},
         at(7, 0));
    journey({"Westgate", "Yardley", "Zedbury"});
    // Arriving 08:00 (and its 17 seconds), the 08:02 is too close; the 08:03 connects.
    ASSERT_EQ(j().connectingservs.size(), 3u);
    EXPECT_EQ(j().connectingservs[0], (Chain{0, 1}));
    EXPECT_EQ(j().myservsmultid[1][1].deptime, at(8, 3));
    const TravelTime t = j().mytraveltimes[0];
    EXPECT_EQ(t.traelminint, 21);                 // 07:50 to 08:11:17
    EXPECT_EQ(t.waitminint, 3);                   // 2 minutes and the minute a change always adds
    EXPECT_EQ(t.travelstr, "21m");
    EXPECT_EQ(j().minzztraveltime, 21);
    EXPECT_EQ(j().maxzztraveltime, 21);

    // A leg that has no services empties every chain and every travel time.
    journey({"Westgate", "Yardley", "Zedbury", "Farley"});
    EXPECT_TRUE(j().myservsmultid[2].empty());
    EXPECT_TRUE(j().connectingservs.empty());
    EXPECT_TRUE(j().mytraveltimes.empty());
    EXPECT_EQ(j().minzztraveltime, -1);
    // The shown service of that leg and every later one is -1; the earlier legs still show.
        // No minimum wait for what is shown: the 08:02 follows the 08:00 arrival.
    EXPECT_EQ(j().myindexes, (std::vector<int>{0, 0, -1}));
    EXPECT_FALSE(j().caniextendtrip());
}

TEST_F(JourneyTest, ChangeStationUsesTheTruncatedDistanceAndCentralAsLastResort)
{
    // Aston and Brook share no line in travel order. Two common stations: Zeta Cross,
    // 3.9 km from Aston and 4.9 from Brook (3 + 4.9 = 7), and Kew, 4.5 and 4.3 (4 + 4.3 = 8).
    // Kew has the lower station number, so without the truncation the tie would pick it.
    const double km = 1.0 / 111.0;
    const QString aston = stop("Aston", 151.0, -33.0), brook = stop("Brook", 151.0, -33.0 - 8.8 * km),
                  zeta = stop("Zeta Cross", 151.0, -33.0 - 3.9 * km), kew = stop("Kew", 151.0, -33.0 - 4.5 * km),
                  central = stop("Central", 151.2, -33.88), x = stop("Xylo", 151.3, -33.5),
                  y = stop("Yarra", 151.3, -33.6);
    load({lineblock("One Line#Aston to Kew", aston + "," + zeta + "," + kew, {dayblock(kEvery, {"700,705,710,}"})}),
          lineblock("Two Line#Zeta Cross to Brook", zeta + "," + kew + "," + brook,
                    {dayblock(kEvery, {"720,725,730,}"})}),
          lineblock("Three Line#Yarra to Xylo", y + "," + x, {dayblock(kEvery, {"700,710,}"})}),
          lineblock("Four Line#Central", central, {dayblock(kEvery, {"700,}"})})},
         at(6, 0));

    Journey& jj = j();
    const auto candidates = jj.commonstnssortedbydistandcommon(
        "Aston", "Brook", jj.getstnsincommmon(jj.getlinesforthisstnrew("Aston"), jj.getlinesforthisstnrew("Brook")));
    ASSERT_EQ(candidates.size(), 2u);
    EXPECT_EQ(candidates[0].name, "Zeta Cross");
    EXPECT_EQ(candidates[0].dist, 7);
    EXPECT_EQ(candidates[1].dist, 8);
    EXPECT_EQ(jj.calcdist(0, 999), 11111111.0f);

    journey({"Aston", "Brook"});
    EXPECT_EQ(jj.myjournstr, (QStringList{"Aston", "Zeta Cross", "Brook"}));
    EXPECT_EQ(jj.mylinematches.size(), 2u);
    EXPECT_FALSE(jj.mylinematches[1].empty());

    // The only common stations are the leg's own: the hub is inserted, unless the leg
    // starts or ends there.
    journey({"Xylo", "Yarra"});
    EXPECT_EQ(jj.myjournstr, (QStringList{"Xylo", "Central", "Yarra"}));
    journey({"Central", "Yarra"});
    EXPECT_EQ(jj.myjournstr, (QStringList{"Central", "Yarra"}));
    // Two legs without a line: nothing is inserted.
    journey({"Xylo", "Yarra", "Aston"});
    EXPECT_EQ(jj.myjournstr, (QStringList{"Xylo", "Yarra", "Aston"}));
    // A leg from a station to itself matches every line through it.
    const auto self = jj.getlinematches("Kew", "Kew");
    ASSERT_EQ(self.size(), 2u);
    EXPECT_EQ(self[0].depint, self[0].destint);
}

TEST_F(JourneyTest, TheViewFollowsTheClockAndScrollingHasLimits)
{
    const QString a = stop("Alder", 151.0, -33.0), b = stop("Birch", 151.0, -33.1);
    load({lineblock("Tree Line#Alder to Birch", a + "," + b,
                    {dayblock(kEvery, {"800,810,}", "815,825,}", "830,840,}", "845,855,}", "900,910,}"})})},
         at(8, 5));
    journey({"Alder", "Birch"});
    EXPECT_EQ(shownDeparture(0), at(8, 15));
    EXPECT_EQ(j().myactualindex, 1);
    EXPECT_EQ(j().remstr, calctimediff(at(8, 5), at(8, 15)));
    EXPECT_EQ(timers.fireDate(app->calcremmytimer), at(8, 6));

    // At the moment the shown service leaves, the view moves on by itself.
    timers.advanceTo(at(8, 14, 59));
    EXPECT_EQ(shownDeparture(0), at(8, 15));
    timers.advanceTo(at(8, 15));
    EXPECT_EQ(shownDeparture(0), at(8, 30));
    EXPECT_EQ(j().myactualindex, 2);

    // The first leg cannot go back before now, nor to the first or last service.
    j().scrollthisindex(0, -1);
    EXPECT_EQ(j().myindexes[0], 2);
    j().scrollthisindex(0, 1);
    j().scrollthisindex(0, 1);
    EXPECT_EQ(j().myindexes[0], 4);
    EXPECT_EQ(j().needleontherecord, 0);
    // Scrolled away, the view stays put when services leave...
    timers.advanceTo(at(8, 31));
    EXPECT_EQ(j().myindexes[0], 4);
    EXPECT_EQ(j().myactualindex, 3);
    // ...until the user returns to now.
    j().gotonow();
    EXPECT_EQ(shownDeparture(0), at(8, 45));
    EXPECT_EQ(j().needleontherecord, 1);
    const int last = static_cast<int>(j().myservsmultid[0].size()) - 1;
    j().myindexes[0] = last - 1;
    j().myactualindex = 0;
    j().scrollthisindex(0, 1);
    EXPECT_EQ(j().myindexes[0], last - 1);
    j().myindexes[0] = 1;
    j().scrollthisindex(0, -1);
    EXPECT_EQ(j().myindexes[0], 1);
}

TEST_F(JourneyTest, FutureMomentIsUsedOnceAndKeepsTheLastChainInView)
{
    const QString a = stop("Alder", 151.0, -33.0), b = stop("Birch", 151.0, -33.1);
    load({lineblock("Tree Line#Alder to Birch", a + "," + b, {dayblock("1", {"800,810,}", "900,910,}"})})}, at(7, 0));
    journey({"Alder", "Birch"});
    Journey& jj = j();
    jj.myfuturetimes = {at(8, 30)};
    jj.setviewindexestocurrent();
    EXPECT_EQ(shownDeparture(0), at(9, 0));
    EXPECT_TRUE(jj.myfuturetimes.empty());
    jj.setviewindexestocurrent();
    EXPECT_EQ(shownDeparture(0), at(8, 0));
    // Later than the last chain's first departure: one minute before it.
    jj.myfuturetimes = {at(10, 0)};
    EXPECT_EQ(jj.usefutureoffsetifnecc(), at(8, 59));
    // In the past: ignored.
    jj.myfuturetimes = {at(6, 0)};
    EXPECT_EQ(jj.usefutureoffsetifnecc(), at(7, 0));
}

TEST_F(JourneyTest, ExtendingTheJourneyStopsAtSevenStations)
{
    const QString a = stop("Alder", 151.0, -33.0), b = stop("Birch", 151.0, -33.1);
    load({lineblock("Tree Line#Alder to Birch", a + "," + b, {dayblock(kEvery, {"800,810,}"})})}, at(7, 0));
    journey({"Alder"});
    EXPECT_TRUE(j().mylinematches.empty());
    EXPECT_TRUE(j().myservsmultid.empty());
    EXPECT_TRUE(j().caniextendtrip());
    for (int i = 0; i < 8; ++i)
        j().addtojourn("Birch");
    EXPECT_EQ(j().myjournstr.size(), 7);
    EXPECT_FALSE(j().caniextendtrip());
}

TEST_F(JourneyTest, ExtremeTimesAndCoordinatesReadAsTheirFallbacks)
{
    // Times past the 32-bit range (clamped by the reader) or no clock can show read as "does
    // not stop here"; the services around them are read as usual.
    const QString a = stop("Aston", 151.0, -33.0), b = stop("Brook", 151.0, -33.1);
    load({lineblock("Odd Line#Aston to Brook", a + "," + b,
                    {dayblock(kEvery, {"800,810,}", "-2147483648,820,}", "830,99999999999,}", "840,-5,}",
                                       "850,900,}"})}),
          // Aston and Brook also meet a line each through two candidate change stations:
          // Far Out lies on top of them by a broken coordinate, Near By is a real kilometre off.
          lineblock("One Line#Aston to Far Out", a + ",Far Out|1e10|1e999," + stop("Near By", 151.0, -33.01),
                    {dayblock(kEvery, {"700,705,710,}"})}),
          lineblock("Two Line#Far Out to Brook", "Far Out|1e10|1e999," + stop("Near By", 151.0, -33.01) + "," + b,
                    {dayblock(kEvery, {"720,725,730,}"})})},
         at(6, 0));
    journey({"Aston", "Brook"});
    std::vector<Date> departures;
    for (const Service& s : j().myservsmultid[0])
        if (s.deptime < at(12, 0))
            departures.push_back(s.deptime);
    EXPECT_EQ(departures, (std::vector<Date>{at(8, 0), at(8, 50)}));

    Journey& jj = j();
    const auto candidates = jj.commonstnssortedbydistandcommon(
        "Aston", "Brook", jj.getstnsincommmon(jj.getlinesforthisstnrew("Aston"), jj.getlinesforthisstnrew("Brook")));
    ASSERT_FALSE(candidates.empty());
    EXPECT_EQ(candidates.front().name, "Near By");
    for (const ChangeCandidate& c : candidates)
        EXPECT_GE(c.dist, 0);
}
