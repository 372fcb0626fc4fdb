#pragma once
// The timetable store: the tables folder and its records (`mytables`), and the two
// catalogues built from the tables: lines (`linesmute`) and stations (`stnsmute`).
// A line number indexes `linesmute`; a station number indexes `stnsmute`.

#include "timetable/tablefile.h"
#include "util/date.h"
#include "util/folders.h"

#include <QHash>
#include <QString>
#include <QStringList>

#include <functional>
#include <vector>

namespace quendle {

struct TableRecord {
    QString name;          // file name up to its first "."
    QString displayname;   // whole file name
    QString datestr;       // always "jun 11"
    QString datefile;      // the header's DATE text
    QString tablepath;
    QString enabled;       // always "1"
};

struct LineRecord {
    QString name;          // line identity: display name + "#" + direction text
    QString dispname;
    QStringList stns, stnsh, stnsv;
    QString hexcol;
    Rgba nscol;
    QString network;       // the table file's path
    int mytablenum = 0;
    QString pathotable;
    std::vector<int> stnints;   // station numbers, filled by rewritelinesmutewithstnnums
};

struct StationRecord {
    QString name, hloc, vloc;
    friend bool operator==(const StationRecord&, const StationRecord&) = default;
};

// A line through a station, as the journey search asks for it.
struct LineForStation {
    QString linenum, depint, destint, matchlinename;
};

class Timetable {
public:
    explicit Timetable(const Folders& folders, bool publisherMode = false);

    // Where the built-in table lives (a compiled-in resource).
    static QString getbundledtablepath();
    QString getbundledtable() const { return bundledPath_; }
    void setbundledtablepath(const QString& path) { bundledPath_ = path; }

    // --- the tables folder ---
    void setuptables();
    void copydownloadedtablestotablefold();
    void copybundledtablesifmorerecent();
    void copybundledtablesifnothing();
    void loadthistable(const QString& path);
    QStringList getmytablesinmahfold() const;
    QString gettabledateandname(int index) const;
    bool getenabledstatoftable(int index) const;    // always false
    void enabledisbletable(int) {}
    static bool isthisapushabletable(const QString&) { return true; }
    void removedexpiredtables() {}
    void readbundledtables() {}
    static QString getthistablepath(const QString& path);
    // Where the built-in table is installed: "SydneyTrains.vq" in the tables folder, or
    // beside it when a folder of that name is in the way.
    QString installedtablepath() const;
    // What start-up found wrong with the tables folder and did about it, for the user.
    QStringList setupnotes;

    // --- lines and stations ---
    void setuplinesmultitable();
    void addlinesfromthistabletothis(const QString& path, std::vector<LineRecord>& list, int tablenum);
    void setupstnsmute();
    void rewritelinesmutewithstnnums();
    int stnnametonum(const QString& name) const;          // -1 when none
    int stnnametointfixfix(const QString& name) const { return stnnametonum(name); }
    int stnnametoint(const QString& name) const;           // 0 when none
    int stnnametointfixsetup(const QString& name) const { return stnnametoint(name); }
    QString stnnumtoname(int num) const;
    QString linenumtoname(int num) const;
    QString linenameandstntoname(int line, int stop) const;
    // The first line whose display name shares enough words with text; -1 when none.
    int linenametonum(const QString& text) const;
    // Every line the short form of text (its words before " Line") can stand for, in line order.
    std::vector<int> linenametonums(const QString& text) const;
    int thisstnonthisline(const QString& name, int line) const;
    std::vector<LineForStation> getlinesforthisstn(const QString& name) const;
    static bool validstn(const QString& name) { return name.size() > 2; }

    // --- service times ---
    // Rows of the day block serving `day` for line number `linenum` (identity `lineName`).
    RowsPtr getthislinetimesnew(const QString& lineName, Date day, int linenum);
    // The same answer by re-reading and re-splitting the file, kept for comparison.
    Rows getthislinetimesliteral(const QString& lineName, Date day, int linenum) const;

    std::vector<TableRecord> mytables;
    std::vector<Date> tabledates;
    std::vector<LineRecord> linesmute;
    std::vector<StationRecord> stnsmute;

    // Installs downloaded tables first; the update module may replace it.
    std::function<void()> downloadedTablesHook;

private:
    // Clears broken links and special files from where tables go; never a user's folder.
    void makeroomfortables();
    void installbundled(const QString& installed);

    const Folders& folders_;
    bool publisher_;
    QString bundledPath_;
    TableCache cache_;
    // Station name -> its first number, made with stnsmute; used while it still fits.
    QHash<QString, int> stnindex_;
    size_t stnindexsize_ = 0;
};

} // namespace quendle
