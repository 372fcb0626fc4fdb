// Update checks on a core started in a throw-away home, with a clock and timers the test
// moves, against the loopback server playing the publisher's web space and the operator.

#include "app/appmodel.h"
#include "platform/desktop/qthttp.h"
#include "platform/system/manualtimers.h"
#include "platform/system/memorydefaults.h"
#include "platform/system/nullservices.h"
#include "publisher/publish.h"
#include "publisher/tablewriter.h"
#include "support/loopback_http_server.h"
#include "support/scripted_alerts.h"
#include "support/tables.h"
#include "support/test_env.h"
#include "timetable/timetable.h"
#include "update/updatepage.h"
#include "util/dates.h"
#include "util/files.h"

#include <QDirIterator>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <map>

using namespace quendle;
using quendle::testsupport::LoopbackHttpServer;
using quendle::testsupport::ScopedEnv;

namespace {

// November 2026, Sydney.
Date at(int day, int h, int m) { return datefromcivil({2026, 11, day, h, m, 0}); }

// A day well after the built-in table's date, which is the moment it was built.
Date newerthanbuiltin(int days = 30)
{
    return adddaystodate(getnsdatefromtablefile(Timetable::getbundledtablepath()), days);
}

// A two-direction table on stations the built-in table does not have.
QString hilltable(Date dated)
{
    using namespace fixtures;
    const QString stops = "North Hill|151.2101|-33.8702,Mid Cross|151.2187|-33.8791,South Vale|151.2299|-33.8866";
    const QString back = "South Vale|151.2299|-33.8866,Mid Cross|151.2187|-33.8791,North Hill|151.2101|-33.8702";
    return table(tabledatetext(dated), {lineblock("Hill Line#from North Hill to South Vale", stops,
                                                  {dayblock("0123456", {"512,519,527,}", "812,819,827,}"})}),
                                        lineblock("Hill Line#from South Vale to North Hill", back,
                                                  {dayblock("0123456", {"600,607,615,}"})})});
}

class Updates : public ::testing::Test {
protected:
    std::unique_ptr<AppModel> start(Date now)
    {
        clock.set(now);
        platform.clock = &clock;
        platform.timers = &timers;
        platform.defaults = &defaults;
        platform.alerts = &alerts;
        platform.browser = &browser;
        platform.http = &http;
        platform.homeDir = home.path();
        auto app = std::make_unique<AppModel>(platform, AppModel::Options{false});
        app->initWithFrame();
        return app;
    }
    void serve(const QStringList& names, const QStringList& dates, double version)
    {
        server.route("/pub/", 200, updatepagetext(names, dates, version).toUtf8());
    }
    int asked(const QByteArray& prefix) const
    {
        int n = 0;
        for (const auto& r : server.requests())
            n += r.path.startsWith(prefix);
        return n;
    }
    // Every file below the preferences folder, with its bytes.
    std::map<QString, QByteArray> files() const
    {
        std::map<QString, QByteArray> out;
        QDirIterator it(folders.getprefsfold(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        while (it.hasNext()) {
            QFile f(it.next());
            f.open(QIODevice::ReadOnly);
            out[it.filePath()] = f.readAll();
        }
        return out;
    }

    QTemporaryDir home;
    Folders folders{home.path()};
    ManualClock clock;
    ManualTimers timers{clock};
    MemoryDefaults defaults;
    testsupport::ScriptedAlerts alerts;
    NullBrowser browser;
    QtHttp http{800};
    LoopbackHttpServer server;
    ScopedEnv page{"QUENDLE_UPDATE_URL", server.url("/pub/").toUtf8()};
    ScopedEnv site{"QUENDLE_OPERATOR_URL", server.url("/op/").toUtf8()};
    Platform platform;
};

} // namespace

TEST(UpdatePage, WhatThePublisherWritesIsWhatQuendleReads)
{
    const QString written = updatepagetext({"SydneyTrains", "Hunter"}, {"1 March 2030 9:00:00 AM", "2 March 2030 9:00:00 AM"}, 1.25);
    EXPECT_TRUE(written.contains("\n<!WA  tablenames[SydneyTrains,Hunter]tablenames  >\n"));
    EXPECT_TRUE(written.contains("\n<!WA  macvers[1.250000]macvers >\n"));
    const UpdatePage p = readupdatepage(written);
    EXPECT_TRUE(p.reachable && p.hasvers);
    EXPECT_FLOAT_EQ(p.version, 1.25f);
    ASSERT_EQ(p.tables.size(), 2u);
    EXPECT_EQ(p.tables[1].name, "Hunter");
    EXPECT_EQ(p.tables[1].datestr, "2 March 2030 9:00:00 AM");

    // Lists of different lengths offer nothing; without the mark the page is not the
    // publisher's; a page far too large for one is not read at all.
    EXPECT_TRUE(readupdatepage(updatepagetext({"A", "B"}, {"1 March 2030 9:00:00 AM"}, 1)).tables.empty());
    EXPECT_FALSE(readupdatepage(QString(written).replace("iphonevers", "x")).reachable);
    EXPECT_TRUE(readupdatepage(written + QString(kMaxUpdatePage, 'x')).toolarge);

    for (const char* bad : {"", "..", "../evil", "a/b", "a\\b", ".hidden", "nul\x01"})
        EXPECT_FALSE(isplaintablename(bad)) << bad;
    EXPECT_FALSE(isplaintablename(QString(101, 'a')));
    EXPECT_TRUE(isplaintablename(QString(100, 'a')));
    EXPECT_TRUE(isplaintablename("Sydney Trains-2"));
}

TEST_F(Updates, TheNextCheckFollowsTheLastSuccessfulOne)
{
    serve({}, {}, 0.1);
    auto app = start(at(24, 8, 0));
    // A start holds a record 165 days old: the first check is due at once.
    const Date first = timers.fireDate(app->updatetimer);
    EXPECT_LT(first, at(24, 8, 0));
    const std::vector<Date> old = app->mylastupdateray;
    Updater& u = app->updater();
    app->mylastupdateray.clear();
    EXPECT_EQ(u.getnextupdatetime(), at(24, 9, 0));   // no record: the interval
    EXPECT_EQ(u.getlastupdatestr(), "");
    app->mylastupdateray = {at(10, 8, 0)};
    EXPECT_EQ(u.getnextupdatetime(), at(17, 8, 0));   // a week after the last: already past
    app->mylastupdateray = {at(23, 20, 0)};
    EXPECT_EQ(u.getnextupdatetime(), at(24, 8, 1));   // the run's first check, a minute in
    app->runupdatesincelaunch = 1;
    EXPECT_EQ(u.getnextupdatetime(), at(24, 9, 0));   // later checks: the interval

    // The publisher's page answers the first check, so it is recorded and the next one is
    // an hour on.
    app->mylastupdateray = old;
    app->runupdatesincelaunch = 0;
    ASSERT_EQ(timers.fireDate(app->updatetimer), first);
    timers.advanceTo(at(24, 8, 0).plusSeconds(1));
    EXPECT_EQ(app->mylastupdateray, std::vector<Date>{at(24, 8, 0)});
    EXPECT_EQ(timers.fireDate(app->updatetimer), at(24, 9, 0));
    EXPECT_EQ(app->display().updatestr, "Last update Tue 24 Nov 8:00AM");
    EXPECT_EQ(app->display().meowupdatestr, "Next update Tue 24 Nov 9:00AM");
    EXPECT_EQ(asked("/pub/"), 1);
    EXPECT_EQ(asked("/op/"), 2);   // trackwork, then service interruptions
}

TEST_F(Updates, NoCheckRunsWhileChecksAreOff)
{
    serve({}, {}, 9);
    auto app = start(at(24, 8, 0));
    const std::vector<Date> last = app->mylastupdateray;
    app->checkforupdates = 0;
    timers.advanceTo(at(24, 11, 0));
    EXPECT_EQ(server.requestCount(), 0);
    EXPECT_EQ(app->runupdatesincelaunch, 0);
    EXPECT_EQ(app->mylastupdateray, last);
    EXPECT_FALSE(app->updatetimerfunc().ran);
    EXPECT_EQ(server.requestCount(), 0);
    EXPECT_GT(timers.fireDate(app->updatetimer), at(24, 8, 0).plusSeconds(1e9));   // never again this run
}

TEST_F(Updates, ASkippedVersionIsNotOfferedAgainButANewerOneIs)
{
    auto app = start(at(24, 8, 0));
    const QString question = "Quendle has been updated. Would you like to update now ?";
    serve({}, {}, 9.5);
    alerts.answer("Skip");
    EXPECT_TRUE(app->updatetimerfunc().offered);
    ASSERT_EQ(alerts.count(), 1);
    EXPECT_EQ(alerts.shown()[0].message, question);
    EXPECT_EQ(alerts.shown()[0].buttons, QStringList({"Skip", "Yes"}));
    EXPECT_EQ(defaults.stringForKey("myskippref"), "9.500000");

    const UpdateReport again = app->updatetimerfunc();
    EXPECT_TRUE(again.skipped && !again.offered);
    EXPECT_EQ(alerts.count(), 1);

    serve({}, {}, 9.6);
    alerts.answer("Yes");
    app->updatetimerfunc();
    ASSERT_EQ(alerts.count(), 2);
    EXPECT_EQ(browser.opened(), QStringList{"https://quendle.org/download/"});
    EXPECT_EQ(defaults.stringForKey("myskippref"), "9.500000");

    serve({}, {}, Updater::getappvers());   // this very version: nothing to offer
    EXPECT_FALSE(app->updatetimerfunc().offered);
    EXPECT_EQ(alerts.count(), 2);
}

TEST_F(Updates, TablesAreComparedByPositionAsTheyAlwaysWere)
{
    // Two tables here: Alpha (table 0) and the built-in SydneyTrains (table 1).
    const QString alpha = hilltable(newerthanbuiltin()).replace("Hill Line", "Alpha Line");
    fixtures::writeto(folders.gettablesfold(), "Alpha.vq", alpha);
    auto app = start(at(24, 8, 0));
    ASSERT_EQ(app->timetable().mytables.size(), 2u);
    ASSERT_EQ(app->timetable().mytables[0].name, "Alpha");
    server.route("/pub/parlune/Alpha.vq", 200, alpha.toUtf8());
    server.route("/pub/parlune/SydneyTrains.vq", 200, hilltable(newerthanbuiltin()).toUtf8());
    const QString date = tabledatetext(newerthanbuiltin());

    // Named the other way round, neither name is the local one at its position: none fetched.
    serve({"SydneyTrains", "Alpha"}, {date, date}, 0);
    app->updatetimerfunc();
    EXPECT_EQ(asked("/pub/parlune/"), 0);

    // In the local order each is fetched, once for every local table (the placeholder date
    // never matches); a third name has no local table at its position and is never fetched.
    serve({"Alpha", "SydneyTrains", "Other"}, {date, date, date}, 0);
    const UpdateReport r = app->updatetimerfunc();
    EXPECT_EQ(asked("/pub/parlune/Alpha.vq"), 2);
    EXPECT_EQ(asked("/pub/parlune/SydneyTrains.vq"), 2);
    EXPECT_EQ(asked("/pub/parlune/Other.vq"), 0);
    EXPECT_EQ(r.downloads.size(), 4u);
}

TEST_F(Updates, ADownloadIsInstalledAtTheNextStartAndABadOneNever)
{
    auto app = start(at(24, 8, 0));
    const QString installed = folders.gettablesfold() + "/SydneyTrains.vq";
    const QString waiting = folders.gettemptablesfold() + "SydneyTrains.vq";
    const QString builtin = readfile(installed);
    const QString newer = hilltable(newerthanbuiltin());
    server.route("/pub/parlune/SydneyTrains.vq", 200, newer.toUtf8());
    serve({"SydneyTrains"}, {tabledatetext(newerthanbuiltin())}, 0);

    const UpdateReport r = app->updatetimerfunc();
    ASSERT_EQ(r.downloads.size(), 1u);
    EXPECT_TRUE(r.downloads[0].written) << r.downloads[0].why.toStdString();
    EXPECT_EQ(readfile(waiting), newer);
    EXPECT_EQ(readfile(installed), builtin);   // the running app keeps its tables
    EXPECT_EQ(app->timetable().stnnametonum("North Hill"), -1);

    // A table that is not valid, cut short, too large or too slow is never written: the
    // one waiting stays as it is, and so does everything else.
    const auto before = files();
    LoopbackHttpServer::Response bad;
    bad.body = "<html>Not found, but said with status 200</html>";
    std::vector<LoopbackHttpServer::Response> faults{bad};
    bad.body = newer.toUtf8();
    bad.cutAfter = bad.body.size() / 2;
    faults.push_back(bad);
    bad = {};
    bad.hugeBytes = Updater::kMaxTableBytes + 1;
    faults.push_back(bad);
    bad = {};
    bad.body = newer.toUtf8();
    bad.delayMs = 2000;
    faults.push_back(bad);
    for (const auto& f : faults) {
        server.route("/pub/parlune/SydneyTrains.vq", f);
        const UpdateReport failed = app->updatetimerfunc();
        ASSERT_EQ(failed.downloads.size(), 1u);
        EXPECT_FALSE(failed.downloads[0].written);
        EXPECT_FALSE(failed.downloads[0].why.isEmpty());
        EXPECT_EQ(files(), before);
    }

    // The next start installs the download before it reads the tables.
    auto next = start(at(24, 9, 0));
    EXPECT_EQ(readfile(installed), newer);
    EXPECT_FALSE(QFileInfo::exists(waiting));
    EXPECT_GE(next->timetable().stnnametonum("North Hill"), 0);

    // Something invalid left in the temporary folder is never installed.
    fixtures::writeto(folders.gettemptablesfold(), "SydneyTrains.vq", "<timetable> broken");
    start(at(24, 10, 0));
    EXPECT_EQ(readfile(installed), newer);
    EXPECT_TRUE(QFileInfo::exists(waiting));

    // A name that is not plain is never asked for nor written, wherever it points.
    const int requests = server.requestCount();
    for (const QString& name : QStringList{"../SydneyTrains", "/tmp/evil", "a\\b", ".hidden", QString(101, 'x')})
        EXPECT_FALSE(app->updater().downloadnewtable(name)) << name.toStdString();
    EXPECT_EQ(server.requestCount(), requests);
}

TEST_F(Updates, AServerWithoutTheUpdatePageChangesNothing)
{
    auto app = start(at(24, 8, 0));
    const std::vector<Date> last = app->mylastupdateray;
    const auto before = files();
    const QByteArray good = updatepagetext({"SydneyTrains"}, {"30 November 2030 9:00:00 AM"}, 9).toUtf8();
    std::vector<LoopbackHttpServer::Response> faults(7);
    faults[0].status = 404;
    faults[0].body = good;
    faults[1].body = good;
    faults[1].delayMs = 2000;
    faults[2].body = good;
    faults[2].cutAfter = good.size() / 2;
    faults[3].hugeBytes = kMaxUpdatePage + 1;
    faults[4].body = "<html><p>A parked domain.</p></html>";
    faults[5].body = QByteArray("\x89PNG\r\n\x1a\n\0\0iphonevers", 20);
    faults[6].body = "";
    for (size_t i = 0; i < faults.size(); ++i) {
        server.route("/pub/", faults[i]);
        const UpdateReport r = app->updatetimerfunc();
        EXPECT_FALSE(r.reachable) << i;
        EXPECT_FALSE(r.why.isEmpty()) << i;
        EXPECT_FALSE(r.recorded) << i;
        EXPECT_EQ(app->mylastupdateray, last) << i;
        EXPECT_EQ(files(), before) << i;
        // Tried again after the interval, not at once and again.
        EXPECT_EQ(timers.fireDate(app->updatetimer), addminstodate(clock.now(), 60)) << i;
    }
    ScopedEnv dead("QUENDLE_UPDATE_URL", QString("http://127.0.0.1:%1/").arg(LoopbackHttpServer::deadPort()).toUtf8());
    EXPECT_FALSE(app->updatetimerfunc().reachable);
    EXPECT_EQ(app->mylastupdateray, last);
    EXPECT_EQ(asked("/pub/parlune/"), 0);
}
