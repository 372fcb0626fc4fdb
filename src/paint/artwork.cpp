#include "paint/artwork.h"

#include <QHash>
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

bool draw(QPainter& p, const QString& path, const QRectF& target)
{
    QSvgRenderer* r = renderer(path);
    if (!r)
        return false;
    r->render(&p, target);
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
