#include "update/updatepage.h"

#include "util/text.h"

#include <QStringList>

namespace quendle {

namespace {

// Only the short lines that hold the key are looked at: an endless line is not a "<!WA" line.
QString firstmatch(const QString& page, QStringView key, const QString& regex)
{
    return lumregexonlines(page, key, regex, true, kMaxUpdatePageLine).value(0);
}

} // namespace

float getonlineversfromstr(const QString& page)
{
    return floatvalue(firstmatch(page, u"macvers[", QStringLiteral("(?<=macvers\\[).{1,}(?=\\])")));
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
    const QString names = firstmatch(page, u"tablenames[", QStringLiteral("(?<=tablenames\\[).{1,}(?=\\])"));
    const QString dates = firstmatch(page, u"tabledates[", QStringLiteral("(?<=tabledates\\[).{1,}(?=\\])"));
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
