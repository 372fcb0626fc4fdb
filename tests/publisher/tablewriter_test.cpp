// The table writer: intermediate texts, grouping of identical days and the exact
// merged layout that the substring-based readers depend on.

#include "publisher/tablewriter.h"
#include "timetable/tablefile.h"   // tabledatetodate
#include "util/dates.h"

#include <gtest/gtest.h>

using namespace quendle;

namespace {

const QString kHillStops = QStringLiteral(
    "North Hill|151.2101|-33.8702,Mid Cross|151.2187|-33.8791,South Vale|151.2299|-33.8866");
const QString kValeStops = QStringLiteral("South Vale|151.2299|-33.8866,North Hill|151.2101|-33.8702");

// Seven files per line direction in the listing order the generator uses: Monday .. Saturday, Sunday.
void addweek(std::vector<IntermediateTable>& files, const QString& code, int dir, const ServiceRows& weekday,
             const ServiceRows& saturday, const ServiceRows& sunday, const QString& stops, const QString& line,
             const QString& direction, const QString& colour)
{
    for (int day : {1, 2, 3, 4, 5, 6, 0}) {
        const ServiceRows& rows = day == 6 ? saturday : day == 0 ? sunday : weekday;
        files.push_back({intermediatename(code, dir, QStringLiteral("9 March 2014"), day),
                         convertraytostr(rows, stops, line, direction, colour)});
    }
}

} // namespace

TEST(TableWriter, GroupsIdenticalDaysAndMergesTwoLinesExactly)
{
    std::vector<IntermediateTable> files;
    // Hill Line: Saturday and Sunday alike; Vale Line: three different day types.
    addweek(files, QStringLiteral("hl"), 0, {{512, 519, 527}, {2350, -1, 2404}}, {{900, 907, 915}}, {{900, 907, 915}},
            kHillStops, QStringLiteral("Hill Line"), QStringLiteral("from North Hill to South Vale"),
            QStringLiteral("#1f8a4c"));
    addweek(files, QStringLiteral("hl"), 1, {{600, 610}}, {{700, 710}}, {{800, 810}}, kValeStops,
            QStringLiteral("Vale Line"), QStringLiteral("Vale to Hill"), QStringLiteral("#0098CD"));

    EXPECT_EQ(files[0].name, QStringLiteral("hl0#9 March 2014.txt  day1].txt"));
    EXPECT_EQ(comparediffbetweentexts(files[5].text, files[7].text), 2);     // header and row differ
    EXPECT_EQ(comparediffbetweentexts(files[0].text, files[5].text), 100);   // line counts differ
    const auto groups = groupcompressedtables(files);
    ASSERT_EQ(groups.size(), 5u);
    QStringList summary;
    for (const auto& g : groups)
        summary << g.key + QLatin1Char(':') + g.days;
    EXPECT_EQ(summary.join(QLatin1Char(' ')), QStringLiteral("hl0:12345 hl0:60 hl1:12345 hl1:6 hl1:0"));

    const QString hill = QStringLiteral("<line name =\"Hill Line#from North Hill to South Vale\" color=\"#1f8a4c\" "
                                        "stops = \"") + kHillStops + QStringLiteral("\"  >");
    const QString vale = QStringLiteral("<line name =\"Vale Line#Vale to Hill\" color=\"#0098CD\" stops = \"")
                         + kValeStops + QStringLiteral("\"  >");
    auto day = [](const char* days) { return QStringLiteral(" <day num=\"%1\" pubhol=\"true\"  > ").arg(QLatin1String(days)); };
    const QStringList close = {QStringLiteral("</forwards>"), QStringLiteral("<backwards>"),
                               QStringLiteral("</backwards>"), QStringLiteral("</line>")};
    QStringList expected;
    expected << QString() << QStringLiteral("  <timetable name = \"SydneyTrains\"  date=\"3 March 2014 10:15:00 AM\" > ")
             << hill << QString() << QStringLiteral("<forwards>") << QString() << day("12345")
             << QStringLiteral("512,519,527,}") << QStringLiteral("2350,-1,2404,}") << QString() << QString()
             << QStringLiteral("</day>") << day("60") << QString() << QStringLiteral("900,907,915,}") << QString()
             << QString() << QStringLiteral("</day>") << close
             << vale << QString() << QStringLiteral("<forwards>") << QString() << day("12345")
             << QStringLiteral("600,610,}") << QString() << QString() << QStringLiteral("</day>")
             << day("6") << QString() << QStringLiteral("700,710,}") << QString() << QString() << QStringLiteral("</day>")
             << day("0") << QString() << QStringLiteral("800,810,}") << QString() << QString() << QStringLiteral("</day>")
             << close << QStringLiteral("</timetable>");
    const QString table = mergegroups(groups, QStringLiteral("3 March 2014 10:15:00 AM"));
    EXPECT_EQ(table.split(QLatin1Char('\n')), expected);
    EXPECT_FALSE(table.endsWith(QLatin1Char('\n')));
}

TEST(TableWriter, DateTextReadsBackAsTheDay)
{
    // The expectations are Sydney wall-clock times, wherever the binary runs.
    qputenv("TZ", "Australia/Sydney");
    resetdatezone();
    EXPECT_EQ(tabledatetext(Date{1795389300}), QStringLiteral("23 November 2026 10:15:00 AM"));
    EXPECT_EQ(tabledatetext(Date{1394283909}), QStringLiteral("9 March 2014 12:05:09 AM"));
    const QString pm = tabledatetext(Date{1719806398});
    EXPECT_EQ(pm, QStringLiteral("1 July 2024 1:59:58 PM"));
    EXPECT_GE(pm.split(QLatin1Char(' ')).size(), 5);
    EXPECT_EQ(tabledatetodate(pm), datefromcivil({2024, 7, 1, 0, 0, 0}));
}
