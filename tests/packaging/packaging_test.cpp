// What the package installs: the menu entry and AppStream metainfo pass their
// validators, the man pages describe every command of the usage text, the bash
// completion offers commands and stations, and an install puts every file in place.

#include "cli/cli.h"
#include "platform/system/manualtimers.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace quendle;

namespace {

QString source(const QString& relative)
{
    return qEnvironmentVariable("QUENDLE_SOURCE_DIR") + QLatin1Char('/') + relative;
}

QString readtext(const QString& path)
{
    QFile f(path);
    EXPECT_TRUE(f.open(QIODevice::ReadOnly)) << qPrintable(path);
    return QString::fromUtf8(f.readAll());
}

struct ToolRun {
    int status = -1;
    QString out;   // standard output and error together
};

ToolRun runtool(const QString& program, const QStringList& args, const QString& home = {})
{
    QProcess p;
    if (!home.isEmpty()) {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("HOME"), home);
        env.insert(QStringLiteral("XDG_CONFIG_HOME"), home + QStringLiteral("/.config"));
        p.setProcessEnvironment(env);
    }
    p.setProcessChannelMode(QProcess::MergedChannels);
    p.start(program, args);
    EXPECT_TRUE(p.waitForFinished(120000)) << qPrintable(program);
    return {p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1, QString::fromUtf8(p.readAllStandardOutput())};
}

// The usage text's commands (first word of each line under "Commands:") and options.
std::pair<QStringList, QStringList> usage()
{
    ManualClock clock(Date{0});
    ManualTimers timers(clock);
    Platform p;
    p.clock = &clock;
    p.timers = &timers;
    QString text, err;
    QTextStream out(&text), errs(&err);
    EXPECT_EQ(runcli({"--help"}, p, out, errs), 0);
    out.flush();
    QStringList commands, options;
    bool inCommands = false;
    for (const QString& line : text.split(QLatin1Char('\n'))) {
        if (line.startsWith(QLatin1String("Commands:")) || line.startsWith(QLatin1String("Options:")))
            inCommands = line.startsWith(QLatin1String("Commands:"));
        else if (const auto m = QRegularExpression(QStringLiteral("^  ([a-z][a-z-]*)")).match(line); inCommands && m.hasMatch())
            commands << m.captured(1);   // deeper indents continue the line above
        for (const auto& m : QRegularExpression(QStringLiteral("--[a-z-]+")).globalMatch(line))
            if (!inCommands && !options.contains(m.captured()))
                options << m.captured();
    }
    return {commands, options};
}

} // namespace

TEST(Packaging, MenuEntryAndMetainfoPassTheirValidators)
{
    const QString desktop = source(QStringLiteral("packaging/org.quendle.Quendle.desktop"));
    const QString metainfo = qEnvironmentVariable("QUENDLE_BINARY_DIR") + QStringLiteral("/packaging/org.quendle.Quendle.metainfo.xml");
    const QString entry = readtext(desktop);
    EXPECT_TRUE(entry.contains(QLatin1String("\nExec=quendle\n")));
    EXPECT_TRUE(entry.contains(QLatin1String("\nIcon=quendle\n")));
    EXPECT_TRUE(QFile::exists(source(QStringLiteral("packaging/quendle.svg"))));
    const QString meta = readtext(metainfo);
    EXPECT_TRUE(meta.contains(QLatin1String("<launchable type=\"desktop-id\">org.quendle.Quendle.desktop</launchable>")));
    EXPECT_TRUE(meta.contains(QStringLiteral("<release version=\"%1\"").arg(QLatin1String(QUENDLE_VERSION))));

    const QString dfv = QStandardPaths::findExecutable(QStringLiteral("desktop-file-validate"));
    const QString asc = QStandardPaths::findExecutable(QStringLiteral("appstreamcli"));
    if (dfv.isEmpty() || asc.isEmpty())
        GTEST_SKIP() << "desktop-file-validate (desktop-file-utils) or appstreamcli (appstream) is missing; "
                        "scripts/setup.sh installs them";
    const ToolRun d = runtool(dfv, {desktop});
    EXPECT_EQ(d.status, 0) << d.out.toStdString();
    EXPECT_TRUE(d.out.trimmed().isEmpty()) << d.out.toStdString();
    const ToolRun a = runtool(asc, {QStringLiteral("validate"), QStringLiteral("--no-net"), metainfo});
    EXPECT_EQ(a.status, 0) << a.out.toStdString();
}

TEST(Packaging, ManPagesDescribeEveryCommandAndOption)
{
    const QString cliPage = readtext(source(QStringLiteral("packaging/quendle-cli.1")));
    const auto [commands, options] = usage();
    EXPECT_GE(commands.size(), 5) << qPrintable(commands.join(' '));
    const qsizetype commandsAt = cliPage.indexOf(QLatin1String("\n.SH COMMANDS\n"));
    const qsizetype optionsAt = cliPage.indexOf(QLatin1String("\n.SH OPTIONS\n"));
    ASSERT_TRUE(commandsAt > 0 && optionsAt > commandsAt);
    const QString commandSection = cliPage.mid(commandsAt, optionsAt - commandsAt);
    for (const QString& c : commands)
        EXPECT_TRUE(QRegularExpression(QStringLiteral("\\n\\.TP\\n\\.BI? \"?%1[ \"\\n]").arg(QRegularExpression::escape(c)))
                        .match(commandSection).hasMatch())
            << "quendle-cli.1 has no entry under COMMANDS for \"" << qPrintable(c) << "\"";
    for (const QString& o : options)
        EXPECT_TRUE(QRegularExpression(QStringLiteral("\\n\\.TP\\n\\.BI? ") + QRegularExpression::escape(QString(o).replace(QLatin1String("-"), QLatin1String("\\-"))))
                        .match(cliPage).hasMatch())
            << "quendle-cli.1 has no entry for " << qPrintable(o);

    const QString groff = QStandardPaths::findExecutable(QStringLiteral("groff"));
    if (groff.isEmpty())
        GTEST_SKIP() << "groff (groff-base) is missing; scripts/setup.sh installs it";
    for (const char* page : {"packaging/quendle.1", "packaging/quendle-cli.1"}) {
        const ToolRun r = runtool(groff, {"-man", "-ww", "-z", source(QLatin1String(page))});
        EXPECT_EQ(r.status, 0) << page;
        EXPECT_TRUE(r.out.trimmed().isEmpty()) << page << ": " << r.out.toStdString();
    }
}

TEST(Packaging, BashCompletionOffersCommandsOptionsAndStations)
{
    const QString bash = QStandardPaths::findExecutable(QStringLiteral("bash"));
    if (bash.isEmpty())
        GTEST_SKIP() << "no bash";
    // Each case: the words on the line (the last one being completed) and what must be offered.
    const QString cli = qEnvironmentVariable("QUENDLE_CLI");
    QTemporaryDir home;   // the completion asks quendle-cli for the stations
    const std::vector<std::pair<QStringList, QStringList>> cases = {
        {{cli, ""}, usage().first},
        {{cli, "--j"}, {"--journey"}},
        {{cli, "--journey", "Emu"}, {"\"Emu Plains"}},
        {{cli, "--journey", "\"Emu Plains|Cent"}, {"\"Emu Plains|Central"}},
        {{cli, "table", ""}, {"check"}},
        {{cli, "--journey", "Central|Redfern", "ne"}, {"next"}},
        {{cli, "render", "strip.png", "--z"}, {"--zoomed-out"}},
        {{cli, "journey", "s"}, {"set"}},
        {{cli, "journey", "set", "\"Central|Redf"}, {"\"Central|Redfern"}},
        {{cli, "import-gtfs", "feed.zip", "--rou"}, {"--route-type", "--routes"}},
        {{cli, "publish", "site", "--"}, {"--table", "--version"}},
    };
    for (const auto& [words, expected] : cases) {
        QString script = QStringLiteral("source \"$1\"; shift; COMP_WORDS=(\"$@\"); COMP_CWORD=$(($# - 1)); "
                                        "_quendle_cli; printf '%s\\n' \"${COMPREPLY[@]}\"");
        QStringList args{"-c", script, "completion", source(QStringLiteral("packaging/quendle-cli.bash"))};
        args += words;
        const ToolRun r = runtool(bash, args, home.path());
        EXPECT_EQ(r.status, 0) << r.out.toStdString();
        const QStringList offered = r.out.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        for (const QString& e : expected)
            EXPECT_TRUE(offered.contains(e)) << qPrintable(words.mid(1).join(' ')) << ": no \"" << qPrintable(e)
                                             << "\" in " << qPrintable(offered.join(", "));
    }
}

TEST(Packaging, InstallPutsEveryFileInItsPlace)
{
    QTemporaryDir prefix;
    const ToolRun r = runtool(qEnvironmentVariable("CMAKE_COMMAND"),
                          {"--install", qEnvironmentVariable("QUENDLE_BINARY_DIR"), "--prefix", prefix.path()});
    ASSERT_EQ(r.status, 0) << r.out.toStdString();
    QStringList files;
    QDirIterator it(prefix.path(), QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext())
        files << it.next().mid(prefix.path().size() + 1);
    QStringList expected = {"bin/quendle", "bin/quendle-cli", "share/applications/org.quendle.Quendle.desktop",
                            "share/metainfo/org.quendle.Quendle.metainfo.xml",
                            "share/icons/hicolor/scalable/apps/quendle.svg", "share/man/man1/quendle.1.gz",
                            "share/man/man1/quendle-cli.1.gz", "share/bash-completion/completions/quendle-cli"};
    for (int size : {16, 22, 24, 32, 48, 64, 128, 256})
        expected << QStringLiteral("share/icons/hicolor/%1x%1/apps/quendle.png").arg(size);
    files.sort();
    expected.sort();
    EXPECT_EQ(files, expected);
    // The PNGs are the sizes their folders name.
    for (int size : {16, 256}) {
        QFile png(prefix.filePath(QStringLiteral("share/icons/hicolor/%1x%1/apps/quendle.png").arg(size)));
        ASSERT_TRUE(png.open(QIODevice::ReadOnly));
        const QByteArray head = png.read(24);
        ASSERT_TRUE(head.startsWith("\x89PNG"));
        EXPECT_EQ((uchar(head[16]) << 24 | uchar(head[17]) << 16 | uchar(head[18]) << 8 | uchar(head[19])), size);
    }
}
