// SPDX-License-Identifier: MIT
#include "support/unit.h"

#include "readerbench.h"
#include "support/faultkinds.h"

#include <QDeadlineTimer>
#include <QLoggingCategory>

#include <algorithm>
#include <functional>
#include <memory>
#include <optional>

using namespace SondixQt;

namespace {

enum class Phase { Opening, Reading };

/// A reader that meets a fault, and goes on without it.
class DisturbedReader
{
public:
    DisturbedReader(const QString &function, const FaultKind &kind, int times, Phase phase)
        : m_kind(kind)
        , m_phase(phase)
        , m_fault(kind.fault)
        , m_reader(readerAddress())
    {
        m_fault.function = function.toStdString();
        m_fault.times = times;
        m_reader.setReconnect(quickly());
        m_reader.setDeliveryInterval(1ms);
    }

    /// What is wrong; empty: nothing.
    QString mistake()
    {
        loadReaderBench();
        m_recording = std::make_unique<Recording>(m_reader);
        if (m_phase == Phase::Reading) {
            m_reader.start();
            if (!waitForState(SensorReader::Reading))
                return "the sensor is not read before the fault";
            measure(50);
        }
        meetFault();
        if (m_hasHung)
            return "it hangs";
        if (m_reader.state() == SensorReader::Failed) {
            if (m_reader.error() == NoError || m_reader.errorString().isEmpty())
                return "its failure has no text";
            if (const QString wrong = wrongValues(); m_kind.effect == FaultKind::Delays || !wrong.isEmpty())
                return "it has failed; " + wrong;
            m_recording = std::make_unique<Recording>(m_reader); // a start counts from 0
            m_reader.start();
        }
        if (!waitForState(SensorReader::Reading))
            return "it is not read after the fault: " + m_reader.errorString();
        const qint64 before = m_recording->delivered;
        measure(100);
        m_reader.stop();
        if (!waitForState(SensorReader::Stopped))
            return "it does not stop";
        if (m_hasHung)
            return "it hangs after the fault";
        if (m_recording->delivered < before + 100)
            return QString("%1 of 100 frames after the fault").arg(m_recording->delivered - before);
        const QString wrong = wrongValues();
        return wrong.isEmpty() ? wrongAccount() : wrong;
    }

private:
    void meetFault()
    {
        std::optional<HangReleaser> releaser;
        if (m_fault.hang)
            releaser.emplace();
        const int number = sondixsim::inject(m_fault);
        if (m_phase == Phase::Opening) {
            m_reader.start();
            waitFor([this] { return m_reader.state() != SensorReader::Opening; });
        }
        for (int i = 0; i < 3; ++i)
            measure(20);
        sondixsim::removeFault(number);
    }

    /// QTest::qWaitFor() looks every 10 ms only: there are many runs.
    void waitFor(const std::function<bool()> &condition)
    {
        const QDeadlineTimer deadline(longestTestWait);
        while (!condition() && !deadline.hasExpired())
            QCoreApplication::processEvents(QEventLoop::AllEvents, 1);
        m_hasHung = !condition() || m_hasHung;
    }
    bool waitForState(SensorReader::State state)
    {
        waitFor([&] { return m_reader.state() == state; });
        return m_reader.state() == state;
    }

    /// Lets the sensor measure and the reader read it, if it can.
    void measure(int count)
    {
        sondixsim::advance(count * 0.001);
        const int before = m_answers;
        m_reader.post("Get_Averaging", {}, &m_context, [this](const CommandResult &) { ++m_answers; });
        // A command that waits until the sensor is open again would be answered after the fault only.
        waitFor([&] { return m_answers > before || m_reader.state() == SensorReader::Reconnecting; });
    }

    /// The values are the numbers of the frames since the sensor was opened: within a run they follow those of the reader.
    QString wrongValues() const
    {
        if (m_recording->holes > 0)
            return "the numbers of the frames have a hole";
        const auto isForeign = [](const TransmittedDataInfo &frame) { return frame.valuesPerFrame != 2; };
        if (std::any_of(m_recording->frames.begin(), m_recording->frames.end(), isForeign))
            return m_kind.effect == FaultKind::ChangesAnswer ? QString() : "a frame has two values";
        std::optional<qint64> offset;
        int run = -1;
        for (const DataBlock &block : qAsConst(m_recording->blocks)) {
            for (int frame = 0; frame < block.frameCount(); ++frame) {
                const qint64 value = block.raw(frame, 0);
                const qint64 number = block.firstFrame() + frame;
                if (block.run() != run)
                    offset = value - number;
                run = block.run();
                if (value != number + *offset || block.raw(frame, 1) != value + 7)
                    return QString("frame %1 of run %2 has the values %3 and %4, not %5 and 7 more")
                        .arg(number)
                        .arg(run)
                        .arg(value)
                        .arg(block.raw(frame, 1))
                        .arg(number + *offset);
            }
        }
        return {};
    }

    /// Whatever the sensor has measured was delivered or told as lost.
    QString wrongAccount() const
    {
        if (m_kind.effect == FaultKind::Delays && (!m_recording->gaps.isEmpty() || !m_recording->errors.isEmpty()))
            return "a delay is told as a loss";
        const auto generated = static_cast<qint64>(sondixsim::totalFrameCounts(serialNumber).generated);
        const qint64 told = m_recording->delivered + m_recording->lost;
        const bool isWhole = m_recording->unknownGaps == 0 &&
                             m_recording->states.count(SensorReader::Opening) == 1 &&
                             m_recording->states.first() == SensorReader::Opening;
        return isWhole && m_phase == Phase::Reading && told != generated
                   ? QString("%1 frames are delivered or told as lost, %2 were generated").arg(told).arg(generated)
                   : QString();
    }

    const FaultKind &m_kind;
    const Phase m_phase;
    sondixsim::Fault m_fault;
    QObject m_context;
    int m_answers = 0;
    bool m_hasHung = false;
    SensorReader m_reader;
    std::unique_ptr<Recording> m_recording;
};

/// What a reader calls that opens a sensor, reads it, sends a command and closes it.
QStringList calledFunctions()
{
    loadReaderBench();
    CallRecorder recorder;
    SensorReader reader(readerAddress());
    Recording recording(reader);
    if (!startReading(reader))
        return {};
    sondixsim::advance(0.05);
    if (!QTest::qWaitFor([&] { return recording.delivered == 50; }, longestTestWait) || !stopReading(reader))
        return {};
    return recordedFunctions();
}

} // namespace

/// Reading with every kind of fault in every function of the sensor-access library that a reader calls: no value is invented
/// or lost without a word, and the sensor is read again when the fault is gone.
class ReaderFaultsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QLoggingCategory::setFilterRules("SondixQt.*=false"); } // failures are the rule
    void cleanup() { clearReaderBench(); }

    void callsTheseFunctions();
    void goesOn_data();
    void goesOn();
};

void ReaderFaultsTest::callsTheseFunctions()
{
    QStringList called = calledFunctions();
    called.sort();
    QCOMPARE(called.join(' '),
             QString("CloseSensor CreateSensorInstance DataAvail GetParameterDouble GetParameterInt "
                     "GetParameterString GetParameters OpenSensor ReleaseSensorInstance "
                     "SensorCommand SetParameterInt SetParameterString TransferDataTS"));
}

void ReaderFaultsTest::goesOn_data()
{
    QTest::addColumn<QString>("function");
    QTest::addColumn<int>("times");
    QTest::addColumn<bool>("isOpening");
    for (const QString &function : calledFunctions()) {
        for (const bool isOpening : {true, false}) {
            const QString phase = isOpening ? "is opened" : "is read";
            QTest::newRow(qPrintable(function + " once while it " + phase)) << function << 1 << isOpening;
            QTest::newRow(qPrintable(function + " while it " + phase)) << function << -1 << isOpening;
        }
    }
}

void ReaderFaultsTest::goesOn()
{
    QFETCH(const QString, function);
    QFETCH(const int, times);
    QFETCH(const bool, isOpening);
    for (const FaultKind &kind : faultKinds()) {
        const bool isTried = times < 0 || QByteArrayList{"hang", "code", "no answer"}.contains(kind.name);
        if (!isTried || !canAffect(kind, function))
            continue;
        DisturbedReader reader(function, kind, times, isOpening ? Phase::Opening : Phase::Reading);
        const QString wrong = reader.mistake();
        QVERIFY2(wrong.isEmpty(), qPrintable(QString("%1: %2").arg(kind.name, wrong)));
    }
}

QTEST_GUILESS_MAIN(ReaderFaultsTest)
#include "tst_readerfaults.moc"
