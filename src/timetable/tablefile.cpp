#include "timetable/tablefile.h"

#include "util/dates.h"
#include "util/files.h"
#include "util/text.h"

#include <QFile>
#include <QFileInfo>

#include <sys/stat.h>
#include <QSet>

namespace quendle {

QStringList splittablelines(const QString& text)
{
    if (text.contains('\n'))
        return text.split('\n');
    return text.split('\r');
}

bool isthisavalidtable(const QString& path)
{
    const QStringList lines = splittablelines(readfile(path));
    int timetables = 0;
    int lineNames = 0;
    for (const QString& l : lines) {
        if (l.contains(QLatin1String("timetable")))
            ++timetables;
        if (l.contains(QLatin1String("line name")))
            ++lineNames;
    }
    return timetables > 1 && lines.size() >= 6 && lineNames >= 2;
}

QString getdatefromtablefile(const QString& path)
{
    return datefromtablelines(splittablelines(readfile(path)));
}

QString datefromtablelines(const QStringList& lines)
{
    for (const QString& l : lines) {
        if (l.contains(QLatin1String("date"))) {
            const QStringList pieces = l.split('"');
            if (pieces.size() > 3)
                return pieces[3];
            break;
        }
    }
    return QStringLiteral("??");
}

Date tabledatetodate(const QString& text)
{
    QStringList pieces = text.split(' ');
    if (pieces.size() < 5)
        pieces = QStringLiteral("22 nov 1800").split(' ');
    CivilTime c;
    c.day = intvalue(pieces[0]);
    c.month = monthnametonum(pieces[1]);
    c.year = intvalue(pieces[2]);
    return datefromcivil(c);
}

Date getnsdatefromtablefile(const QString& path)
{
    return tabledatetodate(getdatefromtablefile(path));
}

Rgba hexvaltoint(const QString& hex6)
{
    bool ok = false;
    const uint v = hex6.toUInt(&ok, 16);
    if (!ok || hex6.isEmpty())
        return Rgba{0, 0, 0, 1};
    return Rgba{((v >> 16) & 0xff) / 255.0, ((v >> 8) & 0xff) / 255.0, (v & 0xff) / 255.0, 1};
}

int hexvaltointint(const QString& hex)
{
    bool ok = false;
    const int v = hex.toInt(&ok, 16);
    return ok ? v : 0;
}

QString inttohexxhex(int value)
{
    return QString::number(static_cast<uint>(value), 16).toUpper();
}

bool isthisavalidcompressedtable(const QString& fileName)
{
    return fileName.contains(QLatin1String("day"));
}

int javadowtoobcdow(int calendarWeekday)
{
    switch (calendarWeekday) {
    case 1: return 0;
    case 2: return 1;
    case 3: return 2;
    case 4: return 3;
    case 5: return 4;
    case 6: return 6;   // Friday reads the block that holds 6, as the tables have always been read
    case 7: return 6;
    default: return calendarWeekday;
    }
}

int convdowstrtoint(const QString& dayName)
{
    static const char* const names[] = {"Sunday", "Monday", "Tuesday", "Wednesday",
                                         "Thursday", "Friday", "Saturday"};
    for (int i = 0; i < 7; ++i)
        if (dayName == QLatin1String(names[i]))
            return i;
    return -1;
}

bool isthisapuhol(Date) { return false; }

static Row rowfromline(const QString& line)
{
    const QString first = line.section('}', 0, 0);
    Row row;
    row.reserve(32);
    for (const QString& piece : first.split(','))
        row.push_back(intvalue(piece));
    return row;
}

Rows linetimesfromlines(const QStringList& lines, const QString& lineName, int dayDigit)
{
    Rows rows;
    bool inLine = false, forwards = false, inDay = false;
    const QString digit = QString::number(dayDigit);
    for (const QString& l : lines) {
        if (l.contains(QLatin1String("line")))
            inLine = l.contains(lineName);
        if (l.contains(QLatin1String("forwards")) && inLine)
            forwards = true;
        if (l.contains(QLatin1String("/day")) && inDay)
            break;
        if (inDay)
            rows.push_back(rowfromline(l));
        if (inLine && forwards && l.contains(QLatin1String("day")) && l.contains(digit))
            inDay = true;
    }
    return rows;
}

// Size and modification time of a file, -1 for the size when there is none. A plain
// stat: this runs for every line, leg and day of every recalculation.
static void filestamp(const QString& path, qint64* size, qint64* mtimeNs)
{
    if (path.startsWith(QLatin1Char(':'))) {   // compiled-in resources never change
        const QFileInfo info(path);
        *size = info.exists() ? info.size() : -1;
        *mtimeNs = 0;
        return;
    }
    struct stat st;
    if (::stat(QFile::encodeName(path).constData(), &st) != 0 || !S_ISREG(st.st_mode)) {
        *size = -1;
        *mtimeNs = 0;
        return;
    }
    *size = st.st_size;
    *mtimeNs = static_cast<qint64>(st.st_mtim.tv_sec) * 1000000000 + st.st_mtim.tv_nsec;
}

TableCache::Entry& TableCache::entry(const QString& path)
{
    qint64 size = -1, mtime = 0;
    filestamp(path, &size, &mtime);
    Entry& e = files_[path];
    if (e.size != size || e.mtimeNs != mtime || (e.lines.isEmpty() && size > 0)) {
        e.size = size;
        e.mtimeNs = mtime;
        e.lines = size < 0 ? QStringList() : splittablelines(readfile(path));
        e.answers.clear();
    }
    return e;
}

const QStringList& TableCache::lines(const QString& path) { return entry(path).lines; }

RowsPtr TableCache::linetimes(const QString& path, const QString& lineName, int dayDigit)
{
    Entry& e = entry(path);
    const QString key = lineName + QChar(0x1f) + QString::number(dayDigit);
    auto it = e.answers.constFind(key);
    if (it != e.answers.constEnd())
        return *it;
    auto rows = std::make_shared<const Rows>(linetimesfromlines(e.lines, lineName, dayDigit));
    e.answers.insert(key, rows);
    return rows;
}

void TableCache::clear() { files_.clear(); }

} // namespace quendle

namespace quendle {

TableSummary describetable(const QString& path)
{
    TableSummary out;
    if (!lumexist(path)) {
        out.why = QStringLiteral("the file does not exist or cannot be read");
        out.datetext = QStringLiteral("??");
        out.date = tabledatetodate(out.datetext);
        return out;
    }
    const QStringList lines = splittablelines(readfile(path));
    int timetables = 0, lineNames = 0;
    QSet<QString> names;
    TableSummary::Line* current = nullptr;
    TableSummary::DayBlock* day = nullptr;
    for (const QString& l : lines) {
        if (l.contains(QLatin1String("timetable")))
            ++timetables;
        if (l.contains(QLatin1String("line name"))) {
            ++lineNames;
            const QStringList pieces = l.split('"');
            TableSummary::Line line;
            line.name = pieces.value(1);
            line.colour = pieces.value(3);
            for (const QString& stop : pieces.value(5).split(',')) {
                const QStringList s = stop.split('|');
                if (s.size() > 2) {
                    ++line.stops;
                    names.insert(s[0]);
                }
            }
            out.lines.push_back(line);
            current = &out.lines.back();
            day = nullptr;
        } else if (current && l.contains(QLatin1String("<day"))) {
            current->days.push_back({lumregextremestr(l, QStringLiteral("(?<=num=\")[0-9]*")), 0});
            day = &current->days.back();
        } else if (l.contains(QLatin1String("/day"))) {
            day = nullptr;
        } else if (day && l.contains('}')) {
            ++day->rows;
        }
    }
    out.stations = names.size();
    out.datetext = getdatefromtablefile(path);
    out.date = tabledatetodate(out.datetext);
    QStringList why;
    if (timetables <= 1)
        why << QStringLiteral("%1 lines mention \"timetable\" (a header and a trailer are needed)").arg(timetables);
    if (lines.size() < 6)
        why << QStringLiteral("it has %1 lines (at least 6 are needed)").arg(lines.size());
    if (lineNames < 2)
        why << QStringLiteral("it has %1 line headers (at least 2 are needed)").arg(lineNames);
    out.valid = isthisavalidtable(path);
    out.why = out.valid ? QString() : why.join(QStringLiteral("; "));
    return out;
}

} // namespace quendle
