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
// A zero-interval repeating timer fires once per event-loop turn.
//
// Callbacks never overlap: if a callback runs a nested event loop (a modal alert), no other
// timer fires until it returns; the model expects one thing at a time.

#include "platform/clock.h"
#include "platform/timers.h"

#include <QTimer>

#include <map>

namespace quendle {

class QtTimers : public Timers {
public:
    static constexpr int kMaxWaitMs = 30000;

    explicit QtTimers(const Clock& clock);
    ~QtTimers() override;

    TimerId schedule(double intervalSecs, bool repeats, std::function<void()> callback) override;
    void setFireDate(TimerId id, Date when) override;
    Date fireDate(TimerId id) const override;
    void invalidate(TimerId id) override;
    bool isValid(TimerId id) const override;

    int pendingCount() const { return static_cast<int>(timers_.size()); }
    // Compares the fire dates with the clock on the next event-loop turn instead of at the
    // next wake-up; worth calling after a wake from sleep or a clock change.
    void recheck() override;

private:
    struct Entry {
        double interval = 0;
        bool repeats = false;
        Date fireDate;
        std::function<void()> callback;
    };

    void rearm();
    void dispatch();

    const Clock& clock_;
    std::map<TimerId, Entry> timers_;
    TimerId nextId_ = 1;
    QTimer wake_;
    bool dispatching_ = false;
};

} // namespace quendle
