#pragma once
#include <QString>

namespace quendle {

struct Rect { double x = 0, y = 0, w = 0, h = 0; };

// The strip's window, its screen and the status item, as the core sees them.
// Frames are in the platform's bottom-left-origin points.
class WindowHost {
public:
    virtual ~WindowHost() = default;
    virtual Rect frame() const = 0;
    virtual void setFrame(const Rect& r, bool animate) = 0;
    virtual Rect screenFrame() const = 0;
    virtual void redisplay() = 0;
    virtual void activate() = 0;                 // bring to front and make key
    virtual void setStatus(const QString& title, const QString& iconName) = 0;
    // Keeps the strip out of the taskbar and the window switcher.
    virtual void hideFromTaskbar() {}
    virtual void quit() {}
};

} // namespace quendle
