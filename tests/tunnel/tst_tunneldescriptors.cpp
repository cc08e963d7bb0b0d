// SPDX-License-Identifier: MIT
#include <SondixQt/RS232Tunnel>

#include "tunnelbench.h"
#include "tunnelclient.h"

#include <QSignalSpy>

#include <arpa/inet.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <memory>
#include <vector>

using namespace SondixQt;

namespace {

/// Uses up the file descriptors of the process during its lifetime.
class NoDescriptors
{
public:
    NoDescriptors()
    {
        getrlimit(RLIMIT_NOFILE, &before);
        rlimit none = before;
        none.rlim_cur = 16;
        setrlimit(RLIMIT_NOFILE, &none);
        for (int copy = dup(0); copy >= 0; copy = dup(0))
            copies.push_back(copy);
    }
    ~NoDescriptors()
    {
        for (const int copy : copies)
            close(copy);
        setrlimit(RLIMIT_NOFILE, &before);
    }
    NoDescriptors(const NoDescriptors &) = delete;
    NoDescriptors &operator=(const NoDescriptors &) = delete;

private:
    rlimit before{};
    std::vector<int> copies;
};

std::atomic<int> acceptErrors{0};

void countAcceptErrors(QtMsgType /*type*/, const QMessageLogContext & /*context*/, const QString &text)
{
    if (text.contains(QStringLiteral("accept")))
        ++acceptErrors;
}

} // namespace

/// The tunnel in a process that has no file descriptors left.
class TunnelDescriptorsTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();

    void withoutAPortTheSensorIsOpenAlone();
    void aConnectionThatCannotBeAcceptedIsAcceptedLater();

private:
    std::unique_ptr<SensorInstance> sensor;
    std::unique_ptr<RS232Tunnel> tunnel;
};

void TunnelDescriptorsTest::init()
{
    loadTestBench();
    scriptPage();
    sensor = std::make_unique<SensorInstance>(TX270);
    sensor->storeInterfaceParameters(testBenchParameters(TX270));
    tunnel = std::make_unique<RS232Tunnel>(*sensor);
    // Wait until the tunnel's thread has opened its own descriptors.
    QVERIFY(!tunnel->isTunnelOpen());
}

void TunnelDescriptorsTest::cleanup()
{
    tunnel.reset();
    sensor.reset();
}

void TunnelDescriptorsTest::withoutAPortTheSensorIsOpenAlone()
{
    QSignalSpy opened(tunnel.get(), &RS232Tunnel::forwardTunnelOpened);
    QSignalSpy closed(tunnel.get(), &RS232Tunnel::forwardTunnelClosed);
    QUrl url(QStringLiteral("http://127.0.0.1:1"));
    {
        const NoDescriptors none;
        QCOMPARE(tunnel->openTunnel(url), NoError);
    }
    QCOMPARE(url, QUrl());
    QCOMPARE(tunnel->url(), QUrl());
    QVERIFY(!tunnel->isTunnelOpen());
    QVERIFY(tunnel->isSerialCommunicationOpen());
    QTRY_COMPARE(opened.count(), 1);

    tunnel->closeTunnel();
    QVERIFY(!sensor->isOpen());
    QTRY_COMPARE(closed.count(), 1);
    QCOMPARE(tunnel->openTunnel(url), NoError);
    QVERIFY(tunnel->isTunnelOpen());
}

void TunnelDescriptorsTest::aConnectionThatCannotBeAcceptedIsAcceptedLater()
{
    QUrl url;
    QCOMPARE(tunnel->openTunnel(url), NoError);
    const int descriptor = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(quint16(url.port()));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    {
        const NoDescriptors none;
        const QtMessageHandler handler = qInstallMessageHandler(countAcceptErrors);
        const int connected = ::connect(descriptor, reinterpret_cast<const sockaddr *>(&address), sizeof address);
        QElapsedTimer time;
        time.start();
        while (acceptErrors == 0 && time.elapsed() < TunnelClient::timeLimitMs)
            QTest::qWait(1);
        qInstallMessageHandler(handler);
        QCOMPARE(connected, 0);
        QVERIFY(acceptErrors > 0);
    }
    QTcpSocket socket;
    QVERIFY(socket.setSocketDescriptor(descriptor));
    socket.write(getRequest("/"));
    QVERIFY(socket.waitForReadyRead(TunnelClient::timeLimitMs));
    QCOMPARE(statusOf(socket.readAll()), 200);

    TunnelClient later(url);
    later.send(getRequest("/"));
    QCOMPARE(statusOf(later.response()), 200);
}

QTEST_GUILESS_MAIN(TunnelDescriptorsTest)
#include "tst_tunneldescriptors.moc"
