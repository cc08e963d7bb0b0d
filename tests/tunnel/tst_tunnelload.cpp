// SPDX-License-Identifier: MIT
#include <SondixQt/RS232Tunnel>

#include "tunnelbench.h"
#include "tunnelclient.h"

#include <memory>
#include <vector>

using namespace SondixQt;

/// Excessive load: the tunnel keeps its limits and still serves the next normal request.
class TunnelLoadTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();

    void aFewConnectionsAreServedAndTheOthersToldSo();
    void placesOfClientsThatLeftAreFree();
    void idleConnectionsHoldNobodyUp();
    void halfRequestsHoldNobodyUp();
    void endlessHeadsAreRefused();
    void endlessGarbageEndsTheConnection();
    void aClientThatNeverReadsStopsTheWorkForIt();
    void largeBodiesArriveWhole();
    void aVanishedSensorIsReportedAndComesBack();

private:
    void verifyHonestRequestIsServed();

    std::unique_ptr<SensorInstance> sensor;
    std::unique_ptr<RS232Tunnel> tunnel;
    std::unique_ptr<CallRecorder> recorder;
    QUrl url;
};

void TunnelLoadTest::init()
{
    loadTestBench();
    scriptPage();
    sensor = std::make_unique<SensorInstance>(TX270);
    sensor->storeInterfaceParameters(testBenchParameters(TX270));
    tunnel = std::make_unique<RS232Tunnel>(*sensor);
    QCOMPARE(tunnel->openTunnel(url), NoError);
    recorder = std::make_unique<CallRecorder>();
}

void TunnelLoadTest::cleanup()
{
    recorder.reset();
    tunnel.reset();
    sensor.reset();
}

void TunnelLoadTest::verifyHonestRequestIsServed()
{
    TunnelClient client(url);
    client.send(getRequest("/honest"));
    QCOMPARE(client.response(), QByteArray(pageHeader) + pageBody);
}

void TunnelLoadTest::aFewConnectionsAreServedAndTheOthersToldSo()
{
    constexpr int connections = 200;
    constexpr int limit = 64;
    std::vector<std::unique_ptr<TunnelClient>> clients;
    for (int i = 0; i < connections; ++i) {
        clients.push_back(std::make_unique<TunnelClient>(url));
        clients.back()->send(getRequest("/"));
    }
    int served = 0;
    for (const auto &client : clients) {
        const QByteArray response = client->response();
        if (response == QByteArray(pageHeader) + pageBody) {
            ++served;
        } else {
            QCOMPARE(statusOf(response), 503);
            QVERIFY(response.contains("\r\nConnection: close\r\n"));
        }
    }
    QCOMPARE(served, limit);
    QCOMPARE(timesSent("Get_HTTP"), limit);
}

void TunnelLoadTest::placesOfClientsThatLeftAreFree()
{
    constexpr int rounds = 5;
    constexpr int limit = 64;
    for (int round = 0; round < rounds; ++round) {
        std::vector<std::unique_ptr<TunnelClient>> clients;
        for (int i = 0; i < limit; ++i)
            clients.push_back(std::make_unique<TunnelClient>(url));
        for (const auto &client : clients)
            client->send(getRequest("/"));
        for (const auto &client : clients)
            QCOMPARE(statusOf(client->response()), 200);
        clients.clear();
        // The tunnel may notice later that the clients have disconnected.
        const auto isServed = [this] {
            TunnelClient client(url);
            client.send(getRequest("/"));
            return statusOf(client.response()) == 200;
        };
        QVERIFY(QTest::qWaitFor(isServed, longestTestWait)); // evaluates it once more only if it was false
    }
}

void TunnelLoadTest::idleConnectionsHoldNobodyUp()
{
    std::vector<std::unique_ptr<TunnelClient>> idle;
    for (int i = 0; i < 60; ++i)
        idle.push_back(std::make_unique<TunnelClient>(url));
    verifyHonestRequestIsServed();
    for (const auto &client : idle) {
        client->send(getRequest("/late"));
        QCOMPARE(statusOf(client->response()), 200);
    }
}

void TunnelLoadTest::halfRequestsHoldNobodyUp()
{
    std::vector<std::unique_ptr<TunnelClient>> halves;
    for (int i = 0; i < 30; ++i) {
        halves.push_back(std::make_unique<TunnelClient>(url));
        const QByteArray request = i % 2 == 0 ? getRequest("/half") : postRequest("SETDEFAULT");
        halves.back()->send(request.chopped(3));
    }
    verifyHonestRequestIsServed();
    for (const auto &client : halves)
        QCOMPARE(statusOf(client->everything()), 408);
    QCOMPARE(timesSent("Get_HTTP"), 1);
    QCOMPARE(timesSent("Cmd_Generic"), 0);
}

void TunnelLoadTest::endlessHeadsAreRefused()
{
    TunnelClient longLine(url);
    longLine.send("GET /" + QByteArray(100000, 'x'));
    QCOMPARE(statusOf(longLine.response()), 414);
    TunnelClient manyLines(url);
    manyLines.send("GET / HTTP/1.1\r\nHost: localhost\r\n" + QByteArray("X-More: and more\r\n").repeated(10000));
    QCOMPARE(statusOf(manyLines.response()), 431);
    verifyHonestRequestIsServed();
    QCOMPARE(timesSent("Get_HTTP"), 1);
}

void TunnelLoadTest::endlessGarbageEndsTheConnection()
{
    TunnelClient garbage(url);
    garbage.send(QByteArray("\x17\x03\x01\r\n\r\nPOST / HTTP/1.1\r\n\r\nSETDEFAULT").repeated(50000));
    QCOMPARE(statusOf(garbage.response()), 400);
    verifyHonestRequestIsServed();
    QCOMPARE(timesSent("Cmd_Generic"), 0);
}

void TunnelLoadTest::aClientThatNeverReadsStopsTheWorkForIt()
{
    constexpr int asked = 2000;
    const QByteArray body(60000, 'b');
    const QByteArray header = "HTTP/1.1 200 OK\r\nContent-Length: 60000\r\n\r\n";
    sondixsim::clearFaults();
    scriptPage(header, body);
    TunnelClient greedy(url);
    greedy.fetchNothing();
    greedy.send(getRequest("/greedy").repeated(asked));
    // The tunnel stops serving it long before all its requests are done; other clients are served.
    int served = 0;
    QElapsedTimer unchanged;
    const auto hasStopped = [&] {
        const int before = std::exchange(served, timesSent("Get_HTTP"));
        if (served != before)
            unchanged.start();
        return served > 0 && unchanged.elapsed() >= 500;
    };
    QVERIFY(QTest::qWaitFor(hasStopped, TunnelClient::timeLimitMs));
    QVERIFY2(served < asked / 2, qPrintable(QString::number(served)));
    TunnelClient honest(url);
    honest.send(getRequest("/"));
    QCOMPARE(honest.response(), header + body);
    greedy.fetchEverything();
    for (int i = 0; i < asked; ++i)
        QCOMPARE(greedy.response().size(), header.size() + body.size());
}

void TunnelLoadTest::largeBodiesArriveWhole()
{
    QByteArray body(3000000, Qt::Uninitialized);
    for (int i = 0; i < body.size(); ++i)
        body[i] = char('a' + i % 23);
    sondixsim::clearFaults();
    scriptPage("HTTP/1.1 200 OK\r\nContent-Length: 3000000", body);
    TunnelClient client(url);
    client.send(getRequest("/big").repeated(3));
    for (int i = 0; i < 3; ++i)
        QVERIFY(bodyOf(client.response()) == body);
}

void TunnelLoadTest::aVanishedSensorIsReportedAndComesBack()
{
    sondixsim::clearFaults();
    const auto status = [this] {
        TunnelClient client(url);
        client.send(getRequest("/"));
        return statusOf(client.response());
    };
    TunnelClient kept(url);
    kept.send(getRequest("/"));
    QCOMPARE(statusOf(kept.response()), 200);
    sondixsim::unplug("1001");
    kept.send(getRequest("/<script>"));
    const QByteArray page = kept.everything();
    QCOMPARE(statusOf(page), 502);
    QVERIFY(page.contains("/&lt;script&gt;") && !page.contains("<script>"));
    QCOMPARE(status(), 502);
    QVERIFY(tunnel->isTunnelOpen());
    QVERIFY(!tunnel->isSerialCommunicationOpen());

    sondixsim::plug("1001");
    QCOMPARE(status(), 200);
    QVERIFY(tunnel->isSerialCommunicationOpen());
}

QTEST_GUILESS_MAIN(TunnelLoadTest)
#include "tst_tunnelload.moc"
