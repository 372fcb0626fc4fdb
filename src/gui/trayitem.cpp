#include "gui/trayitem.h"

#include "gui/menupopup.h"
#include "paint/statusicon.h"

namespace quendle {

namespace {
// What a menu shows, to tell whether it must be rebuilt.
QString signature(const Menu& menu)
{
    QString s;
    for (const MenuItem& i : menu)
        s += i.title + (i.checked ? "\x01" : "\x02") + (i.action ? "\x03" : "\x04") + (i.separator ? "|" : "")
            + (i.submenu.empty() ? QString() : "[" + signature(i.submenu) + "]") + '\n';
    return s;
}
} // namespace

TrayItem::TrayItem(QObject* parent) : QObject(parent), tray_(new QSystemTrayIcon(this)), menu_(new QMenu)
{
    tray_->setContextMenu(menu_);
    connect(tray_, &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason why) {
        // The context menu has its own gesture; every other activation is a click.
        if (why != QSystemTrayIcon::Context && clicked)
            clicked();
    });
}

TrayItem::~TrayItem() { delete menu_; }

void TrayItem::show(const StatusShown& status)
{
    if (!iconset_ || status.iconName != shown_.iconName || status.badge != shown_.badge)
        tray_->setIcon(statusicon(status.iconName, status.badge));
    if (!iconset_ || status.tooltip != shown_.tooltip)
        tray_->setToolTip(status.tooltip);
    shown_ = status;
    iconset_ = true;
    refreshmenu();
    if (!tray_->isVisible())
        tray_->show();
}

void TrayItem::refreshmenu()
{
    if (!menus_)
        return;
    const Menu m = menus_->statusmenu();
    const QString sig = signature(m);
    if (sig == menusignature_)
        return;
    menusignature_ = sig;
    const auto submenus = menu_->findChildren<QMenu*>(Qt::FindDirectChildrenOnly);
    menu_->clear();
    qDeleteAll(submenus);
    fillqmenu(menu_, m);
}

} // namespace quendle
