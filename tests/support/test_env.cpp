#include "support/test_env.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QThread>

namespace quendle::testsupport {

QCoreApplication* ensureCoreApp()
{
    if (QCoreApplication::instance())
        return QCoreApplication::instance();
    static int argc = 1;
    static char name[] = "quendle-tests";
    static char* argv[] = {name, nullptr};
    // Kept for the life of the process: tests come and go, the application stays.
    static QCoreApplication* app = new QCoreApplication(argc, argv);
    return app;
}

bool waitUntil(const std::function<bool()>& pred, int maxMs)
{
    ensureCoreApp();
    QDeadlineTimer deadline(maxMs);
    while (!pred()) {
        if (deadline.hasExpired())
            return pred();
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        QThread::msleep(1);
    }
    return true;
}

ScopedEnv::ScopedEnv(const char* name, const std::optional<QByteArray>& value) : name_(name)
{
    if (qEnvironmentVariableIsSet(name))
        old_ = qgetenv(name);
    if (value)
        qputenv(name, *value);
    else
        qunsetenv(name);
}

ScopedEnv::~ScopedEnv()
{
    if (old_)
        qputenv(name_.constData(), *old_);
    else
        qunsetenv(name_.constData());
}

TempHome::TempHome()
{
    if (dir_.isValid())
        QDir(dir_.path()).mkpath(QStringLiteral(".config"));
}

} // namespace quendle::testsupport
