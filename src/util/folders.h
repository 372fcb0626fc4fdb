#pragma once
// The folders the application keeps its files in, all below the user's home folder.
// Getters create their folder when it is missing.

#include <QString>

namespace quendle {

class Folders {
public:
    explicit Folders(QString homeDir = QString());

    QString getuserhomedir() const;        // no trailing slash
    QString getprefsfold() const;          // ends in "/"
    QString gettablesfold() const;         // no trailing slash
    QString gettemptablesfold() const;     // ends in "/"
    QString getcrashfile() const;
    // The publisher's fixed folders (publisher mode only).
    QString getresourcesfold() const;
    QString getthisresource(const QString& name) const;
    QString getthisresourcegif(const QString& name) const;
    static QString getthislocalresource(const QString& name);
    // Marker file whose presence switches publisher mode on.
    QString publishermarker() const;
    QString publisherbuildfold() const;

private:
    QString home_;
};

} // namespace quendle
