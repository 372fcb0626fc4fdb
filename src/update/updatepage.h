#pragma once
// Reading the publisher's update page: substring tests and expressions on its "<!WA"
// lines, nothing more. The page comes from the network, so nothing here trusts it; the
// table names it gives are checked again before any is used as a file name.

#include <QString>

#include <vector>

namespace quendle {

// A real update page is a few lines; anything much larger is not one, and lines longer
// than this are not "<!WA" lines.
inline constexpr qsizetype kMaxUpdatePage = 256 * 1024;
inline constexpr qsizetype kMaxUpdatePageLine = 4096;

struct OnlineTable {
    QString name;      // the table's file name without ".vq", as the page gives it
    QString datestr;   // its DATE text
};

struct UpdatePage {
    bool toolarge = false;    // longer than kMaxUpdatePage: read as no page at all
    bool reachable = false;   // it holds "iphonevers": the server is the publisher's
    bool hasvers = false;     // it holds "macvers"
    float version = 0;        // the version it offers (0 when none)
    // One record per position of the two lists; empty when either list is missing or
    // their lengths differ.
    std::vector<OnlineTable> tables;
};

UpdatePage readupdatepage(const QString& page);
// The first "macvers[...]" text as a decimal number; 0 when none.
float getonlineversfromstr(const QString& page);

} // namespace quendle
