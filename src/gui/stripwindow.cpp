#include "gui/stripwindow.h"

#include "app/appmodel.h"
#include "util/dates.h"

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
    p.setRenderHint(QPainter::Antialiasing);
    if (!model_)
        return;
    const Journey& j = model_->journey();
    const Timetable& tt = model_->timetable();
    const int rowHeight = 70;
    QFont big(QStringLiteral("Arial"));
    big.setPixelSize(17);
    QFont small = big;
    small.setPixelSize(13);
    for (int leg = 0; leg + 1 < j.myjournstr.size(); ++leg) {
        const QRectF row(4, 4 + leg * rowHeight, width() - 8, rowHeight - 6);
        QPainterPath path;
        path.addRoundedRect(row, 12, 12);
        QColor colour(20, 24, 32, 200);
        const int i = j.getthisviewindex(leg);
        const bool has = leg < static_cast<int>(j.myservsmultid.size()) && i >= 0
            && i < static_cast<int>(j.myservsmultid[leg].size());
        if (has) {
            const Rgba c = tt.linesmute[j.myservsmultid[leg][i].linenum].nscol;
            colour = QColor::fromRgbF(c.r * 0.55, c.g * 0.55, c.b * 0.55, 0.85);
        }
        p.fillPath(path, colour);
        p.setPen(Qt::white);
        p.setFont(big);
        const QString stations = j.myjournstr[leg] + "  →  " + j.myjournstr[leg + 1];
        p.drawText(row.adjusted(14, 6, -14, -rowHeight / 2), Qt::AlignLeft | Qt::AlignVCenter, stations);
        p.setFont(small);
        QString detail = QStringLiteral("no services in the next days");
        if (has) {
            const Service& s = j.myservsmultid[leg][i];
            detail = datetoshrtstr(s.deptime) + " → " + datetoshrtstr(s.desttime) + "    "
                + tt.linesmute[s.linenum].dispname;
            if (leg < j.myzoominremaintimes.size())
                detail += (leg == 0 ? QStringLiteral("    leaves in") : QStringLiteral("    wait"))
                    + j.myzoominremaintimes[leg];
        }
        p.drawText(row.adjusted(14, rowHeight / 2 - 4, -14, -4), Qt::AlignLeft | Qt::AlignVCenter, detail);
    }
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

void MyNSView::mouseReleaseEvent(QMouseEvent*) { dragging_ = false; }

} // namespace quendle
