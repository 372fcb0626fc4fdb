#include "update/updatepage.h"

#include "util/text.h"

#include <QStringList>

namespace quendle {

namespace {

// A match never spans lines ("." stops at a line end), so the expressions are run only on
// the short lines that hold their key: the same answers, without a hostile page of one
// endless line making every attempt scan to its end.
QString firstmatch(const QString& page, QLatin1String key, const QString& regex)
{
    qsizetype from = 0;
    while (from <= page.size()) {
        qsizetype end = page.indexOf(QLatin1Char('\n'), from);
        if (end < 0)
            end = page.size();
        const QStringView line = QStringView(page).mid(from, end - from);
        if (line.size() <= kMaxUpdatePageLine && line.contains(key)) {
            const QString m = lumregextremestr(line.toString(), regex);
            if (!m.isEmpty())
                return m;
        }
        from = end + 1;
    }
    return QString();
}

} // namespace

float getonlineversfromstr(const QString& page)
{
    return floatvalue(firstmatch(page, QLatin1String("macvers["), QStringLiteral("(?<=macvers\\[).{1,}(?=\\])")));
}

UpdatePage readupdatepage(const QString& page)
{
    UpdatePage p;
    if (page.size() > kMaxUpdatePage) {
        p.toolarge = true;
        return p;
    }
    p.reachable = page.contains(QLatin1String("iphonevers"));
    p.hasvers = page.contains(QLatin1String("macvers"));
    p.version = getonlineversfromstr(page);
    const QString names = firstmatch(page, QLatin1String("tablenames["), QStringLiteral("(?<=tablenames\\[).{1,}(?=\\])"));
    const QString dates = firstmatch(page, QLatin1String("tabledates["), QStringLiteral("(?<=tabledates\\[).{1,}(?=\\])"));
    if (names.isEmpty() || dates.isEmpty())
        return p;
    const QStringList n = names.split(QLatin1Char(','));
    const QStringList d = dates.split(QLatin1Char(','));
    if (n.size() != d.size())
        return p;
    for (qsizetype i = 0; i < n.size(); ++i)
        p.tables.push_back({n[i], d[i]});
    return p;
}

} // namespace quendle
