#include "gtfs/csv.h"
#include "gtfs/feed.h"
#include "gtfs/tablebuild.h"
#include "util/dates.h"

#include "feedtest.h"
#include "support/tables.h"

#include <QDirIterator>
#include <QTemporaryDir>

#include <zip.h>

using namespace quendle;
using namespace quendle::gtfs;
using namespace quendle::gtfstest;

namespace {

// Hands out its bytes a few at a time, so every row and quote straddles a read.
class TrickleSource : public ByteSource {
public:
    explicit TrickleSource(std::string b) : bytes_(std::move(b)) {}
    qint64 read(char* buf, qint64 max) override
    {
        const size_t n = std::min<size_t>({static_cast<size_t>(max), 3, bytes_.size() - pos_});
        std::memcpy(buf, bytes_.data() + pos_, n);
        pos_ += n;
        return static_cast<qint64>(n);
    }

private:
    std::string bytes_;
    size_t pos_ = 0;
};

struct Parsed {
    std::vector<std::string> header;
    std::vector<std::vector<std::string>> rows;
    std::vector<qint64> lines;
};

Parsed parseall(ByteSource& src, int columns)
{
    CsvReader r(src, "x.txt");
    Parsed p;
    if (!r.readheader())
        return p;
    p.header = r.header();
    while (r.next()) {
        std::vector<std::string> row;
        for (int c = 0; c < columns; ++c)
            row.emplace_back(r.field(c));
        p.rows.push_back(row);
        p.lines.push_back(r.line());
    }
    return p;
}

QString failure(const std::string& text)
{
    MemorySource src(text);
    CsvReader r(src, "stop_times.txt");
    try {
        r.readheader();
        r.requirecolumn("trip_id");
        while (r.next()) {
        }
    } catch (const FeedError& e) {
        return e.text();
    }
    return QString();
}

} // namespace

TEST(GtfsCsv, ReadsTheQuirksOfRealFeedsAlikeWholeOrInDribs)
{
    // BOM, CRLF, a quoted comma, doubled quotes, a quoted line break, blanks around
    // fields, a blank line, a lone CR line end, an extra field, no final newline.
    const std::string text =
        "\xEF\xBB\xBFstop_id, stop_name ,stop_lat\r\n"
        "A,\"Hill, North\",1.5\r\n"
        "B,\"The \"\"Vale\"\"\",2\r\n"
        "\r\n"
        "C,\"Two\nLines\",3,extra\r"
        " D , Plain ,4";
    MemorySource whole(text);
    TrickleSource dribs(text);
    const Parsed a = parseall(whole, 3), b = parseall(dribs, 3);
    EXPECT_EQ(a.header, (std::vector<std::string>{"stop_id", "stop_name", "stop_lat"}));
    ASSERT_EQ(a.rows.size(), 4u);
    EXPECT_EQ(a.rows[0], (std::vector<std::string>{"A", "Hill, North", "1.5"}));
    EXPECT_EQ(a.rows[1][1], "The \"Vale\"");
    EXPECT_EQ(a.rows[2][1], "Two\nLines");
    EXPECT_EQ(a.rows[3], (std::vector<std::string>{"D", "Plain", "4"}));
    // File lines where each row starts (the quoted break spans lines 5 and 6).
    EXPECT_EQ(a.lines, (std::vector<qint64>{2, 3, 5, 7}));
    EXPECT_EQ(a.header, b.header);
    EXPECT_EQ(a.rows, b.rows);
    EXPECT_EQ(a.lines, b.lines);

    // An empty file and one holding only a byte-order mark have no header.
    MemorySource empty(""), bomOnly("\xEF\xBB\xBF");
    EXPECT_TRUE(parseall(empty, 1).header.empty());
    EXPECT_TRUE(parseall(bomOnly, 1).header.empty());
}

TEST(GtfsCsv, BrokenRowsAreReportedWithFileLineAndColumn)
{
    EXPECT_EQ(failure("trip_id,arrival_time,stop_id\nT1,5:00:00,A\nT1,5:05:00\n"),
              "stop_times.txt, line 3, column stop_id: the row has 2 fields where the header names 3");
    EXPECT_EQ(failure("stop_id,arrival_time\nA,1\n"), "stop_times.txt, line 1, column trip_id: the header has no such column");
    EXPECT_TRUE(failure("trip_id,x\nT1,\"never closed\nmore\n").contains("never closed")) ;
    EXPECT_EQ(failure("trip_id\n" + std::string(CsvReader::kMaxRowBytes + 10, 'x')).contains("longer than"), true);
}

TEST(GtfsTimes, HoursPastMidnightOneDigitHoursAndTheTableForm)
{
    EXPECT_EQ(parsegtfstime("5:22:00"), 5 * 3600 + 22 * 60);
    EXPECT_EQ(parsegtfstime(" 25:10:59 "), 25 * 3600 + 10 * 60 + 59);
    EXPECT_EQ(parsegtfstime("08:07"), 8 * 3600 + 7 * 60);
    EXPECT_EQ(parsegtfstime(""), -1);
    for (const char* bad : {"5", "5:7x:00", "5:60:00", "-1:00:00", "1:00:00:00", "a:b:c", "5::00"})
        EXPECT_EQ(parsegtfstime(bad), -2) << bad;
    EXPECT_EQ(tablehhmm(parsegtfstime("25:10:59")), 2510);
    EXPECT_EQ(tablehhmm(parsegtfstime("5:07:30")), 507);
    EXPECT_EQ(parsegtfsdate("20240229"), QDate(2024, 2, 29));
    EXPECT_FALSE(parsegtfsdate("20230229").isValid());
    EXPECT_FALSE(parsegtfsdate("2024-02-29").isValid());
    EXPECT_EQ(tablestationname("South \"Vale\", Upper|Lower #2 {x} <y>\t z"), "South 'Vale' Upper/Lower 2 x y z");
}

namespace {

// A small feed with the usual variety: a parent station with platforms, two stations
// of one name, a name with the table's separators, weekday and weekend calendars
// with an exception, a service known only from calendar_dates, interpolated stops,
// a frequency-based trip, an after-midnight trip, a trip against the others'
// order, and a bus route to filter out.
QMap<QString, QByteArray> smallfeed()
{
    QMap<QString, QByteArray> f;
    f["agency.txt"] = "agency_id,agency_name,agency_url,agency_timezone\n"
                      "HV,Hill & Vale Rail,http://example.org,Australia/Sydney";
    f["routes.txt"] = "\xEF\xBB\xBFroute_long_name,route_id,route_type,route_short_name,route_color,route_fancy\r\n"
                      "\"Hill Line, via Mid\",R1,2,H1,1f8a4c,x\r\n"
                      "Vale Bus,B1,3,,,\r\n";
    f["stops.txt"] = "stop_id,stop_name,stop_lat,stop_lon,location_type,parent_station\n"
                     "N,North Hill,-33.8702,151.2101,1,\n"
                     "N1,North Hill Platform 1,-33.8703,151.2102,0,N\n"
                     "N2,North Hill Platform 2,-33.8704,151.2103,0,N\n"
                     "M,Mid Cross,-33.8791,151.2187,0,\n"
                     "M2,Mid Cross,-34.1,151.0,0,\n"
                     "X,Ash Park,,,0,\n"
                     "S,\"South \"\"Vale\"\", Upper|Lower\",-33.8866,151.2299,0,\n"
                     "BS,Bus Stop,-33.9,151.3,0,\n";
    f["calendar.txt"] = "service_id,monday,tuesday,wednesday,thursday,friday,saturday,sunday,start_date,end_date\n"
                        "WK,1,1,1,1,1,0,0,20240101,20241231\n"
                        "WE,0,0,0,0,0,1,1,20240101,20241231\n";
    f["calendar_dates.txt"] = "service_id,date,exception_type\rWK,20240306,2\rEX,20240310,1\r";
    f["trips.txt"] = "route_id,service_id,trip_id,trip_headsign,direction_id\n"
                     "R1,WK,T1,South Vale,0\n"
                     "R1,WK,T2,South Vale,0\n"
                     "R1,WE,T3,South Vale,0\n"
                     "R1,WE,T4,North Hill,1\n"
                     "R1,EX,T5,South Vale,0\n"
                     "R1,WK,T6,South Vale,0\n"
                     "R1,WK,T7,South Vale,0\n"
                     "B1,WK,BUS1,,0\n";
    f["stop_times.txt"] = "trip_id,arrival_time,departure_time,stop_id,stop_sequence,shape_dist_traveled\n"
                          "T1,5:27:00,,S,3,\n"
                          "T1,5:07:00,5:07:30,N1,1,\n"
                          "T1,5:15:00,5:15:00,M,2,\n"
                          "T2,23:50:00,23:50:00,N2,1,\n"
                          "T2,24:04:00,24:04:00,S,3,\n"
                          "T3,9:00:00,9:00:00,N1,1,0\n"
                          "T3,,,M,2,3\n"
                          "T3,9:12:00,9:12:00,S,3,4\n"
                          "T4,10:00:00,10:00:00,S,1,\n"
                          "T4,,,M,2,\n"
                          "T4,,,X,3,\n"
                          "T4,10:30:00,10:30:00,N,4,\n"
                          "T5,0:00:00,0:00:00,N1,1,\n"
                          "T5,0:05:00,0:05:00,M,2,\n"
                          "T5,0:10:00,0:10:00,S,3,\n"
                          "T6,7:00:00,7:00:00,M2,1,\n"
                          "T6,7:10:00,7:10:00,S,2,\n"
                          "T7,8:00:00,8:00:00,S,1,\n"
                          "T7,8:30:00,8:30:00,N1,2,\n"
                          "BUS1,8:00:00,8:00:00,BS,1,\n"
                          "BUS1,8:10:00,8:10:00,N,2,\n";
    f["frequencies.txt"] = "trip_id,start_time,end_time,headway_secs\nT5,6:00:00,7:00:00,1200\n";
    f["shapes.txt"] = "";
    return f;
}

// Tuesday 5 March 2024, 9 a.m. in Sydney.
Date tuesday() { return datefromcivil({2024, 3, 5, 9, 0, 0}); }

const ReadLine* findline(const std::vector<ReadLine>& lines, const QString& name)
{
    for (const ReadLine& l : lines)
        if (l.name == name)
            return &l;
    return nullptr;
}

using Rows2 = std::vector<std::vector<int>>;

} // namespace

TEST(GtfsImport, SmallFeedBecomesTheTableARiderExpects)
{
    QTemporaryDir tmp;
    writefeed(tmp.path() + "/feed", smallfeed());
    const CliRun r = runcliat({"import-gtfs", tmp.path() + "/feed", "--route-type", "2", "--week", "2024-03-06"},
                              tuesday(), tmp.path());
    ASSERT_EQ(r.status, 0) << r.err.toStdString();
    const QString path = tmp.path() + "/Library/Preferences/quendlefddffdrterXAXAXA/tablesverified/HillValeRail.vq";
    EXPECT_TRUE(r.out.contains("Wrote " + path)) << r.out.toStdString();
    EXPECT_TRUE(r.out.contains("3 lines, 5 stations")) << r.out.toStdString();
    EXPECT_TRUE(r.out.contains("Mon 4, Tue 4, Wed 0, Thu 4, Fri 4, Sat 2, Sun 5")) << r.out.toStdString();

    const QString text = readfile(path);
    EXPECT_TRUE(isthisavalidtable(path));
    EXPECT_TRUE(text.contains("<timetable name = \"HillValeRail\"  date=\"5 March 2024 9:00:00 AM\" > "))
        << text.left(200).toStdString();
    expectidentitiesapart(text);
    const QStringList tl = splittablelines(text);
    const std::vector<ReadLine> lines = readlines(path);
    ASSERT_EQ(lines.size(), 3u);

    // Southbound: platforms count as their station, the two stations called Mid Cross
    // are told apart, the trip that runs the other way has a block of its own, and
    // both blocks are numbered so neither name sits inside the other.
    const ReadLine* south = findline(lines, "H1 Hill Line, via Mid#to South Vale (1)");
    ASSERT_NE(south, nullptr) << lines[0].name.toStdString();
    EXPECT_EQ(south->stns, (QStringList{"North Hill", "Mid Cross", "Mid Cross (M2)", "South 'Vale' Upper/Lower"}));
    EXPECT_EQ(south->stnsh.first(), "151.2101");
    EXPECT_EQ(south->stnsv.first(), "-33.8702");
    EXPECT_TRUE(text.contains("color=\"#1f8a4c\""));
    // Weekdays but Wednesday (removed by calendar_dates) share one block; seconds are
    // dropped, a missing departure takes the arrival, after midnight stays 24xx.
    const Rows2 weekday = {{507, 515, -1, 527}, {-1, -1, 700, 710}, {2350, -1, -1, 2404}};
    EXPECT_EQ(south->rows(tl, 1), weekday);
    EXPECT_EQ(south->rows(tl, 4), weekday);
    EXPECT_TRUE(south->rows(tl, 3).empty());
    EXPECT_TRUE(text.contains(" <day num=\"1245\" pubhol=\"true\"  > "));
    // Friday reads the Saturday block: Mid Cross interpolated by distance travelled (3 of 4).
    EXPECT_EQ(south->rows(tl, 6), (Rows2{{900, 909, -1, 912}}));
    // Sunday: the frequency-based trip every 20 minutes from 6:00 (7:00 excluded), plus
    // the weekend trip; the service known only from calendar_dates runs.
    EXPECT_EQ(south->rows(tl, 0), (Rows2{{600, 605, -1, 610}, {620, 625, -1, 630}, {640, 645, -1, 650}, {900, 909, -1, 912}}));

    const ReadLine* against = findline(lines, "H1 Hill Line, via Mid#to South Vale (2)");
    ASSERT_NE(against, nullptr);
    EXPECT_EQ(against->stns, (QStringList{"South 'Vale' Upper/Lower", "North Hill"}));
    EXPECT_EQ(against->rows(tl, 2), (Rows2{{800, 830}}));

    // Northbound: stations without times spread evenly; one without a position is ?/??.
    const ReadLine* north = findline(lines, "H1 Hill Line, via Mid#to North Hill");
    ASSERT_NE(north, nullptr);
    EXPECT_EQ(north->stns, (QStringList{"South 'Vale' Upper/Lower", "Mid Cross", "Ash Park", "North Hill"}));
    EXPECT_EQ(north->stnsh[2], "?");
    EXPECT_EQ(north->stnsv[2], "??");
    EXPECT_EQ(north->rows(tl, 0), (Rows2{{1000, 1010, 1020, 1030}}));
    EXPECT_TRUE(text.contains(" <day num=\"06\" pubhol=\"true\"  > "));
    EXPECT_FALSE(text.contains("Bus Stop"));

    // The application finds the services: Sunday 10 March before six.
    const CliRun next = runcliat({"--journey", "North Hill|South 'Vale' Upper/Lower", "next"},
                                 datefromcivil({2024, 3, 10, 5, 30, 0}), tmp.path());
    ASSERT_EQ(next.status, 0) << next.err.toStdString();
    EXPECT_TRUE(next.out.contains("North Hill 6:00AM  →  South 'Vale' Upper/Lower 6:10AM   H1 Hill Line, via Mid"))
        << next.out.toStdString();
}

TEST(GtfsImport, AZippedFeedReadsLikeItsFolder)
{
    QTemporaryDir tmp;
    QMap<QString, QByteArray> files = smallfeed();
    files["agency.txt"] = "";   // an empty optional file is as good as none
    writefeed(tmp.path() + "/feed", files);
    // Zipped with its folder, as some publishers do.
    const QByteArray zipPath = QFile::encodeName(tmp.path() + "/feed.zip");
    int code = 0;
    zip_t* z = zip_open(zipPath.constData(), ZIP_CREATE | ZIP_TRUNCATE, &code);
    ASSERT_NE(z, nullptr);
    std::vector<QByteArray> keep;
    for (auto it = files.cbegin(); it != files.cend(); ++it) {
        keep.push_back(it.value());
        zip_source_t* s = zip_source_buffer(z, keep.back().constData(), keep.back().size(), 0);
        ASSERT_GE(zip_file_add(z, ("gtfs/" + it.key()).toUtf8().constData(), s, ZIP_FL_OVERWRITE), 0);
    }
    ASSERT_EQ(zip_close(z), 0);

    const QStringList common = {"--route-type=2", "--week=2024-03-06", "--name", "Hill"};
    ASSERT_EQ(runcliat(QStringList{"import-gtfs", tmp.path() + "/feed", "--out", tmp.path() + "/a.vq"} + common,
                       tuesday(), tmp.path()).status, 0);
    const CliRun r = runcliat(QStringList{"import-gtfs", tmp.path() + "/feed.zip", "--out", tmp.path() + "/b.vq"} + common,
                              tuesday(), tmp.path());
    ASSERT_EQ(r.status, 0) << r.err.toStdString();
    EXPECT_EQ(readfile(tmp.path() + "/a.vq"), readfile(tmp.path() + "/b.vq"));
    EXPECT_TRUE(readfile(tmp.path() + "/b.vq").contains("<timetable name = \"Hill\""));
}

TEST(GtfsImport, BrokenFeedsSayWhereAndWriteNothing)
{
    struct Case {
        const char* what;
        std::function<void(QMap<QString, QByteArray>&)> breakit;
        QStringList extra;
        QString expected;   // in the message
    };
    const std::vector<Case> cases = {
        {"missing stops.txt", [](auto& f) { f.remove("stops.txt"); }, {}, "feed: stops.txt: is missing"},
        {"no trip_id column",
         [](auto& f) { f["trips.txt"].replace("trip_id", "trip_ident"); }, {},
         "trips.txt, line 1, column trip_id: the header has no such column"},
        {"short row",
         [](auto& f) { f["stop_times.txt"] += "T1,5:30:00\n"; }, {},
         "stop_times.txt, line 23, column departure_time: the row has 2 fields where the header names 6"},
        {"unknown trip",
         [](auto& f) { f["stop_times.txt"].replace("T6,7:00:00", "T9,7:00:00"); }, {},
         "stop_times.txt, line 17, column trip_id: trip \"T9\" is not in trips.txt"},
        {"bad time",
         [](auto& f) { f["stop_times.txt"].replace("T6,7:00:00,7:00:00", "T6,7:00:00,7:0x:00"); }, {},
         "stop_times.txt, line 17, column departure_time: \"7:0x:00\" is not a time"},
        {"week outside", [](auto&) {}, {"--week", "2030-01-01"},
         "the week 2029-12-31 to 2030-01-06 lies outside the feed's dates (2024-01-01 to 2024-12-31)"},
        {"no such route type", [](auto&) {}, {"--route-type", "4"},
         "no route is left by the filter; route types in the feed: 2 (1 routes), 3 (1 routes)"},
        {"unknown route in trips",
         [](auto& f) { f["trips.txt"].replace("B1,WK,BUS1", "B7,WK,BUS1"); }, {},
         "trips.txt, line 9, column route_id: route \"B7\" is not in routes.txt"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        QTemporaryDir tmp;
        QMap<QString, QByteArray> files = smallfeed();
        c.breakit(files);
        writefeed(tmp.path() + "/feed", files);
        // An earlier table at --out survives; nothing else appears beside it.
        writefile("old table", tmp.path() + "/", "out.vq");
        QStringList args = {"import-gtfs", "feed", "--out", tmp.path() + "/out.vq", "--week", "2024-03-06"};
        args += c.extra;
        const QString cwd = QDir::currentPath();
        QDir::setCurrent(tmp.path());
        const CliRun r = runcliat(args, tuesday(), tmp.path());
        QDir::setCurrent(cwd);
        EXPECT_EQ(r.status, 2);
        EXPECT_TRUE(r.err.contains(c.expected)) << r.err.toStdString();
        EXPECT_TRUE(r.err.contains("Nothing was written.")) << r.err.toStdString();
        EXPECT_EQ(readfile(tmp.path() + "/out.vq"), "old table");
        EXPECT_EQ(QDir(tmp.path()).entryList(QDir::Files), QStringList{"out.vq"});
        EXPECT_FALSE(QDir(tmp.path() + "/Library").exists());
    }

    QTemporaryDir tmp;
    writefile("not a zip", tmp.path() + "/", "feed.zip");
    CliRun r = runcliat({"import-gtfs", tmp.path() + "/feed.zip"}, tuesday(), tmp.path());
    EXPECT_EQ(r.status, 2);
    EXPECT_TRUE(r.err.contains("is not a readable zip file")) << r.err.toStdString();
    r = runcliat({"import-gtfs", tmp.path() + "/feed.zip", "--name", "../evil"}, tuesday(), tmp.path());
    EXPECT_EQ(r.status, 2);
    EXPECT_TRUE(r.err.contains("may hold only letters")) << r.err.toStdString();
    r = runcliat({"import-gtfs"}, tuesday(), tmp.path());
    EXPECT_EQ(r.status, 2);
    EXPECT_TRUE(r.err.contains("usage: quendle-cli import-gtfs FEED")) << r.err.toStdString();
}

TEST(GtfsImport, LineNamesStayApartAndRowsNeverLookLikeMidnight)
{
    // An express that leaves ten minutes after an all-stations train and arrives three
    // hours before it: in one day block the reader would take the express's arrival
    // (a fall of more than 200 against the row before) for a time after midnight, so
    // it goes to a block of its own. Blocks of one name are numbered, and a name that
    // is the start of another ("to Hill" in "to Hill Top") takes a number too.
    Feed feed;
    feed.monday = QDate(2024, 3, 4);
    for (int i = 0; i < 6; ++i)
        feed.stops.push_back({QStringLiteral("s%1").arg(i), QStringLiteral("Stop %1").arg(i), "1", "2", -1});
    feed.routes.push_back({"A", "X", "Express", "", "#112233", 2});
    feed.routes.push_back({"B", "Y", "Local", "", "#445566", 2});
    auto trip = [&](int route, int direction, const QString& head, std::vector<int> stations, std::vector<int> minutes) {
        Trip t;
        t.route = route;
        t.direction = direction;
        t.headsign = head;
        t.days = 0x7f;
        t.stations = std::move(stations);
        for (int m : minutes)
            t.times.push_back(m * 60);
        feed.trips.push_back(t);
    };
    trip(0, 0, "Vale", {0, 1, 2, 3, 4, 5}, {360, 400, 450, 500, 550, 570});
    trip(0, 0, "Vale", {0, 5}, {370, 400});
    trip(1, 0, "Hill", {0, 5}, {600, 700});
    trip(1, 1, "Hill Top", {5, 0}, {600, 700});
    const BuiltTable t = buildtable(feed, "T", "1 March 2024 10:00:00 AM");
    expectidentitiesapart(t.text);
    EXPECT_EQ(t.services[1], 4);

    QTemporaryDir tmp;
    const QString path = fixtures::writeto(tmp.path(), "t.vq", t.text);
    const QStringList tl = splittablelines(t.text);
    QStringList names;
    for (const ReadLine& l : readlines(path)) {
        names << l.name;
        // Within every day block, no time before 24:00 falls more than 200 below an
        // earlier row's time at the same stop.
        for (int digit = 0; digit < 7; ++digit) {
            std::vector<int> highest(l.stns.size(), -1);
            for (const auto& row : l.rows(tl, digit))
                for (size_t p = 0; p < row.size(); ++p) {
                    if (row[p] < 0 || row[p] >= 2400)
                        continue;
                    if (highest[p] >= 0) {
                        EXPECT_GE(row[p] - highest[p], -200) << l.name.toStdString();
                    }
                    highest[p] = std::max(highest[p], row[p]);
                }
        }
    }
    EXPECT_EQ(names, (QStringList{"X Express#to Vale (1)", "X Express#to Vale (2)", "Y Local#to Hill (2)",
                                  "Y Local#to Hill Top"}));
}
