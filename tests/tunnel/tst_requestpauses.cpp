// SPDX-License-Identifier: MIT
#include "parserbench.h"

#include <QtTest>

using namespace SondixQt;

/// The request parser when a client pauses or shuts down its write side.
class TestRequestPauses : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void rawClientsAreServedWhenTheyPause_data();
    void rawClientsAreServedWhenTheyPause();
    void halfHeadsOfBrowsersAreNeverServed_data();
    void halfHeadsOfBrowsersAreNeverServed();
    void commandsNeedTheirBlankLine_data();
    void commandsNeedTheirBlankLine();
    void unfinishedRequestsGoOnAfterAPause();
    void outstandingBodiesDoNotEndByAPause();
    void aPauseEndsText();
    void aPauseEndsNoRequestOfAnotherMethod_data();
    void aPauseEndsNoRequestOfAnotherMethod();
    void aPauseInsideALineEndChangesNothing();
    void theRestOfAPageThatAPauseHasCutIsRefused_data();
    void theRestOfAPageThatAPauseHasCutIsRefused();
    void theEndOfTheInputEndsLikeAPause_data();
    void theEndOfTheInputEndsLikeAPause();
    void pausesEndOnlyWhatHasBegun();
};

void TestRequestPauses::rawClientsAreServedWhenTheyPause_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("parsed");
    const auto row = [](const char *name, const QByteArray &bytes, const QByteArray &parsed) {
        QTest::newRow(name) << bytes << parsed;
    };
    row("a path", "GET /a", "GET /a ");
    row("a path with its line end", "GET /a\r\n", "GET /a ");
    row("a path with half its line end", "GET /a\r", "GET /a ");
    row("a version", "GET /a HTTP/1.1", "GET /a ");
    row("headers", "GET /a HTTP/1.1\r\nIf-None-Match: \"1\"\r\nAccept: a", "GET /a 1");
    row("half a blank line", "GET /a HTTP/1.1\r\nAccept: a\r\n\r", "GET /a ");
    row("a command", "POST /\r\n\r\nONE\r\n", "COMMAND ONE");
    row("a command with its last line end cut", "POST /\r\n\r\nONE\r", "COMMAND ONE");
    row("a command of no bytes", "POST / HTTP/1.1\r\n\r\n", "COMMAND ");
    row("a bad head", "GET /\x01", "400");
    row("a bare line end", "GET /a\n", "400");
    row("a body in requests", "GET / HTTP/1.1\r\nTransfer-Encoding: chunked\r\n", "501");
}

void TestRequestPauses::rawClientsAreServedWhenTheyPause()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QByteArray, parsed);
    RequestParser parser;
    QCOMPARE(parse(parser, bytes), Requests());
    QVERIFY(parser.endsWithPause());
    QCOMPARE(pause(parser), Requests{parsed});
    QVERIFY(!parser.isIncomplete());
    QVERIFY(!parser.endsWithPause());
    if (parser.isEnded())
        return;
    QCOMPARE(parse(parser, "GET /\r\n\r\n" + pageRequest("/a")), (Requests{"GET / ", "GET /a "}));
}

void TestRequestPauses::halfHeadsOfBrowsersAreNeverServed_data()
{
    QTest::addColumn<QByteArray>("head");
    for (const QByteArray &start :
         {QByteArray("GET / HTTP/1.1\r\n"), QByteArray("POST / HTTP/1.1\r\n"), QByteArray("PUT / HTTP/1.1\r\n")}) {
        for (const QByteArray &rest :
             {QByteArray("H"), QByteArray("Host"), QByteArray("Host:"), QByteArray("Host: local"),
              QByteArray("Host: localhost\r"), QByteArray("Host: localhost\r\n"),
              QByteArray("Host: localhost\r\n\r"), QByteArray("Accept: a\r\nOri"),
              QByteArray("Origin: http://example.com"), QByteArray("Sec-Fetch-Site: n"),
              QByteArray("Accept: a\r\nSec-Fetch-Mode: cors\r\nAc")})
            QTest::newRow((start + rest).toPercentEncoding(" /:").constData()) << start + rest;
    }
}

void TestRequestPauses::halfHeadsOfBrowsersAreNeverServed()
{
    QFETCH(QByteArray, head);
    RequestParser parser;
    QCOMPARE(parse(parser, head), Requests());
    QCOMPARE(parser.endsWithPause(), head.startsWith("GET"));
    QCOMPARE(pause(parser), Requests());
    QVERIFY(parser.isIncomplete());
    QVERIFY(!parser.endsWithPause());
    QCOMPARE(parser.takeDropped(), 0);
}

void TestRequestPauses::commandsNeedTheirBlankLine_data()
{
    QTest::addColumn<int>("size");
    const int size = QByteArrayLiteral("POST /command HTTP/1.1\r\n").size();
    for (int cut = QByteArrayLiteral("POST ").size(); cut <= size; ++cut)
        QTest::addRow("%d", cut) << cut;
}

void TestRequestPauses::commandsNeedTheirBlankLine()
{
    QFETCH(int, size);
    // The body comes from a foreign page and looks like a request.
    const QByteArray foreign = "Host: localhost\r\nOrigin: http://example.com\r\n";
    const QByteArray request = commandRequest(commandRequest("SETRESET", ""), foreign);
    RequestParser parser;
    QCOMPARE(parse(parser, request.left(size)), Requests());
    QCOMPARE(pause(parser), Requests());
    QVERIFY(parser.isIncomplete());
    QCOMPARE(parse(parser, request.mid(size)), Requests{"403"});
}

void TestRequestPauses::unfinishedRequestsGoOnAfterAPause()
{
    RequestParser parser;
    QCOMPARE(parse(parser, "POST / HTTP/1.1\r\nHost: local"), Requests());
    QCOMPARE(pause(parser), Requests());
    QCOMPARE(parse(parser, "host\r\nContent-Length: 3\r"), Requests());
    QCOMPARE(pause(parser), Requests());
    QCOMPARE(parse(parser, "\n\r\nONE"), Requests{"COMMAND ONE"});

    QCOMPARE(parse(parser, "POST / HTTP/1.1\r\nHost: localhost\r\nOrigin: http://example"), Requests());
    QCOMPARE(pause(parser), Requests());
    QCOMPARE(parse(parser, ".com\r\n\r\n"), Requests{"403"});
}

void TestRequestPauses::outstandingBodiesDoNotEndByAPause()
{
    RequestParser parser;
    QCOMPARE(parse(parser, "POST / HTTP/1.1\r\nContent-Length: 6\r\n\r\nONE"), Requests());
    QVERIFY(!parser.endsWithPause());
    QVERIFY(parser.isIncomplete());
    QCOMPARE(pause(parser), Requests());
    QCOMPARE(parse(parser, "TWO"), Requests{"COMMAND ONETWO"});

    QCOMPARE(parse(parser, "POST / HTTP/1.1\r\nContent-Length: 6\r\n"), Requests());
    QCOMPARE(pause(parser), Requests());
    QCOMPARE(parse(parser, "\r\nONETWO"), Requests{"COMMAND ONETWO"});
}

void TestRequestPauses::aPauseEndsText()
{
    for (const QByteArray &bytes : {QByteArray("hello"), QByteArray("Hello there"), QByteArray("\r")}) {
        RequestParser parser;
        QCOMPARE(parse(parser, bytes), Requests());
        QCOMPARE(pause(parser), Requests());
        QCOMPARE(parser.takeDropped(), 1);
        QVERIFY(!parser.isIncomplete());
        QCOMPARE(parse(parser, "GET /\r\n\r\nGET /a HTTP/1.1\r\n\r\n"), (Requests{"GET / ", "GET /a "}));
    }
}

void TestRequestPauses::aPauseEndsNoRequestOfAnotherMethod_data()
{
    QTest::addColumn<QByteArray>("request");
    for (const char *method : {"PUT", "OPTIONS", "HEAD", "POST"})
        QTest::newRow(method) << foreignRequestOf(method, "/a", "Host: evil.example\r\n");
    QTest::newRow("small letters") << foreignRequestOf("patch", "/a", "Host: evil.example\r\n");
}

void TestRequestPauses::aPauseEndsNoRequestOfAnotherMethod()
{
    QFETCH(QByteArray, request);
    // A method in lower case is recognised only when its line is complete.
    const int first = request.at(0) >= 'a' ? request.indexOf("\r\n") : 1;
    for (int size = first; size < request.indexOf("\r\n\r\n") + 4; ++size) {
        RequestParser parser;
        QCOMPARE(parse(parser, request.left(size)), Requests());
        QVERIFY(!parser.endsWithPause());
        QVERIFY(parser.isIncomplete());
        QCOMPARE(pause(parser), Requests());
        QCOMPARE(parse(parser, request.mid(size)), Requests{"403"});
    }
}

void TestRequestPauses::aPauseInsideALineEndChangesNothing()
{
    RequestParser parser;
    QCOMPARE(parse(parser, "\r"), Requests());
    QCOMPARE(pause(parser), Requests());
    QCOMPARE(parse(parser, "\nPUT /a"), Requests());
    QCOMPARE(pause(parser), Requests());
    QCOMPARE(parse(parser, " HTTP/1.1\r\nHost: evil.example\r\n\r\n" + commandRequest("SETDEFAULT ALL", "")),
             Requests{"403"});
}

void TestRequestPauses::theRestOfAPageThatAPauseHasCutIsRefused_data()
{
    QTest::addColumn<QByteArray>("rest");
    const QByteArray body = "\r\n\r\n" + commandRequest("SETDEFAULT ALL", "");
    QTest::newRow("the target") << "bc HTTP/1.1\r\nHost: evil.example" + body;
    QTest::newRow("the version") << " HTTP/1.1\r\nHost: evil.example" + body;
    QTest::newRow("headers") << "\r\nHost: evil.example" + body;
    QTest::newRow("binary") << "\x01" + body;
}

void TestRequestPauses::theRestOfAPageThatAPauseHasCutIsRefused()
{
    QFETCH(QByteArray, rest);
    RequestParser parser;
    QCOMPARE(parse(parser, "GET /a"), Requests());
    QCOMPARE(pause(parser), pageA);
    QCOMPARE(parse(parser, rest), Requests{"400"});
    // A new request after the pause is parsed as usual.
    RequestParser raw;
    QCOMPARE(parse(raw, "GET /a"), Requests());
    QCOMPARE(pause(raw), pageA);
    QCOMPARE(parse(raw, "\r\nGET /a\r\n\r\nhello\r\n" + pageRequest("/a")), pageA + pageA);
}

void TestRequestPauses::theEndOfTheInputEndsLikeAPause_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<Requests>("requests");
    QTest::newRow("nothing") << QByteArray() << Requests();
    QTest::newRow("a raw page") << QByteArray("GET /a") << pageA;
    QTest::newRow("a raw command") << QByteArray(rawPost + "ONE\n") << Requests{"COMMAND ONE"};
    QTest::newRow("half a head") << QByteArray("GET /a HTTP/1.1\r\nHost: localhost\r\n") << Requests();
    QTest::newRow("half a body") << QByteArray("POST / HTTP/1.1\r\nContent-Length: 4\r\n\r\nONE") << Requests();
    QTest::newRow("another method") << QByteArray("PUT / HTTP/1.1\r\n") << Requests();
    QTest::newRow("a page without a target") << QByteArray("GET ") << Requests();
    QTest::newRow("text") << QByteArray("hello") << Requests();
}

void TestRequestPauses::theEndOfTheInputEndsLikeAPause()
{
    QFETCH(QByteArray, bytes);
    QFETCH(Requests, requests);
    for (const bool paused : {false, true}) {
        RequestParser parser;
        Requests seen = parse(parser, bytes);
        if (paused)
            seen += pause(parser);
        ParsedRequest parsed;
        if (parser.endInput(parsed))
            seen += describe(parsed);
        QCOMPARE(seen, requests);
        QVERIFY(parser.isEnded());
        QVERIFY(!parser.endInput(parsed));
        QCOMPARE(parse(parser, pageRequest("/b")), Requests());
    }
}

void TestRequestPauses::pausesEndOnlyWhatHasBegun()
{
    RequestParser parser;
    QVERIFY(!parser.endsWithPause());
    QCOMPARE(pause(parser), Requests());
    QCOMPARE(parse(parser, pageRequest("/a")), pageA);
    QVERIFY(!parser.endsWithPause());
    QCOMPARE(pause(parser), Requests());
    QCOMPARE(parser.takeDropped(), 0);
}

QTEST_APPLESS_MAIN(TestRequestPauses)
#include "tst_requestpauses.moc"
