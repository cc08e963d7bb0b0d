// SPDX-License-Identifier: MIT
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

/// The example that reads a sensor and survives a pulled cable.
class TestStreaming : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void survivesAPulledCable()
    {
        QTemporaryDir folder;
        QFile bench(folder.filePath("bench.json"));
        QVERIFY(bench.open(QIODevice::WriteOnly));
        bench.write(R"({ "sensors": [ { "model": "TX270", "serialNumber": "1", "rate": 1000,
            "place": { "interface": "WinUSB" }, "unplugAfter": 1.2, "plugAfter": 1.8,
            "signals": [ { "name": "DIST1", "rawRange": [0, 10000], "generator": { "kind": "constant", "value": 5.0 } } ] } ] })");
        bench.close();

        QProcess program;
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.insert("SONDIX_BENCH", bench.fileName());
        program.setProcessEnvironment(environment);
        program.start(STREAMING, {"TX270@USB"});
        QByteArray output;
        const auto has = [&](const char *text) {
            program.waitForReadyRead(100);
            output += program.readAllStandardOutput();
            return output.contains(text);
        };
        QTRY_VERIFY2_WITH_TIMEOUT(has("frames, mean 5.0000"), output.constData(), 30000);
        QTRY_VERIFY2_WITH_TIMEOUT(has("state: Reconnecting"), output.constData(), 30000);
        QVERIFY2(output.contains("missing: "), output.constData());
        output.clear();
        QTRY_VERIFY2_WITH_TIMEOUT(has("frames, mean 5.0000"), output.constData(), 30000);
        QCOMPARE(program.state(), QProcess::Running);
        program.kill();
        program.waitForFinished();
    }

    void explainsItsUse()
    {
        QProcess program;
        program.start(STREAMING, {"nonsense"});
        QVERIFY(program.waitForFinished());
        QCOMPARE(program.exitCode(), 2);
        QVERIFY(program.readAllStandardOutput().startsWith("Usage: "));
    }

    void isShort()
    {
        QFile source(QStringLiteral(STREAMING_SOURCE));
        QVERIFY(source.open(QIODevice::ReadOnly));
        QVERIFY(source.readAll().count('\n') < 60);
    }
};

QTEST_GUILESS_MAIN(TestStreaming)
#include "tst_streaming.moc"
