#include "platform/desktop/qthttp.h"

#include <QCoreApplication>
#include <QDebug>
#include <QEventLoop>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QSemaphore>
#include <QStringDecoder>
#include <QThread>
#include <QTimer>
#include <QUrl>

namespace quendle {

namespace {

struct Outcome {
    QByteArray body;
    QString error;   // empty on success
};

QString decodebody(const QByteArray& bytes)
{
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = utf8.decode(bytes);
    if (utf8.hasError())
        return QString::fromLatin1(bytes);
    return text;
}

} // namespace

// Owns the network access manager; only ever used on its own thread.
class QtHttp::Worker : public QObject {
public:
    Outcome fetch(const QUrl& url, const QByteArray* formBody, int timeoutMs, qint64 maxBytes)
    {
        if (!nam_)
            nam_ = new QNetworkAccessManager(this);
        QNetworkRequest req(url);
        req.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::NoLessSafeRedirectPolicy);
        req.setMaximumRedirectsAllowed(kMaxRedirects);
        req.setHeader(QNetworkRequest::UserAgentHeader, QByteArrayLiteral("Quendle/" QUENDLE_VERSION));
        if (formBody)
            req.setHeader(QNetworkRequest::ContentTypeHeader, QByteArrayLiteral("application/x-www-form-urlencoded"));
        QNetworkReply* reply = formBody ? nam_->post(req, *formBody) : nam_->get(req);

        QEventLoop loop;
        QTimer deadline;
        deadline.setSingleShot(true);
        bool timedOut = false, tooLarge = false;
        QByteArray body;
        auto tooBig = [&](qint64 n) {
            if (n <= maxBytes || tooLarge)
                return false;
            tooLarge = true;
            reply->abort();
            return true;
        };
        // A declared length over the limit is refused before any of it arrives.
        QObject::connect(reply, &QNetworkReply::metaDataChanged, &loop, [&] {
            const QVariant len = reply->header(QNetworkRequest::ContentLengthHeader);
            if (len.isValid())
                tooBig(len.toLongLong());
        });
        QObject::connect(reply, &QNetworkReply::readyRead, &loop, [&] {
            if (!tooLarge && !tooBig(body.size() + reply->bytesAvailable()))
                body += reply->readAll();
        });
        QObject::connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
        QObject::connect(&deadline, &QTimer::timeout, &loop, [&] {
            timedOut = true;
            reply->abort();
        });
        deadline.start(timeoutMs);
        if (!reply->isFinished())
            loop.exec();
        deadline.stop();
        if (!tooLarge && !timedOut && !tooBig(body.size() + reply->bytesAvailable()))
            body += reply->readAll();

        Outcome out;
        const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
        if (timedOut)
            out.error = QStringLiteral("no complete answer within %1 ms").arg(timeoutMs);
        else if (tooLarge)
            out.error = QStringLiteral("the answer is larger than %1 bytes").arg(maxBytes);
        else if (status >= 400)   // said plainly: the reply's own text repeats the whole address
            out.error = QStringLiteral("HTTP status %1 %2")
                            .arg(status)
                            .arg(reply->attribute(QNetworkRequest::HttpReasonPhraseAttribute).toString());
        else if (reply->error() != QNetworkReply::NoError)
            out.error = reply->errorString();
        else if (status < 200 || status >= 300)
            out.error = QStringLiteral("HTTP status %1").arg(status);
        else
            out.body = body;
        reply->disconnect();
        reply->deleteLater();
        return out;
    }

private:
    QNetworkAccessManager* nam_ = nullptr;
};

QtHttp::QtHttp(int timeoutMs, qint64 maxBytes) : timeoutMs_(timeoutMs), maxBytes_(maxBytes) {}

QtHttp::~QtHttp()
{
    if (thread_) {
        thread_->quit();
        thread_->wait();
    }
}

QString QtHttp::get(const QString& url)
{
    return fetch(url, nullptr, maxBytes_);
}

QString QtHttp::postForm(const QString& url, const QString& formBody)
{
    const QByteArray body = formBody.toUtf8();
    return fetch(url, &body, maxBytes_);
}

QString QtHttp::getbounded(const QString& url, qint64 maxBytes)
{
    return fetch(url, nullptr, maxBytes);
}

QString QtHttp::fetch(const QString& address, const QByteArray* formBody, qint64 maxBytesAllowed)
{
    lastError_.clear();
    const QUrl url(address.trimmed());
    const QString scheme = url.scheme().toLower();
    if (!url.isValid() || url.host().isEmpty()
        || (scheme != QLatin1String("http") && scheme != QLatin1String("https")))
        lastError_ = QStringLiteral("not a web address");
    else if (!QCoreApplication::instance())
        lastError_ = QStringLiteral("no application object");

    Outcome out;
    if (lastError_.isEmpty()) {
        if (!thread_) {
            thread_ = std::make_unique<QThread>();
            thread_->setObjectName(QStringLiteral("quendle-http"));
            worker_ = new Worker;
            worker_->moveToThread(thread_.get());
            QObject::connect(thread_.get(), &QThread::finished, worker_, &QObject::deleteLater);
            thread_->start();
        }
        const int timeoutMs = timeoutMs_;
        const qint64 maxBytes = maxBytesAllowed;
        Worker* worker = worker_;
        // The caller's stack outlives the request: it waits for done before it returns,
        // whether or not its event loop is asked to quit meanwhile.
        QSemaphore done;
        QEventLoop wait;
        const bool responsive = hold_ && QThread::currentThread() == QCoreApplication::instance()->thread()
            && QThread::currentThread()->loopLevel() > 0;
        QMetaObject::invokeMethod(
            worker_,
            [&out, &done, &wait, responsive, worker, url, formBody, timeoutMs, maxBytes] {
                out = worker->fetch(url, formBody, timeoutMs, maxBytes);
                if (responsive)
                    QMetaObject::invokeMethod(&wait, &QEventLoop::quit, Qt::QueuedConnection);
                done.release();
            },
            Qt::QueuedConnection);
        if (responsive) {
            hold_(true);
            if (!done.available())
                wait.exec(QEventLoop::ExcludeUserInputEvents | QEventLoop::ExcludeSocketNotifiers);
            hold_(false);
        }
        done.acquire();
        lastError_ = out.error;
    }
    if (!lastError_.isEmpty()) {
        qWarning().noquote() << QStringLiteral("quendle: fetching %1 failed: %2").arg(address.left(300), lastError_);
        return QString();
    }
    return decodebody(out.body);
}

} // namespace quendle
