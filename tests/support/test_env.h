#pragma once
// Test environment helpers: an application object for tests that need an event loop,
// temporary folders, and environment variables set for one test only.

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

#include <functional>
#include <optional>

class QCoreApplication;

namespace quendle::testsupport {

// The process's QCoreApplication, made on first use (the gtest main makes none).
QCoreApplication* ensureCoreApp();

// Runs the event loop until pred() holds or maxMs pass; returns pred()'s last value.
// For waiting on something asynchronous, never for measuring time.
bool waitUntil(const std::function<bool()>& pred, int maxMs = 5000);

// Sets (or, with std::nullopt, unsets) an environment variable until destroyed.
class ScopedEnv {
public:
    ScopedEnv(const char* name, const std::optional<QByteArray>& value);
    ~ScopedEnv();
    ScopedEnv(const ScopedEnv&) = delete;
    ScopedEnv& operator=(const ScopedEnv&) = delete;

private:
    QByteArray name_;
    std::optional<QByteArray> old_;
};

// A throw-away home folder with its config folder, removed afterwards.
class TempHome {
public:
    TempHome();
    bool isValid() const { return dir_.isValid(); }
    QString path() const { return dir_.path(); }
    QString configDir() const { return dir_.path() + QStringLiteral("/.config"); }
    // A file's path below the home folder.
    QString file(const QString& relative) const { return dir_.filePath(relative); }

private:
    QTemporaryDir dir_;
};

} // namespace quendle::testsupport
