#include "platform/desktop/logindsession.h"

#include <QDBusConnection>
#include <QDBusError>
#include <QDebug>

#include <atomic>

namespace quendle {

namespace {

void call(const std::function<void()>& f)
{
    if (f)
        f();
}

// Said once per process, however many sessions are made.
void warnonce(const QString& why)
{
    static std::atomic_bool said{false};
    if (!said.exchange(true))
        qWarning().noquote() << QStringLiteral("quendle: sleep and wake will not be noticed: %1").arg(why);
}

} // namespace

LogindSession::LogindSession(bool listenToLogind, QObject* parent) : QObject(parent)
{
    if (!listenToLogind)
        return;
    QDBusConnection bus = QDBusConnection::systemBus();
    if (!bus.isConnected()) {
        warnonce(QStringLiteral("no system bus (%1)").arg(bus.lastError().message()));
        return;
    }
    listening_ = bus.connect(QStringLiteral("org.freedesktop.login1"), QStringLiteral("/org/freedesktop/login1"),
                             QStringLiteral("org.freedesktop.login1.Manager"), QStringLiteral("PrepareForSleep"),
                             this, SLOT(prepareForSleep(bool)));
    if (!listening_)
        warnonce(QStringLiteral("cannot subscribe to logind (%1)").arg(bus.lastError().message()));
}

void LogindSession::setHandlers(SessionHandlers handlers)
{
    handlers_ = std::move(handlers);
}

void LogindSession::notifyActive(bool active)
{
    if (active == active_)
        return;
    active_ = active;
    call(active ? handlers_.becameActive : handlers_.resignedActive);
}

void LogindSession::prepareForSleep(bool sleeping)
{
    call(sleeping ? handlers_.willSleep : handlers_.didWake);
}

} // namespace quendle
