#include "cli/updatecmd.h"

#include "app/appmodel.h"
#include "cli/cli.h"
#include "cli/trackworkcmd.h"
#include "publisher/publish.h"
#include "util/dates.h"
#include "util/files.h"

#include <QDir>
#include <QRegularExpression>

namespace quendle {

namespace {

QString version(float v) { return QString::number(static_cast<double>(v)); }

void saytables(const AppModel& app, const UpdateReport& r, QTextStream& out)
{
    if (r.page.tables.empty()) {
        out << "Tables: the page names none (or its lists of names and dates differ in length).\n";
        return;
    }
    out << "Tables named by the page:\n";
    for (size_t i = 0; i < r.page.tables.size(); ++i) {
        const OnlineTable& t = r.page.tables[i];
        out << "  " << t.name << " (" << t.datestr << "): ";
        const TableDownload* d = nullptr;
        for (const TableDownload& each : r.downloads)
            if (each.name == t.name)
                d = &each;
        if (!d) {
            // Tables are matched by position: the page's i-th with this installation's i-th.
            const std::vector<TableRecord>& local = app.timetable().mytables;
            out << "not fetched: table " << i + 1 << " here is "
                << (i < local.size() ? "\"" + local[i].name + "\"" : QStringLiteral("missing")) << ".\n";
        } else if (d->written) {
            out << "downloaded from " << d->url << ";\n    it waits in " << QDir::cleanPath(d->path)
                << " and is installed at the next start.\n";
        } else {
            out << "not taken" << (d->url.isEmpty() ? QString() : " from " + d->url) << ": " << d->why
                << ". Nothing was written.\n";
        }
    }
}

} // namespace

int cmdupdate(AppModel& app, QTextStream& out, QTextStream& err)
{
    Updater& u = app.updater();
    u.askuser = false;   // a terminal prints the question instead
    const std::vector<Date> before = app.mylastupdateray;
    const UpdateReport r = app.updatetimerfunc();
    const Disruptions& d = app.disruptions();

    sayfetch(out, QStringLiteral("Trackwork page"), r.trackwork, d.getuncompedtrakpath());
    if (!r.reachable) {
        out << "Update page: not reached at " << r.updateurl << ": " << r.why << ".\n"
            << "No tables or version were looked for; the tables stay as they were.\n";
    } else {
        out << "Update page: reached at " << r.updateurl << ".\n";
        sayfetch(out, QStringLiteral("Service interruptions page"), r.interruptions, d.getinteruppath());
        if (!r.page.hasvers)
            out << "Version: the page names none.\n";
        else if (r.offered)
            out << "Version: " << version(r.page.version) << " is out; this is " << version(r.appvers) << ".\n"
                << "  Quendle has been updated. Would you like to update now ?\n"
                << "  (Not asked in a terminal. Get it from " << u.getappdownloadurl() << ")\n";
        else if (r.skipped)
            out << "Version: " << version(r.page.version) << " is out, but you chose to skip it.\n";
        else
            out << "Version: this is " << version(r.appvers) << "; the page names " << version(r.page.version)
                << ", nothing newer.\n";
        saytables(app, r, out);
    }

    if (app.mylastupdateray == before) {
        out << "Nothing was recorded: the last successful update is still "
            << (before.empty() ? QStringLiteral("none") : lumdatedisplay(before.front())) << ".\n";
        return r.reachable ? 0 : 1;
    }
    if (!app.userstate().writelastupdate()) {
        err << "quendle-cli: this update could not be recorded in " << app.userstate().getprefspath()
            << " (is the folder read-only or full?)\n";
        return 1;
    }
    out << "Recorded " << lumdatedisplay(app.mylastupdateray.front()) << " as the last successful update.\n";
    return r.reachable ? 0 : 1;
}

int cmdpublish(const QStringList& args, Platform& platform, QTextStream& out, QTextStream& err)
{
    static const char* const usage = "quendle-cli: usage: quendle-cli publish DIR [--table FILE]... [--version X.Y]\n";
    QString dir, problem, missing;
    QStringList tables;
    double ver = Updater::getappvers();
    for (const auto& [a, value] : commandargs(args, &missing)) {
        if (!problem.isEmpty())
            break;
        if (a.isEmpty()) {
            if (!dir.isEmpty())
                problem = "one folder at a time (\"" + dir + "\" and \"" + value + "\")";
            dir = value;
        } else if (a == QLatin1String("--table")) {
            tables << value;
        } else if (a == QLatin1String("--version")) {
            if (!QRegularExpression(QStringLiteral("^[0-9]{1,6}(\\.[0-9]{1,6})?$")).match(value).hasMatch())
                problem = "--version wants a number such as 1.2, not \"" + value + "\"";
            ver = value.toDouble();
        } else {
            problem = "unknown option " + a;
        }
    }
    if (problem.isEmpty())
        problem = missing;
    if (problem.isEmpty() && dir.isEmpty())
        problem = "which folder? Give the folder to publish into";
    if (!problem.isEmpty()) {
        err << "quendle-cli: publish: " << problem << "\n" << usage;
        return 2;
    }
    if (tables.isEmpty()) {
        // The table the publisher tools merged last, when there is one.
        const Folders folders(platform.homeDir);
        const QString merged = Publisher(platform, folders).getlastpushedtablepath();
        if (!lumexist(merged)) {
            err << "quendle-cli: publish: which table? Give it with --table FILE (there is no merged table at "
                << merged << ")\n";
            return 2;
        }
        tables << merged;
    }
    const PublishOutcome o = publishupdate(dir, tables, ver);
    if (!o.ok) {
        err << "quendle-cli: publish: " << o.why << "\nThe update page was not changed.\n";
        return 2;
    }
    out << "Wrote " << QDir::cleanPath(o.page) << ": version " << QString::number(ver) << ", "
        << o.names.size() << (o.names.size() == 1 ? " table" : " tables") << "\n";
    for (qsizetype i = 0; i < o.names.size(); ++i)
        out << "  " << o.names[i] << " (" << o.dates[i] << ") in " << QDir::cleanPath(o.tablepaths[i]) << "\n";
    out << "Serve " << QDir::cleanPath(dir) << " from any web server; Quendle follows it once the setting "
        << "updateurl names the folder's address (see the README).\n";
    return 0;
}

} // namespace quendle
