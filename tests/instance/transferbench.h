// SPDX-License-Identifier: MIT
#pragma once

#include "support/callrecorder.h"
#include "support/scripting.h"

#include <SondixQt/SensorInstance>

#include <QtTest>

#include <numeric>

/// A sensor that delivers exactly the values that a test puts into it, in frames of three values.
class TransferSensor
{
public:
    TransferSensor()
        : instance(SondixQt::SensorType::TX270)
    {
        sondixsim::loadBench(R"({ "sensors": [ {
            "model": "TX270", "serialNumber": "1001", "ring": 100000,
            "place": { "interface": "RS232", "port": "COM3" },
            "signals": [ { "name": "Distance" }, { "name": "Intensity" }, { "name": "Counter" } ]
        } ] })");
        sondixsim::useVirtualClock();
        if (instance.open() != SondixQt::NoError)
            QTest::qFail("cannot open the sensor", __FILE__, __LINE__);
    }
    ~TransferSensor() { sondixsim::clearFaults(); }
    TransferSensor(const TransferSensor &) = delete;
    TransferSensor &operator=(const TransferSensor &) = delete;

    SondixQt::SensorInstance *operator->() { return &instance; }

    /// Adds \a count values to the data of the sensor.
    void put(int count, double timestamp = 12.5)
    {
        const QVector<int> raw = rawValues(count);
        const QVector<double> scaled = scaledValues(count);
        sondixsim::pushData("1001", {raw.begin(), raw.end()}, {scaled.begin(), scaled.end()}, timestamp);
    }
    static QVector<int> rawValues(int count)
    {
        QVector<int> values(count);
        std::iota(values.begin(), values.end(), 100);
        return values;
    }
    static QVector<double> scaledValues(int count)
    {
        QVector<double> values(count);
        std::iota(values.begin(), values.end(), -3.25);
        return values;
    }

    SondixQt::SensorInstance instance;
};
