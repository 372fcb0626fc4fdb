// Start-up of the application model (tables folder, lines, stations, station numbers and
// the first recalculation) on generated tables of 1,000, 4,000 and 16,000 line blocks.
// Every eighth line serves the default journey, so the lines read for it grow with the
// table too; the time should grow about linearly.

#include "app/appmodel.h"
#include "platform/system/manualtimers.h"
#include "util/dates.h"
#include "util/files.h"

#include <QDir>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <map>
#include <memory>

using namespace quendle;

namespace {

// N line blocks over N stations, eight stops each, two day blocks of a few services.
QString generatedtable(int blocks)
{
    QString t = "\n  <timetable name = \"SydneyTrains\"  date=\"1 January 2100 1:00:00 AM\" > ";
    auto station = [&](int n) {
        return QStringLiteral("Station %1|%2|%3")
            .arg(n, 6, 10, QLatin1Char('0'))
            .arg(150.5 + (n % 997) * 0.001, 0, 'f', 4)
            .arg(-33.5 - (n % 991) * 0.001, 0, 'f', 4);
    };
    for (int i = 0; i < blocks; ++i) {
        QStringList stops;
        const bool journey = i % 8 == 0;
        if (journey)
            stops << "Bondi Junction|151.2500|-33.8916" << "Edgecliff|151.2365|-33.8795";
        for (int k = stops.size(); k < 8; ++k)
            stops << station((i * 7 + k * 131) % blocks);
        t += QStringLiteral("\n<line name =\"Line %1#Direction %2\" color=\"#%3\" stops = \"%4\"  >\n\n<forwards>\n")
                 .arg(i)
                 .arg(i % 2)
                 .arg(QString::number(0x100000 + i * 37 % 0xeffff, 16))
                 .arg(stops.join(','));
        const int first = 500 + (i % 30);
        for (const auto& [days, count] : std::map<QString, int>{{"12345", 6}, {"06", 4}}) {
            t += "\n <day num=\"" + days + "\" pubhol=\"true\"  > ";
            for (int r = 0; r < count; ++r) {
                QString row;
                int time = first + r * 300;
                for (int k = 0; k < 8; ++k, time += 3)
                    row += QString::number(time) + ",";
                t += "\n" + row + "}";
            }
            t += "\n\n\n</day>";
        }
        t += "\n</forwards>\n<backwards>\n</backwards>\n</line>";
    }
    return t + "\n</timetable>";
}

void BM_StartUp(benchmark::State& state)
{
    const int blocks = static_cast<int>(state.range(0));
    const QString table = generatedtable(blocks);
    for (auto _ : state) {
        state.PauseTiming();
        QTemporaryDir home;
        const QString tables = home.path() + "/Library/Preferences/quendlefddffdrterXAXAXA/tablesverified";
        QDir().mkpath(tables);
        writefile(table, tables + "/", "SydneyTrains.vq");
        ManualClock clock(datefromcivil({2026, 11, 24, 7, 55, 0}));
        ManualTimers timers(clock);
        Platform platform;
        platform.clock = &clock;
        platform.timers = &timers;
        platform.homeDir = home.path();
        state.ResumeTiming();

        AppModel app(platform, AppModel::Options{false});
        app.initWithFrame();
        benchmark::DoNotOptimize(app.journey().myservsmultid);
        state.counters["services"] = static_cast<double>(app.journey().myservsmultid.at(0).size());
    }
    state.counters["lines"] = blocks;
    state.SetComplexityN(blocks);
}
BENCHMARK(BM_StartUp)->Arg(1000)->Arg(4000)->Arg(16000)->Unit(benchmark::kMillisecond)
    ->Iterations(2)->Complexity(benchmark::oN);

} // namespace

BENCHMARK_MAIN();
