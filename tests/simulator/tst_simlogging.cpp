// SPDX-License-Identifier: MIT
#include "handle.h"
#include "SondixSimulator/control.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

constexpr std::int32_t everything = 0x7FFFFFFF;

class TestSimLogging : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;

    std::string path(const char *name) const { return m_folder.filePath(QString::fromLatin1(name)).toStdString(); }
    static QByteArray contents(const std::string &path)
    {
        QFile file(QString::fromStdString(path));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(absent)");
    }

private Q_SLOTS:
    void init()
    {
        sondixsim::loadBench(R"({ "sensors": [ { "model": "TX270", "serialNumber": "1",
            "place": { "interface": "WinUSB" } } ] })");
    }

    void logSaysThatItIsSimulated()
    {
        const Handle handle(SensorType::TX270);
        const std::string name = path("simulated.log");
        QCOMPARE(EnableLogging(handle, 1, everything, everything, name.c_str(), 1, 0, 0), 0);
        QVERIFY(contents(name).contains("simulator"));
    }

    void linesAreAppendedWhenTheirLevelIsWanted()
    {
        const Handle handle(SensorType::TX270);
        const std::string name = path("levels.log");
        EnableLogging(handle, 1, everything, 32, name.c_str(), 1, 0, 0);
        QCOMPARE(LogToFile(handle, 32, "Some::function", "kept"), 0);
        QCOMPARE(LogToFile(handle, 64, "Some::function", "left out"), 0);
        QCOMPARE(LogToFile(handle, 32, nullptr, nullptr), 0);
        const QByteArray log = contents(name);
        QVERIFY(log.contains("[32] Some::function: kept\n"));
        QVERIFY(!log.contains("left out"));
    }

    void linesWithoutALogAreDiscarded()
    {
        const Handle handle(SensorType::TX270);
        QCOMPARE(LogToFile(handle, 32, "source", "message"), 0);
    }

    void commandsConnectionsAndErrorsAreLogged_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<bool>("connections");
        QTest::addColumn<bool>("commands");
        QTest::addColumn<bool>("errors");
        QTest::newRow("all") << everything << true << true << true;
        QTest::newRow("connections") << 1 << true << false << false;
        QTest::newRow("commands") << 2 << false << true << false;
        QTest::newRow("errors") << 4 << false << false << true;
        QTest::newRow("none") << 0 << false << false << false;
    }
    void commandsConnectionsAndErrorsAreLogged()
    {
        QFETCH(int, type);
        QFETCH(bool, connections);
        QFETCH(bool, commands);
        QFETCH(bool, errors);
        const std::string name = path("types.log");
        {
            Handle handle(SensorType::TX270);
            EnableLogging(handle, 1, type, everything, name.c_str(), 0, 1, 0);
            handle.open();
            handle.command("Get_Samplerate");
            handle.command("Get_Nonsense");
            CloseSensor(handle);
        }
        const QByteArray log = contents(name);
        QCOMPARE(log.contains("opened"), connections);
        QCOMPARE(log.contains("closed"), connections);
        QCOMPARE(log.contains("Get_Samplerate: 0"), commands);
        QCOMPARE(log.contains(": error -"), errors);
    }

    void firstFlagAppends()
    {
        const std::string name = path("kept.log");
        const auto logOnce = [&](std::int32_t append, const char *message) {
            const Handle handle(SensorType::TX270);
            EnableLogging(handle, 1, everything, everything, name.c_str(), append, 0, 0);
            LogToFile(handle, 1, "s", message);
        };
        logOnce(1, "first");
        logOnce(1, "second");
        QVERIFY(contents(name).contains("first") && contents(name).contains("second"));
        logOnce(0, "third");
        QVERIFY(!contents(name).contains("first") && contents(name).contains("third"));
    }

    void placeholderRotatesFiles()
    {
        const std::string name = path("turn%[3].log");
        for (int i = 0; i < 5; ++i) {
            const Handle handle(SensorType::TX270);
            QCOMPARE(EnableLogging(handle, 1, everything, everything, name.c_str(), 0, 0, 10), 0);
            LogToFile(handle, 1, "s", ("round " + std::to_string(i)).c_str());
            QTest::qSleep(20); // file times must differ so that one file is the oldest
        }
        const QStringList files =
            QDir(m_folder.path()).entryList({QStringLiteral("turn*")}, QDir::Files, QDir::Name);
        QCOMPARE(files, (QStringList{QStringLiteral("turn0.log"), QStringLiteral("turn1.log"),
                                     QStringLiteral("turn2.log")}));
        QVERIFY(contents(path("turn0.log")).contains("round 3"));
        QVERIFY(contents(path("turn1.log")).contains("round 4"));
        QVERIFY(contents(path("turn2.log")).contains("round 2"));
    }

    void nameHasTheSystemEncoding()
    {
        const Handle handle(SensorType::TX270);
        const QString file = m_folder.filePath(QStringLiteral("Pr\u00FCfstand.log"));
        QCOMPARE(EnableLogging(handle, 1, everything, everything, QFile::encodeName(file).constData(), 0, 0, 0),
                 0);
        QVERIFY(QFile::exists(file));
    }

    void commandSwitchesLoggingOffAndOn()
    {
        Handle handle(SensorType::TX270);
        const std::string name = path("switched.log");
        handle.set("IP_EnableLogging", 1);
        QVERIFY(handle.command("Enable_Logging") < 0); // no file name is known
        EnableLogging(handle, 1, everything, everything, name.c_str(), 1, 0, 0);
        handle.set("IP_EnableLogging", 0);
        QCOMPARE(handle.command("Enable_Logging"), 0);
        LogToFile(handle, 1, "s", "while off");
        handle.set("IP_EnableLogging", 1);
        QCOMPARE(handle.command("Enable_Logging"), 0);
        LogToFile(handle, 1, "s", "while on");
        QVERIFY(!contents(name).contains("while off"));
        QVERIFY(contents(name).contains("while on"));
        QVERIFY(handle.command("Enable_Logging") < 0); // IP_EnableLogging is missing
    }

    void unwritableLogIsAnError()
    {
        const Handle handle(SensorType::TX270);
        QVERIFY(EnableLogging(handle, 1, everything, everything, path("absent/x.log").c_str(), 1, 0, 0) < 0);
        std::string text;
        QVERIFY(handle.error(&text) < 0);
        QVERIFY(text.find("absent/x.log") != std::string::npos);
        QVERIFY(EnableLogging(handle, 1, everything, everything, nullptr, 1, 0, 0) < 0);
        QCOMPARE(EnableLogging(handle, 0, 0, 0, nullptr, 0, 0, 0), 0);
    }
};

QTEST_GUILESS_MAIN(TestSimLogging)
#include "tst_simlogging.moc"
