#include "fixture.h"

#include <QFile>

using namespace quendle;
using namespace quendle::testsupport;

TEST_F(UserStateTest, TheFileAndTheThreeKeysHoldEveryPieceInTheirExactForm)
{
    start(at(8, 0));
    u().myfavs = {{"Central", 3}, {"Edgecliff", 1}};
    u().writethisbookmark({"Central", "Strathfield"});
    u().writethisbookmark({"Hornsby", "Epping"});
    const int syncs = defaults.synchronizeCount();
    u().writeprefs();
    EXPECT_EQ(defaults.synchronizeCount(), syncs + 3);   // one flush per key
    EXPECT_EQ(defaults.stringForKey("journstrpref"), "Bondi Junction|Edgecliff|");
    EXPECT_EQ(defaults.stringForKey("myfavsspref"), "Central|3#Edgecliff|1#");
    EXPECT_EQ(defaults.stringForKey("bookmarkspref"), "Central|Strathfield#Hornsby|Epping");
    const QString updated = lumdatetostr(adddaystodate(at(8, 0), -165));   // never updated
    const QString size = QString::asprintf("%f|%f", window.frame().w, window.frame().h);
    EXPECT_EQ(prefsfile().toStdString(),
              ("Bondi Junction|Edgecliff|\n\n]favourites[Central|3#Edgecliff|1#]favourites[\n"
               "]bookmarks[Central|Strathfield#Hornsby|Epping]bookmarks[\n]dateimlookinat["
               + lumdatetostr(shown()) + "]dateimlookinat[\n]updatestr[" + updated + "]updatestr[\n]mysize[" + size
               + "]mysize[")
                  .toStdString());
    EXPECT_NE(window.frame().w, 0);

    // Three alarms: only the first is saved, on its own line before the update date.
    u().myalarms = {{at(9, 30, 40), "Bondi Junction", "Edgecliff", 20},
                    {at(10, 0), "Central", "Redfern", 5},
                    {at(11, 0), "Hornsby", "Epping", 7}};
    u().writeprefs();
    QStringList lines = prefsfile().split('\n');
    ASSERT_EQ(lines.size(), 8);
    EXPECT_EQ(lines[5], "]myalarm[Bondi Junction#Edgecliff#9|30|0|24|11|2026#20]myalarm[");
    EXPECT_EQ(prefsfile().count("]myalarm["), 2);

    // No services shown, no update on record: empty instant, and 165 days before this save.
    clock.set(at(20, 0));
    app->mylastupdateray.clear();
    u().myalarms.clear();
    j().myjournstr = {"Central"};
    app->calctripoptimizelater();
    lines = prefsfile().split('\n');
    ASSERT_EQ(lines.size(), 7);
    EXPECT_EQ(lines[0], "Central|");
    EXPECT_EQ(lines[4], "]dateimlookinat[]dateimlookinat[");
    EXPECT_EQ(lines[5], "]updatestr[" + lumdatetostr(adddaystodate(at(20, 0), -165)) + "]updatestr[");
}

TEST_F(UserStateTest, ASaveBeforeTheFirstReadWritesNothing)
{
    defaults.setString("journstrpref", "Central|Strathfield|");
    platform.clock = &clock;
    platform.timers = &timers;
    platform.defaults = &defaults;
    platform.homeDir = home.path();
    AppModel fresh(platform, AppModel::Options{true});
    fresh.writeprefs();
    EXPECT_EQ(fresh.userstate().ivereadprefs, 0);
    EXPECT_FALSE(fresh.userstate().lastsaveok());
    EXPECT_EQ(defaults.keys(), QStringList{"journstrpref"});
    EXPECT_EQ(defaults.stringForKey("journstrpref"), "Central|Strathfield|");
    EXPECT_EQ(defaults.synchronizeCount(), 0);
    EXPECT_FALSE(QFile::exists(fresh.userstate().getprefspath()));
}

TEST_F(UserStateTest, StartUpRestoresTheJourneyBookmarksAndFavouritesFromTheDefaults)
{
    // Nothing saved yet: the default journey, no bookmarks or favourites.
    start(at(8, 0));
    EXPECT_EQ(j().myjournstr, (QStringList{"Bondi Junction", "Edgecliff"}));
    EXPECT_TRUE(u().mybookmarks.empty());
    EXPECT_TRUE(u().myfavs.empty());
    EXPECT_EQ(u().ivereadprefs, 1);

    // A station the tables no longer know is left out of the journey; a bookmark naming
    // one is kept but never offered; favourites come back sorted by name.
    defaults.setString("journstrpref", "Central|Old Station|Strathfield|");
    defaults.setString("myfavsspref", "Strathfield|2#Central|5#Epping|1#");
    defaults.setString("bookmarkspref", "Hornsby|Epping#Redfern|Atlantis");
    start(at(8, 0));
    EXPECT_EQ(j().myjournstr, (QStringList{"Central", "Strathfield"}));
    EXPECT_EQ(favnames(u().myfavstoshow), (QStringList{"Central", "Epping", "Strathfield"}));
    ASSERT_EQ(u().mybookmarks.size(), 2u);
    EXPECT_EQ(u().mybookmarks[1].substns, (QStringList{"Redfern", "Atlantis"}));
    EXPECT_TRUE(u().isthisavalidbookmark(0));
    EXPECT_FALSE(u().isthisavalidbookmark(1));
    EXPECT_FALSE(u().chekbookmark("Redfern"));
    // The start-up saved what it read; the next start reads the same back.
    const QString saved = prefsfile();
    start(at(8, 0));
    EXPECT_EQ(j().myjournstr, (QStringList{"Central", "Strathfield"}));
    EXPECT_EQ(u().mybookmarks.size(), 2u);
    EXPECT_EQ(u().myfavs.size(), 3u);
    EXPECT_EQ(prefsfile(), saved);
}

TEST_F(UserStateTest, TheFileReaderKeepsItsOwnReadings)
{
    start(at(8, 0));
    u().myfavs.clear();
    j().myfuturetimes.clear();
    writefile("Central|Strathfield|\n\n]favourites[Strathfield|2#Central|5#]favourites[\n"
              "]bookmarks[Hornsby|Epping#Central|Redfern]bookmarks[\n"
              "]dateimlookinat[9|15|0|24|11|2026]dateimlookinat[\n"
              "]myalarm[Central#Strathfield#10|5|0|24|11|2026#20]myalarm[\n"
              "]updatestr[6|30|0|8|3|2026]updatestr[\n]mysize[600.000000|70.000000]mysize[",
              app->folders().getprefsfold(), "quendlepref.txt");
    u().readprefsold();
    EXPECT_EQ(j().myjournstr, (QStringList{"Central", "Strathfield"}));
    // The markers stay on the outer names until the cleaning takes them off.
    ASSERT_EQ(u().mybookmarks.size(), 2u);
    EXPECT_EQ(u().mybookmarks[0].substns, (QStringList{"Hornsby", "Epping"}));
    EXPECT_EQ(u().mybookmarks[1].substns, (QStringList{"Central", "Redfern"}));
    EXPECT_EQ(favnames(u().myfavstoshow), (QStringList{"Central", "Strathfield"}));
    EXPECT_EQ(j().myfuturetimes, std::vector<Date>{at(9, 15)});
    ASSERT_EQ(app->mylastupdateray.size(), 1u);
    EXPECT_EQ(app->mylastupdateray[0], datefromcivil({2026, 3, 8, 6, 30, 0}));
    // The advance is read from the date's hour (10), not from the saved 20 minutes.
    ASSERT_EQ(u().myalarms.size(), 1u);
    EXPECT_EQ(u().myalarms[0].advancemins, 10);
    EXPECT_EQ(timers.fireDate(u().alarmtimer), at(9, 55));

    // No file: the alert, then a file written from the state in memory.
    QFile::remove(u().getprefspath());
    u().readprefsold();
    ASSERT_GE(alerts.count(), 1);
    EXPECT_EQ(alerts.shown().back().message, "writinnewpref");
    EXPECT_TRUE(prefsfile().startsWith("Central|Strathfield|\n\n"));
}

TEST_F(UserStateTest, ChoosingStationsCutsTheJourneyLoadsAndReplacesBookmarks)
{
    start(at(8, 0));
    // Picking at position 1 keeps the first station, drops the rest and recalculates.
    j().myjournstr = {"Central", "Redfern", "Strathfield"};
    u().myselec("Town Hall#1");
    EXPECT_EQ(j().myjournstr.mid(0, 1), QStringList{"Central"});
    EXPECT_EQ(j().myjournstr.back(), "Town Hall");
    EXPECT_EQ(static_cast<int>(j().mylinematches.size()), j().myjournstr.size() - 1);

    // Picking at 0 saves the journey as a bookmark and loads the one headed there.
    u().mybookmarks.clear();
    u().writethisbookmark({"Hornsby", "Epping", "Strathfield"});
    j().myjournstr = {"Central", "Redfern"};
    u().myselec("Hornsby#0");
    EXPECT_EQ(j().myjournstr, (QStringList{"Hornsby", "Epping", "Strathfield"}));
    ASSERT_EQ(u().mybookmarks.size(), 2u);
    EXPECT_EQ(u().mybookmarks[1].markheader, "Central");
    EXPECT_EQ(defaults.stringForKey("journstrpref"), "Hornsby|Epping|Strathfield|");

    // Saving a journey headed by a bookmarked station replaces that bookmark at the end.
    u().writethisbookmark({"Hornsby", "Gordon"});
    ASSERT_EQ(u().mybookmarks.size(), 2u);
    EXPECT_EQ(u().mybookmarks[0].markheader, "Central");
    EXPECT_EQ(u().mybookmarks[1].substns, (QStringList{"Hornsby", "Gordon"}));

    // No bookmark headed there: the journey becomes that one station.
    u().myselec("Redfern#0");
    EXPECT_EQ(j().myjournstr, QStringList{"Redfern"});

    // A bookmark gives up to eight stations, one more than a journey entered by hand.
    const QStringList nine = {"Central", "Redfern", "Erskineville", "St Peters", "Sydenham",
                              "Tempe", "Wolli Creek", "Arncliffe", "Banksia"};
    u().writethisbookmark(nine);
    EXPECT_TRUE(u().chekbookmark("Central"));
    EXPECT_EQ(j().myjournstr, nine.mid(0, 8));

    EXPECT_EQ(UserState::makestnsvalid({"Central", "central", "St Marys", "]bookmarks[Epping"}),
              (QStringList{"Central", "", "St Marys", "Epping"}));
    // A name without a capitalised word cleans to "": the bookmark is kept, never valid.
    u().writethisbookmark({"central", "Redfern"});
    EXPECT_EQ(u().mybookmarks.back().markheader, "");
    EXPECT_FALSE(u().isthisavalidbookmark(static_cast<int>(u().mybookmarks.size()) - 1));
    EXPECT_FALSE(u().chekbookmark(""));
}

TEST_F(UserStateTest, FavouritesCountChoicesAndTheLeastChosenAreOffered)
{
    start(at(8, 0));
    u().myfavs.clear();
    for (int i = 0; i < 3; ++i)
        u().addtofavcount("Central");
    ASSERT_EQ(u().myfavs.size(), 1u);
    EXPECT_EQ(u().myfavs[0].score, 3);

    const QStringList others = {"Wynyard", "Redfern", "Strathfield", "Hornsby", "Epping", "Gordon",
                                "Lidcombe", "Burwood", "Ashfield", "Newtown", "Town Hall", "Kogarah"};
    for (const QString& s : others)
        u().addtofavcount(s);
    u().addtofavcount("Wynyard");
    // Thirteen favourites; the eleven with the lowest counts are offered, by name.
    EXPECT_EQ(u().myfavs.size(), 13u);
    QStringList expected = others;
    expected.removeAll("Wynyard");
    std::sort(expected.begin(), expected.end());
    expected = expected.mid(0, 11);
    EXPECT_EQ(favnames(u().myfavstoshow), expected);

    EXPECT_EQ(UserState::abbreviatejurnifnecc("Strathfield"), "Strathfield");
    EXPECT_EQ(UserState::abbreviatejurnifnecc("Wolli Creekk"), "Wolli Creekk");
    EXPECT_EQ(UserState::abbreviatejurnifnecc("Bondi Junction"), "Bondi Junct.");
    EXPECT_EQ(window.statusTitle().left(12), "Bondi Junct.");
}
