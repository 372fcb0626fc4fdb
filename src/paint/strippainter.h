#pragma once
// Paints the strip: the transparent background, the map beside the zoomed-out view,
// the tiles (one row per leg zoomed-in, up to six connections zoomed-out) or the
// trackwork panel, and the alarm panel on top. Every tile is painted into an image of
// its own, at the device pixel ratio, and composited; nothing is kept between paints.
//
// Positions inside the tiles follow the display's bottom-left-origin points; the
// conversion to the images' top-left origin happens here and nowhere else.

#include <QColor>
#include <QFont>
#include <QImage>
#include <QSizeF>
#include <QString>

class QPainter;

namespace quendle {

class AppModel;
class Display;
struct Rgba;

class StripPainter {
public:
    explicit StripPainter(const AppModel& app, qreal devicePixelRatio = 1.0);

    // The whole view, `size` points big, painted into `p` (whose origin is the view's
    // top-left corner).
    void drawRect(QPainter& p, const QSizeF& size) const;
    // The same into a new transparent image.
    QImage renderview(const QSizeF& size) const;

    QImage drawlargetilefix(int row) const;
    QImage drawzomouttile(int connection) const;
    QImage drawsummarytile(int row) const;
    QImage drawextendtile(int row) const;
    QImage drawdayheader(int row) const;
    QImage drawscrollabletextimage(const QString& text, const QFont& font, qreal width) const;
    QImage drawmap() const;
    QImage drawmapborder() const;
    QImage drawalarmview() const;
    QImage drawupcomtrakworkview(const QSizeF& size) const;

    static QColor tocolor(const Rgba& c);

private:
    QImage newimage(const QSizeF& size) const;
    QFont font(const QString& family, qreal pixelSize) const;
    QImage mapdot(const QColor& bottom, const QColor& upper, qreal diameter) const;
    void shapetile(QPainter& p, const QSizeF& size, const QColor& top, const QColor& bottom, int capwidth,
                   int capwidth2) const;

    const AppModel& app_;
    const Display& d_;
    qreal dpr_;
};

} // namespace quendle
