#include "cli/cli.h"

#include "app/appmodel.h"
#include "app/statejson.h"
#include "cli/trackworkcmd.h"
#include "cli/updatecmd.h"
#include "paint/strippainter.h"
#include "cli/cliplatform.h"
#include "platform/system/nullservices.h"
#include "gtfs/importgtfs.h"
#include "util/dates.h"
#include "util/durations.h"

#include <QGuiApplication>
#include <QImage>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

#include <algorithm>

namespace quendle {

namespace {

const char* const kUsage =
    "Usage: quendle-cli [--now ISO8601] [--journey \"A|B|C\"] COMMAND\n"
    "\n"
    "Commands:\n"
    "  next               the journey's next services, as the strip shows them\n"
    "  status [--json]    the status item's title: the first station and the time left;\n"
    "                     --json: one line for a status bar (text, tooltip, class)\n"
    "  dump               the application state as one JSON object\n"
    "  stations           every known station, one a line\n"
    "  lines              every line: number, name, colour and stops\n"
    "  trackwork          the trackwork notices kept, and the journey's services they touch\n"
    "  trackwork --fetch  first download the operator's trackwork and interruption pages\n"
    "                     (exit status 1 when a page could not be fetched)\n"
    "  table check FILE   whether FILE is a usable table, and what it holds\n"
    "  render FILE.png [--zoomed-out] [--width N]\n"
    "                     paint the strip as it looks now into a PNG (N: the picture's\n"
    "                     width in pixels; the strip is drawn at that scale)\n"
    "  journey            the saved journey, one station a line\n"
    "  journey set \"A|B\"  make A, B the saved journey; the old one is kept as a bookmark\n"
    "  bookmarks          the saved journeys, one a line, as journey set takes them\n"
    "  favourites         the stations chosen: name, count and whether the menu offers it\n"
    "  import-gtfs FEED [--out FILE] [--name NAME] [--week YYYY-MM-DD]\n"
    "              [--route-type N,...] [--routes ID,...]\n"
    "                     make a table from a GTFS feed (its zip file or folder);\n"
    "                     by default into the tables folder, so the next start loads it\n"
    "  update             check the publisher's update page now, as the running strip does:\n"
    "                     fetch newer tables for the next start, say whether a newer\n"
    "                     version is out (exit status 1 when the page was not reached)\n"
    "  publish DIR [--table FILE]... [--version X.Y]\n"
    "                     write an update page and the tables folder parlune/ into DIR,\n"
    "                     for any web server to serve to Quendle users\n"
    "\n"
    "Options:\n"
    "  --now ISO8601      run at this instant (as QUENDLE_NOW does; this wins over it)\n"
    "  --journey \"A|B\"    use this journey for this run only; nothing is saved\n"
    "  --help, --version\n";

int levenshtein(const QString& a, const QString& b)
{
    std::vector<int> prev(b.size() + 1), cur(b.size() + 1);
    for (int j = 0; j <= b.size(); ++j)
        prev[j] = j;
    for (int i = 1; i <= a.size(); ++i) {
        cur[0] = i;
        for (int j = 1; j <= b.size(); ++j) {
            const int cost = a[i - 1] == b[j - 1] ? 0 : 1;
            cur[j] = std::min({prev[j] + 1, cur[j - 1] + 1, prev[j - 1] + cost});
        }
        std::swap(prev, cur);
    }
    return prev[b.size()];
}

int cmdnext(AppModel& app, QTextStream& out)
{
    const Journey& j = app.journey();
    const Timetable& tt = app.timetable();
    const Date now = app.now();
    out << "Journey: " << j.myjournstr.join(QStringLiteral(" → ")) << "\n";
    out << "Now:     " << lumdatedisplay(now) << "\n\n";
    if (j.myjournstr.size() < 2) {
        out << "The journey has one station and no legs: add a second station to see services.\n";
        return 0;
    }
    if (tt.linesmute.empty()) {
        out << "No timetable is loaded: the tables folder holds no usable table.\n";
        return 1;
    }
    Date firstDeparture, lastArrival;
    int shown = 0;
    for (int leg = 0; leg + 1 < j.myjournstr.size(); ++leg) {
        const QString from = j.myjournstr[leg], to = j.myjournstr[leg + 1];
        const int i = j.getthisviewindex(leg);
        if (leg < static_cast<int>(j.mylinematches.size()) && j.mylinematches[leg].empty()) {
            out << "  " << from << " → " << to << ": no line connects " << from << " and " << to << "\n";
            continue;
        }
        if (leg >= static_cast<int>(j.myservsmultid.size()) || i < 0
            || i >= static_cast<int>(j.myservsmultid[leg].size())) {
            out << "  " << from << " → " << to << ": no services in the next "
                << j.lummaxdaystosrch << " days\n";
            continue;
        }
        const Service& s = j.myservsmultid[leg][i];
        if (leg > 0)
            out << "      change at " << from << ", wait" << j.myzoominremaintimes.value(leg) << "\n";
        out << "  " << from << " " << dayandtime(s.deptime, now) << "  →  " << to << " "
            << dayandtime(s.desttime, now) << "   " << tt.linesmute[s.linenum].dispname << "\n";
        if (const QString mark = trackworkmark(app, leg, i); !mark.isEmpty())
            out << "      " << mark << "\n";
        if (leg == 0)
            out << "      leaves in" << j.myzoominremaintimes.value(0) << "\n";
        if (shown == 0)
            firstDeparture = s.deptime;
        lastArrival = s.desttime;
        ++shown;
    }
    if (shown == static_cast<int>(j.myjournstr.size()) - 1) {
        const QString total = mintostr(calctimediffmin(firstDeparture, lastArrival));
        out << "\nTotal travel time: " << (total.isEmpty() ? QStringLiteral("under a minute") : total) << "\n";
    }
    return 0;
}

// What the status item shows, for a terminal or a status bar's custom module.
int cmdstatus(const AppModel& app, bool json, QTextStream& out)
{
    const StatusShown& s = app.display().statusitem;
    if (!json) {
        out << s.title.trimmed() << "\n";
        return 0;
    }
    const QJsonObject o{{"text", s.title.trimmed()}, {"tooltip", s.tooltip}, {"class", s.cls}, {"alt", s.iconName}};
    out << QJsonDocument(o).toJson(QJsonDocument::Compact) << "\n";
    return 0;
}

int cmdlines(AppModel& app, QTextStream& out)
{
    const Timetable& tt = app.timetable();
    for (int l = 0; l < static_cast<int>(tt.linesmute.size()); ++l) {
        const LineRecord& line = tt.linesmute[l];
        out << l << "\t" << line.name << "\t" << line.hexcol << "\t" << line.stns.join(QStringLiteral(", "))
            << "\n";
    }
    return 0;
}

int cmdtablecheck(const QString& path, QTextStream& out)
{
    const TableSummary t = describetable(path);
    out << path << ": " << (t.valid ? "valid table" : "not a valid table") << "\n";
    if (!t.valid)
        out << "why: " << t.why << "\n";
    out << "DATE: \"" << t.datetext << "\" reads as " << lumdatetostrdisplaiable(t.date) << "\n";
    for (const QString& w : t.warnings)
        out << "warning: " << w << "\n";
    out << "lines: " << t.lines.size() << ", stations: " << t.stations << "\n";
    for (const auto& line : t.lines) {
        out << "  " << line.name << "  " << line.colour << "  " << line.stops << " stops;";
        for (const auto& d : line.days)
            out << " days " << (d.days.isEmpty() ? QStringLiteral("(none)") : d.days) << ": " << d.rows
                << " services;";
        out << "\n";
    }
    return t.valid ? 0 : 1;
}

struct RenderArgs {
    QString file;
    bool zoomedout = false;
    int width = 0;   // 0: the window's own width
    QString error;
};

RenderArgs parserenderargs(const QStringList& rest)
{
    RenderArgs r;
    for (int i = 1; i < rest.size(); ++i) {
        const QString a = rest[i];
        if (a == QLatin1String("--zoomed-out")) {
            r.zoomedout = true;
        } else if (a == QLatin1String("--width") || a.startsWith(QLatin1String("--width="))) {
            QString v;
            if (a.startsWith(QLatin1String("--width=")))
                v = a.mid(8);
            else if (i + 1 < rest.size())
                v = rest[++i];
            bool ok = false;
            r.width = v.toInt(&ok);
            if (!ok || r.width < 16 || r.width > 8000)
                r.error = QStringLiteral("--width needs a whole number of pixels from 16 to 8000, not \"%1\"").arg(v);
        } else if (a.startsWith(QLatin1String("--"))) {
            r.error = QStringLiteral("render does not know the option \"%1\"").arg(a);
        } else if (r.file.isEmpty()) {
            r.file = a;
        } else {
            r.error = QStringLiteral("render takes one file name");
        }
    }
    if (r.error.isEmpty() && r.file.isEmpty())
        r.error = QStringLiteral("render needs the name of the PNG file to write");
    return r;
}

// The strip as the window shows it now, painted offscreen by the strip's own painter.
int cmdrender(AppModel& app, const RenderArgs& r, QTextStream& out, QTextStream& err)
{
    if (!qobject_cast<QGuiApplication*>(QCoreApplication::instance())) {
        err << "quendle-cli: render needs the graphical (offscreen) application object\n";
        return 1;
    }
    Display& d = app.display();
    if (r.zoomedout) {
        app.view().zoomed = 0;
        d.adjustclippingbasedonjourneylength();
    }
    // A picture shows the map's trip drawn to the end, as the running strip does a moment later.
    while (d.painttimer != kNoTimer && app.platform().timers->isValid(d.painttimer))
        d.painttimerfunc();
    const Rect f = d.window()->frame();
    const QSizeF size(f.w, f.h);
    const qreal dpr = r.width > 0 ? r.width / size.width() : 1.0;
    const QImage img = StripPainter(app, dpr).renderview(size);
    QSaveFile file(r.file);
    if (!file.open(QIODevice::WriteOnly) || !img.save(&file, "PNG") || !file.commit()) {
        err << "quendle-cli: cannot write \"" << r.file << "\": "
            << (file.errorString().isEmpty() ? QStringLiteral("the picture could not be encoded") : file.errorString())
            << "\n";
        return 1;
    }
    out << r.file << ": " << img.width() << " × " << img.height() << " pixels, the strip "
        << (r.zoomedout ? "zoomed out" : "zoomed in") << " at " << lumdatedisplay(app.now()) << "\n";
    return 0;
}

// A name as a message shows it: a hostile one can be long.
QString clipped(const QString& name)
{
    return name.size() > 60 ? name.left(60) + QStringLiteral("…") : name;
}

// Station names from "A|B|C"; false (and a message) when one is unknown or when a station
// follows itself (a leg needs two stations).
bool knownstations(const AppModel& app, const QString& text, QStringList* names, QTextStream& err)
{
    names->clear();
    for (const QString& n : text.split('|'))
        if (!n.trimmed().isEmpty())
            *names << n.trimmed();
    QStringList all;
    for (const StationRecord& s : app.timetable().stnsmute)
        all << s.name;
    for (int i = 0; i < names->size(); ++i) {
        const QString& n = names->at(i);
        if (app.timetable().stnnametonum(n) < 0) {
            QStringList closest = closeststations(n, all);
            for (QString& c : closest)
                c = clipped(c);
            err << "quendle-cli: unknown station \"" << clipped(n) << "\". Closest known stations: "
                << closest.join(QStringLiteral(", ")) << "\n";
            return false;
        }
        if (i > 0 && n == names->at(i - 1)) {
            err << "quendle-cli: \"" << n << "\" follows itself; each leg runs between two different stations\n";
            return false;
        }
    }
    return true;
}

int cmdbookmarks(const AppModel& app, QTextStream& out)
{
    const UserState& u = app.userstate();
    for (int i = 0; i < static_cast<int>(u.mybookmarks.size()); ++i) {
        out << u.mybookmarks[i].substns.join('|');
        if (!u.isthisavalidbookmark(i))
            out << "\t(not offered: it names a station the tables do not know)";
        out << "\n";
    }
    return 0;
}

int cmdfavourites(const AppModel& app, QTextStream& out)
{
    const UserState& u = app.userstate();
    for (const Favourite& f : u.myfavs) {
        const bool offered = std::any_of(u.myfavstoshow.begin(), u.myfavstoshow.end(),
                                         [&](const Favourite& s) { return s.name == f.name; });
        out << f.name << "\t" << f.score << (offered ? "\toffered" : "") << "\n";
    }
    return 0;
}

// The journey is built as the stations menu builds it: the first station replaces the
// journey (the old one becomes a bookmark), each further one is appended and the trip
// recalculated, so change stations come in as usual. Saved only once it is complete.
int cmdjourneyset(AppModel& app, const QStringList& names, Platform& platform, QTextStream& out,
                  QTextStream& err)
{
    Journey& j = app.journey();
    UserState& u = app.userstate();
    if (names.isEmpty()) {
        err << "quendle-cli: journey set needs at least one station, e.g. \"Central|Strathfield\"\n";
        return 2;
    }
    if (names.size() > j.maxlegs) {
        err << "quendle-cli: a journey holds at most " << j.maxlegs << " stations\n";
        return 2;
    }
    u.changejourn(0, names[0]);   // keeps the journey it replaces as a bookmark
    for (int i = 1; i < names.size(); ++i) {
        const qsizetype before = j.myjournstr.size();
        j.addtojourn(names[i]);
        if (j.myjournstr.size() == before) {
            err << "quendle-cli: with its change stations the journey " << j.myjournstr.join(QStringLiteral(" → "))
                << " is full; \"" << names[i] << "\" cannot be added. Nothing was saved.\n";
            return 2;
        }
        u.addtofavcount(names[i]);
        app.calctripoptimizelater();
    }
    if (auto* overlay = dynamic_cast<OverlayDefaults*>(platform.defaults))
        overlay->writethrough();
    app.setsavestate(true);
    app.writeprefs();
    out << "Journey: " << j.myjournstr.join(QStringLiteral(" → ")) << "\n";
    if (!u.lastsaveok()) {
        err << "quendle-cli: the journey could not be saved (is " << app.folders().getprefsfold()
            << " or the settings folder read-only or full?)\n";
        return 1;
    }
    return 0;
}

const char* const kImportUsage =
    "quendle-cli: usage: quendle-cli import-gtfs FEED [--out FILE] [--name NAME] [--week YYYY-MM-DD]"
    " [--route-type N,...] [--routes ID,...]\n";

int cmdimportgtfs(const QStringList& args, Platform& platform, QTextStream& out, QTextStream& err)
{
    gtfs::ImportRequest req;
    QString problem, missing;
    for (const auto& [a, value] : commandargs(args, &missing)) {
        if (!problem.isEmpty())
            break;
        if (a.isEmpty()) {
            if (!req.feed.isEmpty())
                problem = "one feed at a time (\"" + req.feed + "\" and \"" + value + "\")";
            req.feed = value;
        } else if (a == QLatin1String("--out")) {
            req.out = value;
        } else if (a == QLatin1String("--name")) {
            req.name = value;
        } else if (a == QLatin1String("--week")) {
            const QDate d = QDate::fromString(value, Qt::ISODate);
            if (!d.isValid())
                problem = "--week wants a date YYYY-MM-DD, not \"" + value + "\"";
            req.week = d;
        } else if (a == QLatin1String("--route-type")) {
            for (const QString& t : value.split(QLatin1Char(','), Qt::SkipEmptyParts)) {
                bool ok = false;
                req.filter.routeTypes.push_back(t.trimmed().toInt(&ok));
                if (!ok)
                    problem = "--route-type wants route type numbers, e.g. 2 or 2,109; not \"" + t + "\"";
            }
        } else if (a == QLatin1String("--routes")) {
            for (const QString& r : value.split(QLatin1Char(','), Qt::SkipEmptyParts))
                req.filter.routes << r.trimmed();
        } else {
            problem = "unknown option " + a;
        }
    }
    if (problem.isEmpty())
        problem = missing;
    if (problem.isEmpty() && req.feed.isEmpty())
        problem = "which feed? Give its zip file or folder";
    if (!problem.isEmpty()) {
        err << "quendle-cli: import-gtfs: " << problem << "\n" << kImportUsage;
        return 2;
    }
    const QString tables = req.out.isEmpty() ? Folders(platform.homeDir).gettablesfold() : QString();
    try {
        const gtfs::ImportResult r = gtfs::importgtfs(req, tables, platform.clock->now());
        for (const QString& w : r.warnings)
            err << "quendle-cli: import-gtfs: warning: " << w << "\n";
        out << "Wrote " << r.path << "\n";
        out << "  timetable \"" << r.name << "\", the week of " << r.monday.toString(Qt::ISODate) << " to "
            << r.monday.addDays(6).toString(Qt::ISODate) << " (the feed runs " << r.firstDate.toString(Qt::ISODate)
            << " to " << r.lastDate.toString(Qt::ISODate) << ")\n";
        out << "  " << r.lines << " lines, " << r.stations << " stations\n";
        static const char* const days[7] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
        out << "  services per day:";
        for (int d : {1, 2, 3, 4, 5, 6, 0})
            out << " " << days[d] << " " << r.services[d] << (d == 0 ? "" : ",");
        out << "\n  (on Fridays Quendle shows the Saturday services)\n";
        return 0;
    } catch (const gtfs::FeedError& e) {
        // A fault inside the feed names the feed first; others name their own file.
        const bool inFeed = e.file.endsWith(QLatin1String(".txt")) && !e.file.contains(QLatin1Char('/'));
        err << "quendle-cli: import-gtfs: " << (inFeed ? req.feed + ": " : QString()) << e.text()
            << "\nNothing was written.\n";
        return 2;
    }
}

} // namespace

std::vector<CommandArg> commandargs(const QStringList& args, QString* problem)
{
    std::vector<CommandArg> out;
    for (int i = 0; i < args.size(); ++i) {
        const QString& a = args[i];
        if (!a.startsWith(QLatin1String("--"))) {
            out.push_back({QString(), a});
            continue;
        }
        const qsizetype eq = a.indexOf(QLatin1Char('='));
        if (eq > 0) {
            out.push_back({a.left(eq), a.mid(eq + 1)});
        } else if (i + 1 < args.size()) {
            out.push_back({a, args[i + 1]});
            ++i;
        } else {
            *problem = a + " needs a value";
            break;
        }
    }
    return out;
}

QString dayandtime(Date d, Date now)
{
    const CivilTime a = civilfromdate(d), b = civilfromdate(now);
    const QString time = datetoshrtstr(d);
    if (a.year == b.year && a.month == b.month && a.day == b.day)
        return time;
    return weekdayabbrev(datetodayofweek(d)) + " " + time;
}

CliGlobals parseglobals(const QStringList& args)
{
    CliGlobals g;
    for (int i = 0; i < args.size(); ++i) {
        const QString a = args[i];
        auto value = [&](const QString& name, QString* into) {
            if (a.startsWith(name + "=")) {
                *into = a.mid(name.size() + 1);
                return true;
            }
            if (a == name) {
                if (i + 1 >= args.size()) {
                    g.error = name + " needs a value";
                    return true;
                }
                *into = args[++i];
                return true;
            }
            return false;
        };
        if (!g.rest.isEmpty()) {
            g.rest << a;
        } else if (value(QStringLiteral("--now"), &g.now)) {
            g.hasNow = true;
        } else if (value(QStringLiteral("--journey"), &g.journey)) {
            g.hasJourney = true;
        } else {
            g.rest << a;
        }
    }
    return g;
}

QStringList closeststations(const QString& name, const QStringList& known, int count)
{
    // Spelling is compared on the first 64 characters: a real name is shorter, and the
    // comparison costs the product of the two lengths.
    constexpr int kCompared = 64;
    std::vector<std::pair<int, QString>> scored;
    const QString lower = name.left(kCompared).toLower();
    for (const QString& full : known) {
        const QString k = full.left(kCompared).toLower();
        int score = levenshtein(lower, k);
        if (k.startsWith(lower) || (lower.size() > 2 && k.contains(lower)))
            score = std::min(score, 1);
        scored.emplace_back(score, full);
    }
    std::stable_sort(scored.begin(), scored.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    QStringList out;
    for (int i = 0; i < static_cast<int>(scored.size()) && i < count; ++i)
        if (!out.contains(scored[i].second))
            out << scored[i].second;
    return out;
}

int runcli(const QStringList& args, Platform& platform, QTextStream& out, QTextStream& err)
{
    // What start-up finds wrong (a broken tables folder) goes to the error stream.
    struct Notices {
        Platform& p;
        std::function<void(const QString&)> before;
        ~Notices() { p.notice = before; }
    } notices{platform, platform.notice};
    if (!platform.notice)
        platform.notice = [&err](const QString& text) { err << "quendle-cli: " << text << "\n"; };
    const CliGlobals g = parseglobals(args);
    if (!g.error.isEmpty()) {
        err << "quendle-cli: " << g.error << "\n\n" << kUsage;
        return 2;
    }
    const QString cmd = g.rest.value(0);
    if (cmd == QLatin1String("--help") || cmd == QLatin1String("-h") || cmd == QLatin1String("help")) {
        out << "quendle-cli: the next trains for your regular journey, in the terminal.\n\n" << kUsage;
        return 0;
    }
    if (cmd == QLatin1String("--version")) {
        out << "quendle-cli " << QUENDLE_VERSION << "\n";
        return 0;
    }
    if (cmd == QLatin1String("table")) {
        if (g.rest.value(1) != QLatin1String("check") || g.rest.size() != 3) {
            err << "quendle-cli: usage: quendle-cli table check FILE\n";
            return 2;
        }
        return cmdtablecheck(g.rest[2], out);
    }
    if (cmd == QLatin1String("import-gtfs"))
        return cmdimportgtfs(g.rest.mid(1), platform, out, err);
    if (cmd == QLatin1String("publish"))
        return cmdpublish(g.rest.mid(1), platform, out, err);
    static const QStringList known = {"next",    "dump",      "stations",   "lines",     "render",
                                      "journey", "bookmarks", "favourites", "trackwork", "status",
                                      "update"};
    if (cmd.isEmpty() || !known.contains(cmd)) {
        if (!cmd.isEmpty())
            err << "quendle-cli: unknown command \"" << cmd << "\"\n\n";
        err << kUsage;
        return 2;
    }
    const bool setting = cmd == QLatin1String("journey") && g.rest.value(1) == QLatin1String("set");
    if (setting ? g.rest.size() != 3 : (cmd == QLatin1String("journey") && g.rest.size() != 1)) {
        err << "quendle-cli: usage: quendle-cli journey [set \"A|B|C\"]\n";
        return 2;
    }
    if (setting && g.hasJourney) {
        err << "quendle-cli: journey set and --journey do not go together\n";
        return 2;
    }

    const bool json = cmd == QLatin1String("status") && g.rest.value(1) == QLatin1String("--json");
    if (cmd == QLatin1String("status") && g.rest.size() > (json ? 2 : 1)) {
        err << "quendle-cli: usage: quendle-cli status [--json]\n";
        return 2;
    }
    if (cmd == QLatin1String("update") && g.rest.size() != 1) {
        err << "quendle-cli: usage: quendle-cli update\n";
        return 2;
    }

    RenderArgs render;
    if (cmd == QLatin1String("render")) {
        render = parserenderargs(g.rest);
        if (!render.error.isEmpty()) {
            err << "quendle-cli: " << render.error << "\n\n" << kUsage;
            return 2;
        }
    }
    const bool fetch = cmd == QLatin1String("trackwork") && g.rest.value(1) == QLatin1String("--fetch");
    if (cmd == QLatin1String("trackwork") && g.rest.size() > (fetch ? 2 : 1)) {
        err << "quendle-cli: usage: quendle-cli trackwork [--fetch]\n";
        return 2;
    }

    // Nothing the user owns is written, except by journey set once the journey is complete.
    AppModel app(platform, AppModel::Options{false});
    // A picture needs a window size, even where the platform gives no window.
    NullWindowHost renderwindow;
    if (cmd == QLatin1String("render") && !app.display().window())
        app.display().setwindow(&renderwindow);
    app.setupstuff();
    if (setting) {
        QStringList names;
        if (!knownstations(app, g.rest[2], &names, err))
            return 2;
        return cmdjourneyset(app, names, platform, out, err);
    }
    if (g.hasJourney) {
        QStringList names;
        if (!knownstations(app, g.journey, &names, err))
            return 2;
        if (names.isEmpty()) {
            err << "quendle-cli: --journey needs at least one station, e.g. \"Central|Strathfield\"\n";
            return 2;
        }
        // The limit of a journey built by hand.
        if (names.size() > app.journey().maxlegs) {
            err << "quendle-cli: a journey holds at most " << app.journey().maxlegs << " stations, not "
                << names.size() << "\n";
            return 2;
        }
        app.journey().myjournstr = names;
    }
    if (cmd == QLatin1String("journey")) {
        for (const QString& s : app.journey().myjournstr)
            out << s << "\n";
        return 0;
    }
    if (cmd == QLatin1String("bookmarks"))
        return cmdbookmarks(app, out);
    if (cmd == QLatin1String("favourites"))
        return cmdfavourites(app, out);
    if (cmd == QLatin1String("update"))
        return cmdupdate(app, out, err);
    int fetchstatus = 0;
    if (fetch)
        fetchstatus = fetchoperatorpages(app, out) ? 0 : 1;
    app.calctripoptimizelater();
    app.refreshdisplay();

    if (cmd == QLatin1String("trackwork"))
        return std::max(cmdtrackwork(app, out), fetchstatus);
    if (cmd == QLatin1String("next"))
        return cmdnext(app, out);
    if (cmd == QLatin1String("status"))
        return cmdstatus(app, json, out);
    if (cmd == QLatin1String("lines"))
        return cmdlines(app, out);
    if (cmd == QLatin1String("render"))
        return cmdrender(app, render, out, err);
    if (cmd == QLatin1String("stations")) {
        for (const StationRecord& s : app.timetable().stnsmute)
            out << s.name << "\n";
        return 0;
    }
    out << statejsontext(statejson(app));
    return 0;
}

} // namespace quendle
