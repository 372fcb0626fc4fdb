#pragma once
// Reading timetable table files (".vq"): validity, header date, colours, and the
// rows of one line's day block for a date.

#include "util/date.h"

#include <QHash>
#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

namespace quendle {

// One service's times along a line's stops, as the reader takes them: every
// comma-separated piece of the row through its integer value, so a row written
// "512,519,527,}" has four entries, the last 0 (from the empty piece). A value outside
// 0..kMaxTableTime other than -1 reads as -1, the service not stopping there.
using Row = std::vector<int>;
constexpr int kMaxTableTime = 9959;   // hhmm with at most two digits of hours
using Rows = std::vector<Row>;
using RowsPtr = std::shared_ptr<const Rows>;

struct Rgba {
    double r = 0, g = 0, b = 0, a = 1;
    friend bool operator==(const Rgba&, const Rgba&) = default;
};

// Splits a table's text into lines at "\n", or at "\r" when there is no "\n".
QStringList splittablelines(const QString& text);

bool isthisavalidtable(const QString& path);
// The same test on a text already in memory (a download not yet written anywhere).
bool isthisavalidtabletext(const QString& text);
QString getdatefromtablefile(const QString& path);     // "??" when no header
QString datefromtablelines(const QStringList& lines);   // the same, from lines already split
Date tabledatetodate(const QString& text);             // "22 nov 1800" when unusable
Date getnsdatefromtablefile(const QString& path);
Rgba hexvaltoint(const QString& hex6);                  // black when not hexadecimal
int hexvaltointint(const QString& hex);
QString inttohexxhex(int value);
bool isthisavalidcompressedtable(const QString& fileName);

// Day digits (Sunday 0 .. Saturday 6, Friday deliberately reading 6).
int javadowtoobcdow(int calendarWeekday);
int convdowstrtoint(const QString& dayName);
bool isthisapuhol(Date d);                              // always false

// The rows of the first day block, after the named line's header, whose day line
// holds the day digit: a single pass over the file's lines exactly as the format's
// substring rules read it. An empty identity is found in no line.
Rows linetimesfromlines(const QStringList& lines, const QString& lineName, int dayDigit);

// Where a table's line blocks and day blocks are, found once, so that reading one line's
// rows looks only at the blocks that can matter instead of every line of the file. Its
// answers are those of linetimesfromlines, substring rules included: a line's rows come
// from the first block after any line that mentions "line" and holds the identity, not
// only after the line's own header.
class TableIndex {
public:
    explicit TableIndex(const QStringList& lines);
    Rows linetimes(const QString& lineName, int dayDigit) const;

private:
    // The lines from one line that mentions "line" up to the next such line.
    struct Segment {
        int head = 0;
        int end = 0;              // one past the last line
        int firstForwards = -1;   // first line mentioning "forwards", -1 when none
        std::vector<int> dayLines;          // lines mentioning "day", in order
        std::vector<quint16> dayDigits;     // per day line, a bit for each digit it holds
    };
    // Segments whose head holds the identity, in file order.
    std::vector<int> segmentsholding(const QString& lineName) const;
    void findcontainment();

    const QStringList lines_;   // shares the cache's text
    std::vector<Segment> segments_;
    std::vector<int> slashDays_;    // lines mentioning "/day", in order
    // For every identity named in a line header, the segments whose head holds it; found
    // for all of them at once. Empty (with containmentComplete_ false) when a hostile
    // table would make that list huge; then each question scans the heads.
    QHash<QString, std::vector<int>> holding_;
    bool containmentComplete_ = false;
};

// Keeps each table file's lines, and every (line, day digit) answer, until the file
// changes on disk (path, size and modification time), so a recalculation does not
// re-read and re-split the whole table for every leg, day and line.
class TableCache {
public:
    RowsPtr linetimes(const QString& path, const QString& lineName, int dayDigit);
    // The file's lines as splittablelines gives them; empty for a missing file.
    const QStringList& lines(const QString& path);
    void clear();

private:
    struct Entry {
        qint64 size = -1;
        qint64 mtimeNs = 0;
        QStringList lines;
        std::shared_ptr<const TableIndex> index;   // made at the first question about rows
        QHash<QString, RowsPtr> answers;
    };
    Entry& entry(const QString& path);
    QHash<QString, Entry> files_;
};

} // namespace quendle

namespace quendle {

// What a table file holds, for checking a table by hand.
struct TableSummary {
    bool valid = false;
    QString why;                 // why it is not valid; "" when valid
    QString datetext;            // header DATE ("??" when none)
    Date date;                   // the date it reads as
    struct DayBlock { QString days; int rows = 0; };
    struct Line { QString name; QString colour; int stops = 0; std::vector<DayBlock> days; };
    std::vector<Line> lines;
    int stations = 0;            // distinct stop names
    QStringList warnings;        // usable, but not as its author meant (an unreadable DATE)
};

// Only regular files up to the read limit are looked at; anything else says why.
TableSummary describetable(const QString& path);
TableSummary describetabletext(const QString& text);
// Why a header's DATE text does not read as the date it says; "" when it does.
QString tabledateproblem(const QString& text);

} // namespace quendle
