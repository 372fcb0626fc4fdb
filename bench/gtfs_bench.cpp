// Importing a generated GTFS feed of a million stop times: time per import, and the
// process's peak resident memory (the feed is written to disk first, row by row, so
// the peak is the import's).

#include "gtfs/importgtfs.h"
#include "util/dates.h"

#include <QFile>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <sys/resource.h>

using namespace quendle;

namespace {

constexpr int kRoutes = 20;           // each with two directions
constexpr int kStationsPerRoute = 50;
constexpr int kTripsPerDirection = 500;  // 20 * 2 * 500 * 50 = 1,000,000 stop times

void put(QFile& f, const QByteArray& text) { f.write(text); }

QString hms(int secs)
{
    return QStringLiteral("%1:%2:%3").arg(secs / 3600).arg(secs / 60 % 60, 2, 10, QLatin1Char('0'))
        .arg(secs % 60, 2, 10, QLatin1Char('0'));
}

// Routes share a trunk of ten stations, so stations are served by several routes;
// every station is a parent with one platform; every fifth stop has no time.
void generate(const QString& dir)
{
    auto open = [&](const char* name, const char* header) {
        auto f = std::make_unique<QFile>(dir + "/" + name);
        f->open(QIODevice::WriteOnly);
        put(*f, header);
        return f;
    };
    auto agency = open("agency.txt", "agency_id,agency_name,agency_url,agency_timezone\n");
    put(*agency, "A,Generated Rail,http://example.org,Australia/Sydney\n");
    auto cal = open("calendar.txt", "service_id,monday,tuesday,wednesday,thursday,friday,saturday,sunday,start_date,end_date\n");
    put(*cal, "WK,1,1,1,1,1,0,0,20240101,20241231\nWE,0,0,0,0,0,1,1,20240101,20241231\n");
    auto dates = open("calendar_dates.txt", "service_id,date,exception_type\n");
    put(*dates, "WK,20240306,2\nWE,20240306,1\n");
    auto routes = open("routes.txt", "route_id,agency_id,route_short_name,route_long_name,route_type,route_color\n");
    auto stops = open("stops.txt", "stop_id,stop_name,stop_lat,stop_lon,location_type,parent_station\n");
    auto trips = open("trips.txt", "route_id,service_id,trip_id,trip_headsign,direction_id\n");
    auto times = open("stop_times.txt",
                      "trip_id,arrival_time,departure_time,stop_id,stop_sequence,pickup_type,drop_off_type,shape_dist_traveled\n");
    const int stationCount = 10 + kRoutes * (kStationsPerRoute - 10);
    for (int s = 0; s < stationCount; ++s) {
        const QByteArray lat = QByteArray::number(-33.5 - s * 0.001, 'f', 6), lon = QByteArray::number(150.5 + s * 0.001, 'f', 6);
        put(*stops, "S" + QByteArray::number(s) + ",Station " + QByteArray::number(s) + "," + lat + "," + lon + ",1,\n");
        put(*stops, "P" + QByteArray::number(s) + ",Station " + QByteArray::number(s) + " Platform 1," + lat + "," + lon
                        + ",0,S" + QByteArray::number(s) + "\n");
    }
    int tripNo = 0;
    for (int r = 0; r < kRoutes; ++r) {
        put(*routes, "R" + QByteArray::number(r) + ",A,T" + QByteArray::number(r) + ",Line " + QByteArray::number(r)
                         + ",2,1f8a4c\n");
        std::vector<int> line;
        for (int k = 0; k < 10; ++k)
            line.push_back(k);
        for (int k = 0; k < kStationsPerRoute - 10; ++k)
            line.push_back(10 + r * (kStationsPerRoute - 10) + k);
        for (int dir = 0; dir < 2; ++dir) {
            std::vector<int> order = line;
            if (dir == 1)
                std::reverse(order.begin(), order.end());
            for (int t = 0; t < kTripsPerDirection; ++t) {
                const QByteArray id = "t" + QByteArray::number(tripNo++);
                put(*trips, "R" + QByteArray::number(r) + "," + (t % 3 == 0 ? "WE" : "WK") + "," + id + ",Station "
                                + QByteArray::number(order.back()) + "," + QByteArray::number(dir) + "\n");
                int clock = 4 * 3600 + t * 150 + r * 17;   // every 2.5 minutes from 4 a.m., on past midnight
                for (int k = 0; k < kStationsPerRoute; ++k) {
                    const bool timed = k == 0 || k == kStationsPerRoute - 1 || k % 5 != 0;
                    const QByteArray tm = timed ? hms(clock).toLatin1() : QByteArray();
                    put(*times, id + "," + tm + "," + tm + ",P" + QByteArray::number(order[k]) + ","
                                    + QByteArray::number(k + 1) + ",0,0," + QByteArray::number(k * 1.5, 'f', 1) + "\n");
                    clock += 90 + (k % 3) * 30;
                }
            }
        }
    }
}

double peakmegabytes()
{
    rusage u{};
    getrusage(RUSAGE_SELF, &u);
    return u.ru_maxrss / 1024.0;
}

void BM_ImportMillionStopTimes(benchmark::State& state)
{
    QTemporaryDir dir;
    generate(dir.path());
    const double before = peakmegabytes();
    gtfs::ImportRequest req;
    req.feed = dir.path();
    req.out = dir.path() + "/out.vq";
    req.week = QDate(2024, 3, 6);
    gtfs::ImportResult r;
    for (auto _ : state)
        r = gtfs::importgtfs(req, QString(), datefromcivil({2024, 3, 5, 9, 0, 0}));
    state.counters["stop_times"] = kRoutes * 2.0 * kTripsPerDirection * kStationsPerRoute;
    state.counters["lines"] = r.lines;
    state.counters["peak_MB"] = peakmegabytes();
    state.counters["peak_before_MB"] = before;
    state.counters["table_MB"] = QFile(req.out).size() / 1048576.0;
}
BENCHMARK(BM_ImportMillionStopTimes)->Unit(benchmark::kSecond)->Iterations(3);

} // namespace

BENCHMARK_MAIN();
