// Saves the user's state over and over, alternating between two states, until killed.
// Arguments: the home folder and the settings file. Prints "ready" after the first save.

#include "../savestates.h"

#include "platform/system/manualclock.h"
#include "platform/system/manualtimers.h"
#include "platform/system/qsettingsdefaults.h"
#include "util/dates.h"

#include <cstdio>

using namespace quendle;

namespace {
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
} // namespace

int main(int argc, char** argv)
{
    if (argc != 3)
        return 2;
    ManualClock clock(datefromcivil({2026, 11, 24, 8, 0, 0}));
    ManualTimers timers(clock);
    QSettingsDefaults defaults(QString::fromLocal8Bit(argv[2]));
    Platform p;
    p.clock = &clock;
    p.timers = &timers;
    p.defaults = &defaults;
    p.homeDir = QString::fromLocal8Bit(argv[1]);
    Folders folders(p.homeDir);
    Timetable tt(folders, false);
    QuietHost host;
    ViewState view;
    Journey journey(tt, clock, timers, host, view);
    UserState u(journey, tt, p, host, view, folders);
    for (long i = 0;; ++i) {
        testsupport::setsavestate(u, journey, static_cast<int>(i % 2));
        u.writeprefs();
        if (i == 1) {
            std::puts("ready");
            std::fflush(stdout);
        }
    }
}
