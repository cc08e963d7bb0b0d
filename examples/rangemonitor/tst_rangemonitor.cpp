// SPDX-License-Identifier: MIT
// A unit test of an own class: the simulator stands in for the sensor, and the test decides what happens to it.
#include "rangemonitor.h"

#include <SondixQt/SondixQt>
#include <SondixSimulator/control.h>

#include <QSignalSpy>
#include <QTest>

using namespace SondixQt;
using namespace std::chrono_literals;
using Alarm = RangeMonitor::Alarm;

class TestRangeMonitor : public QObject
{
    Q_OBJECT

private:
    SensorReader reader{*SensorAddress::parse(QStringLiteral("TX270@RS232,port=COM1"))};
    RangeMonitor monitor{reader, 4.0, 6.0};

    /// The sensor measures \a value next.
    static void measure(double value)
    {
        sondixsim::advance(0.01);
        sondixsim::pushData("1", {}, {value}, sondixsim::now());
    }

private Q_SLOTS:
    void init()
    {
        // A sensor that measures nothing on its own: it waits for triggers, and the clock stands still.
        sondixsim::loadBench(R"({ "clock": { "virtual": true }, "sensors": [ {
            "model": "TX270", "serialNumber": "1", "place": { "interface": "RS232", "port": "COM1" },
            "signals": [ { "name": "DIST1", "unit": "mm", "range": [0.0, 10.0] } ],
            "settings": { "TriggerMode": { "SA_TriggerMode": 3 } } } ] })");
        Reconnect quickly;
        quickly.first = 1ms;
        reader.setReconnect(quickly);
        reader.setDeliveryInterval(1ms);
        reader.start();
        QTRY_COMPARE(reader.state(), SensorReader::WaitingForTrigger);
    }
    void cleanup()
    {
        reader.stop();
        QTRY_COMPARE(reader.state(), SensorReader::Stopped);
    }

    void valueOutsideTheRangeRaisesAnAlarm()
    {
        QSignalSpy alarms(&monitor, &RangeMonitor::alarmChanged);
        measure(5.0);
        measure(6.5);
        QTRY_COMPARE(monitor.alarm(), Alarm::OutOfRange);
        measure(4.5);
        QTRY_COMPARE(monitor.alarm(), Alarm::None);
        QCOMPARE(alarms.count(), 2);
    }

    void missingTargetRaisesAnAlarm()
    {
        measure(-1.0e10 - 1.0); // error value with the key -1
        QTRY_COMPARE(monitor.alarm(), Alarm::NoValue);
        measure(5.0);
        QTRY_COMPARE(monitor.alarm(), Alarm::None);
    }

    void pulledCableRaisesAnAlarm()
    {
        measure(5.0);
        sondixsim::unplug("1");
        QTRY_COMPARE(monitor.alarm(), Alarm::SensorGone);
        sondixsim::plug("1");
        QTRY_COMPARE(reader.state(), SensorReader::WaitingForTrigger);
        QCOMPARE(monitor.alarm(), Alarm::SensorGone); // until it measures again
        measure(5.0);
        QTRY_COMPARE(monitor.alarm(), Alarm::None);
    }
};

QTEST_GUILESS_MAIN(TestRangeMonitor)
#include "tst_rangemonitor.moc"
