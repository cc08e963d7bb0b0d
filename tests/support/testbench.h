// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/SensorInstance>
#include <SondixSimulator/control.h>

#include <QMap>
#include <QString>
#include <QtTest>
#include <QVariant>

/// Loads the bench of the unit tests: one sensor of each kind, each with its own address.
inline void loadTestBench()
{
    sondixsim::loadBench(R"({
        "name": "unit tests",
        "sensors": [
            { "model": "TX270", "serialNumber": "1001", "place": { "interface": "RS232", "port": "3" } },
            { "model": "CP720", "serialNumber": "1002", "place": { "interface": "TCP/IP", "ip": "192.168.0.20" } },
            { "model": "RG52x", "serialNumber": "1003", "place": { "interface": "RS232", "port": "4" } },
            { "model": "RG53x", "serialNumber": "1004", "place": { "interface": "RS232", "port": "5" } },
            { "model": "CP740", "serialNumber": "1005", "place": { "interface": "RS232", "port": "6" } },
            { "model": "EC830", "serialNumber": "1006", "place": { "interface": "RS232", "port": "7" } },
            { "model": "MultiSensor", "serialNumber": "1007", "members": ["1005", "1006"],
              "place": { "interface": "RS232", "port": "8" } }
        ]
    })");
    sondixsim::useVirtualClock();
}

/// The interface parameters of the test bench's sensor of \a type.
inline QMap<QString, QVariant> testBenchParameters(SondixQt::SensorType type)
{
    using Parameters = QMap<QString, QVariant>;
    const auto serial = [](int port) { return Parameters{{"IP_Interface", "RS232"}, {"IP_Port", port}}; };
    static const QMap<SondixQt::SensorType, Parameters> places{
        {SondixQt::TX270, serial(3)},
        {SondixQt::CP720, {{"IP_Interface", "TCP/IP"}, {"IP_RemoteAddr", "192.168.0.20"}}},
        {SondixQt::RG52x, serial(4)},
        {SondixQt::RG53x, serial(5)},
        {SondixQt::CP740, serial(6)},
        {SondixQt::EC830, serial(7)},
        {SondixQt::MultiSensor, {{"IP_Interface", "RS232"}, {"IP_Port", 8}, {"IP_SensorCount", 2}}},
    };
    return places.value(type);
}

/// An open sensor of the test bench.
class OpenSensorInstance
{
public:
    explicit OpenSensorInstance(SondixQt::SensorType type)
        : instance(type)
    {
        QString errorText;
        if (instance.open(testBenchParameters(type), &errorText) != SondixQt::NoError)
            QTest::qFail(qPrintable(QStringLiteral("cannot open: ") + errorText), __FILE__, __LINE__);
    }

    SondixQt::SensorInstance *operator->() { return &instance; }
    SondixQt::SensorInstance *get() { return &instance; }

private:
    SondixQt::SensorInstance instance;
};
