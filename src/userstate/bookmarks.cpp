// The journey as the stations menu changes it, the bookmarks (one saved journey per
// first station) and the favourites counted from every station chosen.

#include "userstate/userstate.h"

#include "util/text.h"

#include <QSet>

#include <algorithm>
#include <climits>

namespace quendle {

UserState::UserState(Journey& journey, Timetable& tt, Platform& platform, Host& host, ViewState& view,
                     const Folders& folders)
    : journey_(journey), tt_(tt), platform_(platform), host_(host), view_(view), folders_(folders)
{
}

UserState::~UserState()
{
    // The alarm's callback points here.
    if (alarmtimer != kNoTimer && platform_.timers)
        platform_.timers->invalidate(alarmtimer);
}

void UserState::myselec(const QString& representedObject)
{
    if (representedObject.contains(QStringLiteral("alarm"))) {
        addalarm(10);
        return;
    }
    const QStringList parts = representedObject.split('#');
    if (parts.size() >= 2) {
        const QString name = parts[0];
        const int position = intvalue(parts[1]);
        bool loaded = false;
        if (position == 0) {
            // The journey being replaced is kept; a bookmark headed by the station comes back whole.
            writebookmark();
            loaded = chekbookmark(name);
        }
        if (!loaded) {
            if (position >= journey_.myjournstr.size())
                journey_.addtojourn(name);
            else
                changejourn(position, name);
        }
    }
    host_.calctripoptimizelater();
}

void UserState::changejourn(int position, const QString& station)
{
    if (position < 0)
        return;
    QStringList& j = journey_.myjournstr;
    if (position == 0 && j.size() > 1)
        writebookmark();
    addtofavcount(station);
    if (position < j.size())
        j[position] = station;
    // The rest of the journey goes: the user rebuilds it from here.
    while (j.size() > position + 1)
        j.removeLast();
    host_.calctripoptimizelater();
    host_.refreshdisplay();
}

void UserState::writebookmark() { writethisbookmark(journey_.myjournstr); }

void UserState::writethisbookmark(const QStringList& stations) { writethesebookmarks({stations}); }

void UserState::writethesebookmarks(const std::vector<QStringList>& lists)
{
    std::vector<Bookmark> all = std::move(mybookmarks);
    for (const QStringList& stations : lists) {
        const QStringList cleaned = makestnsvalid(stations);
        if (cleaned.size() >= 2)
            all.push_back({cleaned[0], cleaned, 1});
    }
    // A newer bookmark with the same first station replaces the older one and goes to
    // the end: keep the last of each, in order.
    QSet<QString> seen;
    std::vector<Bookmark> kept;
    for (auto it = all.rbegin(); it != all.rend(); ++it)
        if (!seen.contains(it->markheader)) {
            seen.insert(it->markheader);
            kept.push_back(std::move(*it));
        }
    std::reverse(kept.begin(), kept.end());
    mybookmarks = std::move(kept);
}

bool UserState::chekbookmark(const QString& station)
{
    for (int i = 0; i < static_cast<int>(mybookmarks.size()); ++i) {
        const Bookmark& b = mybookmarks[i];
        if (b.substns.size() <= 1 || b.markheader != station || !isthisavalidbookmark(i))
            continue;
        // One station more than a journey entered by hand may hold.
        const QStringList stations = b.substns.mid(0, journey_.maxlegs + 1);
        journey_.myjournstr = stations;
        return true;
    }
    return false;
}

bool UserState::isthisavalidbookmark(int index) const
{
    if (index < 0 || index >= static_cast<int>(mybookmarks.size()))
        return false;
    // A bookmark naming a station the tables no longer know is ignored, not deleted.
    for (const QString& s : mybookmarks[index].substns)
        if (tt_.stnnametointfixfix(s) < 0)
            return false;
    return true;
}

QStringList UserState::makestnsvalid(const QStringList& stations)
{
    QStringList out;
    out.reserve(stations.size());
    for (const QString& s : stations)
        out << lumregextremestr(s, QStringLiteral("([A-Z][a-z]{1,}\\s)?[A-Z][a-z]{1,}"));
    return out;
}

void UserState::addtofavcount(const QString& station)
{
    int score = 1;
    for (auto it = myfavs.begin(); it != myfavs.end(); ++it)
        if (isthisinthat(it->name, station)) {
            score = it->score < INT_MAX ? it->score + 1 : INT_MAX;
            myfavs.erase(it);
            break;
        }
    myfavs.push_back({station, score});
    std::stable_sort(myfavs.begin(), myfavs.end(),
                     [](const Favourite& a, const Favourite& b) { return a.score > b.score; });
    filterfavsbasedonstns();
}

void UserState::filterfavsbasedonstns()
{
    const auto byname = [](const Favourite& a, const Favourite& b) { return a.name < b.name; };
    std::stable_sort(myfavs.begin(), myfavs.end(), byname);
    myfavs.erase(std::unique(myfavs.begin(), myfavs.end(),
                             [](const Favourite& a, const Favourite& b) { return a.name == b.name; }),
                 myfavs.end());
    // Ascending: past eleven favourites, the least chosen are the ones offered. Kept so.
    std::stable_sort(myfavs.begin(), myfavs.end(),
                     [](const Favourite& a, const Favourite& b) { return a.score < b.score; });
    const auto shown = std::min<size_t>(myfavs.size(), static_cast<size_t>(std::max(0, maxfavstoshow)));
    myfavstoshow.assign(myfavs.begin(), myfavs.begin() + static_cast<std::ptrdiff_t>(shown));
    std::stable_sort(myfavstoshow.begin(), myfavstoshow.end(), byname);
}

QString UserState::abbreviatejurnifnecc(const QString& station)
{
    if (station.size() <= 12)
        return station;
    return station.left(11) + '.';
}

} // namespace quendle
