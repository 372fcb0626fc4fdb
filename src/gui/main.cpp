// quendle: the strip and its tray icon.

#include "gui/guiapp.h"
#include "platform/system/systemclock.h"

#include <QApplication>

#include <cstdio>
#include <optional>

int main(int argc, char** argv)
{
    std::optional<quendle::Date> start;
    QString error;
    if (!quendle::SystemClock::givenstart(std::nullopt, &start, &error)) {
        std::fprintf(stderr, "quendle: %s\n", qPrintable(error));
        return 2;
    }
    quendle::preferxwayland();
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("quendle"));
    // The installed menu entry: lets Wayland compositors and docks match the window to it.
    QApplication::setDesktopFileName(QStringLiteral("org.quendle.Quendle"));
    // The strip is a tool window, which Qt does not count as a window that keeps the
    // application running: closing any alert would end it. The strip's own closing
    // ends it instead (MyNSView::closeEvent), as does Quit.
    QApplication::setQuitOnLastWindowClosed(false);
    quendle::GuiApp gui(start);
    gui.start();
    return QApplication::exec();
}
