#include "paint/strippainter.h"

#include "app/appmodel.h"
#include "paint/artwork.h"

#include <QFontMetricsF>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>

#include <cmath>
#include <map>

namespace quendle {

namespace {

// Rectangles and points given with the origin at the bottom left, for a surface `h` high.
struct Flip {
    qreal h;
    QRectF rect(qreal x, qreal y, qreal w, qreal height) const { return QRectF(x, h - y - height, w, height); }
};

// Text drawn at a point the way the display's texts are placed: the point is the lower
// left corner of the text's block, and every "\n" (a trailing one too) starts a line.
void drawtextat(QPainter& p, const QString& text, qreal x, qreal y, qreal surfaceHeight, const QFont& f,
                const QColor& colour)
{
    if (text.isEmpty())
        return;
    const QFontMetricsF fm(f);
    const QStringList lines = text.split(QLatin1Char('\n'));
    const qreal step = fm.lineSpacing();
    const qreal top = surfaceHeight - y - step * lines.size();
    p.setFont(f);
    // A faint shadow keeps white text legible on the bright lower half of a light line colour.
    QColor shadow(0, 0, 0, colour.alpha() / 3);
    for (int i = 0; i < lines.size(); ++i) {
        if (lines[i].isEmpty())
            continue;
        const QPointF base(x, top + i * step + fm.ascent());
        p.setPen(shadow);
        p.drawText(base + QPointF(0.7, 0.9), lines[i]);
        p.setPen(colour);
        p.drawText(base, lines[i]);
    }
}

// The vertical shading of every tile: the colour at the bottom edge, its dimmed form
// from a little above the middle upwards.
QLinearGradient shading(qreal height, const QColor& bottom, const QColor& upper)
{
    QLinearGradient g(0, height, 0, 0);
    g.setColorAt(0, bottom);
    g.setColorAt(0.566, upper);
    return g;
}

} // namespace

StripPainter::StripPainter(const AppModel& app, qreal devicePixelRatio)
    : app_(app), d_(app.display()), dpr_(devicePixelRatio > 0 ? devicePixelRatio : 1.0)
{
}

QColor StripPainter::tocolor(const Rgba& c)
{
    auto unit = [](double v) { return v < 0 ? 0.0 : v > 1 ? 1.0 : v; };
    return QColor::fromRgbF(static_cast<float>(unit(c.r)), static_cast<float>(unit(c.g)),
                            static_cast<float>(unit(c.b)), static_cast<float>(unit(c.a)));
}

QImage StripPainter::newimage(const QSizeF& size) const
{
    const int w = std::max(1, static_cast<int>(std::ceil(size.width() * dpr_)));
    const int h = std::max(1, static_cast<int>(std::ceil(size.height() * dpr_)));
    QImage img(w, h, QImage::Format_ARGB32_Premultiplied);
    img.setDevicePixelRatio(dpr_);
    img.fill(Qt::transparent);
    return img;
}

QFont StripPainter::font(const QString& family, qreal pixelSize) const
{
    QFont f(family);
    // The display's sizes are points of the view, which are the widget's logical pixels.
    f.setPixelSize(std::max(1, static_cast<int>(std::lround(pixelSize))));
    f.setHintingPreference(QFont::PreferNoHinting);
    return f;
}

// The tile's body: a rounded rectangle between two ovals of the tile's height that round
// off its ends; the left oval carries the icon.
void StripPainter::shapetile(QPainter& p, const QSizeF& size, const QColor& bottom, const QColor& upper,
                             int capwidth, int capwidth2) const
{
    const qreal w = size.width(), h = size.height();
    QPainterPath path;
    path.setFillRule(Qt::WindingFill);
    path.addRoundedRect(QRectF(2 + capwidth / 2.0, 2, w - 4 - capwidth / 2.0 - capwidth2 / 2.0, h - 4), 5, 5);
    path.addEllipse(QRectF(2, 1, capwidth, h - 2));
    path.addEllipse(QRectF(w - 2 - capwidth2, 1, capwidth2, h - 2));
    p.setRenderHint(QPainter::Antialiasing);
    p.fillPath(path, shading(h, bottom, upper));
}

QImage StripPainter::drawscrollabletextimage(const QString& text, const QFont& f, qreal width) const
{
    const QFontMetricsF fm(f);
    const int lines = static_cast<int>(text.count(QLatin1Char('\n'))) + 1;
    const QSizeF size(std::max<qreal>(width, 1), fm.lineSpacing() * lines + 1);
    QImage img = newimage(size);
    QPainter p(&img);
    p.setRenderHint(QPainter::TextAntialiasing);
    drawtextat(p, Display::scrollthistext(text, d_.view().textscroll), 0, 0, size.height(), f, Qt::white);
    return img;
}

QImage StripPainter::drawlargetilefix(int r) const
{
    const Display& d = d_;
    const qreal us = d.userscale;
    const QSizeF size(d.barwidth * us, d.mahtileheight * us);
    QImage img = newimage(size);
    QPainter p(&img);
    const Flip at{size.height()};

    const QColor c = d.colorscheme == 1 ? QColor(Qt::white) : tocolor(d.getcolorthisleg(r));
    const QColor dim = tocolor(Display::dimcol(d.colorscheme == 1 ? Rgba{1, 1, 1, 1} : d.getcolorthisleg(r)));
    shapetile(p, size, c, dim, d.iconwidth, d.iconwidth);

    const qreal icon = std::min<qreal>(d.iconwidth - 14, size.height() - 10);
    drawartwork(p, d.getimgforthisleg(r - 1), QRectF(2 + (d.iconwidth - icon) / 2, (size.height() - icon) / 2, icon, icon));

    // Texts stay inside the body, away from the rounded right end.
    p.setClipRect(QRectF(0, 0, size.width() - d.iconwidth / 2.0, size.height()));
    p.setRenderHint(QPainter::TextAntialiasing);
    const QFont title = font(d.mahfont, d.tilefontsize * us);
    drawtextat(p, d.getstrthisleg(r), 70, 25, size.height(), title, Qt::white);
    const QStringList columns = d.getstrthislegray(r);
    const qreal right = size.width() - d.iconwidth / 2.0 - 6;
    for (int k = 0; k < columns.size(); ++k) {
        const qreal x = 70 + k * static_cast<qreal>(d.gapbetweentexts);
        QString text = columns[k];
        // The line's name, last, ends in an ellipsis at the tile's end rather than under its edge.
        if (k == columns.size() - 1 && k >= 3)
            text = QFontMetricsF(title).elidedText(text, Qt::ElideRight, std::max<qreal>(0, right - x));
        drawtextat(p, text, x, 15, size.height(), title, Qt::white);
    }

    const QFont small = font(d.mahfont, d.tilefontsize / 1.3 * us);
    const QImage second = drawscrollabletextimage(d.getsubstrthisleg(r), small, size.width() - 70);
    const QSizeF ss = second.deviceIndependentSize();
    p.drawImage(at.rect(70, 1, ss.width(), ss.height()), second);
    return img;
}

QImage StripPainter::drawzomouttile(int i) const
{
    const Display& d = d_;
    const qreal us = d.userscale;
    const QSizeF size(d.barwidth * us, d.mahzoomouttileheight);
    QImage img = newimage(size);
    QPainter p(&img);
    if (app_.lumdebug == 1)
        p.fillRect(QRectF(QPointF(0, 0), size), Qt::green);

    const Rgba c = d.getcolforthistile(i);
    shapetile(p, size, tocolor(c), tocolor(Display::dimcol(c)), d.zoomouticonwidth, d.iconwidth);
    const qreal icon = std::min<qreal>(d.zoomouticonwidth - 14, size.height() - 10);
    drawartwork(p, d.getzoomouticon(i),
                QRectF(2 + (d.zoomouticonwidth - icon) / 2, (size.height() - icon) / 2, icon, icon));

    p.setClipRect(QRectF(0, 0, size.width() - d.iconwidth / 2.0, size.height()));
    p.setRenderHint(QPainter::TextAntialiasing);
    const QFont f = font(d.mahfont, d.tilefontsize * us);
    const QStringList columns = d.getstringforthiszoomouttileray(i);
    for (int k = 0; k < columns.size(); ++k)
        drawtextat(p, columns[k], 70 + k * static_cast<qreal>(d.gapbetweentexts), 15, size.height(), f, Qt::white);
    return img;
}

QImage StripPainter::drawsummarytile(int) const
{
    const Display& d = d_;
    const QSizeF size(d.barwidth * d.userscale, d.mahtileheight * d.userscale);
    QImage img = newimage(size);
    QPainter p(&img);
    p.setRenderHint(QPainter::Antialiasing);
    p.fillRect(QRectF(0, size.height() - 55, 1511, 55), Qt::white);
    const Rgba c = d.getcolforthistile(app_.journey().getthisviewindex(0));
    QPainterPath path;
    path.addRoundedRect(QRectF(2, 2, size.width() - 4, size.height() - 4), 5, 15);
    p.fillPath(path, shading(size.height(), tocolor(c), tocolor(Display::dimcol(c))));
    p.setRenderHint(QPainter::TextAntialiasing);
    drawtextat(p, d.getsummarystr(), 0, 0, size.height(), font(QStringLiteral("Helvetica"), 24), Qt::white);
    return img;
}

QImage StripPainter::drawextendtile(int r) const
{
    const Display& d = d_;
    const QSizeF size(d.barwidth * d.userscale, d.mahtileheight * d.userscale);
    QImage img = newimage(size);
    QPainter p(&img);
    p.setRenderHint(QPainter::Antialiasing);
    const Rgba dim = Display::dimcol(d.getcolorthisleg(r));
    QPainterPath path;
    path.addRoundedRect(QRectF(2, 2, size.width() - 4, size.height() - 4), 5, 5);
    p.fillPath(path, shading(size.height(), tocolor(dim), tocolor(Display::dimcol(dim))));
    p.setRenderHint(QPainter::TextAntialiasing);
    drawtextat(p, QStringLiteral("then\n"), 20, 25, size.height(), font(d.mahfont, d.tilefontsize), Qt::white);
    return img;
}

QImage StripPainter::drawdayheader(int r) const
{
    const Display& d = d_;
    const QSizeF size(d.barwidth * d.userscale, 22);
    QImage img = newimage(size);
    QPainter p(&img);
    p.setRenderHint(QPainter::Antialiasing);
    const Rgba dim = Display::dimcol(d.getcolorthisleg(r));
    QPainterPath path;
    path.addRoundedRect(QRectF(QPointF(0, 0), size), 5, 5);
    p.fillPath(path, tocolor(dim));
    p.setRenderHint(QPainter::TextAntialiasing);
    drawtextat(p, d.getdayheaderstr(), 0, 0, size.height(), font(QStringLiteral("Helvetica"), 14), Qt::white);
    return img;
}

// A shaded dot of the map, made once per paint and stamped wherever it is needed.
QImage StripPainter::mapdot(const QColor& bottom, const QColor& upper, qreal diameter) const
{
    const QSizeF size(diameter, diameter);
    QImage img = newimage(size);
    QPainter p(&img);
    p.setRenderHint(QPainter::Antialiasing);
    p.setPen(Qt::NoPen);
    p.setBrush(shading(diameter, bottom, upper));
    p.drawEllipse(QRectF(QPointF(0, 0), size));
    return img;
}

QImage StripPainter::drawmap() const
{
    const Display& d = d_;
    const Timetable& tt = app_.timetable();
    const QSizeF size(d.mapwidth, d.mapheight);
    QImage img = newimage(size);
    img.fill(Qt::white);
    QPainter p(&img);
    const Flip at{size.height()};
    const QRectF canvas = QRectF(QPointF(0, 0), size).adjusted(-4, -4, 4, 4);

    // Every station's place on the canvas, worked out once for this paint.
    const int stations = static_cast<int>(tt.stnsmute.size());
    std::vector<QRectF> place(stations);
    for (int s = 0; s < stations; ++s) {
        const IntRect r = d.stnnumtorect(s);
        place[s] = at.rect(r.x, r.y, r.w, r.h);
    }
    auto centre = [&](int stnnum) {
        return stnnum >= 0 && stnnum < stations ? place[stnnum].center() : QPointF(-100, -100);
    };

    // The background picture, where its record puts it.
    const MapBackground bg = d.getmapbkgnddict();
    const QRectF bgrect = at.rect(bg.rectbegx, bg.retbegy, bg.xwidth, bg.ywidth);
    if (bgrect.intersects(canvas))
        drawmapbackground(p, bg.name, bgrect);

    p.setRenderHint(QPainter::Antialiasing);
    // Under the stations, the network itself: every line's track as a faint stroke in its
    // colour, each stretch between two stations once.
    {
        std::vector<std::pair<quint64, int>> stretches;   // station pair -> line
        for (int l = 0; l < static_cast<int>(tt.linesmute.size()); ++l) {
            const std::vector<int>& stops = tt.linesmute[l].stnints;
            for (size_t k = 1; k < stops.size(); ++k) {
                const auto [a, b] = std::minmax(stops[k - 1], stops[k]);
                stretches.emplace_back((quint64(quint32(a)) << 32) | quint32(b), l);
            }
        }
        std::stable_sort(stretches.begin(), stretches.end(),
                         [](const auto& x, const auto& y) { return x.first < y.first; });
        std::map<int, QList<QLineF>> byline;
        for (size_t k = 0; k < stretches.size(); ++k) {
            if (k > 0 && stretches[k].first == stretches[k - 1].first)
                continue;
            const QLineF l(centre(int(stretches[k].first >> 32)), centre(int(stretches[k].first & 0xffffffffu)));
            // Most of the network lies outside a box zoomed on the trip.
            if (QRectF(l.p1(), l.p2()).normalized().intersects(canvas))
                byline[stretches[k].second].append(l);
        }
        for (const auto& [line, lines] : byline) {
            QColor c = tocolor(tt.linesmute[line].nscol);
            c.setAlphaF(0.35f);
            p.setPen(QPen(c, 1));
            p.drawLines(lines);
        }
    }

    // Every station, a small shaded dot.
    {
        const QImage dot = mapdot(QColor(150, 156, 166), QColor(88, 94, 104), 4);
        for (int s = 0; s < stations; ++s)
            if (canvas.contains(place[s].center()))
                p.drawImage(place[s].topLeft(), dot);
    }

    // The services in view, stop by stop: dots in the line colour, joined 4 wide as far as
    // the progressive drawing has come.
    const std::vector<MapStop> stops = d.mapstops();
    for (size_t k = 1; k < stops.size(); ++k) {
        if (stops[k].firstofleg || stops[k].count > d.numtopaint)
            continue;
        p.setPen(QPen(tocolor(stops[k].colour), 4, Qt::SolidLine, Qt::RoundCap));
        p.drawLine(centre(stops[k - 1].stnnum), centre(stops[k].stnnum));
    }
    {
        QImage dot;
        Rgba dotcolour{-1, -1, -1, -1};
        for (const MapStop& s : stops) {
            if (!(s.colour == dotcolour)) {
                dotcolour = s.colour;
                dot = mapdot(tocolor(s.colour), tocolor(Display::dimcol(s.colour)), 6);
            }
            p.drawImage(centre(s.stnnum) - QPointF(3, 3), dot);
        }
    }

    // Closed sections of trackwork that has begun.
    for (const auto& [a, b] : d.closedsections()) {
        p.setPen(QPen(QColor(226, 48, 32, 220), 3, Qt::DashLine, Qt::FlatCap));
        p.drawLine(centre(a), centre(b));
    }
    return img;
}

QImage StripPainter::drawmapborder() const
{
    const Display& d = d_;
    const QSizeF size(d.mapwidth + 20, d.mapheight);
    QImage img = newimage(size);
    QPainter p(&img);
    p.setRenderHint(QPainter::Antialiasing);
    // The paper goes on under the 20 points the border adds beside the map, and a dark
    // frame surrounds the part of both that the tiles leave free.
    p.fillRect(QRectF(d.mapwidth, 0, size.width() - d.mapwidth, size.height()), Qt::white);
    const QColor dark(29, 35, 44);
    const qreal w = size.width(), h = size.height(), r = 10;
    const QRectF hole(24, 4, w - 28, h - 8);
    p.fillRect(QRectF(20, 0, w - 20, hole.top()), dark);
    p.fillRect(QRectF(20, hole.bottom(), w - 20, h - hole.bottom()), dark);
    p.fillRect(QRectF(20, hole.top(), hole.left() - 20, hole.height()), dark);
    p.fillRect(QRectF(hole.right(), hole.top(), w - hole.right(), hole.height()), dark);
    // The hole's rounded corners: each corner square less its quarter circle.
    for (int corner = 0; corner < 4; ++corner) {
        const bool right = corner & 1, bottom = corner & 2;
        const QPointF at(right ? hole.right() - r : hole.left(), bottom ? hole.bottom() - r : hole.top());
        const QRectF circle(right ? hole.right() - 2 * r : hole.left(), bottom ? hole.bottom() - 2 * r : hole.top(),
                            2 * r, 2 * r);
        QPainterPath piece;
        piece.setFillRule(Qt::OddEvenFill);
        piece.addRect(QRectF(at, QSizeF(r, r)));
        piece.addEllipse(circle);
        p.setClipRect(QRectF(at, QSizeF(r, r)));
        p.fillPath(piece, dark);
    }
    p.setClipping(false);
    return img;
}

QImage StripPainter::drawalarmview() const
{
    const QSizeF size(755, 555);
    QImage img = newimage(size);
    QPainter p(&img);
    const Flip at{size.height()};
    // The square overshoots the image on purpose; only the image's own area is kept.
    const QRectF square = at.rect(0, 0, 811, 811);
    p.fillRect(square, tocolor(d_.getcolforthistile(app_.journey().getthisviewindex(0))));
    drawartwork(p, QStringLiteral("alarmlrg"), square);
    p.setRenderHint(QPainter::TextAntialiasing);
    drawtextat(p, d_.alarmpanelstr(), 11, 11, size.height(), font(QStringLiteral("Helvetica"), 24), Qt::white);
    return img;
}

QImage StripPainter::drawupcomtrakworkview(const QSizeF& size) const
{
    QImage img = newimage(size);
    QPainter p(&img);
    p.setRenderHint(QPainter::Antialiasing);
    QPainterPath path;
    path.addRoundedRect(QRectF(QPointF(2, 2), size - QSizeF(4, 4)), 8, 8);
    p.fillPath(path, shading(size.height(), QColor(58, 64, 74), QColor(30, 34, 42)));
    drawartwork(p, QStringLiteral("trakwjuly"), QRectF(12, 10, 36, 36));
    QString text = d_.trackwork().gettrakwforviewindex();
    if (text.trimmed().isEmpty())
        text = QStringLiteral("No trackwork affects the services in view.");
    p.setRenderHint(QPainter::TextAntialiasing);
    const QFont f = font(d_.mahfont, d_.tilefontsize / 1.3);
    const QFontMetricsF fm(f);
    p.setFont(f);
    p.setPen(Qt::white);
    p.drawText(QRectF(60, 12, size.width() - 72, size.height() - 20), Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap,
               text.trimmed());
    return img;
}

void StripPainter::drawRect(QPainter& p, const QSizeF& viewSize) const
{
    const Display& d = d_;
    const Journey& j = app_.journey();
    const ViewState& v = d_.view();
    const qreal H = viewSize.height();
    const Flip at{H};
    const qreal us = d.userscale;

    p.save();
    p.setCompositionMode(QPainter::CompositionMode_Source);
    p.fillRect(QRectF(QPointF(0, 0), viewSize), Qt::transparent);
    p.setCompositionMode(QPainter::CompositionMode_SourceOver);
    p.setRenderHint(QPainter::SmoothPixmapTransform);

    if (v.showinmap == 1 && v.zoomed == 0) {
        const QRectF box = at.rect(d.barwidth - 20, H - d.mapheight, d.mapwidth * us, d.mapheight * us);
        p.fillRect(box, QColor::fromRgbF(0.5f, 0, 0.5f));
        p.drawImage(box, drawmap());
        p.drawImage(at.rect(d.barwidth - 20, H - d.mapheight, d.mapwidth * us + 20, d.mapheight * us),
                    drawmapborder());
    }

    if (v.mytwview != 0) {
        const QSizeF panel(d.barwidth * us, H);
        p.drawImage(at.rect(d.baroffset, 0, panel.width(), panel.height()), drawupcomtrakworkview(panel));
    } else if (v.zoomed == 0) {
        if (!j.myindexes.empty()) {
            const int first = j.myindexes[0];
            for (int k = 0; k <= 5 && first + k < static_cast<int>(j.connectingservs.size()); ++k) {
                const qreal th = d.mahzoomouttileheight;
                p.drawImage(at.rect(d.baroffset, H - k * th - th, d.barwidth, th), drawzomouttile(first + k));
            }
        }
    } else {
        const int s = static_cast<int>(j.myjournstr.size());
        const qreal th = d.mahtileheight * us;
        for (int r = 0; r < s + 2 && r < j.maxlegs + 2; ++r) {
            // Rows 0 and 1 share the top: the first leg's tile covers the caption's start.
            const int pos = r <= 1 ? 0 : r - 1;
            const QRectF rect = at.rect(d.baroffset, H - th - pos * th, d.barwidth * us, th);
            if (r < s)
                p.drawImage(rect, drawlargetilefix(r));
            else if (r == s && v.imfocusd == 1 && j.caniextendtrip() && s > 1)
                p.drawImage(rect, drawextendtile(r));
            else if (r == s + 1)
                p.drawImage(rect, drawsummarytile(r));
        }
    }

    if (v.inalarmscreen == 1)
        p.drawImage(at.rect(d.iconend, H - d.alarmviewheight, 412, d.alarmviewheight), drawalarmview());

    // The tile-growing animation, while it runs, around its fixed start point.
    if (d.animating() && d.animatetilesize > 0) {
        const qreal sz = d.animatetilesize;
        p.setRenderHint(QPainter::Antialiasing);
        p.setPen(QPen(QColor(255, 255, 255, 160), 2));
        p.setBrush(QColor(255, 255, 255, 50));
        p.drawRoundedRect(at.rect(d.animatetilebeginx - sz / 2, d.animatetilebeginy - sz / 2, sz, sz), 6, 6);
    }
    p.restore();
}

QImage StripPainter::renderview(const QSizeF& size) const
{
    QImage img = newimage(size);
    QPainter p(&img);
    drawRect(p, size);
    return img;
}

} // namespace quendle
