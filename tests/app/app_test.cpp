#include "app/appmodel.h"
#include "platform/system/manualtimers.h"
#include "platform/system/memorydefaults.h"
#include "platform/system/nullservices.h"
#include "util/dates.h"
#include "util/files.h"
#include "support/tables.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace quendle;

namespace {

class CountingLoginItems : public LoginItems {
public:
    bool launchOnLogin() const override { return on; }
    void setLaunchOnLogin(bool value) override
    {
        on = value;
        ++calls;
    }
    bool on = false;
    int calls = 0;
};

// Tuesday 24 November 2026, Sydney.
Date at(int h, int m, int s = 0) { return datefromcivil({2026, 11, 24, h, m, s}); }

// The whole start-up on the built-in table, in a throw-away home, with every outside
// service a double the test drives.
class AppTest : public ::testing::Test {
protected:
    std::unique_ptr<AppModel> start(Date now)
    {
        clock.set(now);
        platform.clock = &clock;
        platform.timers = &timers;
        platform.defaults = &defaults;
        platform.loginItems = &login;
        platform.session = &session;
        platform.window = &window;
        platform.homeDir = home.path();
        auto app = std::make_unique<AppModel>(platform, AppModel::Options{false});
        app->initWithFrame();
        app->awakeFromNib();
        return app;
    }
    Date shownDeparture(AppModel& app)
    {
        const Journey& j = app.journey();
        return j.myservsmultid[0][j.myindexes[0]].deptime;
    }

    QTemporaryDir home;
    ManualClock clock;
    ManualTimers timers{clock};
    MemoryDefaults defaults;
    CountingLoginItems login;
    NullSession session;
    NullWindowHost window;
    Platform platform;
};

} // namespace

TEST_F(AppTest, TheLoginItemIsRegisteredOnTheFirstRunOnly)
{
    start(at(8, 0));
    EXPECT_TRUE(login.on);
    EXPECT_EQ(login.calls, 1);
    EXPECT_EQ(defaults.stringForKey("runinitialsetup"), "1");
    // The user removes it; the next start leaves it removed.
    login.on = false;
    start(at(9, 0));
    EXPECT_FALSE(login.on);
    EXPECT_EQ(login.calls, 1);
}

TEST_F(AppTest, StartUpShowsTheDefaultJourneyAndTicksOnWholeMinutes)
{
    auto app = start(at(8, 5, 40));
    const Journey& j = app->journey();
    EXPECT_EQ(j.myjournstr, (QStringList{"Bondi Junction", "Edgecliff"}));
    ASSERT_FALSE(j.myservsmultid.empty());
    EXPECT_FALSE(j.myservsmultid[0].empty());
    EXPECT_GT(shownDeparture(*app), at(8, 5, 40));
    // Made 700 × 200 at first, then sized to the one-leg journey with its top edge kept.
    EXPECT_EQ(window.frame().w, 620);
    EXPECT_EQ(window.frame().h, 75);
    EXPECT_EQ(window.frame().y + window.frame().h, 200);
    EXPECT_EQ(app->lumdebug, 0);
    EXPECT_EQ(civilfromdate(app->mylastupdateray.at(0)).day, civilfromdate(adddaystodate(at(8, 5, 40), -165)).day);

    // The minute timer fires at 08:06:00 and re-arms itself for the next whole minute,
    // every minute, whatever second the program started at.
    EXPECT_EQ(timers.fireDate(app->calcremmytimer), at(8, 6));
    for (int minute = 6; minute <= 20; ++minute) {
        timers.advanceTo(at(8, minute));
        EXPECT_EQ(timers.fireDate(app->calcremmytimer), at(8, minute + 1));
    }
    // Placeholder timers wait for their fire dates; the seven-second one has fired once.
    EXPECT_GT(timers.fireDate(app->zoomintimer), at(9, 0));
    EXPECT_FALSE(timers.isValid(app->fivesecsafterlaunchtimer));
    // The last update counts as 165 days old, so the first update check ran at once; with
    // no network it recorded nothing and waits an hour for the next.
    EXPECT_EQ(app->runupdatesincelaunch, 1);
    EXPECT_EQ(timers.fireDate(app->updatetimer), at(9, 5, 40));
}

TEST_F(AppTest, WakeReturnsToNowAndDeactivationZoomsBackIn)
{
    auto app = start(at(8, 0));
    // Asleep for three hours: no timer ran, so the view still shows the morning.
    clock.set(at(11, 0));
    EXPECT_LT(shownDeparture(*app), at(11, 0));
    session.wake();
    EXPECT_GT(shownDeparture(*app), at(11, 0));
    EXPECT_EQ(app->journey().needleontherecord, 1);

    app->view().zoomed = 0;
    session.activate();
    EXPECT_EQ(app->view().imfocusd, 1);
    session.resign();
    EXPECT_EQ(app->view().imfocusd, 0);
    EXPECT_EQ(app->view().zoomed, 1);
    EXPECT_EQ(timers.fireDate(app->zoomintimer), at(11, 0).plusSeconds(31536000));
}

TEST_F(AppTest, FoldersQuitMarkerAndPublisherMode)
{
    auto app = start(at(8, 0));
    const Folders& f = app->folders();
    EXPECT_EQ(f.getprefsfold(), home.path() + "/Library/Preferences/quendlefddffdrterXAXAXA/");
    EXPECT_TRUE(QDir(f.gettablesfold()).exists());
    EXPECT_TRUE(lumexist(f.gettablesfold() + "/SydneyTrains.vq"));

    // With or without a trailing "/", the same folder; an existing one is no error.
    EXPECT_TRUE(AppModel::lummakedir(home.path() + "/made/"));
    EXPECT_TRUE(QDir(home.path() + "/made").exists());
    EXPECT_TRUE(AppModel::lummakedir(home.path() + "/made"));
    EXPECT_TRUE(AppModel::lummakedir(home.path() + "/no/such/parent"));
    EXPECT_FALSE(QDir(home.path() + "/no").exists());

    app->quitapp();
    EXPECT_EQ(readfile(f.getcrashfile()), "zb");

    EXPECT_FALSE(app->amizorb());
    QDir().mkpath(QFileInfo(f.publishermarker()).path());
    writefile("", QFileInfo(f.publishermarker()).path() + "/", QFileInfo(f.publishermarker()).fileName());
    EXPECT_TRUE(app->amizorb());
    writefile("program", home.path() + "/", "quendle-binary");
    platform.executablePath = home.path() + "/quendle-binary";
    app->lumbuildfold();
    EXPECT_EQ(readfile(f.publisherbuildfold()), "program");
    // A second build replaces the old copy rather than failing on it.
    QFile::remove(home.path() + "/quendle-binary");
    writefile("program 2", home.path() + "/", "quendle-binary");
    app->lumbuildfold();
    EXPECT_EQ(readfile(f.publisherbuildfold()), "program 2");
}

TEST_F(AppTest, WithNoServiceLeftInTheWindowTheStripIdles)
{
    // Monday to Thursday only: on a Thursday night nothing runs before Monday, outside the
    // three days searched, so the view keeps the last service, which has left.
    const QString tables = home.path() + "/Library/Preferences/quendlefddffdrterXAXAXA/tablesverified";
    QDir().mkpath(tables);
    using namespace quendle::fixtures;
    const QString stops = "Bondi Junction|151.25|-33.89,Edgecliff|151.23|-33.88";
    fixtures::writeto(tables, "SydneyTrains.vq",
                      table("1 January 2100 1:00:00 AM",
                            {lineblock("Weekday#Bondi Junction to Edgecliff", stops,
                                       {dayblock("1234", {"2200,2204,}", "2300,2304,}"})}),
                             lineblock("Weekday#Edgecliff to Bondi Junction",
                                       "Edgecliff|151.23|-33.88,Bondi Junction|151.25|-33.89",
                                       {dayblock("1234", {"2210,2214,}"})})}));
    // Thursday 26 November 2026, 23:30.
    auto app = start(at(23, 30).plusSeconds(2 * 86400));
    const Journey& j = app->journey();
    ASSERT_EQ(j.myservsmultid.size(), 1u);
    ASSERT_EQ(j.myservsmultid[0].size(), 2u);
    EXPECT_EQ(j.myindexes, std::vector<int>{1});   // the 23:00 service, gone

    // Ten minutes: the two minute timers tick, nothing else runs over and over.
    const int callbacks = timers.advanceBy(600);
    EXPECT_LE(callbacks, 30);
    EXPECT_EQ(j.myindexes, std::vector<int>{1});
}
