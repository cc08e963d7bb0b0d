// SPDX-License-Identifier: MIT
#include "handle.h"
#include "SondixSimulator/control.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <stdexcept>
#include <thread>

/// What a program does to the bench of a session reaches those that come later.
class TestSimSession : public QObject
{
    Q_OBJECT

private:
    static int setMeasrate(Handle &sensor, double kiloHertz)
    {
        sensor.set("SP_Measrate", kiloHertz);
        return sensor.command("Set_Samplerate");
    }

private Q_SLOTS:
    void settingsThatCouldNotBeWrittenAreWrittenLater_data()
    {
        QTest::addColumn<double>("second");
        QTest::newRow("one") << 0.0;
        QTest::newRow("the last of two") << 1.0;
    }
    void settingsThatCouldNotBeWrittenAreWrittenLater()
    {
        QFETCH(const double, second);
        const QTemporaryDir sessions;
        qputenv("SONDIX_BENCH_SESSIONS", sessions.path().toUtf8());
        QFile bench(sessions.filePath(QStringLiteral("bench.json")));
        QVERIFY(bench.open(QIODevice::WriteOnly));
        bench.write(
            R"({ "sensors": [ { "model": "TX270", "serialNumber": "1", "place": { "interface": "WinUSB" } } ] })");
        bench.close();
        sondixsim::startSession("writing", bench.fileName().toStdString());
        sondixsim::loadBenchFile("session:writing");
        {
            Handle sensor(SensorType::TX270);
            QCOMPARE(sensor.open(), 0);
            const QDir all(sessions.path());
            const QDir folder(all.filePath(all.entryList({QStringLiteral("writing.*")}, QDir::Dirs).value(0)));
            const QString journal = folder.filePath(QStringLiteral("journal-0.jsonl"));
            const QString aside = folder.filePath(QStringLiteral("aside"));
            // Nothing can be written where a folder is.
            QVERIFY(QFile::rename(journal, aside));
            QVERIFY(folder.mkdir(journal));
            QVERIFY(setMeasrate(sensor, 4.0) != 0);
            if (second > 0.0)
                QVERIFY(setMeasrate(sensor, second) != 0);
            QVERIFY(folder.rmdir(journal));
            QVERIFY(QFile::rename(aside, journal));
            QCOMPARE(sensor.command("Get_Info"), 0);
        }
        sondixsim::loadBenchFile("session:writing"); // as another program does
        Handle sensor(SensorType::TX270);
        QCOMPARE(sensor.open(), 0);
        QCOMPARE(sensor.command("Get_Samplerate"), 0);
        QCOMPARE(sensor.getDouble("SA_Measrate"), second > 0.0 ? second : 4.0);
        CloseSensor(sensor);
        sondixsim::loadBuiltInBench();
        sondixsim::stopSession("writing");
        qunsetenv("SONDIX_BENCH_SESSIONS");
    }

    void whatIsDoneWhileASessionIsStoppedIsRefusedWithThatReason()
    {
        const QTemporaryDir sessions;
        qputenv("SONDIX_BENCH_SESSIONS", sessions.path().toUtf8());
        QStringList reasons;
        for (int round = 0; round < 100; ++round) {
            sondixsim::startSession("stopped");
            sondixsim::loadBenchFile("session:stopped");
            std::thread other([&reasons] {
                try {
                    for (;;)
                        sondixsim::releaseHangs();
                } catch (const std::runtime_error &error) {
                    reasons << QString::fromUtf8(error.what());
                }
            });
            sondixsim::stopSession("stopped");
            other.join();
        }
        sondixsim::loadBuiltInBench();
        qunsetenv("SONDIX_BENCH_SESSIONS");
        reasons.removeDuplicates();
        QCOMPARE(reasons, QStringList("the bench session \"stopped\" was stopped"));
    }
};

QTEST_GUILESS_MAIN(TestSimSession)
#include "tst_simsession.moc"
