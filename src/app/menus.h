#pragma once
// The menus as data: the journey menu (the strip's context menu), the station menu of a
// row of the journey caption, the tables and alarm items, and the status item's menu.
// A front end shows them as it can; choosing an item runs its action, which calls the
// core's operations. Building a menu changes nothing.

#include <QString>

#include <functional>
#include <vector>

namespace quendle {

class AppModel;

struct MenuItem {
    MenuItem() = default;
    explicit MenuItem(const QString& t) : title(t) {}
    QString title;
    QString representedObject;
    std::function<void()> action;   // none: the item only informs (shown disabled)
    std::vector<MenuItem> submenu;
    bool separator = false;
    bool checkable = false;
    bool checked = false;
};
using Menu = std::vector<MenuItem>;

class Menus {
public:
    explicit Menus(AppModel& app);

    Menu dojourneymenu();
    // Favourites first, the "  " spacer, then every station in table order.
    Menu dostnsmenu(int row);
    MenuItem dotablesmenu();
    MenuItem doalarmmenu();
    // The alarm item and, without an alarm, the ways to set one: ten minutes before, or on
    // the strip's alarm panel, whose minutes the wheel and the step keys change.
    Menu alarmitems();
    void alarmpanelaction();
    Menu dolumsmenu();
    // The status item's menu: the strip brought forward, then what the journey menu offers.
    Menu statusmenu();
    // The items after the journey menu's own: alarm, map, trackwork, stops, recalculation, quit.
    Menu commonitems();

    // Actions.
    void myselec(const QString& representedObject);
    void myselecb(const QString& title);
    void myexetaction();
    void mycleanupaction();
    void toggletableaction() {}
    void quitaction();
    void bringfrontaction();
    void togglemapaction();
    void toggletrakworkaction();
    void donateaction();
    void myselectableerror();
    void myalarmaction();
    void showcommsscreen();
    void showprefs() {}

    // The developer's diagnostic mode: the debug switch.
    int getmydebug() const;
    // The "donateurl" setting, else Debian's donations page (Quendle is built from Debian's packages).
    QString donateurl() const;
    static constexpr const char* kDonateUrl = "https://www.debian.org/donations";

private:
    MenuItem stationitem(const QString& name, int row);

    AppModel& app_;
};

} // namespace quendle
