#pragma once
// Short duration texts shared by the remaining times, the tiles and the spoken alarm.

#include "util/date.h"

#include <QString>

namespace quendle {

QString mintohrminstr(int minutes);        // "1 h 5 min"
QString mintostr(int minutes);             // "1h15m"
QString calctimediff(Date from, Date to);  // " 1h 5m", " 1 min" under a minute
QString calctimediffabbrev(Date from, Date to, int ignored); // minutes spelled out, for speech

} // namespace quendle
