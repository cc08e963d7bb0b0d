// SPDX-License-Identifier: MIT
#include <SondixQt/RS232Tunnel>

#include "tunnelbench.h"
#include "tunnelclient.h"

#include <QDir>
#include <QRegularExpression>
#include <QSettings>
#include <QTemporaryDir>

#include <memory>

using namespace SondixQt;

namespace {

/// The name of the log file with which \a calls enable logging.
QString logName(const QStringList &calls)
{
    static const QRegularExpression pattern(
        QString("^EnableLogging\\(1, 2147483647, 2147483647, \"(.*)\", 0, 0, 10\\)$"));
    const QStringList begun = calls.filter(pattern);
    return begun.isEmpty() ? QString() : pattern.match(begun.first()).captured(1);
}

} // namespace

/// The sensor-access library's log of the tunnel.
class TunnelLogTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();

    void logIsNamedAfterTheSensor();
    void logGoesWhereTheSettingsSay();
    void logBeginsAtOnceOnAnOpenSensor();
    void logOfALentSensorIsBegunOnce();
    void anEmptyFolderIsNone();
    void logEndsAtOnce();
    void slashesDoNotEndUpInTheName();

private:
    void begin(bool forget = true);

    std::unique_ptr<SensorInstance> sensor;
    std::unique_ptr<RS232Tunnel> tunnel;
    std::unique_ptr<CallRecorder> recorder;
    QUrl url;
};

void TunnelLogTest::init()
{
    loadTestBench();
    sensor = std::make_unique<SensorInstance>(TX270);
    sensor->storeInterfaceParameters(testBenchParameters(TX270));
    tunnel = std::make_unique<RS232Tunnel>(*sensor);
    recorder = std::make_unique<CallRecorder>();
}

void TunnelLogTest::cleanup()
{
    recorder.reset();
    tunnel.reset();
    sensor.reset();
    QSettings().clear();
}

/// Opens the tunnel and, with \a forget, discards the calls recorded so far.
void TunnelLogTest::begin(bool forget)
{
    QCOMPARE(tunnel->openTunnel(url), NoError);
    if (forget)
        recorder->take();
}

void TunnelLogTest::logIsNamedAfterTheSensor()
{
    Q_EMIT tunnel->enableLogging(true);
    QCOMPARE(tunnel->openTunnel(url), NoError);
    const QRegularExpression expected(
        QRegularExpression::escape(QDir::tempPath()) +
        QString("/WebInterface_TX270_\\d{4}-\\d\\d-\\d\\d_\\d\\d-\\d\\d-\\d\\d\\.\\d{3}%\\[10\\]\\.log"));
    const QStringList calls = recorder->take();
    const QString file = logName(calls);
    QVERIFY2(QRegularExpression(QRegularExpression::anchoredPattern(expected.pattern())).match(file).hasMatch(),
             qPrintable(calls.join(QLatin1Char('\n'))));
    // Logging is enabled before the sensor is opened.
    QVERIFY(calls.indexOf(QStringLiteral("OpenSensor()")) >
            calls.indexOf(QRegularExpression(QString("^EnableLogging.*"))));
    Q_EMIT tunnel->enableLogging(false);
    tunnel->closeTunnel();
}

void TunnelLogTest::logGoesWhereTheSettingsSay()
{
    const QTemporaryDir folder;
    QSettings().setValue(QString("logFileDir"), folder.path());
    Q_EMIT tunnel->enableLogging(true);
    QCOMPARE(tunnel->openTunnel(url), NoError);
    QVERIFY(logName(recorder->take()).startsWith(folder.path() + QString("/WebInterface_TX270_")));
    QCOMPARE(QDir(folder.path()).entryList({QString("WebInterface_TX270_*.log")}).size(), 1);
    Q_EMIT tunnel->enableLogging(false);
    tunnel->closeTunnel();
}

void TunnelLogTest::logBeginsAtOnceOnAnOpenSensor()
{
    const QTemporaryDir folder;
    QSettings().setValue(QString("logFileDir"), folder.path());
    begin();
    Q_EMIT tunnel->enableLogging(true);
    QVERIFY(tunnel->isTunnelOpen());
    QVERIFY(!logName(recorder->take()).isEmpty());

    scriptCommandFailure("Get_HTTP", -2);
    TunnelClient client(url);
    client.send(getRequest("/lost"));
    QCOMPARE(statusOf(client.response()), 502);
    QCOMPARE(recorder->take()
                 .filter(QRegularExpression(QString("^LogToFile\\(32, \"SondixQt::RS232TunnelWorker::handleRequest"
                                                    "FromSocket\", \"Get_HTTP error:'told to fail'.*/lost.*")))
                 .size(),
             1);
    Q_EMIT tunnel->enableLogging(false);
    tunnel->closeTunnel();
}

void TunnelLogTest::logOfALentSensorIsBegunOnce()
{
    const QTemporaryDir folder;
    QSettings().setValue(QString("logFileDir"), folder.path());
    QCOMPARE(sensor->open(sensor->storedInterfaceParameters()), NoError);
    recorder->take();
    Q_EMIT tunnel->enableLogging(true);
    begin(false);
    QCOMPARE(recorder->take().filter(QRegularExpression(QString("^EnableLogging.*"))).size(), 1);
    Q_EMIT tunnel->enableLogging(false);
    tunnel->closeTunnel();
}

void TunnelLogTest::anEmptyFolderIsNone()
{
    QSettings().setValue(QString("logFileDir"), QString());
    Q_EMIT tunnel->enableLogging(true);
    begin(false);
    QVERIFY(logName(recorder->take()).startsWith(QDir::tempPath() + QString("/WebInterface_")));
    Q_EMIT tunnel->enableLogging(false);
    tunnel->closeTunnel();
}

void TunnelLogTest::logEndsAtOnce()
{
    const QTemporaryDir folder;
    QSettings().setValue(QString("logFileDir"), folder.path());
    begin();
    Q_EMIT tunnel->enableLogging(true);
    QVERIFY(tunnel->isTunnelOpen());
    recorder->take();
    Q_EMIT tunnel->enableLogging(false);
    QVERIFY(tunnel->isTunnelOpen());
    QCOMPARE(recorder->take().mid(0, 3),
             (QStringList{QString("SetParameterInt(\"IP_EnableLogging\", 0)"),
                          QString("SetParameterString(\"S_Command\", \"Enable_Logging\")"),
                          QString("SensorCommand()")}));
    QVERIFY(!sensor->GetLogging());
    // Opening the tunnel again does not enable logging.
    tunnel->closeTunnel();
    begin();
    QVERIFY(!sensor->GetLogging());
}

void TunnelLogTest::slashesDoNotEndUpInTheName()
{
    const QTemporaryDir folder;
    QSettings().setValue(QString("logFileDir"), folder.path());
    SensorInstance card(XA200PCI);
    scriptAnswer("Get_OpenState", "IA_SensorOpen=1");
    RS232Tunnel other(card);
    Q_EMIT other.enableLogging(true);
    QVERIFY(!other.isTunnelOpen());
    QVERIFY(logName(recorder->take()).startsWith(folder.path() + QString("/WebInterface_XA200_PCI_")));
    Q_EMIT other.enableLogging(false);
}

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    const QTemporaryDir settings;
    for (const char *variable : {"TMPDIR", "TMP", "TEMP"})
        qputenv(variable, settings.path().toLocal8Bit());
    QSettings::setDefaultFormat(QSettings::IniFormat);
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, settings.path());
    QCoreApplication::setOrganizationName(QString("SondixQtTests"));
    QCoreApplication::setApplicationName(QString("tst_tunnellog"));
    TunnelLogTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_tunnellog.moc"
