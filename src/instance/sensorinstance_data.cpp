// SPDX-License-Identifier: MIT
#include "../answervalue_p.h"
#include "catalogue/datatables_p.h"
#include "catalogue/ratetables_p.h"
#include "datablock_p.h"
#include "samplerate_p.h"
#include "sensorinstance_p.h"
#include "specialsensorinstance.h"

namespace SondixQt {

namespace {

// No sensor has frames of more than some hundred values. The limit keeps an answer with a spoilt
// count from filling the memory with empty descriptions.
constexpr int maxSignalsPerFrame = 16384;

constexpr int speedTrackingMode = 5;

using Answer = QMap<QString, QVariant>;

SignalInfo signalFromAnswer(const Answer &answer, int number)
{
    const QString suffix = QString::number(number);
    const auto value = [&](QLatin1String key) { return answer.value(key + suffix); };

    SignalInfo signal;
    signal.index = intAnswer(value(QLatin1String("IA_Index")));
    signal.rawName = value(QLatin1String("IA_Raw_Name")).toString();
    signal.scaledName = value(QLatin1String("IA_Scaled_Name")).toString();
    signal.rawRangeMin = value(QLatin1String("IA_Raw_RangeMin")).toDouble();
    signal.rawRangeMax = value(QLatin1String("IA_Raw_RangeMax")).toDouble();
    signal.scaledRangeMin = value(QLatin1String("IA_Scaled_RangeMin")).toDouble();
    signal.scaledRangeMax = value(QLatin1String("IA_Scaled_RangeMax")).toDouble();
    signal.viewRange = value(QLatin1String("IA_ViewRange")).toDouble();
    signal.rawUnit = value(QLatin1String("IA_Raw_Unit")).toString();
    signal.scaledUnit = value(QLatin1String("IA_Scaled_Unit")).toString();
    signal.rawDatarate = value(QLatin1String("IA_Raw_Datarate")).toDouble();
    signal.scaledDatarate = value(QLatin1String("IA_Scaled_Datarate")).toDouble();
    signal.majorSignal = value(QLatin1String("IA_MajorSignal")).toBool();
    signal.additionalInfo = value(QLatin1String("IA_AdditionalInfo")).toString();
    return signal;
}

bool namesSwitchedOff(const QString &name)
{
    return name.toUpper().contains(QLatin1String("OFF"));
}

bool namesSwitch(const QString &name)
{
    return name.toUpper().contains(QLatin1String("SWITCH"));
}

void cutAtParenthesis(QString &name)
{
    const int parenthesis = name.indexOf(QLatin1Char('('));
    if (parenthesis >= 0)
        name.truncate(parenthesis);
}

/// Names \a signal, the one with \a number in the frame, as \a row says.
void completeSignal(SignalInfo &signal, int number, const SignalNamingRow &row)
{
    if (namesSwitchedOff(signal.scaledName)) {
        signal.scaledUnit = QStringLiteral("OFF");
    } else if (namesSwitch(signal.scaledName)) {
        if (row.switchName)
            signal.scaledName.replace(QLatin1String("Switch"), QLatin1String(row.switchName));
        signal.scaledUnit = QStringLiteral("SWITCH");
    }
    if (const char *fixedName = row.fixedNames.value(number - 1))
        signal.scaledName = QString::fromLatin1(fixedName);
    cutAtParenthesis(signal.scaledName);
    if (row.offName && signal.scaledName.contains(QLatin1String("Off")))
        signal.scaledName = QString::fromLatin1(row.offName);
}

QVector<SignalInfo> signalsFromAnswer(const Answer &answer, int valuesPerFrame, SensorType type)
{
    const int count = qBound(0, valuesPerFrame, maxSignalsPerFrame);
    QVector<SignalInfo> infos;
    infos.reserve(count);
    const SignalNamingRow *naming = signalNamingRow(type);
    for (int number = 1; number <= count; ++number) {
        SignalInfo signal = signalFromAnswer(answer, number);
        if (naming)
            completeSignal(signal, number, *naming);
        infos.append(std::move(signal));
    }
    return infos;
}

} // namespace

ErrorCode SensorInstance::transmittedDataInfo(TransmittedDataInfo &info, QString *errorText)
{
    Q_D(SensorInstance);
    Answer answer;
    const ErrorCode result =
        sendCommandGetAll(QStringLiteral("Get_TransmittedDataInfo"), {}, answer, errorText, ReadAfterSuccess);
    if (result != NoError)
        return result;

    const int valuesPerFrame = intAnswer(answer.value(QStringLiteral("IA_ValuesPerFrame")));
    const QVector<SignalInfo> signalInfos = signalsFromAnswer(answer, valuesPerFrame, d->sensorType);

    const InstanceLock lock(d);
    d->frameValueCount = valuesPerFrame;
    if (d->video.capable)
        d->getVideoInformationFromSensor();
    d->extractTransmittedVideoChannels(d->video.transmittedInfos);
    info = TransmittedDataInfo(answer.value(QStringLiteral("IA_Datarate")).toDouble(), valuesPerFrame,
                               intAnswer(answer.value(QStringLiteral("IA_MaxValuesPerFrame"))),
                               d->video.infos.size(), signalInfos, d->video.infos);
    return NoError;
}

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

double trackingRate(const SensorInstance &instance)
{
    const auto *tracking = qobject_cast<const SpecialSensorInstanceRG52x *>(&instance);
    if (!tracking)
        return 0.0;
    const QString command = tracking->convertMeasurementModeToCommand(tracking->getTrackingMode());
    return rateOfDistanceTracking(command,
                                  intAnswer(instance.getInfoParameter(QStringLiteral("SA_MeasureTime"), 1)));
}

double frequencyRate(const SensorInstance &instance)
{
    const auto *tracking = qobject_cast<const SpecialSensorInstanceRG531 *>(&instance);
    return rateOfFrequencyAverage(intAnswer(instance.getInfoParameter(QStringLiteral("SA_MeasFrequency"), 1)),
                                  intAnswer(instance.getInfoParameter(QStringLiteral("SA_Average"), 1)),
                                  tracking && tracking->getTrackingMode() == speedTrackingMode);
}

/// What the sensor does not answer stays -1, which means an unknown rate: the command's own result
/// is of no interest.
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

ErrorCode readRate(SensorInstance &instance, const SampleRateRow &row, double &rate, QString *errorText)
{
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
        rate = trackingRate(instance);
        break;
    case SampleRateRule::FrequencyAverage:
        rate = frequencyRate(instance);
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
    double unwanted = 0.0;
    double &result = rate ? *rate : unwanted;
    result = 0.0;
    d->check(NoError, errorText);
    if (const std::optional<double> fixed = fixedSampleRate(d->sensorType)) {
        result = *fixed;
        return NoError;
    }
    return readRate(*this, sampleRateRow(d->sensorType), result, errorText);
}

int SensorInstance::getChannelCount() const
{
    Q_D(const SensorInstance);
    return d->channelCount;
}

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
    Answer answer;
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

// The measured values of these sensors come with the next transfer: nothing is added to the vector.
ErrorCode SensorInstancePrivate::getMeasureForKvBusSensors(QVector<QByteArray> &, QString *errorText)
{
    Q_Q(SensorInstance);
    const QString command = QStringLiteral("Get_Measure");
    if (getMeasureNeeded && baseType() == SensorType::MultiSensor) {
        const QVector<int> numbers = getMeasureSensorNumbers; // a slot may re-open the setup meanwhile
        for (const int number : numbers) {
            const ErrorCode result =
                q->sendCommand(command, {{QStringLiteral("IP_SensorIndex"), number}}, errorText);
            if (result != NoError)
                return check(result, errorText);
        }
        return NoError;
    }

    const ErrorCode result = q->sendCommand(command, errorText);
    if (result != NoError)
        return check(result, errorText);
    return NoError;
}

int SensorInstancePrivate::determineOutChannelCount(const QVector<QByteArray> &measures) const
{
    return outChannelCount(frameValueCount, measures);
}

} // namespace SondixQt
