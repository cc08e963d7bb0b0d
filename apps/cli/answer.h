// SPDX-License-Identifier: MIT
#pragma once

#include "console.h"

#include <SondixQt/sensoraddress.h>
#include <SondixQt/sensorinstance.h>

#include <QJsonObject>
#include <QMap>
#include <QStringList>
#include <QVariant>

/// Sends commands to sensors and shows their answers.
namespace Answer {

using Parameters = QMap<QString, QVariant>;

/// Returns \a name if it can be the name of a command. Throws Failure otherwise.
QString checkedCommand(const QString &name);
/// Parses words of the form PARAMETER=VALUE. Throws Failure if one of them is malformed.
Parameters checkedParameters(const QStringList &words);

/// Sends \a command and returns the whole answer. Sends it a second time if the answer has binary parts. Throws
/// Failure if the sensor refuses.
Parameters ask(SondixQt::SensorInstance &instance, const QString &command, const Parameters &parameters);
/// Throws Failure with the message that the sensor refuses \a what, unless \a code is NoError.
void check(SondixQt::ErrorCode code, const QString &what, const QString &text);

/// \a parameters without "S_Command", which is part of the question and not of the answer.
Parameters withoutInternals(Parameters parameters);

/// \a value on one line; for bytes only their number.
QString textOf(const QVariant &value);
/// Prints one parameter per line, indented by \a indent spaces.
void print(Console &console, const Parameters &parameters, int indent = 0);
/// Prints \a object together with the sensor's model and address.
void printJson(Console &console, const SondixQt::SensorAddress &address, QJsonObject object);

} // namespace Answer
