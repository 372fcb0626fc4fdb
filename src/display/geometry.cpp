// Where things are in the strip's window: its size in each view state, the rows, the
// selection rectangles of the journey caption, the map box, and the rule that brings a
// window dragged off the screen back. All in bottom-left-origin points.

#include "display/display.h"

#include <cmath>

namespace quendle {


Display::Display(const Journey& journey, const Timetable& tt, ViewState& view, const Clock& clock, Timers& timers,
                 Host& host, const int& lumdebug)
    : j_(journey), tt_(tt), view_(view), clock_(clock), timers_(timers), host_(host), lumdebug_(lumdebug)
{
}

Rect Display::frame() const { return window_ ? window_->frame() : Rect{}; }

void Display::setwindowsize() { setwindowsizeto(700, 200); }

void Display::setwindowsizeto(float width, float height)
{
    if (window_)
        window_->setFrame(Rect{0, 0, width, height}, true);
}

void Display::adjustclippingbasedonjourneylength()
{
    const int stations = stationcount();
    float rows = 4.0f;
    if (view_.zoomed == 1)
        rows = static_cast<float>(stations - 1);
    else if (view_.inalarmscreen == 1)
        rows = 5.0f;
    if (rows < 1)
        rows = 1;
    if (view_.imfocusd == 1 && stations > 1)
        rows += 0.5f;
    const float h = rows * static_cast<float>(mahtileheight) + 5;
    const double width = view_.zoomed == 1 ? 620 : 900;
    if (window_) {
        const Rect f = window_->frame();
        // The top edge stays where it was; the correction deliberately uses the unscaled height.
        window_->setFrame(Rect{f.x, f.y + (f.h - h), width, h * userscale}, false);
    }
    movewindowbackifoffscreen();
    getmyselectionsquares();
}

void Display::movewindowbackifoffscreen()
{
    if (!window_)
        return;
    const Rect f = window_->frame();
    const Rect s = window_->screenFrame();
    int x = truncint(f.x);
    const int y = truncint(f.y), w = truncint(f.w), h = truncint(f.h);
    const int W = truncint(s.w), H = truncint(s.h);
    bool reset = false;
    if (x > W) {
        x = W - 55;   // 55 points stay visible at the right edge
        reset = true;
    } else if (x + w < 0) {
        x = x + w + 100;
        reset = true;
    }
    // y is compared with the screen's width on purpose: the frame is re-applied almost always.
    if (y + H < 0)
        reset = true;
    else if (y < W)
        reset = true;
    if (reset)
        window_->setFrame(Rect{static_cast<double>(x), static_cast<double>(y), static_cast<double>(w),
                               static_cast<double>(h)},
                          true);
}

void Display::getmyselectionsquares()
{
    selectionsquares.clear();
    const int n = stationcount();
    for (int i = 0; i <= n; ++i) {
        QString t;
        if (i < n)
            t = j_.myjournstr[i];
        else if (n == 1)
            t = QStringLiteral("then  fukfukfukfukfukfukfukfukfukfukfufuk");   // a wide target
        else
            t = QStringLiteral("then  ");
        const QString p = i == 1 ? j_.myjournstr[0] + QStringLiteral(" to ") : QString();
        const int r = i >= 2 ? i - 1 : 0;
        SelectionSquare sq;
        sq.rectbegx = iconwidth + scoremystr(p) * mahfontsize + 10;
        sq.retbegy = getwinframeheightint() - mahtileheight * (r + 1) + 2 * (mahtileheight / 3);
        sq.xwidth = truncint(scoremystr(t) * mahfontsize * 1.1);
        sq.ywidth = mahtileheight / 3;
        selectionsquares.push_back(sq);
    }
}

int Display::getvertcell(int, int y) const
{
    return mahtileheight != 0 ? (getwinframeheightint() - y) / mahtileheight : 0;
}

int Display::getvertcellzoomout(int, int y) const
{
    return mahzoomouttileheight != 0 ? (getwinframeheightint() - y) / mahzoomouttileheight : 0;
}

int Display::getvertcellfix(int, int y) const { return (getcurrwindowheight() - y) / 50; }

int Display::gettilemymouseisover(int mouseY) const
{
    return mahtileheight != 0 ? (mouseY - getwidowy()) / mahtileheight : 0;
}

int Display::calcxlocofsecondtilebeg() const
{
    if (j_.myjournstr.isEmpty())
        return -111;
    const int score = scoremystr(j_.myjournstr[0]) + scoremystr(QStringLiteral(" to "));
    return truncint((static_cast<double>(score) * tilefontsize + iconend) / 1.8);
}

int Display::calcxlocofsecondtileend() const
{
    if (j_.myjournstr.isEmpty())
        return -1000;
    if (j_.myjournstr.size() < 2)
        return 1000;
    const int score = scoremystr(j_.myjournstr[0]) + scoremystr(j_.myjournstr[1]) + scoremystr(QStringLiteral(" to "));
    return truncint((static_cast<double>(score) * tilefontsize + iconend) / 1.8);
}

int Display::getmylegselect(int x, int y)
{
    const int count = stationcount();
    int last = count;
    if (count == 1)
        last = -100;
    else if (count == 2)
        last = 0;
    else if (count > 2)
        last = count - 2;
    const int row = (getwinframeheightint() - y) / 50;
    const int leg = row + (row > 0 ? 1 : 0);

    if (scrubberend < x && x < iconend) {
        if (lumdebug_ == 1 && alerts)
            alerts->alert(getreltrakstrnotgrouped(), QString(), {QStringLiteral("OK")});
        return -1;
    }
    if (x > iconend && calcxlocofsecondtilebeg() < x && x < calcxlocofsecondtileend())
        return row == 0 ? leg + 1 : -1;
    if (iconend < x && x < 250)
        return leg;
    if (x > getcurrwindowidth() - 100) {
        if (j_.caniextendtrip() && row == last)
            return count;
    } else if (x < scrubberend) {
        if (x < scrubberend / 2) {
            if (scrolldown)
                scrolldown();
        } else if (x > scrubberend / 2) {
            if (scrollup)
                scrollup();
        }
    }
    return -1;
}

int Display::stringtoscreensize(const QString& text) const
{
    return truncint(scoremystr(text) * 10 * static_cast<double>(userscale));
}

void Display::userscaleview()
{
    if (userscale < 5)
        userscale *= 2;
    setwindowsizeto(900 * userscale, 500 * userscale);
    host_.refreshdisplay();
}

int Display::getmyscreenwidth() const { return window_ ? truncint(window_->screenFrame().w) : 0; }
int Display::getmyscreenheight() const { return window_ ? truncint(window_->screenFrame().h) : 0; }
int Display::getwidowx() const { return truncint(frame().x); }
int Display::getwidowy() const { return truncint(frame().y); }
int Display::getcurrwindowidth() const { return truncint(frame().w); }
int Display::getcurrwindowheight() const { return truncint(frame().h); }
// The view fills its window.
int Display::getwinframeheightint() const { return truncint(frame().h); }

int Display::traveltimetoheight(int leg) const
{
    if (leg < 0 || leg >= static_cast<int>(j_.mytraveltimes.size()))
        return 142;
    return 4 * makeapercent(j_.mytraveltimes[leg].traelminint - j_.minzztraveltime,
                            j_.maxzztraveltime - j_.minzztraveltime);
}

void Display::zoomin(float step)
{
    GpsView& g = gpsview;
    const float m = 0.05f + step;
    // The box may not become narrower than 0.03 degrees.
    if ((g.east - m) - (g.west + m) >= 0.03f) {
        g.west += m;
        g.east -= m;
        g.north -= m;
        g.south += m;
    }
    host_.redisplay();
}

void Display::zoomout(float step)
{
    GpsView& g = gpsview;
    const float m = 0.01f + step;
    if (g.east - g.west < 4.593872f) {
        g.west -= m;
        g.east += m;
        g.north += m;
        g.south -= m;
    }
    host_.redisplay();
}

void Display::zoomontrip()
{
    float minh = -1, maxh = -1, minv = -1, maxv = -1;
    for (int leg = 0; leg < static_cast<int>(j_.myindexes.size()); ++leg) {
        const Service* s = shownservice(leg);
        if (!s || !validline(s->linenum))
            continue;
        for (int stop = s->depint; stop < s->destint; ++stop) {
            const float h = gethloconthisline(s->linenum, stop);
            const float v = getvloconthisline(s->linenum, stop);
            if (minh == -1 || h < minh)
                minh = h;
            if (maxh == -1 || h > maxh)
                maxh = h;
            if (minv == -1 || v < minv)
                minv = v;
            if (maxv == -1 || v > maxv)
                maxv = v;
        }
    }
    gpsview.west = minv;
    gpsview.east = maxv;
    gpsview.north = maxh;
    gpsview.south = minh;
    zoomout(0.005f);
    adjustclippingbasedonjourneylength();
    if (view_.showinmap == 1)
        drawnewmappoints();
}

} // namespace quendle
