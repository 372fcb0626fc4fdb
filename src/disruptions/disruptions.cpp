#include "disruptions/disruptions.h"

#include "util/dates.h"
#include "util/files.h"
#include "util/text.h"

#include <QHash>

#include <algorithm>
#include <cmath>
#include <utility>

namespace quendle {

namespace {

// The instant as its plain description shows it: whole seconds.
bool samesecond(Date a, Date b) { return std::floor(a.secs) == std::floor(b.secs); }

// Whether `begin` lies less than 24 hours (by the calendar's minute difference, whole
// months left out) after `arr`. The calendar is asked only near the edges: within 22
// hours, or between 26 hours and 27 days, no clock change can move the answer.
bool beginswithinaday(Date arr, Date begin)
{
    const double d = begin.secs - arr.secs;
    if (d < 22 * 3600.0)
        return true;   // already begun (a negative difference) or well within the day
    if (d > 26 * 3600.0 && d < 27 * 86400.0)
        return false;
    return calctimediffint(arr, begin) / 60 < 24;
}

// Strict on both sides: a service that leaves as the work begins and arrives as it ends is
// not touched.
bool inperiod(Date begin, Date end, const Service& s)
{
    return (testlumdateearlier(begin, s.deptime) && testlumdateearlier(s.deptime, end))
        || (testlumdateearlier(begin, s.desttime) && testlumdateearlier(s.desttime, end));
}

// A list of numbers as a property-list description writes it.
QString describeints(const std::vector<int>& list)
{
    QString out = QStringLiteral("(");
    for (size_t i = 0; i < list.size(); ++i)
        out += (i ? ",\n    " : "\n    ") + QString::number(list[i]);
    return out + "\n)";
}

} // namespace

Disruptions::Disruptions(const Timetable& tt, const Journey& journey, Platform& platform, const Folders& folders,
                         Host& host)
    : tt_(tt), journey_(journey), platform_(platform), folders_(folders), host_(host)
{
}

// --- the operator's site and the caches -------------------------------------------

QString Disruptions::operatorurl() const
{
    QString url = qEnvironmentVariable("QUENDLE_OPERATOR_URL").trimmed();
    if (url.isEmpty() && platform_.defaults)
        url = platform_.defaults->stringForKey(QStringLiteral("operatorurl")).trimmed();
    if (url.isEmpty())
        url = QString::fromLatin1(kDefaultOperatorUrl);
    if (!url.endsWith('/'))
        url += '/';
    return url;
}

QString Disruptions::getuncompedtrakpath() const { return folders_.getprefsfold() + "trakunc.txt"; }

QString Disruptions::getcompdtrakpath() const { return folders_.getprefsfold() + "trakcompd.txt"; }

QString Disruptions::getinteruppath() const { return folders_.getprefsfold() + "interup.txt"; }

FetchOutcome Disruptions::fetchandcache(const QString& path, const QString& cachefile,
                                        bool (*accept)(const QString&), const QString& notwhat)
{
    FetchOutcome o;
    o.url = operatorurl() + path;
    if (!platform_.http) {
        o.why = QStringLiteral("this run has no network access");
        return o;
    }
    const QString page = platform_.http->get(o.url);
    if (page.isEmpty()) {
        const QString error = platform_.http->lastError();
        o.why = error.isEmpty() ? QStringLiteral("the server sent nothing")
                                : QStringLiteral("the server did not answer properly (%1)").arg(error);
    } else if (page.contains(QChar(0))) {
        o.why = QStringLiteral("the answer is binary data, not a web page");
    } else if (!accept(page)) {
        o.why = notwhat;
    } else if (QString error; !replacefile(folders_.getprefsfold() + cachefile, page, &error)) {
        o.why = QStringLiteral("the cache file could not be written (%1)").arg(error);
    } else {
        o.cached = true;
    }
    return o;
}

// --- trackwork feed and parsing --------------------------------------------------

FetchOutcome Disruptions::dltrakw()
{
    FetchOutcome o = fetchandcache(
        QString::fromLatin1(kTrackworkPath), QStringLiteral("trakunc.txt"), &thisvalidtw,
        QStringLiteral("the page has no link to the trackwork map, so it is not the trackwork page"));
    if (o.cached)
        host_.writesuccupdate();
    return o;
}

void Disruptions::comptw()
{
    const QString compact = comptwtext(readfile(getuncompedtrakpath()));
    // A page that yields too little (a changed layout, an error page) keeps the old notices.
    if (!compactworthkeeping(compact))
        return;
    QString error;
    if (!replacefile(getcompdtrakpath(), compact, &error))
        qWarning("trackwork: %s not written, old notices kept: %s", qPrintable(getcompdtrakpath()),
                 qPrintable(error));
}

void Disruptions::setuptrakw()
{
    comptw();
    ParsedTrakw parsed = parsetrakwcompact(readfile(getcompdtrakpath()), tt_, now());
    trakw = std::move(parsed.trakw);
    debugshoworigtrakwork = std::move(parsed.debugshoworigtrakwork);
    std::stable_sort(trakw.begin(), trakw.end(),
                     [](const TrakwRecord& a, const TrakwRecord& b) { return a.trakbegin < b.trakbegin; });
}

void Disruptions::trakwremdupes()
{
    for (size_t i = 0; i < trakw.size(); ++i) {
        const TrakwRecord& keep = trakw[i];
        const auto from = trakw.begin() + static_cast<std::ptrdiff_t>(i) + 1;
        trakw.erase(std::remove_if(from, trakw.end(),
                                   [&](const TrakwRecord& r) {
                                       return r.line == keep.line && r.trakbegin == keep.trakbegin;
                                   }),
                    trakw.end());
    }
}

bool Disruptions::matchatleasthalfofwords(const QString& a, const QString& b)
{
    return quendle::matchatleasthalfofwords(a, b);
}

bool Disruptions::wordoverlap(const QString& line, const QString& dispname) const
{
    const auto key = std::make_pair(line, dispname);
    auto it = overlapcache_.constFind(key);
    if (it != overlapcache_.constEnd())
        return *it;
    if (overlapcache_.size() > 4096)
        overlapcache_.clear();
    return *overlapcache_.insert(key, quendle::matchatleasthalfofwords(line, dispname));
}

void Disruptions::debugthistime()
{
    const Journey& j = journey_;
    QString matches;
    for (size_t leg = 0; leg < j.mylinematches.size(); ++leg) {
        matches += QStringLiteral("leg %1:").arg(leg);
        for (const LineMatch& m : j.mylinematches[leg])
            matches += QStringLiteral("\n  %1 (line %2, stops %3 to %4)")
                           .arg(m.dispname)
                           .arg(m.linenum)
                           .arg(m.depint)
                           .arg(m.destint);
        matches += '\n';
    }
    QString stops, clip;
    for (int leg = 0; leg < static_cast<int>(j.myindexes.size()); ++leg) {
        const Service* s = service(leg, j.myindexes[leg]);
        if (!s)
            continue;
        stops += QStringLiteral("leg %1, %2:").arg(leg).arg(tt_.linenumtoname(s->linenum));
        const std::vector<int> nums = s->stopnums();
        const std::vector<Date> times = s->stoptimes();
        for (size_t k = 0; k < nums.size() && k < times.size(); ++k)
            stops += "\n  " + tt_.stnnumtoname(nums[k]) + " " + datetoshrtstr(times[k]);
        stops += '\n';
        if (clip.isEmpty())
            clip = s->debugstops();
    }
    if (platform_.alerts) {
        platform_.alerts->alert(matches, QString(), {});
        platform_.alerts->alert(stops, QString(), {});
    }
    if (platform_.clipboard)
        platform_.clipboard->setText(clip);
}

// --- services affected by trackwork ------------------------------------------------

void Disruptions::trakstatustimer()
{
    const int shown = journey_.myindexes.empty() ? -1 : journey_.myindexes[0];
    const int status = gettrakstatusfrthisserv(0, shown);
    mytrakicon = status == 1 ? 2 : status == 2 ? 1 : 0;
}

void Disruptions::getrelevanttrakwork()
{
    // Which notices each line name takes, worked out once per name; the word test itself is
    // remembered across recalculations (it depends on the two texts only).
    QHash<QString, std::vector<char>> takes;
    std::vector<int> picked;
    for (int leg = 0; leg < static_cast<int>(journey_.mylinematches.size()); ++leg) {
        for (const LineMatch& m : journey_.mylinematches[leg]) {
            auto it = takes.find(m.dispname);
            if (it == takes.end()) {
                std::vector<char> mask(trakw.size());
                for (size_t t = 0; t < trakw.size(); ++t)
                    mask[t] = wordoverlap(trakw[t].line, m.dispname);
                it = takes.insert(m.dispname, std::move(mask));
            }
            for (int t = 0; t < static_cast<int>(trakw.size()); ++t)
                if ((*it)[t] && aminstnrangefixfor(t, leg))
                    picked.push_back(t);
        }
    }
    // Without repeats: the first of equal records stays.
    std::vector<int> kept;
    for (int t : picked) {
        const bool seen = std::any_of(kept.begin(), kept.end(),
                                      [&](int k) { return k == t || trakw[k] == trakw[t]; });
        if (!seen)
            kept.push_back(t);
    }
    relevanttrakinfo.clear();
    relevanttrakinfo.reserve(kept.size());
    for (int t : kept)
        relevanttrakinfo.push_back(trakw[t]);
    std::stable_sort(relevanttrakinfo.begin(), relevanttrakinfo.end(),
                     [](const TrakwRecord& a, const TrakwRecord& b) { return a.trakbegin < b.trakbegin; });
}

void Disruptions::setuprelevanttrakinfobydate()
{
    const int n = static_cast<int>(relevanttrakinfo.size());
    std::vector<char> grouped(n, 0);
    relevanttrakinfobydatefix.clear();
    for (int i = 0; i < n; ++i) {
        TrakPeriodGroup g;
        g.reltrakinfonums.push_back(i);
        bool clash = false;
        for (int j = 0; j < n; ++j) {
            if (j == i || !samesecond(relevanttrakinfo[j].trakbegin, relevanttrakinfo[i].trakbegin)
                || !samesecond(relevanttrakinfo[j].trakend, relevanttrakinfo[i].trakend))
                continue;
            g.reltrakinfonums.push_back(j);
            clash = clash || grouped[j];
        }
        if (clash)
            continue;
        for (int k : g.reltrakinfonums)
            grouped[k] = 1;
        relevanttrakinfobydatefix.push_back(std::move(g));
    }
    relevanttrakinfobydate.clear();
}

void Disruptions::getmyservsaffectedbytrakw()
{
    const auto& legs = journey_.myservsmultid;
    // Emptied in place: the lists keep their room from one recalculation to the next.
    servsaffectedbytrakwmultid.resize(legs.size());
    for (size_t leg = 0; leg < legs.size(); ++leg) {
        servsaffectedbytrakwmultid[leg].resize(legs[leg].size());
        for (std::vector<int>& marks : servsaffectedbytrakwmultid[leg])
            marks.clear();
    }

    // Per line, the notices on it in the order the groups name them.
    struct Visit {
        int t;
        Date begin, end;
    };
    std::vector<std::vector<Visit>> byline;
    for (const TrakPeriodGroup& g : relevanttrakinfobydatefix) {
        for (int t : g.reltrakinfonums) {
            const TrakwRecord& r = relevanttrakinfo[t];
            for (size_t k = 0; k < r.linenums.size(); ++k) {
                const int l = r.linenums[k];
                // A line named twice is one line: the notice is looked at once.
                if (l < 0 || std::find(r.linenums.begin(), r.linenums.begin() + k, l) != r.linenums.begin() + k)
                    continue;
                if (l >= static_cast<int>(byline.size()))
                    byline.resize(l + 1);
                byline[l].push_back({t, r.trakbegin, r.trakend});
            }
        }
    }
    // For each notice, a leg's services are looked at in order until one departs after the
    // notice ends: a service is looked at when no service up to it departs after the end.
    // Walking services in the outer loop keeps each service's list in notice order.
    for (size_t leg = 0; leg < legs.size(); ++leg) {
        Date latest{-1e300};
        for (size_t s = 0; s < legs[leg].size(); ++s) {
            const Service& sv = legs[leg][s];
            latest = std::max(latest, sv.deptime);
            if (sv.linenum < 0 || sv.linenum >= static_cast<int>(byline.size()))
                continue;
            std::vector<int>& marks = servsaffectedbytrakwmultid[leg][s];
            for (const Visit& v : byline[sv.linenum]) {
                if (v.end < latest)
                    continue;
                if (inperiod(v.begin, v.end, sv))
                    marks.push_back(v.t);
                else if (beginswithinaday(sv.desttime, v.begin))
                    marks.push_back(-1 - v.t);
            }
        }
    }
}

bool Disruptions::amiinthelineforthistw(int linenum, int tw) const
{
    if (tw < 0 || tw >= static_cast<int>(relevanttrakinfo.size()))
        return false;
    const std::vector<int>& nums = relevanttrakinfo[tw].linenums;
    return std::find(nums.begin(), nums.end(), linenum) != nums.end();
}

const Service* Disruptions::service(int leg, int serv) const
{
    const auto& legs = journey_.myservsmultid;
    if (leg < 0 || leg >= static_cast<int>(legs.size()) || serv < 0 || serv >= static_cast<int>(legs[leg].size()))
        return nullptr;
    return &legs[leg][serv];
}

bool Disruptions::amiinthedaterangeforthistw(int leg, int serv, int tw) const
{
    const Service* s = service(leg, serv);
    if (!s || tw < 0 || tw >= static_cast<int>(relevanttrakinfo.size()))
        return false;
    return inperiod(relevanttrakinfo[tw].trakbegin, relevanttrakinfo[tw].trakend, *s);
}

bool Disruptions::amiintheupcomingdaterangeforthistw(int leg, int serv, int tw) const
{
    const Service* s = service(leg, serv);
    if (!s || tw < 0 || tw >= static_cast<int>(relevanttrakinfo.size()))
        return false;
    return beginswithinaday(s->desttime, relevanttrakinfo[tw].trakbegin);
}

const std::vector<int>* Disruptions::statuslist(int leg, int serv) const
{
    if (leg < 0 || leg >= static_cast<int>(servsaffectedbytrakwmultid.size()))
        return nullptr;
    const auto& services = servsaffectedbytrakwmultid[leg];
    if (serv < 0 || serv >= static_cast<int>(services.size()))
        return nullptr;
    return &services[serv];
}

std::vector<int> Disruptions::gettrakstatusfrthisservray(int leg, int serv) const
{
    const std::vector<int>* list = statuslist(leg, serv);
    return list ? *list : std::vector<int>{};
}

int Disruptions::gettrakstatusfrthisserv(int leg, int serv) const
{
    const std::vector<int>* list = statuslist(leg, serv);
    if (!list || list->empty())
        return 0;
    return std::any_of(list->begin(), list->end(), [](int v) { return v >= 0; }) ? 1 : 2;
}

int Disruptions::gettrakstatusfrthisservwthupcom(int leg, int serv) const
{
    const int status = gettrakstatusfrthisserv(leg, serv);
    return status == 2 ? -1 : status;
}

int Disruptions::trakstatusforthisservint(int chain) const
{
    const auto& chains = journey_.connectingservs;
    if (chain < 0 || chain >= static_cast<int>(chains.size()))
        return 0;
    const Chain& c = chains[chain];
    for (int leg = 0; leg < static_cast<int>(c.size()); ++leg) {
        const std::vector<int>* list = statuslist(leg, c[leg]);
        if (list && std::any_of(list->begin(), list->end(), [](int v) { return v >= 0; }))
            return 1;
    }
    return 0;
}

QString Disruptions::trakstatusforthisserv(int index) const
{
    if (index >= 0 && index < static_cast<int>(servsaffectedbytrakw.size()) && servsaffectedbytrakw[index].size() > 1)
        return QStringLiteral("TRAKWZ");
    return QStringLiteral("NOTRKAFFEK");
}

QString Disruptions::gettrakwforviewindex() const
{
    QString out;
    const int count = static_cast<int>(relevanttrakinfo.size());
    for (int leg = 0; leg < static_cast<int>(journey_.myindexes.size()); ++leg) {
        const std::vector<int>* list = statuslist(leg, journey_.myindexes[leg]);
        if (!list)
            continue;
        for (int v : *list) {
            const int t = v < 0 ? decompressnegativetraknumval(v) : v;
            if (t < 0 || t >= count)
                continue;
            if (v < 0)
                out += QStringLiteral("Upcoming ");
            out += "\n " + relevanttrakinfo[t].line + simpledisplayytakwbydatedate(relevanttrakinfo[t]);
        }
    }
    return out;
}

std::vector<int> Disruptions::remdupelinename(const std::vector<int>& nums) const
{
    std::vector<int> kept;
    QStringList lines;
    for (int t : nums) {
        if (t < 0 || t >= static_cast<int>(relevanttrakinfo.size()) || lines.contains(relevanttrakinfo[t].line))
            continue;
        lines << relevanttrakinfo[t].line;
        kept.push_back(t);
    }
    return kept;
}

QString Disruptions::simpledisplayytakwbydatedate(const TrakwRecord& record) const
{
    const Date n = now();
    const QString from = relativedate(record.trakbegin, n);
    return from + (from.isEmpty() ? QStringLiteral("U") : QStringLiteral(" u")) + QStringLiteral("ntil ")
        + relativedate(record.trakend, n);
}

QString Disruptions::getcurraffektrakwstr()
{
    QString out;
    for (int leg = 0; leg < static_cast<int>(journey_.myindexes.size()); ++leg) {
        const int shown = journey_.myindexes[leg];
        out += describeints(gettrakstatusfrthisservray(leg, shown));
        for (int t = 0; t < static_cast<int>(relevanttrakinfo.size()); ++t)
            if (amiinthedaterangeforthistw(leg, shown, t) && platform_.alerts)
                platform_.alerts->alert(QStringLiteral(" YAH IN THE RANGE "), QString(), {});
    }
    return out;
}

// --- service interruptions ---------------------------------------------------------

FetchOutcome Disruptions::dlserviceinterruptions()
{
    return fetchandcache(QString::fromLatin1(kInterruptionsPath), QStringLiteral("interup.txt"), &thisvalidinterrup,
                         QStringLiteral("the page has no link to the trackwork map, so it is not the "
                                        "operator's service-interruptions page"));
}

void Disruptions::setupinterrrup() { serviceinterrups.clear(); }

void Disruptions::setupserviceinterruptions()
{
    // The name carries a blank before "interup.txt": not the file the download writes, so
    // this normally reads nothing. Nothing uses the text either way.
    const QString text = readfile(QStringLiteral("%1 %2").arg(folders_.getprefsfold(), QStringLiteral("interup.txt")));
    serviceinterrups = {InterruptionRecord{5, QStringLiteral("zdzddzdz"), {1}}};
    getlocationsfromstr(text);
}

std::vector<int> Disruptions::getlocationsfromstr(const QString& text) const
{
    Q_UNUSED(text);
    // Walks the stations without looking at the text: the reading side is inert.
    for (const StationRecord& s : tt_.stnsmute)
        Q_UNUSED(s);
    return {};
}

QString Disruptions::getservinterruppath() const
{
    return folders_.getuserhomedir() + "/quendle-publisher/interruptions.txt";
}

} // namespace quendle
