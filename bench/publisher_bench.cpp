// Reducing one of the operator's timetable pages at the size of the busiest line (60 station
// rows, 40 of them arrival and departure pairs, 200 services; target: well under 100 ms a
// page, since a strip reduces 500 of them), and reading an update page.

#include "publisher/publish.h"
#include "publisher/timetablepage.h"
#include "update/updatepage.h"

#include <benchmark/benchmark.h>

using namespace quendle;

namespace {

QString bigpage(int stations, int services)
{
    QString links, rows;
    for (int s = 0; s < stations; ++s) {
        const QString name = QStringLiteral("Station %1%2").arg(QChar('A' + s % 26)).arg(s / 26);
        const QString suffix = s % 3 == 1 ? " arr" : s % 3 == 2 ? " dep" : "";
        links += QStringLiteral("<tr><th><a href=\"/stations/?stationId=%1\">%2%3</a></th></tr>\n").arg(s).arg(name, suffix);
        rows += "<tr class=\"hintText\">";
        for (int k = 0; k < services; ++k) {
            const int m = 4 * 60 + k * 6 + s * 2;
            rows += k % 17 == 5 ? QStringLiteral("<td>-</td>")
                                : QStringLiteral("<td>%1:%2</td>").arg(m / 60).arg(m % 60, 2, 10, QChar('0'));
        }
        rows += "</tr>\t\t\t\t";
    }
    return "<html><title>T1 North Shore & Western Line Emu Plains to Berowra Sydney Trains</title>\n"
           "<p>Services for Monday 23 November 2026</p>\n<table>\n" + links
        + "</table>\n<!-- START: Times Slider --><div><table>\n" + rows + "\n</table></div><!-- END -->\n</html>\n";
}

void BM_ReduceTimetablePage(benchmark::State& state)
{
    const QString page = bigpage(60, 200);
    for (auto _ : state) {
        TimetablePage p = readtimetablepage(page);
        const std::vector<int> arrivals = getstnsidontwant(p.stations);
        removetimesidontwant(p.rows, arrivals);
        const QStringList stations = rewritestnstonamesiwant(removestnsidontwant(p.stations, arrivals));
        benchmark::DoNotOptimize(convertraytostr(rotatemultidarray(p.rows), stations.join(','), p.linename,
                                                 p.direction, QStringLiteral("#000000")));
    }
    state.SetLabel("60 station rows x 200 services");
}
BENCHMARK(BM_ReduceTimetablePage)->Unit(benchmark::kMillisecond);

void BM_ReadUpdatePage(benchmark::State& state)
{
    const QString page = updatepagetext({"SydneyTrains", "Hunter"}, {"1 March 2030 9:00:00 AM", "2 March 2030 9:00:00 AM"}, 1.2);
    for (auto _ : state)
        benchmark::DoNotOptimize(readupdatepage(page));
}
BENCHMARK(BM_ReadUpdatePage)->Unit(benchmark::kMicrosecond);

} // namespace

BENCHMARK_MAIN();
