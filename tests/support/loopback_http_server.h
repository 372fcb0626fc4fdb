#pragma once
// A small real HTTP/1.1 server on 127.0.0.1 (ephemeral port) for tests of code that
// fetches web pages. It runs on its own thread, answers each path with a scripted
// response (status, body, extra headers, an optional delay, an optional huge streamed
// body) and records every request. Unknown paths answer 404. Connections are kept
// alive, except after a body sent without a length.

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QString>

#include <functional>

#include <memory>

class QThread;

namespace quendle::testsupport {

class LoopbackHttpServer {
public:
    struct Response {
        int status = 200;
        QByteArray body;
        QByteArray contentType = "text/html; charset=utf-8";
        QList<QPair<QByteArray, QByteArray>> headers;   // extra ones, e.g. Location
        int delayMs = 0;             // wait this long before answering
        qint64 hugeBytes = 0;        // > 0: the body is this many 'x', streamed
        bool declareLength = true;   // false: no Content-Length, the body ends at close
        qint64 cutAfter = -1;        // >= 0: close after this many bytes of the body (truncated)
    };

    struct Request {
        QByteArray method;
        QByteArray target;   // as sent, with any query
        QByteArray path;     // without the query
        QList<QPair<QByteArray, QByteArray>> headers;   // names in lower case
        QByteArray body;
        qsizetype consumed = 0;   // bytes of the connection's input this request took
        QByteArray header(const QByteArray& name) const;
    };

    LoopbackHttpServer();    // listening when constructed
    ~LoopbackHttpServer();
    LoopbackHttpServer(const LoopbackHttpServer&) = delete;
    LoopbackHttpServer& operator=(const LoopbackHttpServer&) = delete;

    quint16 port() const { return port_; }
    // "http://127.0.0.1:<port>" + path
    QString url(const QString& path) const;

    void route(const QByteArray& path, const Response& response);
    void route(const QByteArray& path, int status, const QByteArray& body);
    void redirect(const QByteArray& from, const QString& to, int status = 302);
    // Answers the path by calling handler (on the server's thread) with each request, for
    // answers that depend on the query or the form sent.
    using Handler = std::function<Response(const Request&)>;
    void handle(const QByteArray& path, Handler handler);
    // Serves the files of a folder below a path prefix ending in "/" (a path ending in "/"
    // serves the folder's index.html), as any static web server would.
    void servefolder(const QByteArray& prefix, const QString& folder);

    QList<Request> requests() const;
    int requestCount() const;
    void clearRequests();

    // A loopback port that nothing listens on (just released by a listener).
    static quint16 deadPort();

    struct State;

private:
    class Core;
    std::shared_ptr<State> state_;
    std::unique_ptr<QThread> thread_;
    quint16 port_ = 0;
};

} // namespace quendle::testsupport
