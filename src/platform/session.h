#pragma once
#include <functional>

namespace quendle {

// Sleep, wake, activation and deactivation of the session and the application.
struct SessionHandlers {
    std::function<void()> willSleep;
    std::function<void()> didWake;
    std::function<void()> becameActive;
    std::function<void()> resignedActive;
};

class SessionEvents {
public:
    virtual ~SessionEvents() = default;
    virtual void setHandlers(SessionHandlers handlers) = 0;
};

} // namespace quendle
