#pragma once
// quendle-cli's words for trackwork: the `trackwork` command and the marks `next` adds.

#include <QString>
#include <QTextStream>

namespace quendle {

class AppModel;
struct FetchOutcome;

// One line on a page download: cached, or why the copy cached before (if any) was kept.
void sayfetch(QTextStream& out, const QString& what, const FetchOutcome& o, const QString& cachepath);

// Downloads the trackwork and interruption pages and says, for each, whether it was
// cached or why the old cache was kept. The notices are read again afterwards. true when
// both pages were cached.
bool fetchoperatorpages(AppModel& app, QTextStream& out);
// The notices kept, then the journey's shown services and the trackwork that touches them.
int cmdtrackwork(const AppModel& app, QTextStream& out);
// One line for a service of `next`: the trackwork in force or upcoming, or "" for none.
QString trackworkmark(const AppModel& app, int leg, int serv);

} // namespace quendle
