// The two real feeds of the shared data folder, imported and then asked for journeys:
// the services the application shows must be exactly the feed's own trips. The
// expected services are worked out here straight from the feed's files, with a
// reading of the CSV and of the calendar of this file's own.

#include "util/dates.h"

#include "feedtest.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <zip.h>

#include <map>
#include <set>

using namespace quendle;
using namespace quendle::gtfstest;

namespace {

// A feed's tables as plain rows of named fields. Neither shared feed quotes a field.
using Table = std::vector<std::map<QString, QString>>;

std::map<QString, Table> readzip(const QString& path)
{
    std::map<QString, Table> out;
    int code = 0;
    zip_t* z = zip_open(QFile::encodeName(path).constData(), ZIP_RDONLY, &code);
    if (!z)
        return out;
    for (zip_int64_t i = 0; i < zip_get_num_entries(z, 0); ++i) {
        const QString name = QString::fromUtf8(zip_get_name(z, i, 0)).section('/', -1);
        zip_stat_t st;
        zip_stat_index(z, i, 0, &st);
        QByteArray bytes(static_cast<qsizetype>(st.size), '\0');
        zip_file_t* f = zip_fopen_index(z, i, 0);
        zip_fread(f, bytes.data(), st.size);
        zip_fclose(f);
        if (bytes.startsWith("\xEF\xBB\xBF"))
            bytes.remove(0, 3);
        QStringList lines = QString::fromUtf8(bytes).split('\n');
        QStringList header = lines.takeFirst().trimmed().split(',');
        Table t;
        for (QString l : lines) {
            l = l.trimmed();
            if (l.isEmpty())
                continue;
            const QStringList f = l.split(',');
            std::map<QString, QString> row;
            for (int c = 0; c < header.size(); ++c)
                row[header[c]] = f.value(c).trimmed();
            t.push_back(row);
        }
        out[name] = t;
    }
    zip_discard(z);
    return out;
}

int seconds(const QString& hms)
{
    const QStringList p = hms.split(':');
    return p.value(0).toInt() * 3600 + p.value(1).toInt() * 60 + p.value(2).toInt();
}

// The feed as a rider's timetable: which trips run on a date, and when a trip
// leaves one station for another further along.
class FeedFacts {
public:
    FeedFacts(const QString& zipPath, int routeType) : files_(readzip(zipPath))
    {
        for (const auto& r : files_["routes.txt"])
            if (routeType < 0 || r.at("route_type").toInt() == routeType)
                routes_.insert(r.at("route_id"));
        for (const auto& s : files_["stops.txt"]) {
            const QString parent = s.count("parent_station") ? s.at("parent_station") : QString();
            stationOf_[s.at("stop_id")] = parent.isEmpty() ? s.at("stop_id") : parent;
            names_[s.at("stop_id")] = s.at("stop_name");
        }
        std::map<QString, std::vector<std::pair<int, const std::map<QString, QString>*>>> byTrip;
        for (const auto& st : files_["stop_times.txt"])
            byTrip[st.at("trip_id")].emplace_back(st.at("stop_sequence").toInt(), &st);
        for (auto& [trip, stops] : byTrip) {
            std::sort(stops.begin(), stops.end(), [](auto& a, auto& b) { return a.first < b.first; });
            for (const auto& [seq, st] : stops) {
                // The table keeps one time per stop, the departure (the arrival where the
                // departure is missing); the rider's arrival is read from it.
                const QString dep = st->at("departure_time").isEmpty() ? st->at("arrival_time") : st->at("departure_time");
                stops_[trip].emplace_back(names_[stationOf_[st->at("stop_id")]], seconds(dep));
            }
        }
    }

    bool runs(const std::map<QString, QString>& trip, QDate d) const
    {
        const QString service = trip.at("service_id");
        bool on = false;
        static const char* const days[7] = {"monday", "tuesday", "wednesday", "thursday", "friday", "saturday", "sunday"};
        for (const auto& c : files_.at("calendar.txt"))
            if (c.at("service_id") == service) {
                const QDate from = QDate::fromString(c.at("start_date"), "yyyyMMdd");
                const QDate to = QDate::fromString(c.at("end_date"), "yyyyMMdd");
                on = d >= from && d <= to && c.at(days[d.dayOfWeek() - 1]) == "1";
            }
        for (const auto& e : files_.at("calendar_dates.txt"))
            if (e.at("service_id") == service && QDate::fromString(e.at("date"), "yyyyMMdd") == d)
                on = e.at("exception_type") == "1";
        return on;
    }

    // (departure, arrival) in seconds of the service day, for every trip that runs on
    // the date and serves `from` and later `to`.
    std::vector<std::pair<int, int>> trips(QDate d, const QString& from, const QString& to) const
    {
        std::vector<std::pair<int, int>> out;
        for (const auto& t : files_.at("trips.txt")) {
            if (!routes_.count(t.at("route_id")) || !runs(t, d))
                continue;
            const auto it = stops_.find(t.at("trip_id"));
            if (it == stops_.end())
                continue;
            const auto& s = it->second;
            for (size_t i = 0; i < s.size(); ++i)
                if (s[i].first == from)
                    for (size_t j = i + 1; j < s.size(); ++j)
                        if (s[j].first == to) {
                            out.emplace_back(s[i].second, s[j].second);
                            break;
                        }
        }
        return out;
    }

    bool empty() const { return files_.empty(); }

private:
    std::map<QString, Table> files_;
    std::set<QString> routes_;
    std::map<QString, QString> stationOf_, names_;
    std::map<QString, std::vector<std::pair<QString, int>>> stops_;
};

// "YYYY-MM-DDTHH:MM" of a service-day time on a calendar day (hours past 24 roll on).
QString minuteof(QDate day, int secs)
{
    const QDate d = day.addDays(secs / 86400);
    const int s = secs % 86400;
    return QStringLiteral("%1T%2:%3").arg(d.toString(Qt::ISODate)).arg(s / 3600, 2, 10, QLatin1Char('0'))
        .arg(s / 60 % 60, 2, 10, QLatin1Char('0'));
}

struct Shown {
    QString dep, arr;
    bool operator==(const Shown&) const = default;
};

std::ostream& operator<<(std::ostream& o, const Shown& s)
{
    return o << s.dep.toStdString() << " -> " << s.arr.toStdString();
}

// What the application must show for the journey from..to with the clock on `day`:
// the services of that day and the two after it (the days it searches), each day's
// from the day block its digit selects. Fridays select the Saturday block, so a
// Friday shows the feed's Saturday trips. Then the application's own rules: sorted
// by arrival, and of two neighbours leaving in the same minute only the later-listed
// is kept (the rest of such a pair are trips the application deliberately hides).
std::vector<Shown> expected(const FeedFacts& feed, QDate monday, QDate day, const QString& from, const QString& to,
                            int* hidden)
{
    struct S {
        QString dep, arr;
    };
    std::vector<S> all;
    for (int k = 0; k < 3; ++k) {
        const QDate d = day.addDays(k);
        const int weekday = d.dayOfWeek() == 5 ? 6 : d.dayOfWeek();   // Friday reads Saturday
        const QDate represented = monday.addDays(weekday - 1);
        for (const auto& [dep, arr] : feed.trips(represented, from, to))
            all.push_back({minuteof(d, dep), minuteof(d, arr)});
    }
    std::stable_sort(all.begin(), all.end(), [](const S& a, const S& b) {
        return a.arr != b.arr ? a.arr < b.arr : a.dep < b.dep;
    });
    std::vector<Shown> out;
    for (size_t i = 0; i < all.size(); ++i) {
        if (i + 1 < all.size() && all[i].dep == all[i + 1].dep) {
            ++*hidden;
            continue;
        }
        out.push_back({all[i].dep, all[i].arr});
    }
    return out;
}

QString shareddata()
{
    return qEnvironmentVariable("QUENDLE_SHARED_DATA");
}

struct Check {
    QString feed;         // file in the shared gtfs folder
    QStringList filter;   // import options
    QDate week;           // Monday of the week represented
    std::vector<std::pair<QString, QString>> pairs;
    int routeType;        // kept by the filter; -1 for all
};

void checkfeed(const Check& c)
{
    const QString zip = shareddata() + "/gtfs/" + c.feed;
    if (!QFileInfo(zip).isFile())
        GTEST_SKIP() << "the shared data folder (" << shareddata().toStdString() << ") has no " << c.feed.toStdString()
                     << "; the real-feed comparison needs it";
    QTemporaryDir home;
    const Date importedAt = datefromcivil({2024, 5, 1, 10, 0, 0});
    const CliRun imp = runcliat(QStringList{"import-gtfs", zip, "--week", c.week.toString(Qt::ISODate)} + c.filter,
                                importedAt, home.path());
    ASSERT_EQ(imp.status, 0) << imp.err.toStdString();
    const QString path = imp.out.section('\n', 0, 0).mid(QStringLiteral("Wrote ").size());
    const CliRun check = runcliat({"table", "check", path}, importedAt, home.path());
    EXPECT_EQ(check.status, 0) << check.out.toStdString();
    expectidentitiesapart(readfile(path));

    const FeedFacts feed(zip, c.routeType);
    ASSERT_FALSE(feed.empty());
    int hidden = 0, compared = 0;
    std::map<QString, int> perPair;
    // Monday, Wednesday, Friday (reading Saturday's block), Saturday, Sunday, and the
    // Tuesday of the same week.
    for (int offset : {0, 1, 2, 4, 5, 6}) {
        const QDate day = c.week.addDays(offset);
        for (const auto& [from, to] : c.pairs) {
            SCOPED_TRACE((day.toString(Qt::ISODate) + " " + from + " -> " + to).toStdString());
            const CliRun r = runcliat({"--journey", from + "|" + to, "dump"},
                                      datefromcivil({day.year(), day.month(), day.day(), 3, 0, 0}), home.path());
            ASSERT_EQ(r.status, 0) << r.err.toStdString();
            const QJsonObject state = QJsonDocument::fromJson(r.out.toUtf8()).object();
            ASSERT_EQ(state["myjournstr"].toArray().size(), 2) << "a change station was inserted";
            std::vector<Shown> shown;
            for (const QJsonValue s : state["myservsmultid"].toArray()[0].toArray())
                shown.push_back({s["deptime"].toString().left(16), s["desttime"].toString().left(16)});
            const std::vector<Shown> want = expected(feed, c.week, day, from, to, &hidden);
            EXPECT_EQ(shown, want);
            compared += static_cast<int>(want.size());
            perPair[from + "|" + to] += static_cast<int>(want.size());
        }
    }
    for (const auto& [pair, n] : perPair)
        EXPECT_GT(n, 0) << pair.toStdString() << " has no services at all: a pair that proves nothing";
    std::cout << c.feed.toStdString() << ": " << compared << " services compared, " << hidden
              << " hidden for leaving in the same minute as a neighbour\n";
}

} // namespace

TEST(GtfsRealFeeds, CaltrainServicesAreTheFeedsOwn)
{
    // The week of Independence Day 2023: Tuesday 4 July runs the weekend service
    // (calendar_dates), the buses of the bus bridge are filtered out.
    checkfeed({"caltrain-2023.zip", {"--route-type", "2"}, QDate(2023, 7, 3),
               {{"San Francisco Caltrain Station", "Palo Alto Station"},
                {"San Jose Diridon Station", "Millbrae"},
                {"Gilroy Station", "San Jose Diridon Station"},
                {"22nd Street Station", "Mountain View Station"},
                {"Hillsdale Station", "San Francisco Caltrain Station"}},
               2});
}

TEST(GtfsRealFeeds, ShoreLineEastServicesAreTheFeedsOwn)
{
    // The week of Memorial Day 2013: Monday 27 May runs the weekend service; two
    // agencies (Shore Line East and Amtrak) share the line.
    checkfeed({"shore-line-east-2013.zip", {}, QDate(2013, 5, 27),
               {{"Old Saybrook", "New Haven Union Station"},
                {"New Haven Union Station", "New London"},
                {"Madison", "Guilford"},
                {"Branford", QString::fromUtf8("New Haven\u2014State St.")}},
               -1});
}
