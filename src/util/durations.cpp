#include "util/durations.h"

#include "util/dates.h"

namespace quendle {

namespace {

// Texts made for every service and chain at every recalculation: written into a buffer on
// the stack and made a string once, instead of a string (and an allocation) per piece.
class Text {
public:
    // A positive number, then its unit.
    Text& number(int value, const char* unit)
    {
        char16_t digits[12];
        int k = 0;
        for (unsigned v = static_cast<unsigned>(value); k == 0 || v != 0; v /= 10)
            digits[k++] = static_cast<char16_t>(u'0' + v % 10);
        while (k > 0)
            put(digits[--k]);
        return text(unit);
    }
    Text& text(const char* ascii)
    {
        for (; *ascii; ++ascii)
            put(static_cast<char16_t>(*ascii));
        return *this;
    }
    QString str() const { return QString(reinterpret_cast<const QChar*>(buf_), n_); }

private:
    void put(char16_t c)
    {
        if (n_ < kSize)
            buf_[n_++] = c;
    }
    static constexpr int kSize = 96;   // more than three of the longest numbers and units
    char16_t buf_[kSize];
    int n_ = 0;
};

} // namespace

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
    Text out;
    const int h = minutes / 60;
    if (h > 0)
        out.number(h, "h");
    const int r = minutes - 60 * h;
    if (r >= 1)
        out.number(r, "m");
    return out.str();
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
    Text out;
    if (d > 0)
        out.text(" ").number(d, "d");
    if (h > 0)
        out.text(" ").number(h, "h");
    if (m > 0) {
        if (spoken)
            out.text(" ").number(m, m > 1 ? " minutes" : " minute");
        else
            out.text(" ").number(m, "m");
    }
    if (d < 0 || h < 0 || m < 0)
        return out.str();
    if (d == 0 && h == 0 && m == 0)
        out.text(" 1 min");
    return out.str();
}

QString calctimediff(Date from, Date to) { return difftext(from, to, false); }

QString calctimediffabbrev(Date from, Date to, int) { return difftext(from, to, true); }

} // namespace quendle
