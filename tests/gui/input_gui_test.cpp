// The strip driven as a person would: synthesized clicks, keys and wheel turns on the
// offscreen platform, menus answered by picking their items.

#include "app/appmodel.h"
#include "app/menus.h"
#include "gui/menupopup.h"
#include "gui/stripwindow.h"
#include "gui/trayitem.h"
#include "input/input.h"
#include "platform/system/manualtimers.h"
#include "platform/system/memorydefaults.h"
#include "platform/system/nullservices.h"
#include "support/scripted_alerts.h"
#include "util/dates.h"

#include <QApplication>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMimeData>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <functional>

#include <gtest/gtest.h>

using namespace quendle;

namespace {

Date at(int h, int m, int s = 0) { return datefromcivil({2026, 11, 24, h, m, s}); }

// Runs `answer` on the popup that the next step opens, once it is open.
void whenpopup(std::function<void(QWidget*)> answer)
{
    QTimer::singleShot(0, [answer] {
        QWidget* p = QApplication::activePopupWidget();
        ASSERT_NE(p, nullptr);
        answer(p);
    });
}

void pick(QWidget* popup, const QString& title)
{
    auto* menu = qobject_cast<QMenu*>(popup);
    ASSERT_NE(menu, nullptr);
    QAction* found = nullptr;
    for (QAction* a : menu->actions())
        if (a->text() == title)
            found = a;
    ASSERT_NE(found, nullptr) << qPrintable(title);
    ASSERT_TRUE(found->isEnabled());
    menu->hide();
    found->trigger();
}

class StripInput : public ::testing::Test {
protected:
    void SetUp() override
    {
        clock.set(at(8, 5, 40));
        platform.clock = &clock;
        platform.timers = &timers;
        platform.defaults = &defaults;
        platform.session = &session;
        platform.alerts = &alerts;
        platform.browser = &browser;
        platform.homeDir = home.path();
        platform.window = &view;
        model = std::make_unique<AppModel>(platform, AppModel::Options{false});
        menus = std::make_unique<Menus>(*model);
        input = std::make_unique<Input>(*model, *menus);
        view.setModel(model.get());
        view.setInput(input.get(), menus.get());
        model->initWithFrame();
        model->journey().myjournstr = {"Central", "Strathfield"};
        model->calctripoptimizelater();
        model->refreshdisplay();
        view.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&view));
    }
    // A view point (bottom-left origin) as a widget position.
    QPoint widgetpos(int x, int y) const { return QPoint(x, view.height() - y); }
    int shown() const { return model->journey().myindexes.at(0); }

    QTemporaryDir home;
    ManualClock clock;
    ManualTimers timers{clock};
    MemoryDefaults defaults;
    NullSession session;
    testsupport::ScriptedAlerts alerts;
    NullBrowser browser;
    Platform platform;
    MyNSView view;
    std::unique_ptr<AppModel> model;
    std::unique_ptr<Menus> menus;
    std::unique_ptr<Input> input;
};

} // namespace

TEST(StripKeys, HardwareKeysArePlacesOnTheKeyboard)
{
    // On X11 and Wayland the key's place decides: the key a French layout types "w" on is
    // the z key, and the key that types "z" there is not.
    EXPECT_EQ(hardwarekeycode(52, Qt::Key_W, "xcb"), keycode::z);
    EXPECT_EQ(hardwarekeycode(25, Qt::Key_Z, "xcb"), -1);
    EXPECT_EQ(hardwarekeycode(53, Qt::Key_X, "wayland"), keycode::x);
    EXPECT_EQ(hardwarekeycode(111, Qt::Key_Up, "xcb"), keycode::up);
    EXPECT_EQ(hardwarekeycode(113, Qt::Key_Left, "xcb"), keycode::left);
    // Without a key code (synthesized events, other platforms) Qt's key stands in.
    EXPECT_EQ(hardwarekeycode(0, Qt::Key_Z, "xcb"), keycode::z);
    EXPECT_EQ(hardwarekeycode(52, Qt::Key_X, "offscreen"), keycode::x);
    EXPECT_EQ(hardwarekeycode(0, Qt::Key_Down, "offscreen"), keycode::down);
    EXPECT_EQ(hardwarekeycode(0, Qt::Key_A, "offscreen"), -1);
}

// Change the journey from the station menu by typing part of a name.
TEST_F(StripInput, StationMenuOpensOnTheCaptionAndFindsByTyping)
{
    const SelectionSquare s = model->display().selectionsquares.at(1);
    whenpopup([](QWidget* p) {
        auto* stations = qobject_cast<StationMenu*>(p);
        ASSERT_NE(stations, nullptr);
        EXPECT_GT(stations->list()->count(), 200);
        QTest::keyClicks(stations->search(), "horn");
        int visible = 0;
        for (int i = 0; i < stations->list()->count(); ++i)
            visible += stations->list()->item(i)->isHidden() ? 0 : 1;
        EXPECT_EQ(visible, 1);
        EXPECT_EQ(stations->list()->currentItem()->data(Qt::UserRole).toString(), "Hornsby#1");
        QTest::keyClick(stations->search(), Qt::Key_Return);
    });
    QTest::mouseClick(&view, Qt::LeftButton, {}, widgetpos(s.rectbegx + 3, s.retbegy + 3));
    EXPECT_EQ(model->journey().myjournstr, (QStringList{"Central", "Hornsby"}));
    EXPECT_TRUE(view.tray()->shown().title.startsWith("Central "));
    EXPECT_EQ(view.tray()->icon()->toolTip(), view.tray()->shown().tooltip);

    // Escape closes it and changes nothing.
    whenpopup([](QWidget* p) { QTest::keyClick(qobject_cast<StationMenu*>(p)->search(), Qt::Key_Escape); });
    QTest::mouseClick(&view, Qt::LeftButton, {}, widgetpos(s.rectbegx + 3, s.retbegy + 3));
    EXPECT_EQ(model->journey().myjournstr, (QStringList{"Central", "Hornsby"}));
}

// The right button and Control with the left one both open the journey menu: set and
// remove an alarm, toggle the map.
TEST_F(StripInput, ContextMenusSetAndRemoveTheAlarmAndToggleTheMap)
{
    whenpopup([](QWidget* p) { pick(p, "Alarm 10 min Before This Service"); });
    // Through the window, as the platform delivers it: the right press becomes the
    // context-menu gesture.
    QTest::mouseClick(view.windowHandle(), Qt::RightButton, {}, widgetpos(300, 20));
    ASSERT_TRUE(model->userstate().doigotalarm());
    EXPECT_EQ(view.tray()->shown().iconName, "serviceinterrup");
    EXPECT_TRUE(view.tray()->menu()->actions().size() > 3);

    whenpopup([](QWidget* p) { pick(p, "Remove Alarm"); });
    QTest::mouseClick(&view, Qt::LeftButton, Qt::ControlModifier, widgetpos(300, 20));
    EXPECT_FALSE(model->userstate().doigotalarm());
    EXPECT_EQ(view.tray()->shown().iconName, "sydtrainsiconn");

    whenpopup([](QWidget* p) { pick(p, "Map Beside the Overview"); });
    QTest::mouseClick(view.windowHandle(), Qt::RightButton, {}, widgetpos(10, 10));
    EXPECT_EQ(model->view().showinmap, 0);
}

// Keys and the wheel move to later services and back; a double click returns to now.
TEST_F(StripInput, KeysWheelAndDoubleClickMoveThroughTheServices)
{
    const int now = shown();
    view.setFocus();
    QTest::keyClick(&view, Qt::Key_X);   // scroll up and step forward
    EXPECT_EQ(shown(), now + 2);
    EXPECT_EQ(model->view().zoomed, 0);
    QTest::keyClick(&view, Qt::Key_N);
    EXPECT_EQ(shown(), now);

    auto wheel = [this](int dy) {
        const QPointF pos(300, view.height() - 20);
        QWheelEvent e(pos, view.mapToGlobal(pos), QPoint(), QPoint(0, dy), Qt::NoButton, Qt::NoModifier,
                      Qt::NoScrollPhase, false);
        QApplication::sendEvent(&view, &e);
    };
    wheel(120);
    EXPECT_EQ(shown(), now + 1);
    // A fine-grained wheel sends a notch as several small events: each is a step.
    for (int i = 0; i < 4; ++i)
        wheel(30);
    EXPECT_EQ(shown(), now + 5);

    model->zoominfunc();
    QTest::mouseDClick(&view, Qt::LeftButton, {}, widgetpos(590, 5));
    QTest::mouseRelease(&view, Qt::LeftButton, {}, widgetpos(590, 5));
    EXPECT_EQ(shown(), now);
    EXPECT_EQ(model->journey().needleontherecord, 1);
}

TEST_F(StripInput, DropsAreRefused)
{
    QMimeData data;
    data.setText("Central");
    QDragEnterEvent enter(QPoint(10, 10), Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&view, &enter);
    EXPECT_TRUE(enter.isAccepted());
    QDropEvent drop(QPointF(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&view, &drop);
    EXPECT_FALSE(drop.isAccepted());
    EXPECT_EQ(model->journey().myjournstr, (QStringList{"Central", "Strathfield"}));
}
