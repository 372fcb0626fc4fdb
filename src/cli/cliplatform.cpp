#include "cli/cliplatform.h"

#include "platform/desktop/qthttp.h"
#include "platform/system/manualtimers.h"
#include "platform/system/nullservices.h"
#include "platform/system/qsettingsdefaults.h"
#include "platform/system/systemclock.h"
#include "util/dates.h"

#include <QCoreApplication>
#include <QDir>
#include <QStandardPaths>

namespace quendle {

bool OverlayDefaults::contains(const QString& key) const
{
    return written_.contains(key) || (base_ && base_->contains(key));
}

QString OverlayDefaults::stringForKey(const QString& key) const
{
    if (written_.contains(key))
        return written_.value(key);
    return base_ ? base_->stringForKey(key) : QString();
}

void OverlayDefaults::setString(const QString& key, const QString& value)
{
    if (!through_) {
        written_.insert(key, value);
        return;
    }
    written_.remove(key);
    base_->setString(key, value);
}

void OverlayDefaults::synchronize()
{
    if (through_)
        base_->synchronize();
}

struct CliPlatform::Services {
    ManualClock clock;
    std::unique_ptr<ManualTimers> timers;
    QSettingsDefaults settings;
    std::unique_ptr<OverlayDefaults> defaults;
    QtHttp http;
    ConsoleAlerts alerts;
    NullBrowser browser;
    NullClipboard clipboard;
    NullWindowHost window;
};

CliPlatform::CliPlatform(std::optional<Date> start) : s_(std::make_unique<Services>())
{
    s_->clock.set(start ? *start : SystemClock().now());
    // A terminal run never waits for a timer: they are armed but nothing advances them.
    s_->timers = std::make_unique<ManualTimers>(s_->clock);
    s_->defaults = std::make_unique<OverlayDefaults>(&s_->settings);
    platform_.clock = &s_->clock;
    platform_.timers = s_->timers.get();
    platform_.defaults = s_->defaults.get();
    platform_.http = &s_->http;
    platform_.alerts = &s_->alerts;
    platform_.browser = &s_->browser;
    platform_.clipboard = &s_->clipboard;
    platform_.window = &s_->window;
    platform_.homeDir = QDir::homePath();
    platform_.appDataDir = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + "/quendle";
    platform_.executablePath = QCoreApplication::applicationFilePath();
}

CliPlatform::~CliPlatform() = default;

} // namespace quendle
