// Colours and icon names of the tiles, and the tile-growing animation's counters.

#include "display/display.h"

#include <algorithm>

namespace quendle {

Rgba Display::getcolorthisleg(int r) const
{
    const int s = stationcount();
    if (r > 1 && r == s)
        r = r - 1;   // the extend tile takes the last leg's colour
    if (0 < r && r < s) {
        const Service* svc = shownservice(r - 1);
        if (svc && validline(svc->linenum))
            return tt_.linesmute[svc->linenum].nscol;
    }
    return Rgba{0, 0, 0, 1};
}

Rgba Display::getcolforthistile(int i) const
{
    if (!j_.myservsmultid.empty() && i >= 0 && i < static_cast<int>(j_.myservsmultid[0].size())) {
        const int line = j_.myservsmultid[0][i].linenum;
        if (validline(line))
            return tt_.linesmute[line].nscol;
    }
    return Rgba{0, 1, 0, 1};
}

Rgba Display::dimcolamnt(Rgba c, float amount)
{
    return Rgba{std::max(0.0, c.r - amount), std::max(0.0, c.g - amount), std::max(0.0, c.b - amount), 1};
}

int Display::makeapercent(int part, int whole)
{
    // No spread at all (every travel time equal) is 0 per cent rather than a division by zero.
    if (whole == 0)
        return 0;
    return truncint(static_cast<double>(static_cast<long double>(part) / whole * 100));
}

QString Display::getzoomouticon(int i) const
{
    if (trak_->trakstatusforthisservint(i) == 1)
        return QStringLiteral("trakwjuly");
    if (j_.isitfastest(i))
        return QStringLiteral("speedlinezfix");
    return QStringLiteral("sydtrrr");
}

QString Display::getimgforthisleg(int leg) const
{
    if (leg == -1)
        return QString();
    const int idx = j_.getthisviewindex(leg);
    const bool hasleg = leg >= 0 && leg < static_cast<int>(j_.myservsmultid.size());
    if (hasleg && idx >= 0 && idx < static_cast<int>(j_.myservsmultid[leg].size())) {
        const int status = trak_->gettrakstatusfrthisservwthupcom(leg, idx);
        if (status == 1)
            return QStringLiteral("trakwjuly");
        if (status == -1)
            return QStringLiteral("trakwupcom");
    }
    auto noservices = [this](int l) {
        return l < 0 || l >= static_cast<int>(j_.myservsmultid.size()) || j_.myservsmultid[l].empty();
    };
    if (noservices(leg) || (leg > 0 && noservices(leg - 1)))
        return QString();
    return QStringLiteral("sydtrrr");
}

void Display::beginzoominanim(int leg)
{
    timers_.invalidate(animatetimer);
    animatetimer = kNoTimer;
    animatetilesize = 0;
    animatetilebeginy = getcurrwindowheight() - leg * mahtileheight;
    // Overwritten with fixed values, as it always has been.
    animatetilebeginx = 155;
    animatetilebeginy = 655;
    animatetimer = timers_.schedule(0, true, [this] { animatetimerfunc(); });
}

void Display::animatetimerfunc()
{
    animatetilesize += 3;
    host_.redisplay();
    if (animatetilesize >= 112 || animatetilesize < 0) {
        timers_.invalidate(animatetimer);
        animatetimer = kNoTimer;
    }
}

} // namespace quendle
