#pragma once
// The bookkeeping both timer queues share: timers with wall-clock fire dates, kept in
// creation order, and how a due timer fires. What differs is who decides when to look
// at the clock (a test moving it by hand, or the event loop).
//
// A timer never fires twice for one passed instant: when its owner moves it back to a fire
// date that has passed and that it has already fired for (an owner that re-arms a timer for
// the moment it just served, such as a view that keeps showing a service that has left),
// the timer keeps that fire date but stays quiet until it is moved again.

#include "platform/clock.h"
#include "platform/timers.h"

#include <map>

namespace quendle {

class TimerTable : public Timers {
public:
    explicit TimerTable(const Clock& clock) : clock_(clock) {}

    TimerId schedule(double intervalSecs, bool repeats, std::function<void()> callback) override;
    void setFireDate(TimerId id, Date when) override;
    Date fireDate(TimerId id) const override;
    void invalidate(TimerId id) override;
    bool isValid(TimerId id) const override;
    // Whether the timer waits for a fire date (false once it was moved to a spent instant).
    bool isArmed(TimerId id) const;

    int pendingCount() const { return static_cast<int>(timers_.size()); }

protected:
    struct Entry {
        double interval = 0;
        bool repeats = false;
        Date fireDate;
        std::function<void()> callback;
        bool hasFired = false;
        Date firedFor;        // the fire date of the last firing
        bool spent = false;   // moved to an instant it has already fired for
    };
    using Table = std::map<TimerId, Entry>;   // ordered by id, i.e. by creation

    static bool isdue(const Entry& e, Date now) { return !e.spent && e.fireDate <= now; }
    // The earliest fire date of an armed timer; false when none waits.
    bool earliest(Date* when) const;

    // Fires a due timer at `now`: a repeating one moves on first (so a callback that moves
    // its own timer wins), a one-shot one is gone by the time its callback runs.
    void fire(Table::iterator it, Date now);
    // Called after every change of a fire date or of the set of timers.
    virtual void changed() {}

    Table timers_;

private:
    const Clock& clock_;
    TimerId nextId_ = 1;
};

// The fire date after a repeating timer fired at `now` for `fired`: fired + interval, or,
// when that is not after now, the first later multiple of the interval (now itself for a
// zero interval).
Date nextrepeatdate(Date fired, double interval, Date now);

} // namespace quendle
