#include "sea/sea.h"

#include "util/dates.h"
#include "util/text.h"

namespace quendle {

QStringList Sea::pieces(const QString& key) const
{
    if (!defaults_ || !defaults_->contains(key))
        return {};
    return defaults_->stringForKey(key).split('#');
}

// Compared with the upcoming five o'clock as the date helpers give it; with their day
// difference no reading of a real date is ever out of date, and that is kept.
bool Sea::outofdate(const QStringList& p)
{
    return calcdaysdiffint(lumstrtodate(p.value(1)), getupcomingfiveam()) >= 1;
}

QString Sea::waveasstr() const { return pieces(QStringLiteral("waveheight")).value(0); }

int Sea::waveasicon() const
{
    const QStringList p = pieces(QStringLiteral("waveheight"));
    if (p.isEmpty())
        return 13;
    if (outofdate(p))
        return 14;
    const int h = intvalue(p[0]);
    if (h >= 5)
        return 16;
    if (h < 2)
        return 13;
    return 15;
}

QString Sea::displayseatemp()
{
    const QStringList p = pieces(QStringLiteral("preferenceName"));
    if (p.isEmpty() || outofdate(p))
        return QStringLiteral("?");
    const QString text = waveasstr() + "ft " + p[0];
    const int icon = waveasicon();
    if (refreshstat)
        refreshstat(text, icon, icon);
    return p[0];
}

} // namespace quendle
