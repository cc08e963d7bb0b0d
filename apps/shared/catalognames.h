// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/sensortypes.h>

#include <QString>
#include <QStringList>

#include <optional>

namespace SondixApp {

/// What a user's text names in the catalogue, or a sentence that says what is wrong with it.
template<typename T>
struct Named
{
    std::optional<T> value;
    QString problem;
};

/// A model by its short name, its long name (both in any letter case) or its number.
Named<SondixQt::SensorType> findType(const QString &text);

/// A group by either of its names in any letter case or by its number.
Named<SondixQt::SensorGroup> findGroup(const QString &text);

/// An interface by its display name or the sensor-access library's name for it, in any letter case,
/// or by its number.
Named<SondixQt::SensorInterface> findInterface(const QString &text);

/// The interfaces that sensors can hang on, in ascending order.
const QList<SondixQt::SensorInterface> &allInterfaces();

/// Up to three of \a names that a misspelt \a text may have meant, the nearest first.
QStringList nearNames(const QString &text, const QStringList &names);

/// "there is no <what> '<text>'; did you mean ...?", ending with \a otherwise where nothing comes near.
QString unknownName(const QString &what, const QString &text, const QStringList &names, const QString &otherwise);

} // namespace SondixApp
