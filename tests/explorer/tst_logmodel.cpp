// SPDX-License-Identifier: MIT
#include "explorer/sensor/logmodel.h"

#include <QRegularExpression>
#include <QSignalSpy>
#include <QtTest>

using namespace Explorer;
using namespace SondixQt;

/// The log, without a window.
class LogModelTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QLocale::setDefault(QLocale::c()); }

    void repeatedGapsShareAnEntry();
    void gapsOfEachReasonHaveAnEntry();
    void anotherEntryOfTheSensorEndsAnEntryOfGaps();
    void gapsOfUnknownLengthAreCounted();
    void noFrameIsLostFromTheSum();
    void aDroppedEntryDoesNotGrow();

private:
    static DataGap gapOf(std::optional<qint64> frames, DataGap::Reason reason = DataGap::LibraryOverrun)
    {
        DataGap gap;
        gap.frames = frames;
        gap.reason = reason;
        return gap;
    }
    static QString textOf(const LogModel &model, int row)
    {
        return model.index(row, LogModel::TextColumn).data(Qt::ToolTipRole).toString();
    }
};

void LogModelTest::repeatedGapsShareAnEntry()
{
    LogModel model;
    QSignalSpy changed(&model, &LogModel::dataChanged);
    model.add("A", gapOf(20));
    QCOMPARE(textOf(model, 0),
             QString("missing frames: 20 (values were not read in time, or the line was too slow)"));
    QCOMPARE(model.index(0, 0).data(LogModel::KindRole).toInt(), int(LogModel::Problem));
    model.add("A", gapOf(1));
    model.add("A", gapOf(5));
    QCOMPARE(model.rowCount(), 1);
    QCOMPARE(changed.size(), 2);
    QCOMPARE(textOf(model, 0),
             QString("missing frames: 26 in 3 gaps (values were not read in time, or the line was too slow)"));
}

void LogModelTest::gapsOfEachReasonHaveAnEntry()
{
    LogModel model;
    for (int i = 0; i < 3; ++i) {
        model.add("A", gapOf(2));
        model.add("A", gapOf(3, DataGap::Restarted));
        model.add("B", gapOf(4));
    }
    QCOMPARE(model.rowCount(), 3);
    QVERIFY(textOf(model, 0).startsWith("missing frames: 6 in 3 gaps"));
    QVERIFY(textOf(model, 1).startsWith("missing frames: 9 in 3 gaps"));
    QVERIFY(textOf(model, 2).startsWith("missing frames: 12 in 3 gaps"));
    QCOMPARE(model.index(1, 0).data(LogModel::KindRole).toInt(), int(LogModel::Event));
}

void LogModelTest::anotherEntryOfTheSensorEndsAnEntryOfGaps()
{
    LogModel model;
    model.add("A", gapOf(2));
    model.add(LogModel::Event, "B", "reading"); // of another sensor
    model.add("A", gapOf(2));
    QCOMPARE(model.rowCount(), 2);
    model.add(LogModel::Event, "A", "reconnecting");
    model.add("A", gapOf(7));
    QCOMPARE(model.rowCount(), 4);
    QVERIFY(textOf(model, 0).startsWith("missing frames: 4 in 2 gaps"));
    QVERIFY(textOf(model, 3).startsWith("missing frames: 7 ("));
}

void LogModelTest::gapsOfUnknownLengthAreCounted()
{
    LogModel model;
    model.add("A", gapOf({}, DataGap::Disconnected));
    QCOMPARE(textOf(model, 0), QString("an unknown number of frames is missing (the sensor was disconnected)"));
    model.add("A", gapOf({}, DataGap::Disconnected));
    QCOMPARE(textOf(model, 0),
             QString("an unknown number of frames is missing in 2 gaps (the sensor was disconnected)"));
    model.add("A", gapOf(30, DataGap::Disconnected));
    QCOMPARE(textOf(model, 0),
             QString("missing frames: 30 (gaps: 1), and an unknown number (gaps: 2): the sensor was "
                     "disconnected"));
}

void LogModelTest::noFrameIsLostFromTheSum()
{
    LogModel model;
    qint64 expected = 0;
    for (int i = 0; i < 5000; ++i) {
        const qint64 frames = 1 + i % 17;
        expected += frames;
        model.add(i % 3 == 0 ? "A" : "B", gapOf(frames, DataGap::Reason(i % 5)));
        if (i % 100 == 99)
            model.add(LogModel::Event, "A", "reading");
    }
    static const QRegularExpression sum("^missing frames: (\\d+)");
    qint64 told = 0;
    for (int row = 0; row < model.rowCount(); ++row)
        told += sum.match(textOf(model, row)).captured(1).toLongLong();
    QCOMPARE(told, expected);
    QVERIFY2(model.rowCount() < 400, qPrintable(QString::number(model.rowCount())));
}

void LogModelTest::aDroppedEntryDoesNotGrow()
{
    LogModel model;
    model.add("A", gapOf(1));
    for (int i = 0; i < LogModel::maxEntries; ++i)
        model.add(LogModel::Call, "B", "call");
    model.add("A", gapOf(2));
    QVERIFY(textOf(model, model.rowCount() - 1).startsWith("missing frames: 2 ("));
    // One that is still there grows where it is.
    for (int i = 0; i < 100; ++i)
        model.add(LogModel::Call, "B", "call");
    const int row = model.rowCount() - 101;
    model.add("A", gapOf(2));
    QVERIFY(textOf(model, row).startsWith("missing frames: 4 in 2 gaps"));
    model.clear();
    model.add("A", gapOf(9));
    QCOMPARE(model.rowCount(), 1);
    QVERIFY(textOf(model, 0).startsWith("missing frames: 9 ("));
}

QTEST_GUILESS_MAIN(LogModelTest)
#include "tst_logmodel.moc"
