// SPDX-License-Identifier: MIT
#include "catalogue/datatables_p.h"
#include "sensorinstance_p.h"
#include "sondix/answervalue_p.h"

namespace SondixQt {

namespace {

// Frames have at most a few hundred values. The limit keeps a corrupt count in an answer from exhausting the memory
// with empty descriptions.
constexpr int maxSignalsPerFrame = 16384;

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

bool containsOff(const QString &name)
{
    return name.toUpper().contains(QLatin1String("OFF"));
}

bool containsSwitch(const QString &name)
{
    return name.toUpper().contains(QLatin1String("SWITCH"));
}

void truncateAtParenthesis(QString &name)
{
    const int parenthesis = name.indexOf(QLatin1Char('('));
    if (parenthesis >= 0)
        name.truncate(parenthesis);
}

/// Applies \a row to \a signal, whose place in the frame is \a number (from 1).
void applyNaming(SignalInfo &signal, int number, const SignalNamingRow &row)
{
    if (containsOff(signal.scaledName)) {
        signal.scaledUnit = QStringLiteral("OFF");
    } else if (containsSwitch(signal.scaledName)) {
        if (row.switchName)
            signal.scaledName.replace(QLatin1String("Switch"), QLatin1String(row.switchName));
        signal.scaledUnit = QStringLiteral("SWITCH");
    }
    if (const char *fixedName = row.fixedNames.value(number - 1))
        signal.scaledName = QString::fromLatin1(fixedName);
    truncateAtParenthesis(signal.scaledName);
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
            applyNaming(signal, number, *naming);
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

int SensorInstance::getChannelCount() const
{
    Q_D(const SensorInstance);
    return d->channelCount;
}

} // namespace SondixQt
