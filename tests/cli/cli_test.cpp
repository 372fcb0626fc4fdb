#include "cli/cli.h"
#include "platform/system/manualtimers.h"
#include "util/dates.h"
#include "util/files.h"
#include "support/tables.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>

using namespace quendle;

namespace {

struct CliRun {
    int status = -1;
    QString out, err;
};

// quendle-cli in-process on the built-in table, in a throw-away home, at a given moment.
class CliTest : public ::testing::Test {
protected:
    CliRun run(const QStringList& args, Date at)
    {
        ManualClock clock(at);
        ManualTimers timers(clock);
        Platform p;
        p.clock = &clock;
        p.timers = &timers;
        p.homeDir = home.path();
        CliRun r;
        QTextStream out(&r.out), err(&r.err);
        r.status = runcli(args, p, out, err);
        out.flush();
        err.flush();
        return r;
    }
    QTemporaryDir home;
};

Date sydney(int y, int m, int d, int h, int min) { return datefromcivil({y, m, d, h, min, 0}); }

} // namespace

TEST_F(CliTest, NextShowsServicesAtAnyHourOfAnyDay)
{
    // Monday before dawn, Friday late evening, Saturday and Sunday middays, a Wednesday
    // just after midnight.
    const std::vector<Date> moments = {sydney(2026, 11, 23, 2, 0), sydney(2026, 11, 27, 23, 30),
                                       sydney(2026, 11, 28, 12, 0), sydney(2026, 11, 29, 12, 0),
                                       sydney(2026, 11, 25, 0, 20)};
    for (Date at : moments) {
        const CliRun r = run({"--journey", "Bondi Junction|Edgecliff", "next"}, at);
        SCOPED_TRACE(lumdatedisplay(at).toStdString());
        EXPECT_EQ(r.status, 0) << r.err.toStdString();
        EXPECT_TRUE(r.out.contains("Bondi Junction → Edgecliff")) << r.out.toStdString();
        EXPECT_TRUE(r.out.contains("leaves in")) << r.out.toStdString();
        // T4 and the South Coast Line both serve the leg.
        EXPECT_TRUE(r.out.contains("T4 Eastern Suburbs & Illawarra Line") || r.out.contains("South Coast Line"))
            << r.out.toStdString();
        EXPECT_TRUE(r.out.contains("Total travel time")) << r.out.toStdString();
    }
}

TEST_F(CliTest, AJourneyAcrossTwoLinesGetsItsChangeStation)
{
    const CliRun r = run({"--journey=Bondi Junction|Parramatta", "next"}, sydney(2026, 11, 24, 8, 0));
    ASSERT_EQ(r.status, 0) << r.err.toStdString();
    EXPECT_TRUE(r.out.contains("change at")) << r.out.toStdString();
    const QString journeyLine = r.out.section('\n', 0, 0);
    EXPECT_EQ(journeyLine.count("→"), 2) << journeyLine.toStdString();
}

TEST_F(CliTest, UnknownStationsAndBadUsageExitWithTwo)
{
    CliRun r = run({"--journey", "Bondi Junctoin|Edgecliff", "next"}, sydney(2026, 11, 24, 8, 0));
    EXPECT_EQ(r.status, 2);
    EXPECT_TRUE(r.err.contains("unknown station \"Bondi Junctoin\"")) << r.err.toStdString();
    EXPECT_TRUE(r.err.contains("Bondi Junction")) << r.err.toStdString();
    r = run({"frobnicate"}, sydney(2026, 11, 24, 8, 0));
    EXPECT_EQ(r.status, 2);
    r = run({"--journey"}, sydney(2026, 11, 24, 8, 0));
    EXPECT_EQ(r.status, 2);
    r = run({"--help"}, sydney(2026, 11, 24, 8, 0));
    EXPECT_EQ(r.status, 0);
    EXPECT_TRUE(r.out.contains("table check FILE"));
    EXPECT_EQ(closeststations("strathfeld", {"Central", "Strathfield", "Stanmore"}).value(0), "Strathfield");
}

TEST_F(CliTest, DumpHoldsTheStateWithStableKeysAndForms)
{
    const CliRun r = run({"--journey", "Bondi Junction|Edgecliff", "dump"}, sydney(2014, 3, 9, 17, 4));
    ASSERT_EQ(r.status, 0) << r.err.toStdString();
    const QJsonObject o = QJsonDocument::fromJson(r.out.toUtf8()).object();
    EXPECT_EQ(o["now"].toString(), "2014-03-09T17:04:00+11:00");
    for (const char* key : {"mytables", "linesmute", "stnsmute", "myjournstr", "mylinematches", "myservsmultid",
                            "connectingservs", "mytraveltimes", "minzztraveltime", "maxzztraveltime", "myindexes",
                            "myactualindex", "needleontherecord", "remstr", "myremaintimes", "myzoominremaintimes"})
        EXPECT_TRUE(o.contains(key)) << key;
    const QJsonObject service = o["myservsmultid"].toArray()[0].toArray()[0].toObject();
    for (const char* key : {"linenum", "depint", "destint", "deptime", "desttime", "depcrossedmid", "destcrossedmid",
                            "stopnums", "stoptimes", "stopsh", "stopsv", "debugstops"})
        EXPECT_TRUE(service.contains(key)) << key;
    EXPECT_TRUE(service["linenum"].isDouble());
    EXPECT_TRUE(service["deptime"].toString().endsWith(":00+11:00"));
    EXPECT_TRUE(service["desttime"].toString().endsWith(":17+11:00"));
    EXPECT_TRUE(o["myindexes"].toArray()[0].isDouble());
    const QJsonObject line = o["linesmute"].toArray()[0].toObject();
    for (const char* key : {"name", "dispname", "hexcol", "stns", "stnints", "network"})
        EXPECT_TRUE(line.contains(key)) << key;
    EXPECT_EQ(o["mytables"].toArray()[0].toObject()["name"].toString(), "SydneyTrains");
}

TEST_F(CliTest, StationsLinesAndTableCheck)
{
    const Date at = sydney(2026, 11, 24, 8, 0);
    const CliRun stations = run({"stations"}, at);
    const QStringList names = stations.out.split('\n', Qt::SkipEmptyParts);
    EXPECT_GT(names.size(), 200);
    EXPECT_TRUE(names.contains("Central"));
    QStringList sorted = names;
    std::sort(sorted.begin(), sorted.end());
    EXPECT_EQ(names, sorted);

    const CliRun lines = run({"lines"}, at);
    EXPECT_TRUE(lines.out.contains("T4 Eastern Suburbs & Illawarra Line#Bondi Junction to Waterfall\t#005AA3"));
    EXPECT_TRUE(lines.out.contains("Blue Mountains Line#"));

    const QString table = home.path() + "/SydneyTrains.vq";
    ASSERT_TRUE(QFile::copy(":/tables/SydneyTrains.vq", table));
    const CliRun good = run({"table", "check", table}, at);
    EXPECT_EQ(good.status, 0) << good.out.toStdString();
    EXPECT_TRUE(good.out.contains(": valid table"));
    EXPECT_TRUE(good.out.contains("days 12345:"));

    writefile("  <timetable name = \"x\" date=\"1 May 2014\" >\n<line name =\"a\" >\n", home.path() + "/", "bad.vq");
    const CliRun bad = run({"table", "check", home.path() + "/bad.vq"}, at);
    EXPECT_EQ(bad.status, 1);
    EXPECT_TRUE(bad.out.contains("not a valid table"));
    // The sentinel's month "nov" matches no full month name, so it reads as December.
    EXPECT_TRUE(bad.out.contains("reads as 22 December 1800")) << bad.out.toStdString();
    EXPECT_EQ(run({"table", "check"}, at).status, 2);
}

TEST_F(CliTest, TableCheckRefusesSpecialFilesAndWarnsOfAnUnreadableDate)
{
    const Date at = sydney(2026, 11, 24, 8, 0);
    const QString fifo = home.path() + "/pipe.vq";
    ASSERT_EQ(::mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);
    for (const auto& [path, reason] : std::vector<std::pair<QString, QString>>{
             {fifo, "the file is a FIFO (named pipe)"}, {"/dev/zero", "the file is a device"},
             {home.path(), "the file is a folder"}}) {
        const CliRun r = run({"table", "check", path}, at);
        EXPECT_EQ(r.status, 1);
        EXPECT_TRUE(r.out.contains("not a valid table\nwhy: " + reason)) << r.out.toStdString();
    }

    // A valid table whose DATE has too few words reads as the 1800 sentinel: say so.
    const QString lines = fixtures::lineblock("A#x", "A|1|2,B|3|4", {fixtures::dayblock("1", {"1,2,}"})})
        + fixtures::lineblock("A#y", "B|3|4,A|1|2", {fixtures::dayblock("1", {"1,2,}"})});
    writefile(fixtures::table("9 March 2014", {lines}), home.path() + "/", "short.vq");
    CliRun r = run({"table", "check", home.path() + "/short.vq"}, at);
    EXPECT_EQ(r.status, 0);
    EXPECT_TRUE(r.out.contains("warning: DATE \"9 March 2014\" does not read as a date: it has fewer than five "
                               "words, so it reads as the sentinel of 1800; such a table counts as older than the "
                               "built-in one"))
        << r.out.toStdString();
    writefile(fixtures::table("3 mar 2014 10:15:00 AM", {lines}), home.path() + "/", "abbrev.vq");
    r = run({"table", "check", home.path() + "/abbrev.vq"}, at);
    EXPECT_TRUE(r.out.contains("warning: DATE \"3 mar 2014 10:15:00 AM\" does not read as a date: \"mar\" is not a "
                               "full month name, so it reads as December"))
        << r.out.toStdString();
    writefile(fixtures::table("3 March 2014 10:15:00 AM", {lines}), home.path() + "/", "good.vq");
    EXPECT_FALSE(run({"table", "check", home.path() + "/good.vq"}, at).out.contains("warning"));
}

TEST_F(CliTest, TheJourneyOptionFollowsTheRulesOfAJourneyBuiltByHand)
{
    const Date at = sydney(2026, 11, 24, 8, 0);
    CliRun r = run({"--journey", "Central|Redfern|Strathfield|Lidcombe|Granville|Parramatta|Westmead|Blacktown",
                    "next"},
                   at);
    EXPECT_EQ(r.status, 2);
    EXPECT_TRUE(r.err.contains("a journey holds at most 7 stations, not 8")) << r.err.toStdString();
    r = run({"--journey", "Central|Central", "next"}, at);
    EXPECT_EQ(r.status, 2);
    EXPECT_TRUE(r.err.contains("\"Central\" follows itself")) << r.err.toStdString();

    // A table of the user's: two lines that no change joins, and a station with a 1 MB name.
    const QString tables = home.path() + "/Library/Preferences/quendlefddffdrterXAXAXA/tablesverified";
    QDir().mkpath(tables);
    const QString huge(1 << 20, QChar('x'));
    writefile(fixtures::table("1 January 2100 1:00:00 AM",
                              {fixtures::lineblock("Up#A to B", "Aa|151|-33,Bb|151.1|-33",
                                                   {fixtures::dayblock("0123456", {"900,910,}"})}),
                               fixtures::lineblock("Over#C to D", "Cc|152|-34,Dd|152.1|-34," + huge + "|1|2",
                                                   {fixtures::dayblock("0123456", {"900,910,920,}"})})}),
              tables + "/", "SydneyTrains.vq");
    // Two legs without a line: nothing is inserted, and each says so rather than "no services".
    r = run({"--journey", "Bb|Aa|Cc", "next"}, at);
    EXPECT_EQ(r.status, 0) << r.err.toStdString();
    EXPECT_TRUE(r.out.contains("Bb → Aa: no line connects Bb and Aa")) << r.out.toStdString();
    EXPECT_TRUE(r.out.contains("Aa → Cc: no line connects Aa and Cc")) << r.out.toStdString();
    // A 100 KB name against the 1 MB one: a short answer, at once.
    r = run({"--journey", QString(100 * 1024, QChar('y')) + "|Aa", "next"}, at);
    EXPECT_EQ(r.status, 2);
    EXPECT_TRUE(r.err.contains("unknown station \"yyyy")) << r.err.left(200).toStdString();
    EXPECT_LT(r.err.size(), 1000);

    // A FIFO where the built-in table goes is cleared away, and the user is told.
    const QString fifo = tables + "/SydneyTrains.vq";
    QFile::remove(fifo);
    ASSERT_EQ(::mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);
    r = run({"--journey", "Bondi Junction|Edgecliff", "next"}, at);
    EXPECT_EQ(r.status, 0);
    EXPECT_TRUE(r.out.contains("leaves in")) << r.out.toStdString();
    EXPECT_TRUE(r.err.contains("quendle-cli: " + fifo + " was a FIFO; it was removed")) << r.err.toStdString();
}

namespace {

struct Program {
    int status = -1;
    QByteArray out, err;
};

// The real quendle-cli in a home of its own, with extra environment variables.
Program runprogram(const QString& home, const QStringList& args, const QStringList& env = {})
{
    const QString program = qEnvironmentVariable("QUENDLE_CLI");
    QProcess p;
    QProcessEnvironment e = QProcessEnvironment::systemEnvironment();
    e.remove("QUENDLE_NOW");
    e.insert("HOME", home);
    e.insert("XDG_CONFIG_HOME", home + "/.config");
    for (const QString& kv : env)
        e.insert(kv.section('=', 0, 0), kv.section('=', 1));
    p.setProcessEnvironment(e);
    p.start(program, args);
    Program r;
    if (!p.waitForFinished(60000))
        return r;
    r.status = p.exitCode();
    r.out = p.readAllStandardOutput();
    r.err = p.readAllStandardError();
    return r;
}

} // namespace

TEST(CliProgram, AGivenInstantStandsStillForTheWholeCommand)
{
    ASSERT_FALSE(qEnvironmentVariable("QUENDLE_CLI").isEmpty());
    QTemporaryDir home;
    // A table of its own (dated after the built-in one, so it stays) with a service at 08:15.
    const QString tables = home.path() + "/Library/Preferences/quendlefddffdrterXAXAXA/tablesverified";
    QDir().mkpath(tables);
    writefile(fixtures::table("1 January 2100 1:00:00 AM",
                              {fixtures::lineblock("Test#Bondi Junction to Edgecliff",
                                                   "Bondi Junction|151.25|-33.89,Edgecliff|151.23|-33.88",
                                                   {fixtures::dayblock("0123456", {"815,820,}", "845,850,}"})}),
                               fixtures::lineblock("Test#Edgecliff to Bondi Junction",
                                                   "Edgecliff|151.23|-33.88,Bondi Junction|151.25|-33.89",
                                                   {fixtures::dayblock("0123456", {"900,905,}"})})}),
              tables + "/", "SydneyTrains.vq");

    // Ten minutes before the departure by the frozen clock: the minute past it counts, 11m.
    for (const QStringList& how : {QStringList{"--now", "2014-03-10T08:05:00", "dump"}, QStringList{"dump"}}) {
        const Program r = runprogram(home.path(), how, {"QUENDLE_NOW=2014-03-10T08:05:00"});
        ASSERT_EQ(r.status, 0) << r.err.toStdString();
        const QJsonObject o = QJsonDocument::fromJson(r.out).object();
        EXPECT_EQ(o["now"].toString(), "2014-03-10T08:05:00+11:00");
        EXPECT_EQ(o["remstr"].toString(), " 11m") << r.out.left(400).toStdString();
    }

    // Unusable instants, from either source, stop the command with a reason.
    const std::vector<std::pair<QStringList, QStringList>> bad = {
        {{"--now", "", "next"}, {}},
        {{"--now=2014-10-05T02:30:00", "next"}, {}},
        {{"next"}, {"QUENDLE_NOW=0000-06-01T10:00:00"}},
        {{"--now", "2016-12-31T23:59:60", "next"}, {"QUENDLE_NOW=2014-03-10T08:05:00"}},
    };
    for (const auto& [args, env] : bad) {
        const Program r = runprogram(home.path(), args, env);
        EXPECT_EQ(r.status, 2) << args.join(' ').toStdString();
        EXPECT_TRUE(r.err.contains("is not a usable instant")) << r.err.toStdString();
        EXPECT_TRUE(r.out.isEmpty());
    }
}

TEST_F(CliTest, WesternLineMorningPeakTrainsAreMinutesApart)
{
    // A Tuesday at 07:30 from Emu Plains to Central: the strip's next service, and the
    // ones after it within the hour, no more than a few minutes apart.
    const Date at = sydney(2026, 11, 24, 7, 30);
    const CliRun next = run({"--journey", "Emu Plains|Central", "next"}, at);
    ASSERT_EQ(next.status, 0) << next.err.toStdString();
    EXPECT_TRUE(next.out.contains("Emu Plains 7:3")) << next.out.toStdString();
    const CliRun r = run({"--journey", "Emu Plains|Central", "dump"}, at);
    ASSERT_EQ(r.status, 0) << r.err.toStdString();
    const QJsonArray leg = QJsonDocument::fromJson(r.out.toUtf8()).object()["myservsmultid"].toArray()[0].toArray();
    std::vector<QDateTime> departures;
    for (const QJsonValue& s : leg) {
        const QDateTime dep = QDateTime::fromString(s.toObject()["deptime"].toString(), Qt::ISODate);
        if (dep >= QDateTime::fromString("2026-11-24T07:30:00+11:00", Qt::ISODate)
            && dep < QDateTime::fromString("2026-11-24T08:30:00+11:00", Qt::ISODate))
            departures.push_back(dep);
    }
    std::sort(departures.begin(), departures.end());
    ASSERT_GE(departures.size(), 10u);
    EXPECT_LE(departures.front().secsTo(QDateTime::fromString("2026-11-24T07:30:00+11:00", Qt::ISODate)), 0);
    for (size_t i = 1; i < departures.size(); ++i)
        EXPECT_LE(departures[i - 1].secsTo(departures[i]), 7 * 60) << departures[i].toString(Qt::ISODate).toStdString();
}

TEST_F(CliTest, DumpShowsTheStripGeometryAndMapBox)
{
    const CliRun r = run({"--journey", "Bondi Junction|Central|Strathfield", "dump"}, sydney(2026, 11, 24, 8, 0));
    ASSERT_EQ(r.status, 0) << r.err.toStdString();
    const QJsonObject o = QJsonDocument::fromJson(r.out.toUtf8()).object();
    EXPECT_EQ(o["zoomed"].toInt(), 1);
    EXPECT_EQ(o["selectionsquares"].toArray().size(), 4);
    const QJsonArray box = o["gpsview"].toArray();
    ASSERT_EQ(box.size(), 4);
    // Zoomed on the trip: east of west, north of south, around Sydney's inner west and east.
    EXPECT_LT(box[0].toDouble(), box[1].toDouble());
    EXPECT_GT(box[2].toDouble(), box[3].toDouble());
    EXPECT_GT(box[0].toDouble(), 150.9);
    EXPECT_LT(box[1].toDouble(), 151.4);
    EXPECT_GT(o["stopsonthistrip"].toInt(), 3);
}

// The strip painted offscreen by the program itself, at its own size or a given width.
TEST(CliProgram, RenderPaintsTheStripIntoAPicture)
{
    const QString program = qEnvironmentVariable("QUENDLE_CLI");
    ASSERT_FALSE(program.isEmpty());
    QTemporaryDir home;
    auto render = [&](const QStringList& args, QString* err = nullptr) {
        QProcess p;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("QUENDLE_NOW", "2026-11-24T08:05:00");
        env.insert("HOME", home.path());
        env.insert("XDG_CONFIG_HOME", home.path() + "/.config");
        env.remove("QT_QPA_PLATFORM");   // the command chooses the offscreen platform itself
        p.setProcessEnvironment(env);
        p.start(program, QStringList{"--journey", "Bondi Junction|Central|Strathfield", "render"} + args);
        EXPECT_TRUE(p.waitForFinished(60000));
        if (err)
            *err = QString::fromUtf8(p.readAllStandardError());
        return p.exitCode();
    };
    const QString file = home.filePath("strip.png");
    ASSERT_EQ(render({file}), 0);
    QImage img(file);
    EXPECT_EQ(img.size(), QSize(620, 145));
    EXPECT_EQ(qAlpha(img.pixel(0, 0)), 0);
    EXPECT_EQ(qAlpha(img.pixel(300, 30)), 255);

    ASSERT_EQ(render({file, "--width", "1240"}), 0);
    EXPECT_EQ(QImage(file).size(), QSize(1240, 290));
    ASSERT_EQ(render({"--zoomed-out", file}), 0);
    EXPECT_EQ(QImage(file).size(), QSize(900, 285));

    QString err;
    EXPECT_EQ(render({}, &err), 2);
    EXPECT_TRUE(err.contains("needs the name of the PNG file")) << err.toStdString();
    EXPECT_EQ(render({file, "--width", "wide"}, &err), 2);
    EXPECT_TRUE(err.contains("--width needs a whole number")) << err.toStdString();
    EXPECT_EQ(render({file, "--sideways"}, &err), 2);
    EXPECT_EQ(render({home.filePath("no/such/folder/strip.png")}, &err), 1);
    EXPECT_TRUE(err.contains("cannot write")) << err.toStdString();
}
