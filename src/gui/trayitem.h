#pragma once
// The status item on a Linux desktop: a tray icon (the desktop's StatusNotifierItem host
// where one runs, else the XEmbed tray), showing the status picture with the minutes
// left drawn in, the title first in its tooltip, and the status menu.

#include "app/menus.h"
#include "platform/window.h"

#include <QMenu>
#include <QObject>
#include <QSystemTrayIcon>

#include <functional>

namespace quendle {

class TrayItem : public QObject {
    Q_OBJECT
public:
    explicit TrayItem(QObject* parent = nullptr);
    ~TrayItem() override;
    void setmenus(Menus* menus) { menus_ = menus; }
    void show(const StatusShown& status);
    // Rebuilds the status menu when its items changed.
    void refreshmenu();
    QSystemTrayIcon* icon() const { return tray_; }
    QMenu* menu() const { return menu_; }
    const StatusShown& shown() const { return shown_; }
    // A click on the item (the core's bringfrontaction).
    std::function<void()> clicked;

private:
    QSystemTrayIcon* tray_;
    QMenu* menu_;
    Menus* menus_ = nullptr;
    StatusShown shown_;
    bool iconset_ = false;
    QString menusignature_;
};

} // namespace quendle
