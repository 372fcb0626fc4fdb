#pragma once
// Publishing tables to any web space: a folder holding the update page, whose "<!WA"
// lines name the current tables, their dates and the current version, and the tables
// folder "parlune/" with the tables themselves. Any static web server (or a file share
// served over HTTP) can serve the folder; Quendle reads the page and fetches from
// "parlune/" the tables it names.

#include <QString>
#include <QStringList>

#include <vector>

namespace quendle {

// The update page's file name (so the folder's own address serves it) and the tables
// folder beside it.
inline constexpr const char* kUpdatePageName = "index.html";
inline constexpr const char* kTablesFolderName = "parlune";

// Whether a table name (a file name without ".vq") may name a file: not empty, at most
// 100 characters, no "/", "\", "..", control character, or leading ".". A name read from
// a downloaded page is used only when it passes, so nothing can be written outside the
// folder meant for it.
bool isplaintablename(const QString& name);

// The update page for these tables (names and DATE texts in the same order) and version.
QString updatepagetext(const QStringList& names, const QStringList& dates, double version);

struct PublishOutcome {
    bool ok = false;
    QString why;             // what was wrong; nothing is written then
    QString page;            // the update page's path
    QStringList names, dates, tablepaths;   // what was published, in order
};

// Writes into dir the tables folder with a copy of every table file given, then the update
// page naming them (so the page never names a table that is not in place). Every table
// must be a valid table with a plain name (its file name up to the first ".") and a DATE
// that the page's lists can hold; otherwise nothing is written. Other files in dir are left
// alone.
PublishOutcome publishupdate(const QString& dir, const QStringList& tablefiles, double version);

} // namespace quendle
