// SPDX-License-Identifier: MIT
#include "tunnel/requesthead_p.h"
#include "tunnel/tunnellimits_p.h"

#include <QtTest>

using namespace SondixQt;

namespace {

constexpr int ok = 0;

QByteArray headOf(const QByteArray &line, const QList<QByteArray> &headers)
{
    QByteArray head = line;
    for (const QByteArray &header : headers)
        head += "\r\n" + header;
    return head;
}

RequestHead readGet(const QList<QByteArray> &headers, bool hostSeen = false)
{
    return readRequestHead(headOf("GET /page HTTP/1.1", headers), hostSeen);
}

/// With a length, unless \a headers announce one.
RequestHead readPost(QList<QByteArray> headers, bool hostSeen = false)
{
    const auto isLength = [](const QByteArray &header) { return header.toLower().startsWith("content-length"); };
    if (std::none_of(headers.cbegin(), headers.cend(), isLength))
        headers.append("Content-Length: 0");
    return readRequestHead(headOf("POST /command HTTP/1.1", headers), hostSeen);
}

QByteArray rowName(const QByteArray &text)
{
    return text.isEmpty() ? QByteArrayLiteral("(empty)") : text.toPercentEncoding(" /:.[]?\"");
}

} // namespace

class TestRequestHead : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void theMethodIsReadFromTheFirstWord_data();
    void theMethodIsReadFromTheFirstWord();
    void thePathEndsAtTheFirstBlankOrQuestionMark_data();
    void thePathEndsAtTheFirstBlankOrQuestionMark();
    void theTagLosesItsQuotationMarks_data();
    void theTagLosesItsQuotationMarks();
    void onlyHostsOfThisComputerPass_data();
    void onlyHostsOfThisComputerPass();
    void aHostMayNotVanishLater();
    void getFromForeignPagesPassesOnlyAsNavigation_data();
    void getFromForeignPagesPassesOnlyAsNavigation();
    void postPassesOnlyFromOwnPages_data();
    void postPassesOnlyFromOwnPages();
    void otherMethodsFollowTheRulesOfPost();
    void namesOfHeadersHaveNoCase();
    void everyControlByteIsRefused_data();
    void everyControlByteIsRefused();
    void malformedHeadersAreRefused_data();
    void malformedHeadersAreRefused();
    void headersThatDecideMayNotComeTwice_data();
    void headersThatDecideMayNotComeTwice();
    void contentLengthIsADecimalNumber_data();
    void contentLengthIsADecimalNumber();
    void commandsOfBrowsersNeedALength();
    void clientsMayWaitForAGoAhead();
    void absoluteTargetsNameThisComputer_data();
    void absoluteTargetsNameThisComputer();
    void tabsAreWhiteSpace();
    void bodiesInPiecesAreNotImplemented_data();
    void bodiesInPiecesAreNotImplemented();
    void clientsMayWantNoFurtherRequest_data();
    void clientsMayWantNoFurtherRequest();
    void browsersShowInTheirHeaders_data();
    void browsersShowInTheirHeaders();
    void unfinishedHeadsAreNoticed_data();
    void unfinishedHeadsAreNoticed();
    void requestLinesOfAnyMethodAreKnown_data();
    void requestLinesOfAnyMethodAreKnown();
};

void TestRequestHead::theMethodIsReadFromTheFirstWord_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<int>("method");

    // GET in whatever case, POST exactly so.
    for (const char *word : {"GET", "get", "Get", "gEt"})
        QTest::newRow(word) << QByteArray(word) + " / HTTP/1.1" << int(RequestHead::Get);
    QTest::newRow("POST") << QByteArrayLiteral("POST / HTTP/1.1") << int(RequestHead::Post);
    for (const char *word : {"post", "Post", "POSt", "HEAD", "PUT", "OPTIONS", "GETS", "POSTS"})
        QTest::newRow(word) << QByteArray(word) + " / HTTP/1.1" << int(RequestHead::Unsupported);
}

void TestRequestHead::theMethodIsReadFromTheFirstWord()
{
    QFETCH(QByteArray, line);
    QFETCH(int, method);
    const RequestHead head = readRequestHead(line, false);
    QCOMPARE(int(head.method), method);
    QCOMPARE(head.refusal, ok);
}

void TestRequestHead::thePathEndsAtTheFirstBlankOrQuestionMark_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QByteArray>("path");
    const auto row = [](const QByteArray &line, const QByteArray &path) {
        QTest::newRow(rowName(line).constData()) << line << path;
    };

    row("GET / HTTP/1.1", "/");
    row("GET /index.html HTTP/1.1", "/index.html");
    row("get /Index.HTML HTTP/1.1", "/Index.HTML");
    row("GET /a?b=c HTTP/1.1", "/a");
    row("GET /a?b?c=d e HTTP/1.1", "/a");
    row("GET /a b?c HTTP/1.1", "/a");
    row("GET /?", "/");
    row("GET ?a", "");
    row("GET  /a", "");
    row("GET /a", "/a");
    row("GET /a%20b%3Fc HTTP/1.1", "/a%20b%3Fc");
    row("GET /\xfc.html HTTP/1.1", "/\xfc.html");
    row("GET a/b#c HTTP/1.1", "a/b#c");
    row("POST /a?b HTTP/1.1", "/a");
}

void TestRequestHead::thePathEndsAtTheFirstBlankOrQuestionMark()
{
    QFETCH(QByteArray, line);
    QFETCH(QByteArray, path);
    const RequestHead head = readRequestHead(line, false);
    QCOMPARE(head.refusal, ok);
    QCOMPARE(head.path, path);
}

void TestRequestHead::theTagLosesItsQuotationMarks_data()
{
    QTest::addColumn<QByteArray>("header");
    QTest::addColumn<QByteArray>("tag");
    const auto row = [](const QByteArray &header, const QByteArray &tag) {
        QTest::newRow(rowName(header).constData()) << header << tag;
    };

    row("Accept: */*", "");
    row("If-None-Match: \"abc\"", "abc");
    row("If-None-Match: abc", "abc");
    row("If-None-Match: W/\"abc\"", "W/abc");
    row("If-None-Match: \"a\", \"b\"", "a, b");
    row("If-None-Match: \"\"", "");
    row("If-None-Match: *", "*");
    row("If-None-Match: \"\xe4-1\"", "\xe4-1");
    row("if-none-match: \"abc\"", "abc");
    row("If-Match: \"abc\"", "");
}

void TestRequestHead::theTagLosesItsQuotationMarks()
{
    QFETCH(QByteArray, header);
    QFETCH(QByteArray, tag);
    const RequestHead head = readGet({"Host: localhost", header, "Accept: */*"});
    QCOMPARE(head.refusal, ok);
    QCOMPARE(head.entityTag, tag);
}

void TestRequestHead::onlyHostsOfThisComputerPass_data()
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

void TestRequestHead::onlyHostsOfThisComputerPass()
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

void TestRequestHead::aHostMayNotVanishLater()
{
    QCOMPARE(readGet({}, false).refusal, ok);
    QCOMPARE(readPost({}, false).refusal, ok);
    QCOMPARE(readGet({}, true).refusal, 400);
    QCOMPARE(readPost({}, true).refusal, 400);
    QCOMPARE(readPost({"X-Host: localhost"}, true).refusal, 400);
    QCOMPARE(readGet({"Host: localhost"}, true).refusal, ok);
    QCOMPARE(readGet({"Host: example.com"}, true).refusal, 403);
}

void TestRequestHead::getFromForeignPagesPassesOnlyAsNavigation_data()
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

void TestRequestHead::getFromForeignPagesPassesOnlyAsNavigation()
{
    QFETCH(QList<QByteArray>, headers);
    QFETCH(int, refusal);
    QCOMPARE(readGet(QList<QByteArray>{"Host: localhost:8080"} + headers).refusal, refusal);
    QCOMPARE(readGet(headers + QList<QByteArray>{"Host: localhost:8080"}).refusal, refusal);
    QCOMPARE(readGet(headers).refusal, refusal);
}

void TestRequestHead::postPassesOnlyFromOwnPages_data()
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

void TestRequestHead::postPassesOnlyFromOwnPages()
{
    QFETCH(QList<QByteArray>, headers);
    QFETCH(int, refusal);
    QCOMPARE(readPost(headers).refusal, refusal);
    const RequestHead announced = readPost(headers + QList<QByteArray>{"Content-Length: 7"});
    QCOMPARE(announced.refusal, refusal);
    // The length of a body that is refused matters to nobody: 403 comes before 413.
    const QByteArray tooLong = "Content-Length: " + QByteArray::number(TunnelLimits::body + 1);
    QCOMPARE(readPost(headers + QList<QByteArray>{tooLong}).refusal, refusal == ok ? 413 : refusal);
}

void TestRequestHead::otherMethodsFollowTheRulesOfPost()
{
    const auto refusalOf = [](const QList<QByteArray> &headers) {
        return readRequestHead(headOf("OPTIONS / HTTP/1.1", headers), false).refusal;
    };
    QCOMPARE(refusalOf({"Host: localhost"}), ok);
    QCOMPARE(refusalOf({"Host: example.com"}), 403);
    QCOMPARE(refusalOf({"Host: localhost", "Origin: http://example.com"}), 403);
    QCOMPARE(refusalOf({"Host: localhost", "Sec-Fetch-Site: cross-site"}), 403);
}

void TestRequestHead::namesOfHeadersHaveNoCase()
{
    QCOMPARE(readGet({"HOST: example.com"}).refusal, 403);
    QCOMPARE(readGet({"host: example.com"}).refusal, 403);
    QCOMPARE(readPost({"hOST: localhost", "oRIGIN: http://example.com"}).refusal, 403);
    QCOMPARE(readPost({"SEC-FETCH-SITE: cross-site"}).refusal, 403);
    QCOMPARE(readPost({"content-length: 12"}).contentLength, 12);
    QCOMPARE(readPost({"TRANSFER-ENCODING: chunked"}).refusal, 501);
}

void TestRequestHead::everyControlByteIsRefused_data()
{
    QTest::addColumn<QByteArray>("control");
    for (int byte = 0; byte < 0x20; ++byte)
        if (byte != '\t')
            QTest::newRow(QByteArray::number(byte, 16).constData()) << QByteArray(1, char(byte));
    QTest::newRow("7f") << QByteArray(1, '\x7f');
    QTest::newRow("line end the wrong way round") << QByteArrayLiteral("\n\r");
}

void TestRequestHead::everyControlByteIsRefused()
{
    QFETCH(QByteArray, control);
    for (const QByteArray &head :
         {"GET /a" + control + "b HTTP/1.1", "GET /a?" + control + "b HTTP/1.1", "GET /a HTTP/1.1" + control,
          "POST /a" + control + " HTTP/1.1\r\nHost: localhost", "GET /a HTTP/1.1\r\nAccept: a" + control + "b",
          "GET /a HTTP/1.1\r\nIf-None-Match: \"a" + control + "b\"\r\nHost: localhost",
          "GET /a HTTP/1.1\r\nHost: localhost" + control, "GET /a HTTP/1.1\r\nHost" + control + ": localhost",
          "GET /a HTTP/1.1\r\n" + control + "Host: localhost", "GET /a HTTP/1.1\r\nHost:" + control + "localhost",
          "POST /a HTTP/1.1\r\nContent-Length:" + control + "5"})
        QCOMPARE(readRequestHead(head, false).refusal, 400);
}

void TestRequestHead::malformedHeadersAreRefused_data()
{
    QTest::addColumn<QByteArray>("header");
    for (const char *header : {"Accept", "no colon", ": nameless", "Host : localhost", " Host: localhost",
                               " folded", "Ho st: localhost", "Content-Length : 5", "H\xf6st: localhost",
                               "(Host): localhost", "Host;: localhost", "\"Host\": localhost"})
        QTest::newRow(rowName(header).constData()) << QByteArray(header);
}

void TestRequestHead::malformedHeadersAreRefused()
{
    QFETCH(QByteArray, header);
    QCOMPARE(readGet({header, "Accept: */*"}).refusal, 400);
    QCOMPARE(readPost({"Host: localhost", header, "Accept: */*"}).refusal, 400);
}

void TestRequestHead::headersThatDecideMayNotComeTwice_data()
{
    QTest::addColumn<QByteArray>("first");
    QTest::addColumn<QByteArray>("second");
    const auto row = [](const QByteArray &first, const QByteArray &second) {
        QTest::newRow((first + ", " + second).constData()) << first << second;
    };
    row("Host: localhost", "Host: localhost");
    row("Host: localhost", "host: example.com");
    row("Content-Length: 5", "Content-Length: 5");
    row("Content-Length: 5", "content-length: 50");
    row("Origin: http://localhost", "Origin: http://localhost");
    row("Sec-Fetch-Site: same-origin", "Sec-Fetch-Site: cross-site");
}

void TestRequestHead::headersThatDecideMayNotComeTwice()
{
    QFETCH(QByteArray, first);
    QFETCH(QByteArray, second);
    QCOMPARE(readPost({first, second}).refusal, 400);
    QCOMPARE(readPost({second, "Accept: */*", first}).refusal, 400);
    QCOMPARE(readGet({first, second}).refusal, 400);
}

void TestRequestHead::contentLengthIsADecimalNumber_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<int>("length");
    QTest::addColumn<int>("refusal");
    constexpr int none = -1;
    const auto row = [](const QByteArray &value, int length, int refusal) {
        QTest::newRow(rowName(value).constData()) << value << length << refusal;
    };
    row("0", 0, ok);
    row("1", 1, ok);
    row("  17  ", 17, ok);
    row("0012", 12, ok);
    row(QByteArray::number(TunnelLimits::body - 1), TunnelLimits::body - 1, ok);
    row(QByteArray::number(TunnelLimits::body), TunnelLimits::body, ok);
    row(QByteArray::number(TunnelLimits::body + 1), none, 413);
    row("2147483647", none, 413);
    row("2147483648", none, 413);
    row("4294967297", none, 413);
    row("18446744073709551617", none, 413);
    row(QByteArray(200, '9'), none, 413);
    for (const char *value : {"", "-1", "-0", "+5", "5,5", "5, 5", "5 5", "0x5", "5a", "a", "5.0", "1e3", "5;",
                              "\"5\"", "\xb2", "-18446744073709551611"})
        row(value, none, 400);
}

void TestRequestHead::contentLengthIsADecimalNumber()
{
    QFETCH(QByteArray, value);
    QFETCH(int, length);
    QFETCH(int, refusal);
    for (const RequestHead &head : {readPost({"Content-Length: " + value}), readPost({"Content-Length:" + value}),
                                    readGet({"Host: localhost", "Content-Length: " + value})}) {
        QCOMPARE(head.refusal, refusal);
        QCOMPARE(head.contentLength, length);
    }
    QCOMPARE(readRequestHead("POST /command HTTP/1.1", false).contentLength, -1);
}

void TestRequestHead::commandsOfBrowsersNeedALength()
{
    const auto refusalOf = [](const QByteArray &method, const QList<QByteArray> &headers) {
        return readRequestHead(headOf(method + " / HTTP/1.1", headers), false).refusal;
    };
    QCOMPARE(refusalOf("POST", {}), ok);
    QCOMPARE(refusalOf("POST", {"Host: localhost"}), 411);
    QCOMPARE(refusalOf("POST", {"Sec-Fetch-Site: none"}), 411);
    QCOMPARE(refusalOf("POST", {"Host: localhost", "Content-Length: 0"}), ok);
    // Who is refused anyway learns nothing else.
    QCOMPARE(refusalOf("POST", {"Host: example.com"}), 403);
    QCOMPARE(refusalOf("POST", {"Host: localhost", "Origin: http://example.com"}), 403);
    QCOMPARE(refusalOf("GET", {"Host: localhost"}), ok);
    QCOMPARE(refusalOf("PUT", {"Host: localhost"}), ok);
}

void TestRequestHead::clientsMayWaitForAGoAhead()
{
    QVERIFY(readPost({"Host: localhost", "Expect: 100-continue"}).expectsContinue);
    QVERIFY(readPost({"expect: 100-Continue"}).expectsContinue);
    QVERIFY(!readPost({"Expect: something"}).expectsContinue);
    QVERIFY(!readPost({}).expectsContinue);
    QVERIFY(!readRequestHead("POST / HTTP/1.0\r\nExpect: 100-continue", false).expectsContinue);
}

void TestRequestHead::absoluteTargetsNameThisComputer_data()
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

void TestRequestHead::absoluteTargetsNameThisComputer()
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

void TestRequestHead::tabsAreWhiteSpace()
{
    const RequestHead head = readGet({"Host:\tlocalhost", "If-None-Match: \t\"a\"\t", "Accept: a,\tb"});
    QCOMPARE(head.refusal, ok);
    QCOMPARE(head.entityTag, QByteArrayLiteral("a"));
    QCOMPARE(readPost({"Content-Length:\t12\t"}).contentLength, 12);
    // Not where they would become part of something.
    for (const char *text : {"GET\t/a HTTP/1.1", "GET /a\tb HTTP/1.1", "GET /a HTTP/1.1\r\nAccept\t: a",
                             "GET /a HTTP/1.1\r\n\tAccept: a", "GET /a HTTP/1.1\r\nIf-None-Match: \"a\tb\""})
        QCOMPARE(readRequestHead(text, false).refusal, 400);
    QCOMPARE(readGet({"Host: local\thost"}).refusal, 403);
}

void TestRequestHead::bodiesInPiecesAreNotImplemented_data()
{
    QTest::addColumn<QByteArray>("header");
    for (const char *header : {"Transfer-Encoding: chunked", "transfer-encoding: identity",
                               "Transfer-Encoding:", "Transfer-Encoding: gzip, chunked"})
        QTest::newRow(header) << QByteArray(header);
}

void TestRequestHead::bodiesInPiecesAreNotImplemented()
{
    QFETCH(QByteArray, header);
    QCOMPARE(readPost({"Host: localhost", header}).refusal, 501);
    QCOMPARE(readPost({"Host: localhost", header, "Content-Length: 5"}).refusal, 501);
    QCOMPARE(readGet({header}).refusal, 501);
}

void TestRequestHead::clientsMayWantNoFurtherRequest_data()
{
    QTest::addColumn<QByteArray>("head");
    QTest::addColumn<bool>("closes");
    const auto row = [](const QByteArray &head, bool closes) {
        QTest::newRow(rowName(head).constData()) << head << closes;
    };
    row("GET / HTTP/1.1", false);
    row("GET / HTTP/1.1\r\nConnection: keep-alive", false);
    row("GET / HTTP/1.1\r\nConnection: close", true);
    row("GET / HTTP/1.1\r\nconnection: CLOSE", true);
    row("GET / HTTP/1.1\r\nConnection: TE, close", true);
    row("GET / HTTP/1.1\r\nConnection: TE\r\nConnection: close", true);
    row("GET / HTTP/1.0", true);
    row("GET / HTTP/1.0\r\nConnection: Keep-Alive", false);
    row("POST / HTTP/1.0\r\nConnection: close", true);
    row("GET /", false);
}

void TestRequestHead::clientsMayWantNoFurtherRequest()
{
    QFETCH(QByteArray, head);
    QFETCH(bool, closes);
    QCOMPARE(readRequestHead(head, false).closesConnection, closes);
}

void TestRequestHead::browsersShowInTheirHeaders_data()
{
    QTest::addColumn<QByteArray>("header");
    QTest::addColumn<bool>("browser");
    const auto row = [](const QByteArray &header, bool browser) {
        QTest::newRow(rowName(header).constData()) << header << browser;
    };
    row("Host: localhost", true);
    row("host:", true);
    row("Origin: null", true);
    row("Sec-Fetch-Site: none", true);
    row("Sec-Fetch-Mode: cors", true);
    row("Sec-Fetch-Dest: image", true);
    row("Accept: */*", false);
    row("X-Host: localhost", false);
    row("If-None-Match: \"Host:\"", false);
}

void TestRequestHead::browsersShowInTheirHeaders()
{
    QFETCH(QByteArray, header);
    QFETCH(bool, browser);
    QCOMPARE(readGet({header}).fromBrowser, browser);
    QCOMPARE(readGet({"Accept: */*", header, "Accept-Language: de"}).fromBrowser, browser);
}

void TestRequestHead::unfinishedHeadsAreNoticed_data()
{
    QTest::addColumn<QByteArray>("head");
    QTest::addColumn<bool>("unfinished");
    const auto row = [](const QByteArray &head, bool unfinished) {
        QTest::newRow(rowName(head).constData()) << head << unfinished;
    };
    row("GET /", false);
    row("GET / HTTP/1.1", false);
    row("GET / HTTP/1.1\r\n", false);
    row("GET / HTTP/1.1\r\nH", true);
    row("GET / HTTP/1.1\r\nHost", true);
    row("GET / HTTP/1.1\r\nHost:", false);
    row("GET / HTTP/1.1\r\nAccept: a", false);
    row("GET / HTTP/1.1\r\nAccept: a\r\n", false);
    row("GET / HTTP/1.1\r\nAccept: a\r\nHos", true);
}

void TestRequestHead::unfinishedHeadsAreNoticed()
{
    QFETCH(QByteArray, head);
    QFETCH(bool, unfinished);
    QCOMPARE(readRequestHead(head, false).endsInsideHeaderName, unfinished);
}

void TestRequestHead::requestLinesOfAnyMethodAreKnown_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<bool>("known");
    const auto row = [](const QByteArray &line, bool known) {
        QTest::newRow(rowName(line).constData()) << line << known;
    };
    row("PUT / HTTP/1.1", true);
    row("OPTIONS * HTTP/1.1", true);
    row("HEAD /a?b HTTP/1.0", true);
    row("x-y_z! /a HTTP/1.1", true);
    row("", false);
    row("PUT", false);
    row("PUT /", false);
    row("PUT / HTTP/1.2", false);
    row("PUT / HTTP/2.0", false);
    row("PUT / http/1.1", false);
    row("PUT / HTTP/1.1 ", false);
    row("PUT  / HTTP/1.1", false);
    row("PUT /a b HTTP/1.1", false);
    row(" / HTTP/1.1", false);
    row("P(T / HTTP/1.1", false);
    row("P\xdcT / HTTP/1.1", false);
    row("PUT /\x01 HTTP/1.1", false);
    row("PUT /\x7f HTTP/1.1", false);
}

void TestRequestHead::requestLinesOfAnyMethodAreKnown()
{
    QFETCH(QByteArray, line);
    QFETCH(bool, known);
    QCOMPARE(isRequestLine(line), known);
}

QTEST_APPLESS_MAIN(TestRequestHead)
#include "tst_requesthead.moc"
