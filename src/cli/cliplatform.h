#pragma once
// The services a terminal run uses: a clock that stands still at the instant given with
// --now or QUENDLE_NOW (or at the moment the run began), so everything a command prints is
// reckoned from one instant; the user's settings read but never written; and no window,
// speech or login item.

#include "platform/platform.h"

#include <QHash>
#include <QString>

#include <memory>
#include <optional>

namespace quendle {

// Reads through to another store; writes stay in memory, so a terminal run saves nothing,
// until writethrough(): from then on writes reach the store (the one command that saves).
class OverlayDefaults : public DefaultsStore {
public:
    explicit OverlayDefaults(DefaultsStore* base) : base_(base) {}
    bool contains(const QString& key) const override;
    QString stringForKey(const QString& key) const override;
    void setString(const QString& key, const QString& value) override;
    void synchronize() override;
    bool synchronizeFailed() const override { return through_ && base_ && base_->synchronizeFailed(); }
    void writethrough() { through_ = base_ != nullptr; }

private:
    DefaultsStore* base_;
    QHash<QString, QString> written_;
    bool through_ = false;
};

class CliPlatform {
public:
    explicit CliPlatform(std::optional<Date> start);
    ~CliPlatform();
    Platform& platform() { return platform_; }

private:
    struct Services;
    std::unique_ptr<Services> s_;
    Platform platform_;
};

} // namespace quendle
