// Which lines carry a traveller over each leg, and where to change when none does.

#include "journey/journey.h"

#include "util/text.h"

#include <algorithm>
#include <cmath>
#include <unordered_set>

namespace quendle {

Journey::Journey(Timetable& tt, const Clock& clock, Timers& timers, Host& host, ViewState& view)
    : tt_(tt), clock_(clock), timerService_(timers), host_(host), view_(view)
{
}

std::vector<LineMatch> Journey::getlinematches(const QString& from, const QString& to) const
{
    std::vector<LineMatch> out;
    for (int l = 0; l < static_cast<int>(tt_.linesmute.size()); ++l) {
        const LineRecord& line = tt_.linesmute[l];
        int dep = -1, dest = -1;
        for (int k = 0; k < line.stns.size(); ++k) {
            const QString& s = line.stns[k];
            if (s == from)
                dep = k;
            if (s == to)
                dest = k;
            if (dep != -1 && dest != -1 && dep <= dest) {
                out.push_back({l, line.dispname, line.name, dep, dest});
                break;
            }
        }
    }
    return out;
}

void Journey::getlinematchesforwholejourn()
{
    mylinematches.clear();
    for (int i = 0; i + 1 < myjournstr.size(); ++i)
        mylinematches.push_back(getlinematches(myjournstr[i], myjournstr[i + 1]));
}

std::vector<StationMatch> Journey::getlinematchesforthisstn(const QString& station) const
{
    std::vector<StationMatch> out;
    for (int l = 0; l < static_cast<int>(tt_.linesmute.size()); ++l) {
        const int idx = tt_.linesmute[l].stns.indexOf(station);
        if (idx >= 0)
            out.push_back({l, idx});
    }
    return out;
}

std::vector<int> Journey::getlinesforthisstnrew(const QString& station) const
{
    std::vector<int> out;
    for (int l = 0; l < static_cast<int>(tt_.linesmute.size()); ++l)
        if (tt_.linesmute[l].stns.contains(station))
            out.push_back(l);
    return out;
}

std::vector<StationOnLine> Journey::getallstnsfromtheselines(const std::vector<int>& lines) const
{
    std::vector<StationOnLine> out;
    for (int l : lines) {
        if (l < 0 || l >= static_cast<int>(tt_.linesmute.size()))
            continue;
        for (int num : tt_.linesmute[l].stnints)
            out.push_back({num, tt_.stnnumtoname(num)});
    }
    std::stable_sort(out.begin(), out.end(),
                     [](const StationOnLine& a, const StationOnLine& b) { return a.mynum < b.mynum; });
    return out;
}

std::vector<int> Journey::getstnsincommmon(const std::vector<int>& a, const std::vector<int>& b) const
{
    const std::vector<StationOnLine> first = getallstnsfromtheselines(a);
    const std::vector<StationOnLine> second = getallstnsfromtheselines(b);
    std::vector<int> out;
    // Both lists are sorted by number, so a merge finds every equal pair in the
    // same order as comparing each entry of the first with each of the second.
    size_t j0 = 0;
    for (const StationOnLine& x : first) {
        while (j0 < second.size() && second[j0].mynum < x.mynum)
            ++j0;
        for (size_t j = j0; j < second.size() && second[j].mynum == x.mynum; ++j)
            out.push_back(x.mynum);
    }
    return out;
}

float Journey::calcdist(int a, int b) const
{
    const int n = static_cast<int>(tt_.stnsmute.size());
    if (a < 0 || b < 0 || a >= n || b >= n)
        return 11111111.0f;
    // A broken coordinate reads as unknown, so its station sorts far away, not first.
    const float ha = coordvalue(tt_.stnsmute[a].hloc), hb = coordvalue(tt_.stnsmute[b].hloc);
    const float va = coordvalue(tt_.stnsmute[a].vloc), vb = coordvalue(tt_.stnsmute[b].vloc);
    const float dh = (ha - hb) * 92.0f;
    const float dv = (va - vb) * 111.0f;
    const float sum = dh * dh + dv * dv;
    return static_cast<float>(std::sqrt(static_cast<double>(sum)));
}

std::vector<ChangeCandidate> Journey::commonstnssortedbydistandcommon(const QString& from, const QString& to,
                                                                      std::vector<int> common) const
{
    const int a = tt_.stnnametoint(from);
    const int b = tt_.stnnametoint(to);
    // Repeats go, the first sighting of each station stays where it was.
    std::vector<int> unique;
    std::unordered_set<int> seen;
    for (int s : common)
        if (seen.insert(s).second)
            unique.push_back(s);
    common.swap(unique);
    std::vector<ChangeCandidate> out;
    for (int s : common) {
        // The first distance is truncated before the sum: that is how ties are meant to fall.
        const int d1 = static_cast<int>(calcdist(a, s));
        const int dist = static_cast<int>(static_cast<float>(d1) + calcdist(b, s));
        out.push_back({tt_.stnnumtoname(s), s, dist});
    }
    std::stable_sort(out.begin(), out.end(),
                     [](const ChangeCandidate& x, const ChangeCandidate& y) { return x.dist < y.dist; });
    return out;
}

QStringList Journey::getzandrel(const QString& from, const QString& to) const
{
    const std::vector<int> a = getlinesforthisstnrew(from);
    const std::vector<int> b = getlinesforthisstnrew(to);
    const std::vector<ChangeCandidate> candidates =
        commonstnssortedbydistandcommon(from, to, getstnsincommmon(a, b));
    if (!candidates.empty() && candidates.front().name != from && candidates.front().name != to)
        return {candidates.front().name};
    // The network's hub is the change station of last resort.
    if (from == QLatin1String("Central") || to == QLatin1String("Central"))
        return {};
    return {QStringLiteral("Central")};
}

bool Journey::thistheonlybrokenleg(int) const
{
    int empty = 0;
    for (const auto& m : mylinematches)
        if (m.empty())
            ++empty;
    return empty < 2;
}

void Journey::insertzandrelifnecc()
{
    // Later legs are judged by the matches as they were before any insertion.
    const int count = static_cast<int>(mylinematches.size());
    const int legs = static_cast<int>(myjournstr.size()) - 1;
    for (int i = 0; i < count && i < legs; ++i) {
        if (!mylinematches[i].empty() || !thistheonlybrokenleg(i))
            continue;
        const QStringList names = getzandrel(myjournstr[i], myjournstr[i + 1]);
        for (int k = names.size() - 1; k >= 0; --k)
            myjournstr.insert(i + 1, names[k]);
    }
    getlinematchesforwholejourn();
}

bool Journey::validlastindexleg() const
{
    if (myindexes.empty())
        return true;
    return myindexes.back() != -1;
}

bool Journey::caniextendtrip() const
{
    const int stations = static_cast<int>(myjournstr.size());
    if (stations == maxlegs)
        return false;
    if (!validlastindexleg())
        return false;
    if (stations == 2 && myservsmultid.size() == 1)
        return true;
    if (stations == 1)
        return true;
    return static_cast<int>(myservsmultid.size()) == stations - 1;
}

void Journey::addtojourn(const QString& station)
{
    if (myjournstr.size() >= maxlegs)
        return;
    myjournstr.append(station);
    host_.writeprefs();
    host_.refreshdisplay();
}

} // namespace quendle
