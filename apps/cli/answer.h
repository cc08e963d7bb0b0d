// SPDX-License-Identifier: MIT
#pragma once

#include "console.h"

#include "shared/sensoraddress.h"

#include <SondixQt/sensorinstance.h>

#include <QJsonObject>
#include <QMap>
#include <QStringList>
#include <QVariant>

/// What sensors are asked and what they answer.
namespace Answer {

using Parameters = QMap<QString, QVariant>;

/// \a name, when it can be the name of a command. Throws Failure otherwise.
QString checkedCommand(const QString &name);
/// The parameters that the words PARAMETER=VALUE stand for. Throws Failure when one stands for none.
Parameters checkedParameters(const QStringList &words);

/// Sends \a command and returns the whole answer; where part of it is bytes, sends it twice. Throws Failure when the sensor refuses.
Parameters ask(SondixQt::SensorInstance &instance, const QString &command, const Parameters &parameters);
/// Throws the Failure of a sensor that refuses \a what with \a code and \a text, unless \a code is 0.
void check(SondixQt::ErrorCode code, const QString &what, const QString &text);

/// \a parameters without what is not the sensor's but the way in which it was asked.
Parameters withoutInternals(Parameters parameters);

/// \a value on one line; bytes are told by their number.
QString textOf(const QVariant &value);
/// One line a parameter, indented by \a indent blanks.
void print(Console &console, const Parameters &parameters, int indent = 0);
/// \a object with the sensor's model and address, on stdout.
void printJson(Console &console, const SondixApp::SensorAddress &address, QJsonObject object);

} // namespace Answer
