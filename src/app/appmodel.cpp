#include "app/appmodel.h"

#include "app/trackworkview.h"
#include "util/dates.h"
#include "util/files.h"
#include "util/text.h"

#include <QDebug>
#include <QDir>
#include <QFileInfo>

namespace quendle {

namespace {
// Placeholder intervals: these timers wait for their owners to set a fire date.
constexpr double kNever = 6000000000000000.0;
constexpr double kNeverShort = 600000000.0;
constexpr double kOneYear = 31536000.0;

// What the strip reads of the alarm.
class UserStateAlarms : public AlarmView {
public:
    explicit UserStateAlarms(const UserState& u) : u_(u) {}
    int alarmdefaultmins() const override { return u_.alarmdefaultmins; }
    bool doigotalarm() const override { return u_.doigotalarm(); }

private:
    const UserState& u_;
};
} // namespace

AppModel::AppModel(Platform& platform, Options options)
    : platform_(platform), options_(options), folders_(platform.homeDir)
{
    timetable_ = std::make_unique<Timetable>(folders_, false);
    journey_ = std::make_unique<Journey>(*timetable_, *platform_.clock, *platform_.timers, *this, view_);
    disruptions_ = std::make_unique<Disruptions>(*timetable_, *journey_, platform_, folders_, *this);
    userstate_ = std::make_unique<UserState>(*journey_, *timetable_, platform_, *this, view_, folders_);
    userstate_->mylastupdateray = &mylastupdateray;
    alarmview_ = std::make_unique<UserStateAlarms>(*userstate_);
    display_ = std::make_unique<Display>(*journey_, *timetable_, view_, *platform_.clock, *platform_.timers,
                                         *this, lumdebug);
    display_->setwindow(platform_.window);
    display_->alerts = platform_.alerts;
    display_->setalarms(alarmview_.get());
    trakview_ = std::make_unique<DisruptionsTrackworkView>(*disruptions_);
    display_->settrackwork(trakview_.get());
    sea_ = std::make_unique<Sea>(platform_.defaults);
    sea_->refreshstat = [this](const QString& title, int unused, int icon) {
        display_->refreshstat(title, unused, icon);
    };
    publisher_ = std::make_unique<Publisher>(platform_, folders_);
    publisher_->operatorurl = [d = disruptions_.get()] { return d->operatorurl(); };
    updater_ = std::make_unique<Updater>(*timetable_, *disruptions_, *publisher_, platform_, folders_, *this,
                                         Updater::Flags{runupdatesincelaunch, checkforupdates, mylastupdateray});
    timetable_->downloadedTablesHook = [u = updater_.get()] { u->copydownloadedtablestotablefold(); };
}

AppModel::~AppModel() = default;

void AppModel::initWithFrame()
{
    if (amizorb())
        lumbuildfold();
    setupstuff();
    calctripoptimizelater();
    refreshdisplay();
    display_->adjustclippingbasedonjourneylength();
}

void AppModel::awakeFromNib()
{
    if (!platform_.session)
        return;
    SessionHandlers h;
    h.willSleep = [this] { makeSleep(); };
    h.didWake = [this] { makeWake(); };
    h.becameActive = [this] { gainfocusfunc(); };
    h.resignedActive = [this] { losefocus(); };
    platform_.session->setHandlers(std::move(h));
}

void AppModel::setupstuff()
{
    hidedockicon();
    setdebugstat();
    // The first update check must find the last one long overdue.
    mylastupdateray = {adddaystodate(now(), -165)};
    Journey& j = *journey_;
    UserState& u = *userstate_;
    u.myfavs.clear();
    u.myfavstoshow.clear();
    u.mybookmarks.clear();
    j.myservsmultid.clear();
    j.mytraveltimes.clear();
    j.mytraveltimesint.clear();
    j.myremaintimes.clear();
    u.removealarm();
    j.myfuturetimes.clear();
    j.stickyindexes.clear();
    Disruptions& d = *disruptions_;
    d.servsaffectedbytrakw.clear();
    d.servsaffectedbytrakwmultid.clear();
    j.myjournstr = QStringList{QStringLiteral("Bondi Junction"), QStringLiteral("Edgecliff")};

    Timetable& tt = *timetable_;
    tt.setuptables();
    for (const QString& note : tt.setupnotes)
        tellnotice(note);
    tt.setuplinesmultitable();
    tt.setupstnsmute();
    d.setuptrakw();
    d.trakwremdupes();
    tt.rewritelinesmutewithstnnums();
    j.setupstnconnections(platform_.appDataDir + "/stationconnections.txt");
    d.setupinterrrup();
    u.readprefs();
    d.setupserviceinterruptions();
    loaddefaultsifappcrashed();
    display_->setupmenuitem();
    setuptimers();
    setwindowsize();
    askrunatlogin();
}

void AppModel::tellnotice(const QString& text)
{
    if (platform_.notice)
        platform_.notice(text);
    else
        qWarning().noquote() << QStringLiteral("quendle: ") + text;
}

void AppModel::setuptimers()
{
    Timers& t = *platform_.timers;
    // Left running unreferenced on purpose: the remaining times are refreshed from two timers.
    t.schedule(60, true, [this] { calcremaintimr(); });
    display_->painttimer = t.schedule(kNever, true, [this] { display_->painttimerfunc(); });
    scrolltexttimer = t.schedule(kNever, true, [] {});
    updatetimer = t.schedule(kNever, true, [this] { updatetimerfunc(); });
    myactualindextimer = t.schedule(kNever, true, [this] { journey_->autoscrollactualindexfunc(); });
    autoscrolltimer = t.schedule(kNever, true, [this] { journey_->autoscrollfunc(); });
    calcremmytimer = t.schedule(60, true, [this] { calcremaintimr(); });
    zoomintimer = t.schedule(kNeverShort, true, [this] { zoominfunc(); });
    fivesecsafterlaunchtimer = t.schedule(7, false, [this] { fivesecafterlaunchfunc(); });
    getmoreservstimer = t.schedule(86400, true, [this] { garbagecleanup(); });

    TimelineTimers& tl = journey_->timers;
    tl.autoscrolltimer = autoscrolltimer;
    tl.myactualindextimer = myactualindextimer;
    tl.calcremmytimer = calcremmytimer;
    tl.getmoreservstimer = getmoreservstimer;
    journey_->setactualindextimer();
    setupdatetimer();
}

void AppModel::calcremaintimr() { journey_->calcremaintimr(); }

void AppModel::fivesecafterlaunchfunc()
{
    display_->adjustclippingbasedonjourneylength();
    display_->getmyselectionsquares();
    redisplay();
}

void AppModel::garbagecleanup() { calctripoptimizelater(); }

void AppModel::zoominfunc()
{
    view_.zoomed = 1;
    journey_->calcremaintimes();
    platform_.timers->setFireDate(zoomintimer, now().plusSeconds(kOneYear));
    writeprefs();
    redisplay();
    display_->adjustclippingbasedonjourneylength();
}

UpdateReport AppModel::updatetimerfunc()
{
    // With checks off the timer is left as it is: its next fire date is "never".
    UpdateReport r = updater_->updatetimerfunc();
    if (r.ran) {
        setupdatetimer();
        display_->updatestr = updater_->getlastupdatestr();
        display_->meowupdatestr = updater_->getnextupdatestr();
    }
    return r;
}

void AppModel::setupdatetimer() { updater_->setupdatetimer(updatetimer); }

void AppModel::wakefromsleep()
{
    // Timers wait on a monotonic clock that stood still while the machine slept.
    platform_.timers->recheck();
    Journey& j = *journey_;
    j.autoscrollactualindexfunc();
    j.needleontherecord = 1;
    j.setviewindexestocurrent();
    userstate_->removeexpiredalarms();
    writeprefs();
    refreshdisplay();
    j.setviewforwardtimer();
}

void AppModel::gainfocusfunc()
{
    view_.imfocusd = 1;
    display_->showscrubber();
    refreshdisplay();
    if (platform_.timers->isValid(scrolltexttimer)) {
        platform_.timers->invalidate(scrolltexttimer);
        scrolltexttimer = kNoTimer;
    }
}

void AppModel::losefocus()
{
    view_.imfocusd = 0;
    view_.textscroll = 0;
    display_->hidescrubber();
    zoominfunc();   // the strip zooms back in at once
    platform_.timers->invalidate(scrolltexttimer);
    scrolltexttimer = kNoTimer;
}

void AppModel::bringtofront()
{
    if (platform_.window)
        platform_.window->activate();
    if (view_.imfocusd)
        losefocus();
    else
        gainfocusfunc();
}

void AppModel::quitapp()
{
    writefile(QStringLiteral("zb"), folders_.getprefsfold(), QStringLiteral("succquit.txt"));
    if (platform_.window)
        platform_.window->quit();
}

void AppModel::hidedockicon()
{
    if (platform_.window)
        platform_.window->hideFromTaskbar();
}

void AppModel::askrunatlogin()
{
    DefaultsStore* d = platform_.defaults;
    if (!d)
        return;
    if (intvalue(d->stringForKey(QStringLiteral("runinitialsetup"))) != 1)
        setLaunchOnLogin(true);
    d->setString(QStringLiteral("runinitialsetup"), QStringLiteral("1"));
    d->synchronize();
}

bool AppModel::launchOnLogin() const
{
    return platform_.loginItems && platform_.loginItems->launchOnLogin();
}

void AppModel::setLaunchOnLogin(bool on)
{
    if (platform_.loginItems)
        platform_.loginItems->setLaunchOnLogin(on);
}

bool AppModel::amizorb() const { return lumexist(folders_.publishermarker()); }

void AppModel::lumbuildfold()
{
    const QString target = folders_.publisherbuildfold();
    // The build copy lies outside the preferences folder; only the publisher may remove it.
    lumdelete(target, folders_.getprefsfold(), amizorb());
    if (platform_.executablePath.isEmpty())
        return;
    QDir().mkpath(QFileInfo(target).path());
    lumcopy(platform_.executablePath, target);
}

bool AppModel::lummakedir(const QString& path) { return quendle::lummakedir(path); }

void AppModel::setwindowsize() { display_->setwindowsize(); }

void AppModel::refreshdisplay()
{
    display_->adjustclippingbasedonjourneylength();
    redisplay();
    refreshmeubar();
}

void AppModel::refreshmeubar()
{
    disruptions_->trakstatustimer();
    journey_->calcremstr();
    // An empty journey leaves the title and the icon as they were.
    if (journey_->myjournstr.isEmpty())
        return;
    const QString title = UserState::abbreviatejurnifnecc(journey_->myjournstr.front()) + journey_->remstr;
    display_->refreshstat(title, 0, disruptions_->mytrakicon);
}

void AppModel::redisplay()
{
    if (platform_.window)
        platform_.window->redisplay();
}

void AppModel::calccurrentdisplay() { display_->calccurrentdisplay(); }

void AppModel::drawnewmappoints() { display_->drawnewmappoints(); }

void AppModel::writeprefs()
{
    if (options_.saveState)
        userstate_->writeprefs();
}

void AppModel::writesuccupdate()
{
    mylastupdateray = {now()};
    writeprefs();
    calctripoptimizelater();
}

void AppModel::calctripoptimizelater()
{
    Journey& j = *journey_;
    Disruptions& d = *disruptions_;
    logdebug(QStringLiteral("begcalctrip"));
    j.getlinematchesforwholejourn();
    j.insertzandrelifnecc();
    d.trakstatustimer();
    j.recalcservices();
    j.setmyconnectingservs();
    d.getrelevanttrakwork();
    d.setuprelevanttrakinfobydate();
    d.getmyservsaffectedbytrakw();
    j.setviewindexestocurrent();
    j.calcremaintimr();
    calccurrentdisplay();
    j.calctraveltimes();
    j.setviewforwardtimer();
    j.setgetmoreservstimer();
    j.setactualindextimer();
    writeprefs();
    display_->adjustclippingbasedonjourneylength();
    display_->zoomontrip();
    display_->getmyselectionsquares();
    logdebug(QStringLiteral("endcalctrip"));
}

} // namespace quendle
