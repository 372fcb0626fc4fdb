#include "input/input.h"

#include "app/appmodel.h"
#include "util/text.h"

namespace quendle {

namespace {

constexpr double kZoomInAfterScroll = 21;

QString indent(int level) { return describeindent(level); }

// A list of already described entries, at a nesting level.
QString describelist(const QStringList& entries, int level)
{
    if (entries.isEmpty())
        return QStringLiteral("(\n") + indent(level) + ')';
    QString out = QStringLiteral("(\n");
    for (int i = 0; i < entries.size(); ++i)
        out += indent(level + 1) + entries[i] + (i + 1 < entries.size() ? ",\n" : "\n");
    return out + indent(level) + ')';
}

QString describeints(const std::vector<int>& list, int level)
{
    QStringList entries;
    for (int v : list)
        entries << describevalue(QString::number(v));   // kept as "%i" texts
    return describelist(entries, level);
}

QString describebookmark(const Bookmark& b, int level)
{
    QStringList stations;
    for (const QString& s : b.substns)
        stations << describevalue(s);
    return QStringLiteral("{\n") + indent(level + 1) + "markheader = " + describevalue(b.markheader) + ";\n"
        + indent(level + 1) + "score = " + QString::number(b.score) + ";\n" + indent(level + 1)
        + "substns = " + describelist(stations, level + 1) + ";\n" + indent(level) + '}';
}

} // namespace

Input::Input(AppModel& app, Menus& menus) : app_(app), menus_(menus)
{
    // The scrubber column of the zoomed-in strip scrolls through the same operations.
    app_.display().scrollup = [this] { scrollup(); };
    app_.display().scrolldown = [this] { scrolldown(); };
    striptables = [this] { app_.publisher().striptables(); };
    getlastupdatestr = [this] { return app_.updater().getlastupdatestr(); };
    getnextupdatestr = [this] { return app_.updater().getnextupdatestr(); };
}

void Input::alert(const QString& text)
{
    if (Alerts* a = app_.platform().alerts)
        a->alert(text, QString(), {QStringLiteral("OK")});
}

// One key may trigger several rows: each is compared in turn.
void Input::keyDown(const KeyPress& key)
{
    const QString& c = key.characters;
    if (app_.lumdebug == 1)
        debugkey(c);
    if (c == QLatin1String("n"))
        app_.journey().gotonow();
    if (c == QLatin1String("z"))
        scrolldown();
    if (c == QLatin1String("x"))
        scrollup();
    if (c == QLatin1String("c"))
        app_.display().toggletrakworkview();

    switch (key.keycode) {
    case keycode::left:
    case keycode::right:
    case keycode::down:
    case keycode::up:
        break;
    case keycode::x:
        app_.journey().stepforward();
        break;
    case keycode::z:
        stepbak();
        // Falls through on purpose: z steps back and then forward.
        app_.journey().stepforward();
        break;
    default:
        break;
    }
}

void Input::debugkey(const QString& c)
{
    Journey& j = app_.journey();
    if (c == QLatin1String("m"))
        app_.display().togglemapview();
    if (c == QLatin1String("s") && striptables)
        striptables();
    if (c == QLatin1String("f"))
        app_.bringtofront();
    if (c == QLatin1String("p"))
        app_.writesuccupdate();
    if (c == QLatin1String("t"))
        alert(app_.disruptions().getcurraffektrakwstr());
    if (c == QLatin1String("d"))
        app_.disruptions().debugthistime();
    if (c == QLatin1String("s"))
        j.setviewindexestocurrent();
    if (c == QLatin1String("i")) {
        alert(describeints(j.myindexes, 0));
        QStringList chains;
        for (const Chain& chain : j.connectingservs)
            chains << describeints(chain, 1);
        alert(describelist(chains, 0));
    }
    auto bookmarks = [this] {
        QStringList all;
        for (const Bookmark& b : app_.userstate().mybookmarks)
            all << describebookmark(b, 1);
        alert(describelist(all, 0));
    };
    if (c == QLatin1String("b"))
        bookmarks();
    if (c == QLatin1String("u")) {
        alert(getlastupdatestr ? getlastupdatestr() : QString());
        alert(getnextupdatestr ? getnextupdatestr() : QString());
    }
    // Listed twice, so shown twice.
    if (c == QLatin1String("b"))
        bookmarks();
}

void Input::mouseDown(const MouseDown& e)
{
    Display& d = app_.display();
    if (e.control) {
        if (popup)
            popup(menus_.dojourneymenu(), MenuKind::Journey, -1, e.x, e.y);
    } else if (app_.view().zoomed != 1) {
        selecttile(d.getvertcellzoomout(e.x, e.y));
    } else {
        // Strict on every edge; every rectangle that holds the point opens its menu. The
        // rectangles are copied: a choice recalculates the journey and rebuilds them.
        const std::vector<SelectionSquare> squares = d.selectionsquares;
        for (int i = 0; i < static_cast<int>(squares.size()); ++i) {
            const SelectionSquare& s = squares[i];
            if (s.rectbegx < e.x && e.x < s.rectbegx + s.xwidth && s.retbegy < e.y && e.y < s.retbegy + s.ywidth
                && popup)
                popup(menus_.dostnsmenu(i), MenuKind::Stations, i, e.x, e.y);
        }
    }
    if (d.amiinmap(e.x, e.y))
        didihit(e.x, e.y);
}

void Input::mouseUp(int clickcount)
{
    if (clickcount == 2)
        app_.journey().gotonow();
}

void Input::doubleclik() { app_.journey().gotonow(); }

void Input::mouseMoved(int x, int y)
{
    Display& d = app_.display();
    if (d.amiinmap(x, y))
        d.mymapinfostr = didihit(x, y);
}

QString Input::didihit(int x, int y)
{
    Display& d = app_.display();
    const float lon = d.canvasxtogpsh(x - d.barwidth);
    const float lat = d.canvasvtogpsh(y - 150);
    const auto& stations = app_.timetable().stnsmute;
    for (int i = 0; i < static_cast<int>(stations.size()); ++i) {
        const float v = floatvalue(stations[i].vloc);
        const float h = floatvalue(stations[i].hloc);
        if (lon - 0.01f < v && v < lon + 0.01f && lat - 0.01f < h && h < lat + 0.01f) {
            d.hitstnnum = i;
            app_.redisplay();
            return stations[i].name;
        }
    }
    return QString();
}

void Input::scrollWheel(int x, int y, double dx, double dy)
{
    Display& d = app_.display();
    if (d.amiinmap(x, y)) {
        if (dy > 0)
            d.zoomin(0.1f);
        else if (dy < 0)
            d.zoomout(0.1f);
        return;
    }
    if (dx < 0)
        scrollright();
    else if (dx > 0)
        scrollleft();
    else if (dy > 0)
        scrollup();
    else if (dy < 0)
        scrolldown();
}

void Input::concludeDragOperation() { app_.redisplay(); }

void Input::scrollup()
{
    if (app_.view().inalarmscreen == 1) {
        app_.addminstoalarm(5);
        return;
    }
    if (caniscroll() != 1)
        return;
    app_.journey().scrollthisindex(0, 1);
    app_.view().zoomed = 0;
    app_.refreshdisplay();
}

void Input::scrolldown()
{
    if (app_.view().inalarmscreen == 1) {
        app_.addminstoalarm(-5);
        return;
    }
    if (caniscroll() != 1)
        return;
    app_.journey().scrollthisindex(0, -1);
    app_.view().zoomed = 0;
    app_.platform().timers->setFireDate(app_.zoomintimer, app_.now().plusSeconds(kZoomInAfterScroll));
    app_.refreshdisplay();
}

int Input::caniscroll() const
{
    const Journey& j = app_.journey();
    const int chains = static_cast<int>(j.connectingservs.size());
    if (j.myactualindex == chains - 1 || j.myjournstr.size() < 2 || chains < 2)
        return 0;
    return 1;
}

void Input::selecttile(int row)
{
    Journey& j = app_.journey();
    const int c = j.getmyviewindex(0) + row;
    if (c < 0 || c >= static_cast<int>(j.connectingservs.size()))
        return;
    j.myindexes.assign(j.connectingservs[c].begin(), j.connectingservs[c].end());
    app_.refreshmeubar();
    app_.display().beginzoominanim(row);
    app_.zoominfunc();
}

} // namespace quendle
