// SPDX-License-Identifier: MIT
#include "datablock_p.h"
#include "sensorinstance_p.h"
#include "sondixapi_p.h"

namespace SondixQt {

namespace {

/// Resizes \a values, whose contents will be overwritten: a copy that somebody else holds is left to
/// them instead of being copied first.
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

ErrorCode SensorInstancePrivate::pollMeasures(int &frameValues, QString *errorText)
{
    frameValues = frameValueCount;
    if (!getMeasureNeeded)
        return NoError;
    QVector<QByteArray> measures;
    const ErrorCode result = getMeasureForKvBusSensors(measures, errorText);
    frameValues = determineOutChannelCount(measures);
    return result;
}

ErrorCode SensorInstancePrivate::announcedValues(int frameValues, int &count, QString *errorText)
{
    int announced = 0;
    const ErrorCode result = check(::DataAvail(handle, &announced), errorText);
    count = blockValues(announced, frameValues);
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
    int frameValues = 0;
    ErrorCode result = d->pollMeasures(frameValues, errorText);
    if (result != NoError)
        return result;

    int count = 0;
    result = d->announcedValues(frameValues, count, errorText);
    if (result == NoError) {
        resizeForOverwriting(values, count);
        int read = 0;
        result = d->check(::TransferData(d->handle, nullptr, values.data(), count, &read), errorText);
        shrink(values, transferredValues(read, count));
    }
    // Reported once more whatever it was: a failure of this form shows twice in errorMessage().
    return d->check(result, errorText);
}

ErrorCode SensorInstance::transferData(double *scaled, int *raw, double *timestamp, int &count, QString *errorText)
{
    Q_D(SensorInstance);
    const InstanceLock lock(d);
    int frameValues = 0;
    const ErrorCode polled = d->pollMeasures(frameValues, errorText);
    if (polled != NoError)
        return polled;

    const int capacity = qMax(count, 0);
    int read = 0;
    double unwanted = 0.0;
    const ErrorCode result = d->check(
        ::TransferDataTS(d->handle, raw, scaled, capacity, &read, timestamp ? timestamp : &unwanted), errorText);
    count = transferredValues(read, capacity);
    return result;
}

ErrorCode SensorInstance::transferDataRaw(QVector<int> &values, double &timestamp, QString *errorText)
{
    Q_D(SensorInstance);
    const InstanceLock lock(d);
    int frameValues = 0;
    ErrorCode result = d->pollMeasures(frameValues, errorText);
    if (result != NoError)
        return result;

    int count = 0;
    result = d->announcedValues(frameValues, count, nullptr);
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
    int frameValues = 0;
    ErrorCode result = d->pollMeasures(frameValues, errorText);
    if (result != NoError)
        return result;

    int count = 0;
    result = d->announcedValues(frameValues, count, errorText);
    if (d->loggingEnabled && d->rawBuffer.size() < count)
        d->rawBuffer.resize(count);
    if (result != NoError)
        return result;
    resizeForOverwriting(values, count);
    if (count == 0)
        return NoError;

    // The library logs the raw values only where it is asked for them.
    int *raw = d->loggingEnabled ? d->rawBuffer.data() : nullptr;
    int read = 0;
    result = d->check(::TransferDataTS(d->handle, raw, values.data(), count, &read, &timestamp), errorText);
    shrink(values, transferredValues(read, count));
    return result;
}

} // namespace SondixQt
