#include "cli/trackworkcmd.h"

#include "app/appmodel.h"
#include "cli/cli.h"
#include "util/dates.h"
#include "util/files.h"
#include "util/text.h"

namespace quendle {

namespace {

// A notice text as the operator's page has it, made readable: no markup, no entities.
QString plaintext(const QString& html)
{
    QString t = lumregexreplace(html, QStringLiteral("<[^>]*>"), QStringLiteral(" "));
    if (t.startsWith('>'))
        t.remove(0, 1);
    t.replace(QLatin1String("&nbsp;"), QLatin1String(" "))
        .replace(QLatin1String("&lt;"), QLatin1String("<"))
        .replace(QLatin1String("&gt;"), QLatin1String(">"))
        .replace(QLatin1String("&quot;"), QLatin1String("\""))
        .replace(QLatin1String("&#39;"), QLatin1String("'"))
        .replace(QLatin1String("&amp;"), QLatin1String("&"));
    return removespacesfromstring(t).trimmed();
}

QString sections(const TrakwRecord& r)
{
    QStringList s;
    for (const StationRange& range : r.stnsoutfix)
        s << range.trakbegstr + " to " + range.trakendstr;
    return s.join(QStringLiteral(", "));
}

} // namespace

void sayfetch(QTextStream& out, const QString& what, const FetchOutcome& o, const QString& cachepath)
{
    if (o.cached) {
        out << what << ": fetched from " << o.url << " and cached.\n";
        return;
    }
    out << what << ": not taken from " << o.url << ": " << o.why << ". "
        << (lumexist(cachepath) ? "The copy cached before is kept as it was.\n" : "There is no cached copy yet.\n");
}

bool fetchoperatorpages(AppModel& app, QTextStream& out)
{
    Disruptions& d = app.disruptions();
    const FetchOutcome tw = d.dltrakw();
    sayfetch(out, QStringLiteral("Trackwork page"), tw, d.getuncompedtrakpath());
    const FetchOutcome si = d.dlserviceinterruptions();
    sayfetch(out, QStringLiteral("Service interruptions page"), si, d.getinteruppath());
    if (tw.cached) {
        d.setuptrakw();
        d.trakwremdupes();
    }
    out << "\n";
    return tw.cached && si.cached;
}

QString trackworkmark(const AppModel& app, int leg, int serv)
{
    const Disruptions& d = app.disruptions();
    const std::vector<int> list = d.gettrakstatusfrthisservray(leg, serv);
    const int count = static_cast<int>(d.relevanttrakinfo.size());
    QString affected, upcoming;
    for (int v : list) {
        const int t = v < 0 ? Disruptions::decompressnegativetraknumval(v) : v;
        if (t < 0 || t >= count)
            continue;
        const TrakwRecord& r = d.relevanttrakinfo[t];
        if (v >= 0 && affected.isEmpty())
            affected = "affected by trackwork: " + r.line + ", until " + lumdatedisplay(r.trakend);
        else if (v < 0 && upcoming.isEmpty())
            upcoming = "trackwork upcoming: " + r.line + ", from " + lumdatedisplay(r.trakbegin);
    }
    return affected.isEmpty() ? upcoming : affected;
}

int cmdtrackwork(const AppModel& app, QTextStream& out)
{
    const Disruptions& d = app.disruptions();
    const Journey& j = app.journey();
    const Date now = app.now();
    if (d.trakw.empty()) {
        out << "No trackwork notices are kept: none has been fetched yet, or every one has ended.\n"
            << "Fetch them with: quendle-cli trackwork --fetch   (from " << d.operatorurl() << ")\n";
    } else {
        out << "Trackwork notices (" << d.trakw.size() << "):\n";
        for (const TrakwRecord& r : d.trakw) {
            out << "  " << r.line << "\n";
            out << "    " << lumdatedisplay(r.trakbegin) << " until " << lumdatedisplay(r.trakend)
                << (testlumdateearlier(r.trakbegin, now) ? "   (in force now)" : "") << "\n";
            if (!r.stnsoutfix.empty())
                out << "    closed: " << sections(r) << "\n";
            const QString text = plaintext(r.originfostr);
            if (!text.isEmpty())
                out << "    " << text << "\n";
        }
    }

    out << "\nJourney: " << j.myjournstr.join(QStringLiteral(" → ")) << "\n";
    if (j.myjournstr.size() < 2) {
        out << "The journey has one station and no legs: add a second station to see services.\n";
        return 0;
    }
    for (int leg = 0; leg + 1 < j.myjournstr.size(); ++leg) {
        out << "  " << j.myjournstr[leg] << " → " << j.myjournstr[leg + 1] << "\n";
        const int first = j.getthisviewindex(leg);
        const int size = leg < static_cast<int>(j.myservsmultid.size())
            ? static_cast<int>(j.myservsmultid[leg].size()) : 0;
        if (first < 0 || first >= size) {
            out << "    no services in the next " << j.lummaxdaystosrch << " days\n";
            continue;
        }
        for (int s = first; s < size && s < first + j.maxservstoshow; ++s) {
            const Service& sv = j.myservsmultid[leg][s];
            const QString mark = trackworkmark(app, leg, s);
            out << "    " << dayandtime(sv.deptime, now) << " → " << dayandtime(sv.desttime, now) << "   "
                << (mark.isEmpty() ? QStringLiteral("no trackwork") : mark) << "\n";
        }
        int affected = 0, upcoming = 0;
        for (int s = first; s < size; ++s) {
            const int status = d.gettrakstatusfrthisserv(leg, s);
            affected += status == 1;
            upcoming += status == 2;
        }
        out << "    Of the " << size - first << " services ahead in the next " << j.lummaxdaystosrch
            << " days, " << affected << " run during trackwork and " << upcoming
            << " arrive less than a day before it begins.\n";
    }
    return 0;
}

} // namespace quendle
