#include "paint/statusicon.h"

#include <QColor>

#include <gtest/gtest.h>

using namespace quendle;

namespace {

// How many pixels of a region are near white (the badge's digits) or strongly yellow (the
// trackwork picture).
int count(const QImage& img, const QRect& r, bool (*test)(QColor))
{
    int n = 0;
    for (int y = r.top(); y <= r.bottom(); ++y)
        for (int x = r.left(); x <= r.right(); ++x)
            n += test(QColor::fromRgba(img.pixel(x, y))) ? 1 : 0;
    return n;
}
bool white(QColor c) { return c.alpha() > 200 && c.lightness() > 200 && c.saturation() < 40; }
bool yellow(QColor c) { return c.alpha() > 200 && c.red() > 200 && c.green() > 150 && c.blue() < 90; }

} // namespace

// The minutes sit on a dark plate in the lower part; the picture stays in view above it,
// at tray size and at twice that.
TEST(StatusIcon, MinutesAreDrawnIntoTheIconAboveWhichThePictureStays)
{
    for (int px : {22, 44}) {
        const QImage plain = drawstatusicon("trakw", "", px);
        const QImage seven = drawstatusicon("trakw", "7", px);
        const QImage eight = drawstatusicon("trakw", "8", px);
        const QImage wide = drawstatusicon("trakw", "23h", px);
        ASSERT_EQ(seven.size(), QSize(px, px));
        const QRect lower(0, px * 5 / 10, px, px - px * 5 / 10);
        const QRect upper(0, 0, px, px * 4 / 10);
        EXPECT_GT(count(seven, lower, white), px / 4) << px;
        EXPECT_LT(count(plain, lower, white), count(seven, lower, white) / 2) << px;
        EXPECT_NE(seven, eight) << px;   // the digits differ, not just a blob
        EXPECT_GT(count(seven, QRect(0, 0, px, px), yellow), px) << px;
        EXPECT_EQ(count(seven, upper, yellow), count(plain, upper, yellow)) << px;
        // A three-character badge is narrowed to fit, never cut off at the edges.
        EXPECT_EQ(count(wide, QRect(0, lower.top(), 1, lower.height()), white), 0) << px;
    }
    // An unknown picture falls back to the rail icon rather than nothing.
    EXPECT_EQ(drawstatusicon("nosuchpicture", "", 22), drawstatusicon("sydtrainsiconn", "", 22));
    EXPECT_TRUE(statusicon("wavelo", "5").availableSizes().contains(QSize(22, 22)));
}
