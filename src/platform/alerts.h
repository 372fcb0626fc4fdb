#pragma once
#include <QString>
#include <QStringList>

namespace quendle {

// Modal alerts with up to four buttons; browser opening.
class Alerts {
public:
    virtual ~Alerts() = default;
    // Returns the index of the chosen button (0 for the first); 0 when there are none.
    virtual int alert(const QString& message, const QString& info, const QStringList& buttons) = 0;
};

class Browser {
public:
    virtual ~Browser() = default;
    virtual bool openUrl(const QString& url) = 0;
};

} // namespace quendle
