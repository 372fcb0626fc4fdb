#pragma once
// What the strip reads from the trackwork and alarm modules. Each answer here is the
// one those modules give when they know nothing (no trackwork: status 0 and empty
// lists; no alarm), so the strip draws correctly before they are connected; the
// application model hands in an adapter over the real modules.

#include "util/date.h"

#include <QString>

#include <vector>

namespace quendle {

// A closed section of a trackwork: the names of its end stations.
struct TrakSection {
    QString trakbegstr;
    QString trakendstr;
};

// The parts of a trackwork record that tiles and the map show.
struct TrakRecord {
    QString line;
    Date trakbegin;
    Date trakend;
    QString originfostr;                 // the information text as the operator publishes it
    std::vector<TrakSection> stnsoutfix;
    int gotstnsoutinfo = 0;              // 1 when the closed sections are known
};

class TrackworkView {
public:
    virtual ~TrackworkView() = default;
    // Per leg and service: t >= 0 trackwork t in force; -1 - t trackwork t upcoming.
    virtual std::vector<int> gettrakstatusfrthisservray(int /*leg*/, int /*serv*/) const { return {}; }
    // 1 in force, 2 only upcoming, 0 none (also asked so that the answer is cached).
    virtual int gettrakstatusfrthisserv(int /*leg*/, int /*serv*/) const { return 0; }
    // 1 in force, -1 only upcoming, 0 none.
    virtual int gettrakstatusfrthisservwthupcom(int /*leg*/, int /*serv*/) const { return 0; }
    // 1 when any service of that connection is in trackwork.
    virtual int trakstatusforthisservint(int /*connection*/) const { return 0; }
    // The trackwork that concerns the journey (numbered as the statuses above number it).
    virtual int relevantcount() const { return 0; }
    virtual TrakRecord relevanttrakinfo(int /*i*/) const { return {}; }
    // Every trackwork record known, for the closed sections on the map.
    virtual int trakwcount() const { return 0; }
    virtual TrakRecord trakw(int /*i*/) const { return {}; }
    // The text of the trackwork panel for the services in view.
    virtual QString gettrakwforviewindex() const { return {}; }
};

class AlarmView {
public:
    virtual ~AlarmView() = default;
    virtual int alarmdefaultmins() const { return 20; }   // the minutes offered for a new alarm
    virtual bool doigotalarm() const { return false; }
};

} // namespace quendle
