#pragma once
#include <QString>

namespace quendle {

// Synchronous fetches, bounded in time and size. A failed fetch reads as "".
class Http {
public:
    virtual ~Http() = default;
    virtual QString get(const QString& url) = 0;
    virtual QString postForm(const QString& url, const QString& formBody) = 0;
    // Why the last fetch read as "" (for messages), or "" when it succeeded or is unknown.
    virtual QString lastError() const { return QString(); }
};

} // namespace quendle
