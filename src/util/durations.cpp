#include "util/durations.h"

#include "util/dates.h"

namespace quendle {

QString mintohrminstr(int minutes)
{
    QString out;
    const int h = minutes / 60;
    if (h > 0)
        out += QString::asprintf("%i h ", h);
    const int r = minutes - 60 * h;
    if (r >= 1)
        out += QString::asprintf("%i min", r);
    return out;
}

QString mintostr(int minutes)
{
    QString out;
    const int h = minutes / 60;
    if (h > 0)
        out += QString::number(h) + "h";
    const int r = minutes - 60 * h;
    if (r >= 1)
        out += QString::number(r) + "m";
    return out;
}

// Days, hours and minutes of the calendar difference from -> to, after one minute is
// added to whichever of the two is strictly later. A moment already past therefore gives
// negative components (a service that left 32 seconds ago is -1 minute away, not 0), and
// two equal moments give none at all.
static void components(Date from, Date to, int* d, int* h, int* m)
{
    if (to > from)
        to = addminstodate(to, 1);
    else if (from > to)
        from = addminstodate(from, 1);
    *d = calcdaysdiffint(from, to);
    // The total counts whole months out already; what is left over the days is hours and minutes.
    const int rest = calctimediffint(from, to) - *d * 24 * 60;
    *h = rest / 60;
    *m = rest % 60;
}

static QString difftext(Date from, Date to, bool spoken)
{
    int d = 0, h = 0, m = 0;
    components(from, to, &d, &h, &m);
    QString out;
    if (d > 0)
        out += QString::asprintf(" %dd", d);
    if (h > 0)
        out += QString::asprintf(" %dh", h);
    if (m > 0) {
        if (spoken)
            out += QString::asprintf(" %d minute", m) + (m > 1 ? "s" : "");
        else
            out += QString::asprintf(" %dm", m);
    }
    if (d < 0 || h < 0 || m < 0)
        return out;
    if (d == 0 && h == 0 && m == 0)
        out += " 1 min";
    return out;
}

QString calctimediff(Date from, Date to) { return difftext(from, to, false); }

QString calctimediffabbrev(Date from, Date to, int) { return difftext(from, to, true); }

} // namespace quendle
