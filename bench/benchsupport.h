#pragma once
// A Quendle core started on the built-in table in a throw-away home folder, with a
// manual clock and timer queue, for benchmarks.

#include "app/appmodel.h"
#include "platform/system/manualtimers.h"
#include "util/dates.h"

#include <QTemporaryDir>

#include <memory>

namespace quendle::bench {

// Journeys across the built-in network: two stations on one line; four stations; seven
// stations over three lines; and one that needs a change station.
inline const QStringList kTwo = {"Bondi Junction", "Edgecliff"};
inline const QStringList kFour = {"Penrith", "Parramatta", "Strathfield", "Central"};
inline const QStringList kSeven = {"Emu Plains", "Penrith", "Blacktown", "Parramatta",
                                   "Strathfield", "Central", "Bondi Junction"};
inline const QStringList kChange = {"Bondi Junction", "Parramatta"};

struct Core {
    QTemporaryDir home;
    ManualClock clock;
    ManualTimers timers{clock};
    Platform platform;
    std::unique_ptr<AppModel> app;

    explicit Core(Date start)
    {
        clock.set(start);
        platform.clock = &clock;
        platform.timers = &timers;
        platform.homeDir = home.path();
        app = std::make_unique<AppModel>(platform, AppModel::Options{false});
        app->setupstuff();
    }
    void journey(const QStringList& stations)
    {
        app->journey().myjournstr = stations;
        app->calctripoptimizelater();
    }
};

// Tuesday 24 November 2026, 7:55 in the morning, Sydney time.
inline Date morning() { return datefromcivil({2026, 11, 24, 7, 55, 0}); }

} // namespace quendle::bench
