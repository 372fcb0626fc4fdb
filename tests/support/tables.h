#pragma once
// Builders for small timetable tables written for a test, in the writer's layout.

#include "util/files.h"

#include <QString>
#include <QStringList>

namespace quendle::fixtures {

inline QString tableheader(const QString& date)
{
    return "\n  <timetable name = \"SydneyTrains\"  date=\"" + date + "\" > ";
}

inline QString dayblock(const QString& days, const QStringList& rows)
{
    QString t = "\n <day num=\"" + days + "\" pubhol=\"true\"  > ";
    for (const QString& r : rows)
        t += "\n" + r;
    return t + "\n\n\n</day>";
}

inline QString lineblock(const QString& name, const QString& stops, const QStringList& dayBlocks,
                         const QString& colour = "#1f8a4c")
{
    QString t = "\n<line name =\"" + name + "\" color=\"" + colour + "\" stops = \"" + stops
        + "\"  >\n\n<forwards>\n";
    for (const QString& b : dayBlocks)
        t += b;
    return t + "\n</forwards>\n<backwards>\n</backwards>\n</line>";
}

inline QString table(const QString& date, const QStringList& lineBlocks)
{
    return tableheader(date) + lineBlocks.join(QString()) + "\n</timetable>";
}

// Writes text to dir/name and returns the path.
inline QString writeto(const QString& dir, const QString& name, const QString& text)
{
    writefile(text, dir + "/", name);
    return dir + "/" + name;
}

} // namespace quendle::fixtures
