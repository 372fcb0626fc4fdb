#pragma once
// The strip's pure parts: every text a tile shows, the window and tile geometry, the
// map's coordinates, the colours and icon names of the tiles, and the counters of the
// progressive drawing. Nothing here draws; the painter asks these for every number and
// text and never computes sizes of its own.
//
// Geometry is in the view's own coordinates: points, origin at the bottom left, y
// growing upwards (as the window host reports frames). Painting converts once, where
// it meets a widget or an image.

#include "display/seams.h"
#include "display/textwidth.h"
#include "journey/journey.h"
#include "platform/alerts.h"
#include "platform/clock.h"
#include "platform/host.h"
#include "platform/timers.h"
#include "platform/window.h"
#include "timetable/timetable.h"
#include "util/viewstate.h"

#include <QString>
#include <QStringList>

#include <array>
#include <functional>
#include <vector>

namespace quendle {

// A rectangle that marks a station name of the journey caption for selection.
struct SelectionSquare {
    int rectbegx = 0;
    int retbegy = 0;   // bottom y
    int xwidth = 0;
    int ywidth = 0;
    friend bool operator==(const SelectionSquare&, const SelectionSquare&) = default;
};

struct IntRect {
    int x = 0, y = 0, w = 0, h = 0;
    friend bool operator==(const IntRect&, const IntRect&) = default;
};

struct IntPoint {
    int x = 0, y = 0;
    friend bool operator==(const IntPoint&, const IntPoint&) = default;
};

// The map's geographic box: west and east longitude, north and south latitude. It
// starts on the Sydney region.
struct GpsView {
    float west = 150.20036f, east = 152.29402f, north = -33.091248f, south = -34.31875f;
};

// Canvas x of the box's west and east edges, canvas y of its north and south edges.
struct CanvasView {
    int xwest = 0, xeast = 270, ynorth = 250, ysouth = 110;
};

// Where the background picture goes on the map canvas.
struct MapBackground {
    QString name;      // the picture's resource name
    int retbegy = 0;
    int rectbegx = 0;
    int ywidth = 0;
    int xwidth = 0;
};

// One stop of a shown service on the map, in drawing order.
struct MapStop {
    int stnnum = 0;
    Rgba colour;
    int count = 0;        // running count over all legs, from 1
    bool firstofleg = false;
};

// Truncation toward zero into the 32-bit range (NaN reads as 0), as every conversion to
// points and canvas units does.
inline int truncint(double v)
{
    if (!(v == v))
        return 0;
    if (v >= 2147483647.0)
        return 2147483647;
    if (v <= -2147483648.0)
        return -2147483647 - 1;
    return static_cast<int>(v);
}

struct BackgroundRow {
    float lon1, lat1, lon2, lat2, fifth;
};

class Display {
public:
    Display(const Journey& journey, const Timetable& tt, ViewState& view, const Clock& clock, Timers& timers,
            Host& host, const int& lumdebug);

    // The window (none for a terminal run), trackwork, alarms and alerts this reads.
    void setwindow(WindowHost* w) { window_ = w; }
    WindowHost* window() const { return window_; }
    void settrackwork(const TrackworkView* t) { trak_ = t ? t : &notrak_; }
    void setalarms(const AlarmView* a) { alarms_ = a ? a : &noalarm_; }
    const TrackworkView& trackwork() const { return *trak_; }
    const AlarmView& alarms() const { return *alarms_; }
    Alerts* alerts = nullptr;
    // The input's scrolling, asked for by clicks in the scrubber column.
    std::function<void()> scrollup;
    std::function<void()> scrolldown;

    // ---- tile texts ----------------------------------------------------------------
    QString traveltimeforthisconnekstr(int i) const;
    QString waittimeforthisconnekstr(int i) const;
    QString remaintimeforthisconnekstr(int i) const;
    QString getremainforthisleg(int leg) const;
    QString getstrthisleg(int n) const;
    QStringList getstrthislegray(int n) const;
    QString getsubstrthisleg(int n) const;
    QString getsummarystr() const;
    QString gettravelsummary() const;
    QStringList getstringforthiszoomouttileray(int i) const;
    QString getdayheaderstr() const;
    QString getstopsstr() const;
    static QString simpledisplaylinename(const QString& name) { return name; }
    static QString simpledisplayystnsout(const TrakRecord& record);
    QString simpledisplayytakwbydatedatesubstr(int i) const;
    QString simpledisplayytakwbydatedatewithupcom(int i) const;
    bool thisthelastleg(int n) const;
    bool canidrawsummary() const;
    static int decompressnegativetraknumval(int value) { return -(value + 1); }
    QString getreltrakstrnotgrouped() const;
    // The alarm panel's sentence; empty unless the panel is open.
    QString alarmpanelstr() const;

    // ---- window and tile geometry --------------------------------------------------
    void setwindowsize();
    void setwindowsizeto(float width, float height);
    void adjustclippingbasedonjourneylength();
    void movewindowbackifoffscreen();
    void getmyselectionsquares();
    int getvertcell(int x, int y) const;
    int getvertcellzoomout(int x, int y) const;
    int getvertcellfix(int x, int y) const;
    int gettilemymouseisover(int mouseY) const;
    int calcxlocofsecondtilebeg() const;
    int calcxlocofsecondtileend() const;
    int getmylegselect(int x, int y);
    int stringtoscreensize(const QString& text) const;
    void userscaleview();
    int getmyscreenwidth() const;
    int getmyscreenheight() const;
    int getwidowx() const;
    int getwidowy() const;
    int getcurrwindowidth() const;
    int getcurrwindowheight() const;
    int getwinframeheightint() const;
    int traveltimetoheight(int leg) const;
    static int traveltimetoheightb(int) { return 11; }
    static int whatlegamion(int, int) { return -1; }
    static int getlongeststrlength() { return 211; }
    static int getlargestcelllengthfukfukf() { return 900; }
    static int gettargetframeheight() { return 500; }
    void zoomin(float step);
    void zoomout(float step);
    void zoomontrip();
    void convertmouseybasedonwindowsize() {}
    void adjustmywindowwidth() {}

    // ---- map coordinates, background and progressive drawing ------------------------
    int gpshtocanvas(float longitude) const;
    int gpsvtocanvas(float latitude) const;
    float canvasxtogpsh(int x) const;
    float canvasvtogpsh(int y) const;
    IntRect stnnumtorect(int stnnum) const;
    IntPoint stnnumtopoint(int stnnum) const;
    IntPoint stnnametopoint(const QString& name) const;
    bool amiinmap(int x, int y) const;
    void togglemapview();
    // Shows or hides the trackwork panel in place of the tiles.
    void toggletrakworkview();
    MapBackground getmapbkgnddict() const;
    void drawnewmappoints();
    void painttimerfunc();
    static QString stringforthisstn(int) { return QStringLiteral("stopping zdzddzzdzddz"); }
    // The map position of a line's stop: the line records list the stop's first
    // coordinate (the longitude) as the map's vertical value and the second (the
    // latitude) as its horizontal value; -1 when the line or stop does not exist.
    float gethloconthisline(int line, int stop) const;
    float getvloconthisline(int line, int stop) const;
    // The stops of the shown services, leg by leg, with their line colour.
    std::vector<MapStop> mapstops() const;
    // Closed sections (pairs of station numbers) of trackwork that has begun.
    std::vector<std::pair<int, int>> closedsections() const;
    static const std::array<BackgroundRow, 29>& bkgnd();
    static const QStringList& mapnames();

    // ---- colours, icons, animation -------------------------------------------------
    Rgba getcolorthisleg(int r) const;
    Rgba getcolforthistile(int i) const;
    static Rgba dimcol(Rgba c) { return dimcolamnt(c, 0.4f); }
    static Rgba dimcolamnt(Rgba c, float amount);
    static int makeapercent(int part, int whole);
    static Rgba traveltimetocolll(int) { return Rgba{1, 0, 0, 1}; }
    QString getzoomouticon(int i) const;
    QString getimgforthisleg(int leg) const;
    static QString scrollthistext(const QString& text, int) { return text; }
    static int gettwicethelengthofthescrolltext() { return 322; }
    static int getstickyoftile(int, int) { return 1; }
    static int canidrawthisscrub(int) { return 1; }
    void scrolltextfunc() {}
    void showscrubber() {}
    void hidescrubber() {}
    void beginzoominanim(int leg);
    void animatetimerfunc();
    bool animating() const { return animatetimer != kNoTimer; }
    // Every text is computed when painted, so the summary only needs a redraw.
    void calccurrentdisplay() { host_.redisplay(); }

    // ---- status item --------------------------------------------------------------
    // The status icon table: a row number names a picture.
    static const QStringList& icons();
    // Creates the status item: no title, the small rail icon.
    void setupmenuitem();
    // Sets the title and the icon of row k, as the icon table maps it.
    void refreshstat(const QString& title, int unused, int k);
    int statusiconrow(int k) const;
    static QString statusclass(int row);
    QString statusbadge() const;
    QString statustooltip(const QString& title, const QString& cls) const;
    StatusShown statusitem;
    int statusicon = 0;
    // The texts of the last and the next update, as the update checks make them.
    QString updatestr = QStringLiteral(" lastupdzestr ");
    QString meowupdatestr;

    // ---- layout variables ----------------------------------------------------------
    int barwidth = 600;
    int mapwidth = 300;
    int mapheight = 300;
    int alarmviewheight = 300;
    int scrubberend = 50;
    int scrubberwidth = 50;
    int iconend = 100;
    int iconwidth = 50;
    int zoomouticonwidth = 50;
    int mahtileheight = 70;
    int mahzoomouttileheight = 50;
    int tilefontsize = 17;
    int mahfontsize = 5;
    QString mahfont = QStringLiteral("Arial");
    qint64 gapbetweentexts = 100;
    float userscale = 1.0f;
    std::vector<SelectionSquare> selectionsquares;
    int baroffset = 0;
    // 1111: no progressive drawing under way / the trip's stops not known (a map drawn
    // before the first run shows every stop).
    int numtopaint = 1111;
    int stopsonthistrip = 1111;

    // ---- tile look -----------------------------------------------------------------
    int colorscheme = 0;     // 1: zoomed-in tiles in white
    int showlinename = 1;    // 1: the line's name is a tile's last column
    int animatetilesize = 0;
    int animatetilebeginx = 0;
    int animatetilebeginy = 0;
    int slowscrollonnum = 0;
    QString dispstr;

    // ---- map ---------------------------------------------------------------------
    CanvasView canvasview;
    GpsView gpsview;
    QString mymapinfostr;
    int hitstnnum = 0;

    TimerId painttimer = kNoTimer;
    TimerId animatetimer = kNoTimer;

    const Journey& journey() const { return j_; }
    const Timetable& timetable() const { return tt_; }
    const ViewState& view() const { return view_; }
    Date now() const { return clock_.now(); }
    int lumdebug() const { return lumdebug_; }

private:
    int stationcount() const { return static_cast<int>(j_.myjournstr.size()); }
    // The shown service of a leg, or null when the leg shows none.
    const Service* shownservice(int leg) const;
    bool validline(int line) const { return line >= 0 && line < static_cast<int>(tt_.linesmute.size()); }
    Rect frame() const;

    const Journey& j_;
    const Timetable& tt_;
    ViewState& view_;
    const Clock& clock_;
    Timers& timers_;
    Host& host_;
    const int& lumdebug_;
    WindowHost* window_ = nullptr;
    TrackworkView notrak_;
    AlarmView noalarm_;
    const TrackworkView* trak_ = &notrak_;
    const AlarmView* alarms_ = &noalarm_;
};

} // namespace quendle
