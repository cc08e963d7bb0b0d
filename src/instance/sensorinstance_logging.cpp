// SPDX-License-Identifier: MIT
#include "catalogue/sensortypes_p.h"
#include "instancelog_p.h"
#include "sensorinstance_p.h"
#include "sondix/sondixapi_p.h"

#include <QFile>
#include <QRegularExpression>

namespace SondixQt {

Q_LOGGING_CATEGORY(instanceLog, "SondixQt.SensorInstance")
Q_LOGGING_CATEGORY(instanceCallLog, "SondixQt.SensorInstance.Calls", QtWarningMsg)

ErrorCode SensorInstance::enableLogging(const QString &fileName, LogLevel level, LogType type, bool flag1,
                                        bool flag2, int count, QString *errorText)
{
    Q_D(SensorInstance);
    const InstanceLock lock(d);
    d->loggingEnabled = true;
    const qint32 result =
        EnableLogging(d->handle, 1, type, level, QFile::encodeName(fileName).constData(), flag1, flag2, count);
    const QString application = usedByApplicationName();
    if (!application.isEmpty())
        logToFile(LogInformation, QStringLiteral("SondixQt::SensorInstance::enableLogging"), application);
    return d->check(result, errorText);
}

ErrorCode SensorInstance::enableLogging(const QString &fileName, int count, QString *errorText)
{
    static const QRegularExpression numberedFiles(QStringLiteral("%\\[\\d+\\]"));
    const bool singleFile = count < 1 || !fileName.contains(numberedFiles);
    return enableLogging(fileName, LogAllLevels, LogAllTypes, singleFile, false, count, errorText);
}

ErrorCode SensorInstance::disableLogging(QString *errorText)
{
    Q_D(SensorInstance);
    const InstanceLock lock(d);
    d->loggingEnabled = false;
    const ErrorCode result = d->setParameter(QStringLiteral("IP_EnableLogging"), 0, errorText);
    return result == NoError ? sendCommand(QStringLiteral("Enable_Logging"), errorText) : result;
}

void SensorInstance::logToFile(LogLevel level, const QString &source, const QString &message)
{
    Q_D(SensorInstance);
    LogToFile(d->handle, level, source.toLatin1().constData(), message.toLatin1().constData());
}

bool SensorInstance::GetLogging() const
{
    Q_D(const SensorInstance);
    return d->loggingEnabled;
}

} // namespace SondixQt
