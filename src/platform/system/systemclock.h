#pragma once
// The production clock: the system's own time, or, for demonstrations and end-to-end runs,
// a clock that starts at a given instant and runs on from there. The instant comes from
// --now or QUENDLE_NOW (an ISO 8601 instant such as "2014-03-09T17:04:50", "…Z" or
// "…+11:00"; without an offset it is local time in TZ), read by one parser for both.

#include "platform/clock.h"

#include <QElapsedTimer>
#include <QString>

#include <optional>

namespace quendle {

class SystemClock : public Clock {
public:
    // Follows the system time.
    SystemClock() = default;
    // Starts at `start` and runs on, whatever the environment says; without one, follows
    // the system time.
    explicit SystemClock(std::optional<Date> start);

    Date now() const override;

    // True when the clock runs on from a given start rather than following the system.
    bool startedAtGivenInstant() const { return fixedStart_; }

    // Reads an ISO 8601 instant; false (and *out untouched) when the text is unusable.
    static bool parseNow(const QString& text, Date* out, QString* why = nullptr);

    // The instant a run was told to start at: the --now option when it was given at all
    // (an empty value included), else QUENDLE_NOW when it is set and not empty. False, with
    // a message naming where the text came from, when that text is not a usable instant;
    // *start stays empty when neither was given.
    static bool givenstart(const std::optional<QString>& option, std::optional<Date>* start, QString* error);

private:
    bool fixedStart_ = false;
    Date start_;
    // Monotonic: a clock change while running does not move a given start. (It does not
    // count time spent suspended either; that is acceptable for demonstrations.)
    QElapsedTimer elapsed_;
};

} // namespace quendle
