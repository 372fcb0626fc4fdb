#include "publisher/publisher.h"

#include "publisher/publish.h"
#include "timetable/tablefile.h"
#include "util/dates.h"
#include "util/files.h"
#include "util/text.h"

#include <QDateTime>
#include <QDebug>
#include <QDir>
#include <QFileInfo>
#include <QSet>

namespace quendle {

namespace {

void say(const QString& line) { qInfo().noquote() << line; }

// The first line of a NAME|... list whose NAME passes `match`; "" when none.
QString listline(const QString& path, const std::function<bool(const QString&)>& match)
{
    for (const QString& line : readfile(path).split(QLatin1Char('\n'))) {
        const QString l = line.endsWith(QLatin1Char('\r')) ? line.chopped(1) : line;
        if (match(l.section(QLatin1Char('|'), 0, 0)))
            return l;
    }
    return QString();
}

} // namespace

Publisher::Publisher(Platform& platform, const Folders& folders) : platform_(platform), folders_(folders) {}

QString Publisher::getstripbasefold() const { return folders_.getuserhomedir() + "/quendle-publisher/strip"; }
QString Publisher::getstripfold() const { return getstripbasefold() + "/pages/"; }
QString Publisher::gettempstripfold() const { return getstripbasefold() + "/pagestemp/"; }
QString Publisher::getcompressedfold() const { return getstripbasefold() + "/compressed/"; }
QString Publisher::getcomptablepath() const { return getstripbasefold() + "/SydneyTrains.vq"; }

QString Publisher::getlastpushedtablepath() const
{
    return getstripbasefold() + "/tablesonserv/" + "SydneyTrains.vq";
}

QString Publisher::getpublishfold() const { return folders_.getuserhomedir() + "/quendle-publisher/web"; }

bool Publisher::amizorb() const { return lumexist(folders_.publishermarker()); }

void Publisher::alert(const QString& message)
{
    if (platform_.alerts)
        platform_.alerts->alert(message, QString(), {});
}

// --- stripping ---------------------------------------------------------------------

bool Publisher::timefotmonthlystrip() const
{
    const QFileInfo fi(getstripfold());
    if (!fi.isDir())
        return true;
    const Date modified{static_cast<double>(fi.lastModified().toMSecsSinceEpoch()) / 1000.0};
    return calcdaysdiffint(modified, now()) > 30;
}

QStringList Publisher::directionidentifiers(const QString& bylinepage)
{
    const QString before = QString::fromLatin1(kDirectionBefore), after = QString::fromLatin1(kDirectionAfter);
    const QString hex = lumregextremestr(bylinepage, "(?<=" + before + ")[0-9A-Fa-f]{2}(?=" + after + ")");
    if (hex.isEmpty())
        return {};
    const int base = hexvaltointint(hex);
    QStringList out;
    for (int k = 0; k < 4; ++k)
        out << before + inttohexxhex(base + k) + after;
    return out;
}

QString Publisher::searchform(const QString& code, const QString& direction, Date day)
{
    // Built by concatenation: the form's own "%2F" would read as a placeholder to arg().
    const CivilTime c = civilfromdate(day);
    return "line=" + code + "&direction=" + direction + "&leaveArrive=true&selDay=" + QString::number(c.day) + "%2F"
        + QStringLiteral("%1").arg(c.month, 2, 10, QLatin1Char('0')) + "%2F" + QString::number(c.year)
        + "&fromTime=0000&toTime=2959&format=full&search=Search";
}

QString Publisher::pagefilename(const QString& code, int direction, Date day)
{
    const CivilTime c = civilfromdate(day);
    const QString date = QStringLiteral("%1-%2-%3")
                             .arg(c.year, 4, 10, QLatin1Char('0'))
                             .arg(c.month, 2, 10, QLatin1Char('0'))
                             .arg(c.day, 2, 10, QLatin1Char('0'));
    return QStringLiteral("%1%2#%3.txt  ").arg(code, QString::number(direction), date);
}

void Publisher::striptables()
{
    stripnightride();
    const QString site = operatorurl ? operatorurl() : QString();
    if (!platform_.http || site.isEmpty()) {
        say(QStringLiteral("  ###  no operator site to strip the timetables from  ###  "));
        return;
    }
    const bool mine = amizorb();
    lumdelete(gettempstripfold(), folders_.getprefsfold(), mine);
    lumdelete(getstripfold(), folders_.getprefsfold(), mine);
    QDir().mkpath(gettempstripfold());

    const QStringList codes = QString::fromLatin1(kLineCodes).split(QLatin1Char('|'));
    std::vector<QStringList> directions;
    for (const QString& code : codes) {
        directions.push_back(directionidentifiers(platform_.http->get(site + kByLinePath + code)));
        if (directions.back().isEmpty())
            say(QStringLiteral("  ###  no directions for line [%1]  ###  ").arg(code));
    }
    const Date today = now();
    for (qsizetype c = 0; c < codes.size(); ++c) {
        for (int d = 0; d < directions[c].size(); ++d) {
            for (int k = 0; k < 7; ++k) {
                const Date day = adddaystodate(today, k);
                const QString page = platform_.http->postForm(site + kSearchPath, searchform(codes[c], directions[c][d], day));
                if (!page.contains(QLatin1String(kTimesMarker)))
                    continue;
                QString why;
                if (!replacefile(gettempstripfold() + pagefilename(codes[c], d, day), page, &why))
                    say(QStringLiteral("  ###  page not kept: %1  ###  ").arg(why));
            }
        }
    }
    QDir().mkpath(getstripbasefold());
    lummove(gettempstripfold().chopped(1), getstripfold().chopped(1));
}

// --- compression and merging ---------------------------------------------------------

void Publisher::compresstables()
{
    lumdelete(getcompressedfold(), folders_.getprefsfold(), amizorb());
    QDir().mkpath(getcompressedfold());
    const QStringList pages = QDir(getstripfold()).entryList(QDir::Files, QDir::Name);
    for (const QString& p : pages)
        compressthistable(getstripfold() + p);
    mergecompressedtables();
}

QString Publisher::compressthistable(const QString& pagepath)
{
    say(QStringLiteral("  ###  beg comp this  [%1]  ###  ").arg(pagepath));
    TimetablePage p = readtimetablepage(readfile(pagepath));
    if (!ithisrayevenlength(p.rows))
        alert(QStringLiteral("uneven ray unusable table on ") + pagepath);
    const std::vector<int> arrivals = getstnsidontwant(p.stations);
    removetimesidontwant(p.rows, arrivals);
    const QStringList stations = rewritestnstonamesiwant(removestnsidontwant(p.stations, arrivals));
    const QString text = convertraytostr(rotatemultidarray(p.rows), convstnstogps(stations), p.linename, p.direction,
                                         getcolthisli(p.linename));
    const QString path = getcompressedfold() + QFileInfo(pagepath).fileName() + "day"
        + QString::number(convdowstrtoint(p.dayname)) + "].txt";
    say(QStringLiteral("  ###   writtento %1  ###  ").arg(path));
    QDir().mkpath(getcompressedfold());
    QString why;
    if (!replacefile(path, text, &why)) {
        say(QStringLiteral("  ###  not written: %1  ###  ").arg(why));
        return QString();
    }
    return path;
}

QString Publisher::mergecompressedtables()
{
    std::vector<IntermediateTable> files;
    const QStringList names = QDir(getcompressedfold()).entryList(QDir::Files, QDir::Name);
    for (const QString& n : names)
        if (isthisavalidcompressedtable(n))
            files.push_back({n, readfile(getcompressedfold() + n)});
    if (files.empty())
        return QString();
    const std::vector<MergeGroup> groups = groupcompressedtables(files);
    for (const MergeGroup& g : groups)
        if (g.days.isEmpty())
            alert(getcompressedfold() + g.first);
    const QString text = mergegroups(groups, tabledatetext(now()));
    for (const QString& out : {getcomptablepath(), getlastpushedtablepath()}) {
        QDir().mkpath(QFileInfo(out).path());
        QString why;
        if (!replacefile(out, text, &why))
            say(QStringLiteral("  ###  %1 not written: %2  ###  ").arg(out, why));
    }
    if (!verifymergedtable(getlastpushedtablepath()))
        alert(QStringLiteral("unusaaable"));
    return text;
}

bool Publisher::verifymergedtable(const QString& path)
{
    // Stops the locations list does not know are named on the console; the table is
    // taken either way (a stop without a location is drawn nowhere on the map).
    QSet<QString> known;
    for (const QString& line : readfile(locationspath).split(QLatin1Char('\n')))
        known.insert(line.section(QLatin1Char('|'), 0, 0));
    for (const QString& line : splittablelines(readfile(path))) {
        if (!line.contains(QLatin1String("line name")))
            continue;
        for (const QString& stop : line.section(QLatin1Char('"'), 5, 5).split(QLatin1Char(',')))
            if (!known.contains(stop.section(QLatin1Char('|'), 0, 0)))
                say(QStringLiteral("  ###  no location for [%1]  ###  ").arg(stop.section(QLatin1Char('|'), 0, 0)));
    }
    return true;
}

QString Publisher::getgpsthisstn(const QString& name) const
{
    const QString line = listline(locationspath, [&](const QString& n) { return n == name; });
    const QStringList parts = line.split(QLatin1Char('|'));
    if (parts.size() < 3)
        return QStringLiteral("|?|??");
    return "|" + parts[1] + "|" + parts[2];
}

QString Publisher::convstnstogps(const QStringList& names) const
{
    QStringList stops;
    for (const QString& n : names)
        stops << n + getgpsthisstn(n);
    return stops.join(QLatin1Char(','));
}

QString Publisher::getcolthisli(const QString& linename) const
{
    if (linename.isEmpty())
        return QStringLiteral("#000000");
    const QString line = listline(colourspath, [&](const QString& n) { return n.contains(linename); });
    const QString colour = line.section(QLatin1Char('|'), 1, 1);
    return colour.isEmpty() ? QStringLiteral("#000000") : colour;
}

// --- the upload step -----------------------------------------------------------------

bool Publisher::doineedtopushupdate() const
{
    const QString table = getlastpushedtablepath();
    if (!isthisavalidtable(table))
        return false;
    const QString page = readfile(getpublishfold() + "/" + kUpdatePageName);
    const QString listed = lumregextremestr(page, QStringLiteral("(?<=tabledates\\[).{1,}(?=\\])"));
    return !listed.split(QLatin1Char(',')).contains(getdatefromtablefile(table));
}

void Publisher::publishcurrent(double version)
{
    const PublishOutcome o = publishupdate(getpublishfold(), {getlastpushedtablepath()}, version);
    say(o.ok ? QStringLiteral("  ###  published to %1  ###  ").arg(getpublishfold())
             : QStringLiteral("  ###  not published: %1  ###  ").arg(o.why));
}

void Publisher::pushupdate() { publishcurrent(floatvalue(QStringLiteral(QUENDLE_VERSION))); }

void Publisher::pushappupdate() { publishcurrent(floatvalue(QStringLiteral(QUENDLE_VERSION))); }

} // namespace quendle
