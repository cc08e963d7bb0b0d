// SPDX-License-Identifier: MIT
#include "handle.h"
#include "SondixSimulator/control.h"

#include <algorithm>
#include <cmath>
#include <QTest>

/// Loads a bench with one sensor and a virtual clock; \a more are further keys of the sensor.
static void loadOne(const std::string &model, const std::string &more = "")
{
    sondixsim::loadBench(R"({ "clock": { "virtual": true }, "sensors": [ { "model": ")" + model +
                         R"(", "serialNumber": "1", "place": )" + placeOf(model) + more + " } ] }");
}

class TestSimSettings : public QObject
{
    Q_OBJECT

private:
    /// The number of frames that are measured in so many seconds.
    static int framesIn(Handle &handle, double seconds)
    {
        handle.command("Clear_Buffers");
        sondixsim::advance(seconds);
        handle.command("Get_TransmittedDataInfo");
        const int perFrame = handle.getInt("IA_ValuesPerFrame");
        return handle.available() / perFrame;
    }

private Q_SLOTS:
    void setWritesWhatGetReads_data()
    {
        QTest::addColumn<QByteArray>("command");
        QTest::newRow("set") << QByteArray("Set_Averaging");
        QTest::newRow("update") << QByteArray("Update_Averaging");
    }
    void setWritesWhatGetReads()
    {
        QFETCH(QByteArray, command);
        loadOne("TX270");
        Handle handle(SensorType::TX270);
        handle.open();
        handle.set("SP_AveragingNumber", 16);
        QCOMPARE(handle.command(command.constData()), 0);
        QCOMPARE(handle.command("Get_Averaging"), 0);
        QCOMPARE(handle.getInt("SA_AveragingNumber"), 16);
        QCOMPARE(handle.getInt("SA_AveragingType"), 0);
    }

    void settingCanBeChangedOnItsOwn()
    {
        loadOne("TX240");
        Handle handle(SensorType::TX240);
        handle.open();
        handle.set("SP_OutputMode", 2);
        QCOMPARE(handle.command("Set_OutputMode"), 0);
        handle.command("Get_Settings");
        QCOMPARE(handle.getInt("SA_OutputMode"), 2);
    }

    void settingsKeepTheirType()
    {
        loadOne("TX270", R"(, "settings": { "Names": { "SA_Label": "none" } })");
        Handle handle(SensorType::TX270);
        handle.open();
        handle.set("SP_Measrate", 4); // an integer for a rate in kHz
        QCOMPARE(handle.command("Set_Samplerate"), 0);
        handle.command("Get_Samplerate");
        QCOMPARE(handle.allParameters(), std::string("SA_Measrate=4.0"));
        handle.set("SP_Measrate", "fast");
        QVERIFY(handle.command("Set_Samplerate") < 0);
        handle.set("SP_Label", "left");
        QCOMPARE(handle.command("Set_Names"), 0);
        handle.command("Get_Names");
        QCOMPARE(handle.getText("SA_Label"), std::string("left"));
    }

    void invalidSettingsAreRejectedAndChangeNothing()
    {
        loadOne("TX270");
        Handle handle(SensorType::TX270);
        handle.open();
        handle.set("SP_Measrate", 1000.0);
        QVERIFY(handle.command("Set_Samplerate") < 0);
        handle.set("SP_Unknown", 1);
        QVERIFY(handle.command("Set_Samplerate") < 0);
        handle.set("SP_AveragingNumber", 1); // of another group
        QVERIFY(handle.command("Set_Samplerate") < 0);
        QVERIFY(handle.command("Set_Samplerate") < 0); // no parameter
        QVERIFY(handle.command("Set_Nonsense") < 0);
        handle.command("Get_Samplerate");
        QCOMPARE(handle.getDouble("SA_Measrate"), 2.0);
    }

    void settingsSurviveClosing()
    {
        loadOne("TX270");
        Handle handle(SensorType::TX270);
        handle.open();
        handle.set("SP_Measrate", 4.0);
        handle.command("Set_Samplerate");
        CloseSensor(handle);
        handle.open();
        handle.command("Get_Samplerate");
        QCOMPARE(handle.getDouble("SA_Measrate"), 4.0);
    }

    void getAllParametersReturnsEverySetting()
    {
        loadOne("TX270");
        Handle handle(SensorType::TX270);
        handle.open();
        QCOMPARE(handle.command("Get_AllParameters"), 0);
        QCOMPARE(handle.getDouble("SA_Measrate"), 2.0);
        QCOMPARE(handle.getInt("SA_TriggerMode"), 0);
    }

    void infoIdentifiesTheSensorAndTheSimulator()
    {
        loadOne("TX270", R"(, "articleNumber": "77", "firmware": "1.5", "info": { "SA_Range": 50.0 })");
        Handle handle(SensorType::TX270);
        handle.open();
        QCOMPARE(handle.command("Get_Info"), 0);
        QCOMPARE(handle.getText("SA_SerialNumber"), std::string("1"));
        QCOMPARE(handle.getText("SA_ArticleNumber"), std::string("77"));
        QCOMPARE(handle.getText("SA_Softwareversion"), std::string("1.5 (simulator)"));
        QCOMPARE(handle.getDouble("SA_Range"), 50.0);
    }

    // The setting that decides the rate of each model, and the rate that follows.
    void probesMeasureDisplacements_data()
    {
        QTest::addColumn<QByteArray>("model");
        QTest::addColumn<int>("type");
        for (const char *const model : {"MV4xx", "MV410", "MV420", "MV430", "DVxxx"}) {
            QTest::newRow(model) << QByteArray(model) << int(SensorType::GenericKVBus);
            QTest::addRow("%s behind the converter", model)
                << model + QByteArray("_XA300ETH") << int(SensorType::XA300);
        }
    }
    void probesMeasureDisplacements()
    {
        QFETCH(QByteArray, model);
        QFETCH(int, type);
        loadOne(model.toStdString());
        Handle handle(type);
        QCOMPARE(handle.open(), 0);
        QCOMPARE(handle.command("Get_TransmittedDataInfo"), 0);
        QCOMPARE(handle.getInt("IA_ValuesPerFrame"), 1);
        QCOMPARE(handle.getText("IA_Scaled_Name1"), std::string("Displacement"));
        QCOMPARE(handle.getText("IA_Scaled_Unit1"), std::string("mm"));
        sondixsim::advance(60.0);
        handle.command("Get_Measure");
        const Block block = takeBlock(handle, 100000);
        const auto [minimum, maximum] = std::minmax_element(block.scaled.begin(), block.scaled.end());
        QVERIFY(block.scaled.size() > 1000);
        QVERIFY(*minimum > 0.0 && *maximum - *minimum > 1.0); // it moves
    }

    void rateFollowsFromTheModelsSetting_data()
    {
        QTest::addColumn<QByteArray>("model");
        QTest::addColumn<int>("type");
        QTest::addColumn<QByteArray>("get");
        QTest::addColumn<QByteArray>("answer");
        QTest::addColumn<double>("value");
        QTest::addColumn<double>("hertz");
        const auto row = [](const char *model, int type, const char *get, const char *answer, double value,
                            double hertz) {
            QTest::newRow(model) << QByteArray(model) << type << QByteArray(get) << QByteArray(answer) << value
                                 << hertz;
        };
        row("TX220", SensorType::TX220, "Get_Settings", "SA_Speed", 0, 2500.0);
        row("TX230", SensorType::TX230, "Get_Settings", "SA_Speed", 3, 20000.0);
        row("TX240", SensorType::TX240, "Get_Settings", "SA_Speed", 2, 750.0);
        row("TX250", SensorType::TX250, "Get_Settings", "SA_Speed", 4, 50.0);
        row("CC410", SensorType::CC410, "Get_Status", "SA_SRIndex", 5, 2000.0);
        row("CC420", SensorType::CC420, "Get_Status", "SA_SRIndex", 6, 15625.0);
        row("CP710", SensorType::CP710, "Get_SRIndex", "SA_SRIndex", 13, 7812.5);
        row("CP720", SensorType::CP720, "Get_SRIndex", "SA_SRIndex", 11, 2083.33);
        row("CB910", SensorType::CB910, "Get_SRIndex", "SA_SRIndex", 3, 1040.0);
        row("EC810", SensorType::EC810, "Get_Settings", "SA_SRIndex", 1, 7200.0 / 7.0);
        for (const auto &[model, type] :
             {std::pair("CC430", SensorType::CC430), std::pair("TX260", SensorType::TX260),
              std::pair("CC440", SensorType::CC440), std::pair("QUnit", SensorType::QUnit),
              std::pair("CC450", SensorType::CC450), std::pair("TX270", SensorType::TX270),
              std::pair("TX280", SensorType::TX280), std::pair("CC460", SensorType::CC460),
              std::pair("CC470", SensorType::CC470), std::pair("CC480", SensorType::CC480),
              std::pair("TX290", SensorType::TX290), std::pair("WI610", SensorType::WI610),
              std::pair("TX300", SensorType::TX300), std::pair("TX310", SensorType::TX310),
              std::pair("WI620", SensorType::WI620), std::pair("CC490", SensorType::CC490),
              std::pair("CC495", SensorType::CC495)})
            row(model, type, "Get_Samplerate", "SA_Measrate", 1.25, 1250.0);
        for (const auto &[model, type] :
             {std::pair("PG110", SensorType::PG110), std::pair("PG120", SensorType::PG120),
              std::pair("CP740", SensorType::CP740), std::pair("GenericKVBus", SensorType::GenericKVBus),
              std::pair("EC830", SensorType::GenericKVBus), std::pair("GY330", SensorType::GenericKVBus)})
            row(model, type, "Get_Samplerate", "SA_Measrate", 250.0, 250.0);
        for (const auto &[model, type] :
             {std::pair("CP730", SensorType::CP730), std::pair("CB92xx", SensorType::CB92xx),
              std::pair("EC82x_ETH", SensorType::EC82x_ETH), std::pair("CP750", SensorType::CP750),
              std::pair("MV410_XA300ETH", SensorType::XA300), std::pair("CP740_XA300ETH", SensorType::XA300)})
            row(model, type, "Get_SampleTime", "SA_SampleTime", 500.0, 2000.0);
    }
    void rateFollowsFromTheModelsSetting()
    {
        QFETCH(QByteArray, model);
        QFETCH(int, type);
        QFETCH(QByteArray, get);
        QFETCH(QByteArray, answer);
        QFETCH(double, value);
        QFETCH(double, hertz);
        loadOne(model.toStdString());
        Handle handle(type);
        QCOMPARE(handle.open(), 0);
        handle.set(("SP_" + answer.mid(3)).constData(), value);
        QCOMPARE(handle.command(("Set_" + get.mid(4)).constData()), 0);
        QCOMPARE(handle.command(get.constData()), 0);
        QCOMPARE(handle.getDouble(answer.constData()), value);
        QCOMPARE(handle.command("Get_TransmittedDataInfo"), 0);
        QVERIFY(std::fabs(handle.getDouble("IA_Datarate") - hertz) < 0.01);
        handle.command("Get_Measure");
        handle.command("Clear_Buffers");
        sondixsim::advance(1.0);
        handle.command("Get_Measure"); // fails except for polled sensors
        handle.command("Get_TransmittedDataInfo");
        const int frames = handle.available() / handle.getInt("IA_ValuesPerFrame");
        QVERIFY2(std::abs(frames - hertz) <= 1.0, QByteArray::number(frames).constData());
    }

    void averagingOfOtherKindsDoesNotSlowDown()
    {
        loadOne("EC810");
        Handle handle(SensorType::EC810);
        handle.open();
        handle.set("SP_AvrType", 1);
        handle.set("SP_SRIndex", 2);
        QCOMPARE(handle.command("Set_Settings"), 0);
        handle.command("Get_TransmittedDataInfo");
        QCOMPARE(handle.getDouble("IA_Datarate"), 14400.0);
    }

    void trackingCommandDecidesTheRate_data()
    {
        QTest::addColumn<QByteArray>("model");
        QTest::addColumn<int>("type");
        QTest::addColumn<QByteArray>("command");
        QTest::addColumn<int>("frames");
        QTest::newRow("RG52x") << QByteArray("RG52x") << int(SensorType::RG52x) << QByteArray("DistanceTracking")
                               << 41;
        QTest::newRow("7 m") << QByteArray("RG52x") << int(SensorType::RG52x) << QByteArray("DistanceTracking7m")
                             << 66;
        QTest::newRow("10 Hz") << QByteArray("RG52x") << int(SensorType::RG52x)
                               << QByteArray("DistanceTracking10Hz") << 100;
        QTest::newRow("50 Hz") << QByteArray("RG52x") << int(SensorType::RG52x)
                               << QByteArray("DistanceTracking50Hz") << 500;
        QTest::newRow("triggered") << QByteArray("RG52x") << int(SensorType::RG52x)
                                   << QByteArray("DistanceTriggered") << 0;
        QTest::newRow("RG53x") << QByteArray("RG53x") << int(SensorType::RG53x) << QByteArray("DistanceTracking")
                               << 1000;
        QTest::newRow("speed") << QByteArray("RG53x") << int(SensorType::RG53x) << QByteArray("SpeedTracking")
                               << 40;
        QTest::newRow("stopped") << QByteArray("RG53x") << int(SensorType::RG53x) << QByteArray("StopTracking")
                                 << 0;
    }
    void trackingCommandDecidesTheRate()
    {
        QFETCH(QByteArray, model);
        QFETCH(int, type);
        QFETCH(QByteArray, command);
        QFETCH(int, frames);
        loadOne(model.toStdString());
        Handle handle(type);
        handle.open();
        QCOMPARE(handle.command(command.constData()), 0);
        QCOMPARE(framesIn(handle, 10.0), frames);
    }

    void trackingStartsByItselfAndStopsForACommand()
    {
        loadOne("RG52x");
        Handle handle(SensorType::RG52x);
        handle.open();
        QCOMPARE(framesIn(handle, 1.0), 10);
        QCOMPARE(handle.command("Get_Autostart"), 0);
        QCOMPARE(handle.getInt("SA_AutostartCommand"), 2);
        QCOMPARE(framesIn(handle, 1.0), 0);
        QCOMPARE(handle.command("DistanceTracking50Hz"), 0);
        QCOMPARE(framesIn(handle, 1.0), 50);
        handle.command("Get_OpenState");
        QCOMPARE(framesIn(handle, 1.0), 50);
    }

    void autostartDecidesHowItTracksAfterOpening()
    {
        loadOne("RG53x");
        Handle handle(SensorType::RG53x);
        handle.open();
        handle.set("SP_AutostartCommand", 5);
        QCOMPARE(handle.command("Set_Autostart"), 0);
        CloseSensor(handle);
        handle.open();
        QCOMPARE(framesIn(handle, 10.0), 40);
        QVERIFY(handle.getText("SA_SensorInformation") ==
                "(missing)"); // an answer of the open, not of later commands
    }

    void frameIsDescribedSignalBySignal()
    {
        loadOne("CC430", R"(, "rate": 500, "signals": [
            { "name": "Path", "rawName": "Raw path", "unit": "µm", "rawUnit": "Inc", "range": [-1.0, 3.0],
              "rawRange": [10, 4000], "viewRange": 2.0, "major": false, "info": "behind glass" },
            { "name": "Light" } ])");
        Handle handle(SensorType::CC430);
        handle.open();
        QCOMPARE(handle.command("Get_TransmittedDataInfo"), 0);
        QCOMPARE(handle.getDouble("IA_Datarate"), 500.0);
        QCOMPARE(handle.getInt("IA_ValuesPerFrame"), 2);
        QCOMPARE(handle.getInt("IA_MaxValuesPerFrame"), 2);
        QCOMPARE(handle.getInt("IA_VideoSignalsPerFrame"), 0);
        QCOMPARE(handle.getInt("IA_Index1"), 1);
        QCOMPARE(handle.getText("IA_Raw_Name1"), std::string("Raw path"));
        QCOMPARE(handle.getText("IA_Scaled_Name1"), std::string("Path"));
        QCOMPARE(handle.getDouble("IA_Raw_RangeMin1"), 10.0);
        QCOMPARE(handle.getDouble("IA_Raw_RangeMax1"), 4000.0);
        QCOMPARE(handle.getDouble("IA_Scaled_RangeMin1"), -1.0);
        QCOMPARE(handle.getDouble("IA_Scaled_RangeMax1"), 3.0);
        QCOMPARE(handle.getDouble("IA_ViewRange1"), 2.0);
        QCOMPARE(handle.getText("IA_Raw_Unit1"), std::string("Inc"));
        QCOMPARE(handle.getText("IA_Scaled_Unit1"), std::string("\xB5m"));
        QCOMPARE(handle.getDouble("IA_Raw_Datarate1"), 500.0);
        QCOMPARE(handle.getDouble("IA_Scaled_Datarate1"), 500.0);
        QCOMPARE(handle.getInt("IA_MajorSignal1"), 0);
        QCOMPARE(handle.getText("IA_AdditionalInfo1"), std::string("behind glass"));
        QCOMPARE(handle.getInt("IA_Index2"), 2);
        QCOMPARE(handle.getText("IA_Raw_Name2"), std::string("Light"));
        QCOMPARE(handle.getInt("IA_MajorSignal2"), 1);
        QCOMPARE(handle.getInt("IA_Index3"), -4711);
    }

    void errorTextsNeedNoConnection()
    {
        loadOne("TX270", R"(, "errorTexts": { "-1": "Nothing there", "-77": "Lens dirty" })");
        Handle handle(SensorType::TX270);
        QCOMPARE(handle.command("Get_SensorErrorValueText"), 0); // of the model
        QVERIFY(handle.getText("SA_SensorErrorValueText").find("-1: No peak found") != std::string::npos);
        handle.open();
        QCOMPARE(handle.command("Get_SensorErrorValueText"), 0); // of the sensor
        const std::string text = handle.getText("SA_SensorErrorValueText");
        QVERIFY(text.find("-77: Lens dirty\r\n") != std::string::npos);
        QVERIFY(text.find("-1: Nothing there") != std::string::npos);
    }

    void multiSensorHasItsMembersFrame()
    {
        sondixsim::loadBench(R"({ "clock": { "virtual": true }, "sensors": [
            { "model": "MultiSensor", "serialNumber": "m", "place": { "interface": "WinUSB", "device": 9 },
              "members": [ "a", "b" ], "rate": 20 },
            { "model": "GY320", "serialNumber": "a", "place": { "interface": "RS232", "port": "COM1" } },
            { "model": "TX270", "serialNumber": "b", "place": { "interface": "WinUSB", "device": 2 } } ] })");
        Handle handle(SensorType::MultiSensor);
        QCOMPARE(handle.open(), 0);
        handle.command("Get_TransmittedDataInfo");
        QCOMPARE(handle.getInt("IA_ValuesPerFrame"), 3);
        QCOMPARE(handle.getText("IA_Scaled_Name1"), std::string("Angle X"));
        QCOMPARE(handle.getText("IA_Scaled_Name3"), std::string("Distance 1"));
        sondixsim::advance(1.0);
        QCOMPARE(handle.available(), 0);
        QVERIFY(handle.command("Get_Measure") < 0); // IP_SensorIndex is missing
        handle.set("IP_SensorIndex", 3);
        QVERIFY(handle.command("Get_Measure") < 0);
        handle.set("IP_SensorIndex", 1);
        QCOMPARE(handle.command("Get_Measure"), 0);
        QCOMPARE(handle.available(), 60);
    }

    void multiSensorPassesSettingsToItsMembers()
    {
        sondixsim::loadBench(R"({ "clock": { "virtual": true }, "sensors": [
            { "model": "MultiSensor", "serialNumber": "m", "place": { "interface": "WinUSB", "device": 9 },
              "members": [ "a", "b" ] },
            { "model": "TX270", "serialNumber": "a", "place": { "interface": "WinUSB", "device": 1 } },
            { "model": "TX270", "serialNumber": "b", "place": { "interface": "WinUSB", "device": 2 } } ] })");
        Handle handle(SensorType::MultiSensor);
        QCOMPARE(handle.open(), 0);
        const auto rateOf = [&handle](int number) {
            handle.set("IP_SensorIndex", number);
            return handle.command("Get_Samplerate") == 0 ? handle.getDouble("SA_Measrate") : -1.0;
        };
        const double before = rateOf(1);
        QVERIFY(before > 0.0);
        handle.set("IP_SensorIndex", 2);
        handle.set("SP_Measrate", 0.5);
        QCOMPARE(handle.command("Set_Samplerate"), 0);
        QCOMPARE(rateOf(2), 0.5);
        QCOMPARE(rateOf(1), before);
        QVERIFY(rateOf(0) < 0.0);
        QVERIFY(rateOf(3) < 0.0);
    }
};

QTEST_GUILESS_MAIN(TestSimSettings)
#include "tst_simsettings.moc"
