#include "app/appmodel.h"
#include "gui/stripwindow.h"
#include "platform/system/manualtimers.h"
#include "platform/system/nullservices.h"
#include "platform/system/qsettingsdefaults.h"
#include "util/dates.h"

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace quendle;

// The journey set from the terminal is the one the strip shows when it next starts, on
// the same settings file and preferences folder.
TEST(StripRestart, TheStripShowsTheJourneySetFromTheTerminal)
{
    QDir().mkpath(qEnvironmentVariable("HOME"));   // the test home in the build tree
    QTemporaryDir home(qEnvironmentVariable("HOME") + "/strip-restart-XXXXXX");
    ASSERT_TRUE(home.isValid());
    QProcess cli;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("HOME", home.path());
    env.insert("XDG_CONFIG_HOME", home.path() + "/.config");
    cli.setProcessEnvironment(env);
    cli.start(qEnvironmentVariable("QUENDLE_CLI"), {"journey", "set", "Central|Strathfield|Hornsby"});
    ASSERT_TRUE(cli.waitForFinished(120000));
    ASSERT_EQ(cli.exitCode(), 0) << cli.readAllStandardError().toStdString();

    ManualClock clock(datefromcivil({2026, 11, 24, 8, 0, 0}));
    ManualTimers timers{clock};
    QSettingsDefaults defaults(home.path() + "/.config/quendle/quendle.conf");
    NullSession session;
    Platform platform;
    platform.clock = &clock;
    platform.timers = &timers;
    platform.defaults = &defaults;
    platform.session = &session;
    platform.homeDir = home.path();
    MyNSView view;
    platform.window = &view;
    AppModel model(platform, AppModel::Options{false});
    view.setModel(&model);
    model.initWithFrame();

    EXPECT_EQ(model.journey().myjournstr, (QStringList{"Central", "Strathfield", "Hornsby"}));
    ASSERT_EQ(model.journey().myservsmultid.size(), 2u);
    EXPECT_FALSE(model.journey().myservsmultid[1].empty());
    ASSERT_EQ(model.userstate().mybookmarks.size(), 1u);
    EXPECT_EQ(model.userstate().mybookmarks[0].markheader, "Bondi Junction");
    EXPECT_EQ(model.userstate().myfavs.size(), 3u);
}
