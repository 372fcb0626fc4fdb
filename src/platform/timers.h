#pragma once
// Timers with movable fire dates. A timer is made once with an interval; its first
// fire date is now + interval, and a repeating timer's next fire date is its last
// fire date + interval. Owners move fire dates with setFireDate. The huge intervals
// some owners use (6e15 or 6e8 seconds) simply mean "not before a fire date is set".

#include "util/date.h"

#include <functional>

namespace quendle {

using TimerId = int;
constexpr TimerId kNoTimer = -1;

class Timers {
public:
    virtual ~Timers() = default;
    virtual TimerId schedule(double intervalSecs, bool repeats, std::function<void()> callback) = 0;
    virtual void setFireDate(TimerId id, Date when) = 0;
    virtual Date fireDate(TimerId id) const = 0;        // Date{} for an invalid timer
    virtual void invalidate(TimerId id) = 0;
    virtual bool isValid(TimerId id) const = 0;
    // After a sleep or a clock change: compare every fire date with the clock again soon.
    virtual void recheck() {}
};

} // namespace quendle
