// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/sensoraddress.h>
#include <SondixSimulator/control.h>

#include <QtTest>

/// A bench with two sensors. The first one, TX270 1001 on the port 3, measures 1000 frames per second of two values: the
/// number of the frame, and the same number plus 7. The second one is a CC430 1002 in the network. The clock is virtual.
inline void loadExplorerBench()
{
    sondixsim::loadBench(R"({
        "lineSpeed": false,
        "sensors": [
            {
                "model": "TX270", "serialNumber": "1001", "rate": 1000, "ring": 100000,
                "place": { "interface": "RS232", "port": "3" },
                "signals": [
                    { "name": "Number", "unit": "mm", "range": [0, 10000000], "rawRange": [0, 10000000],
                      "generator": { "kind": "counter", "modulo": 10000000 } },
                    { "name": "Shifted", "unit": "mm", "range": [0, 10000000], "rawRange": [0, 10000000],
                      "generator": [ { "kind": "counter", "modulo": 10000000 }, { "kind": "constant", "value": 7 } ] }
                ]
            },
            { "model": "CC430", "serialNumber": "1002", "place": { "interface": "TCP/IP", "ip": "192.168.0.20" } }
        ]
    })");
    sondixsim::useVirtualClock();
}

inline SondixQt::SensorAddress firstAddress()
{
    return {SondixQt::TX270, {{"IP_Interface", "RS232"}, {"IP_Port", 3}}};
}

inline SondixQt::SensorAddress secondAddress()
{
    return {SondixQt::CC430, {{"IP_Interface", "TCP/IP"}, {"IP_RemoteAddr", "192.168.0.20"}}};
}
