// SPDX-License-Identifier: MIT
#include "handle.h"
#include "SondixSimulator/control.h"

#include <QTest>

static const char *const lifecycleBench = R"({
    "sensors": [
        { "model": "TX270", "serialNumber": "first", "place": { "interface": "RS232", "port": "COM1" } },
        { "model": "TX270", "serialNumber": "second",
          "place": { "interface": "RS232", "port": "COM2", "baudrate": 9600 } },
        { "model": "RG53x", "serialNumber": "distance", "place": { "interface": "RS232", "port": "COM3" } },
        { "model": "HV210", "serialNumber": "colour",
          "place": { "interface": "TCP/IP", "ip": [ "169.254.3.4/16", "192.168.0.20" ] } },
        { "model": "MV420", "serialNumber": "bus 1",
          "place": { "interface": "RS232", "port": "COM8", "busAddress": 1 } },
        { "model": "CP740", "serialNumber": "bus 2",
          "place": { "interface": "RS232", "port": "COM8", "busAddress": 2 } },
        { "model": "MultiSensor", "serialNumber": "both", "place": { "interface": "RS232", "port": "COM8" },
          "members": [ "bus 1", "bus 2" ] },
        { "model": "TX290", "serialNumber": "dead", "answering": false,
          "place": { "interface": "TCP/IP", "ip": "192.168.0.3" } }
    ]
})";

class TestCapiLifecycle : public QObject
{
    Q_OBJECT

private:
    static std::string openedSerialNumber(Handle &handle)
    {
        return handle.command("Get_Info") == 0 ? handle.getText("SA_SerialNumber") : std::string("(closed)");
    }

private Q_SLOTS:
    void init() { sondixsim::loadBench(lifecycleBench); }

    void everyBaseTypeCanBeCreated_data()
    {
        QTest::addColumn<int>("type");
        for (const int type : {1,  2,  5,  8,  9,  10, 12, 13, 15, 16, 18, 19, 20, 21, 22, 23, 24, 25, 26,
                               28, 29, 30, 31, 32, 33, 34, 35, 36, 37, 38, 39, 40, 41, 42, 43, 44, 45, 46,
                               47, 48, 49, 50, 51, 52, 53, 54, 55, 56, 57, 58, 59, 60, 61, 62, 63})
            QTest::newRow(QByteArray::number(type).constData()) << type;
    }
    void everyBaseTypeCanBeCreated()
    {
        QFETCH(int, type);
        const Handle handle(type);
        QVERIFY(handle != 0);
    }

    void unknownTypesCannotBeCreated_data()
    {
        QTest::addColumn<int>("type");
        for (const int type : {0, -1, 3, 4, 6, 7, 11, 14, 17, 27, 64, 999, 10043, 99999})
            QTest::newRow(QByteArray::number(type).constData()) << type;
    }
    void unknownTypesCannotBeCreated()
    {
        QFETCH(int, type);
        QCOMPARE(CreateSensorInstance(type), 0u);
        char text[256] = "";
        QVERIFY(GetError(0, text, sizeof text) < 0);
        QVERIFY(QByteArray(text).contains(QByteArray::number(type)));
    }

    void releasedHandleStaysUnknownWhenItsSlotIsReused()
    {
        const std::uint32_t released = CreateSensorInstance(SensorType::TX270);
        QCOMPARE(ReleaseSensorInstance(released), 0);
        const Handle next(SensorType::TX270);
        QVERIFY(next != released);
        QVERIFY(ReleaseSensorInstance(released) < 0);
        QVERIFY(SetParameterInt(released, "SP_X", 1) < 0);
        QCOMPARE(next.error(), 0);
    }

    void newInstanceHasNoStateOfTheReleasedOne()
    {
        std::uint32_t before = 0;
        {
            Handle handle(SensorType::TX270);
            before = handle;
            handle.openAt("COM1");
            handle.set("SP_Left", 1);
            handle.command("Get_Info");
        }
        Handle handle(SensorType::TX270);
        QVERIFY(handle != before);
        QCOMPARE(handle.error(), 0);
        QCOMPARE(handle.allParameters(), std::string());
        QVERIFY(SensorCommand(handle) < 0);
        QCOMPARE(handle.command("Get_OpenState"), 0);
        QCOMPARE(handle.getInt("IA_SensorOpen"), 0);
    }

    void openStateFollowsOpenAndClose()
    {
        Handle handle(SensorType::TX270);
        QCOMPARE(handle.command("Get_OpenState"), 0);
        QCOMPARE(handle.getInt("IA_SensorOpen"), 0);
        QCOMPARE(handle.openAt("COM1"), 0);
        handle.command("Get_OpenState");
        QCOMPARE(handle.getInt("IA_SensorOpen"), 1);
        QCOMPARE(CloseSensor(handle), 0);
        handle.command("Get_OpenState");
        QCOMPARE(handle.getInt("IA_SensorOpen"), 0);
        QVERIFY(CloseSensor(handle) < 0);
    }

    void openSelectsTheSensorByItsPlace()
    {
        Handle handle(SensorType::TX270);
        handle.set("IP_Baudrate", 9600);
        QCOMPARE(handle.openAt("COM2"), 0);
        QCOMPARE(openedSerialNumber(handle), std::string("second"));
    }

    void openWithoutParametersSelectsTheFirstOfTheType()
    {
        Handle handle(SensorType::TX270);
        QCOMPARE(handle.open(), 0);
        QCOMPARE(openedSerialNumber(handle), std::string("first"));
    }

    void openFailsWithoutAMatchingSensor_data()
    {
        QTest::addColumn<QByteArray>("port");
        QTest::addColumn<int>("baudrate");
        QTest::addColumn<QByteArray>("word");
        QTest::newRow("empty place") << QByteArray("COM7") << 115200 << QByteArray("TX270");
        QTest::newRow("another baud rate") << QByteArray("COM2") << 115200 << QByteArray("TX270");
        QTest::newRow("another type") << QByteArray("COM3") << 115200 << QByteArray("RG53x");
    }
    void openFailsWithoutAMatchingSensor()
    {
        QFETCH(QByteArray, port);
        QFETCH(int, baudrate);
        QFETCH(QByteArray, word);
        Handle handle(SensorType::TX270);
        handle.set("IP_Baudrate", baudrate);
        QVERIFY(handle.openAt(port.constData()) < 0);
        std::string text;
        QVERIFY(handle.error(&text) < 0);
        QVERIFY2(QByteArray(text.c_str()).contains(word), text.c_str());
        handle.command("Get_OpenState");
        QCOMPARE(handle.getInt("IA_SensorOpen"), 0);
    }

    void anyOfSeveralAddressesOpens_data()
    {
        QTest::addColumn<QByteArray>("address");
        QTest::newRow("first") << QByteArray("169.254.3.4");
        QTest::newRow("second") << QByteArray("192.168.0.20");
    }
    void anyOfSeveralAddressesOpens()
    {
        QFETCH(QByteArray, address);
        Handle handle(SensorType::HV2);
        handle.set("IP_RemoteAddr", address.constData());
        QCOMPARE(handle.open(), 0);
        QCOMPARE(openedSerialNumber(handle), std::string("colour"));
    }

    void busSensorIsOpenedByItsAddress()
    {
        Handle handle(SensorType::GenericKVBus);
        handle.set("IP_SensorAddress", 1);
        QCOMPARE(handle.openAt("COM8"), 0);
        QCOMPARE(openedSerialNumber(handle), std::string("bus 1"));
    }

    void sensorThatDoesNotAnswerCannotBeOpened()
    {
        Handle handle(SensorType::TX290);
        QVERIFY(handle.open() < 0);
        sondixsim::plug("dead");
        QCOMPARE(handle.open(), 0);
    }

    void openSensorIsInUse()
    {
        Handle first(SensorType::TX270);
        QCOMPARE(first.openAt("COM1"), 0);
        Handle second(SensorType::TX270);
        QVERIFY(second.openAt("COM1") < 0);
        QCOMPARE(first.openAt("COM1"), 0); // the owner may open it again
        CloseSensor(first);
        QCOMPARE(second.openAt("COM1"), 0);
    }

    void releaseClosesTheSensor()
    {
        {
            Handle handle(SensorType::TX270);
            QCOMPARE(handle.openAt("COM1"), 0);
        }
        Handle handle(SensorType::TX270);
        QCOMPARE(handle.openAt("COM1"), 0);
    }

    void closedHandleAnswersCommandsWithoutConnection_data()
    {
        QTest::addColumn<QByteArray>("command");
        QTest::addColumn<bool>("succeeds");
        for (const char *name :
             {"Get_OpenState", "Start_FindSensor", "Abort_FindSensor", "Get_SensorErrorValueText"})
            QTest::newRow(name) << QByteArray(name) << true;
        for (const char *name : {"Get_Info", "Get_TransmittedDataInfo", "Get_Samplerate", "Clear_Buffers", ""})
            QTest::newRow(name) << QByteArray(name) << false;
    }
    void closedHandleAnswersCommandsWithoutConnection()
    {
        QFETCH(QByteArray, command);
        QFETCH(bool, succeeds);
        Handle handle(SensorType::TX270);
        QCOMPARE(handle.command(command.constData()) == 0, succeeds);
    }

    void closedSensorGivesNoData()
    {
        Handle handle(SensorType::TX270);
        std::int32_t count = 0;
        double value = 0.0;
        double timestamp = 0.0;
        QVERIFY(DataAvail(handle, &count) < 0);
        QVERIFY(TransferData(handle, nullptr, &value, 1, &count) < 0);
        QVERIFY(TransferDataTS(handle, nullptr, &value, 1, &count, &timestamp) < 0);
    }

    void openReturnsTheSensorInformation()
    {
        Handle handle(SensorType::TX270);
        handle.openAt("COM1");
        const std::string information = handle.getText("SA_SensorInformation");
        QVERIFY(information.find("SA_SerialNumber=\"first\"") != std::string::npos);
        QVERIFY(information.find("simulator") != std::string::npos);
        QVERIFY(information.find("\r\nS_Command=\"Set_Samplerate\" SP_Measrate=2.0") != std::string::npos);
    }

    void multiSensorReturnsTheInformationOfEachMember()
    {
        Handle handle(SensorType::MultiSensor);
        handle.set("IP_SensorCount", 2);
        QCOMPARE(handle.open(), 0);
        QVERIFY(handle.getText("SA_SensorInformation#S1").find("\"bus 1\"") != std::string::npos);
        QVERIFY(handle.getText("SA_SensorInformation#S2").find("\"bus 2\"") != std::string::npos);
        QCOMPARE(handle.getText("SA_SensorInformation#S3"), std::string("(missing)"));
        QCOMPARE(handle.command("Get_DrvSetting"), 0);
        QCOMPARE(handle.getInt("IA_SensorCount"), 2);
        QCOMPARE(handle.getInt("IA_SensorType#1"), int(SensorType::GenericKVBus));
        QCOMPARE(handle.getInt("IA_SensorType#2"), int(SensorType::CP740));
    }

    void membersAreInUseWithTheirMultiSensor()
    {
        Handle multi(SensorType::MultiSensor);
        QCOMPARE(multi.open(), 0);
        Handle member(SensorType::CP740);
        QVERIFY(member.open() < 0);
        CloseSensor(multi);
        QCOMPARE(member.open(), 0);
        QVERIFY(multi.open() < 0);
        Handle other(SensorType::GenericKVBus); // the rejected open has released this member again
        QCOMPARE(other.open(), 0);
    }

    void sensorsInUseCannotBeOpened_data()
    {
        QTest::addColumn<QByteArray>("place");
        QTest::newRow("serial line") << QByteArray(R"("RS232", "port": "COM1")");
        QTest::newRow("network") << QByteArray(R"("TCP/IP", "ip": "10.0.0.1")");
        QTest::newRow("USB") << QByteArray(R"("WinUSB")");
    }
    void sensorsInUseCannotBeOpened()
    {
        QFETCH(QByteArray, place);
        sondixsim::loadBench(
            R"({ "sensors": [ { "model": "TX270", "serialNumber": "1", "place": { "interface": )" +
            place.toStdString() + R"(, "inUse": true } } ] })");
        Handle handle(SensorType::TX270);
        constexpr std::int32_t inUse = -11;
        QCOMPARE(handle.open(), inUse);
        std::string text;
        QCOMPARE(handle.error(&text), inUse);
        QVERIFY2(text.find("is in use") != std::string::npos, text.c_str());
        QCOMPARE(handle.command("Get_OpenState"), 0);
        QCOMPARE(handle.getInt("IA_SensorOpen"), 0);
    }

    void multiSensorCannotBeOpenedWhileAMemberIsInUse()
    {
        sondixsim::loadBench(R"({ "sensors": [
            { "model": "CP740", "serialNumber": "1", "place": { "interface": "RS232", "port": "COM1" } },
            { "model": "EC830", "serialNumber": "2",
              "place": { "interface": "RS232", "port": "COM1", "busAddress": 2, "inUse": true } },
            { "model": "MultiSensor", "serialNumber": "3", "place": { "interface": "WinUSB" },
              "members": [ "1", "2" ] } ] })");
        Handle multi(SensorType::MultiSensor);
        QVERIFY(multi.open() < 0);
        QCOMPARE(Handle(SensorType::CP740).open(), 0); // the other member was released again
    }

    void loadingABenchClosesSensorsAndKeepsHandles()
    {
        Handle handle(SensorType::TX270);
        handle.openAt("COM1");
        sondixsim::loadBench(lifecycleBench);
        QCOMPARE(handle.command("Get_OpenState"), 0);
        QCOMPARE(handle.getInt("IA_SensorOpen"), 0);
        QCOMPARE(handle.openAt("COM1"), 0);
    }

    void numberOfHandlesIsLimited()
    {
        std::vector<std::uint32_t> handles;
        while (handles.size() < 10000) {
            const std::uint32_t handle = CreateSensorInstance(SensorType::TX270);
            if (handle == 0)
                break;
            handles.push_back(handle);
        }
        QVERIFY(handles.size() >= 1000 && handles.size() < 10000);
        char text[256] = "";
        QVERIFY(GetError(0, text, sizeof text) < 0);
        for (const std::uint32_t handle : handles)
            QCOMPARE(ReleaseSensorInstance(handle), 0);
        const Handle again(SensorType::TX270);
        QVERIFY(again != 0);
    }
};

QTEST_GUILESS_MAIN(TestCapiLifecycle)
#include "tst_capilifecycle.moc"
