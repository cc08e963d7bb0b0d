// SPDX-License-Identifier: MIT
#include "sessionstand.h"

#include "simulator/handle.h"

#include <QRegularExpression>

#include <atomic>
#include <thread>

namespace {

/// Settings of the sensor in turn, until the journal is too long. A line has about 100 bytes.
void fillJournal(const char *one = "SA_Measrate=4", const char *other = "SA_Measrate=2.5")
{
    for (int i = 0; i < 15000; ++i)
        sondixsim::setSettings("1001", i % 2 == 0 ? one : other);
}

/// The values of the calls that set "SP_Number", in their order.
QByteArrayList numbersIn(const QByteArray &log)
{
    QByteArrayList numbers;
    const QRegularExpression number(R"(SetParameterInt\(.SP_Number., (\d+)\) = 0)");
    for (auto match = number.globalMatch(QString::fromUtf8(log)); match.hasNext();)
        numbers += match.next().captured(1).toLatin1();
    return numbers;
}

} // namespace

/// The files of a bench that several programs use: its journal, its log of calls, its folder.
class TestToolSessionFiles : public QObject
{
    Q_OBJECT

private:
    SessionStand m_stand;

private Q_SLOTS:
    void cleanup() { SessionStand::stopAll(); }

    void theLogShowsCallsAsTheyCome();
    void followingALogEndsWithTheSession();
    void followingALogMissesNoCall();
    void aShortenedJournalKeepsTheOrderOfTimelineAndControl();
    void anEventThatCannotBeAppliedHidesNoOther();
    void aLookCreatesNothing();
    void aDamagedSessionDisturbsNoOther();
    void aLongJournalIsShortened();
    void aJournalThatCannotBeShortenedGoesOn();
    void aTornLineIsNoEvent();
    void stoppedSessionsAreGone();
    void aSessionOfTheSameNameIsAnotherOne();
    void nothingOfAStoppedSessionStays();
    void nothingStaysWhileProgramsAttach();
    void whatKilledStartersLeftIsRemoved();
    void leavesOtherFilesAlone();
};

void TestToolSessionFiles::theLogShowsCallsAsTheyCome()
{
    m_stand.start(Benches::of(SessionStand::laser), {"--log"});
    QCOMPARE(m_stand.getInfo(), 0);
    const QByteArray log = m_stand.bench("log").out;
    QVERIFY2(log.contains(R"(SetParameterString("S_Command", "Get_Info") = 0)"), log.constData());
    QVERIFY(!log.contains("TransferData"));

    QProcess follower;
    m_stand.tool().start(follower, {"bench", "log", "-f"});
    QProcess reader;
    m_stand.startReading(reader);
    QByteArray followed;
    while (!followed.contains("TransferData") && follower.waitForReadyRead(30000))
        followed += follower.readAll();
    QVERIFY2(followed.contains(" sondixqt"), followed.constData());
    for (QProcess *process : {&reader, &follower}) {
        process->kill();
        process->waitForFinished();
    }
}

void TestToolSessionFiles::followingALogEndsWithTheSession()
{
    m_stand.start(Benches::of(SessionStand::laser));
    QProcess follower;
    m_stand.tool().start(follower, {"bench", "log", "-f"});
    QProcess reader;
    m_stand.startReading(reader);
    QVERIFY(follower.waitForReadyRead(30000));
    reader.kill();
    reader.waitForFinished();
    QCOMPARE(m_stand.bench("stop test").code, 0);
    QVERIFY(follower.waitForFinished(30000));
    QCOMPARE(follower.exitCode(), 1);
    const QByteArray error = follower.readAllStandardError();
    QVERIFY2(error.contains("the bench session \"test\" was stopped"), error.constData());
}

/// The log is renamed when it has 16 MiB.
void TestToolSessionFiles::followingALogMissesNoCall()
{
    m_stand.start();
    sondixsim::loadBenchFile("session:test");
    const QString path = QString::fromStdString(sondixsim::sessionLogFile());
    QCOMPARE(QFileInfo(path).absolutePath(), m_stand.folder().absolutePath());
    QVERIFY(!QFile::exists(path));
    Handle sensor(SensorType::TX270);
    QCOMPARE(SetParameterInt(sensor, "SP_First", 0), 0); // nobody follows yet
    QVERIFY(!QFile::exists(path));
    sondixsim::followSessionLog();
    QCOMPARE(SetParameterInt(sensor, "SP_First", 0), 0);
    QVERIFY(SessionStand::contentOf(path).contains(R"(SetParameterInt("SP_First", 0) = 0)"));
    // Lines of former calls, so that the next ones reach the limit.
    QFile log(path);
    QVERIFY(log.open(QIODevice::Append));
    const QByteArray former(99, '-');
    while (log.pos() < (16 << 20) - 20000)
        log.write(former + '\n');
    log.close();

    QProcess follower;
    m_stand.tool().start(follower, {"bench", "log", "-f"});
    QByteArray seen;
    while (!seen.contains("SP_Begin") && follower.state() == QProcess::Running) {
        SetParameterInt(sensor, "SP_Begin", 0);
        follower.waitForReadyRead(50);
        seen += follower.readAllStandardOutput();
    }
    constexpr int calls = 2000;
    QByteArrayList expected;
    for (int i = 0; i < calls; ++i) {
        SetParameterInt(sensor, "SP_Number", i);
        expected += QByteArray::number(i);
    }
    SetParameterInt(sensor, "SP_End", 0);
    while (!seen.contains("SP_End") && follower.waitForReadyRead(30000))
        seen += follower.readAllStandardOutput();
    follower.kill();
    follower.waitForFinished();
    QVERIFY(QFile::exists(QFileInfo(path).dir().filePath("calls.old.log")));
    QCOMPARE(numbersIn(seen), expected);
    // Both files, in their order.
    const QByteArray whole = m_stand.bench("log").out;
    QCOMPARE(numbersIn(whole), expected);
    QVERIFY(whole.contains("SP_First"));
}

/// What the timeline has set later is not undone, for programs that attach after the journal was shortened.
void TestToolSessionFiles::aShortenedJournalKeepsTheOrderOfTimelineAndControl()
{
    m_stand.start(R"({ "clock": { "virtual": true }, "sensors": [ { "model": "TX270", "serialNumber": "1001",
        "place": { "interface": "RS232", "port": "COM3" },
        "timeline": [ { "do": "set", "at": 5, "settings": { "SA_AveragingNumber": 8 } },
                      { "do": "set", "at": 15, "settings": { "SA_Measrate": 1.0 } } ] } ] })");
    sondixsim::loadBenchFile("session:test");
    const auto averaging = [this] {
        return m_stand.run({"get", SessionStand::address, "Get_Averaging", "SA_AveragingNumber"}).out.trimmed();
    };
    sondixsim::setSettings("1001", "SA_AveragingNumber=4");
    QCOMPARE(averaging(), QByteArray("4"));
    sondixsim::advance(10.0);
    QCOMPARE(averaging(), QByteArray("8"));
    sondixsim::advance(10.0);
    QCOMPARE(m_stand.measrate(), QString("1"));
    fillJournal();
    sondixsim::useVirtualClock(); // the clock is an event, too
    fillJournal("SA_TriggerMode=1", "SA_TriggerMode=0");
    QVERIFY(QFileInfo(m_stand.folder().filePath("journal-0.jsonl")).size() == 0);
    QCOMPARE(averaging(), QByteArray("8"));
    QCOMPARE(m_stand.measrate(), QString("2.5"));
}

/// Such as one of a later version.
void TestToolSessionFiles::anEventThatCannotBeAppliedHidesNoOther()
{
    m_stand.start();
    sondixsim::loadBenchFile("session:test");
    QFile journal(m_stand.folder().filePath("journal-0.jsonl"));
    QVERIFY(journal.open(QIODevice::Append));
    journal.write("{\"do\":\"set\",\"sensor\":\"1001\",\"seq\":2}\n"
                  "{\"do\":\"set\",\"sensor\":\"1001\",\"values\":{\"SA_Measrate\":1.0},\"seq\":3}\n");
    journal.close();
    // The end of the journal is the first number of the shared memory.
    QFile state(m_stand.folder().filePath("state"));
    QVERIFY(state.open(QIODevice::ReadWrite));
    const qint64 end = journal.size();
    QCOMPARE(state.write(reinterpret_cast<const char *>(&end), sizeof end), static_cast<qint64>(sizeof end));
    state.close();

    QCOMPARE(CreateSensorInstance(SensorType::TX270), 0U); // reports the first event
    Handle sensor(SensorType::TX270);
    QCOMPARE(sensor.openAt("COM3"), 0);
    QCOMPARE(sensor.command("Get_Samplerate"), 0);
    QCOMPARE(sensor.getDouble("SA_Measrate"), 1.0);
}

/// A session that another program is removing.
void TestToolSessionFiles::aDamagedSessionDisturbsNoOther()
{
    m_stand.start();
    const ToolRunner &tool = m_stand.tool();
    const QString bench = tool.writeFile("other.json", Benches::of(SessionStand::otherLaser));
    QCOMPARE(tool.run({"bench", "start", "--name", "other", bench}).code, 0);
    const QStringList folders = m_stand.sessions().entryList({"other.*"}, QDir::Dirs);
    QCOMPARE(folders.size(), 1);
    QFile description(m_stand.sessions().filePath(folders.first() + "/session.json"));
    QVERIFY(description.open(QIODevice::WriteOnly)); // empty, as after a power failure
    description.close();

    const ToolResult list = m_stand.bench("list");
    QCOMPARE(list.code, 0);
    QVERIFY2(list.out.contains("test"), list.out.constData());
    QCOMPARE(m_stand.getInfo(), 0);
    const ToolResult damaged = m_stand.bench("show -s other");
    QCOMPARE(damaged.code, 1);
    QVERIFY2(damaged.err.contains("is damaged: stop the session"), damaged.err.constData());
    QCOMPARE(m_stand.bench("stop other").code, 0);
    QVERIFY(m_stand.sessions().entryList({"other.*"}, QDir::Dirs).isEmpty());
}

void TestToolSessionFiles::aLookCreatesNothing()
{
    m_stand.start();
    const QDir all = m_stand.sessions();
    QVERIFY(all.mkpath("leaving.5"));
    QVERIFY(QFile::copy(m_stand.folder().filePath("session.json"), all.filePath("leaving.5/session.json")));
    const ToolResult list = m_stand.bench("list");
    QCOMPARE(list.code, 0);
    QVERIFY2(!list.out.contains("leaving"), list.out.constData());
    QCOMPARE(QDir(all.filePath("leaving.5")).entryList(QDir::Files), QStringList{"session.json"});
    // Its name is free.
    QCOMPARE(m_stand.bench("start --name leaving").code, 0);
    QVERIFY(!all.exists("leaving.5"));
    QCOMPARE(m_stand.bench("stop leaving").code, 0);
}

void TestToolSessionFiles::aLongJournalIsShortened()
{
    m_stand.start(Benches::of(SessionStand::laser) + ' ');
    sondixsim::loadBenchFile("session:test");
    QCOMPARE(m_stand.bench("fault 1001 Get_Info --code -5").out.trimmed(), QByteArray("1"));
    sondixsim::unplug("1001");
    fillJournal();
    sondixsim::plug("1001");
    const QFileInfoList journals = m_stand.folder().entryInfoList({"journal-*.jsonl"});
    QCOMPARE(journals.size(), 1);
    QVERIFY(journals.first().size() < 1 << 20);
    QCOMPARE(m_stand.measrate(), QString("2.5"));
    QCOMPARE(m_stand.getInfo(), 6);
}

void TestToolSessionFiles::aJournalThatCannotBeShortenedGoesOn()
{
    m_stand.start();
    sondixsim::loadBenchFile("session:test");
    // Nothing can be written where the shorter one would be.
    QVERIFY(m_stand.folder().mkpath("journal-1.jsonl/full"));
    const QFileInfo journal(m_stand.folder().filePath("journal-0.jsonl"));
    fillJournal();
    QVERIFY(journal.size() > 1 << 20);
    QCOMPARE(m_stand.measrate(), QString("2.5"));
    Handle sensor(SensorType::TX270);
    QCOMPARE(sensor.openAt("COM3"), 0);
    QCOMPARE(sensor.command("Get_Samplerate"), 0);
    QCOMPARE(sensor.getDouble("SA_Measrate"), 2.5);
}

void TestToolSessionFiles::aTornLineIsNoEvent()
{
    m_stand.start();
    QCOMPARE(m_stand.setMeasrate(4).code, 0);
    // What a process leaves that is killed while it writes.
    SessionStand::append(m_stand.folder().filePath("journal-0.jsonl"),
                         R"({"do":"set","sensor":"1001","values":{"SA_Measrate":1.0},"seq":99)");
    QCOMPARE(m_stand.measrate(), QString("4"));
    QCOMPARE(m_stand.setMeasrate(2.5).code, 0);
    QCOMPARE(m_stand.measrate(), QString("2.5"));
}

void TestToolSessionFiles::stoppedSessionsAreGone()
{
    m_stand.start();
    QProcess reader;
    m_stand.startReading(reader);
    QCOMPARE(m_stand.bench("stop test").code, 0);
    QCOMPARE(ToolRunner::finish(reader).code, 6);
    const ToolResult result = m_stand.run({"find"});
    QCOMPARE(result.code, 1);
    QVERIFY2(result.err.contains("there is no bench session \"test\""), result.err.constData());
    QCOMPARE(m_stand.bench("list").code, 3);
    // The name is free again.
    m_stand.start(Benches::of(SessionStand::otherLaser));
    QVERIFY(m_stand.bench("show").out.contains("1003"));
}

void TestToolSessionFiles::aSessionOfTheSameNameIsAnotherOne()
{
    m_stand.start(Benches::of(SessionStand::laser), {"--log"});
    sondixsim::loadBenchFile("session:test");
    QCOMPARE(m_stand.bench("stop test").code, 0);
    m_stand.start(Benches::of(SessionStand::laser), {"--log"});

    // This process still uses the stopped one.
    QString reason;
    try {
        sondixsim::setSettings("1001", "SA_Measrate=4");
    } catch (const std::exception &error) {
        reason = QString::fromUtf8(error.what());
    }
    QCOMPARE(reason, QString("the bench session \"test\" was stopped"));
    Handle sensor(SensorType::TX270);
    QVERIFY(sensor.openAt("COM3") != 0);
    QCOMPARE(m_stand.bench("log").out, QByteArray());
    QVERIFY(m_stand.measrate() != "4");
}

void TestToolSessionFiles::nothingOfAStoppedSessionStays()
{
    const auto folders = [this] { return m_stand.sessions().entryList(QDir::AllEntries | QDir::NoDotAndDotDot); };
    m_stand.start(Benches::of(SessionStand::laser), {"--log"});
    QCOMPARE(folders().size(), 1);
    QCOMPARE(m_stand.getInfo(), 0);
    QCOMPARE(m_stand.bench("stop test").code, 0);
    QCOMPARE(folders(), QStringList());

    // What Windows keeps because a program uses it goes with the next session.
    m_stand.start(Benches::of(SessionStand::laser), {"--log"});
    QProcess reader;
    m_stand.startReading(reader);
    QCOMPARE(m_stand.bench("stop test").code, 0);
    QCOMPARE(ToolRunner::finish(reader).code, 6);
    QCOMPARE(m_stand.bench("start --name other").code, 0);
    QCOMPARE(folders().size(), 1);
    QVERIFY(folders().first().startsWith("other."));
    QCOMPARE(m_stand.bench("stop other").code, 0);
    QCOMPARE(folders(), QStringList());
}

/// A program that attaches opens the file of locks, and creates it if it is missing.
void TestToolSessionFiles::nothingStaysWhileProgramsAttach()
{
#ifdef Q_OS_WIN
    QSKIP("a folder is not removed while a program uses it");
#endif
    std::atomic<bool> isDone{false};
    std::thread program([&isDone] {
        while (!isDone) {
            try {
                sondixsim::loadBenchFile("session:test");
            } catch (const sondixsim::BenchError &) {
                std::this_thread::yield(); // it is stopped
            }
        }
    });
    QString problem;
    try {
        for (int i = 0; i < 200; ++i) {
            sondixsim::startSession("test");
            sondixsim::stopSession("test");
        }
    } catch (const std::exception &error) {
        problem = QString::fromUtf8(error.what());
    }
    isDone = true;
    program.join();
    QCOMPARE(problem, QString());
    QCOMPARE(m_stand.sessions().entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList());
}

void TestToolSessionFiles::whatKilledStartersLeftIsRemoved()
{
    const QDir all = m_stand.sessions();
    QVERIFY(all.mkpath(".draft-other"));
    m_stand.start();
    QVERIFY(!all.exists(".draft-other"));
}

void TestToolSessionFiles::leavesOtherFilesAlone()
{
    const QDir all = m_stand.sessions();
    QVERIFY(all.mkpath("test.7/mine"));
    QFile file(all.filePath("test.json"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    m_stand.start();
    QCOMPARE(m_stand.bench("stop test").code, 0);
    m_stand.start();
    QVERIFY(QFileInfo::exists(all.filePath("test.7/mine")));
    QVERIFY(file.exists());
    QVERIFY(file.remove() && QDir(all.filePath("test.7")).removeRecursively());
}

QTEST_GUILESS_MAIN(TestToolSessionFiles)
#include "tst_toolsessionfiles.moc"
