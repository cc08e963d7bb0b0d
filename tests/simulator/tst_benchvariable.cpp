// SPDX-License-Identifier: MIT
#include "handle.h"
#include "SondixSimulator/control.h"

#include <cstdio>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

// SONDIX_BENCH is read once in a process, so each case runs in a child process.

/// Prints whether an instance can be created, else why not, and the serial number of the first sensor.
static int child()
{
    std::printf("start\n");
    std::fflush(stdout);
    for (int i = 0; i < 2; ++i) {
        Handle handle(SensorType::TX270);
        char text[1024] = "";
        if (handle == 0) {
            const std::int32_t code = GetError(0, text, sizeof text);
            std::printf("%d %s\n", code < 0 ? -1 : code, text);
        } else {
            handle.open();
            handle.command("Get_Info");
            std::printf("opened %s\n", handle.getText("SA_SerialNumber").c_str());
        }
    }
    return 0;
}

class TestBenchVariable : public QObject
{
    Q_OBJECT

private:
    struct Output
    {
        QByteArrayList output;
        QByteArrayList error;
    };
    static QByteArrayList lines(QByteArray text) { return text.replace("\r\n", "\n").trimmed().split('\n'); }
    static Output run(const QString &bench)
    {
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("SONDIX_BENCH"), bench);
        process.setProcessEnvironment(environment);
        process.start(QCoreApplication::applicationFilePath(),
                      {QStringLiteral("benchvariable"), QStringLiteral("child")});
        process.waitForFinished();
        return {lines(process.readAllStandardOutput()), lines(process.readAllStandardError())};
    }

private Q_SLOTS:
    void builtInBenchIsTheDefault()
    {
        const Output output = run(QString());
        QCOMPARE(output.output, (QByteArrayList{"start", "opened 1018001", "opened 1018001"}));
        QCOMPARE(output.error, QByteArrayList{QByteArray()});
    }

    void namedBenchIsUsed()
    {
        QTemporaryDir folder;
        QFile file(folder.filePath(QStringLiteral("bench.json")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(R"({ "sensors": [ { "model": "TX270", "serialNumber": "mine",
                        "place": { "interface": "WinUSB" } } ] })");
        file.close();
        QCOMPARE(run(file.fileName()).output, (QByteArrayList{"start", "opened mine", "opened mine"}));
    }

    void fileNamesMayHaveAnyCharacters()
    {
        QTemporaryDir folder;
        QDir inside(folder.path());
        const QString name = QStringLiteral("Pr\u00FCfstand \u6D4B\u91CF");
        QVERIFY(inside.mkdir(name) && inside.cd(name));
        QFile record(inside.filePath(QStringLiteral("\u00E4\u00F6\u00FC \u503C.csv")));
        QVERIFY(record.open(QIODevice::WriteOnly) && record.write("1.5\n") > 0);
        QFile bench(inside.filePath(name + QStringLiteral(".json")));
        QVERIFY(bench.open(QIODevice::WriteOnly));
        bench.write(R"({ "sensors": [ { "model": "TX270", "serialNumber": "named",
                         "place": { "interface": "WinUSB" }, "signals": [ { "name": "Distance", "unit": "mm",
                         "range": [0, 100], "rawRange": [0, 1000], "generator": { "kind": "csv", "file": ")" +
                    QFileInfo(record).fileName().toUtf8() + R"(", "column": 1 } } ] } ] })");
        record.close();
        bench.close();
        QCOMPARE(run(bench.fileName()).output, (QByteArrayList{"start", "opened named", "opened named"}));
    }

    void errorInTheBenchIsReportedByGetError()
    {
        QTemporaryDir folder;
        QFile file(folder.filePath(QStringLiteral("bench.json")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("{\n \"sensors\": [],\n \"sede\": 1 }");
        file.close();
        const Output output = run(file.fileName());
        const QByteArray place = file.fileName().toUtf8() + ":3: ";
        QCOMPARE(output.error, QByteArrayList{QByteArray()}); // the library prints nothing
        QCOMPARE(output.output.size(), 3);
        QVERIFY2(output.output[1].startsWith("-1 ") && output.output[1].contains(place),
                 output.output[1].constData());
        QVERIFY(output.output[1].contains("sede"));
        QCOMPARE(output.output[2], output.output[1]);
    }

    void missingBenchIsReportedByGetError()
    {
        const Output output = run(QStringLiteral("/absent/bench.json"));
        QCOMPARE(output.error, QByteArrayList{QByteArray()});
        QCOMPARE(output.output.size(), 3);
        QVERIFY(output.output[1].startsWith("-1 ") && output.output[1].contains("/absent/bench.json"));
    }
};

int main(int argc, char **argv)
{
    if (argc > 1 && QByteArray(argv[1]) == "child")
        return child();
    QCoreApplication application(argc, argv);
    TestBenchVariable test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_benchvariable.moc"
