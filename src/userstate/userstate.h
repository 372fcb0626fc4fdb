#pragma once
// The user's lasting state: the preferences (defaults store and the preferences file),
// bookmarks and favourites, and the one alarm. The journey list itself stays in the
// journey engine; these rules change it there.

#include "journey/journey.h"
#include "platform/host.h"
#include "platform/platform.h"
#include "timetable/timetable.h"
#include "util/folders.h"
#include "util/viewstate.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace quendle {

struct Favourite {
    QString name;
    int score = 0;
};

struct Bookmark {
    QString markheader;     // the first station: at most one bookmark per first station
    QStringList substns;
    int score = 1;
};

struct Alarm {
    Date date;              // the service's departure
    QString dep;
    QString dest;
    int advancemins = 0;
};

class UserState {
public:
    UserState(Journey& journey, Timetable& tt, Platform& platform, Host& host, ViewState& view,
              const Folders& folders);
    ~UserState();
    UserState(const UserState&) = delete;
    UserState& operator=(const UserState&) = delete;

    // --- preferences ---
    QString getprefspath() const;
    void writeprefs();
    void readprefs();
    void readprefsold();
    // What readprefsold makes of the file's text (the reader without the file).
    void readprefstext(const QString& text);
    QString getdateimlookinat() const { return journey_.getdateimlookinat(); }
    // The texts stored under "journstrpref", "myfavsspref" and "bookmarkspref".
    QString journeytext() const;
    QString favouritestext() const;
    QString bookmarkstext() const;
    // The whole text of "quendlepref.txt" for the state in memory.
    QString prefsfiletext() const;
    // Whether the last writeprefs reached both stores (false also when it wrote nothing).
    bool lastsaveok() const { return lastsaveok_; }
    // Saves the time of the last successful update and nothing else: the "]updatestr["
    // line of the preferences file is replaced (or added) and every other byte of the file,
    // and the defaults store, stay as they are. A missing file is written whole from the
    // state in memory. False when nothing could be saved (before the first read, or an
    // unreadable or unwritable file, which is then left as it was).
    bool writelastupdate();

    // --- journeys, bookmarks, favourites ---
    void myselec(const QString& representedObject);
    void changejourn(int position, const QString& station);
    void writebookmark();
    void writethisbookmark(const QStringList& stations);
    bool chekbookmark(const QString& station);
    bool isthisavalidbookmark(int index) const;
    static QStringList makestnsvalid(const QStringList& stations);
    static bool arethesevalidstns(const QStringList&) { return true; }
    void addtofavcount(const QString& station);
    void filterfavsbasedonstns();
    static int getcountforthisfav(const QString&) { return 0; }
    // The first station as the status title shows it: at most 12 characters.
    static QString abbreviatejurnifnecc(const QString& station);

    // --- alarms ---
    bool caniaddthisalarm(Date departure) const;
    void addalarmwithtstuff(const QString& dep, const QString& dest, int minutes, Date departure);
    void addalarm(int minutes);
    void alarmtimerfunc();
    void lumspeak(const QString& text);
    void removealarm();
    void removeexpiredalarms();
    bool doigotalarm() const { return !myalarms.empty(); }
    bool caniaddalarm() const { return journey_.myjournstr.size() >= 2; }
    QString getalarmstr() const;
    void addminstoalarm(int minutes);
    void myalarmaction();
    void alarmselec() { myalarmaction(); }
    void showalarmscreen(int minutes);
    void hidealarmscreen();
    void showalarmscreenol();
    static void speakttext(const QString&) {}
    static void addalarmthistile() {}

    std::vector<Favourite> myfavs;
    std::vector<Favourite> myfavstoshow;
    std::vector<Bookmark> mybookmarks;
    std::vector<Alarm> myalarms;
    TimerId alarmtimer = kNoTimer;
    int alarmdefaultmins = 20;
    int maxfavstoshow = 11;
    int ivereadprefs = 0;
    // The update module's record of the last successful update (first element).
    std::vector<Date>* mylastupdateray = nullptr;

private:
    Date now() const { return platform_.clock->now(); }
    QString lastupdateline() const;   // "]updatestr[" pipe date "]updatestr["
    bool knownstation(const QString& name) const;
    // Adds bookmarks in order, each replacing an older one with the same first station:
    // the result of writethisbookmark on each, in one pass.
    void writethesebookmarks(const std::vector<QStringList>& lists);
    void readjourney(const QString& text, int maxpieces);
    void readfavourites(const QString& text);
    void lumalert(const QString& text);

    Journey& journey_;
    Timetable& tt_;
    Platform& platform_;
    Host& host_;
    ViewState& view_;
    const Folders& folders_;
    bool lastsaveok_ = false;
};

} // namespace quendle
