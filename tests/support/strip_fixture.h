#pragma once
// The whole application on the built-in table with a window that exists only as a frame:
// for the strip's geometry, texts and painting. The clock and timers are the test's.

#include "app/appmodel.h"
#include "platform/system/manualtimers.h"
#include "platform/system/memorydefaults.h"
#include "platform/system/nullservices.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <vector>

namespace quendle::testsupport {

// Trackwork answers set by the test: statuses per (leg, service) and the relevant records.
class ScriptedTrackwork : public TrackworkView {
public:
    std::vector<int> gettrakstatusfrthisservray(int leg, int serv) const override
    {
        const auto it = status.find({leg, serv});
        return it == status.end() ? std::vector<int>{} : it->second;
    }
    int gettrakstatusfrthisservwthupcom(int leg, int serv) const override
    {
        const std::vector<int> s = gettrakstatusfrthisservray(leg, serv);
        for (int v : s)
            if (v >= 0)
                return 1;
        return s.empty() ? 0 : -1;
    }
    int trakstatusforthisservint(int c) const override { return c == inforce ? 1 : 0; }
    int relevantcount() const override { return static_cast<int>(records.size()); }
    TrakRecord relevanttrakinfo(int i) const override { return records.at(i); }
    int trakwcount() const override { return static_cast<int>(records.size()); }
    TrakRecord trakw(int i) const override { return records.at(i); }

    std::map<std::pair<int, int>, std::vector<int>> status;
    std::vector<TrakRecord> records;
    int inforce = -1;
};

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
