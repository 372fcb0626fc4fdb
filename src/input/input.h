#pragma once
// The strip's input: keys, clicks, pointer movement, the scroll wheel and drags, as the
// view's responder receives them, turned into the core's operations. Points are in the
// view's bottom-left-origin points; key codes are the classic hardware numbering (6 the
// z key, 7 the x key, 123 to 126 the arrows), which a front end maps its keys onto.
// Menus are shown by the front end through `popup`.

#include "app/menus.h"

#include <QString>

#include <functional>

namespace quendle {

class AppModel;

namespace keycode {
constexpr int z = 6;
constexpr int x = 7;
constexpr int left = 123;
constexpr int right = 124;
constexpr int down = 125;
constexpr int up = 126;
} // namespace keycode

enum class MenuKind { Journey, Stations };

struct KeyPress {
    QString characters;
    int keycode = -1;   // -1: no hardware key (typed text only)
};

struct MouseDown {
    int x = 0;
    int y = 0;
    bool control = false;   // the context-menu gesture: Control held, or the right button
    int clickcount = 1;
};

class Input {
public:
    Input(AppModel& app, Menus& menus);

    // The front end pops the menu up at the view point (x, y) and runs the chosen item's
    // action; it returns once the menu is closed. For the station menu, row is the row of
    // the journey caption it was opened for.
    std::function<void(const Menu& menu, MenuKind kind, int row, int x, int y)> popup;

    // Responder operations.
    void keyDown(const KeyPress& key);
    void mouseDown(const MouseDown& event);
    void mouseUp(int clickcount);
    void mouseMoved(int x, int y);
    void mouseDragged(int, int) {}
    // dx, dy: the wheel's deltas (positive dy: away from the user).
    void scrollWheel(int x, int y, double dx, double dy);
    // Drag operations are bit masks; 4 is the generic operation.
    static int draggingEntered(int sourceMask) { return (sourceMask & 4) ? 4 : 0; }
    static bool prepareForDragOperation() { return false; }
    static bool performDragOperation() { return false; }
    void concludeDragOperation();
    static bool acceptsFirstResponder() { return true; }
    static bool becomeFirstResponder() { return true; }

    // Operations.
    void scrollup();
    void scrolldown();
    void scrollleft() {}
    void scrollright() {}
    int caniscroll() const;
    void selecttile(int row);
    void doubleclik();
    QString didihit(int x, int y);
    void stepbak() {}
    void mousehelddown() {}
    void mousehelddownaction() {}

    int mymousedownx = -1;
    int mymousedowny = -1;
    int mymousedownontile = -1;

    // The debug keys of the publisher's table stripping and the update texts (the
    // updater's and the publisher's own, unless replaced).
    std::function<void()> striptables;
    std::function<QString()> getlastupdatestr;
    std::function<QString()> getnextupdatestr;

private:
    void debugkey(const QString& c);
    void alert(const QString& text);

    AppModel& app_;
    Menus& menus_;
};

} // namespace quendle
