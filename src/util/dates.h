#pragma once
// Date texts, calendar arithmetic and order tests. All calendar work uses the
// proleptic Gregorian calendar in the process's time zone (TZ), through ICU.
// Functions that need the present moment take it as an argument, so that the
// caller decides which clock is in charge.

#include "util/date.h"

#include <QString>
#include <QStringList>

namespace quendle {

// --- parsing -------------------------------------------------------------
// Pipe date "h|m|s|d|M|y". Fewer than 5 fields reads as "1|1|1|1|1|1";
// exactly 5 is the caller's fault: a warning is logged and the same fallback used.
Date lumstrtodate(const QString& text);
// Same parse; fewer than 6 fields gives now - 900 days.
Date lumstrtodatebadvalprotect(const QString& text, Date now);
bool canthisbeconvertedtodate(const QString& text);       // more than 5 fields
Date strtodatemanual(const QString& dmy);                   // "9/3/2014" at 00:00:00; missing fields read as 1
int monthnametonum(const QString& name);                    // exact match, 12 when none
QString monthnumtoname(int month);                          // "" for 13 and above
int hrfromdatestr(const QString& clock);                    // "5.07pm" -> 5
int minfromdatestr(const QString& clock);                   // "5.07pm" -> 7

// --- formatting ----------------------------------------------------------
QString lumdatetostr(Date d);               // "7|5|0|9|3|2014" (second always 0)
QString lumdatetostrdisplaiable(Date d);    // "9 March 2014"
QString datetoshrtstr(Date d);              // "5:07PM"
QString datetoshrtdate(Date d);             // "9/3"
QString datetomonthstr(Date d);             // "Mar"
QString datetodom(Date d);                  // "9"
QString getdayomonth(Date d);               // "9"
int getdayomonthint(Date d);
int getmonth(Date d);
int getmonthstr(Date d);                    // the month number too, despite the name
QString getyear(Date d);                    // "2014"
QString lumdatedisplay(Date d);             // "Sun 9 Mar 5:07PM"
QString lumfixdatedis(Date d);              // same as lumdatedisplay
QString relativedate(Date d, Date now);     // "" when already past
QString relativedatejustday(Date d, Date now);
QString lumdatetostrfuturefix(Date d);      // always ""
QString lumdatetostrfukfix(Date d);         // always "zbzbzbzbzbzbzzzz"
QString datetostrjunfix(Date d);            // a plain description of the instant
int datetodayofweek(Date d);                // 1 Sunday .. 7 Saturday
// Weekday abbreviation table as indexed by datetodayofweek ("Sun" .. "Sat", "Thur").
QString weekdayabbrev(int calendarWeekday);

// --- arithmetic and order tests -------------------------------------------
int calcdaysdiffint(Date from, Date to);
int calctimediffint(Date from, Date to);
int calctimediffmin(Date from, Date to);
Date addminstodate(Date d, int minutes);
Date adddaystodate(Date d, int days);
Date twenfourhranddatetodate(int hhmm, Date day);
Date zerosecondsdate(Date d);
Date getupcomingfiveam();
bool lumdateearlier(Date a, Date b, Date now);   // b strictly earlier than a
bool testlumdateearlier(Date a, Date b);         // a strictly earlier than b
bool testlumdateearlierbyatleastaday(Date a, Date b);
bool testlumdateearlierbyatleastthesemins(Date a, Date b, int mins);

// --- calendar plumbing for other modules ---------------------------------
// The year is the astronomical one (0 is 1 BC).
struct CivilTime { int year = 1, month = 1, day = 1, hour = 0, minute = 0, second = 0; };
// Lenient: out-of-range fields roll over.
Date datefromcivil(const CivilTime& c);
CivilTime civilfromdate(Date d);
// ISO 8601 local time with offset and seconds, e.g. 2014-03-09T17:04:50+11:00.
QString isolocal(Date d);
// Parses ISO 8601 with or without an offset (without: local time in TZ), e.g.
// 2014-03-09T17:04:50, 2014-03-09 17:04, 2014-03-09T06:04:50.5Z, 2014-03-09T17:04:50+11:00.
// False when unusable, with the reason in *why: not that form, no such date or time, year
// 0000, a leap second, or a local time the clock skips when daylight saving begins. A local
// time the clock shows twice reads as its second pass, as the calendar has it.
bool parseiso(const QString& text, Date* out, QString* why = nullptr);
// ICU reads TZ once; after changing TZ, call this so the calendars follow.
void resetdatezone();

} // namespace quendle

namespace quendle {

// twenfourhranddatetodate for many table times on one service day. Where the clock does
// not change between that day's midnight and 30 hours later, a time is plain arithmetic
// from midnight; otherwise (and for times past 29:59) the calendar answers as usual.
class ServiceDayClock {
public:
    explicit ServiceDayClock(Date day);
    Date at(int hhmm) const;

private:
    Date day_;
    Date midnight_;      // the day's 00:00:17
    bool linear_ = false;
};

} // namespace quendle
