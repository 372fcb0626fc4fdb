#pragma once
// A small network on the lines the recorded trackwork page names, and a core started on it
// in a throw-away home with a clock the test sets.

#include "app/appmodel.h"
#include "platform/system/manualtimers.h"
#include "platform/system/memorydefaults.h"
#include "platform/system/nullservices.h"
#include "support/scripted_alerts.h"
#include "support/tables.h"
#include "util/dates.h"
#include "util/files.h"

#include <QTemporaryDir>

#include <memory>

namespace quendle::disruptionstest {

// Sydney, March 2014 (daylight saving time).
inline Date march(int day, int h, int m, int s = 0) { return datefromcivil({2014, 3, day, h, m, s}); }

inline QString stops(const QStringList& names)
{
    // One position per name, so a station has the same coordinates on every line.
    static const QStringList all = {"Berowra", "Bondi Junction", "Central", "Edgecliff", "Epping",
                                    "Gosford", "Hornsby", "North Strathfield", "Strathfield"};
    QStringList out;
    for (const QString& n : names)
        out << n + "|" + QString::number(151.0 + all.indexOf(n) * 0.01, 'f', 6) + "|-33.800000";
    return out.join(',');
}

// Every hour from 05:00 to 23:00, each stop `step` minutes after the one before.
inline QStringList hourly(int stopsCount, int step)
{
    QStringList rows;
    for (int h = 5; h <= 23; ++h) {
        QString row;
        for (int k = 0; k < stopsCount; ++k)
            row += QString::number(h * 100 + k * step) + ",";
        rows << row + "}";
    }
    return rows;
}

inline QString network()
{
    using namespace fixtures;
    const QString every = "0123456";
    return table("1 March 2014 9:00:00 AM",
                 {lineblock("T1 North Shore & Western Line#Central to Berowra",
                            stops({"Central", "Strathfield", "Hornsby", "Berowra"}), {dayblock(every, hourly(4, 9))}),
                  lineblock("T4 Eastern Suburbs & Illawarra Line#Bondi Junction to Central",
                            stops({"Bondi Junction", "Edgecliff", "Central"}), {dayblock(every, hourly(3, 3))}),
                  lineblock("T9 Northern Line#Hornsby to Central",
                            stops({"Hornsby", "Epping", "North Strathfield", "Strathfield", "Central"}),
                            {dayblock(every, hourly(5, 5))}),
                  lineblock("Central Coast & Newcastle Line#Central to Gosford",
                            stops({"Central", "Strathfield", "Hornsby", "Gosford"}), {dayblock(every, hourly(4, 11))})});
}

// Line numbers of the network above.
enum { kT1 = 0, kT4 = 1, kT9 = 2, kCcn = 3 };

inline QString sourcefile(const QString& relative)
{
    return qEnvironmentVariable("QUENDLE_SOURCE_DIR") + "/" + relative;
}

class Core {
public:
    Core()
    {
        platform.clock = &clock;
        platform.timers = &timers;
        platform.defaults = &defaults;
        platform.alerts = &alerts;
        platform.clipboard = &clipboard;
        platform.homeDir = home.path();
        fixtures::writeto(folders.gettablesfold(), "Test.vq", network());
    }
    QString prefs() const { return folders.getprefsfold(); }
    void put(const QString& name, const QString& text) { writefile(text, prefs(), name); }
    // The whole start-up at `now` on the journey, then the recalculation.
    AppModel& start(Date now, const QStringList& journey = {"Bondi Junction", "Edgecliff"})
    {
        clock.set(now);
        app = std::make_unique<AppModel>(platform, AppModel::Options{false});
        app->timetable().setbundledtablepath(home.path() + "/no-built-in-table.vq");
        app->setupstuff();
        app->journey().myjournstr = journey;
        app->calctripoptimizelater();
        return *app;
    }
    Disruptions& d() { return app->disruptions(); }
    Journey& j() { return app->journey(); }

    QTemporaryDir home;
    Folders folders{home.path()};
    ManualClock clock;
    ManualTimers timers{clock};
    MemoryDefaults defaults;
    testsupport::ScriptedAlerts alerts;
    NullClipboard clipboard;
    Platform platform;
    std::unique_ptr<AppModel> app;
};

} // namespace quendle::disruptionstest
