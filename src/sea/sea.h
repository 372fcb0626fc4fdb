#pragma once
// Sea conditions: the wave height and the sea temperature kept in the defaults store
// (nothing in the application writes them), as a text and a wave icon for the status item.

#include "platform/defaults.h"

#include <QString>
#include <QStringList>

#include <functional>

namespace quendle {

class Sea {
public:
    explicit Sea(DefaultsStore* defaults) : defaults_(defaults) {}

    // The status item's refresh: title, unused, icon number.
    std::function<void(const QString&, int, int)> refreshstat;

    // The wave height in feet as stored, or "" when nothing is stored.
    QString waveasstr() const;
    // 13 low or unknown, 15 medium, 16 high; 14 for an out-of-date reading.
    int waveasicon() const;
    // Shows the conditions on the status item and answers the temperature, or "?".
    QString displayseatemp();
    void getseaanimals() {}

private:
    // The key's text split at "#"; no pieces at all when the key is missing.
    QStringList pieces(const QString& key) const;
    // Whether the reading's instant (piece 1) is out of date.
    static bool outofdate(const QStringList& pieces);

    DefaultsStore* defaults_;
};

} // namespace quendle
