#include "util/dates.h"

#include "util/text.h"

#include <QtGlobal>

#include <unicode/basictz.h>
#include <unicode/gregocal.h>
#include <unicode/timezone.h>
#include <unicode/tztrans.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <memory>

namespace quendle {

namespace {

constexpr double kMsPerMinute = 60000.0;
constexpr double kMsPerHour = 3600000.0;
constexpr double kMsPerDay = 86400000.0;
// Beyond this the calendar's own arithmetic gives up; instants are held inside it.
constexpr double kMaxMs = 1.8e17;
// Offsets of neighbouring zone periods differ by less than this, so an instant this far
// from either end of its period has one and only one wall-clock reading.
constexpr double kSafeMargin = 2 * kMsPerDay;
constexpr double kInf = std::numeric_limits<double>::infinity();

std::atomic<unsigned> zoneGeneration{0};

// ---- proleptic Gregorian day numbers (days since 1970-01-01) -------------------------

int64_t floordiv(int64_t a, int64_t b)
{
    int64_t q = a / b;
    if ((a % b != 0) && ((a < 0) != (b < 0)))
        --q;
    return q;
}

int64_t daysfromcivil(int64_t y, int64_t m, int64_t d)
{
    // m already in 1..12
    y -= m <= 2;
    const int64_t era = floordiv(y, 400);
    const int64_t yoe = y - era * 400;
    const int64_t doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
    const int64_t doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + doe - 719468;
}

void civilfromdays(int64_t z, int64_t* y, int* m, int* d)
{
    z += 719468;
    const int64_t era = floordiv(z, 146097);
    const int64_t doe = z - era * 146097;
    const int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const int64_t mp = (5 * doy + 2) / 153;
    *d = int(doy - (153 * mp + 2) / 5 + 1);
    *m = int(mp < 10 ? mp + 3 : mp - 9);
    *y = yoe + era * 400 + (*m <= 2);
}

double clampms(double ms)
{
    if (std::isnan(ms))
        return 0;
    return std::clamp(ms, -kMaxMs, kMaxMs);
}

// Local wall-clock milliseconds (as if UTC) of lenient calendar fields.
double wallms(const CivilTime& c)
{
    const int64_t m0 = int64_t(c.month) - 1;
    const int64_t y = int64_t(c.year) + floordiv(m0, 12);
    const int64_t m = m0 - floordiv(m0, 12) * 12 + 1;
    const int64_t days = daysfromcivil(y, m, 1) + int64_t(c.day) - 1;
    const double inday = ((double(c.hour) * 60 + c.minute) * 60 + c.second) * 1000.0;
    return double(days) * kMsPerDay + inday;
}

CivilTime civilfromwall(double wall)
{
    const double days = std::floor(wall / kMsPerDay);
    int64_t inday = int64_t(wall - days * kMsPerDay);   // whole ms, 0..86399999
    CivilTime c;
    int64_t y = 0;
    civilfromdays(int64_t(days), &y, &c.month, &c.day);
    c.year = int(y);
    c.hour = int(inday / 3600000);
    inday %= 3600000;
    c.minute = int(inday / 60000);
    c.second = int((inday % 60000) / 1000);
    return c;
}

// ---- the per-thread calendar ----------------------------------------------------------

// ICU calendars are expensive to build, so each thread keeps one, together with the zone
// period (between two offset changes) that the last lookup fell into. Most calls land in
// that period and need no ICU call at all.
struct Zone {
    unsigned generation = ~0u;
    std::unique_ptr<icu::TimeZone> tz;
    const icu::BasicTimeZone* basic = nullptr;
    std::unique_ptr<icu::GregorianCalendar> cal;
    double spanStart = 0, spanEnd = 0;   // [start, end) in UTC ms, empty at first
    double spanOffset = 0;               // ms, local = utc + offset

    void refresh()
    {
        const unsigned g = zoneGeneration.load(std::memory_order_acquire);
        if (g == generation && cal)
            return;
        generation = g;
        tz.reset(icu::TimeZone::createDefault());
        basic = dynamic_cast<const icu::BasicTimeZone*>(tz.get());
        UErrorCode status = U_ZERO_ERROR;
        cal = std::make_unique<icu::GregorianCalendar>(*tz, icu::Locale::getRoot(), status);
        if (U_FAILURE(status)) {
            qWarning("dates: no ICU calendar (%s); using UTC", u_errorName(status));
            status = U_ZERO_ERROR;
            tz.reset(icu::TimeZone::getGMT()->clone());
            basic = dynamic_cast<const icu::BasicTimeZone*>(tz.get());
            cal = std::make_unique<icu::GregorianCalendar>(*tz, icu::Locale::getRoot(), status);
        }
        cal->setGregorianChange(std::numeric_limits<double>::lowest(), status);  // proleptic
        cal->setLenient(true);
        spanStart = spanEnd = 0;
        spanOffset = 0;
    }

    double offset(double utc)
    {
        if (utc >= spanStart && utc < spanEnd)
            return spanOffset;
        UErrorCode status = U_ZERO_ERROR;
        int32_t raw = 0, dst = 0;
        tz->getOffset(utc, false, raw, dst, status);
        if (U_FAILURE(status))
            return tz->getRawOffset();
        spanOffset = double(raw) + dst;
        if (basic) {
            icu::TimeZoneTransition tr;
            spanStart = basic->getPreviousTransition(utc, true, tr) ? tr.getTime() : -kInf;
            spanEnd = basic->getNextTransition(utc, false, tr) ? tr.getTime() : kInf;
            if (!(utc >= spanStart && utc < spanEnd))   // inconsistent data: no period cached
                spanStart = spanEnd = 0;
        } else {
            spanStart = spanEnd = 0;
        }
        return spanOffset;
    }

    // Whether [a, b] lies well inside one zone period (so wall time = UTC + one offset).
    bool quiet(double a, double b)
    {
        offset(a);
        return a - spanStart >= kSafeMargin && spanEnd - b >= kSafeMargin;
    }

    // Wall-clock ms to the instant, as the lenient calendar resolves it.
    double resolve(double wall)
    {
        if (!(std::abs(wall) < kMaxMs - kSafeMargin))
            return clampms(wall - tz->getRawOffset());
        const double guess = wall - offset(wall - spanOffset);
        const double o = offset(guess);
        const double t = wall - o;
        if (t - spanStart >= kSafeMargin && spanEnd - t >= kSafeMargin)
            return t;
        // Near an offset change: let the calendar decide gaps and repeated hours.
        const CivilTime c = civilfromwall(wall);
        const double rest = wall - std::floor(wall / 1000.0) * 1000.0;
        UErrorCode status = U_ZERO_ERROR;
        cal->clear();
        cal->set(UCAL_EXTENDED_YEAR, c.year);
        cal->set(UCAL_MONTH, c.month - 1);
        cal->set(UCAL_DATE, c.day);
        cal->set(UCAL_HOUR_OF_DAY, c.hour);
        cal->set(UCAL_MINUTE, c.minute);
        cal->set(UCAL_SECOND, c.second);
        cal->set(UCAL_MILLISECOND, int32_t(rest));
        const double ms = cal->getTime(status);
        return U_SUCCESS(status) ? ms : t;
    }
};

Zone& zone()
{
    thread_local Zone z;
    z.refresh();
    return z;
}

double toms(Date d) { return clampms(d.secs * 1000.0); }

Date fromms(double ms) { return Date{ms / 1000.0}; }

CivilTime civil(Date d)
{
    const double ms = toms(d);
    return civilfromwall(ms + zone().offset(ms));
}

struct Diff {
    int days = 0, hours = 0, minutes = 0;
};

// Month, day, hour and minute components from -> to, months dropped, each cut to 8 bits.
Diff components(Date from, Date to)
{
    Zone& z = zone();
    const double a = toms(from), b = toms(to);
    const double span = b - a;
    Diff r;
    // Under 26 days no whole month fits, and with one offset all the way (and a margin for
    // the calendar's overshooting search) the components are plain divisions.
    if (std::abs(span) < 26 * kMsPerDay && z.quiet(std::min(a, b), std::max(a, b))) {
        const double days = std::trunc(span / kMsPerDay);
        double rest = span - days * kMsPerDay;
        const double hours = std::trunc(rest / kMsPerHour);
        rest -= hours * kMsPerHour;
        r.days = static_cast<int8_t>(int(days));
        r.hours = static_cast<int8_t>(int(hours));
        r.minutes = static_cast<int8_t>(int(std::trunc(rest / kMsPerMinute)));
        return r;
    }
    UErrorCode status = U_ZERO_ERROR;
    icu::GregorianCalendar& cal = *z.cal;
    cal.setTime(a, status);
    cal.fieldDifference(b, UCAL_MONTH, status);
    const int32_t days = cal.fieldDifference(b, UCAL_DATE, status);
    const int32_t hours = cal.fieldDifference(b, UCAL_HOUR_OF_DAY, status);
    const int32_t minutes = cal.fieldDifference(b, UCAL_MINUTE, status);
    if (U_FAILURE(status)) {
        qWarning("dates: no calendar difference between %.0f and %.0f (%s)", from.secs, to.secs,
                 u_errorName(status));
        return r;
    }
    r.days = static_cast<int8_t>(days);
    r.hours = static_cast<int8_t>(hours);
    r.minutes = static_cast<int8_t>(minutes);
    return r;
}

const char* const kMonthNames[14] = {"January", "January", "February", "March", "April",
                                     "May", "June", "July", "August", "September",
                                     "October", "November", "December", "January"};
const char* const kMonthMatch[13] = {"dunmatch", "January", "February", "March", "April",
                                     "May", "June", "July", "August", "September",
                                     "October", "November", "December"};
const char* const kMonthAbbrev[13] = {"zzzz", "Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                      "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
const char* const kWeekdays[13] = {"Sat", "Sun", "Mon", "Tue", "Wed", "Thur", "Fri",
                                   "Sat", "Sun", "xxx", "xxx", "xxx", "xxx"};

Date parsepieces(const QStringList& p)
{
    CivilTime c;
    c.hour = intvalue(p[0]);
    c.minute = intvalue(p[1]);
    c.second = intvalue(p[2]);
    c.day = intvalue(p[3]);
    c.month = intvalue(p[4]);
    c.year = intvalue(p[5]);
    return datefromcivil(c);
}

QString twodigits(int v) { return QString::number(v).rightJustified(2, '0'); }

} // namespace

void resetdatezone()
{
    tzset();
    icu::TimeZone::adoptDefault(icu::TimeZone::detectHostTimeZone());
    zoneGeneration.fetch_add(1, std::memory_order_acq_rel);
}

// ---- parsing ------------------------------------------------------------------------

Date lumstrtodate(const QString& text)
{
    QStringList p = text.split('|');
    if (p.size() == 5)
        qWarning("lumstrtodate: \"%s\" has five fields, no year; reading 1|1|1|1|1|1",
                 qPrintable(text));
    if (p.size() < 6)
        p = QStringList{"1", "1", "1", "1", "1", "1"};
    return parsepieces(p);
}

Date lumstrtodatebadvalprotect(const QString& text, Date now)
{
    const QStringList p = text.split('|');
    if (p.size() < 6)
        return adddaystodate(now, -900);
    return parsepieces(p);
}

bool canthisbeconvertedtodate(const QString& text) { return text.split('|').size() > 5; }

Date strtodatemanual(const QString& dmy)
{
    const QStringList p = dmy.split('/');
    CivilTime c;
    c.day = intvalue(p.value(0, "1"));
    c.month = intvalue(p.value(1, "1"));
    c.year = intvalue(p.value(2, "1"));
    return datefromcivil(c);
}

int monthnametonum(const QString& name)
{
    for (int i = 0; i < 13; ++i)
        if (name == QLatin1String(kMonthMatch[i]))
            return i;
    return 12;
}

QString monthnumtoname(int month)
{
    if (month < 0 || month >= 13)
        return QString();
    return QString::fromLatin1(kMonthNames[month]);
}

int hrfromdatestr(const QString& clock)
{
    return intvalue(lumregextremestr(clock, QStringLiteral("[0-9]{1,2}(?=\\.)")));
}

int minfromdatestr(const QString& clock)
{
    return intvalue(lumregextremestr(clock, QStringLiteral("(?<=\\.)[0-9]{1,2}")));
}

// ---- formatting ---------------------------------------------------------------------

QString lumdatetostr(Date d)
{
    const CivilTime c = civil(d);
    return QString::asprintf("%i|%i|%i|%i|%i|%i", c.hour, c.minute, 0, c.day, c.month, c.year);
}

QString lumdatetostrdisplaiable(Date d)
{
    const CivilTime c = civil(d);
    return QString::number(c.day) + ' ' + monthnumtoname(c.month) + ' ' + QString::number(c.year);
}

QString datetoshrtstr(Date d)
{
    const CivilTime c = civil(d);
    int h = c.hour;
    if (h == 0)
        h = 12;
    else if (h > 12)
        h -= 12;
    return QString::number(h) + ':' + twodigits(c.minute) + (c.hour >= 12 ? "PM" : "AM");
}

QString datetoshrtdate(Date d)
{
    const CivilTime c = civil(d);
    return QString::number(c.day) + '/' + QString::number(c.month);
}

QString datetomonthstr(Date d) { return QString::fromLatin1(kMonthAbbrev[civil(d).month]); }

QString datetodom(Date d) { return QString::number(civil(d).day); }

QString getdayomonth(Date d) { return QString::number(civil(d).day); }

int getdayomonthint(Date d) { return civil(d).day; }

int getmonth(Date d) { return civil(d).month; }

int getmonthstr(Date d) { return civil(d).month; }

QString getyear(Date d) { return QString::asprintf("%04d", civil(d).year); }

QString lumdatedisplay(Date d)
{
    return weekdayabbrev(datetodayofweek(d)) + ' ' + datetodom(d) + ' ' + datetomonthstr(d) + ' '
        + datetoshrtstr(d);
}

QString lumfixdatedis(Date d) { return lumdatedisplay(d); }

QString relativedate(Date d, Date now)
{
    if (testlumdateearlier(d, now))
        return QString();
    const int m = calctimediffint(now, d);
    const int days = m / 60 / 24;
    const int hours = m / 60;
    QString out;
    if (hours > 23)
        out += weekdayabbrev(datetodayofweek(d)) + ' ';
    if (days > 5)
        out += datetodom(d) + ' ' + datetomonthstr(d) + ' ';
    return out + datetoshrtstr(d);
}

QString relativedatejustday(Date d, Date now)
{
    if (testlumdateearlier(d, now))
        return QString();
    return weekdayabbrev(datetodayofweek(d)) + ' ';
}

QString lumdatetostrfuturefix(Date) { return QString(); }

QString lumdatetostrfukfix(Date d)
{
    qInfo("converted day of  month to [  %i  ] ", getmonth(d));
    return QStringLiteral("zbzbzbzbzbzbzzzz");
}

QString datetostrjunfix(Date d)
{
    const CivilTime c = civilfromwall(toms(d));
    return QString::asprintf("%04d-%02d-%02d %02d:%02d:%02d +0000", c.year, c.month, c.day, c.hour,
                             c.minute, c.second);
}

int datetodayofweek(Date d)
{
    const double ms = toms(d);
    const int64_t days = int64_t(std::floor((ms + zone().offset(ms)) / kMsPerDay));
    // 1 January 1970 was a Thursday (5).
    return int(days - floordiv(days + 4, 7) * 7 + 4) + 1;
}

QString weekdayabbrev(int calendarWeekday)
{
    if (calendarWeekday < 0 || calendarWeekday >= 13)
        return QStringLiteral("xxx");
    return QString::fromLatin1(kWeekdays[calendarWeekday]);
}

// ---- arithmetic and order tests -------------------------------------------------------

int calcdaysdiffint(Date from, Date to) { return components(from, to).days; }

int calctimediffint(Date from, Date to)
{
    const Diff r = components(from, to);
    return (r.days * 24 + r.hours) * 60 + r.minutes;
}

int calctimediffmin(Date from, Date to) { return calctimediffint(from, to); }

Date addminstodate(Date d, int minutes) { return d.plusSeconds(double(minutes) * 60); }

Date adddaystodate(Date d, int days) { return d.plusSeconds(double(days) * 86400); }

Date twenfourhranddatetodate(int hhmm, Date day)
{
    Zone& z = zone();
    const double ms = toms(day);
    const double midnight = std::floor((ms + z.offset(ms)) / kMsPerDay) * kMsPerDay;
    const double inday = ((double(hhmm / 100) * 60 + hhmm % 100) * 60 + 17) * 1000.0;
    return fromms(z.resolve(midnight + inday));
}

Date zerosecondsdate(Date d) { return Date{std::floor(d.secs / 60) * 60}; }

Date getupcomingfiveam()
{
    CivilTime c;
    c.hour = 5;
    c.minute = 0;
    return datefromcivil(c);
}

bool lumdateearlier(Date a, Date b, Date now)
{
    return -1000.0 * (b.secs - now.secs) > -1000.0 * (a.secs - now.secs);
}

bool testlumdateearlier(Date a, Date b) { return a.secs < b.secs; }

bool testlumdateearlierbyatleastaday(Date a, Date b) { return testlumdateearlier(a, b); }

bool testlumdateearlierbyatleastthesemins(Date a, Date b, int mins)
{
    return testlumdateearlier(addminstodate(a, mins), b);
}

// ---- calendar plumbing ----------------------------------------------------------------

Date datefromcivil(const CivilTime& c) { return fromms(zone().resolve(wallms(c))); }

CivilTime civilfromdate(Date d) { return civil(d); }

QString isolocal(Date d)
{
    const double ms = clampms(std::floor(d.secs) * 1000.0);   // whole seconds are shown
    const double off = zone().offset(ms);
    const CivilTime c = civilfromwall(ms + off);
    const int offmin = int(std::lround(off / kMsPerMinute));
    const int a = std::abs(offmin);
    return QString::asprintf("%04d-%02d-%02dT%02d:%02d:%02d%c%02d:%02d", c.year, c.month, c.day,
                             c.hour, c.minute, c.second, offmin < 0 ? '-' : '+', a / 60, a % 60);
}

bool parseiso(const QString& text, Date* out, QString* why)
{
    auto refuse = [why](const char* reason) {
        if (why)
            *why = QString::fromUtf8(reason);
        return false;
    };
    const QString t = text.trimmed();
    if (t.isEmpty())
        return refuse("it is empty");
    int pos = 0;
    // Reads exactly n ASCII digits.
    auto digits = [&](int n, int* v) {
        if (pos + n > t.size())
            return false;
        int r = 0;
        for (int i = 0; i < n; ++i) {
            const QChar ch = t[pos + i];
            if (ch < '0' || ch > '9')
                return false;
            r = r * 10 + (ch.unicode() - '0');
        }
        pos += n;
        *v = r;
        return true;
    };
    auto expect = [&](char ch) {
        if (pos < t.size() && t[pos] == QLatin1Char(ch)) {
            ++pos;
            return true;
        }
        return false;
    };
    CivilTime c;
    const char* const form = "it is not an ISO 8601 date and time";
    if (!digits(4, &c.year) || !expect('-') || !digits(2, &c.month) || !expect('-')
        || !digits(2, &c.day) || !(expect('T') || expect(' ')) || !digits(2, &c.hour)
        || !expect(':') || !digits(2, &c.minute))
        return refuse(form);
    double fraction = 0;
    if (expect(':')) {
        if (!digits(2, &c.second))
            return refuse(form);
        if (expect('.') || expect(',')) {
            double scale = 0.1;
            const int start = pos;
            while (pos < t.size() && t[pos] >= '0' && t[pos] <= '9') {
                fraction += (t[pos].unicode() - '0') * scale;
                scale /= 10;
                ++pos;
            }
            if (pos == start)
                return refuse(form);
        }
    }
    bool hasOffset = false;
    int offmin = 0;
    if (expect('Z')) {
        hasOffset = true;
    } else if (pos < t.size() && (t[pos] == '+' || t[pos] == '-')) {
        const int sign = t[pos] == '-' ? -1 : 1;
        ++pos;
        int oh = 0, om = 0;
        if (!digits(2, &oh))
            return refuse(form);
        expect(':');
        if (!digits(2, &om))
            return refuse(form);
        if (oh > 23 || om > 59)
            return refuse("there is no such offset from UTC");
        hasOffset = true;
        offmin = sign * (oh * 60 + om);
    }
    if (pos != t.size())
        return refuse(form);
    if (c.year == 0)
        return refuse("year 0000 is not a usable year");
    if (c.second == 60)
        return refuse("second 60 is a leap second, which the clock does not keep");
    if (c.month < 1 || c.month > 12 || c.day < 1 || c.hour > 23 || c.minute > 59 || c.second > 59)
        return refuse("there is no such date or time");
    const int64_t next = c.month == 12 ? daysfromcivil(c.year + 1, 1, 1)
                                       : daysfromcivil(c.year, c.month + 1, 1);
    if (c.day > next - daysfromcivil(c.year, c.month, 1))
        return refuse("there is no such date");
    double ms = 0;
    if (hasOffset) {
        ms = wallms(c) - offmin * kMsPerMinute;
    } else {
        ms = zone().resolve(wallms(c));
        // The calendar moves a skipped time on by the hour; the reading must show it back.
        const CivilTime back = civilfromdate(Date{ms / 1000.0});
        if (back.year != c.year || back.month != c.month || back.day != c.day || back.hour != c.hour
            || back.minute != c.minute || back.second != c.second)
            return refuse("the local clock skips that time when daylight saving begins");
    }
    if (out)
        *out = Date{ms / 1000.0 + fraction};
    return true;
}

} // namespace quendle

namespace quendle {

ServiceDayClock::ServiceDayClock(Date day) : day_(day), midnight_(twenfourhranddatetodate(0, day))
{
    linear_ = twenfourhranddatetodate(3000, day).secs - midnight_.secs == 30 * 3600.0;
}

Date ServiceDayClock::at(int hhmm) const
{
    if (linear_ && hhmm >= 0 && hhmm <= 2959)
        return midnight_.plusSeconds((hhmm / 100) * 3600.0 + (hhmm % 100) * 60.0);
    return twenfourhranddatetodate(hhmm, day_);
}

} // namespace quendle
