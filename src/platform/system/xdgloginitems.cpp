#include "platform/system/xdgloginitems.h"

#include <QCoreApplication>
#include <QDebug>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>
#include <QStringList>

namespace quendle {

namespace {

const QString kEntryName = QStringLiteral("quendle.desktop");

// Characters that oblige an Exec argument to be quoted.
bool needsquotes(const QString& arg)
{
    static const QString reserved = QStringLiteral(" \t\n\"'\\><~|&;$*?#()`");
    if (arg.isEmpty())
        return true;
    for (const QChar c : arg) {
        if (reserved.contains(c))
            return true;
    }
    return false;
}

// Reverses the escapes of the desktop-entry string type (\s \n \t \r \\).
QString unescapestring(const QString& v)
{
    QString out;
    out.reserve(v.size());
    for (qsizetype i = 0; i < v.size(); ++i) {
        if (v[i] != QLatin1Char('\\') || i + 1 == v.size()) {
            out += v[i];
            continue;
        }
        const QChar n = v[++i];
        if (n == QLatin1Char('s'))
            out += QLatin1Char(' ');
        else if (n == QLatin1Char('n'))
            out += QLatin1Char('\n');
        else if (n == QLatin1Char('t'))
            out += QLatin1Char('\t');
        else if (n == QLatin1Char('r'))
            out += QLatin1Char('\r');
        else if (n == QLatin1Char('\\'))
            out += QLatin1Char('\\');
        else
            out += QLatin1Char('\\') + QString(n);
    }
    return out;
}

// The [Desktop Entry] group of a desktop file as key -> raw value.
QHash<QString, QString> readentry(const QString& path)
{
    QHash<QString, QString> keys;
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly))
        return keys;
    bool inGroup = false;
    const QStringList lines = QString::fromUtf8(f.readAll()).split(QLatin1Char('\n'));
    for (QString line : lines) {
        line = line.trimmed();
        if (line.startsWith(QLatin1Char('['))) {
            inGroup = line == QLatin1String("[Desktop Entry]");
            continue;
        }
        const qsizetype eq = line.indexOf(QLatin1Char('='));
        if (!inGroup || line.startsWith(QLatin1Char('#')) || eq <= 0)
            continue;
        const QString key = line.left(eq).trimmed();
        if (!keys.contains(key))
            keys.insert(key, line.mid(eq + 1).trimmed());
    }
    return keys;
}

bool samefile(const QString& a, const QString& b)
{
    if (a.isEmpty() || b.isEmpty())
        return false;
    if (QDir::cleanPath(a) == QDir::cleanPath(b))
        return true;
    const QString ca = QFileInfo(a).canonicalFilePath(), cb = QFileInfo(b).canonicalFilePath();
    return !ca.isEmpty() && ca == cb;
}

} // namespace

XdgLoginItems::XdgLoginItems()
    : XdgLoginItems(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation))
{
}

XdgLoginItems::XdgLoginItems(const QString& configDir, const QString& executablePath)
    : configDir_(configDir), executable_(executablePath)
{
}

QString XdgLoginItems::entryPath() const
{
    return configDir_ + QStringLiteral("/autostart/") + kEntryName;
}

QString XdgLoginItems::executablePath() const
{
    if (!executable_.isEmpty())
        return executable_;
    return QCoreApplication::instance() ? QCoreApplication::applicationFilePath() : QString();
}

QString XdgLoginItems::execValue(const QString& program)
{
    QString arg = program;
    if (needsquotes(arg)) {
        QString quoted;
        for (const QChar c : arg) {
            if (c == QLatin1Char('"') || c == QLatin1Char('`') || c == QLatin1Char('$') || c == QLatin1Char('\\'))
                quoted += QLatin1Char('\\');
            quoted += c;
        }
        arg = QLatin1Char('"') + quoted + QLatin1Char('"');
    }
    arg.replace(QLatin1Char('%'), QStringLiteral("%%"));
    // The string-type escapes apply on top of the quoting.
    arg.replace(QLatin1Char('\\'), QStringLiteral("\\\\"));
    arg.replace(QLatin1Char('\n'), QStringLiteral("\\n"));
    arg.replace(QLatin1Char('\t'), QStringLiteral("\\t"));
    arg.replace(QLatin1Char('\r'), QStringLiteral("\\r"));
    return arg;
}

QString XdgLoginItems::execProgram(const QString& execValue)
{
    const QString v = unescapestring(execValue);
    qsizetype i = 0;
    while (i < v.size() && (v[i] == QLatin1Char(' ') || v[i] == QLatin1Char('\t')))
        ++i;
    QString arg;
    if (i < v.size() && v[i] == QLatin1Char('"')) {
        for (++i; i < v.size() && v[i] != QLatin1Char('"'); ++i) {
            if (v[i] == QLatin1Char('\\') && i + 1 < v.size())
                ++i;
            arg += v[i];
        }
        if (i >= v.size())
            return QString();   // unterminated quote
    } else {
        for (; i < v.size() && v[i] != QLatin1Char(' ') && v[i] != QLatin1Char('\t'); ++i)
            arg += v[i];
    }
    arg.replace(QStringLiteral("%%"), QStringLiteral("%"));
    return arg;
}

bool XdgLoginItems::launchOnLogin() const
{
    const QHash<QString, QString> entry = readentry(entryPath());
    if (entry.value(QStringLiteral("Hidden")) == QLatin1String("true")
        || entry.value(QStringLiteral("X-GNOME-Autostart-enabled")) == QLatin1String("false"))
        return false;
    return samefile(execProgram(entry.value(QStringLiteral("Exec"))), executablePath());
}

void XdgLoginItems::setLaunchOnLogin(bool on)
{
    const QString path = entryPath();
    const QString exe = executablePath();
    if (!on) {
        const QHash<QString, QString> entry = readentry(path);
        if (samefile(execProgram(entry.value(QStringLiteral("Exec"))), exe) && !QFile::remove(path))
            qWarning().noquote() << QStringLiteral("quendle: cannot remove the login item %1").arg(path);
        return;
    }
    if (exe.isEmpty()) {
        qWarning("quendle: the running program's path is unknown; no login item made");
        return;
    }
    QDir().mkpath(QFileInfo(path).absolutePath());
    const QString text = QStringLiteral("[Desktop Entry]\n"
                                        "Type=Application\n"
                                        "Name=Quendle\n"
                                        "Comment=The next trains of your regular journey\n"
                                        "Exec=%1\n"
                                        "Terminal=false\n"
                                        "X-GNOME-Autostart-enabled=true\n"
                                        "Hidden=false\n")
                             .arg(execValue(QFileInfo(exe).absoluteFilePath()));
    QSaveFile f(path);
    if (!f.open(QIODevice::WriteOnly) || f.write(text.toUtf8()) < 0 || !f.commit())
        qWarning().noquote() << QStringLiteral("quendle: cannot write the login item %1").arg(path);
}

} // namespace quendle
