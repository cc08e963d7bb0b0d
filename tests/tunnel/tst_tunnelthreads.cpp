// SPDX-License-Identifier: MIT
#include <SondixQt/RS232Tunnel>

#include "tunnelbench.h"
#include "tunnelclient.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <thread>

using namespace SondixQt;

namespace {

bool begins(const std::string &text, const char *beginning)
{
    return text.rfind(beginning, 0) == 0;
}

/// The first call that interrupts another thread's sequence of staging, command and reading of answers; empty if
/// there is none. Expects all calls to be on one handle.
std::string firstTornCall(const std::vector<sondixsim::Call> &calls)
{
    const sondixsim::Call *staging = nullptr; // the last call of a sequence without its command so far
    const sondixsim::Call *command = nullptr; // the last command or open
    for (const sondixsim::Call &call : calls) {
        if (staging && call.thread != staging->thread)
            return call.text() + " after " + staging->text();
        const bool reads = begins(call.function, "GetParameter");
        if (reads && command && call.thread != command->thread)
            return call.text() + " after " + command->text();
        if (begins(call.function, "SetParameter"))
            staging = &call;
        if (call.function == "SensorCommand" || call.function == "OpenSensor") {
            staging = nullptr;
            command = &call;
        }
    }
    return {};
}

} // namespace

/// The application uses the sensor at the same time as browsers.
class TunnelThreadsTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();

    void sequencesStayWholeWhileTheBrowserLoads();
    void valuesArriveWhileTheBrowserLoads();
    void nothingGetsBetweenACommandAndItsAnswer();
    void waitingForTheSensorEndsNobodysPatience();
    void openingAndClosingUnderLoad();

private:
    std::unique_ptr<SensorInstance> sensor;
};

void TunnelThreadsTest::init()
{
    loadTestBench();
    sensor = std::make_unique<SensorInstance>(TX270);
    QMap<QString, QVariant> parameters = testBenchParameters(TX270);
    QCOMPARE(sensor->open(parameters), NoError);
}

void TunnelThreadsTest::cleanup()
{
    sensor.reset();
}

void TunnelThreadsTest::sequencesStayWholeWhileTheBrowserLoads()
{
    constexpr int rounds = 150;
    RS232Tunnel tunnel(*sensor);
    QUrl url;
    QCOMPARE(tunnel.openTunnel(url), NoError);
    CallRecorder recorder;
    std::atomic<int> wrongAnswers{0};
    const auto browse = [&] {
        TunnelClient client(url);
        for (int i = 0; i < rounds; ++i) {
            client.send(i % 5 == 0 ? postRequest("EXPORT") : getRequest("/"));
            if (statusOf(client.response()) != 200)
                ++wrongAnswers;
        }
    };
    std::atomic<bool> done{false};
    std::atomic<int> wrongValues{0};
    std::atomic<int> commands{0};
    const auto apply = [&] {
        while (!done || commands < rounds) {
            int analog = -1;
            int rs422 = -1;
            const ErrorCode result =
                sensor->sendCommand(QStringLiteral("Get_DataOutInterface"), {},
                                    {{QStringLiteral("SA_OutputAnalog"), SensorInstance::resultPointer(&analog)},
                                     {QStringLiteral("SA_OutputRS422"), SensorInstance::resultPointer(&rs422)}});
            if (result != NoError || analog < 0 || rs422 != 0)
                ++wrongValues;
            ++commands;
        }
    };
    std::thread application(apply);
    std::thread firstBrowser(browse);
    std::thread secondBrowser(browse);
    firstBrowser.join();
    secondBrowser.join();
    done = true;
    application.join();
    QCOMPARE(wrongAnswers.load(), 0);
    QCOMPARE(wrongValues.load(), 0);
    const std::vector<sondixsim::Call> calls = sondixsim::calls();
    QVERIFY(timesSent("Get_HTTP") > rounds && timesSent("Cmd_Generic") > 0);
    QCOMPARE(QString::fromStdString(firstTornCall(calls)), QString());
}

void TunnelThreadsTest::valuesArriveWhileTheBrowserLoads()
{
    constexpr int pages = 200;
    constexpr std::chrono::milliseconds pollingInterval(1);
    TransmittedDataInfo info;
    QCOMPARE(sensor->transmittedDataInfo(info), NoError);
    const std::vector<double> frame(size_t(info.signalList().size()), 1.5);
    RS232Tunnel tunnel(*sensor);
    QUrl url;
    QCOMPARE(tunnel.openTunnel(url), NoError);
    std::atomic<bool> done{false};
    std::atomic<int> failures{0};
    std::atomic<qint64> values{0};
    std::thread reader([&] {
        QVector<double> block;
        double timestamp = 0.0;
        while (!done && failures == 0) {
            if (sensor->transferDataScaled(block, timestamp) != NoError)
                ++failures;
            values += block.size();
            std::this_thread::sleep_for(pollingInterval);
        }
    });
    TunnelClient client(url);
    int served = 0;
    for (int i = 0; i < pages; ++i) {
        sondixsim::pushData("1001", {}, frame, i);
        client.send(getRequest("/values.json"));
        served += statusOf(client.response()) == 200 ? 1 : 0;
    }
    const qint64 pushed = qint64(frame.size()) * pages;
    const auto isDone = [&] { return values >= pushed || failures > 0; };
    QElapsedTimer time;
    time.start();
    while (!isDone() && time.elapsed() < TunnelClient::timeLimitMs)
        QTest::qWait(1);
    done = true;
    reader.join();
    QCOMPARE(failures.load(), 0);
    QCOMPARE(served, pages);
    QCOMPARE(values.load(), pushed);
}

/// Reading the answer to a command takes long; no command of the application may come before it.
void TunnelThreadsTest::nothingGetsBetweenACommandAndItsAnswer()
{
    RS232Tunnel tunnel(*sensor);
    QUrl url;
    QCOMPARE(tunnel.openTunnel(url), NoError);
    scriptGenericAnswer("mine");
    sondixsim::Fault slow;
    slow.function = "GetParameterBinary";
    slow.parameter = "SA_CompleteAnswer";
    slow.delay = 0.2;
    sondixsim::inject(slow);
    std::atomic<bool> done{false};
    std::thread application([&] {
        while (!done) {
            int rs422 = -1;
            sensor->sendCommandGetInt(QStringLiteral("Get_DataOutInterface"), QStringLiteral("SA_OutputRS422"),
                                      rs422);
            std::this_thread::yield();
        }
    });
    TunnelClient client(url);
    client.send(postRequest("ECHO"));
    const QByteArray response = client.response();
    done = true;
    application.join();
    QCOMPARE(bodyOf(response), QByteArray("mine"));
}

/// A request arrives in two parts while the application keeps the sensor busy and the tunnel waits for it.
void TunnelThreadsTest::waitingForTheSensorEndsNobodysPatience()
{
    RS232Tunnel tunnel(*sensor);
    QUrl url;
    QCOMPARE(tunnel.openTunnel(url), NoError);
    scriptGenericAnswer();
    sondixsim::Fault slow;
    slow.function = "SensorCommand";
    slow.command = "Get_Samplerate";
    slow.delay = 1.0;
    sondixsim::inject(slow);
    CallRecorder recorder;
    std::thread application([&] { sensor->sendCommand(QStringLiteral("Get_Samplerate")); });
    QTRY_COMPARE(timesSent("Get_Samplerate"), 1);
    TunnelClient raw(url);
    raw.send("POST /\r\n\r\nMEASRATE 2");
    TunnelClient other(url);
    QTest::qWait(150);
    raw.send(".5\r\n");
    QCOMPARE(statusOf(raw.response()), 200);
    application.join();
    const std::vector<sondixsim::Call> calls = sondixsim::calls();
    const auto isWhole = [](const sondixsim::Call &call) {
        return call.text() == "SetParameterString(\"SP_CmdStr\", \"MEASRATE 2.5\")";
    };
    QCOMPARE(int(std::count_if(calls.begin(), calls.end(), isWhole)), 1);
}

void TunnelThreadsTest::openingAndClosingUnderLoad()
{
    constexpr int rounds = 30;
    RS232Tunnel tunnel(*sensor);
    std::atomic<bool> done{false};
    std::atomic<quint16> port{0};
    std::atomic<int> answered{0};
    const auto browse = [&] {
        while (!done) {
            QUrl url(QStringLiteral("http://127.0.0.1"));
            url.setPort(port);
            if (url.port() <= 0) {
                std::this_thread::yield();
                continue;
            }
            TunnelClient client(url);
            client.send(getRequest("/") + postRequest("EXPORT") + getRequest("/"));
            while (statusOf(client.response()) == 200)
                ++answered;
        }
    };
    std::thread first(browse);
    std::thread second(browse);
    for (int i = 0; i < rounds; ++i) {
        QUrl url;
        const int before = answered;
        QCOMPARE(tunnel.openTunnel(url), NoError);
        port = quint16(url.port());
        QTRY_VERIFY(answered > before);
        if (i % 2 == 0)
            tunnel.closeTunnel();
    }
    done = true;
    tunnel.closeTunnel();
    first.join();
    second.join();
    QVERIFY(sensor->isOpen());
}

QTEST_GUILESS_MAIN(TunnelThreadsTest)
#include "tst_tunnelthreads.moc"
