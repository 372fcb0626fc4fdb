#pragma once
#include <QString>

namespace quendle {

// Synchronous fetches, bounded in time and size. A failed fetch reads as "".
class Http {
public:
    virtual ~Http() = default;
    virtual QString get(const QString& url) = 0;
    virtual QString postForm(const QString& url, const QString& formBody) = 0;
    // A GET with a size limit of its own, for downloads larger than a web page (tables);
    // a service without a per-fetch limit keeps its usual one.
    virtual QString getbounded(const QString& url, qint64 maxBytes)
    {
        Q_UNUSED(maxBytes);
        return get(url);
    }
    // Why the last fetch read as "" (for messages), or "" when it succeeded or is unknown.
    virtual QString lastError() const { return QString(); }
};

} // namespace quendle
