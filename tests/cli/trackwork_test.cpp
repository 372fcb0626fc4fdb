#include "cli/cli.h"
#include "platform/desktop/qthttp.h"
#include "platform/system/manualtimers.h"
#include "support/loopback_http_server.h"
#include "support/test_env.h"
#include "util/dates.h"
#include "util/files.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace quendle;
using namespace quendle::testsupport;

namespace {

struct Outcome {
    int status = -1;
    QString out, err;
};

// quendle-cli in-process on the built-in table, fetching from a loopback "operator".
class CliTrackworkTest : public ::testing::Test {
protected:
    CliTrackworkTest() { ensureCoreApp(); }
    Outcome run(const QStringList& args)
    {
        ManualClock clock(datefromcivil({2014, 3, 9, 17, 0, 0}));   // a Sunday
        ManualTimers timers(clock);
        QtHttp http(2000, 1024 * 1024);
        Platform p;
        p.clock = &clock;
        p.timers = &timers;
        p.http = &http;
        p.homeDir = home.path();
        ScopedEnv site("QUENDLE_OPERATOR_URL", server.url("/").toUtf8());
        Outcome r;
        QTextStream out(&r.out), err(&r.err);
        r.status = runcli(args, p, out, err);
        out.flush();
        err.flush();
        return r;
    }
    QTemporaryDir home;
    LoopbackHttpServer server;
};

QByteArray recordedpage()
{
    return readfile(qEnvironmentVariable("QUENDLE_SOURCE_DIR") + "/tests/data/trackwork.html").toUtf8();
}

} // namespace

TEST_F(CliTrackworkTest, FetchThenShowTheNoticesAndTheServicesTheyTouch)
{
    const Outcome none = run({"trackwork"});
    EXPECT_EQ(none.status, 0);
    EXPECT_TRUE(none.out.contains("No trackwork notices are kept")) << none.out.toStdString();

    server.route("/service_updates/trackwork/", 200, recordedpage());
    server.route("/service_updates/service_interruptions/", 200, recordedpage());
    const Outcome r = run({"trackwork", "--fetch"});
    EXPECT_EQ(r.status, 0) << r.err.toStdString();
    const QString o = r.out;
    EXPECT_TRUE(o.contains("Trackwork page: fetched from " + server.url("/service_updates/trackwork/?period=1&lineId=")
                           + " and cached.")) << o.toStdString();
    EXPECT_TRUE(o.contains("Service interruptions page: fetched from")) << o.toStdString();
    EXPECT_TRUE(o.contains("Trackwork notices (6):")) << o.toStdString();
    EXPECT_TRUE(o.contains("  T4 Eastern Suburbs & Illawarra Line\n    Sat 8 Mar 9:05PM until Mon 10 Mar 4:00AM   (in force now)\n"
                           "    closed: Bondi Junction to Central\n"
                           "    Buses replace trains between Central and Strathfield for connections. Allow an extra 30 minutes.\n"))
        << o.toStdString();
    EXPECT_TRUE(o.contains("Buses run every 15 minutes & stop at all stations.")) << o.toStdString();
    EXPECT_TRUE(o.contains("Journey: Bondi Junction → Edgecliff")) << o.toStdString();
    EXPECT_TRUE(o.contains("affected by trackwork: T4 Eastern Suburbs & Illawarra Line, until Mon 10 Mar 4:00AM"))
        << o.toStdString();

    // The notices stay cached: `next` marks an affected service without fetching (Tempe is
    // served by T4 alone).
    server.clearRequests();
    const Outcome next = run({"--journey", "Sydenham|Tempe", "next"});
    EXPECT_EQ(next.status, 0);
    EXPECT_TRUE(next.out.contains("affected by trackwork: T4")) << next.out.toStdString();
    EXPECT_EQ(server.requestCount(), 0);

    // On a journey the Hornsby closure touches, services before it show it upcoming.
    const Outcome north = run({"--journey", "Hornsby|Berowra", "trackwork"});
    EXPECT_TRUE(north.out.contains("trackwork upcoming: T1 North Shore & Western Line, from Sun 9 Mar 11:30PM"))
        << north.out.toStdString();

    // A dead operator site: the old caches stay, the notices are still shown, status 1.
    server.route("/service_updates/trackwork/", 500, "<html>service_updates/trackwork/trackwork_map.pdf</html>");
    server.route("/service_updates/service_interruptions/", 500, "down");
    const Outcome failed = run({"trackwork", "--fetch"});
    EXPECT_EQ(failed.status, 1);
    EXPECT_TRUE(failed.out.contains("Trackwork page: not taken from")) << failed.out.toStdString();
    EXPECT_TRUE(failed.out.contains("The copy cached before is kept as it was.")) << failed.out.toStdString();
    EXPECT_TRUE(failed.out.contains("Trackwork notices (6):"));
    EXPECT_EQ(run({"trackwork", "--now"}).status, 2);
}

TEST_F(CliTrackworkTest, DumpCarriesTheDisruptionState)
{
    server.route("/service_updates/trackwork/", 200, recordedpage());
    server.route("/service_updates/service_interruptions/", 200, recordedpage());
    ASSERT_EQ(run({"trackwork", "--fetch"}).status, 0);
    const Outcome r = run({"dump"});
    ASSERT_EQ(r.status, 0);
    const QJsonObject o = QJsonDocument::fromJson(r.out.toUtf8()).object();
    const QJsonArray trakw = o["trakw"].toArray();
    ASSERT_EQ(trakw.size(), 6);
    const QJsonObject first = trakw[0].toObject();
    EXPECT_EQ(first["trakbegin"].toString(), "2014-03-08T21:05:17+11:00");
    EXPECT_EQ(first["trakend"].toString(), "2014-03-10T04:00:17+11:00");
    EXPECT_TRUE(first["linenum"].isDouble());
    EXPECT_EQ(first["trakbegtwenfrhr"].toInt(), 2105);
    EXPECT_EQ(first["gotstnsoutinfo"].toInt(), 1);
    EXPECT_EQ(first["stnsoutfix"].toArray()[0].toObject()["trakbegstr"].toString(), "Bondi Junction");
    EXPECT_TRUE(first.contains("until relativedatestr"));
    EXPECT_EQ(o["relevanttrakinfo"].toArray().size(), 1);
    const QJsonArray groups{QJsonObject{{"reltrakinfonums", QJsonArray{0}}}};
    EXPECT_EQ(o["relevanttrakinfobydatefix"].toArray(), groups);
    const QJsonArray placeholder{
        QJsonObject{{"stnnumorig", 5}, {"interupstr", "zdzddzdz"}, {"lineaffected", QJsonArray{1}}}};
    EXPECT_EQ(o["serviceinterrups"].toArray(), placeholder);

    // The shown first-leg service and the icon agree.
    const QJsonArray affected = o["servsaffectedbytrakwmultid"].toArray();
    const int shown = o["myindexes"].toArray()[0].toInt();
    ASSERT_EQ(affected.size(), 1);
    EXPECT_EQ(affected[0].toArray().size(), o["myservsmultid"].toArray()[0].toArray().size());
    const bool hit = !affected[0].toArray()[shown].toArray().isEmpty();
    EXPECT_TRUE(o["mytrakicon"].isDouble());
    EXPECT_EQ(o["mytrakicon"].toInt(), hit ? 2 : 0);
}
