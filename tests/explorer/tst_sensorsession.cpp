// SPDX-License-Identifier: MIT
#include "support/scripting.h"
#include "support/unit.h"

#include "explorerbench.h"

#include "explorer/sensor/sensorsession.h"

#include <SondixQt/errorvalue.h>

using namespace Explorer;
using namespace SondixQt;
using State = SensorReader::State;

/// A sensor that is open in the explorer, without a window.
class SensorSessionTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { loadExplorerBench(); }
    void cleanup()
    {
        sondixsim::releaseHangs();
        sondixsim::clearFaults();
    }

    void knowsWhoItIsAfterOpening();
    void keepsWhatTheSensorSends();
    void knowsTheTextsOfErrorValues();
    void extremesBeginAgainAfterAReset();
    void reconnectsToASensorThatWasUnplugged();
    void saysWhyASensorCannotBeOpened();
    void showsSentencesWithPercentSigns();
    void aFailedSessionCanBeOpenedAgain();
    void aChangedRateKeepsTheHistory();
    void readingAgainKeepsTheHistory();
    void closingDeliversEverything();
    void closingAFailedSessionIsAnnounced();
};

void SensorSessionTest::knowsWhoItIsAfterOpening()
{
    SensorSession session(firstAddress());
    QCOMPARE(session.title(), QString("TX270 3"));
    QCOMPARE(session.stateText(), QString("stopped"));
    QVERIFY(!session.isSimulated());
    session.open();
    QTRY_COMPARE(session.state(), State::Reading);
    QCOMPARE(session.title(), QString("TX270 1001"));
    QCOMPARE(session.serialNumber(), QString("1001"));
    QCOMPARE(session.model(), TX270);
    QCOMPARE(session.place(), QString("3"));
    QCOMPARE(session.stateText(), QString("reading"));
    QCOMPARE(session.problem(), QString());
    QVERIFY(session.isSimulated());
    QCOMPARE(session.frame().valuesPerFrame, 2);
    QVERIFY(session.rate());
    QCOMPARE(*session.rate(), 1000.0);
}

void SensorSessionTest::keepsWhatTheSensorSends()
{
    SensorSession session(firstAddress());
    QSignalSpy arrived(&session, &SensorSession::dataArrived);
    session.open();
    QTRY_COMPARE(session.state(), State::Reading);
    QVERIFY(session.history().isEmpty());
    sondixsim::advance(0.5);
    QTRY_COMPARE(session.framesRead(), 500);
    QVERIFY(arrived.count() > 0);
    QCOMPARE(session.history().endFrame() - session.history().firstFrame(), 500);
    QCOMPARE(session.values().count(), 2);
    const SignalValue &value = session.values().at(0);
    QVERIFY(value.minimum && value.maximum && value.present);
    QCOMPARE(*value.maximum - *value.minimum, 499.0); // the signal counts frames
    QCOMPARE(*value.present, *value.maximum);
    QCOMPARE(*session.values().at(1).present, *value.present + 7.0);
    QCOMPARE(session.losses().frames(), 0);
}

void SensorSessionTest::knowsTheTextsOfErrorValues()
{
    SensorSession session(firstAddress());
    session.open();
    QTRY_COMPARE(session.state(), State::Reading);
    QCOMPARE(session.errorText(-1.0e10 - 4), QString("Target out of range"));
    QCOMPARE(session.errorText(-1.0e10 - 77), QString("error -77"));
    sondixsim::pushData("1001", {}, {5.0, -1.0e10 - 4}, 0.0);
    QTRY_COMPARE(session.framesRead(), 1);
    QVERIFY(!session.values().at(0).isError());
    QVERIFY(session.values().at(1).isError());
    QVERIFY(!session.values().at(1).minimum);
    QCOMPARE(session.values().at(1).errors, 1);
}

void SensorSessionTest::extremesBeginAgainAfterAReset()
{
    SensorSession session(firstAddress());
    session.open();
    QTRY_COMPARE(session.state(), State::Reading);
    sondixsim::advance(0.1);
    QTRY_COMPARE(session.framesRead(), 100);
    session.resetValues();
    QVERIFY(!session.values().at(0).minimum);
    QVERIFY(session.values().at(0).present); // what is shown stays
    sondixsim::advance(0.1);
    QTRY_COMPARE(session.framesRead(), 200);
    QCOMPARE(*session.values().at(0).maximum - *session.values().at(0).minimum, 99.0);
}

void SensorSessionTest::reconnectsToASensorThatWasUnplugged()
{
    SensorSession session(firstAddress());
    QSignalSpy happened(&session, &SensorSession::happened);
    session.open();
    QTRY_COMPARE(session.state(), State::Reading);
    sondixsim::unplug("1001");
    QTRY_COMPARE(session.state(), State::Reconnecting);
    QCOMPARE(session.stateText(), QString("reconnecting"));
    QVERIFY2(session.problem().contains("connection"), qPrintable(session.problem()));
    sondixsim::plug("1001");
    QTRY_COMPARE(session.state(), State::Reading);
    QCOMPARE(session.problem(), QString());
    QVERIFY(!session.losses().isEmpty());
    const auto isProblem = [](const QList<QVariant> &arguments) { return arguments.at(1).toBool(); };
    QVERIFY(std::any_of(happened.cbegin(), happened.cend(), isProblem));
}

void SensorSessionTest::saysWhyASensorCannotBeOpened()
{
    SensorAddress address = firstAddress();
    address.parameters["IP_Port"] = 99;
    SensorSession session(address, "my sensor");
    session.open();
    QTRY_COMPARE(session.state(), State::Failed);
    QCOMPARE(session.title(), QString("my sensor"));
    QVERIFY(!session.reader().errorString().isEmpty());
    QVERIFY(session.problem().contains(session.reader().errorString()));
}

void SensorSessionTest::showsSentencesWithPercentSigns()
{
    scriptFailure("OpenSensor", -7, "below 5%2 of %1");
    SensorSession session(firstAddress());
    QSignalSpy happened(&session, &SensorSession::happened);
    session.open();
    QTRY_COMPARE(session.state(), State::Failed);
    QStringList texts;
    for (const QList<QVariant> &arguments : qAsConst(happened))
        texts += arguments.first().toString();
    QVERIFY2(texts.contains("below 5%2 of %1 (error -7)"), qPrintable(texts.join('\n')));
}

void SensorSessionTest::aFailedSessionCanBeOpenedAgain()
{
    sondixsim::unplug("1001");
    SensorSession session(firstAddress());
    session.open();
    QTRY_COMPARE(session.state(), State::Failed);
    sondixsim::plug("1001");
    session.reopen();
    QTRY_COMPARE(session.state(), State::Reading);
    QCOMPARE(session.problem(), QString());
}

void SensorSessionTest::aChangedRateKeepsTheHistory()
{
    SensorSession session(firstAddress());
    session.open();
    QTRY_COMPARE(session.state(), State::Reading);
    sondixsim::advance(0.1);
    QTRY_COMPARE(session.framesRead(), 100);
    QSignalSpy frames(&session, &SensorSession::frameChanged);
    session.reader().addSetting("Set_Samplerate", {{"SP_Measrate", 2.0}});
    QTRY_COMPARE(frames.count(), 1);
    QVERIFY(session.rate());
    QCOMPARE(*session.rate(), 2000.0);
    QVERIFY(session.history().endFrame() - session.history().firstFrame() >= 100);
}

// As after the web interface, which needs the sensor for itself.
void SensorSessionTest::readingAgainKeepsTheHistory()
{
    SensorSession session(firstAddress());
    session.open();
    QTRY_COMPARE(session.state(), State::Reading);
    sondixsim::advance(0.1);
    QTRY_COMPARE(session.framesRead(), 100);
    session.reader().stop();
    QTRY_COMPARE(session.state(), State::Stopped);
    sondixsim::advance(1.0);
    session.open();
    QTRY_COMPARE(session.state(), State::Reading);
    sondixsim::advance(0.05);
    QTRY_COMPARE(session.framesRead(), 50);
    const SignalHistory &history = session.history();
    QCOMPARE(history.endFrame() - history.firstFrame(), 150);
    // The pause is a gap that is as long as it was.
    QCOMPARE(history.timeLine().gaps().size(), std::size_t(1));
    QVERIFY(!history.timeLine().gaps().front().gap.frames);
    const double before = history.timeLine().position(history.firstFrame() + 99);
    const double after = history.timeLine().position(history.firstFrame() + 100);
    QVERIFY2(std::abs(after - before - 1.0) < 0.1, qPrintable(QString::number(after - before)));
}

void SensorSessionTest::closingDeliversEverything()
{
    SensorSession session(firstAddress());
    QSignalSpy closed(&session, &SensorSession::closed);
    session.open();
    QTRY_COMPARE(session.state(), State::Reading);
    sondixsim::advance(0.25);
    session.close();
    QTRY_COMPARE(closed.count(), 1);
    QCOMPARE(session.framesRead(), 250);
    QCOMPARE(session.state(), State::Stopped);
    session.open(); // it is closed for good
    QCOMPARE(session.state(), State::Stopped);
}

void SensorSessionTest::closingAFailedSessionIsAnnounced()
{
    sondixsim::unplug("1001");
    SensorSession session(firstAddress());
    QSignalSpy closed(&session, &SensorSession::closed);
    session.open();
    QTRY_COMPARE(session.state(), State::Failed);
    session.close();
    QTRY_COMPARE(closed.count(), 1);
}

QTEST_MAIN(SensorSessionTest)
#include "tst_sensorsession.moc"
