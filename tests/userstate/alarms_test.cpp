#include "fixture.h"

#include "util/durations.h"

#include <QFile>

using namespace quendle;
using namespace quendle::testsupport;

TEST_F(UserStateTest, AnAlarmFiresItsMinutesBeforeDepartureOnTheWholeMinuteAndIsSpokenAsText)
{
    start(at(8, 0));
    u().addalarmwithtstuff("Bondi Junction", "Edgecliff", 20, at(8, 30, 40));
    EXPECT_EQ(timers.fireDate(u().alarmtimer), at(8, 10));
    EXPECT_TRUE(prefsfile().contains("\n]myalarm[Bondi Junction#Edgecliff#8|30|0|24|11|2026#20]myalarm[\n"));

    // A second alarm replaces the first, whose moment then passes quietly. The names go
    // to the speech service as they stand, whatever they hold.
    const QString odd = "\"Quoted\" $(touch pwned) `id` it's";
    u().addalarmwithtstuff("-rf Central", odd, 5, at(8, 40));
    ASSERT_EQ(u().myalarms.size(), 1u);
    timers.advanceTo(at(8, 34, 59));
    EXPECT_TRUE(speech.said.isEmpty());
    const int shownBefore = alerts.count();
    timers.advanceTo(at(8, 35));
    const QString sentence = "-rf Central to " + odd + " is leaving in " + calctimediffabbrev(at(8, 35), at(8, 40), 0) + ".";
    EXPECT_EQ(speech.said.join("\n").toStdString(), sentence.toStdString());
    ASSERT_EQ(alerts.count(), shownBefore + 1);
    EXPECT_EQ(alerts.shown().back().message, sentence);
    EXPECT_FALSE(u().doigotalarm());
    EXPECT_FALSE(prefsfile().contains("]myalarm["));
    EXPECT_FALSE(QFile::exists(home.path() + "/pwned"));

    // A departure already gone is refused, and the preferences are written all the same.
    const int syncs = defaults.synchronizeCount();
    u().addalarmwithtstuff("Central", "Redfern", 5, at(8, 34));
    EXPECT_FALSE(u().doigotalarm());
    EXPECT_EQ(defaults.synchronizeCount(), syncs + 3);
    timers.advanceTo(at(9, 0));
    EXPECT_EQ(speech.said.size(), 1);
}

TEST_F(UserStateTest, WakeDropsAnAlarmOnlyOnceItsDepartureHasPassed)
{
    start(at(8, 0));
    u().addalarmwithtstuff("Bondi Junction", "Edgecliff", 20, at(8, 30));
    clock.set(at(8, 20));   // asleep through the reminder, awake before the train
    session.wake();
    EXPECT_TRUE(u().doigotalarm());
    clock.set(at(8, 30, 1));
    session.wake();
    EXPECT_FALSE(u().doigotalarm());
    EXPECT_FALSE(timers.isValid(u().alarmtimer));
    timers.advanceTo(at(9, 0));
    EXPECT_TRUE(speech.said.isEmpty());
}

TEST_F(UserStateTest, TheAlarmMinutesStayBetweenOneAndTheTimeLeft)
{
    start(at(8, 0));
    const Date departure = shown();
    clock.set(departure.plusSeconds(-12 * 60));   // 12 minutes left
    u().alarmdefaultmins = 10;
    app->addminstoalarm(5);
    EXPECT_EQ(u().alarmdefaultmins, 10);   // 15 is not below 12
    app->addminstoalarm(1);
    EXPECT_EQ(u().alarmdefaultmins, 11);
    u().alarmdefaultmins = 1;
    app->addminstoalarm(-5);
    EXPECT_EQ(u().alarmdefaultmins, 1);
    // The step key reaches the minutes while the alarm screen is open.
    u().alarmdefaultmins = 5;
    app->view().inalarmscreen = 1;
    j().stepforward();
    EXPECT_EQ(u().alarmdefaultmins, 10);

    // Leaving the alarm screen sets the alarm for the shown service.
    app->view().inalarmscreen = 0;
    EXPECT_EQ(u().getalarmstr(), "Add Alarm");
    u().showalarmscreenol();
    EXPECT_EQ(app->view().inalarmscreen, 1);
    u().showalarmscreenol();
    EXPECT_EQ(app->view().inalarmscreen, 0);
    ASSERT_TRUE(u().doigotalarm());
    EXPECT_EQ(u().myalarms[0].date, departure);
    EXPECT_EQ(u().myalarms[0].advancemins, 10);
    EXPECT_EQ(u().getalarmstr(), "Remove Alarm");
    u().myalarmaction();
    EXPECT_FALSE(u().doigotalarm());

    // One station, no legs: no alarm is offered.
    j().myjournstr = {"Central"};
    EXPECT_EQ(u().getalarmstr(), "");
    u().showalarmscreenol();
    EXPECT_EQ(app->view().inalarmscreen, 0);
}

TEST_F(UserStateTest, TheMinutesDialogCountsAPressOnlyOnTheRunThatTestsThatButton)
{
    start(at(8, 0));
    const QStringList buttons = {"OK", "10", "-10", "Cancel"};
    auto open = [&](std::initializer_list<int> presses) {
        for (int p : presses)
            alerts.answer(p);
        const int before = alerts.count();
        u().myalarmaction();
        EXPECT_FALSE(alerts.answersLeft());
        return alerts.count() - before;
    };
    // "10" twice counts, then "OK" takes the raised minutes.
    EXPECT_EQ(open({1, 1, 0}), 3);
    EXPECT_EQ(u().alarmdefaultmins, 30);
    EXPECT_EQ(alerts.shown().back().message, "me 20 min before service leaves");
    EXPECT_EQ(alerts.shown().back().buttons, buttons);
    // "10" on the first run is not counted when the second run gets something else.
    EXPECT_EQ(open({1, 0, 3}), 3);
    EXPECT_EQ(u().alarmdefaultmins, 30);
    // "-10" counts on the third run, and "OK" then restores the minutes the dialog began with.
    EXPECT_EQ(open({2, 2, 2, 0}), 4);
    EXPECT_EQ(alerts.shown().back().message, "me 20 min before service leaves");
    EXPECT_EQ(u().alarmdefaultmins, 30);
    EXPECT_FALSE(u().doigotalarm());
}
