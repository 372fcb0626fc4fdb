#include "app/appmodel.h"
#include "gui/guiapp.h"
#include "gui/stripwindow.h"
#include "platform/system/manualtimers.h"
#include "platform/system/memorydefaults.h"
#include "platform/system/nullservices.h"
#include "util/dates.h"

#include <QApplication>
#include <QImage>
#include <QTemporaryDir>

#include <memory>

#include <gtest/gtest.h>

using namespace quendle;

namespace {

// The application lives for the whole run and is gone before the program exits, so Qt
// tears down its font caches while it still can.
class QtApplicationEnvironment : public ::testing::Environment {
public:
    void SetUp() override { app_ = std::make_unique<QApplication>(argc_, argv_); }
    void TearDown() override { app_.reset(); }

private:
    int argc_ = 1;
    char name_[11] = "strip-test";
    char* argv_[2] = {name_, nullptr};
    std::unique_ptr<QApplication> app_;
};
const auto* const kQtEnvironment = ::testing::AddGlobalTestEnvironment(new QtApplicationEnvironment);

int alphaAt(const QImage& img, int x, int y) { return qAlpha(img.pixel(x, y)); }

} // namespace

// The strip on the offscreen platform: painted rows where the journey's legs are, and
// nothing at all (full transparency) around them, so the desktop shows through.
TEST(StripWindow, PaintsOneOpaqueRowPerLegOnATransparentWindow)
{
    QTemporaryDir home;
    ManualClock clock;
    clock.set(datefromcivil({2026, 11, 24, 8, 0, 0}));
    ManualTimers timers{clock};
    MemoryDefaults defaults;
    NullSession session;
    Platform platform;
    platform.clock = &clock;
    platform.timers = &timers;
    platform.defaults = &defaults;
    platform.session = &session;
    platform.homeDir = home.path();

    MyNSView view;
    platform.window = &view;
    AppModel model(platform, AppModel::Options{false});
    view.setModel(&model);
    model.initWithFrame();
    model.awakeFromNib();

    // The first frame is 700 × 200 at the bottom-left corner; the one-leg journey then
    // shrinks it to one row, keeping the top edge (read back in the same
    // bottom-left-origin points the core uses).
    const Rect f = view.frame();
    EXPECT_EQ(f.w, 620);
    EXPECT_EQ(f.h, 75);
    EXPECT_EQ(f.x, 0);
    EXPECT_EQ(f.y, 125);
    EXPECT_TRUE(view.testAttribute(Qt::WA_TranslucentBackground));
    EXPECT_TRUE(view.windowFlags() & Qt::FramelessWindowHint);
    EXPECT_TRUE(view.windowFlags() & Qt::Tool);

    QImage img(view.size(), QImage::Format_ARGB32_Premultiplied);
    img.fill(Qt::transparent);
    view.render(&img, QPoint(), QRegion(), QWidget::DrawChildren);
    // The default journey has one leg: its row is painted, the rest is see-through.
    EXPECT_GT(alphaAt(img, 350, 10), 150);
    EXPECT_GT(alphaAt(img, 350, 60), 150);
    EXPECT_EQ(alphaAt(img, 350, 73), 0);
    EXPECT_EQ(alphaAt(img, 1, 1), 0);   // the rounded corner

    // The row carries text: more than one colour inside it.
    QSet<QRgb> colours;
    for (int x = 10; x < 400; ++x)
        colours.insert(img.pixel(x, 20));
    EXPECT_GT(colours.size(), 2);

    // A longer journey grows the real window downwards, its top edge where it was; focus
    // adds half a row for the tile that extends the trip.
    const double top = f.y + f.h;
    model.journey().myjournstr = {"Bondi Junction", "Central", "Strathfield"};
    model.calctripoptimizelater();
    EXPECT_EQ(view.frame().h, 145);
    EXPECT_EQ(view.frame().y + view.frame().h, top);
    session.activate();
    EXPECT_EQ(view.frame().h, 180);
    EXPECT_EQ(view.frame().y + view.frame().h, top);
    // Dragged wholly off the left of the screen, it comes back at the next refresh.
    view.setFrame(Rect{-1000, f.y, 620, 180}, false);
    model.refreshdisplay();
    EXPECT_EQ(view.frame().x, -1000 + 620 + 100);
}

TEST(StripWindow, XWaylandIsPreferredOnlyWhenTheUserChoseNoPlatform)
{
    const QByteArray saved = qgetenv("QT_QPA_PLATFORM");
    qunsetenv("QT_QPA_PLATFORM");
    qputenv("XDG_SESSION_TYPE", "wayland");
    qputenv("DISPLAY", ":0");
    preferxwayland();
    EXPECT_EQ(qgetenv("QT_QPA_PLATFORM"), "xcb");

    qputenv("QT_QPA_PLATFORM", "wayland");
    preferxwayland();
    EXPECT_EQ(qgetenv("QT_QPA_PLATFORM"), "wayland");

    // Without XWayland there is nothing to prefer.
    qunsetenv("QT_QPA_PLATFORM");
    qunsetenv("DISPLAY");
    preferxwayland();
    EXPECT_FALSE(qEnvironmentVariableIsSet("QT_QPA_PLATFORM"));
    qputenv("QT_QPA_PLATFORM", saved);
    qunsetenv("XDG_SESSION_TYPE");
}
