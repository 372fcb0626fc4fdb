// The services of every leg over the next days, the chains that connect them
// across the legs, and each chain's travel and waiting time.

#include "journey/journey.h"

#include "util/dates.h"
#include "util/durations.h"
#include "util/files.h"

#include <algorithm>
#include <cstdint>

namespace quendle {

namespace {

// The row's times from the first to the second station, or nothing for a service made
// without a source.
const Row* rowof(const Service& s)
{
    if (!s.source || !s.source->rows || s.row < 0 || s.row >= static_cast<int>(s.source->rows->size()))
        return nullptr;
    const Row& r = (*s.source->rows)[s.row];
    return s.depint >= 0 && s.depint <= s.destint && s.destint < static_cast<int>(r.size()) ? &r : nullptr;
}

} // namespace

std::vector<int> Service::rawstops() const
{
    std::vector<int> out;
    if (const Row* r = rowof(*this))
        out.assign(r->begin() + depint, r->begin() + destint + 1);
    return out;
}

std::vector<int> Service::stopnums() const
{
    std::vector<int> out;
    if (const Row* r = rowof(*this)) {
        for (int p = depint; p <= destint; ++p)
            if ((*r)[p] != -1 && p < static_cast<int>(source->stnints.size()))
                out.push_back(source->stnints[p]);
    }
    return out;
}

std::vector<Date> Service::stoptimes() const
{
    std::vector<Date> out;
    const Row* r = rowof(*this);
    if (!r)
        return out;
    // As the services were made: a fall of more than five hours between two stops means
    // the rest of the stops are after midnight.
    bool crossed = depcrossedmid != 0;
    int previous = 2511;
    for (int p = depint; p <= destint; ++p) {
        const int t = (*r)[p];
        if (t == -1)
            continue;
        if (previous < 2400 && int64_t(t) - previous < -500)
            crossed = true;
        out.push_back(crossed ? source->tomorrow.at(t) : source->today.at(t));
        previous = t;
    }
    return out;
}

QString Service::debugstops() const
{
    QString out;
    for (int t : rawstops())
        out += QString::number(t) + QLatin1Char(',');
    return out;
}

std::vector<Service> Journey::getallservsnewer(int leg)
{
    std::vector<Service> collected;
    if (leg < 0 || leg + 1 >= myjournstr.size())
        return collected;
    const std::vector<LineMatch> matches = getlinematches(myjournstr[leg], myjournstr[leg + 1]);
    const Date start = now();
    // Each day's rows of each match, fetched first so that the records are made in place
    // once: growing the list would move every record made so far, again and again.
    std::vector<RowsPtr> dayrows;
    size_t rowcount = 0;
    for (int d = 0; d < lummaxdaystosrch; ++d) {
        const Date day = adddaystodate(start, d);
        for (const LineMatch& m : matches) {
            dayrows.push_back(tt_.getthislinetimesnew(m.matchlinename, day, m.linenum));
            rowcount += dayrows.back() ? dayrows.back()->size() : 0;
        }
    }
    collected.reserve(rowcount);
    for (int d = 0; d < lummaxdaystosrch; ++d) {
        const Date day = adddaystodate(start, d);
        const ServiceDayClock today(day);
        const ServiceDayClock tomorrow(adddaystodate(day, 1));
        for (size_t mi = 0; mi < matches.size(); ++mi) {
            const LineMatch& m = matches[mi];
            const int dep = m.depint, dest = m.destint;
            const RowsPtr& rows = dayrows[d * matches.size() + mi];
            if (!rows || rows->empty())
                continue;
            const auto source =
                std::make_shared<const StopSource>(rows, tt_.linesmute[m.linenum].stnints, today, tomorrow);
            // 9900 is past 2400, so the first service never counts as crossing midnight.
            int lastDep = 9900, lastArr = 9900;
            bool depCrossed = false, arrCrossed = false;
            for (int r = 0; r < static_cast<int>(rows->size()); ++r) {
                const Row& s = (*rows)[r];
                if (!(dep < static_cast<int>(s.size()) && dest < static_cast<int>(s.size())))
                    continue;
                const int d0 = s[dep], a0 = s[dest];
                if (d0 == -1 || a0 == -1)
                    continue;
                // Operators print small hours as 0005 after 2355 on some lines: a fall of more
                // than two hours means the rest of the day's services run after midnight.
                // In 64 bits: no time the reader lets through can overflow the difference.
                if (d0 < 2400 && lastDep < 2400 && int64_t(d0) - lastDep < -200)
                    depCrossed = true;
                if (a0 < 2400 && lastArr < 2400 && int64_t(a0) - lastArr < -200)
                    arrCrossed = true;
                Service sv;
                sv.linenum = m.linenum;
                sv.depint = dep;
                sv.destint = dest;
                sv.source = source;
                sv.row = r;
                sv.deptime = zerosecondsdate(today.at(d0));
                if (depCrossed)
                    sv.deptime = adddaystodate(sv.deptime, 1);
                // The stops themselves are listed when asked (Service::stoptimes); whether
                // one of them falls after midnight decides the arrival's day here.
                bool stopCrossed = depCrossed;
                int previous = 2511;
                for (int p = dep; p <= dest && !stopCrossed; ++p) {
                    const int t = s[p];
                    if (t == -1)
                        continue;
                    if (previous < 2400 && int64_t(t) - previous < -500)
                        stopCrossed = true;
                    previous = t;
                }
                sv.desttime = today.at(a0);
                if (arrCrossed || stopCrossed)
                    sv.desttime = adddaystodate(sv.desttime, 1);
                sv.depcrossedmid = depCrossed ? 1 : 0;
                sv.destcrossedmid = arrCrossed ? 1 : 0;
                collected.push_back(std::move(sv));
                lastDep = d0;
                lastArr = a0;
            }
        }
    }
    // Sort positions rather than whole records: a record is a few vectors, moved once here.
    std::vector<int> order(collected.size());
    for (size_t i = 0; i < order.size(); ++i)
        order[i] = static_cast<int>(i);
    std::stable_sort(order.begin(), order.end(),
                     [&](int a, int b) { return collected[a].desttime < collected[b].desttime; });
    std::vector<Service> sorted;
    sorted.reserve(order.size());
    for (const int i : order)
        sorted.push_back(std::move(collected[i]));
    return removedupetrips(std::move(sorted));
}

std::vector<Service> Journey::removedupetrips(std::vector<Service> services)
{
    // Of two neighbours with the same departure the later-listed stays; removing one and
    // testing the same place again comes to keeping each service whose successor departs
    // otherwise.
    std::vector<Service> out;
    out.reserve(services.size());
    for (size_t i = 0; i < services.size(); ++i) {
        if (i + 1 < services.size() && services[i].deptime == services[i + 1].deptime)
            continue;
        out.push_back(std::move(services[i]));
    }
    return out;
}

void Journey::recalcservices()
{
    myservsmultid.clear();
    stickyindexes.clear();
    for (int i = 0; i + 1 < myjournstr.size(); ++i) {
        myservsmultid.push_back(getallservsnewer(i));
        stickyindexes.push_back(1);
    }
}

void Journey::setmyconnectingservs()
{
    connectingservs.clear();
    if (myservsmultid.empty())
        return;
    const int legs = legcount();
    const int wanted = static_cast<int>(myjournstr.size()) - 1;
    // Each leg is in arrival order, not departure order. The running maximum of the
    // departures rises exactly where the first service departing after a moment
    // stands, which lets a binary search find it.
    std::vector<std::vector<double>> risingDep(legs);
    for (int l = 0; l < legs; ++l) {
        double best = -1e300;
        risingDep[l].reserve(myservsmultid[l].size());
        for (const Service& s : myservsmultid[l]) {
            best = std::max(best, s.deptime.secs);
            risingDep[l].push_back(best);
        }
    }
    const int firstCount = static_cast<int>(myservsmultid[0].size());
    for (int s = 0; s < firstCount; ++s) {
        Chain chain{s};
        for (int l = 1; l < legs; ++l) {
            const int k = chain.back();
            if (k >= static_cast<int>(myservsmultid[l - 1].size()))
                continue;
            // Strictly more than the minimum wait after the arrival.
            const double threshold = addminstodate(myservsmultid[l - 1][k].desttime, minconnectionwwait).secs;
            const auto& rising = risingDep[l];
            const auto it = std::upper_bound(rising.begin(), rising.end(), threshold);
            if (it != rising.end())
                chain.push_back(static_cast<int>(it - rising.begin()));
        }
        if (static_cast<int>(chain.size()) == wanted)
            connectingservs.push_back(std::move(chain));
    }
}

void Journey::chekcollisionsforward()
{
    for (int i = view_.vimselectin + 1; i < static_cast<int>(myindexes.size()); ++i) {
        if (i < 1 || i >= legcount())
            continue;
        const int cur = myindexes[i], prev = myindexes[i - 1];
        const auto& here = myservsmultid[i];
        const auto& before = myservsmultid[i - 1];
        if (cur < 0 || prev < 0 || cur >= static_cast<int>(here.size())
            || prev >= static_cast<int>(before.size()))
            continue;
        const Date arrival = before[prev].desttime;
        if (!testlumdateearlier(here[cur].deptime, arrival))
            continue;
        int k = cur;
        while (k < static_cast<int>(here.size()) && testlumdateearlier(here[k].deptime, arrival))
            ++k;
        myindexes[i] = k;
    }
}

void Journey::chekcollisionsbackward()
{
    for (int i = view_.vimselectin - 1; i >= 0; --i) {
        if (i + 1 >= static_cast<int>(myindexes.size()) || i + 1 >= legcount())
            continue;
        const int cur = myindexes[i], next = myindexes[i + 1];
        const auto& here = myservsmultid[i];
        const auto& after = myservsmultid[i + 1];
        if (next < 0 || next >= static_cast<int>(after.size()) || cur < 0
            || cur >= static_cast<int>(here.size()))
            continue;
        const Date departure = after[next].deptime;
        if (!testlumdateearlier(departure, here[cur].desttime))
            continue;
        int k = cur;
        while (k >= 1 && testlumdateearlier(departure, here[k].desttime))
            --k;
        myindexes[i] = k;
    }
}

TravelTime Journey::traveltimeforthisconnek(int c) const
{
    int travel = 0, wait = 0;
    if (c >= 0 && c < static_cast<int>(connectingservs.size())) {
        const Chain& chain = connectingservs[c];
        Date previousArrival, firstDeparture;
        const int lastLeg = legcount() - 1;
        for (int k = 0; k < static_cast<int>(chain.size()); ++k) {
            const int j = chain[k];
            if (k >= legcount() || j < 0 || j >= static_cast<int>(myservsmultid[k].size()))
                continue;
            const Service& s = myservsmultid[k][j];
            if (k > 0)
                wait += calctimediffmin(previousArrival, s.deptime) + 1;   // a minute per change, as always shown
            previousArrival = s.desttime;
            if (k == 0)
                firstDeparture = s.deptime;
            if (k == lastLeg)
                travel = calctimediffmin(firstDeparture, s.desttime);
        }
    }
    return {travel, wait, mintostr(travel), mintostr(wait)};
}

void Journey::calctraveltimes()
{
    mytraveltimes.clear();
    mytraveltimesint.clear();
    minzztraveltime = -1;
    maxzztraveltime = -1;
    for (int c = 0; c < static_cast<int>(connectingservs.size()); ++c) {
        const TravelTime t = traveltimeforthisconnek(c);
        mytraveltimes.push_back(t);
        if (t.traelminint != 0) {
            if (minzztraveltime == -1 || t.traelminint < minzztraveltime)
                minzztraveltime = t.traelminint;
            if (maxzztraveltime == -1 || t.traelminint > maxzztraveltime)
                maxzztraveltime = t.traelminint;
        }
    }
    totalaveragetraveltimes = 111;
}

bool Journey::isitfastest(int chain) const
{
    if (chain < 0 || chain >= static_cast<int>(mytraveltimes.size()))
        return false;
    return mytraveltimes[chain].traelminint == minzztraveltime;
}

void Journey::setupstnconnections(const QString& path) { setupstnconnectionsfromtext(readfile(path)); }

void Journey::setupstnconnectionsfromtext(const QString& text)
{
    stnsconnections.assign(tt_.stnsmute.size(), QStringList());
    if (text.isEmpty())
        return;
    for (const QString& line : text.split('\n')) {
        const QStringList dashes = line.split('-');
        const QStringList bars = line.split('|');
        if (dashes.size() <= 2)
            continue;
        const int num = tt_.stnnametonum(bars[0]);
        if (num < 0)
            continue;
        for (const QString& entry : dashes[2].split(','))
            if (!entry.isEmpty())
                stnsconnections[num].push_back(entry);
    }
}

} // namespace quendle
