// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/sensortypes.h>

#include <QString>
#include <QStringList>

#include <optional>

/// \file
/// Exact lookups by names that users type, with suggestions for misspelt names.
///
/// Names are compared without regard to letter case and to white space around them. If there is no such name, the
/// functions return nothing, and \c problem, which may be null, receives a message for users, such as "there is no model
/// 'TX271'; did you mean TX270?". Otherwise \c problem is not changed. Thread-safe.
///
/// getSensorTypeFromName() finds models in texts that contain more than a name.

namespace SondixQt {

/// The model with the short name, long name or number \a text. A long name that several models have gives the first of
/// them in the order of their numbers.
SONDIXQT_EXPORT std::optional<SensorType> findSensorType(const QString &text, QString *problem = nullptr);

/// The group with the name, second name or number \a text.
SONDIXQT_EXPORT std::optional<SensorGroup> findSensorGroup(const QString &text, QString *problem = nullptr);

/// The interface with the display name, the sensor-access library's name or the number \a text.
SONDIXQT_EXPORT std::optional<SensorInterface> findSensorInterface(const QString &text,
                                                                   QString *problem = nullptr);

/// All interfaces that sensors can be connected to, in ascending order.
SONDIXQT_EXPORT QList<SensorInterface> sensorInterfaces();

/// Up to three of \a names that are similar to \a text, the most similar first. None for a \a text of more than 100
/// characters.
SONDIXQT_EXPORT QStringList similarNames(const QString &text, const QStringList &names);

/// A message for users: "there is no <what> '<text>'; did you mean <name>?", with the similarNames() among \a names. If
/// no name is similar, it ends with \a otherwise instead of the question.
SONDIXQT_EXPORT QString unknownNameText(const QString &what, const QString &text, const QStringList &names,
                                        const QString &otherwise);

} // namespace SondixQt
