// SPDX-License-Identifier: MIT
#include "support/faultkinds.h"

#include <SondixQt/SensorInstance>

#include <QElapsedTimer>
#include <QLoggingCategory>
#include <QTemporaryDir>
#include <QtTest>

#include <optional>

using namespace SondixQt;

namespace {

const char *const serialNumber = "1001";
constexpr double rate = 1000.0;

const char *const faultBench = R"({ "clock": { "virtual": true }, "sensors": [
    { "model": "TX270", "serialNumber": "1001", "place": { "interface": "RS232", "port": "COM3" }, "rate": 1000,
      "signals": [ { "name": "Number", "range": [0, 1000000], "rawRange": [0, 1000000],
                     "generator": { "kind": "counter", "modulo": 1000000 } } ],
      "expect": [ { "setting": "SA_AveragingNumber", "value": 4 } ] } ] })";

enum class BenchOf { Program, Session };

/// How a step of an application ended.
struct Step
{
    QString name;
    ErrorCode code = NoError;
    QString value; ///< what the application has got; empty: nothing
};

/// What an application has experienced.
struct Experience
{
    QList<Step> steps;
    QList<int> numbers;    ///< of the frames that it got
    QString wrongTimes;    ///< of blocks
    quint64 fetched = 0;   ///< frames, according to the simulator
    quint64 forgotten = 0; ///< generated but neither fetched nor waiting when the sensor was closed

    const Step *find(const QString &name) const
    {
        const auto found =
            std::find_if(steps.begin(), steps.end(), [&](const Step &step) { return step.name == name; });
        return found != steps.end() ? &*found : nullptr;
    }
};

/// An application that uses all functions of the sensor-access library.
class Application
{
public:
    explicit Application(const QString &folder)
        : m_log(folder + "/log.txt")
    {
    }

    Experience run()
    {
        m_sensor.emplace(TX270);
        m_opened = sondixsim::now();
        step("log", m_sensor->enableLogging(m_log));
        m_sensor->logToFile(SensorInstance::LogInformation, "test", "begins");
        step("open", m_sensor->open({{"IP_Interface", "RS232"}, {"IP_Port", "COM3"}}));
        m_opened = sondixsim::now();
        useCommands();
        for (int round = 0; round < 8; ++round) {
            sondixsim::advance(0.01);
            transfer(round % 4);
        }
        // The counts are those since the last opening, which may be that of another application.
        if (m_experience.find("open")->code == NoError) {
            const sondixsim::FrameCounts counts = sondixsim::frameCounts(serialNumber);
            m_experience.fetched = counts.fetched;
            m_experience.forgotten = counts.generated - counts.fetched - counts.waiting;
        }
        step("close", m_sensor->close());
        step("release", m_sensor->release());
        m_sensor.reset();
        return m_experience;
    }

private:
    void step(const char *name, ErrorCode code, const QString &value = {})
    {
        m_experience.steps += {name, code, value};
    }

    void useCommands()
    {
        // The sensor ignores parameters without "SP_". The time of the virtual clock stands still meanwhile.
        step("set averaging", m_sensor->sendCommand("Set_Averaging", {{"SP_AveragingNumber", 4},
                                                                      {"X_Bytes", QByteArray("\x01\x02")},
                                                                      {"X_Real", 2.5},
                                                                      {"X_Text", QString("text")}}));
        int number = -1;
        ErrorCode code = m_sensor->sendCommandGetInt("Get_Averaging", "SA_AveragingNumber", number);
        step("averaging", code, number != -1 ? QString::number(number) : QString());
        double real = -1.0;
        code = m_sensor->sendCommandGetDouble("Get_Samplerate", "SA_Measrate", real);
        step("sample rate", code, real != -1.0 ? QString::number(real) : QString());
        QString text;
        code = m_sensor->sendCommandGetString("Get_Info", "SA_SerialNumber", text);
        step("serial number", code, text);
        QByteArray bytes;
        code = m_sensor->sendCommand("Get_Info", {}, {{"SA_SerialNumber", SensorInstance::resultPointer(&bytes)}});
        step("bytes", code, QString::fromLatin1(bytes));
        QMap<QString, QVariant> all;
        code = m_sensor->sendCommandGetAll("Get_Info", {}, all);
        step("all", code, all.value("SA_SerialNumber").toString());
        step("refused", m_sensor->sendCommand("Get_Nothing", &text));
        step("clear", m_sensor->clearAllParameters());
        TransmittedDataInfo info;
        code = m_sensor->transmittedDataInfo(info);
        step("frame", code, info.valuesPerFrame != 0 ? QString::number(info.valuesPerFrame) : QString());
    }

    void transfer(int way)
    {
        int available = -1;
        if (m_sensor->dataAvail(available) != NoError)
            available = -1;
        double timestamp = -1.0;
        QVector<double> scaled;
        QVector<int> raw;
        ErrorCode code = NoError;
        if (way == 0) {
            code = m_sensor->transferData(scaled);
        } else if (way == 1) {
            code = m_sensor->transferDataRaw(raw, timestamp);
        } else if (way == 2) {
            code = m_sensor->transferDataScaled(scaled, timestamp);
        } else {
            int count = 64;
            scaled.resize(count);
            raw.resize(count);
            code = m_sensor->transferData(scaled.data(), raw.data(), &timestamp, count);
            scaled.resize(count);
            raw.resize(count);
            if (std::vector<double>(raw.begin(), raw.end()) != std::vector<double>(scaled.begin(), scaled.end()))
                m_experience.wrongTimes += "raw and scaled values differ; ";
        }
        if (code != NoError)
            return;
        if (scaled.isEmpty())
            scaled = {raw.begin(), raw.end()};
        for (const double value : scaled)
            m_experience.numbers += static_cast<int>(value);
        // Frame n is measured n + 1 periods after the opening.
        if (way != 0 && !scaled.isEmpty() && qAbs(timestamp - m_opened - (scaled.first() + 1.0) / rate) > 1e-6)
            m_experience.wrongTimes += QString("%1 at %2; ").arg(scaled.first()).arg(timestamp - m_opened);
    }

    const QString m_log;
    std::optional<SensorInstance> m_sensor;
    double m_opened = 0.0;
    Experience m_experience;
};

/// What must not be in the experience of an application that met a fault. Empty: nothing is wrong.
QString wrongIn(const Experience &experience, const Experience &usual, const FaultKind &kind,
                const QString &averaging)
{
    for (int i = 0; i < experience.numbers.size(); ++i) {
        if (experience.numbers[i] != i)
            return QString("value %1 is that of frame %2").arg(i).arg(experience.numbers[i]);
    }
    if (experience.fetched != quint64(experience.numbers.size()))
        return QString("%1 frames were fetched, %2 came").arg(experience.fetched).arg(experience.numbers.size());
    if (experience.forgotten != 0)
        return QString("%1 frames were lost").arg(experience.forgotten);
    if (!experience.wrongTimes.isEmpty())
        return experience.wrongTimes;
    for (const Step &step : experience.steps) {
        const Step &before = *usual.find(step.name);
        const QString text = QString("%1: %2 '%3'").arg(step.name).arg(int(step.code)).arg(step.value);
        if (kind.effect == FaultKind::Delays && (step.code != before.code || step.value != before.value))
            return text;
        // What was not set is not read.
        const QString expected = step.name == "averaging" ? averaging : before.value;
        if (kind.effect == FaultKind::Fails && !step.value.isEmpty() && step.value != expected)
            return text;
        if (kind.effect == FaultKind::Fails && step.code == NoError && step.value.isEmpty() && !expected.isEmpty())
            return text;
    }
    return {};
}

} // namespace

Q_DECLARE_METATYPE(BenchOf)

/// Every function of the sensor-access library with every kind of fault, as an application of this library meets them.
class TestEveryFault : public QObject
{
    Q_OBJECT

private:
    const QTemporaryDir m_folder;

    static void loadFaultBench() { sondixsim::loadBench(faultBench); }
    void startFaultSession() const
    {
        for (const std::string &name : sondixsim::sessions())
            sondixsim::stopSession(name);
        sondixsim::startSession("faults", m_folder.filePath("bench.json").toStdString());
        sondixsim::loadBenchFile("session:faults");
    }
    /// Before each fault a program begins with a new bench. That of a session stays, as it does for its users.
    static void loadFaultBenchOf(BenchOf owner)
    {
        if (owner == BenchOf::Program)
            loadFaultBench();
    }

private Q_SLOTS:
    void initTestCase()
    {
        QLoggingCategory::setFilterRules("SondixQt.*=false");
        qputenv("SONDIX_BENCH_SESSIONS", m_folder.filePath("sessions").toUtf8());
        QFile bench(m_folder.filePath("bench.json"));
        QVERIFY(bench.open(QIODevice::WriteOnly) && bench.write(faultBench) > 0);
    }
    void cleanupTestCase()
    {
        QLoggingCategory::setFilterRules({});
        qunsetenv("SONDIX_BENCH_SESSIONS");
    }
    void cleanup()
    {
        sondixsim::clearFaults();
        sondixsim::loadBuiltInBench(); // uses no session any more
    }

    void theListsAreComplete();
    void theApplicationUsesEveryFunction();
    void nothingIsLostOrInvented_data();
    void nothingIsLostOrInvented();
    void absurdCountsDoNoHarm_data();
    void absurdCountsDoNoHarm();
};

void TestEveryFault::theListsAreComplete()
{
    QStringList names;
    for (const char *const name : sondixsim::functionNames)
        names += name;
    QCOMPARE(exportedFunctions(SONDIX_EXPORTS), names);
}

void TestEveryFault::theApplicationUsesEveryFunction()
{
    loadFaultBench();
    sondixsim::recordCalls(true);
    const Experience usual = Application(m_folder.path()).run();
    QSet<QString> used;
    for (const sondixsim::Call &call : sondixsim::calls())
        used += QString::fromStdString(call.function);
    sondixsim::recordCalls(false);
    for (const QString &name : exportedFunctions(SONDIX_EXPORTS))
        QVERIFY2(used.contains(name), qPrintable(name));

    QCOMPARE(usual.numbers.size(), 80);
    QCOMPARE(usual.wrongTimes, QString());
    for (const Step &step : usual.steps)
        QVERIFY2((step.code == NoError) == (step.name != "refused"), qPrintable(step.name));
    QCOMPARE(usual.find("averaging")->value, QString("4"));
    QCOMPARE(usual.find("sample rate")->value, QString("1"));
    for (const char *const name : {"serial number", "bytes", "all"})
        QCOMPARE(usual.find(name)->value, QString(serialNumber));
    QCOMPARE(usual.find("frame")->value, QString("1"));
}

void TestEveryFault::nothingIsLostOrInvented_data()
{
    QTest::addColumn<QString>("function");
    QTest::addColumn<BenchOf>("owner");
    for (const QString &name : exportedFunctions(SONDIX_EXPORTS)) {
        QTest::newRow(qPrintable(name)) << name << BenchOf::Program;
        QTest::newRow(qPrintable(name + " in a session")) << name << BenchOf::Session;
    }
}

void TestEveryFault::nothingIsLostOrInvented()
{
    QFETCH(QString, function);
    QFETCH(BenchOf, owner);
    if (owner == BenchOf::Session)
        startFaultSession();
    loadFaultBenchOf(owner);
    const Experience usual = Application(m_folder.path()).run();
    const struct
    {
        int from;
        int times;
    } hits[] = {{1, 1}, {3, 1}, {1, -1}};
    QElapsedTimer time;
    for (const FaultKind &kind : faultKinds()) {
        for (const auto &hit : hits) {
            if (!canAffect(kind, function))
                continue;
            loadFaultBenchOf(owner);
            sondixsim::Fault fault = kind.fault;
            fault.function = function.toStdString();
            fault.from = hit.from;
            fault.times = hit.times;
            const int number = sondixsim::inject(fault);
            time.start();
            std::optional<HangReleaser> releaser;
            if (fault.hang)
                releaser.emplace();
            const Experience experience = Application(m_folder.path()).run();
            releaser.reset();
            const qint64 duration = time.elapsed();
            sondixsim::removeFault(number);
            const QString row =
                QString("%1, %2 calls from call %3 on: ").arg(kind.name).arg(hit.times).arg(hit.from);
            const QString averaging = QString::fromStdString(sondixsim::expectations().at(0).found);
            const QString wrong = wrongIn(experience, usual, kind, averaging);
            QVERIFY2(wrong.isEmpty(), qPrintable(row + wrong));
            QVERIFY2(duration < 10000, qPrintable(row));

            // Nothing stays broken.
            const Experience after = Application(m_folder.path()).run();
            QVERIFY2(after.numbers == usual.numbers, qPrintable(row + "afterwards"));
            for (const Step &step : after.steps)
                QVERIFY2(step.code == usual.find(step.name)->code && step.value == usual.find(step.name)->value,
                         qPrintable(row + "afterwards " + step.name));
        }
    }
}

void TestEveryFault::absurdCountsDoNoHarm_data()
{
    nothingIsLostOrInvented_data();
}

/// A count that is too large cannot be distinguished from a true one, but no call may fail or write outside of its
/// buffer.
void TestEveryFault::absurdCountsDoNoHarm()
{
    QFETCH(QString, function);
    QFETCH(BenchOf, owner);
    if (owner == BenchOf::Session)
        startFaultSession();
    for (const std::int32_t count :
         {std::numeric_limits<std::int32_t>::min(), -1, 0, 1, 65, std::numeric_limits<std::int32_t>::max()}) {
        loadFaultBenchOf(owner);
        sondixsim::Fault fault;
        fault.function = function.toStdString();
        fault.count = count;
        const int number = sondixsim::inject(fault);
        const Experience experience = Application(m_folder.path()).run();
        sondixsim::removeFault(number);
        QCOMPARE(experience.find("open")->code, NoError);
        // What is announced decides how much is asked for, not what comes.
        if (!function.startsWith("Transfer"))
            QCOMPARE(experience.fetched, quint64(experience.numbers.size()));
        const Experience after = Application(m_folder.path()).run();
        QCOMPARE(after.numbers.size(), 80);
    }
}

QTEST_GUILESS_MAIN(TestEveryFault)
#include "tst_everyfault.moc"
