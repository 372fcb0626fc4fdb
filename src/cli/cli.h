#pragma once
// quendle-cli: the terminal front end over the same start-up and recalculation.

#include "platform/platform.h"
#include "util/date.h"

#include <QStringList>
#include <QTextStream>

#include <vector>

namespace quendle {

// Runs one command line (arguments without the program name) on the given platform.
// Returns the process exit status: 0 success, 1 a failed check, 2 a usage error or
// an unknown station.
int runcli(const QStringList& args, Platform& platform, QTextStream& out, QTextStream& err);

// Global options taken before the platform is built.
struct CliGlobals {
    QString now;          // --now ISO8601
    bool hasNow = false;  // --now was given, even with an empty value
    QString journey;      // --journey "A|B|C"
    bool hasJourney = false;
    QStringList rest;     // the command and its arguments
    QString error;        // a usage error, "" when none
};
CliGlobals parseglobals(const QStringList& args);

// A command's arguments in order: plain words (name "", the word in value) and options
// given as "--name value" or "--name=value". Every option takes a value; when the last one
// has none, *problem says so.
struct CommandArg {
    QString name;
    QString value;
};
std::vector<CommandArg> commandargs(const QStringList& args, QString* problem);

// A moment as the terminal shows it: the time, with the weekday when it is not today.
QString dayandtime(Date d, Date now);

// The known station names nearest in spelling to `name`, best first.
QStringList closeststations(const QString& name, const QStringList& known, int count = 3);

} // namespace quendle
