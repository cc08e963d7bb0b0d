// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/sondixqtglobal.h>

#include <QFlags>
#include <QMetaType>

/// \file
/// The enumerations of the namespace.
///
/// QDebug prints a value by its name: `SondixQt::TX270`. A value without a name is printed as a number:
/// `SondixQt::ErrorCode(-33)`. This includes a SensorGroup or SensorInterface that combines several flags. For a
/// set of flags, QDebug prints the names of its flags and omits bits without a name. All enumerations are
/// meta-types, registered under their qualified names ("SondixQt::ErrorCode") when the library is loaded.

namespace SondixQt {

// moc collects the enumerations of a namespace from one file only, so all of them are declared here.
Q_NAMESPACE_EXPORT(SONDIXQT_EXPORT)

/// The result of a sensor operation: 0 is success, every other value is a failure code of the
/// sensor-access library, passed through unchanged (its documentation lists them).
///
/// Values beyond the enumerators are normal: any code of the sensor-access library may occur. The enumerators
/// are the codes that this library treats differently from other failures, and its own failures.
enum ErrorCode : qint32 {
    NoError = 0, ///< success
    /// A command failed, but may have returned answers, which SensorInstance::ReadAfterPartialFail reads. The
    /// documentation of the sensor-access library describes the difference from PartialFailure27.
    PartialFailure26 = -26,
    /// As PartialFailure26.
    PartialFailure27 = -27,

    // Failures that SensorFinder and SensorReader report themselves. SensorInstance never returns them: its results are
    // those of the sensor-access library, which is assumed not to use these numbers.
    StoppedError = -32768,     ///< SensorReader: the command was not sent, because the reader has stopped
    TimeLimitError = -32767,   ///< SensorFinder: the time limit of the search has passed
    SkippedError = -32766,     ///< SensorFinder: the sensor-access library cannot search for one of the types
    CreationError = -32765,    ///< SensorReader: the sensor-access library does not support the model
    FrameError = -32764,       ///< SensorReader: the sensor does not describe its frames
    OtherSensorError = -32763, ///< SensorReader: another sensor has answered
    SilenceError = -32762,     ///< SensorReader: no values for Reconnect::silence
};
Q_ENUM_NS(ErrorCode)

/// The sensor models. The numbers are those of the sensor-access library ("IP_SensorType") and are
/// stored by applications: they never change. A value above 10000 is a variant of the base type
/// `value % 10000`. The only exception is File, which is not a variant.
/// SensorInstance::sensorType() follows this rule.
enum SensorType : qint32 {
    NoSensor = 0,
    TX210 = 1,
    TX220 = 2,
    TX230 = 5,
    MC310 = 8,
    MC320 = 9,
    XA100PCI = 10,
    CC410 = 12,
    CC420 = 13,
    CP710 = 15,
    CP720 = 16,
    CB910 = 18,
    RG4xx = 19,
    RG52x = 20,
    RG53x = 21,
    XA200PCI = 22,
    TX240 = 23,
    TX250 = 24,
    MC330 = 25,
    CC430 = 26,
    EC810 = 28,
    TX260 = 29,
    CC440 = 30,
    PF = 31,
    UC100 = 32,
    CP730 = 33,
    XA300 = 34,
    PG110 = 35,
    XA100USB = 36,
    MC340 = 37,
    QUnit = 38,
    CC450 = 39,
    CP740 = 40,
    TX270 = 41,
    TX280 = 42,
    GenericKVBus = 43,
    CC460 = 44,
    CB92xx = 45,
    CC470 = 46,
    CC480 = 47,
    Spessa = 48,
    Unnamed = 49,
    EC82x_ETH = 50,
    TX290 = 51,
    XA200ETH = 52,
    HV2 = 53,
    CP750 = 54,
    WI610 = 55,
    TX300 = 56,
    MultiSensor = 57,
    TX310 = 58,
    WI620 = 59,
    RG540 = 60,
    PG120 = 61,
    CC490 = 62,
    CC495 = 63,
    MV4xx_XA300ETH = 10034,
    EC830 = 10043,
    HV210 = 10053,
    GY330_XA300ETH = 20034,
    MV4xx = 20043,
    HV220 = 20053,
    GY310_XA300ETH = 30034,
    GY310 = 30043,
    CP740_XA300ETH = 40034,
    GY330 = 40043,
    EC840 = 50043,
    EC850 = 60043,
    DVxxx = 70043,
    EC82x = 80043,
    GY320 = 90043,
    File = 99999,
    MV410_XA300ETH = 110034,
    MV410 = 120043,
    DVxxx_XA300ETH = 170034,
    MV420_XA300ETH = 210034,
    MV420 = 220043,
    MV430_XA300ETH = 310034,
    MV430 = 320043,
};
Q_ENUM_NS(SensorType)

/// Sensor families, used as flags: a model belongs to one family or to several.
enum SensorGroup : qint32 {
    NoGroup = 0,
    Tavrin = 1,
    TavrinRG = 2,
    Oscura = 4,
    Wavlen = 8,
    Silvant = 16,
    Korrin = 32,
    Delmar = 64,
    Color = 128,
    Gyrant = 256,
    Morvik = 512,
    Profax = 1024,
    Interfaces = 2048,
    KVBus = 4096,
    Other = 8192,
    AllGroups = -1, ///< every bit; last, so that the set of all families prints as this one name
};
Q_ENUM_NS(SensorGroup)
Q_DECLARE_FLAGS(SensorGroups, SensorGroup)
Q_FLAG_NS(SensorGroups)
Q_DECLARE_OPERATORS_FOR_FLAGS(SensorGroups)

/// Connection interfaces, used as flags.
enum SensorInterface : qint32 {
    NoInterface = 0,
    RS232 = 1,
    XA100_USB = 2,
    TCPIP = 4,
    XA200 = 8,
    WinUSB = 16,
    XA100 = 32,
    XA200_ETH = 64,
};
Q_ENUM_NS(SensorInterface)
Q_DECLARE_FLAGS(SensorInterfaces, SensorInterface)
Q_FLAG_NS(SensorInterfaces)
Q_DECLARE_OPERATORS_FOR_FLAGS(SensorInterfaces)

/// The kind of web interface that a model offers.
enum WebInterface : qint32 {
    NoWebInterface = 0,     ///< none
    NativeWebInterface = 1, ///< the device serves its pages itself over the network
    SerialWebInterface = 2, ///< the pages are reached over the sensor's serial line
};
Q_ENUM_NS(WebInterface)

} // namespace SondixQt

Q_DECLARE_TYPEINFO(SondixQt::SensorType, Q_PRIMITIVE_TYPE);
Q_DECLARE_TYPEINFO(SondixQt::SensorGroup, Q_PRIMITIVE_TYPE);
Q_DECLARE_TYPEINFO(SondixQt::SensorInterface, Q_PRIMITIVE_TYPE);
