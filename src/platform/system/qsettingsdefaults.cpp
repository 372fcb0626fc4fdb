#include "platform/system/qsettingsdefaults.h"

#include "util/files.h"

#include <QDateTime>
#include <QDebug>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>
#include <QStandardPaths>
#include <QStringList>
#include <QTemporaryDir>

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

} // namespace

QString QSettingsDefaults::defaultFilePath()
{
    // Named explicitly: QSettings' own IniFormat name would end in ".ini".
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
        + QStringLiteral("/quendle/quendle.conf");
}

QSettingsDefaults::QSettingsDefaults() : QSettingsDefaults(defaultFilePath()) {}

QSettingsDefaults::QSettingsDefaults(const QString& filePath) : path_(filePath)
{
    // QSettings would read a FIFO or a device without end: such a thing is moved aside first.
    struct stat st;
    const bool there = ::stat(QFile::encodeName(path_).constData(), &st) == 0;
    if (there && !S_ISDIR(st.st_mode) && (!S_ISREG(st.st_mode) || st.st_size > kMaxReadBytes)) {
        const QString aside = brokenname(path_);
        const QString what = S_ISREG(st.st_mode) ? QStringLiteral("larger than %1 MB").arg(kMaxReadBytes >> 20)
                                                 : QStringLiteral("not a regular file");
        if (QFile::rename(path_, aside)) {
            brokenCopy_ = aside;
            say(QStringLiteral("the settings file %1 is %2; it was moved to %3 and the settings start empty")
                    .arg(path_, what, aside));
        } else {
            // Cannot be moved: settings live in memory for this run, the file untouched.
            nowhere_ = std::make_unique<QTemporaryDir>();
            blocked_ = true;
            say(QStringLiteral("the settings file %1 is %2 and cannot be moved aside; settings are not "
                               "read or saved this time")
                    .arg(path_, what));
        }
    }
    settings_ = std::make_unique<QSettings>(nowhere_ ? nowhere_->filePath("quendle.conf") : path_,
                                            QSettings::IniFormat);
    if (settings_->status() == QSettings::FormatError) {
        damaged_ = true;
        say(QStringLiteral("the settings file %1 is damaged; what cannot be read reads as empty, and the "
                           "file is kept as %1.broken-<date and time> before anything is saved over it")
                .arg(path_));
    }
}

QSettingsDefaults::~QSettingsDefaults() = default;

bool QSettingsDefaults::keepdamaged()
{
    if (!damaged_ || blocked_)
        return !blocked_;
    damaged_ = false;
    const QString copy = brokenname(path_);
    if (QFile::copy(path_, copy)) {
        brokenCopy_ = copy;
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
    return unsaved_.contains(key) || settings_->contains(key);
}

QString QSettingsDefaults::stringForKey(const QString& key) const
{
    if (unsaved_.contains(key))
        return unsaved_.value(key);
    const QVariant v = settings_->value(key);
    if (!v.isValid())
        return QString();
    // A hand-edited line "a, b" comes back as a list.
    if (v.typeId() == QMetaType::QStringList)
        return v.toStringList().join(QLatin1Char(','));
    return v.canConvert<QString>() ? v.toString() : QString();
}

void QSettingsDefaults::setString(const QString& key, const QString& value)
{
    // QSettings writes what it holds when it goes, so a damaged file is kept before the
    // first change reaches it.
    if (!keepdamaged()) {
        unsaved_.insert(key, value);
        return;
    }
    settings_->setValue(key, value);
}

void QSettingsDefaults::synchronize()
{
    if (blocked_)
        return;
    QDir().mkpath(QFileInfo(path_).absolutePath());
    settings_->sync();
    if (settings_->status() == QSettings::AccessError)
        qWarning().noquote() << QStringLiteral("quendle: cannot write the settings file %1").arg(path_);
}

bool QSettingsDefaults::synchronizeFailed() const
{
    return blocked_ || settings_->status() == QSettings::AccessError;
}

} // namespace quendle
