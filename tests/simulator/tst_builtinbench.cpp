// SPDX-License-Identifier: MIT
#include "handle.h"
#include "SondixSimulator/control.h"

#include <cmath>
#include <QTest>
#include <set>

class TestBuiltInBench : public QObject
{
    Q_OBJECT

private:
    struct Expected
    {
        const char *serialNumber;
        int type;
        const char *interface;
        int reportedType;
        double hertz;
    };
    static const std::vector<Expected> &sensors()
    {
        static const std::vector<Expected> all = {
            {"1018001", SensorType::TX270, "RS232", SensorType::TX270, 2000.0},
            {"7160214", SensorType::RG52x, "RS232", SensorType::RG52x, 10.0},
            {"7160977", SensorType::RG53x, "RS232", SensorType::RG53x, 100.0},
            {"2300551", SensorType::CP730, "RS232", SensorType::CP730, 1000.0},
            {"3420007", SensorType::GenericKVBus, "RS232", SensorType::GenericKVBus, 10.0},
            {"3330019", SensorType::GenericKVBus, "RS232", SensorType::GenericKVBus, 500.0},
            {"2830102", SensorType::GenericKVBus, "RS232", SensorType::GenericKVBus, 1000.0},
            {"2421018", SensorType::CC430, "TCP/IP", SensorType::CC430, 1000.0},
            {"2903344", SensorType::TX290, "TCP/IP", SensorType::TX290, 4000.0},
            {"4134002", SensorType::MC340, "TCP/IP", SensorType::MC340, 2500.0},
            {"1032101", SensorType::HV2, "TCP/IP", SensorType::HV210, 20.0},
            {"2740088", SensorType::XA300, "TCP/IP", SensorType::XA300, 500.0},
            {"3410042", SensorType::XA300, "TCP/IP", SensorType::XA300, 20.0},
            {"3003001", SensorType::TX300, "WinUSB", SensorType::TX300, 5000.0},
            {"2404410", SensorType::TX240, "XA100_USB", SensorType::TX240, 1000.0},
            {"2810033", SensorType::EC810, "XA100", SensorType::EC810, 3600.0 / 7.0},
            {"2202207", SensorType::TX220, "XA100", SensorType::TX220, 1250.0},
            {"2303309", SensorType::TX230, "XA200", SensorType::TX230, 2500.0},
            {"1018077", SensorType::TX270, "XA200", SensorType::TX270, 4000.0},
            {"2801115", SensorType::TX280, "XA200_ETH", SensorType::TX280, 2000.0},
            {"1018105", SensorType::TX270, "XA200_ETH", SensorType::TX270, 1000.0},
            {"3430003", SensorType::GenericKVBus, "RS232", SensorType::GenericKVBus, 50.0},
            {"2740031", SensorType::CP740, "RS232", SensorType::CP740, 50.0},
            {"5700001", SensorType::MultiSensor, "RS232", SensorType::MultiSensor, 50.0},
        };
        return all;
    }
    static void addRows()
    {
        QTest::addColumn<int>("index");
        for (std::size_t i = 0; i < sensors().size(); ++i)
            QTest::newRow(sensors()[i].serialNumber) << static_cast<int>(i);
    }

private Q_SLOTS:
    void init()
    {
        sondixsim::loadBuiltInBench();
        sondixsim::useVirtualClock();
    }

    void everySensorIsFound_data() { addRows(); }
    void everySensorIsFound()
    {
        QFETCH(int, index);
        const Expected &expected = sensors()[static_cast<std::size_t>(index)];
        Handle handle(expected.type);
        QCOMPARE(handle.command("Start_FindSensor"), 0);
        sondixsim::advance(10.0);
        handle.command("Get_FindSensorProgress");
        const int found = handle.getInt("IA_Found");
        for (int i = 0; i < found; ++i) {
            handle.set("IP_Index", i);
            QCOMPARE(handle.command("Get_FoundSensor"), 0);
            if (handle.getText("SA_SerialNumber") != expected.serialNumber)
                continue;
            QCOMPARE(handle.getInt("IP_SensorType"), expected.reportedType);
            QCOMPARE(handle.getText("IP_Interface"), std::string(expected.interface));
            return;
        }
        QFAIL("the sensor was not found");
    }

    void everySensorIsReadAtItsRate_data() { addRows(); }
    void everySensorIsReadAtItsRate()
    {
        QFETCH(int, index);
        const Expected &expected = sensors()[static_cast<std::size_t>(index)];
        Handle handle(expected.type);
        handle.set("SA_SerialNumber", expected.serialNumber);
        QCOMPARE(handle.open(), 0);
        QCOMPARE(handle.command("Get_TransmittedDataInfo"), 0);
        const int perFrame = handle.getInt("IA_ValuesPerFrame");
        QVERIFY(perFrame > 0);
        QVERIFY(std::fabs(handle.getDouble("IA_Datarate") - expected.hertz) < 0.01);
        std::vector<std::pair<double, double>> ranges;
        for (int i = 1; i <= perFrame; ++i) {
            const std::string number = std::to_string(i);
            QVERIFY(!handle.getText(("IA_Scaled_Name" + number).c_str()).empty());
            ranges.emplace_back(handle.getDouble(("IA_Scaled_RangeMin" + number).c_str()),
                                handle.getDouble(("IA_Scaled_RangeMax" + number).c_str()));
        }
        sondixsim::advance(2.0);
        handle.set("IP_SensorIndex", 1);
        handle.command("Get_Measure");
        const Block block = takeBlock(handle, 1000000);
        const auto frames = static_cast<double>(block.scaled.size()) / perFrame;
        QVERIFY2(std::fabs(frames - 2.0 * expected.hertz) <= 1.0, QByteArray::number(frames).constData());
        bool varies = false;
        for (std::size_t i = 0; i < block.scaled.size(); ++i) {
            const auto &[minimum, maximum] = ranges[i % ranges.size()];
            QVERIFY(block.scaled[i] <= -1.0e10 || (block.scaled[i] >= minimum && block.scaled[i] <= maximum));
            varies = varies || block.scaled[i] != block.scaled[i % ranges.size()];
        }
        QVERIFY(varies);
        QCOMPARE(sondixsim::lostFrames(expected.serialNumber), std::uint64_t(0));
    }

    void everySensorSaysThatItIsSimulated_data() { addRows(); }
    void everySensorSaysThatItIsSimulated()
    {
        QFETCH(int, index);
        const Expected &expected = sensors()[static_cast<std::size_t>(index)];
        Handle handle(expected.type);
        handle.set("SA_SerialNumber", expected.serialNumber);
        handle.open();
        QVERIFY(handle.getText("SA_SensorInformation").find("simulator") != std::string::npos);
        handle.command("Get_Info");
        QVERIFY(handle.getText("SA_Softwareversion").find("simulator") != std::string::npos);
    }

    void severalSensorsSendErrorValues()
    {
        std::set<std::string> withErrors;
        for (const Expected &expected : sensors()) {
            sondixsim::loadBuiltInBench();
            Handle handle(expected.type);
            handle.set("SA_SerialNumber", expected.serialNumber);
            handle.open();
            handle.command("Get_SensorErrorValueText");
            const std::string texts = handle.getText("SA_SensorErrorValueText");
            sondixsim::advance(8.0);
            handle.command("Get_Measure");
            for (const double value : takeBlock(handle, 1000000).scaled) {
                if (value > -1.0e10)
                    continue;
                withErrors.insert(expected.serialNumber);
                const auto key = static_cast<int>(value + 1.0e10);
                QVERIFY(texts.find(std::to_string(key) + ": ") != std::string::npos);
            }
        }
        QVERIFY(withErrors.size() >= 4);
    }

    void everyInterfaceHasASensor()
    {
        std::set<std::string> interfaces;
        for (const Expected &expected : sensors())
            interfaces.insert(expected.interface);
        QCOMPARE(interfaces.size(), std::size_t(7));
    }

    void everySensorCanBeOpenAtOnce()
    {
        std::vector<std::unique_ptr<Handle>> handles;
        for (const Expected &expected : sensors()) {
            // A MultiSensor cannot be open at the same time as its members.
            if (std::string(expected.serialNumber) == "5700001")
                continue;
            handles.push_back(std::make_unique<Handle>(expected.type));
            handles.back()->set("SA_SerialNumber", expected.serialNumber);
            QCOMPARE(handles.back()->open(), 0);
        }
        QCOMPARE(handles.size(), std::size_t(23));
    }
};

QTEST_GUILESS_MAIN(TestBuiltInBench)
#include "tst_builtinbench.moc"
