#pragma once
// The named pictures of the strip (icons, the alarm picture, map backgrounds), drawn
// from the project's own SVG artwork as vectors, so they are sharp at any device pixel
// ratio. A name without a picture draws nothing.

#include <QRectF>
#include <QString>

class QPainter;

namespace quendle {

// Draws the picture called `name` scaled into `target` (painter coordinates).
// Returns false when there is no such picture.
bool drawartwork(QPainter& p, const QString& name, const QRectF& target);
// Map backgrounds live in a folder of their own.
bool drawmapbackground(QPainter& p, const QString& name, const QRectF& target);
bool hasartwork(const QString& name);

} // namespace quendle
