// SPDX-License-Identifier: MIT
#include "sessionstand.h"

#include "simulator/handle.h"

#include <QElapsedTimer>
#include <QRandomGenerator>

#include <memory>
#include <vector>

/// A bench that several programs use: runs of the tool, and this process.
class TestToolSession : public QObject
{
    Q_OBJECT

private:
    SessionStand m_stand;

private Q_SLOTS:
    void cleanup() { SessionStand::stopAll(); }

    void settingsLiveOn();
    void theFileOfASessionMayChange();
    void timeGoesOn();
    void aSensorIsOpenInOneProgram();
    void aSensorMayBeInUseByTheBench();
    void aKilledProgramHoldsNothing();
    void unpluggedStaysUnplugged();
    void aRunningProgramSeesWhatHappens();
    void triggersArriveInTheProgramThatReads();
    void faultsCountInAllPrograms();
    void anEmptyAnswerIsOne();
    void eventsCountCallsOfAllPrograms();
    void aHangingCallIsReleased_data();
    void aHangingCallIsReleased();
    void stoppingReleasesHangingCalls();
    void refusesWrongUse_data();
    void refusesWrongUse();
    void setsTextsExactly();
    void manyProgramsAndSomeKilled();
};

void TestToolSession::settingsLiveOn()
{
    m_stand.start();
    const QString before = m_stand.measrate();
    QCOMPARE(m_stand.setMeasrate(4).code, 0);
    QCOMPARE(m_stand.measrate(), QString("4"));
    QVERIFY(before != "4");
    // What this process sets, the tool reads, and the other way round.
    sondixsim::loadBenchFile("session:test");
    sondixsim::setSettings("1001", "SA_Measrate=2.5");
    QCOMPARE(m_stand.measrate(), QString("2.5"));
    QCOMPARE(m_stand.bench("set 1001 SP_Measrate=1").code, 0);
    Handle sensor(SensorType::TX270);
    QCOMPARE(sensor.openAt("COM3"), 0);
    QCOMPARE(sensor.command("Get_Samplerate"), 0);
    QCOMPARE(sensor.getDouble("SA_Measrate"), 1.0);
}

void TestToolSession::theFileOfASessionMayChange()
{
    m_stand.start();
    m_stand.tool().writeFile("test.json", "no bench any more");
    QCOMPARE(m_stand.setMeasrate(4).code, 0);
    QCOMPARE(m_stand.measrate(), QString("4"));
}

void TestToolSession::timeGoesOn()
{
    m_stand.start(
        R"({ "clock": { "virtual": true }, "sensors": [ { "model": "TX270", "serialNumber": "1001", "rate": 100,
        "place": { "interface": "RS232", "port": "COM3" },
        "signals": [ { "name": "Time", "range": [0, 1000000], "generator":
            { "kind": "ramp", "from": 0, "to": 1000000, "period": 1000000 } } ] } ] })");
    sondixsim::loadBenchFile("session:test");
    QCOMPARE(m_stand.bench("step 10").out.trimmed(), QByteArray("10"));
    QCOMPARE(m_stand.bench("step 1e300").code, 1);
    QCOMPARE(sondixsim::now(), 10.0);
    sondixsim::advance(2.5);
    QCOMPARE(m_stand.bench("step 0").out.trimmed(), QByteArray("12.5"));
    sondixsim::useRealClock(1000.0);
    const double begin = sondixsim::now();
    QVERIFY(begin >= 12.5);
    const ToolResult read = m_stand.run({"read", SessionStand::address, "--frames", "1", "--csv", "-"});
    QCOMPARE(read.code, 0);
    const double value = read.out.trimmed().split('\n').last().split(',').last().toDouble();
    QVERIFY2(value >= begin && value <= sondixsim::now(), read.out.constData());
}

void TestToolSession::aSensorIsOpenInOneProgram()
{
    m_stand.start();
    sondixsim::loadBenchFile("session:test");
    Handle sensor(SensorType::TX270);
    QCOMPARE(sensor.openAt("COM3"), 0);
    const ToolResult refused = m_stand.run({"get", SessionStand::address, "Get_Info"});
    QCOMPARE(refused.code, 4);
    QVERIFY2(refused.err.contains("is in use"), refused.err.constData());
    const QByteArray table = m_stand.bench("show").out;
    QVERIFY2(table.contains(QString("open in %1 tests_cli").arg(QCoreApplication::applicationPid()).toUtf8()),
             table.constData());
    QCOMPARE(m_stand.run({"find", "--type", "TX270"}).code, 3); // on a serial port it is not found then
    QCOMPARE(CloseSensor(sensor), 0);
    QCOMPARE(m_stand.getInfo(), 0);
    QVERIFY(!m_stand.isOpen());
}

// Not by the program that had it before.
void TestToolSession::aSensorMayBeInUseByTheBench()
{
    m_stand.start(R"({ "clock": { "virtual": true }, "sensors": [ { "model": "TX270", "serialNumber": "1001",
        "place": { "interface": "RS232", "port": "COM3" },
        "timeline": [ { "do": "inUse", "at": 5, "for": 10 } ] } ] })");
    QCOMPARE(m_stand.getInfo(), 0);
    QCOMPARE(m_stand.bench("step 7").code, 0);
    QCOMPARE(m_stand.getInfo(), 4);
    const QByteArray table = m_stand.bench("show").out;
    QVERIFY2(table.contains("in use, as the bench file says"), table.constData());
    QVERIFY2(!table.contains("open in"), table.constData());
    QCOMPARE(m_stand.bench("step 10").code, 0);
    QVERIFY(!m_stand.bench("show").out.contains("in use"));
    QCOMPARE(m_stand.getInfo(), 0);
}

void TestToolSession::aKilledProgramHoldsNothing()
{
    m_stand.start();
    QCOMPARE(m_stand.setMeasrate(4).code, 0);
    QProcess reader;
    m_stand.startReading(reader);
    QCOMPARE(m_stand.getInfo(), 4);
    reader.kill();
    QVERIFY(reader.waitForFinished());
    QCOMPARE(m_stand.measrate(), QString("4"));
}

void TestToolSession::unpluggedStaysUnplugged()
{
    m_stand.start();
    QCOMPARE(m_stand.bench("unplug 1001").code, 0);
    QCOMPARE(m_stand.getInfo(), 4);
    QCOMPARE(m_stand.run({"find", "--type", "TX270"}).code, 3);
    QVERIFY(m_stand.bench("show").out.contains("unplugged"));
    QCOMPARE(m_stand.bench("plug 1001").code, 0);
    QCOMPARE(m_stand.getInfo(), 0);
}

void TestToolSession::aRunningProgramSeesWhatHappens()
{
    m_stand.start();
    QProcess reader;
    m_stand.startReading(reader);
    QCOMPARE(m_stand.bench("unplug 1001").code, 0);
    const ToolResult result = ToolRunner::finish(reader);
    QCOMPARE(result.code, 6);
    QVERIFY2(result.err.contains("The connection to the sensor is lost"), result.err.constData());
}

void TestToolSession::triggersArriveInTheProgramThatReads()
{
    m_stand.start();
    QCOMPARE(m_stand.bench("set 1001 SA_TriggerMode=1").code, 0);
    QProcess reader;
    m_stand.tool().start(reader, {"read", SessionStand::address, "--frames", "2", "--csv", "-"});
    QTRY_VERIFY_WITH_TIMEOUT(m_stand.isOpen(), 30000);
    QCOMPARE(m_stand.bench("trigger 1001").code, 0);
    QCOMPARE(m_stand.bench("trigger 1001").code, 0);
    const ToolResult result = ToolRunner::finish(reader);
    QCOMPARE(result.code, 0);
    QCOMPARE(result.out.trimmed().split('\n').size(), 3); // with the names of the columns
}

void TestToolSession::faultsCountInAllPrograms()
{
    m_stand.start(Benches::of(R"({ "model": "TX270", "serialNumber": "1001", "rate": 1000,
        "place": { "interface": "RS232", "port": "COM3" },
        "faults": [ { "command": "Set_Samplerate", "from": 2, "times": 1, "code": -26, "text": "not now" } ] })"));
    QCOMPARE(m_stand.setMeasrate(4).code, 0);
    const ToolResult refused = m_stand.setMeasrate(2.5);
    QCOMPARE(refused.code, 6);
    QVERIFY2(refused.err.contains("not now"), refused.err.constData());
    QCOMPARE(m_stand.setMeasrate(1).code, 0);

    const ToolResult fault = m_stand.run(
        {"bench", "fault", "1001", "Get_Info", "--code", "-5", "--text", "from outside", "--from", "2"});
    QCOMPARE(fault.out.trimmed(), QByteArray("2"));
    QCOMPARE(m_stand.getInfo(), 0);
    QCOMPARE(m_stand.getInfo(), 6);
    QCOMPARE(m_stand.bench("clear 2").code, 0);
    QCOMPARE(m_stand.getInfo(), 0);
    const ToolResult none = m_stand.bench("clear 2");
    QCOMPARE(none.code, 1);
    QVERIFY2(none.err.contains("there is no fault 2"), none.err.constData());
}

void TestToolSession::anEmptyAnswerIsOne()
{
    m_stand.start();
    const QStringList get{"get", SessionStand::address, "Get_Samplerate"};
    QVERIFY(!m_stand.run(get).out.isEmpty());
    QCOMPARE(m_stand.run({"bench", "fault", "1001", "Get_Samplerate", "--answer", ""}).code, 0);
    QCOMPARE(m_stand.run(get).out, QByteArray());
}

void TestToolSession::eventsCountCallsOfAllPrograms()
{
    m_stand.start(R"({ "clock": { "virtual": true }, "sensors": [ { "model": "TX270", "serialNumber": "1001",
        "place": { "interface": "RS232", "port": "COM3" },
        "timeline": [ { "do": "unplug", "command": "Set_Samplerate", "call": 3, "for": 5 } ] } ] })");
    sondixsim::loadBenchFile("session:test");
    Handle sensor(SensorType::TX270);
    QCOMPARE(m_stand.setMeasrate(4).code, 0);
    QCOMPARE(sensor.openAt("COM3"), 0);
    QCOMPARE(SetParameterDouble(sensor, "SP_Measrate", 1.0), 0);
    QCOMPARE(sensor.command("Set_Samplerate"), 0); // in this process
    QCOMPARE(CloseSensor(sensor), 0);
    QCOMPARE(m_stand.setMeasrate(2.5).code, 6); // in a third one
    // It has happened in all of them.
    QVERIFY(sensor.openAt("COM3") != 0);
    QCOMPARE(m_stand.getInfo(), 4);
    sondixsim::advance(6.0);
    QCOMPARE(m_stand.measrate(), QString("1"));
    QCOMPARE(m_stand.setMeasrate(2.5).code, 0); // the fourth one
}

void TestToolSession::aHangingCallIsReleased_data()
{
    QTest::addColumn<QString>("clear");
    QTest::newRow("all faults") << "clear";
    QTest::newRow("this fault") << "clear 1";
}

void TestToolSession::aHangingCallIsReleased()
{
    QFETCH(const QString, clear);
    m_stand.start();
    QCOMPARE(m_stand.bench("fault 1001 Get_Info --hang").out.trimmed(), QByteArray("1"));
    QProcess process;
    m_stand.tool().start(process, {"get", SessionStand::address, "Get_Info"});
    QTRY_VERIFY_WITH_TIMEOUT(m_stand.isOpen(), 30000);
    QVERIFY(!process.waitForFinished(200));
    QCOMPARE(m_stand.bench(clear).code, 0);
    QCOMPARE(ToolRunner::finish(process).code, 0);
}

void TestToolSession::stoppingReleasesHangingCalls()
{
    m_stand.start();
    QCOMPARE(m_stand.bench("fault 1001 Get_Info --hang").code, 0);
    QProcess process;
    m_stand.tool().start(process, {"get", SessionStand::address, "Get_Info"});
    QTRY_VERIFY_WITH_TIMEOUT(m_stand.isOpen(), 30000);
    QCOMPARE(m_stand.bench("stop test").code, 0);
    QCOMPARE(ToolRunner::finish(process).code, 6); // the sensor is gone
}

void TestToolSession::refusesWrongUse_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("code");
    QTest::addColumn<QByteArray>("sentence");
    const auto row = [](const char *line, int code, const char *sentence) {
        QTest::newRow(line) << QString(line).split(' ') << code << QByteArray(sentence);
    };
    row("bench start --name test", 1, "the bench session \"test\" is already running");
    row("bench start --name a/b", 1, "is no name of a bench session");
    row("bench start nowhere.json", 1, "nowhere.json: ");
    row("bench stop other", 1, "there is no bench session \"other\"");
    row("bench unplug 4711", 1, "the bench has no sensor \"4711\"");
    row("bench unplug 1001 --session other", 1, "there is no bench session \"other\"");
    row("bench unplug 1001 --bench test.json", 2, "is no session");
    row("bench fault 1001 Get_Info", 2, "the fault has no effect");
    row("bench fault 1001 Get_Info --code 0", 1, "a fault needs a \"code\" other than 0");
    row("bench fault 4711 Get_Info --code -1", 1, "the bench has no sensor \"4711\"");
    row("bench fault 1001 Get_Info --code -1 --from 0", 1, "has a number from 1 on");
    row("bench fault 1001 Get_Info --code -1 --times 0", 1, "a fault hits 1 call or more");
    row("bench fault 1001 DataAvail --damage cut", 1, "only SensorCommand and OpenSensor have an answer");
    row("bench fault 1001 CreateSensorInstance --code -1", 1, "CreateSensorInstance is called before");
    row("bench set 1001 SA_Measrate", 2, "'SA_Measrate' is no setting");
    row("bench set 1001 SA_Colour=1", 1, "TX270 has no setting \"SA_Colour\"");
    row("bench set 1001 SA_Measrate=1e9", 1, "\"SA_Measrate\" must be from");
    row("bench step 1", 1, "the clock of the bench is not virtual");
    row("bench step -1", 2, "-1");
}

void TestToolSession::refusesWrongUse()
{
    QFETCH(const QStringList, arguments);
    QFETCH(const int, code);
    QFETCH(const QByteArray, sentence);
    m_stand.start();
    const ToolResult result = m_stand.run(arguments);
    QVERIFY2(result.err.contains(sentence), result.err.constData());
    QCOMPARE(result.code, code);
    QCOMPARE(result.out, QByteArray());
}

// A shell passes any character: the sensor has the same text as after a command.
void TestToolSession::setsTextsExactly()
{
    m_stand.start();
    const auto shown = [this] {
        return m_stand.run({"get", m_stand.address, "Get_SensorName", "SA_SensorName"}).out.trimmed();
    };
    for (const QString text : {"a b; SA_Measrate=4", "a \"b\" c\\d", "\"quoted\"", "4"}) {
        const ToolResult set = m_stand.run({"bench", "set", "1001", "SA_SensorName=" + text});
        QCOMPARE(set.err, QByteArray());
        QCOMPARE(set.code, 0);
        const QByteArray bySet = shown();
        QCOMPARE(m_stand.run({"bench", "set", "1001", "SA_SensorName=other"}).code, 0);
        QCOMPARE(shown(), QByteArray("other"));
        QCOMPARE(m_stand.run({"set", m_stand.address, "Set_SensorName", "SP_SensorName=" + text}).code, 0);
        QCOMPARE(bySet, shown());
    }
}

// Each program sets its own sensor to one number after another. Some are killed.
void TestToolSession::manyProgramsAndSomeKilled()
{
    struct Program
    {
        QString address;
        std::unique_ptr<QProcess> process;
        double sent = 0.0;
        QVector<double> possible; // the number that the sensor has
    };
    std::vector<Program> programs;
    QByteArrayList sensors;
    const int count = 10;
    for (int i = 0; i < count; ++i) {
        sensors +=
            QString(R"({ "model": "TX270", "serialNumber": "%1", "place": { "interface": "WinUSB", "device": %1 },
            "limits": { "SA_Measrate": [0, 1000000] } })")
                .arg(i)
                .toUtf8();
        programs.push_back({QString("TX270@WinUSB,device=%1").arg(i), nullptr, 0.0, {}});
    }
    m_stand.start(Benches::of(sensors.join(",")));
    QRandomGenerator random(1);
    QElapsedTimer time;
    time.start();
    int killed = 0;
    const int durationMs = qEnvironmentVariableIntValue("SONDIXQT_SESSION_SOAK_MS");
    while (!time.hasExpired(durationMs > 0 ? durationMs : 4000)) {
        for (Program &program : programs) {
            if (program.process && program.process->state() != QProcess::NotRunning)
                continue;
            if (program.process && program.process->exitStatus() == QProcess::NormalExit) {
                QVERIFY2(program.process->exitCode() == 0, program.process->readAllStandardError().constData());
                program.possible = {program.sent};
            }
            program.process = std::make_unique<QProcess>();
            program.possible += ++program.sent;
            m_stand.tool().start(*program.process, {"set", program.address, "Set_Samplerate",
                                                    QString("SP_Measrate=%1").arg(program.sent)});
        }
        QProcess &victim = *programs[static_cast<size_t>(random.bounded(count))].process;
        if (random.bounded(5) == 0 && victim.state() == QProcess::Running) {
            victim.kill();
            victim.waitForFinished();
            ++killed;
        }
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents, 20);
    }
    QVERIFY(killed > 0);
    for (Program &program : programs) {
        program.process->waitForFinished();
        if (program.process->exitStatus() == QProcess::NormalExit && program.process->exitCode() == 0)
            program.possible = {program.sent};
        const ToolResult result = m_stand.run({"get", program.address, "Get_Samplerate", "SA_Measrate"});
        QVERIFY2(result.code == 0, result.err.constData());
        QVERIFY2(
            program.possible.contains(result.out.trimmed().toDouble()),
            qPrintable(QString("%1: %2, sent %3").arg(program.address, QString(result.out)).arg(program.sent)));
    }
    QVERIFY(!m_stand.isOpen());
}

QTEST_GUILESS_MAIN(TestToolSession)
#include "tst_toolsession.moc"
