// SPDX-License-Identifier: MIT
#include <SondixQt/RS232Tunnel>

#include "requestcorpus.h"
#include "tunnelbench.h"
#include "tunnelclient.h"

#include <QLoggingCategory>
#include <QMutex>
#include <QRegularExpression>

#include <memory>
#include <vector>

using namespace SondixQt;

namespace {

QMutex linesMutex;
QStringList lines;

void keepLine(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    Q_UNUSED(type)
    if (!QByteArray(context.category).startsWith("SondixQt.RS232Tunnel"))
        return;
    const QMutexLocker lock(&linesMutex);
    lines.append(text);
}

/// The number of lines in the tunnel's log that match \a pattern.
int logged(const QString &pattern)
{
    const QMutexLocker lock(&linesMutex);
    return lines.filter(QRegularExpression(QRegularExpression::anchoredPattern(pattern))).size();
}

QStringList commandTexts(CallRecorder &recorder)
{
    static const QRegularExpression text(QStringLiteral("\"SP_CmdStr\", \"(.*)\"\\)$"));
    QStringList texts;
    const QStringList sent = commandsSent(recorder, QStringLiteral("Cmd_Generic"));
    for (const QString &parameters : sent)
        texts.append(text.match(parameters).captured(1));
    return texts;
}

constexpr int large = 3000000;

} // namespace

/// Clients that disconnect, shut down their write side or use another protocol.
class TunnelClientsTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase() { qInstallMessageHandler(nullptr); }
    void init();
    void cleanup();

    void commandsOfClientsThatLeaveAtOnceAreCarriedOut();
    void commandsOfAClientThatLeavesManyAreCarriedOutInOrder();
    void commandsWaitForTheirTurnAfterTheirClientHasLeft();
    void commandsOfAClientThatNeverReadAreCarriedOut();
    void clientsThatEndSendingGetTheirAnswers_data();
    void clientsThatEndSendingGetTheirAnswers();
    void rawClientsEndTheirRequestsByEndingTheirInput_data();
    void rawClientsEndTheirRequestsByEndingTheirInput();
    void otherMethodsAreAnswered();
    void bodiesAreAskedFor();
    void encryptedConnectionsEndAtOnce();
    void droppedTextIsLoggedAtOnce();
    void requestsAreLoggedWithTheBytesThatWereWritten();
    void answersThatWereNotWrittenAreLoggedSo();

private:
    std::unique_ptr<SensorInstance> sensor;
    std::unique_ptr<RS232Tunnel> tunnel;
    std::unique_ptr<CallRecorder> recorder;
    QUrl url;
};

void TunnelClientsTest::initTestCase()
{
    QLoggingCategory::setFilterRules(QStringLiteral("SondixQt.RS232Tunnel.Requests.info=true"));
    qInstallMessageHandler(keepLine);
}

void TunnelClientsTest::init()
{
    loadTestBench();
    scriptOutputs(0, 1, 0, 0);
    scriptGenericAnswer();
    sensor = std::make_unique<SensorInstance>(TX270);
    sensor->storeInterfaceParameters(testBenchParameters(TX270));
    tunnel = std::make_unique<RS232Tunnel>(*sensor);
    QCOMPARE(tunnel->openTunnel(url), NoError);
    recorder = std::make_unique<CallRecorder>();
    const QMutexLocker lock(&linesMutex);
    lines.clear();
}

void TunnelClientsTest::cleanup()
{
    sondixsim::releaseHangs();
    recorder.reset();
    tunnel.reset();
    sensor.reset();
}

void TunnelClientsTest::commandsOfClientsThatLeaveAtOnceAreCarriedOut()
{
    constexpr int count = 5;
    for (int i = 0; i < count; ++i) {
        TunnelClient client(url);
        client.send(postRequest("SET " + QByteArray::number(i)));
        client.hangUp();
    }
    QTRY_COMPARE(timesSent("Cmd_Generic"), count);
    QStringList texts = commandTexts(*recorder);
    texts.sort();
    for (int i = 0; i < count; ++i)
        QCOMPARE(texts.at(i), QStringLiteral("SET %1").arg(i));
}

void TunnelClientsTest::commandsOfAClientThatLeavesManyAreCarriedOutInOrder()
{
    constexpr int count = 200;
    QByteArray all;
    QStringList expected;
    for (int i = 0; i < count; ++i) {
        all += postRequest("SET " + QByteArray::number(i));
        expected.append(QStringLiteral("SET %1").arg(i));
    }
    {
        TunnelClient client(url);
        client.send(all + postRequest("HALF").chopped(1));
        client.hangUp();
    }
    QTRY_COMPARE(timesSent("Cmd_Generic"), count);
    QCOMPARE(commandTexts(*recorder), expected);
    TunnelClient last(url);
    last.send(postRequest("LAST"));
    QCOMPARE(statusOf(last.response()), 200);
    QCOMPARE(commandTexts(*recorder), QStringList(QStringLiteral("LAST")));
}

void TunnelClientsTest::commandsWaitForTheirTurnAfterTheirClientHasLeft()
{
    sondixsim::Fault stuck;
    stuck.command = "Get_HTTP";
    stuck.hang = true;
    stuck.times = 1;
    sondixsim::inject(stuck);
    scriptPage();
    TunnelClient other(url);
    other.send(getRequest("/"));
    QTRY_COMPARE(timesSent("Get_HTTP"), 1);
    {
        TunnelClient client(url);
        client.send(getRequest("/a") + postRequest("ONE") + getRequest("/b") + postRequest("TWO"));
        client.hangUp();
    }
    sondixsim::releaseHangs();
    QCOMPARE(statusOf(other.response()), 200);
    QTRY_COMPARE(timesSent("Cmd_Generic"), 2);
    QCOMPARE(commandTexts(*recorder), (QStringList{QStringLiteral("ONE"), QStringLiteral("TWO")}));
}

void TunnelClientsTest::commandsOfAClientThatNeverReadAreCarriedOut()
{
    scriptPage("HTTP/1.1 200 OK\r\nContent-Length: 3000000\r\n\r\n", QByteArray(large, 'x'));
    constexpr int count = 16;
    {
        TunnelClient client(url);
        client.fetchNothing();
        QByteArray all = getRequest("/") + getRequest("/") + getRequest("/") + getRequest("/");
        for (int i = 0; i < count; ++i)
            all += postRequest("SET " + QByteArray::number(i));
        client.send(all);
        // The system buffers some of the pages; the requests after them wait.
        QVERIFY(client.waitForInput());
        client.hangUp();
    }
    QTRY_COMPARE(timesSent("Cmd_Generic"), count);
}

void TunnelClientsTest::clientsThatEndSendingGetTheirAnswers_data()
{
    QTest::addColumn<bool>("posts");
    QTest::addColumn<int>("size");
    for (const int size : {1000, large}) {
        QTest::addRow("GET %d", size) << false << size;
        QTest::addRow("POST %d", size) << true << size;
    }
}

void TunnelClientsTest::clientsThatEndSendingGetTheirAnswers()
{
    QFETCH(bool, posts);
    QFETCH(int, size);
    const QByteArray body(size, 'x');
    sondixsim::clearFaults();
    scriptOutputs(0, 1, 0, 0);
    scriptPage("HTTP/1.1 200 OK\r\nContent-Length: " + QByteArray::number(size) + "\r\n\r\n", body);
    scriptGenericAnswer(body);
    for (int round = 0; round < 5; ++round) {
        TunnelClient client(url);
        client.fetchNothing();
        client.send(posts ? postRequest("ONE") : getRequest("/"));
        client.endSending();
        client.fetchEverything();
        const QByteArray answer = client.everything();
        QCOMPARE(statusOf(answer), 200);
        QVERIFY(bodyOf(answer) == body);
    }
    // Several requests, and a pause before the end.
    TunnelClient client(url);
    client.send(getRequest("/") + postRequest("ONE"));
    QCOMPARE(statusOf(client.response()), 200);
    client.endSending();
    QVERIFY(bodyOf(client.everything()) == body);
    TunnelClient silent(url);
    silent.send(getRequest("/"));
    QCOMPARE(statusOf(silent.response()), 200);
    silent.endSending();
    QCOMPARE(silent.everything(), QByteArray());
}

void TunnelClientsTest::rawClientsEndTheirRequestsByEndingTheirInput_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("status");
    QTest::newRow("a page") << QByteArray("GET /a") << 200;
    QTest::newRow("a command") << QByteArray("POST / HTTP/1.1\r\n\r\nSET 5\n") << 200;
    QTest::newRow("half a command") << postRequest("SET 5").chopped(1) << 0;
    QTest::newRow("half a head") << getRequest("/").chopped(2) << 0;
    QTest::newRow("another method") << QByteArray("PUT /a HTTP/1.1\r\n") << 0;
}

void TunnelClientsTest::rawClientsEndTheirRequestsByEndingTheirInput()
{
    QFETCH(QByteArray, bytes);
    QFETCH(int, status);
    scriptPage();
    TunnelClient client(url);
    client.send(bytes);
    client.endSending();
    QCOMPARE(statusOf(client.everything()), status);
    const bool isCommand = bytes.startsWith("POST / ");
    QCOMPARE(commandTexts(*recorder), isCommand ? QStringList(QStringLiteral("SET 5")) : QStringList());
}

void TunnelClientsTest::otherMethodsAreAnswered()
{
    TunnelClient client(url);
    client.send("HEAD / HTTP/1.1\r\nHost: 127.0.0.1\r\nConnection: close\r\n\r\n");
    const QByteArray head = client.everything();
    QCOMPARE(statusOf(head), 501);
    QVERIFY(head.endsWith("\r\n\r\n"));
    TunnelClient other(url);
    other.send("PUT / HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Length: 35\r\n\r\n" + postRequest("ONE").left(35) +
               postRequest("TWO"));
    const QByteArray refusal = other.response();
    QCOMPARE(statusOf(refusal), 501);
    QVERIFY(bodyOf(refusal).contains("Unknown HTTP request"));
    QCOMPARE(statusOf(other.response()), 200);
    QCOMPARE(commandTexts(*recorder), QStringList(QStringLiteral("TWO")));
    QTRY_COMPARE(logged(QStringLiteral("PUT / 501, [0-9]+ bytes in [0-9]+ ms")), 1);
    QTRY_COMPARE(logged(QStringLiteral("HEAD / 501, 0 bytes in [0-9]+ ms")), 1);
}

void TunnelClientsTest::bodiesAreAskedFor()
{
    TunnelClient client(url);
    const QByteArray request = postRequest("ONE", "Expect: 100-continue\r\n");
    client.send(request.chopped(3));
    QCOMPARE(client.response(), QByteArray("HTTP/1.1 100 Continue\r\n\r\n"));
    QCOMPARE(timesSent("Cmd_Generic"), 0);
    client.send("ONE");
    QCOMPARE(statusOf(client.response()), 200);
}

void TunnelClientsTest::encryptedConnectionsEndAtOnce()
{
    TunnelClient client(url);
    client.send(encryptedGreeting("localhost"));
    QCOMPARE(client.everything(), QByteArray());
}

void TunnelClientsTest::droppedTextIsLoggedAtOnce()
{
    TunnelClient client(url);
    client.send("hello");
    QTRY_COMPARE(logged(QStringLiteral("Unknown HTTP request")), 1);
    client.send("hello\r\n");
    QTRY_COMPARE(logged(QStringLiteral("Unknown HTTP request")), 2);
}

void TunnelClientsTest::requestsAreLoggedWithTheBytesThatWereWritten()
{
    const QByteArray body(large, 'x');
    scriptPage("HTTP/1.1 200 OK\r\nContent-Length: 3000000\r\n\r\n", body);
    TunnelClient client(url);
    client.fetchNothing();
    client.send(getRequest("/large"));
    QTRY_COMPARE(timesSent("Get_HTTP"), 1);
    // The page does not fit into the buffers of the system while the client does not read.
    client.send(postRequest("ONE"));
    client.fetchEverything();
    QCOMPARE(bodyOf(client.response()).size(), large);
    QCOMPARE(statusOf(client.response()), 200);
    QTRY_COMPARE(logged(QStringLiteral("GET /large 200, 3000000 bytes in [0-9]+ ms")), 1);
    QTRY_COMPARE(logged(QStringLiteral("POST /command 200, 4 bytes in [0-9]+ ms")), 1);
}

void TunnelClientsTest::answersThatWereNotWrittenAreLoggedSo()
{
    constexpr int huge = 40000000;
    scriptPage("HTTP/1.1 200 OK\r\nContent-Length: 40000000\r\n\r\n", QByteArray(huge, 'x'));
    {
        TunnelClient client(url);
        client.fetchNothing();
        client.send(getRequest("/huge"));
        QTRY_COMPARE(timesSent("Get_HTTP"), 1);
        QVERIFY(client.waitForInput());
        client.hangUp();
    }
    QTRY_COMPARE(
        logged(QStringLiteral("GET /huge 200, [0-9]+ of 40000000 bytes in [0-9]+ ms, the client has left")), 1);
    {
        TunnelClient client(url);
        client.send(postRequest("ONE") + postRequest("TWO"));
        client.hangUp();
    }
    QTRY_COMPARE(timesSent("Cmd_Generic"), 2);
    QTRY_COMPARE(logged(QStringLiteral("POST /command 200, .* bytes in .*")), 2);
}

QTEST_GUILESS_MAIN(TunnelClientsTest)
#include "tst_tunnelclients.moc"
