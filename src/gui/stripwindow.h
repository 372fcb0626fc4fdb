#pragma once
// The strip: one borderless, transparent window, moved by dragging its background.
// It paints what the application model computed and hands events to it.

#include "platform/window.h"

#include <QSystemTrayIcon>
#include <QWidget>

namespace quendle {

class AppModel;

class MyNSView : public QWidget, public WindowHost {
    Q_OBJECT
public:
    MyNSView();
    void setModel(AppModel* model) { model_ = model; }

    // WindowHost: frames in bottom-left-origin points, as the core computes them.
    Rect frame() const override;
    void setFrame(const Rect& r, bool animate) override;
    Rect screenFrame() const override;
    void redisplay() override;
    void activate() override;
    void setStatus(const QString& title, const QString& iconName) override;
    void hideFromTaskbar() override;
    void quit() override;

protected:
    void paintEvent(QPaintEvent*) override;
    void mousePressEvent(QMouseEvent* e) override;
    void mouseMoveEvent(QMouseEvent* e) override;
    void mouseReleaseEvent(QMouseEvent* e) override;

private:
    AppModel* model_ = nullptr;
    QSystemTrayIcon* tray_ = nullptr;
    QPoint dragOffset_;
    bool dragging_ = false;
};

} // namespace quendle
