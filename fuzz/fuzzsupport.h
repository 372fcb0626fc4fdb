#pragma once
// Shared set-up for the fuzz targets: the same environment as the tests (a throw-away home,
// Sydney time, a C locale), made once per process, and the input read as a file's text.

#include "util/dates.h"
#include "util/files.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QDir>
#include <QString>
#include <QTemporaryDir>

#include <cstdint>
#include <cstdlib>

namespace quendle::fuzz {

// A home folder of its own for the whole run, so no target ever touches the real one.
inline const QString& home()
{
    static QTemporaryDir dir;
    static const QString path = dir.path();
    return path;
}

inline void init()
{
    static bool done = false;
    if (done)
        return;
    done = true;
    qputenv("TZ", "Australia/Sydney");
    qputenv("LC_ALL", "C.UTF-8");
    qputenv("QT_QPA_PLATFORM", "offscreen");
    resetdatezone();
    static int argc = 1;
    static char name[] = "quendle-fuzz";
    static char* argv[] = {name, nullptr};
    static QCoreApplication app(argc, argv);
    // Qt's warnings about bad input are expected here by the thousand.
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& msg) {
        if (type == QtFatalMsg) {
            fprintf(stderr, "%s\n", qPrintable(msg));
            abort();
        }
    });
    qputenv("HOME", QFile::encodeName(home()));
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(home() + "/.config"));
    qputenv("XDG_DATA_HOME", QFile::encodeName(home() + "/.local/share"));
}

inline QByteArray bytes(const uint8_t* data, size_t size)
{
    return QByteArray(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
}

// The input as the application would read it from a file.
inline QString text(const uint8_t* data, size_t size) { return decodefiletext(bytes(data, size)); }

// Aborts (a finding) when a property that must hold does not.
inline void require(bool ok, const char* what)
{
    if (!ok) {
        fprintf(stderr, "fuzz: property failed: %s\n", what);
        abort();
    }
}

} // namespace quendle::fuzz
