#include "gui/menupopup.h"

#include <QEventLoop>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QListWidget>
#include <QScreen>
#include <QVBoxLayout>

namespace quendle {

void fillqmenu(QMenu* into, const Menu& menu)
{
    for (const MenuItem& item : menu) {
        if (item.separator) {
            into->addSeparator();
            continue;
        }
        if (!item.submenu.empty()) {
            QMenu* sub = into->addMenu(item.title);
            fillqmenu(sub, item.submenu);
            continue;
        }
        QAction* a = into->addAction(item.title);
        a->setData(item.representedObject);
        a->setCheckable(item.checkable);
        a->setChecked(item.checked);
        a->setEnabled(static_cast<bool>(item.action));
        if (item.action) {
            const std::function<void()> run = item.action;
            QObject::connect(a, &QAction::triggered, a, [run] { run(); });
        }
    }
}

namespace {
constexpr int kSpacerRole = Qt::UserRole + 1;
constexpr int kIndexRole = Qt::UserRole + 2;

bool wordstarts(const QString& name, const QString& text)
{
    if (name.startsWith(text, Qt::CaseInsensitive))
        return true;
    for (qsizetype i = name.indexOf(' '); i >= 0; i = name.indexOf(' ', i + 1))
        if (name.mid(i + 1).startsWith(text, Qt::CaseInsensitive))
            return true;
    return false;
}
} // namespace

StationMenu::StationMenu(const Menu& menu, QWidget* parent)
    : QFrame(parent, Qt::Popup), menu_(menu), search_(new QLineEdit(this)), list_(new QListWidget(this))
{
    setAttribute(Qt::WA_DeleteOnClose, false);
    setFrameShape(QFrame::StyledPanel);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(3, 3, 3, 3);
    layout->setSpacing(3);
    search_->setPlaceholderText(QStringLiteral("Type to find a station"));
    search_->setClearButtonEnabled(true);
    layout->addWidget(search_);
    layout->addWidget(list_);
    list_->setUniformItemSizes(true);
    list_->setSelectionMode(QAbstractItemView::SingleSelection);
    list_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    list_->setMouseTracking(true);
    for (int i = 0; i < static_cast<int>(menu_.size()); ++i) {
        const MenuItem& item = menu_[i];
        auto* row = new QListWidgetItem(item.title, list_);
        row->setData(Qt::UserRole, item.representedObject);
        row->setData(kIndexRole, i);
        // The spacer between the favourites and the stations is not a choice.
        if (item.representedObject.isEmpty()) {
            row->setData(kSpacerRole, true);
            row->setFlags(Qt::NoItemFlags);
            row->setSizeHint(QSize(10, 8));
        }
    }
    const int rowh = list_->sizeHintForRow(0) > 0 ? list_->sizeHintForRow(0) : 18;
    list_->setMinimumWidth(qMax(220, list_->sizeHintForColumn(0) + 30));
    list_->setFixedHeight(rowh * qMin(20, qMax(3, list_->count())) + 6);
    connect(search_, &QLineEdit::textChanged, this, &StationMenu::filter);
    connect(list_, &QListWidget::itemClicked, this, &StationMenu::choose);
    connect(list_, &QListWidget::itemActivated, this, &StationMenu::choose);
    connect(list_, &QListWidget::itemEntered, list_, [this](QListWidgetItem* row) { list_->setCurrentItem(row); });
    search_->installEventFilter(this);
    selectfirst();
}

void StationMenu::filter(const QString& text)
{
    const QString t = text.trimmed();
    list_->setUpdatesEnabled(false);
    for (int i = 0; i < list_->count(); ++i) {
        QListWidgetItem* row = list_->item(i);
        const bool spacer = row->data(kSpacerRole).toBool();
        row->setHidden(t.isEmpty() ? false : spacer || !wordstarts(row->text(), t));
    }
    list_->setUpdatesEnabled(true);
    selectfirst();
}

void StationMenu::selectfirst()
{
    for (int i = 0; i < list_->count(); ++i) {
        QListWidgetItem* row = list_->item(i);
        if (!row->isHidden() && (row->flags() & Qt::ItemIsEnabled)) {
            list_->setCurrentItem(row);
            list_->scrollToItem(row);
            return;
        }
    }
    list_->setCurrentItem(nullptr);
}

void StationMenu::choose(QListWidgetItem* row)
{
    if (!row || !(row->flags() & Qt::ItemIsEnabled))
        return;
    const int i = row->data(kIndexRole).toInt();
    hide();
    if (i >= 0 && i < static_cast<int>(menu_.size()) && menu_[i].action)
        menu_[i].action();
}

// Typing goes to the search field; the arrows, page keys and Return work the list.
bool StationMenu::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == search_ && event->type() == QEvent::KeyPress) {
        auto* k = static_cast<QKeyEvent*>(event);
        switch (k->key()) {
        case Qt::Key_Up:
        case Qt::Key_Down:
        case Qt::Key_PageUp:
        case Qt::Key_PageDown: {
            QKeyEvent copy(k->type(), k->key(), k->modifiers(), k->text());
            QCoreApplication::sendEvent(list_, &copy);
            return true;
        }
        case Qt::Key_Return:
        case Qt::Key_Enter:
            choose(list_->currentItem());
            return true;
        case Qt::Key_Escape:
            hide();
            return true;
        default:
            break;
        }
    }
    return QFrame::eventFilter(watched, event);
}

void StationMenu::exec(const QPoint& global)
{
    adjustSize();
    QPoint at = global;
    if (const QScreen* s = QGuiApplication::screenAt(global)) {
        const QRect g = s->availableGeometry();
        at.setX(qBound(g.left(), at.x(), qMax(g.left(), g.right() - width())));
        at.setY(qBound(g.top(), at.y(), qMax(g.top(), g.bottom() - height())));
    }
    move(at);
    show();
    search_->setFocus(Qt::PopupFocusReason);
    if (!isVisible())
        return;
    QEventLoop loop;
    connect(this, &StationMenu::closed, &loop, &QEventLoop::quit);
    loop.exec();
}

void StationMenu::hideEvent(QHideEvent* e)
{
    QFrame::hideEvent(e);
    Q_EMIT closed();
}

} // namespace quendle
