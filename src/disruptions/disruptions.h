#pragma once
// Disruption information: the trackwork notices (fetched, cached, reduced and parsed into
// `trakw`), the notices that concern the journey and the services they touch, and the
// service interruptions, whose reading side is deliberately inert.

#include "disruptions/trackworkpage.h"
#include "journey/journey.h"
#include "platform/host.h"
#include "platform/platform.h"
#include "timetable/timetable.h"
#include "util/folders.h"

#include <QHash>
#include <QString>
#include <QStringList>

#include <utility>
#include <vector>

namespace quendle {

// A reported interruption. The list holds one fixed placeholder record.
struct InterruptionRecord {
    int stnnumorig = 0;
    QString interupstr;
    std::vector<int> lineaffected;
};

// What a download did: cached the page, or why the cache was kept as it was.
struct FetchOutcome {
    bool cached = false;
    QString url;
    QString why;   // "" when cached
};

// A group of relevant notices with the same period.
struct TrakPeriodGroup {
    std::vector<int> reltrakinfonums;
};

class Disruptions {
public:
    // Where the operator's pages are looked for unless the settings say otherwise.
    static constexpr const char* kDefaultOperatorUrl = "https://www.sydneytrains.info/";
    static constexpr const char* kTrackworkPath = "service_updates/trackwork/?period=1&lineId=";
    static constexpr const char* kInterruptionsPath = "service_updates/service_interruptions/";

    Disruptions(const Timetable& tt, const Journey& journey, Platform& platform, const Folders& folders,
                Host& host);

    // --- the operator's site and the caches ---
    // QUENDLE_OPERATOR_URL, else the "operatorurl" setting, else the default; ends in "/".
    QString operatorurl() const;
    QString getuncompedtrakpath() const;
    QString getcompdtrakpath() const;
    QString gettrakpath() const { return getcompdtrakpath(); }
    QString getinteruppath() const;

    // --- trackwork feed and parsing ---
    FetchOutcome dltrakw();
    void comptw();
    void setuptrakw();
    void trakwremdupes();
    static bool matchatleasthalfofwords(const QString& a, const QString& b);
    void debugthistime();

    // --- services affected by trackwork ---
    void trakstatustimer();
    void getrelevanttrakwork();
    void setuprelevanttrakinfobydate();
    void getmyservsaffectedbytrakw();
    void getmyservsaffectedbytrakwfix() {}
    bool amiinthelineforthistw(int linenum, int tw) const;
    bool amiinthedaterangeforthistw(int leg, int serv, int tw) const;
    bool amiintheupcomingdaterangeforthistw(int leg, int serv, int tw) const;
    static bool amiinthestnrangeforthistrakw(int, int, int) { return true; }
    static bool aminstnrangefixfor(int, int) { return true; }
    static bool thistripaffectedbyrakw(int, int, int) { return false; }
    std::vector<int> gettrakstatusfrthisservray(int leg, int serv) const;
    int gettrakstatusfrthisserv(int leg, int serv) const;
    int gettrakstatusfrthisservwthupcom(int leg, int serv) const;
    // The argument is a connection (an index into the journey's chains).
    int trakstatusforthisservint(int chain) const;
    QString trakstatusforthisserv(int index) const;
    QString gettrakwforviewindex() const;
    std::vector<int> remdupelinename(const std::vector<int>& nums) const;
    QString simpledisplayytakwbydatedate(const TrakwRecord& record) const;
    QString getcurraffektrakwstr();
    // An upcoming value -1 - t back to the notice number t.
    static int decompressnegativetraknumval(int v) { return -(v + 1); }

    // --- service interruptions ---
    FetchOutcome dlserviceinterruptions();
    void setupinterrrup();
    void setupserviceinterruptions();
    std::vector<int> getlocationsfromstr(const QString& text) const;
    static QString getservinterruptionsstr() { return QStringLiteral("no service interruptions"); }
    void reloadserviceinterruptions() {}
    void getserviceinterruptionspath(const QString&) {}
    void speakinterruptions() {}
    QString getservinterruppath() const;

    // Owned state.
    std::vector<TrakwRecord> trakw;
    QStringList debugshoworigtrakwork;
    std::vector<TrakwRecord> relevanttrakinfo;
    std::vector<TrakPeriodGroup> relevanttrakinfobydatefix;
    std::vector<TrakPeriodGroup> relevanttrakinfobydate;   // made empty and left so
    std::vector<std::vector<std::vector<int>>> servsaffectedbytrakwmultid;
    std::vector<std::vector<int>> servsaffectedbytrakw;    // older single-leg layout, never filled
    std::vector<InterruptionRecord> serviceinterrups;
    int mytrakicon = 0;

private:
    Date now() const { return platform_.clock->now(); }
    // Fetches path from the operator's site and, when accept() takes the page, replaces
    // the cache file with it.
    FetchOutcome fetchandcache(const QString& path, const QString& cachefile, bool (*accept)(const QString&),
                               const QString& notwhat);
    const Service* service(int leg, int serv) const;
    bool wordoverlap(const QString& line, const QString& dispname) const;
    const std::vector<int>* statuslist(int leg, int serv) const;

    const Timetable& tt_;
    const Journey& journey_;
    Platform& platform_;
    const Folders& folders_;
    Host& host_;
    mutable QHash<std::pair<QString, QString>, bool> overlapcache_;
};

} // namespace quendle
