#include "platform/system/manualtimers.h"

#include <QDebug>

#include <algorithm>

#include <cmath>
#include <set>

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

TimerId ManualTimers::schedule(double intervalSecs, bool repeats, std::function<void()> callback)
{
    const TimerId id = nextId_++;
    Entry e;
    e.interval = intervalSecs;
    e.repeats = repeats;
    e.fireDate = clock_.now().plusSeconds(intervalSecs);
    e.callback = std::move(callback);
    timers_.emplace(id, std::move(e));
    return id;
}

void ManualTimers::setFireDate(TimerId id, Date when)
{
    const auto it = timers_.find(id);
    if (it != timers_.end())
        it->second.fireDate = when;
}

Date ManualTimers::fireDate(TimerId id) const
{
    const auto it = timers_.find(id);
    return it == timers_.end() ? Date{} : it->second.fireDate;
}

void ManualTimers::invalidate(TimerId id)
{
    timers_.erase(id);
}

bool ManualTimers::isValid(TimerId id) const
{
    return timers_.count(id) != 0;
}

int ManualTimers::advanceTo(Date target)
{
    int fired = 0;
    Date instant = clock_.now();
    std::map<TimerId, int> firedAtInstant;   // per timer, while the clock stands at `instant`
    int totalAtInstant = 0;
    std::set<TimerId> benched;               // runaways, left for the next advance
    for (;;) {
        // The earliest due timer; the map's id order settles ties by creation.
        auto due = timers_.end();
        for (auto it = timers_.begin(); it != timers_.end(); ++it) {
            if (it->second.fireDate <= target && !benched.count(it->first)
                && (due == timers_.end() || it->second.fireDate < due->second.fireDate))
                due = it;
        }
        if (due == timers_.end())
            break;

        const Date when = std::max(clock_.now(), due->second.fireDate);
        if (when != instant) {
            instant = when;
            firedAtInstant.clear();
            totalAtInstant = 0;
        }
        if (++totalAtInstant > 4 * kMaxFiringsPerInstant) {
            qWarning("quendle: timers keep making timers at one instant; the rest wait for the next advance");
            break;
        }
        if (++firedAtInstant[due->first] > kMaxFiringsPerInstant) {
            qWarning().noquote() << QStringLiteral("quendle: a timer fired %1 times at one instant; "
                                                   "it waits for the next advance")
                                        .arg(kMaxFiringsPerInstant);
            benched.insert(due->first);
            continue;
        }
        clock_.set(when);

        // The callback may invalidate its own timer, so it runs from a copy.
        const std::function<void()> callback = due->second.callback;
        if (due->second.repeats)
            due->second.fireDate = nextrepeatdate(due->second.fireDate, due->second.interval, when);
        else
            timers_.erase(due);
        ++fired;
        if (callback)
            callback();
    }
    clock_.set(target);
    return fired;
}

} // namespace quendle
