// quendle-cli: the terminal front end.

#include "cli/cli.h"
#include "cli/cliplatform.h"
#include "platform/system/systemclock.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QTextStream>

#include <cstdio>
#include <memory>
#include <optional>

int main(int argc, char** argv)
{
    // Only the render command paints, offscreen; every other command stays a plain
    // terminal program that needs no display.
    QStringList raw;
    for (int i = 1; i < argc; ++i)
        raw << QString::fromLocal8Bit(argv[i]);
    std::unique_ptr<QCoreApplication> app;
    if (quendle::parseglobals(raw).rest.value(0) == QLatin1String("render")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        app = std::make_unique<QGuiApplication>(argc, argv);
    } else {
        app = std::make_unique<QCoreApplication>(argc, argv);
    }
    QCoreApplication::setApplicationName(QStringLiteral("quendle"));
    QStringList args = QCoreApplication::arguments();
    args.removeFirst();
    QTextStream out(stdout);
    QTextStream err(stderr);
    const quendle::CliGlobals g = quendle::parseglobals(args);
    std::optional<quendle::Date> start;
    QString error;
    if (!quendle::SystemClock::givenstart(g.hasNow ? std::optional<QString>(g.now) : std::nullopt, &start,
                                          &error)) {
        err << "quendle-cli: " << error << "\n";
        return 2;
    }
    quendle::CliPlatform platform(start);
    return quendle::runcli(args, platform.platform(), out, err);
}
