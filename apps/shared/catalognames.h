// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/sensortypes.h>

#include <QString>
#include <QStringList>

#include <optional>

namespace SondixApp {

/// The result of a lookup by name: the value, or an error message.
template<typename T>
struct Named
{
    std::optional<T> value;
    QString problem;
};

/// Finds a model by its short name, its long name (both case-insensitive) or its number.
Named<SondixQt::SensorType> findType(const QString &text);

/// Finds a group by either of its names (case-insensitive) or by its number.
Named<SondixQt::SensorGroup> findGroup(const QString &text);

/// Finds an interface by its display name or the sensor-access library's name for it (both case-insensitive), or by
/// its number.
Named<SondixQt::SensorInterface> findInterface(const QString &text);

/// All interfaces that sensors can be connected to, in ascending order.
const QList<SondixQt::SensorInterface> &allInterfaces();

/// Up to three of \a names that are similar to the misspelt \a text, the nearest first.
QStringList nearNames(const QString &text, const QStringList &names);

/// "there is no <what> '<text>'; did you mean ...?", ending with \a otherwise if no name is similar.
QString unknownName(const QString &what, const QString &text, const QStringList &names, const QString &otherwise);

} // namespace SondixApp
