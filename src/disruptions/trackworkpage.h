#pragma once
// Readers of the operator's pages, kept apart from the fetching: the tests that a page is
// what it claims to be, the reduction of the trackwork page to the compact notice file,
// and the parsing of that file into trackwork records. Texts in, texts and records out.

#include "timetable/timetable.h"
#include "util/date.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace quendle {

// Where both stations of a closed section lie on one of the notice's lines.
struct LinePositions {
    int begstnonline = 0;
    int endstnonline = 0;
    int onthislinenum = 0;
    friend bool operator==(const LinePositions&, const LinePositions&) = default;
};

// A closed section: two station names and their numbers.
struct StationRange {
    QString trakbegstr;
    QString trakendstr;
    int trakbegint = 0;
    int trakendint = 0;
    std::vector<LinePositions> begendonlinenums;
    friend bool operator==(const StationRange&, const StationRange&) = default;
};

// One notice of the compact file that passed the checks.
struct TrakwRecord {
    QString line;                   // the heading's line title
    int linenum = -1;
    std::vector<int> linenums;      // every line the title can stand for
    Date trakbegin;
    Date trakend;
    QStringList stnsout;            // always empty
    int gotstnsoutinfo = 0;         // 1 when a section was resolved to stations
    std::vector<StationRange> stnsoutfix;
    QString stnsoutstr;             // a plain description of stnsoutfix
    QString remain;                 // time from the reading until the begin
    QString fixdispbeg;
    QString fixdispend;
    int trakbegtwenfrhr = 0;        // the begin as hhmm
    QString untilrelativedatestr;   // the begin relative to the reading
    QString origline;               // the compact line as it stood in the file
    QString originfostr;            // the notice text
    friend bool operator==(const TrakwRecord&, const TrakwRecord&) = default;
};

// Both operator pages carry the link to the trackwork map; a page without it is not theirs.
bool thisvalidtw(const QString& page);
bool thisvalidinterrup(const QString& page);

// The first match of the notice-title expression in one block of the page.
QString firsttitlematch(const QString& block);

// The compact notice text of a trackwork page: "\r" + heading or notice, per line.
QString comptwtext(const QString& page);
// Only a compact text of more than three "\r" pieces replaces the file already kept.
bool compactworthkeeping(const QString& compact);

// "9 March 11.30pm" -> "9/3/2014,2330" (the notices carry no year; 12.30pm reads 2430).
QString strtotwenfhrdateorigtrakw(const QString& datetext);
// An older reader of the same texts, kept as it was; nothing uses its result for records.
Date strtodateorigtrakw(const QString& datetext);

struct ParsedTrakw {
    std::vector<TrakwRecord> trakw;          // unsorted, finished notices left out
    QStringList debugshoworigtrakwork;       // every compact line read, in file order
};
// The compact file's notices on the lines of tt, as read at `now`.
ParsedTrakw parsetrakwcompact(const QString& compact, const Timetable& tt, Date now);

// The plain text form of the closed sections, as "stnsoutstr" keeps it.
QString describestnsoutfix(const std::vector<StationRange>& ranges);

} // namespace quendle
