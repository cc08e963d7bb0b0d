// SPDX-License-Identifier: MIT
#include "explorerbench.h"

#include "explorer/extras/recordingcontrol.h"
#include "explorer/extras/recordingwidget.h"
#include "explorer/extras/recordingwriter.h"
#include "explorer/sensor/sensorsession.h"
#include "shared/recordingreader.h"
#include "support/scripting.h"

#include <QAction>
#include <QLabel>
#include <QSettings>

#include <cerrno>

using namespace Explorer;
using namespace SondixQt;

/// Recording a sensor while it is being looked at.
class ExtrasRecordingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void recordsWhatArrives_data();
    void recordsWhatArrives();
    void tellsHowItIsGettingOn();
    void gapsAreInTheFile();
    void aPauseIsInTheFile_data();
    void aPauseIsInTheFile();
    void aRecordingStartedWhileOpeningBeginsWithTheGap();
    void anotherFormatIsRefused();
    void aFolderThatCannotBeWrittenEndsOnlyTheRecording();
    void reportsAFullDisk();
    void valuesReachTheDiskWhileNoneCome();
    void reportsADiskThatFailsWhileNoneCome();
    void otherValuesEndTheRecording();
    void destructionFinishesTheFile();
    void namesTellSensorAndDate();
    void theButtonStartsAndStops();

private:
    QString path(const char *name) const { return m_folder->filePath(name); }
    /// Lets the sensor measure until the session has \a frames more frames.
    void measure(int frames);
    static qint64 framesIn(const QString &file, qint64 *lost = nullptr);

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<SensorSession> m_session;
};

void ExtrasRecordingTest::init()
{
    loadExplorerBench();
    m_folder = std::make_unique<QTemporaryDir>();
    m_session = std::make_unique<SensorSession>(firstAddress());
    m_session->open();
    QTRY_COMPARE(m_session->state(), SensorReader::Reading);
    QTRY_VERIFY(m_session->frame().valuesPerFrame == 2);
}

void ExtrasRecordingTest::cleanup()
{
    m_session.reset();
    sondixsim::clearFaults();
}

void ExtrasRecordingTest::measure(int frames)
{
    const qint64 wanted = m_session->framesRead() + frames;
    sondixsim::advance(frames * 0.001);
    QTRY_VERIFY(m_session->framesRead() >= wanted);
}

qint64 ExtrasRecordingTest::framesIn(const QString &file, qint64 *lost)
{
    SondixApp::RecordingReader reader(file);
    if (!reader.open())
        return -1;
    qint64 frames = 0;
    while (const auto item = reader.next()) {
        if (const auto *block = std::get_if<DataBlock>(&*item))
            frames += block->frameCount();
        else if (lost)
            *lost += std::get<DataGap>(*item).frames.value_or(0);
    }
    return reader.problem().isEmpty() ? frames : -1;
}

void ExtrasRecordingTest::recordsWhatArrives_data()
{
    QTest::addColumn<QString>("suffix");
    for (const QString &suffix : RecordingControl::suffixes())
        QTest::newRow(qPrintable(suffix)) << suffix;
}

void ExtrasRecordingTest::recordsWhatArrives()
{
    QFETCH(QString, suffix);
    const QString file = path("values.") + suffix;
    RecordingControl control(*m_session);
    QSignalSpy ended(&control, &RecordingControl::ended);
    measure(100); // before the recording
    QString problem;
    QVERIFY2(control.start(file, &problem), qPrintable(problem));
    QVERIFY(control.isRecording());
    const qint64 first = m_session->framesRead();
    measure(1000);
    const qint64 recorded = m_session->framesRead() - first;
    control.stop();
    QTRY_COMPARE(ended.size(), 1);
    QCOMPARE(ended[0][0].toString(), file);
    QCOMPARE(ended[0][1].toString(), QString());
    QVERIFY(!control.isRecording());
    QCOMPARE(framesIn(file), recorded);
    SondixApp::RecordingReader reader(file);
    QVERIFY(reader.open());
    QCOMPARE(reader.head().sensors.first().value("SA_SerialNumber").toString(), QString("1001"));
    QCOMPARE(reader.head().address, firstAddress().toString());
    const auto item = reader.next();
    QVERIFY(item && std::holds_alternative<DataBlock>(*item));
    // The signal is the number of the frame since the sensor was opened.
    const auto &block = std::get<DataBlock>(*item);
    QCOMPARE(block.scaled(0, 0), static_cast<double>(block.firstFrame()));
    measure(100); // after it
    QCOMPARE(framesIn(file), recorded);
}

void ExtrasRecordingTest::tellsHowItIsGettingOn()
{
    RecordingControl control(*m_session);
    QVERIFY(control.start(path("values.csv"), nullptr));
    measure(1000);
    QTRY_VERIFY(control.frames() >= 1000);
    QTRY_VERIFY(control.bytes() > 0);
    QVERIFY(control.seconds() >= 0.0);
    QTRY_COMPARE(control.place(), path("values.csv.partial"));
    QVERIFY(!control.start(path("other.csv"), nullptr));
    QVERIFY(!QFile::exists(path("other.csv.partial")));
}

void ExtrasRecordingTest::gapsAreInTheFile()
{
    RecordingControl control(*m_session);
    QSignalSpy ended(&control, &RecordingControl::ended);
    QVERIFY(control.start(path("values.csv"), nullptr));
    measure(100);
    sondixsim::unplug("1001");
    QTRY_COMPARE(m_session->state(), SensorReader::Reconnecting);
    sondixsim::advance(1.0);
    sondixsim::plug("1001");
    QTRY_COMPARE(m_session->state(), SensorReader::Reading);
    measure(100);
    QTRY_VERIFY(!control.losses().isEmpty());
    control.stop();
    QTRY_COMPARE(ended.size(), 1);
    QVERIFY(framesIn(path("values.csv")) >= 200);
    QFile file(path("values.csv"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    QVERIFY(file.readAll().contains("# gap: "));
}

void ExtrasRecordingTest::aPauseIsInTheFile_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name : {"values.csv", "values.npy", "values.jsonl"})
        QTest::newRow(name) << name;
}

// Meanwhile the web interface has the sensor, for example. The reader counts from 0 again.
void ExtrasRecordingTest::aPauseIsInTheFile()
{
    QFETCH(QString, name);
    RecordingControl control(*m_session);
    QSignalSpy ended(&control, &RecordingControl::ended);
    QVERIFY(control.start(path(qPrintable(name)), nullptr));
    measure(100);
    m_session->reader().stop();
    QTRY_COMPARE(m_session->state(), SensorReader::Stopped);
    sondixsim::advance(1.0);
    m_session->open();
    QTRY_COMPARE(m_session->state(), SensorReader::Reading);
    measure(50);
    control.stop();
    QTRY_COMPARE(ended.size(), 1);
    QCOMPARE(ended[0][1].toString(), QString());
    SondixApp::RecordingReader reader(path(qPrintable(name)));
    QVERIFY2(reader.open(), qPrintable(reader.problem()));
    QVector<DataGap> gaps;
    QVector<int> runs;
    qint64 frames = 0;
    while (const auto item = reader.next()) {
        if (const auto *gap = std::get_if<DataGap>(&*item)) {
            gaps += *gap;
            continue;
        }
        const DataBlock &block = std::get<DataBlock>(*item);
        frames += block.frameCount();
        if (runs.isEmpty() || runs.last() != block.run())
            runs += block.run();
    }
    QCOMPARE(frames, qint64(150));
    QCOMPARE(runs, (QVector<int>{0, 1}));
    QCOMPARE(gaps.size(), 1);
    QVERIFY(!gaps.first().frames);
    QCOMPARE(gaps.first().reason, DataGap::Disconnected);
    QCOMPARE(reader.problem(), QString());
}

// What the sensor measures between the start of the recording and the first frame is not known.
void ExtrasRecordingTest::aRecordingStartedWhileOpeningBeginsWithTheGap()
{
    measure(100);
    m_session->reader().stop();
    QTRY_COMPARE(m_session->state(), SensorReader::Stopped);
    RecordingControl control(*m_session);
    QSignalSpy ended(&control, &RecordingControl::ended);
    connect(&m_session->reader(), &SensorReader::stateChanged, &control, [&](SensorReader::State state) {
        if (state == SensorReader::Opening)
            QVERIFY(control.start(path("values.jsonl"), nullptr));
    });
    m_session->open();
    QTRY_COMPARE(m_session->state(), SensorReader::Reading);
    measure(50);
    control.stop();
    QTRY_COMPARE(ended.size(), 1);
    SondixApp::RecordingReader reader(path("values.jsonl"));
    QVERIFY2(reader.open(), qPrintable(reader.problem()));
    const auto first = reader.next();
    QVERIFY(first);
    const auto *gap = std::get_if<DataGap>(&*first);
    QVERIFY(gap != nullptr);
    QVERIFY(!gap->frames);
    QCOMPARE(gap->reason, DataGap::Disconnected);
    qint64 lost = 0;
    QCOMPARE(framesIn(path("values.jsonl"), &lost), qint64(50));
    QCOMPARE(lost, qint64(0));
}

void ExtrasRecordingTest::anotherFormatIsRefused()
{
    RecordingControl control(*m_session);
    QString problem;
    QVERIFY(!control.start(path("values.xls"), &problem));
    QVERIFY2(problem.contains(".csv"), qPrintable(problem));
    QVERIFY(!control.isRecording());
}

void ExtrasRecordingTest::aFolderThatCannotBeWrittenEndsOnlyTheRecording()
{
    RecordingControl control(*m_session);
    QSignalSpy ended(&control, &RecordingControl::ended);
    QVERIFY(control.start(path("no/such/folder/values.csv"), nullptr));
    QTRY_COMPARE(ended.size(), 1);
    QCOMPARE(ended[0][0].toString(), QString());
    QVERIFY(!ended[0][1].toString().isEmpty());
    QVERIFY(!control.isRecording());
    measure(100);
    QCOMPARE(m_session->state(), SensorReader::Reading);
    QVERIFY(control.start(path("values.csv"), nullptr));
}

void ExtrasRecordingTest::reportsAFullDisk()
{
#ifdef Q_OS_WIN
    QSKIP("there is no device that is always full");
#endif
    QVERIFY(QFile::link("/dev/full", path("full.csv")));
    RecordingControl control(*m_session);
    QSignalSpy ended(&control, &RecordingControl::ended);
    QVERIFY(control.start(path("full.csv"), nullptr));
    sondixsim::advance(0.1);
    QTRY_COMPARE(ended.size(), 1);
    QVERIFY2(ended[0][1].toString().contains("full.csv") || ended[0][1].toString().contains("/dev/full"),
             qPrintable(ended[0][1].toString()));
    QVERIFY(!control.isRecording());
    measure(100);
    QCOMPARE(m_session->state(), SensorReader::Reading);
}

// The header of a .npy file counts only what is on the disk.
void ExtrasRecordingTest::valuesReachTheDiskWhileNoneCome()
{
    RecordingControl control(*m_session);
    QVERIFY(control.start(path("values.npy"), nullptr));
    measure(500);
    QTRY_VERIFY(control.frames() >= 500);
    const QRegularExpression shape("'shape': \\((\\d+),\\)");
    const auto framesOnDisk = [&] {
        QFile file(control.place());
        const QByteArray header = file.open(QIODevice::ReadOnly) ? file.read(4096) : QByteArray();
        return shape.match(QString::fromLatin1(header.constData(), header.size())).captured(1).toInt();
    };
    QTRY_COMPARE(framesOnDisk(), static_cast<int>(control.frames()));
    QVERIFY(control.isRecording());
}

void ExtrasRecordingTest::reportsADiskThatFailsWhileNoneCome()
{
    SondixApp::Recorder::Plan plan;
    plan.path = path("values.csv");
    plan.columns.frame = m_session->frame();
    plan.sendToDisk = [](int) { return EIO; };
    RecordingWriter writer(plan, {}, std::make_shared<RecordingProgress>());
    QSignalSpy finished(&writer, &RecordingWriter::finished);
    writer.open();
    const DataBlock block(0, 0, 2, {1.0, 2.0}, {0, 0});
    writer.write(block, {});
    QVERIFY(finished.isEmpty());
    QTRY_COMPARE(finished.size(), 1);
    QVERIFY2(finished[0][1].toString().contains("values.csv"), qPrintable(finished[0][1].toString()));
}

void ExtrasRecordingTest::otherValuesEndTheRecording()
{
    sondixsim::loadBench(R"({ "sensors": [ { "model": "CC430", "serialNumber": "1001",
        "place": { "interface": "RS232", "port": "3" } } ] })");
    sondixsim::useVirtualClock();
    SensorSession session({CC430, {{"IP_Interface", "RS232"}, {"IP_Port", 3}}});
    session.open();
    QTRY_COMPARE(session.state(), SensorReader::Reading);
    RecordingControl control(session);
    QSignalSpy ended(&control, &RecordingControl::ended);
    QVERIFY(control.start(path("values.csv"), nullptr));
    sondixsim::advance(0.5);
    QTRY_VERIFY(control.frames() > 0);
    session.post("Set_MeasureMode", {{"SP_MeasureMode", 1}});
    QTRY_COMPARE(ended.size(), 1);
    QCOMPARE(ended[0][0].toString(), path("values.csv"));
    QVERIFY(!ended[0][1].toString().isEmpty());
    QVERIFY(framesIn(path("values.csv")) > 0);
}

void ExtrasRecordingTest::destructionFinishesTheFile()
{
    {
        RecordingControl control(*m_session);
        QVERIFY(control.start(path("values.csv"), nullptr));
        measure(500);
    }
    QVERIFY(framesIn(path("values.csv")) >= 500);
}

void ExtrasRecordingTest::namesTellSensorAndDate()
{
    const RecordingControl control(*m_session);
    const QString name =
        QFileInfo(RecordingControl::freePath(m_folder->path(), control.proposedName(), "csv")).fileName();
    QVERIFY2(QRegularExpression("^TX270.* 1001 \\d{4}-\\d{2}-\\d{2} \\d{2}-\\d{2}-\\d{2}( \\(\\d+\\))?\\.csv$")
                 .match(name)
                 .hasMatch(),
             qPrintable(name));
    // A name that is used gets a number, whatever the second.
    for (int i = 0; i < 3; ++i) {
        QFile used(RecordingControl::freePath(m_folder->path(), control.proposedName(), "csv"));
        QVERIFY(!used.exists());
        QVERIFY(used.open(QIODevice::WriteOnly));
    }
    // A percent sign in a name is no place for a number.
    SensorSession named(secondAddress(), "Line 100%2%3");
    const RecordingControl other(named);
    for (int i = 0; i < 2; ++i) {
        QFile used(RecordingControl::freePath(m_folder->path(), other.proposedName(), "csv"));
        QVERIFY2(QFileInfo(used).fileName().startsWith("Line 100%2%3 20"), qPrintable(used.fileName()));
        QVERIFY2(used.fileName().endsWith(".csv"), qPrintable(used.fileName()));
        QVERIFY(used.open(QIODevice::WriteOnly));
    }
}

void ExtrasRecordingTest::theButtonStartsAndStops()
{
    QCoreApplication::setOrganizationName("SondixQt tests");
    QCoreApplication::setApplicationName("extrasrecording");
    QSettings().clear();
    QSettings().setValue("recording/folder", m_folder->path());
    QSettings().setValue("recording/suffix", "npy");
    RecordingWidget widget(*m_session);
    QSignalSpy ended(&widget.control(), &RecordingControl::ended);
    QSignalSpy happened(&widget, &RecordingWidget::happened);
    widget.recordAction()->trigger();
    QVERIFY(widget.recordAction()->isChecked());
    QTRY_VERIFY(widget.control().isRecording());
    measure(300);
    QTRY_VERIFY(widget.findChild<QLabel *>()->text().startsWith("00:00:0"));
    widget.recordAction()->trigger();
    QTRY_COMPARE(ended.size(), 1);
    QVERIFY(!widget.recordAction()->isChecked());
    QVERIFY(ended[0][0].toString().endsWith(".npy"));
    QVERIFY(framesIn(ended[0][0].toString()) >= 300);
    QCOMPARE(happened.size(), 2);
    QVERIFY(!happened.last()[1].toBool());
    QSettings().clear();
}

QTEST_MAIN(ExtrasRecordingTest)
#include "tst_extrasrecording.moc"
