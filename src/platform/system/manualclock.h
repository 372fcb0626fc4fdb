#pragma once
// A clock that only moves when told to: for tests and simulations.

#include "platform/clock.h"

namespace quendle {

class ManualClock : public Clock {
public:
    ManualClock() = default;
    explicit ManualClock(Date start) : now_(start) {}

    Date now() const override { return now_; }
    void set(Date when) { now_ = when; }
    void advance(double secs) { now_.secs += secs; }

private:
    Date now_;
};

} // namespace quendle
