#include "update/update.h"

#include "publisher/publish.h"
#include "timetable/tablefile.h"
#include "util/dates.h"
#include "util/files.h"
#include "util/text.h"

#include <QDir>
#include <QFileInfo>
#include <QUrl>

namespace quendle {

namespace {

QString setting(const DefaultsStore* d, const char* key)
{
    return d ? d->stringForKey(QString::fromLatin1(key)).trimmed() : QString();
}

QString folderurl(QString url)
{
    if (!url.endsWith(QLatin1Char('/')))
        url += QLatin1Char('/');
    return url;
}

} // namespace

Updater::Updater(const Timetable& tt, Disruptions& disruptions, Publisher& publisher, Platform& platform,
                 const Folders& folders, Host& host, Flags flags)
    : tt_(tt), disruptions_(disruptions), publisher_(publisher), platform_(platform), folders_(folders),
      host_(host), flags_(flags)
{
}

// --- the publisher's addresses -------------------------------------------------------

QString Updater::getupdateurl() const
{
    QString url = qEnvironmentVariable("QUENDLE_UPDATE_URL").trimmed();
    if (url.isEmpty())
        url = setting(platform_.defaults, "updateurl");
    return url.isEmpty() ? QString::fromLatin1(kDefaultUpdateUrl) : url;
}

QString Updater::gettablesurl() const
{
    const bool fromenv = !qEnvironmentVariable("QUENDLE_UPDATE_URL").trimmed().isEmpty();
    const QString set = fromenv ? QString() : setting(platform_.defaults, "tablesurl");
    if (!set.isEmpty())
        return folderurl(set);
    const QString beside = QUrl(getupdateurl()).resolved(QUrl(QString::fromLatin1(kTablesFolderName) + "/")).toString();
    return folderurl(beside);
}

QString Updater::getappdownloadurl() const
{
    const QString set = setting(platform_.defaults, "appdownloadurl");
    return set.isEmpty() ? QString::fromLatin1(kDefaultAppDownloadUrl) : set;
}

// --- the timer -----------------------------------------------------------------------

Date Updater::getnextupdatetime() const
{
    const Date due = addminstodate(now(), updateoverdueinterval);
    if (flags_.mylastupdateray.empty())
        return due;
    const Date weekly = adddaystodate(flags_.mylastupdateray.front(), 7);
    if (lumdateearlier(due, weekly, now()))
        return weekly;   // possibly past: the check then runs at once
    if (flags_.runupdatesincelaunch)
        return due;
    return addminstodate(now(), 1);
}

void Updater::setupdatetimer(TimerId updatetimer)
{
    Date when = getnextupdatetime();
    if (flags_.runupdatesincelaunch && when <= now())
        when = addminstodate(now(), updateoverdueinterval);
    platform_.timers->setFireDate(updatetimer, when);
}

UpdateReport Updater::updatetimerfunc()
{
    report_ = UpdateReport{};
    if (flags_.checkforupdates != 1)
        return report_;
    report_.ran = true;
    report_.appvers = getappvers();
    report_.updateurl = getupdateurl();
    flags_.runupdatesincelaunch = 1;

    report_.trackwork = disruptions_.dltrakw();
    const QString page = fetchupdatepage(&report_.why);
    report_.page = readupdatepage(page);
    if (!page.isEmpty() && !report_.page.reachable)
        report_.why = report_.page.toolarge
            ? QStringLiteral("the answer is too large to be an update page")
            : QStringLiteral("the answer is not an update page (it has no \"iphonevers\" mark)");
    report_.reachable = report_.page.reachable;
    if (report_.reachable) {
        report_.interruptions = disruptions_.dlserviceinterruptions();
        cheknewvers(report_.page);
        cheknewtables(report_.page);
        if (amizorb()) {
            if (publisher_.timefotmonthlystrip())
                publisher_.striptables();
            if (publisher_.doineedtopushupdate())
                publisher_.pushupdate();
        }
        recordsuccess();
    }
    return report_;
}

// --- the parts of a check ------------------------------------------------------------

QString Updater::fetchupdatepage(QString* why)
{
    if (!platform_.http) {
        *why = QStringLiteral("this run has no network access");
        return QString();
    }
    const QString page = platform_.http->get(getupdateurl());
    if (page.isEmpty()) {
        const QString error = platform_.http->lastError();
        *why = error.isEmpty() ? QStringLiteral("the server sent nothing")
                               : QStringLiteral("the server did not answer properly (%1)").arg(error);
    } else if (page.contains(QChar(0))) {
        *why = QStringLiteral("the answer is binary data, not a web page");
        return QString();
    }
    return page;
}

bool Updater::icanconnecttoupdateserver()
{
    QString why;
    return readupdatepage(fetchupdatepage(&why)).reachable;
}

float Updater::getonlinevers()
{
    QString why;
    return getonlineversfromstr(fetchupdatepage(&why));
}

void Updater::cheknewvers()
{
    QString why;
    cheknewvers(readupdatepage(fetchupdatepage(&why)));
}

void Updater::cheknewvers(const UpdatePage& page)
{
    if (!page.hasvers)
        return;
    const float online = page.version;
    if (getappvers() < online && getversionuserskipped() != online) {
        report_.offered = true;
        shownewversmessage(online);
    } else {
        report_.skipped = getappvers() < online;
        if (amizorb() && online != getappvers())
            publisher_.pushappupdate();
    }
    recordsuccess();
}

void Updater::cheknewtables()
{
    QString why;
    cheknewtables(readupdatepage(fetchupdatepage(&why)));
}

void Updater::cheknewtables(const UpdatePage& page)
{
    const std::vector<TableRecord>& local = tt_.mytables;
    for (size_t i = 0; i < page.tables.size(); ++i) {
        const OnlineTable& online = page.tables[i];
        bool uptodate = true;
        for (size_t j = 0; j < local.size(); ++j) {
            // The name is compared with the local table at the online position i, not j:
            // a table this installation does not hold at that position is never fetched.
            // The local date is a fixed placeholder, so a matching name is fetched anew.
            if (i < local.size() && local[i].name == online.name && local[j].datestr != online.datestr)
                uptodate = false;
            if (!uptodate)
                downloadnewtable(online.name);
        }
    }
}

bool Updater::downloadnewtable(const QString& name)
{
    TableDownload d;
    d.name = name;
    if (!isplaintablename(name)) {
        d.why = QStringLiteral("the name is not a plain file name, so it is not fetched");
        report_.downloads.push_back(d);
        return false;
    }
    d.url = gettablesurl() + QString::fromLatin1(QUrl::toPercentEncoding(name)) + ".vq";
    const QString text = platform_.http ? platform_.http->getbounded(d.url, kMaxTableBytes) : QString();
    QString why;
    if (!platform_.http)
        d.why = QStringLiteral("this run has no network access");
    else if (text.isEmpty())
        d.why = platform_.http->lastError().isEmpty()
            ? QStringLiteral("the server sent nothing")
            : QStringLiteral("the server did not answer properly (%1)").arg(platform_.http->lastError());
    else if (text.size() > kMaxTableBytes)
        d.why = QStringLiteral("it is larger than %1 MB").arg(kMaxTableBytes / (1024 * 1024));
    else if (text.contains(QChar(0)) || !isthisavalidtabletext(text))
        d.why = QStringLiteral("what came is not a valid table");
    else if (!replacefile(folders_.gettemptablesfold() + name + ".vq", text, &why))
        d.why = QStringLiteral("it could not be written (%1)").arg(why);
    else {
        d.written = true;
        d.path = folders_.gettemptablesfold() + name + ".vq";
    }
    report_.downloads.push_back(d);
    return d.written;
}

void Updater::copydownloadedtablestotablefold()
{
    const QString temp = folders_.gettemptablesfold();
    const QString fold = folders_.gettablesfold();
    const QStringList entries = QDir(temp).entryList(QDir::Files | QDir::NoDotAndDotDot, QDir::Name);
    for (const QString& name : entries) {
        const QString from = temp + name;
        const QFileInfo fi(from);
        // Only what a download wrote: plain files of a table's size.
        if (fi.isSymLink() || !fi.isFile() || fi.size() > kMaxTableBytes || !isthisavalidtable(from))
            continue;
        QString why;
        // Replaced in one step: a failure keeps the installed table and the download.
        if (!replacefile(fold + "/" + name, readfile(from), &why)) {
            qWarning("update: %s not installed, kept for the next start: %s", qPrintable(from), qPrintable(why));
            continue;
        }
        lumdelete(from, folders_.getprefsfold(), amizorb());
    }
}

float Updater::getappvers() { return floatvalue(QStringLiteral(QUENDLE_VERSION)); }

float Updater::getversionuserskipped() const
{
    return floatvalue(setting(platform_.defaults, "myskippref"));
}

void Updater::shownewversmessage(float version)
{
    if (!askuser || !platform_.alerts)
        return;
    const int answer = platform_.alerts->alert(
        QStringLiteral("Quendle has been updated. Would you like to update now ?"), QString(),
        {QStringLiteral("Skip"), QStringLiteral("Yes")});
    if (answer == 0) {
        if (DefaultsStore* d = platform_.defaults) {
            d->setString(QStringLiteral("myskippref"), QString::asprintf("%f", static_cast<double>(version)));
            d->synchronize();
        }
    } else if (answer == 1) {
        dlnewversionofapp();
    }
}

void Updater::dlnewversionofapp()
{
    if (platform_.browser)
        platform_.browser->openUrl(getappdownloadurl());
}

QString Updater::getsuccupdatepath() const { return folders_.getprefsfold() + "/succup.txt"; }

QString Updater::getlastupdatestr() const
{
    if (flags_.mylastupdateray.empty())
        return QString();
    return QStringLiteral("Last update %1").arg(lumfixdatedis(flags_.mylastupdateray.front()));
}

QString Updater::getnextupdatestr() const
{
    return QStringLiteral("Next update %1").arg(lumfixdatedis(getnextupdatetime()));
}

bool Updater::amizorb() const { return lumexist(folders_.publishermarker()); }

void Updater::recordsuccess()
{
    host_.writesuccupdate();
    report_.recorded = true;
}

} // namespace quendle
