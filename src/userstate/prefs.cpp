// Saving and restoring the user's state: three keys of the defaults store (what start-up
// reads back) and the bracket-marked file "quendlepref.txt" (which holds everything).

#include "userstate/userstate.h"

#include "util/dates.h"
#include "util/files.h"
#include "util/text.h"

#include <QFileInfo>
#include <QStringView>

#include <algorithm>
#include <climits>

namespace quendle {

namespace {

const QString kJourneyKey = QStringLiteral("journstrpref");
const QString kFavouritesKey = QStringLiteral("myfavsspref");
const QString kBookmarksKey = QStringLiteral("bookmarkspref");

// A real preferences text is a few kilobytes; anything past this is damage and reads as
// unreadable, so a hostile or broken store cannot make start-up crawl.
constexpr qsizetype kMaxPrefsText = 1 << 20;

// Calls f on each piece of text between separators (an empty text is one empty piece)
// until f answers false, without making a list of them all.
template <typename F>
void eachpiece(QStringView text, QChar sep, F f)
{
    qsizetype from = 0;
    for (;;) {
        const qsizetype at = text.indexOf(sep, from);
        if (!f(text.mid(from, at < 0 ? text.size() - from : at - from)))
            return;
        if (at < 0)
            return;
        from = at + 1;
    }
}

// Names never hold control characters; a piece that does is damage, and kept it would
// break the line structure of the next file written.
bool plain(QStringView text)
{
    return std::none_of(text.begin(), text.end(), [](QChar c) { return c.unicode() < 0x20 || c.unicode() == 0x7f; });
}

// The station lists of a bookmarks text, "A|B#C|D".
std::vector<QStringList> bookmarklists(const QString& text)
{
    std::vector<QStringList> lists;
    eachpiece(text, '#', [&](QStringView piece) {
        if (plain(piece))
            lists.push_back(piece.toString().split('|'));
        return true;
    });
    return lists;
}

QString preffiletext(const QString& path)
{
    const QFileInfo fi(path);
    if (!fi.isFile() || fi.size() > kMaxPrefsText)
        return QString();
    return readfile(path);
}

} // namespace

QString UserState::getprefspath() const { return folders_.getprefsfold() + QStringLiteral("quendlepref.txt"); }

QString UserState::journeytext() const
{
    QString t;
    for (const QString& s : journey_.myjournstr)
        t += s + '|';
    return t;
}

QString UserState::favouritestext() const
{
    QString t;
    for (const Favourite& f : myfavs)
        t += f.name + '|' + QString::number(f.score) + '#';
    return t;
}

QString UserState::bookmarkstext() const
{
    QStringList each;
    for (const Bookmark& b : mybookmarks)
        each << b.substns.join('|');
    return each.join('#');
}

QString UserState::lastupdateline() const
{
    const Date updated = mylastupdateray && !mylastupdateray->empty() ? mylastupdateray->front()
                                                                        : adddaystodate(now(), -165);
    return "]updatestr[" + lumdatetostr(updated) + "]updatestr[";
}

bool UserState::writelastupdate()
{
    if (ivereadprefs == 0)
        return false;
    const QString path = getprefspath();
    const QFileInfo fi(path);
    if (!fi.exists())
        return replacefile(path, prefsfiletext());
    if (!fi.isFile() || fi.size() > kMaxPrefsText)
        return false;
    QString text = readfile(path);
    if (text.isEmpty() && fi.size() > 0)
        return false;
    QStringList lines = text.split('\n');
    bool found = false;
    for (QString& line : lines) {
        if (line.contains(QLatin1String("]updatestr["))) {
            line = lastupdateline();
            found = true;
        }
    }
    if (!found)
        lines << lastupdateline();
    return replacefile(path, lines.join('\n'));
}

QString UserState::prefsfiletext() const
{
    QString t = journeytext();
    t += "\n\n]favourites[" + favouritestext() + "]favourites[";
    t += "\n]bookmarks[" + bookmarkstext() + "]bookmarks[";
    t += "\n]dateimlookinat[" + getdateimlookinat() + "]dateimlookinat[";
    // Only the first alarm is kept: one alarm survives a restart.
    if (!myalarms.empty()) {
        const Alarm& a = myalarms.front();
        t += "\n]myalarm[" + a.dep + '#' + a.dest + '#' + lumdatetostr(a.date) + '#'
            + QString::number(a.advancemins) + "]myalarm[";
    }
    t += "\n" + lastupdateline();
    const Rect frame = platform_.window ? platform_.window->frame() : Rect{};
    t += "\n]mysize[" + QString::asprintf("%f|%f", frame.w, frame.h) + "]mysize[";
    return t;
}

void UserState::writeprefs()
{
    lastsaveok_ = false;
    // A save before the first read would replace the saved state with empty lists.
    if (ivereadprefs == 0)
        return;
    bool ok = true;
    if (DefaultsStore* d = platform_.defaults) {
        const std::pair<QString, QString> keys[] = {
            {kJourneyKey, journeytext()}, {kFavouritesKey, favouritestext()}, {kBookmarksKey, bookmarkstext()}};
        for (const auto& [key, value] : keys) {
            d->setString(key, value);
            d->synchronize();
            ok = ok && !d->synchronizeFailed();
        }
    }
    // Nothing is reported: an unwritable folder leaves the old file and the state in memory.
    ok = replacefile(getprefspath(), prefsfiletext()) && ok;
    lastsaveok_ = ok;
}

bool UserState::knownstation(const QString& name) const
{
    if (!Timetable::validstn(name) || !plain(name))
        return false;
    // Without any table every name is unknown; the journey is then kept as saved rather
    // than emptied and saved empty.
    return tt_.stnsmute.empty() || tt_.stnnametonum(name) >= 0;
}

void UserState::readjourney(const QString& text, int maxpieces)
{
    // A journey grows past the hand-entered limit only by change stations; this bound is
    // far above that and keeps a damaged store from making a journey of thousands of legs.
    const int keep = 2 * journey_.maxlegs;
    QStringList stations;
    int looked = 0;
    eachpiece(text, '|', [&](QStringView piece) {
        const QString name = piece.toString();
        if (knownstation(name))
            stations << name;
        return ++looked < maxpieces && stations.size() < keep;
    });
    journey_.myjournstr = stations;
}

void UserState::readfavourites(const QString& text)
{
    eachpiece(text, '#', [&](QStringView piece) {
        const qsizetype bar = piece.indexOf('|');
        if (bar >= 0 && plain(piece))
            myfavs.push_back({piece.left(bar).toString(), intvalue(piece.mid(bar + 1).toString())});
        return true;
    });
    std::stable_sort(myfavs.begin(), myfavs.end(),
                     [](const Favourite& a, const Favourite& b) { return a.name < b.name; });
}

void UserState::readprefs()
{
    ivereadprefs = 1;
    DefaultsStore* d = platform_.defaults;
    auto stored = [d](const QString& key, QString* value) {
        if (!d || !d->contains(key))
            return false;
        *value = d->stringForKey(key);
        return value->size() <= kMaxPrefsText;
    };
    QString text;
    if (stored(kJourneyKey, &text))
        readjourney(text, INT_MAX);

    mybookmarks.clear();
    if (stored(kBookmarksKey, &text))
        writethesebookmarks(bookmarklists(text));

    myfavs.clear();
    if (stored(kFavouritesKey, &text))
        readfavourites(text);
    filterfavsbasedonstns();
}

void UserState::readprefsold()
{
    ivereadprefs = 1;
    const QString path = getprefspath();
    if (!lumexist(path)) {
        lumalert(QStringLiteral("writinnewpref"));
        writeprefs();
    }
    readprefstext(preffiletext(path));
}

void UserState::readprefstext(const QString& text)
{
    const QStringList lines = text.split('\n');
    mybookmarks.clear();

    if (lines.front().contains('|'))
        readjourney(lines.front(), journey_.maxlegs);

    for (const QString& line : lines) {
        if (isthisinthat(QStringLiteral("bookmarks"), line)) {
            // The whole line, markers and all: the cleaning of the names takes them off.
            writethesebookmarks(bookmarklists(line));
        }
        if (isthisinthat(QStringLiteral("dateimlookinat"), line)) {
            const QStringList parts = line.split(QStringLiteral("]dateimlookinat["));
            if (parts.size() > 2 && canthisbeconvertedtodate(parts[1]))
                journey_.myfuturetimes.push_back(lumstrtodate(parts[1]));
        }
        if (isthisinthat(QStringLiteral("alarm"), line)) {
            const QString inner = lumregextremestr(line, QStringLiteral("(?<=\\]myalarm\\[).{1,}(?=\\]myalarm\\[)"));
            const QStringList parts = inner.split('#');
            // The advance handed on is the leading number of the date text (its hour),
            // not the saved minutes: that is how this reader has always read it.
            if (parts.size() > 3)
                addalarmwithtstuff(parts[0], parts[1], intvalue(parts[2]), lumstrtodate(parts[2]));
        }
        if (isthisinthat(QStringLiteral("updatestr["), line)) {
            const QStringList parts = line.split(QStringLiteral("]updatestr["));
            if (parts.size() > 2 && mylastupdateray)
                *mylastupdateray = {lumstrtodatebadvalprotect(parts[1], now())};
        }
        if (isthisinthat(QStringLiteral("favourites"), line)) {
            const QStringList parts = line.split(QStringLiteral("]favourites["));
            if (parts.size() > 2)
                readfavourites(parts[1]);
        }
    }
    filterfavsbasedonstns();
}

void UserState::lumalert(const QString& text)
{
    if (platform_.alerts)
        platform_.alerts->alert(text, QString(), {QStringLiteral("OK")});
}

} // namespace quendle
