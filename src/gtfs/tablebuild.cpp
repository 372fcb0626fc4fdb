#include "gtfs/tablebuild.h"

#include "publisher/tablewriter.h"

#include <QHash>
#include <QSet>

#include <algorithm>
#include <map>
#include <queue>
#include <set>

namespace quendle::gtfs {

namespace {

QString cleanlinetext(const QString& s)
{
    QString out = s;
    for (QChar& c : out) {
        if (c == QLatin1Char('"'))
            c = QLatin1Char('\'');
        else if (c == QLatin1Char('#') || c.category() == QChar::Other_Control || c == QChar::LineSeparator
                 || c == QChar::ParagraphSeparator)
            c = QLatin1Char(' ');
    }
    return out.simplified();
}

QString linename(const Route& r)
{
    const QString s = cleanlinetext(r.shortName), l = cleanlinetext(r.longName);
    if (s.isEmpty())
        return l.isEmpty() ? cleanlinetext(r.id) : l;
    if (l.isEmpty() || l == s || l.startsWith(s + QLatin1Char(' ')))
        return l.isEmpty() ? s : l;
    return s + QLatin1Char(' ') + l;
}

// The most frequent non-empty text; ties go to the one that sorts first.
QString mostcommon(const QStringList& texts)
{
    std::map<QString, int> counts;
    for (const QString& t : texts)
        if (!t.isEmpty())
            ++counts[t];
    QString best;
    int n = 0;
    for (const auto& [t, c] : counts)
        if (c > n) {
            best = t;
            n = c;
        }
    return best;
}

// One line block in the making: the station order merged from its patterns.
struct Block {
    bool loop = false;                  // a pattern that visits a station twice, kept as it is
    std::vector<int> nodes;             // stations in the order first seen
    std::set<std::pair<int, int>> edges;
    std::vector<int> order;             // the merged running order
    std::vector<int> patterns;
};

// Kahn's order over the block's stations, ties broken by first sight; false on a cycle.
bool mergeorder(const std::vector<int>& nodes, const std::set<std::pair<int, int>>& edges, std::vector<int>* order)
{
    QHash<int, int> rank;
    for (size_t i = 0; i < nodes.size(); ++i)
        rank.insert(nodes[i], static_cast<int>(i));
    std::vector<int> indeg(nodes.size(), 0);
    std::vector<std::vector<int>> out(nodes.size());
    for (const auto& [a, b] : edges) {
        out[rank.value(a)].push_back(rank.value(b));
        ++indeg[rank.value(b)];
    }
    std::priority_queue<int, std::vector<int>, std::greater<>> ready;
    for (size_t i = 0; i < nodes.size(); ++i)
        if (indeg[i] == 0)
            ready.push(static_cast<int>(i));
    order->clear();
    while (!ready.empty()) {
        const int i = ready.top();
        ready.pop();
        order->push_back(nodes[i]);
        for (int j : out[i])
            if (--indeg[j] == 0)
                ready.push(j);
    }
    return order->size() == nodes.size();
}

bool tryadd(Block& b, const std::vector<int>& pattern)
{
    // Most patterns are part of the order already (a train that skips stations):
    // their stations appear in it in running order, and nothing changes.
    if (!b.order.empty()) {
        size_t at = 0;
        bool inOrder = true;
        for (int st : pattern) {
            while (at < b.order.size() && b.order[at] != st)
                ++at;
            if (at == b.order.size()) {
                inOrder = false;
                break;
            }
        }
        if (inOrder) {
            for (size_t i = 1; i < pattern.size(); ++i)
                b.edges.emplace(pattern[i - 1], pattern[i]);
            return true;
        }
    }
    std::vector<int> nodes = b.nodes;
    std::set<std::pair<int, int>> edges = b.edges;
    for (size_t i = 0; i < pattern.size(); ++i) {
        if (std::find(nodes.begin(), nodes.end(), pattern[i]) == nodes.end())
            nodes.push_back(pattern[i]);
        if (i > 0)
            edges.emplace(pattern[i - 1], pattern[i]);
    }
    std::vector<int> order;
    if (!mergeorder(nodes, edges, &order))
        return false;
    b.nodes = std::move(nodes);
    b.edges = std::move(edges);
    b.order = std::move(order);
    return true;
}

struct Instance {
    int trip;
    int shift;      // seconds added to the trip's times
};

// The reader takes a fall of a departure or arrival by more than 200 (HHMM, both
// before 2400) against the previous service of the same day block as a service
// after midnight. Rows are placed so that it never happens: a row goes to the first
// sub-block in which no time of it falls that far below an earlier row's time at the
// same station.
struct SubBlock {
    std::vector<int> runmax;   // per position, the largest time below 2400 so far; -1 none
    bool fits(const std::vector<int>& row) const
    {
        for (size_t p = 0; p < row.size(); ++p)
            if (row[p] >= 0 && row[p] < 2400 && runmax[p] >= 0 && row[p] - runmax[p] < -200)
                return false;
        return true;
    }
    void take(const std::vector<int>& row)
    {
        for (size_t p = 0; p < row.size(); ++p)
            if (row[p] >= 0 && row[p] < 2400)
                runmax[p] = std::max(runmax[p], row[p]);
    }
};

} // namespace

int tablehhmm(int seconds)
{
    const int minutes = seconds / 60;
    return (minutes / 60) * 100 + minutes % 60;
}

QString tablestationname(const QString& name)
{
    QString out = name;
    for (QChar& c : out) {
        switch (c.unicode()) {
        case '"': c = QLatin1Char('\''); break;
        case '|': c = QLatin1Char('/'); break;
        case ',': case '#': case '{': case '}': case '<': case '>': c = QLatin1Char(' '); break;
        default:
            if (c.category() == QChar::Other_Control || c == QChar::LineSeparator || c == QChar::ParagraphSeparator)
                c = QLatin1Char(' ');
        }
    }
    return out.simplified();
}

BuiltTable buildtable(const Feed& feed, const QString& tableName, const QString& dateText)
{
    BuiltTable result;

    // --- stations: unique names; the busiest keeps the plain name ---
    QHash<int, int> uses;
    for (const Trip& t : feed.trips)
        for (int s : t.stations)
            ++uses[s];
    std::map<QString, std::vector<int>> byName;
    for (auto it = uses.cbegin(); it != uses.cend(); ++it) {
        const Stop& s = feed.stops[it.key()];
        QString n = tablestationname(s.name);
        if (n.isEmpty())
            n = tablestationname(s.id);
        if (n.isEmpty())
            n = QStringLiteral("Station");
        byName[n].push_back(it.key());
    }
    QHash<int, QString> stationName;
    QSet<QString> taken;
    for (auto& [name, members] : byName) {
        std::sort(members.begin(), members.end(), [&](int a, int b) {
            if (uses.value(a) != uses.value(b))
                return uses.value(a) > uses.value(b);
            return feed.stops[a].id < feed.stops[b].id;
        });
        stationName.insert(members[0], name);
        taken.insert(name);
    }
    for (auto& [name, members] : byName)
        for (size_t i = 1; i < members.size(); ++i) {
            const QString base = name + QStringLiteral(" (") + tablestationname(feed.stops[members[i]].id) + QLatin1Char(')');
            QString n = base;
            for (int k = 2; taken.contains(n); ++k)
                n = base + QLatin1Char(' ') + QString::number(k);
            stationName.insert(members[i], n);
            taken.insert(n);
        }
    result.stations = static_cast<int>(stationName.size());

    // --- trips by route and direction ---
    struct GroupKey {
        int route, direction;
        QString headsign;
        bool operator<(const GroupKey& o) const
        {
            return std::tie(route, direction, headsign) < std::tie(o.route, o.direction, o.headsign);
        }
    };
    std::map<GroupKey, std::vector<int>> groups;
    for (size_t i = 0; i < feed.trips.size(); ++i) {
        const Trip& t = feed.trips[i];
        groups[{t.route, t.direction, t.direction >= 0 ? QString() : t.headsign}].push_back(static_cast<int>(i));
    }

    struct LineOut {
        QString lineName, direction, colour, stops;
        std::vector<std::pair<QString, ServiceRows>> days;   // DAYS, rows
    };
    std::vector<LineOut> lines;

    for (const auto& [key, tripIds] : groups) {
        // Distinct station patterns, longest (then busiest) first.
        std::map<std::vector<int>, std::vector<int>> byPattern;
        for (int t : tripIds)
            byPattern[feed.trips[t].stations].push_back(t);
        std::vector<const std::pair<const std::vector<int>, std::vector<int>>*> patterns;
        for (const auto& p : byPattern)
            patterns.push_back(&p);
        std::stable_sort(patterns.begin(), patterns.end(), [](auto* a, auto* b) {
            if (a->first.size() != b->first.size())
                return a->first.size() > b->first.size();
            return a->second.size() > b->second.size();
        });
        std::vector<Block> blocks;
        for (size_t pi = 0; pi < patterns.size(); ++pi) {
            const std::vector<int>& pat = patterns[pi]->first;
            const bool loop = std::set<int>(pat.begin(), pat.end()).size() != pat.size();
            bool placed = false;
            for (Block& b : blocks)
                if (!loop && !b.loop && tryadd(b, pat)) {
                    b.patterns.push_back(static_cast<int>(pi));
                    placed = true;
                    break;
                }
            if (!placed) {
                Block b;
                b.loop = loop;
                if (loop)
                    b.order = pat;
                else
                    tryadd(b, pat);
                b.patterns.push_back(static_cast<int>(pi));
                blocks.push_back(std::move(b));
            }
        }

        for (const Block& b : blocks) {
            const int n = static_cast<int>(b.order.size());
            QHash<int, int> posOf;
            for (int p = 0; p < n; ++p)
                posOf.insert(b.order[p], p);
            // Positions of each trip's stations, and its runs (instances).
            std::vector<int> blockTrips;
            std::vector<std::vector<int>> tripPos;
            for (int pi : b.patterns)
                for (int t : patterns[pi]->second) {
                    std::vector<int> pos;
                    const Trip& trip = feed.trips[t];
                    for (size_t k = 0; k < trip.stations.size(); ++k)
                        pos.push_back(b.loop ? static_cast<int>(k) : posOf.value(trip.stations[k]));
                    blockTrips.push_back(t);
                    tripPos.push_back(std::move(pos));
                }
            // How long after the block's start a train reaches each position (the
            // quickest seen), so runs starting part-way sort by when they would have
            // started: a short run then stands among the runs it travels with.
            std::map<std::pair<int, int>, int> hop;
            for (size_t i = 0; i < blockTrips.size(); ++i) {
                const Trip& trip = feed.trips[blockTrips[i]];
                for (size_t k = 1; k < tripPos[i].size(); ++k) {
                    const std::pair<int, int> e(tripPos[i][k - 1], tripPos[i][k]);
                    const int d = trip.times[k] - trip.times[k - 1];
                    auto it = hop.find(e);
                    if (it == hop.end() || d < it->second)
                        hop[e] = d;
                }
            }
            std::vector<std::vector<std::pair<int, int>>> into(n);   // (from, seconds) per position
            for (const auto& [e, d] : hop)
                into[e.second].emplace_back(e.first, d);
            std::vector<int> offset(n, 0);
            for (int p = 0; p < n; ++p) {
                int best = -1;
                for (const auto& [from, d] : into[p])
                    if (from < p && (best < 0 || offset[from] + d < best))
                        best = offset[from] + d;
                offset[p] = best < 0 ? 0 : best;
            }

            struct Run {
                int tripSlot;      // index into blockTrips
                int shift;
                int key, first;
            };
            std::vector<Run> runs;
            for (size_t i = 0; i < blockTrips.size(); ++i) {
                const Trip& trip = feed.trips[blockTrips[i]];
                const int origin = offset[tripPos[i][0]];
                if (!trip.frequencyBased) {
                    runs.push_back({static_cast<int>(i), 0, trip.times[0] - origin, trip.times[0]});
                } else {
                    for (int s : trip.starts)
                        runs.push_back({static_cast<int>(i), s - trip.times[0], s - origin, s});
                }
            }
            std::sort(runs.begin(), runs.end(), [&](const Run& a, const Run& c) {
                return std::tie(a.key, a.first, blockTrips[a.tripSlot], a.shift)
                    < std::tie(c.key, c.first, blockTrips[c.tripSlot], c.shift);
            });
            auto rowof = [&](const Run& r) {
                std::vector<int> row(n, -1);
                const Trip& trip = feed.trips[blockTrips[r.tripSlot]];
                const std::vector<int>& pos = tripPos[r.tripSlot];
                for (size_t k = 0; k < pos.size(); ++k)
                    row[pos[k]] = tablehhmm(trip.times[k] + r.shift);
                return row;
            };

            // Per day digit, the runs of each sub-block (as indexes into runs).
            std::vector<std::array<std::vector<int>, 7>> sub;
            for (int digit = 0; digit < 7; ++digit) {
                std::vector<SubBlock> state;
                for (size_t ri = 0; ri < runs.size(); ++ri) {
                    if (!(feed.trips[blockTrips[runs[ri].tripSlot]].days & (1 << digit)))
                        continue;
                    const std::vector<int> row = rowof(runs[ri]);
                    size_t s = 0;
                    while (s < state.size() && !state[s].fits(row))
                        ++s;
                    if (s == state.size())
                        state.push_back(SubBlock{std::vector<int>(n, -1)});
                    state[s].take(row);
                    if (sub.size() <= s)
                        sub.resize(s + 1);
                    sub[s][digit].push_back(static_cast<int>(ri));
                    ++result.services[digit];
                }
            }

            QStringList stops;
            for (int st : b.order) {
                const Stop& s = feed.stops[st];
                stops << stationName.value(st) + QLatin1Char('|') + (s.lon.isEmpty() ? QStringLiteral("?") : s.lon)
                        + QLatin1Char('|') + (s.lat.isEmpty() ? QStringLiteral("??") : s.lat);
            }
            QStringList headsigns, ends;
            for (int t : blockTrips) {
                headsigns << cleanlinetext(feed.trips[t].headsign);
                ends << stationName.value(feed.trips[t].stations.back());
            }
            QString towards = mostcommon(headsigns);
            if (towards.isEmpty())
                towards = cleanlinetext(mostcommon(ends));
            const Route& route = feed.routes[key.route];
            for (const auto& perDay : sub) {
                LineOut line;
                line.lineName = linename(route);
                line.direction = QStringLiteral("to ") + towards;
                line.colour = route.colour;
                line.stops = stops.join(QLatin1Char(','));
                // Days with the same runs share a day block.
                std::array<bool, 7> done{};
                for (int digit = 0; digit < 7; ++digit) {
                    if (done[digit] || perDay[digit].empty())
                        continue;
                    QString days;
                    for (int other = digit; other < 7; ++other)
                        if (!done[other] && perDay[other] == perDay[digit]) {
                            done[other] = true;
                            days += QString::number(other);
                        }
                    ServiceRows rows;
                    rows.reserve(perDay[digit].size());
                    for (int ri : perDay[digit])
                        rows.push_back(rowof(runs[ri]));
                    line.days.emplace_back(days, std::move(rows));
                }
                lines.push_back(std::move(line));
            }
        }
    }

    // --- line identities: unique, and none inside another (the reader tests substrings) ---
    // Blocks sharing a name are all numbered: "to X (1)" and "to X (2)" hold neither
    // the other, where a plain "to X" would sit inside "to X (2)".
    auto full = [&](size_t i) { return lines[i].lineName + QLatin1Char('#') + lines[i].direction; };
    std::map<QString, std::vector<size_t>> same;
    for (size_t i = 0; i < lines.size(); ++i)
        same[full(i)].push_back(i);
    for (const auto& [name, members] : same)
        if (members.size() > 1)
            for (size_t k = 0; k < members.size(); ++k)
                lines[members[k]].direction += QStringLiteral(" (%1)").arg(k + 1);
    std::vector<QString> names;
    for (size_t i = 0; i < lines.size(); ++i)
        names.push_back(full(i));
    // A name inside another takes a number; the number is chosen so that the new name
    // sits inside no other and holds no name it did not hold before.
    for (size_t i = 0; i < lines.size(); ++i) {
        bool inside = false;
        for (size_t j = 0; j < names.size() && !inside; ++j)
            inside = j != i && names[j].contains(names[i]);
        if (!inside)
            continue;
        const QString base = lines[i].direction, old = names[i];
        for (int k = 2;; ++k) {
            lines[i].direction = base + QStringLiteral(" (%1)").arg(k);
            const QString candidate = full(i);
            bool ok = true;
            for (size_t m = 0; m < names.size() && ok; ++m)
                ok = m == i || (!names[m].contains(candidate) && (!candidate.contains(names[m]) || old.contains(names[m])));
            if (ok)
                break;
        }
        names[i] = full(i);
    }

    std::vector<MergeGroup> merged;
    for (size_t i = 0; i < lines.size(); ++i) {
        const LineOut& l = lines[i];
        for (const auto& [days, rows] : l.days) {
            MergeGroup g;
            g.key = QString::number(i);
            g.days = days;
            g.lines = convertraytostr(rows, l.stops, l.lineName, l.direction, l.colour).split(QLatin1Char('\n'));
            merged.push_back(std::move(g));
        }
    }
    result.lines = static_cast<int>(lines.size());
    result.text = mergegroups(merged, dateText, tableName);
    return result;
}

} // namespace quendle::gtfs
