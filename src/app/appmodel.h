#pragma once
// The application model: owns every module, runs the start-up sequence and the
// full recalculation of the journey, owns the timers and answers the modules'
// upward calls (redraw, save, recalculate). Both front ends drive one of these.

#include "disruptions/disruptions.h"
#include "display/display.h"
#include "journey/journey.h"
#include "platform/host.h"
#include "platform/platform.h"
#include "publisher/publisher.h"
#include "sea/sea.h"
#include "timetable/timetable.h"
#include "update/update.h"
#include "userstate/userstate.h"
#include "util/folders.h"
#include "util/viewstate.h"

#include <functional>
#include <memory>
#include <vector>

namespace quendle {

class AppModel : public Host {
public:
    struct Options {
        bool saveState = true;   // false: nothing the user owns is written (terminal runs)
    };

    AppModel(Platform& platform, Options options);
    ~AppModel() override;

    // Construction of the view: the whole start-up, then the first recalculation.
    void initWithFrame();
    // Registration for sleep, wake, activation and resignation.
    void awakeFromNib();

    void setupstuff();
    // Says something to the user through the platform (see Platform::notice).
    void tellnotice(const QString& text);
    void setuptimers();

    // Timer callbacks and the reactions owned here.
    void calcremaintimr();
    void fivesecafterlaunchfunc();
    void garbagecleanup();
    void zoominfunc();
    // One update check (through the updater) and the timer moved on; what it found.
    UpdateReport updatetimerfunc();
    void setupdatetimer();
    void makeSleep() {}
    void makeWake() { wakefromsleep(); }
    void wakefromsleep();
    void gainfocusfunc();
    void losefocus();
    void bringtofront();
    void quitapp();
    void loaddefaultsifappcrashed() {}
    void hidedockicon();
    void askrunatlogin();
    bool launchOnLogin() const;
    void setLaunchOnLogin(bool on);
    void setdebugstat() { lumdebug = 0; }
    static bool checkmydebug() { return false; }
    static void logdebug(const QString&) {}
    bool amizorb() const;
    void lumbuildfold();
    static bool lummakedir(const QString& path);
    void setwindowsize();
    // The status item's title (first station and the time left) and icon.
    void refreshmeubar();

    // Host
    void refreshdisplay() override;
    void redisplay() override;
    void writeprefs() override;
    void calctripoptimizelater() override;
    void calccurrentdisplay() override;
    void drawnewmappoints() override;
    void addminstoalarm(int minutes) override { userstate_->addminstoalarm(minutes); }
    void writesuccupdate() override;

    Date now() const { return platform_.clock->now(); }
    const Folders& folders() const { return folders_; }
    Timetable& timetable() { return *timetable_; }
    const Timetable& timetable() const { return *timetable_; }
    Journey& journey() { return *journey_; }
    const Journey& journey() const { return *journey_; }
    UserState& userstate() { return *userstate_; }
    const UserState& userstate() const { return *userstate_; }
    // Whether writeprefs reaches the stores; a terminal run turns it on only to save a journey.
    void setsavestate(bool on) { options_.saveState = on; }
    Disruptions& disruptions() { return *disruptions_; }
    const Disruptions& disruptions() const { return *disruptions_; }
    ViewState& view() { return view_; }
    const ViewState& view() const { return view_; }
    Display& display() { return *display_; }
    const Display& display() const { return *display_; }
    Platform& platform() { return platform_; }
    Sea& sea() { return *sea_; }
    Updater& updater() { return *updater_; }
    const Updater& updater() const { return *updater_; }
    Publisher& publisher() { return *publisher_; }

    // Timers (held) and flags owned here.
    TimerId updatetimer = kNoTimer;
    TimerId autoscrolltimer = kNoTimer;
    TimerId calcremmytimer = kNoTimer;
    TimerId myactualindextimer = kNoTimer;
    TimerId zoomintimer = kNoTimer;
    TimerId fivesecsafterlaunchtimer = kNoTimer;
    TimerId getmoreservstimer = kNoTimer;
    TimerId nextservtimer = kNoTimer;
    TimerId mouseTimer = kNoTimer;
    TimerId timer = kNoTimer;
    TimerId scrolltexttimer = kNoTimer;
    int lumdebug = 1;
    int lumdebugfix = 0;
    int runupdatesincelaunch = 0;
    int checkforupdates = 1;
    std::vector<Date> mylastupdateray;

private:
    Platform& platform_;
    Options options_;
    Folders folders_;
    ViewState view_;
    std::unique_ptr<Timetable> timetable_;
    std::unique_ptr<Journey> journey_;
    std::unique_ptr<Disruptions> disruptions_;
    std::unique_ptr<TrackworkView> trakview_;   // the display's window on the disruptions
    std::unique_ptr<UserState> userstate_;
    std::unique_ptr<AlarmView> alarmview_;   // the strip's view of the alarm
    std::unique_ptr<Display> display_;
    std::unique_ptr<Sea> sea_;
    std::unique_ptr<Publisher> publisher_;
    std::unique_ptr<Updater> updater_;
};

} // namespace quendle
