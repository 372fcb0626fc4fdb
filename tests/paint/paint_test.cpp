#include "paint/artwork.h"
#include "paint/strippainter.h"
#include "support/strip_fixture.h"
#include "util/dates.h"

#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>

using namespace quendle;

namespace {

class GuiEnvironment : public ::testing::Environment {
public:
    void SetUp() override { app_ = std::make_unique<QGuiApplication>(argc_, argv_); }
    void TearDown() override { app_.reset(); }

private:
    int argc_ = 1;
    char name_[11] = "paint-test";
    char* argv_[2] = {name_, nullptr};
    std::unique_ptr<QGuiApplication> app_;
};
const auto* const kGui = ::testing::AddGlobalTestEnvironment(new GuiEnvironment);

Date at(int h, int m) { return datefromcivil({2026, 11, 24, h, m, 0}); }

// Close enough, channel by channel.
::testing::AssertionResult near(QRgb got, QColor want, int tolerance)
{
    const int dr = std::abs(qRed(got) - want.red()), dg = std::abs(qGreen(got) - want.green()),
              db = std::abs(qBlue(got) - want.blue());
    if (dr <= tolerance && dg <= tolerance && db <= tolerance)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "got " << QColor(got).name().toStdString() << " want "
                                         << want.name().toStdString();
}

class PaintTest : public testsupport::StripFixture {
protected:
    AppModel& start(const QStringList& journey, Date now = at(8, 5))
    {
        StripFixture::start(journey, now);
        timers.advanceBy(0);   // the map's trip drawn to the end
        return *app;
    }
    QImage render(qreal dpr = 1)
    {
        const Rect f = window.frame();
        return StripPainter(*app, dpr).renderview(QSizeF(f.w, f.h));
    }
    QColor linecolour(int leg)
    {
        return StripPainter::tocolor(app->timetable().linesmute[shown(leg).linenum].nscol);
    }
};

// Loose comparison with a reference picture: both are shrunk four times, which smooths
// away font hinting, and nearly every pixel must then agree.
void expectlike(const QImage& got, const QString& name)
{
    const QString dir = qEnvironmentVariable("QUENDLE_SOURCE_DIR") + "/tests/data/strip/";
    const QString path = dir + name + ".png";
    if (qEnvironmentVariableIsSet("QUENDLE_UPDATE_GOLDENS")) {
        QDir().mkpath(dir);
        got.save(path);
    }
    QImage want(path);
    ASSERT_FALSE(want.isNull()) << "no reference picture " << path.toStdString();
    ASSERT_EQ(want.size(), got.size());
    const QSize small = got.size() / 4;
    const QImage a = got.convertToFormat(QImage::Format_ARGB32).scaled(small, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    const QImage b = want.convertToFormat(QImage::Format_ARGB32).scaled(small, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    int off = 0;
    for (int y = 0; y < small.height(); ++y)
        for (int x = 0; x < small.width(); ++x) {
            const QRgb p = a.pixel(x, y), q = b.pixel(x, y);
            if (std::abs(qRed(p) - qRed(q)) > 48 || std::abs(qGreen(p) - qGreen(q)) > 48
                || std::abs(qBlue(p) - qBlue(q)) > 48 || std::abs(qAlpha(p) - qAlpha(q)) > 48)
                ++off;
        }
    EXPECT_LT(off, small.width() * small.height() * 4 / 100)
        << name.toStdString() << ": " << off << " of " << small.width() * small.height() << " pixels differ";
}

} // namespace

// The zoomed-in strip: transparent around the tiles, the shown service's line colour at
// the bottom of its tile, darker above, and white text on it.
TEST_F(PaintTest, ZoomedInTilesInTheLineColourOnATransparentWindow)
{
    start({"Bondi Junction", "Central", "Strathfield"});
    const QImage img = render();
    ASSERT_EQ(img.size(), QSize(620, 145));
    EXPECT_EQ(qAlpha(img.pixel(0, 0)), 0);
    EXPECT_EQ(qAlpha(img.pixel(610, 72)), 0);    // right of the tiles
    EXPECT_EQ(qAlpha(img.pixel(300, 143)), 0);   // below the last row
    EXPECT_TRUE(near(img.pixel(300, 67), linecolour(0), 24));
    EXPECT_TRUE(near(img.pixel(300, 137), linecolour(1), 24));
    // The upper half is the dimmed colour.
    const QColor c = linecolour(1);
    EXPECT_TRUE(near(img.pixel(560, 80), QColor::fromRgbF(std::max(0.0f, c.redF() - 0.4f),
                                                           std::max(0.0f, c.greenF() - 0.4f),
                                                           std::max(0.0f, c.blueF() - 0.4f)), 8));
    // Text: the row holds white.
    bool white = false;
    for (int x = 70; x < 400 && !white; ++x)
        for (int y = 5; y < 30 && !white; ++y)
            white = near(img.pixel(x, y), Qt::white, 30) && qAlpha(img.pixel(x, y)) == 255;
    EXPECT_TRUE(white);

    // Twice the pixels at twice the ratio, the same picture.
    const QImage sharp = render(2);
    EXPECT_EQ(sharp.size(), QSize(1240, 290));
    EXPECT_TRUE(near(sharp.pixel(600, 134), linecolour(0), 24));
}

TEST_F(PaintTest, WithoutServicesTilesAreBlackZoomedInAndGreenZoomedOut)
{
    start({"Bondi Junction", "Edgecliff"});
    Journey& j = app->journey();
    const auto chains = j.connectingservs;
    j.myservsmultid[0].clear();
    j.myindexes = {-1};
    QImage img = render();
    EXPECT_TRUE(near(img.pixel(300, 67), Qt::black, 4));
    EXPECT_EQ(qAlpha(img.pixel(300, 67)), 255);
    EXPECT_TRUE(near(img.pixel(300, 10), Qt::black, 4));

    // Zoomed out, the connections are still there but no service colours them.
    j.connectingservs = chains;
    j.myindexes = {0};
    j.myactualindex = 0;
    app->view().zoomed = 0;
    app->view().showinmap = 0;
    app->display().adjustclippingbasedonjourneylength();
    img = render();
    ASSERT_EQ(img.width(), 900);
    for (int k = 0; k < 5; ++k)
        EXPECT_TRUE(near(img.pixel(300, k * 50 + 47), QColor(0, 255, 0), 24)) << k;
    EXPECT_EQ(qAlpha(img.pixel(750, 100)), 0);   // no map
}

TEST_F(PaintTest, ZoomedOutWithTheMapAndTheAlarmPanel)
{
    start({"Bondi Junction", "Central", "Strathfield"});
    app->view().zoomed = 0;
    app->display().adjustclippingbasedonjourneylength();
    QImage img = render();
    ASSERT_EQ(img.size(), QSize(900, 285));
    EXPECT_TRUE(near(img.pixel(300, 47), linecolour(0), 24));
    // The map: white paper inside a dark frame, the trip drawn in its lines' colours.
    EXPECT_TRUE(near(img.pixel(898, 150), QColor(29, 35, 44), 6));
    EXPECT_TRUE(near(img.pixel(890, 150), Qt::white, 2));
    int white = 0, tripblue = 0;
    const QColor first = linecolour(0);
    for (int y = 10; y < 280; ++y)
        for (int x = 605; x < 875; ++x) {
            white += near(img.pixel(x, y), Qt::white, 2) ? 1 : 0;
            tripblue += near(img.pixel(x, y), first, 20) ? 1 : 0;
        }
    EXPECT_GT(white, 270 * 270 / 2);
    EXPECT_GT(tripblue, 100);

    // The alarm panel goes on top at the icon column's end, in the first service's colour.
    app->view().inalarmscreen = 1;
    img = render();
    EXPECT_TRUE(near(img.pixel(110, 270), StripPainter::tocolor(app->display().getcolforthistile(app->journey().getthisviewindex(0))), 40));
}

// Trackwork on the first leg: its tile carries the trackwork line and icon, and the
// closed section of trackwork that has begun is marked on the map.
TEST_F(PaintTest, TrackworkOnTheTileAndClosedSectionsOnTheMap)
{
    start({"Bondi Junction", "Central", "Strathfield"});
    const QImage plain = render();
    testsupport::ScriptedTrackwork trak;
    TrakRecord r;
    r.trakbegin = at(4, 0);
    r.trakend = at(23, 0);
    r.gotstnsoutinfo = 1;
    r.stnsoutfix = {{"Central", "Redfern"}, {"Redfern", "Strathfield"}};
    trak.records = {r};
    trak.status[{0, app->journey().myindexes[0]}] = {0};
    d().settrackwork(&trak);
    const QImage marked = render();
    // The second line and the icon change; the columns above stay.
    auto differ = [&](const QImage& a, const QImage& b, QRect area) {
        int n = 0;
        for (int y = area.top(); y <= area.bottom(); ++y)
            for (int x = area.left(); x <= area.right(); ++x)
                n += a.pixel(x, y) != b.pixel(x, y) ? 1 : 0;
        return n;
    };
    EXPECT_GT(differ(plain, marked, QRect(70, 56, 400, 12)), 50);
    EXPECT_GT(differ(plain, marked, QRect(8, 20, 36, 30)), 50);
    EXPECT_EQ(differ(plain, marked, QRect(70, 28, 400, 20)), 0);

    app->view().zoomed = 0;
    d().adjustclippingbasedonjourneylength();
    auto red = [&](const QImage& img) {
        int n = 0;
        for (int y = 5; y < 280; ++y)
            for (int x = 605; x < 875; ++x)
                n += near(img.pixel(x, y), QColor(226, 48, 32), 30) ? 1 : 0;
        return n;
    };
    EXPECT_GT(red(render()), 20);
    trak.records[0].trakbegin = at(20, 0);   // not begun yet: nothing closed
    EXPECT_EQ(red(render()), 0);
}

TEST_F(PaintTest, RendersLookAsBefore)
{
    start({"Bondi Junction", "Edgecliff"});
    expectlike(render(), "one-leg");
    start({"Bondi Junction", "Central", "Strathfield", "Parramatta"});
    expectlike(render(), "three-legs");
    app->view().zoomed = 0;
    app->display().adjustclippingbasedonjourneylength();
    expectlike(render(), "zoomed-out");
}

TEST(Artwork, EveryNamedPictureExists)
{
    for (const char* name : {"sydtrainsiconn", "sydtrrr", "trakwjuly", "trakwupcom", "speedlinezfix", "alarmlrg",
                             "trakwupcomsml", "trakw", "nightride", "serviceinterrup", "alarmsml",
                             "alarmsydtrainsiconn", "alarmtrakwupcomsml", "alarmtrakw", "alarmnightride",
                             "alarmserviceinterrup", "alarmalarmsml", "wavenoinfo12", "wavelo", "wavemed14",
                             "wavehigh"})
        EXPECT_TRUE(hasartwork(name)) << name;
    EXPECT_FALSE(hasartwork(""));
    EXPECT_FALSE(hasartwork("../sydtrrr"));
    QImage img(64, 64, QImage::Format_ARGB32_Premultiplied);
    img.fill(Qt::transparent);
    QPainter p(&img);
    EXPECT_TRUE(drawmapbackground(p, "f", QRectF(0, 0, 64, 64)));
    EXPECT_FALSE(drawartwork(p, "nosuchpicture", QRectF(0, 0, 64, 64)));
}
