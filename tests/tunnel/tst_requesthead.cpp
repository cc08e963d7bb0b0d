// SPDX-License-Identifier: MIT
#include "headbench.h"

#include <QtTest>

using namespace SondixQt;

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

    // GET is accepted in any letter case, POST in capitals only.
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
    // Host and origin are checked before the length is required.
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

void TestRequestHead::tabsAreWhiteSpace()
{
    const RequestHead head = readGet({"Host:\tlocalhost", "If-None-Match: \t\"a\"\t", "Accept: a,\tb"});
    QCOMPARE(head.refusal, ok);
    QCOMPARE(head.entityTag, QByteArrayLiteral("a"));
    QCOMPARE(readPost({"Content-Length:\t12\t"}).contentLength, 12);
    // But not in a method, a target, a field name or a tag.
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
