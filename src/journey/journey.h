#pragma once
// The journey engine: line matches per leg and the change-station search; the
// services of every leg over the next days and the chains that connect them; the
// shown service per leg that follows the clock, and the remaining-time texts.

#include "platform/clock.h"
#include "platform/host.h"
#include "platform/timers.h"
#include "timetable/timetable.h"
#include "util/dates.h"
#include "util/viewstate.h"

#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

namespace quendle {

struct LineMatch {
    int linenum = 0;
    QString dispname;
    QString matchlinename;
    int depint = 0;
    int destint = 0;
};

struct StationMatch {
    int linenum = 0;
    int depint = 0;
};

struct StationOnLine {
    int mynum = 0;
    QString myname;
};

struct ChangeCandidate {
    QString name;
    int num = 0;
    int dist = 0;
};

// Where a service's stops come from: one line's rows for one day, that line's stations
// and the day's clocks. Shared by every service made from them, so that the thousands of
// services of a recalculation cost no list of their own until one is asked for its stops.
struct StopSource {
    StopSource(RowsPtr r, std::vector<int> s, const ServiceDayClock& day, const ServiceDayClock& next)
        : rows(std::move(r)), stnints(std::move(s)), today(day), tomorrow(next)
    {
    }
    RowsPtr rows;
    std::vector<int> stnints;
    ServiceDayClock today, tomorrow;
};

struct Service {
    int linenum = 0;
    int depint = 0;
    int destint = 0;
    Date deptime;
    Date desttime;
    int depcrossedmid = 0;
    int destcrossedmid = 0;
    QStringList stopsh;     // always empty
    QStringList stopsv;     // always empty
    std::shared_ptr<const StopSource> source;
    int row = -1;   // in source->rows

    // The stations served from the leg's first to its second station, and when.
    std::vector<int> stopnums() const;
    std::vector<Date> stoptimes() const;
    // Every raw time from the leg's first to its second station, unserved ones as -1.
    std::vector<int> rawstops() const;
    // The same as text, each time followed by ",".
    QString debugstops() const;
};

using Chain = std::vector<int>;   // per leg, the index of the chosen service

struct TravelTime {
    int traelminint = 0;
    int waitminint = 0;
    QString travelstr;
    QString waitminstr;
};

// The timers of the application that the timeline arms by moving their fire dates.
struct TimelineTimers {
    TimerId autoscrolltimer = kNoTimer;
    TimerId myactualindextimer = kNoTimer;
    TimerId calcremmytimer = kNoTimer;
    TimerId getmoreservstimer = kNoTimer;
};

class Journey {
public:
    Journey(Timetable& tt, const Clock& clock, Timers& timers, Host& host, ViewState& view);

    // --- line-connection search ---
    std::vector<LineMatch> getlinematches(const QString& from, const QString& to) const;
    void getlinematchesforwholejourn();
    std::vector<StationMatch> getlinematchesforthisstn(const QString& station) const;
    std::vector<int> getlinesforthisstnrew(const QString& station) const;
    std::vector<StationOnLine> getallstnsfromtheselines(const std::vector<int>& lines) const;
    std::vector<int> getstnsincommmon(const std::vector<int>& a, const std::vector<int>& b) const;
    float calcdist(int a, int b) const;
    std::vector<ChangeCandidate> commonstnssortedbydistandcommon(const QString& from, const QString& to,
                                                                 std::vector<int> common) const;
    QStringList getzandrel(const QString& from, const QString& to) const;
    bool thistheonlybrokenleg(int leg) const;
    void insertzandrelifnecc();
    bool validlastindexleg() const;
    bool caniextendtrip() const;
    void addtojourn(const QString& station);

    // --- services and chains ---
    std::vector<Service> getallservsnewer(int leg);
    static std::vector<Service> removedupetrips(std::vector<Service> services);
    void recalcservices();          // rebuilds myservsmultid and stickyindexes for every leg
    void setmyconnectingservs();
    void chekcollisionsforward();
    void chekcollisionsbackward();
    TravelTime traveltimeforthisconnek(int chain) const;
    void calctraveltimes();
    bool isitfastest(int chain) const;
    void setupstnconnections(const QString& path);
    void setupstnconnectionsfromtext(const QString& text);   // the same, from the file's text

    // --- timeline ---
    Date usefutureoffsetifnecc() const;
    void setviewindexestocurrent();
    int getmyviewindex(int leg) const;
    int getthisviewindex(int leg) const;
    void scrollthisindex(int leg, int step);
    void scrolleverythingtothisindex(int leg, int step);
    void movetothisinex(int chain);
    void stepforward();
    void gotonow();
    void autoscrollfunc();
    void autoscrollactualindexfunc();
    void setactualindextimer();
    void setviewforwardtimer();
    void setgetmoreservstimer();
    void calcremaintimr();
    void calcremstr();
    void calcremaintimes();
    bool isneedleontherecord() const;
    bool didusertakeneedleoffrecord() const { return needleontherecord != 1; }
    static bool amiinthebackground() { return true; }
    QString getdateimlookinat() const;
    static Date recalctripaddsecstodate(Date d, int secs) { return d.plusSeconds(secs); }

    // The first-leg departure and the connection's arrival as short texts.
    QString getthisservdeptime(int index) const;
    QString getthisservdesttime(int chain) const;

    TimelineTimers timers;

    // Journey (origin first) and its limit; the user-state rules change it.
    QStringList myjournstr;
    int maxlegs = 7;

    std::vector<std::vector<LineMatch>> mylinematches;
    std::vector<std::vector<Service>> myservsmultid;
    std::vector<Chain> connectingservs;
    std::vector<int> stickyindexes;
    std::vector<TravelTime> mytraveltimes;
    std::vector<int> mytraveltimesint;
    int minzztraveltime = -1;
    int maxzztraveltime = -1;
    int totalaveragetraveltimes = 0;
    std::vector<QStringList> stnsconnections;
    int minconnectionwwait = 2;
    int lummaxdaystosrch = 3;
    int maxservstoshow = 11;

    std::vector<int> myindexes;     // -1: nothing to show on this leg or any later one
    int myactualindex = 0;
    int needleontherecord = 1;
    QStringList myremaintimes;
    QStringList myzoominremaintimes;
    QString remstr;
    std::vector<Date> myfuturetimes;
    int usergonebackintime = 0;

private:
    int legcount() const { return static_cast<int>(myservsmultid.size()); }
    Date now() const { return clock_.now(); }

    Timetable& tt_;
    const Clock& clock_;
    Timers& timerService_;
    Host& host_;
    ViewState& view_;
};

} // namespace quendle
