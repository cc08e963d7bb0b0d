// SPDX-License-Identifier: MIT
#include "livevalue/livevalue.h"

#include <SondixQt/SondixQt>
#include <SondixSimulator/control.h>

#include <QtTest>

using namespace SondixQt;
using namespace std::chrono_literals;

/// The example of a widget that shows a live value.
class TestLiveValue : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void showsTheLatestValue()
    {
        sondixsim::loadBench(R"({ "clock": { "virtual": true }, "sensors": [ {
            "model": "TX270", "serialNumber": "1", "place": { "interface": "RS232", "port": "COM1" }, "rate": 1000,
            "signals": [ { "name": "DIST1", "unit": "mm", "range": [0.0, 10.0], "rawRange": [0, 10000],
                "generator": { "kind": "constant", "value": 2.5 },
                "errors": [ { "key": -7, "every": 100 } ] } ] } ] })");
        SensorReader reader(*SensorAddress::parse("TX270@RS232,port=COM1"));
        reader.setDeliveryInterval(1ms);
        Reconnect quickly;
        quickly.first = 1ms;
        reader.setReconnect(quickly);
        LiveValue value(reader);
        value.setLocale(QLocale::c());
        QVERIFY(!value.isEnabled());
        reader.start();
        QTRY_VERIFY(value.isEnabled());
        sondixsim::advance(0.05);
        QTRY_COMPARE(value.text(), QString("2.500 mm"));
        sondixsim::advance(0.05); // the last of a hundred frames is an error
        QTRY_COMPARE(value.text(), QString("error -7"));
        sondixsim::unplug("1");
        QTRY_VERIFY(!value.isEnabled());
        sondixsim::plug("1");
        QTRY_VERIFY(value.isEnabled());
        sondixsim::advance(0.05);
        QTRY_COMPARE(value.text(), QString("2.500 mm"));
    }
};

QTEST_MAIN(TestLiveValue)
#include "tst_livevalue.moc"
