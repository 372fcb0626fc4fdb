#include "util/files.h"

#include "util/text.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStringDecoder>
#include <QtGlobal>

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quendle {

namespace {

// Files and whole folders; the destination must not exist yet.
bool copyitem(const QString& from, const QString& to)
{
    const QFileInfo src(from);
    if (!src.isDir()) {
        // Copying a FIFO or a device would block or never end.
        if (!from.startsWith(':') && !src.isFile())
            return false;
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

namespace {

QString kindof(mode_t mode)
{
    if (S_ISDIR(mode))
        return QStringLiteral("is a folder");
    if (S_ISFIFO(mode))
        return QStringLiteral("is a FIFO (named pipe)");
    if (S_ISSOCK(mode))
        return QStringLiteral("is a socket");
    if (S_ISCHR(mode) || S_ISBLK(mode))
        return QStringLiteral("is a device");
    return QStringLiteral("is not a regular file");
}

QString toolarge(qint64 limit)
{
    if (limit >= 1024 * 1024)
        return QStringLiteral("is larger than %1 MB").arg(limit / (1024 * 1024));
    return QStringLiteral("is larger than %1 bytes").arg(limit);
}

bool fail(QString* why, const QString& reason)
{
    if (why)
        *why = reason;
    return false;
}

} // namespace

bool readfilebytes(const QString& path, QByteArray* out, QString* why, qint64 limit)
{
    out->clear();
    if (path.isEmpty())
        return fail(why, QStringLiteral("has no name"));
    if (path.startsWith(QLatin1Char(':'))) {   // a compiled-in resource
        QFile f(path);
        if (!f.open(QIODevice::ReadOnly))
            return fail(why, QStringLiteral("does not exist"));
        if (f.size() > limit)
            return fail(why, toolarge(limit));
        *out = f.readAll();
        return true;
    }
    // Opened without waiting (a FIFO with no writer would block an ordinary open), then
    // judged by what was opened, so the file cannot be swapped between a look and a read.
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    if (fd < 0)
        return fail(why, errno == ENOENT ? QStringLiteral("does not exist")
                                         : QStringLiteral("cannot be read (%1)").arg(QString::fromLocal8Bit(strerror(errno))));
    struct Closer {
        int fd;
        ~Closer() { ::close(fd); }
    } closer{fd};
    struct stat st;
    if (::fstat(fd, &st) != 0)
        return fail(why, QStringLiteral("cannot be read (%1)").arg(QString::fromLocal8Bit(strerror(errno))));
    if (!S_ISREG(st.st_mode))
        return fail(why, kindof(st.st_mode));
    if (st.st_size > limit)
        return fail(why, toolarge(limit));
    // The size can be wrong (files in /proc say 0) or grow while read: never past the limit.
    QByteArray bytes;
    bytes.reserve(static_cast<qsizetype>(st.st_size));
    char buf[65536];
    for (;;) {
        const ssize_t n = ::read(fd, buf, sizeof buf);
        if (n < 0) {
            if (errno == EINTR)
                continue;
            return fail(why, QStringLiteral("cannot be read (%1)").arg(QString::fromLocal8Bit(strerror(errno))));
        }
        if (n == 0)
            break;
        if (bytes.size() + n > limit)
            return fail(why, toolarge(limit));
        bytes.append(buf, n);
    }
    *out = std::move(bytes);
    return true;
}

QString readfile(const QString& path, QString* why)
{
    QByteArray bytes;
    if (!readfilebytes(path, &bytes, why))
        return QString();
    return decodefiletext(bytes);
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
