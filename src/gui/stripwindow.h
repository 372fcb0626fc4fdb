#pragma once
// The strip: one borderless, transparent window, moved by dragging its background.
// It paints what the application model computed and hands events to the input.

#include "input/input.h"
#include "platform/window.h"

#include <QWidget>

class QMenu;

namespace quendle {

class AppModel;
class Menus;
class TrayItem;

// The classic hardware key code of a key, by its position on the keyboard: the X11 and
// Wayland key codes where the platform gives them (the keys that type z and x on a common
// layout, whatever the layout types), else Qt's key. -1 for every other key.
int hardwarekeycode(quint32 nativeScanCode, int qtKey, const QString& platformName);

class MyNSView : public QWidget, public WindowHost {
    Q_OBJECT
public:
    MyNSView();
    ~MyNSView() override;
    void setModel(AppModel* model) { model_ = model; }
    // The input and the menus; without them the strip only paints and moves.
    void setInput(Input* input, Menus* menus);

    // WindowHost: frames in bottom-left-origin points, as the core computes them.
    Rect frame() const override;
    void setFrame(const Rect& r, bool animate) override;
    Rect screenFrame() const override;
    void redisplay() override;
    void activate() override;
    void setStatus(const StatusShown& status) override;
    void hideFromTaskbar() override;
    void quit() override;

    TrayItem* tray() const { return tray_; }
    // The view point (bottom-left origin) of a widget position, truncated.
    QPoint viewpoint(const QPointF& widgetPos) const;
    // The menu shown last (the journey menu's context menu), while it is open.
    QMenu* openmenu() const { return openmenu_; }

protected:
    void paintEvent(QPaintEvent*) override;
    void keyPressEvent(QKeyEvent* e) override;
    void mousePressEvent(QMouseEvent* e) override;
    void mouseDoubleClickEvent(QMouseEvent* e) override;
    void mouseMoveEvent(QMouseEvent* e) override;
    void mouseReleaseEvent(QMouseEvent* e) override;
    void wheelEvent(QWheelEvent* e) override;
    void contextMenuEvent(QContextMenuEvent* e) override;
    void dragEnterEvent(QDragEnterEvent* e) override;
    void dragMoveEvent(QDragMoveEvent* e) override;
    void dropEvent(QDropEvent* e) override;
    void closeEvent(QCloseEvent* e) override;

private:
    void popup(const Menu& menu, MenuKind kind, int x, int y);
    void press(QMouseEvent* e, int clickcount);

    AppModel* model_ = nullptr;
    Input* input_ = nullptr;
    Menus* menus_ = nullptr;
    TrayItem* tray_ = nullptr;
    QMenu* openmenu_ = nullptr;
    QPoint pressGlobal_;
    QPoint dragOffset_;
    bool pressed_ = false;     // the left button is down on the background
    bool dragging_ = false;    // moving the window by hand
    int clicks_ = 1;
};

} // namespace quendle
