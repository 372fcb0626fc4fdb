// quendle-cli: the terminal front end.

#include "cli/cli.h"
#include "cli/cliplatform.h"

#include <QCoreApplication>
#include <QTextStream>

#include <cstdio>

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("quendle"));
    QStringList args = QCoreApplication::arguments();
    args.removeFirst();
    QTextStream out(stdout);
    QTextStream err(stderr);
    const quendle::CliGlobals g = quendle::parseglobals(args);
    quendle::CliPlatform platform(g.now);
    if (!platform.error().isEmpty()) {
        err << "quendle-cli: " << platform.error() << "\n";
        return 2;
    }
    return quendle::runcli(args, platform.platform(), out, err);
}
