#pragma once
// Reading one of the operator's timetable pages (one line direction on one day) and the
// steps that turn what it holds into the intermediate text of that line and day. Pure
// text work: the fetching and the files are the Publisher's.

#include "publisher/tablewriter.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace quendle {

// What a page holds, as the page prints it: one row per station row of the times slider
// (a station's times across all services), the station texts as linked, and the
// headings.
struct TimetablePage {
    ServiceRows rows;
    QStringList stations;
    QString dayname;     // "Monday" .. "Sunday", or "" when the page names no day
    QString linename;    // the capitalised words before " Line"
    QString direction;   // what stands between "Line" and "Sydney"
};

TimetablePage readtimetablepage(const QString& page);

// A printed time as a table time: "5:07" is 507, "24:05" 2405 and "0:05" 5 (hours are
// taken as printed); a dash, a blank or anything else is -1.
int convertstrintto25hr(const QString& cell);

// Indexes (ascending) of the station texts that are arrival rows ("Central arr").
std::vector<int> getstnsidontwant(const QStringList& stations);
// Remove the rows at those indexes one after the other, each index counted in the list
// as the removals before it left it (so a second index falls one row later than meant,
// which is how these pages have always been reduced). Indexes past the end remove nothing.
void removetimesidontwant(ServiceRows& rows, const std::vector<int>& indexes);
QStringList removestnsidontwant(const QStringList& stations, const std::vector<int>& indexes);
// Station texts as names: " dep" taken out and one trailing blank dropped.
QStringList rewritestnstonamesiwant(const QStringList& stations);
// Transposed: row k holds element k of every input row (-1 where an input row is short),
// as many rows as the first input row has elements.
ServiceRows rotatemultidarray(const ServiceRows& rows);
// Whether every row from row 2 on is as long as the row before it (rows 0 and 1 are not
// compared with each other).
bool ithisrayevenlength(const ServiceRows& rows);

} // namespace quendle
