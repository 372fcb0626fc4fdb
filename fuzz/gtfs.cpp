// A GTFS feed as the importer reads it, every file from one input: a line
// "==> NAME <==" starts the file NAME (as `head` prints several files). The feed is
// loaded for one week and built into a table; a broken feed must end in a FeedError,
// and a table that comes out must keep what the reader relies on: line identities
// apart, station names free of the format's separators, rows as long as the stops,
// and no fall in a day block that the reader would take for a service after midnight.

#include "fuzzsupport.h"

#include "gtfs/feed.h"
#include "gtfs/tablebuild.h"
#include "timetable/tablefile.h"

using namespace quendle;

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    fuzz::init();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    gtfs::MemoryFeed feed;
    std::string* current = nullptr;
    const std::string input(reinterpret_cast<const char*>(data), size);
    size_t at = 0;
    while (at < input.size()) {
        size_t end = input.find('\n', at);
        if (end == std::string::npos)
            end = input.size();
        const std::string_view line(input.data() + at, end - at);
        if (line.size() > 8 && line.substr(0, 4) == "==> " && line.substr(line.size() - 4) == " <==")
            current = &feed.files[QString::fromUtf8(line.substr(4, line.size() - 8).data(),
                                                    static_cast<qsizetype>(line.size() - 8))];
        else if (current)
            current->append(input, at, end + 1 - at <= input.size() - at ? end + 1 - at : input.size() - at);
        at = end + 1;
    }

    gtfs::BuiltTable table;
    try {
        const gtfs::Feed f = gtfs::loadfeed(feed, gtfs::FeedFilter{}, QDate(2024, 3, 6), QDate(2024, 3, 5));
        table = gtfs::buildtable(f, QStringLiteral("Fuzz"), QStringLiteral("5 March 2024 9:00:00 AM"));
    } catch (const gtfs::FeedError& e) {
        fuzz::require(!e.text().isEmpty(), "a feed error says what is wrong");
        return 0;
    }

    const QStringList lines = splittablelines(table.text);
    QStringList headers, names;
    std::vector<int> stopCounts;
    for (const QString& l : lines) {
        if (!l.contains(QLatin1String("line name")))
            continue;
        const QStringList pieces = l.split(QLatin1Char('"'));
        fuzz::require(pieces.size() == 7, "a line header splits into its seven pieces");
        headers << l;
        names << pieces[1];
        const QStringList stops = pieces[5].split(QLatin1Char(','));
        for (const QString& stop : stops)
            fuzz::require(stop.split(QLatin1Char('|')).size() == 3, "a stop is NAME|H|V");
        stopCounts.push_back(static_cast<int>(stops.size()));
    }
    fuzz::require(static_cast<int>(names.size()) == table.lines, "every line block has its header");
    for (int i = 0; i < names.size(); ++i) {
        for (int j = 0; j < headers.size(); ++j)
            fuzz::require(i == j || !headers[j].contains(names[i]), "no line identity inside another header");
        for (int digit = 0; digit <= 6; ++digit) {
            std::vector<int> highest(stopCounts[i], -1);
            for (const Row& row : linetimesfromlines(lines, names[i], digit)) {
                if (row.size() == 1)
                    continue;   // the writer's empty lines in a day block
                fuzz::require(static_cast<int>(row.size()) == stopCounts[i] + 1, "a row has one time per stop");
                for (int p = 0; p < stopCounts[i]; ++p) {
                    if (row[p] < 0 || row[p] >= 2400)
                        continue;
                    fuzz::require(highest[p] < 0 || row[p] - highest[p] >= -200, "no false midnight in a day block");
                    highest[p] = std::max(highest[p], row[p]);
                }
            }
        }
    }
    return 0;
}
