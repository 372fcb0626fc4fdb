#pragma once
// Stand-ins for the services a terminal run (or a test) has no use for: a window that
// exists only in memory, no session events, no network, no browser, a private clipboard,
// and alerts that are printed instead of asked.

#include "platform/alerts.h"
#include "platform/clipboard.h"
#include "platform/http.h"
#include "platform/session.h"
#include "platform/window.h"

#include <QStringList>

#include <cstdio>

namespace quendle {

// Keeps the frame it is given, on a 1920 x 1080 screen, and counts what was asked of it.
class NullWindowHost : public WindowHost {
public:
    Rect frame() const override { return frame_; }
    void setFrame(const Rect& r, bool) override { frame_ = r; }
    Rect screenFrame() const override { return screen_; }
    void redisplay() override { ++redisplays_; }
    void activate() override { ++activations_; }
    void setStatus(const StatusShown& status) override
    {
        status_ = status;
        ++statusSets_;
    }
    void quit() override { quitRequested_ = true; }

    void setScreenFrame(const Rect& r) { screen_ = r; }
    int redisplays() const { return redisplays_; }
    int activations() const { return activations_; }
    QString statusTitle() const { return status_.title; }
    QString statusIcon() const { return status_.iconName; }
    const StatusShown& status() const { return status_; }
    int statusSets() const { return statusSets_; }
    bool quitRequested() const { return quitRequested_; }

private:
    Rect frame_;
    Rect screen_{0, 0, 1920, 1080};
    int redisplays_ = 0;
    int activations_ = 0;
    StatusShown status_;
    int statusSets_ = 0;
    bool quitRequested_ = false;
};

// Never reports anything by itself; a test can play the events.
class NullSession : public SessionEvents {
public:
    void setHandlers(SessionHandlers handlers) override { handlers_ = std::move(handlers); }
    void sleep() { call(handlers_.willSleep); }
    void wake() { call(handlers_.didWake); }
    void activate() { call(handlers_.becameActive); }
    void resign() { call(handlers_.resignedActive); }

private:
    static void call(const std::function<void()>& f)
    {
        if (f)
            f();
    }
    SessionHandlers handlers_;
};

// Every fetch fails, as it does with no network.
class NullHttp : public Http {
public:
    QString get(const QString& url) override
    {
        requested_ << url;
        return QString();
    }
    QString postForm(const QString& url, const QString&) override
    {
        requested_ << url;
        return QString();
    }
    QStringList requested() const { return requested_; }

private:
    QStringList requested_;
};

// Opens nothing; remembers what it was asked to open.
class NullBrowser : public Browser {
public:
    bool openUrl(const QString& url) override
    {
        opened_ << url;
        return false;
    }
    QStringList opened() const { return opened_; }

private:
    QStringList opened_;
};

// A clipboard of its own, for runs without a desktop: keeps the last text.
class NullClipboard : public Clipboard {
public:
    void setText(const QString& text) override { text_ = text; }
    QString text() const { return text_; }

private:
    QString text_;
};

// Prints the alert and its buttons, and answers with the first button. Never reads input,
// so a terminal run cannot hang on a question.
class ConsoleAlerts : public Alerts {
public:
    explicit ConsoleAlerts(std::FILE* out = stderr) : out_(out) {}
    int alert(const QString& message, const QString& info, const QStringList& buttons) override;

private:
    std::FILE* out_;
};

} // namespace quendle
