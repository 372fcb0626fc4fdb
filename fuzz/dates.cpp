// The date texts: ISO instants (--now, QUENDLE_NOW), pipe dates (preferences), table DATE
// texts, day/month/year texts and 12-hour clock texts; every reading is then formatted
// again, since a date read from outside text flows into every formatter.

#include "fuzzsupport.h"

#include "timetable/tablefile.h"
#include "util/dates.h"

#include <cmath>

using namespace quendle;

namespace {

void formatall(Date d, Date now)
{
    lumdatetostr(d);
    lumdatetostrdisplaiable(d);
    lumdatedisplay(d);
    relativedate(d, now);
    relativedatejustday(d, now);
    datetoshrtstr(d);
    calctimediffint(now, d);
    calcdaysdiffint(d, now);
    datetodayofweek(d);
    zerosecondsdate(d);
    twenfourhranddatetodate(2530, d);
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    fuzz::init();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QString t = fuzz::text(data, size);
    const Date now = datefromcivil({2014, 3, 9, 17, 4, 50});

    Date iso;
    if (parseiso(t, &iso)) {
        fuzz::require(std::isfinite(iso.secs), "an accepted ISO instant is finite");
        formatall(iso, now);
    }
    formatall(lumstrtodate(t), now);
    formatall(lumstrtodatebadvalprotect(t, now), now);
    canthisbeconvertedtodate(t);
    formatall(strtodatemanual(t), now);
    formatall(tabledatetodate(t), now);
    monthnametonum(t);
    hrfromdatestr(t);
    minfromdatestr(t);
    // A stored date is read back the same way it was written.
    const Date stored = lumstrtodate(t);
    if (std::isfinite(stored.secs) && std::abs(stored.secs) < 1e13)
        lumstrtodate(lumdatetostr(stored));
    return 0;
}
