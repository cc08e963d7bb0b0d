// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/sondixqtnamespace.h>

#include <QList>
#include <QPixmap>
#include <QString>

/// \file
/// Lookups of names and pictures of the sensor models, sensor families and connection interfaces that the
/// library knows (SensorType, SensorGroup, SensorInterface).
///
/// Lookups never fail: what is not in the catalogue gives an empty text, NoSensor, NoGroup, 0 or a generic
/// picture. Where a function says nothing else, any thread may call it at any time.

namespace SondixQt {

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
/// Needs a QGuiApplication. Any thread may call it on a platform whose pixmaps are not bound to the main
/// thread, as on Windows and X11; on others Qt warns and the picture is null. On the main thread pictures are
/// kept in QPixmapCache, on other threads they are loaded each time. With Qt::AA_UseHighDpiPixmaps set, a
/// screen that scales gets a picture of twice the resolution, with the device pixel ratio 2.
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
