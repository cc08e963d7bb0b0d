// SPDX-License-Identifier: MIT
#include "cli/benches.h"
#include "shared/framereader.h"

#include <SondixQt/sensorinstance.h>
#include <SondixSimulator/control.h>

#include <QSignalSpy>
#include <QtTest>

using namespace SondixQt;
using namespace SondixApp;

Q_DECLARE_METATYPE(SondixApp::FrameReader::End)
Q_DECLARE_METATYPE(SondixApp::FrameBlock)

class TestFrameReader : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { qRegisterMetaType<FrameReader::End>(); }
    void init();
    void cleanup();

    void keepsTheRestOfAFrameForTheNextBlock();
    void stopsAtTheFrameAskedForInTheMiddleOfABlock();
    void endsWhenNothingComes();
    void endsWhenTheSensorRefuses();
    void countsFramesThatWereLost();
    void countsNothingLostInASteadyStream();
    void handlesImpossibleCounts_data();
    void handlesImpossibleCounts();

private:
    void push(const std::vector<double> &scaled, double timestamp)
    {
        sondixsim::pushData("1001", {}, scaled, timestamp);
    }
    std::unique_ptr<SensorInstance> m_instance;
    static constexpr int longest = 20000;
};

void TestFrameReader::init()
{
    sondixsim::loadBench(Benches::of(R"({ "model": "TX270", "serialNumber": "1001",
        "place": { "interface": "RS232", "port": "COM3" }, "rate": 1000,
        "signals": [ { "name": "A", "range": [0, 1000], "rawRange": [0, 1000] },
                     { "name": "B", "range": [0, 1000], "rawRange": [0, 1000] } ] })")
                             .toStdString());
    sondixsim::useVirtualClock();
    m_instance = SensorInstance::create(TX270);
    QString text;
    QVERIFY2(m_instance->open({{"IP_Interface", "RS232"}, {"IP_Port", "COM3"}}, &text) == NoError,
             qPrintable(text));
}

void TestFrameReader::cleanup()
{
    m_instance.reset();
    sondixsim::clearFaults();
    sondixsim::useRealClock();
}

void TestFrameReader::keepsTheRestOfAFrameForTheNextBlock()
{
    FrameReader reader(*m_instance, 2, 1.0);
    QSignalSpy finished(&reader, &FrameReader::finished);
    QVector<double> values;
    QVector<qint64> firstFrames;
    connect(&reader, &FrameReader::framesArrived, this, [&](const FrameBlock &block) {
        firstFrames += block.firstFrame;
        for (int i = 0; i < block.frames * block.valuesPerFrame; ++i)
            values += block.scaled[i];
    });
    FrameReader::Plan plan;
    plan.frames = 4;
    push({1, 2, 3, 4, 5}, 0.001);
    reader.start(plan);
    QTRY_COMPARE_WITH_TIMEOUT(values.size(), 4, longest);
    push({6, 7, 8}, 0.004);
    QVERIFY(finished.wait(longest));
    QCOMPARE(values, (QVector<double>{1, 2, 3, 4, 5, 6, 7, 8}));
    QCOMPARE(firstFrames, (QVector<qint64>{0, 2}));
    QCOMPARE(reader.framesRead(), 4);
}

void TestFrameReader::stopsAtTheFrameAskedForInTheMiddleOfABlock()
{
    FrameReader reader(*m_instance, 2, 1.0);
    QSignalSpy finished(&reader, &FrameReader::finished);
    FrameReader::Plan plan;
    plan.frames = 3;
    push({1, 2, 3, 4, 5, 6, 7, 8, 9, 10}, 0.001);
    reader.start(plan);
    QVERIFY(finished.wait(longest));
    QCOMPARE(finished.first().first().value<FrameReader::End>(), FrameReader::Reached);
    QCOMPARE(reader.framesRead(), 3);
}

void TestFrameReader::endsWhenNothingComes()
{
    FrameReader reader(*m_instance, 2, 1.0);
    QSignalSpy finished(&reader, &FrameReader::finished);
    FrameReader::Plan plan;
    plan.silence = 0.3;
    QElapsedTimer clock;
    clock.start();
    reader.start(plan);
    QVERIFY(finished.wait(longest));
    QVERIFY(clock.elapsed() >= 300);
    QCOMPARE(finished.first().first().value<FrameReader::End>(), FrameReader::Silent);
}

void TestFrameReader::endsWhenTheSensorRefuses()
{
    FrameReader reader(*m_instance, 2, 1.0);
    QSignalSpy finished(&reader, &FrameReader::finished);
    reader.start({});
    sondixsim::unplug("1001");
    QVERIFY(finished.wait(longest));
    QCOMPARE(finished.first().first().value<FrameReader::End>(), FrameReader::Failed);
    QVERIFY(!reader.problem().isEmpty());
}

void TestFrameReader::countsFramesThatWereLost()
{
    FrameReader reader(*m_instance, 2, 1.0);
    reader.start({});
    push({1, 2, 3, 4}, 0.001);
    QTRY_COMPARE_WITH_TIMEOUT(reader.framesRead(), 2, longest);
    push({5, 6}, 0.013); // expected at 0.003
    QTRY_COMPARE_WITH_TIMEOUT(reader.framesRead(), 3, longest);
    QCOMPARE(reader.framesLost(), 10);
    reader.stop();
}

void TestFrameReader::countsNothingLostInASteadyStream()
{
    FrameReader reader(*m_instance, 2, 1.0);
    reader.start({});
    for (int i = 1; i <= 20; ++i) {
        sondixsim::advance(0.05);
        QTRY_COMPARE_WITH_TIMEOUT(reader.framesRead(), i * 50, longest);
    }
    QCOMPARE(reader.framesLost(), 0);
    reader.stop();
}

void TestFrameReader::handlesImpossibleCounts_data()
{
    QTest::addColumn<QString>("function");
    QTest::addColumn<int>("count");
    for (const char *function : {"DataAvail", "TransferDataTS"})
        for (const int count : {-1, -2000000000, 2000000000})
            QTest::addRow("%s %d", function, count) << QString::fromLatin1(function) << count;
}

void TestFrameReader::handlesImpossibleCounts()
{
    QFETCH(QString, function);
    QFETCH(int, count);
    sondixsim::Fault fault;
    fault.function = function.toStdString();
    fault.count = count;
    sondixsim::inject(fault);
    FrameReader reader(*m_instance, 2, 1.0);
    QSignalSpy finished(&reader, &FrameReader::finished);
    FrameReader::Plan plan;
    plan.seconds = 0.2;
    push({1, 2, 3, 4}, 0.001);
    reader.start(plan);
    QVERIFY(finished.wait(longest));
    QCOMPARE(finished.first().first().value<FrameReader::End>(), FrameReader::Reached);
    QVERIFY(count > 0 || reader.framesRead() == 0);
}

QTEST_GUILESS_MAIN(TestFrameReader)
#include "tst_framereader.moc"
