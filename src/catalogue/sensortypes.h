// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/sondixqtglobal.h>

#include <QFlags>
#include <QList>
#include <QMetaType>
#include <QPixmap>
#include <QString>

/// \file
/// The sensor models, sensor families and connection interfaces that the library knows, and the lookups of
/// their names and pictures.
///
/// Lookups never fail: what is not in the catalogue gives an empty text, NoSensor, NoGroup, 0 or a generic
/// picture. Where a function says nothing else, any thread may call it at any time.

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

/// The display name of \a type, or with \a shortName its short name. Empty for a type that is not in the
/// catalogue, and for Unnamed, which is.
SONDIXQT_EXPORT QString sensorName(SensorType type, bool shortName = false);

/// The type that the free text \a name means, NoSensor when it names none.
///
/// A text that is exactly a short or a long name gives its type. Otherwise the text is searched, whatever its
/// case, for names of at least three characters; the longest one decides. A letter "x" in a model's name may
/// be missing from the text, and so may a dash: "RG525" means RG52x. Names without their x and dashes go
/// before full ones, and of each kind long names before short ones: "Tavrin TX270 with MC320" gives MC320,
/// as the name of the TX270 has an x.
/// Meant for what sensors report and people type: "Profile sensor" contains "File" and therefore gives File.
SONDIXQT_EXPORT SensorType getSensorTypeFromName(const QString &name);

/// The families of \a type, often a combination of flags; NoGroup for a type that is not in the catalogue.
SONDIXQT_EXPORT SensorGroup getSensorGroupFromSensorType(SensorType type);

/// The picture of \a type; a generic one where it has none.
///
/// Needs a QGuiApplication and may be called on its thread only. Pictures are kept in QPixmapCache. With
/// Qt::AA_UseHighDpiPixmaps set, a screen that scales gets a picture of twice the resolution, with the device
/// pixel ratio 2.
SONDIXQT_EXPORT QPixmap getSensorImage(SensorType type);

/// The picture of the family \a group; a generic one for a combination of families and for unknown values.
/// What getSensorImage says of threads and resolution holds here, too.
SONDIXQT_EXPORT QPixmap getSensorGroupImage(SensorGroup group);

/// The display name of \a group, or with \a shortName its second name, which is not always the shorter one.
/// Empty for NoGroup, for a combination of families and for unknown values.
SONDIXQT_EXPORT QString sensorGroupName(SensorGroup group, bool shortName = false);

/// All 16 groups in ascending signed order: AllGroups, NoGroup, then the families.
SONDIXQT_EXPORT QList<SensorGroup> sensorGroups();

/// The types that belong to at least one family of \a groups, in the order in which lists show them.
/// Variants that lists leave out come only with \a includeHidden; types without family never do.
SONDIXQT_EXPORT QList<SensorType> sensorsInGroup(SensorGroups groups, bool includeHidden = false);

/// The display name of \a iface, or with \a libraryName what the sensor-access library calls it in
/// "IP_Interface". Empty for a combination of interfaces and for unknown values.
SONDIXQT_EXPORT QString interfaceName(SensorInterface iface, bool libraryName = false);

/// The number of \a iface in "IP_InterfaceIdx", which is not its flag; 0 for NoInterface, for a combination
/// of interfaces and for unknown values.
SONDIXQT_EXPORT int interfaceIndex(SensorInterface iface);

/// Sets the name that is written into sensor logs, none while it is empty.
///
/// Call it once, before sensors are opened: unlike everything else here it changes something, and nothing
/// locks it.
SONDIXQT_EXPORT void setUsedByApplicationName(const QString &name);

} // namespace SondixQt

Q_DECLARE_TYPEINFO(SondixQt::SensorType, Q_PRIMITIVE_TYPE);
Q_DECLARE_TYPEINFO(SondixQt::SensorGroup, Q_PRIMITIVE_TYPE);
Q_DECLARE_TYPEINFO(SondixQt::SensorInterface, Q_PRIMITIVE_TYPE);

Q_DECLARE_METATYPE(SondixQt::SensorType)
Q_DECLARE_METATYPE(SondixQt::SensorGroup)
Q_DECLARE_METATYPE(SondixQt::SensorInterface)
