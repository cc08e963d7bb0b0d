// SPDX-License-Identifier: MIT
#include <SondixQt/RS232Tunnel>

#include "tunnelbench.h"
#include "tunnelclient.h"

#include <QRegularExpression>
#include <QSignalSpy>

#include <memory>

using namespace SondixQt;

namespace {

/// The calls that open and close the sensor, set its baud rate, read or set its outputs, or send a generic
/// command.
QStringList linkCalls(CallRecorder &recorder)
{
    static const QRegularExpression relevant(QString(
        "^(?:(?:Open|Close)Sensor\\(\\)|SetParameterInt\\(\"IP_Baudrate\".*|SetParameterInt\\(\"SP_Output.*|"
        "SetParameterString\\(\"S_Command\", \"(?:Get_DataOutInterface|Set_DataOutInterface|Cmd_Generic)\"\\))$"));
    return recorder.take().filter(relevant);
}

QString sent(const char *command)
{
    return QString("SetParameterString(\"S_Command\", \"%1\")").arg(QString(command));
}

QStringList outputs(int rs422, int analog, int error1, int error2)
{
    return {QString("SetParameterInt(\"SP_OutputAnalog\", %1)").arg(analog),
            QString("SetParameterInt(\"SP_OutputErrorOut1\", %1)").arg(error1),
            QString("SetParameterInt(\"SP_OutputErrorOut2\", %1)").arg(error2),
            QString("SetParameterInt(\"SP_OutputRS422\", %1)").arg(rs422), sent("Set_DataOutInterface")};
}

const QString openCall = QStringLiteral("OpenSensor()");
const QString closeCall = QStringLiteral("CloseSensor()");

QString rate(int baudrate)
{
    return QString("SetParameterInt(\"IP_Baudrate\", %1)").arg(baudrate);
}

} // namespace

/// How the tunnel opens, closes and configures the serial link.
class TunnelSerialTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();

    void opensWithTheStoredParameters();
    void rs422OutputIsSwitchedOffAlone_data();
    void rs422OutputIsSwitchedOffAlone();
    void outputsThatCannotBeSwitchedDoNotFailTheOpening_data();
    void outputsThatCannotBeSwitchedDoNotFailTheOpening();
    void lentSensorGetsItsOutputBack();
    void lentSensorWithoutOutputStaysWithoutIt();
    void ownLinkGetsItsOutputBackBeforeItIsClosed();
    void ownLinkWithoutOutputIsJustClosed();
    void outputComesBackAfterFailingClosesToo();
    void aFailureToGiveTheOutputBackIsLogged();
    void anOutputThatCannotComeBackIsLogged();

    void failingCloseIsRepeated_data();
    void failingCloseIsRepeated();
    void closingOnALentSensorIsAnnouncedOnce();
    void aLinkThatOpensWithAnErrorIsClosedAgain();
    void nextConnectionOpensAClosedSensor();
    void connectionIsServedThoughTheSensorStaysClosed();

    void commandsThatTouchTheLinkSwitchTheOutputOff_data();
    void commandsThatTouchTheLinkSwitchTheOutputOff();
    void baudRateIsFollowed_data();
    void baudRateIsFollowed();
    void sensorGoesOnAtItsNewBaudRate();
    void otherTextsAreNoBaudRate_data();
    void otherTextsAreNoBaudRate();
    void refusedBaudRateChangesNothing();
    void baudRateGoesBackWhenTheSensorDoesNotAnswer();
    void linkOfUnknownParametersIsNotGivenUp();
    void baudRateThatLosesTheSensorIsAnnounced();

private:
    void begin();

    std::unique_ptr<SensorInstance> sensor;
    std::unique_ptr<RS232Tunnel> tunnel;
    std::unique_ptr<CallRecorder> recorder;
    QUrl url;
};

void TunnelSerialTest::init()
{
    loadTestBench();
    QMap<QString, QVariant> parameters = testBenchParameters(TX270);
    parameters.insert(QString("IP_Baudrate"), 115200);
    sensor = std::make_unique<SensorInstance>(TX270);
    sensor->storeInterfaceParameters(parameters);
    tunnel = std::make_unique<RS232Tunnel>(*sensor);
    recorder = std::make_unique<CallRecorder>();
}

void TunnelSerialTest::cleanup()
{
    recorder.reset();
    tunnel.reset();
    sensor.reset();
}

/// Opens the tunnel and discards the calls recorded so far.
void TunnelSerialTest::begin()
{
    QCOMPARE(tunnel->openTunnel(url), NoError);
    recorder->take();
}

void TunnelSerialTest::opensWithTheStoredParameters()
{
    scriptOutputs(0, 1, 1, 1);
    QCOMPARE(tunnel->openTunnel(url), NoError);
    const QStringList calls = recorder->take();
    const int opened = calls.indexOf(openCall);
    QVERIFY(opened > 0);
    const QStringList staged = calls.mid(0, opened);
    QVERIFY(staged.contains(QString("SetParameterString(\"IP_Interface\", \"RS232\")")));
    QVERIFY(staged.contains(QString("SetParameterInt(\"IP_Port\", 3)")));
    QVERIFY(staged.contains(rate(115200)));
    QCOMPARE(calls.count(openCall), 1);
    QVERIFY(calls.indexOf(sent("Get_DataOutInterface")) > opened);
}

void TunnelSerialTest::rs422OutputIsSwitchedOffAlone_data()
{
    QTest::addColumn<QList<int>>("before");
    QTest::newRow("all on") << QList<int>{1, 1, 1, 1};
    QTest::newRow("alone on") << QList<int>{1, 0, 0, 0};
    QTest::newRow("mixed") << QList<int>{1, 0, 1, 0};
    QTest::newRow("mixed the other way") << QList<int>{1, 1, 0, 1};
    QTest::newRow("off") << QList<int>{0, 1, 1, 1};
}

void TunnelSerialTest::rs422OutputIsSwitchedOffAlone()
{
    QFETCH(QList<int>, before);
    scriptOutputs(before[0], before[1], before[2], before[3]);
    QCOMPARE(tunnel->openTunnel(url), NoError);
    QStringList expected{rate(115200), openCall, sent("Get_DataOutInterface")};
    if (before[0] != 0)
        expected += outputs(0, before[1], before[2], before[3]);
    QCOMPARE(linkCalls(*recorder), expected);
}

void TunnelSerialTest::outputsThatCannotBeSwitchedDoNotFailTheOpening_data()
{
    QTest::addColumn<QString>("command");
    QTest::newRow("not read") << QString("Get_DataOutInterface");
    QTest::newRow("not written") << QString("Set_DataOutInterface");
}

void TunnelSerialTest::outputsThatCannotBeSwitchedDoNotFailTheOpening()
{
    QFETCH(QString, command);
    scriptCommandFailure(command.toStdString(), -5);
    scriptOutputs(1, 1, 1, 1);
    QTest::ignoreMessage(QtDebugMsg, scriptedFailure);
    QCOMPARE(tunnel->openTunnel(url), NoError);
    QVERIFY(tunnel->isTunnelOpen());
    QVERIFY(recorder->take().contains(sent(qPrintable(command))));
}

void TunnelSerialTest::lentSensorGetsItsOutputBack()
{
    scriptOutputs(1, 0, 1, 1);
    QCOMPARE(sensor->open(sensor->storedInterfaceParameters()), NoError);
    recorder->take();
    QCOMPARE(tunnel->openTunnel(url), NoError);
    QCOMPARE(linkCalls(*recorder), QStringList(sent("Get_DataOutInterface")) + outputs(0, 0, 1, 1));
    sondixsim::clearFaults();
    scriptOutputs(0, 1, 0, 1);
    tunnel->closeTunnel();
    QCOMPARE(linkCalls(*recorder), QStringList(sent("Get_DataOutInterface")) + outputs(1, 1, 0, 1));
    // A second call does nothing.
    tunnel->closeTunnel();
    QCOMPARE(linkCalls(*recorder), QStringList());
}

void TunnelSerialTest::lentSensorWithoutOutputStaysWithoutIt()
{
    scriptOutputs(0, 1, 1, 1);
    QCOMPARE(sensor->open(sensor->storedInterfaceParameters()), NoError);
    begin();
    tunnel->closeTunnel();
    QCOMPARE(linkCalls(*recorder), QStringList());
    QVERIFY(sensor->isOpen());
}

void TunnelSerialTest::ownLinkGetsItsOutputBackBeforeItIsClosed()
{
    scriptOutputs(1, 0, 1, 1);
    begin();
    sondixsim::clearFaults();
    scriptOutputs(0, 1, 0, 1);
    tunnel->closeTunnel();
    QCOMPARE(linkCalls(*recorder),
             QStringList(sent("Get_DataOutInterface")) + outputs(1, 1, 0, 1) + QStringList(closeCall));
    QVERIFY(!sensor->isOpen());
}

void TunnelSerialTest::ownLinkWithoutOutputIsJustClosed()
{
    scriptOutputs(0, 1, 1, 1);
    begin();
    tunnel->closeTunnel();
    QCOMPARE(linkCalls(*recorder), QStringList(closeCall));
}

void TunnelSerialTest::outputComesBackAfterFailingClosesToo()
{
    scriptOutputs(1, 1, 1, 1);
    begin();
    sondixsim::clearFaults();
    scriptOutputs(0, 1, 1, 1);
    scriptFailure("CloseSensor", -8);
    tunnel->closeTunnel();
    const QStringList calls = linkCalls(*recorder);
    QCOMPARE(calls.mid(0, 6), QStringList(sent("Get_DataOutInterface")) + outputs(1, 1, 1, 1));
    QCOMPARE(calls.count(closeCall), 6);
    sondixsim::clearFaults();
}

void TunnelSerialTest::aFailureToGiveTheOutputBackIsLogged()
{
    scriptOutputs(1, 1, 1, 1);
    begin();
    sondixsim::clearFaults();
    scriptCommandFailure("Set_DataOutInterface", -5);
    scriptOutputs(0, 1, 1, 1);
    QTest::ignoreMessage(QtDebugMsg, scriptedFailure);
    tunnel->closeTunnel();
    QVERIFY(!sensor->isOpen());
    // Closing the next tunnel of the same object restores the output.
    sondixsim::clearFaults();
    scriptOutputs(0, 1, 1, 1);
    begin();
    tunnel->closeTunnel();
    QCOMPARE(linkCalls(*recorder),
             QStringList(sent("Get_DataOutInterface")) + outputs(1, 1, 1, 1) + QStringList(closeCall));
}

void TunnelSerialTest::anOutputThatCannotComeBackIsLogged()
{
    scriptOutputs(1, 1, 1, 1);
    begin();
    QCOMPARE(sensor->close(), NoError);
    QTest::ignoreMessage(QtDebugMsg, "The RS422 output stays off: the sensor is closed");
    tunnel->closeTunnel();
}

void TunnelSerialTest::failingCloseIsRepeated_data()
{
    QTest::addColumn<int>("failures");
    QTest::addColumn<int>("attempts");
    QTest::addColumn<bool>("open");
    QTest::newRow("works") << 0 << 1 << false;
    QTest::newRow("fails once") << 1 << 2 << false;
    QTest::newRow("fails five times") << 5 << 6 << false;
    QTest::newRow("fails six times") << 6 << 6 << true;
    QTest::newRow("fails always") << -1 << 6 << true;
}

void TunnelSerialTest::failingCloseIsRepeated()
{
    QFETCH(int, failures);
    QFETCH(int, attempts);
    QFETCH(bool, open);
    scriptOutputs(0, 1, 1, 1);
    begin();
    sondixsim::Fault fault;
    fault.function = "CloseSensor";
    fault.code = -8;
    fault.times = failures;
    if (failures != 0)
        sondixsim::inject(fault);
    QSignalSpy closed(tunnel.get(), &RS232Tunnel::forwardTunnelClosed);
    tunnel->closeTunnel();
    QCOMPARE(linkCalls(*recorder).count(closeCall), attempts);
    QCOMPARE(sensor->isOpen(), open);
    QVERIFY(!tunnel->isTunnelOpen());
    // closeTunnel() returns after the worker has emitted its signals: they are in the queue of this thread.
    QCoreApplication::sendPostedEvents();
    QCOMPARE(closed.count(), open ? 0 : 1);
    sondixsim::clearFaults();
}

void TunnelSerialTest::closingOnALentSensorIsAnnouncedOnce()
{
    QCOMPARE(sensor->open(sensor->storedInterfaceParameters()), NoError);
    begin();
    QSignalSpy closed(tunnel.get(), &RS232Tunnel::forwardTunnelClosed);
    tunnel->closeTunnel();
    tunnel->closeTunnel();
    QVERIFY(sensor->isOpen());
    QCoreApplication::sendPostedEvents();
    QCOMPARE(closed.count(), 1);
}

void TunnelSerialTest::aLinkThatOpensWithAnErrorIsClosedAgain()
{
    // Opening fails, although the library reports afterwards that the sensor is open.
    constexpr int refused = -6;
    sondixsim::Fault fault;
    fault.function = "SetParameterInt";
    fault.parameter = "CP_LogSensorInformation";
    fault.code = refused;
    sondixsim::inject(fault);
    scriptAnswer("Get_OpenState", "IA_SensorOpen=1");
    fault.function = "SensorCommand";
    fault.parameter.clear();
    fault.command = "Get_OpenState";
    fault.code = -1;
    fault.times = 1;
    sondixsim::inject(fault);
    QCOMPARE(int(tunnel->openTunnel(url)), refused);
    QCOMPARE(linkCalls(*recorder).count(closeCall), 1);
    sondixsim::clearFaults();
    QVERIFY(!tunnel->isTunnelOpen());
}

void TunnelSerialTest::nextConnectionOpensAClosedSensor()
{
    scriptPage();
    QSignalSpy opened(tunnel.get(), &RS232Tunnel::forwardTunnelOpened);
    begin();
    QTRY_COMPARE(opened.count(), 1);
    QCOMPARE(sensor->close(), NoError);
    recorder->take();
    TunnelClient client(url);
    client.send(getRequest("/"));
    QCOMPARE(client.response(), QByteArray(pageHeader) + pageBody);
    QVERIFY(sensor->isOpen());
    QVERIFY(linkCalls(*recorder).contains(openCall));
    QTRY_COMPARE(opened.count(), 2);

    TunnelClient second(url);
    second.send(getRequest("/"));
    QCOMPARE(statusOf(second.response()), 200);
    QVERIFY(!linkCalls(*recorder).contains(openCall));
    QCOMPARE(opened.count(), 2);
}

void TunnelSerialTest::connectionIsServedThoughTheSensorStaysClosed()
{
    QSignalSpy opened(tunnel.get(), &RS232Tunnel::forwardTunnelOpened);
    begin();
    QTRY_COMPARE(opened.count(), 1);
    QCOMPARE(sensor->close(), NoError);
    scriptFailure("OpenSensor", -3);
    TunnelClient client(url);
    client.send(getRequest("/"));
    QCOMPARE(statusOf(client.everything()), 502);
    QCOMPARE(opened.count(), 1);
    QVERIFY(tunnel->isTunnelOpen());
}

void TunnelSerialTest::commandsThatTouchTheLinkSwitchTheOutputOff_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<bool>("fails");
    QTest::addColumn<bool>("switchedOff");
    QTest::newRow("setting") << QByteArray("MEASRATE 1") << false << false;
    QTest::newRow("defaults") << QByteArray("SETDEFAULT") << false << true;
    QTest::newRow("import") << QByteArray("IMPORT x\r\nA 1") << false << true;
    QTest::newRow("refused defaults") << QByteArray("SETDEFAULT") << true << false;
    QTest::newRow("refused import") << QByteArray("IMPORT x\r\nA 1") << true << false;
}

void TunnelSerialTest::commandsThatTouchTheLinkSwitchTheOutputOff()
{
    QFETCH(QByteArray, body);
    QFETCH(bool, fails);
    QFETCH(bool, switchedOff);
    begin();
    if (fails)
        scriptCommandFailure("Cmd_Generic", -1);
    scriptGenericAnswer();
    scriptOutputs(1, 1, 0, 0);
    TunnelClient client(url);
    client.send(postRequest(body));
    QCOMPARE(statusOf(client.response()), fails ? 502 : 200);
    QStringList expected{sent("Cmd_Generic")};
    if (switchedOff)
        expected += QStringList(sent("Get_DataOutInterface")) + outputs(0, 1, 0, 0);
    QCOMPARE(linkCalls(*recorder), expected);
}

void TunnelSerialTest::baudRateIsFollowed_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<int>("baudrate");
    QTest::newRow("blank") << QByteArray("BAUDRATE 9600") << 9600;
    QTest::newRow("tab") << QByteArray("BAUDRATE\t230400") << 230400;
    QTest::newRow("two digits") << QByteArray("BAUDRATE 10") << 10;
    QTest::newRow("in a longer text") << QByteArray("SET BAUDRATE 921600 NOW") << 921600;
    QTest::newRow("in an import") << QByteArray("IMPORT x\r\nA 1\r\nBAUDRATE 57600\r\n") << 57600;
}

void TunnelSerialTest::baudRateIsFollowed()
{
    QFETCH(QByteArray, body);
    QFETCH(int, baudrate);
    scriptOutputs(0, 1, 1, 1);
    begin();
    scriptGenericAnswer();
    TunnelClient client(url);
    client.send(postRequest(body));
    QVERIFY(statusOf(client.response()) != 0);
    QCOMPARE(linkCalls(*recorder).mid(0, 4),
             (QStringList{sent("Cmd_Generic"), closeCall, rate(baudrate), openCall}));
}

void TunnelSerialTest::sensorGoesOnAtItsNewBaudRate()
{
    QSignalSpy closed(tunnel.get(), &RS232Tunnel::forwardTunnelClosed);
    begin();
    TunnelClient client(url);
    client.send(postRequest("BAUDRATE 230400"));
    const QByteArray response = client.response();
    QCOMPARE(statusOf(response), 200);
    QCOMPARE(bodyOf(response), QByteArray("BAUDRATE 230400"));
    const QStringList calls = linkCalls(*recorder);
    QCOMPARE(calls.mid(0, 5),
             (QStringList{sent("Cmd_Generic"), closeCall, rate(230400), openCall, sent("Get_DataOutInterface")}));
    QCOMPARE(sensor->storedInterfaceParameters().value(QString("IP_Baudrate")), QVariant(230400));
    client.send(getRequest("/"));
    QCOMPARE(statusOf(client.response()), 200);

    // Change it back. Neither change counts as closing the tunnel.
    client.send(postRequest("BAUDRATE 115200"));
    QCOMPARE(statusOf(client.response()), 200);
    QCOMPARE(sensor->storedInterfaceParameters().value(QString("IP_Baudrate")), QVariant(115200));
    QCoreApplication::sendPostedEvents();
    QCOMPARE(closed.count(), 0);
    tunnel->closeTunnel();
    QVERIFY(!sensor->isOpen());
}

void TunnelSerialTest::otherTextsAreNoBaudRate_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("question") << QByteArray("BAUDRATE");
    QTest::newRow("zero") << QByteArray("BAUDRATE 0");
    QTest::newRow("leading zero") << QByteArray("BAUDRATE 09600");
    QTest::newRow("one digit") << QByteArray("BAUDRATE 9");
    QTest::newRow("two blanks") << QByteArray("BAUDRATE  9600");
    QTest::newRow("equals sign") << QByteArray("BAUDRATE=9600");
    QTest::newRow("small letters") << QByteArray("baudrate 9600");
    QTest::newRow("beyond all numbers") << QByteArray("BAUDRATE 99999999999");
}

void TunnelSerialTest::otherTextsAreNoBaudRate()
{
    QFETCH(QByteArray, body);
    begin();
    scriptGenericAnswer();
    TunnelClient client(url);
    client.send(postRequest(body));
    QCOMPARE(statusOf(client.response()), 200);
    QCOMPARE(linkCalls(*recorder), QStringList(sent("Cmd_Generic")));
}

void TunnelSerialTest::refusedBaudRateChangesNothing()
{
    begin();
    scriptCommandFailure("Cmd_Generic", -4);
    TunnelClient client(url);
    client.send(postRequest("BAUDRATE 9600"));
    QCOMPARE(statusOf(client.response()), 502);
    QCOMPARE(linkCalls(*recorder), QStringList(sent("Cmd_Generic")));
    QCOMPARE(sensor->storedInterfaceParameters().value(QString("IP_Baudrate")), QVariant(115200));
}

void TunnelSerialTest::baudRateGoesBackWhenTheSensorDoesNotAnswer()
{
    begin();
    scriptGenericAnswer();
    sondixsim::Fault silence;
    silence.function = "OpenSensor";
    silence.code = -33;
    silence.text = "nothing <heard>";
    silence.times = 1;
    sondixsim::inject(silence);
    TunnelClient client(url);
    client.send(postRequest("THE BAUDRATE 9600"));
    const QByteArray response = client.response();
    QCOMPARE(statusOf(response), 502);
    QVERIFY(response.contains("nothing &lt;heard&gt;"));
    QCOMPARE(linkCalls(*recorder), (QStringList{sent("Cmd_Generic"), closeCall, rate(9600), openCall, rate(115200),
                                                openCall, sent("Get_DataOutInterface")}));
    QCOMPARE(sensor->storedInterfaceParameters().value(QString("IP_Baudrate")), QVariant(115200));
    QVERIFY(sensor->isOpen());
    tunnel->closeTunnel();
    QVERIFY(!sensor->isOpen());
}

void TunnelSerialTest::linkOfUnknownParametersIsNotGivenUp()
{
    SensorInstance lent(TX270);
    QCOMPARE(lent.open(sensor->storedInterfaceParameters()), NoError);
    SensorInstance adopted(TX270, lent.handle());
    RS232Tunnel other(adopted);
    QCOMPARE(other.openTunnel(url), NoError);
    scriptGenericAnswer();
    recorder->take();
    TunnelClient client(url);
    client.send(postRequest("THE BAUDRATE 9600"));
    const QByteArray response = client.response();
    QCOMPARE(statusOf(response), 502);
    QVERIFY(response.contains("how it was opened is not known"));
    QVERIFY(!linkCalls(*recorder).contains(closeCall));
    QVERIFY(adopted.isOpen());
    other.closeTunnel();
    // Both instances own the same handle; lent releases it here.
    lent = SensorInstance(NoSensor);
}

void TunnelSerialTest::baudRateThatLosesTheSensorIsAnnounced()
{
    QSignalSpy closed(tunnel.get(), &RS232Tunnel::forwardTunnelClosed);
    begin();
    scriptGenericAnswer();
    const int silence = scriptFailure("OpenSensor", -33);
    TunnelClient client(url);
    client.send(postRequest("THE BAUDRATE 9600"));
    QCOMPARE(statusOf(client.everything()), 502);
    QTRY_COMPARE(closed.count(), 1);
    QVERIFY(!sensor->isOpen());
    QVERIFY(tunnel->isTunnelOpen());

    sondixsim::removeFault(silence);
    scriptPage();
    TunnelClient next(url);
    next.send(getRequest("/"));
    QCOMPARE(statusOf(next.response()), 200);
    QVERIFY(sensor->isOpen());
}

QTEST_GUILESS_MAIN(TunnelSerialTest)
#include "tst_tunnelserial.moc"
