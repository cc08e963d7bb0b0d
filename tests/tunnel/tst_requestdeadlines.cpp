// SPDX-License-Identifier: MIT
#include "queuebench.h"

#include <QtTest>

using namespace SondixQt;

namespace {

const QByteArray halfHead = QByteArrayLiteral("GET /a HTTP/1.1\r\nHost: localhost\r\n");

} // namespace

class TestRequestDeadlines : public QObject, private QueueBench
{
    Q_OBJECT
private Q_SLOTS:
    void init() { begin(); }
    void deadlinesFollowWhatIsOutstanding_data();
    void deadlinesFollowWhatIsOutstanding();
    void nothingHappensBeforeADeadline();
    void pausesServeRawClients();
    void unfinishedHeadsTimeOut();
    void unfinishedBodiesTimeOut();
    void eachByteGrantsPatienceAnew();
    void theTimeOutComesAfterTheAnswersBefore();
    void idleConnectionsEnd();
    void answersGrantIdleTimeAnew();
    void connectionsThatWaitForTheSensorDoNotEnd();
    void theNearestDeadlineCounts();
    void clientsThatNeverFetchEnd();
    void bytesBehindWaitingRequestsAreNoUnfinishedRequest();
};

void TestRequestDeadlines::deadlinesFollowWhatIsOutstanding_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<qint64>("afterBytes");
    QTest::addColumn<qint64>("afterPause");
    const auto row = [](const char *name, const QByteArray &bytes, qint64 afterBytes, qint64 afterPause) {
        QTest::newRow(name) << bytes << afterBytes << afterPause;
    };
    row("nothing", "", idle, idle);
    row("raw page", "GET /a", quiet, never);
    row("raw command", "POST / HTTP/1.1\r\n\r\nONE", quiet, never);
    row("half a head of a browser", halfHead, quiet, 5000);
    row("half a head of another method", "PUT /a HTTP/1.1\r\n", 5000, 5000);
    row("half a line of another method", "PUT /a", 5000, 5000);
    row("half a method", "PU", 5000, 5000);
    row("half a command", "POST /a", 5000, 5000);
    row("half a body", halfBody, 5000, 5000);
    row("half a line of text", "hello", quiet, idle);
    row("text", "hello\r\n", idle, idle);
    row("binary", "\x01", quiet, idle);
    row("a page", pageRequests(0, 1), never, never);
    row("a page and half a head", pageRequests(0, 1) + halfHead, quiet, 5000);
    row("fifteen pages and half a head", pageRequests(0, 15) + halfHead, quiet, 5000);
    row("sixteen pages and half a head", pageRequests(0, 16) + halfHead, never, never);
    row("a refusal", foreignRequest + halfHead, never, never);
    row("a page and a refusal", pageRequests(0, 1) + foreignRequest, never, never);
}

void TestRequestDeadlines::deadlinesFollowWhatIsOutstanding()
{
    QFETCH(QByteArray, bytes);
    QFETCH(qint64, afterBytes);
    QFETCH(qint64, afterPause);
    RequestQueue alone(5);
    QCOMPARE(alone.nextDeadline(), never);
    alone.addClient(first, 1000);
    alone.feed(first, bytes, 1000);
    QCOMPARE(alone.nextDeadline(), afterBytes == never ? never : 1000 + afterBytes);
    alone.expire(1000 + quiet);
    QCOMPARE(alone.nextDeadline(), afterPause == never ? never : 1000 + afterPause);
}

void TestRequestDeadlines::nothingHappensBeforeADeadline()
{
    queue->feed(first, "GET /a", 0);
    queue->expire(quiet - 1);
    QVERIFY(!queue->hasRequest());
    queue->expire(quiet);
    QCOMPARE(serveAll(quiet), Texts{"GET /a "});

    queue->feed(second, halfBody, 1000);
    queue->expire(5999);
    queue->takeDropped();
    QCOMPARE(response().client, first);
    QCOMPARE(response().client, Client());
    queue->expire(6000);
    QCOMPARE(response().client, second);
}

void TestRequestDeadlines::pausesServeRawClients()
{
    queue->feed(first, "POST / HTTP/1.1\r\n\r\nON", 0);
    queue->feed(first, "E\r\n", 200);
    queue->expire(quiet);
    QVERIFY(!queue->hasRequest());
    queue->expire(200 + quiet);
    QCOMPARE(serveAll(), Texts{"COMMAND ONE"});
    queue->feed(first, "GET /a\r\n", 1000);
    queue->expire(1000 + quiet);
    QCOMPARE(serveAll(), Texts{"GET /a "});
}

void TestRequestDeadlines::unfinishedHeadsTimeOut()
{
    queue->feed(first, halfHead, 0);
    for (const qint64 now : {quiet, qint64(4999)}) {
        queue->expire(now);
        QVERIFY(!queue->hasRequest());
        QCOMPARE(response().client, Client());
    }
    queue->expire(5000);
    const RequestQueue::Response refusal = response();
    QCOMPARE(refusal.client, first);
    QVERIFY(refusal.bytes.startsWith("HTTP/1.1 408 "));
    QVERIFY(refusal.action == RequestQueue::ConnectionAction::CloseDiscarding);
    queue->feed(first, "\r\n" + pageRequests(0, 1), 5001);
    QVERIFY(!queue->hasRequest());
}

void TestRequestDeadlines::unfinishedBodiesTimeOut()
{
    RequestQueue impatient(2);
    impatient.addClient(first, 0);
    impatient.feed(first, halfBody, 100);
    QCOMPARE(impatient.nextDeadline(), qint64(2100));
    impatient.expire(2099);
    RequestQueue::Response refusal;
    QVERIFY(!impatient.takeResponse(refusal));
    impatient.expire(2100);
    QVERIFY(impatient.takeResponse(refusal));
    QVERIFY(refusal.bytes.startsWith("HTTP/1.1 408 "));
    QVERIFY(!impatient.hasRequest());
}

void TestRequestDeadlines::eachByteGrantsPatienceAnew()
{
    queue->feed(first, halfBody, 0);
    for (qint64 now = 4000; now <= 20000; now += 4000) {
        queue->expire(now);
        queue->feed(first, "T", now);
    }
    QCOMPARE(response().client, Client());
    queue->feed(first, "W", 24000);
    QCOMPARE(serveAll(24000), Texts{"COMMAND ONETTTTTW"});
}

void TestRequestDeadlines::theTimeOutComesAfterTheAnswersBefore()
{
    queue->feed(first, pageRequests(0, 1) + halfBody, 0);
    const RequestQueue::Request request = take();
    queue->expire(5000);
    QCOMPARE(response().client, Client());
    serve(request, 6000);
    QVERIFY(response().bytes.startsWith("HTTP/1.1 200 "));
    QVERIFY(response().bytes.startsWith("HTTP/1.1 408 "));
}

void TestRequestDeadlines::idleConnectionsEnd()
{
    queue->feed(second, pageRequests(0, 1), 1);
    queue->removeClient(third);
    queue->expire(idle);
    const RequestQueue::Response end = response();
    QCOMPARE(end.client, first);
    QCOMPARE(end.bytes, QByteArray());
    QVERIFY(end.action == RequestQueue::ConnectionAction::Abort);
    QCOMPARE(response().client, Client());
    queue->expire(2 * idle);
    QCOMPARE(response().client, Client());
    QCOMPARE(queue->nextDeadline(), never);
    queue->feed(first, pageRequests(0, 1), 2 * idle);
    QCOMPARE(take().client, second);
    QVERIFY(!queue->hasRequest());
}

void TestRequestDeadlines::answersGrantIdleTimeAnew()
{
    queue->removeClient(second);
    queue->removeClient(third);
    queue->feed(first, pageRequests(0, 1), 1000);
    const RequestQueue::Request request = take();
    serve(request, 8000);
    QCOMPARE(queue->nextDeadline(), 8000 + idle);
}

void TestRequestDeadlines::connectionsThatWaitForTheSensorDoNotEnd()
{
    queue->feed(first, pageRequests(0, 2), 0);
    queue->feed(second, pageRequests(0, 1), 0);
    queue->feed(third, pageRequests(0, 1), 0);
    const RequestQueue::Request request = take();
    queue->expire(10 * idle);
    QCOMPARE(response().client, Client());
    serve(request, 10 * idle);
    QCOMPARE(serveAll(10 * idle).size(), 3);
}

void TestRequestDeadlines::theNearestDeadlineCounts()
{
    queue->feed(first, halfBody, 100);
    QCOMPARE(queue->nextDeadline(), qint64(5100));
    queue->feed(second, "GET /a", 4900);
    QCOMPARE(queue->nextDeadline(), qint64(5100));
    queue->feed(third, "GET /a", 4700);
    QCOMPARE(queue->nextDeadline(), qint64(5000));
    queue->expire(5200);
    QVERIFY(response().bytes.startsWith("HTTP/1.1 408 "));
    QCOMPARE(serveAll(5200).size(), 2);
}

void TestRequestDeadlines::clientsThatNeverFetchEnd()
{
    queue->feed(first, pageRequests(0, 20), 0);
    queue->setReading(first, false, 100);
    queue->removeClient(second);
    queue->removeClient(third);
    // The time limit starts again whenever the client has read something.
    queue->setReading(first, false, 50000);
    queue->expire(100 + idle);
    QCOMPARE(response().client, Client());
    queue->expire(50000 + idle);
    const RequestQueue::Response end = response();
    QCOMPARE(end.client, first);
    QCOMPARE(end.bytes, QByteArray());
    QVERIFY(end.action == RequestQueue::ConnectionAction::Abort);
    QVERIFY(!queue->hasRequest());
    queue->setReading(first, true, 50000 + idle);
    QVERIFY(!queue->hasRequest());
    QCOMPARE(queue->nextDeadline(), never);
}

void TestRequestDeadlines::bytesBehindWaitingRequestsAreNoUnfinishedRequest()
{
    queue->feed(first, pageRequests(0, 20, "Accept: a\r\n"), 0);
    QVERIFY(!queue->wantsBytes(first));
    QVERIFY(queue->nextDeadline() == idle); // of the other clients
    for (int i = 0; i < 20; ++i) {
        const RequestQueue::Request request = take();
        QCOMPARE(request.path, "/" + QByteArray::number(i));
        queue->expire(quiet * (i + 1));
        QCOMPARE(response().client, Client());
        serve(request, quiet * (i + 1));
        QVERIFY(response().bytes.startsWith("HTTP/1.1 200 "));
    }
}

QTEST_APPLESS_MAIN(TestRequestDeadlines)
#include "tst_requestdeadlines.moc"
