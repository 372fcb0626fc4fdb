#include "publisher/tablewriter.h"

#include "util/dates.h"
#include "util/text.h"

namespace quendle {

namespace {

const QString kNoKey = QStringLiteral("bzbzbz");

QString dayheader(const QString& days)
{
    return QStringLiteral("\n <day num=\"%1\" pubhol=\"true\"  > ").arg(days);
}

QString closeline()
{
    return QStringLiteral("\n</forwards>\n<backwards>\n</backwards>\n</line>");
}

} // namespace

QString convertraytostr(const ServiceRows& rows, const QString& stopsText, const QString& lineName,
                        const QString& directionText, const QString& colour)
{
    QString text = QStringLiteral("\n<line name =\"%1#%2\" color=\"%3\" stops = \"%4\"  >\n")
                       .arg(lineName, directionText, colour, stopsText);
    for (const auto& row : rows) {
        for (int t : row)
            text += QString::number(t) + QLatin1Char(',');
        text += QStringLiteral("}\n");
    }
    return text;
}

QString intermediatename(const QString& lineCode, int direction, const QString& dateText, int dayNumber)
{
    // The page name keeps its two trailing blanks; the day part follows it.
    return QStringLiteral("%1%2#%3.txt  day%4].txt").arg(lineCode).arg(direction).arg(dateText).arg(dayNumber);
}

int comparediffbetweentexts(const QString& a, const QString& b)
{
    const QStringList la = a.split(QLatin1Char('\n'));
    const QStringList lb = b.split(QLatin1Char('\n'));
    if (la.size() != lb.size())
        return 100;
    int diff = 0;
    for (qsizetype i = 0; i < la.size(); ++i)
        if (la[i] != lb[i])
            ++diff;
    return diff;
}

std::vector<MergeGroup> groupcompressedtables(const std::vector<IntermediateTable>& files)
{
    std::vector<MergeGroup> groups;
    std::vector<bool> taken(files.size(), false);
    for (size_t i = 0; i < files.size(); ++i) {
        if (taken[i])
            continue;
        std::vector<size_t> members{i};
        for (size_t j = i + 1; j < files.size(); ++j)
            if (!taken[j] && comparediffbetweentexts(files[i].text, files[j].text) == 0) {
                taken[j] = true;
                members.push_back(j);
            }
        MergeGroup g;
        g.key = lumregextremestr(files[i].name, QStringLiteral(".{1,}(?=#)"));
        for (size_t m : members)
            g.days += lumregextremeray(files[m].name, QStringLiteral("(?<=day)[0-9]")).join(QString());
        g.lines = files[i].text.split(QLatin1Char('\n'));
        g.first = files[i].name;
        groups.push_back(std::move(g));
    }
    return groups;
}

QString mergegroups(const std::vector<MergeGroup>& groups, const QString& dateText, const QString& tableName)
{
    QString out = QStringLiteral("\n  <timetable name = \"%1\"  date=\"%2\" > ").arg(tableName, dateText);
    QString previous = kNoKey;
    for (const auto& g : groups) {
        const bool sameLine = g.key == previous;
        if (sameLine)
            out += dayheader(g.days);
        else if (previous != kNoKey)
            out += closeline();
        // Line 0 of an intermediate text is its leading empty line and line 1 the line
        // header, which only the line's first block writes; rows start at line 2.
        for (qsizetype i = 0; i < g.lines.size(); ++i) {
            if (!sameLine && i == 1)
                out += g.lines[1] + QLatin1Char('\n') + QStringLiteral("\n<forwards>") + QLatin1Char('\n')
                       + dayheader(g.days);
            else if (i > 1)
                out += g.lines[i];
            out += QLatin1Char('\n');
        }
        out += QStringLiteral("\n</day>");
        previous = g.key;
    }
    out += closeline() + QStringLiteral("\n</timetable>");
    return out;
}

QString tabledatetext(Date when)
{
    const CivilTime c = civilfromdate(when);
    const int hour12 = c.hour % 12 == 0 ? 12 : c.hour % 12;
    return QStringLiteral("%1 %2:%3:%4 %5")
        .arg(lumdatetostrdisplaiable(when))
        .arg(hour12)
        .arg(c.minute, 2, 10, QLatin1Char('0'))
        .arg(c.second, 2, 10, QLatin1Char('0'))
        .arg(c.hour < 12 ? QStringLiteral("AM") : QStringLiteral("PM"));
}

} // namespace quendle
