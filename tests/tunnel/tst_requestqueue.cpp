// SPDX-License-Identifier: MIT
#include "queuebench.h"

#include <QtTest>

using namespace SondixQt;

class TestRequestQueue : public QObject, private QueueBench
{
    Q_OBJECT
private Q_SLOTS:
    void init() { begin(); }
    void requestsCarryWhatTheClientAskedFor();
    void aConnectionIsServedAndAnsweredInItsOrder();
    void connectionsAreServedByTurns();
    void anOutstandingAnswerHoldsUpItsOwnConnectionOnly();
    void sixteenRequestsMayWait();
    void longCommandsDoNotGather();
    void aRefusalComesAfterTheAnswersBefore();
    void aRefusalComesAtOnceWhenNothingIsBefore();
    void clientsThatFetchNothingWait();
    void answersOfGoneClientsAreDropped();
    void goneClientsLeaveNothingToTheNextAtTheirPlace();
    void resetForgetsEverything();
    void unwelcomeClientsAreToldSo();
    void connectionsEndWithTheirLastAnswer_data();
    void connectionsEndWithTheirLastAnswer();
    void answersGoOutOnce();
    void strangersHaveNoEffect();
    void droppedBytesAreCounted();
    void otherMethodsAreAnsweredInTheirOrder();
    void bodiesAreAskedForWhenEverythingBeforeIsAnswered();
    void commandsOfClientsThatLeftAreCarriedOut();
    void refusedCommandsOfClientsThatLeftAreNot();
    void clientsThatSendNothingMoreAreAnswered_data();
    void clientsThatSendNothingMoreAreAnswered();
    void encryptedConnectionsEndAtOnce();
};

void TestRequestQueue::requestsCarryWhatTheClientAskedFor()
{
    queue->feed(first, pageRequest("/a?b", "If-None-Match: \"1\"\r\n"), 0);
    const RequestQueue::Request page = take();
    QCOMPARE(page.client, first);
    QCOMPARE(int(page.kind), int(ParsedRequest::Get));
    QCOMPARE(page.path, QByteArrayLiteral("/a"));
    QCOMPARE(page.entityTag, QByteArrayLiteral("1"));
    serve(page);

    queue->feed(second, commandRequest("IMPORT all\nA 1"), 0);
    const RequestQueue::Request import = take();
    QCOMPARE(import.client, second);
    QCOMPARE(int(import.kind), 1);
    QCOMPARE(import.text, QByteArrayLiteral("A 1"));
    QVERIFY(import.number != page.number);

    queue->feed(third, commandRequest("ONE\r\n"), 0);
    const RequestQueue::Request command = take();
    QCOMPARE(int(command.kind), 2);
    QCOMPARE(command.text, QByteArrayLiteral("ONE"));
    QCOMPARE(command.path, QByteArrayLiteral("/command"));
}

void TestRequestQueue::aConnectionIsServedAndAnsweredInItsOrder()
{
    queue->feed(first, pageRequest("/a") + commandRequest("ONE") + pageRequest("/b") + commandRequest("IMPORT\n"),
                0);
    for (const QByteArray &expected :
         {QByteArray("GET /a "), QByteArray("COMMAND ONE"), QByteArray("GET /b "), QByteArray("COMMAND IMPORT")}) {
        const RequestQueue::Request request = take();
        QCOMPARE(describeRequest(request), expected);
        QVERIFY(!queue->hasRequest());
        QCOMPARE(response().client, Client());
        serve(request);
        const RequestQueue::Response answer = response();
        QCOMPARE(answer.client, first);
        QVERIFY(answer.bytes.endsWith("\r\n\r\n" + expected));
        QVERIFY(answer.action == RequestQueue::ConnectionAction::KeepAlive);
    }
    QVERIFY(!queue->hasRequest());
}

void TestRequestQueue::connectionsAreServedByTurns()
{
    queue->feed(first, pageRequests(0, 10), 0);
    queue->feed(second, pageRequests(0, 10), 0);
    queue->feed(third, pageRequests(0, 2), 0);
    for (int turn = 0; turn < 10; ++turn) {
        QSet<Client> served;
        for (int i = 0; i < (turn < 2 ? 3 : 2); ++i) {
            const RequestQueue::Request request = take();
            QCOMPARE(request.path, "/" + QByteArray::number(turn));
            served.insert(request.client);
            serve(request);
        }
        QCOMPARE(served.size(), turn < 2 ? 3 : 2);
    }
    QVERIFY(!queue->hasRequest());
}

void TestRequestQueue::anOutstandingAnswerHoldsUpItsOwnConnectionOnly()
{
    queue->feed(first, pageRequests(0, 2), 0);
    const RequestQueue::Request outstanding = take();
    QVERIFY(!queue->hasRequest());
    queue->feed(second, pageRequests(10, 2), 0);
    QCOMPARE(serveAll(), (Texts{"GET /10 ", "GET /11 "}));
    serve(outstanding);
    QCOMPARE(serveAll(), Texts{"GET /1 "});
}

void TestRequestQueue::sixteenRequestsMayWait()
{
    queue->feed(first, pageRequests(0, 15), 0);
    QVERIFY(queue->wantsBytes(first));
    queue->feed(first, pageRequests(15, 1), 0);
    QVERIFY(!queue->wantsBytes(first));
    QVERIFY(queue->wantsBytes(second));
    const RequestQueue::Request request = take();
    QVERIFY(queue->wantsBytes(first));
    // The request that is being served does not count as waiting.
    queue->feed(first, pageRequests(16, 1), 0);
    QVERIFY(!queue->wantsBytes(first));
    serve(request);
    QCOMPARE(serveAll().size(), 16);
    QVERIFY(queue->wantsBytes(first));
}

void TestRequestQueue::longCommandsDoNotGather()
{
    const QByteArray text(600 * 1024, 'a');
    queue->feed(first, commandRequest(text), 0);
    QVERIFY(queue->wantsBytes(first));
    queue->feed(first, commandRequest(text) + commandRequest("ONE"), 0);
    QVERIFY(!queue->wantsBytes(first));
    const RequestQueue::Request request = take();
    QVERIFY(queue->wantsBytes(first));
    serve(request);
    QCOMPARE(serveAll(), (Texts{"COMMAND " + text, "COMMAND ONE"}));
}

void TestRequestQueue::aRefusalComesAfterTheAnswersBefore()
{
    queue->feed(first, pageRequests(0, 2) + foreignRequest + pageRequests(2, 1), 0);
    QCOMPARE(response().client, Client());
    const RequestQueue::Request zero = take();
    QCOMPARE(response().client, Client());
    serve(zero);
    QVERIFY(response().bytes.startsWith("HTTP/1.1 200 "));
    QCOMPARE(response().client, Client());
    serve(take());
    QVERIFY(response().bytes.startsWith("HTTP/1.1 200 "));
    const RequestQueue::Response refusal = response();
    QCOMPARE(refusal.client, first);
    QVERIFY(refusal.bytes.startsWith("HTTP/1.1 403 "));
    QVERIFY(refusal.action == RequestQueue::ConnectionAction::CloseDiscarding);
    queue->feed(first, pageRequests(3, 1), 0);
    QVERIFY(!queue->hasRequest());
    QCOMPARE(response().client, Client());
    // Further bytes of the client must be read and discarded.
    QVERIFY(queue->wantsBytes(first));
}

void TestRequestQueue::aRefusalComesAtOnceWhenNothingIsBefore()
{
    queue->feed(first, foreignRequest + pageRequests(0, 1), 0);
    QVERIFY(response().bytes.startsWith("HTTP/1.1 403 "));
    QCOMPARE(response().client, Client());
    QVERIFY(!queue->hasRequest());
    queue->feed(second, pageRequests(0, 1), 0);
    QCOMPARE(serveAll(), Texts{"GET /0 "});
}

void TestRequestQueue::clientsThatFetchNothingWait()
{
    queue->removeClient(third);
    queue->feed(first, pageRequests(0, 2), 0);
    queue->feed(second, pageRequests(10, 1), 0);
    queue->setReading(first, false, 100);
    QCOMPARE(serveAll(100), Texts{"GET /10 "});
    QCOMPARE(queue->nextDeadline(), 100 + idle);
    queue->setReading(first, true, 200);
    QCOMPARE(serveAll(200), (Texts{"GET /0 ", "GET /1 "}));
}

void TestRequestQueue::answersOfGoneClientsAreDropped()
{
    queue->feed(first, pageRequests(0, 2), 0);
    const RequestQueue::Request request = take();
    queue->removeClient(first);
    serve(request);
    QCOMPARE(response().client, Client());
    QVERIFY(!queue->hasRequest());
    QVERIFY(!queue->wantsBytes(first));

    queue->feed(second, pageRequests(0, 1), 0);
    queue->feed(third, pageRequests(0, 1), 0);
    serveAll();
    queue->removeClient(second);
    QCOMPARE(response().client, third);
    QCOMPARE(response().client, Client());
}

void TestRequestQueue::goneClientsLeaveNothingToTheNextAtTheirPlace()
{
    queue->feed(first, pageRequests(0, 1) + halfBody, 0);
    const RequestQueue::Request request = take();
    queue->removeClient(first);
    queue->addClient(first, 0);
    serve(request);
    QCOMPARE(response().client, Client());
    // The new client inherits neither the unfinished body nor the Host header.
    queue->feed(first, pageRequest("/b", ""), 0);
    const RequestQueue::Request next = take();
    QCOMPARE(next.path, QByteArrayLiteral("/b"));
    serve(request);
    QCOMPARE(response().client, Client());
    serve(next);
    QVERIFY(response().bytes.endsWith("GET /b "));
}

void TestRequestQueue::resetForgetsEverything()
{
    queue->feed(first, pageRequests(0, 2), 0);
    queue->feed(second, foreignRequest, 0);
    queue->feed(third, "hello\r\n", 0);
    const RequestQueue::Request request = take();
    queue->reset();
    QCOMPARE(queue->takeDropped(), 0);
    QCOMPARE(queue->nextDeadline(), never);
    QVERIFY(!queue->hasRequest());
    QCOMPARE(response().client, Client());
    queue->addClient(first, 0);
    queue->feed(first, pageRequests(5, 1), 0);
    const RequestQueue::Request next = take();
    serve(request);
    QCOMPARE(response().client, Client());
    serve(next);
    QVERIFY(response().bytes.endsWith("GET /5 "));
}

void TestRequestQueue::unwelcomeClientsAreToldSo()
{
    queue->addClient(stranger, 0, false);
    const RequestQueue::Response refusal = response();
    QCOMPARE(refusal.client, stranger);
    QVERIFY(refusal.bytes.startsWith("HTTP/1.1 503 "));
    QVERIFY(refusal.action == RequestQueue::ConnectionAction::CloseDiscarding);
    queue->feed(stranger, pageRequests(0, 1), 0);
    QVERIFY(!queue->hasRequest());
    queue->expire(2 * idle);
    for (int i = 0; i < 3; ++i)
        QVERIFY(response().client != stranger);
    QCOMPARE(response().client, Client());
}

void TestRequestQueue::connectionsEndWithTheirLastAnswer_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("how");
    QTest::addColumn<bool>("ends");
    const QByteArray page = pageRequests(0, 1);
    const QByteArray last = pageRequest("/0", "Host: localhost\r\nConnection: close\r\n");
    const auto row = [](const char *name, const QByteArray &bytes, const char *how, bool ends) {
        QTest::newRow(name) << bytes << QByteArray(how) << ends;
    };
    row("an answer", page, "answer", false);
    row("an answer of unknown length", page, "open", true);
    row("an answer without a header", page, "plain", false);
    row("not modified", page, "304", false);
    row("a failure", page, "fail", false);
    row("a failure of the link", page, "fail and close", true);
    row("the client's last request", last, "answer", true);
    row("the client's last request fails", last, "fail", true);
    row("an old client", "GET /0 HTTP/1.0\r\n\r\n", "answer", true);
    row("a command", commandRequest("ONE"), "command", false);
    row("the client's last command", commandRequest("ONE", "Host: localhost\r\nConnection: close\r\n"), "command",
        true);
}

void TestRequestQueue::connectionsEndWithTheirLastAnswer()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QByteArray, how);
    QFETCH(bool, ends);
    queue->feed(first, bytes + pageRequests(1, 1), 0);
    const RequestQueue::Request request = take();
    if (how == "answer")
        queue->answer(request, "HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\n", "hello", 0);
    else if (how == "open")
        queue->answer(request, "HTTP/1.1 200 OK\r\n\r\n", "hello", 0);
    else if (how == "plain")
        queue->answer(request, QByteArray(), "hello", 0);
    else if (how == "304")
        queue->answer(request, "HTTP/1.1 304 Not Modified", QByteArray(), 0);
    else if (how == "command")
        queue->answerCommand(request, "done", 0);
    else
        queue->fail(request, "No answer", how == "fail and close", 0);
    const RequestQueue::Response answer = response();
    QVERIFY(!answer.bytes.isEmpty());
    QVERIFY(answer.action ==
            (ends ? RequestQueue::ConnectionAction::Close : RequestQueue::ConnectionAction::KeepAlive));
    QCOMPARE(response().client, Client());
    queue->feed(first, pageRequests(2, 1), 0);
    QCOMPARE(serveAll(), ends ? Texts() : (Texts{"GET /1 ", "GET /2 "}));
}

void TestRequestQueue::answersGoOutOnce()
{
    queue->feed(first, pageRequests(0, 2), 0);
    const RequestQueue::Request request = take();
    serve(request);
    serve(request);
    queue->fail(request, "late", true, 0);
    QCOMPARE(response().client, first);
    QCOMPARE(response().client, Client());
    QCOMPARE(serveAll(), Texts{"GET /1 "});
}

void TestRequestQueue::strangersHaveNoEffect()
{
    QVERIFY(!queue->wantsBytes(stranger));
    queue->feed(stranger, pageRequests(0, 1), 0);
    queue->setReading(stranger, false, 0);
    queue->removeClient(stranger);
    QVERIFY(!queue->hasRequest());
    QCOMPARE(response().client, Client());
}

void TestRequestQueue::droppedBytesAreCounted()
{
    queue->feed(first, "hello\r\nthere\r\n" + pageRequests(0, 1), 0);
    queue->feed(second, "PUT / HTTP/1.1\r\n\r\n", 0);
    queue->feed(third, "\x01\x02", 0);
    QCOMPARE(queue->takeDropped(), 4);
    QCOMPARE(queue->takeDropped(), 0);
    queue->feed(second, "half", 0);
    queue->expire(quiet);
    QCOMPARE(queue->takeDropped(), 1);
    QCOMPARE(serveAll().size(), 2);
}

void TestRequestQueue::otherMethodsAreAnsweredInTheirOrder()
{
    queue->feed(first,
                pageRequests(0, 1) + "PUT / HTTP/1.1\r\nHost: localhost\r\nContent-Length: 3\r\n\r\nGET" +
                    "HEAD / HTTP/1.1\r\nHost: localhost\r\n\r\n" + pageRequests(1, 1),
                0);
    serve(take());
    for (int i = 0; i < 2; ++i) {
        const RequestQueue::Request request = take();
        QCOMPARE(request.method, QByteArray(i == 0 ? "PUT" : "HEAD"));
        queue->answerOtherMethod(request, 0);
    }
    QVERIFY(response().bytes.startsWith("HTTP/1.1 200 "));
    const QByteArray put = response().bytes;
    QVERIFY(put.startsWith("HTTP/1.1 501 "));
    QVERIFY(put.contains("Unknown HTTP request"));
    const RequestQueue::Response head = response();
    QVERIFY(head.bytes.startsWith("HTTP/1.1 501 "));
    QVERIFY(head.bytes.endsWith("\r\n\r\n"));
    QVERIFY(head.action == RequestQueue::ConnectionAction::KeepAlive);
    QCOMPARE(serveAll(), Texts{"GET /1 "});
}

void TestRequestQueue::bodiesAreAskedForWhenEverythingBeforeIsAnswered()
{
    const QByteArray command = commandRequest("ONE", "Host: localhost\r\nExpect: 100-continue\r\n");
    queue->feed(first, pageRequests(0, 1) + command.chopped(3), 0);
    const RequestQueue::Request page = take();
    QCOMPARE(response().client, Client());
    serve(page);
    QVERIFY(response().bytes.startsWith("HTTP/1.1 200 "));
    const RequestQueue::Response goAhead = response();
    QCOMPARE(goAhead.bytes, QByteArray("HTTP/1.1 100 Continue\r\n\r\n"));
    QVERIFY(goAhead.action == RequestQueue::ConnectionAction::KeepAlive);
    queue->feed(first, "ONE", 0);
    QCOMPARE(serveAll(), Texts{"COMMAND ONE"});
}

void TestRequestQueue::commandsOfClientsThatLeftAreCarriedOut()
{
    QByteArray commands;
    Texts expected;
    for (int i = 0; i < 40; ++i) {
        commands += commandRequest(QByteArray::number(i)) + pageRequests(i, 1);
        expected += "COMMAND " + QByteArray::number(i);
    }
    queue->feed(first, commands + halfBody, 0);
    const RequestQueue::Request serving = take();
    queue->removeClient(first);
    queue->addClient(first, 0);
    serve(serving);
    queue->feed(first, pageRequests(99, 1), 0);
    // They are served before the new client's requests, and their answers are discarded.
    QCOMPARE(describeRequest(serving), expected.takeFirst());
    for (const QByteArray &command : qAsConst(expected)) {
        const RequestQueue::Request request = take();
        QCOMPARE(describeRequest(request), command);
        QCOMPARE(request.client, Client());
        serve(request);
        QCOMPARE(response().client, Client());
    }
    QCOMPARE(serveAll(), Texts{"GET /99 "});
}

void TestRequestQueue::refusedCommandsOfClientsThatLeftAreNot()
{
    queue->feed(first,
                commandRequest("ONE") + commandRequest("TWO", "Host: example.com\r\n") + commandRequest("THREE"),
                0);
    queue->removeClient(first);
    QCOMPARE(serveAll(), Texts{"COMMAND ONE"});
}

void TestRequestQueue::clientsThatSendNothingMoreAreAnswered_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<Texts>("requests");
    QTest::newRow("nothing") << QByteArray() << Texts();
    QTest::newRow("a page and a command")
        << pageRequests(0, 1) + commandRequest("ONE") << Texts{"GET /0 ", "COMMAND ONE"};
    QTest::newRow("a raw page") << QByteArray("GET /a") << Texts{"GET /a "};
    QTest::newRow("a raw command") << QByteArray("POST /\r\n\r\nONE") << Texts{"COMMAND ONE"};
    QTest::newRow("a page and half a command") << pageRequests(0, 1) + halfBody << Texts{"GET /0 "};
    Texts many;
    for (int i = 0; i < 20; ++i)
        many += "GET /" + QByteArray::number(i) + ' ';
    QTest::newRow("more than may wait") << pageRequests(0, 20) << many;
    QTest::newRow("more than may wait, and a raw page")
        << pageRequests(0, 20, "") + "GET /a" << many + Texts{"GET /a "};
}

void TestRequestQueue::clientsThatSendNothingMoreAreAnswered()
{
    QFETCH(QByteArray, bytes);
    QFETCH(Texts, requests);
    queue->feed(first, bytes, 0);
    queue->endInput(first, 0);
    QCOMPARE(serveAll(), requests);
    for (int i = 0; i < requests.size(); ++i) {
        const RequestQueue::Response answer = response();
        QVERIFY(answer.bytes.startsWith("HTTP/1.1 200 "));
        QVERIFY(answer.action == RequestQueue::ConnectionAction::KeepAlive);
    }
    const RequestQueue::Response end = response();
    QCOMPARE(end.client, first);
    QCOMPARE(end.bytes, QByteArray());
    QVERIFY(end.action == RequestQueue::ConnectionAction::Close);
    queue->endInput(first, 0);
    queue->feed(first, pageRequests(1, 1), 0);
    QVERIFY(!queue->hasRequest());
    QCOMPARE(response().client, Client());
}

void TestRequestQueue::encryptedConnectionsEndAtOnce()
{
    queue->feed(first, pageRequests(0, 1) + encryptedGreeting("localhost"), 0);
    QCOMPARE(response().client, Client());
    QCOMPARE(serveAll(), Texts{"GET /0 "});
    QVERIFY(response().bytes.startsWith("HTTP/1.1 200 "));
    const RequestQueue::Response end = response();
    QCOMPARE(end.bytes, QByteArray());
    QVERIFY(end.action == RequestQueue::ConnectionAction::Abort);
}

QTEST_APPLESS_MAIN(TestRequestQueue)
#include "tst_requestqueue.moc"
