#pragma once
// An absolute instant: seconds since 1970-01-01T00:00:00Z, as a double.
// Every date in the system is one of these; calendar work happens in util/dates.

#include <compare>

namespace quendle {

struct Date {
    double secs = 0;
    friend auto operator<=>(const Date&, const Date&) = default;
    Date plusSeconds(double s) const { return Date{secs + s}; }
};

} // namespace quendle
