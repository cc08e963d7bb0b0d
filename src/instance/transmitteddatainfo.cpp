// SPDX-License-Identifier: MIT
#include "transmitteddatainfo.h"

namespace SondixQt {

namespace {

/// Registers the names with and without namespace: callers use either in queued calls.
void registerTransmittedData()
{
    qRegisterMetaType<SignalInfo>();
    qRegisterMetaType<SignalInfo>("SignalInfo");
    qRegisterMetaType<VideoInfo>();
    qRegisterMetaType<VideoInfo>("VideoInfo");
    qRegisterMetaType<TransmittedDataInfo>();
    qRegisterMetaType<TransmittedDataInfo>("TransmittedDataInfo");
    // Without a comparator QVariant compares addresses.
    QMetaType::registerEqualsComparator<SignalInfo>();
    QMetaType::registerEqualsComparator<VideoInfo>();
    QMetaType::registerEqualsComparator<TransmittedDataInfo>();
}
Q_CONSTRUCTOR_FUNCTION(registerTransmittedData)

} // namespace

bool SignalInfo::operator!=(const SignalInfo &other) const
{
    return index != other.index || rawName != other.rawName || scaledName != other.scaledName ||
           rawRangeMin != other.rawRangeMin || rawRangeMax != other.rawRangeMax ||
           scaledRangeMin != other.scaledRangeMin || scaledRangeMax != other.scaledRangeMax ||
           rawUnit != other.rawUnit || scaledUnit != other.scaledUnit || rawDatarate != other.rawDatarate ||
           scaledDatarate != other.scaledDatarate || majorSignal != other.majorSignal ||
           viewRange != other.viewRange || additionalInfo != other.additionalInfo;
}

bool VideoInfo::operator!=(const VideoInfo &other) const
{
    return index != other.index || enabled != other.enabled || pixelCount != other.pixelCount ||
           pixelSize != other.pixelSize;
}

TransmittedDataInfo::TransmittedDataInfo(double rate, int values, int maxValues, int videoCount,
                                         const QVector<SignalInfo> &signalInfos,
                                         const QVector<VideoInfo> &videoInfos)
    : datarate(rate)
    , valuesPerFrame(values)
    , maxValuesPerFrame(maxValues)
    , videoSignalCount(videoCount)
    , signals(signalInfos)
    , videoSignals(videoInfos)
{
}

bool TransmittedDataInfo::operator!=(const TransmittedDataInfo &other) const
{
    return valuesPerFrame != other.valuesPerFrame || signals != other.signals;
}

} // namespace SondixQt
