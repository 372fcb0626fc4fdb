#include "gui/stripwindow.h"

#include "app/appmodel.h"
#include "paint/strippainter.h"

#include <QApplication>
#include <QGuiApplication>
#include <QIcon>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QScreen>
#include <QWindow>

namespace quendle {

MyNSView::MyNSView()
{
    // A tool window stays out of the taskbar and the window switcher.
    setWindowFlags(Qt::FramelessWindowHint | Qt::Tool | Qt::NoDropShadowWindowHint);
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_NoSystemBackground);
    setMouseTracking(true);
    setWindowTitle(QStringLiteral("Quendle"));

    tray_ = new QSystemTrayIcon(QIcon(QStringLiteral(":/art/sydtrainsiconn.svg")), this);
    tray_->setToolTip(QStringLiteral("Quendle"));
    connect(tray_, &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason) {
        if (model_)
            model_->bringtofront();
    });
    tray_->show();
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

void MyNSView::setStatus(const QString& title, const QString& iconName)
{
    // Tray items on Linux show no text beside the icon: the title becomes the tooltip.
    tray_->setToolTip(title);
    const QIcon icon(QStringLiteral(":/art/%1.svg").arg(iconName));
    if (!icon.isNull() && !icon.availableSizes().isEmpty())
        tray_->setIcon(icon);
}

void MyNSView::hideFromTaskbar()
{
    // The tool-window flag set at construction does this on every Linux desktop.
}

void MyNSView::quit() { QApplication::quit(); }

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

void MyNSView::mousePressEvent(QMouseEvent* e)
{
    if (e->button() != Qt::LeftButton)
        return;
    // Let the window manager move the window (the only way on Wayland); move it by
    // hand where the platform cannot.
    if (windowHandle() && windowHandle()->startSystemMove())
        return;
    dragging_ = true;
    dragOffset_ = e->globalPosition().toPoint() - pos();
}

void MyNSView::mouseMoveEvent(QMouseEvent* e)
{
    if (dragging_)
        move(e->globalPosition().toPoint() - dragOffset_);
}

void MyNSView::mouseReleaseEvent(QMouseEvent*)
{
    if (dragging_ && model_)
        model_->display().movewindowbackifoffscreen();
    dragging_ = false;
}

} // namespace quendle
