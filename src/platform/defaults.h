#pragma once
#include <QString>

namespace quendle {

// The per-user defaults store: text under string keys.
class DefaultsStore {
public:
    virtual ~DefaultsStore() = default;
    virtual bool contains(const QString& key) const = 0;
    virtual QString stringForKey(const QString& key) const = 0;   // "" when missing
    virtual void setString(const QString& key, const QString& value) = 0;
    virtual void synchronize() = 0;
    // Whether the last synchronize could not write the store out.
    virtual bool synchronizeFailed() const { return false; }
};

} // namespace quendle
