// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/sondixqtglobal.h>

#include <QFlags>
#include <QList>
#include <QMetaType>
#include <QPixmap>
#include <QString>

/// \file
/// The sensor models, sensor families and connection interfaces that the library knows, and the
/// lookups of their names and pictures.

namespace SondixQt {

/// The sensor models. The numbers are those of the sensor-access library ("IP_SensorType") and are
/// stored by applications: they never change. A value above 10000 is a variant of the base type
/// `value % 10000`.
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

/// Sensor families, used as flags: a model belongs to one family or to several.
enum SensorGroup : qint32 {
    AllGroups = -1,
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
};
Q_DECLARE_FLAGS(SensorGroups, SensorGroup)
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
Q_DECLARE_FLAGS(SensorInterfaces, SensorInterface)
Q_DECLARE_OPERATORS_FOR_FLAGS(SensorInterfaces)

/// The display name of \a type, or its short name; empty for a type that is not in the catalogue.
SONDIXQT_EXPORT QString sensorName(SensorType type, bool shortName = false);

/// The type that the free text \a name means, NoSensor when it names none.
SONDIXQT_EXPORT SensorType getSensorTypeFromName(const QString &name);

/// The families of \a type, a combination of flags; NoGroup for a type that is not in the catalogue.
SONDIXQT_EXPORT SensorGroup getSensorGroupFromSensorType(SensorType type);

/// The picture of \a type; a generic one where it has none. GUI thread only.
SONDIXQT_EXPORT QPixmap getSensorImage(SensorType type);

/// The picture of the family \a group; a generic one for anything but a single group. GUI thread only.
SONDIXQT_EXPORT QPixmap getSensorGroupImage(SensorGroup group);

/// The display name of \a group, or its second name; empty for anything but a single group.
SONDIXQT_EXPORT QString sensorGroupName(SensorGroup group, bool shortName = false);

/// All groups in ascending signed order, AllGroups first.
SONDIXQT_EXPORT QList<SensorGroup> sensorGroups();

/// The types of the given families in display order; hidden variants only on request.
SONDIXQT_EXPORT QList<SensorType> sensorsInGroup(SensorGroups groups, bool includeHidden = false);

/// The display name of \a iface, or the name that the sensor-access library uses for it.
SONDIXQT_EXPORT QString interfaceName(SensorInterface iface, bool libraryName = false);

/// The number of \a iface in "IP_InterfaceIdx"; 0 for a value that is no single interface.
SONDIXQT_EXPORT int interfaceIndex(SensorInterface iface);

/// Sets the name that is written into sensor logs. Call it once, before sensors are opened: it is
/// not locked.
SONDIXQT_EXPORT void setUsedByApplicationName(const QString &name);

} // namespace SondixQt

Q_DECLARE_METATYPE(SondixQt::SensorType)
Q_DECLARE_METATYPE(SondixQt::SensorGroup)
Q_DECLARE_METATYPE(SondixQt::SensorInterface)
