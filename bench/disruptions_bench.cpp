// The full recalculation of the seven-station journey with a realistic number of trackwork
// notices on its lines (target: the plain recalculation's time plus 1 ms), and the
// reduction and parsing of a trackwork page of that size.

#include "benchsupport.h"
#include "disruptions/trackworkpage.h"
#include "util/files.h"

#include <benchmark/benchmark.h>

using namespace quendle;

namespace {

const QStringList kLines = {"T1 North Shore & Western Line", "T4 Eastern Suburbs & Illawarra Line",
                            "T2 Leppington & Inner West Line", "T9 Northern Line",
                            "Blue Mountains Line", "T8 Airport & South Line", "South Coast Line"};
const QStringList kMonths = {"November", "December"};

// The notices carry no year and are read in 2014, so the clock is set there: Monday
// 24 November 2014, 7:55 in the morning.
Date morning2014() { return datefromcivil({2014, 11, 24, 7, 55, 0}); }

// `count` notices over the fortnight around 24 November 2014, some in force at the start,
// most on the lines of the seven-station journey, each a block of the operator's page.
QString page(int count)
{
    QString p = "<html><a href=\"/service_updates/trackwork/trackwork_map.pdf\">map</a>\n";
    for (int i = 0; i < count; ++i) {
        const int day = 22 + (i * 13) % 14;   // 22 Nov .. 5 Dec
        const auto date = [&](int d, const char* clock) {
            const int dd = d > 30 ? d - 30 : d;
            return QString("%1 %2 %3").arg(dd).arg(kMonths[d > 30 ? 1 : 0]).arg(clock);
        };
        p += "<div class=\"trkworkItemHeading\">\n<img title=\"" + QString(kLines[i % kLines.size()]).replace("&", "&amp;")
            + "\">\n<p>" + date(day, i % 3 ? "9.30pm" : "12.15am") + " to " + date(day + 1 + i % 3, "4.00am")
            + "</p>\n<div class=\"trkworkItemText clear\">Buses replace trains between Central and Strathfield.\n"
            + "<div class=\"trkworkItemText clear\">Notice " + QString::number(i) + " &amp; details.\n</div>\n";
    }
    return p + "</html>\n";
}

void withnotices(benchmark::State& state, int count)
{
    bench::Core core(morning2014());
    const QString prefs = core.app->folders().getprefsfold();
    writefile(page(count), prefs, "trakunc.txt");
    core.app->disruptions().setuptrakw();
    core.app->disruptions().trakwremdupes();
    core.journey(bench::kSeven);
    for (auto _ : state) {
        core.app->journey().myjournstr = bench::kSeven;
        core.app->calctripoptimizelater();
    }
    const Disruptions& d = core.app->disruptions();
    state.counters["notices"] = static_cast<double>(d.trakw.size());
    state.counters["relevant"] = static_cast<double>(d.relevanttrakinfo.size());
}

void BM_RecalculateSevenStationsNoNotices(benchmark::State& s) { withnotices(s, 0); }
void BM_RecalculateSevenStationsFortyNotices(benchmark::State& s) { withnotices(s, 40); }
BENCHMARK(BM_RecalculateSevenStationsNoNotices)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_RecalculateSevenStationsFortyNotices)->Unit(benchmark::kMicrosecond);

// Only the trackwork steps of the recalculation, on the journey's services as they stand.
void BM_TrackworkStepsFortyNotices(benchmark::State& state)
{
    bench::Core core(morning2014());
    writefile(page(40), core.app->folders().getprefsfold(), "trakunc.txt");
    Disruptions& d = core.app->disruptions();
    d.setuptrakw();
    d.trakwremdupes();
    core.journey(bench::kSeven);
    for (auto _ : state) {
        d.trakstatustimer();
        d.getrelevanttrakwork();
        d.setuprelevanttrakinfobydate();
        d.getmyservsaffectedbytrakw();
    }
    int marked = 0;
    for (const auto& leg : d.servsaffectedbytrakwmultid)
        for (const auto& serv : leg)
            marked += !serv.empty();
    state.counters["marked"] = marked;
}
BENCHMARK(BM_TrackworkStepsFortyNotices)->Unit(benchmark::kMicrosecond);

void BM_ReduceAndParseFortyNotices(benchmark::State& state)
{
    bench::Core core(morning2014());
    const QString text = page(40);
    for (auto _ : state) {
        const QString compact = comptwtext(text);
        benchmark::DoNotOptimize(parsetrakwcompact(compact, core.app->timetable(), morning2014()));
    }
}
BENCHMARK(BM_ReduceAndParseFortyNotices)->Unit(benchmark::kMillisecond);

// A hostile page at the download limit: one line of `title="` and two dates (8 MB).
void BM_ReduceHostilePage(benchmark::State& state)
{
    const QString text = "trkworkItemHeading 9 March 11.30pm 10 March 4.00am "
        + QString("title=\"").repeated(8 * 1024 * 1024 / 7 / 2);
    for (auto _ : state)
        benchmark::DoNotOptimize(comptwtext(text));
}
BENCHMARK(BM_ReduceHostilePage)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
