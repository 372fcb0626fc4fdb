#pragma once

namespace quendle {

// Upward effects: a rule of a lower module that must make something above it
// happen (redraw, save, recalculate) calls these. The application model implements them.
class Host {
public:
    virtual ~Host() = default;
    virtual void refreshdisplay() = 0;
    virtual void redisplay() = 0;
    virtual void writeprefs() = 0;
    virtual void calctripoptimizelater() = 0;
    virtual void calccurrentdisplay() = 0;
    virtual void drawnewmappoints() = 0;
    virtual void addminstoalarm(int minutes) = 0;
    // A fetch from the network succeeded: remember when, save, recalculate.
    virtual void writesuccupdate() {}
};

} // namespace quendle
