// SPDX-License-Identifier: MIT
#include "explorerwindow.h"

#include "explorer/history/computermemory.h"
#include "explorer/plot/plotview.h"
#include "explorer/plot/timeplot.h"

#include <QLabel>
#include <QScopeGuard>

using namespace Explorer;
using namespace SondixQt;

/// What is said where the memory of the computer does not suffice for the values.
class WindowMemoryTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanup() { SignalHistory::setSharedBytes(std::nullopt); }
    void knowsTheComputer();
    void aSensorIsCut();
    void aRecordingIsCut();
};

void WindowMemoryTest::initTestCase()
{
    QLocale::setDefault(QLocale::c());
}

void WindowMemoryTest::knowsTheComputer()
{
    constexpr qint64 little = qint64(256) << 20;
    constexpr qint64 much = qint64(1) << 50;
    QVERIFY2(computerMemory() > little && computerMemory() < much, qPrintable(QString::number(computerMemory())));
    QCOMPARE(SignalHistory::sharedBytes(), computerMemory() / 2);
}

void WindowMemoryTest::aSensorIsCut()
{
    constexpr qint64 limit = 400000;
    SignalHistory::setSharedBytes(limit);
    loadExplorerBench();
    ExplorerWindow window;
    window.open();
    SessionView *const view = window.openFirst();
    QVERIFY(view);
    // Said beforehand: two signals at 1 kHz for ten minutes need more.
    QVERIFY(SignalHistory::bytesFor(600.0, 1000.0, 2) > limit);
    const QString memory = window.child<QLabel>("keptMemory")->text();
    QVERIFY2(memory.contains(QLocale().formattedDataSize(limit)) && memory.contains("only about"),
             qPrintable(memory));
    QVERIFY(!window.logText().contains("memory"));
    auto *const counts = view->findChild<QLabel *>("sessionCounts");
    QVERIFY(!counts->text().contains("memory"));
    for (int second = 1; second <= 40; ++second) {
        sondixsim::advance(1.0);
        QTRY_VERIFY(view->session()->framesRead() >= second * 1000);
    }
    const SignalHistory &history = view->session()->history();
    QVERIFY(history.firstFrame() > 0);
    QCOMPARE(window.logText().count("memory for values is full"), 1);
    const QString kept = QLocale().toString(history.endFrame() - history.firstFrame());
    QTRY_VERIFY2(counts->text().contains("only the last " + kept + " frames"), qPrintable(counts->text()));
}

void WindowMemoryTest::aRecordingIsCut()
{
    SignalHistory::setSharedBytes(400000);
    ExplorerWindow window;
    window.open();
    QFile file(window.folder() + "/long.csv");
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("# sensor: TX270-10\n# rate: 1000 Hz\nframe,time [s],Distance 1 [mm]\n");
    constexpr int frames = 100000;
    for (int i = 0; i < frames; ++i)
        file.write(QByteArray::number(i) + ',' + QByteArray::number(i * 0.001) + ",1\n");
    file.close();
    window->openArgument(file.fileName());
    QTRY_VERIFY(window->currentView());
    const SignalHistory *const history = window->currentView()->plot()->plot().history();
    QTRY_COMPARE_WITH_TIMEOUT(history->endFrame(), qint64(frames), 30000);
    QVERIFY(history->firstFrame() > 0);
    const QString kept = QLocale().toString(frames - history->firstFrame());
    QTRY_VERIFY2(window.logText().contains("of 100000 frames only the last " + kept),
                 qPrintable(window.logText()));
    QVERIFY(window->currentView()->findChild<QLabel *>("sessionCounts")->text().contains(kept));
}

QTEST_MAIN(WindowMemoryTest)
#include "tst_windowmemory.moc"
