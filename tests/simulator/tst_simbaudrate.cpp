// SPDX-License-Identifier: MIT
#include "web.h"

#include <QTest>
#include <set>

static constexpr int timedOut = -22;

class TestSimBaudrate : public QObject
{
    Q_OBJECT

private:
    static int openAtRate(Handle &handle, int rate)
    {
        handle.set("IP_Baudrate", rate);
        return handle.openAt("COM1");
    }
    /// Serial numbers and baud rates that a search reports.
    static std::set<std::pair<std::string, int>> found(const char *baudrates)
    {
        Handle handle(SensorType::TX270);
        handle.set("IP_ScanHWRS232", 1);
        if (*baudrates != '\0')
            handle.set("IP_Baudrates", baudrates);
        handle.command("Start_FindSensor");
        sondixsim::advance(100.0);
        handle.command("Get_FindSensorProgress");
        const int count = handle.getInt("IA_Found");
        std::set<std::pair<std::string, int>> all;
        for (int i = 0; i < count; ++i) {
            handle.set("IP_Index", i);
            handle.command("Get_FoundSensor");
            all.emplace(handle.getText("SA_SerialNumber"), handle.getInt("IP_Baudrate"));
        }
        return all;
    }

private Q_SLOTS:
    void init() { loadWebSensor(R"(, "rate": 1000)"); }

    void changeIsAnsweredAtTheOldRate()
    {
        Handle handle(SensorType::TX270);
        QCOMPARE(handle.open(), 0);
        QCOMPARE(askGeneric(handle, "BAUDRATE 921600"), std::string("BAUDRATE 921600"));
    }

    void openHandleTimesOutAfterTheChange_data()
    {
        QTest::addColumn<QByteArray>("command");
        for (const char *command :
             {"Get_HTTP", "Cmd_Generic", "Get_Info", "Get_Samplerate", "Get_DataOutInterface"})
            QTest::newRow(command) << QByteArray(command);
    }
    void openHandleTimesOutAfterTheChange()
    {
        QFETCH(QByteArray, command);
        Handle handle(SensorType::TX270);
        handle.open();
        sendGeneric(handle, "BAUDRATE 921600");
        handle.set("SP_HTTPPath", "/");
        handle.set("SP_HTTPMaxLength", defaultMaxLength);
        handle.set("SP_CmdStr", "BAUDRATE");
        QCOMPARE(handle.command(command.constData()), timedOut);
        std::string text;
        QCOMPARE(handle.error(&text), timedOut);
        QVERIFY2(text.find("COM1") != std::string::npos && text.find("115200 baud") != std::string::npos,
                 text.c_str());
    }

    void valuesStopUntilTheNewRateIsUsed()
    {
        Handle handle(SensorType::TX270);
        handle.open();
        sondixsim::advance(1.0);
        sendGeneric(handle, "BAUDRATE 460800");
        sondixsim::advance(1.0);
        QCOMPARE(handle.available(), 1000);
        CloseSensor(handle);
        QCOMPARE(openAtRate(handle, 460800), 0);
        sondixsim::advance(1.0);
        QCOMPARE(handle.available(), 1000);
    }

    void sensorIsOpenedAtItsPresentRateOnly()
    {
        Handle handle(SensorType::TX270);
        handle.open();
        sendGeneric(handle, "BAUDRATE 230400");
        CloseSensor(handle);
        QCOMPARE(openAtRate(handle, 115200), timedOut);
        std::string text;
        handle.error(&text);
        QVERIFY2(text.find("115200 baud") != std::string::npos, text.c_str());
        QCOMPARE(openAtRate(handle, 9600), timedOut);
        QCOMPARE(handle.openAt("COM1"), timedOut); // the default is the rate of its place
        QCOMPARE(openAtRate(handle, 230400), 0);
        QCOMPARE(askGeneric(handle, "BAUDRATE"), std::string("BAUDRATE 230400"));
        QCOMPARE(fetch(handle, "/values.json").json()[QStringLiteral("baudrate")].toInt(), 230400);
        QCOMPARE(askGeneric(handle, "BAUDRATE 115200"), std::string("BAUDRATE 115200"));
        CloseSensor(handle);
        QCOMPARE(handle.openAt("COM1"), 0);
    }

    void openHandleCanBeOpenedAgainAtTheNewRate()
    {
        Handle handle(SensorType::TX270);
        handle.open();
        sendGeneric(handle, "BAUDRATE 230400");
        QCOMPARE(openAtRate(handle, 230400), 0);
        QCOMPARE(askGeneric(handle, "BAUDRATE"), std::string("BAUDRATE 230400"));
    }

    void everyListedRateIsAccepted()
    {
        Handle handle(SensorType::TX270);
        handle.open();
        int rate = 115200;
        for (const int next : {9600, 19200, 38400, 57600, 115200, 230400, 460800, 691200, 921600, 1000000, 2000000,
                               3000000, 4000000}) {
            QCOMPARE(sendGeneric(handle, "BAUDRATE " + std::to_string(next)), 0);
            if (next != rate)
                QCOMPARE(sendGeneric(handle, "BAUDRATE"), timedOut);
            QCOMPARE(openAtRate(handle, next), 0);
            rate = next;
        }
    }

    void sameRateChangesNothing()
    {
        Handle handle(SensorType::TX270);
        handle.open();
        QCOMPARE(sendGeneric(handle, "BAUDRATE 115200"), 0);
        QCOMPARE(sendGeneric(handle, "BAUDRATE"), 0);
    }

    void sensorIsFoundAtItsPresentRate()
    {
        using Results = std::set<std::pair<std::string, int>>;
        QCOMPARE(found("115200"), (Results{{"1", 115200}}));
        {
            Handle handle(SensorType::TX270);
            handle.open();
            sendGeneric(handle, "BAUDRATE 921600");
        }
        QCOMPARE(found("115200"), Results());
        QCOMPARE(found("115200 921600"), (Results{{"1", 921600}}));
        QCOMPARE(found(""), (Results{{"1", 921600}}));
    }

    void rateSurvivesUnplugging()
    {
        Handle handle(SensorType::TX270);
        handle.open();
        sendGeneric(handle, "BAUDRATE 921600");
        sondixsim::unplug("1");
        CloseSensor(handle);
        QVERIFY(openAtRate(handle, 921600) < 0);
        sondixsim::plug("1");
        QCOMPARE(openAtRate(handle, 115200), timedOut);
        QCOMPARE(openAtRate(handle, 921600), 0);
    }

    void defaultsKeepTheRate()
    {
        Handle handle(SensorType::TX270);
        handle.open();
        sendGeneric(handle, "BAUDRATE 921600");
        openAtRate(handle, 921600);
        QCOMPARE(sendGeneric(handle, "SETDEFAULT"), 0);
        QCOMPARE(askGeneric(handle, "BAUDRATE"), std::string("BAUDRATE 921600"));
    }

    void sensorThatIsUnpluggedAndPluggedAnswersOnTheSameHandle()
    {
        Handle handle(SensorType::TX270);
        handle.open();
        sondixsim::unplug("1");
        QVERIFY(fetch(handle, "/").result < 0);
        std::string text;
        handle.error(&text);
        QVERIFY(!text.empty());
        QVERIFY(sendGeneric(handle, "MEASRATE") < 0);
        sondixsim::plug("1");
        QCOMPARE(fetch(handle, "/").result, 0);
    }

    void wrongBaudRateFailsAfterTheTimeout()
    {
        loadWebSensor("", R"("clock": { "speed": 20.0 },)");
        Handle handle(SensorType::TX270);
        handle.open();
        sendGeneric(handle, "BAUDRATE 921600");
        double start = sondixsim::now();
        QCOMPARE(sendGeneric(handle, "BAUDRATE"), timedOut);
        QVERIFY(sondixsim::now() - start >= 0.5);
        CloseSensor(handle);
        start = sondixsim::now();
        QCOMPARE(handle.openAt("COM1"), timedOut);
        QVERIFY(sondixsim::now() - start >= 0.5);
    }
};

QTEST_GUILESS_MAIN(TestSimBaudrate)
#include "tst_simbaudrate.moc"
