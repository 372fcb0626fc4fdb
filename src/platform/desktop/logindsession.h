#pragma once
// Session events on a Linux desktop.
//
// Sleep and wake come from logind: org.freedesktop.login1.Manager's PrepareForSleep(bool)
// on the system bus (true: about to sleep; false: woken). Where there is no system bus
// (containers, CI) that is logged once and the rest still works.
//
// Activation and deactivation belong to the GUI, which is not linked here: the GUI connects
// QGuiApplication::applicationStateChanged to notifyActive(state == Qt::ApplicationActive).

#include "platform/session.h"

#include <QObject>

namespace quendle {

class LogindSession : public QObject, public SessionEvents {
    Q_OBJECT
public:
    // listenToLogind = false leaves the system bus alone (tests).
    explicit LogindSession(bool listenToLogind = true, QObject* parent = nullptr);

    void setHandlers(SessionHandlers handlers) override;

    // The application became active (true) or stopped being active (false). Repeats are
    // ignored; the application starts out inactive.
    void notifyActive(bool active);

    // True when subscribed to logind.
    bool listening() const { return listening_; }

public Q_SLOTS:
    // logind's PrepareForSleep: true before sleeping, false after waking.
    void prepareForSleep(bool sleeping);

private:
    SessionHandlers handlers_;
    bool active_ = false;
    bool listening_ = false;
};

} // namespace quendle
