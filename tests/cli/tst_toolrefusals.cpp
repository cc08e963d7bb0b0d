// SPDX-License-Identifier: MIT
#include "benches.h"
#include "toolrunner.h"

namespace {

const QByteArray rg52x = "RG52x@RS232,port=COM4";
const QByteArray rg53x = "RG53x@RS232,port=COM5";

QByteArray fault(const char *command, const char *more = R"("text": "it is tired")")
{
    return QByteArray(R"({ "command": ")") + command + R"(", "code": -77, )" + more + "}";
}

/// The two models with tracking, both or \a only one with \a faults.
QByteArray trackers(const QByteArray &faults = QByteArray(), const QByteArray &only = QByteArray())
{
    const auto more = [&](const QByteArray &address) {
        return R"(, "faults": [)" + (only.isEmpty() || only == address ? faults : QByteArray()) + "] }";
    };
    return Benches::of(R"({ "model": "RG52x", "serialNumber": "52",
                            "place": { "interface": "RS232", "port": "COM4" })" +
                       more(rg52x) + R"(, { "model": "RG53x", "serialNumber": "53",
                            "place": { "interface": "RS232", "port": "COM5" })" +
                       more(rg53x));
}

} // namespace

/// Tracking is restarted after each command of these models. That must not hide that a command was refused.
class TestToolRefusals : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void aRefusalIsReported_data();
    void aRefusalIsReported();
    void aRefusalWithoutATextIsReported();
    void aCommandThatIsNotSentIsARefusal();
    void aFailingRestartIsNoRefusal_data();
    void aFailingRestartIsNoRefusal();
    void whatIsAcceptedIsDone();
};

void TestToolRefusals::aRefusalIsReported_data()
{
    QTest::addColumn<QByteArray>("address");
    QTest::addColumn<QString>("line");
    QTest::addColumn<QByteArray>("sentence");
    const auto row = [](const char *line, const char *sentence) {
        for (const QByteArray &address : {rg52x, rg53x})
            QTest::addRow("%.5s: %s", address.constData(), line)
                << address << QString::fromLatin1(line) << QByteArray("sondixqt: ") + sentence;
    };
    row("set Set_Autostart SP_AutostartCommand=much", "the sensor refuses Set_Autostart: ");
    row("set Set_Weather SP_Weather=1", "the sensor refuses Set_Weather: ");
    row("exec Set_Autostart SP_AutostartCommand=much", "the sensor refuses Set_Autostart: ");
    row("exec Set_Autostart SP_Weather=1", "the sensor refuses Set_Autostart: ");
    row("exec Get_Weather", "the sensor refuses Get_Weather: ");
    row("get Get_Weather", "the sensor refuses Get_Weather: ");
    row("mode 1", "the sensor refuses the measuring mode 1: ");
    row("trigger off", "the sensor refuses to switch the trigger off: ");
    row("sync off", "the sensor refuses to switch the synchronisation off: ");
    QTest::newRow("average") << rg53x << "set Set_Average SP_Average=99999"
                             << QByteArray("sondixqt: the sensor refuses Set_Average: ");
}

void TestToolRefusals::aRefusalIsReported()
{
    QFETCH(QByteArray, address);
    QFETCH(QString, line);
    QFETCH(QByteArray, sentence);
    const ToolRunner runner(trackers());
    for (const char *option : {"", " --json"}) {
        const ToolResult result = runner.run(with(address, line + option));
        QVERIFY2(result.code == 6, result.err.constData());
        QCOMPARE(result.out, QByteArray());
        QCOMPARE(linesOf(result.err).size(), 1);
        QVERIFY2(result.err.startsWith(sentence), result.err.constData());
    }
}

void TestToolRefusals::aRefusalWithoutATextIsReported()
{
    const ToolRunner runner(trackers(fault("Set_Autostart", R"("text": "")")));
    for (const QByteArray &address : {rg52x, rg53x}) {
        const ToolResult result = runner.run(with(address, "set Set_Autostart SP_AutostartCommand=0"));
        QCOMPARE(result.code, 6);
        QCOMPARE(result.err, QByteArray("sondixqt: the sensor refuses Set_Autostart: error -77\n"));
    }
}

void TestToolRefusals::aCommandThatIsNotSentIsARefusal()
{
    // From the second time on, because opening the sensor already stops and starts it once.
    const ToolRunner runner(trackers(fault("StopTracking", R"("text": "it cannot stop", "from": 2)")));
    const ToolResult result = runner.run(with(rg53x, "set Set_Average SP_Average=10"));
    QCOMPARE(result.code, 6);
    QCOMPARE(result.err, QByteArray("sondixqt: the sensor refuses Set_Average: it cannot stop\n"));
}

void TestToolRefusals::aFailingRestartIsNoRefusal_data()
{
    QTest::addColumn<QByteArray>("address");
    QTest::addColumn<QByteArray>("restart");
    QTest::newRow("RG52x") << rg52x << QByteArray("DistanceTracking10Hz");
    QTest::newRow("RG53x") << rg53x << QByteArray("DistanceTracking");
}

void TestToolRefusals::aFailingRestartIsNoRefusal()
{
    QFETCH(QByteArray, address);
    QFETCH(QByteArray, restart);
    const ToolRunner runner(
        trackers(fault(restart.constData(), R"("text": "it does not start", "from": 2)"), address));
    const ToolResult set = runner.run(with(address, "set Set_Autostart SP_AutostartCommand=2"));
    QVERIFY2(set.code == 0, set.err.constData());
    QCOMPARE(linesOf(set.err).size(), 1);
    QVERIFY2(set.err.contains("the sensor did not start to measure again after Set_Autostart: it does not start"),
             set.err.constData());
    const ToolResult get = runner.run(with(address, "get Get_Autostart SA_AutostartCommand"));
    QCOMPARE(get.code, 0);
    QCOMPARE(get.out, QByteArray("2\n"));
}

void TestToolRefusals::whatIsAcceptedIsDone()
{
    const ToolRunner runner(trackers());
    for (const QByteArray &address : {rg52x, rg53x}) {
        const ToolResult set = runner.run(with(address, "set Set_Autostart SP_AutostartCommand=2"));
        QCOMPARE(set.code, 0);
        QCOMPARE(set.err, QByteArray());
        QCOMPARE(runner.run(with(address, "exec Get_Autostart")).out.simplified(),
                 QByteArray("SA_AutostartCommand 2"));
        const ToolResult read = runner.run(with(address, "read -n 2 --csv -"));
        QVERIFY2(read.code == 0, read.err.constData());
        QCOMPARE(linesOf(read.out).size(), 3);
    }
}

QTEST_GUILESS_MAIN(TestToolRefusals)
#include "tst_toolrefusals.moc"
