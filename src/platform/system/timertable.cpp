#include "platform/system/timertable.h"

#include <cmath>

namespace quendle {

Date nextrepeatdate(Date fired, double interval, Date now)
{
    if (!(interval > 0))
        return now;
    const Date next = fired.plusSeconds(interval);
    if (next > now)
        return next;
    const double steps = std::floor((now.secs - fired.secs) / interval) + 1;
    Date skipped = fired.plusSeconds(steps * interval);
    // Rounding can land exactly on now; one more step keeps it in the future.
    if (!(skipped > now))
        skipped = skipped.plusSeconds(interval);
    return skipped;
}

TimerId TimerTable::schedule(double intervalSecs, bool repeats, std::function<void()> callback)
{
    const TimerId id = nextId_++;
    Entry e;
    e.interval = intervalSecs;
    e.repeats = repeats;
    e.fireDate = clock_.now().plusSeconds(intervalSecs);
    e.callback = std::move(callback);
    timers_.emplace(id, std::move(e));
    changed();
    return id;
}

void TimerTable::setFireDate(TimerId id, Date when)
{
    const auto it = timers_.find(id);
    if (it == timers_.end())
        return;
    Entry& e = it->second;
    e.fireDate = when;
    // Firing again for an instant already served would only fire again at once, and again.
    e.spent = e.hasFired && when <= e.firedFor && when <= clock_.now();
    changed();
}

bool TimerTable::isArmed(TimerId id) const
{
    const auto it = timers_.find(id);
    return it != timers_.end() && !it->second.spent;
}

bool TimerTable::earliest(Date* when) const
{
    bool any = false;
    for (const auto& [id, e] : timers_) {
        if (e.spent)
            continue;
        if (!any || e.fireDate < *when)
            *when = e.fireDate;
        any = true;
    }
    return any;
}

Date TimerTable::fireDate(TimerId id) const
{
    const auto it = timers_.find(id);
    return it == timers_.end() ? Date{} : it->second.fireDate;
}

void TimerTable::invalidate(TimerId id)
{
    if (timers_.erase(id))
        changed();
}

bool TimerTable::isValid(TimerId id) const
{
    return timers_.count(id) != 0;
}

void TimerTable::fire(Table::iterator it, Date now)
{
    // The callback may invalidate its own timer, so it runs from a copy.
    const std::function<void()> callback = it->second.callback;
    if (it->second.repeats) {
        Entry& e = it->second;
        e.hasFired = true;
        e.firedFor = e.fireDate;
        e.fireDate = nextrepeatdate(e.fireDate, e.interval, now);
    } else {
        timers_.erase(it);
    }
    if (callback)
        callback();
}

} // namespace quendle
