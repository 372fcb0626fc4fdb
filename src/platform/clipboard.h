#pragma once
#include <QString>

namespace quendle {

// The desktop's clipboard (text only).
class Clipboard {
public:
    virtual ~Clipboard() = default;
    virtual void setText(const QString& text) = 0;
};

} // namespace quendle
