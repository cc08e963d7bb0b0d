// SPDX-License-Identifier: MIT
#include "historydata.h"

#include "explorer/history/signalhistory.h"
#include "explorer/plot/exportbar.h"
#include "explorer/plot/frameexport.h"
#include "explorer/plot/plotpicture.h"
#include "explorer/plot/plotview.h"
#include "explorer/plot/timeplot.h"
#include "explorer/sensor/diskthread.h"

#include <QAction>
#include <QImage>
#include <QMenu>
#include <QProcess>
#include <QTemporaryDir>
#include <QToolButton>
#include <QtTest>
#include <QXmlStreamReader>

#ifdef Q_OS_UNIX
#    include <csignal>
#    include <sys/resource.h>
#endif

using namespace Explorer;
using namespace HistoryData;
using namespace SondixQt;

/// What a plot writes into files.
class TestPlotExport : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();
    void csvHasEveryFrame();
    void csvHasGapsAndErrors();
    void onlyTheVisibleRange();
    void timesAreOnTheClock();
    void triggeredFramesKeepTheirTimes();
    void npyIsReadByNumPy();
    void pictures_data();
    void pictures();
    void aPictureHasNoTraceOfHiddenSignals();
    void aPictureHasCursorsThatAreSeen();
    void aPictureOfEverythingLeavesTheWindow();
    void refusals_data();
    void refusals();
    void aFullDiskLeavesNothing_data();
    void aFullDiskLeavesNothing();
    void anOldFileStaysAfterAFailure();
    void runsBesideTheEvents();
    void canBeCancelled();
    void aFileIsCancelledOrCompleted();
    void anotherExportCancelsTheOneBefore();
    void endsWhenTheValuesAreForgotten();

private:
    void append(int count);
    QString path(const QString &name) const { return m_dir->filePath(name); }
    QList<QByteArray> dataLines(const QString &name) const;

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<SignalHistory> m_history;
    std::unique_ptr<PlotView> m_view;
    qint64 m_frames = 0;
};

void TestPlotExport::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
    m_frames = 0;
    m_history = std::make_unique<SignalHistory>();
    m_history->begin(frameOf(2));
    m_view = std::make_unique<PlotView>();
    m_view->resize(640, 400);
    m_view->setHistory(m_history.get());
}

void TestPlotExport::cleanup()
{
    m_view.reset();
    m_history.reset();
}

// Values are the number of the frame and half of it.
void TestPlotExport::append(int count)
{
    QVector<double> values;
    for (int i = 0; i < count; ++i)
        values << static_cast<double>(m_frames + i) << static_cast<double>(m_frames + i) / 2.0;
    m_history->append(DataBlock(0, m_frames, 2, values, QVector<qint32>(values.size()),
                                50.0 + static_cast<double>(m_frames) * 0.001, 0.001));
    m_frames += count;
}

QList<QByteArray> TestPlotExport::dataLines(const QString &name) const
{
    QFile file(path(name));
    QList<QByteArray> lines;
    if (file.open(QIODevice::ReadOnly))
        for (const QByteArray &line : file.readAll().split('\n'))
            if (!line.isEmpty() && !line.startsWith('#'))
                lines << line;
    return lines;
}

void TestPlotExport::csvHasEveryFrame()
{
    append(10000);
    QString problem;
    QVERIFY2(m_view->exportTo(path("all.csv"), PlotView::ExportRange::Everything, &problem), qPrintable(problem));
    QVERIFY(problem.isEmpty());
    const QList<QByteArray> lines = dataLines("all.csv");
    QCOMPARE(lines.size(), 10001);
    QVERIFY2(lines.at(0).contains("Signal 1 [mm]") && lines.at(0).contains("frame"), lines.at(0).constData());
    for (int i : {0, 1, 4095, 4096, 9999}) {
        const QList<QByteArray> cells = lines.at(i + 1).split(',');
        QCOMPARE(cells.size(), 4);
        QCOMPARE(cells.at(0).toInt(), i);
        QVERIFY(std::abs(cells.at(1).toDouble() - i * 0.001) < 1.0e-9);
        QCOMPARE(cells.at(2).toDouble(), double(i));
        QCOMPARE(cells.at(3).toDouble(), i / 2.0);
    }
    QCOMPARE(QDir(m_dir->path()).entryList(QDir::Files), QStringList{"all.csv"});
}

void TestPlotExport::csvHasGapsAndErrors()
{
    append(100);
    m_history->append(gapOf(50));
    m_frames += 50;
    append(100);
    m_history->append(DataBlock(0, m_frames, 2, {-1.0e10 - 3.0, 1.5}, {0, 0}, 50.25, 0.001));
    m_view->setErrorText([](double) { return QString("Too far, really"); });
    QVERIFY(m_view->exportTo(path("gap.csv"), PlotView::ExportRange::Everything));
    const QList<QByteArray> lines = dataLines("gap.csv");
    QCOMPARE(lines.size(), 202);
    QVERIFY(lines.at(101).startsWith("150,"));
    QVERIFY2(lines.last().contains("\"Too far, really\",1.5"), lines.last().constData());
    QFile file(path("gap.csv"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray content = file.readAll();
    const int place = content.indexOf("\n# gap");
    QVERIFY2(place > 0, content.left(500).constData());
    QVERIFY(content.indexOf("\n99,") < place && content.indexOf("\n150,") > place);
}

void TestPlotExport::onlyTheVisibleRange()
{
    append(10000);
    m_view->setWindow({2.0005, 3.0005});
    m_view->plot().setShown(0, false); // values are exported whether they are shown or not
    QVERIFY(m_view->exportTo(path("part.csv"), PlotView::ExportRange::Visible));
    const QList<QByteArray> lines = dataLines("part.csv");
    QCOMPARE(lines.size(), 1001);
    QVERIFY(lines.at(1).startsWith("2001,"));
    QVERIFY(lines.last().startsWith("3000,"));
}

void TestPlotExport::timesAreOnTheClock()
{
    append(10);
    const QDateTime noon(QDate(2026, 3, 1), QTime(12, 0, 0), Qt::UTC);
    m_view->setWallClockOffset(static_cast<double>(noon.toSecsSinceEpoch()));
    QVERIFY(m_view->exportTo(path("clock.csv"), PlotView::ExportRange::Everything));
    const QList<QByteArray> lines = dataLines("clock.csv");
    const double written = lines.at(6).split(',').at(1).toDouble();
    QCOMPARE(written, static_cast<double>(noon.toSecsSinceEpoch()) + 0.005);
}

void TestPlotExport::triggeredFramesKeepTheirTimes()
{
    const QVector<double> times{7.0, 7.5, 9.0, 9.125, 20.0};
    for (int i = 0; i < times.size(); ++i)
        m_history->append(DataBlock(0, i, 2, {i * 1.0, i * 2.0}, QVector<qint32>(2), times.at(i), std::nullopt));
    m_view->setWallClockOffset(1.7e9);
    QVERIFY(m_view->exportTo(path("triggered.csv"), PlotView::ExportRange::Everything));
    const QList<QByteArray> lines = dataLines("triggered.csv");
    QCOMPARE(lines.size(), times.size() + 1);
    for (int i = 0; i < times.size(); ++i) {
        const QList<QByteArray> cells = lines.at(i + 1).split(',');
        QCOMPARE(cells.at(0).toInt(), i);
        QVERIFY2(std::abs(cells.at(1).toDouble() - (1.7e9 + times.at(i) - times.at(0))) < 1.0e-6,
                 lines.at(i + 1).constData());
        QCOMPARE(cells.at(3).toDouble(), i * 2.0);
    }
}

void TestPlotExport::npyIsReadByNumPy()
{
#ifdef Q_OS_WIN
    QSKIP("NumPy is installed for Linux only");
#endif
    append(5000);
    QVERIFY(m_view->exportTo(path("all.npy"), PlotView::ExportRange::Everything));
    QProcess python;
    python.start("/usr/bin/python3", {"-c",
                                      "import numpy, sys; a = numpy.load(sys.argv[1])\n"
                                      "print(len(a), a['frame'][4999], a['Signal 2 [mm]'][4999])",
                                      path("all.npy")});
    QVERIFY(python.waitForFinished(60000));
    QCOMPARE(python.readAllStandardOutput().trimmed(), QByteArray("5000 4999 2499.5"));
    QVERIFY(QFileInfo::exists(path("all.npy.jsonl")));
}

void TestPlotExport::pictures_data()
{
    QTest::addColumn<QString>("suffix");
    for (const QString &suffix : PlotPicture::suffixes())
        QTest::addRow("%s", qPrintable(suffix)) << suffix;
}

void TestPlotExport::pictures()
{
    QFETCH(QString, suffix);
    append(10000);
    m_view->refresh();
    QString problem;
    const QString name = path("plot." + suffix);
    QVERIFY2(m_view->exportTo(name, PlotView::ExportRange::Visible, &problem), qPrintable(problem));
    QFile file(name);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray content = file.readAll();
    if (suffix == "png") {
        const QImage image = QImage::fromData(content);
        QVERIFY(image.width() >= m_view->plot().width());
        QSet<QRgb> colours;
        for (int y = 0; y < image.height(); y += 2)
            for (int x = 0; x < image.width(); x += 2)
                colours.insert(image.pixel(x, y) & 0xffffffU);
        for (const int signal : {0, 1})
            QVERIFY(colours.contains(m_view->plot().colourOf(signal).rgb() & 0xffffffU));
    } else if (suffix == "pdf") {
        QVERIFY(content.startsWith("%PDF") && content.trimmed().endsWith("%%EOF"));
    } else {
        QXmlStreamReader reader(content);
        int lines = 0;
        while (!reader.atEnd())
            lines += reader.readNext() == QXmlStreamReader::StartElement && reader.name() == "polyline" ? 1 : 0;
        QVERIFY(!reader.hasError());
        QVERIFY(lines >= 2);
    }
    QCOMPARE(QDir(m_dir->path()).entryList(QDir::Files).size(), 1);
}

// Not in the legend either.
void TestPlotExport::aPictureHasNoTraceOfHiddenSignals()
{
    append(10000);
    m_view->refresh();
    m_view->plot().setShown(1, false);
    const auto colours = [this] {
        QSet<QRgb> found;
        const QImage image(path("plot.png"));
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                found.insert(image.pixel(x, y) & 0xffffffU);
        return found;
    };
    const auto colourOf = [this](int signal) { return m_view->plot().colourOf(signal).rgb() & 0xffffffU; };
    QVERIFY(m_view->exportTo(path("plot.png"), PlotView::ExportRange::Visible));
    QVERIFY(colours().contains(colourOf(0)));
    QVERIFY(!colours().contains(colourOf(1)));
    m_view->plot().setShown(1, true);
    QVERIFY(m_view->exportTo(path("plot.png"), PlotView::ExportRange::Visible));
    QVERIFY(colours().contains(colourOf(1)));
}

// Documents are drawn black on white, whatever the colours of the window are.
void TestPlotExport::aPictureHasCursorsThatAreSeen()
{
    QPalette dark;
    dark.setColor(QPalette::Base, QColor(30, 30, 30));
    dark.setColor(QPalette::Text, QColor(250, 251, 252));
    m_view->setPalette(dark);
    append(10000);
    m_view->refresh();
    m_view->plotAction("cursorsAction")->trigger();
    if (PlotPicture::suffixes().contains("svg")) { // whose colours can be read
        QVERIFY(m_view->exportTo(path("plot.svg"), PlotView::ExportRange::Visible));
        QFile file(path("plot.svg"));
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray content = file.readAll();
        QVERIFY(content.contains("#000000"));
        QVERIFY2(!content.contains("#fafbfc"), "the colour of the window");
    }
    // On the screen they have the colours of the window again.
    const QColor text = m_view->plot().palette().color(QPalette::Text);
    QCOMPARE(text, QColor(250, 251, 252));
    const QImage shown = m_view->grab().toImage();
    bool hasCursor = false;
    for (int x = 0; x < shown.width() && !hasCursor; ++x)
        hasCursor = (shown.pixel(x, shown.height() / 4) & 0xffffffU) == (text.rgb() & 0xffffffU);
    QVERIFY(hasCursor);
}

void TestPlotExport::aPictureOfEverythingLeavesTheWindow()
{
    append(10000);
    m_view->setWindow({2.0, 3.0});
    QVERIFY(m_view->exportTo(path("plot.png"), PlotView::ExportRange::Everything));
    QCOMPARE(m_view->window(), (TimeWindow{2.0, 3.0}));
    QCOMPARE(m_view->plot().shownFrames().begin, qint64(2000));
    QCOMPARE(m_view->mode(), PlotView::Fixed);
}

void TestPlotExport::refusals_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("isFilled");
    QTest::addColumn<QString>("expected");
    QTest::newRow("no values") << "a.csv" << false << "no values";
    QTest::newRow("no values for a picture") << "a.png" << false << "no values";
    QTest::newRow("no suffix") << "a" << true << "csv, npy, jsonl, png";
    QTest::newRow("other suffix") << "a.xlsx" << true << "csv, npy, jsonl, png";
    QTest::newRow("no folder") << "missing/a.csv" << true << "missing/a.csv";
    QTest::newRow("no folder for a picture") << "missing/a.pdf" << true << "missing/a.pdf";
}

void TestPlotExport::refusals()
{
    QFETCH(QString, name);
    QFETCH(bool, isFilled);
    QFETCH(QString, expected);
    if (isFilled)
        append(100);
    m_view->refresh();
    QString problem;
    QVERIFY(!m_view->exportTo(path(name), PlotView::ExportRange::Visible, &problem));
    QVERIFY2(problem.contains(expected), qPrintable(problem));
    QVERIFY(QDir(m_dir->path()).isEmpty());
}

void TestPlotExport::aFullDiskLeavesNothing_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("table") << "full.csv";
    QTest::newRow("array") << "full.npy";
    QTest::newRow("picture") << "full.png";
}

void TestPlotExport::aFullDiskLeavesNothing()
{
#ifdef Q_OS_UNIX
    QFETCH(QString, name);
    append(10000);
    // A limit on the file size replaces a full disk: both make a write fail.
    rlimit before = {};
    QCOMPARE(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit limited{10'000, before.rlim_max};
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    QCOMPARE(::setrlimit(RLIMIT_FSIZE, &limited), 0);
    QString problem;
    const bool isDone = m_view->exportTo(path(name), PlotView::ExportRange::Everything, &problem);
    ::setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    QVERIFY(!isDone);
    QVERIFY2(problem.contains(path(name)), qPrintable(problem));
    QVERIFY(QDir(m_dir->path()).isEmpty());
#else
    QSKIP("there is no limit on the size of files");
#endif
}

void TestPlotExport::anOldFileStaysAfterAFailure()
{
    append(1000000); // more than is exported at once
    m_view->refresh();
    QFile old(path("old.csv"));
    QVERIFY(old.open(QIODevice::WriteOnly));
    old.write("mine");
    old.close();
    m_view->startExport(path("old.csv"), PlotView::ExportRange::Everything);
    m_history->clear();
    QTRY_VERIFY(!m_view->findChild<ExportBar *>()->text().startsWith("Exporting"));
    QVERIFY(old.open(QIODevice::ReadOnly));
    QCOMPARE(old.readAll(), QByteArray("mine"));
    QCOMPARE(QDir(m_dir->path()).entryList(QDir::Files), QStringList{"old.csv"});
}

void TestPlotExport::runsBesideTheEvents()
{
    for (int i = 0; i < 40; ++i)
        append(10000);
    QSignalSpy finished(m_view.get(), &PlotView::exportFinished);
    int events = 0;
    QTimer timer;
    connect(&timer, &QTimer::timeout, this, [&] { events += finished.isEmpty() ? 1 : 0; });
    timer.start(0);
    m_view->startExport(path("long.csv"), PlotView::ExportRange::Everything);
    QVERIFY(finished.isEmpty());
    append(10); // values go on arriving
    QVERIFY(finished.wait(60000));
    QCOMPARE(finished.first().at(1).toString(), QString());
    QVERIFY(events > 0);
    QCOMPARE(dataLines("long.csv").size(), 400001);
    QVERIFY(m_view->findChild<ExportBar *>()->text().contains("long.csv"));
}

void TestPlotExport::canBeCancelled()
{
    for (int i = 0; i < 40; ++i)
        append(10000);
    QSignalSpy finished(m_view.get(), &PlotView::exportFinished);
    m_view->startExport(path("long.csv"), PlotView::ExportRange::Everything);
    QVERIFY(finished.isEmpty());
    m_view->show();
    QTest::mouseClick(m_view->findChild<QToolButton *>("exportClose"), Qt::LeftButton);
    QCOMPARE(finished.size(), 1);
    QVERIFY(!finished.first().at(1).toString().isEmpty());
    QTRY_VERIFY(QDir(m_dir->path()).isEmpty());
    // So is the end of the view.
    m_view->startExport(path("long.csv"), PlotView::ExportRange::Everything);
    m_view.reset();
    QTRY_COMPARE(DiskThread::unfinishedWrites(), 0);
    QVERIFY(QDir(m_dir->path()).isEmpty());
}

void TestPlotExport::aFileIsCancelledOrCompleted()
{
    append(100);
    FrameExport::Plan plan;
    plan.format = SondixApp::RecordFormat::Csv;
    plan.range = {m_history->firstFrame(), m_history->endFrame()};
    plan.path = path("cancelled.csv");
    FrameExport cancelled(*m_history, plan);
    QVERIFY(cancelled.file()->write(*cancelled.take(50)));
    QVERIFY(cancelled.file()->cancel());
    QVERIFY(!cancelled.file()->write(*cancelled.take(50)));
    QCOMPARE(cancelled.problem(), QString());
    QVERIFY(!cancelled.file()->isComplete());
    QVERIFY(QDir(m_dir->path()).isEmpty());

    plan.path = path("completed.csv");
    FrameExport completed(*m_history, plan);
    QVERIFY(completed.file()->write(*completed.take(100)));
    QVERIFY(!completed.file()->cancel()); // too late
    QVERIFY(completed.file()->isComplete());
    QCOMPARE(dataLines("completed.csv").size(), 101);
}

void TestPlotExport::anotherExportCancelsTheOneBefore()
{
    for (int i = 0; i < 40; ++i)
        append(10000);
    QSignalSpy finished(m_view.get(), &PlotView::exportFinished);
    m_view->startExport(path("first.csv"), PlotView::ExportRange::Everything);
    QVERIFY(finished.isEmpty());
    m_view->startExport(path("second.csv"), PlotView::ExportRange::Everything);
    QVERIFY(!finished.isEmpty());
    QCOMPARE(finished[0][0].toString(), path("first.csv"));
    QVERIFY2(finished[0][1].toString().contains("cancelled"), qPrintable(finished[0][1].toString()));
    QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 2, 60000);
    QCOMPARE(finished[1][0].toString(), path("second.csv"));
    QCOMPARE(finished[1][1].toString(), QString());
    QCOMPARE(QDir(m_dir->path()).entryList(QDir::Files), QStringList{"second.csv"});
    QCOMPARE(dataLines("second.csv").size(), 400001);
}

void TestPlotExport::endsWhenTheValuesAreForgotten()
{
    for (int i = 0; i < 40; ++i)
        append(10000);
    QSignalSpy finished(m_view.get(), &PlotView::exportFinished);
    m_view->startExport(path("long.csv"), PlotView::ExportRange::Everything);
    m_history->begin(frameOf(3));
    QVERIFY(finished.wait(10000));
    QVERIFY(finished.first().at(1).toString().contains("forgotten"));
    QVERIFY(QDir(m_dir->path()).isEmpty());
}

QTEST_MAIN(TestPlotExport)
#include "tst_plotexport.moc"
