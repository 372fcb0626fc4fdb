// Reading one line's rows for a date: the cached reading beside the literal one that
// re-reads and re-splits the whole table at every call, on a recalculation-sized batch.

#include "benchsupport.h"

#include <benchmark/benchmark.h>

using namespace quendle;

namespace {

struct Call {
    QString name;
    Date day;
    int line;
};

std::vector<Call> recalculationbatch(bench::Core& core)
{
    core.journey(bench::kSeven);
    std::vector<Call> calls;
    Journey& j = core.app->journey();
    for (int leg = 0; leg + 1 < j.myjournstr.size(); ++leg)
        for (int d = 0; d < j.lummaxdaystosrch; ++d)
            for (const LineMatch& m : j.getlinematches(j.myjournstr[leg], j.myjournstr[leg + 1]))
                calls.push_back({m.matchlinename, adddaystodate(core.clock.now(), d), m.linenum});
    return calls;
}

void BM_LineTimesCached(benchmark::State& state)
{
    bench::Core core(bench::morning());
    const std::vector<Call> calls = recalculationbatch(core);
    Timetable& tt = core.app->timetable();
    for (auto _ : state)
        for (const Call& c : calls)
            benchmark::DoNotOptimize(tt.getthislinetimesnew(c.name, c.day, c.line));
    state.counters["calls"] = static_cast<double>(calls.size());
}
BENCHMARK(BM_LineTimesCached)->Unit(benchmark::kMicrosecond);

void BM_LineTimesLiteral(benchmark::State& state)
{
    bench::Core core(bench::morning());
    const std::vector<Call> calls = recalculationbatch(core);
    Timetable& tt = core.app->timetable();
    for (auto _ : state)
        for (const Call& c : calls)
            benchmark::DoNotOptimize(tt.getthislinetimesliteral(c.name, c.day, c.line));
    state.counters["calls"] = static_cast<double>(calls.size());
}
BENCHMARK(BM_LineTimesLiteral)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
