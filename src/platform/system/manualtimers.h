#pragma once
// A timer queue that runs only when the test or simulation advances it, on a ManualClock.
//
// advanceTo(target) fires every timer due at or before target in fire-date order (equal
// fire dates in creation order). Before each callback the clock is set to that timer's fire
// date (or left where it is, if the timer was already overdue), so callbacks read the moment
// they were meant for. A one-shot timer is invalid by the time its callback runs; a
// repeating timer's next fire date (fire date + interval) is set before its callback runs,
// so a callback that moves its own timer's fire date wins. Callbacks may create, move and
// invalidate timers; a timer that becomes due within the window still fires in this advance.
// Finally the clock is set to target.
//
// A repeating timer that was overdue when the advance began fires once and then skips to
// the first multiple of its interval after the present moment, as a run-loop timer does
// after a machine slept.
//
// Zero-interval repeating timers (animations) fire again and again at the same moment until
// they stop themselves. Runaway guard: while the clock stands at one instant a timer fires
// at most kMaxFiringsPerInstant times; past that it logs a warning and sits out the rest of
// the advance (other timers go on), staying due for the next one. Timers that keep making
// new timers at one instant end the advance after four times that many callbacks.

#include "platform/system/manualclock.h"
#include "platform/system/timertable.h"

namespace quendle {

class ManualTimers : public TimerTable {
public:
    static constexpr int kMaxFiringsPerInstant = 10000;

    explicit ManualTimers(ManualClock& clock) : TimerTable(clock), clock_(clock) {}

    // Both return the number of callbacks run.
    int advanceTo(Date target);
    int advanceBy(double secs) { return advanceTo(clock_.now().plusSeconds(secs)); }

    ManualClock& clock() { return clock_; }

private:
    ManualClock& clock_;
};

} // namespace quendle
