#include "gui/stripwindow.h"

#include "app/appmodel.h"
#include "gui/menupopup.h"
#include "gui/trayitem.h"
#include "paint/strippainter.h"

#include <QApplication>
#include <QCloseEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMenu>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <QScreen>
#include <QWheelEvent>
#include <QWindow>

#include <cmath>

namespace quendle {

int hardwarekeycode(quint32 scan, int key, const QString& platform)
{
    // X11 and Wayland give the key's place: evdev code + 8.
    const bool positional = platform == QLatin1String("xcb") || platform.startsWith(QLatin1String("wayland"));
    if (positional && scan != 0) {
        switch (scan) {
        case 52:
            return keycode::z;
        case 53:
            return keycode::x;
        case 113:
            return keycode::left;
        case 114:
            return keycode::right;
        case 116:
            return keycode::down;
        case 111:
            return keycode::up;
        default:
            return -1;
        }
    }
    switch (key) {
    case Qt::Key_Z:
        return keycode::z;
    case Qt::Key_X:
        return keycode::x;
    case Qt::Key_Left:
        return keycode::left;
    case Qt::Key_Right:
        return keycode::right;
    case Qt::Key_Down:
        return keycode::down;
    case Qt::Key_Up:
        return keycode::up;
    default:
        return -1;
    }
}

MyNSView::MyNSView()
{
    // A tool window stays out of the taskbar and the window switcher.
    setWindowFlags(Qt::FramelessWindowHint | Qt::Tool | Qt::NoDropShadowWindowHint);
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_NoSystemBackground);
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);   // the view takes the keys while the strip is in front
    setAcceptDrops(true);
    setWindowTitle(QStringLiteral("Quendle"));
}

MyNSView::~MyNSView() = default;

void MyNSView::setInput(Input* input, Menus* menus)
{
    input_ = input;
    menus_ = menus;
    if (input_)
        input_->popup = [this](const Menu& menu, MenuKind kind, int, int x, int y) { popup(menu, kind, x, y); };
    if (tray_)
        tray_->setmenus(menus_);
}

Rect MyNSView::screenFrame() const
{
    const QScreen* s = screen() ? screen() : QGuiApplication::primaryScreen();
    const QRect g = s ? s->geometry() : QRect(0, 0, 1920, 1080);
    return Rect{0, 0, static_cast<double>(g.width()), static_cast<double>(g.height())};
}

Rect MyNSView::frame() const
{
    const QRect g = geometry();
    const double sh = screenFrame().h;
    return Rect{static_cast<double>(g.x()), sh - g.y() - g.height(), static_cast<double>(g.width()),
                static_cast<double>(g.height())};
}

void MyNSView::setFrame(const Rect& r, bool)
{
    const double sh = screenFrame().h;
    setGeometry(static_cast<int>(r.x), static_cast<int>(sh - r.y - r.h), static_cast<int>(r.w),
                static_cast<int>(r.h));
}

void MyNSView::redisplay() { update(); }

void MyNSView::activate()
{
    show();
    raise();
    activateWindow();
}

void MyNSView::setStatus(const StatusShown& status)
{
    if (!tray_) {
        tray_ = new TrayItem(this);
        tray_->setmenus(menus_);
        tray_->clicked = [this] {
            if (menus_)
                menus_->bringfrontaction();
            else if (model_)
                model_->bringtofront();
        };
    }
    tray_->show(status);
}

void MyNSView::hideFromTaskbar()
{
    // The tool-window flag set at construction does this on every Linux desktop.
}

void MyNSView::quit() { QApplication::quit(); }

// The strip is the application's one window: closing it ends the application.
void MyNSView::closeEvent(QCloseEvent* e)
{
    QWidget::closeEvent(e);
    if (e->isAccepted())
        QApplication::quit();
}

void MyNSView::paintEvent(QPaintEvent*)
{
    QPainter p(this);
    if (!model_) {
        p.setCompositionMode(QPainter::CompositionMode_Source);
        p.fillRect(rect(), Qt::transparent);
        return;
    }
    StripPainter(*model_, devicePixelRatioF()).drawRect(p, QSizeF(size()));
}

QPoint MyNSView::viewpoint(const QPointF& pos) const
{
    // Truncated toward zero, as the view's points are.
    return QPoint(static_cast<int>(std::trunc(pos.x())), static_cast<int>(std::trunc(height() - pos.y())));
}

void MyNSView::popup(const Menu& menu, MenuKind kind, int x, int y)
{
    const QPoint global = mapToGlobal(QPoint(x, height() - y));
    if (kind == MenuKind::Stations) {
        StationMenu stations(menu, this);
        stations.exec(global);
        return;
    }
    QMenu m(this);
    fillqmenu(&m, menu);
    openmenu_ = &m;
    m.exec(global);
    openmenu_ = nullptr;
}

void MyNSView::keyPressEvent(QKeyEvent* e)
{
    if (!input_) {
        QWidget::keyPressEvent(e);
        return;
    }
    input_->keyDown(KeyPress{e->text(), hardwarekeycode(e->nativeScanCode(), e->key(), QGuiApplication::platformName())});
}

void MyNSView::press(QMouseEvent* e, int clickcount)
{
    clicks_ = clickcount;
    if (e->button() != Qt::LeftButton)
        return;   // the right button comes as a context-menu event
    const QPoint v = viewpoint(e->position());
    const bool control = e->modifiers() & Qt::ControlModifier;
    pressed_ = !control;
    pressGlobal_ = e->globalPosition().toPoint();
    dragOffset_ = pressGlobal_ - pos();
    if (input_)
        input_->mouseDown(MouseDown{v.x(), v.y(), control, clickcount});
}

void MyNSView::mousePressEvent(QMouseEvent* e) { press(e, 1); }

void MyNSView::mouseDoubleClickEvent(QMouseEvent* e) { press(e, 2); }

void MyNSView::contextMenuEvent(QContextMenuEvent* e)
{
    // The desktop's context-menu gesture (right button, the menu key) is the Control-click.
    if (!input_)
        return;
    const QPoint v = viewpoint(e->pos());
    input_->mouseDown(MouseDown{v.x(), v.y(), true, 1});
}

void MyNSView::mouseMoveEvent(QMouseEvent* e)
{
    const QPoint v = viewpoint(e->position());
    if (pressed_ && (e->buttons() & Qt::LeftButton)) {
        if (dragging_) {
            move(e->globalPosition().toPoint() - dragOffset_);
            return;
        }
        // A press that moves far enough drags the window: through the window manager's
        // own move where the platform has one (the only way on Wayland), else by hand.
        if ((e->globalPosition().toPoint() - pressGlobal_).manhattanLength() >= QApplication::startDragDistance()) {
            if (windowHandle() && windowHandle()->startSystemMove()) {
                pressed_ = false;
            } else {
                dragging_ = true;
                move(e->globalPosition().toPoint() - dragOffset_);
            }
            return;
        }
        if (input_)
            input_->mouseDragged(v.x(), v.y());
        return;
    }
    if (input_ && model_) {
        input_->mouseMoved(v.x(), v.y());
        const Display& d = model_->display();
        if (d.amiinmap(v.x(), v.y()))
            setToolTip(d.mymapinfostr);
    }
}

void MyNSView::mouseReleaseEvent(QMouseEvent* e)
{
    if (dragging_ && model_)
        model_->display().movewindowbackifoffscreen();
    dragging_ = false;
    pressed_ = false;
    if (input_ && e->button() == Qt::LeftButton)
        input_->mouseUp(clicks_);
}

void MyNSView::wheelEvent(QWheelEvent* e)
{
    if (!input_)
        return;
    // Every event is one step, whatever its size.
    QPointF delta = e->angleDelta();
    if (delta.isNull())
        delta = e->pixelDelta();
    const QPoint v = viewpoint(e->position());
    input_->scrollWheel(v.x(), v.y(), delta.x(), delta.y());
    e->accept();
}

// Every drag is welcomed as the generic operation, and no drop is ever taken.
void MyNSView::dragEnterEvent(QDragEnterEvent* e)
{
    const int mask = e->possibleActions() != Qt::IgnoreAction ? 4 : 0;
    if (Input::draggingEntered(mask) != 0)
        e->acceptProposedAction();
    else
        e->ignore();
}

void MyNSView::dragMoveEvent(QDragMoveEvent* e) { e->acceptProposedAction(); }

void MyNSView::dropEvent(QDropEvent* e)
{
    if (!Input::prepareForDragOperation() || !Input::performDragOperation()) {
        e->setDropAction(Qt::IgnoreAction);
        e->ignore();
        return;
    }
    if (input_)
        input_->concludeDragOperation();
}

} // namespace quendle
