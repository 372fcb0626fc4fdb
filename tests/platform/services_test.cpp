#include "platform/desktop/logindsession.h"
#include "platform/system/nullservices.h"
#include "platform/system/processspeech.h"
#include "support/test_env.h"

#include <QFile>

#include <gtest/gtest.h>

#include <cstdio>

using namespace quendle;
using namespace quendle::testsupport;

TEST(Speech, TheSentenceReachesTheFirstProgramFoundAsOneArgumentWithoutAShell)
{
    ensureCoreApp();
    TempHome dir;
    const QString out = dir.file("said.txt");
    const QString fake = dir.file("espeak-ng");
    {
        QFile f(fake);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        // Writes its argument count and arguments, one per line, then renames into place.
        f.write(QString("#!/bin/sh\nprintf '%s\\n' \"$#\" \"$@\" > '%1.tmp' && mv '%1.tmp' '%1'\n").arg(out).toUtf8());
        f.close();
        f.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    ProcessSpeech speech({"spd-say", "espeak-ng", "espeak"}, {dir.path()});
    EXPECT_EQ(speech.program(), fake);

    const QString sentence = "It's \"5:07\"; $(touch " + dir.file("pwned") + ") `id` & now";
    speech.say(sentence);
    ASSERT_TRUE(waitUntil([&] { return QFile::exists(out); }));
    QFile said(out);
    ASSERT_TRUE(said.open(QIODevice::ReadOnly));
    EXPECT_EQ(QString::fromUtf8(said.readAll()), "1\n" + sentence + "\n");
    EXPECT_FALSE(QFile::exists(dir.file("pwned")));

    // A leading dash must not turn into an option.
    QFile::remove(out);
    speech.say("-5 minutes");
    ASSERT_TRUE(waitUntil([&] { return QFile::exists(out); }));
    said.close();
    ASSERT_TRUE(said.open(QIODevice::ReadOnly));
    EXPECT_EQ(QString::fromUtf8(said.readAll()), "1\n -5 minutes\n");

    ProcessSpeech none({"no-such-synthesiser"}, {dir.path()});
    EXPECT_FALSE(none.available());
    none.say("hello");   // one warning
    none.say("hello");
}

TEST(Session, SleepWakeAndActivationReachTheHandlers)
{
    ensureCoreApp();
    LogindSession bus;   // no system bus in a container: logs once and carries on
    LogindSession session(false);
    QStringList seen;
    session.notifyActive(true);   // before any handlers: nothing to call, no crash
    session.prepareForSleep(true);
    session.setHandlers({[&] { seen << "sleep"; }, [&] { seen << "wake"; }, [&] { seen << "active"; },
                         [&] { seen << "resign"; }});
    session.notifyActive(true);   // already active
    session.notifyActive(false);
    session.notifyActive(false);  // inactive, then hidden: one resignation
    session.prepareForSleep(true);
    session.prepareForSleep(false);
    session.notifyActive(true);
    EXPECT_EQ(seen, QStringList({"resign", "sleep", "wake", "active"}));
}

TEST(Console, AlertsArePrintedWithoutControlCharactersAndTakeTheFirstButton)
{
    std::FILE* out = std::tmpfile();
    ASSERT_NE(out, nullptr);
    ConsoleAlerts alerts(out);
    EXPECT_EQ(alerts.alert("New timetable\x1b[2J ready", "Install it?", {"Install", "Later"}), 0);
    EXPECT_EQ(alerts.alert("Alarm", "", {}), 0);
    std::rewind(out);
    char buf[512] = {};
    const size_t n = std::fread(buf, 1, sizeof buf - 1, out);
    std::fclose(out);
    EXPECT_EQ(QString::fromUtf8(buf, static_cast<qsizetype>(n)),
              "quendle: New timetable [2J ready\n  Install it?\n  [Install] [Later] -> Install\nquendle: Alarm\n");
}
