#include "timetable/timetable.h"

#include "util/dates.h"
#include "util/files.h"
#include "util/text.h"

#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QSet>

#include <algorithm>

#include <sys/stat.h>

namespace quendle {

Timetable::Timetable(const Folders& folders, bool publisherMode)
    : folders_(folders), publisher_(publisherMode), bundledPath_(getbundledtablepath())
{
}

QString Timetable::getbundledtablepath() { return QStringLiteral(":/tables/SydneyTrains.vq"); }

namespace {

// What stands at a path, looked at without following a link.
enum class Entry { None, File, Folder, GoodLink, BadLink, Special };

Entry entryat(const QString& path, QString* kind = nullptr)
{
    struct stat own;
    const QByteArray p = QFile::encodeName(path);
    if (::lstat(p.constData(), &own) != 0)
        return Entry::None;
    auto describe = [&](const char* what) {
        if (kind)
            *kind = QString::fromUtf8(what);
    };
    if (S_ISLNK(own.st_mode)) {
        struct stat target;
        if (::stat(p.constData(), &target) != 0) {
            describe("a link to nothing");
            return Entry::BadLink;
        }
        if (S_ISREG(target.st_mode) || S_ISDIR(target.st_mode))
            return Entry::GoodLink;
        describe("a link to a FIFO or device");
        return Entry::BadLink;
    }
    if (S_ISREG(own.st_mode))
        return Entry::File;
    if (S_ISDIR(own.st_mode))
        return Entry::Folder;
    describe(S_ISFIFO(own.st_mode) ? "a FIFO" : S_ISSOCK(own.st_mode) ? "a socket" : "a device");
    return Entry::Special;
}

QString stamp()
{
    return QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-HHmmss"));
}

} // namespace

void Timetable::makeroomfortables()
{
    // The tables folder itself: a link or special file in its place goes, a plain file is
    // moved aside (it may be someone's), and the folder is made.
    const QString fold = folders_.getprefsfold() + "tablesverified";
    QString kind;
    const Entry f = entryat(fold, &kind);
    if (f == Entry::BadLink || f == Entry::Special) {
        QFile::remove(fold);
        setupnotes << QStringLiteral("%1 was %2, not a folder; it was removed and the folder made").arg(fold, kind);
    } else if (f == Entry::File) {
        const QString aside = fold + ".broken-" + stamp();
        if (QFile::rename(fold, aside))
            setupnotes << QStringLiteral("%1 was a file, not a folder; it was moved to %2 and the folder made")
                              .arg(fold, aside);
        else
            setupnotes << QStringLiteral("%1 is a file, not a folder, and cannot be moved aside; no table "
                                         "can be installed")
                              .arg(fold);
    }
    folders_.gettablesfold();

    // The built-in table's own place: a broken link or a special file there would stop it
    // from being installed; a folder there is the user's and stays, the table going beside it.
    const QString installed = fold + "/SydneyTrains.vq";
    const Entry e = entryat(installed, &kind);
    if (e == Entry::BadLink || e == Entry::Special) {
        QFile::remove(installed);
        setupnotes << QStringLiteral("%1 was %2; it was removed and the built-in table installed in its place")
                          .arg(installed, kind);
    } else if (e == Entry::Folder) {
        setupnotes << QStringLiteral("%1 is a folder; it was left alone and the built-in table is kept as %2")
                          .arg(installed, installedtablepath());
    }
}

QString Timetable::installedtablepath() const
{
    const QString fold = folders_.getprefsfold() + "tablesverified";
    const QString usual = fold + "/SydneyTrains.vq";
    return entryat(usual) == Entry::Folder ? fold + "/SydneyTrains.builtin.vq" : usual;
}

void Timetable::setuptables()
{
    tabledates.clear();
    mytables.clear();
    cache_.clear();
    setupnotes.clear();
    makeroomfortables();
    if (downloadedTablesHook)
        downloadedTablesHook();
    else
        copydownloadedtablestotablefold();
    copybundledtablesifmorerecent();
    copybundledtablesifnothing();
    removedexpiredtables();

    // Sorted by name so that table numbers are stable from one start to the next.
    const QString fold = folders_.gettablesfold();
    QDirIterator it(fold, QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot | QDir::Hidden,
                    QDirIterator::Subdirectories);
    QStringList found;
    while (it.hasNext()) {
        const QString full = it.next();
        const QString relative = full.mid(fold.size() + 1);
        if (relative.contains(QLatin1String("vq")))
            found << full;
    }
    found.sort();
    for (const QString& path : found)
        loadthistable(path);
}

void Timetable::copydownloadedtablestotablefold()
{
    const QString temp = folders_.gettemptablesfold();
    const QString fold = folders_.gettablesfold();
    const QStringList entries = QDir(temp).entryList(QDir::Files | QDir::NoDotAndDotDot, QDir::Name);
    for (const QString& name : entries) {
        const QString from = temp + name;
        if (!isthisavalidtable(from))
            continue;
        const QString to = fold + "/" + name;
        if (entryat(to) == Entry::Folder) {   // never removed to make room
            setupnotes << QStringLiteral("%1 is a folder, so the downloaded table %2 was not installed").arg(to, name);
            continue;
        }
        lumdelete(to, folders_.getprefsfold(), publisher_);
        lumcopy(from, to);
        lumdelete(from, folders_.getprefsfold(), publisher_);
    }
}

void Timetable::copybundledtablesifmorerecent()
{
    if (getmytablesinmahfold().isEmpty())
        return;
    const QString installed = installedtablepath();
    const Date bundledDate = tabledatetodate(datefromtablelines(cache_.lines(bundledPath_)));
    const Date installedDate = tabledatetodate(datefromtablelines(cache_.lines(installed)));
    // The comparison is made relative to "now", but only the order of the two dates matters.
    if (testlumdateearlier(installedDate, bundledDate)) {
        lumdelete(installed, folders_.getprefsfold(), publisher_);
        installbundled(installed);
    }
}

void Timetable::installbundled(const QString& installed)
{
    if (!lumcopy(bundledPath_, installed)) {
        if (lumexist(bundledPath_))
            setupnotes << QStringLiteral("the built-in table could not be installed as %1").arg(installed);
        return;
    }
    // Resource files copy read-only; a later update must be able to replace it.
    QFile::setPermissions(installed, QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup | QFile::ReadOther);
}

void Timetable::copybundledtablesifnothing()
{
    // A folder in the built-in table's place holds no table of its own.
    const QStringList present = getmytablesinmahfold();
    if (!present.isEmpty() && !(present.size() == 1 && entryat(present.front()) == Entry::Folder))
        return;
    installbundled(installedtablepath());
}

void Timetable::loadthistable(const QString& path)
{
    const QStringList parts = path.split('/');
    if (parts.size() <= 1)
        return;
    const QString fileName = parts.last();
    const QStringList nameParts = fileName.split('.');
    if (nameParts.size() <= 1)
        return;
    TableRecord r;
    r.name = nameParts[0];
    r.displayname = fileName;
    r.datestr = QStringLiteral("jun 11");
    r.datefile = datefromtablelines(cache_.lines(path));
    r.tablepath = path;
    r.enabled = QStringLiteral("1");
    mytables.push_back(r);
}

QStringList Timetable::getmytablesinmahfold() const
{
    const QString fold = folders_.gettablesfold();
    QStringList out;
    const QStringList entries = QDir(fold).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden,
                                                     QDir::Name);
    for (const QString& name : entries)
        if (name.contains(QLatin1String("vq")))
            out << fold + "/" + name;
    return out;
}

QString Timetable::gettabledateandname(int index) const
{
    if (index < 0 || index >= static_cast<int>(mytables.size()))
        return QString();
    return mytables[index].name + " " + mytables[index].datefile;
}

bool Timetable::getenabledstatoftable(int) const { return false; }

QString Timetable::getthistablepath(const QString& path)
{
    return lumexist(path) ? path : QString();
}

void Timetable::setuplinesmultitable()
{
    linesmute.clear();
    for (int t = 0; t < static_cast<int>(mytables.size()); ++t)
        addlinesfromthistabletothis(mytables[t].tablepath, linesmute, t);
}

void Timetable::addlinesfromthistabletothis(const QString& path, std::vector<LineRecord>& list,
                                            int tablenum)
{
    // Start-up reads each table for its date, its lines and its rows: one read serves all.
    const QStringList& lines = cache_.lines(path);
    for (const QString& l : lines) {
        if (!l.contains(QLatin1String("line name")))
            continue;
        const QStringList pieces = l.split('"');
        if (pieces.size() <= 4)
            continue;
        LineRecord rec;
        rec.name = pieces[1];
        rec.hexcol = pieces[3];
        const QString stops = pieces.size() > 5 ? pieces[5] : QString();
        for (const QString& stop : stops.split(',')) {
            const QStringList s = stop.split('|');
            if (s.size() <= 2)
                continue;
            rec.stns << s[0];
            rec.stnsh << s[1];
            rec.stnsv << s[2];
        }
        rec.dispname = rec.name.section('#', 0, 0);
        rec.nscol = hexvaltoint(rec.hexcol.mid(1));
        rec.network = path;
        rec.mytablenum = tablenum;
        rec.pathotable = path;
        list.push_back(std::move(rec));
    }
}

void Timetable::setupstnsmute()
{
    stnsmute.clear();
    for (const LineRecord& line : linesmute)
        for (int i = 0; i < line.stns.size(); ++i)
            stnsmute.push_back({line.stns[i], line.stnsh.value(i), line.stnsv.value(i)});
    // Later copies go; a name with other coordinates is another station.
    std::vector<StationRecord> unique;
    unique.reserve(stnsmute.size());
    QSet<QString> seen;
    for (const StationRecord& s : stnsmute) {
        const QString key = s.name + QChar(0x1f) + s.hloc + QChar(0x1f) + s.vloc;
        if (seen.contains(key))
            continue;
        seen.insert(key);
        unique.push_back(s);
    }
    // Plain UTF-16 code comparison: capitals before lower case, a blank before any letter.
    std::stable_sort(unique.begin(), unique.end(), [](const StationRecord& a, const StationRecord& b) {
        return QString::compare(a.name, b.name, Qt::CaseSensitive) < 0;
    });
    stnsmute = std::move(unique);
    // Numbering every stop of every line looks each name up: a hash, not a scan.
    stnindex_.clear();
    stnindex_.reserve(static_cast<qsizetype>(stnsmute.size()));
    for (int i = static_cast<int>(stnsmute.size()) - 1; i >= 0; --i)
        stnindex_.insert(stnsmute[i].name, i);   // backwards, so the first of equal names wins
    stnindexsize_ = stnsmute.size();
}

void Timetable::rewritelinesmutewithstnnums()
{
    for (LineRecord& line : linesmute) {
        line.stnints.clear();
        for (const QString& s : line.stns)
            line.stnints.push_back(stnnametoint(s));
    }
}

int Timetable::stnnametonum(const QString& name) const
{
    if (stnindexsize_ == stnsmute.size() && !stnsmute.empty()) {
        const auto it = stnindex_.constFind(name);
        return it == stnindex_.constEnd() ? -1 : *it;
    }
    for (int i = 0; i < static_cast<int>(stnsmute.size()); ++i)
        if (stnsmute[i].name == name)
            return i;
    return -1;
}

int Timetable::stnnametoint(const QString& name) const
{
    const int n = stnnametonum(name);
    return n < 0 ? 0 : n;
}

QString Timetable::stnnumtoname(int num) const
{
    if (num < 0 || num >= static_cast<int>(stnsmute.size()))
        return QString();
    return stnsmute[num].name;
}

QString Timetable::linenumtoname(int num) const
{
    if (num < 0 || num >= static_cast<int>(linesmute.size()))
        return QString();
    return linesmute[num].name;
}

QString Timetable::linenameandstntoname(int line, int stop) const
{
    if (line < 0 || line >= static_cast<int>(linesmute.size()))
        return QStringLiteral(" ");
    const QStringList& stns = linesmute[line].stns;
    if (stop < 0 || stop >= stns.size())
        return QStringLiteral(" ");
    return stns[stop];
}

int Timetable::linenametonum(const QString& text) const
{
    for (int l = 0; l < static_cast<int>(linesmute.size()); ++l)
        if (matchatleasthalfofwords(text, linesmute[l].dispname))
            return l;
    return -1;
}

std::vector<int> Timetable::linenametonums(const QString& text) const
{
    const QString shortname = abbreviatelinename(text);
    std::vector<int> out;
    for (int l = 0; l < static_cast<int>(linesmute.size()); ++l)
        if (matchatleasthalfofwords(shortname, linesmute[l].dispname))
            out.push_back(l);
    return out;
}

int Timetable::thisstnonthisline(const QString& name, int line) const
{
    if (line < 0 || line >= static_cast<int>(linesmute.size()))
        return -1;
    const QStringList& stns = linesmute[line].stns;
    for (int i = 0; i < stns.size(); ++i)
        if (stns[i].contains(name))
            return i;
    return -1;
}

std::vector<LineForStation> Timetable::getlinesforthisstn(const QString& name) const
{
    std::vector<LineForStation> out;
    for (int l = 0; l < static_cast<int>(linesmute.size()); ++l) {
        const int idx = linesmute[l].stns.indexOf(name);
        if (idx >= 0)
            out.push_back({QString::number(l), QString::number(idx), QString(), linesmute[l].name});
    }
    return out;
}

RowsPtr Timetable::getthislinetimesnew(const QString& lineName, Date day, int linenum)
{
    static const RowsPtr none = std::make_shared<const Rows>();
    if (linenum < 0 || linenum >= static_cast<int>(linesmute.size()))
        return none;
    // A missing file reads as no rows; the cache finds that out with the same look at the
    // file that tells it whether the file changed.
    return cache_.linetimes(linesmute[linenum].network, lineName, javadowtoobcdow(datetodayofweek(day)));
}

Rows Timetable::getthislinetimesliteral(const QString& lineName, Date day, int linenum) const
{
    if (linenum < 0 || linenum >= static_cast<int>(linesmute.size()))
        return {};
    const QString path = getthistablepath(linesmute[linenum].network);
    const QStringList lines = splittablelines(readfile(path));
    return linetimesfromlines(lines, lineName, javadowtoobcdow(datetodayofweek(day)));
}

} // namespace quendle
