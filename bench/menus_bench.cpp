// The station menu must open at once however many stations a table holds: building its
// items from the built-in table (290 stations), making the popup with every row, and
// narrowing it as the user types; the same popup for a table of 5000 stations. Also the
// tray icon with the minutes drawn in, made at every size each time the minutes change.
// (Target: the popup with the built-in table ready in under 30 ms, typing under 5 ms.)

#include "benchsupport.h"

#include "app/menus.h"
#include "gui/menupopup.h"
#include "paint/statusicon.h"

#include <QApplication>

#include <benchmark/benchmark.h>

using namespace quendle;

namespace {

Menu bigmenu(int stations)
{
    Menu m;
    for (int i = 0; i < stations; ++i) {
        MenuItem item(QStringLiteral("Station %1 Junction").arg(i));
        item.representedObject = item.title + "#1";
        item.action = [] {};
        m.push_back(std::move(item));
    }
    return m;
}

void BM_StationMenuItems(benchmark::State& state)
{
    bench::Core core(bench::morning());
    Menus menus(*core.app);
    for (auto _ : state)
        benchmark::DoNotOptimize(menus.dostnsmenu(1));
}

void popup(benchmark::State& state, const Menu& menu)
{
    for (auto _ : state) {
        StationMenu m(menu);
        m.adjustSize();
        benchmark::DoNotOptimize(m.sizeHint());
    }
    state.counters["rows"] = static_cast<double>(menu.size());
}

void BM_StationPopupBuiltInTable(benchmark::State& state)
{
    bench::Core core(bench::morning());
    popup(state, Menus(*core.app).dostnsmenu(1));
}

void BM_StationPopupFiveThousand(benchmark::State& state) { popup(state, bigmenu(5000)); }

void BM_StationPopupTyping(benchmark::State& state)
{
    bench::Core core(bench::morning());
    StationMenu m(Menus(*core.app).dostnsmenu(1));
    const QStringList typed = {"s", "st", "str", "stra", ""};
    int i = 0;
    for (auto _ : state)
        m.filter(typed[i++ % typed.size()]);
}

void BM_TrayIconAllSizes(benchmark::State& state)
{
    int minutes = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(statusicon(QStringLiteral("trakw"), QString::number(minutes++ % 99)));
}

BENCHMARK(BM_StationMenuItems)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_StationPopupBuiltInTable)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_StationPopupFiveThousand)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_StationPopupTyping)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_TrayIconAllSizes)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
