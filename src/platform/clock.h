#pragma once
#include "util/date.h"

namespace quendle {

// The one source of the present moment.
class Clock {
public:
    virtual ~Clock() = default;
    virtual Date now() const = 0;
};

} // namespace quendle
