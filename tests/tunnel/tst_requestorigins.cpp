// SPDX-License-Identifier: MIT
#include "headbench.h"

#include <QtTest>

using namespace SondixQt;

/// The hosts and origins that are accepted in requests.
class TestRequestOrigins : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void onlyHostsOfThisComputerPass_data();
    void onlyHostsOfThisComputerPass();
    void aHostMayNotVanishLater();
    void getFromForeignPagesPassesOnlyAsNavigation_data();
    void getFromForeignPagesPassesOnlyAsNavigation();
    void postPassesOnlyFromOwnPages_data();
    void postPassesOnlyFromOwnPages();
    void otherMethodsFollowTheRulesOfPost();
    void absoluteTargetsNameThisComputer_data();
    void absoluteTargetsNameThisComputer();
};

void TestRequestOrigins::onlyHostsOfThisComputerPass_data()
{
    QTest::addColumn<QByteArray>("host");
    QTest::addColumn<int>("refusal");

    for (const char *host :
         {"localhost", "LocalHost", "localhost:80", "localhost:65535", "a.localhost", "a.B-2.localhost:8080",
          "127.0.0.1", "127.0.0.1:41234", "127.1.2.3", "127.255.255.255:1", "[::1]", "[::1]:8080"})
        QTest::newRow(rowName(host).constData()) << QByteArray(host) << ok;
    for (const char *host : {"",
                             ":80",
                             "example.com",
                             "example.com:80",
                             "localhost.example.com",
                             "127.0.0.1.example.com",
                             "localhost.",
                             "notlocalhost",
                             "example.com/.localhost",
                             "example.com?.localhost",
                             "user@localhost",
                             "localhost@example.com",
                             "example.com:80.localhost",
                             "localhost:80:90",
                             "localhost:8a",
                             "localhost:-1",
                             "128.0.0.1",
                             "27.0.0.1",
                             "1127.0.0.1",
                             "127.0.0",
                             "127.0.0.1.1",
                             "127.0.0.256",
                             "127.0.0.-1",
                             "127..0.1",
                             "127.0.0.",
                             "127.0.0.a",
                             "0.0.0.0",
                             "192.168.1.1",
                             "10.0.0.1:80",
                             "[::]",
                             "[::2]",
                             "[::1",
                             "::1",
                             "[::1]a",
                             "[::1]a:80",
                             "[::1].example.com",
                             "[::1]:x",
                             "[::ffff:127.0.0.1]",
                             ".localhost",
                             "a b.localhost",
                             "localhost localhost",
                             "http://localhost",
                             "\xe4.localhost"})
        QTest::newRow(rowName(host).constData()) << QByteArray(host) << 403;
}

void TestRequestOrigins::onlyHostsOfThisComputerPass()
{
    QFETCH(QByteArray, host);
    QFETCH(int, refusal);
    for (const RequestHead &head : {readGet({"Host: " + host}), readPost({"Host: " + host})}) {
        QCOMPARE(head.refusal, refusal);
        QVERIFY(head.hasHost);
    }
    QCOMPARE(readGet({"Host: " + host, "Sec-Fetch-Site: same-origin"}).refusal, refusal);
    QCOMPARE(readPost({"Host:" + host + "  ", "Origin: http://" + host}).refusal, refusal);
}

void TestRequestOrigins::aHostMayNotVanishLater()
{
    QCOMPARE(readGet({}, false).refusal, ok);
    QCOMPARE(readPost({}, false).refusal, ok);
    QCOMPARE(readGet({}, true).refusal, 400);
    QCOMPARE(readPost({}, true).refusal, 400);
    QCOMPARE(readPost({"X-Host: localhost"}, true).refusal, 400);
    QCOMPARE(readGet({"Host: localhost"}, true).refusal, ok);
    QCOMPARE(readGet({"Host: example.com"}, true).refusal, 403);
}

void TestRequestOrigins::getFromForeignPagesPassesOnlyAsNavigation_data()
{
    QTest::addColumn<QList<QByteArray>>("headers");
    QTest::addColumn<int>("refusal");

    const QByteArray site = QByteArrayLiteral("Sec-Fetch-Site: ");
    const QByteArray mode = QByteArrayLiteral("Sec-Fetch-Mode: ");
    const QByteArray dest = QByteArrayLiteral("Sec-Fetch-Dest: ");
    using Headers = QList<QByteArray>;
    QTest::newRow("no metadata") << Headers() << ok;
    QTest::newRow("no metadata, foreign origin") << Headers{"Origin: http://example.com"} << 403;
    QTest::newRow("no metadata, no origin") << Headers{"Origin: null"} << 403;
    QTest::newRow("web socket") << Headers{"Upgrade: websocket", "Connection: Upgrade"} << 403;
    QTest::newRow("own web socket") << Headers{site + "same-origin", "Upgrade: websocket"} << 403;
    QTest::newRow("wish for encryption") << Headers{"Upgrade-Insecure-Requests: 1"} << ok;
    QTest::newRow("in advance") << Headers{"Sec-Purpose: prefetch"} << 403;
    QTest::newRow("in advance, own") << Headers{site + "same-origin", "Sec-Purpose: Prefetch;prerender"} << 403;
    QTest::newRow("in advance, twice") << Headers{"Sec-Purpose: a", "Sec-Purpose: prefetch"} << 403;
    QTest::newRow("for another purpose") << Headers{"Sec-Purpose: reload"} << ok;
    for (const QByteArray own : {"same-origin", "none"}) {
        QTest::newRow((own + " alone").constData()) << Headers{site + own} << ok;
        QTest::newRow((own + " image").constData()) << Headers{site + own, mode + "no-cors", dest + "image"} << ok;
        QTest::newRow((own + " fetch").constData()) << Headers{site + own, mode + "cors", dest + "empty"} << ok;
        QTest::newRow((own + " document").constData())
            << Headers{site + own, mode + "navigate", dest + "document"} << ok;
    }
    for (const QByteArray foreign : {"cross-site", "same-site"}) {
        const auto row = [&](const QByteArray &name, const Headers &more, int refusal) {
            QTest::newRow((foreign + ' ' + name).constData()) << Headers{site + foreign} + more << refusal;
        };
        row("alone", {}, 403);
        row("document", {mode + "navigate", dest + "document"}, ok);
        row("frame", {mode + "navigate", dest + "iframe"}, 403);
        row("object", {mode + "navigate", dest + "object"}, 403);
        row("navigation to nothing", {mode + "navigate", dest + "empty"}, 403);
        row("navigation, no destination", {mode + "navigate"}, 403);
        row("document, no mode", {dest + "document"}, 403);
        row("document, not navigated to", {mode + "no-cors", dest + "document"}, 403);
        row("script", {mode + "no-cors", dest + "script"}, 403);
        row("image", {mode + "no-cors", dest + "image"}, 403);
        row("fetch", {mode + "cors", dest + "empty"}, 403);
        row("web socket", {mode + "websocket", dest + "websocket"}, 403);
        row("own origin", {"Origin: http://localhost:8080"}, 403);
    }
}

void TestRequestOrigins::getFromForeignPagesPassesOnlyAsNavigation()
{
    QFETCH(QList<QByteArray>, headers);
    QFETCH(int, refusal);
    QCOMPARE(readGet(QList<QByteArray>{"Host: localhost:8080"} + headers).refusal, refusal);
    QCOMPARE(readGet(headers + QList<QByteArray>{"Host: localhost:8080"}).refusal, refusal);
    QCOMPARE(readGet(headers).refusal, refusal);
}

void TestRequestOrigins::postPassesOnlyFromOwnPages_data()
{
    QTest::addColumn<QList<QByteArray>>("headers");
    QTest::addColumn<int>("refusal");

    const QByteArray host = QByteArrayLiteral("Host: localhost:8080");
    const QByteArray site = QByteArrayLiteral("Sec-Fetch-Site: ");
    const QByteArray origin = QByteArrayLiteral("Origin: ");
    using Headers = QList<QByteArray>;
    const auto row = [](const char *name, const Headers &headers, int refusal) {
        QTest::newRow(name) << headers << refusal;
    };
    row("raw", {}, ok);
    row("no metadata", {host}, ok);
    row("same origin", {host, site + "same-origin"}, ok);
    row("by the user", {host, site + "none"}, ok);
    row("same site", {host, site + "same-site"}, 403);
    row("cross site", {host, site + "cross-site"}, 403);
    row("cross site, raw", {site + "cross-site"}, 403);
    row("empty site", {host, site}, 403);
    row("unknown site", {host, site + "same-origin, none"}, 403);
    row("navigation from a foreign page",
        {host, site + "cross-site", "Sec-Fetch-Mode: navigate", "Sec-Fetch-Dest: document"}, 403);
    row("own origin", {host, origin + "http://localhost:8080"}, ok);
    row("own origin before the host", {origin + "http://localhost:8080", host}, ok);
    row("own origin without a port", {"Host: 127.0.0.1", origin + "http://127.0.0.1"}, ok);
    row("foreign origin", {host, origin + "http://example.com"}, 403);
    row("foreign port", {host, origin + "http://localhost:8081"}, 403);
    row("no port", {host, origin + "http://localhost"}, 403);
    row("foreign scheme", {host, origin + "https://localhost:8080"}, 403);
    row("other name of this computer", {host, origin + "http://127.0.0.1:8080"}, 403);
    row("longer than the own", {host, origin + "http://localhost:8080.example.com"}, 403);
    row("null origin", {host, origin + "null"}, 403);
    row("empty origin", {host, origin}, 403);
    row("origin without a host", {origin + "http://localhost:8080"}, 403);
    row("the site decides, for it", {host, site + "same-origin", origin + "http://example.com"}, ok);
    row("the site decides, against it", {host, site + "cross-site", origin + "http://localhost:8080"}, 403);
}

void TestRequestOrigins::postPassesOnlyFromOwnPages()
{
    QFETCH(QList<QByteArray>, headers);
    QFETCH(int, refusal);
    QCOMPARE(readPost(headers).refusal, refusal);
    const RequestHead announced = readPost(headers + QList<QByteArray>{"Content-Length: 7"});
    QCOMPARE(announced.refusal, refusal);
    // The origin is checked before the length of the body: 403 takes precedence over 413.
    const QByteArray tooLong = "Content-Length: " + QByteArray::number(TunnelLimits::body + 1);
    QCOMPARE(readPost(headers + QList<QByteArray>{tooLong}).refusal, refusal == ok ? 413 : refusal);
}

void TestRequestOrigins::otherMethodsFollowTheRulesOfPost()
{
    const auto refusalOf = [](const QList<QByteArray> &headers) {
        return readRequestHead(headOf("OPTIONS / HTTP/1.1", headers), false).refusal;
    };
    QCOMPARE(refusalOf({"Host: localhost"}), ok);
    QCOMPARE(refusalOf({"Host: example.com"}), 403);
    QCOMPARE(refusalOf({"Host: localhost", "Origin: http://example.com"}), 403);
    QCOMPARE(refusalOf({"Host: localhost", "Sec-Fetch-Site: cross-site"}), 403);
}

void TestRequestOrigins::absoluteTargetsNameThisComputer_data()
{
    QTest::addColumn<QByteArray>("target");
    QTest::addColumn<QByteArray>("path");
    QTest::addColumn<int>("refusal");
    const auto row = [](const QByteArray &target, const QByteArray &path, int refusal) {
        QTest::newRow(target.constData()) << target << path << refusal;
    };
    row("http://localhost/a", "/a", ok);
    row("HTTP://LOCALHOST:80/a?b", "/a", ok);
    row("http://127.0.0.1:8080", "/", ok);
    row("http://[::1]:1?b/c", "/", ok);
    row("http://example.com/a", "/a", 403);
    row("http://localhost.example.com/", "/", 403);
    row("http://user@localhost/", "/", 403);
    row("http:///a", "/a", 403);
    row("http://example.com?/localhost", "/", 403);
    row("https://localhost/a", "/a", ok);
    row("https://example.com/a", "/a", 403);
    row("ws://example.com/a", "/a", 403);
    row("/http://example.com/", "/http://example.com/", ok);
}

void TestRequestOrigins::absoluteTargetsNameThisComputer()
{
    QFETCH(QByteArray, target);
    QFETCH(QByteArray, path);
    QFETCH(int, refusal);
    for (const QByteArray &method : {QByteArray("GET "), QByteArray("POST "), QByteArray("HEAD ")}) {
        const QByteArray rest = target + " HTTP/1.1\r\nHost: localhost\r\nContent-Length: 0";
        const RequestHead head = readRequestHead(method + rest, false);
        QCOMPARE(head.path, path);
        QCOMPARE(head.refusal, refusal);
    }
}

QTEST_APPLESS_MAIN(TestRequestOrigins)
#include "tst_requestorigins.moc"
