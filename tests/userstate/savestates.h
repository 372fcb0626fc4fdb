#pragma once
// The user state alone, without tables or a window, on a fixed clock: for the process
// that saves in a loop and for the test that kills it. Two complete states, each large
// enough that writing it takes a while.

#include "platform/system/manualclock.h"
#include "platform/system/manualtimers.h"
#include "userstate/userstate.h"
#include "util/dates.h"

namespace quendle::testsupport {

class QuietHost : public Host {
public:
    void refreshdisplay() override {}
    void redisplay() override {}
    void writeprefs() override {}
    void calctripoptimizelater() override {}
    void calccurrentdisplay() override {}
    void drawnewmappoints() override {}
    void addminstoalarm(int) override {}
};

struct SaveRig {
    SaveRig(const QString& home, DefaultsStore& defaults) : folders(home)
    {
        p.clock = &clock;
        p.timers = &timers;
        p.defaults = &defaults;
        p.homeDir = home;
    }
    void setstate(int which)
    {
        u.ivereadprefs = 1;
        u.myfavs.clear();
        if (which == 0) {
            journey.myjournstr = {"Central", "Strathfield"};
            u.mybookmarks = {{"Hornsby", {"Hornsby", "Epping"}, 1}};
        } else {
            journey.myjournstr = {"Hornsby", "Epping", "Central"};
            u.mybookmarks = {{"Central", {"Central", "Strathfield"}, 1}, {"Redfern", {"Redfern", "Central"}, 1}};
        }
        for (int i = 0; i < 3000; ++i)
            u.myfavs.push_back({QStringLiteral("Station %1 %2").arg(which).arg(i), i + which});
    }

    ManualClock clock{datefromcivil({2026, 11, 24, 8, 0, 0})};
    ManualTimers timers{clock};
    Platform p;
    Folders folders;
    Timetable tt{folders, false};
    QuietHost host;
    ViewState view;
    Journey journey{tt, clock, timers, host, view};
    UserState u{journey, tt, p, host, view, folders};
};

} // namespace quendle::testsupport
