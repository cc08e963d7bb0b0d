// SPDX-License-Identifier: MIT
#include "handle.h"
#include "SondixSimulator/control.h"

#include <cmath>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

class TestSimRecording : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;

    void write(const char *name, const QByteArray &content) const
    {
        QFile file(m_folder.filePath(QString::fromLatin1(name)));
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            qFatal("cannot write %s", name);
    }
    /// A bench with a sensor of two values at 1000 Hz that plays \a recording.
    std::string bench(const QByteArray &recording, const QByteArray &more = QByteArray()) const
    {
        write("values.csv", recording);
        write("bench.json", R"({ "clock": { "virtual": true }, "sensors": [ {
            "model": "CC430", "serialNumber": "1", "place": { "interface": "TCP/IP", "ip": "10.0.0.1" }, "rate": 1000,
            "signals": [ { "name": "a", "range": [0.0, 10.0], "rawRange": [0, 1000] },
                         { "name": "b", "range": [0.0, 10.0], "rawRange": [0, 1000] } ],
            "recording": "values.csv")" +
                                more + " } ] }");
        return m_folder.filePath(QStringLiteral("bench.json")).toStdString();
    }
    static void openIt(Handle &handle)
    {
        handle.set("IP_Interface", "TCP/IP");
        handle.set("IP_RemoteAddr", "10.0.0.1");
        QCOMPARE(handle.open(), 0);
    }

private Q_SLOTS:
    void playsValuesToTheBit()
    {
        sondixsim::loadBenchFile(bench("# a comment\nframe,a,a raw,b,b raw\n"
                                       "0,1.2345678901234567,7,-10000000003.0,65538\n"
                                       "1,nan,8,99.5,-2147483648\n"));
        Handle handle(SensorType::CC430);
        openIt(handle);
        sondixsim::advance(0.002);
        const Block block = takeBlock(handle, 100);
        QCOMPARE(block.raw, (std::vector<std::int32_t>{7, 65538, 8, std::numeric_limits<std::int32_t>::min()}));
        QCOMPARE(block.scaled[0], 1.2345678901234567);
        QCOMPARE(block.scaled[1], -10000000003.0);
        QVERIFY(std::isnan(block.scaled[2]));
        QCOMPARE(block.scaled[3], 99.5); // outside the range of the signal
    }

    void missingFormsFollowFromTheRanges()
    {
        sondixsim::loadBenchFile(bench("0,5.0,,,250\r\n1,-10000000004,,,1004\r\n"));
        Handle handle(SensorType::CC430);
        openIt(handle);
        sondixsim::advance(0.002);
        const Block block = takeBlock(handle, 100);
        QCOMPARE(block.raw, (std::vector<std::int32_t>{500, 250, 1004, 1004}));
        QCOMPARE(block.scaled[0], 5.0);
        QCOMPARE(block.scaled[1], 2.5);
        QCOMPARE(block.scaled[2], -1.0e10 - 4.0);
    }

    void missingFramesStayMissing()
    {
        sondixsim::loadBenchFile(bench("0,0,0,0,0\n1,1,1,1,1\n5,5,5,5,5\n6,6,6,6,6\n"));
        Handle handle(SensorType::CC430);
        openIt(handle);
        const double begin = sondixsim::now();
        sondixsim::advance(0.010); // once, and the first three frames of the repetition
        std::vector<std::int32_t> raw;
        std::vector<double> times;
        for (Block block = takeBlock(handle, 2); !block.raw.empty(); block = takeBlock(handle, 2)) {
            raw.push_back(block.raw.at(0));
            times.push_back(block.timestamp - begin);
        }
        QCOMPARE(raw, (std::vector<std::int32_t>{0, 1, 5, 6, 0, 1}));
        const double expected[] = {0.001, 0.002, 0.006, 0.007, 0.008, 0.009};
        for (std::size_t i = 0; i < times.size(); ++i)
            QVERIFY(std::abs(times[i] - expected[i]) < 1.0e-9);
        const sondixsim::FrameCounts counts = sondixsim::frameCounts("1");
        QCOMPARE(counts.generated, std::uint64_t(10));
        QCOMPARE(counts.unsent, std::uint64_t(4));
    }

    void aLongGapTakesNoMemory()
    {
        sondixsim::loadBenchFile(bench("0,0,0,0,0\n900000000000,1,1,1,1\n"));
        Handle handle(SensorType::CC430);
        openIt(handle);
        sondixsim::advance(3600.0);
        QCOMPARE(sondixsim::frameCounts("1").unsent + sondixsim::frameCounts("1").lost, std::uint64_t(3599999));
    }

    void wrongFilesAreRefused_data()
    {
        QTest::addColumn<QByteArray>("recording");
        QTest::addColumn<QByteArray>("reason");
        QTest::newRow("empty") << QByteArray() << QByteArray("it has no frame");
        QTest::newRow("no number") << QByteArray("x,1,1,1,1\n")
                                   << QByteArray("line 1 does not begin with the number of a frame");
        QTest::newRow("first") << QByteArray("#\n1,1,1,1,1\n")
                               << QByteArray("line 2 is the first frame, whose number must be 0");
        QTest::newRow("order") << QByteArray("0,1,1,1,1\n1,1,1,1,1\n1,1,1,1,1\n")
                               << QByteArray("line 3 has a number that is not greater than the one before");
        QTest::newRow("few") << QByteArray("0,1,1\n") << QByteArray("line 1 has fewer values than a frame");
        QTest::newRow("many") << QByteArray("0,1,1,1,1,1\n") << QByteArray("line 1 has more values than a frame");
        QTest::newRow("scaled") << QByteArray("0,1x,1,1,1\n")
                                << QByteArray("line 1 has a scaled value that is no number");
        QTest::newRow("raw") << QByteArray("0,1,1.5,1,1\n")
                             << QByteArray("line 1 has a raw value that is no whole number");
        QTest::newRow("frame") << QByteArray("99999999999999,1,1,1,1\n")
                               << QByteArray("line 1 does not begin with");
    }
    void wrongFilesAreRefused()
    {
        QFETCH(QByteArray, recording);
        QFETCH(QByteArray, reason);
        const std::string path = bench(recording);
        try {
            sondixsim::loadBenchFile(path);
            QFAIL("the recording was accepted");
        } catch (const sondixsim::BenchError &error) {
            QVERIFY2(QByteArray(error.what()).contains(reason), error.what());
            QCOMPARE(error.line, 5);
        }
    }
};

QTEST_GUILESS_MAIN(TestSimRecording)
#include "tst_simrecording.moc"
