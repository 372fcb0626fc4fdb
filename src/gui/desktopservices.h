#pragma once
// Desktop services that need widgets: modal alerts and the web browser.

#include "platform/alerts.h"

namespace quendle {

class MessageBoxAlerts : public Alerts {
public:
    int alert(const QString& message, const QString& info, const QStringList& buttons) override;
};

class DesktopBrowser : public Browser {
public:
    bool openUrl(const QString& url) override;
};

} // namespace quendle
