#pragma once
// File helpers. Paths may name Qt resources (":/...").

#include <QByteArray>
#include <QString>

namespace quendle {

// Every file the application reads is a regular file of at most this size. Anything else
// (a device such as /dev/zero, a FIFO, a socket, a folder, a huge file) reads as nothing,
// without blocking and without reading past the limit.
constexpr qint64 kMaxReadBytes = 100LL * 1024 * 1024;
// The whole file; false, with the reason in *why ("is a FIFO", "is larger than 100 MB",
// "does not exist", ...), when it is not such a file or cannot be read.
bool readfilebytes(const QString& path, QByteArray* out, QString* why = nullptr, qint64 limit = kMaxReadBytes);
// Whole text (UTF-8, else local 8-bit); "" when unreadable, the reason in *why.
QString readfile(const QString& path, QString* why = nullptr);
// A file's bytes as text, the way readfile reads them: UTF-8, else the local 8-bit encoding.
QString decodefiletext(const QByteArray& bytes);
// Writes text as UTF-8 to folder + name (plain concatenation), replacing any file there.
// The old file survives a failed write (full disk). Returns the path.
QString writefile(const QString& text, const QString& folder, const QString& name);
// Replaces the file at path by text (UTF-8): written to a sibling file, flushed and renamed
// over the old one, so a crash or a full disk leaves the old file or the new one, never a
// mix. false when it failed (the old file is then untouched), with the reason in *why;
// quiet, the caller decides.
bool replacefile(const QString& path, const QString& text, QString* why = nullptr);
bool lumexist(const QString& path);
bool lumcopy(const QString& from, const QString& to);  // false when `to` exists
void lummove(const QString& from, const QString& to);
// Deletes only inside the preferences folder (or anywhere in publisher mode).
bool lumdelete(const QString& path, const QString& prefsfold, bool publisherMode);
// Creates one folder (no intermediates); a trailing "/" is cut first; always true.
bool lummakedir(const QString& path);

} // namespace quendle
