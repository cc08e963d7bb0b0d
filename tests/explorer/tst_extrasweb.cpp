// SPDX-License-Identifier: MIT
#include "explorerbench.h"

#include "explorer/extras/webtunnel.h"
#include "explorer/sensor/sensorsession.h"
#include "support/scripting.h"

#include <QAction>
#include <QNetworkAccessManager>
#include <QNetworkReply>

using namespace Explorer;
using namespace SondixQt;

/// The web interface of serial sensors.
class ExtrasWebTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        loadExplorerBench();
        sondixsim::setLineSpeedEffect(false);
        m_session = std::make_unique<SensorSession>(firstAddress());
        m_session->open();
        QTRY_COMPARE(m_session->state(), SensorReader::Reading);
        m_shown.clear();
    }
    void cleanup()
    {
        m_session.reset();
        sondixsim::clearFaults();
    }

    void isOfferedForSerialSensors();
    void pausesReadingAndShowsThePage();
    void aSensorThatWasNotReadIsNotReadAfterwards();
    void failuresResumeReading();
    void closedWhileItIsOpened();
    void openingTheSensorAgainClosesIt();
    void tellsThatThereIsNoBrowser();
    void destructionClosesTheTunnel();

private:
    std::unique_ptr<WebTunnel> make()
    {
        auto web = std::make_unique<WebTunnel>(*m_session);
        web->setBrowser([this](const QUrl &url) {
            m_shown.append(url);
            return m_hasBrowser;
        });
        return web;
    }

    std::unique_ptr<SensorSession> m_session;
    QVector<QUrl> m_shown;
    bool m_hasBrowser = true;
};

void ExtrasWebTest::isOfferedForSerialSensors()
{
    QVERIFY(WebTunnel::isOffered(firstAddress()));
    QVERIFY(!WebTunnel::isOffered(secondAddress()));
    SensorAddress inNetwork = firstAddress();
    inNetwork.parameters["IP_Interface"] = "TCP/IP";
    QVERIFY(!WebTunnel::isOffered(inNetwork));
}

void ExtrasWebTest::pausesReadingAndShowsThePage()
{
    const auto web = make();
    web->action()->trigger();
    QVERIFY(web->action()->isChecked());
    QTRY_COMPARE(web->state(), WebTunnel::Open);
    QCOMPARE(m_session->state(), SensorReader::Stopped);
    QCOMPARE(m_shown, QVector<QUrl>{web->url()});
    QVERIFY(web->stateText().contains(web->url().toString()));
    QNetworkAccessManager network;
    QNetworkReply *reply = network.get(QNetworkRequest(web->url()));
    QTRY_VERIFY(reply->isFinished());
    QCOMPARE(reply->error(), QNetworkReply::NoError);
    QVERIFY(reply->readAll().contains("<html"));
    delete reply;
    web->action()->trigger();
    QTRY_COMPARE(web->state(), WebTunnel::Closed);
    QVERIFY(!web->action()->isChecked());
    QVERIFY(web->url().isEmpty());
    QTRY_COMPARE(m_session->state(), SensorReader::Reading);
}

void ExtrasWebTest::aSensorThatWasNotReadIsNotReadAfterwards()
{
    m_session->reader().stop();
    QTRY_COMPARE(m_session->state(), SensorReader::Stopped);
    const auto web = make();
    web->open();
    QTRY_COMPARE(web->state(), WebTunnel::Open);
    web->close();
    QTRY_COMPARE(web->state(), WebTunnel::Closed);
    QTest::qWait(100);
    QCOMPARE(m_session->state(), SensorReader::Stopped);
}

void ExtrasWebTest::failuresResumeReading()
{
    const auto web = make();
    QSignalSpy happened(web.get(), &WebTunnel::happened);
    sondixsim::Fault fault;
    fault.function = "OpenSensor";
    fault.code = -9;
    fault.text = "The line is busy";
    const int number = sondixsim::inject(fault);
    web->open();
    QTRY_COMPARE(happened.size(), 1);
    QVERIFY2(happened[0][0].toString().contains("The line is busy"), qPrintable(happened[0][0].toString()));
    QVERIFY(happened[0][1].toBool());
    QCOMPARE(web->state(), WebTunnel::Closed);
    QVERIFY(!web->action()->isChecked());
    QVERIFY(m_shown.isEmpty());
    // Reading is resumed and fails as well.
    QTRY_COMPARE(m_session->state(), SensorReader::Failed);
    sondixsim::removeFault(number);
    m_session->reopen();
    QTRY_COMPARE(m_session->state(), SensorReader::Reading);
}

void ExtrasWebTest::closedWhileItIsOpened()
{
    const auto web = make();
    web->open();
    web->close();
    QTRY_COMPARE(web->state(), WebTunnel::Closed);
    QVERIFY(m_shown.isEmpty());
    QTRY_COMPARE(m_session->state(), SensorReader::Reading);
}

// Two would want the same port otherwise.
void ExtrasWebTest::openingTheSensorAgainClosesIt()
{
    const auto web = make();
    QSignalSpy states(&m_session->reader(), &SensorReader::stateChanged);
    web->open();
    QTRY_COMPARE(web->state(), WebTunnel::Open);
    m_session->reopen();
    QTRY_COMPARE(m_session->state(), SensorReader::Reading);
    QCOMPARE(web->state(), WebTunnel::Closed);
    for (const QList<QVariant> &state : qAsConst(states))
        QVERIFY(state.first().value<SensorReader::State>() != SensorReader::Failed);
}

void ExtrasWebTest::tellsThatThereIsNoBrowser()
{
    m_hasBrowser = false;
    const auto web = make();
    QSignalSpy happened(web.get(), &WebTunnel::happened);
    web->open();
    QTRY_COMPARE(web->state(), WebTunnel::Open);
    QTRY_COMPARE(happened.size(), 2);
    QVERIFY(happened[1][1].toBool());
    QVERIFY(happened[1][0].toString().contains(web->url().toString()));
    m_hasBrowser = true;
}

void ExtrasWebTest::destructionClosesTheTunnel()
{
    auto web = make();
    web->open();
    QTRY_COMPARE(web->state(), WebTunnel::Open);
    web.reset();
    m_session->reopen();
    QTRY_COMPARE(m_session->state(), SensorReader::Reading);
}

QTEST_MAIN(ExtrasWebTest)
#include "tst_extrasweb.moc"
