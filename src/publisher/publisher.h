#pragma once
// The publisher's tools (publisher mode only, on the machine holding the marker file):
// fetch the operator's timetable pages, one per line direction and day, into the strip
// folder; reduce each page to an intermediate text in the compressed folder; merge those
// into the table "SydneyTrains.vq"; and put the table on the publisher's web folder with
// the update page (see publish.h). The steps print "###" lines to the console as they go
// and alert the publisher when a page cannot be used; processing goes on.

#include "platform/platform.h"
#include "publisher/timetablepage.h"
#include "util/folders.h"

#include <QString>
#include <QStringList>

#include <functional>

namespace quendle {

class Publisher {
public:
    // The operator's line codes, in the order they are fetched.
    static constexpr const char* kLineCodes =
        "nt|op|bk|iw|eh|il|cu|ns|wt|cl|opc|opl|sc|sh|bm|nc|hu|ec|missincircularquaty";
    // The operator's pages below its site address: the line's page, which names the base of
    // its four direction identifiers between the two markers, and the search form.
    static constexpr const char* kByLinePath = "timetables/by-line/?line=";
    static constexpr const char* kSearchPath = "timetables/search/";
    static constexpr const char* kDirectionBefore = "dir-";
    static constexpr const char* kDirectionAfter = "-r";
    // A search answer is a timetable page only when it holds this.
    static constexpr const char* kTimesMarker = "START: Times Slider";

    Publisher(Platform& platform, const Folders& folders);

    // The operator's site, ending in "/"; set by the owner (it is the trackwork pages' site).
    std::function<QString()> operatorurl;
    // The built-in lists the table's stops and colours come from (NAME|H|V, NAME|#RRGGBB).
    QString locationspath = QStringLiteral(":/publisher/mylocations.txt");
    QString colourspath = QStringLiteral(":/publisher/mylincols.txt");

    // --- the publisher's folders (all below ~/quendle-publisher) ---
    QString getstripbasefold() const;       // no trailing "/"
    QString getstripfold() const;           // the pages; ends in "/"
    QString gettempstripfold() const;       // ends in "/"
    QString getcompressedfold() const;      // ends in "/"
    QString getcomptablepath() const;       // the merged table
    QString getlastpushedtablepath() const; // its copy for the web space
    QString getpublishfold() const;         // the web space's copy (update page, parlune/)
    bool amizorb() const;

    // --- stripping ---
    // Whether the strip folder is more than 30 days old by calcdaysdiffint (whole months
    // dropped, as that measure always does); a missing strip folder is due.
    bool timefotmonthlystrip() const;
    void striptables();
    // Night buses have no timetable pages of their own: nothing to fetch.
    void stripnightride() {}
    // The four direction identifiers named by a line's page; empty when it names none.
    static QStringList directionidentifiers(const QString& bylinepage);
    // The search form's fields for one line direction and day.
    static QString searchform(const QString& code, const QString& direction, Date day);
    // A page file's name: line code, direction index, "#", the day, ".txt" and two blanks.
    static QString pagefilename(const QString& code, int direction, Date day);

    // --- compression and merging ---
    void compresstables();
    // Writes the page's intermediate file; returns its path ("" when nothing was written).
    QString compressthistable(const QString& pagepath);
    // Returns the merged table's text ("" when the compressed folder holds nothing).
    QString mergecompressedtables();
    bool verifymergedtable(const QString& path);
    void dictionaryraytotnfile() {}

    QString getgpsthisstn(const QString& name) const;
    QString convstnstogps(const QStringList& names) const;
    QString getcolthisli(const QString& linename) const;

    // --- the upload step: the merged table and the version onto the web folder ---
    bool doineedtopushupdate() const;
    void pushupdate();
    void pushappupdate();

private:
    Date now() const { return platform_.clock->now(); }
    void alert(const QString& message);
    void publishcurrent(double version);
    Platform& platform_;
    const Folders& folders_;
};

} // namespace quendle
