#pragma once
// A GTFS feed reduced to what a timetable table needs for one week: the routes kept
// by the filter, the stations, and every trip that runs on a day of that week, with
// its stations in order and a time at each (gaps interpolated).

#include "gtfs/feedsource.h"

#include <QDate>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <optional>
#include <vector>

namespace quendle::gtfs {

struct FeedFilter {
    std::vector<int> routeTypes;   // keep only routes of these types; empty keeps all
    QStringList routes;            // keep only these route ids; empty keeps all
};

struct Route {
    QString id, shortName, longName, agencyId;
    QString colour;                // "#RRGGBB" as the feed gives it, "#000000" when absent
    int type = 0;
};

struct Stop {
    QString id, name;
    QString lon, lat;              // decimal text as in the feed; "" when absent or unusable
    int parent = -1;               // index of the station it belongs to, -1 for none
};

struct Trip {
    QString id;
    int route = 0;
    int direction = -1;            // direction_id, -1 when absent
    QString headsign;
    std::uint8_t days = 0;         // bit d set: runs on day digit d of the week (0 Sunday .. 6 Saturday)
    std::vector<int> stations;     // stop indexes with parents resolved, in running order
    std::vector<int> times;        // seconds from the service day's start (past 24 h after midnight)
    // A trip of frequencies.txt runs once per entry of `starts` (its departure from the
    // first station), its other times shifted alike; any other trip runs once, at `times`.
    bool frequencyBased = false;
    std::vector<int> starts;
};

struct Feed {
    std::vector<std::pair<QString, QString>> agencies;   // (agency_id, agency_name)
    std::vector<Route> routes;
    std::vector<Stop> stops;
    std::vector<Trip> trips;       // only the kept trips that run in the week
    QDate firstDate, lastDate;     // the dates the feed's calendars span
    QDate monday;                  // the represented week runs Monday to Sunday
    QStringList warnings;

    // The date of a day digit in the represented week.
    QDate dateofdigit(int digit) const { return monday.addDays(digit == 0 ? 6 : digit - 1); }
};

// Reads and checks the feed. week is any day of the week to represent; without it,
// today's week when the feed covers it, else the feed's first full week. Throws a
// FeedError (file, line, column) on a broken feed or when nothing is left to import.
Feed loadfeed(FeedSource& source, const FeedFilter& filter, std::optional<QDate> week, QDate today);

// Small parsers shared with the tests: "H:MM:SS" (hours may pass 24) in seconds,
// -1 when empty, -2 when malformed; "YYYYMMDD" as a date, invalid when malformed.
int parsegtfstime(std::string_view text);
QDate parsegtfsdate(std::string_view text);

} // namespace quendle::gtfs
