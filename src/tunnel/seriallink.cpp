// SPDX-License-Identifier: MIT
#include "seriallink_p.h"

#include "catalogue/interfaceparameters.h"
#include "instance/instanceaccess_p.h"
#include "instance/sensorinstance.h"
#include "tunnellog_p.h"

#include <QDateTime>
#include <QDir>
#include <QRegularExpression>
#include <QSettings>

#include <iterator>
#include <utility>

namespace SondixQt {

Q_LOGGING_CATEGORY(tunnelLog, "SondixQt.RS232Tunnel")
Q_LOGGING_CATEGORY(tunnelRequestLog, "SondixQt.RS232Tunnel.Requests", QtWarningMsg)

namespace {

constexpr int maxPageLength = 16383;
constexpr int closeAttempts = 6;
constexpr int logFileCount = 10;

/// The interface parameters of the sensor are unknown. Never returned to the application.
constexpr ErrorCode unknownLink = ErrorCode(-1);

/// The name for a series of log files of the sensor \a shortName.
QString logFileName(QString shortName)
{
    QString directory = QSettings().value(QStringLiteral("logFileDir")).toString();
    if (directory.isEmpty())
        directory = QDir::tempPath();
    const QString begun = QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd_HH-mm-ss.zzz"));
    shortName.replace(QLatin1Char('/'), QLatin1Char('_'));
    return directory + QStringLiteral("/WebInterface_%1_").arg(shortName) + begun +
           QStringLiteral("%[%1].log").arg(logFileCount);
}

/// The baud rate that \a command sets, 0 if it sets none.
int newBaudrate(const QString &command)
{
    static const QRegularExpression pattern(QStringLiteral("BAUDRATE\\s([1-9][0-9]+)"));
    return pattern.match(command).captured(1).toInt();
}

} // namespace

SerialLink::SerialLink(SensorInstance &instance)
    : sensor(&instance)
{
}

bool SerialLink::isOpen() const
{
    return sensor->isOpen();
}

ErrorCode SerialLink::openSerialCommunication()
{
    if (loggingEnabled)
        startSensorLog();
    const InstanceLock lock(sensor);
    if (!sensor->isOpen()) {
        QString errorText;
        const ErrorCode result = sensor->open(sensor->storedInterfaceParameters(), &errorText);
        if (result != NoError) {
            log("openSerialCommunication", errorText);
            // open() can fail and leave the sensor open. The tunnel does not use it then, so nothing would close
            // it later.
            if (sensor->isOpen())
                sensor->close();
            return result;
        }
        openedByTunnel = true;
    }
    disableRS422Output();
    return NoError;
}

SerialLink::Closing SerialLink::close()
{
    logStarted = false;
    bool isOpen = sensor->isOpen();
    // The sensor keeps this setting: the next application that opens it would get no values.
    if (rs422SwitchedOff && isOpen)
        enableRS422Output();
    else if (rs422SwitchedOff)
        log("closeSerialCommunicationPrivate", QStringLiteral("The RS422 output stays off: the sensor is closed"));

    Closing closing;
    for (int attempt = 0; attempt < closeAttempts && isOpen && openedByTunnel; ++attempt) {
        // SensorInstance::close() does not lock, but must not be executed between a command and its answer.
        const InstanceLock lock(sensor);
        if (sensor->close() == NoError)
            ++closing.closed;
        isOpen = sensor->isOpen();
    }
    closing.failed = isOpen && openedByTunnel;
    if (!isOpen)
        openedByTunnel = false;
    return closing;
}

ErrorCode SerialLink::fetchPage(const QString &path, const QString &entityTag, QByteArray &header,
                                QByteArray &body, QString *errorText)
{
    return sensor->sendCommand(QStringLiteral("Get_HTTP"),
                               {{QStringLiteral("SP_HTTPMaxLength"), maxPageLength},
                                {QStringLiteral("SP_HTTPPath"), path},
                                {QStringLiteral("SP_HTTPeTag"), entityTag}},
                               {{QStringLiteral("SA_HTTPBody"), SensorInstance::resultPointer(&body)},
                                {QStringLiteral("SA_HTTPHeader"), SensorInstance::resultPointer(&header)}},
                               errorText, SensorInstance::ReadAfterSuccess);
}

ErrorCode SerialLink::sendCommand(const QString &text, bool isImport, QByteArray &answer, QString *errorText)
{
    const int baudrate = newBaudrate(text);
    const bool changesLink = isImport || text.startsWith(QLatin1String("SETDEFAULT")) || baudrate != 0;
    const InstanceLock lock(sensor);
    ErrorCode result = sensor->sendCommand(
        QStringLiteral("Cmd_Generic"),
        {{QStringLiteral("SP_CmdStr"), text}, {QStringLiteral("CP_InitAfterSensorCommand"), changesLink ? 1 : 0}},
        errorText);
    if (result != NoError)
        return result;
    answer = optionalAnswer(sensor, QStringLiteral("SA_CompleteAnswer"));
    if (baudrate != 0)
        result = changeBaudrate(baudrate, errorText);
    if (changesLink && sensor->isOpen())
        disableRS422Output();
    return result;
}

bool SerialLink::takeLost()
{
    return std::exchange(lost, false);
}

/// Holds the lock while the sensor is closed, because commands of the application would fail in the meantime.
ErrorCode SerialLink::changeBaudrate(int baudrate, QString *errorText)
{
    const InstanceLock lock(sensor);
    const QMap<QString, QVariant> before = sensor->storedInterfaceParameters();
    if (before.isEmpty()) {
        *errorText = QStringLiteral("The sensor has changed its baud rate, but how it was opened is not known");
        return unknownLink;
    }
    const ErrorCode closed = sensor->close(errorText);
    if (closed != NoError)
        return closed;
    QMap<QString, QVariant> parameters = before;
    parameters.insert(InterfaceParameter::Baudrate, baudrate);
    sensor->storeInterfaceParameters(parameters);
    const ErrorCode result = sensor->open(parameters, errorText);
    if (result != NoError && !sensor->isOpen()) {
        sensor->storeInterfaceParameters(before);
        sensor->open(before);
        lost = !sensor->isOpen();
    }
    return result;
}

void SerialLink::disableRS422Output()
{
    QString errorText;
    if (switchRS422Output(false, &errorText) != NoError)
        log("disableRS422Output", errorText);
}

void SerialLink::enableRS422Output()
{
    QString errorText;
    if (switchRS422Output(true, &errorText) == NoError)
        rs422SwitchedOff = false;
    else
        log("enableRS422Output", errorText);
}

/// Changes the RS422 switch only; sends nothing if it already has the wanted state.
ErrorCode SerialLink::switchRS422Output(bool on, QString *errorText)
{
    static const std::pair<QString, QString> switches[] = {
        {QStringLiteral("SA_OutputRS422"), QStringLiteral("SP_OutputRS422")},
        {QStringLiteral("SA_OutputAnalog"), QStringLiteral("SP_OutputAnalog")},
        {QStringLiteral("SA_OutputErrorOut1"), QStringLiteral("SP_OutputErrorOut1")},
        {QStringLiteral("SA_OutputErrorOut2"), QStringLiteral("SP_OutputErrorOut2")},
    };
    int values[std::size(switches)] = {};
    QMap<QString, QVariant> answers;
    for (size_t i = 0; i < std::size(switches); ++i)
        answers.insert(switches[i].first, SensorInstance::resultPointer(&values[i]));

    const InstanceLock lock(sensor);
    ErrorCode result = sensor->sendCommand(QStringLiteral("Get_DataOutInterface"), {}, answers, errorText,
                                           SensorInstance::ReadAfterSuccess);
    if (result != NoError || (values[0] != 0) == on)
        return result;
    values[0] = on ? 1 : 0;
    QMap<QString, QVariant> parameters;
    for (size_t i = 0; i < std::size(switches); ++i)
        parameters.insert(switches[i].second, values[i]);
    result = sensor->sendCommand(QStringLiteral("Set_DataOutInterface"), parameters, errorText);
    if (result == NoError && !on)
        rs422SwitchedOff = true;
    return result;
}

void SerialLink::enableLogging(bool enable)
{
    loggingEnabled = enable;
    if (!enable) {
        logStarted = false;
        sensor->disableLogging();
    } else if (sensor->isOpen()) {
        startSensorLog();
    }
}

void SerialLink::startSensorLog()
{
    if (std::exchange(logStarted, true))
        return;
    QString errorText;
    const QString name = logFileName(sensorName(sensor->sensorTypeFull(), true));
    if (sensor->enableLogging(name, logFileCount, &errorText) != NoError)
        qCWarning(tunnelLog).noquote() << "RS232TunnelWorker::startSensorLog:" << errorText;
}

void SerialLink::log(const char *function, const QString &text)
{
    qCDebug(tunnelLog).noquote() << text;
    if (!loggingEnabled)
        return;
    const InstanceLock lock(sensor);
    sensor->logToFile(SensorInstance::LogInformation,
                      QStringLiteral("SondixQt::RS232TunnelWorker::") + QLatin1String(function), text);
}

} // namespace SondixQt
