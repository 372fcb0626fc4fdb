#include "gtfs/importgtfs.h"

#include "publisher/tablewriter.h"
#include "util/dates.h"

#include <QDir>
#include <QFileInfo>
#include <QSaveFile>

#include <map>

namespace quendle::gtfs {

QString namefromagency(const QString& agency)
{
    QString out;
    for (QChar c : agency)
        if (c.isLetterOrNumber())
            out += c;
    return out.isEmpty() ? QStringLiteral("GTFS") : out;
}

bool validtablename(const QString& name)
{
    if (name.isEmpty())
        return false;
    for (QChar c : name)
        if (!c.isLetterOrNumber() && c != QLatin1Char('-') && c != QLatin1Char('_'))
            return false;
    return true;
}

namespace {

// The agency that runs most of the kept trips.
QString mainagency(const Feed& feed)
{
    std::map<QString, int> trips;
    for (const Trip& t : feed.trips)
        ++trips[feed.routes[t.route].agencyId];
    QString best;
    int n = -1;
    for (const auto& [id, count] : trips)
        if (count > n) {
            best = id;
            n = count;
        }
    for (const auto& [id, name] : feed.agencies)
        if (id == best)
            return name;
    return feed.agencies.size() == 1 ? feed.agencies.front().second : QString();
}

} // namespace

ImportResult importgtfs(const ImportRequest& request, const QString& tablesFolder, Date now)
{
    if (!request.name.isEmpty() && !validtablename(request.name))
        throw FeedError(QString(), 0, QString(),
                        QStringLiteral("the name \"%1\" may hold only letters, digits, \"-\" and \"_\"").arg(request.name));
    const CivilTime c = civilfromdate(now);
    const QDate today(c.year, c.month, c.day);

    std::unique_ptr<FeedSource> source = FeedSource::open(request.feed);
    const Feed feed = loadfeed(*source, request.filter, request.week, today);
    source.reset();

    ImportResult r;
    r.name = request.name.isEmpty() ? namefromagency(mainagency(feed)) : request.name;
    r.path = request.out.isEmpty() ? tablesFolder + QLatin1Char('/') + r.name + QStringLiteral(".vq") : request.out;
    r.monday = feed.monday;
    r.firstDate = feed.firstDate;
    r.lastDate = feed.lastDate;
    r.warnings = feed.warnings;

    const BuiltTable table = buildtable(feed, r.name, tabledatetext(now));
    if (table.lines < 2)
        r.warnings << QStringLiteral("the table has a single line: Quendle loads it from the tables folder, but "
                                     "`table check` and table downloads take a table only with two lines or more");
    r.lines = table.lines;
    r.stations = table.stations;
    r.services = table.services;

    const QFileInfo target(r.path);
    if (target.exists() && !target.isFile())
        throw FeedError(r.path, 0, QString(), QStringLiteral("is not a regular file; nothing written"));
    if (!QFileInfo(target.absolutePath()).isDir())
        throw FeedError(r.path, 0, QString(), QStringLiteral("cannot be written: its folder does not exist"));
    QSaveFile f(r.path);
    if (!f.open(QIODevice::WriteOnly) || f.write(table.text.toUtf8()) < 0 || !f.commit())
        throw FeedError(r.path, 0, QString(), QStringLiteral("cannot be written (%1); nothing written").arg(f.errorString()));
    return r;
}

} // namespace quendle::gtfs
