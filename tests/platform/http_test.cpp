#include "platform/desktop/qthttp.h"
#include "support/loopback_http_server.h"
#include "support/test_env.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>

#include <gtest/gtest.h>

using namespace quendle;
using namespace quendle::testsupport;

using Response = LoopbackHttpServer::Response;

TEST(Http, GetAndPostFormAgainstALoopbackServer)
{
    ensureCoreApp();   // but its event loop never runs
    LoopbackHttpServer server;
    ASSERT_NE(server.port(), 0);
    const QByteArray page = QString::fromUtf8("<p>Trackwork \u2013 Wolli Creek</p>").toUtf8();
    server.route("/service_updates/trackwork/", 200, page);
    server.route("/login", 200, "thanks");
    server.route("/latin1", 200, QByteArray("caf\xe9"));
    server.redirect("/old", server.url("/moved"));
    server.redirect("/moved", "/service_updates/trackwork/", 301);
    server.redirect("/loop", "/loop");

    QtHttp http;
    EXPECT_EQ(http.get(server.url("/service_updates/trackwork/?period=1&lineId=")), QString::fromUtf8(page));
    EXPECT_EQ(http.lastError(), "");
    EXPECT_EQ(http.postForm(server.url("/login"), "user=a%20b&pass=x%26y"), "thanks");
    EXPECT_EQ(http.get(server.url("/latin1")), QString::fromUtf8("caf\u00e9"));
    EXPECT_EQ(http.get(server.url("/old")), QString::fromUtf8(page));

    auto find = [&](const QByteArray& path) {
        for (const auto& r : server.requests()) {
            if (r.path == path)
                return r;
        }
        return LoopbackHttpServer::Request{};
    };
    EXPECT_EQ(find("/service_updates/trackwork/").target, "/service_updates/trackwork/?period=1&lineId=");
    EXPECT_EQ(find("/service_updates/trackwork/").method, "GET");
    const auto login = find("/login");
    EXPECT_EQ(login.method, "POST");
    EXPECT_EQ(login.header("Content-Type"), "application/x-www-form-urlencoded");
    EXPECT_EQ(login.body, "user=a%20b&pass=x%26y");
    EXPECT_EQ(find("/moved").method, "GET");

    // A redirect loop ends after five hops. (Qt sometimes sends a redirected request twice
    // on a kept-alive connection, so the count has a little slack.)
    server.clearRequests();
    EXPECT_EQ(http.get(server.url("/loop")), "");
    EXPECT_GE(server.requestCount(), 1 + QtHttp::kMaxRedirects);
    EXPECT_LE(server.requestCount(), 2 * (1 + QtHttp::kMaxRedirects));
}

TEST(Http, EveryFailureReadsAsEmpty)
{
    ensureCoreApp();
    LoopbackHttpServer server;
    Response slow;
    slow.body = "late";
    slow.delayMs = 1500;
    server.route("/slow", slow);
    Response huge;
    huge.hugeBytes = 1024 * 1024;
    server.route("/huge", huge);
    huge.declareLength = false;
    server.route("/stream", huge);
    server.route("/small", 200, QByteArray(1000, 'y'));
    server.route("/broken", 500, "oops");

    QtHttp http(300, 64 * 1024);
    EXPECT_EQ(http.get(server.url("/nowhere")), "");   // 404
    EXPECT_TRUE(http.lastError().contains("not found", Qt::CaseInsensitive)) << http.lastError().toStdString();
    EXPECT_EQ(http.get(server.url("/broken")), "");
    EXPECT_EQ(http.postForm(server.url("/broken"), "a=1"), "");
    EXPECT_EQ(http.get(QString("http://127.0.0.1:%1/").arg(LoopbackHttpServer::deadPort())), "");
    EXPECT_EQ(http.get(server.url("/slow")), "");
    EXPECT_TRUE(http.lastError().contains("300 ms")) << http.lastError().toStdString();
    EXPECT_EQ(http.get(server.url("/huge")), "");
    EXPECT_EQ(http.get(server.url("/stream")), "");
    EXPECT_TRUE(http.lastError().contains("larger")) << http.lastError().toStdString();
    // Only web addresses are fetched: never a local file.
    EXPECT_EQ(http.get("file:///etc/passwd"), "");
    EXPECT_EQ(http.get(""), "");
    EXPECT_EQ(http.get("not an address"), "");
    // And the same object still works afterwards.
    EXPECT_EQ(http.get(server.url("/small")), QString(1000, 'y'));
}

// The strip waits for a slow server inside its event loop: the loop goes on (the window
// repaints) under the owner's hold, and a request to quit meanwhile does not cut the
// fetch short under the waiting caller.
TEST(Http, AResponsiveWaitKeepsTheEventLoopGoingUnderAHold)
{
    ensureCoreApp();
    LoopbackHttpServer server;
    Response slow;
    slow.body = "late";
    slow.delayMs = 600;
    server.route("/slow", slow);

    QtHttp http(5000);
    std::vector<bool> holds;
    http.keepresponsive([&](bool on) { holds.push_back(on); });
    int ticks = 0;
    QTimer tick;
    tick.setInterval(20);
    QObject::connect(&tick, &QTimer::timeout, [&] { ++ticks; });

    // Outside a running event loop: the plain wait, no hold.
    tick.start();
    EXPECT_EQ(http.get(server.url("/slow")), "late");
    EXPECT_TRUE(holds.empty());

    QString got;
    int ticksduring = -1;
    QEventLoop loop;
    QTimer::singleShot(0, &loop, [&] {
        ticks = 0;
        got = http.get(server.url("/slow"));
        ticksduring = ticks;
        loop.quit();
    });
    loop.exec();
    EXPECT_EQ(got, "late");
    EXPECT_GT(ticksduring, 5);
    EXPECT_EQ(holds, (std::vector<bool>{true, false}));

    got.clear();
    QTimer::singleShot(0, &loop, [&] { got = http.get(server.url("/slow")); });
    QTimer::singleShot(100, &loop, [] { QCoreApplication::exit(0); });
    loop.exec();
    EXPECT_EQ(got, "late");
    EXPECT_EQ(http.lastError(), "");
}
