#pragma once
// The status item's icon for trays that show no text: the status picture with the minutes
// left drawn into its lower part on a dark plate, legible from 16 pixels up.

#include <QIcon>
#include <QImage>
#include <QString>

namespace quendle {

// One square picture `pixels` wide; an empty badge draws the picture alone.
QImage drawstatusicon(const QString& iconName, const QString& badge, int pixels);
// The same at the sizes trays ask for (16 to 64 pixels, so 22 and its double are exact).
QIcon statusicon(const QString& iconName, const QString& badge);

} // namespace quendle
