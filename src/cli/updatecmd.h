#pragma once
// quendle-cli's update words: `update` (one check now, as the update timer makes it) and
// `publish` (the update page and tables folder a publisher puts on a web space).

#include "platform/platform.h"

#include <QStringList>
#include <QTextStream>

namespace quendle {

class AppModel;

// One check through the update timer's own path; says what it found and did. Saves only
// the time of a successful check. 0 when the update page was reached, 1 when not (or
// when the time could not be saved).
int cmdupdate(AppModel& app, QTextStream& out, QTextStream& err);
// publish DIR [--table FILE]... [--version X.Y]; 2 on a usage error or an unusable table.
int cmdpublish(const QStringList& args, Platform& platform, QTextStream& out, QTextStream& err);

} // namespace quendle
