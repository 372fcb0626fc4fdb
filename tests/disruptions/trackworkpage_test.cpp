#include "disruptions/trackworkpage.h"
#include "network.h"
#include "util/files.h"
#include "util/text.h"

#include <gtest/gtest.h>

#include <tuple>

using namespace quendle;
using namespace quendle::disruptionstest;

namespace {

QString recordedpage() { return readfile(sourcefile("tests/data/trackwork.html")); }

// The catalogue of the small network, as start-up builds it.
struct Catalogue {
    Catalogue()
    {
        fixtures::writeto(folders.gettablesfold(), "Test.vq", network());
        tt.setbundledtablepath(home.path() + "/none.vq");
        tt.setuptables();
        tt.setuplinesmultitable();
        tt.setupstnsmute();
    }
    QTemporaryDir home;
    Folders folders{home.path()};
    Timetable tt{folders};
};

} // namespace

TEST(TrackworkPage, TheRecordedPageReducesToOneLinePerKeptNotice)
{
    const QString page = recordedpage();
    ASSERT_FALSE(page.isEmpty()) << "tests/data/trackwork.html is missing";
    EXPECT_TRUE(thisvalidtw(page));
    EXPECT_TRUE(thisvalidinterrup(page));
    EXPECT_FALSE(thisvalidtw(QStringLiteral("<html>Trackwork this weekend</html>")));
    EXPECT_FALSE(thisvalidtw(QString()));

    // Kept: notices with two dates, a title and no "none" wording. Skipped: "There is no
    // trackwork", "Extra trains run", a single date, a block without a title. Consecutive
    // notices of one line share a heading; "&amp;" in titles becomes "&"; the notice text is
    // the block's second text element as it stands; a "to" range is kept unsplit.
    const QString expected = QStringLiteral(
        "\rT1 North Shore & Western Line#"
        "\r9/3/2014,2330,10/3/2014,400=Hornsby-Berowra,=>Allow an extra 20 minutes. Buses run every 15 minutes "
        "&amp; stop at all stations.="
        "\r15/3/2014,15,16/3/2014,2415=Central-Strathfield,=>Track upgrades at Redfern. Use the T9 Northern Line "
        "via Epping where you can.="
        "\rT4 Eastern Suburbs & Illawarra Line#"
        "\r8/3/2014,2105,10/3/2014,400=Bondi Junction-Central,Central-Strathfield,=>Buses replace trains between "
        "Central and Strathfield for connections. Allow an extra 30 minutes.="
        "\rT6 Lidcombe & Bankstown Line#"
        "\r12/3/2014,2030,13/3/2014,200=Lidcombe to Bankstown,=>Buses stop near each station.="
        "\rT3 Liverpool & Inner West Line#"
        "\r1/3/2014,2300,2/3/2014,300=Lidcombe-Liverpool,=>This work has finished.="
        "\rT9 Northern Line#"
        "\r10/3/2014,2200,11/3/2014,400=North Strathfield-Epping,=>Buses run express between Epping and "
        "Strathfield.="
        "\rT1 North Shore & Western Line#"
        "\r9/3/2014,2330,10/3/2014,400=Chatswood-Hornsby,=>The same night as the Hornsby closure.="
        "\rCentral Coast & Newcastle Line#"
        "\r22/3/2014,2000,24/3/2014,130=Hornsby-Gosford,=>Coaches run every 30 minutes. Bikes cannot be carried.=");
    EXPECT_EQ(comptwtext(page).toStdString(), expected.toStdString());
    EXPECT_TRUE(compactworthkeeping(expected));

    // A notice with one text element gets an empty text; one heading and one notice make
    // three pieces, too few to replace a kept file.
    const QString one = QStringLiteral(
        "trkworkItemHeading\n<img title=\"T9 Northern Line\">\n7 April 1.00am to 8 April 2.00am\n"
        "<p class=\"trkworkItemText clear\">Buses replace trains between Epping and Hornsby.\n");
    EXPECT_EQ(comptwtext(one), "\rT9 Northern Line#\r7/4/2014,100,8/4/2014,200=Epping-Hornsby,==");
    EXPECT_FALSE(compactworthkeeping(comptwtext(one)));
    EXPECT_EQ(comptwtext(QStringLiteral("<html>service_updates/trackwork/trackwork_map.pdf</html>")), "");
}

TEST(TrackworkPage, TheTitleIsTheExpressionsFirstMatchAndLinearInAHostileLine)
{
    const QString expression = "(?<=title=\\\")(T[0-9]|).{1,}[A-Z][a-z]{1,}\\sLine";
    const QStringList blocks = {
        "<img title=\"T1 North Shore &amp; Western Line\"> <h2>T1 Western Line</h2>",
        "title=\"nothing here\" title=\"T4 Eastern Suburbs Line\"",          // the first fails on its line
        "title=\"no line\"\n<img title=\"T9 Northern Line\">",               // ... and on another
        "title=\"Western\nLine\"",                                            // the blank may be a line break
        "title=\"T9 Line\"", "title=\"T Aa Line", "title=\"xAb\u2028Line Ab Line\"",
        "title=\"Ab Line title=\"Cd Line\" \u0085 title=\"Ef Line\"", "title=\"", "no title at all Ab Line",
    };
    for (const QString& b : blocks)
        EXPECT_EQ(firsttitlematch(b), lumregextremestr(b, expression)) << b.toStdString();
    EXPECT_EQ(firsttitlematch(blocks[0]), "T1 North Shore &amp; Western Line\"> <h2>T1 Western Line");

    // A page line made of nothing but `title="` has no title (and is not read in hours).
    const QString hostile = "trkworkItemHeading 9 March 11.30pm 10 March 4.00am " + QString("title=\"").repeated(50000);
    EXPECT_EQ(comptwtext(hostile), "");
}

TEST(TrackworkPage, NoticeDatesAreReadInTheFixedYearWithTheirTwelveHourQuirks)
{
    EXPECT_EQ(strtotwenfhrdateorigtrakw("9 March 11.30pm"), "9/3/2014,2330");
    EXPECT_EQ(strtotwenfhrdateorigtrakw("15 March 12.15am"), "15/3/2014,15");
    EXPECT_EQ(strtotwenfhrdateorigtrakw("16 March 12.15pm"), "16/3/2014,2415");   // 00:15 the next day
    EXPECT_EQ(strtotwenfhrdateorigtrakw("9 March 9.05pm"), "9/3/2014,2105");
    EXPECT_EQ(strtotwenfhrdateorigtrakw("1 December 12.00am"), "1/12/2014,0");
    EXPECT_EQ(strtotwenfhrdateorigtrakw("3 march 7.45am"), "3/12/2014,745");   // unknown month: 12
    EXPECT_EQ(strtotwenfhrdateorigtrakw("9 March"), "11/11/11");
    EXPECT_EQ(strtotwenfhrdateorigtrakw("9\nMarch 11.30pm"), "11/11/11");

    // The older reader turns every three-word text into "31 31": midnight, 31 December, year 1.
    const CivilTime old = civilfromdate(strtodateorigtrakw("9 March 11.30pm"));
    EXPECT_EQ(std::make_tuple(old.year, old.month, old.day, old.hour, old.minute), std::make_tuple(1, 12, 31, 0, 0));
    const CivilTime two = civilfromdate(strtodateorigtrakw("9 March"));
    EXPECT_EQ(std::make_tuple(two.month, two.day, two.hour), std::make_tuple(3, 9, 0));
}

TEST(TrackworkPage, TheCompactFileParsesIntoRecordsOfKnownLinesThatHaveNotFinished)
{
    Catalogue c;
    const Date now = march(9, 17, 0);
    const ParsedTrakw p = parsetrakwcompact(comptwtext(recordedpage()), c.tt, now);

    // Lines the tables do not know (T6, T3) are skipped with their notices; the finished
    // notice would have been dropped anyway. Nothing is sorted or de-duplicated yet.
    ASSERT_EQ(p.trakw.size(), 6u);
    EXPECT_EQ(p.debugshoworigtrakwork.size(), 16);
    EXPECT_EQ(p.debugshoworigtrakwork.value(0), "");

    const TrakwRecord& hornsby = p.trakw[0];
    EXPECT_EQ(hornsby.line, "T1 North Shore & Western Line");
    EXPECT_EQ(hornsby.linenum, kT1);
    // Every line the short name "Western" stands for: only T1 here.
    EXPECT_EQ(hornsby.linenums, std::vector<int>{kT1});
    EXPECT_EQ(hornsby.trakbegin, march(9, 23, 30, 17));
    EXPECT_EQ(hornsby.trakend, march(10, 4, 0, 17));
    EXPECT_EQ(hornsby.trakbegtwenfrhr, 2330);
    EXPECT_EQ(hornsby.gotstnsoutinfo, 1);
    ASSERT_EQ(hornsby.stnsoutfix.size(), 1u);
    const StationRange& r = hornsby.stnsoutfix[0];
    EXPECT_EQ(r.trakbegstr, "Hornsby");
    EXPECT_EQ(r.trakendstr, "Berowra");
    EXPECT_EQ(r.trakbegint, c.tt.stnnametonum("Hornsby"));
    EXPECT_EQ(r.trakendint, c.tt.stnnametonum("Berowra"));
    EXPECT_EQ(r.begendonlinenums, (std::vector<LinePositions>{{2, 3, kT1}}));
    EXPECT_TRUE(hornsby.stnsout.isEmpty());
    EXPECT_TRUE(hornsby.stnsoutstr.contains("trakbegstr = Hornsby;"));
    EXPECT_EQ(hornsby.originfostr, ">Allow an extra 20 minutes. Buses run every 15 minutes &amp; stop at all stations.");
    EXPECT_TRUE(hornsby.origline.startsWith("9/3/2014,2330,10/3/2014,400=Hornsby-Berowra,="));
    EXPECT_EQ(hornsby.fixdispbeg, "11:30PM");
    EXPECT_EQ(hornsby.fixdispend, "4:00AM");
    EXPECT_EQ(hornsby.untilrelativedatestr, "11:30PM");
    EXPECT_EQ(hornsby.remain, " 6h 31m");

    // 12.15pm on 16 March is 00:15 on the 17th.
    EXPECT_EQ(p.trakw[1].trakbegin, march(15, 0, 15, 17));
    EXPECT_EQ(p.trakw[1].trakend, march(17, 0, 15, 17));

    // Strathfield is not on T4, so only the first section of that notice stays.
    const TrakwRecord& t4 = p.trakw[2];
    EXPECT_EQ(t4.linenum, kT4);
    ASSERT_EQ(t4.stnsoutfix.size(), 1u);
    EXPECT_EQ(t4.stnsoutfix[0].trakbegstr, "Bondi Junction");
    EXPECT_EQ(t4.untilrelativedatestr, "");   // begun already

    // T9's section: "North Strathfield" is found on both T9 and, by substring, nowhere else.
    EXPECT_EQ(p.trakw[3].line, "T9 Northern Line");
    EXPECT_EQ(p.trakw[3].stnsoutfix.at(0).begendonlinenums, (std::vector<LinePositions>{{2, 1, kT9}}));
    // The second T1 heading starts its notices again; the Chatswood section is unknown.
    EXPECT_EQ(p.trakw[4].linenum, kT1);
    EXPECT_EQ(p.trakw[4].gotstnsoutinfo, 0);
    EXPECT_TRUE(p.trakw[4].stnsoutfix.empty());
    EXPECT_EQ(p.trakw[4].stnsoutstr, "(\n)");
    EXPECT_EQ(p.trakw[5].line, "Central Coast & Newcastle Line");

    // A notice ending exactly now has finished; one ending a second later has not.
    const QString edge = "\rT4 Eastern Suburbs & Illawarra Line#\r9/3/2014,1000,9/3/2014,1700=,=a=\r"
                         "9/3/2014,1000,9/3/2014,1701==b=";
    const ParsedTrakw e = parsetrakwcompact(edge, c.tt, march(9, 17, 0, 17));
    ASSERT_EQ(e.trakw.size(), 1u);
    EXPECT_EQ(e.trakw[0].originfostr, "b");
}

TEST(TrackworkPage, DamagedCompactLinesAreSkippedAndNewlinesServeWhenThereIsNoReturn)
{
    Catalogue c;
    const Date now = march(9, 12, 0);
    const QString text = "T4 Eastern Suburbs & Illawarra Line#\n"
                         "10/3/2014,900=Edgecliff-Central,=too few points=\n"
                         "10/3/2014,900,11/3/2014,900\n"                    // no "=" at all
                         "10/3/2014,900,11/3/2014,900=Edgecliff-Central\n"  // no text field
                         "Unknown Line#\n"
                         "10/3/2014,900,11/3/2014,900=Edgecliff-Central,=skipped with its line=\n"
                         "T9 Northern Line#\n"
                         "x/y/z,abc,11/3/2014,900=-Epping,Epping,=odd=";
    const ParsedTrakw p = parsetrakwcompact(text, c.tt, now);
    ASSERT_EQ(p.trakw.size(), 2u);
    EXPECT_EQ(p.trakw[0].originfostr, "");
    EXPECT_EQ(p.trakw[0].stnsoutfix.size(), 1u);
    EXPECT_EQ(p.trakw[1].line, "T9 Northern Line");
    // An empty name is found in every stop list by the substring test; a lone name is not a section.
    EXPECT_EQ(p.trakw[1].stnsoutfix.size(), 1u);
    EXPECT_EQ(p.trakw[1].stnsoutfix[0].trakendstr, "Epping");
    EXPECT_EQ(parsetrakwcompact(QString(), c.tt, now).trakw.size(), 0u);
}
