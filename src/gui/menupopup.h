#pragma once
// The core's menus on the desktop: a plain context menu for the journey and status
// menus, and for the station menu a popup that opens at once however many stations the
// table holds, with the favourites on top and type-ahead search.

#include "app/menus.h"

#include <QFrame>
#include <QMenu>

class QLineEdit;
class QListWidget;
class QListWidgetItem;

namespace quendle {

// Fills `into` with the items (submenus included); an item without an action is shown
// disabled. Choosing an item runs its action.
void fillqmenu(QMenu* into, const Menu& menu);

// The station menu. Each row holds its item's represented object (Qt::UserRole).
class StationMenu : public QFrame {
    Q_OBJECT
public:
    explicit StationMenu(const Menu& menu, QWidget* parent = nullptr);
    // Shows the popup with its top-left corner at `global` (kept on the screen), and
    // returns once it is closed; the chosen item's action has run by then.
    void exec(const QPoint& global);
    // Keeps the rows whose station name has a word beginning with `text` (all for "").
    void filter(const QString& text);
    // Runs the item of a row and closes.
    void choose(QListWidgetItem* row);
    QLineEdit* search() const { return search_; }
    QListWidget* list() const { return list_; }

Q_SIGNALS:
    void closed();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void hideEvent(QHideEvent* e) override;

private:
    void selectfirst();

    Menu menu_;
    QLineEdit* search_;
    QListWidget* list_;
};

} // namespace quendle
