// A table's way from a publisher to a user, with quendle-cli at both ends: `publish` writes
// a folder, the loopback server serves it, `update` fetches the table, the next start
// installs it. The user's saved journey, bookmarks and favourites stay exactly as they were.

#include "support/loopback_http_server.h"
#include "support/tables.h"
#include "timetable/tablefile.h"
#include "timetable/timetable.h"
#include "publisher/tablewriter.h"
#include "util/dates.h"
#include "util/files.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace quendle;
using quendle::testsupport::LoopbackHttpServer;

namespace {

struct CliRun {
    int status = -1;
    QString out, err;
};

QByteArray bytes(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

class Publishing : public ::testing::Test {
protected:
    CliRun cli(const QStringList& args, const QString& updateurl = QString())
    {
        QProcess p;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("HOME", home.path());
        env.insert("XDG_CONFIG_HOME", home.path() + "/.config");
        env.insert("QUENDLE_NOW", "2026-11-24T08:00:00");
        env.insert("QUENDLE_OPERATOR_URL", server.url("/op/"));
        env.insert("QUENDLE_UPDATE_URL", updateurl.isEmpty() ? server.url("/pub/") : updateurl);
        p.setProcessEnvironment(env);
        p.start(qEnvironmentVariable("QUENDLE_CLI"), args);
        p.closeWriteChannel();
        CliRun r;
        if (!p.waitForFinished(120000))
            return r;
        r.status = p.exitCode();
        r.out = QString::fromUtf8(p.readAllStandardOutput());
        r.err = QString::fromUtf8(p.readAllStandardError());
        return r;
    }
    QString prefs(const QString& name) const
    {
        return home.path() + "/Library/Preferences/quendlefddffdrterXAXAXA/" + name;
    }
    QTemporaryDir home{[] {
        QDir().mkpath(qEnvironmentVariable("HOME"));
        return qEnvironmentVariable("HOME") + "/publishing-XXXXXX";
    }()};
    QTemporaryDir work;
    LoopbackHttpServer server;
};

} // namespace

TEST_F(Publishing, APublishedTableReachesTheNextStartAndNothingTheUserSavedChanges)
{
    ASSERT_TRUE(home.isValid() && work.isValid());
    ASSERT_EQ(cli({"journey", "set", "Central|Strathfield|Hornsby"}).status, 0);

    // A table newer than the built-in one, on stations of its own.
    using namespace fixtures;
    const QString dated = tabledatetext(adddaystodate(getnsdatefromtablefile(Timetable::getbundledtablepath()), 30));
    const QString stops = "North Hill|151.2101|-33.8702,Mid Cross|151.2187|-33.8791,South Vale|151.2299|-33.8866";
    const QString tablefile = writeto(work.path(), "SydneyTrains.vq",
                                      table(dated, {lineblock("Hill Line#from North Hill to South Vale", stops,
                                                              {dayblock("0123456", {"512,519,527,}", "812,819,827,}"})}),
                                                    lineblock("Hill Line#back", stops, {dayblock("0", {"600,607,615,}"})})}));
    const QString dir = work.path() + "/site";
    writeto(work.path(), "Broken.vq", "not a table");
    CliRun r = cli({"publish", dir, "--table", work.path() + "/Broken.vq"});
    EXPECT_EQ(r.status, 2);
    EXPECT_FALSE(QFileInfo::exists(dir + "/index.html"));
    r = cli({"publish", dir, "--table", tablefile, "--version", "9.5"});
    ASSERT_EQ(r.status, 0) << r.err.toStdString();
    EXPECT_EQ(bytes(dir + "/parlune/SydneyTrains.vq"), bytes(tablefile));
    server.servefolder("/pub/", dir);

    const QByteArray settings = bytes(home.path() + "/.config/quendle/quendle.conf");
    const QStringList saved = QString::fromUtf8(bytes(prefs("quendlepref.txt"))).split('\n');
    ASSERT_FALSE(settings.isEmpty());
    ASSERT_GT(saved.size(), 6);

    // A server without the page: exit status 1, nothing fetched, nothing recorded.
    r = cli({"update"}, QStringLiteral("http://127.0.0.1:%1/").arg(LoopbackHttpServer::deadPort()));
    EXPECT_EQ(r.status, 1);
    EXPECT_TRUE(r.out.contains("Update page: not reached at http://127.0.0.1:")) << r.out.toStdString();
    EXPECT_EQ(QString::fromUtf8(bytes(prefs("quendlepref.txt"))).split('\n'), saved);

    r = cli({"update"});
    ASSERT_EQ(r.status, 0) << r.out.toStdString() << r.err.toStdString();
    EXPECT_TRUE(r.out.contains("Update page: reached at " + server.url("/pub/"))) << r.out.toStdString();
    EXPECT_TRUE(r.out.contains("Version: 9.5 is out; this is ")) << r.out.toStdString();
    EXPECT_TRUE(r.out.contains("  Quendle has been updated. Would you like to update now ?\n"));
    EXPECT_TRUE(r.out.contains("SydneyTrains (" + dated + "): downloaded from " + server.url("/pub/parlune/SydneyTrains.vq")))
        << r.out.toStdString();
    EXPECT_EQ(bytes(prefs("tablestemp/SydneyTrains.vq")), bytes(tablefile));
    EXPECT_NE(bytes(prefs("tablesverified/SydneyTrains.vq")), bytes(tablefile));

    // Only the time of the update was saved.
    EXPECT_EQ(bytes(home.path() + "/.config/quendle/quendle.conf"), settings);
    const QStringList after = QString::fromUtf8(bytes(prefs("quendlepref.txt"))).split('\n');
    ASSERT_EQ(after.size(), saved.size());
    for (qsizetype i = 0; i < saved.size(); ++i)
        EXPECT_EQ(after[i], saved[i].contains("]updatestr[") ? "]updatestr[8|0|0|24|11|2026]updatestr[" : saved[i]);

    // The next start installs the table and shows its services.
    r = cli({"--journey", "North Hill|South Vale", "next"});
    EXPECT_EQ(r.status, 0) << r.err.toStdString();
    EXPECT_TRUE(r.out.contains("North Hill 8:12AM  →  South Vale 8:27AM   Hill Line")) << r.out.toStdString();
    EXPECT_EQ(bytes(prefs("tablesverified/SydneyTrains.vq")), bytes(tablefile));
    EXPECT_FALSE(QFileInfo::exists(prefs("tablestemp/SydneyTrains.vq")));
}
