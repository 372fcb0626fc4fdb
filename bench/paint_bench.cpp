// Painting the strip offscreen, every tile rebuilt as on every redraw: the zoomed-in
// strip of a seven-station journey and the zoomed-out view with the map (target: a
// full paint under 4 ms).

#include "benchsupport.h"

#include "paint/strippainter.h"
#include "platform/system/nullservices.h"

#include <QGuiApplication>
#include <QImage>
#include <QPainter>

#include <benchmark/benchmark.h>

using namespace quendle;

namespace {

struct Strip {
    bench::Core core{bench::morning()};
    NullWindowHost window;
    QImage surface;

    Strip(int zoomed, qreal dpr)
    {
        core.app->display().setwindow(&window);
        core.journey(bench::kSeven);
        core.timers.advanceBy(0);   // the map's trip drawn to the end
        core.app->view().imfocusd = 1;
        core.app->view().zoomed = zoomed;
        core.app->display().adjustclippingbasedonjourneylength();
        const Rect f = window.frame();
        surface = QImage(static_cast<int>(f.w * dpr), static_cast<int>(f.h * dpr), QImage::Format_ARGB32_Premultiplied);
        surface.setDevicePixelRatio(dpr);
    }
    void paint(qreal dpr)
    {
        QPainter p(&surface);
        const Rect f = window.frame();
        StripPainter(*core.app, dpr).drawRect(p, QSizeF(f.w, f.h));
    }
};

void painting(benchmark::State& state, int zoomed, qreal dpr)
{
    Strip strip(zoomed, dpr);
    for (auto _ : state) {
        strip.paint(dpr);
        benchmark::ClobberMemory();
    }
    state.counters["width"] = strip.window.frame().w;
    state.counters["height"] = strip.window.frame().h;
}

void BM_PaintZoomedInSevenStations(benchmark::State& s) { painting(s, 1, 1); }
void BM_PaintZoomedOutWithMap(benchmark::State& s) { painting(s, 0, 1); }
void BM_PaintZoomedInSevenStationsHiDpi(benchmark::State& s) { painting(s, 1, 2); }
void BM_PaintZoomedOutWithMapHiDpi(benchmark::State& s) { painting(s, 0, 2); }
BENCHMARK(BM_PaintZoomedInSevenStations)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PaintZoomedOutWithMap)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PaintZoomedInSevenStationsHiDpi)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PaintZoomedOutWithMapHiDpi)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
