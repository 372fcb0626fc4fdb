#pragma once
// A defaults store that lives and dies with the process: for tests, and for runs that
// must not save anything.

#include "platform/defaults.h"

#include <QHash>

namespace quendle {

class MemoryDefaults : public DefaultsStore {
public:
    bool contains(const QString& key) const override { return values_.contains(key); }
    QString stringForKey(const QString& key) const override { return values_.value(key); }
    void setString(const QString& key, const QString& value) override { values_.insert(key, value); }
    void synchronize() override { ++synchronizeCount_; }

    void remove(const QString& key) { values_.remove(key); }
    QStringList keys() const { return values_.keys(); }
    int synchronizeCount() const { return synchronizeCount_; }

private:
    QHash<QString, QString> values_;
    int synchronizeCount_ = 0;
};

} // namespace quendle
