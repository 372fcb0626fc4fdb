#include "util/dates.h"

#include <gtest/gtest.h>

using namespace quendle;

// The per-day clock must give exactly what the calendar gives, on ordinary days and on
// the days around Sydney's clock changes (6 April and 5 October 2014).
TEST(ServiceDayClock, AgreesWithTheCalendarAroundClockChanges)
{
    qputenv("TZ", "Australia/Sydney");
    resetdatezone();
    for (const CivilTime day : {CivilTime{2014, 3, 10, 9, 30, 5}, CivilTime{2014, 4, 5, 23, 59, 0},
                                CivilTime{2014, 4, 6, 1, 0, 0}, CivilTime{2014, 10, 4, 14, 0, 0},
                                CivilTime{2014, 10, 5, 3, 30, 0}, CivilTime{2014, 12, 31, 12, 0, 0}}) {
        const Date d = datefromcivil(day);
        const ServiceDayClock clock(d);
        for (int hhmm : {0, 1, 59, 100, 159, 200, 230, 259, 300, 330, 512, 1200, 2359, 2400, 2430, 2515, 2575,
                         2959, 3000, 3130, -1}) {
            ASSERT_EQ(clock.at(hhmm), twenfourhranddatetodate(hhmm, d))
                << day.year << "-" << day.month << "-" << day.day << " at " << hhmm;
        }
    }
}
