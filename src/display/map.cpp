// The map beside the zoomed-out strip: a longitude/latitude box on an integer canvas
// whose y grows upwards (north edge at 250, south at 110), the background picture's
// place, and the counters that make a trip appear stop by stop.

#include "display/display.h"

#include "util/dates.h"
#include "util/text.h"

namespace quendle {

namespace {

// Each row is the box its picture (same index in the name list) covers. The last two
// rows have no picture.
const std::array<BackgroundRow, 29> kBackground = {{
    {95.8f, 8.5f, 175.8f, -59.5f, 2000},
    {112.278f, -9.4687f, 154.139f, -44.2032f, 0},
    {143.575f, -37.1702f, 145.994f, -38.763f, 0},
    {134.0f, -29.9f, 142.2f, -39.1f, 1000},
    {115.0f, -30.45f, 118.6f, -33.5f, 1158},
    {137.22f, -10.5f, 160.12f, -29.71f, 1000},
    {140.59f, -10.1f, 151.69f, -23.65f, 0},
    {150.05f, -33.0287f, 151.581f, -34.6488f, 0},
    {144.587f, -37.65f, 145.288f, -38.0412f, 0},
    {128.3f, -10.5f, 138.1f, -24.2f, 800},
    {129.0f, -26.5f, 141.1f, -38.3f, 562},
    {152.4f, -26.91f, 153.8f, -27.79f, 994},
    {143.8f, -39.3f, 148.9f, -43.85f, 800},
    {140.285f, -33.4106f, 150.274f, -39.5372f, 0},
    {144.88f, -37.76f, 145.04f, -37.87f, 348},
    {111.6f, -11.7f, 129.0f, -36.79f, 1000},
    {151.1f, -25.92f, 155.14f, -28.8f, 994},
    {150.887f, -33.7786f, 151.277f, -34.0114f, 0},
    {150.917f, -33.7489f, 151.143f, -33.9446f, 0},
    {131.479f, -8.9f, 155.35f, -45.0f, 0},
    {101.226f, 1.05418f, 168.063f, -51.7139f, 0},
    {107.416f, -4.36254f, 162.133f, -47.2282f, 0},
    {136.427f, -21.7974f, 154.798f, -42.5135f, 0},
    {148.332f, -33.0971f, 152.364f, -35.323f, 0},
    {150.285f, -33.3736f, 151.615f, -34.4058f, 0},
    {147.349f, -28.6423f, 155.279f, -35.7789f, 0},
    {148.336f, -29.4776f, 154.591f, -35.0119f, 0},
    {134.785f, -4.36254f, 162.133f, -47.2282f, 0},
    {0, 0, 0, 0, 0},
}};

} // namespace

const std::array<BackgroundRow, 29>& Display::bkgnd() { return kBackground; }

const QStringList& Display::mapnames()
{
    // There is no "m".
    static const QStringList names = {"a", "b", "c", "d", "e", "f", "g", "h", "i", "j", "k", "l", "n", "o",
                                      "p", "q", "r", "s", "t", "u", "v", "w", "x", "y", "z", "a1", "b1"};
    return names;
}

// Computed in double from the float box, so that the box's own edges land exactly on
// the canvas edges.
int Display::gpshtocanvas(float longitude) const
{
    const double span = static_cast<double>(gpsview.east) - gpsview.west;
    return truncint((static_cast<double>(longitude) - gpsview.west) * (canvasview.xeast - canvasview.xwest) / span
                    + canvasview.xwest);
}

int Display::gpsvtocanvas(float latitude) const
{
    const double span = (-static_cast<double>(gpsview.south)) - (-static_cast<double>(gpsview.north));
    return truncint(((-static_cast<double>(latitude)) - (-static_cast<double>(gpsview.north)))
                        * (canvasview.ysouth - canvasview.ynorth) / span
                    + canvasview.ynorth);
}

float Display::canvasxtogpsh(int x) const
{
    const double t = static_cast<double>(x - canvasview.xwest) / (canvasview.xeast - canvasview.xwest);
    return static_cast<float>(gpsview.west + t * (static_cast<double>(gpsview.east) - gpsview.west));
}

float Display::canvasvtogpsh(int y) const
{
    const double t = static_cast<double>(y - canvasview.ynorth) / (canvasview.ysouth - canvasview.ynorth);
    return static_cast<float>(gpsview.north
                              - t * ((-static_cast<double>(gpsview.south)) - (-static_cast<double>(gpsview.north))));
}

IntRect Display::stnnumtorect(int stnnum) const
{
    if (stnnum < 0 || stnnum >= static_cast<int>(tt_.stnsmute.size()))
        return IntRect{};
    const StationRecord& s = tt_.stnsmute[stnnum];
    return IntRect{gpshtocanvas(floatvalue(s.hloc)), gpsvtocanvas(floatvalue(s.vloc)), 4, 4};
}

// Crosses the keys on purpose, as the station hit test does.
IntPoint Display::stnnumtopoint(int stnnum) const
{
    if (stnnum < 0 || stnnum >= static_cast<int>(tt_.stnsmute.size()))
        return IntPoint{};
    const StationRecord& s = tt_.stnsmute[stnnum];
    return IntPoint{gpshtocanvas(floatvalue(s.vloc)), gpsvtocanvas(floatvalue(s.hloc))};
}

IntPoint Display::stnnametopoint(const QString& name) const { return stnnumtopoint(tt_.stnnametoint(name)); }

bool Display::amiinmap(int x, int) const { return x > barwidth * userscale; }

void Display::togglemapview()
{
    view_.showinmap = view_.showinmap == 1 ? 0 : 1;
    host_.refreshdisplay();
}

void Display::toggletrakworkview()
{
    view_.mytwview = view_.mytwview != 0 ? 0 : 1;
    host_.refreshdisplay();
}

MapBackground Display::getmapbkgnddict() const
{
    const BackgroundRow& row = kBackground[5];
    const int y1 = gpsvtocanvas(row.lat1), y2 = gpsvtocanvas(row.lat2);
    const int x1 = gpshtocanvas(row.lon1), x2 = gpshtocanvas(row.lon2);
    const int ymin = std::min(y1, y2), ymax = std::max(y1, y2), xmax = std::max(x1, x2);
    // Kept as it has always been: the left edge takes the second latitude's canvas y.
    const int xmin = x1 < x2 ? y2 : x1;
    MapBackground b;
    b.name = mapnames()[5];
    b.retbegy = ymin;
    b.rectbegx = xmin;
    b.ywidth = ymax - ymin;
    b.xwidth = xmax - xmin;
    return b;
}

void Display::drawnewmappoints()
{
    timers_.invalidate(painttimer);
    painttimer = kNoTimer;
    numtopaint = 0;
    int stops = 0;
    for (int leg = 0; leg < static_cast<int>(j_.myindexes.size()); ++leg)
        if (const Service* s = shownservice(leg))
            stops += static_cast<int>(s->stopnums().size());
    stopsonthistrip = stops;
    painttimer = timers_.schedule(0, true, [this] { painttimerfunc(); });
}

void Display::painttimerfunc()
{
    numtopaint += 1;
    host_.redisplay();
    if (numtopaint > stopsonthistrip) {
        timers_.invalidate(painttimer);
        painttimer = kNoTimer;
    }
}

float Display::gethloconthisline(int line, int stop) const
{
    if (!validline(line) || stop < 0 || stop >= tt_.linesmute[line].stnsv.size())
        return -1;
    return floatvalue(tt_.linesmute[line].stnsv[stop]);
}

float Display::getvloconthisline(int line, int stop) const
{
    if (!validline(line) || stop < 0 || stop >= tt_.linesmute[line].stnsh.size())
        return -1;
    return floatvalue(tt_.linesmute[line].stnsh[stop]);
}

std::vector<MapStop> Display::mapstops() const
{
    std::vector<MapStop> out;
    int count = 0;
    for (int leg = 0; leg < static_cast<int>(j_.myindexes.size()); ++leg) {
        const Service* s = shownservice(leg);
        if (!s)
            continue;
        const Rgba colour = validline(s->linenum) ? tt_.linesmute[s->linenum].nscol : Rgba{0, 0, 0, 1};
        const std::vector<int> stops = s->stopnums();
        for (int k = 0; k < static_cast<int>(stops.size()); ++k)
            out.push_back(MapStop{stops[k], colour, ++count, k == 0});
    }
    return out;
}

std::vector<std::pair<int, int>> Display::closedsections() const
{
    std::vector<std::pair<int, int>> out;
    const Date present = now();
    const int n = trak_->trakwcount();
    for (int i = 0; i < n; ++i) {
        const TrakRecord r = trak_->trakw(i);
        if (r.gotstnsoutinfo != 1 || !testlumdateearlier(r.trakbegin, present)
            || !testlumdateearlier(present, r.trakend))
            continue;
        for (const TrakSection& sec : r.stnsoutfix) {
            const int a = tt_.stnnametonum(sec.trakbegstr), b = tt_.stnnametonum(sec.trakendstr);
            if (a >= 0 && b >= 0)
                out.emplace_back(a, b);
        }
    }
    return out;
}

} // namespace quendle
