#include "publisher/timetablepage.h"

#include "util/text.h"

namespace quendle {

TimetablePage readtimetablepage(const QString& text)
{
    // The expressions read single lines; a page sent with "\r\n" line ends is the same page.
    QString page = text;
    page.replace(QLatin1String("\r\n"), QLatin1String("\n"));

    TimetablePage p;
    const QString slider = lumregextremestr(page, QStringLiteral("START:\\sTimes\\sSlider.{1,}\\n.{1,}\\n.{1,}"));
    for (const QString& piece : slider.split(QStringLiteral("hintText"))) {
        const QStringList cells = lumregextremeray(piece, QStringLiteral("(?<=td>).{1,7}(?=<)"));
        if (cells.isEmpty())
            continue;
        std::vector<int> row;
        row.reserve(cells.size());
        for (const QString& c : cells)
            row.push_back(convertstrintto25hr(c));
        p.rows.push_back(std::move(row));
    }
    p.dayname = lumregextremestr(page, QStringLiteral("(Monday|Tuesday|Wednesday|Thursday|Friday|Saturday|Sunday)"));
    // Each of these matches within a line holding its key; other lines are not searched.
    p.linename = lumregexonlines(page, u"Line", QStringLiteral("(([A-Z][a-z]{1,}|\\&)\\s?){1,}(?=\\sLine)"), true).value(0);
    p.direction = lumregexonlines(page, u"Sydney", QStringLiteral("(?<=Line).{1,}(?=Sydney)"), true).value(0);
    p.stations = lumregexonlines(page, u"stationId=", QStringLiteral("(?<=stationId=[0-9]{1,4}\">).{1,}(?=\\s?</a)"), false);
    return p;
}

int convertstrintto25hr(const QString& cell)
{
    const QString hours = lumregextremestr(cell, QStringLiteral("[0-9]{1,2}:"));
    const QString minutes = lumregextremestr(cell, QStringLiteral("(?<=:)[0-9]{2,2}"));
    if (hours.size() > 1 && minutes.size() > 1)
        return intvalue(hours) * 100 + intvalue(minutes);
    return -1;
}

std::vector<int> getstnsidontwant(const QStringList& stations)
{
    std::vector<int> out;
    for (int i = 0; i < stations.size(); ++i)
        if (!lumregextremestr(stations[i], QStringLiteral(".(?=\\sarr)")).isEmpty())
            out.push_back(i);
    return out;
}

void removetimesidontwant(ServiceRows& rows, const std::vector<int>& indexes)
{
    for (int i : indexes)
        if (i >= 0 && i < static_cast<int>(rows.size()))
            rows.erase(rows.begin() + i);
}

QStringList removestnsidontwant(const QStringList& stations, const std::vector<int>& indexes)
{
    QStringList out = stations;
    for (int i : indexes)
        if (i >= 0 && i < out.size())
            out.removeAt(i);
    return out;
}

QStringList rewritestnstonamesiwant(const QStringList& stations)
{
    QStringList out;
    for (const QString& s : stations) {
        QString name = lumregexreplace(s, QStringLiteral("\\sdep"), QString());
        name = lumregextremestr(name, QStringLiteral(".{1,}(?=\\s?)"));
        if (name.endsWith(QLatin1Char(' ')))
            name.chop(1);
        out << name;
    }
    return out;
}

ServiceRows rotatemultidarray(const ServiceRows& rows)
{
    ServiceRows out;
    if (rows.empty())
        return out;
    out.resize(rows.front().size());
    for (size_t k = 0; k < out.size(); ++k) {
        out[k].reserve(rows.size());
        for (const auto& r : rows)
            out[k].push_back(k < r.size() ? r[k] : -1);
    }
    return out;
}

bool ithisrayevenlength(const ServiceRows& rows)
{
    for (size_t i = 2; i < rows.size(); ++i)
        if (rows[i].size() != rows[i - 1].size())
            return false;
    return true;
}

} // namespace quendle
