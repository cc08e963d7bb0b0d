// SPDX-License-Identifier: MIT
#include "requestcorpus.h"
#include "tunnel/requestcutter_p.h"
#include "tunnel/tunnellimits_p.h"

#include <QElapsedTimer>
#include <QtTest>

using namespace SondixQt;

namespace {

using Pieces = QList<QByteArray>;

QByteArray describe(const RequestCutter::Piece &piece)
{
    switch (piece.kind) {
    case RequestCutter::Refusal:
        return QByteArray::number(piece.status);
    case RequestCutter::Continue:
        return "100";
    case RequestCutter::Hangup:
        return "end";
    default:
        return describeRequest(piece);
    }
}

Pieces takeAll(RequestCutter &cutter)
{
    Pieces pieces;
    RequestCutter::Piece piece;
    while (cutter.next(piece))
        pieces += describe(piece);
    return pieces;
}

/// What \a cutter gives out once \a bytes have come.
Pieces cut(RequestCutter &cutter, const QByteArray &bytes)
{
    cutter.append(bytes);
    return takeAll(cutter);
}

Pieces cut(const QByteArray &bytes)
{
    RequestCutter cutter;
    return cut(cutter, bytes);
}

/// What \a cutter gives out when its client pauses.
Pieces pause(RequestCutter &cutter)
{
    Pieces pieces;
    RequestCutter::Piece piece;
    if (cutter.endQuiet(piece))
        pieces += describe(piece);
    return pieces + takeAll(cutter);
}

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

const Pieces pageA = {"GET /a "};
const QByteArray rawPost = QByteArrayLiteral("POST / HTTP/1.1\r\n\r\n");

} // namespace

class TestRequestCutter : public QObject
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
    void theRestOfAPageThatAPauseHasCutIsRefused_data();
    void theRestOfAPageThatAPauseHasCutIsRefused();
    void theEndOfTheInputEndsLikeAPause_data();
    void theEndOfTheInputEndsLikeAPause();
    void pausesEndOnlyWhatHasBegun();
    void nothingIsParsedAfterARefusal_data();
    void nothingIsParsedAfterARefusal();
    void nothingIsParsedAfterTheLastRequest();
    void anyRefusalEndsTheConnection();
};

void TestRequestCutter::severalRequestsComeInTheirOrder()
{
    const QByteArray bytes = pageRequest("/a") + commandRequest("ONE") + pageRequest("/b?c") +
                             commandRequest("IMPORT all\nA 1\n") + pageRequest("/d", "");
    // A name that was once sent may not vanish: the last request is refused, the others stand.
    QCOMPARE(cut(bytes), (Pieces{"GET /a ", "COMMAND ONE", "GET /b ", "IMPORT A 1\n", "400"}));
}

void TestRequestCutter::announcedBytesAreBodyWhateverTheyBeginWith()
{
    RequestCutter cutter;
    const QByteArray body = blocksThatLookLikeCommands(4);
    const QByteArray request = commandRequest(body);
    const int begin = request.size() - body.size();
    QCOMPARE(cut(cutter, request.left(begin)), Pieces());
    constexpr int block = 16 * 1024;
    for (int i = 0; i < 3; ++i) {
        QVERIFY(body.mid(i * block).startsWith("POST "));
        QCOMPARE(cut(cutter, body.mid(i * block, block)), Pieces());
        QVERIFY(cutter.isIncomplete());
    }
    const QByteArray last = body.mid(3 * block);
    QCOMPARE(cut(cutter, last.left(block - 1)), Pieces());
    QCOMPARE(cut(cutter, last.right(1) + pageRequest("/a")), (Pieces{"COMMAND " + body.trimmed(), "GET /a "}));
}

void TestRequestCutter::blocksOfAForeignBodyAreNoCommands()
{
    RequestCutter cutter;
    const QByteArray body = blocksThatLookLikeCommands(4);
    const QByteArray request = commandRequest(
        body, "Host: localhost:8080\r\nOrigin: http://example.com\r\nSec-Fetch-Site: cross-site\r\n");
    QCOMPARE(cut(cutter, request.left(request.size() - body.size())), Pieces{"403"});
    for (int i = 0; i < 4; ++i)
        QCOMPARE(cut(cutter, body.mid(i * 16 * 1024, 16 * 1024)), Pieces());
    QCOMPARE(pause(cutter), Pieces());
}

void TestRequestCutter::importIsTold_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QByteArray>("piece");
    const auto row = [](const char *name, const QByteArray &body, const QByteArray &piece) {
        QTest::newRow(name) << body << piece;
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

void TestRequestCutter::importIsTold()
{
    QFETCH(QByteArray, body);
    QFETCH(QByteArray, piece);
    QCOMPARE(cut(commandRequest(body)), Pieces{piece});
    RequestCutter raw;
    QCOMPARE(cut(raw, rawPost + body), Pieces());
    QCOMPARE(pause(raw), Pieces{piece});
}

void TestRequestCutter::commandsLoseTheirTrailingLineEnds_data()
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

void TestRequestCutter::commandsLoseTheirTrailingLineEnds()
{
    QFETCH(QByteArray, body);
    QFETCH(QByteArray, text);
    QCOMPARE(cut(commandRequest(body)), Pieces{"COMMAND " + text});
}

void TestRequestCutter::commandsWithAZeroByteAreRefused()
{
    for (const QByteArray &body : {QByteArray("\0", 1), QByteArray("ONE\0", 4), QByteArray("\0ONE", 4),
                                   QByteArray("IMPORT all\nA\0B", 14), QByteArray("IMPORT a\0b\nA", 12)}) {
        QCOMPARE(cut(commandRequest(body) + pageRequest("/a")), Pieces{"400"});
        RequestCutter raw;
        QCOMPARE(cut(raw, rawPost + body), Pieces());
        QCOMPARE(pause(raw), Pieces{"400"});
    }
    QCOMPARE(cut("GET /a HTTP/1.1\r\nContent-Length: 1\r\n\r\n" + QByteArray(1, '\0')), pageA);
}

void TestRequestCutter::lineEndsBeforeARequestAreSkipped()
{
    RequestCutter cutter;
    QCOMPARE(cut(cutter, "\r\n\r\n\r\n" + pageRequest("/a")), pageA);
    QCOMPARE(cut(cutter, "\r"), Pieces());
    QCOMPARE(cut(cutter, "\n\r\n" + commandRequest("ONE") + "\r\n" + pageRequest("/a")),
             (Pieces{"COMMAND ONE", "GET /a "}));
    QCOMPARE(cutter.takeDropped(), 0);
}

void TestRequestCutter::floodsOfLineEndsAreSkippedFast()
{
    RequestCutter cutter;
    QElapsedTimer timer;
    timer.start();
    const QByteArray flood = QByteArrayLiteral("\r\n").repeated(1 << 20);
    QCOMPARE(cut(cutter, flood + pageRequest("/a")), pageA);
    QVERIFY2(timer.elapsed() < 5000, "takes time with the square of their number");
}

void TestRequestCutter::unknownBytesAreDroppedAndCounted_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("dropped");
    QTest::addColumn<Pieces>("pieces");
    const auto row = [](const char *name, const QByteArray &bytes, int dropped, const Pieces &pieces = {}) {
        QTest::newRow(name) << bytes << dropped << pieces;
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

void TestRequestCutter::unknownBytesAreDroppedAndCounted()
{
    QFETCH(QByteArray, bytes);
    QFETCH(int, dropped);
    QFETCH(Pieces, pieces);
    RequestCutter cutter;
    QCOMPARE(cut(cutter, bytes), pieces);
    QCOMPARE(cutter.takeDropped(), dropped);
    QCOMPARE(cutter.takeDropped(), 0);
    QVERIFY(!cutter.isIncomplete());
    QCOMPARE(cut(cutter, pageRequest("/a")), pageA);
    QCOMPARE(cutter.takeDropped(), 0);
}

void TestRequestCutter::binaryGarbageNeverBecomesACommand_data()
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

void TestRequestCutter::binaryGarbageNeverBecomesACommand()
{
    QFETCH(QByteArray, bytes);
    for (const bool single : {false, true}) {
        RequestCutter cutter;
        Pieces pieces;
        for (int i = 0; single && i < bytes.size(); ++i)
            pieces += cut(cutter, bytes.mid(i, 1));
        if (!single)
            pieces = cut(cutter, bytes);
        QCOMPARE(pieces, Pieces());
        QVERIFY(!cutter.isEnded());
        QCOMPARE(pause(cutter), Pieces());
        QVERIFY(cutter.takeDropped() > 0);
        // What it was is over: the connection stays usable.
        QCOMPARE(cut(cutter, pageRequest("/a")), pageA);
    }
}

void TestRequestCutter::encryptedConnectionsEndAtOnce()
{
    RequestCutter cutter;
    QCOMPARE(cut(cutter, pageRequest("/a") + QByteArray(1, '\x16')), (Pieces{"GET /a ", "end"}));
    QVERIFY(cutter.isEnded());
    QCOMPARE(cutter.takeDropped(), 1);
    QCOMPARE(cut(cutter, encryptedGreeting("a.localhost").mid(1) + commandRequest("ONE")), Pieces());
}

void TestRequestCutter::otherMethodsLeaveTheConnectionUsable()
{
    RequestCutter cutter;
    QCOMPARE(cut(cutter, "HEAD / HTTP/1.1\r\nHost: localhost\r\n\r\n"), Pieces{"OTHER HEAD"});
    QCOMPARE(cutter.takeDropped(), 1);
    QVERIFY(!cutter.isEnded());
    QCOMPARE(cut(cutter, pageRequest("/a")), pageA);
    // The name that it has sent counts all the same.
    QCOMPARE(cut(cutter, pageRequest("/a", "")), Pieces{"400"});

    RequestCutter old;
    QCOMPARE(cut(old, "HEAD / HTTP/1.0\r\n\r\n" + pageRequest("/a")), Pieces{"OTHER HEAD"});
    QVERIFY(old.isEnded());
}

void TestRequestCutter::bodiesThatWaitAreAskedFor()
{
    RequestCutter cutter;
    const QByteArray expect = "Host: localhost\r\nExpect: 100-continue\r\n";
    const QByteArray request = commandRequest("ONE", expect);
    QCOMPARE(cut(cutter, request.left(request.size() - 5)), Pieces());
    QCOMPARE(cut(cutter, request.mid(request.size() - 5, 2)), Pieces{"100"});
    QCOMPARE(cut(cutter, "ONE"), Pieces{"COMMAND ONE"});
    // Nothing is asked for that does not come, or is refused.
    QCOMPARE(cut(cutter, commandRequest("", expect)), Pieces{"COMMAND "});
    QCOMPARE(cut(cutter, "GET /a HTTP/1.0\r\nContent-Length: 1\r\n" + expect + "\r\nA"), pageA);
    QCOMPARE(cut(commandRequest("ONE", "Host: example.com\r\nExpect: 100-continue\r\n")), Pieces{"403"});
    QCOMPARE(cut("POST / HTTP/1.1\r\nContent-Length: 1048577\r\n" + expect + "\r\n"), Pieces{"413"});
}

void TestRequestCutter::firstLinesHaveALimit_data()
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

void TestRequestCutter::firstLinesHaveALimit()
{
    QFETCH(QByteArray, method);
    QFETCH(int, size);
    QFETCH(bool, fits);
    RequestCutter cutter;
    const Pieces pieces =
        cut(cutter, line(method, size) + "\r\nHost: localhost\r\nContent-Length: 0\r\n\r\n" + pageRequest("/b"));
    QCOMPARE(pieces.size(), fits ? 2 : 1);
    QCOMPARE(pieces.first() == "414", !fits);
    QCOMPARE(cutter.isEnded(), !fits);
}

void TestRequestCutter::endlessFirstLinesEndAtTheLimit()
{
    RequestCutter cutter;
    QCOMPARE(cut(cutter, "GET /" + QByteArray(8 * 1024 - 5, 'a')), Pieces());
    QCOMPARE(cut(cutter, "a"), Pieces{"414"});
    RequestCutter exact;
    QCOMPARE(cut(exact, line("GET", 8 * 1024) + "\r"), Pieces());
    QCOMPARE(cut(exact, "\n\r\n").size(), 1);
    QVERIFY(!exact.isEnded());
}

void TestRequestCutter::headsHaveALimit_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<QByteArray>("piece");
    constexpr int limit = 32 * 1024;
    QTest::newRow("below") << limit - 1 << QByteArrayLiteral("GET /a ");
    QTest::newRow("at") << limit << QByteArrayLiteral("GET /a ");
    QTest::newRow("above") << limit + 1 << QByteArrayLiteral("431");
}

void TestRequestCutter::headsHaveALimit()
{
    QFETCH(int, size);
    QFETCH(QByteArray, piece);
    QCOMPARE(cut(head(size) + "\r\n\r\n"), Pieces{piece});
    // A request before it takes nothing from it.
    QCOMPARE(cut(pageRequest("/b") + head(size) + "\r\n\r\n"), (Pieces{"GET /b ", piece}));
}

void TestRequestCutter::endlessHeadsEndAtTheLimit()
{
    RequestCutter cutter;
    QCOMPARE(cut(cutter, head(32 * 1024)), Pieces());
    QCOMPARE(cut(cutter, "xxxx"), Pieces{"431"});
    QVERIFY(cutter.isEnded());
}

void TestRequestCutter::announcedBodiesHaveALimit()
{
    constexpr int limit = 1024 * 1024;
    for (const int size : {limit - 1, limit}) {
        const QByteArray body(size, 'a');
        QCOMPARE(cut(commandRequest(body)), Pieces{"COMMAND " + body});
    }
    // From the announcement alone.
    QCOMPARE(cut("POST / HTTP/1.1\r\nHost: localhost\r\nContent-Length: 1048577\r\n\r\n"), Pieces{"413"});
    QCOMPARE(cut("GET /a HTTP/1.1\r\nHost: localhost\r\nContent-Length: 1048577\r\n\r\n"), Pieces{"413"});
}

void TestRequestCutter::bodiesOfRawClientsHaveALimit()
{
    constexpr int limit = 1024 * 1024;
    for (const int size : {limit - 1, limit, limit + 1}) {
        const QByteArray body(size, 'a');
        RequestCutter cutter;
        QCOMPARE(cut(cutter, rawPost + body), size <= limit ? Pieces() : Pieces{"413"});
        QCOMPARE(pause(cutter), size <= limit ? Pieces{"COMMAND " + body} : Pieces());
    }
}

void TestRequestCutter::garbageHasALimit()
{
    RequestCutter cutter;
    const QByteArray garbage(TunnelLimits::garbage, '\x01');
    QCOMPARE(cut(cutter, garbage), Pieces());
    QCOMPARE(pause(cutter), Pieces());
    QCOMPARE(cut(cutter, pageRequest("/a")), pageA);
    // Each time anew.
    QCOMPARE(cut(cutter, garbage), Pieces());
    QCOMPARE(cut(cutter, QByteArray(1, '\x01')), Pieces{"400"});
    QCOMPARE(cut(cutter, pageRequest("/a")), Pieces());

    RequestCutter reader;
    const QByteArray line = "a line of text\r\n";
    QCOMPARE(cut(reader, line.repeated(TunnelLimits::garbage / line.size())), Pieces());
    QCOMPARE(cut(reader, pageRequest("/a")), pageA);
    QCOMPARE(cut(reader, line.repeated(TunnelLimits::garbage / line.size() + 1)), Pieces{"400"});
}

void TestRequestCutter::rawClientsAreServedWhenTheyPause_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("piece");
    const auto row = [](const char *name, const QByteArray &bytes, const QByteArray &piece) {
        QTest::newRow(name) << bytes << piece;
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
    row("a body in pieces", "GET / HTTP/1.1\r\nTransfer-Encoding: chunked\r\n", "501");
}

void TestRequestCutter::rawClientsAreServedWhenTheyPause()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QByteArray, piece);
    RequestCutter cutter;
    QCOMPARE(cut(cutter, bytes), Pieces());
    QVERIFY(cutter.waitsForQuiet());
    QCOMPARE(pause(cutter), Pieces{piece});
    QVERIFY(!cutter.isIncomplete());
    QVERIFY(!cutter.waitsForQuiet());
    if (cutter.isEnded())
        return;
    QCOMPARE(cut(cutter, "GET /\r\n\r\n" + pageRequest("/a")), (Pieces{"GET / ", "GET /a "}));
}

void TestRequestCutter::halfHeadsOfBrowsersAreNeverServed_data()
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

void TestRequestCutter::halfHeadsOfBrowsersAreNeverServed()
{
    QFETCH(QByteArray, head);
    RequestCutter cutter;
    QCOMPARE(cut(cutter, head), Pieces());
    QCOMPARE(cutter.waitsForQuiet(), head.startsWith("GET"));
    QCOMPARE(pause(cutter), Pieces());
    QVERIFY(cutter.isIncomplete());
    QVERIFY(!cutter.waitsForQuiet());
    QCOMPARE(cutter.takeDropped(), 0);
}

void TestRequestCutter::commandsNeedTheirBlankLine_data()
{
    QTest::addColumn<int>("size");
    const int size = QByteArrayLiteral("POST /command HTTP/1.1\r\n").size();
    for (int cut = QByteArrayLiteral("POST ").size(); cut <= size; ++cut)
        QTest::addRow("%d", cut) << cut;
}

void TestRequestCutter::commandsNeedTheirBlankLine()
{
    QFETCH(int, size);
    // What comes below it is a stranger's, and looks like a request.
    const QByteArray foreign = "Host: localhost\r\nOrigin: http://example.com\r\n";
    const QByteArray request = commandRequest(commandRequest("SETRESET", ""), foreign);
    RequestCutter cutter;
    QCOMPARE(cut(cutter, request.left(size)), Pieces());
    QCOMPARE(pause(cutter), Pieces());
    QVERIFY(cutter.isIncomplete());
    QCOMPARE(cut(cutter, request.mid(size)), Pieces{"403"});
}

void TestRequestCutter::unfinishedRequestsGoOnAfterAPause()
{
    RequestCutter cutter;
    QCOMPARE(cut(cutter, "POST / HTTP/1.1\r\nHost: local"), Pieces());
    QCOMPARE(pause(cutter), Pieces());
    QCOMPARE(cut(cutter, "host\r\nContent-Length: 3\r"), Pieces());
    QCOMPARE(pause(cutter), Pieces());
    QCOMPARE(cut(cutter, "\n\r\nONE"), Pieces{"COMMAND ONE"});

    QCOMPARE(cut(cutter, "POST / HTTP/1.1\r\nHost: localhost\r\nOrigin: http://example"), Pieces());
    QCOMPARE(pause(cutter), Pieces());
    QCOMPARE(cut(cutter, ".com\r\n\r\n"), Pieces{"403"});
}

void TestRequestCutter::outstandingBodiesDoNotEndByAPause()
{
    RequestCutter cutter;
    QCOMPARE(cut(cutter, "POST / HTTP/1.1\r\nContent-Length: 6\r\n\r\nONE"), Pieces());
    QVERIFY(!cutter.waitsForQuiet());
    QVERIFY(cutter.isIncomplete());
    QCOMPARE(pause(cutter), Pieces());
    QCOMPARE(cut(cutter, "TWO"), Pieces{"COMMAND ONETWO"});

    QCOMPARE(cut(cutter, "POST / HTTP/1.1\r\nContent-Length: 6\r\n"), Pieces());
    QCOMPARE(pause(cutter), Pieces());
    QCOMPARE(cut(cutter, "\r\nONETWO"), Pieces{"COMMAND ONETWO"});
}

void TestRequestCutter::aPauseEndsText()
{
    for (const QByteArray &bytes : {QByteArray("hello"), QByteArray("Hello there"), QByteArray("\r")}) {
        RequestCutter cutter;
        QCOMPARE(cut(cutter, bytes), Pieces());
        QCOMPARE(pause(cutter), Pieces());
        QCOMPARE(cutter.takeDropped(), 1);
        QVERIFY(!cutter.isIncomplete());
        QCOMPARE(cut(cutter, "GET /\r\n\r\nGET /a HTTP/1.1\r\n\r\n"), (Pieces{"GET / ", "GET /a "}));
    }
}

void TestRequestCutter::aPauseEndsNoRequestOfAnotherMethod_data()
{
    QTest::addColumn<QByteArray>("request");
    for (const char *method : {"PUT", "OPTIONS", "HEAD", "POST"})
        QTest::newRow(method) << foreignRequestOf(method, "/a", "Host: evil.example\r\n");
    QTest::newRow("small letters") << foreignRequestOf("patch", "/a", "Host: evil.example\r\n");
}

void TestRequestCutter::aPauseEndsNoRequestOfAnotherMethod()
{
    QFETCH(QByteArray, request);
    // Small letters are text until the first line is there.
    const int first = request.at(0) >= 'a' ? request.indexOf("\r\n") : 1;
    for (int size = first; size < request.indexOf("\r\n\r\n") + 4; ++size) {
        RequestCutter cutter;
        QCOMPARE(cut(cutter, request.left(size)), Pieces());
        QVERIFY(!cutter.waitsForQuiet());
        QVERIFY(cutter.isIncomplete());
        QCOMPARE(pause(cutter), Pieces());
        QCOMPARE(cut(cutter, request.mid(size)), Pieces{"403"});
    }
}

void TestRequestCutter::theRestOfAPageThatAPauseHasCutIsRefused_data()
{
    QTest::addColumn<QByteArray>("rest");
    const QByteArray body = "\r\n\r\n" + commandRequest("SETDEFAULT ALL", "");
    QTest::newRow("the target") << "bc HTTP/1.1\r\nHost: evil.example" + body;
    QTest::newRow("the version") << " HTTP/1.1\r\nHost: evil.example" + body;
    QTest::newRow("headers") << "\r\nHost: evil.example" + body;
    QTest::newRow("binary") << "\x01" + body;
}

void TestRequestCutter::theRestOfAPageThatAPauseHasCutIsRefused()
{
    QFETCH(QByteArray, rest);
    RequestCutter cutter;
    QCOMPARE(cut(cutter, "GET /a"), Pieces());
    QCOMPARE(pause(cutter), pageA);
    QCOMPARE(cut(cutter, rest), Pieces{"400"});
    // What is a request of its own goes on.
    RequestCutter raw;
    QCOMPARE(cut(raw, "GET /a"), Pieces());
    QCOMPARE(pause(raw), pageA);
    QCOMPARE(cut(raw, "\r\nGET /a\r\n\r\nhello\r\n" + pageRequest("/a")), pageA + pageA);
}

void TestRequestCutter::theEndOfTheInputEndsLikeAPause_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<Pieces>("pieces");
    QTest::newRow("nothing") << QByteArray() << Pieces();
    QTest::newRow("a raw page") << QByteArray("GET /a") << pageA;
    QTest::newRow("a raw command") << QByteArray(rawPost + "ONE\n") << Pieces{"COMMAND ONE"};
    QTest::newRow("half a head") << QByteArray("GET /a HTTP/1.1\r\nHost: localhost\r\n") << Pieces();
    QTest::newRow("half a body") << QByteArray("POST / HTTP/1.1\r\nContent-Length: 4\r\n\r\nONE") << Pieces();
    QTest::newRow("another method") << QByteArray("PUT / HTTP/1.1\r\n") << Pieces();
    QTest::newRow("text") << QByteArray("hello") << Pieces();
}

void TestRequestCutter::theEndOfTheInputEndsLikeAPause()
{
    QFETCH(QByteArray, bytes);
    QFETCH(Pieces, pieces);
    for (const bool paused : {false, true}) {
        RequestCutter cutter;
        Pieces seen = cut(cutter, bytes);
        if (paused)
            seen += pause(cutter);
        RequestCutter::Piece piece;
        if (cutter.endInput(piece))
            seen += describe(piece);
        QCOMPARE(seen, pieces);
        QVERIFY(cutter.isEnded());
        QVERIFY(!cutter.endInput(piece));
        QCOMPARE(cut(cutter, pageRequest("/b")), Pieces());
    }
}

void TestRequestCutter::pausesEndOnlyWhatHasBegun()
{
    RequestCutter cutter;
    QVERIFY(!cutter.waitsForQuiet());
    QCOMPARE(pause(cutter), Pieces());
    QCOMPARE(cut(cutter, pageRequest("/a")), pageA);
    QVERIFY(!cutter.waitsForQuiet());
    QCOMPARE(pause(cutter), Pieces());
    QCOMPARE(cutter.takeDropped(), 0);
}

void TestRequestCutter::nothingIsParsedAfterARefusal_data()
{
    QTest::addColumn<QByteArray>("refused");
    const QList<RequestSequence> sequences = refusedSequences();
    for (const RequestSequence &sequence : sequences)
        QTest::newRow(sequence.name.constData()) << sequence.bytes;
}

void TestRequestCutter::nothingIsParsedAfterARefusal()
{
    QFETCH(QByteArray, refused);
    RequestCutter cutter;
    QVERIFY(cut(cutter, refused).last().toInt() >= 400);
    QVERIFY(cutter.isEnded());
    QCOMPARE(cut(cutter, commandRequest("ONE") + pageRequest("/a")), Pieces());
    QCOMPARE(cut(cutter, "GET /a"), Pieces());
    QVERIFY(!cutter.waitsForQuiet());
    QVERIFY(!cutter.isIncomplete());
    QCOMPARE(pause(cutter), Pieces());
}

void TestRequestCutter::nothingIsParsedAfterTheLastRequest()
{
    RequestCutter cutter;
    const QByteArray last = commandRequest("ONE", "Host: localhost\r\nConnection: close\r\n");
    cutter.append(last + pageRequest("/a"));
    RequestCutter::Piece piece;
    QVERIFY(cutter.next(piece));
    QVERIFY(piece.closes);
    QCOMPARE(describe(piece), QByteArrayLiteral("COMMAND ONE"));
    QVERIFY(cutter.isEnded());
    QCOMPARE(cut(cutter, pageRequest("/b")), Pieces());
}

void TestRequestCutter::anyRefusalEndsTheConnection()
{
    RequestCutter cutter;
    QCOMPARE(cut(cutter, "GET /a"), Pieces());
    QCOMPARE(describe(cutter.refuse(408)), QByteArrayLiteral("408"));
    QVERIFY(cutter.isEnded());
    QCOMPARE(cut(cutter, "\r\n\r\n" + pageRequest("/b")), Pieces());
}

QTEST_APPLESS_MAIN(TestRequestCutter)
#include "tst_requestcutter.moc"
