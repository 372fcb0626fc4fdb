#include "platform/system/manualtimers.h"
#include "platform/system/qttimers.h"
#include "platform/system/systemclock.h"
#include "support/test_env.h"
#include "util/dates.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QThread>

#include <gtest/gtest.h>

#include <cmath>
#include <optional>
#include <ctime>
#include <vector>

using namespace quendle;
using namespace quendle::testsupport;

namespace {

constexpr double kNever = 6000000000000000.0;   // the placeholder intervals owners use
constexpr double kAlmostNever = 600000000.0;

// 2014-03-09T17:04:50+11:00
const Date kStart{1394345090};

} // namespace

TEST(ManualTimers, FireInFireDateOrderAtTheirFireDates)
{
    ManualClock clock(kStart);
    ManualTimers timers(clock);
    std::vector<std::pair<char, double>> log;
    auto note = [&](char c) { return [&, c] { log.emplace_back(c, clock.now().secs - kStart.secs); }; };

    const TimerId a = timers.schedule(30, false, note('a'));
    const TimerId b = timers.schedule(10, false, note('b'));
    const TimerId c = timers.schedule(10, false, note('c'));   // same moment as b, made later
    const TimerId r = timers.schedule(25, true, note('r'));
    EXPECT_EQ(timers.fireDate(a), kStart.plusSeconds(30));
    EXPECT_EQ(timers.pendingCount(), 4);

    EXPECT_EQ(timers.advanceTo(kStart.plusSeconds(9.5)), 0);
    EXPECT_EQ(clock.now(), kStart.plusSeconds(9.5));
    EXPECT_EQ(timers.advanceBy(50.5), 5);   // to +60
    const std::vector<std::pair<char, double>> expected = {{'b', 10}, {'c', 10}, {'r', 25}, {'a', 30}, {'r', 50}};
    EXPECT_EQ(log, expected);
    EXPECT_EQ(clock.now(), kStart.plusSeconds(60));
    // One-shots are gone once fired; the repeating one waits for its next turn.
    EXPECT_FALSE(timers.isValid(a) || timers.isValid(b) || timers.isValid(c));
    EXPECT_EQ(timers.fireDate(b), Date{});
    EXPECT_TRUE(timers.isValid(r));
    EXPECT_EQ(timers.fireDate(r), kStart.plusSeconds(75));
    EXPECT_EQ(timers.pendingCount(), 1);
}

TEST(ManualTimers, MinuteTimerThatRearmsItselfTicksOnTheMinuteForAnHour)
{
    ManualClock clock(kStart);
    ManualTimers timers(clock);
    std::vector<double> ticks;
    TimerId minute = kNoTimer;
    minute = timers.schedule(60, true, [&] {
        ticks.push_back(clock.now().secs);
        // The next whole minute; this must win over the automatic fire date + 60.
        timers.setFireDate(minute, Date{std::floor((clock.now().secs + 60) / 60) * 60});
    });
    timers.advanceBy(3600);

    ASSERT_EQ(ticks.size(), 60u);   // 17:05:50, then 17:06:00 .. 18:04:00
    EXPECT_EQ(ticks.front(), kStart.secs + 60);
    for (size_t i = 1; i < ticks.size(); ++i) {
        EXPECT_EQ(std::fmod(ticks[i], 60.0), 0.0) << "tick " << i;
        EXPECT_EQ(ticks[i] - ticks[i - 1], i == 1 ? 10.0 : 60.0) << "tick " << i;
    }
    EXPECT_EQ(timers.fireDate(minute).secs, 1394348700.0);   // 18:05:00
}

TEST(ManualTimers, PlaceholdersWaitForAFireDateAndInvalidationSticks)
{
    ManualClock clock(kStart);
    ManualTimers timers(clock);
    int never = 0, almost = 0, victim = 0, every = 0;
    std::vector<double> made;
    const TimerId n = timers.schedule(kNever, true, [&] { ++never; });
    const TimerId z = timers.schedule(kAlmostNever, true, [&] { ++almost; });
    TimerId v = kNoTimer;
    // At +100 this one comes first (made first): it invalidates the next one, due at the
    // same moment, and makes a timer due inside the window, which still fires in it.
    timers.schedule(100, false, [&] {
        timers.invalidate(v);
        timers.schedule(5, false, [&] { made.push_back(clock.now().secs - kStart.secs); });
    });
    v = timers.schedule(100, true, [&] { ++victim; });
    TimerId self = kNoTimer;
    self = timers.schedule(50, false, [&] { EXPECT_FALSE(timers.isValid(self)); });

    timers.advanceBy(86400);
    EXPECT_EQ(never + almost + victim, 0);
    EXPECT_EQ(made, std::vector<double>{105});
    timers.setFireDate(v, clock.now());   // moving an invalid timer does not revive it
    EXPECT_FALSE(timers.isValid(v));
    EXPECT_EQ(timers.fireDate(v), Date{});

    // Given a fire date, a placeholder fires exactly then, once.
    const Date at = clock.now().plusSeconds(100);
    timers.setFireDate(n, at);
    timers.advanceBy(86400 * 365.0);
    EXPECT_EQ(never, 1);
    EXPECT_EQ(almost, 0);
    EXPECT_EQ(timers.fireDate(n), at.plusSeconds(kNever));
    EXPECT_TRUE(timers.isValid(z));

    // A repeating timer moved an hour into the past fires once, then skips the turns it missed.
    const TimerId e = timers.schedule(60, true, [&] { ++every; });
    timers.setFireDate(e, clock.now().plusSeconds(-3590));
    const Date before = clock.now();
    timers.advanceBy(0);
    EXPECT_EQ(every, 1);
    EXPECT_EQ(timers.fireDate(e), before.plusSeconds(10));
}

TEST(ManualTimers, ZeroIntervalTimersRunUntilTheyStopAndRunawaysAreBenched)
{
    ManualClock clock(kStart);
    ManualTimers timers(clock);
    int size = 1;
    TimerId anim = kNoTimer;
    anim = timers.schedule(0, true, [&] {
        size += 3;
        if (size >= 112)
            timers.invalidate(anim);
    });
    EXPECT_EQ(timers.advanceBy(1), 37);
    EXPECT_EQ(size, 112);
    EXPECT_FALSE(timers.isValid(anim));

    int spins = 0, minute = 0;
    timers.schedule(0, true, [&] { ++spins; });
    timers.schedule(60, false, [&] { ++minute; });
    timers.advanceBy(120);   // logs a warning
    EXPECT_EQ(spins, ManualTimers::kMaxFiringsPerInstant);
    EXPECT_EQ(minute, 1);    // not starved by the runaway
    EXPECT_EQ(clock.now(), kStart.plusSeconds(121));
    EXPECT_EQ(timers.pendingCount(), 1);
}

TEST(SystemClock, StartsAtTheGivenInstantAndRunsOn)
{
    ScopedEnv tz("TZ", QByteArray("Australia/Sydney"));
    tzset();
    resetdatezone();
    Date d;
    EXPECT_TRUE(SystemClock::parseNow("2014-03-09T17:04:50", &d));
    EXPECT_EQ(d, kStart);
    EXPECT_TRUE(SystemClock::parseNow(" 2014-03-09T18:04:50+12:00 ", &d));
    EXPECT_EQ(d, kStart);

    // --now wins over QUENDLE_NOW; an empty --now is an error, an empty QUENDLE_NOW unset.
    std::optional<Date> start;
    QString error;
    {
        ScopedEnv now("QUENDLE_NOW", QByteArray("2014-07-01T09:00:00"));
        EXPECT_TRUE(SystemClock::givenstart(std::nullopt, &start, &error));
        EXPECT_EQ(start, Date{1404169200});   // winter: +10:00
        EXPECT_TRUE(SystemClock::givenstart(QString("2014-03-09T17:04:50"), &start, &error));
        EXPECT_EQ(start, kStart);
        EXPECT_FALSE(SystemClock::givenstart(QString(""), &start, &error));
        EXPECT_FALSE(start.has_value());
        EXPECT_TRUE(error.startsWith("--now \"\" is not a usable instant: it is empty")) << qPrintable(error);
    }
    {
        ScopedEnv now("QUENDLE_NOW", QByteArray("2014-10-05T02:30:00"));
        EXPECT_FALSE(SystemClock::givenstart(std::nullopt, &start, &error));
        EXPECT_TRUE(error.startsWith("QUENDLE_NOW=\"2014-10-05T02:30:00\" is not a usable instant"))
            << qPrintable(error);
    }
    {
        ScopedEnv now("QUENDLE_NOW", QByteArray(""));
        EXPECT_TRUE(SystemClock::givenstart(std::nullopt, &start, &error));
        EXPECT_FALSE(start.has_value());
    }

    SystemClock clock(kStart);
    EXPECT_TRUE(clock.startedAtGivenInstant());
    const Date first = clock.now();
    EXPECT_GE(first, kStart);
    EXPECT_LT(first, kStart.plusSeconds(60));
    QThread::msleep(20);
    EXPECT_GT(clock.now(), first);
    EXPECT_FALSE(SystemClock().startedAtGivenInstant());
    EXPECT_NEAR(SystemClock().now().secs, QDateTime::currentSecsSinceEpoch(), 60);
}

TEST(QtTimers, FireOnTheEventLoopByTheClock)
{
    ensureCoreApp();
    SystemClock wall;
    QtTimers timers(wall);
    bool soon = false, never = false;
    int spins = 0;
    const TimerId s = timers.schedule(0.05, false, [&] { soon = true; });
    timers.schedule(kNever, true, [&] { never = true; });
    TimerId spin = kNoTimer;
    spin = timers.schedule(0, true, [&] {
        if (++spins == 3)
            timers.invalidate(spin);
    });
    EXPECT_TRUE(waitUntil([&] { return soon && spins == 3; }));
    EXPECT_FALSE(timers.isValid(s));
    EXPECT_FALSE(never);
    EXPECT_EQ(timers.pendingCount(), 1);

    // Driven by a clock that jumps (a sleep, a clock change): what is due fires at the next
    // look, and a repeating timer fires once rather than once per missed turn.
    ManualClock clock(kStart);
    QtTimers jumpy(clock);
    int hourly = 0, minutely = 0;
    jumpy.schedule(3600, false, [&] { ++hourly; });
    const TimerId m = jumpy.schedule(60, true, [&] { ++minutely; });
    QCoreApplication::processEvents();
    clock.advance(3630);
    jumpy.recheck();
    EXPECT_TRUE(waitUntil([&] { return hourly == 1 && minutely == 1; }));
    QCoreApplication::processEvents();
    EXPECT_EQ(minutely, 1);
    EXPECT_EQ(jumpy.fireDate(m), kStart.plusSeconds(3660));

    // Held (twice, as nested waits hold), nothing fires; what fell due fires at the release.
    jumpy.hold(true);
    jumpy.hold(true);
    clock.advance(60);
    jumpy.recheck();
    for (int i = 0; i < 20; ++i)
        QCoreApplication::processEvents();
    jumpy.hold(false);
    QCoreApplication::processEvents();
    EXPECT_EQ(minutely, 1);
    jumpy.hold(false);
    EXPECT_TRUE(waitUntil([&] { return minutely == 2; }));
}

// An owner that re-arms its timer for the passed instant it was just fired for (the view
// keeping a service that has left) must not make it fire again and again.
TEST(Timers, APassedFireDateThatAlreadyFiredDoesNotFireAgain)
{
    ensureCoreApp();
    ManualClock clock(kStart);
    ManualTimers manual(clock);
    QtTimers looped(clock);
    for (TimerTable* timers : {static_cast<TimerTable*>(&manual), static_cast<TimerTable*>(&looped)}) {
        int fired = 0;
        TimerId t = kNoTimer;
        const Date passed = clock.now().plusSeconds(-30);
        t = timers->schedule(kNever, true, [&] {
            ++fired;
            timers->setFireDate(t, passed);
        });
        timers->setFireDate(t, passed);   // passed, but never fired for: fires once
        EXPECT_TRUE(timers->isArmed(t));
        if (timers == &manual) {
            manual.advanceBy(120);
        } else {
            for (int turn = 0; turn < 200; ++turn)
                QCoreApplication::processEvents();
        }
        EXPECT_EQ(fired, 1);
        EXPECT_FALSE(timers->isArmed(t));
        EXPECT_EQ(timers->fireDate(t), passed);   // the owner's date is kept, only quiet

        // Moved on to a later instant, it fires again, once.
        const Date next = clock.now().plusSeconds(10);
        timers->setFireDate(t, next);
        EXPECT_TRUE(timers->isArmed(t));
        clock.set(next.plusSeconds(1));
        if (timers == &manual) {
            manual.advanceBy(60);
        } else {
            looped.recheck();
            for (int turn = 0; turn < 200; ++turn)
                QCoreApplication::processEvents();
        }
        EXPECT_EQ(fired, 2);
        timers->invalidate(t);
    }
}
