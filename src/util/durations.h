#pragma once
// Short duration texts shared by the remaining times, the tiles and the spoken alarm.

#include "util/date.h"

#include <QString>

namespace quendle {

QString mintohrminstr(int minutes);        // "1 h 5 min"
QString mintostr(int minutes);             // "1h15m"
// Days, hours and minutes from -> to, the later of the two moved one minute on:
// " 1h 5m"; " 1 min" for equal moments; "" (or a partial text) when `to` is already past.
QString calctimediff(Date from, Date to);
QString calctimediffabbrev(Date from, Date to, int ignored); // minutes spelled out, for speech

} // namespace quendle
