// Which service each leg shows: the view follows the clock unless the user has
// scrolled away, and timers move it on the moment a shown service leaves.

#include "journey/journey.h"

#include "util/dates.h"
#include "util/durations.h"

namespace quendle {

Date Journey::usefutureoffsetifnecc() const
{
    const Date present = now();
    if (myfuturetimes.empty() || myservsmultid.empty() || connectingservs.empty()
        || myservsmultid[0].empty() || connectingservs.back().empty())
        return present;
    const Date f = myfuturetimes.front();
    if (testlumdateearlier(f, present))
        return present;
    const int first = connectingservs.back().front();
    if (first < 0 || first >= static_cast<int>(myservsmultid[0].size()))
        return present;
    const Date d = myservsmultid[0][first].deptime;
    // Keep at least the last chain in view.
    return testlumdateearlier(d, f) ? addminstodate(d, -1) : f;
}

void Journey::setviewindexestocurrent()
{
    myindexes.clear();
    Date ref = usefutureoffsetifnecc();
    myfuturetimes.clear();
    for (const auto& leg : myservsmultid) {
        int index = static_cast<int>(leg.size()) - 1;
        for (int j = 0; j < static_cast<int>(leg.size()); ++j) {
            if (testlumdateearlier(ref, leg[j].deptime)) {
                index = j;
                ref = leg[j].desttime;
                break;
            }
        }
        myindexes.push_back(index);
    }
    bool dead = false;
    for (int& i : myindexes) {
        if (i == -1)
            dead = true;
        if (dead)
            i = -1;
    }
}

int Journey::getmyviewindex(int leg) const
{
    if (leg < 0 || leg >= static_cast<int>(myindexes.size()))
        return 0;
    return myindexes[leg];
}

int Journey::getthisviewindex(int leg) const
{
    if (leg < 0 || leg >= static_cast<int>(myindexes.size()))
        return -1;
    return myindexes[leg];
}

void Journey::scrollthisindex(int leg, int step)
{
    if (view_.zoomed == 1)
        calcremaintimes();
    if (leg >= 0 && leg < static_cast<int>(myindexes.size()) && leg < legcount()) {
        const int moved = myindexes[leg] + step;
        bool allowed = true;
        // The first leg cannot be scrolled into the past.
        if (leg == 0 && (moved >= static_cast<int>(connectingservs.size()) || moved < myactualindex))
            allowed = false;
        // Scrolling never reaches a leg's first or last service.
        if (!(0 < moved && moved < static_cast<int>(myservsmultid[leg].size()) - 1))
            allowed = false;
        if (allowed) {
            needleontherecord = moved == myactualindex ? 1 : 0;
            myindexes[leg] = moved;
        }
    }
    chekcollisionsforward();
    chekcollisionsbackward();
    host_.drawnewmappoints();
}

void Journey::scrolleverythingtothisindex(int leg, int step)
{
    if (view_.zoomed == 1)
        calcremaintimes();
    if (leg >= 0 && leg < static_cast<int>(myindexes.size()) && leg < legcount()) {
        const int moved = myindexes[leg] + step;
        if (moved < static_cast<int>(connectingservs.size()) && moved >= myactualindex && moved > 0
            && moved < static_cast<int>(myservsmultid[leg].size()) - 1) {
            needleontherecord = moved == myactualindex ? 1 : 0;
            const Chain& chain = connectingservs[moved];
            for (size_t k = 0; k < chain.size() && k < myindexes.size(); ++k)
                myindexes[k] = chain[k];
        }
    }
    host_.drawnewmappoints();
}

void Journey::movetothisinex(int c)
{
    if (c >= 0 && c < static_cast<int>(connectingservs.size()) && !myindexes.empty()) {
        myindexes[0] = c;
        const Chain& chain = connectingservs[c];
        for (size_t k = 0; k < chain.size() && k < myindexes.size(); ++k)
            myindexes[k] = chain[k];
    }
    calcremaintimr();
    host_.refreshdisplay();
    host_.calccurrentdisplay();
    setviewforwardtimer();
    host_.writeprefs();
}

void Journey::stepforward()
{
    if (view_.inalarmscreen == 1)
        host_.addminstoalarm(5);
    else
        scrollthisindex(view_.vimselectin, 1);
}

void Journey::gotonow()
{
    autoscrollactualindexfunc();
    needleontherecord = 1;
    setviewindexestocurrent();
    needleontherecord = 1;
    calcremaintimr();
    host_.writeprefs();
    host_.refreshdisplay();
}

void Journey::autoscrollfunc()
{
    if (!didusertakeneedleoffrecord()) {
        setviewindexestocurrent();
        calcremaintimes();
        host_.refreshdisplay();
        setviewforwardtimer();
    }
}

void Journey::autoscrollactualindexfunc() { setactualindextimer(); }

void Journey::setactualindextimer()
{
    myactualindex = 0;
    const Date present = now();
    for (const Chain& chain : connectingservs) {
        if (chain.empty())
            continue;
        const int first = chain.front();
        if (!myservsmultid.empty() && first >= 0 && first < static_cast<int>(myservsmultid[0].size())) {
            const Date d = myservsmultid[0][first].deptime;
            if (testlumdateearlier(present, d)) {
                timerService_.setFireDate(timers.myactualindextimer, d);
                break;
            }
        }
        ++myactualindex;
    }
    // A service index is compared with a chain index: they agree while every first-leg
    // service begins a chain.
    if (getthisviewindex(0) == myactualindex && amiinthebackground())
        needleontherecord = 1;
}

void Journey::setviewforwardtimer()
{
    const int i = getmyviewindex(0);
    if (myservsmultid.empty() || i < 0 || i >= static_cast<int>(myservsmultid[0].size()))
        return;
    timerService_.setFireDate(timers.autoscrolltimer, zerosecondsdate(myservsmultid[0][i].deptime));
}

void Journey::setgetmoreservstimer()
{
    timerService_.setFireDate(timers.getmoreservstimer, adddaystodate(now(), 1));
}

void Journey::calcremaintimr()
{
    calcremstr();
    calcremaintimes();
    host_.refreshdisplay();
    // Redraw at the start of every minute.
    timerService_.setFireDate(timers.calcremmytimer, zerosecondsdate(addminstodate(now(), 1)));
}

void Journey::calcremstr()
{
    remstr.clear();
    const int i = getthisviewindex(0);
    if (myservsmultid.empty() || i < 0 || i >= static_cast<int>(myservsmultid[0].size()))
        return;
    remstr = calctimediff(now(), myservsmultid[0][i].deptime);
}

void Journey::calcremaintimes()
{
    const Date present = now();
    myremaintimes.clear();
    if (!myservsmultid.empty())
        for (const Service& s : myservsmultid[0])
            myremaintimes << calctimediff(present, s.deptime);
    myzoominremaintimes.clear();
    Date ref = present;
    for (int leg = 0; leg < legcount(); ++leg) {
        const int i = getthisviewindex(leg);
        if (i < 0 || i >= static_cast<int>(myservsmultid[leg].size()))
            continue;
        const Service& s = myservsmultid[leg][i];
        myzoominremaintimes << calctimediff(ref, s.deptime);
        ref = s.desttime;
    }
}

bool Journey::isneedleontherecord() const
{
    if (myindexes.empty())
        return true;
    return myactualindex == myindexes[0];
}

QString Journey::getdateimlookinat() const
{
    if (myservsmultid.empty() || myindexes.empty())
        return QString();
    const int i = myindexes[0];
    if (i < 0 || i >= static_cast<int>(myservsmultid[0].size()))
        return QString();
    return lumdatetostr(myservsmultid[0][i].deptime);
}

QString Journey::getthisservdeptime(int index) const
{
    if (myindexes.empty() || myservsmultid.empty() || index < 0
        || index >= static_cast<int>(myservsmultid[0].size()))
        return QString();
    return datetoshrtstr(myservsmultid[0][index].deptime);
}

QString Journey::getthisservdesttime(int c) const
{
    if (c < 0 || c >= static_cast<int>(connectingservs.size()) || connectingservs[c].empty())
        return QStringLiteral(" ");
    const Chain& chain = connectingservs[c];
    const int leg = static_cast<int>(chain.size()) - 1;
    const int j = chain.back();
    if (leg >= legcount() || j < 0 || j >= static_cast<int>(myservsmultid[leg].size()))
        return QStringLiteral(" ");
    return datetoshrtstr(myservsmultid[leg][j].desttime);
}

} // namespace quendle
