// One of the operator's timetable pages, reduced as the publisher tools reduce it: the times
// slider, the headings and stations, arrival rows dropped, rows turned into services and
// written as the intermediate text of a line and day.

#include "fuzzsupport.h"

#include "publisher/tablewriter.h"
#include "publisher/timetablepage.h"
#include "timetable/tablefile.h"

using namespace quendle;

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    fuzz::init();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    TimetablePage p = readtimetablepage(fuzz::text(data, size));
    for (const auto& row : p.rows)
        for (int t : row)
            fuzz::require(t == -1 || (t >= 0 && t <= 9959), "a time is hhmm or -1");
    ithisrayevenlength(p.rows);
    const std::vector<int> arrivals = getstnsidontwant(p.stations);
    const size_t rowsbefore = p.rows.size();
    removetimesidontwant(p.rows, arrivals);
    const QStringList stations = rewritestnstonamesiwant(removestnsidontwant(p.stations, arrivals));
    fuzz::require(stations.size() <= p.stations.size() && p.rows.size() <= rowsbefore, "removing only removes");
    const ServiceRows services = rotatemultidarray(p.rows);
    fuzz::require(p.rows.empty() || services.size() == p.rows.front().size(), "one service per column");
    const QString text = convertraytostr(services, stations.join(','), p.linename, p.direction, "#000000");
    splittablelines(text);
    convdowstrtoint(p.dayname);
    return 0;
}
