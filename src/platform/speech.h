#pragma once
#include <QString>

namespace quendle {

// Speaks one sentence once, without blocking the caller.
class Speech {
public:
    virtual ~Speech() = default;
    virtual void say(const QString& sentence) = 0;
};

} // namespace quendle
