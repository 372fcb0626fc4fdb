#include "support/loopback_http_server.h"

#include "support/test_env.h"

#include <QDir>
#include <QFile>
#include <QHash>
#include <QMutex>
#include <QMutexLocker>
#include <QTcpServer>
#include <QTcpSocket>
#include <QThread>
#include <QTimer>
#include <QUrl>

#include <functional>

namespace quendle::testsupport {

struct LoopbackHttpServer::State {
    mutable QMutex mutex;
    QHash<QByteArray, Response> routes;
    QHash<QByteArray, LoopbackHttpServer::Handler> handlers;
    QList<QPair<QByteArray, QString>> folders;
    QList<Request> requests;
};

namespace {

QByteArray reason(int status)
{
    switch (status) {
    case 200: return "OK";
    case 301: return "Moved Permanently";
    case 302: return "Found";
    case 303: return "See Other";
    case 404: return "Not Found";
    case 500: return "Internal Server Error";
    default: return "Status";
    }
}

// A whole request in buf (headers and a body of Content-Length bytes) -> true and *out.
bool parserequest(const QByteArray& buf, LoopbackHttpServer::Request* out)
{
    const qsizetype end = buf.indexOf("\r\n\r\n");
    if (end < 0)
        return false;
    const QList<QByteArray> lines = buf.left(end).split('\n');
    const QList<QByteArray> first = lines.value(0).trimmed().split(' ');
    LoopbackHttpServer::Request r;
    r.method = first.value(0);
    r.target = first.value(1);
    r.path = r.target.left(r.target.indexOf('?') < 0 ? r.target.size() : r.target.indexOf('?'));
    qsizetype length = 0;
    for (qsizetype i = 1; i < lines.size(); ++i) {
        const qsizetype colon = lines[i].indexOf(':');
        if (colon <= 0)
            continue;
        const QByteArray name = lines[i].left(colon).trimmed().toLower();
        const QByteArray value = lines[i].mid(colon + 1).trimmed();
        r.headers.append({name, value});
        if (name == "content-length")
            length = value.toLongLong();
    }
    if (buf.size() < end + 4 + length)
        return false;
    r.body = buf.mid(end + 4, length);
    r.consumed = end + 4 + length;
    *out = r;
    return true;
}

} // namespace

// Lives on the server thread.
class LoopbackHttpServer::Core : public QObject {
public:
    explicit Core(std::shared_ptr<State> state) : state_(std::move(state)) {}

    quint16 listen()
    {
        server_ = new QTcpServer(this);
        if (!server_->listen(QHostAddress::LocalHost, 0))
            return 0;
        QObject::connect(server_, &QTcpServer::newConnection, this, [this] { accept(); });
        return server_->serverPort();
    }

private:
    static Response fromfolder(const QString& folder, QByteArray relative)
    {
        Response r;
        if (relative.isEmpty() || relative.endsWith('/'))
            relative += "index.html";
        const QString path = QDir::cleanPath(folder + "/" + QUrl::fromPercentEncoding(relative));
        QFile f(path);
        if (!path.startsWith(QDir::cleanPath(folder) + "/") || !f.open(QIODevice::ReadOnly)) {
            r.status = 404;
            r.body = "not found";
            return r;
        }
        r.body = f.readAll();
        r.contentType = "application/octet-stream";
        return r;
    }

    void accept()
    {
        while (QTcpSocket* s = server_->nextPendingConnection()) {
            auto buf = std::make_shared<QByteArray>();
            auto busy = std::make_shared<bool>(false);
            QObject::connect(s, &QTcpSocket::disconnected, s, &QObject::deleteLater);
            // Keep-alive: one request at a time, each answered before the next is read.
            auto next = std::make_shared<std::function<void()>>();
            std::weak_ptr<std::function<void()>> again = next;
            *next = [this, s, buf, busy, again] {
                Request r;
                if (*busy || !parserequest(*buf, &r))
                    return;
                buf->remove(0, r.consumed);
                *busy = true;
                answer(s, r, [busy, again] {
                    *busy = false;
                    if (const auto n = again.lock())
                        (*n)();
                });
            };
            QObject::connect(s, &QTcpSocket::readyRead, s, [s, buf, next] {
                *buf += s->readAll();
                (*next)();
            });
        }
    }

    void answer(QTcpSocket* s, const Request& r, std::function<void()> done)
    {
        Response resp;
        resp.status = 404;
        resp.body = "not found";
        Handler handler;
        {
            QMutexLocker lock(&state_->mutex);
            state_->requests.append(r);
            resp = state_->routes.value(r.path, resp);
            handler = state_->handlers.value(r.path);
            for (const auto& [prefix, folder] : state_->folders)
                if (r.path.startsWith(prefix))
                    resp = fromfolder(folder, r.path.mid(prefix.size()));
        }
        if (handler)
            resp = handler(r);
        if (resp.delayMs > 0)
            QTimer::singleShot(resp.delayMs, s, [this, s, resp, done] { send(s, resp, done); });
        else
            send(s, resp, done);
    }

    void send(QTcpSocket* s, const Response& resp, const std::function<void()>& done)
    {
        QByteArray head = "HTTP/1.1 " + QByteArray::number(resp.status) + ' ' + reason(resp.status) + "\r\n";
        head += "Content-Type: " + resp.contentType + "\r\n";
        for (const auto& [name, value] : resp.headers)
            head += name + ": " + value + "\r\n";
        if (resp.declareLength)
            head += "Content-Length: " + QByteArray::number(resp.hugeBytes > 0 ? resp.hugeBytes : resp.body.size()) + "\r\n";
        // Without a length the body ends when the connection does.
        const bool closing = !resp.declareLength;
        head += closing ? "Connection: close\r\n\r\n" : "\r\n";
        s->write(head);
        if (resp.cutAfter >= 0) {
            s->write(resp.body.left(resp.cutAfter));
            s->disconnectFromHost();
            done();
            return;
        }
        if (resp.hugeBytes <= 0) {
            s->write(resp.body);
            if (closing)
                s->disconnectFromHost();
            done();
            return;
        }
        // Streamed in chunks as the client takes them, so a huge body costs little memory.
        auto left = std::make_shared<qint64>(resp.hugeBytes);
        auto pump = [s, left, closing, done] {
            const qint64 chunk = 64 * 1024;
            while (*left > 0 && s->bytesToWrite() < 4 * chunk && s->state() == QAbstractSocket::ConnectedState) {
                const qint64 n = std::min(chunk, *left);
                s->write(QByteArray(n, 'x'));
                *left -= n;
            }
            if (*left == 0) {
                *left = -1;
                if (closing)
                    s->disconnectFromHost();
                done();
            }
        };
        QObject::connect(s, &QTcpSocket::bytesWritten, s, pump);
        pump();
    }

    std::shared_ptr<State> state_;
    QTcpServer* server_ = nullptr;
};

QByteArray LoopbackHttpServer::Request::header(const QByteArray& name) const
{
    for (const auto& [n, v] : headers) {
        if (n == name.toLower())
            return v;
    }
    return QByteArray();
}

LoopbackHttpServer::LoopbackHttpServer() : state_(std::make_shared<State>())
{
    ensureCoreApp();
    thread_ = std::make_unique<QThread>();
    thread_->setObjectName(QStringLiteral("loopback-http"));
    auto* core = new Core(state_);
    core->moveToThread(thread_.get());
    QObject::connect(thread_.get(), &QThread::finished, core, &QObject::deleteLater);
    thread_->start();
    quint16 port = 0;
    QMetaObject::invokeMethod(core, [core, &port] { port = core->listen(); }, Qt::BlockingQueuedConnection);
    port_ = port;
}

LoopbackHttpServer::~LoopbackHttpServer()
{
    thread_->quit();
    thread_->wait();
}

QString LoopbackHttpServer::url(const QString& path) const
{
    return QStringLiteral("http://127.0.0.1:%1%2").arg(port_).arg(path);
}

void LoopbackHttpServer::route(const QByteArray& path, const Response& response)
{
    QMutexLocker lock(&state_->mutex);
    state_->routes.insert(path, response);
}

void LoopbackHttpServer::route(const QByteArray& path, int status, const QByteArray& body)
{
    Response r;
    r.status = status;
    r.body = body;
    route(path, r);
}

void LoopbackHttpServer::redirect(const QByteArray& from, const QString& to, int status)
{
    Response r;
    r.status = status;
    r.body = "moved to " + to.toUtf8();
    r.headers.append({"Location", to.toUtf8()});
    route(from, r);
}

void LoopbackHttpServer::handle(const QByteArray& path, Handler handler)
{
    QMutexLocker lock(&state_->mutex);
    state_->handlers.insert(path, std::move(handler));
}

void LoopbackHttpServer::servefolder(const QByteArray& prefix, const QString& folder)
{
    QMutexLocker lock(&state_->mutex);
    state_->folders.append({prefix, folder});
}

QList<LoopbackHttpServer::Request> LoopbackHttpServer::requests() const
{
    QMutexLocker lock(&state_->mutex);
    return state_->requests;
}

int LoopbackHttpServer::requestCount() const
{
    QMutexLocker lock(&state_->mutex);
    return static_cast<int>(state_->requests.size());
}

void LoopbackHttpServer::clearRequests()
{
    QMutexLocker lock(&state_->mutex);
    state_->requests.clear();
}

quint16 LoopbackHttpServer::deadPort()
{
    ensureCoreApp();
    QTcpServer probe;
    if (!probe.listen(QHostAddress::LocalHost, 0))
        return 9;   // discard: nothing answers there either
    const quint16 port = probe.serverPort();
    probe.close();
    return port;
}

} // namespace quendle::testsupport
