// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/sondixqtglobal.h>

#include <QMap>
#include <QString>
#include <QVariant>

class QGridLayout;

/// \file
/// Helpers that present the parameters of a sensor in a user interface: the parameters that identify it, their
/// display names, and a table of labels.

namespace SondixQt {

class SensorInfo;

/// The parameters of \a info that identify the sensor on its interface. Which parameters these are depends on the
/// interface; missing and invalid ones are left out.
///
/// Returns all parameters if \a info has no interface or an unknown one. Thread-safe.
SONDIXQT_EXPORT QMap<QString, QVariant> extractBasicParameters(const SensorInfo &info);

/// The display name of \a parameter, which is a parameter name of the sensor-access library (case-sensitive).
/// Empty if the parameter has no display name.
///
/// A name enclosed in "$" is a key for the translation by the application; the library does not translate it.
/// "$RecordingDate$" and "$Unknown$" are not parameters and are returned unchanged. Thread-safe.
SONDIXQT_EXPORT QString friendlyParameterName(const QString &parameter);

/// Adds a row of two labels to \a layout for each of the \a parameters: the name in column 0 (object name "name"),
/// the value as text in column 1 (object name "value"), which the user can select and copy.
///
/// "IP_Interface" is shown in row 0 and "IP_Port" in row 1; these rows are empty if the parameter is missing. All
/// other parameters follow from row 2 on, sorted by key. With \a friendlyNames the captions are those of
/// friendlyParameterName(), and parameters without a display name are left out. Otherwise the captions are the
/// keys.
///
/// The labels are owned by the widget of \a layout. A layout without a widget does not own its labels: install it
/// on a widget, or add it to a layout that has one, before it is deleted. A second call appends to the table,
/// except that "IP_Interface" and "IP_Port" are placed in rows 0 and 1 again, on top of the existing labels. The
/// labels detect the text format as every QLabel does: a value that looks like rich text is shown as rich text.
///
/// Does nothing if \a layout is null. GUI thread only.
SONDIXQT_EXPORT void createParameterTable(QGridLayout *layout, const QMap<QString, QVariant> &parameters,
                                          bool friendlyNames);

} // namespace SondixQt
