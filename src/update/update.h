#pragma once
// Table and version updates. Each check (the update timer's, or `quendle-cli update`)
// refreshes the trackwork page, then reads the publisher's update page: when it is there,
// the service-interruptions page is refreshed, a newer version is offered and the tables
// it names are downloaded into the temporary tables folder, to be installed by the next
// start (copydownloadedtablestotablefold, run first by setuptables). A check that reached
// the page is recorded as the last successful update.
//
// Everything fetched is outside text: a table name is used as a file name only when it is
// plain, a table is bounded in size and written (atomically) only when it is a valid
// table, and a dead, slow, truncated, huge or hostile server changes nothing the user has.

#include "disruptions/disruptions.h"
#include "platform/host.h"
#include "platform/platform.h"
#include "publisher/publisher.h"
#include "timetable/timetable.h"
#include "update/updatepage.h"
#include "util/folders.h"

#include <QString>

#include <vector>

namespace quendle {

// One table named by the update page, and what became of it.
struct TableDownload {
    QString name;
    QString url;      // "" when it was never asked for (a name that is not plain)
    QString path;     // where it waits for the next start, once written
    bool written = false;
    QString why;      // why nothing was written; "" when written
};

// What one check found and did.
struct UpdateReport {
    bool ran = false;               // false: checks are off (checkforupdates is not 1)
    FetchOutcome trackwork;
    FetchOutcome interruptions;     // fetched only when the update page was reached
    QString updateurl;
    bool reachable = false;
    QString why;                    // why the page was not reached; "" when it was
    UpdatePage page;
    float appvers = 0;
    bool offered = false;           // a newer version, not skipped: the question came up
    bool skipped = false;           // a newer version the user chose to skip
    std::vector<TableDownload> downloads;   // in the order they were tried
    bool recorded = false;          // the check was recorded as a successful update
};

class Updater {
public:
    // Where the publisher's web space is unless the settings say otherwise ("updateurl",
    // "tablesurl", "appdownloadurl"); the tables folder is "parlune/" beside the update page.
    static constexpr const char* kDefaultUpdateUrl = "https://quendle.org/updates/";
    static constexpr const char* kDefaultAppDownloadUrl = "https://quendle.org/download/";
    static constexpr qint64 kMaxTableBytes = 50LL * 1024 * 1024;

    // The application core's flags and last-update record, which this module drives.
    struct Flags {
        int& runupdatesincelaunch;
        int& checkforupdates;
        std::vector<Date>& mylastupdateray;
    };

    Updater(const Timetable& tt, Disruptions& disruptions, Publisher& publisher, Platform& platform,
            const Folders& folders, Host& host, Flags flags);

    // --- the publisher's addresses ---
    // QUENDLE_UPDATE_URL, else the "updateurl" setting, else the default.
    QString getupdateurl() const;
    // Ends in "/": "parlune/" beside the update page, unless the "tablesurl" setting names
    // another folder (QUENDLE_UPDATE_URL always takes the tables from beside its page).
    QString gettablesurl() const;
    QString getappdownloadurl() const;

    // --- the timer ---
    Date getnextupdatetime() const;
    // Moves the update timer to getnextupdatetime; after a check of this run that could not
    // record itself, a time already past becomes the interval from now, so a dead server
    // is tried again after the interval rather than at once, over and over.
    void setupdatetimer(TimerId updatetimer);
    // One check (nothing when checkforupdates is not 1).
    UpdateReport updatetimerfunc();

    // --- the parts of a check ---
    bool icanconnecttoupdateserver();
    void cheknewvers();
    void cheknewtables();
    bool downloadnewtable(const QString& name);
    // Installs every valid table waiting in the temporary tables folder; the others stay.
    void copydownloadedtablestotablefold();
    static float getappvers();
    float getonlinevers();
    float getversionuserskipped() const;
    void shownewversmessage(float version);
    void dlnewversionofapp();
    QString getsuccupdatepath() const;
    QString getlastupdatestr() const;
    QString getnextupdatestr() const;
    void updatetheapp() {}
    void uplatesttable() {}
    bool amizorb() const;

    int updateoverdueinterval = 60;   // minutes between checks
    // false (a terminal): the new-version question is reported, not asked.
    bool askuser = true;

private:
    Date now() const { return platform_.clock->now(); }
    // Fetches the update page; "" with the reason in *why when there is none to read.
    QString fetchupdatepage(QString* why);
    void cheknewvers(const UpdatePage& page);
    void cheknewtables(const UpdatePage& page);
    void recordsuccess();

    const Timetable& tt_;
    Disruptions& disruptions_;
    Publisher& publisher_;
    Platform& platform_;
    const Folders& folders_;
    Host& host_;
    Flags flags_;
    UpdateReport report_;   // what the check under way (or the last one) found
};

} // namespace quendle
