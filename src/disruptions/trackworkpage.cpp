#include "disruptions/trackworkpage.h"

#include "util/dates.h"
#include "util/durations.h"
#include "util/text.h"

namespace quendle {

namespace {

const QString kMapLink = QStringLiteral("service_updates/trackwork/trackwork_map.pdf");

// The five expressions that pick a notice out of one block of the trackwork page.
const QString kTitle = QStringLiteral("(?<=title=\\\")(T[0-9]|).{1,}[A-Z][a-z]{1,}\\sLine");
const QString kDates = QStringLiteral(
    "[0-9]{1,2}\\s(January|February|March|April|May|June|July|August|September|October|November|December)"
    "\\s[0-9]{1,}\\.[0-9][0-9](a|p)m");
const QString kRanges = QStringLiteral(
    "(?<=(replace\\strains\\s(between|from))\\s)([A-Z][a-z]{1,}\\s){1,}(and|to)(\\s[A-Z][a-z]{1,}){1,}");
const QString kText = QStringLiteral("(?<=rkworkItemText\\sclear\\\").{1,}");
const QString kNone = QStringLiteral("(No\\strackwork|here\\sis\\sno\\strackwork|xtra\\strains\\srun)");

// The characters ICU's "." does not match.
bool lineterminator(QChar c)
{
    const char16_t u = c.unicode();
    return (u >= 0x0a && u <= 0x0d) || u == 0x85 || u == 0x2028 || u == 0x2029;
}

QString indent(int level) { return describeindent(level); }

QString describepositions(const LinePositions& p, int level)
{
    return "{\n" + indent(level + 1) + "begstnonline = " + QString::number(p.begstnonline) + ";\n"
        + indent(level + 1) + "endstnonline = " + QString::number(p.endstnonline) + ";\n"
        + indent(level + 1) + "onthislinenum = " + QString::number(p.onthislinenum) + ";\n" + indent(level)
        + "}";
}

QString describerange(const StationRange& r, int level)
{
    QString positions = "(";
    for (size_t i = 0; i < r.begendonlinenums.size(); ++i)
        positions += (i ? ",\n" : "\n") + indent(level + 2)
            + describepositions(r.begendonlinenums[i], level + 2);
    positions += "\n" + indent(level + 1) + ")";
    const QString in = indent(level + 1);
    return "{\n" + in + "begendonlinenums = " + positions + ";\n" + in + "trakbegint = "
        + QString::number(r.trakbegint) + ";\n" + in + "trakbegstr = " + describevalue(r.trakbegstr) + ";\n"
        + in + "trakendint = " + QString::number(r.trakendint) + ";\n" + in
        + "trakendstr = " + describevalue(r.trakendstr) + ";\n" + indent(level) + "}";
}

} // namespace

// Only a position right after `title="` can start a match, and when an attempt there fails,
// every later such position on the same line fails too (a match from there would also be
// one from the earlier position). So each line is tried once: linear in the block, where
// a plain search is quadratic in a line full of `title="`.
QString firsttitlematch(const QString& block)
{
    const QString marker = QStringLiteral("title=\"");
    qsizetype triedupto = -1;   // the end of the line of the last failed attempt
    for (qsizetype p = block.indexOf(marker); p >= 0; p = block.indexOf(marker, p + 1)) {
        const qsizetype start = p + marker.size();
        if (start < triedupto)
            continue;
        const QString m = lumregexmatchat(block, kTitle, start);
        if (!m.isEmpty())
            return m;
        triedupto = start;
        while (triedupto < block.size() && !lineterminator(block[triedupto]))
            ++triedupto;
    }
    return QString();
}

bool thisvalidtw(const QString& page) { return isthisinthat(kMapLink, page); }

bool thisvalidinterrup(const QString& page) { return isthisinthat(kMapLink, page); }

QString comptwtext(const QString& page)
{
    QString compact;
    QString previous = QStringLiteral("xfxf");   // no title is ever this
    const QStringList blocks = page.split(QStringLiteral("trkworkItemHeading"));
    for (const QString& block : blocks) {
        // The cheap tests first: most blocks of a page fail one of them.
        const QStringList dates = lumregextremeray(block, kDates);
        if (dates.size() <= 1 || !lumregextremestr(block, kNone).isEmpty())
            continue;
        QString title = firsttitlematch(block);
        if (title.isEmpty())
            continue;
        title = lumstrreplace(title, QStringLiteral("&amp;"), QStringLiteral("&"));
        if (title != previous) {
            compact += '\r' + title + '#';
            previous = title;
        }
        compact += '\r' + strtotwenfhrdateorigtrakw(dates[0]) + ',' + strtotwenfhrdateorigtrakw(dates[1]) + '=';
        for (const QString& range : lumregextremeray(block, kRanges))
            compact += lumstrreplace(range, QStringLiteral(" and "), QStringLiteral("-")) + ',';
        const QStringList texts = lumregextremeray(block, kText);
        compact += '=' + (texts.size() >= 2 ? texts[1] : QString()) + '=';
    }
    return compact;
}

bool compactworthkeeping(const QString& compact) { return compact.count('\r') + 1 > 3; }

QString strtotwenfhrdateorigtrakw(const QString& datetext)
{
    const QStringList parts = datetext.split(' ');
    if (parts.size() < 3)
        return QStringLiteral("11/11/11");   // reads as a day in the year 11: long past
    const int day = intvalue(parts[0]);
    const int month = monthnametonum(parts[1]);
    int hour = hrfromdatestr(datetext);
    const int minute = minfromdatestr(datetext);
    if (!datetext.contains(QLatin1String("am"))) {
        // 12.30pm becomes 24.30, which the service-day reading puts after midnight.
        if (hour != 0)
            hour += 12;
    } else if (hour == 12) {
        hour = 0;
    }
    return QStringLiteral("%1/%2/%3,%4").arg(day).arg(month).arg(2014).arg(hour * 100 + minute);
}

Date strtodateorigtrakw(const QString& datetext)
{
    QString t = datetext;
    if (t.split(' ').size() > 2)
        t = QStringLiteral("31 31");
    int hour = hrfromdatestr(t);
    const int minute = minfromdatestr(t);
    if (t.contains(QLatin1String("am")))
        hour -= 13;
    const QStringList words = t.split(' ');
    CivilTime c;
    c.day = intvalue(words.value(0));
    c.month = monthnametonum(words.value(1));
    c.hour = hour;
    c.minute = minute;
    return datefromcivil(c);
}

ParsedTrakw parsetrakwcompact(const QString& compact, const Timetable& tt, Date now)
{
    ParsedTrakw out;
    // The file separates its lines with "\r"; a file edited by hand may use "\n".
    const QStringList pieces = compact.contains('\r') ? compact.split('\r') : compact.split('\n');
    int linenum = -1;
    std::vector<int> linenums;
    QString title;
    for (const QString& piece : pieces) {
        out.debugshoworigtrakwork << piece;
        const QStringList heading = piece.split('#');
        if (heading.size() > 1) {
            title = heading[0];
            linenum = tt.linenametonum(title);
            linenums = tt.linenametonums(title);
        }
        // Notices of a line the tables do not know are skipped up to the next heading.
        if (linenum == -1)
            continue;
        const QStringList fields = piece.split('=');
        if (fields.size() <= 1)
            continue;
        const QStringList points = fields[0].split(',');
        if (points.size() <= 3)
            continue;

        TrakwRecord r;
        r.line = title;
        r.linenum = linenum;
        r.linenums = linenums;
        r.originfostr = fields.size() > 2 ? fields[2] : QString();
        for (const QString& part : fields[1].split(',')) {
            const QStringList names = part.split('-');
            if (names.size() < 2)
                continue;   // a section written "A to B" never resolves
            const QString& a = names[0];
            const QString& b = names[1];
            if (tt.thisstnonthisline(a, linenum) == -1 || tt.thisstnonthisline(b, linenum) == -1)
                continue;
            StationRange range;
            range.trakbegstr = a;
            range.trakendstr = b;
            range.trakbegint = tt.stnnametointfixsetup(a);
            range.trakendint = tt.stnnametointfixsetup(b);
            for (int l : linenums) {
                const int pa = tt.thisstnonthisline(a, l), pb = tt.thisstnonthisline(b, l);
                if (pa != -1 && pb != -1)
                    range.begendonlinenums.push_back({pa, pb, l});
            }
            r.stnsoutfix.push_back(std::move(range));
            r.gotstnsoutinfo = 1;
        }
        r.trakbegtwenfrhr = intvalue(points[1]);
        r.trakbegin = twenfourhranddatetodate(r.trakbegtwenfrhr, strtodatemanual(points[0]));
        r.trakend = twenfourhranddatetodate(intvalue(points[3]), strtodatemanual(points[2]));
        if (!testlumdateearlier(now, r.trakend))
            continue;   // finished trackwork
        r.stnsoutstr = describestnsoutfix(r.stnsoutfix);
        r.remain = calctimediff(now, r.trakbegin);
        r.fixdispbeg = datetoshrtstr(r.trakbegin);
        r.fixdispend = datetoshrtstr(r.trakend);
        r.untilrelativedatestr = relativedate(r.trakbegin, now);
        r.origline = piece;
        out.trakw.push_back(std::move(r));
    }
    return out;
}

QString describestnsoutfix(const std::vector<StationRange>& ranges)
{
    QString out = QStringLiteral("(");
    for (size_t i = 0; i < ranges.size(); ++i)
        out += (i ? ",\n" : "\n") + indent(1) + describerange(ranges[i], 1);
    return out + "\n)";
}

} // namespace quendle
