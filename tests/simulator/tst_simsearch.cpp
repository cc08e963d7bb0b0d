// SPDX-License-Identifier: MIT
#include "handle.h"
#include "SondixSimulator/control.h"

#include <QTest>
#include <set>

// A TX270 at each kind of place, and sensors on buses.
static const char *const searchBench = R"({
    "clock": { "virtual": true },
    "search": { "TCP/IP": 1.0, "WinUSB": 0.1, "DriverX_USB": 0.01, "USBIO": 0.02, "RS232": 0.25, "XA100_USB": 0.3,
                "XA100": 0.4, "XA200": 0.5, "XA200_ETH": 0.6, "bus": 2.0, "quickBus": 0.7 },
    "sensors": [
        { "model": "TX270", "serialNumber": "rs232", "name": "TX270-2",
          "place": { "interface": "RS232", "port": "COM1", "baudrate": 9600 } },
        { "model": "TX270", "serialNumber": "rs232 fast",
          "place": { "interface": "RS232", "port": "COM2", "baudrate": 921600 } },
        { "model": "TX270", "serialNumber": "tcp", "articleNumber": "4711", "firmware": "1.0", "macAddress": "01-02",
          "place": { "interface": "TCP/IP", "ip": "10.0.0.1", "remotePort": 99, "dataPort": 100 } },
        { "model": "TX270", "serialNumber": "winusb", "place": { "interface": "WinUSB", "device": 3 } },
        { "model": "TX270", "serialNumber": "xa100usb",
          "place": { "interface": "XA100_USB", "port": "COM7", "device": 1, "channel": 2, "baudrate": 38400, "parity": 1 } },
        { "model": "TX270", "serialNumber": "xa100", "place": { "interface": "XA100", "card": 1, "channel": 2 } },
        { "model": "TX270", "serialNumber": "xa200", "place": { "interface": "XA200", "card": 3, "channel": 4 } },
        { "model": "TX270", "serialNumber": "xa200eth",
          "place": { "interface": "XA200_ETH", "ip": "10.0.0.2", "channel": 1 } },
        { "model": "TX270", "serialNumber": "xa200eth used",
          "place": { "interface": "XA200_ETH", "ip": "10.0.0.2", "channel": 2, "inUse": true } },
        { "model": "CC430", "serialNumber": "other", "place": { "interface": "TCP/IP", "ip": "10.0.0.3" } },
        { "model": "MV420", "serialNumber": "bus mv420",
          "place": { "interface": "RS232", "port": "COM8", "busAddress": 1 } },
        { "model": "GY330", "serialNumber": "bus gy330",
          "place": { "interface": "RS232", "port": "COM8", "busAddress": 2 } },
        { "model": "CP740", "serialNumber": "bus cp740",
          "place": { "interface": "RS232", "port": "COM8", "busAddress": 3 } },
        { "model": "MV410_XA300ETH", "serialNumber": "converter mv410",
          "place": { "interface": "TCP/IP", "ip": "10.0.0.4" } },
        { "model": "HV210", "serialNumber": "colour",
          "place": { "interface": "TCP/IP", "ip": [ "169.254.3.4/16", "192.168.0.20" ] } }
    ]
})";

using Names = std::set<std::string>;

class TestSimSearch : public QObject
{
    Q_OBJECT

private:
    static const char *const *switches()
    {
        static const char *const names[] = {"IP_ScanHWTCPIP",       "IP_ScanHWRS232",
                                            "IP_ScanHWXA100_USB",   "IP_ScanHWXA100",
                                            "IP_ScanHWXA200",       "IP_ScanHWXA200_ETH",
                                            "IP_ScanHWDriverX_USB", "IP_ScanHWUSBIO",
                                            "IP_ScanHWWinUSB",      nullptr};
        return names;
    }
    static void scanOnly(Handle &handle, const QByteArray &wanted)
    {
        for (const char *const *name = switches(); *name != nullptr; ++name)
            handle.set(*name, wanted == *name ? 1 : 0);
    }
    static int foundCount(Handle &handle)
    {
        return handle.command("Get_FindSensorProgress") == 0 ? handle.getInt("IA_Found") : -1;
    }
    static double progress(Handle &handle)
    {
        return handle.command("Get_FindSensorProgress") == 0 ? handle.getDouble("IA_Progress") : -1.0;
    }
    static bool getFound(Handle &handle, int index)
    {
        handle.set("IP_Index", index);
        return handle.command("Get_FoundSensor") == 0;
    }
    static Names names(Handle &handle)
    {
        Names found;
        const int count = foundCount(handle);
        for (int i = 0; i < count; ++i) {
            if (getFound(handle, i))
                found.insert(handle.getText("SA_SerialNumber"));
        }
        return found;
    }
    static Names search(Handle &handle)
    {
        if (handle.command("Start_FindSensor") != 0)
            return {"(failed)"};
        sondixsim::advance(100.0);
        return names(handle);
    }

private Q_SLOTS:
    void init() { sondixsim::loadBench(searchBench); }

    void everySwitchScansItsInterfaceAndTakesItsTime_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<double>("seconds");
        QTest::addColumn<QByteArray>("found");
        QTest::newRow("tcp") << QByteArray("IP_ScanHWTCPIP") << 1.0 << QByteArray("tcp");
        QTest::newRow("winusb") << QByteArray("IP_ScanHWWinUSB") << 0.1 << QByteArray("winusb");
        QTest::newRow("driverx") << QByteArray("IP_ScanHWDriverX_USB") << 0.01 << QByteArray();
        QTest::newRow("usbio") << QByteArray("IP_ScanHWUSBIO") << 0.02 << QByteArray();
        QTest::newRow("rs232") << QByteArray("IP_ScanHWRS232") << 0.5 << QByteArray("rs232,rs232 fast");
        QTest::newRow("xa100usb") << QByteArray("IP_ScanHWXA100_USB") << 0.3 << QByteArray("xa100usb");
        QTest::newRow("xa100") << QByteArray("IP_ScanHWXA100") << 0.4 << QByteArray("xa100");
        QTest::newRow("xa200") << QByteArray("IP_ScanHWXA200") << 0.5 << QByteArray("xa200");
        QTest::newRow("xa200eth") << QByteArray("IP_ScanHWXA200_ETH") << 0.6 << QByteArray("xa200eth");
    }
    void everySwitchScansItsInterfaceAndTakesItsTime()
    {
        QFETCH(QByteArray, name);
        QFETCH(double, seconds);
        QFETCH(QByteArray, found);
        Handle handle(SensorType::TX270);
        scanOnly(handle, name);
        QCOMPARE(handle.command("Start_FindSensor"), 0);
        sondixsim::advance(seconds * 0.99);
        QVERIFY(progress(handle) < 100.0);
        sondixsim::advance(seconds * 0.02);
        QCOMPARE(progress(handle), 100.0);
        Names expected;
        const QList<QByteArray> serialNumbers = found.split(',');
        for (const QByteArray &serialNumber : serialNumbers) {
            if (!serialNumber.isEmpty())
                expected.insert(serialNumber.toStdString());
        }
        QCOMPARE(names(handle), expected);
    }

    void absentSwitchesScanEverything()
    {
        Handle handle(SensorType::TX270);
        QCOMPARE(search(handle).size(), std::size_t(8));
    }

    void aPortThatHasJustComeIntoUseIsNotFound()
    {
        sondixsim::loadBench(
            R"({ "clock": { "virtual": true }, "sensors": [ { "model": "TX270", "serialNumber": "1",
            "place": { "interface": "RS232", "port": "COM1" },
            "timeline": [ { "do": "inUse", "at": 200, "for": 150 } ] } ] })");
        Handle handle(SensorType::TX270);
        QCOMPARE(search(handle), Names{"1"}); // takes 100 s
        sondixsim::advance(150.0);
        QCOMPARE(search(handle), Names());
        QCOMPARE(search(handle), Names{"1"});
    }

    void sensorsAreFoundOneByOneWhileProgressRises()
    {
        Handle handle(SensorType::TX270);
        handle.command("Start_FindSensor");
        QCOMPARE(progress(handle), 0.0);
        double before = 0.0;
        int found = 0;
        while (before < 100.0) {
            sondixsim::advance(0.01);
            const double now = progress(handle);
            QVERIFY(now >= before && now <= 100.0);
            before = now;
            const int count = foundCount(handle);
            QVERIFY(count - found <= 1);
            found = count;
        }
        QCOMPARE(before, 100.0);
        QCOMPARE(found, 8);
    }

    void emptyScanIsDoneAtOnce()
    {
        Handle handle(SensorType::TX270);
        scanOnly(handle, "none");
        handle.command("Start_FindSensor");
        QCOMPARE(progress(handle), 100.0);
        QCOMPARE(foundCount(handle), 0);
    }

    void baudratesLimitWhatIsFoundAndDecideTheTime_data()
    {
        QTest::addColumn<QByteArray>("baudrates");
        QTest::addColumn<double>("seconds");
        QTest::addColumn<int>("found");
        QTest::newRow("one") << QByteArray("9600") << 0.25 << 1;
        QTest::newRow("three") << QByteArray("9600,115200,921600") << 0.75 << 2;
        QTest::newRow("blanks") << QByteArray("9600 921600") << 0.5 << 2;
        QTest::newRow("other") << QByteArray("19200") << 0.25 << 0;
        QTest::newRow("empty") << QByteArray("") << 0.5 << 2;
    }
    void baudratesLimitWhatIsFoundAndDecideTheTime()
    {
        QFETCH(QByteArray, baudrates);
        QFETCH(double, seconds);
        QFETCH(int, found);
        Handle handle(SensorType::TX270);
        scanOnly(handle, "IP_ScanHWRS232");
        handle.set("IP_Baudrates", baudrates.constData());
        handle.command("Start_FindSensor");
        sondixsim::advance(seconds - 0.001);
        QVERIFY(progress(handle) < 100.0);
        sondixsim::advance(0.002);
        QCOMPARE(progress(handle), 100.0);
        QCOMPARE(foundCount(handle), found);
    }

    void quickScanShortensTheBus_data()
    {
        QTest::addColumn<int>("quick");
        QTest::addColumn<double>("seconds");
        QTest::newRow("quick") << 1 << 0.5 + 0.7;
        QTest::newRow("thorough") << 0 << 0.5 + 2.0;
    }
    void quickScanShortensTheBus()
    {
        QFETCH(int, quick);
        QFETCH(double, seconds);
        Handle handle(SensorType::GenericKVBus);
        scanOnly(handle, "IP_ScanHWRS232");
        handle.set("IP_QuickScanRS485", quick);
        handle.command("Start_FindSensor");
        sondixsim::advance(seconds - 0.001);
        QVERIFY(progress(handle) < 100.0);
        sondixsim::advance(0.002);
        QCOMPARE(progress(handle), 100.0);
        QCOMPARE(names(handle), (Names{"bus mv420", "bus gy330", "bus cp740"}));
    }

    void usedChannelsAreScannedWhenForced()
    {
        Handle handle(SensorType::TX270);
        scanOnly(handle, "IP_ScanHWXA200_ETH");
        handle.set("IP_ForceScanUsedChannel", 1);
        QCOMPARE(search(handle), (Names{"xa200eth", "xa200eth used"}));
    }

    void sensorOpenedByAnotherInstanceIsSkipped()
    {
        Handle user(SensorType::TX270);
        user.set("IP_Baudrate", 9600);
        QCOMPARE(user.openAt("COM1"), 0);
        Handle handle(SensorType::TX270);
        scanOnly(handle, "IP_ScanHWRS232");
        QCOMPARE(search(handle), (Names{"rs232 fast"}));
        Handle networkUser(SensorType::TX270);
        networkUser.set("IP_RemoteAddr", "10.0.0.1");
        QCOMPARE(networkUser.open(), 0);
        scanOnly(handle, "IP_ScanHWTCPIP");
        QCOMPARE(search(handle), (Names{"tcp"})); // network sensors are found although they are open
    }

    void resultCarriesAllParametersOfItsInterface_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<QByteArray>("expected");
        const auto row = [](const char *name, const char *expected) {
            QTest::newRow(name) << QByteArray(name) << QByteArray(expected);
        };
        row("IP_ScanHWTCPIP",
            "IP_InterfaceIdx=3\r\nIP_Interface=\"TCP/"
            "IP\"\r\nIP_RemoteAddr=\"10.0.0.1\"\r\nSA_IPAddress=\"10.0.0.1\"\r\n"
            "IP_RemotePort=99\r\nIP_DataPort=100\r\nIP_AddressFamily=2\r\nIP_SensorType=41\r\n"
            "IP_SensorTypeName=\"TX270\"\r\nSA_Sensor=\"TX270-10\"\r\nSA_SerialNumber=\"tcp\"\r\n"
            "SA_ArticleNumber=\"4711\"\r\nSA_Softwareversion=\"1.0 (simulator)\"\r\nSA_MacAddress=\"01-02\"\r\n");
        row("IP_ScanHWRS232", "IP_InterfaceIdx=1\r\nIP_Interface=\"RS232\"\r\nIP_Port=\"COM1\"\r\nIP_Baudrate="
                              "9600\r\nIP_Stopbits=1\r\n"
                              "IP_ByteSize=8\r\nIP_Parity=0\r\nIP_SensorAddress=0\r\nIP_SensorType=41\r\nIP_"
                              "SensorTypeName=\"TX270\"\r\n"
                              "SA_Sensor=\"TX270-2\"\r\nSA_SerialNumber=\"rs232\"\r\n");
        row("IP_ScanHWWinUSB",
            "IP_InterfaceIdx=7\r\nIP_Interface=\"WinUSB\"\r\nIP_DeviceInstance=3\r\nIP_SensorType=41\r\n"
            "IP_SensorTypeName=\"TX270\"\r\nSA_Sensor=\"TX270-10\"\r\nSA_SerialNumber=\"winusb\"\r\n");
        row("IP_ScanHWXA100_USB",
            "IP_InterfaceIdx=8\r\nIP_Interface=\"XA100_USB\"\r\nIP_DeviceInstance=1\r\nIP_ChannelNumber=2\r\n"
            "IP_Port=\"COM7\"\r\nIP_Baudrate=38400\r\nIP_Parity=1\r\nIP_SensorType=41\r\n");
        row("IP_ScanHWXA100",
            "IP_InterfaceIdx=2\r\nIP_Interface=\"XA100\"\r\nIP_CardInstance=1\r\nIP_ChannelNumber=2\r\n"
            "IP_Baudrate=691200\r\nIP_SensorType=41\r\n");
        row("IP_ScanHWXA200",
            "IP_InterfaceIdx=6\r\nIP_Interface=\"XA200\"\r\nIP_CardInstance=3\r\nIP_ChannelNumber=4\r\n"
            "IP_Baudrate=691200\r\nIP_Parity=0\r\nIP_SensorType=41\r\n");
        row("IP_ScanHWXA200_ETH",
            "IP_InterfaceIdx=10\r\nIP_Interface=\"XA200_ETH\"\r\nIP_RemoteAddr=\"10.0.0.2\"\r\n"
            "SA_IPAddress=\"10.0.0.2\"\r\nIP_RemotePort=23\r\nIP_CardInstance=0\r\nIP_DeviceInstance=0\r\n"
            "IP_ChannelNumber=1\r\nIP_Baudrate=691200\r\nIP_Parity=0\r\nIP_AddressFamily=2\r\nIP_SensorType="
            "41\r\n");
    }
    void resultCarriesAllParametersOfItsInterface()
    {
        QFETCH(QByteArray, name);
        QFETCH(QByteArray, expected);
        Handle handle(SensorType::TX270);
        scanOnly(handle, name);
        search(handle);
        QVERIFY(getFound(handle, 0));
        const QByteArray answer(handle.allParameters().c_str());
        QVERIFY2(answer.startsWith(expected), answer.constData());
    }

    void foundParametersOpenTheSensor()
    {
        Handle handle(SensorType::TX270);
        const auto count = static_cast<int>(search(handle).size());
        for (int i = 0; i < count; ++i) {
            getFound(handle, i);
            Handle user(SensorType::TX270);
            for (const char *name : {"IP_Port", "IP_RemoteAddr", "IP_Interface"}) {
                const std::string text = handle.getText(name, "");
                if (!text.empty())
                    user.set(name, text.c_str());
            }
            for (const char *name : {"IP_Baudrate", "IP_SensorAddress", "IP_DeviceInstance", "IP_CardInstance",
                                     "IP_ChannelNumber", "IP_RemotePort", "IP_Parity"}) {
                const int value = handle.getInt(name);
                if (value != -4711)
                    user.set(name, value);
            }
            QCOMPARE(user.open(), 0);
            user.command("Get_Info");
            QCOMPARE(user.getText("SA_SerialNumber"), handle.getText("SA_SerialNumber"));
        }
    }

    void busSensorsAreReportedByTheirFamily()
    {
        Handle handle(SensorType::GenericKVBus);
        handle.set("IP_SensorType", SensorType::MV420);
        handle.set("IP_FindSimilarSensors", 1);
        search(handle);
        int checked = 0;
        for (int i = 0; i < foundCount(handle); ++i) {
            getFound(handle, i);
            const std::string name = handle.getText("SA_SerialNumber");
            if (name == "bus mv420") {
                QCOMPARE(handle.getInt("IP_SensorType"), 43);
                QCOMPARE(handle.getText("SA_Sensor"), std::string("MV420"));
                ++checked;
            } else if (name == "bus gy330") {
                QCOMPARE(handle.getInt("IP_SensorType"), 43);
                QCOMPARE(handle.getText("SA_Sensor"), std::string("(missing)"));
                QCOMPARE(handle.getText("SA_ControllerName"), std::string("GYSENS1_A"));
                ++checked;
            } else if (name == "bus cp740") {
                QCOMPARE(handle.getInt("IP_SensorType"), 40);
                ++checked;
            }
        }
        QCOMPARE(checked, 3);
    }

    void sensorsBehindTheConverterAreReportedByIt()
    {
        Handle handle(SensorType::XA300);
        handle.set("IP_SensorType", SensorType::MV410_XA300ETH);
        handle.set("IP_FindSimilarSensors", 1);
        QVERIFY(search(handle).count("converter mv410") > 0);
        for (int i = 0; i < foundCount(handle); ++i) {
            getFound(handle, i);
            if (handle.getText("SA_SerialNumber") != "converter mv410")
                continue;
            QCOMPARE(handle.getInt("IP_SensorType"), 34);
            QCOMPARE(handle.getText("SA_Sensor"), std::string("XA300/ETH_MV410"));
            return;
        }
        QFAIL("the sensor behind the converter has no result");
    }

    void colourSensorReportsAllItsAddresses()
    {
        Handle handle(SensorType::HV2);
        QCOMPARE(search(handle), (Names{"colour"}));
        getFound(handle, 0);
        QCOMPARE(handle.getInt("IP_SensorType"), 10053);
        QCOMPARE(handle.getText("SA_CurrentIPAddresses"), std::string("169.254.3.4/16 192.168.0.20"));
        QCOMPARE(handle.getText("IP_RemoteAddr"), std::string("169.254.3.4"));
    }

    void similarSensorsAreFoundWhenAsked()
    {
        Handle handle(SensorType::TX270);
        scanOnly(handle, "IP_ScanHWTCPIP");
        handle.set("IP_SensorType", SensorType::TX270);
        QCOMPARE(search(handle), (Names{"tcp"}));
        scanOnly(handle, "IP_ScanHWTCPIP");
        handle.set("IP_FindSimilarSensors", 1);
        QCOMPARE(search(handle), (Names{"tcp", "other", "colour"})); // but no sensors behind a converter
    }

    void similarSearchKeepsBusAndConverterApart()
    {
        Handle bus(SensorType::GenericKVBus);
        bus.set("IP_FindSimilarSensors", 1);
        QCOMPARE(search(bus), (Names{"bus mv420", "bus gy330", "bus cp740"}));
        Handle converter(SensorType::XA300);
        converter.set("IP_FindSimilarSensors", 1);
        QVERIFY(search(converter).count("bus mv420") == 0);
    }

    void unpluggedSensorIsNotFound()
    {
        sondixsim::unplug("tcp");
        Handle handle(SensorType::TX270);
        scanOnly(handle, "IP_ScanHWTCPIP");
        QCOMPARE(search(handle), Names());
        sondixsim::plug("tcp");
        scanOnly(handle, "IP_ScanHWTCPIP");
        QCOMPARE(search(handle), (Names{"tcp"}));
    }

    void abortedSearchFindsNothingMore()
    {
        Handle handle(SensorType::TX270);
        handle.command("Start_FindSensor");
        sondixsim::advance(0.6); // past the middle of the network scan
        const int found = foundCount(handle);
        QCOMPARE(found, 1);
        QCOMPARE(handle.command("Abort_FindSensor"), 0);
        const double reached = progress(handle);
        sondixsim::advance(100.0);
        QCOMPARE(foundCount(handle), found);
        QCOMPARE(progress(handle), reached);
        QVERIFY(getFound(handle, 0));
    }

    void abortWithoutASearchSucceeds()
    {
        Handle handle(SensorType::TX270);
        QCOMPARE(handle.command("Abort_FindSensor"), 0);
        QVERIFY(handle.command("Get_FindSensorProgress") < 0);
        QVERIFY(!getFound(handle, 0));
    }

    void resultsAreOnlyThoseFoundYet()
    {
        Handle handle(SensorType::TX270);
        handle.command("Start_FindSensor");
        QVERIFY(!getFound(handle, 0));
        sondixsim::advance(100.0);
        QVERIFY(getFound(handle, 7));
        QVERIFY(!getFound(handle, 8));
        QVERIFY(!getFound(handle, -1));
        QVERIFY(handle.command("Get_FoundSensor") < 0); // IP_Index is missing
    }

    void newSearchStartsAfresh()
    {
        Handle handle(SensorType::TX270);
        search(handle);
        handle.command("Start_FindSensor");
        QCOMPARE(foundCount(handle), 0);
        QCOMPARE(progress(handle), 0.0);
    }

    void twoSearchesRunSideBySide()
    {
        Handle first(SensorType::TX270);
        Handle second(SensorType::CC430);
        first.command("Start_FindSensor");
        sondixsim::advance(1.0);
        second.command("Start_FindSensor");
        sondixsim::advance(100.0);
        QCOMPARE(foundCount(first), 8);
        QCOMPARE(names(second), (Names{"other"}));
    }

    void defaultSearchTakesAboutASecond_data()
    {
        QTest::addColumn<int>("type");
        for (const int type :
             {SensorType::TX270, SensorType::CC430, SensorType::GenericKVBus, SensorType::XA300, SensorType::HV2})
            QTest::newRow(QByteArray::number(type).constData()) << type;
    }
    void defaultSearchTakesAboutASecond()
    {
        QFETCH(int, type);
        sondixsim::loadBench(R"({ "clock": { "virtual": true }, "sensors": [] })");
        Handle handle(type);
        handle.set("IP_QuickScanRS485", 1);
        handle.command("Start_FindSensor");
        double seconds = 0.0;
        while (progress(handle) < 100.0) {
            sondixsim::advance(0.05);
            seconds += 0.05;
        }
        QVERIFY2(seconds >= 0.5 && seconds <= 1.5, QByteArray::number(seconds).constData());
    }
};

QTEST_GUILESS_MAIN(TestSimSearch)
#include "tst_simsearch.moc"
