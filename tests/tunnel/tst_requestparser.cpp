// SPDX-License-Identifier: MIT
#include "parserbench.h"
#include "tunnel/tunnellimits_p.h"

#include <QElapsedTimer>
#include <QtTest>

using namespace SondixQt;

namespace {

QByteArray line(const QByteArray &method, int size)
{
    const QByteArray end = QByteArrayLiteral(" HTTP/1.1");
    QByteArray result = method + " /";
    result += QByteArray(size - result.size() - end.size(), 'a');
    return result + end;
}

/// A head of \a size bytes, without its blank line.
QByteArray head(int size)
{
    const QByteArray begin = QByteArrayLiteral("GET /a HTTP/1.1\r\nHost: localhost\r\nX: ");
    return begin + QByteArray(size - begin.size(), 'x');
}

} // namespace

class TestRequestParser : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void severalRequestsComeInTheirOrder();
    void announcedBytesAreBodyWhateverTheyBeginWith();
    void blocksOfAForeignBodyAreNoCommands();
    void importIsTold_data();
    void importIsTold();
    void commandsLoseTheirTrailingLineEnds_data();
    void commandsLoseTheirTrailingLineEnds();
    void commandsWithAZeroByteAreRefused();
    void lineEndsBeforeARequestAreSkipped();
    void floodsOfLineEndsAreSkippedFast();
    void unknownBytesAreDroppedAndCounted_data();
    void unknownBytesAreDroppedAndCounted();
    void binaryGarbageNeverBecomesACommand_data();
    void binaryGarbageNeverBecomesACommand();
    void encryptedConnectionsEndAtOnce();
    void otherMethodsLeaveTheConnectionUsable();
    void bodiesThatWaitAreAskedFor();
    void firstLinesHaveALimit_data();
    void firstLinesHaveALimit();
    void endlessFirstLinesEndAtTheLimit();
    void headsHaveALimit_data();
    void headsHaveALimit();
    void endlessHeadsEndAtTheLimit();
    void announcedBodiesHaveALimit();
    void bodiesOfRawClientsHaveALimit();
    void garbageHasALimit();
    void longInputIsParsedInLinearTime();
    void nothingIsParsedAfterARefusal_data();
    void nothingIsParsedAfterARefusal();
    void nothingIsParsedAfterTheLastRequest();
    void anyRefusalEndsTheConnection();
};

void TestRequestParser::severalRequestsComeInTheirOrder()
{
    const QByteArray bytes = pageRequest("/a") + commandRequest("ONE") + pageRequest("/b?c") +
                             commandRequest("IMPORT all\nA 1\n") + pageRequest("/d", "");
    // After a request with a Host header, one without it is refused; the earlier requests stay valid.
    QCOMPARE(parse(bytes), (Requests{"GET /a ", "COMMAND ONE", "GET /b ", "IMPORT A 1\n", "400"}));
}

void TestRequestParser::announcedBytesAreBodyWhateverTheyBeginWith()
{
    RequestParser parser;
    const QByteArray body = blocksThatLookLikeCommands(4);
    const QByteArray request = commandRequest(body);
    const int begin = request.size() - body.size();
    QCOMPARE(parse(parser, request.left(begin)), Requests());
    constexpr int block = 16 * 1024;
    for (int i = 0; i < 3; ++i) {
        QVERIFY(body.mid(i * block).startsWith("POST "));
        QCOMPARE(parse(parser, body.mid(i * block, block)), Requests());
        QVERIFY(parser.isIncomplete());
    }
    const QByteArray last = body.mid(3 * block);
    QCOMPARE(parse(parser, last.left(block - 1)), Requests());
    QCOMPARE(parse(parser, last.right(1) + pageRequest("/a")), (Requests{"COMMAND " + body.trimmed(), "GET /a "}));
}

void TestRequestParser::blocksOfAForeignBodyAreNoCommands()
{
    RequestParser parser;
    const QByteArray body = blocksThatLookLikeCommands(4);
    const QByteArray request = commandRequest(
        body, "Host: localhost:8080\r\nOrigin: http://example.com\r\nSec-Fetch-Site: cross-site\r\n");
    QCOMPARE(parse(parser, request.left(request.size() - body.size())), Requests{"403"});
    for (int i = 0; i < 4; ++i)
        QCOMPARE(parse(parser, body.mid(i * 16 * 1024, 16 * 1024)), Requests());
    QCOMPARE(pause(parser), Requests());
}

void TestRequestParser::importIsTold_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QByteArray>("parsed");
    const auto row = [](const char *name, const QByteArray &body, const QByteArray &parsed) {
        QTest::newRow(name) << body << parsed;
    };
    row("lines", "IMPORT all\nA 1\nB 2", "IMPORT A 1\nB 2");
    row("line ends of a browser", "IMPORT all\r\nA 1\r\nB 2\r\n", "IMPORT A 1\r\nB 2\r\n");
    row("an empty second line", "IMPORT all\n\nA 1", "IMPORT \nA 1");
    row("first line only", "IMPORT all", "IMPORT ");
    row("first line with its end", "IMPORT all\r\n", "IMPORT ");
    row("nothing to name", "IMPORT \nA 1", "IMPORT A 1");
    row("no blank", "IMPORT\nA 1", "COMMAND IMPORT\nA 1");
    row("longer word", "IMPORTS all\nA 1", "COMMAND IMPORTS all\nA 1");
    row("small letters", "import all\nA 1", "COMMAND import all\nA 1");
    row("blank before", " IMPORT all\nA 1", "COMMAND  IMPORT all\nA 1");
    row("another command", "SETDEFAULT", "COMMAND SETDEFAULT");
}

void TestRequestParser::importIsTold()
{
    QFETCH(QByteArray, body);
    QFETCH(QByteArray, parsed);
    QCOMPARE(parse(commandRequest(body)), Requests{parsed});
    RequestParser raw;
    QCOMPARE(parse(raw, rawPost + body), Requests());
    QCOMPARE(pause(raw), Requests{parsed});
}

void TestRequestParser::commandsLoseTheirTrailingLineEnds_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("none") << QByteArrayLiteral("ONE") << QByteArrayLiteral("ONE");
    QTest::newRow("one") << QByteArrayLiteral("ONE\n") << QByteArrayLiteral("ONE");
    QTest::newRow("two bytes") << QByteArrayLiteral("ONE\r\n") << QByteArrayLiteral("ONE");
    QTest::newRow("many") << QByteArrayLiteral("ONE\r\n\n\r\r\n") << QByteArrayLiteral("ONE");
    QTest::newRow("blanks stay") << QByteArrayLiteral("ONE \r\n") << QByteArrayLiteral("ONE ");
    QTest::newRow("inner stay") << QByteArrayLiteral("\r\nONE\r\nTWO\r\n") << QByteArrayLiteral("\r\nONE\r\nTWO");
    QTest::newRow("nothing else") << QByteArrayLiteral("\r\n") << QByteArray("");
    QTest::newRow("empty") << QByteArray("") << QByteArray("");
}

void TestRequestParser::commandsLoseTheirTrailingLineEnds()
{
    QFETCH(QByteArray, body);
    QFETCH(QByteArray, text);
    QCOMPARE(parse(commandRequest(body)), Requests{"COMMAND " + text});
}

void TestRequestParser::commandsWithAZeroByteAreRefused()
{
    for (const QByteArray &body : {QByteArray("\0", 1), QByteArray("ONE\0", 4), QByteArray("\0ONE", 4),
                                   QByteArray("IMPORT all\nA\0B", 14), QByteArray("IMPORT a\0b\nA", 12)}) {
        QCOMPARE(parse(commandRequest(body) + pageRequest("/a")), Requests{"400"});
        RequestParser raw;
        QCOMPARE(parse(raw, rawPost + body), Requests());
        QCOMPARE(pause(raw), Requests{"400"});
    }
    QCOMPARE(parse("GET /a HTTP/1.1\r\nContent-Length: 1\r\n\r\n" + QByteArray(1, '\0')), pageA);
}

void TestRequestParser::lineEndsBeforeARequestAreSkipped()
{
    RequestParser parser;
    QCOMPARE(parse(parser, "\r\n\r\n\r\n" + pageRequest("/a")), pageA);
    QCOMPARE(parse(parser, "\r"), Requests());
    QCOMPARE(parse(parser, "\n\r\n" + commandRequest("ONE") + "\r\n" + pageRequest("/a")),
             (Requests{"COMMAND ONE", "GET /a "}));
    QCOMPARE(parser.takeDropped(), 0);
}

void TestRequestParser::floodsOfLineEndsAreSkippedFast()
{
    RequestParser parser;
    QElapsedTimer timer;
    timer.start();
    const QByteArray flood = QByteArrayLiteral("\r\n").repeated(1 << 20);
    QCOMPARE(parse(parser, flood + pageRequest("/a")), pageA);
    QVERIFY2(timer.elapsed() < 5000, "takes time with the square of their number");
}

void TestRequestParser::unknownBytesAreDroppedAndCounted_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("dropped");
    QTest::addColumn<Requests>("requests");
    const auto row = [](const char *name, const QByteArray &bytes, int dropped, const Requests &requests = {}) {
        QTest::newRow(name) << bytes << dropped << requests;
    };
    row("a line", "hello\r\n", 1);
    row("two lines", "hello\r\nthere\r\n", 2);
    row("letters beyond ASCII", "h\xe4llo\r\n", 1);
    row("a header alone", "Host: example.com\r\n\r\n", 1);
    row("POST in small letters", "post /a\r\n", 1);
    row("no blank behind GET", "GET/a HTTP/1.1\r\n", 1);
    row("no blank behind POST", "POST\r\n", 1);
    row("a blank before GET", " GET /a HTTP/1.1\r\n", 1);
    row("another method", "DELETE /a HTTP/1.1\r\nHost: localhost\r\n\r\n", 1, {"OTHER DELETE"});
    row("another method with a body", "PUT /a HTTP/1.1\r\nContent-Length: 19\r\n\r\nPOST / HTTP/1.1\r\n\r\n", 1,
        {"OTHER PUT"});
    row("POST in small letters, whole", "post /a HTTP/1.1\r\nHost: localhost\r\nContent-Length: 3\r\n\r\nONE", 1,
        {"OTHER post"});
}

void TestRequestParser::unknownBytesAreDroppedAndCounted()
{
    QFETCH(QByteArray, bytes);
    QFETCH(int, dropped);
    QFETCH(Requests, requests);
    RequestParser parser;
    QCOMPARE(parse(parser, bytes), requests);
    QCOMPARE(parser.takeDropped(), dropped);
    QCOMPARE(parser.takeDropped(), 0);
    QVERIFY(!parser.isIncomplete());
    QCOMPARE(parse(parser, pageRequest("/a")), pageA);
    QCOMPARE(parser.takeDropped(), 0);
}

void TestRequestParser::binaryGarbageNeverBecomesACommand_data()
{
    QTest::addColumn<QByteArray>("bytes");
    const QByteArray smuggled = "\r\n\r\nPOST / HTTP/1.1\r\nContent-Length: 8\r\n\r\nSETRESET";
    QTest::newRow("zero byte") << QByteArray(1, '\0') + smuggled;
    QTest::newRow("bare line end") << "\n" + smuggled.mid(4);
    QTest::newRow("after a word") << "GE\x01" + smuggled;
    QTest::newRow("encrypted greeting after text") << "hello\r\na" + encryptedGreeting("a.localhost" + smuggled);
    QTest::newRow("after text") << "hello\r\n\x7f" + smuggled;
    QTest::newRow("tab in text") << "hello\tthere" + smuggled;
    QTest::newRow("line without an end") << QByteArray(TunnelLimits::requestLine + 1, 'a') + smuggled;
}

void TestRequestParser::binaryGarbageNeverBecomesACommand()
{
    QFETCH(QByteArray, bytes);
    for (const bool single : {false, true}) {
        RequestParser parser;
        Requests requests;
        for (int i = 0; single && i < bytes.size(); ++i)
            requests += parse(parser, bytes.mid(i, 1));
        if (!single)
            requests = parse(parser, bytes);
        QCOMPARE(requests, Requests());
        QVERIFY(!parser.isEnded());
        QCOMPARE(pause(parser), Requests());
        QVERIFY(parser.takeDropped() > 0);
        // The pause has ended the discarded input: the connection stays usable.
        QCOMPARE(parse(parser, pageRequest("/a")), pageA);
    }
}

void TestRequestParser::encryptedConnectionsEndAtOnce()
{
    RequestParser parser;
    QCOMPARE(parse(parser, pageRequest("/a") + QByteArray(1, '\x16')), (Requests{"GET /a ", "end"}));
    QVERIFY(parser.isEnded());
    QCOMPARE(parser.takeDropped(), 1);
    QCOMPARE(parse(parser, encryptedGreeting("a.localhost").mid(1) + commandRequest("ONE")), Requests());
}

void TestRequestParser::otherMethodsLeaveTheConnectionUsable()
{
    RequestParser parser;
    QCOMPARE(parse(parser, "HEAD / HTTP/1.1\r\nHost: localhost\r\n\r\n"), Requests{"OTHER HEAD"});
    QCOMPARE(parser.takeDropped(), 1);
    QVERIFY(!parser.isEnded());
    QCOMPARE(parse(parser, pageRequest("/a")), pageA);
    // Its Host header counts: later requests without one are refused.
    QCOMPARE(parse(parser, pageRequest("/a", "")), Requests{"400"});

    RequestParser old;
    QCOMPARE(parse(old, "HEAD / HTTP/1.0\r\n\r\n" + pageRequest("/a")), Requests{"OTHER HEAD"});
    QVERIFY(old.isEnded());
}

void TestRequestParser::bodiesThatWaitAreAskedFor()
{
    RequestParser parser;
    const QByteArray expect = "Host: localhost\r\nExpect: 100-continue\r\n";
    const QByteArray request = commandRequest("ONE", expect);
    QCOMPARE(parse(parser, request.left(request.size() - 5)), Requests());
    QCOMPARE(parse(parser, request.mid(request.size() - 5, 2)), Requests{"100"});
    QCOMPARE(parse(parser, "ONE"), Requests{"COMMAND ONE"});
    // No 100 for an empty body, a body that has arrived, HTTP/1.0 or a refused request.
    QCOMPARE(parse(parser, commandRequest("", expect)), Requests{"COMMAND "});
    QCOMPARE(parse(parser, "GET /a HTTP/1.0\r\nContent-Length: 1\r\n" + expect + "\r\nA"), pageA);
    QCOMPARE(parse(commandRequest("ONE", "Host: example.com\r\nExpect: 100-continue\r\n")), Requests{"403"});
    QCOMPARE(parse("POST / HTTP/1.1\r\nContent-Length: 1048577\r\n" + expect + "\r\n"), Requests{"413"});
}

void TestRequestParser::firstLinesHaveALimit_data()
{
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<int>("size");
    QTest::addColumn<bool>("fits");
    constexpr int limit = 8 * 1024;
    for (const char *method : {"GET", "get", "POST", "PUT", "OPTIONS"}) {
        for (const int size : {limit - 1, limit, limit + 1})
            QTest::addRow("%s %d", method, size) << QByteArray(method) << size << (size <= limit);
    }
}

void TestRequestParser::firstLinesHaveALimit()
{
    QFETCH(QByteArray, method);
    QFETCH(int, size);
    QFETCH(bool, fits);
    RequestParser parser;
    const Requests requests =
        parse(parser, line(method, size) + "\r\nHost: localhost\r\nContent-Length: 0\r\n\r\n" + pageRequest("/b"));
    QCOMPARE(requests.size(), fits ? 2 : 1);
    QCOMPARE(requests.first() == "414", !fits);
    QCOMPARE(parser.isEnded(), !fits);
}

void TestRequestParser::endlessFirstLinesEndAtTheLimit()
{
    RequestParser parser;
    QCOMPARE(parse(parser, "GET /" + QByteArray(8 * 1024 - 5, 'a')), Requests());
    QCOMPARE(parse(parser, "a"), Requests{"414"});
    RequestParser exact;
    QCOMPARE(parse(exact, line("GET", 8 * 1024) + "\r"), Requests());
    QCOMPARE(parse(exact, "\n\r\n").size(), 1);
    QVERIFY(!exact.isEnded());
}

void TestRequestParser::headsHaveALimit_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<QByteArray>("parsed");
    constexpr int limit = 32 * 1024;
    QTest::newRow("below") << limit - 1 << QByteArrayLiteral("GET /a ");
    QTest::newRow("at") << limit << QByteArrayLiteral("GET /a ");
    QTest::newRow("above") << limit + 1 << QByteArrayLiteral("431");
}

void TestRequestParser::headsHaveALimit()
{
    QFETCH(int, size);
    QFETCH(QByteArray, parsed);
    QCOMPARE(parse(head(size) + "\r\n\r\n"), Requests{parsed});
    // The bytes of an earlier request do not count towards the limit.
    QCOMPARE(parse(pageRequest("/b") + head(size) + "\r\n\r\n"), (Requests{"GET /b ", parsed}));
}

void TestRequestParser::endlessHeadsEndAtTheLimit()
{
    RequestParser parser;
    QCOMPARE(parse(parser, head(32 * 1024)), Requests());
    QCOMPARE(parse(parser, "xxxx"), Requests{"431"});
    QVERIFY(parser.isEnded());
}

void TestRequestParser::announcedBodiesHaveALimit()
{
    constexpr int limit = 1024 * 1024;
    for (const int size : {limit - 1, limit}) {
        const QByteArray body(size, 'a');
        QCOMPARE(parse(commandRequest(body)), Requests{"COMMAND " + body});
    }
    // Content-Length alone is enough for the refusal.
    QCOMPARE(parse("POST / HTTP/1.1\r\nHost: localhost\r\nContent-Length: 1048577\r\n\r\n"), Requests{"413"});
    QCOMPARE(parse("GET /a HTTP/1.1\r\nHost: localhost\r\nContent-Length: 1048577\r\n\r\n"), Requests{"413"});
}

void TestRequestParser::bodiesOfRawClientsHaveALimit()
{
    constexpr int limit = 1024 * 1024;
    for (const int size : {limit - 1, limit, limit + 1}) {
        const QByteArray body(size, 'a');
        RequestParser parser;
        QCOMPARE(parse(parser, rawPost + body), size <= limit ? Requests() : Requests{"413"});
        QCOMPARE(pause(parser), size <= limit ? Requests{"COMMAND " + body} : Requests());
    }
}

void TestRequestParser::garbageHasALimit()
{
    RequestParser parser;
    const QByteArray garbage(TunnelLimits::discarded, '\x01');
    QCOMPARE(parse(parser, garbage), Requests());
    QCOMPARE(pause(parser), Requests());
    QCOMPARE(parse(parser, pageRequest("/a")), pageA);
    // The count has started again.
    QCOMPARE(parse(parser, garbage), Requests());
    QCOMPARE(parse(parser, QByteArray(1, '\x01')), Requests{"400"});
    QCOMPARE(parse(parser, pageRequest("/a")), Requests());

    RequestParser reader;
    const QByteArray line = "a line of text\r\n";
    QCOMPARE(parse(reader, line.repeated(TunnelLimits::discarded / line.size())), Requests());
    QCOMPARE(parse(reader, pageRequest("/a")), pageA);
    QCOMPARE(parse(reader, line.repeated(TunnelLimits::discarded / line.size() + 1)), Requests{"400"});
}

void TestRequestParser::longInputIsParsedInLinearTime()
{
    constexpr int count = 200000;
    RequestParser parser;
    parser.append(pageRequest("/a", "").repeated(count));
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(takeAll(parser).size(), count);
    QVERIFY2(timer.elapsed() < 60000, "takes time with the square of their number");
}

void TestRequestParser::nothingIsParsedAfterARefusal_data()
{
    QTest::addColumn<QByteArray>("refused");
    const QList<RequestSequence> sequences = refusedSequences();
    for (const RequestSequence &sequence : sequences)
        QTest::newRow(sequence.name.constData()) << sequence.bytes;
}

void TestRequestParser::nothingIsParsedAfterARefusal()
{
    QFETCH(QByteArray, refused);
    RequestParser parser;
    QVERIFY(parse(parser, refused).last().toInt() >= 400);
    QVERIFY(parser.isEnded());
    QCOMPARE(parse(parser, commandRequest("ONE") + pageRequest("/a")), Requests());
    QCOMPARE(parse(parser, "GET /a"), Requests());
    QVERIFY(!parser.endsWithPause());
    QVERIFY(!parser.isIncomplete());
    QCOMPARE(pause(parser), Requests());
}

void TestRequestParser::nothingIsParsedAfterTheLastRequest()
{
    RequestParser parser;
    const QByteArray last = commandRequest("ONE", "Host: localhost\r\nConnection: close\r\n");
    parser.append(last + pageRequest("/a"));
    ParsedRequest parsed;
    QVERIFY(parser.next(parsed));
    QVERIFY(parsed.closes);
    QCOMPARE(describe(parsed), QByteArrayLiteral("COMMAND ONE"));
    QVERIFY(parser.isEnded());
    QCOMPARE(parse(parser, pageRequest("/b")), Requests());
}

void TestRequestParser::anyRefusalEndsTheConnection()
{
    RequestParser parser;
    QCOMPARE(parse(parser, "GET /a"), Requests());
    QCOMPARE(describe(parser.refuse(408)), QByteArrayLiteral("408"));
    QVERIFY(parser.isEnded());
    QCOMPARE(parse(parser, "\r\n\r\n" + pageRequest("/b")), Requests());
}

QTEST_APPLESS_MAIN(TestRequestParser)
#include "tst_requestparser.moc"
