// SPDX-License-Identifier: MIT
#include "support/unit.h"

#include "explorerbench.h"

#include "explorer/sensor/sensorlistmodel.h"
#include "explorer/sensor/sensorsearch.h"
#include "support/scripting.h"

#include <QSettings>
#include <QTemporaryDir>

Q_DECLARE_METATYPE(Explorer::SearchScope)

using namespace Explorer;
using namespace SondixQt;

/// The search in its thread, and the list of sensors.
class SensorListTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        loadExplorerBench();
        sondixsim::useRealClock(50.0);
    }
    void cleanup()
    {
        sondixsim::releaseHangs();
        sondixsim::clearFaults();
    }

    void findsSensorsOneByOne();
    void searchesTheChosenScope_data();
    void searchesTheChosenScope();
    void canBeCancelled();
    void canBeStartedAgain();
    void aRefusedSearchEndsWithAReason();
    void aHangingSearchBlocksNobody();
    void sensorsAreListedOnce();
    void anOpenedSensorKeepsItsSerialNumber();
    void oldSensorsAreOnlyRemembered();
    void theListIsKept();
    void badEntriesAreLeftOut();
};

void SensorListTest::findsSensorsOneByOne()
{
    SensorSearch search;
    SensorListModel list;
    connect(&search, &SensorSearch::sensorFound, &list, &SensorListModel::addFound);
    QSignalSpy found(&search, &SensorSearch::sensorFound);
    QSignalSpy progress(&search, &SensorSearch::progressChanged);
    QSignalSpy finished(&search, &SensorSearch::finished);
    search.start({});
    QVERIFY(search.isRunning());
    QTRY_COMPARE_WITH_TIMEOUT(finished.count(), 1, 30000);
    QVERIFY(!search.isRunning());
    QCOMPARE(found.count(), 2);
    QVERIFY(progress.count() > 1);
    QCOMPARE(list.rowCount(), 2);
    QCOMPARE(list.foundCount(), 2);
    const int row = list.rowOf(list.at(0).address);
    QCOMPARE(row, 0);
    QStringList titles{list.index(0).data(SensorListModel::TitleRole).toString(),
                       list.index(1).data(SensorListModel::TitleRole).toString()};
    titles.sort();
    QCOMPARE(titles, QStringList({"CC430 1002", "TX270 1001"}));
    QVERIFY(!list.index(0).data(Qt::DecorationRole).value<QPixmap>().isNull());
    QVERIFY(list.index(0).data(Qt::AccessibleTextRole).toString().contains("found"));
}

void SensorListTest::searchesTheChosenScope_data()
{
    QTest::addColumn<SearchScope>("scope");
    QTest::addColumn<QString>("serialNumber");
    QTest::newRow("interface") << SearchScope{RS232, AllGroups, NoSensor} << "1001";
    QTest::newRow("group") << SearchScope{SensorInterfaces(~0), Wavlen, NoSensor} << "";
    QTest::newRow("model") << SearchScope{SensorInterfaces(~0), AllGroups, CC430} << "1002";
    QTest::newRow("model elsewhere") << SearchScope{RS232, AllGroups, CC430} << "";
}

void SensorListTest::searchesTheChosenScope()
{
    QFETCH(SearchScope, scope);
    SensorSearch search;
    SensorListModel list;
    connect(&search, &SensorSearch::sensorFound, &list, &SensorListModel::addFound);
    QSignalSpy finished(&search, &SensorSearch::finished);
    search.start(scope);
    QTRY_COMPARE_WITH_TIMEOUT(finished.count(), 1, 30000);
    QTEST(list.rowCount() > 0 ? list.at(0).serialNumber : QString(), "serialNumber");
    QVERIFY(list.rowCount() < 2);
}

void SensorListTest::canBeCancelled()
{
    sondixsim::useVirtualClock(); // this search would never end
    SensorSearch search;
    QSignalSpy finished(&search, &SensorSearch::finished);
    QSignalSpy progress(&search, &SensorSearch::progressChanged);
    search.start({});
    QTRY_VERIFY(progress.count() > 1);
    search.cancel();
    QTRY_COMPARE(finished.count(), 1);
    QVERIFY(!search.isRunning());
}

void SensorListTest::canBeStartedAgain()
{
    SensorSearch search;
    QSignalSpy found(&search, &SensorSearch::sensorFound);
    QSignalSpy finished(&search, &SensorSearch::finished);
    search.start({RS232, AllGroups, TX270});
    search.start({}); // nothing happens
    QTRY_COMPARE_WITH_TIMEOUT(finished.count(), 1, 30000);
    QCOMPARE(found.count(), 1);
    search.start({RS232, AllGroups, TX270});
    QTRY_COMPARE_WITH_TIMEOUT(finished.count(), 2, 30000);
    QCOMPARE(found.count(), 2);
}

void SensorListTest::aRefusedSearchEndsWithAReason()
{
    scriptCommandFailure("Start_FindSensor", -5, "no licence");
    SensorSearch search;
    QSignalSpy problem(&search, &SensorSearch::problemOccurred);
    QSignalSpy finished(&search, &SensorSearch::finished);
    search.start({RS232, AllGroups, TX270});
    QTRY_COMPARE(finished.count(), 1);
    QVERIFY(problem.count() > 0);
    QVERIFY2(problem.first().first().toString().contains("no licence"),
             qPrintable(problem.first().first().toString()));
    QVERIFY(!search.isRunning());
}

void SensorListTest::aHangingSearchBlocksNobody()
{
    sondixsim::Fault fault;
    fault.command = "Get_FindSensorProgress";
    fault.hang = true;
    sondixsim::inject(fault);
    QElapsedTimer timer;
    {
        SensorSearch search;
        search.start({});
        QTest::qWait(400); // the first query of the progress hangs
        timer.start();
        search.cancel();
        QVERIFY(timer.elapsed() < longestTestWait); // the call hangs until it is released
    }
    QVERIFY(timer.elapsed() < longestTestWait); // the destructor waits for a bounded time
    sondixsim::releaseHangs();
    QTest::qWait(100); // the thread ends and removes itself
}

void SensorListTest::sensorsAreListedOnce()
{
    SensorListModel list;
    QSignalSpy inserted(&list, &QAbstractItemModel::rowsInserted);
    const SensorInfo info({{"IP_SensorType", int(TX270)},
                           {"IP_Interface", "RS232"},
                           {"IP_InterfaceIdx", interfaceIndex(RS232)},
                           {"IP_Port", "COM3"},
                           {"SA_SerialNumber", "1"}},
                          NoSensor);
    list.addFound(info);
    list.addFound(info);
    QCOMPARE(inserted.count(), 1);
    QCOMPARE(list.at(0).serialNumber, QString("1"));
    QCOMPARE(list.index(0).data(SensorListModel::PlaceRole).toString(), QString("RS232, COM3"));
}

void SensorListTest::anOpenedSensorKeepsItsSerialNumber()
{
    SensorListModel list;
    list.addOpened(firstAddress(), "1001", "1.0");
    list.addOpened(firstAddress(), {}, {}); // opened again, not answered yet
    QCOMPARE(list.rowCount(), 1);
    QCOMPARE(list.at(0).serialNumber, QString("1001"));
    QVERIFY(!list.index(0).data(SensorListModel::OpenRole).toBool());
    list.setOpen(firstAddress(), true);
    QVERIFY(list.index(0).data(SensorListModel::OpenRole).toBool());
    list.setOpen(firstAddress(), false);
    QVERIFY(!list.index(0).data(SensorListModel::OpenRole).toBool());
}

void SensorListTest::oldSensorsAreOnlyRemembered()
{
    SensorListModel list;
    list.addOpened(firstAddress(), "1001", {});
    QVERIFY(list.index(0).data(SensorListModel::FoundRole).toBool());
    list.beginSearch();
    QVERIFY(!list.index(0).data(SensorListModel::FoundRole).toBool());
    QCOMPARE(list.foundCount(), 0);
}

void SensorListTest::theListIsKept()
{
    QTemporaryDir folder;
    QSettings settings(folder.filePath("settings.ini"), QSettings::IniFormat);
    SensorListModel list;
    list.addOpened(firstAddress(), "1001", "4.0 (simulator)");
    list.addOpened(secondAddress(), "1002", {});
    list.save(settings);
    SensorListModel restored;
    restored.restore(settings);
    QCOMPARE(restored.rowCount(), 2);
    QCOMPARE(restored.at(0).address, firstAddress());
    QCOMPARE(restored.at(0).serialNumber, QString("1001"));
    QCOMPARE(restored.at(0).firmware, QString("4.0 (simulator)"));
    QVERIFY(!restored.at(0).isFound);
    restored.remove(0);
    restored.save(settings);
    list.restore(settings);
    QCOMPARE(list.rowCount(), 1);
    QCOMPARE(list.at(0).serialNumber, QString("1002"));
}

void SensorListTest::badEntriesAreLeftOut()
{
    QTemporaryDir folder;
    QSettings settings(folder.filePath("settings.ini"), QSettings::IniFormat);
    SensorListModel list;
    list.addOpened(firstAddress(), "1001", {});
    list.save(settings);
    settings.setValue("sensors/size", 100000);
    settings.setValue("sensors/2/address", "TX999@nowhere");
    SensorListModel restored;
    restored.restore(settings);
    QCOMPARE(restored.rowCount(), 1);
}

QTEST_MAIN(SensorListTest)
#include "tst_sensorlist.moc"
