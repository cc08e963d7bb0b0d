// SPDX-License-Identifier: MIT
#include "recordings.h"

#include "../../src/reader/datablock_p.h"
#include "shared/recorder.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cerrno>
#include <cstring>

#ifdef Q_OS_UNIX
#    include <csignal>
#    include <sys/resource.h>
#endif

using namespace Recordings;

namespace {

/// One frame at \a time; the clock of the computer is ahead of that of the sensor-access library by \a offset seconds.
DataBlock clockedBlock(int run, qint64 number, double time, double offset)
{
    auto *data = new DataBlockData(DataBlockBuilder::data(block(number, 1, time, 0.001, run)));
    data->wallClockOffset = offset;
    data->wallClockUncertainty = 0.001;
    return DataBlockBuilder::block(data);
}

} // namespace

class TestRecorder : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        QVERIFY(m_dir->isValid());
    }
    void isThereFromTheFirstLine();
    void leavesAnOlderFileAloneUntilTheEnd();
    void keepsAPart();
    void keepsNothingOfNothing();
    void discardsWhatIsNotFinished();
    void givesTheTimeOfTheComputer();
    void inventsNoTimeOfTheComputer();
    void sensorsShareOneClock();
    void followsAnotherZeroOnceItIsKnown();
    void refusesADirectory();
    void rotatesBySize_data();
    void rotatesBySize();
    void rotatesByTime();
    void neverReplacesAPartOfAnotherSeries();
    void neverReplacesTheNotesOfAnotherSeries();
    void writesWholeSlicesUpToAFullDisk_data();
    void writesWholeSlicesUpToAFullDisk();
    void writesNothingTwiceWhenTheDiskFails_data();
    void writesNothingTwiceWhenTheDiskFails();
    void reachesTheDiskWhileNothingIsWritten();

private:
    QString path(const char *name) const { return m_dir->filePath(name); }
    QStringList files() const { return QDir(m_dir->path()).entryList(QDir::Files | QDir::Hidden, QDir::Name); }
    QByteArray content(const char *name) const { return contentOf(path(name)); }
    Recorder::Plan plan(const char *name, RecordFormat format = RecordFormat::Csv) const
    {
        Recorder::Plan plan;
        plan.path = path(name);
        plan.format = format;
        plan.columns = columns();
        plan.withHead = false;
        return plan;
    }

    std::unique_ptr<QTemporaryDir> m_dir;
    ErrorValues m_errors{[](double) { return QString(); }};
};

void TestRecorder::isThereFromTheFirstLine()
{
    Recorder recorder(plan("values.csv"), {}, m_errors);
    QVERIFY2(recorder.open(), qPrintable(recorder.problem()));
    QCOMPARE(files(), QStringList{"values.csv.partial"});
    QVERIFY(recorder.write(block(0, 1)));
    QCOMPARE(content("values.csv.partial"), QByteArray("frame,time [s],A [mm],B [%]\n0,1.000000,0.5,0\n"));
    QVERIFY(recorder.write(gap(1, 2, DataGap::Disconnected)));
    QVERIFY(recorder.write(block(3, 1)));
    QVERIFY(
        content("values.csv.partial").contains("0,1.000000,0.5,0\n# gap: 2 frames from number 1 on are missing"));
    QVERIFY(recorder.finish());
    QCOMPARE(files(), QStringList{"values.csv"});
    QVERIFY(content("values.csv").endsWith("\n3,1.000000,3.5,6\n"));
    QCOMPARE(recorder.framesWritten(), 2);
    QCOMPARE(recorder.files(), QStringList{path("values.csv")});
}

void TestRecorder::leavesAnOlderFileAloneUntilTheEnd()
{
    writeFile(path("values.csv"), "older\n");
    Recorder recorder(plan("values.csv"), {}, m_errors);
    QVERIFY(recorder.open());
    QVERIFY(recorder.write(block(0, 10)));
    QCOMPARE(content("values.csv"), QByteArray("older\n"));
    QVERIFY(recorder.finish());
    QVERIFY(content("values.csv").startsWith("frame,"));
}

void TestRecorder::keepsAPart()
{
    Recorder recorder(plan("values.csv"), {}, m_errors);
    QVERIFY(recorder.open());
    QVERIFY(recorder.write(block(0, 10)));
    QVERIFY(recorder.keep());
    QCOMPARE(files(), QStringList{"values.csv.partial"});
    QCOMPARE(recorder.place(), path("values.csv.partial"));
}

void TestRecorder::keepsNothingOfNothing()
{
    Recorder recorder(plan("values.npy", RecordFormat::Npy), {}, m_errors);
    QVERIFY(recorder.open());
    QVERIFY(recorder.write(gap(0, 10, DataGap::Unknown)));
    QVERIFY(recorder.keep());
    QCOMPARE(files(), QStringList());
}

void TestRecorder::discardsWhatIsNotFinished()
{
    writeFile(path("values.npy"), "older");
    Recorder::Plan withNotes = plan("values.npy", RecordFormat::Npy);
    withNotes.withHead = true;
    Recorder recorder(withNotes, {}, m_errors);
    QVERIFY2(recorder.open(), qPrintable(recorder.problem()));
    QVERIFY(recorder.write(block(0, 10)));
    QCOMPARE(files().size(), 3);
    recorder.discard();
    QCOMPARE(files(), QStringList{"values.npy"});
    QCOMPARE(content("values.npy"), QByteArray("older"));
}

void TestRecorder::givesTheTimeOfTheComputer()
{
    SharedClock clock;
    clock.axis = TimeAxis{1'700'000'000'000'000};
    clock.uncertainty = 0.05;
    Recorder::Plan headed = plan("values.csv");
    headed.withHead = true;
    Recorder recorder(headed, {}, m_errors, &clock);
    QVERIFY(recorder.open());
    QVERIFY(recorder.write(block(0, 2, 12.25)));
    QVERIFY(recorder.finish());
    const QByteArray text = content("values.csv");
    QVERIFY2(text.contains("\n0,1700000012.250000,0.5,0\n1,1700000012.251000,1.5,2\n"), text.constData());
    QVERIFY(text.contains("# time: seconds since 1970-01-01T00:00:00Z, uncertain by 0.05 s\n"));
    const QByteArray start = text.mid(text.indexOf("# start: ") + 9).split('\n').first();
    QCOMPARE(QDateTime::fromString(QString::fromLatin1(start), Qt::ISODateWithMs).toMSecsSinceEpoch(),
             1'700'000'012'250);
}

void TestRecorder::inventsNoTimeOfTheComputer()
{
    SharedClock clock; // not related to that of the sensor-access library, and the block does not say how it is
    Recorder csv(plan("values.csv"), {}, m_errors, &clock);
    QVERIFY(csv.open() && csv.write(block(0, 2, 12.25)) && csv.finish());
    QVERIFY(content("values.csv").endsWith("\n0,,0.5,0\n1,,1.5,2\n"));
    Recorder json(plan("values.json", RecordFormat::JsonLines), {}, m_errors, &clock);
    DataGap known = gap(0, 1, DataGap::LibraryOverrun);
    known.beginTime = 12.0;
    QVERIFY(json.open() && json.write(known) && json.finish());
    QVERIFY2(content("values.json").contains("\"begin\":null"), content("values.json").constData());
}

void TestRecorder::sensorsShareOneClock()
{
    SharedClock clock;
    Recorder first(plan("1.csv"), {}, m_errors, &clock);
    Recorder second(plan("2.csv"), {}, m_errors, &clock);
    QVERIFY(first.open() && second.open());
    clock.axis = TimeAxis{5'000'000};
    QVERIFY(first.write(block(0, 1, 1.0)) && second.write(block(0, 1, 1.5)));
    QVERIFY(content("1.csv.partial").endsWith("\n0,6.000000,0.5,0\n"));
    QVERIFY(content("2.csv.partial").endsWith("\n0,6.500000,0.5,0\n"));
}

void TestRecorder::followsAnotherZeroOnceItIsKnown()
{
    SharedClock clock;
    Recorder recorder(plan("values.csv"), {}, m_errors, &clock);
    QVERIFY(recorder.open());
    QVERIFY(recorder.write(clockedBlock(0, 0, 1000.0, 500.0))); // 1500 s after 1970
    // After the sensor was opened again the zero of its clock is 600 s later, which its first block does not tell.
    QVERIFY(recorder.write(block(0, 1, 1.0, 0.001, 1)));
    QVERIFY(recorder.write(clockedBlock(1, 1, 2.0, 1600.0)));
    QVERIFY(recorder.write(block(2, 1, 3.0, 0.001, 1)));
    const QByteArray text = content("values.csv.partial");
    QVERIFY2(text.contains("\n0,1500.000000,0.5,0\n"), text.constData());
    QVERIFY2(text.endsWith("\n1,1602.000000,1.5,2\n2,1603.000000,2.5,4\n"), text.constData());
}

void TestRecorder::refusesADirectory()
{
    QVERIFY(QDir().mkdir(path("values.csv")));
    Recorder recorder(plan("values.csv"), {}, m_errors);
    QVERIFY(!recorder.open());
    QCOMPARE(recorder.problem(), QStringLiteral("cannot write '%1': it is a directory").arg(path("values.csv")));
    Recorder missing(plan("missing/values.csv"), {}, m_errors);
    QVERIFY(!missing.open());
    QVERIFY(missing.problem().startsWith("cannot write '"));
}

void TestRecorder::rotatesBySize_data()
{
    QTest::addColumn<int>("format");
    QTest::addColumn<QString>("name");
    QTest::newRow("CSV") << static_cast<int>(RecordFormat::Csv) << "values.csv";
    QTest::newRow("JSON") << static_cast<int>(RecordFormat::JsonLines) << "values.jsonl";
    QTest::newRow("NumPy") << static_cast<int>(RecordFormat::Npy) << "values.npy";
}

void TestRecorder::rotatesBySize()
{
    QFETCH(int, format);
    QFETCH(QString, name);
    constexpr qint64 limit = 200'000;
    constexpr int frames = 20'000;
    Recorder::Plan rotating = plan(name.toLatin1().constData(), static_cast<RecordFormat>(format));
    rotating.rotateSize = limit;
    Recorder recorder(rotating, {}, m_errors);
    QVERIFY(recorder.open());
    for (int i = 0; i < frames; i += 100)
        QVERIFY(recorder.write(block(i, 100)));
    QVERIFY(recorder.finish());
    const QStringList names = files();
    QVERIFY(names.size() >= 3);
    QCOMPARE(names.first(), QString(name).replace('.', "-0001."));
    qint64 found = 0;
    for (const QString &one : names) {
        const QByteArray text = contentOf(m_dir->filePath(one));
        QVERIFY(text.size() <= limit);
        if (static_cast<RecordFormat>(format) == RecordFormat::Npy)
            found += text.mid(text.indexOf("'shape': (") + 10).split(',').first().toLongLong();
        else
            found += text.count('\n') - (static_cast<RecordFormat>(format) == RecordFormat::Csv ? 1 : 0);
    }
    QCOMPARE(found, frames);
}

void TestRecorder::rotatesByTime()
{
    Recorder::Plan rotating = plan("values.csv");
    rotating.rotateSeconds = 0.02;
    Recorder recorder(rotating, {}, m_errors);
    QVERIFY(recorder.open());
    int frame = 0;
    QTRY_VERIFY(recorder.write(block(frame++, 1)) && recorder.files().size() >= 2);
    QVERIFY(recorder.finish());
    QByteArray lines;
    for (const QString &one : files())
        lines += contentOf(m_dir->filePath(one)).mid(static_cast<int>(strlen("frame,time [s],A [mm],B [%]\n")));
    QCOMPARE(lines.count('\n'), frame);
}

void TestRecorder::neverReplacesAPartOfAnotherSeries()
{
    writeFile(path("values-0001.csv"), "1");
    writeFile(path("values-0002.csv.partial"), "2");
    Recorder::Plan rotating = plan("values.csv");
    rotating.rotateSize = 1'000'000;
    Recorder recorder(rotating, {}, m_errors);
    QVERIFY(recorder.open());
    QVERIFY(recorder.write(block(0, 1)));
    QVERIFY(recorder.finish());
    QCOMPARE(files(), (QStringList{"values-0001.csv", "values-0002.csv.partial", "values-0003.csv"}));
}

void TestRecorder::neverReplacesTheNotesOfAnotherSeries()
{
    writeFile(path("values-0001.npy.jsonl"), "1");
    writeFile(path("values-0002.npy.jsonl.partial"), "2");
    Recorder::Plan rotating = plan("values.npy", RecordFormat::Npy);
    rotating.withHead = true;
    rotating.rotateSize = 1'000'000;
    Recorder recorder(rotating, {}, m_errors);
    QVERIFY(recorder.open());
    QVERIFY(recorder.write(block(0, 1)));
    QVERIFY(recorder.finish());
    QCOMPARE(files(), (QStringList{"values-0001.npy.jsonl", "values-0002.npy.jsonl.partial", "values-0003.npy",
                                   "values-0003.npy.jsonl"}));
    QCOMPARE(content("values-0001.npy.jsonl"), QByteArray("1"));
}

void TestRecorder::writesWholeSlicesUpToAFullDisk_data()
{
    QTest::addColumn<int>("format");
    QTest::newRow("CSV") << static_cast<int>(RecordFormat::Csv);
    QTest::newRow("JSON") << static_cast<int>(RecordFormat::JsonLines);
    QTest::newRow("NumPy") << static_cast<int>(RecordFormat::Npy);
}

void TestRecorder::writesWholeSlicesUpToAFullDisk()
{
#ifdef Q_OS_UNIX
    QFETCH(int, format);
    // A limit on the file size replaces a full disk: both make a write fail.
    rlimit before = {};
    QCOMPARE(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit limited{300'000, before.rlim_max};
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    Recorder recorder(plan("values", static_cast<RecordFormat>(format)), {}, m_errors);
    QVERIFY(recorder.open());
    QCOMPARE(::setrlimit(RLIMIT_FSIZE, &limited), 0);
    bool written = true;
    for (int i = 0; written && i < 1000; ++i)
        written = recorder.write(block(100 * i, 100));
    const QString problem = recorder.problem();
    const bool kept = recorder.keep();
    ::setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    QVERIFY(!written);
    QVERIFY(kept);
    QCOMPARE(problem, QStringLiteral("cannot write '%1': File too large").arg(path("values")));
    const QByteArray text = content("values.partial");
    QVERIFY(recorder.framesWritten() > 0);
    if (static_cast<RecordFormat>(format) == RecordFormat::Npy)
        QCOMPARE(python(path("values.partial"), "print(len(a), a['frame'][-1])"),
                 QByteArray::number(recorder.framesWritten()) + ' ' +
                     QByteArray::number(recorder.framesWritten() - 1));
    else
        QCOMPARE(text.count('\n') - (static_cast<RecordFormat>(format) == RecordFormat::Csv ? 1 : 0),
                 recorder.framesWritten());
    QVERIFY(static_cast<RecordFormat>(format) == RecordFormat::Npy || text.endsWith('\n'));
#else
    QSKIP("there is no limit on the size of files here");
#endif
}

void TestRecorder::writesNothingTwiceWhenTheDiskFails_data()
{
    writesWholeSlicesUpToAFullDisk_data();
}

void TestRecorder::writesNothingTwiceWhenTheDiskFails()
{
    QFETCH(int, format);
    Recorder::Plan failing = plan("values", static_cast<RecordFormat>(format));
    failing.sendToDisk = [](int) { return EIO; };
    Recorder recorder(failing, {}, m_errors);
    QVERIFY(recorder.open());
    int frames = 0;
    const auto fails = [&] {
        frames += 10;
        return !recorder.write(block(frames - 10, 10));
    };
    QTRY_VERIFY(fails());
    QCOMPARE(recorder.problem(), QStringLiteral("cannot write '%1' to the disk: %2")
                                     .arg(path("values"), QString::fromLocal8Bit(std::strerror(EIO))));
    // The operating system has taken all of them, once.
    QCOMPARE(recorder.framesWritten(), frames);
    QVERIFY(recorder.keep());
    if (static_cast<RecordFormat>(format) == RecordFormat::Npy) {
#ifdef Q_OS_WIN
        QSKIP("NumPy is installed for Linux only");
#endif
        QCOMPARE(python(path("values.partial"), "print(len(a), a['frame'][-1])"),
                 QByteArray::number(frames) + ' ' + QByteArray::number(frames - 1));
    } else {
        const int names = static_cast<RecordFormat>(format) == RecordFormat::Csv ? 1 : 0;
        QCOMPARE(content("values.partial").count('\n') - names, frames);
    }
}

void TestRecorder::reachesTheDiskWhileNothingIsWritten()
{
    Recorder recorder(plan("values.npy", RecordFormat::Npy), {}, m_errors);
    QVERIFY(recorder.open());
    QVERIFY(recorder.write(block(0, 7)));
    // The header counts only frames that are on the disk.
    QVERIFY(content("values.npy.partial").contains("'shape': (0,)"));
    QTRY_VERIFY(recorder.flush() && content("values.npy.partial").contains("'shape': (7,)"));
}

QTEST_GUILESS_MAIN(TestRecorder)
#include "tst_recorder.moc"
