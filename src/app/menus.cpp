#include "app/menus.h"

#include "app/appmodel.h"
#include "util/text.h"

namespace quendle {

Menus::Menus(AppModel& app) : app_(app) {}

int Menus::getmydebug() const { return app_.lumdebug == 1 ? 1 : 0; }

MenuItem Menus::stationitem(const QString& name, int row)
{
    MenuItem item;
    item.title = name;
    item.representedObject = name + '#' + QString::number(row);
    const QString ro = item.representedObject;
    item.action = [this, ro] { myselec(ro); };
    return item;
}

Menu Menus::dojourneymenu()
{
    Menu m;
    if (getmydebug()) {
        const QStringList& journey = app_.journey().myjournstr;
        for (int i = 0; i <= journey.size(); ++i) {
            MenuItem item;
            item.title = i < journey.size() ? journey[i] : QStringLiteral("then");
            item.submenu = dostnsmenu(i);
            m.push_back(std::move(item));
        }
        for (int t = 0; t < static_cast<int>(app_.timetable().mytables.size()); ++t)
            m.push_back(MenuItem{app_.timetable().gettabledateandname(t)});
    }
    if (app_.amizorb()) {
        MenuItem push{QStringLiteral("pushappupdate")};
        push.action = [this] { app_.publisher().pushappupdate(); };
        m.push_back(std::move(push));
    }
    MenuItem donate{QStringLiteral("Donate")};
    donate.action = [this] { donateaction(); };
    m.push_back(std::move(donate));
    m.push_back(dotablesmenu());
    for (MenuItem& item : commonitems())
        m.push_back(std::move(item));
    return m;
}

Menu Menus::commonitems()
{
    Menu m;
    MenuItem separator;
    separator.separator = true;
    m.push_back(separator);
    for (MenuItem& item : alarmitems())
        m.push_back(std::move(item));
    MenuItem map{QStringLiteral("Map Beside the Overview")};
    map.checkable = true;
    map.checked = app_.view().showinmap == 1;
    map.action = [this] { togglemapaction(); };
    m.push_back(std::move(map));
    MenuItem trak{QStringLiteral("Trackwork Panel")};
    trak.checkable = true;
    trak.checked = app_.view().mytwview != 0;
    trak.action = [this] { toggletrakworkaction(); };
    m.push_back(std::move(trak));
    MenuItem stops{QStringLiteral("Stops of This Service…")};
    stops.action = [this] { myselectableerror(); };
    m.push_back(std::move(stops));
    MenuItem cleanup{QStringLiteral("Recalculate the Journey")};
    cleanup.action = [this] { mycleanupaction(); };
    m.push_back(std::move(cleanup));
    m.push_back(separator);
    MenuItem quit{QStringLiteral("Quit Quendle")};
    quit.action = [this] { quitaction(); };
    m.push_back(std::move(quit));
    return m;
}

Menu Menus::dostnsmenu(int row)
{
    const UserState& u = app_.userstate();
    const auto& stations = app_.timetable().stnsmute;
    Menu m;
    m.reserve(u.myfavstoshow.size() + 1 + stations.size());
    for (const Favourite& f : u.myfavstoshow)
        m.push_back(stationitem(f.name, row));
    MenuItem spacer{QStringLiteral("  ")};
    spacer.action = [] {};
    m.push_back(std::move(spacer));
    for (const StationRecord& s : stations)
        m.push_back(stationitem(s.name, row));
    return m;
}

MenuItem Menus::dotablesmenu()
{
    MenuItem search{QStringLiteral("Search")};
    for (int t = 0; t < static_cast<int>(app_.timetable().mytables.size()); ++t)
        search.submenu.push_back(MenuItem{app_.timetable().gettabledateandname(t)});
    return search;
}

Menu Menus::alarmitems()
{
    UserState& u = app_.userstate();
    Menu m;
    // A journey of one station has no service to set an alarm for.
    if (!u.doigotalarm() && !u.caniaddalarm())
        return m;
    m.push_back(doalarmmenu());
    if (u.doigotalarm())
        return m;
    // The minutes dialog only chooses the minutes; these two set the alarm.
    MenuItem quick{QStringLiteral("Alarm 10 min Before This Service")};
    quick.representedObject = QStringLiteral("alarm");
    quick.action = [this] { myselec(QStringLiteral("alarm")); };
    m.push_back(std::move(quick));
    if (app_.view().inalarmscreen == 1) {
        MenuItem set{QStringLiteral("Set Alarm ") + QString::number(u.alarmdefaultmins)
                     + QStringLiteral(" min Before")};
        set.action = [this] { alarmpanelaction(); };
        m.push_back(std::move(set));
        MenuItem close{QStringLiteral("Close the Alarm Panel")};
        close.action = [this] {
            app_.userstate().hidealarmscreen();
            app_.refreshdisplay();
        };
        m.push_back(std::move(close));
    } else {
        MenuItem panel{QStringLiteral("Alarm Panel on the Strip…")};
        panel.action = [this] { alarmpanelaction(); };
        m.push_back(std::move(panel));
    }
    return m;
}

void Menus::alarmpanelaction()
{
    UserState& u = app_.userstate();
    const bool opening = app_.view().inalarmscreen != 1;
    u.showalarmscreenol();
    // The panel needs the overview's height; leaving it sets the alarm and zooms back in.
    if (opening && app_.view().inalarmscreen == 1)
        app_.view().zoomed = 0;
    else if (!opening)
        app_.zoominfunc();
    app_.refreshdisplay();
}

MenuItem Menus::doalarmmenu()
{
    MenuItem item{app_.userstate().doigotalarm() ? QStringLiteral("Remove Alarm") : QStringLiteral("Add Alarm")};
    item.action = [this] { myalarmaction(); };
    return item;
}

Menu Menus::dolumsmenu()
{
    MenuItem top{QStringLiteral("Contextual Menu")};
    top.submenu = {MenuItem{QStringLiteral("Beep")}, MenuItem{QStringLiteral("Honk")}};
    return {top};
}

Menu Menus::statusmenu()
{
    Menu m;
    MenuItem front{QStringLiteral("Show Quendle")};
    front.action = [this] { bringfrontaction(); };
    m.push_back(std::move(front));
    MenuItem separator;
    separator.separator = true;
    m.push_back(separator);
    for (MenuItem& item : dojourneymenu())
        m.push_back(std::move(item));
    return m;
}

void Menus::myselec(const QString& representedObject)
{
    app_.userstate().myselec(representedObject);
    // The status item follows at once rather than at the next minute.
    app_.refreshdisplay();
}

void Menus::myselecb(const QString& title)
{
    if (title.contains(QStringLiteral("larm"))) {
        app_.userstate().addalarm(10);
        return;
    }
    const QStringList parts = title.split('@');
    if (parts.size() >= 2)
        app_.journey().movetothisinex(intvalue(parts[1]));
}

void Menus::myexetaction()
{
    if (app_.platform().window)
        app_.platform().window->quit();
}

void Menus::mycleanupaction()
{
    app_.garbagecleanup();
    app_.refreshdisplay();
}

void Menus::quitaction() { app_.quitapp(); }

void Menus::bringfrontaction() { app_.bringtofront(); }

void Menus::togglemapaction() { app_.display().togglemapview(); }

void Menus::toggletrakworkaction() { app_.display().toggletrakworkview(); }

QString Menus::donateurl() const
{
    QString url;
    if (const DefaultsStore* d = app_.platform().defaults)
        url = d->stringForKey(QStringLiteral("donateurl")).trimmed();
    return url.isEmpty() ? QString::fromLatin1(kDonateUrl) : url;
}

void Menus::donateaction()
{
    if (app_.platform().browser)
        app_.platform().browser->openUrl(donateurl());
}

void Menus::myselectableerror()
{
    if (app_.platform().alerts)
        app_.platform().alerts->alert(app_.display().getstopsstr(), QString(), {QStringLiteral("OK")});
}

void Menus::myalarmaction()
{
    app_.userstate().myalarmaction();
    // A removed alarm must not come back at the next start.
    app_.writeprefs();
    app_.refreshdisplay();
}

void Menus::showcommsscreen()
{
    // The composed text is not kept: only the redraw remains.
    const QString composed = QStringLiteral("zbzbzbzbzbzbzb") + app_.display().updatestr;
    Q_UNUSED(composed);
    app_.redisplay();
}

} // namespace quendle
