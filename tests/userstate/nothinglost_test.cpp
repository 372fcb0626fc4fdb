#include "fixture.h"
#include "savestates.h"

#include "platform/system/qsettingsdefaults.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QThread>

#include <csignal>
#include <random>

#include <sys/resource.h>
#include <unistd.h>

using namespace quendle;
using namespace quendle::testsupport;

namespace {

// The line structure of a preferences file, whatever it holds.
bool wellformed(const QString& text)
{
    static const QRegularExpression shape(
        "\\A[^\\n]*\\n\\n\\]favourites\\[[^\\n]*\\]favourites\\[\\n\\]bookmarks\\[[^\\n]*\\]bookmarks\\[\\n"
        "\\]dateimlookinat\\[[0-9|]*\\]dateimlookinat\\[(\\n\\]myalarm\\[[^\\n]*\\]myalarm\\[)?\\n"
        "\\]updatestr\\[[0-9|]+\\]updatestr\\[\\n\\]mysize\\[[0-9.|]+\\]mysize\\[\\z");
    return shape.match(text).hasMatch();
}

QString binary(int bytes, unsigned seed)
{
    std::mt19937 gen(seed);
    QByteArray b(bytes, '\0');
    for (char& c : b)
        c = static_cast<char>(gen());
    return QString::fromLatin1(b);
}

// Writes beyond a few bytes fail as on a full disk, until destroyed.
class FullDisk {
public:
    explicit FullDisk(rlim_t bytes)
    {
        getrlimit(RLIMIT_FSIZE, &old_);
        oldHandler_ = std::signal(SIGXFSZ, SIG_IGN);
        rlimit r = old_;
        r.rlim_cur = bytes;
        setrlimit(RLIMIT_FSIZE, &r);
    }
    ~FullDisk()
    {
        setrlimit(RLIMIT_FSIZE, &old_);
        std::signal(SIGXFSZ, oldHandler_);
    }

private:
    rlimit old_{};
    void (*oldHandler_)(int) = nullptr;
};

// Waits until the process has stopped (a stop signal takes effect asynchronously).
bool stopped(pid_t pid)
{
    for (int i = 0; i < 5000; ++i) {
        QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
        if (!stat.open(QIODevice::ReadOnly))
            return false;
        const QByteArray text = stat.readAll();
        const qsizetype close = text.lastIndexOf(')');
        if (close >= 0 && text.mid(close + 2, 1) == "T")
            return true;
        QThread::usleep(200);
    }
    return false;
}

} // namespace

TEST_F(UserStateTest, DamagedDefaultsReadAsTheirFallbacksAndTheNextSaveIsClean)
{
    const QStringList defaultJourney = {"Bondi Junction", "Edgecliff"};
    struct Case {
        const char* what;
        QString journey, bookmarks, favourites;
        QStringList expected;
    };
    const QString huge = QString("Central|").repeated(4 << 20);   // 32 MB of text
    const Case cases[] = {
        {"truncated", "Central|Strath", "Hornsby|Epp", "Central|2#Redfern|", {"Central"}},
        {"binary", binary(4096, 1), binary(4096, 2), binary(4096, 3), {}},
        {"huge", huge, huge, huge, defaultJourney},
        {"unknown stations", "Nowhere|Atlantis|", "Nowhere|Atlantis", "Nowhere|4#", {}},
        {"empty", "", "", "", {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        defaults.setString("journstrpref", c.journey);
        defaults.setString("bookmarkspref", c.bookmarks);
        defaults.setString("myfavsspref", c.favourites);
        start(at(8, 0));
        EXPECT_EQ(j().myjournstr, c.expected);
        EXPECT_TRUE(wellformed(prefsfile())) << prefsfile().left(300).toStdString();
        EXPECT_EQ(defaults.stringForKey("journstrpref"), u().journeytext());
        EXPECT_LT(defaults.stringForKey("bookmarkspref").size(), 100);
    }
}

TEST_F(UserStateTest, ADamagedFileReadsWithoutHarm)
{
    start(at(8, 0));
    const QString path = u().getprefspath();
    const QString good = prefsfile();
    const QList<QByteArray> damaged = {
        good.left(good.size() / 2).toUtf8(),                          // truncated
        binary(65536, 7).toLatin1(),                                  // binary
        "Nowhere|Atlantis|\n\n]favourites[x]favourites[\n]myalarm[a#b#c#d]myalarm[",
        QByteArray("Central|").repeated(4 << 20),                     // 32 MB
    };
    for (const QByteArray& bytes : damaged) {
        QFile f(path);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(bytes);
        f.close();
        j().myjournstr = {"Central", "Strathfield"};
        u().readprefsold();
        EXPECT_LE(j().myjournstr.size(), j().maxlegs);
        u().writeprefs();
        EXPECT_TRUE(wellformed(prefsfile())) << prefsfile().left(300).toStdString();
    }
    // Too big to be a preferences file: read as nothing, the journey stays.
    EXPECT_EQ(j().myjournstr, (QStringList{"Central", "Strathfield"}));
}

TEST_F(UserStateTest, AFullDiskOrAnUnwritableFileKeepsTheOldFileAndTheJourneyInMemory)
{
    start(at(8, 0));
    const QString path = u().getprefspath();
    const QString old = prefsfile();
    ASSERT_FALSE(old.isEmpty());
    j().myjournstr = {"Central", "Strathfield"};
    {
        FullDisk full(16);
        u().writeprefs();
    }
    EXPECT_FALSE(u().lastsaveok());
    EXPECT_EQ(prefsfile(), old);
    EXPECT_EQ(j().myjournstr, (QStringList{"Central", "Strathfield"}));

    ASSERT_TRUE(QFile::remove(path));
    ASSERT_TRUE(QDir().mkdir(path));
    app->calctripoptimizelater();
    EXPECT_FALSE(u().lastsaveok());
    EXPECT_TRUE(QFileInfo(path).isDir());
    EXPECT_EQ(defaults.stringForKey("journstrpref"), "Central|Strathfield|");

    if (geteuid() != 0) {   // permissions do not hold back the superuser
        QDir().rmdir(path);
        const QString folder = app->folders().getprefsfold();
        QFile::setPermissions(folder, QFileDevice::ReadOwner | QFileDevice::ExeOwner);
        u().writeprefs();
        EXPECT_FALSE(u().lastsaveok());
        QFile::setPermissions(folder, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    }
}

// A process that saves both stores in a loop is killed at random moments: each store
// then holds one complete state, the old one or the new one, never a mixture.
TEST(SaveKilled, EachStoreHoldsTheOldOrTheNewStateAfterAKillMidSave)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString settings = dir.filePath("quendle.conf");

    // What the two states look like, made the same way the saver makes them.
    MemoryDefaults memory;
    SaveRig rig(dir.path(), memory);
    QStringList files, journeys, favourites, bookmarks;
    for (int which : {0, 1}) {
        rig.setstate(which);
        files << rig.u.prefsfiletext();
        journeys << rig.u.journeytext();
        favourites << rig.u.favouritestext();
        bookmarks << rig.u.bookmarkstext();
    }

    auto check = [&] {
        EXPECT_TRUE(files.contains(readfile(rig.u.getprefspath())));
        QSettingsDefaults stored(settings);
        EXPECT_TRUE(journeys.contains(stored.stringForKey("journstrpref")));
        EXPECT_TRUE(favourites.contains(stored.stringForKey("myfavsspref")));
        EXPECT_TRUE(bookmarks.contains(stored.stringForKey("bookmarkspref")));
    };
    // Stopping the saver shows the stores as a kill at that moment would leave them; many
    // such moments per process, then the kill itself.
    std::mt19937 gen(20261124);
    std::uniform_int_distribution<int> pause(0, 4000);
    for (int round = 0; round < 5; ++round) {
        SCOPED_TRACE(round);
        QProcess saver;
        saver.start(QStringLiteral(QUENDLE_SAVER), {dir.path(), settings});
        ASSERT_TRUE(saver.waitForReadyRead(30000)) << saver.errorString().toStdString();
        const pid_t pid = static_cast<pid_t>(saver.processId());
        for (int moment = 0; moment < 60; ++moment) {
            QThread::usleep(pause(gen));
            ::kill(pid, SIGSTOP);
            ASSERT_TRUE(stopped(pid));
            check();
            ::kill(pid, SIGCONT);
        }
        QThread::usleep(pause(gen));
        saver.kill();
        saver.waitForFinished();
        check();
    }
}
