// SPDX-License-Identifier: MIT
#include "support/unit.h"

#include "explorer/sensor/librarymessages.h"
#include "explorer/sensor/logmodel.h"
#include "explorer/sensor/signalvalues.h"

#include <QLoggingCategory>

#include <thread>

using namespace Explorer;
using namespace SondixQt;

namespace {

constexpr double tooFar = -1.0e10 - 4;

DataBlock blockOf(const QVector<double> &values, int width)
{
    return {0, 0, width, values, QVector<qint32>(values.size())};
}

SignalInfo rangeOf(double minimum, double maximum)
{
    SignalInfo info;
    info.scaledRangeMin = minimum;
    info.scaledRangeMax = maximum;
    return info;
}

QStringList passedOn;

void takePassedOn(QtMsgType, const QMessageLogContext &, const QString &text)
{
    passedOn += text;
}

} // namespace

/// Present values, the log and the messages of the library.
class SensorValuesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void extremesLeaveErrorValuesOut();
    void blocksOfAnotherWidthAreIgnored();
    void aResetKeepsThePresentValue();
    void limitsApplyBehindTheOffset();
    void placesFollowTheRange_data();
    void placesFollowTheRange();
    void numbersAreExactWhenCopied_data();
    void numbersAreExactWhenCopied();
    void theLogIsBounded();
    void entriesAreCopiedAsLines();
    void warningsArriveAndArePassedOn();
    void detailsArriveOnDemand();
    void messagesOfThreadsArrive();
    void otherMessagesAreLeftAlone();
};

void SensorValuesTest::extremesLeaveErrorValuesOut()
{
    SignalValues values;
    values.begin(2);
    QVERIFY(!values.at(0).present);
    values.add(blockOf({3.0, tooFar, 1.0, tooFar, 2.0, tooFar}, 2));
    QCOMPARE(*values.at(0).present, 2.0);
    QCOMPARE(*values.at(0).minimum, 1.0);
    QCOMPARE(*values.at(0).maximum, 3.0);
    QCOMPARE(values.at(0).errors, 0);
    QVERIFY(values.at(1).isError());
    QVERIFY(!values.at(1).minimum);
    QCOMPARE(values.at(1).errors, 3);
    values.add(blockOf({tooFar, 7.0}, 2));
    QVERIFY(values.at(0).isError());
    QCOMPARE(*values.at(0).maximum, 3.0);
    QCOMPARE(*values.at(1).minimum, 7.0);
    values.add(blockOf({std::nan(""), 8.0}, 2));
    QVERIFY(values.at(0).isError());
    QCOMPARE(values.at(0).errors, 2);
}

void SensorValuesTest::blocksOfAnotherWidthAreIgnored()
{
    SignalValues values;
    values.begin(2);
    values.add(blockOf({1.0, 2.0, 3.0}, 3));
    values.add(DataBlock());
    QVERIFY(!values.at(0).present);
    values.begin(-1);
    QCOMPARE(values.count(), 0);
}

void SensorValuesTest::aResetKeepsThePresentValue()
{
    SignalValues values;
    values.begin(1);
    values.add(blockOf({3.0, tooFar, 5.0}, 1));
    values.reset();
    QCOMPARE(*values.at(0).present, 5.0);
    QVERIFY(!values.at(0).maximum);
    QCOMPARE(values.at(0).errors, 0);
}

void SensorValuesTest::limitsApplyBehindTheOffset()
{
    DisplayLimits limits;
    QCOMPARE(limits.check(1.0e9), DisplayLimits::Within);
    limits.lower = -1.0;
    limits.upper = 1.0;
    limits.offset = 10.0;
    QCOMPARE(limits.check(10.5), DisplayLimits::Within);
    QCOMPARE(limits.check(11.0), DisplayLimits::Within);
    QCOMPARE(limits.check(11.5), DisplayLimits::Above);
    QCOMPARE(limits.check(0.0), DisplayLimits::Below);
}

void SensorValuesTest::placesFollowTheRange_data()
{
    QTest::addColumn<double>("minimum");
    QTest::addColumn<double>("maximum");
    QTest::addColumn<int>("places");
    QTest::newRow("10 mm") << 0.0 << 10.0 << 4;
    QTest::newRow("symmetric") << -5.0 << 5.0 << 4;
    QTest::newRow("2 mm") << 0.0 << 2.0 << 5;
    QTest::newRow("150 m in mm") << 0.0 << 150000.0 << 0;
    QTest::newRow("100 %") << 0.0 << 100.0 << 3;
    QTest::newRow("tiny") << 0.0 << 1.0e-9 << 7;
    QTest::newRow("none") << 0.0 << 0.0 << 4;
    QTest::newRow("infinite") << 0.0 << HUGE_VAL << 4;
}

void SensorValuesTest::placesFollowTheRange()
{
    QFETCH(double, minimum);
    QFETCH(double, maximum);
    QTEST(decimalPlaces(rangeOf(minimum, maximum)), "places");
}

void SensorValuesTest::numbersAreExactWhenCopied_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<QString>("text");
    QTest::newRow("short") << 0.1 << "0.1";
    QTest::newRow("thousands") << 1234567.5 << "1234567.5";
    QTest::newRow("third") << 1.0 / 3.0 << "0.3333333333333333";
    QTest::newRow("negative") << -2.0 << "-2";
    QTest::newRow("small") << 1.0e-12 << "1e-12";
}

void SensorValuesTest::numbersAreExactWhenCopied()
{
    QFETCH(double, value);
    QLocale::setDefault(QLocale(QLocale::German));
    const QString text = exactNumber(value);
    QCOMPARE(shownNumber(1234.5, 1), QString("1.234,5"));
    QLocale::setDefault(QLocale::c());
    QTEST(text, "text");
    QCOMPARE(text.toDouble(), value);
}

void SensorValuesTest::theLogIsBounded()
{
    LogModel log;
    for (int i = 0; i < LogModel::maxEntries + 1; ++i)
        log.add(LogModel::Event, "s", QString::number(i));
    QVERIFY(log.rowCount() <= LogModel::maxEntries);
    QVERIFY(log.rowCount() >= LogModel::maxEntries / 2);
    const QModelIndex last = log.index(log.rowCount() - 1, LogModel::TextColumn);
    QCOMPARE(last.data().toString(), QString::number(LogModel::maxEntries));
    log.clear();
    QCOMPARE(log.rowCount(), 0);
}

void SensorValuesTest::entriesAreCopiedAsLines()
{
    LogModel log;
    log.add(LogModel::Event, "A", "one");
    log.add(LogModel::Problem, "B", "two\n");
    const QStringList lines = log.text({0, 1}).split('\n');
    QCOMPARE(lines.size(), 2);
    QVERIFY(lines.at(0).endsWith("\tA\tone"));
    QVERIFY(lines.at(1).endsWith("\tB\ttwo"));
    QVERIFY(QDateTime::fromString(lines.at(0).section('\t', 0, 0), Qt::ISODateWithMs).isValid());
    QCOMPARE(log.index(1, LogModel::SourceColumn).data(LogModel::KindRole).toInt(), int(LogModel::Problem));
}

void SensorValuesTest::warningsArriveAndArePassedOn()
{
    static const QLoggingCategory category("SondixQt.Test");
    passedOn.clear();
    const QtMessageHandler before = qInstallMessageHandler(takePassedOn);
    {
        LibraryMessages messages;
        QSignalSpy received(&messages, &LibraryMessages::messageReceived);
        qCWarning(category) << "careful";
        qCDebug(category) << "detail";
        QTRY_COMPARE(received.count(), 1);
        QCOMPARE(received.first().at(0).toString(), QString("SondixQt.Test"));
        QCOMPARE(received.first().at(1).toString(), QString("careful"));
        QVERIFY(received.first().at(2).toBool());
    }
    qCWarning(category) << "later"; // the handler from before is back
    qInstallMessageHandler(before);
    QCOMPARE(passedOn, QStringList({"careful", "detail", "later"}));
}

void SensorValuesTest::detailsArriveOnDemand()
{
    static const QLoggingCategory category("SondixQt.Test", QtWarningMsg);
    passedOn.clear();
    const QtMessageHandler before = qInstallMessageHandler(takePassedOn);
    {
        LibraryMessages messages;
        QSignalSpy received(&messages, &LibraryMessages::messageReceived);
        messages.setDetailed(true);
        QVERIFY(category.isDebugEnabled());
        qCDebug(category) << "detail";
        QTRY_COMPARE(received.count(), 1);
        QVERIFY(!received.first().at(2).toBool());
        messages.setDetailed(false);
        QVERIFY(!category.isDebugEnabled());
    }
    qInstallMessageHandler(before);
    QCOMPARE(passedOn, QStringList()); // not on the terminal as well
}

void SensorValuesTest::messagesOfThreadsArrive()
{
    static const QLoggingCategory category("SondixQt.Test");
    constexpr int perThread = 500;
    const QtMessageHandler before =
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
    {
        LibraryMessages messages;
        QSignalSpy received(&messages, &LibraryMessages::messageReceived);
        std::vector<std::thread> threads;
        for (int t = 0; t < 4; ++t)
            threads.emplace_back([] {
                for (int i = 0; i < perThread; ++i)
                    qCWarning(category) << i;
            });
        for (std::thread &thread : threads)
            thread.join();
        QTRY_COMPARE(received.count(), 4 * perThread);
    }
    qInstallMessageHandler(before);
}

void SensorValuesTest::otherMessagesAreLeftAlone()
{
    passedOn.clear();
    const QtMessageHandler before = qInstallMessageHandler(takePassedOn);
    {
        LibraryMessages messages;
        QSignalSpy received(&messages, &LibraryMessages::messageReceived);
        qWarning("not of the library");
        QTest::qWait(20);
        QCOMPARE(received.count(), 0);
    }
    qInstallMessageHandler(before);
    QCOMPARE(passedOn, QStringList("not of the library"));
}

QTEST_GUILESS_MAIN(SensorValuesTest)
#include "tst_sensorvalues.moc"
