// quendle-gentable on small network descriptions made for the test: workings over part
// of a route, spans without trains, and the descriptions it must refuse.

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

struct GenRun {
    int status = -1;
    QString err, table;
};

const char* const kStations = "A|151.0|-33.0\nB|151.1|-33.1\nC|151.2|-33.2\n";

// One line A - B - C, two minutes from stop to stop; `extra` goes after the first
// route's whole-route patterns (its workings), `patterns` replaces them.
QString network(const QString& extra, const QString& patterns = QStringLiteral(
                                          "weekday  0600 +30, last 0700\n"
                                          "saturday 0600 +60, last 0700\n"
                                          "sunday   0600 +60, last 0600\n"))
{
    return QStringLiteral("line Test Line\ncode tl\ncolour #123456\nrunning 1.0 60\n\n"
                          "route A to C\n 0.00 A\n 1.00 B\n 2.00 C\n")
           + patterns + extra
           + QStringLiteral("\nroute C to A\n 0.00 C\n 1.00 B\n 2.00 A\n"
                            "weekday 0600 +60, last 0600\nsaturday 0600 +60, last 0600\nsunday 0600 +60, last 0600\n");
}

GenRun generate(const QString& lines)
{
    QTemporaryDir dir;
    QDir(dir.path()).mkdir(QStringLiteral("net"));
    for (const auto& [name, text] : {std::pair{"stations.txt", QString::fromLatin1(kStations)}, std::pair{"lines.txt", lines}}) {
        QFile f(dir.filePath(QStringLiteral("net/") + QLatin1String(name)));
        EXPECT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(text.toUtf8());
    }
    QProcess p;
    p.start(qEnvironmentVariable("QUENDLE_GENTABLE"), {dir.filePath(QStringLiteral("net")), dir.filePath(QStringLiteral("out.vq"))});
    EXPECT_TRUE(p.waitForFinished(30000));
    GenRun r;
    r.status = p.exitCode();
    r.err = QString::fromUtf8(p.readAllStandardError());
    QFile out(dir.filePath(QStringLiteral("out.vq")));
    if (out.open(QIODevice::ReadOnly))
        r.table = QString::fromUtf8(out.readAll());
    return r;
}

// The rows a line direction has on a day, in order: those of its first day block whose
// DAYS hold the day's digit, as the reader picks them.
QStringList rows(const QString& table, const QString& direction, char digit)
{
    QStringList out;
    bool inLine = false, inDay = false, found = false;
    for (const QString& row : table.split(QLatin1Char('\n'))) {
        if (row.startsWith(QLatin1String("<line name"))) {
            inLine = row.contains(QLatin1Char('#') + direction + QLatin1Char('"'));
        } else if (row.startsWith(QLatin1String(" <day num="))) {
            inDay = inLine && !found && row.section(QLatin1Char('"'), 1, 1).contains(QLatin1Char(digit));
            found = found || inDay;
        } else if (inDay && row.endsWith(QLatin1Char('}'))) {
            out << row;
        }
    }
    return out;
}

} // namespace

TEST(GenTable, WorkingsRunOverPartOfTheRouteInTimeOrder)
{
    // The working leaves B at 06:15; its next train would leave inside the span without
    // trains, so it waits for 08:00.
    const GenRun r = generate(network(QStringLiteral("working  B to C\nweekday  0615 +30, 0645 none, 0800 +10, last 0810\n")));
    ASSERT_EQ(r.status, 0) << r.err.toStdString();
    EXPECT_EQ(rows(r.table, QStringLiteral("A to C"), '2'),
              QStringList({"600,602,604,}", "-1,615,617,}", "630,632,634,}", "700,702,704,}", "-1,800,802,}",
                           "-1,810,812,}"}));
    // Days without a pattern have none of the working's trains.
    EXPECT_EQ(rows(r.table, QStringLiteral("A to C"), '6'), QStringList({"600,602,604,}", "700,702,704,}"}));
    EXPECT_EQ(rows(r.table, QStringLiteral("C to A"), '0'), QStringList({"600,602,604,}"}));
}

TEST(GenTable, RefusesDescriptionsThatWouldNotReadAsWritten)
{
    const std::pair<QString, const char*> faults[] = {
        // A change point that no train leaves at.
        {network({}, QStringLiteral("weekday  0600 +30, 0615 +10, last 0700\nsaturday 0600 +60, last 0700\n"
                                    "sunday   0600 +60, last 0600\n")),
         "no train leaves at its change point 0615"},
        // Two trains leaving B together for C: the reader would keep only one.
        {network(QStringLiteral("working  B to C\nweekday  0602 +30, last 0602\n")),
         "two weekday trains leave B at 0602 for C"},
        {network(QStringLiteral("working  B to D\nweekday  0615 +30, last 0615\n")), "no stop \"D\""},
        {network(QStringLiteral("working  C to B\nweekday  0615 +30, last 0615\n")), "C does not come before B"},
        {network(QStringLiteral("working  B to C\nweekday  0615 none, last 0700\n")), "\"none\" must follow"},
        {network(QStringLiteral("working  B to C\nweekday  2558 +30, last 2558\n")), "past 25:59"},
    };
    for (const auto& [lines, message] : faults) {
        const GenRun r = generate(lines);
        EXPECT_EQ(r.status, 1) << message << ": " << r.err.toStdString();
        EXPECT_TRUE(r.err.contains(QLatin1String(message))) << r.err.toStdString();
        EXPECT_TRUE(r.table.isEmpty()) << message;
    }
}
