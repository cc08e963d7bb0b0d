// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/sondixqtglobal.h>

#include <QMetaType>
#include <QString>
#include <QVector>

// The field "signals" below bears the name of a Qt keyword macro, which would replace it.
#pragma push_macro("signals")
#undef signals

namespace SondixQt {

/// One value of a data frame.
struct SONDIXQT_EXPORT SignalInfo
{
    int index = 0;               ///< number of the signal in the sensor
    QString rawName;             ///< name of the raw value
    QString scaledName;          ///< name of the scaled value
    double rawRangeMin = 0.0;    ///< lowest valid raw value, in rawUnit
    double rawRangeMax = 0.0;    ///< highest valid raw value, in rawUnit
    double scaledRangeMin = 0.0; ///< lowest valid scaled value, in scaledUnit
    double scaledRangeMax = 0.0; ///< highest valid scaled value, in scaledUnit
    double viewRange = 0.0;      ///< range that a plot should show, in scaledUnit
    QString rawUnit;             ///< unit of the raw value
    QString scaledUnit;          ///< unit of the scaled value; "OFF" or "SWITCH" on some inertial sensors
    double rawDatarate = 0.0;    ///< rate of the raw value in Hz, as the sensor reports it
    double scaledDatarate = 0.0; ///< rate of the scaled value in Hz, as the sensor reports it
    bool majorSignal = false;    ///< one of the sensor's main measured values
    QString additionalInfo;      ///< free text of the sensor

    /// Every field counts; doubles compare exactly, so a NaN makes two records differ.
    bool operator!=(const SignalInfo &other) const;
    bool operator==(const SignalInfo &other) const { return !(*this != other); }
};

/// One video signal of a sensor.
struct SONDIXQT_EXPORT VideoInfo
{
    int index = 0;           ///< 0 in every description: the place in the list is the position of a signal
    bool enabled = false;    ///< switched into the sensor's output
    QString answerParameter; ///< answer that carries the data, such as "SA_VideoRaw"
    QString outputStem;      ///< stem of the switch, such as "OutputVideoRaw"
    int pixelCount = 0;      ///< pixels of one line
    int pixelSize = 0;       ///< bytes of one pixel; a line has pixelCount * pixelSize bytes

    /// The two texts do not count.
    bool operator!=(const VideoInfo &other) const;
    bool operator==(const VideoInfo &other) const { return !(*this != other); }
};

/// What an open sensor sends with every data frame.
struct SONDIXQT_EXPORT TransmittedDataInfo
{
    TransmittedDataInfo() = default;
    TransmittedDataInfo(double datarate, int valuesPerFrame, int maxValuesPerFrame, int videoSignalCount,
                        const QVector<SignalInfo> &signalInfos, const QVector<VideoInfo> &videoInfos);

    double datarate = -1.0;          ///< frames a second (Hz), as the sensor reports it
    int valuesPerFrame = 0;          ///< values of one frame, as the sensor reports it
    int maxValuesPerFrame = 0;       ///< most values that a frame of this sensor can hold
    int videoSignalCount = 0;        ///< entries in videoSignals
    int reserved = -1;               ///< always -1
    QVector<SignalInfo> signals;     ///< one entry a value, in frame order; 16,384 at most
    QVector<VideoInfo> videoSignals; ///< all video signals of the model, also those that are off

    /// The field \c signals, for code in which that word is Qt's keyword macro.
    const QVector<SignalInfo> &signalList() const { return signals; }

    /// Only valuesPerFrame and the signals count.
    bool operator!=(const TransmittedDataInfo &other) const;
    bool operator==(const TransmittedDataInfo &other) const { return !(*this != other); }
};

} // namespace SondixQt

Q_DECLARE_METATYPE(SondixQt::SignalInfo)
Q_DECLARE_METATYPE(SondixQt::VideoInfo)
Q_DECLARE_METATYPE(SondixQt::TransmittedDataInfo)

#pragma pop_macro("signals")
