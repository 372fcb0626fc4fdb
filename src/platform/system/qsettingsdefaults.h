#pragma once
// The per-user defaults store in an INI file: by default
// $XDG_CONFIG_HOME/quendle/quendle.conf (~/.config when XDG_CONFIG_HOME is unset).
// Values are text under plain keys. The file keeps the layout of Qt's INI settings (the
// store once was a QSettings), but it is read and written here (settingstext.h), text
// only: Qt's own reader decodes serialized values, and a hostile one asks it for any
// amount of memory.
//
// Every synchronize reads the file again when another process has changed it and writes
// this store's changes over what it found, under a lock, replacing the file whole.
//
// A file that cannot be read in full is never lost: what cannot be read reads as "", and
// before the first change is written the file is kept beside it as
// "quendle.conf.broken-<yyyyMMdd-HHmmss>"; when that copy cannot be made, changes stay in
// memory and nothing is written over the file. Only a regular file of at most the read
// limit is read: a FIFO, socket or device in its place is moved aside (kept under the same
// name) and the settings start empty; a folder in its place is left alone and nothing is
// saved. Each of these is said once, on standard error.

#include "platform/defaults.h"

#include <QMap>
#include <QString>

#include <sys/types.h>

namespace quendle {

class QSettingsDefaults : public DefaultsStore {
public:
    QSettingsDefaults();
    explicit QSettingsDefaults(const QString& filePath);
    ~QSettingsDefaults() override;   // writes changes not yet synchronized

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
    // Which file was read last: a change of any of these means another writer.
    struct Stamp {
        bool exists = false;
        dev_t dev = 0;
        ino_t ino = 0;
        off_t size = 0;
        long long mtimens = 0;
        bool operator==(const Stamp&) const = default;
    };
    static Stamp stampof(const QString& path);
    // Reads the file into disk_ and sets damaged_.
    void load();
    // Before writing over a damaged file: keeps it; false when it could not.
    bool keepdamaged();

    QString path_;
    QMap<QString, QString> disk_;      // as the file was last read or written
    QMap<QString, QString> pending_;   // changes not yet written
    Stamp stamp_;
    bool damaged_ = false;   // the file as last read could not be read in full
    bool blocked_ = false;   // nothing is written: the file could not be kept, or is a folder
    bool failed_ = false;    // the last synchronize could not write
    QString brokenCopy_;
};

} // namespace quendle
