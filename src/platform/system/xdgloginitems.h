#pragma once
// The login item as an XDG autostart entry: <config>/autostart/quendle.desktop, where
// <config> is $XDG_CONFIG_HOME (default ~/.config). Only an entry whose Exec names this
// very executable counts as ours; one left by another copy is neither reported nor removed.

#include "platform/loginitems.h"

#include <QString>

namespace quendle {

class XdgLoginItems : public LoginItems {
public:
    // The user's config folder; the running executable (QCoreApplication's, read when needed).
    XdgLoginItems();
    // For tests and unusual installs. An empty executablePath means the running one.
    explicit XdgLoginItems(const QString& configDir, const QString& executablePath = QString());

    bool launchOnLogin() const override;
    void setLaunchOnLogin(bool on) override;

    QString entryPath() const;
    QString executablePath() const;

    // Desktop-entry encoding of one program path as the value of Exec= (quoted when it
    // holds reserved characters, "%" doubled, backslashes escaped for the string type),
    // and the reverse: the program named by an Exec value, "" when there is none.
    static QString execValue(const QString& program);
    static QString execProgram(const QString& execValue);

private:
    QString configDir_;
    QString executable_;
};

} // namespace quendle
