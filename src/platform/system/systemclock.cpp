#include "platform/system/systemclock.h"

#include <QDateTime>
#include <QDebug>
#include <QtGlobal>

namespace quendle {

bool SystemClock::parseNow(const QString& text, Date* out)
{
    const QString t = text.trimmed();
    if (t.isEmpty())
        return false;
    // Qt reads a missing offset as local time, "Z" as UTC and "+hh:mm" as that offset.
    const QDateTime dt = QDateTime::fromString(t, Qt::ISODateWithMs);
    if (!dt.isValid())
        return false;
    if (out)
        *out = Date{static_cast<double>(dt.toMSecsSinceEpoch()) / 1000.0};
    return true;
}

SystemClock::SystemClock()
{
    const QString given = qEnvironmentVariable("QUENDLE_NOW");
    if (given.isEmpty())
        return;
    Date start;
    if (!parseNow(given, &start)) {
        qWarning().noquote() << QStringLiteral("quendle: QUENDLE_NOW=\"%1\" is not an ISO 8601 instant "
                                               "(e.g. 2014-03-09T17:04:50); using the system clock")
                                    .arg(given);
        return;
    }
    fixedStart_ = true;
    start_ = start;
    elapsed_.start();
}

SystemClock::SystemClock(Date start) : fixedStart_(true), start_(start)
{
    elapsed_.start();
}

Date SystemClock::now() const
{
    if (fixedStart_)
        return start_.plusSeconds(static_cast<double>(elapsed_.nsecsElapsed()) / 1e9);
    return Date{static_cast<double>(QDateTime::currentMSecsSinceEpoch()) / 1000.0};
}

} // namespace quendle
