// The status item: the title and the icon row chosen for it, and what a Linux tray or a
// status bar needs besides (the minutes left as a badge, a tooltip, a class name).

#include "display/display.h"

#include "util/dates.h"

namespace quendle {

const QStringList& Display::icons()
{
    static const QStringList names = {
        "sydtrainsiconn",      "trakwupcomsml",        "trakw",     "nightride",
        "serviceinterrup",     "alarmsml",             "alarmsydtrainsiconn", "alarmtrakwupcomsml",
        "alarmtrakw",          "alarmnightride",       "alarmserviceinterrup", "alarmalarmsml",
        "wavenoinfo12",        "wavelo",               "wavemed14", "wavehigh"};
    return names;
}

void Display::setupmenuitem()
{
    statusitem = StatusShown{};
    statusitem.iconName = QStringLiteral("sydtrainsiconn");
    statusitem.cls = QStringLiteral("normal");
    statusitem.tooltip = QStringLiteral("Quendle");
    if (window_)
        window_->setStatus(statusitem);
}

int Display::statusiconrow(int k) const
{
    if (5 <= k && k < 12)
        k = 0;
    // An alarm alone shows row 4; with a warning of its own the warning's row stays.
    if (alarms_->doigotalarm() && k < 1)
        k += 4;
    if (k > 15)
        k = 0;
    return k < 0 ? 0 : k;
}

QString Display::statusclass(int row)
{
    switch (row) {
    case 1:
        return QStringLiteral("trackwork-upcoming");
    case 2:
        return QStringLiteral("trackwork");
    default:
        return row >= 4 && row < 12 ? QStringLiteral("alarm") : QStringLiteral("normal");
    }
}

QString Display::statusbadge() const
{
    const Service* s = shownservice(0);
    if (!s)
        return QString();
    const Date present = now();
    // The minutes the title counts: up to one minute past the departure.
    const int mins = testlumdateearlier(present, s->deptime)
        ? calctimediffint(present, addminstodate(s->deptime, 1))
        : 0;
    if (mins < 100)
        return QString::number(mins < 0 ? 0 : mins);
    if (mins < 24 * 60)
        return QString::number(mins / 60) + 'h';
    return QString::number(mins / (24 * 60)) + 'd';
}

QString Display::statustooltip(const QString& title, const QString& cls) const
{
    QStringList lines;
    if (!title.trimmed().isEmpty())
        lines << title.trimmed();
    if (j_.myjournstr.size() >= 2)
        lines << j_.myjournstr.join(QStringLiteral(" → "));
    if (const Service* s = shownservice(0))
        lines << QStringLiteral("Next service leaves at ") + datetoshrtstr(s->deptime);
    if (cls == QLatin1String("trackwork"))
        lines << QStringLiteral("Trackwork affects this service");
    else if (cls == QLatin1String("trackwork-upcoming"))
        lines << QStringLiteral("Trackwork begins soon after this service");
    if (alarms_->doigotalarm())
        lines << QStringLiteral("Alarm set");
    return lines.isEmpty() ? QStringLiteral("Quendle") : lines.join('\n');
}

void Display::refreshstat(const QString& title, int, int k)
{
    const int row = statusiconrow(k);
    statusicon = row;
    StatusShown s;
    s.title = title;
    s.iconName = icons()[row];
    s.badge = statusbadge();
    s.cls = statusclass(row);
    s.tooltip = statustooltip(title, s.cls);
    statusitem = s;
    if (window_)
        window_->setStatus(statusitem);
}

} // namespace quendle
