// The one alarm: a reminder a number of minutes before the shown first-leg service
// leaves, spoken and then shown in an alert.

#include "userstate/userstate.h"

#include "util/dates.h"
#include "util/durations.h"

#include <algorithm>
#include <climits>

namespace quendle {

namespace {
// Only creates the timer; the fire date set right after decides when it fires.
constexpr double kAlarmInterval = 21600000;
}

bool UserState::caniaddthisalarm(Date departure) const { return !testlumdateearlier(departure, now()); }

void UserState::addalarmwithtstuff(const QString& dep, const QString& dest, int minutes, Date departure)
{
    removealarm();
    if (caniaddthisalarm(departure)) {
        myalarms.push_back({departure, dep, dest, minutes});
        Timers& t = *platform_.timers;
        alarmtimer = t.schedule(kAlarmInterval, false, [this] { alarmtimerfunc(); });
        // In seconds, so that no minute count read from a damaged file can overflow.
        t.setFireDate(alarmtimer, zerosecondsdate(departure.plusSeconds(-60.0 * minutes)));
    }
    host_.writeprefs();
}

void UserState::addalarm(int minutes)
{
    removealarm();
    const Journey& j = journey_;
    const int i = j.getthisviewindex(0);
    if (!j.myjournstr.isEmpty() && !j.myservsmultid.empty() && i >= 0
        && i < static_cast<int>(j.myservsmultid[0].size())) {
        addalarmwithtstuff(j.myjournstr.front(), j.myjournstr.back(), minutes, j.myservsmultid[0][i].deptime);
        view_.inalarmscreen = 0;
    }
    host_.refreshdisplay();
}

void UserState::alarmtimerfunc()
{
    alarmtimer = kNoTimer;   // a one-shot timer is gone once it has fired
    if (myalarms.empty())
        return;
    const Alarm a = myalarms.front();
    const QString text =
        a.dep + " to " + a.dest + " is leaving in " + calctimediffabbrev(now(), a.date, 0) + ".";
    lumspeak(text);
    lumalert(text);
    myalarms.clear();
    host_.writeprefs();
}

void UserState::lumspeak(const QString& text)
{
    // The sentence goes to the speech service as text; it is never part of a command.
    if (platform_.speech)
        platform_.speech->say(text);
}

void UserState::removealarm()
{
    myalarms.clear();
    if (alarmtimer != kNoTimer)
        platform_.timers->invalidate(alarmtimer);
    alarmtimer = kNoTimer;
}

void UserState::removeexpiredalarms()
{
    // Gone once its departure has passed; a machine that wakes before the departure keeps it.
    const Date present = now();
    std::erase_if(myalarms, [present](const Alarm& a) { return testlumdateearlier(a.date, present); });
    if (myalarms.empty())
        removealarm();
}

QString UserState::getalarmstr() const
{
    if (doigotalarm())
        return QStringLiteral("Remove Alarm");
    if (journey_.myjournstr.size() >= 2)
        return QStringLiteral("Add Alarm");
    return QString();
}

void UserState::addminstoalarm(int minutes)
{
    const Journey& j = journey_;
    const int i = j.getthisviewindex(0);
    if (!j.myservsmultid.empty() && i >= 0 && i < static_cast<int>(j.myservsmultid[0].size())) {
        const long long left = -static_cast<long long>(calctimediffint(j.myservsmultid[0][i].deptime, now()));
        const long long wanted = static_cast<long long>(alarmdefaultmins) + minutes;
        if (wanted < left && wanted >= 1)
            alarmdefaultmins = static_cast<int>(wanted);
    }
    host_.redisplay();
}

void UserState::myalarmaction()
{
    if (doigotalarm())
        removealarm();
    else
        showalarmscreen(alarmdefaultmins);
}

void UserState::showalarmscreen(int minutes)
{
    if (!platform_.alerts)
        return;
    const QStringList buttons = {QStringLiteral("OK"), QStringLiteral("10"), QStringLiteral("-10"),
                                 QStringLiteral("Cancel")};
    // Each showing runs the alert up to three times, one button tested per run: a press
    // counts only when it is the button that run is testing.
    for (;;) {
        const QString message = QString::asprintf("me %i min before service leaves", alarmdefaultmins);
        auto run = [&] { return platform_.alerts->alert(message, QString(), buttons); };
        if (run() == 0) {
            alarmdefaultmins = minutes;
            return;
        }
        if (run() == 1) {
            minutes = minutes < INT_MAX - 10 ? minutes + 10 : minutes;
            continue;
        }
        if (run() == 2) {
            alarmdefaultmins = alarmdefaultmins > INT_MIN + 10 ? alarmdefaultmins - 10 : alarmdefaultmins;
            continue;
        }
        return;
    }
}

void UserState::hidealarmscreen()
{
    view_.inalarmscreen = 0;
    host_.redisplay();
}

void UserState::showalarmscreenol()
{
    if (!caniaddalarm())
        return;
    if (view_.inalarmscreen == 1) {
        if (!doigotalarm())
            addalarm(alarmdefaultmins);
        view_.inalarmscreen = 0;
    } else {
        view_.inalarmscreen = 1;
    }
    host_.redisplay();
}

} // namespace quendle
