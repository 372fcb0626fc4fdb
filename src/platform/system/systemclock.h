#pragma once
// The production clock. Normally the system's own time; QUENDLE_NOW (an ISO 8601 instant
// such as "2014-03-09T17:04:50", "…Z" or "…+11:00"; without an offset it is local time
// in TZ) or an explicit start makes it start at that instant and run on from there, for
// demonstrations and end-to-end runs.

#include "platform/clock.h"

#include <QElapsedTimer>
#include <QString>

namespace quendle {

class SystemClock : public Clock {
public:
    // Starts at QUENDLE_NOW when it holds a usable instant (an unusable one is reported
    // once and ignored); otherwise follows the system time.
    SystemClock();
    // Starts at `start` and runs on, whatever the environment says.
    explicit SystemClock(Date start);

    Date now() const override;

    // True when the clock runs on from a given start rather than following the system.
    bool startedAtGivenInstant() const { return fixedStart_; }

    // Reads an ISO 8601 instant; false (and *out untouched) when the text is unusable.
    static bool parseNow(const QString& text, Date* out);

private:
    bool fixedStart_ = false;
    Date start_;
    // Monotonic: a clock change while running does not move a given start. (It does not
    // count time spent suspended either; that is acceptable for demonstrations.)
    QElapsedTimer elapsed_;
};

} // namespace quendle
