// SPDX-License-Identifier: MIT
#include "videoline.h"

#include "shared/videoplot.h"

#include <QCoreApplication>

#include <initializer_list>

using namespace SondixQt;

namespace Explorer {

namespace {

std::optional<double> numberIn(const QVariant &value)
{
    const int type = value.userType();
    if (type != QMetaType::Int && type != QMetaType::Double)
        return std::nullopt;
    return value.toDouble();
}

/// The first number whose name contains one of \a words.
std::optional<double> numberNamed(const QMap<QString, QVariant> &answer, std::initializer_list<const char *> words)
{
    for (auto it = answer.cbegin(); it != answer.cend(); ++it)
        for (const char *word : words)
            if (it.key().contains(QLatin1String(word), Qt::CaseInsensitive) && numberIn(it.value()))
                return numberIn(it.value());
    return std::nullopt;
}

QMap<QString, QVariant> ask(SensorInstance &instance, const QString &name)
{
    QMap<QString, QVariant> answer;
    if (!name.isEmpty() && instance.sendCommandGetAll(QLatin1String("Get_") + name, {}, answer) != NoError)
        answer.clear();
    return answer;
}

} // namespace

std::optional<double> thresholdOf(const QMap<QString, QVariant> &answer)
{
    return numberNamed(answer, {"Threshold"});
}

std::optional<QPair<double, double>> regionOf(const QMap<QString, QVariant> &answer)
{
    const auto begin = numberNamed(answer, {"Start", "Begin", "Min", "First", "Left"});
    const auto end = numberNamed(answer, {"End", "Stop", "Max", "Last", "Right"});
    if (!begin || !end || *end <= *begin)
        return std::nullopt;
    return QPair<double, double>(*begin, *end);
}

CommandResult readVideoState(SensorInstance &instance, VideoState &state)
{
    CommandResult result;
    // Some models cannot report whether they send video: the instance must be told.
    instance.setVideoTransmitted(true);
    TransmittedDataInfo frame;
    result.code = instance.transmittedDataInfo(frame, &result.errorText);
    if (result.code != NoError)
        return result;
    state = {};
    instance.getAvailableVideoSignals(&state.available);
    instance.getEnabledVideoSignals(&state.enabled);
    QString name;
    while (state.answers.size() < state.enabled.size() && instance.getBinaryVideoParam(name, state.answers.size()))
        state.answers += name;
    state.isSupported = instance.isVideoSupported();
    state.isVideoMode = instance.isVideoModeEnabled();
    state.isStreamMode = instance.supportsVideoStreamMode();
    state.pixels = instance.getVideoSignalPixelCount();
    state.resolution = instance.getVideoResolution();
    // Not every firmware has these commands: without an answer nothing is shown.
    if (instance.isThresholdSupported())
        state.threshold = thresholdOf(ask(instance, instance.GetThresholdCommandName()));
    if (instance.isROISupported())
        state.region = regionOf(ask(instance, instance.GetROICommandName()));
    return result;
}

CommandResult setVideoMode(SensorInstance &instance, bool on, VideoState &state)
{
    CommandResult result;
    result.code = on ? instance.enableVideoMode(&result.errorText) : instance.enableMeasMode(&result.errorText);
    return result.code == NoError ? readVideoState(instance, state) : result;
}

CommandResult setVideoSignal(SensorInstance &instance, int position, bool on, VideoState &state)
{
    CommandResult result;
    result.code = instance.enableVideoSignal(position, on ? 1 : 0, &result.errorText);
    return result.code == NoError ? readVideoState(instance, state) : result;
}

CommandResult fetchVideo(SensorInstance &instance, const QStringList &names, QVector<QVector<int>> &lines)
{
    QMap<QString, QByteArray> data;
    QMap<QString, QVariant> targets;
    for (const QString &name : names)
        targets.insert(name, SensorInstance::resultPointer(&data[name]));
    CommandResult result;
    result.code = instance.sendCommand(QStringLiteral("Get_Video"), {}, targets, &result.errorText);
    if (result.code != NoError)
        return result;
    lines.clear();
    for (const QString &name : names)
        lines.append(SondixApp::videoPixels(data.value(name)).value_or(QVector<int>()));
    return result;
}

} // namespace Explorer
