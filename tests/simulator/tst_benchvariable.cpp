// SPDX-License-Identifier: MIT
#include "handle.h"
#include "SondixSimulator/control.h"

#include <chrono>
#include <cstdio>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <thread>
#ifndef Q_OS_WIN
#    include <cerrno>
#    include <sys/stat.h>
#endif

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

/// Opens a sensor and waits until it sends a value, or for at most 20 seconds. A log of the library is "log.txt" in the
/// working folder.
static int waitingChild()
{
    Handle handle(SensorType::TX270);
    EnableLogging(handle, 1, 7, 0, "log.txt", 0, 1, 0);
    handle.open();
    QElapsedTimer timer;
    timer.start();
    const auto isTold = [] {
        QFile log("log.txt");
        return log.open(QIODevice::ReadOnly) && log.readAll().contains("the clock of the bench is virtual");
    };
    constexpr int longest = 20000;
    while (handle.available() == 0 && !isTold() && timer.elapsed() < longest)
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    const auto elapsed = timer.elapsed();
    while (timer.elapsed() < 2 * elapsed && handle.available() == 0) // it is reported once
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    // Another bench has its own five seconds.
    sondixsim::loadBenchFile(qgetenv("SONDIX_BENCH").toStdString());
    handle.open();
    handle.available();
    std::printf("told %s\n", elapsed >= 5000 && elapsed < longest ? "after 5 s" : "at once or never");
    return 0;
}

class TestBenchVariable : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;

    struct Output
    {
        QByteArrayList output;
        QByteArrayList error;
    };
    static QByteArrayList lines(QByteArray text) { return text.replace("\r\n", "\n").trimmed().split('\n'); }
    static Output run(const QString &bench, const char *child = "child", const QString &folder = QString())
    {
        QProcess process;
        process.setWorkingDirectory(folder);
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("SONDIX_BENCH"), bench);
        process.setProcessEnvironment(environment);
        process.start(QCoreApplication::applicationFilePath(),
                      {QStringLiteral("benchvariable"), QString::fromLatin1(child)});
        if (!process.waitForFinished()) // a bench that is read without an end
            process.kill();
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

    void aClockThatNobodyStepsTellsWhyTheProgramWaits()
    {
        QFile bench(m_folder.filePath(QStringLiteral("virtual.json")));
        QVERIFY(bench.open(QIODevice::WriteOnly));
        bench.write(R"({ "clock": { "virtual": true }, "sensors": [ { "model": "TX270", "serialNumber": "1",
                         "place": { "interface": "WinUSB" } } ] })");
        bench.close();
        const Output output = run(bench.fileName(), "waiting", m_folder.path());
        QCOMPARE(output.output, QByteArrayList{"told after 5 s"});
        QCOMPARE(output.error.size(), 1);
        QVERIFY2(output.error[0].contains("clock") && output.error[0].contains("virtual"),
                 output.error[0].constData());
        QFile log(m_folder.filePath(QStringLiteral("log.txt")));
        QVERIFY(log.open(QIODevice::ReadOnly));
        QVERIFY(log.readAll().contains("the clock of the bench is virtual"));
    }

    void whatIsNoFileIsReportedByGetError_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QByteArray>("reason");
        QTest::newRow("absent") << QStringLiteral("/absent/bench.json") << QByteArray("there is no such file");
        QTest::newRow("folder") << m_folder.path() << QByteArray("this is a folder");
        QTest::newRow("too large") << m_folder.filePath(QStringLiteral("large.json"))
                                   << QByteArray("the file is larger than 1 GiB");
#ifndef Q_OS_WIN
        QTest::newRow("pipe without a writer")
            << m_folder.filePath(QStringLiteral("pipe")) << QByteArray("this is a pipe or a device");
        QTest::newRow("full device") << QStringLiteral("/dev/full") << QByteArray("this is a pipe or a device");
        QTest::newRow("endless device") << QStringLiteral("/dev/zero") << QByteArray("this is a pipe or a device");
        // Refuses to be read at its beginning, to every user.
        QTest::newRow("unreadable") << QStringLiteral("/proc/self/mem") << QByteArray("the file cannot be read");
#endif
    }
    void whatIsNoFileIsReportedByGetError()
    {
        QFETCH(QString, path);
        QFETCH(QByteArray, reason);
        QFile large(m_folder.filePath(QStringLiteral("large.json")));
        QVERIFY(large.open(QIODevice::WriteOnly) && large.resize((qint64(1) << 30) + 1));
#ifndef Q_OS_WIN
        QVERIFY(mkfifo(qPrintable(m_folder.filePath(QStringLiteral("pipe"))), 0600) == 0 || errno == EEXIST);
#endif
        const Output output = run(path);
        QCOMPARE(output.error, QByteArrayList{QByteArray()});
        QCOMPARE(output.output.size(), 3);
        QVERIFY2(output.output[1].startsWith("-1 ") && output.output[1].contains(path.toUtf8() + ": " + reason),
                 output.output[1].constData());
        QCOMPARE(output.output[2], output.output[1]);
    }
};

int main(int argc, char **argv)
{
    if (argc > 1 && QByteArray(argv[1]) == "child")
        return child();
    if (argc > 1 && QByteArray(argv[1]) == "waiting")
        return waitingChild();
    QCoreApplication application(argc, argv);
    TestBenchVariable test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_benchvariable.moc"
