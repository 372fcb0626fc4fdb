#pragma once
// Everything the core needs from the outside world, in one bundle.

#include "platform/alerts.h"
#include "platform/clipboard.h"
#include "platform/clock.h"
#include "platform/defaults.h"
#include "platform/http.h"
#include "platform/loginitems.h"
#include "platform/session.h"
#include "platform/speech.h"
#include "platform/timers.h"
#include "platform/window.h"

#include <QString>

#include <functional>

namespace quendle {

struct Platform {
    Clock* clock = nullptr;
    Timers* timers = nullptr;
    DefaultsStore* defaults = nullptr;
    Http* http = nullptr;
    Speech* speech = nullptr;
    Alerts* alerts = nullptr;
    Browser* browser = nullptr;
    Clipboard* clipboard = nullptr;
    LoginItems* loginItems = nullptr;
    SessionEvents* session = nullptr;
    WindowHost* window = nullptr;
    QString homeDir;            // the user's home folder, no trailing slash
    QString appDataDir;         // application data (the station-connections file)
    QString executablePath;     // the running program, for the publisher's build copy
    // Tells the user of something found wrong and what was done about it (a broken tables
    // folder, say). Unset: a warning on standard error.
    std::function<void(const QString&)> notice;
};

} // namespace quendle
