#pragma once
// Desktop services that need widgets: modal alerts, the web browser and the clipboard.

#include "platform/alerts.h"
#include "platform/clipboard.h"

namespace quendle {

class MessageBoxAlerts : public Alerts {
public:
    int alert(const QString& message, const QString& info, const QStringList& buttons) override;
};

class DesktopBrowser : public Browser {
public:
    bool openUrl(const QString& url) override;
};

class DesktopClipboard : public Clipboard {
public:
    void setText(const QString& text) override;
};

} // namespace quendle
