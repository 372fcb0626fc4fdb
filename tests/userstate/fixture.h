#pragma once
// A fixture for the user-state tests: the application with every outside service a double.

#include "app/appmodel.h"
#include "platform/system/manualtimers.h"
#include "platform/system/memorydefaults.h"
#include "platform/system/nullservices.h"
#include "support/scripted_alerts.h"
#include "util/dates.h"
#include "util/files.h"

#include <QTemporaryDir>

#include <memory>

#include <gtest/gtest.h>

namespace quendle::testsupport {

class RecordingSpeech : public Speech {
public:
    void say(const QString& sentence) override { said << sentence; }
    QStringList said;
};

// Tuesday 24 November 2026, Sydney.
inline Date at(int h, int m, int s = 0) { return datefromcivil({2026, 11, 24, h, m, s}); }

// The whole application on the built-in table, saving for real into a throw-away home and
// an in-memory defaults store; a restart is simply another start on the same stores.
class UserStateTest : public ::testing::Test {
protected:
    AppModel& start(Date now)
    {
        clock.set(now);
        platform.clock = &clock;
        platform.timers = &timers;
        platform.defaults = &defaults;
        platform.speech = &speech;
        platform.alerts = &alerts;
        platform.session = &session;
        platform.window = &window;
        platform.homeDir = home.path();
        app.reset();
        app = std::make_unique<AppModel>(platform, AppModel::Options{true});
        app->initWithFrame();
        app->awakeFromNib();
        return *app;
    }
    UserState& u() { return app->userstate(); }
    Journey& j() { return app->journey(); }
    QString prefsfile() const { return readfile(app->userstate().getprefspath()); }
    Date shown() const
    {
        const Journey& jj = app->journey();
        return jj.myservsmultid.at(0).at(jj.myindexes.at(0)).deptime;
    }
    QStringList favnames(const std::vector<Favourite>& favs) const
    {
        QStringList n;
        for (const Favourite& f : favs)
            n << f.name;
        return n;
    }

    QTemporaryDir home;
    ManualClock clock;
    ManualTimers timers{clock};
    MemoryDefaults defaults;
    ScriptedAlerts alerts;
    RecordingSpeech speech;
    NullSession session;
    NullWindowHost window;
    Platform platform;
    std::unique_ptr<AppModel> app;
};


} // namespace quendle::testsupport
