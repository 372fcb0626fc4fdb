#pragma once
// The user state over the built-in table, made once per fuzzing process: a fixed clock,
// manual timers, an in-memory defaults store and no window.

#include "fuzzsupport.h"

#include "platform/system/manualclock.h"
#include "platform/system/manualtimers.h"
#include "platform/system/memorydefaults.h"
#include "userstate/userstate.h"

#include <QRegularExpression>

namespace quendle::fuzz {

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

struct UserStateRig {
    UserStateRig() : folders(home())
    {
        p.clock = &clock;
        p.timers = &timers;
        p.defaults = &defaults;
        p.homeDir = home();
        tt.setuptables();
        tt.setuplinesmultitable();
        tt.setupstnsmute();
        tt.rewritelinesmutewithstnnums();
        u.ivereadprefs = 1;
    }
    // Back to the state start-up begins from.
    void reset()
    {
        journey.myjournstr = {QStringLiteral("Bondi Junction"), QStringLiteral("Edgecliff")};
        journey.myfuturetimes.clear();
        u.myfavs.clear();
        u.mybookmarks.clear();
        u.removealarm();
        lastupdate = {adddaystodate(clock.now(), -165)};
        u.mylastupdateray = &lastupdate;
        defaults = MemoryDefaults();
    }
    // Whatever was read, the next save has the file's line structure.
    bool savesclean() const
    {
        static const QRegularExpression shape(
            "\\A[^\\n]*\\n\\n\\]favourites\\[[^\\n]*\\]favourites\\[\\n\\]bookmarks\\[[^\\n]*\\]bookmarks\\[\\n"
            "\\]dateimlookinat\\[[0-9|-]*\\]dateimlookinat\\[(\\n\\]myalarm\\[[^\\n]*\\]myalarm\\[)?\\n"
            "\\]updatestr\\[[0-9|-]+\\]updatestr\\[\\n\\]mysize\\[[0-9.|]+\\]mysize\\[\\z");
        return shape.match(u.prefsfiletext()).hasMatch();
    }

    ManualClock clock{datefromcivil({2026, 11, 24, 8, 0, 0})};
    ManualTimers timers{clock};
    MemoryDefaults defaults;
    std::vector<Date> lastupdate;
    Platform p;
    Folders folders;
    Timetable tt{folders, false};
    QuietHost host;
    ViewState view;
    Journey journey{tt, clock, timers, host, view};
    UserState u{journey, tt, p, host, view, folders};
};

inline UserStateRig& rig()
{
    static UserStateRig r;
    return r;
}

} // namespace quendle::fuzz
