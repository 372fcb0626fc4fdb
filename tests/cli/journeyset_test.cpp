// quendle-cli as a user runs it, one process per command, in a home folder of its own
// inside the build tree: what journey set saves is what every later run reads.

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

class CliUser : public ::testing::Test {
protected:
    struct Run {
        int status = -1;
        QString out, err;
    };
    Run cli(const QStringList& args)
    {
        QProcess p;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("HOME", home.path());
        env.insert("XDG_CONFIG_HOME", home.path() + "/.config");
        env.insert("XDG_DATA_HOME", home.path() + "/.local/share");
        env.insert("QUENDLE_NOW", "2026-11-24T08:00:00");
        p.setProcessEnvironment(env);
        p.start(qEnvironmentVariable("QUENDLE_CLI"), args);
        p.closeWriteChannel();
        Run r;
        if (!p.waitForFinished(120000))
            return r;
        r.status = p.exitCode();
        r.out = QString::fromUtf8(p.readAllStandardOutput());
        r.err = QString::fromUtf8(p.readAllStandardError());
        return r;
    }
    QByteArray settings() const
    {
        QFile f(home.path() + "/.config/quendle/quendle.conf");
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
    }
    // The test environment's home folder lies in the build tree; it may not exist yet.
    QTemporaryDir home{[] {
        const QString h = qEnvironmentVariable("HOME");
        QDir().mkpath(h);
        return h + "/cli-user-XXXXXX";
    }()};
};

} // namespace

TEST_F(CliUser, AJourneySetIsWhatLaterRunsShowWithItsBookmarkAndFavourites)
{
    ASSERT_TRUE(home.isValid());
    Run r = cli({"journey", "set", "Central|Strathfield|Hornsby"});
    ASSERT_EQ(r.status, 0) << r.err.toStdString();
    EXPECT_EQ(cli({"journey"}).out, "Central\nStrathfield\nHornsby\n");
    r = cli({"next"});
    EXPECT_TRUE(r.out.startsWith("Journey: Central → Strathfield → Hornsby\n")) << r.out.toStdString();
    // The journey it replaced became a bookmark; each station chosen was counted.
    EXPECT_EQ(cli({"bookmarks"}).out, "Bondi Junction|Edgecliff\n");
    EXPECT_EQ(cli({"favourites"}).out, "Central\t1\toffered\nHornsby\t1\toffered\nStrathfield\t1\toffered\n");

    const QJsonObject o = QJsonDocument::fromJson(cli({"dump"}).out.toUtf8()).object();
    EXPECT_EQ(o["myfavs"].toArray().size(), 3);
    EXPECT_EQ(o["myfavstoshow"].toArray()[0].toObject()["name"].toString(), "Central");
    EXPECT_EQ(o["mybookmarks"].toArray()[0].toObject()["markheader"].toString(), "Bondi Junction");
    EXPECT_TRUE(o["myalarms"].toArray().isEmpty());
    EXPECT_EQ(o["alarmdefaultmins"].toInt(), 20);
    EXPECT_EQ(o["inalarmscreen"].toInt(), 0);
    EXPECT_EQ(o["ivereadprefs"].toInt(), 1);

    // Unknown stations are refused with the nearest names, and nothing is saved; no
    // other command saves anything either.
    const QByteArray before = settings();
    r = cli({"journey", "set", "Central|Hornsbee"});
    EXPECT_EQ(r.status, 2);
    EXPECT_TRUE(r.err.contains("Hornsby")) << r.err.toStdString();
    EXPECT_EQ(cli({"--journey", "Redfern|Central", "next"}).status, 0);
    EXPECT_EQ(cli({"journey", "set", "Central|Redfern|Strathfield|Epping|Hornsby|Gordon|Wynyard|Town Hall"}).status, 2);
    EXPECT_EQ(cli({"journey", "set"}).status, 2);
    EXPECT_EQ(settings(), before);

    // Across two lines: the change station is part of the saved journey.
    r = cli({"journey", "set", "Bondi Junction|Parramatta"});
    ASSERT_EQ(r.status, 0) << r.err.toStdString();
    const QStringList saved = cli({"journey"}).out.split('\n', Qt::SkipEmptyParts);
    ASSERT_EQ(saved.size(), 3);
    EXPECT_EQ(saved.front(), "Bondi Junction");
    EXPECT_EQ(saved.back(), "Parramatta");
    EXPECT_EQ(cli({"bookmarks"}).out, "Bondi Junction|Edgecliff\nCentral|Strathfield|Hornsby\n");
    EXPECT_TRUE(cli({"favourites"}).out.contains("Parramatta\t1\toffered\n"));
}

TEST_F(CliUser, ASaveThatCannotBeWrittenSaysSo)
{
    ASSERT_TRUE(home.isValid());
    // The preferences file's place is taken by a folder.
    ASSERT_TRUE(QDir(home.path()).mkpath("Library/Preferences/quendlefddffdrterXAXAXA/quendlepref.txt"));
    const Run r = cli({"journey", "set", "Central|Redfern"});
    EXPECT_EQ(r.status, 1);
    EXPECT_TRUE(r.err.contains("could not be saved")) << r.err.toStdString();
}
