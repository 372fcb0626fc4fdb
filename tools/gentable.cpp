// quendle-gentable <network folder> <output .vq>
//
// Builds the built-in Sydney Trains table from the network description (the *.txt
// files of the network folder, format in network/README.md): expands each route's
// service patterns (whole-route trains and the workings over part of it) into
// departures, times every stop from the distances and the line's running figures,
// and writes the table through the publisher's writer so the result has exactly the
// publisher's layout. Anything the table readers could trip over (a bad name, a clash
// of line identities, a time past 25:59) or that would make the table say something
// else than its description (a change point no train leaves at, two trains of a line
// leaving a station together the same way) stops the build.

#include "publisher/tablewriter.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QSaveFile>

#include <algorithm>
#include <array>
#include <climits>
#include <cmath>
#include <cstdio>
#include <map>
#include <optional>
#include <set>

using namespace quendle;

namespace {

struct Failure {
    QString message;
};

[[noreturn]] void fail(const QString& message)
{
    throw Failure{message};
}

struct Station {
    QString h, v;
};

struct Pattern {
    std::vector<std::pair<int, int>> pieces;   // (from minute, interval) in order; interval 0: no trains
    int last = -1;                             // minute of the last departure
    QString text;
    bool set() const { return !pieces.empty(); }
};

enum { Weekday, Saturday, Sunday, DayTypes };
const char* const kDayWords[DayTypes] = {"weekday", "saturday", "sunday"};

struct Stop {
    double km = 0;
    QString name;
};

struct Running {
    double minutesPerStop = -1;   // dwell plus the time lost braking and starting
    double speed = -1;            // km/h between stops
};

// Trains that run over part of a route only (short workings, turnbacks): from one of
// its stops to a later one; a day without a pattern has none of them.
struct Working {
    QString from, to;
    std::array<Pattern, DayTypes> days;
};

struct Route {
    QString direction;
    std::vector<Stop> stops;
    std::optional<Running> running;
    std::array<Pattern, DayTypes> days;   // trains over the whole route
    std::vector<Working> workings;
};

struct Line {
    QString name, code, colour;
    Running running;
    std::vector<Route> routes;
};

struct Network {
    std::map<QString, Station> stations;
    std::vector<Line> lines;
};

// Texts the readers look for by substring on single table lines, and the table's own
// separators: a name holding one of them would be misread.
const char* const kForbidden[] = {"day", "line", "forwards", "timetable", "\"", "#", "|", ",", "}"};

void checkname(const QString& what, const QString& name)
{
    if (name.trimmed().isEmpty() || name != name.trimmed())
        fail(QStringLiteral("%1 \"%2\": empty or with outer blanks").arg(what, name));
    for (const char* bad : kForbidden)
        if (name.contains(QLatin1String(bad)))
            fail(QStringLiteral("%1 \"%2\" contains \"%3\"").arg(what, name, QLatin1String(bad)));
}

double number(const QString& text, const QString& what)
{
    bool ok = false;
    const double value = text.toDouble(&ok);
    if (!ok || !std::isfinite(value))
        fail(QStringLiteral("%1: not a number: \"%2\"").arg(what, text));
    return value;
}

int clockminutes(const QString& hhmm)
{
    bool ok = false;
    const int t = hhmm.toInt(&ok);
    if (!ok || t < 0 || t % 100 > 59)
        fail(QStringLiteral("not a time: \"%1\"").arg(hhmm));
    return t / 100 * 60 + t % 100;
}

QString clocktext(int minutes)
{
    return QStringLiteral("%1%2").arg(minutes / 60, 2, 10, QLatin1Char('0')).arg(minutes % 60, 2, 10, QLatin1Char('0'));
}

// "0430 +30, 0600 +10, 0930 none, 1500 +10, ..., last 2411"
Pattern parsepattern(const QString& text)
{
    Pattern p;
    p.text = text.simplified();
    const QStringList pieces = text.split(QLatin1Char(','), Qt::SkipEmptyParts);
    for (const QString& raw : pieces) {
        const QStringList words = raw.simplified().split(QLatin1Char(' '));
        if (words.size() == 2 && words[0] == QLatin1String("last")) {
            p.last = clockminutes(words[1]);
            continue;
        }
        const bool none = words.size() == 2 && words[1] == QLatin1String("none");
        if (words.size() != 2 || (!none && !words[1].startsWith(QLatin1Char('+'))) || p.last >= 0)
            fail(QStringLiteral("pattern piece \"%1\"").arg(raw.trimmed()));
        const int from = clockminutes(words[0]);
        const int every = none ? 0 : static_cast<int>(number(words[1].mid(1), QStringLiteral("interval")));
        if ((!none && every < 1) || (!p.pieces.empty() && from <= p.pieces.back().first))
            fail(QStringLiteral("pattern piece \"%1\" out of order").arg(raw.trimmed()));
        if (none && (p.pieces.empty() || p.pieces.back().second == 0))
            fail(QStringLiteral("\"none\" must follow a piece with trains: \"%1\"").arg(raw.trimmed()));
        p.pieces.emplace_back(from, every);
    }
    if (p.pieces.empty() || p.last < p.pieces.front().first)
        fail(QStringLiteral("pattern \"%1\" needs a first piece and a later \"last\"").arg(text));
    return p;
}

// Each train leaves the interval in force at the one before later; one that would
// leave inside a span without trains leaves at the span's end instead. Every change
// point with trains must be a departure, so the description reads as the timetable.
std::vector<int> departures(const Pattern& p)
{
    std::vector<int> out;
    size_t piece = 0;
    for (int t = p.pieces.front().first; t <= p.last;) {
        out.push_back(t);
        while (piece + 1 < p.pieces.size() && p.pieces[piece + 1].first <= t)
            ++piece;
        t += p.pieces[piece].second;
        for (size_t k = piece + 1; k < p.pieces.size() && p.pieces[k].first <= t; ++k)
            if (p.pieces[k].second == 0)
                t = k + 1 < p.pieces.size() ? std::max(t, p.pieces[k + 1].first) : INT_MAX;
    }
    for (const auto& [from, every] : p.pieces)
        if (every > 0 && from <= p.last && !std::binary_search(out.begin(), out.end(), from))
            fail(QStringLiteral("pattern \"%1\": no train leaves at its change point %2")
                     .arg(p.text, clocktext(from)));
    return out;
}

void parsefile(const QString& path, Network& net)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        fail(QStringLiteral("cannot read %1").arg(path));
    const QStringList rows = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
    Line* line = nullptr;
    Route* route = nullptr;
    Working* working = nullptr;   // the day patterns that follow belong to it
    for (qsizetype n = 0; n < rows.size(); ++n) {
        const QString row = rows[n].trimmed();
        try {
            if (row.isEmpty() || row.startsWith(QLatin1Char('#')))
                continue;
            if (row.contains(QLatin1Char('|'))) {   // station location: NAME|H|V
                const QStringList f = row.split(QLatin1Char('|'));
                if (f.size() != 3)
                    fail(QStringLiteral("station needs NAME|H|V"));
                checkname(QStringLiteral("station"), f[0]);
                number(f[1], QStringLiteral("longitude"));
                number(f[2], QStringLiteral("latitude"));
                const Station st{f[1].trimmed(), f[2].trimmed()};
                auto [it, added] = net.stations.emplace(f[0], st);
                if (!added && (it->second.h != st.h || it->second.v != st.v))
                    fail(QStringLiteral("station %1 given two positions").arg(f[0]));
                continue;
            }
            const qsizetype space = row.indexOf(QLatin1Char(' '));
            const QString word = row.left(space);
            const QString rest = space < 0 ? QString() : row.mid(space + 1).trimmed();
            bool isKm = false;
            const double km = word.toDouble(&isKm);
            if (word == QLatin1String("line")) {
                checkname(QStringLiteral("line"), rest);
                net.lines.push_back(Line{rest, {}, {}, {}, {}});
                line = &net.lines.back();
                route = nullptr;
                working = nullptr;
            } else if (!line) {
                fail(QStringLiteral("\"%1\" before any line").arg(word));
            } else if (word == QLatin1String("code")) {
                if (rest.isEmpty() || rest.contains(QLatin1Char('#')) || rest.contains(QLatin1Char(' ')))
                    fail(QStringLiteral("bad code \"%1\"").arg(rest));
                line->code = rest;
            } else if (word == QLatin1String("colour")) {
                bool ok = false;
                rest.mid(1).toUInt(&ok, 16);
                if (rest.size() != 7 || !rest.startsWith(QLatin1Char('#')) || !ok)
                    fail(QStringLiteral("colour must be #RRGGBB"));
                line->colour = rest.toUpper();
            } else if (word == QLatin1String("running")) {
                const QStringList f = rest.split(QLatin1Char(' '), Qt::SkipEmptyParts);
                if (f.size() != 2)
                    fail(QStringLiteral("running needs minutes per stop and km/h"));
                const Running r{number(f[0], word), number(f[1], word)};
                if (r.minutesPerStop < 0 || r.speed <= 0)
                    fail(QStringLiteral("running figures out of range"));
                if (route)
                    route->running = r;
                else
                    line->running = r;
            } else if (word == QLatin1String("route")) {
                checkname(QStringLiteral("route"), rest);
                line->routes.push_back(Route{rest, {}, {}, {}, {}});
                route = &line->routes.back();
                working = nullptr;
            } else if (!route) {
                fail(QStringLiteral("\"%1\" before any route").arg(word));
            } else if (word == QLatin1String("working")) {
                const QStringList ends = rest.split(QLatin1String(" to "));
                if (ends.size() != 2 || ends[0].trimmed().isEmpty() || ends[1].trimmed().isEmpty())
                    fail(QStringLiteral("working needs \"FROM to TO\""));
                route->workings.push_back(Working{ends[0].trimmed(), ends[1].trimmed(), {}});
                working = &route->workings.back();
            } else if (isKm) {
                if (working)
                    fail(QStringLiteral("stops must come before the route's workings"));
                if (!route->stops.empty() && km <= route->stops.back().km)
                    fail(QStringLiteral("distances must increase along a route"));
                route->stops.push_back(Stop{km, rest});
            } else if (const auto* day = std::find_if(std::begin(kDayWords), std::end(kDayWords),
                                                      [&](const char* w) { return word == QLatin1String(w); });
                       day != std::end(kDayWords)) {
                auto& days = working ? working->days : route->days;
                Pattern& p = days[static_cast<size_t>(day - std::begin(kDayWords))];
                if (p.set())
                    fail(QStringLiteral("a second %1 pattern").arg(word));
                p = parsepattern(rest);
            } else {
                fail(QStringLiteral("unknown record \"%1\"").arg(word));
            }
        } catch (const Failure& f) {
            fail(QStringLiteral("%1:%2: %3").arg(path).arg(n + 1).arg(f.message));
        }
    }
}

// Minutes from the first stop to each stop, rounded per stop; every stop at least a
// minute after the one before, so times along a service strictly increase.
std::vector<int> runningminutes(const Route& route, const Running& r)
{
    std::vector<int> out{0};
    double total = 0;
    for (size_t i = 1; i < route.stops.size(); ++i) {
        const double km = route.stops[i].km - route.stops[i - 1].km;
        total += std::max(1.0, r.minutesPerStop + km * 60.0 / r.speed);
        out.push_back(static_cast<int>(std::lround(total)));
    }
    return out;
}

int tabletime(int minutes)
{
    return minutes / 60 * 100 + minutes % 60;
}

QString tabletimetext(int t)
{
    return QStringLiteral("%1").arg(t, 4, 10, QLatin1Char('0'));
}

size_t stopindex(const Route& route, const QString& name)
{
    for (size_t i = 0; i < route.stops.size(); ++i)
        if (route.stops[i].name == name)
            return i;
    fail(QStringLiteral("no stop \"%1\" on this route").arg(name));
}

// One route's rows on one day type: the trains over the whole route and those of its
// workings, in the order they pass every stop (all of them share the route's running
// times, so ordering by the time at the first stop orders them everywhere).
ServiceRows servicerows(const Route& route, int dayType, const std::vector<int>& offsets)
{
    std::vector<std::pair<int, std::vector<int>>> timed;   // (time at the first stop, row)
    const auto add = [&](const Pattern& p, size_t a, size_t b) {
        if (!p.set())
            return;
        for (int dep : departures(p)) {
            const int start = dep - offsets[a];
            std::vector<int> row(offsets.size(), -1);
            for (size_t i = a; i <= b; ++i) {
                const int t = tabletime(start + offsets[i]);
                // Services after midnight stay on their starting day with hours 24 and 25;
                // later than that the readers' day would no longer hold them.
                if (t > 2559)
                    fail(QStringLiteral("time %1 past 25:59 at %2").arg(t).arg(route.stops[i].name));
                row[i] = t;
            }
            timed.emplace_back(start, std::move(row));
        }
    };
    add(route.days[dayType], 0, offsets.size() - 1);
    for (const Working& w : route.workings) {
        try {
            const size_t a = stopindex(route, w.from), b = stopindex(route, w.to);
            if (a >= b)
                fail(QStringLiteral("%1 does not come before %2 on this route").arg(w.from, w.to));
            add(w.days[dayType], a, b);
        } catch (const Failure& f) {
            fail(QStringLiteral("working %1 to %2: %3").arg(w.from, w.to, f.message));
        }
    }
    std::stable_sort(timed.begin(), timed.end(),
                     [](const auto& x, const auto& y) { return x.first < y.first; });
    ServiceRows rows;
    rows.reserve(timed.size());
    for (auto& [start, row] : timed)
        rows.push_back(std::move(row));
    return rows;
}

// Two trains of one line at a stop in the same minute, both going on to a stop in
// common, would be one service to the reader, which keeps only one of two equal
// departures: the description must keep its trains apart.
void checkclashes(const Line& line, const std::vector<ServiceRows>& rowsByRoute, int dayType)
{
    struct At {
        size_t route, row, stop;
    };
    std::map<std::pair<QString, int>, std::vector<At>> at;
    for (size_t r = 0; r < rowsByRoute.size(); ++r)
        for (size_t k = 0; k < rowsByRoute[r].size(); ++k)
            for (size_t i = 0; i < rowsByRoute[r][k].size(); ++i)
                if (rowsByRoute[r][k][i] != -1)
                    at[{line.routes[r].stops[i].name, rowsByRoute[r][k][i]}].push_back({r, k, i});
    const auto onward = [&](const At& a) {
        std::set<QString> names;
        const std::vector<int>& row = rowsByRoute[a.route][a.row];
        for (size_t j = a.stop + 1; j < row.size(); ++j)
            if (row[j] != -1)
                names.insert(line.routes[a.route].stops[j].name);
        return names;
    };
    for (const auto& [where, trains] : at)
        for (size_t x = 0; x < trains.size(); ++x)
            for (size_t y = x + 1; y < trains.size(); ++y) {
                const std::set<QString> a = onward(trains[x]), b = onward(trains[y]);
                const auto common = std::find_if(a.begin(), a.end(), [&](const QString& n) { return b.count(n) > 0; });
                if (common != a.end())
                    fail(QStringLiteral("%1: two %2 trains leave %3 at %4 for %5 (%6, %7)")
                             .arg(line.name, QLatin1String(kDayWords[dayType]), where.first,
                                  tabletimetext(where.second), *common,
                                  line.routes[trains[x].route].direction, line.routes[trains[y].route].direction));
            }
}

struct Summary {
    int blocks = 0;
    long services = 0;
};

QString buildtable(const Network& net, const QString& dateText, Summary& summary)
{
    if (net.lines.empty())
        fail(QStringLiteral("the network has no lines"));
    std::vector<IntermediateTable> files;
    QStringList names, headers;
    std::set<QString> keys;
    // Listing order Monday .. Saturday, then Sunday: identical weekdays then gather
    // into one block 12345 ahead of the weekend blocks.
    static const int dayNumbers[] = {1, 2, 3, 4, 5, 6, 0};
    static const char* const dayNames[] = {"Sunday", "Monday", "Tuesday", "Wednesday",
                                           "Thursday", "Friday", "Saturday"};
    for (const Line& line : net.lines) {
        if (line.code.isEmpty() || line.colour.isEmpty() || line.routes.empty())
            fail(QStringLiteral("line %1 needs a code, a colour and routes").arg(line.name));
        std::array<std::vector<ServiceRows>, DayTypes> rows;
        QStringList stopsTexts;
        for (size_t d = 0; d < line.routes.size(); ++d) {
            const Route& route = line.routes[d];
            const QString where = line.name + QLatin1Char('#') + route.direction;
            const QString key = line.code + QString::number(d);
            if (!keys.insert(key).second)
                fail(QStringLiteral("%1: line code and direction %2 used twice").arg(where, key));
            if (route.stops.size() < 2 || !std::all_of(route.days.begin(), route.days.end(), [](const Pattern& p) { return p.set(); }))
                fail(QStringLiteral("%1: needs two stops and weekday, saturday and sunday patterns").arg(where));
            const Running running = route.running.value_or(line.running);
            if (running.speed <= 0)
                fail(QStringLiteral("%1: no running figures").arg(where));
            QStringList stops;
            for (const Stop& s : route.stops) {
                const auto st = net.stations.find(s.name);
                if (st == net.stations.end())
                    fail(QStringLiteral("%1: no location for station \"%2\"").arg(where, s.name));
                stops << s.name + QLatin1Char('|') + st->second.h + QLatin1Char('|') + st->second.v;
            }
            stopsTexts << stops.join(QLatin1Char(','));
            const std::vector<int> offsets = runningminutes(route, running);
            for (int t = 0; t < DayTypes; ++t) {
                try {
                    rows[t].push_back(servicerows(route, t, offsets));
                } catch (const Failure& f) {
                    fail(QStringLiteral("%1, %2: %3").arg(where, QLatin1String(kDayWords[t]), f.message));
                }
            }
        }
        for (int t = 0; t < DayTypes; ++t)
            checkclashes(line, rows[t], t);
        for (size_t d = 0; d < line.routes.size(); ++d) {
            const Route& route = line.routes[d];
            for (int day : dayNumbers) {
                const ServiceRows& dayRows = rows[day == 6 ? Saturday : day == 0 ? Sunday : Weekday][d];
                summary.services += static_cast<long>(dayRows.size());
                files.push_back({intermediatename(line.code, static_cast<int>(d), QLatin1String(dayNames[day]), day),
                                 convertraytostr(dayRows, stopsTexts[static_cast<qsizetype>(d)], line.name,
                                                 route.direction, line.colour)});
            }
            names << line.name + QLatin1Char('#') + route.direction;
            headers << files.back().text.split(QLatin1Char('\n')).value(1);
            ++summary.blocks;
        }
    }
    // The reader takes the first header line that holds a line's identity anywhere.
    for (qsizetype a = 0; a < names.size(); ++a)
        for (qsizetype b = 0; b < headers.size(); ++b)
            if (a != b && headers[b].contains(names[a]))
                fail(QStringLiteral("line %1 also matches the header of %2").arg(names[a], names[b]));
    return mergegroups(groupcompressedtables(files), dateText);
}

Date generationtime()
{
    // Reproducible builds pin the header date.
    bool ok = false;
    const qint64 epoch = qEnvironmentVariable("SOURCE_DATE_EPOCH").toLongLong(&ok);
    return Date{static_cast<double>(ok ? epoch : QDateTime::currentSecsSinceEpoch())};
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QStringList args = QCoreApplication::arguments();
    if (args.size() != 3) {
        std::fprintf(stderr, "usage: quendle-gentable <network folder> <output .vq>\n");
        return 2;
    }
    try {
        Network net;
        const QDir folder(args[1]);
        QStringList files = folder.entryList({QStringLiteral("*.txt")}, QDir::Files, QDir::Name);
        files.removeAll(QStringLiteral("CMakeLists.txt"));   // the folder's build script, not a description
        if (files.isEmpty())
            fail(QStringLiteral("no *.txt in %1").arg(args[1]));
        for (const QString& f : files)
            parsefile(folder.filePath(f), net);
        Summary summary;
        const QString table = buildtable(net, tabledatetext(generationtime()), summary);
        QSaveFile out(args[2]);
        const QByteArray bytes = table.toUtf8();
        if (!out.open(QIODevice::WriteOnly) || out.write(bytes) != bytes.size() || !out.commit())
            fail(QStringLiteral("cannot write %1").arg(args[2]));
        std::printf("quendle-gentable: %d line blocks, %ld services, %lld bytes -> %s\n", summary.blocks,
                    summary.services, static_cast<long long>(bytes.size()), qPrintable(args[2]));
    } catch (const Failure& f) {
        std::fprintf(stderr, "quendle-gentable: %s\n", qPrintable(f.message));
        return 1;
    }
    return 0;
}
