#include "gtfs/feed.h"

#include <QRegularExpression>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <map>
#include <set>
#include <unordered_map>

namespace quendle::gtfs {

namespace {

struct StrHash {
    using is_transparent = void;
    size_t operator()(std::string_view s) const { return std::hash<std::string_view>{}(s); }
};
using IdMap = std::unordered_map<std::string, int, StrHash, std::equal_to<>>;

// Kept stop times beyond this would not fit the memory a desktop can spare.
constexpr size_t kMaxStopTimes = 20'000'000;
// Departures of frequency-based trips, all trips together.
constexpr size_t kMaxFrequencyDepartures = 2'000'000;

QString qs(std::string_view s) { return QString::fromUtf8(s.data(), static_cast<qsizetype>(s.size())); }

bool parseint(std::string_view s, int* out)
{
    if (!s.empty() && s.front() == '+')
        s.remove_prefix(1);
    const auto r = std::from_chars(s.data(), s.data() + s.size(), *out);
    return !s.empty() && r.ec == std::errc() && r.ptr == s.data() + s.size();
}

bool parsedouble(std::string_view s, double* out)
{
    if (s.empty())
        return false;
    const auto r = std::from_chars(s.data(), s.data() + s.size(), *out);
    return r.ec == std::errc() && r.ptr == s.data() + s.size() && std::isfinite(*out);
}

struct Opened {
    std::unique_ptr<ByteSource> bytes;
    std::unique_ptr<CsvReader> csv;
    explicit operator bool() const { return csv != nullptr; }
};

// An empty optional file counts as absent; a required one must have a header.
Opened openfile(FeedSource& source, const QString& name, bool required)
{
    Opened o;
    o.bytes = source.file(name);
    if (!o.bytes) {
        if (required)
            throw FeedError(name, 0, QString(), QStringLiteral("is missing; every feed needs it"));
        return o;
    }
    o.csv = std::make_unique<CsvReader>(*o.bytes, name);
    if (!o.csv->readheader()) {
        if (required)
            throw FeedError(name, 0, QString(), QStringLiteral("is empty; every feed needs it"));
        o.csv.reset();
    }
    return o;
}

struct Calendar {
    bool inCalendar = false;
    std::uint8_t weekdays = 0;   // bit per day digit
    QDate start, end;
    std::vector<std::pair<QDate, int>> exceptions;
};

struct StopTimeRec {
    int trip;
    int seq;
    int time;      // seconds, -1 when untimed
    int stop;
    float dist;    // NaN when not given
    bool passes;   // neither picks up nor sets down
};

QString weekspan(QDate monday)
{
    return QStringLiteral("%1 to %2").arg(monday.toString(Qt::ISODate), monday.addDays(6).toString(Qt::ISODate));
}

QDate mondayof(QDate d) { return d.addDays(1 - d.dayOfWeek()); }

} // namespace

int parsegtfstime(std::string_view t)
{
    while (!t.empty() && (t.front() == ' ' || t.front() == '\t'))
        t.remove_prefix(1);
    while (!t.empty() && (t.back() == ' ' || t.back() == '\t'))
        t.remove_suffix(1);
    if (t.empty())
        return -1;
    int parts[3] = {0, 0, 0};
    int count = 0;
    size_t i = 0;
    while (i <= t.size() && count < 3) {
        const size_t colon = t.find(':', i);
        const std::string_view piece = t.substr(i, colon == std::string_view::npos ? t.npos : colon - i);
        if (piece.empty() || piece.size() > 3 || !parseint(piece, &parts[count]) || parts[count] < 0)
            return -2;
        ++count;
        if (colon == std::string_view::npos) {
            i = t.size() + 1;
            break;
        }
        i = colon + 1;
    }
    // Hours and minutes at least; seconds may be left off. Nothing may follow.
    if (count < 2 || i <= t.size() || parts[1] > 59 || parts[2] > 59)
        return -2;
    return parts[0] * 3600 + parts[1] * 60 + parts[2];
}

QDate parsegtfsdate(std::string_view t)
{
    int y = 0, m = 0, d = 0;
    if (t.size() != 8 || !parseint(t.substr(0, 4), &y) || !parseint(t.substr(4, 2), &m) || !parseint(t.substr(6, 2), &d))
        return {};
    return QDate(y, m, d);
}

Feed loadfeed(FeedSource& source, const FeedFilter& filter, std::optional<QDate> week, QDate today)
{
    Feed feed;

    // --- agencies (only their names are used) ---
    if (Opened f = openfile(source, QStringLiteral("agency.txt"), false)) {
        const int cid = f.csv->column("agency_id"), cname = f.csv->column("agency_name");
        while (f.csv->next())
            feed.agencies.emplace_back(qs(f.csv->field(cid)), qs(f.csv->field(cname)).trimmed());
    }

    // --- routes ---
    IdMap routeIndex;
    std::vector<bool> routeKept;
    {
        Opened f = openfile(source, QStringLiteral("routes.txt"), true);
        CsvReader& r = *f.csv;
        const int cid = r.requirecolumn("route_id"), ctype = r.requirecolumn("route_type");
        const int cshort = r.column("route_short_name"), clong = r.column("route_long_name");
        const int ccolour = r.column("route_color"), cagency = r.column("agency_id");
        while (r.next()) {
            Route route;
            route.id = qs(r.field(cid));
            if (route.id.isEmpty())
                r.fail(cid, QStringLiteral("a route without an id"));
            if (!parseint(r.field(ctype), &route.type))
                r.fail(ctype, QStringLiteral("\"%1\" is not a route type number").arg(qs(r.field(ctype))));
            route.shortName = qs(r.field(cshort)).trimmed();
            route.longName = qs(r.field(clong)).trimmed();
            route.agencyId = qs(r.field(cagency));
            const QString colour = qs(r.field(ccolour));
            static const QRegularExpression hex6(QStringLiteral("^[0-9A-Fa-f]{6}$"));
            route.colour = hex6.match(colour).hasMatch() ? QLatin1Char('#') + colour : QStringLiteral("#000000");
            if (!routeIndex.emplace(std::string(r.field(cid)), static_cast<int>(feed.routes.size())).second)
                r.fail(cid, QStringLiteral("route \"%1\" is listed twice").arg(route.id));
            const bool typeOk = filter.routeTypes.empty()
                || std::find(filter.routeTypes.begin(), filter.routeTypes.end(), route.type) != filter.routeTypes.end();
            routeKept.push_back(typeOk && (filter.routes.isEmpty() || filter.routes.contains(route.id)));
            feed.routes.push_back(std::move(route));
        }
        for (const QString& id : filter.routes)
            if (routeIndex.find(id.toStdString()) == routeIndex.end())
                feed.warnings << QStringLiteral("route \"%1\" given with --routes is not in the feed").arg(id);
        if (std::find(routeKept.begin(), routeKept.end(), true) == routeKept.end()) {
            std::map<int, int> types;
            for (const Route& rt : feed.routes)
                ++types[rt.type];
            QStringList present;
            for (const auto& [type, n] : types)
                present << QStringLiteral("%1 (%2 routes)").arg(type).arg(n);
            throw FeedError(QStringLiteral("routes.txt"), 0, QString(),
                            feed.routes.empty() ? QStringLiteral("the feed has no routes")
                                                : QStringLiteral("no route is left by the filter; route types in the feed: %1")
                                                      .arg(present.join(QStringLiteral(", "))));
        }
    }

    // --- service calendar ---
    IdMap serviceIndex;
    std::vector<Calendar> services;
    auto serviceof = [&](std::string_view id) {
        auto it = serviceIndex.find(id);
        if (it != serviceIndex.end())
            return it->second;
        serviceIndex.emplace(std::string(id), static_cast<int>(services.size()));
        services.emplace_back();
        return static_cast<int>(services.size()) - 1;
    };
    auto widen = [&](QDate d) {
        if (!feed.firstDate.isValid() || d < feed.firstDate)
            feed.firstDate = d;
        if (!feed.lastDate.isValid() || d > feed.lastDate)
            feed.lastDate = d;
    };
    Opened cal = openfile(source, QStringLiteral("calendar.txt"), false);
    Opened caldates = openfile(source, QStringLiteral("calendar_dates.txt"), false);
    if (!cal && !caldates)
        throw FeedError(QStringLiteral("calendar.txt"), 0, QString(),
                        QStringLiteral("is missing, and so is calendar_dates.txt: the feed says on no day which trips run"));
    if (cal) {
        CsvReader& r = *cal.csv;
        const int cid = r.requirecolumn("service_id");
        // Day digits: 0 Sunday .. 6 Saturday.
        static const char* const names[7] = {"sunday", "monday", "tuesday", "wednesday", "thursday", "friday", "saturday"};
        int cday[7];
        for (int d = 0; d < 7; ++d)
            cday[d] = r.requirecolumn(names[d]);
        const int cstart = r.requirecolumn("start_date"), cend = r.requirecolumn("end_date");
        while (r.next()) {
            Calendar& c = services[serviceof(r.field(cid))];
            c.inCalendar = true;
            c.weekdays = 0;
            for (int d = 0; d < 7; ++d) {
                const std::string_view v = r.field(cday[d]);
                if (v == "1")
                    c.weekdays |= 1 << d;
                else if (v != "0" && !v.empty())
                    r.fail(cday[d], QStringLiteral("\"%1\" is neither 0 nor 1").arg(qs(v)));
            }
            c.start = parsegtfsdate(r.field(cstart));
            if (!c.start.isValid())
                r.fail(cstart, QStringLiteral("\"%1\" is not a date (YYYYMMDD)").arg(qs(r.field(cstart))));
            c.end = parsegtfsdate(r.field(cend));
            if (!c.end.isValid())
                r.fail(cend, QStringLiteral("\"%1\" is not a date (YYYYMMDD)").arg(qs(r.field(cend))));
            widen(c.start);
            widen(c.end);
        }
    }
    if (caldates) {
        CsvReader& r = *caldates.csv;
        const int cid = r.requirecolumn("service_id"), cdate = r.requirecolumn("date");
        const int ctype = r.requirecolumn("exception_type");
        while (r.next()) {
            const QDate d = parsegtfsdate(r.field(cdate));
            if (!d.isValid())
                r.fail(cdate, QStringLiteral("\"%1\" is not a date (YYYYMMDD)").arg(qs(r.field(cdate))));
            int type = 0;
            if (!parseint(r.field(ctype), &type) || (type != 1 && type != 2))
                r.fail(ctype, QStringLiteral("\"%1\" is neither 1 (added) nor 2 (removed)").arg(qs(r.field(ctype))));
            services[serviceof(r.field(cid))].exceptions.emplace_back(d, type);
            widen(d);
        }
    }
    if (!feed.firstDate.isValid())
        throw FeedError(cal ? QStringLiteral("calendar.txt") : QStringLiteral("calendar_dates.txt"), 0, QString(),
                        QStringLiteral("names no dates at all"));

    // --- the represented week ---
    const QString range = QStringLiteral("%1 to %2").arg(feed.firstDate.toString(Qt::ISODate),
                                                         feed.lastDate.toString(Qt::ISODate));
    if (week) {
        feed.monday = mondayof(*week);
        if (feed.monday.addDays(6) < feed.firstDate || feed.monday > feed.lastDate)
            throw FeedError(QString(), 0, QString(),
                            QStringLiteral("the week %1 lies outside the feed's dates (%2)").arg(weekspan(feed.monday), range));
        if (feed.monday < feed.firstDate || feed.monday.addDays(6) > feed.lastDate)
            feed.warnings << QStringLiteral("the week %1 is only partly inside the feed's dates (%2)")
                                 .arg(weekspan(feed.monday), range);
    } else {
        const QDate thisWeek = mondayof(today);
        if (thisWeek >= feed.firstDate && thisWeek.addDays(6) <= feed.lastDate) {
            feed.monday = thisWeek;
        } else {
            QDate m = mondayof(feed.firstDate);
            if (m < feed.firstDate)
                m = m.addDays(7);
            feed.monday = m.addDays(6) <= feed.lastDate ? m : mondayof(feed.firstDate);
        }
    }
    std::vector<std::uint8_t> serviceDays(services.size(), 0);
    for (size_t s = 0; s < services.size(); ++s) {
        const Calendar& c = services[s];
        for (int digit = 0; digit < 7; ++digit) {
            const QDate d = feed.dateofdigit(digit);
            bool runs = c.inCalendar && d >= c.start && d <= c.end && (c.weekdays & (1 << digit));
            for (const auto& [date, type] : c.exceptions)
                if (date == d)
                    runs = type == 1;
            if (runs)
                serviceDays[s] |= 1 << digit;
        }
    }

    // --- trips ---
    IdMap tripIndex;   // every trip of the feed; -1 for the ones not kept
    {
        Opened f = openfile(source, QStringLiteral("trips.txt"), true);
        CsvReader& r = *f.csv;
        const int croute = r.requirecolumn("route_id"), cservice = r.requirecolumn("service_id");
        const int cid = r.requirecolumn("trip_id");
        const int cdir = r.column("direction_id"), chead = r.column("trip_headsign");
        int unknownServices = 0;
        while (r.next()) {
            const auto rt = routeIndex.find(r.field(croute));
            if (rt == routeIndex.end())
                r.fail(croute, QStringLiteral("route \"%1\" is not in routes.txt").arg(qs(r.field(croute))));
            const std::string_view sid = r.field(cservice);
            const auto sv = serviceIndex.find(sid);
            if (sv == serviceIndex.end())
                ++unknownServices;
            const std::uint8_t days = sv == serviceIndex.end() ? 0 : serviceDays[sv->second];
            int kept = -1;
            if (routeKept[rt->second] && days != 0) {
                Trip t;
                t.id = qs(r.field(cid));
                t.route = rt->second;
                t.days = days;
                t.headsign = qs(r.field(chead)).trimmed();
                const std::string_view dir = r.field(cdir);
                if (!dir.empty() && (!parseint(dir, &t.direction) || t.direction < 0))
                    r.fail(cdir, QStringLiteral("\"%1\" is not a direction (0 or 1)").arg(qs(dir)));
                kept = static_cast<int>(feed.trips.size());
                feed.trips.push_back(std::move(t));
            }
            if (r.field(cid).empty())
                r.fail(cid, QStringLiteral("a trip without an id"));
            if (!tripIndex.emplace(std::string(r.field(cid)), kept).second)
                r.fail(cid, QStringLiteral("trip \"%1\" is listed twice").arg(qs(r.field(cid))));
        }
        if (unknownServices > 0)
            feed.warnings << QStringLiteral("%1 trips name a service_id that neither calendar file knows; they never run")
                                 .arg(unknownServices);
        if (feed.trips.empty())
            throw FeedError(QStringLiteral("trips.txt"), 0, QString(),
                            QStringLiteral("no trip of the routes kept runs in the week %1").arg(weekspan(feed.monday)));
    }

    // --- stops ---
    IdMap stopIndex;
    {
        Opened f = openfile(source, QStringLiteral("stops.txt"), true);
        CsvReader& r = *f.csv;
        const int cid = r.requirecolumn("stop_id"), cname = r.column("stop_name");
        const int clat = r.column("stop_lat"), clon = r.column("stop_lon"), cparent = r.column("parent_station");
        std::vector<std::pair<std::string, qint64>> parents;
        while (r.next()) {
            Stop s;
            s.id = qs(r.field(cid));
            s.name = qs(r.field(cname)).simplified();
            double v = 0;
            if (parsedouble(r.field(clat), &v) && std::abs(v) <= 90)
                s.lat = qs(r.field(clat));
            if (parsedouble(r.field(clon), &v) && std::abs(v) <= 180)
                s.lon = qs(r.field(clon));
            if (!stopIndex.emplace(std::string(r.field(cid)), static_cast<int>(feed.stops.size())).second)
                r.fail(cid, QStringLiteral("stop \"%1\" is listed twice").arg(s.id));
            parents.emplace_back(std::string(r.field(cparent)), r.line());
            feed.stops.push_back(std::move(s));
        }
        int unknownParents = 0;
        for (size_t i = 0; i < parents.size(); ++i) {
            if (parents[i].first.empty())
                continue;
            const auto p = stopIndex.find(parents[i].first);
            if (p == stopIndex.end() || p->second == static_cast<int>(i))
                ++unknownParents;
            else
                feed.stops[i].parent = p->second;
        }
        if (unknownParents > 0)
            feed.warnings << QStringLiteral("%1 stops name a parent_station that stops.txt lacks; they count as stations of their own")
                                 .arg(unknownParents);
    }
    // A platform's station is its topmost parent (boarding area, platform, station).
    auto stationof = [&](int stop) {
        for (int hops = 0; hops < 4 && feed.stops[stop].parent >= 0; ++hops)
            stop = feed.stops[stop].parent;
        return stop;
    };

    // --- stop times ---
    std::vector<StopTimeRec> recs;
    {
        Opened f = openfile(source, QStringLiteral("stop_times.txt"), true);
        CsvReader& r = *f.csv;
        const int ctrip = r.requirecolumn("trip_id"), cstop = r.requirecolumn("stop_id");
        const int cseq = r.requirecolumn("stop_sequence");
        const int carr = r.column("arrival_time"), cdep = r.column("departure_time");
        if (carr < 0 && cdep < 0)
            r.requirecolumn("departure_time");
        const int cpick = r.column("pickup_type"), cdrop = r.column("drop_off_type");
        const int cdist = r.column("shape_dist_traveled");
        while (r.next()) {
            const auto t = tripIndex.find(r.field(ctrip));
            if (t == tripIndex.end())
                r.fail(ctrip, QStringLiteral("trip \"%1\" is not in trips.txt").arg(qs(r.field(ctrip))));
            if (t->second < 0)
                continue;
            const auto s = stopIndex.find(r.field(cstop));
            if (s == stopIndex.end())
                r.fail(cstop, QStringLiteral("stop \"%1\" is not in stops.txt").arg(qs(r.field(cstop))));
            StopTimeRec rec{};
            rec.trip = t->second;
            rec.stop = stationof(s->second);
            if (!parseint(r.field(cseq), &rec.seq) || rec.seq < 0)
                r.fail(cseq, QStringLiteral("\"%1\" is not a stop sequence number").arg(qs(r.field(cseq))));
            const int dep = parsegtfstime(r.field(cdep)), arr = parsegtfstime(r.field(carr));
            if (dep == -2)
                r.fail(cdep, QStringLiteral("\"%1\" is not a time (H:MM:SS)").arg(qs(r.field(cdep))));
            if (arr == -2)
                r.fail(carr, QStringLiteral("\"%1\" is not a time (H:MM:SS)").arg(qs(r.field(carr))));
            rec.time = dep >= 0 ? dep : arr;
            double dist = 0;
            rec.dist = parsedouble(r.field(cdist), &dist) && std::abs(dist) < 1e30
                ? static_cast<float>(dist)
                : std::numeric_limits<float>::quiet_NaN();
            rec.passes = r.field(cpick) == "1" && r.field(cdrop) == "1";
            if (recs.size() >= kMaxStopTimes)
                r.fail(-1, QStringLiteral("more than %1 stop times are kept; choose fewer routes").arg(kMaxStopTimes));
            recs.push_back(rec);
        }
    }
    std::sort(recs.begin(), recs.end(), [](const StopTimeRec& a, const StopTimeRec& b) {
        return a.trip != b.trip ? a.trip < b.trip : a.seq < b.seq;
    });

    // --- each trip's stations and times ---
    int trimmed = 0, backwards = 0, tooShort = 0;
    std::vector<bool> usable(feed.trips.size(), false);
    for (size_t b = 0; b < recs.size();) {
        size_t e = b;
        while (e < recs.size() && recs[e].trip == recs[b].trip)
            ++e;
        Trip& trip = feed.trips[recs[b].trip];
        for (size_t i = b + 1; i < e; ++i)
            if (recs[i].seq == recs[i - 1].seq)
                throw FeedError(QStringLiteral("stop_times.txt"), 0, QStringLiteral("stop_sequence"),
                                QStringLiteral("trip \"%1\" lists stop_sequence %2 twice").arg(trip.id).arg(recs[i].seq));
        // The standard wants times at both ends; stops outside the timed span are left off.
        size_t first = b, last = e;
        while (first < e && recs[first].time < 0)
            ++first;
        while (last > first && recs[last - 1].time < 0)
            --last;
        if (first != b || last != e)
            ++trimmed;
        std::vector<int> times;
        for (size_t i = first; i < last; ++i)
            times.push_back(recs[i].time);
        // Untimed stops between two timed ones: in proportion to the distance travelled
        // when the feed gives it for the whole gap, evenly otherwise.
        for (size_t i = 1; i < times.size(); ++i) {
            if (times[i] >= 0)
                continue;
            const size_t a = i - 1;
            size_t z = i;
            while (times[z] < 0)
                ++z;
            const StopTimeRec* ra = &recs[first + a];
            const StopTimeRec* rz = &recs[first + z];
            bool byDistance = !std::isnan(ra->dist) && !std::isnan(rz->dist) && rz->dist > ra->dist;
            for (size_t k = a + 1; k < z && byDistance; ++k) {
                const float d = recs[first + k].dist;
                byDistance = !std::isnan(d) && d >= ra->dist && d <= rz->dist;
            }
            for (size_t k = a + 1; k < z; ++k) {
                const double frac = byDistance
                    ? (double(recs[first + k].dist) - ra->dist) / (double(rz->dist) - ra->dist)
                    : double(k - a) / double(z - a);
                times[k] = times[a] + static_cast<int>(std::floor((times[z] - times[a]) * frac));
            }
            i = z;
        }
        bool ordered = true;
        for (size_t i = 1; i < times.size(); ++i)
            ordered = ordered && times[i] >= times[i - 1];
        if (!ordered) {
            ++backwards;
        } else {
            for (size_t i = first; i < last; ++i) {
                if (recs[i].passes)
                    continue;
                trip.stations.push_back(recs[i].stop);
                trip.times.push_back(times[i - first]);
            }
            if (trip.stations.size() < 2)
                ++tooShort;
            else
                usable[recs[b].trip] = true;
        }
        b = e;
    }
    recs = {};
    if (trimmed > 0)
        feed.warnings << QStringLiteral("%1 trips have untimed stops before their first or after their last time; those stops are left out")
                             .arg(trimmed);
    if (backwards > 0)
        feed.warnings << QStringLiteral("%1 trips whose times run backwards are left out").arg(backwards);
    const auto unused = std::count(usable.begin(), usable.end(), false) - backwards - tooShort;
    if (unused > 0)
        feed.warnings << QStringLiteral("%1 trips have no stop times and are left out").arg(unused);
    if (tooShort > 0)
        feed.warnings << QStringLiteral("%1 trips with fewer than two timed stops are left out").arg(tooShort);

    // --- frequency-based trips: one departure per headway ---
    if (Opened f = openfile(source, QStringLiteral("frequencies.txt"), false)) {
        CsvReader& r = *f.csv;
        const int ctrip = r.requirecolumn("trip_id"), cstart = r.requirecolumn("start_time");
        const int cend = r.requirecolumn("end_time"), chead = r.requirecolumn("headway_secs");
        size_t departures = 0;
        while (r.next()) {
            const auto t = tripIndex.find(r.field(ctrip));
            if (t == tripIndex.end())
                r.fail(ctrip, QStringLiteral("trip \"%1\" is not in trips.txt").arg(qs(r.field(ctrip))));
            const int start = parsegtfstime(r.field(cstart)), end = parsegtfstime(r.field(cend));
            if (start < 0)
                r.fail(cstart, QStringLiteral("\"%1\" is not a time (H:MM:SS)").arg(qs(r.field(cstart))));
            if (end < 0)
                r.fail(cend, QStringLiteral("\"%1\" is not a time (H:MM:SS)").arg(qs(r.field(cend))));
            int headway = 0;
            if (!parseint(r.field(chead), &headway) || headway <= 0)
                r.fail(chead, QStringLiteral("\"%1\" is not a positive number of seconds").arg(qs(r.field(chead))));
            if (t->second < 0)
                continue;
            Trip& trip = feed.trips[t->second];
            trip.frequencyBased = true;
            // The last departure is the last one before end_time.
            for (qint64 s = start; s < end; s += headway) {
                if (++departures > kMaxFrequencyDepartures)
                    r.fail(chead, QStringLiteral("the frequencies come to more than %1 departures").arg(kMaxFrequencyDepartures));
                trip.starts.push_back(static_cast<int>(s));
            }
        }
        for (Trip& t : feed.trips)
            std::sort(t.starts.begin(), t.starts.end());
    }

    // Only trips with stations and times remain.
    std::vector<Trip> kept;
    kept.reserve(feed.trips.size());
    for (size_t i = 0; i < feed.trips.size(); ++i)
        if (usable[i])
            kept.push_back(std::move(feed.trips[i]));
    feed.trips = std::move(kept);
    if (feed.trips.empty())
        throw FeedError(QStringLiteral("stop_times.txt"), 0, QString(),
                        QStringLiteral("no trip of the routes kept that runs in the week %1 has two timed stops")
                            .arg(weekspan(feed.monday)));
    return feed;
}

} // namespace quendle::gtfs
