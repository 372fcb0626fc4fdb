#pragma once
// Importing a GTFS feed (zip file or folder) as a timetable table: read and check
// the feed, build the table, and write it in one piece (a sibling file renamed over
// the target), so a broken feed or a full disk leaves whatever was there untouched.

#include "gtfs/tablebuild.h"
#include "util/date.h"

#include <optional>

namespace quendle::gtfs {

struct ImportRequest {
    QString feed;                   // the feed's zip file or folder
    QString out;                    // the table file; "" for tablesFolder/NAME.vq
    QString name;                   // the timetable name; "" to make one from the agency
    std::optional<QDate> week;      // any day of the week to represent
    FeedFilter filter;
};

struct ImportResult {
    QString path;                   // the file written
    QString name;
    QDate monday;                   // the represented week runs Monday to Sunday
    QDate firstDate, lastDate;      // the feed's dates
    int lines = 0, stations = 0;
    std::array<int, 7> services{};  // trips per day digit (0 Sunday .. 6 Saturday)
    QStringList warnings;
};

// Throws FeedError for a broken feed, for options the feed cannot satisfy, and
// when the table cannot be written; nothing is written then.
ImportResult importgtfs(const ImportRequest& request, const QString& tablesFolder, Date now);

// A timetable name from an agency name: its letters and digits only ("GTFS" when none).
QString namefromagency(const QString& agency);
// Whether a name given by the user can name a table file: letters, digits, "-", "_".
bool validtablename(const QString& name);

} // namespace quendle::gtfs
