#include "util/files.h"

#include "util/text.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStringDecoder>
#include <QtGlobal>

namespace quendle {

namespace {

// Files and whole folders; the destination must not exist yet.
bool copyitem(const QString& from, const QString& to)
{
    const QFileInfo src(from);
    if (!src.isDir()) {
        if (!QFile::copy(from, to))
            return false;
        // Copies of resources come out read-only, and a read-only file cannot be saved over.
        if (from.startsWith(':'))
            QFile::setPermissions(to, QFile::permissions(to) | QFileDevice::WriteOwner);
        return true;
    }
    if (!QDir().mkdir(to))
        return false;
    const QDir dir(from);
    const QStringList entries =
        dir.entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    for (const QString& e : entries)
        if (!copyitem(from + '/' + e, to + '/' + e))
            return false;
    return true;
}

bool exists(const QString& path)
{
    const QFileInfo fi(path);
    return fi.exists() || fi.isSymLink();
}

// Whether `path` names `folder` itself or something inside it.
bool within(const QString& path, const QString& folder)
{
    const QString p = QDir::cleanPath(QFileInfo(path).absoluteFilePath());
    const QString f = QDir::cleanPath(QFileInfo(folder).absoluteFilePath());
    return p == f || p.startsWith(f.endsWith('/') ? f : f + '/');
}

} // namespace

QString readfile(const QString& path)
{
    QFile f(path);
    if (QFileInfo(path).isDir() || !f.open(QIODevice::ReadOnly))
        return QString();
    return decodefiletext(f.readAll());
}

QString decodefiletext(const QByteArray& bytes)
{
    QStringDecoder utf8(QStringDecoder::Utf8);
    QString text = utf8(bytes);
    if (utf8.hasError())
        return QString::fromLocal8Bit(bytes);
    return text;
}

namespace {

bool savefile(const QString& path, const QString& text, QString* why)
{
    QSaveFile f(path);
    // Unbuffered, so that a short write (a full disk takes what fits and then refuses the
    // rest without an error) shows here rather than committing a cut-off file.
    if (!f.open(QIODevice::WriteOnly | QIODevice::Unbuffered)) {
        *why = f.errorString();
        return false;
    }
    const QByteArray bytes = text.toUtf8();
    if (f.write(bytes) != bytes.size()) {
        *why = f.error() != QFileDevice::NoError ? f.errorString() : QStringLiteral("the disk is full");
        f.cancelWriting();
        f.commit();   // with writing cancelled, this only removes the sibling file
        return false;
    }
    if (!f.commit()) {
        *why = f.errorString();
        return false;
    }
    return true;
}

} // namespace

QString writefile(const QString& text, const QString& folder, const QString& name)
{
    const QString path = folder + name;
    // Written beside the old file and renamed over it, so a full disk keeps the old text.
    QString why;
    if (!savefile(path, text, &why))
        qWarning("writefile: %s not written, old file kept: %s", qPrintable(path), qPrintable(why));
    return path;
}

bool replacefile(const QString& path, const QString& text, QString* why)
{
    QString reason;
    const bool ok = savefile(path, text, &reason);
    if (why)
        *why = reason;
    return ok;
}

bool lumexist(const QString& path) { return !path.isEmpty() && QFileInfo::exists(path); }

bool lumcopy(const QString& from, const QString& to)
{
    if (from.isEmpty() || to.isEmpty() || exists(to) || !QFileInfo::exists(from))
        return false;
    return copyitem(from, to);
}

void lummove(const QString& from, const QString& to)
{
    if (from.isEmpty() || to.isEmpty() || exists(to)) {
        qWarning("lummove: %s not moved to %s", qPrintable(from), qPrintable(to));
        return;
    }
    bool ok = QFileInfo(from).isDir() && !QFileInfo(from).isSymLink() ? QDir().rename(from, to)
                                                                     : QFile::rename(from, to);
    if (!ok && QFileInfo(from).isDir() && copyitem(from, to))   // another file system
        ok = QDir(from).removeRecursively();
    if (!ok)
        qWarning("lummove: %s not moved to %s", qPrintable(from), qPrintable(to));
}

bool lumdelete(const QString& path, const QString& prefsfold, bool publisherMode)
{
    if (!publisherMode) {
        if (!isthisinthat(prefsfold, path))
            return false;
        // The texts may merely contain each other ("/" is inside every folder name); only
        // the preferences folder itself or something in it is ever removed.
        if (!within(path, prefsfold)) {
            qWarning("lumdelete: %s is outside %s; not deleted", qPrintable(path),
                     qPrintable(prefsfold));
            return false;
        }
    }
    const QFileInfo fi(path);
    if (fi.isSymLink())   // the link, never what it points at
        return QFile::remove(path);
    if (fi.isDir())
        return QDir(path).removeRecursively();
    if (!fi.exists())
        return false;
    return QFile::remove(path);
}

bool lummakedir(const QString& path)
{
    QString p = path;
    if (p.endsWith('/'))
        p.chop(1);
    QDir().mkdir(p);
    return true;
}

} // namespace quendle
