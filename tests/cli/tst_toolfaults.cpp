// SPDX-License-Identifier: MIT
#include "benches.h"
#include "toolrunner.h"

#include "cli/console.h"
#include "cli/exitcode.h"
#include "cli/tool.h"
#include "support/faultkinds.h"

#include <QRegularExpression>

#include <algorithm>
#include <cstdio>
#include <optional>

namespace {

/// What a run of the tool has done.
struct ToolRun
{
    int code = -1;
    QByteArray out;
    QByteArray err;
    QSet<QString> functions; ///< of the sensor-access library that it has called
    QString averaging;       ///< the setting of the laser at the end
    QString measureMode;     ///< the setting of the controller at the end
};

QSet<QByteArray> wordsOf(const QByteArray &text)
{
    const QList<QByteArray> words = text.simplified().split(' ');
    return {words.begin(), words.end()};
}

/// The numbers of the frames that 'read --csv -' has printed; an empty list if a line is no frame.
QList<int> framesOf(const QByteArray &csv)
{
    QList<int> frames;
    const QList<QByteArray> lines = csv.trimmed().split('\n').mid(1);
    for (const QByteArray &line : lines) {
        bool isNumber = false;
        frames += qRound(line.split(',').last().toDouble(&isNumber));
        if (!isNumber)
            return {};
    }
    return frames;
}

/// Information and the states of trigger and synchronisation are read when a sensor is opened. If this fails, and GetError
/// says nothing of it, the tool does not know.
bool isUnknown(const FaultKind &kind, const QString &line)
{
    return kind.fault.silent && QStringList{"info", "trigger", "sync"}.contains(line.section(' ', 0, 0));
}

/// Fewer runs: other kinds differ from these only in what a single failure returns.
bool isTriedOnce(const FaultKind &kind)
{
    return kind.name == QByteArray("code") || kind.name == QByteArray("no answer");
}

} // namespace

/// The commands of the tool with every kind of fault in every function of the sensor-access library that they call. They run
/// in this process: there are too many runs to start a program for each.
class TestToolFaults : public QObject
{
    Q_OBJECT

private:
    const QTemporaryDir m_folder;

    QByteArray contentOf(const QString &name) const
    {
        QFile file(m_folder.filePath(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    ToolRun run(const QString &line, const sondixsim::Fault *fault = nullptr) const;
    static QString wrongIn(const ToolRun &run, const ToolRun &usual, const FaultKind &kind,
                           const sondixsim::Fault &fault, const QString &line);

private Q_SLOTS:
    void theCommandsCallTheseFunctions();
    void endsAsDocumented_data();
    void endsAsDocumented();
    void readsWhatCameBeforeAFailure_data();
    void readsWhatCameBeforeAFailure();
    void searchesEnd_data();
    void searchesEnd();
};

/// \a line: what follows the name of the program, with %1 and %2 for the addresses of the laser and the controller, and
/// %3 for a file of values.
ToolRun TestToolFaults::run(const QString &line, const sondixsim::Fault *fault) const
{
    sondixsim::loadBench(
        R"({ "clock": { "virtual": true, "step": 0.1 }, "lineSpeed": false, "search": { "RS232": 0.01 },
        "sensors": [
            { "model": "TX270", "serialNumber": "1001", "place": { "interface": "RS232", "port": "COM3" }, "rate": 1000,
              "signals": [ { "name": "Number", "range": [0, 1000000], "rawRange": [0, 1000000],
                             "generator": { "kind": "counter", "modulo": 1000000 } } ],
              "expect": [ { "setting": "SA_AveragingNumber", "value": 4 } ] },
            { "model": "CC430", "serialNumber": "2002", "place": { "interface": "TCP/IP", "ip": "192.168.0.10" },
              "expect": [ { "setting": "SA_MeasureMode", "value": 1 } ] } ] })");
    sondixsim::recordCalls(true);
    if (fault)
        sondixsim::inject(*fault);
    std::optional<HangReleaser> releaser;
    if (fault && fault->hang)
        releaser.emplace();

    ToolRun run;
    std::FILE *const out = std::fopen(QFile::encodeName(m_folder.filePath("out")).constData(), "wb");
    std::FILE *const err = std::fopen(QFile::encodeName(m_folder.filePath("err")).constData(), "wb");
    if (!out || !err)
        qFatal("cannot write to %s", qPrintable(m_folder.path()));
    Console::useStreams(out, err);
    const QtMessageHandler before = qInstallMessageHandler(onLogMessage);
    QStringList words = line.split(' ');
    words.replaceInStrings("%1", Benches::laserAddress);
    words.replaceInStrings("%2", "CC430@TCP/IP,address=192.168.0.10");
    run.code = runTool(words.replaceInStrings("%3", m_folder.filePath("values.csv")));
    qInstallMessageHandler(before);
    Console::useStreams(stdout, stderr);
    std::fclose(out);
    std::fclose(err);
    const QRegularExpression timeOfRun("\"StorageTime\": .*\n");
    run.out = QString::fromUtf8(contentOf("out")).remove(timeOfRun).toUtf8();
    run.err = contentOf("err");
    for (const sondixsim::Call &call : sondixsim::calls())
        run.functions += QString::fromStdString(call.function);
    run.averaging = QString::fromStdString(sondixsim::expectations().at(0).found);
    run.measureMode = QString::fromStdString(sondixsim::expectations().at(1).found);
    return run;
}

/// What must not be so; empty: nothing is wrong.
QString TestToolFaults::wrongIn(const ToolRun &run, const ToolRun &usual, const FaultKind &kind,
                                const sondixsim::Fault &fault, const QString &line)
{
    if (kind.effect == FaultKind::Delays)
        return run.code != usual.code || run.out != usual.out ? "a delay changes the result" : QString();
    const QByteArray message = run.err.mid(run.err.lastIndexOf("sondixqt: ")).trimmed();
    if (run.code != 0 && !message.startsWith("sondixqt: "))
        return "there is no message";
    if (run.code != 0 && !QList<int>{1, 4, 6}.contains(run.code))
        return "this is no exit code of a command that a sensor refuses";
    if ((line.contains(" Set_Averaging ") && run.code == 0 && run.averaging != "4") ||
        (line.startsWith("mode %2") && run.code == 0 && run.measureMode != "1"))
        return "it was not set";
    // Some characters of an answer, or all of it, are others: what is printed cannot be known.
    const bool isForeign = QByteArray("other answer garbled cut").contains(kind.name);
    if (!isForeign && !usual.out.isEmpty()) {
        QSet<QByteArray> invented = wordsOf(run.out) - wordsOf(usual.out) - QSet<QByteArray>{""};
        if (line.startsWith("mode "))
            invented -= "null,"; // the present mode is not known
        if (!invented.isEmpty())
            return "invented: " + QString::fromUtf8(invented.values().join(' '));
    }
    if (kind.effect != FaultKind::Fails)
        return {};
    if (run.code == 0 && run.out != usual.out && run.err.isEmpty())
        return "a part of the output is missing, and nobody is told";
    if (fault.times > 0)
        return {};
    const QByteArray function = QByteArray::fromStdString(fault.function);
    const QMap<QByteArray, int> codes{{"CreateSensorInstance", 1}, {"OpenSensor", 4}, {"SetParameterString", 4}};
    if (codes.contains(function) && run.code != codes[function])
        return "this must not succeed";
    // The modes of a model are known without its sensor.
    if (function == "SensorCommand" && run.code != 4 && run.code != 6 && !line.startsWith("mode --json"))
        return "all commands fail";
    const bool isTold = codes.contains(function) || function == "SensorCommand";
    if (isTold && !fault.silent && !run.err.contains(QByteArray::fromStdString(fault.text)))
        return "the reason is missing";
    return {};
}

void TestToolFaults::theCommandsCallTheseFunctions()
{
    QSet<QString> called;
    for (const char *line : {"info --json %1", "get -v %1 Get_Nothing", "read %1 --frames 50 --csv -"})
        called += run(line).functions;
    const QStringList exported = exportedFunctions(SONDIX_EXPORTS);
    QStringList others;
    for (const QString &function : exported) {
        if (!called.contains(function))
            others += function;
    }
    QCOMPARE(others, QStringList({"SetParameterDouble", "SetParameterBinary", "GetParameterBinary",
                                  "ClearAllParameters", "TransferData", "LogToFile"}));
}

void TestToolFaults::endsAsDocumented_data()
{
    QTest::addColumn<int>("code");
    QTest::newRow("info --json %1") << 0;
    QTest::newRow("params --json %1") << 0;
    QTest::newRow("get %1 Get_Samplerate SA_Measrate") << 0;
    QTest::newRow("get -v %1 Get_Nothing") << 6;
    QTest::newRow("set %1 Set_Averaging SP_AveragingNumber=4") << 0;
    QTest::newRow("exec --json %1 Get_Samplerate") << 0;
    QTest::newRow("exec %1 Set_Averaging SP_AveragingNumber=4") << 0;
    QTest::newRow("trigger %1") << 0;
    QTest::newRow("mode --json %2") << 0;
    QTest::newRow("mode %2 Thickness") << 0;
    QTest::newRow("sync --json %2") << 0;
    QTest::newRow("video --json %2") << 0;
    QTest::newRow("video --video-mode --on 0 --line %3 %2") << 0;
}

void TestToolFaults::endsAsDocumented()
{
    QFETCH(const int, code);
    const QString line = QTest::currentDataTag();
    const ToolRun usual = run(line);
    QVERIFY2(usual.code == code, usual.err.constData());
    for (const QString &function : usual.functions) {
        for (const FaultKind &kind : faultKinds()) {
            for (const int times : {1, -1}) {
                if (!canAffect(kind, function) || isUnknown(kind, line) || (times == 1 && !isTriedOnce(kind)))
                    continue;
                sondixsim::Fault fault = kind.fault;
                fault.function = function.toStdString();
                fault.times = times;
                const ToolRun met = run(line, &fault);
                const QString wrong = wrongIn(met, usual, kind, fault, line);
                const QString where = QString("%1, %2, %3 calls: %4\nexit code %5\n")
                                          .arg(function, kind.name)
                                          .arg(times)
                                          .arg(wrong)
                                          .arg(met.code);
                QVERIFY2(wrong.isEmpty(), (where.toUtf8() + met.out + met.err).constData());
            }
        }
    }
}

void TestToolFaults::readsWhatCameBeforeAFailure_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("function");
    for (const char *line : {"read %1 --frames 150 --csv -", "record %1 --frames 150 --no-head -o %3"})
        for (const char *function : {"DataAvail", "TransferDataTS"})
            QTest::addRow("%s: %s", line, function) << line << function;
}

void TestToolFaults::readsWhatCameBeforeAFailure()
{
    QFETCH(const QString, line);
    QFETCH(const QString, function);
    for (const FaultKind &kind : faultKinds()) {
        for (const int from : {1, 2}) {
            if (!QByteArrayList{"hang", "code", "silent code"}.contains(kind.name))
                continue;
            sondixsim::Fault fault = kind.fault;
            fault.function = function.toStdString();
            fault.from = from;
            QFile::remove(m_folder.filePath("values.csv"));
            const ToolRun met = run(line, &fault);
            const QByteArray values = line.contains("%3") ? contentOf("values.csv") : met.out;
            const QByteArray where =
                QString("%1 from call %2: exit code %3\n").arg(kind.name).arg(from).arg(met.code).toUtf8() +
                values.left(200) + met.err;
            const QList<int> frames = framesOf(values);
            for (int i = 0; i < frames.size(); ++i)
                QVERIFY2(frames[i] == i, where.constData());
            const bool isWhole = kind.effect == FaultKind::Delays;
            QVERIFY2(met.code == (isWhole ? 0 : 6), where.constData());
            QVERIFY2(isWhole ? frames.size() == 150 : frames.size() < 150, where.constData());
            if (!isWhole && !fault.silent)
                QVERIFY2(met.err.contains("told to fail"), where.constData());
        }
    }
}

void TestToolFaults::searchesEnd_data()
{
    QTest::addColumn<QByteArray>("function");
    QTest::addColumn<QByteArray>("kind");
    QTest::addColumn<QList<int>>("codes");
    const auto row = [](const QByteArray &function, const QByteArray &kind, const QList<int> &codes) {
        QTest::newRow((function + ", " + kind).constData()) << function << kind << codes;
    };
    row("CreateSensorInstance", "code", {1});
    row("SetParameterInt", "code", {1});
    row("GetParameters", "code", {3});
    row("SensorCommand", "code", {1});
    row("SensorCommand", "hang", {0});
    row("SensorCommand", "no answer", {5});
    row("SensorCommand", "garbled", {3, 5});
}

void TestToolFaults::searchesEnd()
{
    QFETCH(const QByteArray, function);
    QFETCH(const QByteArray, kind);
    QFETCH(const QList<int>, codes);
    const auto found = std::find_if(faultKinds().begin(), faultKinds().end(),
                                    [&](const FaultKind &any) { return any.name == kind; });
    QVERIFY(found != faultKinds().end());
    sondixsim::Fault fault = found->fault;
    fault.function = function.toStdString();
    const ToolRun met = run("find --type TX270 --interface RS232 --timeout 1", &fault);
    QVERIFY2(codes.contains(met.code), met.err.constData());
    QVERIFY(!met.err.isEmpty());
    QCOMPARE(met.out.count('\n'), met.code == 0 ? 1 : 0);
    QCOMPARE(met.out.contains("COM3"), met.code == 0);
}

QTEST_GUILESS_MAIN(TestToolFaults)
#include "tst_toolfaults.moc"
