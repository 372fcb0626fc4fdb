#include "app/menus.h"
#include "support/scripted_alerts.h"
#include "support/strip_fixture.h"
#include "util/dates.h"
#include "util/files.h"

#include <gtest/gtest.h>

using namespace quendle;

namespace {

// Tuesday 24 November 2026, Sydney.
Date at(int h, int m, int s = 0) { return datefromcivil({2026, 11, 24, h, m, s}); }

QStringList titles(const Menu& m)
{
    QStringList out;
    for (const MenuItem& i : m)
        out << (i.separator ? QStringLiteral("---") : i.title);
    return out;
}

const MenuItem* find(const Menu& m, const QString& title)
{
    for (const MenuItem& i : m)
        if (i.title == title)
            return &i;
    return nullptr;
}

class MenusTest : public testsupport::StripFixture {
protected:
    Menus& begin(const QStringList& journey, Date now = at(8, 5, 40))
    {
        platform.alerts = &alerts;
        platform.browser = &browser;
        start(journey, now);
        menus = std::make_unique<Menus>(*app);
        return *menus;
    }

    testsupport::ScriptedAlerts alerts;
    NullBrowser browser;
    std::unique_ptr<Menus> menus;
};

} // namespace

// The icon table as the status item maps numbers onto it: rows 5 to 11 are never chosen,
// an alarm alone shows row 4, 12 to 15 are the waves and anything past 15 is row 0.
TEST_F(MenusTest, StatusIconMapping)
{
    begin({"Central", "Strathfield"});
    Display& d = app->display();
    const int plain[] = {0, 1, 2, 3, 4, 0, 0, 0, 0, 0, 0, 0, 12, 13, 14, 15, 0, 0};
    const int alarmed[] = {4, 1, 2, 3, 4, 4, 4, 4, 4, 4, 4, 4, 12, 13, 14, 15, 0, 0};
    for (int k = 0; k < 18; ++k)
        EXPECT_EQ(d.statusiconrow(k), plain[k]) << k;
    app->userstate().addalarm(10);
    ASSERT_TRUE(app->userstate().doigotalarm());
    for (int k = 0; k < 18; ++k)
        EXPECT_EQ(d.statusiconrow(k), alarmed[k]) << k;

    d.refreshstat("Central 9m", 0, 0);
    EXPECT_EQ(window.status().iconName, "serviceinterrup");
    EXPECT_EQ(window.status().cls, "alarm");
    d.refreshstat("Central 9m", 0, 2);
    EXPECT_EQ(window.status().iconName, "trakw");
    EXPECT_EQ(window.status().cls, "trackwork");
    app->userstate().removealarm();
    d.refreshstat("Central 9m", 0, 1);
    EXPECT_EQ(window.status().cls, "trackwork-upcoming");
    d.refreshstat("3ft", 0, 13);
    EXPECT_EQ(window.status().iconName, "wavelo");
    EXPECT_EQ(window.status().cls, "normal");
}

// The title is the first station, shortened, and the time left; the tray's badge counts
// the same minutes. An empty journey leaves the item as it was.
TEST_F(MenusTest, StatusTitleBadgeAndTheEmptyJourney)
{
    begin({"Bondi Junction", "Edgecliff"});
    const Service& s = shown(0);
    const int left = calctimediffint(clock.now(), addminstodate(s.deptime, 1));
    ASSERT_LT(left, 100);
    EXPECT_EQ(window.status().title, "Bondi Junct. " + QString::number(left) + "m");
    EXPECT_EQ(window.status().badge, QString::number(left));
    EXPECT_TRUE(window.status().tooltip.startsWith(window.status().title + "\nBondi Junction → Edgecliff\n"));

    clock.set(addminstodate(s.deptime, -150));
    app->refreshdisplay();
    EXPECT_EQ(window.status().badge, "2h");

    const StatusShown before = window.status();
    const int sets = window.statusSets();
    j().myjournstr.clear();
    app->refreshdisplay();
    EXPECT_EQ(window.statusSets(), sets);
    EXPECT_EQ(app->display().statusitem, before);
}

// Favourites first, the spacer, then every station in table order, each carrying its
// name and the row the menu was opened for.
TEST_F(MenusTest, StationMenuOrderAndRepresentedObjects)
{
    Menus& m = begin({"Central", "Strathfield"});
    UserState& u = app->userstate();
    u.myfavstoshow = {{"Hornsby", 3}, {"Wynyard", 1}};
    const Menu menu = m.dostnsmenu(1);
    const auto& stations = app->timetable().stnsmute;
    ASSERT_EQ(menu.size(), 2 + 1 + stations.size());
    EXPECT_EQ(menu[0].representedObject, "Hornsby#1");
    EXPECT_EQ(menu[1].representedObject, "Wynyard#1");
    EXPECT_EQ(menu[2].title, "  ");
    EXPECT_TRUE(menu[2].representedObject.isEmpty());
    for (size_t i = 0; i < stations.size(); ++i) {
        ASSERT_EQ(menu[3 + i].title, stations[i].name);
        ASSERT_EQ(menu[3 + i].representedObject, stations[i].name + "#1");
    }

    // Row 1 replaces the second station (the rest goes); a row past the end appends.
    find(menu, "Hornsby")->action();
    EXPECT_EQ(j().myjournstr, (QStringList{"Central", "Hornsby"}));
    find(m.dostnsmenu(2), "Gordon")->action();
    EXPECT_EQ(j().myjournstr, (QStringList{"Central", "Hornsby", "Gordon"}));
    EXPECT_EQ(window.status().title.left(8), "Central ");
}

// Choosing the first row's station keeps the journey as a bookmark and, when a bookmark
// begins there, brings that bookmark back instead of changing the journey.
TEST_F(MenusTest, FirstRowChoiceLoadsAMatchingBookmark)
{
    Menus& m = begin({"Central", "Strathfield"});
    UserState& u = app->userstate();
    u.writethisbookmark({"Hornsby", "Gordon", "Chatswood"});
    find(m.dostnsmenu(0), "Hornsby")->action();
    EXPECT_EQ(j().myjournstr, (QStringList{"Hornsby", "Gordon", "Chatswood"}));
    ASSERT_FALSE(u.mybookmarks.empty());
    EXPECT_TRUE(std::any_of(u.mybookmarks.begin(), u.mybookmarks.end(), [](const Bookmark& b) {
        return b.substns == QStringList{"Central", "Strathfield"};
    }));

    // Without a bookmark the first station is replaced and the journey starts over.
    find(m.dostnsmenu(0), "Wynyard")->action();
    EXPECT_EQ(j().myjournstr, QStringList{"Wynyard"});
}

TEST_F(MenusTest, JourneyMenuItemsAndActions)
{
    Menus& m = begin({"Central", "Strathfield"});
    Menu menu = m.dojourneymenu();
    const QStringList normal = {"Donate", "Search", "---", "Add Alarm", "Alarm 10 min Before This Service",
                                "Alarm Panel on the Strip…", "Map Beside the Overview", "Trackwork Panel",
                                "Stops of This Service…", "Recalculate the Journey", "---", "Quit Quendle"};
    EXPECT_EQ(titles(menu), normal);
    const MenuItem* search = find(menu, "Search");
    ASSERT_EQ(search->submenu.size(), app->timetable().mytables.size());
    EXPECT_EQ(search->submenu[0].title, app->timetable().gettabledateandname(0));

    find(menu, "Donate")->action();
    EXPECT_EQ(browser.opened(), QStringList{Menus::kDonateUrl});
    defaults.setString("donateurl", "https://example.org/give");
    find(menu, "Donate")->action();
    EXPECT_EQ(browser.opened().value(1), "https://example.org/give");

    find(menu, "Map Beside the Overview")->action();
    EXPECT_EQ(app->view().showinmap, 0);
    EXPECT_FALSE(find(m.dojourneymenu(), "Map Beside the Overview")->checked);

    find(menu, "Stops of This Service…")->action();
    ASSERT_EQ(alerts.count(), 1);
    EXPECT_EQ(alerts.shown()[0].message, app->display().getstopsstr());

    // The alarm: ten minutes before, then removed again (for good: the preferences file
    // forgets it too); the minutes dialog only chooses the minutes.
    app->setsavestate(true);
    auto savedalarm = [this] { return readfile(app->userstate().getprefspath()).contains("]myalarm["); };
    find(menu, "Alarm 10 min Before This Service")->action();
    EXPECT_TRUE(savedalarm());
    ASSERT_TRUE(app->userstate().doigotalarm());
    EXPECT_EQ(app->userstate().myalarms[0].advancemins, 10);
    EXPECT_EQ(window.status().cls, "alarm");
    menu = m.dojourneymenu();
    EXPECT_FALSE(find(menu, "Add Alarm"));
    find(menu, "Remove Alarm")->action();
    EXPECT_FALSE(app->userstate().doigotalarm());
    EXPECT_FALSE(savedalarm());
    EXPECT_EQ(window.status().cls, "normal");
    alerts.answer("OK");
    find(m.dojourneymenu(), "Add Alarm")->action();
    EXPECT_FALSE(app->userstate().doigotalarm());

    // The strip's alarm panel: opened zoomed out, set with its minutes, closed zoomed in.
    find(m.dojourneymenu(), "Alarm Panel on the Strip…")->action();
    EXPECT_EQ(app->view().inalarmscreen, 1);
    EXPECT_EQ(app->view().zoomed, 0);
    app->userstate().alarmdefaultmins = 7;
    find(m.dojourneymenu(), "Set Alarm 7 min Before")->action();
    EXPECT_EQ(app->view().inalarmscreen, 0);
    EXPECT_EQ(app->view().zoomed, 1);
    ASSERT_TRUE(app->userstate().doigotalarm());
    EXPECT_EQ(app->userstate().myalarms[0].advancemins, 7);

    find(menu, "Quit Quendle")->action();
    EXPECT_TRUE(window.quitRequested());

    // Diagnostic mode lists the journey's stations (and "then") with their station
    // menus, and the tables; the status menu leads with the strip.
    app->lumdebug = 1;
    menu = m.dojourneymenu();
    EXPECT_EQ(titles(menu).mid(0, 3), (QStringList{"Central", "Strathfield", "then"}));
    EXPECT_EQ(menu[2].submenu.back().representedObject, app->timetable().stnsmute.back().name + "#2");
    EXPECT_EQ(titles(m.statusmenu()).value(0), "Show Quendle");

    // One station: no alarm to offer.
    begin({"Central"});
    EXPECT_FALSE(find(menus->dojourneymenu(), "Add Alarm"));
}
