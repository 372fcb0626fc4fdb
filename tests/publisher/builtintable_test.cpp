// The generated built-in table, checked for what the readers rely on: its header date,
// line identities, stations and every service row.

#include "timetable/tablefile.h"
#include "util/dates.h"

#include <QFile>
#include <QMap>
#include <QRegularExpression>
#include <QSet>

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
