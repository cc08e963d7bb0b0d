// SPDX-License-Identifier: MIT
#include "catalogue/ratetables_p.h"
#include "samplerate_p.h"
#include "sensorinstance_p.h"
#include "sondix/answervalue_p.h"

namespace SondixQt {

namespace {

QString commandOf(const SampleRateRow &row)
{
    return QString::fromLatin1(row.command);
}

QString answerOf(const SampleRateRow &row)
{
    return QString::fromLatin1(row.answer);
}

ErrorCode readIndexedRate(SensorInstance &instance, const SampleRateRow &row, double &rate, QString *errorText)
{
    int index = -1;
    const ErrorCode result = instance.sendCommandGetInt(commandOf(row), answerOf(row), index, errorText);
    if (result == NoError)
        rate = row.rates.value(index);
    return result;
}

ErrorCode readSampleTime(SensorInstance &instance, const SampleRateRow &row, double &rate, QString *errorText)
{
    double microseconds = 0.0;
    const ErrorCode result = instance.sendCommandGetDouble(commandOf(row), answerOf(row), microseconds, errorText);
    if (result == NoError)
        rate = rateOfSampleTime(microseconds);
    return result;
}

double trackingRate(const SensorInstancePrivate &d)
{
    return rateOfDistanceTracking(d.distanceTrackingCommand(),
                                  intAnswer(d.q_ptr->getInfoParameter(QStringLiteral("SA_MeasureTime"), 1)));
}

double frequencyRate(const SensorInstancePrivate &d)
{
    return rateOfFrequencyAverage(intAnswer(d.q_ptr->getInfoParameter(QStringLiteral("SA_MeasFrequency"), 1)),
                                  intAnswer(d.q_ptr->getInfoParameter(QStringLiteral("SA_Average"), 1)),
                                  d.isSpeedTracking());
}

/// The result of the command is ignored: answers that are missing keep the value -1, which gives an unknown rate.
double averagedRate(SensorInstance &instance, const SampleRateRow &row)
{
    int rateIndex = -1;
    int averageType = -1;
    int averageNumber = -1;
    instance.sendCommand(commandOf(row), {},
                         {{QStringLiteral("SA_SRIndex"), SensorInstance::resultPointer(&rateIndex)},
                          {QStringLiteral("SA_AvrType"), SensorInstance::resultPointer(&averageType)},
                          {QStringLiteral("SA_AvrNbr"), SensorInstance::resultPointer(&averageNumber)}},
                         nullptr, SensorInstance::ReadAfterSuccess);
    return rateOfIndexAndAverage(row.rates, rateIndex, averageType, averageNumber);
}

ErrorCode readRate(SensorInstancePrivate &d, const SampleRateRow &row, double &rate, QString *errorText)
{
    SensorInstance &instance = *d.q_ptr;
    ErrorCode result = NoError;
    switch (row.rule) {
    case SampleRateRule::Unknown:
        break;
    case SampleRateRule::IndexTable:
        return readIndexedRate(instance, row, rate, errorText);
    case SampleRateRule::KilohertzAnswer:
        return instance.sendCommandGetDouble(commandOf(row), answerOf(row), rate, errorText);
    case SampleRateRule::HertzAnswer:
        result = instance.sendCommandGetDouble(commandOf(row), answerOf(row), rate, errorText);
        rate /= 1000.0;
        break;
    case SampleRateRule::MicrosecondsAnswer:
        return readSampleTime(instance, row, rate, errorText);
    case SampleRateRule::DistanceTracking:
        rate = trackingRate(d);
        break;
    case SampleRateRule::FrequencyAverage:
        rate = frequencyRate(d);
        break;
    case SampleRateRule::IndexAndAverage:
        rate = averagedRate(instance, row);
        break;
    }
    return result;
}

} // namespace

ErrorCode SensorInstance::getSampleRateInKhz(double *rate, QString *errorText)
{
    Q_D(SensorInstance);
    double unused = 0.0;
    double &result = rate ? *rate : unused;
    result = 0.0;
    if (const std::optional<double> fixed = fixedSampleRate(d->sensorType)) {
        result = *fixed;
        return d->check(NoError, errorText);
    }
    // Each successful step clears the text to a null QString, whereas a text of the library is never null.
    QString text;
    const ErrorCode code = readRate(*d, sampleRateRow(d->sensorType), result, errorText ? &text : nullptr);
    if (errorText && (code == NoError || !text.isNull()))
        *errorText = text;
    return code;
}

} // namespace SondixQt
