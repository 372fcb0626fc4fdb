#pragma once

namespace quendle {

// The per-user list of programs started at login, as far as it concerns us.
class LoginItems {
public:
    virtual ~LoginItems() = default;
    virtual bool launchOnLogin() const = 0;
    virtual void setLaunchOnLogin(bool on) = 0;
};

} // namespace quendle
