#include "platform/system/manualtimers.h"

#include <QDebug>

#include <algorithm>
#include <set>

namespace quendle {

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
            if (isdue(it->second, target) && !benched.count(it->first)
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

        ++fired;
        fire(due, when);
    }
    clock_.set(target);
    return fired;
}

} // namespace quendle
