// The full recalculation on the built-in table (target: seven stations under 2 ms),
// and a simulated day of the running loop on a manual clock.

#include "benchsupport.h"

#include <benchmark/benchmark.h>

using namespace quendle;

namespace {

void recalculation(benchmark::State& state, const QStringList& stations)
{
    bench::Core core(bench::morning());
    core.journey(stations);
    for (auto _ : state) {
        core.app->journey().myjournstr = stations;
        core.app->calctripoptimizelater();
    }
    state.counters["services"] = static_cast<double>(core.app->journey().myservsmultid.empty()
                                                         ? 0
                                                         : core.app->journey().myservsmultid[0].size());
    state.counters["chains"] = static_cast<double>(core.app->journey().connectingservs.size());
}

void BM_RecalculateTwoStations(benchmark::State& s) { recalculation(s, bench::kTwo); }
void BM_RecalculateFourStations(benchmark::State& s) { recalculation(s, bench::kFour); }
void BM_RecalculateSevenStations(benchmark::State& s) { recalculation(s, bench::kSeven); }
void BM_RecalculateWithChangeStation(benchmark::State& s) { recalculation(s, bench::kChange); }
BENCHMARK(BM_RecalculateTwoStations)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_RecalculateFourStations)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_RecalculateSevenStations)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_RecalculateWithChangeStation)->Unit(benchmark::kMicrosecond);

// Every minute tick, departure timer and the daily recalculation over 24 hours.
void BM_SimulatedDay(benchmark::State& state)
{
    for (auto _ : state) {
        state.PauseTiming();
        bench::Core core(bench::morning());
        core.journey(bench::kFour);
        state.ResumeTiming();
        core.timers.advanceTo(core.clock.now().plusSeconds(24 * 3600));
        benchmark::DoNotOptimize(core.app->journey().myindexes);
    }
}
BENCHMARK(BM_SimulatedDay)->Unit(benchmark::kMillisecond)->Iterations(3);

} // namespace

BENCHMARK_MAIN();
