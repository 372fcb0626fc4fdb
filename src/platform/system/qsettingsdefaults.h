#pragma once
// The per-user defaults store in an INI file: by default
// $XDG_CONFIG_HOME/quendle/quendle.conf (~/.config when XDG_CONFIG_HOME is unset).
// Values are text under plain keys. A damaged file is reported once and whatever cannot be
// read reads as ""; the next synchronize writes a clean file.

#include "platform/defaults.h"

#include <QString>

#include <memory>

class QSettings;

namespace quendle {

class QSettingsDefaults : public DefaultsStore {
public:
    QSettingsDefaults();
    explicit QSettingsDefaults(const QString& filePath);
    ~QSettingsDefaults() override;

    bool contains(const QString& key) const override;
    QString stringForKey(const QString& key) const override;
    void setString(const QString& key, const QString& value) override;
    void synchronize() override;
    bool synchronizeFailed() const override;

    QString filePath() const { return path_; }
    static QString defaultFilePath();

private:
    QString path_;
    std::unique_ptr<QSettings> settings_;
};

} // namespace quendle
