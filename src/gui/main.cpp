// quendle: the strip and its tray icon.

#include "gui/guiapp.h"

#include <QApplication>

int main(int argc, char** argv)
{
    quendle::preferxwayland();
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("quendle"));
    // The installed menu entry: lets Wayland compositors and docks match the window to it.
    QApplication::setDesktopFileName(QStringLiteral("org.quendle.Quendle"));
    QApplication::setQuitOnLastWindowClosed(true);
    quendle::GuiApp gui;
    gui.start();
    return QApplication::exec();
}
