// SPDX-License-Identifier: MIT
#include <SondixQt/SensorInstance>
#include <SondixSimulator/control.h>

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    sondixsim::recordCalls(true);
    SondixQt::SensorInstance(SondixQt::SensorType::TX270).release();
    const auto calls = sondixsim::calls();
    const bool ok = !calls.empty() && calls.front().function == "CreateSensorInstance";
    std::puts(ok ? "ok" : "the simulator did not see the call");
    return ok ? 0 : 1;
}
