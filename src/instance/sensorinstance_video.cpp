// SPDX-License-Identifier: MIT
#include "catalogue/modetables_p.h"
#include "catalogue/videotables_p.h"
#include "sensorinstance_p.h"
#include "sondix/sondixapi_p.h"

#include <algorithm>

namespace SondixQt {

namespace {

void replaceName(QString &name, const char *replacement)
{
    if (replacement)
        name = QString::fromLatin1(replacement);
}

void applyRow(VideoState &video, const VideoRow &row)
{
    video.resolution = row.resolution;
    video.outputStem = QString::fromLatin1(row.outputStem);
    replaceName(video.thresholdCommandName, row.thresholdName);
    replaceName(video.roiCommandName, row.roiName);
    video.thresholdSupported = row.threshold;
    video.roiSupported = row.roi;
    video.streamModeSupported = row.streamMode;
    video.overAnyInterface = row.overAnyInterface;
    video.transmitted = row.transmitted;
    video.modeEnabled = row.videoMode;
}

/// Clears the flags only; names, signals and sizes are kept.
void clearFlags(VideoState &video)
{
    video.streamModeSupported = false;
    video.capable = false;
    video.thresholdSupported = false;
    video.overAnyInterface = false;
    video.transmitted = false;
    video.roiSupported = false;
    video.modeEnabled = false;
}

bool isAt(int position, const QVector<VideoInfo> &list)
{
    return position >= 0 && position < list.size();
}

} // namespace

ErrorCode SensorInstancePrivate::fillVideoCommandsForSensor(QVector<VideoInfo> &list, QString *errorText)
{
    const VideoRow *row = videoRow(sensorType);
    if (!row) {
        clearFlags(video);
        return NoError;
    }
    // Defaults that remain if Get_Info fails below; applyRow() sets the model's own values.
    video.streamModeSupported = true;
    video.capable = true;
    video.overAnyInterface = true;
    video.transmitted = true;
    video.roiSupported = true;

    int pixels = row->pixels;
    if (pixels == 0) {
        double range = 0.0;
        const ErrorCode result = q_func()->sendCommandGetDouble(QStringLiteral("Get_Info"),
                                                                QStringLiteral("SA_Range"), range, errorText);
        if (result != NoError)
            return result;
        pixels = pixelsOfRange(range);
    }

    initializeVideoInfos(list, pixels, row->videoSignals.size());
    int position = 0;
    for (const VideoSignal &signal : row->videoSignals) {
        VideoInfo &info = list[position++];
        info.outputStem = QString::fromLatin1(signal.outputStem);
        info.answerParameter = QString::fromLatin1(signal.answerParameter);
    }
    applyRow(video, *row);
    if (row->channels != 0)
        channelCount = row->channels;
    return NoError;
}

void SensorInstancePrivate::initializeVideoInfos(QVector<VideoInfo> &list, int pixels, int count)
{
    constexpr int pixelSize = 2;
    video.signalPixelCount = pixels;
    list.resize(count);
    for (VideoInfo &info : list) {
        info.pixelCount = pixels;
        info.pixelSize = pixelSize;
    }
}

int SensorInstancePrivate::getVideoInformationFromSensor()
{
    const InstanceLock lock(this);
    for (VideoInfo &info : video.infos)
        info.enabled = false;
    const VideoRow *const row = videoRow(sensorType);
    if (!row)
        return -1;
    readVideoMode(row->modeRule);
    readVideoSwitches(row->modeRule != VideoModeRule::TransmittedFlag);
    video.enabledSignalCount = int(std::count_if(video.infos.cbegin(), video.infos.cend(),
                                                 [](const VideoInfo &info) { return info.enabled; }));
    return 0;
}

void SensorInstancePrivate::readVideoMode(VideoModeRule rule)
{
    const auto askMode = [this](int &mode) {
        return q_func()->sendCommandGetInt(QStringLiteral("Get_MeasureMode"), QStringLiteral("SA_MeasureMode"),
                                           mode, nullptr);
    };
    int mode = -1;
    switch (rule) {
    case VideoModeRule::Fixed:
        break;
    case VideoModeRule::TransmittedFlag:
        if (video.transmitted && !video.infos.isEmpty())
            video.infos.first().enabled = true;
        break;
    case VideoModeRule::StreamMode:
        if (askMode(mode) == NoError && mode != -1) {
            video.modeEnabled = mode == 4;
            measuringModeEnabled = mode != 2;
        }
        break;
    case VideoModeRule::ExclusiveMode:
        video.modeEnabled = askMode(mode) == NoError && mode == 3;
        measuringModeEnabled = !video.modeEnabled;
        break;
    }
}

void SensorInstancePrivate::readVideoSwitches(bool switchable)
{
    QString command;
    if (!getVideoOutCmdName(command, true) || q_func()->sendCommand(command, nullptr) != NoError)
        return;
    for (int position = 0; position < video.infos.size(); ++position) {
        QString name;
        makeVideoParamName(name, position, video.infos, true);
        int value = 0;
        if (getParameter(name, value, nullptr) != NoError)
            value = 0;
        if (switchable && position < video.infos.size()) // a slot of errorMessage() may have re-opened the sensor
            video.infos[position].enabled = value != 0;
    }
}

void SensorInstancePrivate::extractTransmittedVideoChannels(QVector<VideoInfo> &out) const
{
    out.clear();
    if (!video.modeEnabled)
        return;
    for (const VideoInfo &info : video.infos) {
        if (info.enabled)
            out.append(info);
    }
}

bool SensorInstancePrivate::makeVideoParamName(QString &out, int position, const QVector<VideoInfo> &list,
                                               bool answer) const
{
    if (!isAt(position, list))
        return false;
    out = videoParameterName(list.at(position).outputStem, answer, tcpInterface);
    return true;
}

bool SensorInstancePrivate::getVideoOutCmdName(QString &out, bool get) const
{
    if (video.outputStem.isEmpty() || !(tcpInterface || video.overAnyInterface))
        return false;
    out = videoOutputCommand(video.outputStem, get, tcpInterface);
    return true;
}

bool SensorInstance::isVideoSupported() const
{
    Q_D(const SensorInstance);
    if (d->baseType() == File)
        return d->video.protocolVideo;
    return (d->video.capable && d->tcpInterface) || d->video.overAnyInterface;
}

bool SensorInstance::supportsVideoStreamMode() const
{
    Q_D(const SensorInstance);
    return d->video.streamModeSupported;
}

bool SensorInstance::isVideoModeEnabled() const
{
    Q_D(const SensorInstance);
    return d->video.modeEnabled;
}

ErrorCode SensorInstance::enableVideoMode(QString *errorText)
{
    Q_D(SensorInstance);
    const SwitchedModesRow *row = switchedModesRow(d->baseType());
    if (!row)
        return NoError;
    const InstanceLock lock(d);
    const ErrorCode result = sendCommand(QStringLiteral("Set_MeasureMode"), QStringLiteral("SP_MeasureMode"),
                                         row->videoMode, errorText);
    if (result == NoError)
        d->video.modeEnabled = true;
    return result;
}

int SensorInstance::getAvailableVideoSignals(QMap<int, QString> *names) const
{
    Q_D(const SensorInstance);
    if (names) {
        for (int position = 0; position < d->video.infos.size(); ++position)
            names->insert(position, d->video.infos.at(position).outputStem);
    }
    return d->video.infos.size();
}

int SensorInstance::getAvailableVideoSignalCount() const
{
    Q_D(const SensorInstance);
    return d->video.infos.size();
}

int SensorInstance::getEnabledVideoSignals(QMap<int, QString> *names) const
{
    Q_D(const SensorInstance);
    int count = 0;
    for (int position = 0; position < d->video.infos.size(); ++position) {
        const VideoInfo &info = d->video.infos.at(position);
        if (!info.enabled)
            continue;
        ++count;
        if (names)
            names->insert(position, info.outputStem);
    }
    return count;
}

int SensorInstance::getEnabledVideoSignalCount() const
{
    Q_D(const SensorInstance);
    return d->video.enabledSignalCount;
}

ErrorCode SensorInstance::enableVideoSignal(int position, int value, QString *errorText)
{
    Q_D(SensorInstance);
    const VideoRow *row = videoRow(d->baseType());
    if (row && row->modeRule == VideoModeRule::TransmittedFlag)
        return NoError;
    const InstanceLock lock(d);
    QString name;
    if (!d->makeVideoParamName(name, position, d->video.infos, false))
        return NoError;
    const ErrorCode result = d->setParameter(name, value, nullptr);
    if (result != NoError)
        return result;
    QString command;
    return d->getVideoOutCmdName(command, false) ? sendCommand(command, errorText) : NoError;
}

bool SensorInstance::getBinaryVideoParam(QString &name, int position) const
{
    Q_D(const SensorInstance);
    const QVector<VideoInfo> &list = d->video.transmittedInfos;
    if (!isAt(position, list))
        return false;
    name = list.at(position).answerParameter;
    return true;
}

int SensorInstance::getVideoSignalPixelCount() const
{
    Q_D(const SensorInstance);
    return d->video.signalPixelCount;
}

void SensorInstance::SetVideoPixelCount(int pixels)
{
    Q_D(SensorInstance);
    const InstanceLock lock(d);
    d->video.signalPixelCount = pixels;
    for (VideoInfo &info : d->video.infos)
        info.pixelCount = pixels;
}

int SensorInstance::getVideoResolution() const
{
    Q_D(const SensorInstance);
    return d->video.resolution;
}

bool SensorInstance::isVideoTransmitted() const
{
    Q_D(const SensorInstance);
    return d->video.transmitted;
}

void SensorInstance::setVideoTransmitted(bool transmitted)
{
    Q_D(SensorInstance);
    const InstanceLock lock(d);
    d->video.transmitted = transmitted;
}

void SensorInstance::setProtocolVideo(bool video)
{
    Q_D(SensorInstance);
    d->video.protocolVideo = video;
}

bool SensorInstance::isThresholdSupported() const
{
    Q_D(const SensorInstance);
    return d->video.thresholdSupported;
}

QString SensorInstance::GetThresholdCommandName() const
{
    Q_D(const SensorInstance);
    return d->video.thresholdCommandName;
}

bool SensorInstance::isROISupported() const
{
    Q_D(const SensorInstance);
    return d->video.roiSupported;
}

QString SensorInstance::GetROICommandName() const
{
    Q_D(const SensorInstance);
    return d->video.roiCommandName;
}

} // namespace SondixQt
