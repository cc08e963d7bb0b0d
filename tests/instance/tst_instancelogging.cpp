// SPDX-License-Identifier: MIT
#include <SondixQt/SensorInstance>

#include "support/callrecorder.h"
#include "support/scripting.h"
#include "support/testbench.h"

#include <QtTest>

using namespace SondixQt;

/// Enabling, disabling and writing the log of the sensor-access library.
class InstanceLoggingTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();

    void everythingIsPassedOn();
    void shortFormChoosesOneFileOrASeries_data();
    void shortFormChoosesOneFileOrASeries();
    void applicationNameIsWrittenWhenThereIsOne();
    void failedSwitchIsReported();
    void aNameThatCannotBeWrittenIsAnError();
    void switchingOffSendsACommand();
    void failedSwitchingOffSendsNoCommand();
    void linesAreLatin1();
    void callsAreLoggedOnDemand();

private:
    QTemporaryDir folder;
};

void InstanceLoggingTest::init()
{
    loadTestBench();
    QVERIFY(folder.isValid());
}

void InstanceLoggingTest::cleanup()
{
    setUsedByApplicationName(QString());
}

void InstanceLoggingTest::everythingIsPassedOn()
{
    const QString file = folder.filePath("a.log");
    SensorInstance sensor(TX270);
    QVERIFY(!sensor.GetLogging());
    CallRecorder recorder;
    QCOMPARE(sensor.enableLogging(file, SensorInstance::LogLevel(3), SensorInstance::LogType(5), true, false, 7),
             NoError);
    QVERIFY(sensor.GetLogging());
    QCOMPARE(recorder.take(), QStringList(QString("EnableLogging(1, 5, 3, \"%1\", 1, 0, 7)").arg(file)));
    QCOMPARE(sensor.enableLogging(file, SensorInstance::LogLevel(3), SensorInstance::LogType(5), false, true, 7),
             NoError);
    QCOMPARE(recorder.take(), QStringList(QString("EnableLogging(1, 5, 3, \"%1\", 0, 1, 7)").arg(file)));
}

void InstanceLoggingTest::shortFormChoosesOneFileOrASeries_data()
{
    QTest::addColumn<QString>("fileName");
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("flag1");
    QTest::newRow("no placeholder") << "a.log" << 3 << 1;
    QTest::newRow("placeholder") << "a%[10].log" << 3 << 0;
    QTest::newRow("count 1") << "a%[10].log" << 1 << 0;
    QTest::newRow("count 0") << "a%[10].log" << 0 << 1;
    QTest::newRow("negative count") << "a%[10].log" << -1 << 1;
    QTest::newRow("placeholder without a number") << "a%[].log" << 3 << 1;
    QTest::newRow("placeholder with a letter") << "a%[x].log" << 3 << 1;
}

void InstanceLoggingTest::shortFormChoosesOneFileOrASeries()
{
    QFETCH(QString, fileName);
    QFETCH(int, count);
    QFETCH(int, flag1);
    const QString file = folder.filePath(fileName);
    SensorInstance sensor(TX270);
    CallRecorder recorder;
    sensor.enableLogging(file, count);
    QCOMPARE(
        recorder.take().value(0),
        QString("EnableLogging(1, 2147483647, 2147483647, \"%1\", %2, 0, %3)").arg(file).arg(flag1).arg(count));
}

void InstanceLoggingTest::applicationNameIsWrittenWhenThereIsOne()
{
    setUsedByApplicationName("Line 4");
    SensorInstance sensor(TX270);
    CallRecorder recorder;
    QCOMPARE(sensor.enableLogging(folder.filePath("a.log"), 0), NoError);
    const QStringList calls = recorder.take();
    QCOMPARE(calls.size(), 2);
    QCOMPARE(calls.at(1), "LogToFile(32, \"SondixQt::SensorInstance::enableLogging\", \"Line 4\")");
}

void InstanceLoggingTest::failedSwitchIsReported()
{
    scriptFailure("EnableLogging", -20, "cannot write");
    SensorInstance sensor(TX270);
    QString errorText;
    QCOMPARE(int(sensor.enableLogging(folder.filePath("a.log"), 0, &errorText)), -20);
    QCOMPARE(errorText, "cannot write");
    QVERIFY(sensor.GetLogging());

    // The application name is logged before the error is read.
    setUsedByApplicationName("Line 4");
    CallRecorder recorder;
    QCOMPARE(int(sensor.enableLogging(folder.filePath("a.log"), 0, &errorText)), -20);
    const QStringList calls = recorder.take();
    QCOMPARE(calls.size(), 3);
    QVERIFY(calls.at(1).startsWith("LogToFile(32, "));
    QCOMPARE(calls.at(2), "GetError(4096)");
}

// On Windows file names are passed to C libraries in a code page, which does not contain all characters.
void InstanceLoggingTest::aNameThatCannotBeWrittenIsAnError()
{
    const QString fileName = QStringLiteral("Pr\u00FCfstand \u6D4B\u91CF.log");
    QDir logs(folder.path());
    QVERIFY(logs.mkdir("any") && logs.cd("any"));
    SensorInstance sensor(TX270);
    QString errorText;
    const ErrorCode result = sensor.enableLogging(logs.filePath(fileName), 0, &errorText);
    const QStringList files = logs.entryList(QDir::Files);
    QCOMPARE(files, result == NoError ? QStringList(fileName) : QStringList());
    QCOMPARE(errorText.isEmpty(), result == NoError);
    QCOMPARE(result == NoError, QFile::decodeName(QFile::encodeName(fileName)) == fileName);
}

void InstanceLoggingTest::switchingOffSendsACommand()
{
    SensorInstance sensor(TX270);
    QCOMPARE(sensor.enableLogging(folder.filePath("a.log"), 0), NoError);
    CallRecorder recorder;
    QCOMPARE(sensor.disableLogging(), NoError);
    QVERIFY(!sensor.GetLogging());
    QCOMPARE(recorder.take(),
             QStringList("SetParameterInt(\"IP_EnableLogging\", 0)") + commandCalls("Enable_Logging"));
}

void InstanceLoggingTest::failedSwitchingOffSendsNoCommand()
{
    SensorInstance sensor(TX270);
    scriptParameterFailure("IP_EnableLogging", -4);
    CallRecorder recorder;
    QCOMPARE(int(sensor.disableLogging()), -4);
    QCOMPARE(recorder.take().filter("S_Command"), QStringList());
}

void InstanceLoggingTest::linesAreLatin1()
{
    SensorInstance sensor(TX270);
    CallRecorder recorder;
    sensor.logToFile(SensorInstance::LogLevel(4), "here", "what");
    QCOMPARE(recorder.take(), QStringList("LogToFile(4, \"here\", \"what\")"));
    sensor.logToFile(SensorInstance::LogInformation, "here", QStringLiteral("\u00b5m"));
    const std::vector<sondixsim::Call> calls = sondixsim::calls();
    QCOMPARE(calls.size(), std::size_t(1));
    QVERIFY(calls[0].text().find("\xb5m") != std::string::npos);
}

void InstanceLoggingTest::callsAreLoggedOnDemand()
{
    static QStringList lines;
    lines.clear();
    const QtMessageHandler previous =
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext &context, const QString &text) {
            if (qstrcmp(context.category, "SondixQt.SensorInstance.Calls") == 0)
                lines += text;
        });
    {
        OpenSensorInstance silent(TX270); // off by default
        silent->close();
    }
    const QStringList before = lines;
    QLoggingCategory::setFilterRules("SondixQt.SensorInstance.Calls.debug=true");
    {
        OpenSensorInstance sensor(TX270);
        lines.clear();
        (void)sensor->sendCommand("Get_LaserPower");
        (void)sensor->sendCommand("Get_Nothing");
        sensor->close();
    }
    QLoggingCategory::setFilterRules({});
    qInstallMessageHandler(previous);
    QCOMPARE(before, QStringList());
    QCOMPARE(lines.size(), 3);
    QVERIFY(lines.at(0).endsWith("TX270 Get_LaserPower -> 0"));
    QVERIFY(lines.at(1).contains("TX270 Get_Nothing -> -"));
    QVERIFY(lines.at(2).endsWith("TX270 close -> 0"));
}

QTEST_GUILESS_MAIN(InstanceLoggingTest)
#include "tst_instancelogging.moc"
