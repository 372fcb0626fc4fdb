#pragma once
// Synchronous web fetches with QtNetwork, bounded in time and size.
//
// The request runs on a worker thread with its own event loop while the caller waits: like
// the blocking fetches the model was written for, no model code (no timer, no input) runs
// in the caller's thread meanwhile, and no running event loop is needed there (a
// QCoreApplication must exist). A window, though, must not freeze for as long as a server
// takes to time out: with keepresponsive(), a wait inside a running event loop goes on
// handling everything but user input and socket notifiers (so windows repaint), and calls
// the hold hook around it so that the owner's timers stay quiet; the input waits for the
// end of the fetch. Redirects are followed (at most five, never from https
// to http). Every failure (bad address, DNS, refused, timeout, HTTP error status, a body
// over the size limit) returns "" and logs one line. Bodies are read as UTF-8, or Latin-1
// when they are not valid UTF-8.

#include "platform/http.h"

#include <QByteArray>
#include <QString>

#include <functional>
#include <memory>

class QThread;

namespace quendle {

class QtHttp : public Http {
public:
    static constexpr int kDefaultTimeoutMs = 20000;
    static constexpr qint64 kDefaultMaxBytes = 8 * 1024 * 1024;
    static constexpr int kMaxRedirects = 5;

    explicit QtHttp(int timeoutMs = kDefaultTimeoutMs, qint64 maxBytes = kDefaultMaxBytes);
    ~QtHttp() override;
    QtHttp(const QtHttp&) = delete;
    QtHttp& operator=(const QtHttp&) = delete;

    QString get(const QString& url) override;
    // formBody is sent as is, as application/x-www-form-urlencoded.
    QString postForm(const QString& url, const QString& formBody) override;
    QString getbounded(const QString& url, qint64 maxBytes) override;

    // hold(true) before a responsive wait, hold(false) after it.
    void keepresponsive(std::function<void(bool)> hold) { hold_ = std::move(hold); }

    // Why the last fetch read as "", or "" when it succeeded.
    QString lastError() const override { return lastError_; }

private:
    QString fetch(const QString& url, const QByteArray* formBody, qint64 maxBytes);

    int timeoutMs_;
    qint64 maxBytes_;
    std::unique_ptr<QThread> thread_;
    class Worker;
    Worker* worker_ = nullptr;   // lives in thread_, deleted when it finishes
    QString lastError_;
    std::function<void(bool)> hold_;   // set: waits keep the event loop going
};

} // namespace quendle
