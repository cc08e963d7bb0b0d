// SPDX-License-Identifier: MIT
#pragma once

#include <QJsonObject>
#include <QString>

namespace SondixApp {

/// Makes the simulator load the bench \a file. Call this before the first call of the sensor-access library.
void useBench(const QString &file);
/// The bench that the environment chooses; empty for the built-in one.
QString usedBench();

/// Whether the sensor-access library is the simulator, which has control functions. Threads: any.
bool isSimulated();

/// Carries out a request of the simulator's control function SondixSimControl(), see its header controlcall.h. Returns
/// its answer. Without the simulator, or if the request fails, the answer has the member "error", a text for users.
/// It may wait for a command that a sensor is executing. Threads: any.
QJsonObject controlBench(const QJsonObject &request);

} // namespace SondixApp
