// SPDX-License-Identifier: MIT
#include "explorerbench.h"

#include "explorer/extras/benchcontrol.h"
#include "explorer/extras/benchmenu.h"

#include <QAction>
#include <QDialog>
#include <QDialogButtonBox>
#include <QJsonArray>
#include <QLineEdit>
#include <QPushButton>

using namespace Explorer;

/// The menu of the simulated bench, and what it stands on.
class ExtrasBenchTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        loadExplorerBench();
        m_control = std::make_unique<BenchControl>();
        QVERIFY(m_control->isAvailable());
    }
    void cleanup()
    {
        m_control.reset();
        sondixsim::clearFaults();
        sondixsim::releaseHangs();
    }

    void findsTheLoadedSimulator();
    void reportsErrors();
    void noAnswerForADestroyedReceiver();
    void theMenuShowsTheSensors();
    void theMenuKeepsNoOldParts();
    void theMenuPullsCables();
    void theMenuInjectsAndRemovesFaults();
    void anyFaultCanBeInjected();
    void anotherBenchIsLoaded();

private:
    /// The answer to a request.
    QJsonObject ask(const QJsonObject &request)
    {
        QJsonObject answer;
        m_control->send(request, this, [&answer](const QJsonObject &received) { answer = received; });
        QElapsedTimer timer;
        timer.start();
        while (answer.isEmpty() && timer.elapsed() < 5000)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        return answer;
    }
    static QMenu *part(const BenchMenu &menu, const char *name)
    {
        auto *found = menu.findChild<QMenu *>(name);
        if (!found)
            qFatal("the menu has no part %s", name);
        return found;
    }
    static void refresh(BenchMenu &menu)
    {
        QSignalSpy refreshed(&menu, &BenchMenu::refreshed);
        menu.refresh();
        QVERIFY(refreshed.wait(longestTestWait));
    }

    std::unique_ptr<BenchControl> m_control;
};

void ExtrasBenchTest::findsTheLoadedSimulator()
{
    // Another copy of the library would have its own bench.
    const QVector<BenchSensor> sensors = BenchControl::sensors(ask({{"do", "sensors"}}));
    QCOMPARE(sensors.size(), 2);
    QCOMPARE(sensors[0].serialNumber, QString("1001"));
    QCOMPARE(sensors[0].model, QString("TX270"));
    QVERIFY(sensors[0].isPlugged && !sensors[0].isOpen && !sensors[0].isSilent);
    sondixsim::unplug("1001");
    QVERIFY(!BenchControl::sensors(ask({{"do", "sensors"}}))[0].isPlugged);
}

void ExtrasBenchTest::reportsErrors()
{
    QVERIFY(BenchControl::error(ask({{"do", "unplug"}, {"sensor", "4711"}})).contains("4711"));
}

void ExtrasBenchTest::noAnswerForADestroyedReceiver()
{
    auto receiver = std::make_unique<QObject>();
    bool isCalled = false;
    m_control->send({{"do", "sensors"}}, receiver.get(), [&isCalled](const QJsonObject &) { isCalled = true; });
    receiver.reset();
    ask({{"do", "sensors"}});
    QVERIFY(!isCalled);
}

void ExtrasBenchTest::theMenuShowsTheSensors()
{
    BenchMenu menu(*m_control);
    sondixsim::unplug("1002");
    refresh(menu);
    const QList<QAction *> cables = part(menu, "cablesMenu")->actions();
    QCOMPARE(cables.size(), 2);
    QVERIFY(cables[0]->text().contains("1001"));
    QVERIFY(cables[0]->isChecked());
    QVERIFY(!cables[1]->isChecked());
    QCOMPARE(part(menu, "triggersMenu")->actions().size(), 2);
    QVERIFY(!part(menu, "faultsMenu")->isEnabled());
}

void ExtrasBenchTest::theMenuKeepsNoOldParts()
{
    BenchMenu menu(*m_control);
    refresh(menu);
    const int parts = menu.findChildren<QMenu *>().size();
    QVERIFY(part(menu, "injectMenu")->actions().size() == 2);
    for (int i = 0; i < 2; ++i) {
        refresh(menu);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    QCOMPARE(menu.findChildren<QMenu *>().size(), parts);
    QVERIFY(part(menu, "injectMenu")->actions().size() == 2);
}

void ExtrasBenchTest::theMenuPullsCables()
{
    BenchMenu menu(*m_control);
    refresh(menu);
    QSignalSpy happened(&menu, &BenchMenu::happened);
    part(menu, "cablesMenu")->actions().at(0)->trigger();
    QTRY_COMPARE(happened.size(), 1);
    QVERIFY(!happened[0][1].toBool());
    QVERIFY(!BenchControl::sensors(ask({{"do", "sensors"}}))[0].isPlugged);
    part(menu, "silenceMenu")->actions().at(0)->trigger();
    QTRY_COMPARE(happened.size(), 2);
    QVERIFY(BenchControl::sensors(ask({{"do", "sensors"}}))[0].isSilent);
    // A sensor that is gone with its bench is a problem for the log, and no crash.
    sondixsim::loadBuiltInBench();
    part(menu, "triggersMenu")->actions().at(0)->trigger();
    QTRY_COMPARE(happened.size(), 3);
    QVERIFY(happened[2][1].toBool());
}

void ExtrasBenchTest::theMenuInjectsAndRemovesFaults()
{
    BenchMenu menu(*m_control);
    refresh(menu);
    QSignalSpy happened(&menu, &BenchMenu::happened);
    QMenu *sensor = part(menu, "injectMenu")->actions().at(0)->menu();
    QVERIFY(sensor && sensor->actions().size() >= 4);
    const int faultCount = sensor->actions().size();
    for (QAction *fault : sensor->actions())
        fault->trigger();
    QTRY_COMPARE(happened.size(), faultCount);
    for (const auto &entry : happened)
        QVERIFY2(!entry[1].toBool(), qPrintable(entry[0].toString()));
    refresh(menu);
    const QList<QAction *> faults = part(menu, "faultsMenu")->actions();
    QCOMPARE(faults.size(), faultCount);
    QVERIFY(faults[0]->text().contains("1001"));
    faults[0]->trigger();
    QTRY_COMPARE(BenchControl::faults(ask({{"do", "faults"}})).size(), faults.size() - 1);
    menu.findChild<QAction *>("clearFaultsAction")->trigger();
    QTRY_COMPARE(BenchControl::faults(ask({{"do", "faults"}})).size(), 0);
}

void ExtrasBenchTest::anyFaultCanBeInjected()
{
    QWidget parent;
    BenchMenu menu(*m_control, &parent);
    refresh(menu);
    menu.findChild<QAction *>("faultAction")->trigger();
    auto *dialog = parent.findChild<QDialog *>("faultDialog");
    QVERIFY(dialog);
    auto *ok = dialog->findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Ok);
    QVERIFY(!ok->isEnabled());
    QTest::keyClicks(dialog->findChild<QLineEdit *>("command"), "Get_Temperature");
    QVERIFY(ok->isEnabled());
    QTest::mouseClick(ok, Qt::LeftButton);
    QTRY_COMPARE(BenchControl::faults(ask({{"do", "faults"}})).size(), 1);
    QVERIFY(BenchControl::faults(ask({{"do", "faults"}}))[0].description.contains("Get_Temperature"));
}

void ExtrasBenchTest::anotherBenchIsLoaded()
{
    BenchMenu menu(*m_control);
    QSignalSpy loaded(&menu, &BenchMenu::benchLoaded);
    QJsonObject answer;
    m_control->load("/no/such/bench.json", this, [&answer](const QJsonObject &received) { answer = received; });
    QTRY_VERIFY(!answer.isEmpty());
    QVERIFY(BenchControl::error(answer).contains("bench.json"));
    QCOMPARE(BenchControl::sensors(ask({{"do", "sensors"}})).size(), 2);
    menu.actions().at(1)->trigger(); // the built-in one
    QTRY_COMPARE(loaded.size(), 1);
    QVERIFY(BenchControl::sensors(ask({{"do", "sensors"}})).size() > 10);
}

QTEST_MAIN(ExtrasBenchTest)
#include "tst_extrasbench.moc"
