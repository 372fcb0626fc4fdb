#pragma once
// The per-user defaults store in an INI file: by default
// $XDG_CONFIG_HOME/quendle/quendle.conf (~/.config when XDG_CONFIG_HOME is unset).
// Values are text under plain keys.
//
// A file that cannot be read in full is never lost: what cannot be read reads as "", and
// before the first change is written the file is kept beside it as
// "quendle.conf.broken-<yyyyMMdd-HHmmss>"; when that copy cannot be made, changes stay in
// memory and nothing is written over the file. Only a regular file of at most the read
// limit is read: a FIFO, socket or device in its place is moved aside (kept under the same
// name) and the settings start empty. Each of these is said once, on standard error.

#include "platform/defaults.h"

#include <QHash>
#include <QString>

#include <memory>

class QSettings;
class QTemporaryDir;

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
    // Where the damaged file was kept; "" when nothing was.
    QString brokenCopy() const { return brokenCopy_; }

private:
    // Before the first change: keeps a damaged file; false when it could not.
    bool keepdamaged();

    QString path_;
    std::unique_ptr<QTemporaryDir> nowhere_;   // stands in for a file that cannot be used
    std::unique_ptr<QSettings> settings_;
    bool damaged_ = false;       // the file could not be read in full
    bool blocked_ = false;       // its copy could not be kept: nothing is written
    QString brokenCopy_;
    QHash<QString, QString> unsaved_;   // changes while blocked
};

} // namespace quendle
