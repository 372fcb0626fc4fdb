// The generated built-in table, checked for what the readers rely on: its header date,
// line identities, stations and every service row.

#include "timetable/tablefile.h"
#include "util/dates.h"

#include <QFile>
#include <QMap>
#include <QRegularExpression>
#include <QSet>

#include <array>
#include <cstdlib>

#include <gtest/gtest.h>

using namespace quendle;

namespace {

struct LineBlock {
    QString header, name, colour;
    QStringList stops, pos;                       // pos: "H|V" of each stop
    std::vector<std::pair<QString, std::vector<QStringList>>> days;   // DAYS, rows without "}"
};

struct Table {
    QString text, date;
    std::vector<LineBlock> lines;
};

Table readbuiltin()
{
    Table t;
    QFile file(QStringLiteral(":/tables/SydneyTrains.vq"));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    t.text = QString::fromUtf8(file.readAll());
    for (const QString& row : t.text.split(QLatin1Char('\n'))) {
        const QStringList attrs = row.split(QLatin1Char('"'));
        if (row.contains(QLatin1String("<timetable"))) {
            t.date = attrs.value(3);
        } else if (row.startsWith(QLatin1String("<line name"))) {
            LineBlock lb{row, attrs.value(1), attrs.value(3), {}, {}, {}};
            for (const QString& stop : attrs.value(5).split(QLatin1Char(','))) {
                lb.stops << stop.section(QLatin1Char('|'), 0, 0);
                lb.pos << stop.section(QLatin1Char('|'), 1);
            }
            t.lines.push_back(lb);
        } else if (row.startsWith(QLatin1String(" <day num="))) {
            t.lines.back().days.push_back({attrs.value(1), {}});
        } else if (row.endsWith(QLatin1Char('}'))) {
            t.lines.back().days.back().second.push_back(row.chopped(1).split(QLatin1Char(',')));
        }
    }
    return t;
}

const Table& table()
{
    static const Table t = readbuiltin();
    return t;
}

QString linename(const LineBlock& b) { return b.name.section(QLatin1Char('#'), 0, 0); }

} // namespace

TEST(BuiltinTable, HeaderLayoutAndLines)
{
    const Table& t = table();
    EXPECT_TRUE(t.text.startsWith(QLatin1String("\n  <timetable name = \"SydneyTrains\"  date=\"")));
    EXPECT_GE(t.date.split(QLatin1Char(' ')).size(), 5) << qPrintable(t.date);
    EXPECT_GT(tabledatetodate(t.date), datefromcivil({2024, 1, 1, 0, 0, 0})) << qPrintable(t.date);
    EXPECT_LT(t.text.size(), 3 * 1024 * 1024);
    const auto count = [&](const char* s) { return t.text.count(QLatin1String(s)); };
    EXPECT_EQ(count("\n</forwards>\n<backwards>\n</backwards>\n</line>"), qsizetype(t.lines.size()));
    EXPECT_EQ(count("}\n\n\n</day>"), count("</day>"));
    EXPECT_TRUE(t.text.endsWith(QLatin1String("</line>\n</timetable>")));

    QSet<QString> names;
    for (const LineBlock& a : t.lines) {
        names << linename(a);
        EXPECT_TRUE(QRegularExpression(QStringLiteral("^#[0-9A-F]{6}$")).match(a.colour).hasMatch());
        for (const LineBlock& b : t.lines)
            EXPECT_TRUE(&a == &b || !b.header.contains(a.name)) << qPrintable(a.name) << " in " << qPrintable(b.name);
        // Each run has a run of its line back over the same stations.
        EXPECT_TRUE(std::any_of(t.lines.begin(), t.lines.end(), [&](const LineBlock& b) {
            return linename(b) == linename(a) && QSet<QString>(b.stops.begin(), b.stops.end())
                       == QSet<QString>(a.stops.begin(), a.stops.end())
                   && b.stops.indexOf(a.stops.last()) < b.stops.indexOf(a.stops.first());
        })) << qPrintable(a.name);
    }
    for (const char* expected : {"T1 ", "T2 ", "T3 Liverpool", "T4 ", "T5 ", "T6 Lidcombe & Bankstown", "T7 ", "T8 ",
                                 "T9 ", "Blue Mountains", "Central Coast & Newcastle", "South Coast",
                                 "Southern Highlands", "Hunter"})
        EXPECT_EQ(std::count_if(names.begin(), names.end(),
                                [&](const QString& n) { return n.startsWith(QLatin1String(expected)); }), 1)
            << expected;
}

TEST(BuiltinTable, StationsHaveOnePositionEverywhere)
{
    QMap<QString, QString> where;
    for (const LineBlock& a : table().lines)
        for (qsizetype s = 0; s < a.stops.size(); ++s) {
            const double h = a.pos[s].section(QLatin1Char('|'), 0, 0).toDouble();
            const double v = a.pos[s].section(QLatin1Char('|'), 1).toDouble();
            EXPECT_TRUE(h > 148 && h < 153 && v > -36 && v < -31) << qPrintable(a.stops[s]);
            EXPECT_EQ(where.value(a.stops[s], a.pos[s]), a.pos[s]) << qPrintable(a.stops[s]) << " on " << qPrintable(a.name);
            where.insert(a.stops[s], a.pos[s]);
        }
    EXPECT_TRUE(where.contains(QStringLiteral("Central")));
}

TEST(BuiltinTable, EveryDayHasServicesAndRowsRunForward)
{
    bool defaultJourney = false;   // Bondi Junction then Edgecliff, served in every block of a line
    for (const LineBlock& a : table().lines) {
        QString digits;
        const qsizetype bj = a.stops.indexOf(QStringLiteral("Bondi Junction"));
        const qsizetype ec = a.stops.indexOf(QStringLiteral("Edgecliff"));
        bool everyBlock = bj >= 0 && ec > bj;
        for (const auto& [days, rows] : a.days) {
            digits += days;
            EXPECT_FALSE(rows.empty()) << qPrintable(a.name) << " days " << qPrintable(days);
            bool serves = false;
            for (const QStringList& row : rows) {
                // n times, each followed by ",": n + 1 pieces, the last one empty.
                ASSERT_EQ(row.size(), a.stops.size() + 1) << qPrintable(a.name);
                EXPECT_TRUE(row.last().isEmpty());
                int previous = -1;
                for (qsizetype s = 0; s < a.stops.size(); ++s) {
                    bool ok = false;
                    const int t = row[s].toInt(&ok);
                    ASSERT_TRUE(ok && (t == -1 || (t >= 0 && t % 100 < 60 && t < 2600))) << qPrintable(row.join(','));
                    if (t == -1)
                        continue;
                    ASSERT_GT(t, previous) << qPrintable(a.name) << ": " << qPrintable(row.join(','));
                    previous = t;
                }
                serves = serves || (bj >= 0 && ec > bj && row[bj] != QLatin1String("-1") && row[ec] != QLatin1String("-1"));
            }
            everyBlock = everyBlock && serves;
        }
        std::sort(digits.begin(), digits.end());
        EXPECT_EQ(digits, QStringLiteral("0123456")) << qPrintable(a.name);
        defaultJourney = defaultJourney || everyBlock;
    }
    EXPECT_TRUE(defaultJourney);
}

namespace {

struct Target {
    QString code, line;
    int trips[3] = {0, 0, 0};   // weekday, Saturday, Sunday
};

QString sourcefile(const QString& relative)
{
    return qEnvironmentVariable("QUENDLE_SOURCE_DIR") + QLatin1Char('/') + relative;
}

std::vector<Target> readtargets()
{
    std::vector<Target> out;
    QFile file(sourcefile(QStringLiteral("network/targets.csv")));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly | QIODevice::Text)) << qPrintable(file.fileName());
    const QStringList rows = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    for (const QString& row : rows) {
        if (row.startsWith(QLatin1Char('#')) || row.startsWith(QLatin1String("code,")))
            continue;
        const QStringList f = row.split(QLatin1Char(','));
        EXPECT_EQ(f.size(), 5) << qPrintable(row);
        if (f.size() == 5)
            out.push_back({f[0], f[1], {f[2].toInt(), f[3].toInt(), f[4].toInt()}});
    }
    return out;
}

// Services of a line (all its directions) on a day, as the reader picks the day block:
// the first block of each direction whose DAYS hold the day's digit.
int servicesonday(const QString& line, QChar digit)
{
    int n = 0;
    for (const LineBlock& b : table().lines) {
        if (linename(b) != line)
            continue;
        for (const auto& [days, rows] : b.days)
            if (days.contains(digit)) {
                n += static_cast<int>(rows.size());
                break;
            }
    }
    return n;
}

} // namespace

TEST(BuiltinTable, EveryLineRunsWithinTenPercentOfItsTripsPerDay)
{
    // Tuesday stands for the weekday block; a Friday reads the Saturday block, so the
    // data set's Friday figures have nothing to hold here.
    const QChar digits[3] = {QLatin1Char('2'), QLatin1Char('6'), QLatin1Char('0')};
    const char* const dayNames[3] = {"weekday", "Saturday", "Sunday"};
    const std::vector<Target> targets = readtargets();
    EXPECT_EQ(targets.size(), 12u);
    for (const Target& t : targets)
        for (int d = 0; d < 3; ++d) {
            const int built = servicesonday(t.line, digits[d]);
            EXPECT_GT(t.trips[d], 0) << qPrintable(t.line);
            EXPECT_LE(std::abs(built - t.trips[d]) * 10, t.trips[d])
                << qPrintable(t.line) << " on a " << dayNames[d] << ": " << built << " services against "
                << t.trips[d] << " trips in 2019";
        }
    // The lines without a 2019 figure still run every day.
    for (const char* line : {"T3 Liverpool & Inner West Line", "T6 Lidcombe & Bankstown Line"})
        for (const QChar digit : digits)
            EXPECT_GT(servicesonday(QLatin1String(line), digit), 40) << line;
}

TEST(BuiltinTable, TargetsAreTheDataSetsFigures)
{
    // The committed figures, recounted from the data set where it is at hand.
    const QString source = qEnvironmentVariable("QUENDLE_SOURCE_DIR");
    QString csv;
    for (const QString& dir : {source + QStringLiteral("/../shared/data"), QStringLiteral("/work/shared/data")})
        if (QFile::exists(dir + QStringLiteral("/sydney-trains-2019/route_trips_per_day.csv")))
            csv = dir + QStringLiteral("/sydney-trains-2019/route_trips_per_day.csv");
    if (csv.isEmpty())
        GTEST_SKIP() << "the 2019 data set (shared/data/sydney-trains-2019) is not here; nothing to recount";
    QFile file(csv);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly | QIODevice::Text));
    QStringList rows = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    const QStringList header = rows.takeFirst().split(QLatin1Char(','));
    const auto column = [&](const QString& start) {
        for (qsizetype i = 0; i < header.size(); ++i)
            if (header[i].startsWith(start))
                return i;
        ADD_FAILURE() << "no column " << qPrintable(start);
        return qsizetype(0);
    };
    const qsizetype lineCol = column(QStringLiteral("line")), tue = column(QStringLiteral("weekday (Tue")),
                    sat = column(QStringLiteral("Saturday")), sun = column(QStringLiteral("Sunday"));
    QMap<QString, std::array<int, 3>> sums;
    for (const QString& row : rows) {
        // The long names hold no comma; the headsigns come last.
        const QStringList f = row.split(QLatin1Char(','));
        if (f.size() <= sun)
            continue;
        auto& s = sums[f[lineCol]];
        s[0] += f[tue].toInt();
        s[1] += f[sat].toInt();
        s[2] += f[sun].toInt();
    }
    for (const Target& t : readtargets()) {
        ASSERT_TRUE(sums.contains(t.code)) << qPrintable(t.code);
        for (int d = 0; d < 3; ++d)
            EXPECT_EQ(sums[t.code][d], t.trips[d]) << qPrintable(t.code) << " day " << d;
    }
}
