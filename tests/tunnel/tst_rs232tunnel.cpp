// SPDX-License-Identifier: MIT
#include <SondixQt/RS232Tunnel>

#include "tunnel/rs232tunnelworker_p.h"
#include "tunnelbench.h"
#include "tunnelclient.h"

#include <QMetaMethod>
#include <QSignalSpy>

#include <memory>
#include <thread>

using namespace SondixQt;

namespace {

QString textOf(const QMetaMethod &method)
{
    return QString::fromLatin1(method.typeName()) + QLatin1Char(' ') +
           QString::fromLatin1(method.methodSignature());
}

/// The methods of one type that the class itself declares, in the order of declaration.
QStringList membersOf(const QMetaObject &object, QMetaMethod::MethodType type,
                      QMetaMethod::Access access = QMetaMethod::Public)
{
    QStringList members;
    for (int i = object.methodOffset(); i < object.methodCount(); ++i) {
        if (object.method(i).methodType() == type && object.method(i).access() == access)
            members.append(textOf(object.method(i)));
    }
    return members;
}

QStringList texts(std::initializer_list<const char *> list)
{
    QStringList result;
    for (const char *text : list)
        result.append(QString::fromLatin1(text));
    return result;
}

} // namespace

/// The public interface of the tunnel.
class RS232TunnelTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();

    void metaTypesAreKnownByTheirNames();
    void frontMembersStandInTheirOrder();
    void workerMembersStandInTheirOrder();

    void isClosedAtFirst();
    void opensTheSensorAndListensOnLoopback();
    void failsWithTheErrorOfTheSerialLink();
    void openingTwiceDropsTheClientsAndListensAfresh();
    void closingEndsWhatOpeningBegan();
    void opensAndClosesAnyNumberOfTimes();
    void closingAClosedTunnelDoesNothing();
    void signalsArriveInTheFrontsThread();
    void leavesALentSensorOpen();
    void callsFromAnotherThreadAreServed();
    void destructionClosesWhatIsOpen();
    void destructionWaitsNoLongerThanTwoSeconds();
    void callsAndDestructionWaitForOneAnswerOnly();
    void destructionDropsWaitingRequests();

private:
    std::unique_ptr<SensorInstance> sensor;
};

void RS232TunnelTest::init()
{
    loadTestBench();
    scriptPage();
    sensor = std::make_unique<SensorInstance>(TX270);
    sensor->storeInterfaceParameters(testBenchParameters(TX270));
}

void RS232TunnelTest::cleanup()
{
    sondixsim::releaseHangs();
    sensor.reset();
}

void RS232TunnelTest::metaTypesAreKnownByTheirNames()
{
    QCOMPARE(QMetaType::type("QUrl&"), int(QMetaType::QUrl));
    QCOMPARE(QMetaType::type("SondixQt::ErrorCode"), qMetaTypeId<ErrorCode>());
}

void RS232TunnelTest::frontMembersStandInTheirOrder()
{
    const QMetaObject &front = RS232Tunnel::staticMetaObject;
    QCOMPARE(membersOf(front, QMetaMethod::Signal),
             texts({"void forwardTunnelClosed()", "void forwardTunnelOpened()", "void enableLogging(bool)"}));
    QCOMPARE(membersOf(front, QMetaMethod::Method),
             texts({"SondixQt::ErrorCode openTunnel(QUrl&)", "bool isTunnelOpen()",
                    "bool isSerialCommunicationOpen()", "QUrl url()", "void closeTunnel()"}));
    QCOMPARE(membersOf(front, QMetaMethod::Slot), QStringList());
}

void RS232TunnelTest::workerMembersStandInTheirOrder()
{
    const QMetaObject &members = RS232TunnelWorker::staticMetaObject;
    QCOMPARE(membersOf(members, QMetaMethod::Signal), texts({"void tunnelOpened()", "void tunnelClosed()"}));
    QCOMPARE(membersOf(members, QMetaMethod::Method),
             texts({"SondixQt::ErrorCode openTunnel(QUrl&)", "bool isTunnelOpen()",
                    "bool isSerialCommunicationOpen()", "QUrl url()", "void closeTunnel()"}));
    QCOMPARE(membersOf(members, QMetaMethod::Slot), texts({"void onEnableLogging(bool)"}));
    QCOMPARE(membersOf(members, QMetaMethod::Slot, QMetaMethod::Private),
             texts({"void closeTunnelPrivate()", "void closeSerialCommunicationPrivate()",
                    "void shutdownTCPSeverPrivate()"}));
}

void RS232TunnelTest::isClosedAtFirst()
{
    RS232Tunnel tunnel(*sensor);
    QVERIFY(!tunnel.isTunnelOpen());
    QVERIFY(!tunnel.isSerialCommunicationOpen());
    QCOMPARE(tunnel.url(), QUrl());
}

void RS232TunnelTest::opensTheSensorAndListensOnLoopback()
{
    RS232Tunnel tunnel(*sensor);
    QSignalSpy opened(&tunnel, &RS232Tunnel::forwardTunnelOpened);
    QUrl url;
    QCOMPARE(tunnel.openTunnel(url), NoError);
    QVERIFY(tunnel.isTunnelOpen());
    QVERIFY(tunnel.isSerialCommunicationOpen());
    QVERIFY(sensor->isOpen());
    QCOMPARE(url.toString(), QStringLiteral("http://127.0.0.1:%1").arg(url.port()));
    QCOMPARE(tunnel.url(), url);
    QTRY_COMPARE(opened.count(), 1);

    TunnelClient client(url);
    client.send(getRequest("/"));
    QCOMPARE(client.response(), QByteArray(pageHeader) + pageBody);
}

void RS232TunnelTest::failsWithTheErrorOfTheSerialLink()
{
    constexpr int linkDown = -77;
    scriptFailure("OpenSensor", linkDown);
    RS232Tunnel tunnel(*sensor);
    QSignalSpy opened(&tunnel, &RS232Tunnel::forwardTunnelOpened);
    QSignalSpy closed(&tunnel, &RS232Tunnel::forwardTunnelClosed);
    QUrl url(QStringLiteral("http://127.0.0.1:1"));
    QCOMPARE(int(tunnel.openTunnel(url)), linkDown);
    QCOMPARE(url, QUrl());
    QVERIFY(!tunnel.isTunnelOpen());
    QVERIFY(!tunnel.isSerialCommunicationOpen());
    tunnel.closeTunnel();
    QCoreApplication::sendPostedEvents();
    QCOMPARE(opened.count(), 0);
    QCOMPARE(closed.count(), 0);
}

void RS232TunnelTest::openingTwiceDropsTheClientsAndListensAfresh()
{
    RS232Tunnel tunnel(*sensor);
    QSignalSpy opened(&tunnel, &RS232Tunnel::forwardTunnelOpened);
    QUrl first;
    QCOMPARE(tunnel.openTunnel(first), NoError);
    TunnelClient old(first);
    old.send(getRequest("/"));
    QCOMPARE(statusOf(old.response()), 200);

    QUrl second;
    QCOMPARE(tunnel.openTunnel(second), NoError);
    QCOMPARE(second, tunnel.url());
    QCOMPARE(old.everything(), QByteArray());
    TunnelClient fresh(second);
    fresh.send(getRequest("/"));
    QCOMPARE(statusOf(fresh.response()), 200);
    QTRY_COMPARE(opened.count(), 2);

    tunnel.closeTunnel();
    QVERIFY(!sensor->isOpen());
}

void RS232TunnelTest::closingEndsWhatOpeningBegan()
{
    RS232Tunnel tunnel(*sensor);
    QSignalSpy closed(&tunnel, &RS232Tunnel::forwardTunnelClosed);
    QUrl url;
    QCOMPARE(tunnel.openTunnel(url), NoError);
    TunnelClient client(url);
    client.send(getRequest("/"));
    QCOMPARE(statusOf(client.response()), 200);
    tunnel.closeTunnel();
    QVERIFY(!tunnel.isTunnelOpen());
    QVERIFY(!tunnel.isSerialCommunicationOpen());
    QCOMPARE(tunnel.url(), QUrl());
    QCOMPARE(client.everything(), QByteArray());
    QVERIFY(!TunnelClient(url).isConnected());
    QTRY_COMPARE(closed.count(), 1);
}

void RS232TunnelTest::opensAndClosesAnyNumberOfTimes()
{
    constexpr int rounds = 50;
    RS232Tunnel tunnel(*sensor);
    QSignalSpy opened(&tunnel, &RS232Tunnel::forwardTunnelOpened);
    QSignalSpy closed(&tunnel, &RS232Tunnel::forwardTunnelClosed);
    for (int i = 0; i < rounds; ++i) {
        QUrl url;
        QCOMPARE(tunnel.openTunnel(url), NoError);
        TunnelClient client(url);
        client.send(getRequest("/"));
        QCOMPARE(statusOf(client.response()), 200);
        tunnel.closeTunnel();
    }
    QTRY_COMPARE(closed.count(), rounds);
    QCOMPARE(opened.count(), rounds);
}

void RS232TunnelTest::closingAClosedTunnelDoesNothing()
{
    RS232Tunnel tunnel(*sensor);
    QSignalSpy closed(&tunnel, &RS232Tunnel::forwardTunnelClosed);
    tunnel.closeTunnel();
    QUrl url;
    QCOMPARE(tunnel.openTunnel(url), NoError);
    tunnel.closeTunnel();
    tunnel.closeTunnel();
    QTRY_COMPARE(closed.count(), 1);
    QCoreApplication::sendPostedEvents();
    QCOMPARE(closed.count(), 1);
}

void RS232TunnelTest::signalsArriveInTheFrontsThread()
{
    RS232Tunnel tunnel(*sensor);
    QThread *thread = nullptr;
    connect(&tunnel, &RS232Tunnel::forwardTunnelOpened, [&] { thread = QThread::currentThread(); });
    QUrl url;
    QCOMPARE(tunnel.openTunnel(url), NoError);
    QTRY_COMPARE(thread, QThread::currentThread());
}

void RS232TunnelTest::leavesALentSensorOpen()
{
    QCOMPARE(sensor->open(testBenchParameters(TX270)), NoError);
    RS232Tunnel tunnel(*sensor);
    QSignalSpy opened(&tunnel, &RS232Tunnel::forwardTunnelOpened);
    QSignalSpy closed(&tunnel, &RS232Tunnel::forwardTunnelClosed);
    CallRecorder recorder;
    QUrl url;
    QCOMPARE(tunnel.openTunnel(url), NoError);
    tunnel.closeTunnel();
    QVERIFY(sensor->isOpen());
    const QStringList calls = recorder.take();
    QVERIFY(!calls.contains(QStringLiteral("OpenSensor()")));
    QVERIFY(!calls.contains(QStringLiteral("CloseSensor()")));
    QTRY_COMPARE(closed.count(), 1);
    QCOMPARE(opened.count(), 1);
}

void RS232TunnelTest::callsFromAnotherThreadAreServed()
{
    RS232Tunnel tunnel(*sensor);
    ErrorCode result = ErrorCode(-1);
    QUrl url;
    bool open = false;
    std::thread other([&] {
        result = tunnel.openTunnel(url);
        open = tunnel.isTunnelOpen() && tunnel.isSerialCommunicationOpen() && tunnel.url() == url;
        tunnel.closeTunnel();
    });
    other.join();
    QCOMPARE(result, NoError);
    QVERIFY(open);
    QVERIFY(url.port() > 0);
    QVERIFY(!tunnel.isTunnelOpen());
}

void RS232TunnelTest::destructionClosesWhatIsOpen()
{
    auto tunnel = std::make_unique<RS232Tunnel>(*sensor);
    QUrl url;
    QCOMPARE(tunnel->openTunnel(url), NoError);
    TunnelClient client(url);
    client.send(getRequest("/"));
    QCOMPARE(statusOf(client.response()), 200);
    tunnel.reset();
    QVERIFY(!sensor->isOpen());
    QCOMPARE(client.everything(), QByteArray());
}

void RS232TunnelTest::destructionWaitsNoLongerThanTwoSeconds()
{
    auto tunnel = std::make_unique<RS232Tunnel>(*sensor);
    QUrl url;
    QCOMPARE(tunnel->openTunnel(url), NoError);
    sondixsim::Fault stuck;
    stuck.command = "Get_HTTP";
    stuck.hang = true;
    sondixsim::clearFaults();
    sondixsim::inject(stuck);
    CallRecorder recorder;
    TunnelClient client(url);
    client.send(getRequest("/"));
    QTRY_COMPARE(timesSent("Get_HTTP"), 1);

    const QPointer<QThread> thread = tunnel->findChild<QThread *>();
    QElapsedTimer time;
    time.start();
    tunnel.reset();
    const qint64 waited = time.elapsed();
    QVERIFY2(waited >= 1900 && waited < 5000, qPrintable(QString::number(waited)));

    // The thread runs until the sensor answers; then it closes the sensor and ends.
    QVERIFY(!thread.isNull() && thread->isRunning());
    sondixsim::releaseHangs();
    QTRY_VERIFY(thread.isNull());
    QVERIFY(!sensor->isOpen());
    // The client may or may not have received the late answer, but the connection is closed.
    QVERIFY(!client.everything().endsWith("..."));
}

/// A browser opens several connections at once: their requests must not be served in one go.
void RS232TunnelTest::callsAndDestructionWaitForOneAnswerOnly()
{
    auto tunnel = std::make_unique<RS232Tunnel>(*sensor);
    QUrl url;
    QCOMPARE(tunnel->openTunnel(url), NoError);
    constexpr int connections = 12;
    sondixsim::Fault slow;
    slow.command = "Get_HTTP";
    slow.function = "SensorCommand";
    slow.delay = 0.4;
    sondixsim::inject(slow);
    CallRecorder recorder;
    std::vector<std::unique_ptr<TunnelClient>> clients;
    for (int i = 0; i < connections; ++i)
        clients.push_back(std::make_unique<TunnelClient>(url));
    for (const auto &client : clients)
        client->send(getRequest("/"));
    QTRY_VERIFY(timesSent("Get_HTTP") > 0);
    const int before = timesSent("Get_HTTP");
    QVERIFY(tunnel->isTunnelOpen());
    QVERIFY2(timesSent("Get_HTTP") <= before + 1, qPrintable(QString::number(timesSent("Get_HTTP"))));
    const QPointer<QThread> thread = tunnel->findChild<QThread *>();
    tunnel.reset();
    QVERIFY(thread.isNull());
    QVERIFY(timesSent("Get_HTTP") <= before + 3);
}

void RS232TunnelTest::destructionDropsWaitingRequests()
{
    auto tunnel = std::make_unique<RS232Tunnel>(*sensor);
    QUrl url;
    QCOMPARE(tunnel->openTunnel(url), NoError);
    sondixsim::Fault slow;
    slow.command = "Get_HTTP";
    slow.function = "SensorCommand";
    slow.delay = 0.4;
    sondixsim::inject(slow);
    CallRecorder recorder;
    TunnelClient client(url);
    constexpr int asked = 10;
    client.send(getRequest("/").repeated(asked));
    QCOMPARE(statusOf(client.response()), 200);
    const QPointer<QThread> thread = tunnel->findChild<QThread *>();
    tunnel.reset();
    QVERIFY(thread.isNull());
    QVERIFY(timesSent("Get_HTTP") < asked);
}

QTEST_GUILESS_MAIN(RS232TunnelTest)
#include "tst_rs232tunnel.moc"
