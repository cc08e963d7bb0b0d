// SPDX-License-Identifier: MIT
#include "rs232tunnelworker_p.h"

#include "httpstatus_p.h"
#include "instance/sensorinstance_p.h"
#include "tunnellog_p.h"

#include <QDateTime>
#include <QDir>
#include <QRegularExpression>
#include <QSettings>

#include <utility>

namespace SondixQt {

Q_LOGGING_CATEGORY(tunnelLog, "SondixQt.RS232Tunnel")
Q_LOGGING_CATEGORY(tunnelRequestLog, "SondixQt.RS232Tunnel.Requests", QtWarningMsg)

using SensorLock = std::lock_guard<std::recursive_mutex>;

namespace {

constexpr int maxPageLength = 16383;
constexpr int closeAttempts = 6;
constexpr int logFileCount = 10;

/// Never leaves the tunnel.
constexpr ErrorCode unknownLink = ErrorCode(-1);

std::recursive_mutex &mutexOf(SensorInstance *sensor)
{
    return SensorInstancePrivate::get(sensor)->mutex;
}

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

/// The status of a sensor's answer; an empty header is replaced by one that says 200.
int statusOf(const QByteArray &header)
{
    return header.isEmpty() ? HttpStatus::ok : header.mid(header.indexOf(' ') + 1, 3).toInt();
}

/// The rate to which \a command switches the sensor, 0 when it does not.
int newBaudrate(const QString &command)
{
    static const QRegularExpression pattern(QStringLiteral("BAUDRATE\\s([1-9][0-9]+)"));
    return pattern.match(command).captured(1).toInt();
}

} // namespace

void RS232TunnelWorker::relay(const RequestQueue::Request &request)
{
    const QString path = QString::fromLatin1(request.path);
    const QString tag = QString::fromLatin1(request.entityTag);
    QByteArray header;
    QByteArray body;
    QString errorText;
    const qint64 begin = uptime.elapsed();
    const ErrorCode result =
        sensor->sendCommand(QStringLiteral("Get_HTTP"),
                            {{QStringLiteral("SP_HTTPMaxLength"), maxPageLength},
                             {QStringLiteral("SP_HTTPPath"), path},
                             {QStringLiteral("SP_HTTPeTag"), tag}},
                            {{QStringLiteral("SA_HTTPBody"), SensorInstance::resultPointer(&body)},
                             {QStringLiteral("SA_HTTPHeader"), SensorInstance::resultPointer(&header)}},
                            &errorText, SensorInstance::ReadAfterSuccess);
    if (result == NoError) {
        requests->answer(request, header, body, now());
        logAnswer(request, statusOf(header), begin);
        return;
    }
    log("handleRequestFromSocket",
        QStringLiteral(
            "Get_HTTP error:'%1' RS232TunnelWorker::handleRequestFromSocket SP_HTTPPath: %2 SP_HTTPeTag: %3")
            .arg(errorText, path, tag));
    // The browser's next connection opens the sensor again.
    requests->fail(request, errorText.toLatin1(), !sensor->isOpen(), now());
    logAnswer(request, HttpStatus::badGateway, begin, errorText);
}

void RS232TunnelWorker::handleSensorCommandFromProxy(const RequestQueue::Request &request)
{
    const QString text = QString::fromLatin1(request.text);
    const bool isImport = request.kind == RequestCutter::Import;
    const int baudrate = newBaudrate(text);
    const bool changesLink = isImport || text.startsWith(QLatin1String("SETDEFAULT")) || baudrate != 0;
    QString errorText;
    QByteArray answer;
    ErrorCode result = NoError;
    const qint64 begin = uptime.elapsed();
    {
        const SensorLock lock(mutexOf(sensor));
        result = sensor->sendCommand(QStringLiteral("Cmd_Generic"),
                                     {{QStringLiteral("SP_CmdStr"), text},
                                      {QStringLiteral("CP_InitAfterSensorCommand"), changesLink ? 1 : 0}},
                                     &errorText);
        if (result == NoError)
            answer = SensorInstancePrivate::get(sensor)->optionalAnswer(QStringLiteral("SA_CompleteAnswer"));
        const bool done = result == NoError;
        if (done && baudrate != 0)
            result = changeBaudrate(baudrate, &errorText);
        if (done && changesLink && sensor->isOpen())
            disableRS422Output();
    }
    if (result == NoError) {
        requests->answerCommand(request, answer, now());
        logAnswer(request, HttpStatus::ok, begin);
        return;
    }
    log("handleSensorCommandFromProxy", QStringLiteral("Cmd_Generic error:'%1'").arg(errorText));
    requests->fail(request, errorText.toLatin1(), !sensor->isOpen(), now());
    logAnswer(request, HttpStatus::badGateway, begin, errorText);
}

ErrorCode RS232TunnelWorker::openSerialCommunication()
{
    if (loggingEnabled)
        startSensorLog();
    const SensorLock lock(mutexOf(sensor));
    if (!sensor->isOpen()) {
        QString errorText;
        const ErrorCode result = sensor->open(sensor->storedInterfaceParameters(), &errorText);
        if (result != NoError) {
            log("openSerialCommunication", errorText);
            // Open, but of no use: nobody would close it.
            if (sensor->isOpen())
                sensor->close();
            return result;
        }
        serialOpenedByTunnel = true;
    }
    disableRS422Output();
    return NoError;
}

void RS232TunnelWorker::closeSerialCommunicationPrivate()
{
    // Closing takes no lock of its own, and must not come between a command of the application and its answer.
    const auto closeOnce = [this] {
        const SensorLock lock(mutexOf(sensor));
        return sensor->close() == NoError;
    };
    bool announced = false;
    bool isOpen = sensor->isOpen();
    // The sensor keeps this setting: whoever opens it next would get no values.
    if (rs422SwitchedOff && isOpen)
        enableRS422Output();
    else if (rs422SwitchedOff)
        log("closeSerialCommunicationPrivate", QStringLiteral("The RS422 output stays off: the sensor is closed"));
    for (int attempt = 0; attempt < closeAttempts && isOpen && serialOpenedByTunnel; ++attempt) {
        if (closeOnce()) {
            announced = true;
            Q_EMIT tunnelClosed();
        }
        isOpen = sensor->isOpen();
    }
    const bool closingFailed = isOpen && serialOpenedByTunnel;
    if (!isOpen)
        serialOpenedByTunnel = false;
    if (listening && !announced && !closingFailed)
        Q_EMIT tunnelClosed();
}

/// The application's commands wait meanwhile: between closing and opening they would fail.
ErrorCode RS232TunnelWorker::changeBaudrate(int baudrate, QString *errorText)
{
    const SensorLock lock(mutexOf(sensor));
    const QMap<QString, QVariant> before = sensor->storedInterfaceParameters();
    if (before.isEmpty()) {
        *errorText = QStringLiteral("The sensor has changed its baud rate, but how it was opened is not known");
        return unknownLink;
    }
    const ErrorCode closed = sensor->close(errorText);
    if (closed != NoError)
        return closed;
    QMap<QString, QVariant> parameters = before;
    parameters.insert(QStringLiteral("IP_Baudrate"), baudrate);
    sensor->storeInterfaceParameters(parameters);
    const ErrorCode result = sensor->open(parameters, errorText);
    if (result != NoError && !sensor->isOpen()) {
        sensor->storeInterfaceParameters(before);
        sensor->open(before);
        if (!sensor->isOpen())
            Q_EMIT tunnelClosed();
    }
    return result;
}

void RS232TunnelWorker::disableRS422Output()
{
    QString errorText;
    if (switchRS422Output(false, &errorText) != NoError)
        log("disableRS422Output", errorText);
}

void RS232TunnelWorker::enableRS422Output()
{
    QString errorText;
    if (switchRS422Output(true, &errorText) == NoError)
        rs422SwitchedOff = false;
    else
        log("enableRS422Output", errorText);
}

/// Leaves the other outputs as they are, and a sensor alone whose output is as wanted.
ErrorCode RS232TunnelWorker::switchRS422Output(bool on, QString *errorText)
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

    const SensorLock lock(mutexOf(sensor));
    ErrorCode result = sensor->sendCommand(QStringLiteral("Get_DataOutInterface"), {}, answers, errorText,
                                           SensorInstance::ReadAfterSuccess);
    if (result != NoError || (values[0] != 0) == on)
        return result;
    values[0] = on ? 1 : 0;
    QMap<QString, QVariant> parameters;
    for (size_t i = 0; i < std::size(switches); ++i)
        parameters.insert(switches[i].second, values[i]);
    result = sensor->sendCommand(QStringLiteral("Set_DataOutInterface"), parameters, errorText);
    if (result == NoError)
        rs422SwitchedOff = !on;
    return result;
}

void RS232TunnelWorker::onEnableLogging(bool enable)
{
    loggingEnabled = enable;
    if (!enable) {
        logBegun = false;
        sensor->disableLogging();
    } else if (sensor->isOpen()) {
        startSensorLog();
    }
}

void RS232TunnelWorker::startSensorLog()
{
    if (std::exchange(logBegun, true))
        return;
    QString errorText;
    const QString name = logFileName(sensorName(sensor->sensorTypeFull(), true));
    if (sensor->enableLogging(name, logFileCount, &errorText) != NoError)
        qCWarning(tunnelLog).noquote() << "RS232TunnelWorker::startSensorLog:" << errorText;
}

void RS232TunnelWorker::logAnswer(const RequestQueue::Request &request, int status, qint64 begun,
                                  const QString &problem)
{
    requestLog.answered(request.client, {request.number, request.method, request.path, status, problem, begun},
                        now());
}

/// To the debug log, and to the sensor's where there is one.
void RS232TunnelWorker::log(const char *function, const QString &text)
{
    qCDebug(tunnelLog).noquote() << text;
    if (!loggingEnabled)
        return;
    const SensorLock lock(mutexOf(sensor));
    sensor->logToFile(SensorInstance::LogInformation,
                      QStringLiteral("SondixQt::RS232TunnelWorker::") + QLatin1String(function), text);
}

} // namespace SondixQt
