#pragma once
// Timers on the Qt event loop, for the running application.
//
// Every timer keeps a wall-clock fire date read from the Clock. One QTimer waits until the
// earliest fire date, but never longer than kMaxWaitMs, and then compares the fire dates
// with the clock again: a machine that was suspended, or a clock that was changed, is
// noticed within that bound. Fire dates far in the future (the "never" placeholders such as
// now + 6e15 s) therefore never fire and cost one wake-up every kMaxWaitMs.
//
// A repeating timer's next fire date is its fire date + interval, set before its callback
// runs (so a callback that moves it wins); when that is already past, as after a sleep, it
// skips to the first later multiple of the interval instead of firing for each one missed.
// A zero-interval repeating timer fires once per event-loop turn. A timer moved back to a
// passed instant it has already fired for stays quiet (see TimerTable), so an owner that
// re-arms for the moment it just served costs nothing instead of a core.
//
// Callbacks never overlap: if a callback runs a nested event loop (a modal alert), no other
// timer fires until it returns; the model expects one thing at a time.

#include "platform/system/timertable.h"

#include <QTimer>

namespace quendle {

class QtTimers : public TimerTable {
public:
    static constexpr int kMaxWaitMs = 30000;

    explicit QtTimers(const Clock& clock);
    ~QtTimers() override;

    // Compares the fire dates with the clock on the next event-loop turn instead of at the
    // next wake-up; worth calling after a wake from sleep or a clock change.
    void recheck() override;

    // While held (the calls nest), no timer fires: for a wait that keeps the event loop
    // going, such as a fetch that lets the window repaint. What fell due fires after.
    void hold(bool on);

private:
    void changed() override { rearm(); }
    void rearm();
    void dispatch();

    const Clock& clock_;
    QTimer wake_;
    bool dispatching_ = false;
    int held_ = 0;
};

} // namespace quendle
