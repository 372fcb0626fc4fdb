#include "util/files.h"
#include "util/text.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <climits>
#include <cmath>

#include <sys/stat.h>

using namespace quendle;

namespace {

QByteArray bytesof(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

void put(const QString& path, const QByteArray& bytes)
{
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly)) << qPrintable(path);
    f.write(bytes);
}

} // namespace

TEST(Text, RegexExtractionWithLookaround)
{
    const QString clock = "dep 5.07pm arr 12.3am";
    EXPECT_EQ(lumregextremeray(clock, "(?<=\\.)[0-9]{1,2}"), QStringList({"07", "3"}));
    EXPECT_EQ(lumregextremeray(clock, "[0-9]{1,2}(?=\\.)"), QStringList({"5", "12"}));
    EXPECT_EQ(lumregextremestr(clock, "(?<=\\.)[0-9]{1,2}"), "07");
    EXPECT_EQ(lumregextremestr(clock, "xyz"), "");
    EXPECT_TRUE(lumregextremeray(clock, "xyz").isEmpty());
    // Whole matches, not the captured group; positions hold past characters outside the BMP.
    EXPECT_EQ(lumregextremeray("abab", "(a)b"), QStringList({"ab", "ab"}));
    EXPECT_EQ(lumregextremestr(QString::fromUtf8("\xF0\x9F\x9A\x86 platform 12"), "[0-9]+"), "12");

    // A pattern that does not compile matches nothing and changes nothing.
    EXPECT_FALSE(lumregexvalid("([a-z"));
    EXPECT_TRUE(lumregexvalid("(?<=\\.)[0-9]{1,2}"));
    EXPECT_TRUE(lumregextremeray(clock, "([a-z").isEmpty());
    EXPECT_EQ(lumregextremestr(clock, "([a-z"), "");
    EXPECT_EQ(lumregexreplace(clock, "([a-z", "-"), clock);
    EXPECT_EQ(lumregexsplit(clock, "([a-z"), QStringList{clock});
}

TEST(Text, RegexSplitAndReplaceAll)
{
    EXPECT_EQ(lumregexsplit("a, b,,c", ",\\s*"), QStringList({"a", "b", "", "c"}));
    EXPECT_EQ(lumregexsplit("a|b|", "\\|"), QStringList({"a", "b", ""}));
    EXPECT_EQ(lumregexsplit("1a2b3", "([ab])"), QStringList({"1", "a", "2", "b", "3"}));
    EXPECT_EQ(lumregexreplace("17:05 and 8:30", "([0-9]+):([0-9]+)", "$2-$1"), "05-17 and 30-8");
    EXPECT_EQ(lumregexreplace("<b>x</b>", "<[^>]*>", ""), "x");
    EXPECT_EQ(lumregexreplace("17:05", "([0-9]+)", "$9"), "17:05");   // no group 9
}

TEST(Text, StringHelpers)
{
    EXPECT_EQ(lumstrreplace("a-b-c", "-", "+"), "a+b+c");
    EXPECT_EQ(lumstrreplace("abc", "", "x"), "abc");
    EXPECT_EQ(removespacesfromstring("  Bondi \t\t Junction\nline  "), "Bondi Junction\nline");
    EXPECT_EQ(removespacesfromstring(" \t "), "");

    EXPECT_FALSE(isthisinthat("", "abc"));
    EXPECT_FALSE(isthisinthat("abc", ""));
    EXPECT_FALSE(isthisinthat("", ""));
    EXPECT_TRUE(isthisinthat("abc", "xabcx"));
    EXPECT_TRUE(isthisinthat("xabcx", "abc"));
    EXPECT_FALSE(isthisinthat("ABC", "xabcx"));

    EXPECT_EQ(raytostring({"a", "b"}), "\na\nb\n");
    EXPECT_EQ(lumraytostr({"a", "b", "c"}), ",a,b,c");
    EXPECT_EQ(lumdisplaymutearray({"a"}), "zbzbzb");

    EXPECT_EQ(intvalue("07"), 7);
    EXPECT_EQ(intvalue("  -12abc"), -12);
    EXPECT_EQ(intvalue("+5"), 5);
    EXPECT_EQ(intvalue("abc"), 0);
    EXPECT_EQ(intvalue(""), 0);
    EXPECT_EQ(intvalue("99999999999"), INT_MAX);
    EXPECT_EQ(intvalue("-99999999999"), INT_MIN);
    EXPECT_FLOAT_EQ(floatvalue(" 151.2093\""), 151.2093f);
    EXPECT_FLOAT_EQ(floatvalue("-33.87,"), -33.87f);
    EXPECT_FLOAT_EQ(floatvalue("1e3"), 1000.f);
    EXPECT_FLOAT_EQ(floatvalue("x1"), 0.f);
    EXPECT_TRUE(std::isinf(floatvalue("1e999")));
    EXPECT_FLOAT_EQ(floatvalue("-1e-999"), 0.f);
}

TEST(Files, WriteReadCopyMove)
{
    QTemporaryDir tmp;
    ASSERT_TRUE(tmp.isValid());
    const QString dir = tmp.path() + "/";
    const QString text = QString::fromUtf8("Caf\xC3\xA9 \xE2\x9C\x93\nline 2");

    EXPECT_EQ(writefile(text, dir, "a.txt"), dir + "a.txt");
    EXPECT_EQ(readfile(dir + "a.txt"), text);
    EXPECT_EQ(bytesof(dir + "a.txt"), text.toUtf8());
    writefile("short", dir, "a.txt");   // replaces, no tail of the longer text left
    EXPECT_EQ(readfile(dir + "a.txt"), "short");
    EXPECT_EQ(writefile("x", dir + "missing/", "b.txt"), dir + "missing/b.txt");
    EXPECT_FALSE(lumexist(dir + "missing/b.txt"));

    EXPECT_EQ(readfile(dir + "none.txt"), "");
    EXPECT_EQ(readfile(tmp.path()), "");
    put(dir + "latin1.txt", "caf\xE9");   // not UTF-8: read in the local encoding instead
    EXPECT_TRUE(readfile(dir + "latin1.txt").startsWith("caf"));

    EXPECT_TRUE(lumexist(dir + "a.txt"));
    EXPECT_TRUE(lumexist(tmp.path()));
    EXPECT_FALSE(lumexist(dir + "none.txt"));
    EXPECT_FALSE(lumexist(""));

    EXPECT_TRUE(lumcopy(dir + "a.txt", dir + "c.txt"));
    EXPECT_EQ(readfile(dir + "c.txt"), "short");
    writefile("other", dir, "d.txt");
    EXPECT_FALSE(lumcopy(dir + "a.txt", dir + "d.txt"));
    EXPECT_EQ(readfile(dir + "d.txt"), "other");
    EXPECT_FALSE(lumcopy(dir + "none.txt", dir + "e.txt"));

    lummove(dir + "c.txt", dir + "moved.txt");
    EXPECT_FALSE(lumexist(dir + "c.txt"));
    EXPECT_EQ(readfile(dir + "moved.txt"), "short");

    // One level only, with or without the trailing slash.
    EXPECT_TRUE(lummakedir(dir + "one/"));
    EXPECT_TRUE(QFileInfo(dir + "one").isDir());
    EXPECT_TRUE(lummakedir(dir + "two/three"));
    EXPECT_FALSE(lumexist(dir + "two"));
}

TEST(Files, DeleteOnlyInsideThePreferencesFolder)
{
    QTemporaryDir tmp;
    ASSERT_TRUE(tmp.isValid());
    const QString prefs = tmp.path() + "/prefs/";
    ASSERT_TRUE(QDir().mkpath(prefs + "sub/deeper"));
    ASSERT_TRUE(QDir().mkpath(tmp.path() + "/elsewhere"));
    put(prefs + "a.txt", "a");
    put(prefs + "sub/deeper/b.txt", "b");
    put(tmp.path() + "/elsewhere/keep.txt", "k");

    EXPECT_FALSE(lumdelete(tmp.path() + "/elsewhere/keep.txt", prefs, false));
    EXPECT_TRUE(lumexist(tmp.path() + "/elsewhere/keep.txt"));
    // The folder above contains the preferences folder's name as text but is not inside it.
    EXPECT_FALSE(lumdelete(tmp.path(), prefs, false));
    EXPECT_FALSE(lumdelete("/", prefs, false));
    EXPECT_FALSE(lumdelete(prefs + "a.txt", "", false));
    EXPECT_TRUE(lumexist(prefs + "a.txt"));

    EXPECT_TRUE(lumdelete(prefs + "a.txt", prefs, false));
    EXPECT_FALSE(lumexist(prefs + "a.txt"));
    EXPECT_FALSE(lumdelete(prefs + "a.txt", prefs, false));   // already gone

    // A link inside goes, never what it points at.
    ASSERT_TRUE(QFile::link(tmp.path() + "/elsewhere", prefs + "link"));
    EXPECT_TRUE(lumdelete(prefs + "link", prefs, false));
    EXPECT_TRUE(lumexist(tmp.path() + "/elsewhere/keep.txt"));

    EXPECT_TRUE(lumdelete(prefs + "sub", prefs, false));
    EXPECT_FALSE(lumexist(prefs + "sub"));

    EXPECT_TRUE(lumdelete(tmp.path() + "/elsewhere", prefs, true));   // publisher mode
    EXPECT_FALSE(lumexist(tmp.path() + "/elsewhere"));
}

// Only regular files are read, and only up to the limit: a device, a FIFO or a folder
// reads as nothing at once (it never blocks or reads without end) and says why.
TEST(Files, ReadsOnlyRegularFilesUnderTheLimit)
{
    QTemporaryDir dir;
    const QString fifo = dir.filePath("pipe.vq");
    ASSERT_EQ(::mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);
    QByteArray bytes = "old";
    QString why;
    const std::vector<std::pair<QString, QString>> refused = {
        {fifo, "is a FIFO (named pipe)"},
        {"/dev/zero", "is a device"},
        {dir.path(), "is a folder"},
        {dir.filePath("missing"), "does not exist"},
        {"", "has no name"},
    };
    for (const auto& [path, reason] : refused) {
        EXPECT_FALSE(readfilebytes(path, &bytes, &why)) << qPrintable(path);
        EXPECT_EQ(why, reason);
        EXPECT_TRUE(bytes.isEmpty());
        EXPECT_EQ(readfile(path), "");
    }
    writefile("twelve bytes", dir.path() + "/", "twelve.txt");
    EXPECT_TRUE(readfilebytes(dir.filePath("twelve.txt"), &bytes, &why, 12));
    EXPECT_EQ(bytes, "twelve bytes");
    EXPECT_FALSE(readfilebytes(dir.filePath("twelve.txt"), &bytes, &why, 11));
    EXPECT_EQ(why, "is larger than 11 bytes");
    // Files that claim no size are read to their end, never past the limit.
    EXPECT_TRUE(readfilebytes("/proc/self/status", &bytes, &why));
    EXPECT_FALSE(bytes.isEmpty());
    // A link to a regular file is that file; copying a FIFO is refused, not waited on.
    ASSERT_TRUE(QFile::link(dir.filePath("twelve.txt"), dir.filePath("link.txt")));
    EXPECT_EQ(readfile(dir.filePath("link.txt")), "twelve bytes");
    EXPECT_FALSE(lumcopy(fifo, dir.filePath("copy.vq")));
}
