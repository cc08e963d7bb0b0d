// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/SensorAddress>

#include <QCoreApplication>
#include <QDeadlineTimer>

#include <chrono>

/// Loads a bench with \a count sensors that send \a rate frames per second of \a values values each. Its clock runs in
/// real time.
void loadSensors(int count, int rate, int values);
SondixQt::SensorAddress addressOf(int sensor);
/// Frames that the rings of the first \a sensors sensors have lost.
std::uint64_t lostFrames(int sensors);

/// The part of a core that the process uses while the event loop of this thread runs for \a time.
double coreShare(std::chrono::milliseconds time = std::chrono::seconds(1));
/// The same for what an application writes without a reader: a thread that fetches all values of the first sensor every
/// 50 ms. Nearly all of it is the work of the simulator.
double shareOfBareLoop();

/// Processes events until \a condition is true; false if that takes too long.
template<typename Condition>
bool waitFor(Condition &&condition)
{
    const QDeadlineTimer deadline(std::chrono::seconds(10));
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 100);
    }
    return true;
}
