#include "display/display.h"
#include "support/strip_fixture.h"
#include "util/dates.h"

#include <gtest/gtest.h>

#include <map>

using namespace quendle;

namespace {

// Tuesday 24 November 2026, Sydney.
Date at(int h, int m, int s = 0) { return datefromcivil({2026, 11, 24, h, m, s}); }

class DisplayTest : public testsupport::StripFixture {
protected:
    AppModel& start(const QStringList& journey, Date now = at(8, 5, 40)) { return StripFixture::start(journey, now); }
};

} // namespace

TEST(TextWidth, EstimateAddsEveryListedWeightToTheBase)
{
    EXPECT_EQ(scoremystr("l"), 2);   // listed twice: 1.09 + 0.535 + 0.431
    EXPECT_EQ(scoremystr("a"), 1);
    EXPECT_EQ(scoremystr(""), 0);
    EXPECT_EQ(scoremystr("E"), 2);   // the last consulted row of the whole-number table
    EXPECT_EQ(scoremystr("Bondi Junction"), 23);
    EXPECT_FLOAT_EQ(scoremystrfloat("s"), 1.09f + 0.735f + 0.972f);
    EXPECT_FLOAT_EQ(scoremystrfloat("E"), 1.09f);   // pushed out of the consulted rows
    EXPECT_FLOAT_EQ(scoremystrfloat("aa"), 2.18f);

    EXPECT_EQ(givestranevenscore("a", 12), "a" + QString(11, ' '));
    EXPECT_EQ(givestranevenscore("", 12), QString(12, ' '));
    EXPECT_EQ(givestranevenscore("5:07PM", 12).size(), 6 + 5);   // 7.18 wide: 4.82 short
    EXPECT_EQ(givestranevenscore("a much longer text", 9), "a much longer text");
    EXPECT_EQ(cutoffstricely("anything at all", 3), "anything at all");
}

TEST_F(DisplayTest, TitlesAndColumnsOfTheZoomedInRows)
{
    start({"Bondi Junction", "Central", "Strathfield"});
    EXPECT_EQ(d().getstrthisleg(0), "Bondi Junction to                       \n");
    EXPECT_EQ(d().getstrthisleg(1), "Bondi Junction to Central\n");
    EXPECT_EQ(d().getstrthisleg(2), "Strathfield\n");
    EXPECT_EQ(d().getstrthisleg(3), "\n then           ");
    EXPECT_EQ(d().getstrthisleg(9), "\n");
    EXPECT_EQ(d().getstrthisleg(-2), "\n");

    ASSERT_EQ(j().myindexes.size(), 2u);
    const QStringList cols = d().getstrthislegray(2);
    ASSERT_EQ(cols.size(), 4);
    EXPECT_EQ(cols[0], givestranevenscore(j().myzoominremaintimes[1], 12));
    EXPECT_TRUE(cols[0].startsWith(' ') && cols[0].endsWith(' '));
    EXPECT_EQ(cols[1].trimmed(), datetoshrtstr(shown(1).deptime));
    EXPECT_EQ(cols[2], datetoshrtstr(shown(1).desttime));
    EXPECT_EQ(cols[3], app->timetable().linesmute[shown(1).linenum].dispname);
    d().showlinename = 0;
    EXPECT_EQ(d().getstrthislegray(2).size(), 3);
    for (int n : {-1, 0, 3, 7})
        EXPECT_TRUE(d().getstrthislegray(n).isEmpty()) << n;

    // Out of range never fails: travel "", remaining " ".
    EXPECT_EQ(d().traveltimeforthisconnekstr(-1), "");
    EXPECT_EQ(d().traveltimeforthisconnekstr(100000), "");
    EXPECT_EQ(d().waittimeforthisconnekstr(100000), "");
    EXPECT_EQ(d().remaintimeforthisconnekstr(-3), " ");
    EXPECT_EQ(d().getremainforthisleg(5), " ");

    // The last leg's second line is the trip's summary; the first leg has none.
    const int v = j().getthisviewindex(0);
    const TravelTime& t = j().mytraveltimes[v];
    EXPECT_EQ(d().getsubstrthisleg(1), "");
    const QString wait = t.waitminstr.isEmpty() ? QString() : t.waitminstr + " wait ";
    EXPECT_EQ(d().getsubstrthisleg(2), wait + t.travelstr + " Travel time");
    EXPECT_EQ(d().getsummarystr(), "in " + j().myremaintimes[v] + "  leave  " + datetoshrtstr(shown(0).deptime)
                                       + " arrive " + datetoshrtstr(shown(1).desttime) + wait + t.travelstr);
    EXPECT_TRUE(d().getstopsstr().startsWith("\n stopping Bondi Junction"));
    EXPECT_EQ(d().getstopsstr().count("\n stopping "),
              static_cast<qsizetype>(shown(0).stopnums().size() + shown(1).stopnums().size()));
}

TEST_F(DisplayTest, OneLegJourneyHasNoSummaryLineAndEmptyStateHasPlaceholders)
{
    start({"Bondi Junction", "Edgecliff"});
    EXPECT_FALSE(d().canidrawsummary());
    EXPECT_TRUE(d().thisthelastleg(1));
    EXPECT_EQ(d().getsubstrthisleg(1), "");
    EXPECT_EQ(d().getdayheaderstr(), relativedatejustday(shown(0).deptime, at(8, 5, 40)));
    const QStringList zoomedout = d().getstringforthiszoomouttileray(j().myactualindex);
    ASSERT_EQ(zoomedout.size(), 5);
    EXPECT_EQ(zoomedout[1], datetoshrtstr(j().myservsmultid[0][j().myactualindex].deptime));
    EXPECT_TRUE(d().getstringforthiszoomouttileray(j().myactualindex - 1).isEmpty());

    j().myindexes.clear();
    EXPECT_EQ(d().getdayheaderstr(), "dayheadstrtrrtrtrt");
    EXPECT_EQ(d().getsummarystr(), "");
}

TEST_F(DisplayTest, TrackworkSecondLines)
{
    start({"Bondi Junction", "Central", "Strathfield"});
    testsupport::ScriptedTrackwork trak;
    TrakRecord closed;
    closed.trakbegin = at(7, 0);
    closed.trakend = at(23, 0);
    closed.stnsoutfix = {{"Central", "Redfern"}, {"Redfern", "Strathfield"}};
    TrakRecord later;
    later.trakbegin = at(22, 30);
    later.trakend = datefromcivil({2026, 11, 26, 4, 0, 0});
    later.originfostr = "Buses replace trains";
    later.stnsoutfix = {{"Bondi Junction", "Central"}};
    trak.records = {closed, later};
    d().settrackwork(&trak);

    const int i0 = j().myindexes[0], i1 = j().myindexes[1];
    trak.status[{0, i0}] = {0, -2};
    trak.status[{1, i1}] = {-2};
    EXPECT_EQ(d().getsubstrthisleg(1),
              "Trackwork until 11:00PM  between Central and Redfern,Redfern and Strathfield.");
    EXPECT_EQ(d().getsubstrthisleg(2), "Upcoming Trackwork 10:30PM between Bondi Junction and Central.");
    // Without closed sections the operator's own text stands in; an upcoming number past
    // the list gives nothing.
    trak.records[0].stnsoutfix.clear();
    trak.records[0].originfostr = "Check before you travel";
    EXPECT_EQ(d().getsubstrthisleg(1), "Trackwork until 11:00PM  Check before you travel");
    trak.status[{1, i1}] = {-7};
    EXPECT_EQ(d().getsubstrthisleg(2), "");
    EXPECT_EQ(d().simpledisplayytakwbydatedatesubstr(5), "");

    // The leg icons follow the same statuses.
    trak.status[{1, i1}] = {-1};
    EXPECT_EQ(d().getimgforthisleg(0), "trakwjuly");
    EXPECT_EQ(d().getimgforthisleg(1), "trakwupcom");
    EXPECT_EQ(d().getimgforthisleg(-1), "");
    trak.status.clear();
    EXPECT_EQ(d().getimgforthisleg(1), "sydtrrr");
    trak.inforce = 2;
    EXPECT_EQ(d().getzoomouticon(2), "trakwjuly");

    // Only trackwork that has begun closes sections on the map.
    trak.records[0].gotstnsoutinfo = 1;
    trak.records[0].stnsoutfix = {{"Central", "Redfern"}, {"Nowhere", "Central"}};
    trak.records[1].gotstnsoutinfo = 1;
    const auto sections = d().closedsections();
    ASSERT_EQ(sections.size(), 1u);
    EXPECT_EQ(sections[0], std::make_pair(app->timetable().stnnametonum("Central"),
                                          app->timetable().stnnametonum("Redfern")));
}

TEST_F(DisplayTest, AlarmSentence)
{
    start({"Bondi Junction", "Edgecliff"});
    struct Minutes : AlarmView {
        int m = 65;
        int alarmdefaultmins() const override { return m; }
    } alarm;
    d().setalarms(&alarm);
    EXPECT_EQ(d().alarmpanelstr(), "");
    app->view().inalarmscreen = 1;
    EXPECT_EQ(d().alarmpanelstr(), " warn  me \n1 h 5 min before  \nservice leavescancel   set ");
    alarm.m = 0;
    EXPECT_EQ(d().alarmpanelstr(), " warn  me \n before  \nservice leavescancel   set ");
    d().setalarms(nullptr);
    EXPECT_EQ(d().alarmpanelstr(), " warn  me \n20 min before  \nservice leavescancel   set ");
}

TEST_F(DisplayTest, WindowFollowsTheJourneyAndKeepsItsTopEdge)
{
    start({"Central"});
    EXPECT_EQ(window.frame().w, 620);
    EXPECT_EQ(window.frame().h, 75);
    const double top = window.frame().y + window.frame().h;

    app->view().imfocusd = 1;   // one station: focus adds nothing
    d().adjustclippingbasedonjourneylength();
    EXPECT_EQ(window.frame().h, 75);

    j().myjournstr = {"Bondi Junction", "Central", "Strathfield"};
    d().adjustclippingbasedonjourneylength();
    EXPECT_EQ(window.frame().h, 180);
    EXPECT_EQ(window.frame().y + window.frame().h, top);

    app->view().zoomed = 0;
    d().adjustclippingbasedonjourneylength();
    EXPECT_EQ(window.frame().w, 900);
    EXPECT_EQ(window.frame().h, 4.5 * 70 + 5);
    app->view().imfocusd = 0;
    app->view().inalarmscreen = 1;
    d().adjustclippingbasedonjourneylength();
    EXPECT_EQ(window.frame().h, 5 * 70 + 5);
    EXPECT_EQ(window.frame().y + window.frame().h, top);

    // The scale applies to the height but not to the top-edge correction.
    app->view().inalarmscreen = 0;
    app->view().zoomed = 1;
    window.setFrame(Rect{100, 500, 620, 145}, false);
    d().userscale = 2;
    d().adjustclippingbasedonjourneylength();
    EXPECT_EQ(window.frame().h, 290);
    EXPECT_EQ(window.frame().y, 500);
    EXPECT_EQ(window.frame().x, 100);
}

TEST_F(DisplayTest, WindowDraggedOffScreenComesBack)
{
    start({"Bondi Junction", "Edgecliff"});
    window.setScreenFrame(Rect{0, 0, 1920, 1080});
    window.setFrame(Rect{-900, 300, 620, 75}, false);
    d().movewindowbackifoffscreen();
    EXPECT_EQ(window.frame().x, -900 + 620 + 100);
    EXPECT_EQ(window.frame().y, 300);

    window.setFrame(Rect{2500, 300, 620, 75}, false);
    d().movewindowbackifoffscreen();
    EXPECT_EQ(window.frame().x, 1920 - 55);

    window.setFrame(Rect{400, 300, 620, 75}, false);
    d().movewindowbackifoffscreen();
    EXPECT_EQ(window.frame().x, 400);
    // Resizing runs the same rule.
    window.setFrame(Rect{-700, 200, 620, 75}, false);
    d().adjustclippingbasedonjourneylength();
    EXPECT_EQ(window.frame().x, -700 + 620 + 100);
}

TEST_F(DisplayTest, SelectionRectanglesAndRows)
{
    start({"Bondi Junction", "Central", "Strathfield"});
    ASSERT_EQ(window.frame().h, 145);
    const std::vector<SelectionSquare>& sq = d().selectionsquares;
    ASSERT_EQ(sq.size(), 4u);
    // The caption's two names share the top row, in its upper third.
    EXPECT_EQ(sq[0], (SelectionSquare{60, 145 - 70 + 46, 126, 23}));
    EXPECT_EQ(sq[1].rectbegx, 50 + scoremystr("Bondi Junction to ") * 5 + 10);
    EXPECT_EQ(sq[1].retbegy, 121);
    EXPECT_EQ(sq[2].retbegy, 145 - 140 + 46);
    EXPECT_EQ(sq[2].rectbegx, 60);
    EXPECT_EQ(sq[3].xwidth, static_cast<int>(scoremystr("then  ") * 5 * 1.1));
    EXPECT_EQ(sq[3].retbegy, 145 - 210 + 46);

    j().myjournstr = {"Central"};
    d().getmyselectionsquares();
    ASSERT_EQ(d().selectionsquares.size(), 2u);
    EXPECT_GT(d().selectionsquares[1].xwidth, 300);   // the deliberately wide "then" target

    EXPECT_EQ(d().getvertcell(300, 145), 0);
    EXPECT_EQ(d().getvertcell(300, 70), 1);
    EXPECT_EQ(d().getvertcellzoomout(300, 40), 2);
    EXPECT_EQ(d().calcxlocofsecondtilebeg(), 206);   // "Central" scores 11: (11 + 5) × 17 + 100, / 1.8
    EXPECT_EQ(d().calcxlocofsecondtileend(), 1000);
    j().myjournstr.clear();
    EXPECT_EQ(d().calcxlocofsecondtilebeg(), -111);
    EXPECT_EQ(d().calcxlocofsecondtileend(), -1000);
    EXPECT_EQ(d().getlongeststrlength(), 211);
    EXPECT_EQ(d().traveltimetoheight(100000), 142);
}

TEST_F(DisplayTest, LegUnderAPoint)
{
    start({"Bondi Junction", "Central", "Strathfield"});
    int downs = 0, ups = 0;
    d().scrolldown = [&] { ++downs; };
    d().scrollup = [&] { ++ups; };
    ASSERT_EQ(d().getwinframeheightint(), 145);
    ASSERT_EQ(d().calcxlocofsecondtilebeg(), 320);
    ASSERT_EQ(d().calcxlocofsecondtileend(), 423);
    ASSERT_TRUE(j().caniextendtrip());

    EXPECT_EQ(d().getmylegselect(75, 140), -1);    // the icon column
    EXPECT_EQ(d().getmylegselect(150, 140), 0);    // the first name of the caption
    EXPECT_EQ(d().getmylegselect(350, 140), 1);    // its second name
    EXPECT_EQ(d().getmylegselect(350, 60), -1);    // that band below the caption
    EXPECT_EQ(d().getmylegselect(150, 60), 2);     // the third station's row
    EXPECT_EQ(d().getmylegselect(600, 60), 3);     // the last row's right end extends the trip
    EXPECT_EQ(d().getmylegselect(600, 140), -1);
    EXPECT_EQ(d().getmylegselect(10, 100), -1);
    EXPECT_EQ(d().getmylegselect(40, 100), -1);
    EXPECT_EQ(d().getmylegselect(25, 100), -1);
    EXPECT_EQ(downs, 1);
    EXPECT_EQ(ups, 1);
}

TEST_F(DisplayTest, MapConversionsAtTheBoxEdges)
{
    start({"Bondi Junction", "Edgecliff"});
    GpsView& g = d().gpsview = GpsView{};
    EXPECT_EQ(d().gpshtocanvas(g.west), 0);
    EXPECT_EQ(d().gpshtocanvas(g.east), 270);
    EXPECT_EQ(d().gpsvtocanvas(g.north), 250);
    EXPECT_EQ(d().gpsvtocanvas(g.south), 110);
    EXPECT_FLOAT_EQ(d().canvasxtogpsh(0), g.west);
    EXPECT_FLOAT_EQ(d().canvasxtogpsh(270), g.east);
    EXPECT_FLOAT_EQ(d().canvasvtogpsh(250), g.north);
    EXPECT_FLOAT_EQ(d().canvasvtogpsh(110), g.south);
    EXPECT_EQ(d().gpshtocanvas(150.20036f + 2.09366f / 2), 135);
    // Truncation toward zero on both sides of the west edge.
    EXPECT_EQ(d().gpshtocanvas(g.west - 0.005f), 0);
    EXPECT_EQ(d().gpshtocanvas(g.west - 0.01f), -1);

    // The rectangle takes "hloc" as the longitude; the point crosses the keys.
    const int n = app->timetable().stnnametonum("Central");
    const StationRecord& c = app->timetable().stnsmute[n];
    EXPECT_EQ(d().stnnumtorect(n), (IntRect{d().gpshtocanvas(c.hloc.toFloat()), d().gpsvtocanvas(c.vloc.toFloat()), 4, 4}));
    EXPECT_EQ(d().stnnumtopoint(n), (IntPoint{d().gpshtocanvas(c.vloc.toFloat()), d().gpsvtocanvas(c.hloc.toFloat())}));
    EXPECT_EQ(d().stnnametopoint("Central"), d().stnnumtopoint(n));
    EXPECT_EQ(d().stnnumtorect(-1), IntRect{});

    // The background's left edge is the second latitude's canvas y, not the west longitude.
    const MapBackground bg = d().getmapbkgnddict();
    EXPECT_EQ(bg.name, "f");
    const int y1 = d().gpsvtocanvas(-10.5f), y2 = d().gpsvtocanvas(-29.71f);
    const int x1 = d().gpshtocanvas(137.22f), x2 = d().gpshtocanvas(160.12f);
    EXPECT_EQ(bg.rectbegx, y2);
    EXPECT_NE(bg.rectbegx, x1);
    EXPECT_EQ(bg.retbegy, std::min(y1, y2));
    EXPECT_EQ(bg.ywidth, std::abs(y1 - y2));
    EXPECT_EQ(bg.xwidth, x2 - y2);

    EXPECT_FALSE(d().amiinmap(600, 0));
    EXPECT_TRUE(d().amiinmap(601, -5000));
    d().userscale = 2;
    EXPECT_FALSE(d().amiinmap(1200, 100));
    EXPECT_EQ(Display::bkgnd().size(), 29u);
    EXPECT_EQ(Display::mapnames().size(), 27);
    EXPECT_FALSE(Display::mapnames().contains("m"));
}

TEST_F(DisplayTest, MapBoxZoomLimitsAndZoomOnTheTrip)
{
    start({"Bondi Junction", "Central", "Strathfield"});
    // The box holds the shown services' stops, each leg's last stop aside, with a margin.
    const GpsView& g = d().gpsview;
    for (int leg = 0; leg < 2; ++leg) {
        const Service& s = shown(leg);
        const LineRecord& line = app->timetable().linesmute[s.linenum];
        for (int stop = s.depint; stop < s.destint; ++stop) {
            EXPECT_GT(line.stnsh[stop].toFloat(), g.west);
            EXPECT_LT(line.stnsh[stop].toFloat(), g.east);
            EXPECT_LT(line.stnsv[stop].toFloat(), g.north);
            EXPECT_GT(line.stnsv[stop].toFloat(), g.south);
        }
    }
    EXPECT_LT(g.east - g.west, 0.5f);
    EXPECT_GT(g.east - g.west, 0.03f);

    // How many steps change the box's width before it stops changing.
    auto stepsuntilstill = [&](auto zoom) {
        int steps = 0;
        for (float before = -1; steps < 1000 && d().gpsview.east - d().gpsview.west != before; ++steps) {
            before = d().gpsview.east - d().gpsview.west;
            zoom();
        }
        return steps - 1;
    };
    d().gpsview = GpsView{};
    EXPECT_EQ(stepsuntilstill([&] { d().zoomin(0.1f); }), 6);   // 2.094 wide, 0.3 less each time
    EXPECT_GE(d().gpsview.east - d().gpsview.west, 0.03f);
    EXPECT_LT(d().gpsview.east - d().gpsview.west - 0.3f, 0.03f);

    EXPECT_GT(stepsuntilstill([&] { d().zoomout(0.1f); }), 10);
    EXPECT_GE(d().gpsview.east - d().gpsview.west, 4.593872f);
    EXPECT_LT(d().gpsview.east - d().gpsview.west - 0.22f, 4.593872f);
}

TEST_F(DisplayTest, ProgressiveDrawingCounters)
{
    start({"Central"});
    // No services: the drawing runs one step and stops.
    EXPECT_EQ(d().stopsonthistrip, 0);
    d().drawnewmappoints();
    EXPECT_EQ(d().numtopaint, 0);
    timers.advanceBy(0);
    EXPECT_EQ(d().numtopaint, 1);
    EXPECT_EQ(d().painttimer, kNoTimer);

    j().myjournstr = {"Bondi Junction", "Central", "Strathfield"};
    app->calctripoptimizelater();
    const int stops = static_cast<int>(shown(0).stopnums().size() + shown(1).stopnums().size());
    EXPECT_EQ(d().stopsonthistrip, stops);
    EXPECT_EQ(d().numtopaint, 0);
    EXPECT_EQ(static_cast<int>(d().mapstops().size()), stops);
    EXPECT_EQ(d().mapstops().back().count, stops);
    const int before = window.redisplays();
    timers.advanceBy(0);
    EXPECT_EQ(d().numtopaint, stops + 1);
    EXPECT_EQ(window.redisplays() - before, stops + 1);
    EXPECT_FALSE(timers.isValid(d().painttimer));

    // Scrolling the shown services restarts it.
    j().scrollthisindex(1, 1);
    EXPECT_EQ(d().numtopaint, 0);

    app->view().showinmap = 1;
    d().togglemapview();
    EXPECT_EQ(app->view().showinmap, 0);
    d().togglemapview();
    EXPECT_EQ(app->view().showinmap, 1);
}

TEST_F(DisplayTest, TileColoursIconsAndAnimation)
{
    start({"Bondi Junction", "Edgecliff"});
    const Rgba t4 = app->timetable().linesmute[shown(0).linenum].nscol;
    EXPECT_EQ(d().getcolorthisleg(1), t4);
    EXPECT_EQ(d().getcolorthisleg(2), t4);   // the extend tile takes the last leg's colour
    EXPECT_EQ(d().getcolorthisleg(0), (Rgba{0, 0, 0, 1}));
    EXPECT_EQ(d().getcolforthistile(0), t4);
    EXPECT_EQ(d().getcolforthistile(-1), (Rgba{0, 1, 0, 1}));
    EXPECT_EQ(d().getcolforthistile(100000), (Rgba{0, 1, 0, 1}));
    EXPECT_EQ(d().getimgforthisleg(0), "sydtrrr");

    const Rgba grey = Display::dimcol(Rgba{1, 1, 1, 1});
    EXPECT_NEAR(grey.r, 0.6, 1e-6);
    EXPECT_NEAR(grey.b, 0.6, 1e-6);
    EXPECT_EQ(Display::dimcol(Rgba{0, 0, 0, 1}), (Rgba{0, 0, 0, 1}));
    EXPECT_EQ(Display::dimcol(Rgba{0.5, 0.2, 0.9, 0.3}).a, 1);
    EXPECT_EQ(Display::makeapercent(1, 3), 33);
    EXPECT_EQ(Display::makeapercent(5, 0), 0);

    // No services anywhere: the leg's tile is black and its icon empty.
    j().myservsmultid[0].clear();
    j().myindexes = {-1};
    EXPECT_EQ(d().getcolorthisleg(1), (Rgba{0, 0, 0, 1}));
    EXPECT_EQ(d().getcolforthistile(0), (Rgba{0, 1, 0, 1}));
    EXPECT_EQ(d().getimgforthisleg(0), "");

    d().beginzoominanim(1);
    EXPECT_EQ(d().animatetilebeginx, 155);
    EXPECT_EQ(d().animatetilebeginy, 655);
    EXPECT_TRUE(d().animating());
    timers.advanceBy(0);
    EXPECT_EQ(d().animatetilesize, 114);
    EXPECT_FALSE(d().animating());
}
