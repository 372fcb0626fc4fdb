#include "paint/statusicon.h"

#include "paint/artwork.h"

#include <QFont>
#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>

namespace quendle {

QImage drawstatusicon(const QString& iconName, const QString& badge, int pixels)
{
    QImage img(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    img.fill(Qt::transparent);
    QPainter p(&img);
    p.setRenderHint(QPainter::Antialiasing);
    p.setRenderHint(QPainter::TextAntialiasing);
    const qreal s = pixels;
    if (!drawartwork(p, iconName, QRectF(0, 0, s, s)))
        drawartwork(p, QStringLiteral("sydtrainsiconn"), QRectF(0, 0, s, s));
    if (badge.isEmpty())
        return img;

    // The plate takes the lower 55 per cent, so the picture's upper part stays in view.
    const qreal h = qMax<qreal>(9, qRound(s * 0.55));
    QFont f(QStringLiteral("Liberation Sans"));
    f.setBold(true);
    f.setPixelSize(qMax(8, qRound(h * 0.92)));
    f.setHintingPreference(QFont::PreferFullHinting);
    const QFontMetricsF fm(f);
    const qreal textw = fm.horizontalAdvance(badge);
    const qreal pad = qMax<qreal>(1, s * 0.06);
    const qreal platew = qMin(s, textw + 2 * pad);
    const QRectF plate(s - platew, s - h, platew, h);
    QPainterPath path;
    path.addRoundedRect(plate, h * 0.3, h * 0.3);
    p.fillPath(path, QColor(20, 20, 24, 235));
    p.setPen(QPen(QColor(255, 255, 255, 200), qMax<qreal>(1, s / 32)));
    p.drawPath(path);

    // Too wide a text is narrowed rather than cut.
    p.setFont(f);
    p.setPen(Qt::white);
    const QRectF inner = plate.adjusted(pad * 0.5, 0, -pad * 0.5, 0);
    p.save();
    const qreal squeeze = textw > inner.width() ? inner.width() / textw : 1.0;
    p.translate(inner.center());
    p.scale(squeeze, 1.0);
    const qreal baseline = (fm.ascent() - fm.descent()) / 2;
    p.drawText(QPointF(-textw / 2, baseline), badge);
    p.restore();
    return img;
}

QIcon statusicon(const QString& iconName, const QString& badge)
{
    QIcon icon;
    for (int px : {16, 22, 24, 32, 44, 48, 64})
        icon.addPixmap(QPixmap::fromImage(drawstatusicon(iconName, badge, px)));
    return icon;
}

} // namespace quendle
