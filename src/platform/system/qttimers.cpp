#include "platform/system/qttimers.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace quendle {

QtTimers::QtTimers(const Clock& clock) : TimerTable(clock), clock_(clock)
{
    wake_.setSingleShot(true);
    // A coarse timer may wake a little early, which would only cost a second wake-up;
    // a precise one keeps minute ticks close to the minute.
    wake_.setTimerType(Qt::PreciseTimer);
    QObject::connect(&wake_, &QTimer::timeout, &wake_, [this] { dispatch(); });
}

QtTimers::~QtTimers() = default;

void QtTimers::recheck()
{
    if (!dispatching_)
        wake_.start(0);
}

void QtTimers::hold(bool on)
{
    held_ += on ? 1 : -1;
    if (held_ == 0)
        recheck();
}

void QtTimers::rearm()
{
    if (dispatching_)
        return;   // the dispatch re-arms when it is done
    Date first;
    if (!earliest(&first)) {
        wake_.stop();
        return;
    }
    const double waitMs = std::ceil((first.secs - clock_.now().secs) * 1000.0);
    // Also catches NaN and the huge placeholders, which would overflow an int.
    const int ms = waitMs > 0 ? static_cast<int>(std::min<double>(waitMs, kMaxWaitMs)) : 0;
    wake_.start(ms);
}

void QtTimers::dispatch()
{
    if (dispatching_ || held_ > 0)
        return;   // a held dispatch happens at the release
    dispatching_ = true;
    struct Done {
        QtTimers* self;
        ~Done()
        {
            self->dispatching_ = false;
            self->rearm();
        }
    } done{this};

    // Each timer due now fires at most once per turn, in fire-date order; ties in creation order.
    const Date now = clock_.now();
    std::vector<std::pair<Date, TimerId>> due;
    for (const auto& [id, e] : timers_) {
        if (isdue(e, now))
            due.emplace_back(e.fireDate, id);
    }
    std::sort(due.begin(), due.end());

    for (const auto& [date, id] : due) {
        // An earlier callback may have invalidated or moved this one.
        const auto it = timers_.find(id);
        if (it == timers_.end() || !isdue(it->second, clock_.now()))
            continue;
        fire(it, clock_.now());
    }
}

} // namespace quendle
