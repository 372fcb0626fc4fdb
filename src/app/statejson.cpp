#include "app/statejson.h"

#include "app/appmodel.h"
#include "util/dates.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace quendle {

namespace {

QJsonArray strings(const QStringList& list) { return QJsonArray::fromStringList(list); }

template <typename T>
QJsonArray numbers(const std::vector<T>& list)
{
    QJsonArray a;
    for (const T& v : list)
        a.append(static_cast<double>(v));
    return a;
}

QJsonArray dates(const std::vector<Date>& list)
{
    QJsonArray a;
    for (Date d : list)
        a.append(isolocal(d));
    return a;
}

QJsonObject service(const Service& s)
{
    return QJsonObject{
        {"linenum", s.linenum},
        {"depint", s.depint},
        {"destint", s.destint},
        {"deptime", isolocal(s.deptime)},
        {"desttime", isolocal(s.desttime)},
        {"depcrossedmid", s.depcrossedmid},
        {"destcrossedmid", s.destcrossedmid},
        {"stopnums", numbers(s.stopnums())},
        {"stoptimes", dates(s.stoptimes())},
        {"stopsh", strings(s.stopsh)},
        {"stopsv", strings(s.stopsv)},
        {"debugstops", s.debugstops()},
    };
}

QJsonArray favourites(const std::vector<Favourite>& list)
{
    QJsonArray a;
    for (const Favourite& f : list)
        a.append(QJsonObject{{"name", f.name}, {"score", f.score}});
    return a;
}

void adduserstate(const UserState& u, const ViewState& v, QJsonObject& o)
{
    o["myfavs"] = favourites(u.myfavs);
    o["myfavstoshow"] = favourites(u.myfavstoshow);
    QJsonArray bookmarks;
    for (const Bookmark& b : u.mybookmarks)
        bookmarks.append(QJsonObject{{"markheader", b.markheader}, {"substns", strings(b.substns)}, {"score", b.score}});
    o["mybookmarks"] = bookmarks;
    QJsonArray alarms;
    for (const Alarm& a : u.myalarms)
        alarms.append(QJsonObject{{"date", isolocal(a.date)}, {"dep", a.dep}, {"dest", a.dest},
                                  {"advancemins", a.advancemins}});
    o["myalarms"] = alarms;
    o["alarmdefaultmins"] = u.alarmdefaultmins;
    o["inalarmscreen"] = v.inalarmscreen;
    o["ivereadprefs"] = u.ivereadprefs;
}

// The strip's geometry and map, as the display computed them for the window it has.
void adddisplay(const Display& d, const ViewState& v, QJsonObject& o)
{
    o["zoomed"] = v.zoomed;
    o["showinmap"] = v.showinmap;
    o["userscale"] = static_cast<double>(d.userscale);
    QJsonArray squares;
    for (const SelectionSquare& sq : d.selectionsquares)
        squares.append(QJsonObject{{"rectbegx", sq.rectbegx}, {"retbegy", sq.retbegy}, {"xwidth", sq.xwidth},
                                   {"ywidth", sq.ywidth}});
    o["selectionsquares"] = squares;
    o["gpsview"] = QJsonArray{static_cast<double>(d.gpsview.west), static_cast<double>(d.gpsview.east),
                              static_cast<double>(d.gpsview.north), static_cast<double>(d.gpsview.south)};
    o["numtopaint"] = d.numtopaint;
    o["stopsonthistrip"] = d.stopsonthistrip;
    if (const WindowHost* w = d.window()) {
        const Rect f = w->frame();
        o["windowframe"] = QJsonArray{f.x, f.y, f.w, f.h};
    }
}

QJsonObject trakwrecord(const TrakwRecord& r)
{
    QJsonArray ranges;
    for (const StationRange& sr : r.stnsoutfix) {
        QJsonArray positions;
        for (const LinePositions& p : sr.begendonlinenums)
            positions.append(QJsonObject{{"begstnonline", p.begstnonline},
                                         {"endstnonline", p.endstnonline},
                                         {"onthislinenum", p.onthislinenum}});
        ranges.append(QJsonObject{{"trakbegstr", sr.trakbegstr}, {"trakendstr", sr.trakendstr},
                                  {"trakbegint", sr.trakbegint}, {"trakendint", sr.trakendint},
                                  {"begendonlinenums", positions}});
    }
    return QJsonObject{
        {"line", r.line},
        {"linenum", r.linenum},
        {"linenums", numbers(r.linenums)},
        {"trakbegin", isolocal(r.trakbegin)},
        {"trakend", isolocal(r.trakend)},
        {"stnsout", strings(r.stnsout)},
        {"gotstnsoutinfo", r.gotstnsoutinfo},
        {"stnsoutfix", ranges},
        {"stnsoutstr", r.stnsoutstr},
        {"remain", r.remain},
        {"fixdispbeg", r.fixdispbeg},
        {"fixdispend", r.fixdispend},
        {"trakbegtwenfrhr", r.trakbegtwenfrhr},
        {"until relativedatestr", r.untilrelativedatestr},
        {"origline", r.origline},
        {"originfostr", r.originfostr},
    };
}

QJsonArray trakwrecords(const std::vector<TrakwRecord>& list)
{
    QJsonArray a;
    for (const TrakwRecord& r : list)
        a.append(trakwrecord(r));
    return a;
}

} // namespace

QJsonObject statejson(const AppModel& app)
{
    const Timetable& tt = app.timetable();
    const Journey& j = app.journey();
    QJsonObject o;
    o["now"] = isolocal(app.now());

    QJsonArray tables;
    for (const TableRecord& t : tt.mytables)
        tables.append(QJsonObject{{"name", t.name}, {"displayname", t.displayname}, {"datestr", t.datestr},
                                  {"datefile", t.datefile}, {"tablepath", t.tablepath}, {"enabled", t.enabled}});
    o["mytables"] = tables;

    QJsonArray lines;
    for (const LineRecord& l : tt.linesmute)
        lines.append(QJsonObject{{"name", l.name}, {"dispname", l.dispname}, {"hexcol", l.hexcol},
                                 {"stns", strings(l.stns)}, {"stnints", numbers(l.stnints)},
                                 {"network", l.network}});
    o["linesmute"] = lines;

    QJsonArray stations;
    for (const StationRecord& s : tt.stnsmute)
        stations.append(QJsonObject{{"name", s.name}, {"hloc", s.hloc}, {"vloc", s.vloc}});
    o["stnsmute"] = stations;

    o["myjournstr"] = strings(j.myjournstr);

    QJsonArray matches;
    for (const auto& leg : j.mylinematches) {
        QJsonArray m;
        for (const LineMatch& lm : leg)
            m.append(QJsonObject{{"linenum", lm.linenum}, {"dispname", lm.dispname},
                                 {"matchlinename", lm.matchlinename}, {"depint", lm.depint},
                                 {"destint", lm.destint}});
        matches.append(m);
    }
    o["mylinematches"] = matches;

    QJsonArray services;
    for (const auto& leg : j.myservsmultid) {
        QJsonArray l;
        for (const Service& s : leg)
            l.append(service(s));
        services.append(l);
    }
    o["myservsmultid"] = services;

    QJsonArray chains;
    for (const Chain& c : j.connectingservs)
        chains.append(numbers(c));
    o["connectingservs"] = chains;

    QJsonArray travel;
    for (const TravelTime& t : j.mytraveltimes)
        travel.append(QJsonObject{{"traelminint", t.traelminint}, {"waitminint", t.waitminint},
                                  {"travelstr", t.travelstr}, {"waitminstr", t.waitminstr}});
    o["mytraveltimes"] = travel;
    o["minzztraveltime"] = j.minzztraveltime;
    o["maxzztraveltime"] = j.maxzztraveltime;
    o["myindexes"] = numbers(j.myindexes);
    o["myactualindex"] = j.myactualindex;
    o["needleontherecord"] = j.needleontherecord;
    o["remstr"] = j.remstr;
    o["myremaintimes"] = strings(j.myremaintimes);
    o["myzoominremaintimes"] = strings(j.myzoominremaintimes);
    adduserstate(app.userstate(), app.view(), o);
    adddisplay(app.display(), app.view(), o);

    const Disruptions& d = app.disruptions();
    o["trakw"] = trakwrecords(d.trakw);
    o["relevanttrakinfo"] = trakwrecords(d.relevanttrakinfo);
    QJsonArray groups;
    for (const TrakPeriodGroup& g : d.relevanttrakinfobydatefix)
        groups.append(QJsonObject{{"reltrakinfonums", numbers(g.reltrakinfonums)}});
    o["relevanttrakinfobydatefix"] = groups;
    QJsonArray affected;
    for (const auto& leg : d.servsaffectedbytrakwmultid) {
        QJsonArray l;
        for (const auto& serv : leg)
            l.append(numbers(serv));
        affected.append(l);
    }
    o["servsaffectedbytrakwmultid"] = affected;
    QJsonArray interruptions;
    for (const InterruptionRecord& r : d.serviceinterrups)
        interruptions.append(QJsonObject{{"stnnumorig", r.stnnumorig}, {"interupstr", r.interupstr},
                                         {"lineaffected", numbers(r.lineaffected)}});
    o["serviceinterrups"] = interruptions;
    o["mytrakicon"] = d.mytrakicon;

    const Updater& up = app.updater();
    QJsonArray updated;
    for (Date when : app.mylastupdateray)
        updated.append(isolocal(when));
    o["mylastupdateray"] = updated;
    o["runupdatesincelaunch"] = app.runupdatesincelaunch;
    o["checkforupdates"] = app.checkforupdates;
    o["nextupdate"] = isolocal(up.getnextupdatetime());
    o["updateurl"] = up.getupdateurl();
    o["tablesurl"] = up.gettablesurl();
    return o;
}

QByteArray statejsontext(const QJsonObject& state)
{
    QJsonObject rest = state;
    const QJsonValue now = rest.take(QStringLiteral("now"));
    const QByteArray body = QJsonDocument(rest).toJson(QJsonDocument::Indented);   // "{\n...}\n"
    if (now.isUndefined())
        return body;
    QByteArray nowText = QJsonDocument(QJsonArray{now}).toJson(QJsonDocument::Compact);
    nowText = nowText.mid(1, nowText.size() - 2);   // the value without its brackets
    const QByteArray first = "{\n    \"now\": " + nowText;
    if (rest.isEmpty())
        return first + "\n}\n";
    return first + ",\n" + body.mid(2);
}

} // namespace quendle
