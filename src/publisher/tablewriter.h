#pragma once
// Writing timetable tables (".vq"). A table is built in two stages: one intermediate
// text per line direction and day (convertraytostr), then the merge of those texts,
// where identical days of a line share one day block (groupcompressedtables) and the
// blocks are joined into the table text (mergegroups). The publisher tools and the
// built-in table generator both go through here, because the readers test single
// lines by substring and depend on every blank line and space of this layout.

#include "util/date.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace quendle {

// One service per row: its times (HHMM, 25-hour, -1 for no stop) at every stop.
using ServiceRows = std::vector<std::vector<int>>;

// The intermediate text of one line direction on one day: an empty line, the line
// header, then one row per service, every time followed by "," and the row by "}".
// colour is "#RRGGBB"; stopsText is the STOPS attribute (NAME|H|V joined by ",").
QString convertraytostr(const ServiceRows& rows, const QString& stopsText, const QString& lineName,
                        const QString& directionText, const QString& colour);

// Name of an intermediate file: line code and direction index, "#", a date text,
// and the day number (0 Sunday .. 6 Saturday) after "day".
QString intermediatename(const QString& lineCode, int direction, const QString& dateText, int dayNumber);

struct IntermediateTable {
    QString name;   // as made by intermediatename
    QString text;   // as made by convertraytostr
};

// Number of line positions at which two texts differ (split at "\n"); 100 when
// their line counts differ. 0 means identical.
int comparediffbetweentexts(const QString& a, const QString& b);

// One day block of the merged table.
struct MergeGroup {
    QString key;          // line code and direction index: the file name before its last "#"
    QString days;         // day digits of the group's files, in group order
    QStringList lines;    // the first file's text split at "\n"
    QString first;        // the first file's name
};

// Groups identical intermediate texts in listing order: each group starts at the
// first file not yet taken and gathers every later identical file.
std::vector<MergeGroup> groupcompressedtables(const std::vector<IntermediateTable>& files);

// The whole table text: header with dateText, then the line blocks with their day
// blocks in group order. A group whose key equals the previous group's key adds a
// day block to the same line; any other key closes the line before and opens its own.
// tableName is the header's timetable name.
QString mergegroups(const std::vector<MergeGroup>& groups, const QString& dateText,
                    const QString& tableName = QStringLiteral("SydneyTrains"));

// The header's DATE text for an instant: "23 November 2026 10:15:00 AM", i.e. the
// display date followed by the local time, so readers find day, month name and
// year first and at least five pieces.
QString tabledatetext(Date when);

} // namespace quendle
