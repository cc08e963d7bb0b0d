// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/sondixqtglobal.h>

#include <QMetaType>
#include <QString>
#include <QVector>

// "signals" is a keyword macro of Qt, which would replace the field of that name below.
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

    /// Compares all fields. Doubles are compared exactly, so that a record with a NaN differs from itself.
    bool operator!=(const SignalInfo &other) const;
    bool operator==(const SignalInfo &other) const { return !(*this != other); }
};

/// One video signal of a sensor.
struct SONDIXQT_EXPORT VideoInfo
{
    int index = 0;           ///< always 0: the position of a signal is its index in the list
    bool enabled = false;    ///< part of the sensor's output
    QString answerParameter; ///< answer that carries the data, such as "SA_VideoRaw"
    QString outputStem;      ///< stem of the switch, such as "OutputVideoRaw"
    int pixelCount = 0;      ///< pixels of one line
    int pixelSize = 0;       ///< bytes of one pixel; a line has pixelCount * pixelSize bytes

    /// Compares all fields except the two texts.
    bool operator!=(const VideoInfo &other) const;
    bool operator==(const VideoInfo &other) const { return !(*this != other); }
};

/// Describes the data frames of an open sensor.
struct SONDIXQT_EXPORT TransmittedDataInfo
{
    TransmittedDataInfo() = default;
    TransmittedDataInfo(double datarate, int valuesPerFrame, int maxValuesPerFrame, int videoSignalCount,
                        const QVector<SignalInfo> &signalInfos, const QVector<VideoInfo> &videoInfos);

    double datarate = -1.0;          ///< frames a second (Hz), as the sensor reports it
    int valuesPerFrame = 0;          ///< values of one frame, as the sensor reports it
    int maxValuesPerFrame = 0;       ///< maximum number of values in a frame of this sensor
    int videoSignalCount = 0;        ///< entries in videoSignals
    int reserved = -1;               ///< always -1
    QVector<SignalInfo> signals;     ///< one entry per value, in frame order; 16,384 at most
    QVector<VideoInfo> videoSignals; ///< all video signals of the model, including disabled ones

    /// The field \c signals, for code in which Qt's keyword macro of that name is defined.
    const QVector<SignalInfo> &signalList() const { return signals; }

    /// Compares valuesPerFrame and signals only.
    bool operator!=(const TransmittedDataInfo &other) const;
    bool operator==(const TransmittedDataInfo &other) const { return !(*this != other); }
};

} // namespace SondixQt

Q_DECLARE_METATYPE(SondixQt::SignalInfo)
Q_DECLARE_METATYPE(SondixQt::VideoInfo)
Q_DECLARE_METATYPE(SondixQt::TransmittedDataInfo)

#pragma pop_macro("signals")
