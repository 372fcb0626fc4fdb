// The publisher's tools on the operator's pages as the fixtures in tests/data/publisher
// have them: two lines, both directions, weekday, Saturday and Sunday pages, served from
// the loopback server.

#include "platform/desktop/qthttp.h"
#include "platform/system/manualclock.h"
#include "publisher/publisher.h"
#include "support/loopback_http_server.h"
#include "support/scripted_alerts.h"
#include "timetable/tablefile.h"
#include "util/dates.h"
#include "util/files.h"
#include "util/text.h"

#include <QDate>
#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QUrlQuery>

#include <gtest/gtest.h>

using namespace quendle;
using quendle::testsupport::LoopbackHttpServer;

namespace {

QString fixture(const QString& name)
{
    return readfile(qEnvironmentVariable("QUENDLE_SOURCE_DIR") + "/tests/data/publisher/" + name);
}

// A timetable page as the operator sends it for a day.
QString pagefor(const QString& name, QDate day)
{
    QString page = fixture(name);
    return page.replace("{{day}}", QLocale::c().dayName(day.dayOfWeek()))
        .replace("{{date}}", QLocale::c().toString(day, "d MMMM yyyy"));
}

class PublisherTools : public ::testing::Test {
protected:
    PublisherTools()
    {
        clock.set(datefromcivil({2026, 11, 23, 9, 0, 0}));   // a Monday
        platform.clock = &clock;
        platform.http = &http;
        platform.alerts = &alerts;
        platform.homeDir = home.path();
        QDir().mkpath(home.path() + "/quendle-publisher");
        writefile("", home.path() + "/quendle-publisher/", "amizorb");
        publisher.operatorurl = [this] { return server.url("/op/"); };
    }
    // The page written where the strip leaves it, then reduced; the intermediate text's lines.
    QStringList compress(const QString& fixturename, QDate day, int direction = 0)
    {
        const QString page = publisher.getstripfold() + Publisher::pagefilename("il", direction, datefromcivil({day.year(), day.month(), day.day()}));
        QDir().mkpath(publisher.getstripfold());
        replacefile(page, pagefor(fixturename, day));
        const QString out = publisher.compressthistable(page);
        EXPECT_TRUE(out.endsWith(QStringLiteral("day%1].txt").arg(day.dayOfWeek() % 7))) << out.toStdString();
        return readfile(out).split('\n');
    }

    QTemporaryDir home;
    ManualClock clock;
    QtHttp http{5000};
    testsupport::ScriptedAlerts alerts;
    LoopbackHttpServer server;
    Platform platform;
    Folders folders{home.path()};
    Publisher publisher{platform, folders};
};

} // namespace

TEST_F(PublisherTools, APageBecomesOneServicePerRowWithoutArrivalRows)
{
    const TimetablePage p = readtimetablepage(pagefor("il0-weekday.html", QDate(2026, 11, 23)));
    EXPECT_EQ(p.dayname, "Monday");
    EXPECT_EQ(p.linename, "Eastern Suburbs & Illawarra");
    EXPECT_EQ(p.direction, " Bondi Junction to Redfern ");
    EXPECT_EQ(p.stations.size(), 8);
    ASSERT_EQ(p.rows.size(), 8u);
    EXPECT_EQ(p.rows[0].size(), 8u);

    const QStringList weekday = compress("il0-weekday.html", QDate(2026, 11, 23));
    ASSERT_EQ(weekday.size(), 11);   // empty line, header, eight services, final empty line
    EXPECT_EQ(weekday[0], "");
    const QString header = weekday[1];
    EXPECT_TRUE(header.startsWith("<line name =\"Eastern Suburbs & Illawarra# Bondi Junction to Redfern \" "
                                  "color=\"#005AA3\" stops = \"Bondi Junction|151.")) << header.toStdString();
    // Central's arrival row is gone; its departure row stands under the plain name.
    EXPECT_EQ(header.count("Central|"), 1);
    EXPECT_FALSE(header.contains(" arr") || header.contains(" dep"));
    EXPECT_TRUE(header.endsWith(",Redfern|151.198485|-33.892370\"  >")) << header.toStdString();
    EXPECT_EQ(weekday[2], "502,505,507,510,512,516,519,}");
    EXPECT_EQ(weekday[3], "532,535,-1,540,542,546,549,}");   // a dash: no stop
    EXPECT_EQ(weekday[5], "622,-1,627,630,632,636,639,}");   // nothing printed: no stop

    // After midnight a time is kept as printed: 24:05 on Saturday, 0:05 on Sunday.
    EXPECT_EQ(compress("il0-saturday.html", QDate(2026, 11, 28)).value(6), "2348,2351,2353,2356,2358,2402,2405,}");
    EXPECT_EQ(compress("il0-sunday.html", QDate(2026, 11, 29)).value(5), "2348,2351,2353,2356,2358,2,5,}");

    // With two stations printed as arrival and departure rows, the second removal counts
    // in the list the first one shortened: Wynyard's departure row goes, its arrival stays.
    const QString two = publisher.getstripfold() + "twoarrivals.txt  ";
    replacefile(two, fixture("twoarrivals.html"));
    const QStringList t = readfile(publisher.compressthistable(two)).split('\n');
    EXPECT_TRUE(t.value(1).contains("stops = \"Hornsby|151.0"));
    EXPECT_TRUE(t.value(1).contains(",Chatswood|151.1") && t.value(1).contains(",Wynyard arr|?|??,Central|"))
        << t.value(1).toStdString();
    EXPECT_EQ(t.value(2), "700,716,724,728,735,}");
    EXPECT_EQ(alerts.count(), 0) << alerts.shown().value(0).message.toStdString();

    // Rows of different lengths are reported and the page is reduced all the same.
    QString uneven = pagefor("il0-weekday.html", QDate(2026, 11, 23));
    uneven.replace("<td>5:07</td>", "");   // one cell short on the third row
    replacefile(two, uneven);
    EXPECT_FALSE(publisher.compressthistable(two).isEmpty());
    ASSERT_EQ(alerts.count(), 1);
    EXPECT_EQ(alerts.shown()[0].message, "uneven ray unusable table on " + two);
}

TEST_F(PublisherTools, AWeekOfStrippedPagesMergesIntoATableThatChecks)
{
    // The line pages name each line's four direction identifiers; the search form answers
    // with the page for the direction and the day, and only two directions run.
    server.handle("/op/timetables/by-line/", [](const LoopbackHttpServer::Request& r) {
        const QString code = QUrlQuery(QUrl::fromEncoded("http://x" + r.target)).queryItemValue("line");
        LoopbackHttpServer::Response resp;
        resp.body = fixture("byline-" + code + ".html").toUtf8();
        if (resp.body.isEmpty())
            resp.status = 404;
        return resp;
    });
    server.handle("/op/timetables/search/", [](const LoopbackHttpServer::Request& r) {
        const QUrlQuery form(QString::fromUtf8(r.body));
        const QString code = form.queryItemValue("line");
        const QString dir = form.queryItemValue("direction");
        const QDate day = QDate::fromString(form.queryItemValue("selDay", QUrl::FullyDecoded), "d/MM/yyyy");
        const int index = QStringList{"dir-4A-r", "dir-4B-r", "dir-1C-r", "dir-1D-r"}.indexOf(dir) % 2;
        const QString kind = day.dayOfWeek() == 6 ? "saturday" : day.dayOfWeek() == 7 ? "sunday" : "weekday";
        LoopbackHttpServer::Response resp;
        const bool runs = (code == "il" && dir.startsWith("dir-4")) || (code == "ns" && dir.startsWith("dir-1"));
        resp.body = (runs && index >= 0 ? pagefor(QStringLiteral("%1%2-%3.html").arg(code).arg(index).arg(kind), day)
                                        : fixture("noservices.html"))
                        .toUtf8();
        return resp;
    });

    EXPECT_TRUE(publisher.timefotmonthlystrip());   // never stripped
    publisher.striptables();
    EXPECT_FALSE(publisher.timefotmonthlystrip());
    const QStringList pages = QDir(publisher.getstripfold()).entryList(QDir::Files, QDir::Name);
    EXPECT_EQ(pages.size(), 2 * 2 * 7);
    EXPECT_TRUE(pages.contains("il0#2026-11-23.txt  "));
    EXPECT_TRUE(pages.contains("ns1#2026-11-29.txt  "));
    EXPECT_FALSE(QFileInfo::exists(publisher.gettempstripfold()));
    // Every line page once, then each of the four directions of both lines on 7 days.
    const auto requests = server.requests();
    EXPECT_EQ(requests.size(), 19 + 2 * 4 * 7);
    EXPECT_EQ(requests[19].body, "line=il&direction=dir-4A-r&leaveArrive=true&selDay=23%2F11%2F2026"
                                 "&fromTime=0000&toTime=2959&format=full&search=Search");

    publisher.compresstables();
    const QString table = readfile(publisher.getcomptablepath());
    EXPECT_EQ(readfile(publisher.getlastpushedtablepath()), table);
    // Monday to Friday pages are identical: one block; Saturday and Sunday have their own.
    const QStringList days = lumregextremeray(table, "(?<=day num=\")[0-9]*");
    EXPECT_EQ(days, QStringList({"12345", "6", "0", "12345", "6", "0", "12345", "6", "0", "12345", "6", "0"}));
    EXPECT_EQ(table.count("<line name ="), 4);
    EXPECT_EQ(alerts.count(), 0);

    QProcess check;
    check.start(qEnvironmentVariable("QUENDLE_CLI"), {"table", "check", publisher.getcomptablepath()});
    ASSERT_TRUE(check.waitForFinished(60000));
    const QString said = QString::fromUtf8(check.readAllStandardOutput());
    EXPECT_EQ(check.exitCode(), 0) << said.toStdString();
    EXPECT_TRUE(said.contains("valid table\n") && said.contains("lines: 4")) << said.toStdString();
}
