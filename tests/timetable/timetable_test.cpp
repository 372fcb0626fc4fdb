#include "timetable/tablefile.h"
#include "timetable/timetable.h"
#include "util/dates.h"
#include "util/files.h"
#include "support/tables.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <random>

#include <sys/stat.h>

using namespace quendle;

namespace {

// 9 March 2014 was a Sunday.
Date day(int d, int m = 3, int y = 2014) { return datefromcivil({y, m, d, 12, 0, 0}); }

QString header(const QString& date) { return fixtures::tableheader(date); }
using fixtures::dayblock;
using fixtures::lineblock;

const QString kHill = "North Hill|151.2101|-33.8702,Mid Cross|151.2187|-33.8791,South Vale|151.2299|-33.8866";
const QString kRiver = "South Vale|151.2299|-33.8866,Ash Park|151.1|-33.9,Mid Cross|151.2187|-33.8791";

QString sampletable(const QString& date = "3 March 2014 10:15:00 AM")
{
    return header(date)
        + lineblock("Hill Line#North Hill to South Vale", kHill,
                    {dayblock("12345", {"512,519,527,}", "2350,-1,2404,}"}), dayblock("6", {"900,907,915,}"}),
                     dayblock("06", {"1000,1007,1015,}"}), dayblock("0", {"700,707,715,}"})})
        + lineblock("River Line#South Vale to Mid Cross", kRiver, {dayblock("0123456", {"600,610,620,}"})})
        + "\n</timetable>";
}

QString write(const QString& dir, const QString& name, const QString& text)
{
    return fixtures::writeto(dir, name, text);
}

std::vector<int> departures(const Rows& rows)
{
    std::vector<int> out;
    for (const Row& r : rows)
        if (r.size() > 1)
            out.push_back(r[0]);
    return out;
}

} // namespace

TEST(TableFile, ValidityCountsHeadersTrailerAndLength)
{
    QTemporaryDir dir;
    EXPECT_TRUE(isthisavalidtable(write(dir.path(), "a.vq", sampletable())));
    // One line header only: not valid, however long the file.
    const QString one = header("3 March 2014 1:00:00 AM")
        + lineblock("Hill Line#x", kHill, {dayblock("1", {"1,2,3,}"})}) + "\n</timetable>";
    EXPECT_FALSE(isthisavalidtable(write(dir.path(), "b.vq", one)));
    // No trailer: only one line mentions timetable.
    QString noTrailer = sampletable();
    noTrailer.chop(QString("\n</timetable>").size());
    EXPECT_FALSE(isthisavalidtable(write(dir.path(), "c.vq", noTrailer)));
    // Two headers and a trailer squeezed into five lines is too short.
    EXPECT_FALSE(isthisavalidtable(write(dir.path(), "d.vq",
        "timetable\nline name\nline name\n</timetable>\n")));
    EXPECT_TRUE(isthisavalidtable(write(dir.path(), "e.vq",
        "timetable\nline name\nline name\n\n\n</timetable>")));
    EXPECT_FALSE(isthisavalidtable(dir.path() + "/missing.vq"));
}

TEST(TableFile, CarriageReturnFilesReadLikeNewlineFiles)
{
    QTemporaryDir dir;
    QString crText = sampletable();
    crText.replace('\n', '\r');
    const QString nl = write(dir.path(), "nl.vq", sampletable());
    const QString cr = write(dir.path(), "cr.vq", crText);
    EXPECT_TRUE(isthisavalidtable(cr));
    EXPECT_EQ(getdatefromtablefile(cr), getdatefromtablefile(nl));
    const QStringList lines = splittablelines(readfile(cr));
    EXPECT_EQ(linetimesfromlines(lines, "Hill Line#North Hill to South Vale", 1),
              linetimesfromlines(splittablelines(readfile(nl)), "Hill Line#North Hill to South Vale", 1));
}

TEST(TableFile, HeaderDateAndItsSentinel)
{
    QTemporaryDir dir;
    const QString p = write(dir.path(), "a.vq", sampletable("3 March 2014 10:15:00 AM"));
    EXPECT_EQ(getdatefromtablefile(p), "3 March 2014 10:15:00 AM");
    const CivilTime c = civilfromdate(getnsdatefromtablefile(p));
    EXPECT_EQ(c.year, 2014);
    EXPECT_EQ(c.month, 3);
    EXPECT_EQ(c.day, 3);
    EXPECT_EQ(c.hour, 0);
    // Fewer than five pieces: the 1800 sentinel that sorts before every real table.
    const Date sentinel = tabledatetodate("22 nov 1800 x y");
    EXPECT_EQ(tabledatetodate("3 March 2014"), sentinel);
    EXPECT_EQ(civilfromdate(sentinel).year, 1800);
    EXPECT_EQ(getdatefromtablefile(dir.path() + "/none.vq"), "??");
    EXPECT_LT(getnsdatefromtablefile(dir.path() + "/none.vq"), getnsdatefromtablefile(p));
}

TEST(TableFile, DayBlocksAndTwentyFiveHourTimes)
{
    const QStringList lines = splittablelines(sampletable());
    const QString hill = "Hill Line#North Hill to South Vale";
    // Weekday block: the after-midnight service keeps its 25-hour arrival.
    const Rows weekday = linetimesfromlines(lines, hill, 1);
    ASSERT_GE(weekday.size(), 2u);
    EXPECT_EQ(weekday[0], (Row{512, 519, 527, 0}));
    EXPECT_EQ(weekday[1], (Row{2350, -1, 2404, 0}));
    // Blank lines before </day> come through as one-entry rows, too short to use.
    EXPECT_EQ(weekday.back().size(), 1u);
    // Digit 6 is in two blocks: the first wins. Digit 0 is in "06" before "0".
    EXPECT_EQ(departures(linetimesfromlines(lines, hill, 6)), std::vector<int>{900});
    EXPECT_EQ(departures(linetimesfromlines(lines, hill, 0)), std::vector<int>{1000});
    // A digit no block holds gives nothing.
    EXPECT_TRUE(linetimesfromlines(lines, "River Line#nowhere", 1).empty());

    // Friday and Saturday both read 6, Sunday 0, Monday to Thursday their own digit.
    EXPECT_EQ(javadowtoobcdow(datetodayofweek(day(14))), 6);   // Friday
    EXPECT_EQ(javadowtoobcdow(datetodayofweek(day(15))), 6);   // Saturday
    EXPECT_EQ(javadowtoobcdow(datetodayofweek(day(9))), 0);    // Sunday
    EXPECT_EQ(javadowtoobcdow(datetodayofweek(day(13))), 4);   // Thursday
    EXPECT_EQ(javadowtoobcdow(9), 9);
    EXPECT_EQ(convdowstrtoint("Saturday"), 6);
    EXPECT_EQ(convdowstrtoint("monday"), -1);
}

TEST(TableFile, LineIdentitiesMatchBySubstring)
{
    // "Hill Line#North" is part of the real identity, so it reads that line's blocks;
    // this is why every identity must be unique and no part of another header.
    const QStringList lines = splittablelines(sampletable());
    EXPECT_EQ(linetimesfromlines(lines, "Hill Line#North", 1),
              linetimesfromlines(lines, "Hill Line#North Hill to South Vale", 1));
    EXPECT_EQ(departures(linetimesfromlines(lines, "River Line", 3)), std::vector<int>{600});
}

TEST(TableFile, IndexedReadingAgreesWithTheSinglePassOnOddTables)
{
    // Hand-made corners: identities inside other headers and inside "</line>", an empty
    // identity, "forwards" before any header, a header that is its own day line, a day
    // block never closed, digits in the day line's other text.
    const QStringList corners = {
        sampletable(),
        "forwards\n <day num=\"1\" >\n1,2,}\n</day>\n<line name =\"ine\" color=\"#1\" stops = \"a|1|2\"  >\n"
        "<forwards>\n <day num=\"12\" x=\"3\" >\n5,6,}\n</day>\n</line>\n<line name =\"\" color=\"\" stops = \"\"  >\n"
        "<forwards> day 4\n7,8,}\n",
        "<line name =\"A#b\" color=\"#1\" stops = \"A#b|1|2\" forwards day 3 >\n9,}\n</day>\n"
        "<line name =\"Mid Cross\" stops = \"South Vale|1|2,Mid Cross|3|4\"  >\n<forwards>\n <day num=\"0\" >\n3,}\n",
    };
    // And many shuffles of the sample's lines with some lines doubled or dropped.
    std::mt19937 random(20261124);
    std::vector<QStringList> tables;
    for (const QString& t : corners)
        tables.push_back(splittablelines(t));
    const QStringList sample = splittablelines(sampletable() + corners[1]);
    for (int variant = 0; variant < 400; ++variant) {
        QStringList lines;
        for (int k = 0; k < 40; ++k)
            lines << sample[static_cast<int>(random() % sample.size())];
        tables.push_back(lines);
    }
    int compared = 0, nonEmpty = 0;
    for (const QStringList& lines : tables) {
        const TableIndex index(lines);
        QStringList names = {"", "Hill Line#North", "River Line", "ine", "Mid Cross", "A#b", "x"};
        for (const QString& l : lines)
            if (l.contains("line name"))
                names << l.section('"', 1, 1);
        for (const QString& name : names) {
            for (const int digit : {0, 1, 2, 3, 4, 6, 7, 12}) {
                const Rows literal = linetimesfromlines(lines, name, digit);
                ASSERT_EQ(index.linetimes(name, digit), literal)
                    << "identity \"" << name.toStdString() << "\" digit " << digit << " in\n"
                    << lines.join('\n').toStdString();
                ++compared;
                nonEmpty += literal.empty() ? 0 : 1;
                if (name.isEmpty()) {
                    EXPECT_TRUE(literal.empty());   // an empty identity is in no line
                }
            }
        }
    }
    EXPECT_GT(nonEmpty, compared / 10);   // the comparison is not only about empty answers
}

TEST(TableFile, ColoursAndHex)
{
    EXPECT_EQ(hexvaltoint("FF8000"), (Rgba{1, 128 / 255.0, 0, 1}));
    EXPECT_EQ(hexvaltoint("zz"), (Rgba{0, 0, 0, 1}));
    EXPECT_EQ(hexvaltoint(""), (Rgba{0, 0, 0, 1}));
    EXPECT_EQ(hexvaltointint("1f"), 31);
    EXPECT_EQ(inttohexxhex(255), "FF");
    EXPECT_TRUE(isthisavalidcompressedtable("nt0#x.txt  day1].txt"));
    EXPECT_FALSE(isthisavalidcompressedtable("nt0#x.txt"));
}

class StoreTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(home.isValid());
        folders = std::make_unique<Folders>(home.path());
        bundled = write(home.path(), "bundled.vq", sampletable("5 March 2014 9:00:00 AM"));
        tt = std::make_unique<Timetable>(*folders);
        tt->setbundledtablepath(bundled);
    }
    QString tables() const { return folders->gettablesfold(); }

    QTemporaryDir home;
    std::unique_ptr<Folders> folders;
    QString bundled;
    std::unique_ptr<Timetable> tt;
};

TEST_F(StoreTest, FolderInstallationOrder)
{
    // An empty folder receives the built-in table as table 0.
    tt->setuptables();
    ASSERT_EQ(tt->mytables.size(), 1u);
    EXPECT_EQ(tt->mytables[0].name, "SydneyTrains");
    EXPECT_EQ(tt->mytables[0].displayname, "SydneyTrains.vq");
    EXPECT_EQ(tt->mytables[0].datefile, "5 March 2014 9:00:00 AM");
    EXPECT_EQ(tt->mytables[0].datestr, "jun 11");
    EXPECT_EQ(tt->mytables[0].enabled, "1");
    EXPECT_FALSE(tt->getenabledstatoftable(0));
    EXPECT_EQ(tt->gettabledateandname(0), "SydneyTrains 5 March 2014 9:00:00 AM");

    // An older installed table is replaced by the built-in one...
    write(tables(), "SydneyTrains.vq", sampletable("1 March 2014 9:00:00 AM"));
    tt->setuptables();
    EXPECT_EQ(tt->mytables[0].datefile, "5 March 2014 9:00:00 AM");
    // ...a newer one is kept.
    write(tables(), "SydneyTrains.vq", sampletable("9 March 2014 9:00:00 AM"));
    tt->setuptables();
    EXPECT_EQ(tt->mytables[0].datefile, "9 March 2014 9:00:00 AM");

    // A valid download waiting in the temporary folder is installed first and, being newer
    // than the built-in table, stays; an invalid one is left where it is.
    write(folders->gettemptablesfold(), "SydneyTrains.vq", sampletable("20 March 2014 9:00:00 AM"));
    write(folders->gettemptablesfold(), "Broken.vq", "not a table");
    tt->setuptables();
    ASSERT_EQ(tt->mytables.size(), 1u);
    EXPECT_EQ(tt->mytables[0].datefile, "20 March 2014 9:00:00 AM");
    EXPECT_FALSE(lumexist(folders->gettemptablesfold() + "SydneyTrains.vq"));
    EXPECT_TRUE(lumexist(folders->gettemptablesfold() + "Broken.vq"));   // invalid downloads stay

    // Any name holding "vq" is loaded, under the name before its first dot.
    write(tables(), "notes.vq.bak", "whatever");
    tt->setuptables();
    ASSERT_EQ(tt->mytables.size(), 2u);
    EXPECT_EQ(tt->mytables[0].name, "SydneyTrains");
    EXPECT_EQ(tt->mytables[1].name, "notes");
    EXPECT_EQ(tt->mytables[1].datefile, "??");
}

// A broken tables folder still ends with the built-in table loaded, says what it did,
// and never removes a folder of the user's.
TEST_F(StoreTest, ABrokenTablesFolderIsRepairedAndTheUsersFoldersKept)
{
    const QString installed = tables() + "/SydneyTrains.vq";
    auto loaded = [&] {
        tt->setuptables();
        tt->setuplinesmultitable();
        return tt->linesmute.size();
    };
    auto noted = [&](const QString& what) {
        return tt->setupnotes.join('\n').contains(what) ? ::testing::AssertionSuccess()
                                                         : ::testing::AssertionFailure() << tt->setupnotes.join('\n').toStdString();
    };

    ASSERT_TRUE(QFile::link(home.path() + "/nowhere.vq", installed));   // a dangling link
    EXPECT_EQ(loaded(), 2u);
    EXPECT_TRUE(noted("was a link to nothing; it was removed"));
    EXPECT_EQ(readfile(installed), readfile(bundled));

    QFile::remove(installed);
    ASSERT_EQ(::mkfifo(QFile::encodeName(installed).constData(), 0600), 0);
    EXPECT_EQ(loaded(), 2u);
    EXPECT_TRUE(noted("was a FIFO; it was removed"));
    EXPECT_TRUE(QFileInfo(installed).isFile());

    // A folder of that name, with the user's files in it, stays as it was.
    QFile::remove(installed);
    ASSERT_TRUE(QDir().mkdir(installed));
    write(installed, "mine.txt", "keep me");
    EXPECT_EQ(loaded(), 2u);
    EXPECT_TRUE(noted("is a folder; it was left alone"));
    EXPECT_EQ(readfile(installed + "/mine.txt"), "keep me");
    EXPECT_TRUE(QFileInfo(tables() + "/SydneyTrains.builtin.vq").isFile());
    EXPECT_EQ(loaded(), 2u);   // and again at the next start
    EXPECT_EQ(readfile(installed + "/mine.txt"), "keep me");
    // A download of the same name does not make way for itself either.
    write(folders->gettemptablesfold(), "SydneyTrains.vq", sampletable("20 March 2014 9:00:00 AM"));
    loaded();
    EXPECT_TRUE(noted("so the downloaded table SydneyTrains.vq was not installed"));
    EXPECT_EQ(readfile(installed + "/mine.txt"), "keep me");

    // The tables folder itself a plain file: kept aside, the folder made, the table installed.
    QDir(tables()).removeRecursively();
    const QString fold = folders->getprefsfold() + "tablesverified";
    writefile("not a folder", folders->getprefsfold(), "tablesverified");
    EXPECT_EQ(loaded(), 2u);
    EXPECT_TRUE(noted("was a file, not a folder; it was moved to"));
    EXPECT_TRUE(QFileInfo(fold).isDir());
    const QStringList aside = QDir(folders->getprefsfold()).entryList({"tablesverified.broken-*"});
    ASSERT_EQ(aside.size(), 1);
    EXPECT_EQ(readfile(folders->getprefsfold() + aside[0]), "not a folder");
}

TEST_F(StoreTest, LinesStationsAndLookups)
{
    // Nothing loaded: every lookup gives its not-found value.
    EXPECT_EQ(tt->stnnametonum("Mid Cross"), -1);
    EXPECT_EQ(tt->stnnametoint("Mid Cross"), 0);
    EXPECT_EQ(tt->stnnumtoname(0), "");
    EXPECT_EQ(tt->linenumtoname(0), "");
    EXPECT_EQ(tt->linenameandstntoname(0, 0), " ");
    EXPECT_EQ(tt->thisstnonthisline("Mid", 0), -1);

    // A second table where Mid Cross sits elsewhere, and lower-case and blank-led names.
    write(tables(), "Extra.vq", header("1 May 2014 1:00:00 AM")
        + lineblock("Vale Line#a", "Mid Cross|150.0|-33.0,ash Grove|151.0|-33.0, Zed|151.1|-33.1,Bad stop",
                    {dayblock("1", {"1,2,3,}"})})
        + lineblock("Vale Line#b", "Zulu|1|2", {}) + "\n</timetable>");
    tt->setuptables();
    tt->setuplinesmultitable();
    tt->setupstnsmute();
    tt->rewritelinesmutewithstnnums();

    ASSERT_EQ(tt->linesmute.size(), 4u);   // Extra.vq sorts before SydneyTrains.vq
    EXPECT_EQ(tt->linesmute[0].dispname, "Vale Line");
    EXPECT_EQ(tt->linesmute[0].stns, (QStringList{"Mid Cross", "ash Grove", " Zed"}));   // malformed stop skipped
    EXPECT_EQ(tt->linesmute[0].mytablenum, 0);
    EXPECT_EQ(tt->linesmute[2].name, "Hill Line#North Hill to South Vale");
    EXPECT_EQ(tt->linesmute[2].mytablenum, 1);
    EXPECT_EQ(tt->linesmute[2].nscol, hexvaltoint("1f8a4c"));

    QStringList names;
    for (const StationRecord& s : tt->stnsmute)
        names << s.name;
    // Character codes: blank first, capitals before lower case; Mid Cross twice (two places),
    // South Vale once though two lines serve it at the same place.
    EXPECT_EQ(names, (QStringList{" Zed", "Ash Park", "Mid Cross", "Mid Cross", "North Hill", "South Vale",
                                  "Zulu", "ash Grove"}));
    EXPECT_EQ(tt->stnnametonum("Mid Cross"), 2);
    EXPECT_EQ(tt->stnsmute[2].hloc, "150.0");   // the first-read Mid Cross comes first
    EXPECT_EQ(tt->linesmute[2].stnints, (std::vector<int>{4, 2, 5}));
    EXPECT_EQ(tt->thisstnonthisline("Cross", 2), 1);
    EXPECT_EQ(tt->linenameandstntoname(2, 2), "South Vale");
    EXPECT_EQ(tt->linenameandstntoname(2, 3), " ");

    const auto through = tt->getlinesforthisstn("South Vale");
    ASSERT_EQ(through.size(), 2u);
    EXPECT_EQ(through[0].linenum, "2");
    EXPECT_EQ(through[0].depint, "2");
    EXPECT_EQ(through[1].matchlinename, "River Line#South Vale to Mid Cross");
}

TEST_F(StoreTest, CachedRowsFollowTheFileAndMatchTheLiteralReading)
{
    tt->setuptables();
    tt->setuplinesmultitable();
    tt->setupstnsmute();
    tt->rewritelinesmutewithstnnums();
    const QString hill = "Hill Line#North Hill to South Vale";
    const Date monday = day(10);
    const RowsPtr first = tt->getthislinetimesnew(hill, monday, 0);
    EXPECT_EQ(*first, tt->getthislinetimesliteral(hill, monday, 0));
    EXPECT_EQ(departures(*first), (std::vector<int>{512, 2350}));
    EXPECT_EQ(departures(*tt->getthislinetimesnew(hill, day(14), 0)), std::vector<int>{900});  // Friday

    // A changed file is read again, even with the same size.
    QString changed = sampletable("5 March 2014 9:00:00 AM");
    changed.replace("512,519,527", "513,519,527");
    const QString installed = tables() + "/SydneyTrains.vq";
    QFile::remove(installed);
    write(tables(), "SydneyTrains.vq", changed);
    QFile f(installed);
    ASSERT_TRUE(f.open(QIODevice::ReadWrite));
    f.setFileTime(QDateTime::currentDateTime().addSecs(10), QFileDevice::FileModificationTime);
    f.close();
    EXPECT_EQ(departures(*tt->getthislinetimesnew(hill, monday, 0)), (std::vector<int>{513, 2350}));

    // A vanished file and a line number out of range give no rows.
    QFile::remove(installed);
    EXPECT_TRUE(tt->getthislinetimesnew(hill, monday, 0)->empty());
    EXPECT_TRUE(tt->getthislinetimesnew(hill, monday, 99)->empty());
}
