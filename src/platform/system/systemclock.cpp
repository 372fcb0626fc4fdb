#include "platform/system/systemclock.h"

#include "util/dates.h"

#include <QDateTime>
#include <QtGlobal>

namespace quendle {

bool SystemClock::parseNow(const QString& text, Date* out, QString* why)
{
    return parseiso(text, out, why);
}

bool SystemClock::givenstart(const std::optional<QString>& option, std::optional<Date>* start, QString* error)
{
    start->reset();
    QString text, source;
    if (option) {
        text = *option;
        source = QStringLiteral("--now");
    } else {
        text = qEnvironmentVariable("QUENDLE_NOW");
        source = QStringLiteral("QUENDLE_NOW=");
        if (text.isEmpty())
            return true;
    }
    Date when;
    QString why;
    if (!parseNow(text, &when, &why)) {
        // A hostile value can be long; the start is enough to recognise it.
        const QString shown = text.size() > 60 ? text.left(60) + QStringLiteral("…") : text;
        if (error)
            *error = QStringLiteral("%1%2\"%3\" is not a usable instant: %4. Give one such as "
                                    "2014-03-09T17:04:50 (local time), 2014-03-09T06:04:50Z or "
                                    "2014-03-09T17:04:50+11:00.")
                         .arg(source, option ? QStringLiteral(" ") : QString(), shown, why);
        return false;
    }
    *start = when;
    return true;
}

SystemClock::SystemClock(std::optional<Date> start)
{
    if (!start)
        return;
    fixedStart_ = true;
    start_ = *start;
    elapsed_.start();
}

Date SystemClock::now() const
{
    if (fixedStart_)
        return start_.plusSeconds(static_cast<double>(elapsed_.nsecsElapsed()) / 1e9);
    return Date{static_cast<double>(QDateTime::currentMSecsSinceEpoch()) / 1000.0};
}

} // namespace quendle
