#include "platform/system/qsettingsdefaults.h"

#include <QDebug>
#include <QDir>
#include <QFileInfo>
#include <QSettings>
#include <QStandardPaths>
#include <QStringList>

namespace quendle {

QString QSettingsDefaults::defaultFilePath()
{
    // Named explicitly: QSettings' own IniFormat name would end in ".ini".
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
        + QStringLiteral("/quendle/quendle.conf");
}

QSettingsDefaults::QSettingsDefaults() : QSettingsDefaults(defaultFilePath()) {}

QSettingsDefaults::QSettingsDefaults(const QString& filePath)
    : path_(filePath), settings_(std::make_unique<QSettings>(filePath, QSettings::IniFormat))
{
    if (settings_->status() == QSettings::FormatError)
        qWarning().noquote() << QStringLiteral("quendle: the settings file %1 is damaged; "
                                               "unreadable settings read as empty")
                                    .arg(path_);
}

QSettingsDefaults::~QSettingsDefaults() = default;

bool QSettingsDefaults::contains(const QString& key) const
{
    return settings_->contains(key);
}

QString QSettingsDefaults::stringForKey(const QString& key) const
{
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
    settings_->setValue(key, value);
}

void QSettingsDefaults::synchronize()
{
    QDir().mkpath(QFileInfo(path_).absolutePath());
    settings_->sync();
    if (settings_->status() == QSettings::AccessError)
        qWarning().noquote() << QStringLiteral("quendle: cannot write the settings file %1").arg(path_);
}

bool QSettingsDefaults::synchronizeFailed() const
{
    return settings_->status() == QSettings::AccessError;
}

} // namespace quendle
