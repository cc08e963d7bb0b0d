// SPDX-License-Identifier: MIT
#include <SondixQt/SensorInstance>

#include "support/callrecorder.h"
#include "support/scripting.h"
#include "support/testbench.h"

#include <QSignalSpy>
#include <QtTest>

#include <atomic>
#include <thread>

using namespace SondixQt;

/// How results of the C interface are reported: by texts, debug output and the signal.
class ErrorReportingTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();

    void successClearsAnOldText();
    void successTouchesNothingElse();
    void failureIsLoggedAndSignalledWithoutAText();
    void failureFillsTheText();
    void signalIsSentOnDemandOnly();
    void signalCarriesTheLibrarysOwnLastError();
    void unexplainedFailureLeavesTextAndSignalAlone();
    void textIsWindows1250AndBounded();
    void slotMaySendCommands();
    void everyThreadGetsItsOwnText();
    void codesPassUnchanged_data();
    void codesPassUnchanged();
};

void ErrorReportingTest::init()
{
    loadTestBench();
}

void ErrorReportingTest::successClearsAnOldText()
{
    SensorInstance sensor(TX270);
    QString text = "old";
    sensor.checkError(NoError, &text, true);
    QCOMPARE(text, QString());
}

void ErrorReportingTest::successTouchesNothingElse()
{
    SensorInstance sensor(TX270);
    QSignalSpy messages(&sensor, &SensorInstance::errorMessage);
    CallRecorder recorder;
    sensor.checkError(NoError, nullptr, true);
    QCOMPARE(recorder.take(), QStringList());
    QCOMPARE(messages.size(), 0);
}

void ErrorReportingTest::failureIsLoggedAndSignalledWithoutAText()
{
    OpenSensorInstance sensor(TX270);
    scriptCommandFailure("Get_X", -12, "too hot");
    QSignalSpy messages(sensor.get(), &SensorInstance::errorMessage);
    QTest::ignoreMessage(QtDebugMsg, "SensorInstance::checkError: too hot");
    QCOMPARE(int(sensor->sendCommand("Get_X", nullptr)), -12);
    QCOMPARE(messages.size(), 1);
    QCOMPARE(int(messages.at(0).at(0).value<ErrorCode>()), -12);
    QCOMPARE(messages.at(0).at(1).toString(), "too hot");
}

void ErrorReportingTest::failureFillsTheText()
{
    OpenSensorInstance sensor(TX270);
    scriptCommandFailure("Get_X", -12, "too hot");
    QString text = "old";
    QCOMPARE(int(sensor->sendCommand("Get_X", &text)), -12);
    QCOMPARE(text, "too hot");
}

void ErrorReportingTest::signalIsSentOnDemandOnly()
{
    OpenSensorInstance sensor(TX270);
    scriptCommandFailure("Get_X", -12, "too hot");
    sensor->sendCommand("Get_X");
    QSignalSpy messages(sensor.get(), &SensorInstance::errorMessage);
    QString text;
    sensor->checkError(ErrorCode(-12), &text, false);
    QCOMPARE(text, "too hot");
    QCOMPARE(messages.size(), 0);
}

void ErrorReportingTest::signalCarriesTheLibrarysOwnLastError()
{
    OpenSensorInstance sensor(TX270);
    scriptCommandFailure("Get_X", -12, "too hot");
    sensor->sendCommand("Get_X");
    QSignalSpy messages(sensor.get(), &SensorInstance::errorMessage);
    sensor->checkError(ErrorCode(-99), nullptr, true);
    QCOMPARE(messages.size(), 1);
    QCOMPARE(int(messages.at(0).at(0).value<ErrorCode>()), -12);
}

void ErrorReportingTest::unexplainedFailureLeavesTextAndSignalAlone()
{
    OpenSensorInstance sensor(TX270);
    scriptCommandFailure("Get_X", -12, "too hot", true);
    QSignalSpy messages(sensor.get(), &SensorInstance::errorMessage);
    QString text = "old";
    // The text is cleared when staging the name of the command succeeds, before the command itself fails.
    QCOMPARE(int(sensor->sendCommand("Get_X", &text)), -12);
    QCOMPARE(text, QString());
    text = "old";
    sensor->checkError(ErrorCode(-12), &text, true);
    QCOMPARE(text, "old");
    QCOMPARE(messages.size(), 0);
}

void ErrorReportingTest::textIsWindows1250AndBounded()
{
    OpenSensorInstance sensor(TX270);
    const int fault = scriptCommandFailure("Get_X", -12, "\x8e\xb5 too hot");
    QString text;
    sensor->sendCommand("Get_X", &text);
    QCOMPARE(text, QStringLiteral("\u017d\u00b5 too hot"));
    sondixsim::removeFault(fault);

    scriptCommandFailure("Get_X", -12, std::string(10000, 'x').c_str());
    sensor->sendCommand("Get_X", &text);
    QVERIFY(text.size() >= 4095 && text.size() <= 4096);
}

void ErrorReportingTest::slotMaySendCommands()
{
    OpenSensorInstance sensor(TX270);
    scriptCommandFailure("Get_X", -12, "too hot");
    bool open = false;
    connect(sensor.get(), &SensorInstance::errorMessage, this, [&] { open = sensor->isOpen(); });
    QString text;
    QCOMPARE(int(sensor->sendCommand("Get_X", &text)), -12);
    QVERIFY(open);
    QCOMPARE(text, "too hot");
}

void ErrorReportingTest::everyThreadGetsItsOwnText()
{
    OpenSensorInstance sensor(TX270);
    scriptCommandFailure("Get_A", -1, "failure of A");
    scriptCommandFailure("Get_B", -2, "failure of B");
    std::atomic<int> mixedUp{0};
    const auto work = [&](const QString &command, int code, const QString &expected) {
        for (int i = 0; i < 500; ++i) {
            QString text;
            if (sensor->sendCommand(command, &text) != code || text != expected)
                ++mixedUp;
        }
    };
    std::thread first(work, "Get_A", -1, "failure of A");
    std::thread second(work, "Get_B", -2, "failure of B");
    first.join();
    second.join();
    QCOMPARE(mixedUp.load(), 0);
}

void ErrorReportingTest::codesPassUnchanged_data()
{
    QTest::addColumn<int>("code");
    for (const int code : {-1, int(PartialFailure26), int(PartialFailure27), -1000, 1, 12345,
                           std::numeric_limits<int>::min(), std::numeric_limits<int>::max()})
        QTest::addRow("%d", code) << code;
}

void ErrorReportingTest::codesPassUnchanged()
{
    QFETCH(int, code);
    OpenSensorInstance sensor(TX270);
    scriptCommandFailure("Get_X", code, "x");
    QSignalSpy messages(sensor.get(), &SensorInstance::errorMessage);
    QCOMPARE(int(sensor->sendCommand("Get_X")), code);
    QCOMPARE(int(messages.value(0).value(0).value<ErrorCode>()), code);
}

QTEST_GUILESS_MAIN(ErrorReportingTest)
#include "tst_errorreporting.moc"
