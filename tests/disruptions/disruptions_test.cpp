#include "disruptions/disruptions.h"
#include "network.h"
#include "platform/desktop/qthttp.h"
#include "support/loopback_http_server.h"
#include "support/test_env.h"

#include <QFile>

#include <gtest/gtest.h>

using namespace quendle;
using namespace quendle::disruptionstest;
using testsupport::LoopbackHttpServer;
using testsupport::ScopedEnv;

namespace {

QString recordedpage() { return readfile(sourcefile("tests/data/trackwork.html")); }

QByteArray bytesof(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray("<missing>");
}

Service svc(int line, Date dep, Date arr)
{
    Service s;
    s.linenum = line;
    s.deptime = dep;
    s.desttime = arr;
    return s;
}

TrakwRecord work(const QString& line, std::vector<int> linenums, Date begin, Date end)
{
    TrakwRecord r;
    r.line = line;
    r.linenums = std::move(linenums);
    r.trakbegin = begin;
    r.trakend = end;
    return r;
}

const QString kT4Name = "T4 Eastern Suburbs & Illawarra Line";
const QString kT1Name = "T1 North Shore & Western Line";

} // namespace

TEST(Disruptions, StartUpReadsTheCachedPageAndMarksTheJourneysServices)
{
    Core c;
    c.put("trakunc.txt", recordedpage());
    c.start(march(9, 17, 0));
    Disruptions& d = c.d();

    // The compact file is rebuilt from the page; the records come out sorted by their
    // begin, with the second T1 notice of the same night dropped as a duplicate.
    EXPECT_EQ(readfile(d.getcompdtrakpath()), comptwtext(recordedpage()));
    QStringList order;
    for (const TrakwRecord& r : d.trakw)
        order << r.line + " " + r.fixdispbeg;
    EXPECT_EQ(order, (QStringList{kT4Name + " 9:05PM", kT1Name + " 11:30PM", "T9 Northern Line 10:00PM",
                                  kT1Name + " 12:15AM", "Central Coast & Newcastle Line 8:00PM"}));
    EXPECT_EQ(d.trakw[1].stnsoutfix.at(0).trakbegstr, "Hornsby");

    // Only the T4 notice concerns Bondi Junction -> Edgecliff. It is in force until Monday
    // 04:00:17, so every service departing before then is affected and the rest are not.
    ASSERT_EQ(d.relevanttrakinfo.size(), 1u);
    EXPECT_EQ(d.relevanttrakinfo[0].line, kT4Name);
    ASSERT_EQ(d.relevanttrakinfobydatefix.size(), 1u);
    EXPECT_EQ(d.relevanttrakinfobydatefix[0].reltrakinfonums, std::vector<int>{0});
    const auto& services = c.j().myservsmultid.at(0);
    ASSERT_EQ(d.servsaffectedbytrakwmultid.size(), 1u);
    ASSERT_EQ(d.servsaffectedbytrakwmultid[0].size(), services.size());
    int affected = 0;
    for (size_t s = 0; s < services.size(); ++s) {
        const bool during = services[s].deptime < march(10, 4, 0, 17);
        EXPECT_EQ(d.servsaffectedbytrakwmultid[0][s], during ? std::vector<int>{0} : std::vector<int>{})
            << lumdatedisplay(services[s].deptime).toStdString();
        affected += during;
    }
    EXPECT_GT(affected, 3);
    EXPECT_LT(affected, static_cast<int>(services.size()));

    // The status icon follows the shown first-leg service once the status is refreshed.
    c.app->refreshdisplay();
    EXPECT_EQ(d.mytrakicon, 2);
    EXPECT_EQ(d.gettrakwforviewindex(), "\n " + kT4Name + "Until 4:00AM");
    // The strip reads the same answers: the leg's icon and the tile's second line.
    EXPECT_EQ(c.app->display().getimgforthisleg(0), "trakwjuly");
    EXPECT_EQ(c.app->display().getsubstrthisleg(1), "Trackwork until 4:00AM  between Bondi Junction and Central.");

    // A later page that yields too little keeps the notices already reduced.
    const QByteArray kept = bytesof(d.getcompdtrakpath());
    c.put("trakunc.txt", "<html>service_updates/trackwork/trackwork_map.pdf trkworkItemHeading</html>");
    c.start(march(9, 17, 0));
    EXPECT_EQ(bytesof(c.d().getcompdtrakpath()), kept);
    EXPECT_EQ(c.d().trakw.size(), 5u);

    // Two days on, the notices of the first nights have finished and are gone at load.
    c.start(march(11, 17, 0));
    EXPECT_EQ(c.d().trakw.size(), 2u);
    EXPECT_TRUE(c.d().relevanttrakinfo.empty());
}

TEST(Disruptions, WithoutCachedPagesThereIsNoTrackworkAndOnePlaceholderInterruption)
{
    Core c;
    // Whatever the interruption caches hold, the reading side stays inert.
    c.put("interup.txt", "<html>service_updates/trackwork/trackwork_map.pdf Central: lifts out</html>");
    c.put(" interup.txt", "Central|T1|signal failure");
    c.start(march(9, 17, 0));
    Disruptions& d = c.d();
    EXPECT_TRUE(d.trakw.empty());
    EXPECT_TRUE(d.relevanttrakinfo.empty());
    ASSERT_EQ(d.servsaffectedbytrakwmultid.size(), 1u);
    EXPECT_EQ(d.servsaffectedbytrakwmultid[0].size(), c.j().myservsmultid[0].size());
    EXPECT_EQ(d.mytrakicon, 0);
    EXPECT_EQ(d.gettrakwforviewindex(), "");

    ASSERT_EQ(d.serviceinterrups.size(), 1u);
    EXPECT_EQ(d.serviceinterrups[0].stnnumorig, 5);
    EXPECT_EQ(d.serviceinterrups[0].interupstr, "zdzddzdz");
    EXPECT_EQ(d.serviceinterrups[0].lineaffected, std::vector<int>{1});
    EXPECT_EQ(d.getservinterruptionsstr(), "no service interruptions");
    EXPECT_TRUE(d.getlocationsfromstr("Central").empty());
    // The cache itself is left alone.
    EXPECT_TRUE(readfile(d.getinteruppath()).contains("lifts out"));
}

TEST(Disruptions, ServicesInsideThePeriodAreAffectedAndThoseADayBeforeHaveItUpcoming)
{
    Core c;
    c.start(march(10, 6, 0));
    Disruptions& d = c.d();
    Journey& j = c.j();
    // Monday 20:00:17 until Tuesday 04:00:17, on T4.
    d.relevanttrakinfo = {work(kT4Name, {kT4}, march(10, 20, 0, 17), march(11, 4, 0, 17))};
    d.setuprelevanttrakinfobydate();
    j.myservsmultid = {
        {
            svc(kT4, march(10, 9, 50, 17), march(10, 10, 0, 17)),    // 0: arrives ten hours before
            svc(kT1, march(10, 20, 30, 17), march(10, 20, 35, 17)),  // 1: another line
            svc(kT4, march(10, 20, 0, 17), march(11, 4, 0, 17)),     // 2: exactly the period
            svc(kT4, march(10, 19, 58, 17), march(10, 20, 1, 17)),   // 3: arrives inside
            svc(kT4, march(11, 3, 59, 17), march(11, 4, 5, 17)),     // 4: departs inside
            svc(kT4, march(11, 4, 1, 17), march(11, 4, 9, 17)),      // 5: departs after the end
            svc(kT4, march(10, 21, 0, 17), march(10, 21, 5, 17)),    // 6: not looked at after 5
        },
        {
            svc(kT4, march(9, 13, 50, 17), march(9, 14, 0, 17)),     // 30 hours before
            svc(kT4, march(9, 19, 50, 17), march(9, 20, 0, 17)),     // arrives exactly a day before
            svc(kT4, march(9, 20, 0, 17), march(9, 20, 1, 17)),      // 23 h 59 min before
        }};
    d.getmyservsaffectedbytrakw();
    using V = std::vector<int>;
    EXPECT_EQ(d.servsaffectedbytrakwmultid[0],
              (std::vector<V>{{-1}, {}, {-1}, {0}, {0}, {}, {}}));
    EXPECT_EQ(d.servsaffectedbytrakwmultid[1], (std::vector<V>{{}, {}, {-1}}));

    // Status of a service: 1 affected, 2 (or -1 with upcoming) only upcoming, 0 none.
    EXPECT_EQ(d.gettrakstatusfrthisserv(0, 3), 1);
    EXPECT_EQ(d.gettrakstatusfrthisserv(0, 0), 2);
    EXPECT_EQ(d.gettrakstatusfrthisservwthupcom(0, 0), -1);
    EXPECT_EQ(d.gettrakstatusfrthisservwthupcom(0, 3), 1);
    EXPECT_EQ(d.gettrakstatusfrthisserv(0, 1), 0);
    EXPECT_EQ(d.gettrakstatusfrthisserv(0, 7), 0);
    EXPECT_EQ(d.gettrakstatusfrthisserv(2, 0), 0);
    EXPECT_EQ(d.gettrakstatusfrthisservray(-1, 0), V{});
    d.servsaffectedbytrakwmultid[0][1] = {-2, 0};
    EXPECT_EQ(d.gettrakstatusfrthisserv(0, 1), 1);

    // A chain is affected when any of its services is in the period.
    j.connectingservs = {{0, 0}, {3, 0}, {0, 2}};
    EXPECT_EQ(d.trakstatusforthisservint(0), 0);
    EXPECT_EQ(d.trakstatusforthisservint(1), 1);
    EXPECT_EQ(d.trakstatusforthisservint(2), 0);
    EXPECT_EQ(d.trakstatusforthisservint(3), 0);

    // The status icon follows the shown first-leg service.
    for (const auto& [shown, icon] : std::vector<std::pair<int, int>>{{3, 2}, {0, 1}, {5, 0}, {-1, 0}}) {
        j.myindexes = {shown, 0};
        d.trakstatustimer();
        EXPECT_EQ(d.mytrakicon, icon) << "shown " << shown;
    }
    EXPECT_EQ(d.trakstatusforthisserv(0), "NOTRKAFFEK");
    d.servsaffectedbytrakw = {{0, 1}};
    EXPECT_EQ(d.trakstatusforthisserv(0), "TRAKWZ");
}

TEST(Disruptions, RelevantNoticesAreGroupedByPeriodAndShownOnTheTrackworkTile)
{
    Core c;
    c.start(march(10, 12, 0));
    Disruptions& d = c.d();
    Journey& j = c.j();
    const Date b1 = march(10, 9, 0, 17), e1 = march(12, 4, 0, 17);
    const Date b2 = march(15, 23, 30, 17), e2 = march(17, 4, 0, 17);
    d.relevanttrakinfo = {work(kT4Name, {kT4}, b1, e1), work(kT1Name, {kT1}, b2, e2),
                          work(kT1Name, {kT1}, b1, e1), work("T9 Northern Line", {kT9}, b1, e2),
                          work("Central Coast & Newcastle Line", {kCcn}, b2, e2)};
    d.setuprelevanttrakinfobydate();
    std::vector<std::vector<int>> groups;
    for (const TrakPeriodGroup& g : d.relevanttrakinfobydatefix)
        groups.push_back(g.reltrakinfonums);
    EXPECT_EQ(groups, (std::vector<std::vector<int>>{{0, 2}, {1, 4}, {3}}));
    EXPECT_TRUE(d.relevanttrakinfobydate.empty());
    EXPECT_EQ(d.remdupelinename({0, 1, 2, 3, 9}), (std::vector<int>{0, 1, 3}));

    // Begun already: "Until ..."; ahead: "<begin> until <end>".
    EXPECT_EQ(d.simpledisplayytakwbydatedate(d.relevanttrakinfo[0]), "Until Wed 4:00AM");
    EXPECT_EQ(d.simpledisplayytakwbydatedate(d.relevanttrakinfo[1]), "Sat 11:30PM until Mon 17 Mar 4:00AM");

    j.myservsmultid = {{svc(kT4, march(10, 11, 0, 17), march(10, 11, 3, 17))}, {}};
    j.myindexes = {0, 0};
    d.servsaffectedbytrakwmultid = {{{0, -2}}, {}};
    EXPECT_EQ(d.gettrakwforviewindex(), "\n " + kT4Name + "Until Wed 4:00AM" + "Upcoming " + "\n " + kT1Name
                                            + "Sat 11:30PM until Mon 17 Mar 4:00AM");
    d.servsaffectedbytrakwmultid = {{{7, -9}}, {}};   // numbers beyond the list are passed over
    EXPECT_EQ(d.gettrakwforviewindex(), "");

    // The debug texts: the shown service's list, and an alert per notice in force during it.
    d.servsaffectedbytrakwmultid = {{{0, -2}}, {}};
    EXPECT_EQ(d.getcurraffektrakwstr(), "(\n    0,\n    -2\n)(\n)");
    int inrange = 0;
    for (const auto& a : c.alerts.shown())
        inrange += a.message == " YAH IN THE RANGE ";
    EXPECT_EQ(inrange, 3);   // records 0, 2 and 3 contain 11:00
}

TEST(Disruptions, TheDebugActionShowsMatchesAndStopsAndCopiesTheStops)
{
    Core c;
    c.start(march(10, 8, 2), {"Central", "Hornsby", "Gosford"});
    Journey& j = c.j();
    ASSERT_EQ(j.myservsmultid.size(), 2u);
    const Service& shown = j.myservsmultid[0][j.myindexes[0]];
    c.d().debugthistime();
    const auto shownAlerts = c.alerts.shown();
    ASSERT_EQ(shownAlerts.size(), 2);
    EXPECT_TRUE(shownAlerts[0].message.contains(kT1Name)) << shownAlerts[0].message.toStdString();
    EXPECT_TRUE(shownAlerts[0].message.contains("Central Coast & Newcastle Line"));
    EXPECT_TRUE(shownAlerts[1].message.contains("Hornsby")) << shownAlerts[1].message.toStdString();
    EXPECT_EQ(c.clipboard.text(), shown.debugstops());
    EXPECT_FALSE(c.clipboard.text().isEmpty());
}

TEST(Disruptions, TheOperatorSiteComesFromTheEnvironmentTheSettingsOrTheDefault)
{
    Core c;
    c.start(march(10, 8, 0));
    ScopedEnv unset("QUENDLE_OPERATOR_URL", std::nullopt);
    EXPECT_EQ(c.d().operatorurl(), "https://www.sydneytrains.info/");
    c.defaults.setString("operatorurl", " http://rail.example/info ");
    EXPECT_EQ(c.d().operatorurl(), "http://rail.example/info/");
    ScopedEnv env("QUENDLE_OPERATOR_URL", QByteArray("http://127.0.0.1:9/"));
    EXPECT_EQ(c.d().operatorurl(), "http://127.0.0.1:9/");
}

TEST(Disruptions, EveryServerFaultLeavesBothCachesAsTheyWere)
{
    testsupport::ensureCoreApp();
    LoopbackHttpServer server;
    QtHttp http(300, 256 * 1024);
    Core c;
    c.platform.http = &http;
    AppModel& app = c.start(march(9, 17, 0));
    Disruptions& d = c.d();
    c.put("trakunc.txt", "old trackwork page");
    c.put("trakcompd.txt", "\rold compact");
    c.put("interup.txt", "old interruptions page");
    const auto caches = [&] {
        return QList<QByteArray>{bytesof(d.getuncompedtrakpath()), bytesof(d.getcompdtrakpath()),
                                 bytesof(d.getinteruppath())};
    };
    const QList<QByteArray> before = caches();
    const QByteArray page = recordedpage().toUtf8();

    using Response = LoopbackHttpServer::Response;
    struct Fault {
        const char* what;
        Response response;
    };
    std::vector<Fault> faults;
    Response r;
    r.body = page;
    r.delayMs = 2000;   // answers long after the time limit
    faults.push_back({"slow", r});
    r = Response{};
    r.status = 404;
    r.body = page;      // an error page carrying the map link is still an error
    faults.push_back({"404", r});
    r.status = 503;
    faults.push_back({"503", r});
    r = Response{};
    r.body = page;
    r.cutAfter = page.size() / 2;
    faults.push_back({"truncated", r});
    r = Response{};
    r.hugeBytes = 1024 * 1024;
    faults.push_back({"huge", r});
    r = Response{};
    r.body = QByteArray("\x89PNG\r\n\x1a\n", 8) + QByteArray(4, '\0') + "IHDR service_updates/trackwork/trackwork_map.pdf";
    r.contentType = "image/png";
    faults.push_back({"binary", r});
    r = Response{};
    r.body = "<html><p>We have moved.</p></html>";
    faults.push_back({"not the page", r});

    ScopedEnv site("QUENDLE_OPERATOR_URL", server.url("/").toUtf8());
    app.mylastupdateray = {march(1, 0, 0)};
    for (const Fault& f : faults) {
        server.route("/service_updates/trackwork/", f.response);
        server.route("/service_updates/service_interruptions/", f.response);
        const FetchOutcome tw = d.dltrakw();
        const FetchOutcome si = d.dlserviceinterruptions();
        EXPECT_FALSE(tw.cached) << f.what;
        EXPECT_FALSE(si.cached) << f.what;
        EXPECT_FALSE(tw.why.isEmpty()) << f.what;
        EXPECT_EQ(caches(), before) << f.what;
    }
    {
        ScopedEnv refused("QUENDLE_OPERATOR_URL",
                          QString("http://127.0.0.1:%1/").arg(LoopbackHttpServer::deadPort()).toUtf8());
        EXPECT_FALSE(d.dltrakw().cached);
        EXPECT_FALSE(d.dlserviceinterruptions().cached);
        EXPECT_EQ(caches(), before);
    }
    EXPECT_EQ(app.mylastupdateray, std::vector<Date>{march(1, 0, 0)});

    // The real page replaces both caches, exactly as it came; only the trackwork download
    // counts as a successful update. The compact file waits for the next reading.
    server.route("/service_updates/trackwork/", 200, page);
    server.route("/service_updates/service_interruptions/", 200, page);
    const FetchOutcome si = d.dlserviceinterruptions();
    EXPECT_TRUE(si.cached) << si.why.toStdString();
    EXPECT_EQ(app.mylastupdateray, std::vector<Date>{march(1, 0, 0)});
    const FetchOutcome tw = d.dltrakw();
    EXPECT_TRUE(tw.cached) << tw.why.toStdString();
    EXPECT_EQ(tw.url, server.url("/service_updates/trackwork/?period=1&lineId="));
    EXPECT_EQ(app.mylastupdateray, std::vector<Date>{march(9, 17, 0)});
    EXPECT_EQ(bytesof(d.getuncompedtrakpath()), page);
    EXPECT_EQ(bytesof(d.getinteruppath()), page);
    EXPECT_EQ(bytesof(d.getcompdtrakpath()), before[1]);
    d.setuptrakw();
    EXPECT_EQ(d.trakw.size(), 6u);
}
