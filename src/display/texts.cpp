// Every text a tile, the trip summary, the day header and the alarm panel show.
// Indices are checked against the lists they read: out of range gives the empty
// answers ("" for travel texts, " " for remaining times, no columns).

#include "display/display.h"

#include "util/dates.h"
#include "util/durations.h"

namespace quendle {

namespace {

template <typename List>
bool within(const List& list, int i)
{
    return i >= 0 && i < static_cast<int>(list.size());
}

} // namespace

const Service* Display::shownservice(int leg) const
{
    if (!within(j_.myindexes, leg) || !within(j_.myservsmultid, leg))
        return nullptr;
    const int idx = j_.myindexes[leg];
    if (!within(j_.myservsmultid[leg], idx))
        return nullptr;
    return &j_.myservsmultid[leg][idx];
}

QString Display::traveltimeforthisconnekstr(int i) const
{
    return within(j_.mytraveltimes, i) ? j_.mytraveltimes[i].travelstr : QString();
}

QString Display::waittimeforthisconnekstr(int i) const
{
    if (!within(j_.mytraveltimes, i) || j_.mytraveltimes[i].waitminstr.isEmpty())
        return QString();
    return j_.mytraveltimes[i].waitminstr + QStringLiteral(" wait ");
}

QString Display::remaintimeforthisconnekstr(int i) const
{
    return within(j_.myremaintimes, i) ? j_.myremaintimes[i] : QStringLiteral(" ");
}

QString Display::getremainforthisleg(int leg) const
{
    return within(j_.myzoominremaintimes, leg) ? j_.myzoominremaintimes[leg] : QStringLiteral(" ");
}

QString Display::getstrthisleg(int n) const
{
    QString out;
    if (n == 1 && stationcount() > 0)
        out += j_.myjournstr[0] + QStringLiteral(" to ");
    if (within(j_.myjournstr, n))
        out += j_.myjournstr[n];
    if (n == 0)
        out += QStringLiteral(" to                       ");   // room for the second name
    out += QLatin1Char('\n');
    if (n == stationcount())
        out += QStringLiteral(" then           ");
    return out;
}

QStringList Display::getstrthislegray(int n) const
{
    if (n < 1)
        return {};
    const int leg = n - 1;
    const Service* s = shownservice(leg);
    if (!s)
        return {};
    QStringList out;
    out << givestranevenscore(getremainforthisleg(leg), 12);
    out << givestranevenscore(datetoshrtstr(s->deptime), 12);
    out << datetoshrtstr(s->desttime);
    if (showlinename == 1 && validline(s->linenum))
        out << tt_.linesmute[s->linenum].dispname;
    // Asked so that the trackwork module caches the answer; the tile does not use it.
    trak_->gettrakstatusfrthisserv(leg, j_.myindexes[leg]);
    return out;
}

QString Display::getsubstrthisleg(int n) const
{
    const int leg = n - 1;
    if (n > 0 && within(j_.myindexes, leg)) {
        const std::vector<int> status = trak_->gettrakstatusfrthisservray(leg, j_.myindexes[leg]);
        if (!status.empty()) {
            const int s = status.front();
            if (s >= 0)
                return cutoffstricely(simpledisplayytakwbydatedatesubstr(s), 400);
            const int k = decompressnegativetraknumval(s);
            if (k >= trak_->relevantcount())
                return QString();
            return simpledisplayytakwbydatedatewithupcom(k);
        }
    }
    if (thisthelastleg(n) && canidrawsummary())
        return gettravelsummary();
    return QString();
}

bool Display::thisthelastleg(int n) const { return n == stationcount() - 1; }

bool Display::canidrawsummary() const { return stationcount() - 1 > 1; }

QString Display::gettravelsummary() const
{
    const int v = j_.getthisviewindex(0);
    return waittimeforthisconnekstr(v) + traveltimeforthisconnekstr(v) + QStringLiteral(" Travel time");
}

QString Display::getsummarystr() const
{
    if (j_.myindexes.empty())
        return QString();
    const int idx = j_.myindexes[0];
    if (idx >= static_cast<int>(j_.connectingservs.size()))
        return QString();
    QString out = QStringLiteral("in ") + remaintimeforthisconnekstr(idx) + QStringLiteral("  leave  ")
        + j_.getthisservdeptime(idx) + QStringLiteral(" arrive ") + j_.getthisservdesttime(idx)
        + waittimeforthisconnekstr(idx) + traveltimeforthisconnekstr(idx);
    if (lumdebug_ == 1)
        out += QLatin1Char('.');
    return out;
}

QStringList Display::getstringforthiszoomouttileray(int i) const
{
    if (i < j_.myactualindex)
        return {};
    return {remaintimeforthisconnekstr(i), j_.getthisservdeptime(i), j_.getthisservdesttime(i),
            waittimeforthisconnekstr(i), traveltimeforthisconnekstr(i)};
}

QString Display::getdayheaderstr() const
{
    if (j_.myindexes.empty() || j_.myservsmultid.empty())
        return QStringLiteral("dayheadstrtrrtrtrt");
    const Service* s = shownservice(0);
    return s ? relativedatejustday(s->deptime, now()) : QString();
}

QString Display::getstopsstr() const
{
    QString out;
    const Date present = now();
    for (int leg = 0; leg < static_cast<int>(j_.myservsmultid.size()); ++leg) {
        const Service* s = shownservice(leg);
        if (!s)
            continue;
        const std::vector<int> stops = s->stopnums();
        const std::vector<Date> times = s->stoptimes();
        for (int k = 0; k < static_cast<int>(stops.size()); ++k) {
            out += QStringLiteral("\n stopping ");
            if (within(times, k))
                out += tt_.stnnumtoname(stops[k]) + relativedate(times[k], present);
        }
    }
    return out;
}

QString Display::simpledisplayystnsout(const TrakRecord& record)
{
    QString out;
    const int n = static_cast<int>(record.stnsoutfix.size());
    for (int k = 0; k < n; ++k) {
        if (k == 0)
            out += QStringLiteral("between ");
        out += record.stnsoutfix[k].trakbegstr + QStringLiteral(" and ") + record.stnsoutfix[k].trakendstr;
        out += k + 1 < n ? QStringLiteral(",") : QStringLiteral(".");
    }
    return out;
}

QString Display::simpledisplayytakwbydatedatesubstr(int i) const
{
    if (i < 0 || i >= trak_->relevantcount())
        return QString();
    const TrakRecord r = trak_->relevanttrakinfo(i);
    return QStringLiteral("Trackwork until ") + relativedate(r.trakend, now()) + QStringLiteral("  ")
        + (r.stnsoutfix.empty() ? r.originfostr : simpledisplayystnsout(r));
}

QString Display::simpledisplayytakwbydatedatewithupcom(int i) const
{
    if (i < 0 || i >= trak_->relevantcount())
        return QString();
    const TrakRecord r = trak_->relevanttrakinfo(i);
    return QStringLiteral("Upcoming Trackwork ") + relativedate(r.trakbegin, now()) + QLatin1Char(' ')
        + simpledisplayystnsout(r);
}

QString Display::getreltrakstrnotgrouped() const
{
    QString out = QStringLiteral("Trackwork on this journey:");
    const int n = trak_->relevantcount();
    if (n == 0)
        return out + QStringLiteral(" none");
    for (int i = 0; i < n; ++i) {
        const TrakRecord r = trak_->relevanttrakinfo(i);
        out += QStringLiteral("\n") + r.line + QStringLiteral(": ") + lumdatedisplay(r.trakbegin)
            + QStringLiteral(" until ") + lumdatedisplay(r.trakend);
    }
    return out;
}

QString Display::alarmpanelstr() const
{
    if (view_.inalarmscreen != 1)
        return QString();
    return QStringLiteral(" warn  me \n") + mintohrminstr(alarms_->alarmdefaultmins())
        + QStringLiteral(" before  \n") + QStringLiteral("service leaves") + QStringLiteral("cancel   set ");
}

} // namespace quendle
