#include "app/menus.h"
#include "input/input.h"
#include "support/scripted_alerts.h"
#include "support/strip_fixture.h"
#include "util/dates.h"
#include "util/text.h"

#include <gtest/gtest.h>

using namespace quendle;

namespace {

// Tuesday 24 November 2026, Sydney.
Date at(int h, int m, int s = 0) { return datefromcivil({2026, 11, 24, h, m, s}); }

struct Popped {
    MenuKind kind;
    int row;
    int x, y;
    Menu menu;
};

QStringList titles(const Menu& m)
{
    QStringList out;
    for (const MenuItem& i : m)
        out << i.title;
    return out;
}

class InputTest : public testsupport::StripFixture {
protected:
    Input& begin(const QStringList& journey, Date now = at(8, 5, 40))
    {
        platform.alerts = &alerts;
        start(journey, now);
        menus = std::make_unique<Menus>(*app);
        input = std::make_unique<Input>(*app, *menus);
        input->popup = [this](const Menu& m, MenuKind kind, int row, int x, int y) {
            popped.push_back({kind, row, x, y, m});
        };
        return *input;
    }
    int shown() const { return app->journey().myindexes.at(0); }

    testsupport::ScriptedAlerts alerts;
    std::unique_ptr<Menus> menus;
    std::unique_ptr<Input> input;
    std::vector<Popped> popped;
};

} // namespace

// The typed characters and the hardware key code both count: z scrolls down (and so
// zooms out) and then steps back and, falling through, forward; x scrolls up and steps.
TEST_F(InputTest, KeyRowsScrollStepAndReturnToNow)
{
    Input& in = begin({"Central", "Strathfield"});
    const int now = shown();
    ASSERT_EQ(in.caniscroll(), 1);

    in.keyDown({"z", keycode::z});   // the scroll back is refused at the present; the step is not
    EXPECT_EQ(shown(), now + 1);
    EXPECT_EQ(app->view().zoomed, 0);
    EXPECT_TRUE(timers.isValid(app->zoomintimer));

    in.keyDown({"x", keycode::x});   // scroll up and step forward: two services on
    EXPECT_EQ(shown(), now + 3);
    in.keyDown({"z", keycode::z});   // one back, one forward
    EXPECT_EQ(shown(), now + 3);
    in.keyDown({"z", -1});           // the character alone only scrolls
    EXPECT_EQ(shown(), now + 2);
    in.keyDown({"", keycode::x});    // the key alone (another layout's character) only steps
    EXPECT_EQ(shown(), now + 3);
    for (int code : {keycode::left, keycode::right, keycode::up, keycode::down})
        in.keyDown({"", code});
    EXPECT_EQ(shown(), now + 3);

    in.keyDown({"n", -1});
    EXPECT_EQ(shown(), now);
    EXPECT_EQ(app->journey().needleontherecord, 1);

    // The zoom-in timer brings the strip back 21 seconds after the scroll.
    clock.set(at(8, 6, 30));
    in.keyDown({"z", -1});
    timers.advanceTo(at(8, 6, 50));
    EXPECT_EQ(app->view().zoomed, 0);
    timers.advanceTo(at(8, 6, 52));
    EXPECT_EQ(app->view().zoomed, 1);

    // "c" shows and hides the trackwork panel.
    in.keyDown({"c", -1});
    EXPECT_EQ(app->view().mytwview, 1);
    in.keyDown({"c", -1});
    EXPECT_EQ(app->view().mytwview, 0);
}

TEST_F(InputTest, DebugRowsAnswerOnlyInDebugMode)
{
    Input& in = begin({"Central", "Strathfield"});
    in.keyDown({"m", -1});
    in.keyDown({"b", -1});
    in.keyDown({"i", -1});
    EXPECT_EQ(app->view().showinmap, 1);
    EXPECT_EQ(alerts.count(), 0);

    app->lumdebug = 1;
    in.keyDown({"m", -1});
    EXPECT_EQ(app->view().showinmap, 0);
    app->userstate().writethisbookmark({"Central", "Hornsby"});
    in.keyDown({"b", -1});   // its row is listed twice
    ASSERT_EQ(alerts.count(), 2);
    EXPECT_EQ(alerts.shown()[0].message, alerts.shown()[1].message);
    EXPECT_TRUE(alerts.shown()[0].message.contains("markheader = Central;"));
    in.keyDown({"i", -1});   // the indices, then the chains
    ASSERT_EQ(alerts.count(), 4);
    EXPECT_TRUE(alerts.shown()[2].message.startsWith("(\n    "));
    EXPECT_TRUE(alerts.shown()[3].message.startsWith("(\n    (\n        "));
}

// Scrolling stops at the last connection and needs a journey with a leg; a refused scroll
// keeps the view zoomed in. In the alarm panel the wheel changes the minutes instead.
TEST_F(InputTest, WheelScrollsWithinTheConnectionsAndSetsAlarmMinutesInThePanel)
{
    Input& in = begin({"Central", "Strathfield"});
    const int now = shown();
    in.scrollWheel(300, 40, 0, 120);
    EXPECT_EQ(shown(), now + 1);
    EXPECT_EQ(app->view().zoomed, 0);
    in.scrollWheel(300, 40, 0, -15);   // any size of delta is one step
    EXPECT_EQ(shown(), now);
    in.scrollWheel(300, 40, -3, 120);  // a sideways component wins, and does nothing
    EXPECT_EQ(shown(), now);

    Journey& j = app->journey();
    app->zoominfunc();
    j.myactualindex = static_cast<int>(j.connectingservs.size()) - 1;
    EXPECT_EQ(in.caniscroll(), 0);
    in.scrollWheel(300, 40, 0, 120);
    EXPECT_EQ(shown(), now);
    EXPECT_EQ(app->view().zoomed, 1);
    j.myactualindex = 0;

    app->view().inalarmscreen = 1;
    const int mins = app->userstate().alarmdefaultmins;
    clock.set(at(7, 0));   // an hour before the shown service: room for five more minutes
    in.scrollWheel(300, 40, 0, 120);
    EXPECT_EQ(app->userstate().alarmdefaultmins, mins + 5);
    in.scrollWheel(300, 40, 0, -120);
    in.scrollWheel(300, 40, 0, -120);
    EXPECT_EQ(app->userstate().alarmdefaultmins, mins - 5);
    EXPECT_EQ(shown(), now);
    EXPECT_EQ(app->view().zoomed, 1);
    app->view().inalarmscreen = 0;

    // Over the map the wheel zooms the map.
    const GpsView before = app->display().gpsview;
    in.scrollWheel(app->display().barwidth + 10, 40, 0, -120);
    EXPECT_LT(app->display().gpsview.west, before.west);
    EXPECT_EQ(shown(), now);

    // One station: nothing to scroll.
    Input& one = begin({"Central"});
    EXPECT_EQ(one.caniscroll(), 0);
    one.scrollup();
    EXPECT_EQ(app->view().zoomed, 1);
}

// Control (or the right button) opens the journey menu wherever the click is; a plain
// click opens the station menu of every selection rectangle that strictly holds it.
TEST_F(InputTest, ClicksOpenTheMenusInsideStrictRectangleEdges)
{
    Input& in = begin({"Central", "Strathfield", "Parramatta"});
    in.mouseDown({5, 5, true, 1});
    ASSERT_EQ(popped.size(), 1u);
    EXPECT_EQ(popped[0].kind, MenuKind::Journey);
    EXPECT_EQ(titles(popped[0].menu), titles(menus->dojourneymenu()));

    popped.clear();
    const auto squares = app->display().selectionsquares;
    ASSERT_EQ(squares.size(), 4u);
    const SelectionSquare s = squares[2];
    for (const auto& [x, y] : std::vector<std::pair<int, int>>{{s.rectbegx, s.retbegy + 5},
                                                              {s.rectbegx + s.xwidth, s.retbegy + 5},
                                                              {s.rectbegx + 5, s.retbegy},
                                                              {s.rectbegx + 5, s.retbegy + s.ywidth}})
        in.mouseDown({x, y, false, 1});
    EXPECT_TRUE(popped.empty());
    in.mouseDown({s.rectbegx + 1, s.retbegy + 1, false, 1});
    ASSERT_EQ(popped.size(), 1u);
    EXPECT_EQ(popped[0].kind, MenuKind::Stations);
    EXPECT_EQ(popped[0].row, 2);
    EXPECT_EQ(popped[0].menu.back().representedObject, app->timetable().stnsmute.back().name + "#2");

    // Running the chosen item's action changes the journey from that row on.
    const Menu m = popped[0].menu;
    const auto hornsby = std::find_if(m.begin(), m.end(), [](const MenuItem& i) { return i.title == "Hornsby"; });
    ASSERT_NE(hornsby, m.end());
    hornsby->action();
    EXPECT_EQ(app->journey().myjournstr.value(2), "Hornsby");
}

// Zoomed out, a click picks the connection in that row and zooms back in with the
// growing-tile animation; a double click returns to the present.
TEST_F(InputTest, TileSelectionAndDoubleClick)
{
    Input& in = begin({"Central", "Strathfield"});
    Journey& j = app->journey();
    const int now = shown();
    in.scrollup();
    ASSERT_EQ(app->view().zoomed, 0);
    app->display().adjustclippingbasedonjourneylength();
    const int h = app->display().getwinframeheightint();
    in.mouseDown({200, h - 2 * app->display().mahzoomouttileheight - 10, false, 1});   // row 2
    const Chain& chain = j.connectingservs[now + 1 + 2];
    EXPECT_EQ(j.myindexes, std::vector<int>(chain.begin(), chain.end()));
    EXPECT_EQ(app->view().zoomed, 1);
    EXPECT_TRUE(app->display().animating());

    in.mouseUp(1);
    EXPECT_NE(shown(), now);
    in.mouseUp(2);
    EXPECT_EQ(shown(), now);

    // A row past the last connection changes nothing.
    app->view().zoomed = 0;
    in.selecttile(100000);
    EXPECT_EQ(app->view().zoomed, 0);
}

TEST_F(InputTest, MapHitTestAndDragsRefused)
{
    Input& in = begin({"Central", "Strathfield"});
    Display& d = app->display();
    // The hit test reads "vloc" (the latitude) as the longitude and "hloc" as the
    // latitude, so only a box with the two crossed puts stations on the map's canvas.
    const StationRecord& s = app->timetable().stnsmute.at(app->timetable().stnnametonum("Central"));
    d.gpsview = GpsView{-34.5f, -33.5f, 151.7f, 150.7f};
    const int x = d.gpshtocanvas(floatvalue(s.vloc)) + d.barwidth;
    const int y = d.gpsvtocanvas(floatvalue(s.hloc)) + 150;
    const QString hit = in.didihit(x, y);
    EXPECT_FALSE(hit.isEmpty());
    EXPECT_EQ(d.hitstnnum, app->timetable().stnnametonum(hit));
    in.mouseMoved(x, y);
    EXPECT_EQ(d.mymapinfostr, hit);
    in.mouseMoved(d.barwidth + 1, 2000);
    EXPECT_EQ(d.mymapinfostr, "");

    EXPECT_EQ(Input::draggingEntered(4 | 1), 4);
    EXPECT_EQ(Input::draggingEntered(1), 0);
    EXPECT_FALSE(Input::prepareForDragOperation());
    EXPECT_FALSE(Input::performDragOperation());
}
