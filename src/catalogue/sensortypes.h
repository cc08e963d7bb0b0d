// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/sondixqtnamespace.h>

#include <QList>
#include <QPixmap>
#include <QString>

/// \file
/// Names and pictures of the sensor models, sensor families and connection interfaces that the library knows
/// (SensorType, SensorGroup, SensorInterface).
///
/// Lookups do not fail: a value that is not in the catalogue gives an empty string, NoSensor, NoGroup, 0 or a
/// generic picture. Functions are thread-safe unless their description says otherwise.

namespace SondixQt {

/// The display name of \a type, or its short name if \a shortName is set. Empty for Unnamed and for a type that is
/// not in the catalogue.
SONDIXQT_EXPORT QString sensorName(SensorType type, bool shortName = false);

/// The type that the free text \a name names, or NoSensor if it names none.
///
/// A text that equals a short or a long name gives its type. Otherwise the text is searched for names of at least
/// three characters, ignoring case, and the longest name found is used. The text may lack the letter "x" and the
/// dashes of a name: "RG525" gives RG52x. Names without "x" and dashes are searched before unchanged names, and
/// long names before short ones: "Tavrin TX270 with MC320" gives MC320, because the name of the TX270 contains an
/// "x". Intended for texts that sensors report or users type. Other texts can give unexpected results: "Profile
/// sensor" contains "File" and gives File.
SONDIXQT_EXPORT SensorType getSensorTypeFromName(const QString &name);

/// The families of \a type as a combination of flags; NoGroup for a type that is not in the catalogue.
SONDIXQT_EXPORT SensorGroup getSensorGroupFromSensorType(SensorType type);

/// The picture of \a type, or a generic picture if it has none.
///
/// Requires a QGuiApplication. Thread-safe on platforms that support pixmaps outside the main thread, such as
/// Windows and X11; on other platforms Qt prints a warning and the picture is null. Pictures are cached in
/// QPixmapCache on the main thread and loaded at each call on other threads. If Qt::AA_UseHighDpiPixmaps is set
/// and the screen is scaled, the picture has twice the resolution and the device pixel ratio 2.
SONDIXQT_EXPORT QPixmap getSensorImage(SensorType type);

/// The picture of the family \a group, or a generic picture for a combination of families and for unknown values.
/// Threads and resolution: as for getSensorImage().
SONDIXQT_EXPORT QPixmap getSensorGroupImage(SensorGroup group);

/// The display name of \a group, or its second name if \a shortName is set; that one is not always shorter.
/// Empty for NoGroup, for a combination of families and for unknown values.
SONDIXQT_EXPORT QString sensorGroupName(SensorGroup group, bool shortName = false);

/// All 16 groups in ascending order of their signed values: AllGroups, NoGroup, then the families.
SONDIXQT_EXPORT QList<SensorGroup> sensorGroups();

/// The types that belong to at least one family of \a groups, in display order. Hidden variants are included only
/// if \a includeHidden is set, types without a family never.
SONDIXQT_EXPORT QList<SensorType> sensorsInGroup(SensorGroups groups, bool includeHidden = false);

/// The display name of \a iface, or its name in the sensor-access library ("IP_Interface") if \a libraryName is
/// set. Empty for a combination of interfaces and for unknown values.
SONDIXQT_EXPORT QString interfaceName(SensorInterface iface, bool libraryName = false);

/// The value of "IP_InterfaceIdx" for \a iface, which differs from the enumerator. 0 for NoInterface, for a
/// combination of interfaces and for unknown values.
SONDIXQT_EXPORT int interfaceIndex(SensorInterface iface);

/// Sets the application name that is written into sensor logs. While it is empty, no name is written.
///
/// Not thread-safe: call it once, before sensors are opened.
SONDIXQT_EXPORT void setUsedByApplicationName(const QString &name);

} // namespace SondixQt
