// SPDX-License-Identifier: MIT
#include <SondixQt/RS232Tunnel>

#include "support/faultkinds.h"
#include "tunnelbench.h"
#include "tunnelclient.h"

#include <QLoggingCategory>

#include <optional>

using namespace SondixQt;

namespace {

const QByteArray usualPage = pageBody;
const QByteArray usualAnswer = "done";

/// A page of the web interface, and a command from it.
QList<QByteArray> requests()
{
    return {getRequest("/"), postRequest("SETAVERAGE 4")};
}

QByteArray usualBody(const QByteArray &request)
{
    return request.startsWith("GET") ? usualPage : usualAnswer;
}

QByteArray responseTo(const QByteArray &request, const QUrl &url)
{
    TunnelClient client(url);
    client.send(request);
    return client.response();
}

/// What is wrong with a response that was sent while there was a fault; empty: nothing.
QString mistakeIn(const QByteArray &response, const QByteArray &request, FaultKind::Effect effect)
{
    const int status = statusOf(response);
    const bool isUsual = status == 200 && bodyOf(response) == usualBody(request);
    if (isUsual || (effect == FaultKind::ChangesAnswer && status != 0))
        return {};
    if (effect != FaultKind::Delays && (status >= 400 || response.isEmpty()))
        return {};
    // Not every sensor answers a command that it has carried out.
    if (effect == FaultKind::Fails && request.startsWith("POST") && status == 200 && bodyOf(response).isEmpty())
        return {};
    return "the response is " + QString::fromLatin1(response.left(200));
}

/// The tunnel of a sensor that meets a fault.
class DisturbedTunnel
{
public:
    DisturbedTunnel()
        : m_sensor(TX270)
        , m_tunnel(m_sensor)
    {
        loadTestBench();
        scriptPage();
        scriptGenericAnswer(usualAnswer);
        scriptOutputs(1, 0, 0, 0);
        m_sensor.storeInterfaceParameters(testBenchParameters(TX270));
    }

    /// What is wrong when the fault comes before the tunnel is opened.
    QString mistakeOfOpening(const sondixsim::Fault &fault, FaultKind::Effect effect)
    {
        {
            const Disturbance disturbance(fault);
            const ErrorCode code = m_tunnel.openTunnel(m_url);
            if (effect == FaultKind::Delays && code != NoError)
                return "a delay is a failure";
            if (code == NoError && m_url.isValid() != m_tunnel.isTunnelOpen())
                return "it has an address but is not open";
            if (code != NoError && m_tunnel.isTunnelOpen())
                return "it is open in spite of an error";
        }
        return m_tunnel.openTunnel(m_url) != NoError ? "it does not open after the fault" : mistakeOfService();
    }

    /// What is wrong when the fault comes while the tunnel is open.
    QString mistakeOfRequests(const sondixsim::Fault &fault, FaultKind::Effect effect)
    {
        for (const QByteArray &request : requests()) {
            if (m_tunnel.openTunnel(m_url) != NoError)
                return "it does not open";
            {
                const Disturbance disturbance(fault);
                const QString wrong = mistakeIn(responseTo(request, m_url), request, effect);
                if (!wrong.isEmpty())
                    return wrong;
            }
            if (const QString wrong = mistakeOfService(); !wrong.isEmpty())
                return wrong;
        }
        return {};
    }

private:
    /// As long as it exists, the fault does.
    class Disturbance
    {
    public:
        explicit Disturbance(const sondixsim::Fault &fault)
            : m_number(sondixsim::inject(fault))
        {
            if (fault.hang)
                m_releaser.emplace();
        }
        ~Disturbance() { sondixsim::removeFault(m_number); }
        Q_DISABLE_COPY(Disturbance)

    private:
        const int m_number;
        std::optional<HangReleaser> m_releaser;
    };

    /// What is wrong without a fault.
    QString mistakeOfService()
    {
        for (const QByteArray &request : requests()) {
            const QByteArray response = responseTo(request, m_url);
            if (statusOf(response) != 200 || bodyOf(response) != usualBody(request))
                return "after the fault the response is " + QString::fromLatin1(response.left(200));
        }
        m_tunnel.closeTunnel();
        return m_sensor.isOpen() ? QString("the sensor stays open") : QString();
    }

    SensorInstance m_sensor;
    RS232Tunnel m_tunnel;
    QUrl m_url;
};

/// What the tunnel calls when it opens the sensor, answers requests and closes it.
QStringList calledFunctions()
{
    loadTestBench();
    scriptPage();
    scriptGenericAnswer(usualAnswer);
    SensorInstance sensor(TX270);
    sensor.storeInterfaceParameters(testBenchParameters(TX270));
    CallRecorder recorder;
    RS232Tunnel tunnel(sensor);
    QUrl url;
    if (tunnel.openTunnel(url) == NoError) {
        for (const QByteArray &request : requests())
            responseTo(request, url);
        tunnel.closeTunnel();
    }
    return recordedFunctions();
}

} // namespace

/// The tunnel with every kind of fault in every function of the sensor-access library that it calls: no content is invented,
/// and it serves requests again when the fault is gone.
class TunnelFaultsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QLoggingCategory::setFilterRules("SondixQt.*=false"); } // failures are the rule
    void cleanup() { sondixsim::clearFaults(); }

    void callsTheseFunctions();
    void goesOn_data();
    void goesOn();
};

void TunnelFaultsTest::callsTheseFunctions()
{
    QStringList called = calledFunctions();
    called.sort();
    QCOMPARE(called.join(' '),
             QString("CloseSensor GetParameterBinary GetParameterInt GetParameterString OpenSensor "
                     "SensorCommand SetParameterInt SetParameterString"));
}

void TunnelFaultsTest::goesOn_data()
{
    QTest::addColumn<QString>("function");
    QTest::addColumn<int>("times");
    for (const QString &function : calledFunctions()) {
        QTest::newRow(qPrintable(function + " once")) << function << 1;
        QTest::newRow(qPrintable(function)) << function << -1;
    }
}

void TunnelFaultsTest::goesOn()
{
    QFETCH(const QString, function);
    QFETCH(const int, times);
    for (const FaultKind &kind : faultKinds()) {
        if (!canAffect(kind, function))
            continue;
        sondixsim::Fault fault = kind.fault;
        fault.function = function.toStdString();
        fault.times = times;
        const QString ofOpening = DisturbedTunnel().mistakeOfOpening(fault, kind.effect);
        QVERIFY2(ofOpening.isEmpty(), qPrintable(QString("%1, opening: %2").arg(kind.name, ofOpening)));
        const QString ofRequests = DisturbedTunnel().mistakeOfRequests(fault, kind.effect);
        QVERIFY2(ofRequests.isEmpty(), qPrintable(QString("%1, requests: %2").arg(kind.name, ofRequests)));
    }
}

QTEST_GUILESS_MAIN(TunnelFaultsTest)
#include "tst_tunnelfaults.moc"
