#pragma once
// Helpers for the GTFS tests: a small feed written to a folder, quendle-cli run
// in-process, and a table read back line by line as the reader sees it.

#include "cli/cli.h"
#include "platform/system/manualclock.h"
#include "platform/system/manualtimers.h"
#include "timetable/tablefile.h"
#include "timetable/timetable.h"
#include "util/files.h"

#include <QDir>
#include <QFile>
#include <QMap>

#include <gtest/gtest.h>

namespace quendle::gtfstest {

struct CliRun {
    int status = -1;
    QString out, err;
};

inline CliRun runcliat(const QStringList& args, Date at, const QString& home)
{
    ManualClock clock(at);
    ManualTimers timers(clock);
    Platform p;
    p.clock = &clock;
    p.timers = &timers;
    p.homeDir = home;
    CliRun r;
    QTextStream out(&r.out), err(&r.err);
    r.status = runcli(args, p, out, err);
    out.flush();
    err.flush();
    return r;
}

// Writes each file (name to bytes, written as given) into dir.
inline void writefeed(const QString& dir, const QMap<QString, QByteArray>& files)
{
    QDir().mkpath(dir);
    for (auto it = files.cbegin(); it != files.cend(); ++it) {
        QFile f(dir + "/" + it.key());
        ASSERT_TRUE(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
        f.write(it.value());
    }
}

// One line block of a table, read back the way the application reads it.
struct ReadLine {
    QString name;
    QStringList stns, stnsh, stnsv;
    // Rows of the day block serving a day digit, trimmed to one time per stop.
    std::vector<std::vector<int>> rows(const QStringList& tableLines, int digit) const
    {
        std::vector<std::vector<int>> out;
        for (Row r : linetimesfromlines(tableLines, name, digit)) {
            if (r.size() < static_cast<size_t>(stns.size()))
                continue;
            r.resize(stns.size());
            out.push_back(r);
        }
        return out;
    }
};

inline std::vector<ReadLine> readlines(const QString& path)
{
    Folders folders;
    Timetable tt(folders);
    std::vector<LineRecord> records;
    tt.addlinesfromthistabletothis(path, records, 0);
    std::vector<ReadLine> out;
    for (const LineRecord& l : records)
        out.push_back({l.name, l.stns, l.stnsh, l.stnsv});
    return out;
}

// No line identity may sit inside another line's header: the reader finds a line by
// a substring test on header lines.
inline void expectidentitiesapart(const QString& tableText)
{
    QStringList headers, names;
    for (const QString& l : splittablelines(tableText))
        if (l.contains("line name")) {
            headers << l;
            names << l.split('"').value(1);
        }
    for (int i = 0; i < names.size(); ++i)
        for (int j = 0; j < headers.size(); ++j) {
            if (i != j) {
                EXPECT_FALSE(headers[j].contains(names[i])) << names[i].toStdString() << " inside "
                                                            << headers[j].toStdString();
            }
        }
}

} // namespace quendle::gtfstest
