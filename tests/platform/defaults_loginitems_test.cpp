#include "platform/system/qsettingsdefaults.h"
#include "platform/system/xdgloginitems.h"
#include "support/test_env.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

using namespace quendle;
using namespace quendle::testsupport;

namespace {

void writebytes(const QString& path, const QByteArray& bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write(bytes);
}

QString readtext(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? QString::fromUtf8(f.readAll()) : QString();
}

} // namespace

TEST(Defaults, TextSurvivesANewStoreAndTheFileLivesInTheConfigFolder)
{
    TempHome home;
    ASSERT_TRUE(home.isValid());
    ScopedEnv config("XDG_CONFIG_HOME", home.configDir().toUtf8());
    // Texts that INI files like to take apart: lists, quotes, escapes, type markers.
    const QList<QPair<QString, QString>> values = {
        {"journstrpref", "Bondi Junction,Edgecliff,Central"},
        {"bookmarkspref", "  \"quoted\" ; semicolon # hash\\backslash "},
        {"myfavsspref", "line one\nline two\ttab"},
        {"odd", "@Variant(\\0\\0\\0\\x7f)"},
        {"unicode", QString::fromUtf8("Wolli Creek \u2192 St Peters \u00e9")},
        {"runinitialsetup", "1"},
        {"empty", ""},
    };
    {
        QSettingsDefaults d;
        EXPECT_EQ(d.filePath(), home.configDir() + "/quendle/quendle.conf");
        for (const auto& [k, v] : values)
            d.setString(k, v);
        d.synchronize();
    }
    // Read back from a copy: a new path proves the text went through the file.
    ASSERT_TRUE(QFile::copy(home.configDir() + "/quendle/quendle.conf", home.file("copy.conf")));
    QSettingsDefaults again(home.file("copy.conf"));
    for (const auto& [k, v] : values) {
        EXPECT_TRUE(again.contains(k)) << k.toStdString();
        EXPECT_EQ(again.stringForKey(k), v) << k.toStdString();
    }
    EXPECT_FALSE(again.contains("waveheight"));
    EXPECT_EQ(again.stringForKey("waveheight"), "");
}

TEST(Defaults, ADamagedFileIsKeptBesideBeforeItIsWrittenAfresh)
{
    TempHome home;
    const QString path = home.file("settings/quendle.conf");
    // 29 KB of settings that Qt cannot read in full: once written again it would be 92 bytes.
    QByteArray damaged = "[Gen\x01\xff\xfe\njournstrpref=\"unterminated\n";
    while (damaged.size() < 29000)
        damaged += "bookmark" + QByteArray::number(damaged.size()) + "=Central|Redfern|Strathfield\n";
    damaged += QByteArray("\0\0\x02junk\xff=@Variant(\\0\\0\\x7f)\n", 22);
    writebytes(path, damaged);
    auto broken = [&] { return QDir(home.file("settings")).entryList({"quendle.conf.broken-*"}); };
    {
        QSettingsDefaults d(path);   // says so once
        EXPECT_EQ(d.stringForKey("journstrpref"), "");
        EXPECT_TRUE(broken().isEmpty());   // reading alone keeps no copy
        d.setString("runinitialsetup", "1");
        ASSERT_EQ(broken().size(), 1);
        EXPECT_EQ(d.brokenCopy(), home.file("settings/" + broken()[0]));
        d.synchronize();
        d.setString("other", "2");
        d.synchronize();
        EXPECT_FALSE(d.synchronizeFailed());
    }
    ASSERT_EQ(broken().size(), 1);
    QFile kept(home.file("settings/" + broken()[0]));
    ASSERT_TRUE(kept.open(QIODevice::ReadOnly));
    EXPECT_EQ(kept.readAll(), damaged);
    ASSERT_TRUE(QFile::copy(path, home.file("copy.conf")));
    EXPECT_EQ(QSettingsDefaults(home.file("copy.conf")).stringForKey("runinitialsetup"), "1");
    // The clean file written since is not damaged: no second copy.
    QSettingsDefaults(path).setString("third", "3");
    EXPECT_EQ(broken().size(), 1);

    // Where the copy cannot be made, nothing is written over the damaged file. (Root
    // writes into a read-only folder all the same, so only others can see this.)
    if (::geteuid() != 0) {
        const QString locked = home.file("locked/quendle.conf");
        writebytes(locked, damaged);
        QFile::setPermissions(home.file("locked"), QFile::ReadOwner | QFile::ExeOwner);
        {
            QSettingsDefaults d(locked);
            d.setString("runinitialsetup", "1");
            EXPECT_EQ(d.stringForKey("runinitialsetup"), "1");
            d.synchronize();
            EXPECT_TRUE(d.synchronizeFailed());
        }
        QFile::setPermissions(home.file("locked"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        QFile lockedFile(locked);
        ASSERT_TRUE(lockedFile.open(QIODevice::ReadOnly));
        EXPECT_EQ(lockedFile.readAll(), damaged);
    }

    // A FIFO in its place is moved aside, never read (it would block); a folder is left.
    const QString fifo = home.file("fifo/quendle.conf");
    QDir().mkpath(home.file("fifo"));
    ASSERT_EQ(::mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);
    {
        QSettingsDefaults d(fifo);
        EXPECT_EQ(d.stringForKey("k"), "");
        d.setString("k", "v");
        d.synchronize();
    }
    EXPECT_TRUE(QFileInfo(fifo).isFile());
    EXPECT_EQ(QDir(home.file("fifo")).entryList({"quendle.conf.broken-*"}, QDir::System).size(), 1);
    const QString folder = home.file("blocked/quendle.conf");
    QDir().mkpath(folder);
    QSettingsDefaults blocked(folder);
    EXPECT_EQ(blocked.stringForKey("k"), "");
    blocked.setString("k", "v");
    blocked.synchronize();   // says it cannot write
    EXPECT_TRUE(QFileInfo(folder).isDir());
}

TEST(LoginItems, RegistersAndUnregistersThisProgramOnly)
{
    TempHome home;
    const QString exe = "/opt/Trains & Co/quendle $beta/100% quendle";
    XdgLoginItems items(home.configDir(), exe);
    const QString entry = home.configDir() + "/autostart/quendle.desktop";
    EXPECT_EQ(items.entryPath(), entry);
    EXPECT_FALSE(items.launchOnLogin());

    items.setLaunchOnLogin(true);
    EXPECT_TRUE(items.launchOnLogin());
    const QString text = readtext(entry);
    for (const char* line : {"[Desktop Entry]\n", "\nType=Application\n", "\nName=Quendle\n",
                             "\nX-GNOME-Autostart-enabled=true\n", "\nHidden=false\n",
                             "\nExec=\"/opt/Trains & Co/quendle \\\\$beta/100%% quendle\"\n"})
        EXPECT_TRUE(text.contains(QString::fromUtf8(line))) << line << "\n" << text.toStdString();

    // Another copy of the program neither counts the entry as its own nor removes it.
    XdgLoginItems other(home.configDir(), "/usr/bin/quendle");
    EXPECT_FALSE(other.launchOnLogin());
    other.setLaunchOnLogin(false);
    EXPECT_TRUE(QFile::exists(entry));

    // The desktop's own switch for an autostart entry turns it off.
    writebytes(entry, text.toUtf8().replace("Hidden=false", "Hidden=true"));
    EXPECT_FALSE(items.launchOnLogin());

    items.setLaunchOnLogin(true);
    items.setLaunchOnLogin(false);
    EXPECT_FALSE(QFile::exists(entry));
    EXPECT_FALSE(items.launchOnLogin());
    items.setLaunchOnLogin(false);   // nothing to remove: still fine
}

TEST(LoginItems, ExecQuotingRoundTrips)
{
    EXPECT_EQ(XdgLoginItems::execValue("/usr/bin/quendle"), "/usr/bin/quendle");
    EXPECT_EQ(XdgLoginItems::execProgram("/usr/bin/quendle %U"), "/usr/bin/quendle");
    for (const QString path : {"/usr/bin/quendle", "/home/a b/quendle", "/x/\"q\"/`id`/$HOME/a\\b",
                               "/x/50%/y", "/x/tab\there", "/x/new\nline", "/x/(it's)#1;|<>*?~&"}) {
        const QString value = XdgLoginItems::execValue(path);
        EXPECT_FALSE(value.contains('\n')) << path.toStdString();
        EXPECT_EQ(XdgLoginItems::execProgram(value), path) << value.toStdString();
        EXPECT_EQ(XdgLoginItems::execProgram(value + " --flag"), path) << value.toStdString();
    }
    EXPECT_EQ(XdgLoginItems::execProgram("\"/never/closed"), "");
    EXPECT_EQ(XdgLoginItems::execProgram(""), "");
}
