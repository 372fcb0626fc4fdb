#pragma once
// Turns a loaded feed into the text of a timetable table: one line block per route
// and direction (more where trips' station orders cannot be merged), one day block
// per group of days with the same trips, times as 25-hour HHMM.

#include "gtfs/feed.h"

#include <array>

namespace quendle::gtfs {

struct BuiltTable {
    QString text;
    int lines = 0;                  // line blocks
    int stations = 0;
    std::array<int, 7> services{};  // trips per day digit (0 Sunday .. 6 Saturday)
};

// dateText is the header's DATE (the table writer's tabledatetext of the moment).
BuiltTable buildtable(const Feed& feed, const QString& tableName, const QString& dateText);

// A station name the table format can carry: none of its separators (double quote,
// comma, bar, hash, braces, angle brackets) and no control characters; blanks
// collapsed.
QString tablestationname(const QString& name);

// The time in the table's 25-hour HHMM form, seconds dropped: 25:10:59 is 2510.
int tablehhmm(int seconds);

} // namespace quendle::gtfs
