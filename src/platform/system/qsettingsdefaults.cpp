#include "platform/system/qsettingsdefaults.h"

#include "platform/system/settingstext.h"
#include "util/files.h"

#include <QDateTime>
#include <QDebug>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QStandardPaths>

#include <sys/stat.h>

namespace quendle {

namespace {

// A free name beside the file: path.broken-<time>, with a number when that is taken.
QString brokenname(const QString& path)
{
    const QString base = path + ".broken-" + QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-HHmmss"));
    QString name = base;
    for (int n = 2; QFileInfo::exists(name) || QFileInfo(name).isSymLink(); ++n)
        name = base + "-" + QString::number(n);
    return name;
}

void say(const QString& text) { qWarning().noquote() << QStringLiteral("quendle: ") + text; }

// How long a synchronize waits for another program that is writing the file. A write takes
// milliseconds, so a lock older than kLockStaleMs was left by a program that died (one killed
// between making the lock file and writing its owner into it leaves no owner to ask about).
constexpr int kLockWaitMs = 5000;
constexpr int kLockStaleMs = 2000;

} // namespace

QString QSettingsDefaults::defaultFilePath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
        + QStringLiteral("/quendle/quendle.conf");
}

QSettingsDefaults::QSettingsDefaults() : QSettingsDefaults(defaultFilePath()) {}

QSettingsDefaults::QSettingsDefaults(const QString& filePath) : path_(filePath)
{
    struct stat st;
    const bool there = ::stat(QFile::encodeName(path_).constData(), &st) == 0;
    if (there && S_ISDIR(st.st_mode)) {
        blocked_ = true;
        say(QStringLiteral("the settings file %1 is a folder; settings are not read or saved this time").arg(path_));
        return;
    }
    // A FIFO or a device would be read without end: such a thing is moved aside first.
    if (there && (!S_ISREG(st.st_mode) || st.st_size > kMaxReadBytes)) {
        const QString aside = brokenname(path_);
        const QString what = S_ISREG(st.st_mode) ? QStringLiteral("larger than %1 MB").arg(kMaxReadBytes >> 20)
                                                 : QStringLiteral("not a regular file");
        if (!QFile::rename(path_, aside)) {
            // Cannot be moved: settings live in memory for this run, the file untouched.
            blocked_ = true;
            say(QStringLiteral("the settings file %1 is %2 and cannot be moved aside; settings are not "
                               "read or saved this time")
                    .arg(path_, what));
            return;
        }
        brokenCopy_ = aside;
        say(QStringLiteral("the settings file %1 is %2; it was moved to %3 and the settings start empty")
                .arg(path_, what, aside));
    }
    load();
}

QSettingsDefaults::~QSettingsDefaults()
{
    if (!pending_.isEmpty())
        synchronize();
}

QSettingsDefaults::Stamp QSettingsDefaults::stampof(const QString& path)
{
    Stamp s;
    struct stat st;
    if (::stat(QFile::encodeName(path).constData(), &st) != 0)
        return s;
    s.exists = true;
    s.dev = st.st_dev;
    s.ino = st.st_ino;
    s.size = st.st_size;
    s.mtimens = static_cast<long long>(st.st_mtim.tv_sec) * 1000000000LL + st.st_mtim.tv_nsec;
    return s;
}

void QSettingsDefaults::load()
{
    stamp_ = stampof(path_);
    disk_.clear();
    damaged_ = false;
    if (!stamp_.exists)
        return;
    QByteArray bytes;
    QString why;
    if (!readfilebytes(path_, &bytes, &why)) {
        // Unreadable is damaged as far as saving goes: never written over unless kept.
        damaged_ = true;
        say(QStringLiteral("the settings file %1 %2; settings read as empty, and the file is kept as "
                           "%1.broken-<date and time> before anything is saved over it")
                .arg(path_, why));
        return;
    }
    SettingsText text = readsettingstext(bytes);
    disk_ = std::move(text.values);
    damaged_ = text.damaged;
    if (damaged_)
        say(QStringLiteral("the settings file %1 is damaged; what cannot be read reads as empty, and the "
                           "file is kept as %1.broken-<date and time> before anything is saved over it")
                .arg(path_));
}

bool QSettingsDefaults::keepdamaged()
{
    if (blocked_)
        return false;
    if (!damaged_)
        return true;
    const QString copy = brokenname(path_);
    if (QFile::copy(path_, copy)) {
        brokenCopy_ = copy;
        damaged_ = false;
        return true;
    }
    blocked_ = true;
    say(QStringLiteral("the damaged settings file %1 could not be kept as %2, so nothing is saved over it; "
                       "changes last until the program ends")
            .arg(path_, copy));
    return false;
}

bool QSettingsDefaults::contains(const QString& key) const
{
    return pending_.contains(key) || disk_.contains(key);
}

QString QSettingsDefaults::stringForKey(const QString& key) const
{
    const auto it = pending_.constFind(key);
    return it != pending_.constEnd() ? *it : disk_.value(key);
}

void QSettingsDefaults::setString(const QString& key, const QString& value)
{
    // The damaged file is kept at the first change, before any write can reach it.
    keepdamaged();
    pending_.insert(key, value);
}

void QSettingsDefaults::synchronize()
{
    if (blocked_)
        return;
    failed_ = false;
    if (pending_.isEmpty()) {
        // Nothing to write: only what another program wrote is taken in.
        if (!(stampof(path_) == stamp_))
            load();
        return;
    }
    QDir().mkpath(QFileInfo(path_).absolutePath());
    QLockFile lock(path_ + QStringLiteral(".lock"));
    lock.setStaleLockTime(kLockStaleMs);
    if (!lock.tryLock(kLockWaitMs)) {
        failed_ = true;
        say(QStringLiteral("cannot write the settings file %1: %2")
                .arg(path_, lock.error() == QLockFile::LockFailedError
                                ? QStringLiteral("another program keeps it locked")
                                : QStringLiteral("its lock file %1.lock cannot be made").arg(path_)));
        return;
    }
    if (!(stampof(path_) == stamp_)) {
        load();
        if (!keepdamaged())
            return;
    }
    QMap<QString, QString> merged = disk_;
    for (auto it = pending_.constBegin(); it != pending_.constEnd(); ++it)
        merged.insert(it.key(), it.value());
    QString why;
    if (!replacefile(path_, QString::fromUtf8(writesettingstext(merged)), &why)) {
        failed_ = true;
        say(QStringLiteral("cannot write the settings file %1: %2").arg(path_, why));
        return;
    }
    disk_ = std::move(merged);
    pending_.clear();
    stamp_ = stampof(path_);
}

bool QSettingsDefaults::synchronizeFailed() const
{
    return blocked_ || failed_;
}

} // namespace quendle
