// quendle-gentable <network folder> <output .vq>
//
// Builds the built-in Sydney Trains table from the network description (the *.txt
// files of the network folder, format in network/README.md): expands each route's
// service pattern into departures, times every stop from the distances and the
// line's running figures, and writes the table through the publisher's writer so
// the result has exactly the publisher's layout. Anything the table readers could
// trip over (a bad name, a clash of line identities, a time past 25:59) stops the
// build instead of producing a table that misreads.

#include "publisher/tablewriter.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QSaveFile>

#include <algorithm>
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
    std::vector<std::pair<int, int>> pieces;   // (from minute, interval) in order
    int last = -1;                             // minute of the last departure
    bool set() const { return !pieces.empty(); }
};

struct Stop {
    double km = 0;
    QString name;
};

struct Running {
    double minutesPerStop = -1;   // dwell plus the time lost braking and starting
    double speed = -1;            // km/h between stops
};

struct Route {
    QString direction;
    std::vector<Stop> stops;
    std::optional<Running> running;
    Pattern weekday, saturday, sunday;
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

// "0430 +30, 0600 +10, ..., last 2411"
Pattern parsepattern(const QString& text)
{
    Pattern p;
    const QStringList pieces = text.split(QLatin1Char(','), Qt::SkipEmptyParts);
    for (const QString& raw : pieces) {
        const QStringList words = raw.simplified().split(QLatin1Char(' '));
        if (words.size() == 2 && words[0] == QLatin1String("last")) {
            p.last = clockminutes(words[1]);
            continue;
        }
        if (words.size() != 2 || !words[1].startsWith(QLatin1Char('+')) || p.last >= 0)
            fail(QStringLiteral("pattern piece \"%1\"").arg(raw.trimmed()));
        const int from = clockminutes(words[0]);
        const int every = static_cast<int>(number(words[1].mid(1), QStringLiteral("interval")));
        if (every < 1 || (!p.pieces.empty() && from <= p.pieces.back().first))
            fail(QStringLiteral("pattern piece \"%1\" out of order").arg(raw.trimmed()));
        p.pieces.emplace_back(from, every);
    }
    if (p.pieces.empty() || p.last < p.pieces.front().first)
        fail(QStringLiteral("pattern \"%1\" needs a first piece and a later \"last\"").arg(text));
    return p;
}

std::vector<int> departures(const Pattern& p)
{
    std::vector<int> out;
    size_t piece = 0;
    for (int t = p.pieces.front().first; t <= p.last;) {
        out.push_back(t);
        while (piece + 1 < p.pieces.size() && p.pieces[piece + 1].first <= t)
            ++piece;
        t += p.pieces[piece].second;
    }
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
                line->routes.push_back(Route{rest, {}, {}, {}, {}, {}});
                route = &line->routes.back();
            } else if (!route) {
                fail(QStringLiteral("\"%1\" before any route").arg(word));
            } else if (isKm) {
                if (!route->stops.empty() && km <= route->stops.back().km)
                    fail(QStringLiteral("distances must increase along a route"));
                route->stops.push_back(Stop{km, rest});
            } else if (word == QLatin1String("weekday")) {
                route->weekday = parsepattern(rest);
            } else if (word == QLatin1String("saturday")) {
                route->saturday = parsepattern(rest);
            } else if (word == QLatin1String("sunday")) {
                route->sunday = parsepattern(rest);
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

ServiceRows servicerows(const Pattern& pattern, const std::vector<int>& offsets)
{
    ServiceRows rows;
    for (int dep : departures(pattern)) {
        std::vector<int> row;
        for (int off : offsets) {
            const int t = tabletime(dep + off);
            // Services after midnight stay on their starting day with hours 24 and 25;
            // later than that the readers' day would no longer hold them.
            if (t > 2559)
                fail(QStringLiteral("time %1 past 25:59").arg(t));
            row.push_back(t);
        }
        rows.push_back(std::move(row));
    }
    return rows;
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
        for (size_t d = 0; d < line.routes.size(); ++d) {
            const Route& route = line.routes[d];
            const QString where = line.name + QLatin1Char('#') + route.direction;
            const QString key = line.code + QString::number(d);
            if (!keys.insert(key).second)
                fail(QStringLiteral("%1: line code and direction %2 used twice").arg(where, key));
            if (route.stops.size() < 2 || !route.weekday.set() || !route.saturday.set() || !route.sunday.set())
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
            const QString stopsText = stops.join(QLatin1Char(','));
            const std::vector<int> offsets = runningminutes(route, running);
            for (int day : dayNumbers) {
                const Pattern& p = day == 6 ? route.saturday : day == 0 ? route.sunday : route.weekday;
                const ServiceRows rows = servicerows(p, offsets);
                summary.services += static_cast<long>(rows.size());
                files.push_back({intermediatename(line.code, static_cast<int>(d), QLatin1String(dayNames[day]), day),
                                 convertraytostr(rows, stopsText, line.name, route.direction, line.colour)});
            }
            names << where;
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
