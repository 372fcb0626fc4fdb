#include "platform/system/qsettingsdefaults.h"
#include "platform/system/settingstext.h"
#include "support/test_env.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QLockFile>
#include <QSettings>

#include <gtest/gtest.h>

using namespace quendle;
using namespace quendle::testsupport;

namespace {

QByteArray readbytes(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

void writebytes(const QString& path, const QByteArray& bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write(bytes);
}

// Values the settings hold in practice and texts an INI file likes to take apart.
const QMap<QString, QString>& awkwardvalues()
{
    static const QMap<QString, QString> values = {
        {"journstrpref", "Bondi Junction|Edgecliff|Central|"},
        {"bookmarkspref", "Central,Redfern|Strathfield,Lidcombe|"},
        {"myfavsspref", "  \"quoted\" ; semicolon # hash\\backslash = equals "},
        {"lines", "line one\nline two\ttab\r\x01\x1f" + QString(QChar(0)) + "7"},
        {"at", "@Variant(\\0\\0\\0\\x7f)"},
        {"atat", "@@twice"},
        {"bom", QString::fromUtf8("\uFEFFmark \uFEFF")},
        {"unicode", QString::fromUtf8("Wolli Creek \u2192 St Peters \u00e9 \U0001F686")},
        {"empty", ""},
        {"runinitialsetup", "1"},
        {"operatorurl", "https://example.org/a?b=c;d,e"},
        {"key with spaces and \u00e9", "v"},
        {"General/odd", "in a section called General"},
        {"section/key", "in a section"},
        {"section/sub/key", "deeper"},
        {"%percent", "100%"},
    };
    return values;
}

} // namespace

// The file stays readable by Qt's own INI settings and reads what they wrote: a file from
// an earlier version (which used them) keeps its journey, and one written now reads there.
TEST(SettingsText, ReadsAndWritesTheLayoutOfQtsIniSettings)
{
    TempHome home;
    ASSERT_TRUE(home.isValid());
    const QString fromqt = home.file("fromqt.conf");
    {
        QSettings qt(fromqt, QSettings::IniFormat);
        for (auto it = awkwardvalues().constBegin(); it != awkwardvalues().constEnd(); ++it)
            qt.setValue(it.key(), it.value());
        qt.setValue("list", QStringList{"a", " b ", "c,d"});
        qt.sync();
        ASSERT_EQ(qt.status(), QSettings::NoError);
    }
    SettingsText read = readsettingstext(readbytes(fromqt));
    EXPECT_FALSE(read.damaged);
    for (auto it = awkwardvalues().constBegin(); it != awkwardvalues().constEnd(); ++it)
        EXPECT_EQ(read.values.value(it.key()), it.value()) << it.key().toStdString();
    // A list reads as its items joined, as the store always gave it.
    EXPECT_EQ(read.values.value("list"), "a, b ,c,d");

    // Written here, read by Qt: the same values, and by this reader again, the same.
    const QByteArray written = writesettingstext(awkwardvalues());
    const QString ours = home.file("ours.conf");
    writebytes(ours, written);
    QSettings qt(ours, QSettings::IniFormat);
    ASSERT_EQ(qt.status(), QSettings::NoError);
    EXPECT_EQ(qt.allKeys().size(), awkwardvalues().size());
    for (auto it = awkwardvalues().constBegin(); it != awkwardvalues().constEnd(); ++it)
        EXPECT_EQ(qt.value(it.key()).toString(), it.value()) << it.key().toStdString();
    read = readsettingstext(written);
    EXPECT_FALSE(read.damaged);
    EXPECT_EQ(read.values, awkwardvalues());

    // Hand edits Qt accepts read the same here.
    read = readsettingstext("\xef\xbb\xbf; a comment\n  [General]  \r\n  journstrpref = Central|Redfern| ; note\n"
                            "myskippref=\"  kept  \"\n[section]\nkey=\"a\" \"b\"\n");
    EXPECT_FALSE(read.damaged);
    EXPECT_EQ(read.values.value("journstrpref"), "Central|Redfern|");
    EXPECT_EQ(read.values.value("myskippref"), "  kept  ");
    EXPECT_EQ(read.values.value("section/key"), "ab");
    // Slashes part keys as Qt's settings do: empty parts vanish, an empty key is no key.
    read = readsettingstext("%2F=\n[a//b/]\n\\c=1\n[x]\n%2F%2F=\n");
    EXPECT_EQ(read.values, (QMap<QString, QString>{{"a/b/c", "1"}}));
    EXPECT_EQ(readsettingstext(writesettingstext(read.values)).values, read.values);
}

// Serialized values are where Qt's reader trusts a length from the file: one such line
// once asked for 60 GB. Here they read as missing and mark the file damaged, so it is
// kept before anything is saved over it; the rest of the file still reads.
TEST(SettingsText, HostileOrBrokenTextReadsWhatItCanAndSaysItIsDamaged)
{
    const QByteArray hostile = QByteArray::fromBase64("W0dlCj1AVmFyaWFudCgAAAAJeH5mKRNhbnhAZik=");
    QElapsedTimer timer;
    timer.start();
    SettingsText read = readsettingstext(hostile);
    EXPECT_TRUE(read.damaged);
    EXPECT_TRUE(read.values.isEmpty());

    const QList<QByteArray> damaged = {
        "journstrpref=Central|\nsize=@Size(10 20)\n",
        "journstrpref=Central|\nwhen=@DateTime(\\0\\0\\0\\x10\\0\\0\\0\\0)\n",
        "journstrpref=Central|\nv=@Variant(\\0\\0\\0\\n\\xff\\xff\\xff\\xfe)\n",
        "journstrpref=Central|\n[unclosed\n",
        "journstrpref=Central|\nno equals sign here\n",
        "journstrpref=Central|\nopen=\"quote never closed\n",
        "journstrpref=Central|\nbytes=\xff\xfe\n",
        "journstrpref=Central|\n[General] trailing words\n",
    };
    for (const QByteArray& text : damaged) {
        read = readsettingstext(text);
        EXPECT_TRUE(read.damaged) << text.toStdString();
        EXPECT_EQ(read.values.value("journstrpref"), "Central|") << text.toStdString();
    }
    // A million lines of nonsense, and deep runs of escapes, read in linear time.
    read = readsettingstext(QByteArray("=\"\\x[\n").repeated(1 << 20) + QByteArray(1 << 20, '\\'));
    EXPECT_TRUE(read.damaged);
    EXPECT_LT(timer.elapsed(), 20000);   // generous: a hang, not a speed target
}

TEST(Defaults, AHostileSettingsFileIsKeptAndTheStoreSavesAfresh)
{
    TempHome home;
    const QString path = home.file("cfg/quendle.conf");
    const QByteArray hostile = QByteArray::fromBase64("W0dlCj1AVmFyaWFudCgAAAAJeH5mKRNhbnhAZik=")
        + "\n[General]\njournstrpref=Central|Redfern|\n";
    writebytes(path, hostile);
    {
        QSettingsDefaults d(path);
        EXPECT_EQ(d.stringForKey("journstrpref"), "Central|Redfern|");
        d.setString("runinitialsetup", "1");
        d.synchronize();
        EXPECT_FALSE(d.synchronizeFailed());
        ASSERT_FALSE(d.brokenCopy().isEmpty());
        EXPECT_EQ(readbytes(d.brokenCopy()), hostile);
    }
    const SettingsText saved = readsettingstext(readbytes(path));
    EXPECT_FALSE(saved.damaged);
    EXPECT_EQ(saved.values.value("journstrpref"), "Central|Redfern|");
    EXPECT_EQ(saved.values.value("runinitialsetup"), "1");
}

// The strip and quendle-cli may hold the file at once: each save keeps what the other wrote
// meanwhile, and a lock left by a program that died holds a save up only briefly.
TEST(Defaults, TwoStoresOnOneFileKeepEachOthersChanges)
{
    TempHome home;
    const QString path = home.file("cfg/quendle.conf");
    QSettingsDefaults strip(path);
    QSettingsDefaults cli(path);
    strip.setString("journstrpref", "Central|Redfern|");
    strip.synchronize();
    cli.setString("bookmarkspref", "Central,Strathfield|");
    cli.synchronize();
    strip.setString("myfavsspref", "fav");
    strip.synchronize();
    EXPECT_EQ(strip.stringForKey("bookmarkspref"), "Central,Strathfield|");
    cli.synchronize();   // nothing of its own to write: takes in the strip's
    EXPECT_EQ(cli.stringForKey("myfavsspref"), "fav");
    QSettingsDefaults fresh(path);
    EXPECT_EQ(fresh.stringForKey("journstrpref"), "Central|Redfern|");
    EXPECT_EQ(fresh.stringForKey("bookmarkspref"), "Central,Strathfield|");
    EXPECT_EQ(fresh.stringForKey("myfavsspref"), "fav");

    // An empty lock file is what a kill between making it and filling it leaves.
    writebytes(path + ".lock", QByteArray());
    strip.setString("journstrpref", "Central|Lidcombe|");
    strip.synchronize();
    EXPECT_FALSE(strip.synchronizeFailed());
    EXPECT_EQ(QSettingsDefaults(path).stringForKey("journstrpref"), "Central|Lidcombe|");

}
