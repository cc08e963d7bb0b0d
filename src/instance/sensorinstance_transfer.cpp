// SPDX-License-Identifier: MIT
#include "catalogue/datatables_p.h"
#include "sensorinstance_p.h"
#include "sondix/answervalue_p.h"
#include "sondix/datablock_p.h"
#include "sondix/sondixapi_p.h"

namespace SondixQt {

namespace {

/// Resizes \a values, whose contents will be overwritten. If the data are shared, allocates new ones instead of
/// copying the old ones first.
template<typename T>
void resizeForOverwriting(QVector<T> &values, int count)
{
    if (!values.isDetached())
        values = QVector<T>(count);
    else if (values.size() != count)
        values.resize(count);
}

template<typename T>
void shrink(QVector<T> &values, int count)
{
    if (count < values.size())
        values.resize(count);
}

} // namespace

bool SensorInstance::isGetMeasureNeeded() const
{
    Q_D(const SensorInstance);
    return d->getMeasureNeeded;
}

ErrorCode SensorInstancePrivate::determineGetMeasureSensorNumbers()
{
    Q_Q(SensorInstance);
    if (isPolled(baseType()))
        getMeasureNeeded = true;
    if (baseType() != MultiSensor)
        return NoError;

    getMeasureSensorNumbers.clear();
    QMap<QString, QVariant> answer;
    const ErrorCode result = q->sendCommandGetAll(QStringLiteral("Get_DrvSetting"), {}, answer, nullptr,
                                                  SensorInstance::ReadAfterSuccess);
    const int count = qMin(intAnswer(answer.value(QStringLiteral("IA_SensorCount"))), maxSensorCount);
    for (int number = 1; number <= count; ++number) {
        if (isPolled(SensorType(intAnswer(answer.value(QStringLiteral("IA_SensorType#%1").arg(number)))))) {
            getMeasureSensorNumbers.append(number);
            getMeasureNeeded = true;
        }
    }
    return result;
}

ErrorCode SensorInstancePrivate::getMeasureForKvBusSensors(QString *errorText)
{
    Q_Q(SensorInstance);
    const QString command = QStringLiteral("Get_Measure");
    if (baseType() != MultiSensor) {
        const ErrorCode result = q->sendCommand(command, errorText);
        return result == NoError ? NoError : check(result, errorText);
    }
    const QVector<int> numbers = getMeasureSensorNumbers; // copied: a slot may re-open the setup
    for (const int number : numbers) {
        const ErrorCode result = q->sendCommand(command, {{QStringLiteral("IP_SensorIndex"), number}}, errorText);
        if (result != NoError)
            return check(result, errorText);
    }
    return NoError;
}

ErrorCode SensorInstancePrivate::pollMeasures(QString *errorText)
{
    return getMeasureNeeded ? getMeasureForKvBusSensors(errorText) : NoError;
}

ErrorCode SensorInstancePrivate::announcedValues(int &count, QString *errorText)
{
    int announced = 0;
    const ErrorCode result = check(::DataAvail(handle, &announced), errorText);
    count = blockValues(announced, frameValueCount);
    return result;
}

ErrorCode SensorInstance::dataAvail(int &available, QString *errorText)
{
    Q_D(SensorInstance);
    const InstanceLock lock(d);
    const ErrorCode result = d->check(::DataAvail(d->handle, &available), errorText);
    available = qMax(available, 0);
    return result;
}

ErrorCode SensorInstance::transferData(QVector<double> &values, QString *errorText)
{
    Q_D(SensorInstance);
    const InstanceLock lock(d);
    ErrorCode result = d->pollMeasures(errorText);
    if (result != NoError)
        return result;

    int count = 0;
    result = d->announcedValues(count, errorText);
    if (result == NoError) {
        resizeForOverwriting(values, count);
        int read = 0;
        result = d->check(::TransferData(d->handle, nullptr, values.data(), count, &read), errorText);
        shrink(values, transferredValues(read, count));
    }
    // Documented behaviour: this overload emits errorMessage() twice for a failure.
    return d->check(result, errorText);
}

ErrorCode SensorInstance::transferData(double *scaled, int *raw, double *timestamp, int &count, QString *errorText)
{
    Q_D(SensorInstance);
    const InstanceLock lock(d);
    const ErrorCode polled = d->pollMeasures(errorText);
    if (polled != NoError)
        return polled;

    const int capacity = qMax(count, 0);
    int read = 0;
    double unused = 0.0;
    const ErrorCode result = d->check(
        ::TransferDataTS(d->handle, raw, scaled, capacity, &read, timestamp ? timestamp : &unused), errorText);
    count = transferredValues(read, capacity);
    return result;
}

ErrorCode SensorInstance::transferDataRaw(QVector<int> &values, double &timestamp, QString *errorText)
{
    Q_D(SensorInstance);
    const InstanceLock lock(d);
    ErrorCode result = d->pollMeasures(errorText);
    if (result != NoError)
        return result;

    int count = 0;
    result = d->announcedValues(count, nullptr);
    if (result != NoError)
        return result;
    resizeForOverwriting(values, count);
    if (count == 0)
        return d->check(NoError, errorText);

    int read = 0;
    result = d->check(::TransferDataTS(d->handle, values.data(), nullptr, count, &read, &timestamp), errorText);
    shrink(values, transferredValues(read, count));
    return result;
}

ErrorCode SensorInstance::transferDataScaled(QVector<double> &values, double &timestamp, QString *errorText)
{
    Q_D(SensorInstance);
    const InstanceLock lock(d);
    ErrorCode result = d->pollMeasures(errorText);
    if (result != NoError)
        return result;

    int count = 0;
    result = d->announcedValues(count, errorText);
    if (d->loggingEnabled && d->rawBuffer.size() < count)
        d->rawBuffer.resize(count);
    if (result != NoError)
        return result;
    resizeForOverwriting(values, count);
    if (count == 0)
        return NoError;

    // The sensor-access library logs raw values only if they are requested.
    int *raw = d->loggingEnabled ? d->rawBuffer.data() : nullptr;
    int read = 0;
    result = d->check(::TransferDataTS(d->handle, raw, values.data(), count, &read, &timestamp), errorText);
    shrink(values, transferredValues(read, count));
    return result;
}

} // namespace SondixQt
