#pragma once
// The whole application on the built-in table with a window that exists only as a frame:
// for the strip's geometry, texts and painting. The clock and timers are the test's.

#include "app/appmodel.h"
#include "platform/system/manualtimers.h"
#include "platform/system/memorydefaults.h"
#include "platform/system/nullservices.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>

namespace quendle::testsupport {

class StripFixture : public ::testing::Test {
protected:
    // Starts up at `now`, then recalculates for `journey`.
    AppModel& start(const QStringList& journey, Date now)
    {
        clock.set(now);
        platform.clock = &clock;
        platform.timers = &timers;
        platform.defaults = &defaults;
        platform.window = &window;
        platform.homeDir = home.path();
        app = std::make_unique<AppModel>(platform, AppModel::Options{false});
        app->initWithFrame();
        app->journey().myjournstr = journey;
        app->calctripoptimizelater();
        return *app;
    }
    Display& d() { return app->display(); }
    Journey& j() { return app->journey(); }
    const Service& shown(int leg) { return j().myservsmultid[leg][j().myindexes[leg]]; }

    QTemporaryDir home;
    ManualClock clock;
    ManualTimers timers{clock};
    MemoryDefaults defaults;
    NullWindowHost window;
    Platform platform;
    std::unique_ptr<AppModel> app;
};

} // namespace quendle::testsupport
