// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/sondixqtglobal.h>

#include <QMap>
#include <QString>
#include <QVariant>

class QGridLayout;

/// \file
/// What a user interface needs to show the parameters of a sensor: the few that identify it, names for
/// people, and a table of labels.

namespace SondixQt {

class SensorInfo;

/// The parameters of \a info that identify the sensor on its interface, as far as it has them with a valid
/// value; which they are depends on the interface.
///
/// A description without an interface, or with one that is not known, yields all its parameters. May be called
/// from any thread.
SONDIXQT_EXPORT QMap<QString, QVariant> extractBasicParameters(const SensorInfo &info);

/// The name to show for \a parameter, one of the sensor-access library's parameter names, spelt exactly so;
/// empty for a parameter that has none.
///
/// A name enclosed in "$" is a key for the application's own translation; the library translates nothing.
/// "$RecordingDate$" and "$Unknown$", which are no parameters, yield themselves. May be called from any thread.
SONDIXQT_EXPORT QString friendlyParameterName(const QString &parameter);

/// Adds a row of two labels to \a layout for each of the \a parameters: the name in column 0 (object name
/// "name"), the value as text in column 1 (object name "value"), which the user can select and copy.
///
/// "IP_Interface" goes to row 0 and "IP_Port" to row 1; these rows stay empty when the parameter is missing. All
/// others are appended in the order of their keys, from row 2 on. With \a friendlyNames the captions are those of
/// friendlyParameterName(), and parameters that have none are left out; otherwise the keys themselves.
///
/// The labels belong to the widget of \a layout. While the layout has none they have no owner: set it on a widget,
/// or put it into a layout that has one, before it is deleted. A second call appends to the table, but puts
/// "IP_Interface" and "IP_Port" into rows 0 and 1 again, upon the labels that are there. Values are shown as
/// QLabel shows any text: one that looks like rich text is taken as such.
///
/// A null \a layout is ignored. GUI thread only.
SONDIXQT_EXPORT void createParameterTable(QGridLayout *layout, const QMap<QString, QVariant> &parameters,
                                          bool friendlyNames);

} // namespace SondixQt
