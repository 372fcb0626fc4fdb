#include "paint/artwork.h"

#include <QHash>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

#include <memory>

namespace quendle {

namespace {

// Parsed once per process, like any named image; what they draw is made anew every time.
QSvgRenderer* renderer(const QString& path)
{
    static QHash<QString, std::shared_ptr<QSvgRenderer>> cache;
    const auto it = cache.constFind(path);
    if (it != cache.constEnd())
        return it->get();
    auto r = std::make_shared<QSvgRenderer>(path);
    if (!r->isValid())
        r.reset();
    cache.insert(path, r);
    return r.get();
}

// A named picture is turned into pixels once for each size and device pixel ratio it is
// drawn at, as a platform's named images are; the tiles around it are still painted anew
// every time.
bool draw(QPainter& p, const QString& path, const QRectF& target)
{
    QSvgRenderer* r = renderer(path);
    if (!r)
        return false;
    const qreal dpr = p.device() ? p.device()->devicePixelRatioF() : 1.0;
    const QTransform& t = p.worldTransform();
    // Only plain placement at whole pixels can reuse pixels; anything else draws the vectors.
    if (t.type() > QTransform::TxTranslate || target.width() > 1024 || target.height() > 1024) {
        r->render(&p, target);
        return true;
    }
    const QSize pixels(qRound(target.width() * dpr), qRound(target.height() * dpr));
    if (pixels.isEmpty())
        return true;
    static QHash<QString, QImage> images;
    const QString key = path + QLatin1Char('@') + QString::number(pixels.width()) + QLatin1Char('x')
        + QString::number(pixels.height());
    auto it = images.constFind(key);
    if (it == images.constEnd()) {
        QImage img(pixels, QImage::Format_ARGB32_Premultiplied);
        img.fill(Qt::transparent);
        QPainter ip(&img);
        ip.setRenderHint(QPainter::Antialiasing);
        r->render(&ip, QRectF(QPointF(0, 0), QSizeF(pixels)));
        ip.end();
        img.setDevicePixelRatio(dpr);
        it = images.insert(key, img);
    }
    p.drawImage(QRectF(target.topLeft(), QSizeF(pixels) / dpr), *it);
    return true;
}

bool safename(const QString& name)
{
    if (name.isEmpty())
        return false;
    for (const QChar c : name)
        if (!(c.isLetterOrNumber() && c.unicode() < 128))
            return false;
    return true;
}

} // namespace

bool hasartwork(const QString& name)
{
    return safename(name) && renderer(QStringLiteral(":/art/%1.svg").arg(name)) != nullptr;
}

bool drawartwork(QPainter& p, const QString& name, const QRectF& target)
{
    return safename(name) && draw(p, QStringLiteral(":/art/%1.svg").arg(name), target);
}

bool drawmapbackground(QPainter& p, const QString& name, const QRectF& target)
{
    return safename(name) && draw(p, QStringLiteral(":/art/mapg/%1.svg").arg(name), target);
}

} // namespace quendle
