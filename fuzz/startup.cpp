// Start-up from a tables folder whose only table is the input, through the first
// recalculation on a journey between two of its stations and a day and an hour of the timers.
// The first four bytes choose the moment (minutes after a Tuesday midnight) and the two
// stations; the rest is the table. No timer may fire over and over at one instant.

#include "fuzzsupport.h"

#include "app/appmodel.h"
#include "platform/system/manualtimers.h"
#include "platform/system/memorydefaults.h"
#include "platform/system/nullservices.h"
#include "util/files.h"

#include <QDir>

using namespace quendle;

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    fuzz::init();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size < 4)
        return 0;
    const int minutes = data[0] | (data[1] << 8);
    const int pick0 = data[2], pick1 = data[3];
    const QByteArray table = fuzz::bytes(data + 4, size - 4);

    const QString home = fuzz::home() + "/startup";
    QDir(home).removeRecursively();
    const QString tables = home + "/Library/Preferences/quendlefddffdrterXAXAXA/tablesverified";
    QDir().mkpath(tables);
    QFile f(tables + "/SydneyTrains.vq");
    if (!f.open(QIODevice::WriteOnly) || f.write(table) != table.size())
        return 0;
    f.close();

    ManualClock clock(datefromcivil({2026, 11, 24, 0, 0, 0}).plusSeconds(60.0 * minutes));
    ManualTimers timers(clock);
    MemoryDefaults defaults;
    NullWindowHost window;
    Platform platform;
    platform.clock = &clock;
    platform.timers = &timers;
    platform.defaults = &defaults;
    platform.window = &window;
    platform.homeDir = home;
    platform.notice = [](const QString&) {};
    AppModel app(platform, AppModel::Options{false});
    app.timetable().setbundledtablepath(home + "/no-built-in-table.vq");
    app.initWithFrame();

    const auto& stations = app.timetable().stnsmute;
    if (!stations.empty()) {
        const int n = static_cast<int>(stations.size());
        app.journey().myjournstr = {stations[pick0 % n].name, stations[pick1 % n].name};
        app.calctripoptimizelater();
    }
    // Past the daily recalculation: two minute timers, the departure timers, the daily one.
    // A timer that fires again and again at one instant shows as thousands of callbacks.
    const int callbacks = timers.advanceBy(25 * 3600);
    fuzz::require(callbacks < 5000, "the timers do not spin");
    return 0;
}
