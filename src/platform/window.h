#pragma once
#include <QString>

namespace quendle {

struct Rect { double x = 0, y = 0, w = 0, h = 0; };

// What the status item shows. A menu bar shows the title beside the icon; a Linux tray
// shows no text, so it draws the badge (the minutes left) into the icon and puts the
// title first in the tooltip.
struct StatusShown {
    QString title;
    QString iconName;   // a picture of the status icon table
    QString badge;      // "7", "42", "3h", "2d"; empty when no service is shown
    QString tooltip;
    QString cls;        // "normal", "trackwork", "trackwork-upcoming" or "alarm"
    friend bool operator==(const StatusShown&, const StatusShown&) = default;
};

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
    virtual void setStatus(const StatusShown& status) = 0;
    // Keeps the strip out of the taskbar and the window switcher.
    virtual void hideFromTaskbar() {}
    virtual void quit() {}
};

} // namespace quendle
