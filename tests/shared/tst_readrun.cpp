// SPDX-License-Identifier: MIT
#include "cli/benches.h"

#include "shared/readrun.h"

#include <SondixQt/SensorInstance>
#include <SondixSimulator/control.h>

#include <QSignalSpy>
#include <QtTest>

using namespace SondixApp;
using namespace SondixQt;

namespace {

/// Remembers what it gets, and fails from a number of frames on.
class Memory : public FrameSink
{
public:
    bool write(const DataBlock &block) override
    {
        if (frames + block.frameCount() > limit)
            return false;
        frames += block.frameCount();
        return true;
    }
    bool write(const DataGap &gap) override
    {
        gaps += gap;
        return true;
    }
    bool flush() override
    {
        ++flushes;
        return flushes < maxFlushes;
    }
    bool finish() override { return true; }
    bool keep() override { return true; }
    qint64 framesWritten() const override { return frames; }
    QString place() const override { return {}; }
    QString problem() const override { return "the memory is full"; }

    qint64 frames = 0;
    qint64 limit = std::numeric_limits<qint64>::max();
    QVector<DataGap> gaps;
    int flushes = 0;
    int maxFlushes = std::numeric_limits<int>::max();
};

} // namespace

class TestReadRun : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void cleanup();
    void endsAtExactlyTheFramesAskedFor();
    void writesWhatWasReadBeforeItWasStopped();
    void endsWhenTheSinkFails();
    void flushesTheSinkWhileNoFramesCome();
    void endsWhenTheSensorSendsOtherValues();
    void goesOnWithAnotherRate();
    void isNotHeldUpByACallThatHangs();

private:
    void load(const QByteArray &sensor)
    {
        sondixsim::loadBench(Benches::of(sensor).toStdString());
        m_instance = std::make_unique<SensorInstance>(TX270);
        QString text;
        QVERIFY2(m_instance->open({{"IP_Interface", "RS232"}, {"IP_Port", "COM3"}}, &text) == NoError,
                 qPrintable(text));
        QCOMPARE(m_instance->transmittedDataInfo(m_frame), NoError);
        m_reader = std::make_unique<SensorReader>(*m_instance);
    }
    static QByteArray laser() { return Benches::laser(1000); }
    static void waitFor(ReadRun &run)
    {
        QSignalSpy finished(&run, &ReadRun::finished);
        QVERIFY(finished.wait(20000));
        QCOMPARE(finished.size(), 1);
    }

    std::unique_ptr<SensorInstance> m_instance;
    std::unique_ptr<SensorReader> m_reader;
    TransmittedDataInfo m_frame;
};

void TestReadRun::cleanup()
{
    sondixsim::clearFaults();
    m_reader.reset();
    m_instance.reset();
}

void TestReadRun::endsAtExactlyTheFramesAskedFor()
{
    load(laser());
    Memory memory;
    ReadRun::Plan plan;
    plan.frames = 123;
    ReadRun run(*m_reader, memory, m_frame, plan);
    run.start();
    waitFor(run);
    QCOMPARE(run.end(), ReadRun::Reached);
    QCOMPARE(run.framesRead(), 123);
    QCOMPARE(memory.frames, 123);
    QVERIFY(run.losses().isEmpty());
}

void TestReadRun::writesWhatWasReadBeforeItWasStopped()
{
    load(laser());
    Memory memory;
    ReadRun run(*m_reader, memory, m_frame, {});
    run.start();
    QTRY_VERIFY(memory.frames > 0);
    run.stop();
    waitFor(run);
    QCOMPARE(run.end(), ReadRun::Stopped);
    QCOMPARE(memory.frames, m_reader->framesDelivered());
    QCOMPARE(m_reader->state(), SensorReader::Stopped);
}

void TestReadRun::endsWhenTheSinkFails()
{
    load(laser());
    Memory memory;
    memory.limit = 200;
    ReadRun run(*m_reader, memory, m_frame, {});
    run.start();
    waitFor(run);
    QCOMPARE(run.end(), ReadRun::WriteFailed);
    QCOMPARE(run.problem(), QStringLiteral("the memory is full"));
    QVERIFY(memory.frames <= 200);
    QVERIFY(run.framesRead() > 200);
}

void TestReadRun::flushesTheSinkWhileNoFramesCome()
{
    load(Benches::laser(1000, R"("settings": { "TriggerMode": { "SA_TriggerMode": 1 } })"));
    Memory memory;
    memory.maxFlushes = 20;
    ReadRun run(*m_reader, memory, m_frame, {});
    QElapsedTimer clock;
    clock.start();
    run.start();
    waitFor(run);
    QCOMPARE(run.end(), ReadRun::WriteFailed);
    QCOMPARE(run.problem(), QStringLiteral("the memory is full"));
    QCOMPARE(memory.flushes, 20);
    QCOMPARE(memory.frames, 0);
    QVERIFY(clock.elapsed() >= 19 * 50 - 20);
}

void TestReadRun::endsWhenTheSensorSendsOtherValues()
{
    load(laser());
    Memory memory;
    TransmittedDataInfo other = m_frame;
    other.signals.first().scaledName = "Thickness";
    ReadRun run(*m_reader, memory, other, {});
    run.start();
    waitFor(run);
    QCOMPARE(run.end(), ReadRun::ReadFailed);
    QCOMPARE(run.problem(), QStringLiteral("the sensor sends other values than at the beginning"));
    QCOMPARE(memory.frames, 0);
}

/// A sensor that got its power back may measure with its factory settings.
void TestReadRun::goesOnWithAnotherRate()
{
    load(laser());
    Memory memory;
    TransmittedDataInfo other = m_frame;
    for (SignalInfo &signal : other.signals)
        signal.rawDatarate = signal.scaledDatarate = 2.0 * signal.scaledDatarate + 1.0;
    ReadRun::Plan plan;
    plan.frames = 50;
    ReadRun run(*m_reader, memory, other, plan);
    run.start();
    waitFor(run);
    QCOMPARE(run.end(), ReadRun::Reached);
    QVERIFY(memory.frames >= 50);
}

void TestReadRun::isNotHeldUpByACallThatHangs()
{
    load(laser());
    Memory memory;
    ReadRun run(*m_reader, memory, m_frame, {});
    run.start();
    QTRY_VERIFY(memory.frames > 0);
    sondixsim::Fault hang;
    hang.function = "TransferDataTS";
    hang.times = 1;
    hang.hang = true;
    sondixsim::inject(hang);
    // With values to transfer, the next transfer hangs, even if it is the last one, after stop().
    QTRY_VERIFY(sondixsim::frameCounts("1001").waiting > 0);
    run.stop();
    waitFor(run);
    QCOMPARE(run.end(), ReadRun::Stopped);
    QVERIFY(m_reader->state() != SensorReader::Stopped);
    // How many values the call would have transferred is not known.
    QVERIFY(run.isHanging());
    QCOMPARE(memory.gaps.size(), 1);
    QVERIFY(!memory.gaps.first().frames);
    QCOMPARE(memory.gaps.first().run, 0);
    QCOMPARE(memory.gaps.first().firstFrame, memory.frames);
    QVERIFY(memory.gaps.first().beginTime);
    QCOMPARE(*memory.gaps.first().beginTime, *run.lastFrame().time());
    QCOMPARE(run.losses().sentence(), QStringLiteral("an unknown number of frames was lost in 1 gap, because they "
                                                     "were not read in time or the line was too slow"));
    // What comes later is a part of that gap.
    const qint64 frames = memory.frames;
    sondixsim::releaseHangs();
    QTRY_COMPARE(m_reader->state(), SensorReader::Stopped);
    QVERIFY(m_reader->framesDelivered() > frames);
    QCOMPARE(memory.frames, frames);
    QCOMPARE(memory.gaps.size(), 1);
}

QTEST_GUILESS_MAIN(TestReadRun)
#include "tst_readrun.moc"
