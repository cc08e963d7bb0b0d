// SPDX-License-Identifier: MIT
#include "handle.h"
#include "SondixSimulator/control.h"

#include <QTest>

/// Loads a bench with one sensor and a virtual clock; \a more are further keys of the sensor.
static void loadModel(const QByteArray &model, const std::string &more = "")
{
    sondixsim::loadBench(R"({ "clock": { "virtual": true }, "sensors": [ { "model": ")" + model.toStdString() +
                         R"(", "serialNumber": "1", "place": )" + placeOf(model.toStdString()) + more + " } ] }");
}

namespace {

struct Setting
{
    const char *model;
    int type;
    const char *get;
    const char *answer;
    const char *set;
    const char *parameter;
    int off;
    int on;
};

constexpr Setting triggers[] = {
    {"CP710", SensorType::CP710, "Get_Trigger", "SA_TrgMode", "Update_Trigger", "SP_TrgMode", 0, 1},
    {"CB910", SensorType::CB910, "Get_Trigger", "SA_TrgMode", "Update_Trigger", "SP_TrgMode", 0, 1},
    {"CP730", SensorType::CP730, "Get_Trigger", "SA_TrgMode", "Update_Trigger", "SP_TrgMode", 0, 1},
    {"XA300", SensorType::XA300, "Get_Trigger", "SA_TrgMode", "Update_Trigger", "SP_TrgMode", 0, 1},
    {"MV410_XA300ETH", SensorType::XA300, "Get_Trigger", "SA_TrgMode", "Update_Trigger", "SP_TrgMode", 0, 1},
    {"GenericKVBus", SensorType::GenericKVBus, "Get_Trigger", "SA_TrgMode", "Update_Trigger", "SP_TrgMode", 0, 1},
    {"EC830", SensorType::GenericKVBus, "Get_Trigger", "SA_TrgMode", "Update_Trigger", "SP_TrgMode", 0, 1},
    {"CB92xx", SensorType::CB92xx, "Get_Trigger", "SA_TrgMode", "Update_Trigger", "SP_TrgMode", 0, 2},
    {"CP750", SensorType::CP750, "Get_Trigger", "SA_TrgMode", "Update_Trigger", "SP_TrgMode", 0, 1},
    {"TX240", SensorType::TX240, "Get_Settings", "SA_OutputMode", "Set_OutputMode", "SP_OutputMode", 0, 1},
    {"TX250", SensorType::TX250, "Get_Settings", "SA_OutputMode", "Set_OutputMode", "SP_OutputMode", 0, 1},
    {"CC430", SensorType::CC430, "Get_TriggerMode", "SA_TriggerMode", "Update_TriggerMode", "SP_TriggerMode", 0,
     1},
    {"TX260", SensorType::TX260, "Get_TriggerMode", "SA_TriggerMode", "Update_TriggerMode", "SP_TriggerMode", 0,
     1},
    {"CC440", SensorType::CC440, "Get_TriggerMode", "SA_TriggerMode", "Update_TriggerMode", "SP_TriggerMode", 0,
     1},
    {"PG110", SensorType::PG110, "Get_TriggerMode", "SA_TriggerMode", "Update_TriggerMode", "SP_TriggerMode", 0,
     1},
    {"MC340", SensorType::MC340, "Get_TriggerMode", "SA_TriggerMode", "Update_TriggerMode", "SP_TriggerMode", 0,
     1},
    {"QUnit", SensorType::QUnit, "Get_TriggerMode", "SA_TriggerMode", "Update_TriggerMode", "SP_TriggerMode", 0,
     1},
    {"CC450", SensorType::CC450, "Get_TriggerMode", "SA_TriggerMode", "Update_TriggerMode", "SP_TriggerMode", 0,
     1},
    {"TX270", SensorType::TX270, "Get_TriggerMode", "SA_TriggerMode", "Update_TriggerMode", "SP_TriggerMode", 0,
     3},
    {"TX280", SensorType::TX280, "Get_TriggerMode", "SA_TriggerMode", "Update_TriggerMode", "SP_TriggerMode", 0,
     1},
    {"CC460", SensorType::CC460, "Get_TriggerMode", "SA_TriggerMode", "Update_TriggerMode", "SP_TriggerMode", 0,
     1},
    {"Spessa", SensorType::Spessa, "Get_TriggerMode", "SA_TriggerMode", "Update_TriggerMode", "SP_TriggerMode", 0,
     1},
    {"TX300", SensorType::TX300, "Get_TriggerMode", "SA_TriggerMode", "Update_TriggerMode", "SP_TriggerMode", 0,
     1},
    {"RG540", SensorType::RG540, "Get_TriggerMode", "SA_TriggerMode", "Update_TriggerMode", "SP_TriggerMode", 0,
     1},
    {"EC810", SensorType::EC810, "Get_MeasureMode", "SA_MeasureMode", "Set_MeasureMode", "SP_MeasureMode", 1, 0},
    {"CC470", SensorType::CC470, "Get_TriggerSource", "SA_TriggerSource", "Update_TriggerSource",
     "SP_TriggerSource", 0, 1},
    {"CC480", SensorType::CC480, "Get_TriggerSource", "SA_TriggerSource", "Update_TriggerSource",
     "SP_TriggerSource", 0, 1},
    {"TX290", SensorType::TX290, "Get_TriggerSource", "SA_TriggerSource", "Update_TriggerSource",
     "SP_TriggerSource", 0, 1},
    {"WI610", SensorType::WI610, "Get_TriggerSource", "SA_TriggerSource", "Update_TriggerSource",
     "SP_TriggerSource", 0, 1},
    {"TX310", SensorType::TX310, "Get_TriggerSource", "SA_TriggerSource", "Update_TriggerSource",
     "SP_TriggerSource", 0, 1},
    {"WI620", SensorType::WI620, "Get_TriggerSource", "SA_TriggerSource", "Update_TriggerSource",
     "SP_TriggerSource", 0, 1},
    {"CC490", SensorType::CC490, "Get_TriggerSource", "SA_TriggerSource", "Update_TriggerSource",
     "SP_TriggerSource", 0, 1},
    {"CC495", SensorType::CC495, "Get_TriggerSource", "SA_TriggerSource", "Update_TriggerSource",
     "SP_TriggerSource", 0, 1},
};

} // namespace

class TestSimModes : public QObject
{
    Q_OBJECT

private:
    static void set(Handle &handle, const char *command, const char *parameter, int value)
    {
        handle.set(parameter, value);
        QCOMPARE(handle.command(command), 0);
    }
    static int ask(Handle &handle, const char *command, const char *answer)
    {
        return handle.command(command) == 0 ? handle.getInt(answer) : -1;
    }
    static int valuesPerFrame(Handle &handle)
    {
        return ask(handle, "Get_TransmittedDataInfo", "IA_ValuesPerFrame");
    }
    /// The number of values that are measured in so many seconds.
    static int valuesIn(Handle &handle, double seconds)
    {
        handle.command("Get_Measure"); // fails except for polled sensors
        handle.command("Clear_Buffers");
        sondixsim::advance(seconds);
        handle.command("Get_Measure");
        return handle.available();
    }

private Q_SLOTS:
    void triggeredSensorWaits_data()
    {
        QTest::addColumn<int>("index");
        int index = 0;
        for (const Setting &trigger : triggers)
            QTest::newRow(trigger.model) << index++;
    }
    void triggeredSensorWaits()
    {
        QFETCH(int, index);
        const Setting &trigger = triggers[index];
        loadModel(trigger.model);
        Handle handle(trigger.type);
        QCOMPARE(handle.open(), 0);
        QCOMPARE(ask(handle, trigger.get, trigger.answer), trigger.off);
        const int perFrame = valuesPerFrame(handle);
        const double rate = handle.getDouble("IA_Datarate");
        const bool measures = perFrame > 0; // the converter itself has no values
        QCOMPARE(valuesIn(handle, 2.0) > 0, measures);
        set(handle, trigger.set, trigger.parameter, trigger.on);
        QCOMPARE(ask(handle, trigger.get, trigger.answer), trigger.on);
        QCOMPARE(valuesIn(handle, 2.0), 0);
        sondixsim::trigger("1");
        sondixsim::trigger("1");
        QCOMPARE(handle.available(), 2 * perFrame);
        handle.command("Get_TransmittedDataInfo");
        QCOMPARE(handle.getDouble("IA_Datarate"), rate); // its own rate, not that of the triggers
        set(handle, trigger.set, trigger.parameter, trigger.off);
        QCOMPARE(ask(handle, trigger.get, trigger.answer), trigger.off);
        QCOMPARE(valuesIn(handle, 2.0) > 0, measures);
    }

    void valuesBeforeTheTriggerWasSwitchedOnStay()
    {
        loadModel("TX270");
        Handle handle(SensorType::TX270);
        handle.open();
        sondixsim::advance(0.01);
        set(handle, "Update_TriggerMode", "SP_TriggerMode", 1);
        sondixsim::advance(1.0);
        QCOMPARE(handle.available(), 20);
    }

    void triggeredFrameHasTheTimeOfItsTrigger()
    {
        loadModel("TX270", R"(, "settings": { "TriggerMode": { "SA_TriggerMode": 1 } },
            "signals": [ { "name": "d", "range": [0.0, 10.0], "rawRange": [0, 1000],
                           "generator": { "kind": "ramp", "from": 0.0, "to": 10.0, "period": 10.0 } } ])");
        Handle handle(SensorType::TX270);
        handle.open();
        sondixsim::advance(2.5);
        sondixsim::trigger("1");
        sondixsim::advance(4.0);
        sondixsim::trigger("1");
        const Block first = takeBlock(handle, 1);
        QCOMPARE(first.scaled, std::vector<double>{2.5});
        QCOMPARE(first.timestamp, 2.5);
        const Block second = takeBlock(handle, 10);
        QCOMPARE(second.scaled, std::vector<double>{6.5});
        QCOMPARE(second.timestamp, 6.5);
    }

    void triggerIsIgnoredByOtherSensors()
    {
        loadModel("TX270");
        sondixsim::trigger("1"); // it is not open
        Handle handle(SensorType::TX270);
        handle.open();
        sondixsim::trigger("1");
        QCOMPARE(handle.available(), 0);
        QVERIFY_EXCEPTION_THROWN(sondixsim::trigger("none"), std::invalid_argument);
    }

    void triggersOfTheBenchComeRegularly()
    {
        loadModel("TX270", R"(, "triggerRate": 8)");
        Handle handle(SensorType::TX270);
        handle.open();
        QCOMPARE(valuesIn(handle, 1.0), 2000);
        set(handle, "Update_TriggerMode", "SP_TriggerMode", 1);
        QCOMPARE(valuesIn(handle, 1.0), 8);
    }

    void triggersDoNotExceedTheSampleRate()
    {
        loadModel("TX270", R"(, "triggerRate": 5000)");
        Handle handle(SensorType::TX270);
        handle.open();
        set(handle, "Update_TriggerMode", "SP_TriggerMode", 1);
        QCOMPARE(valuesIn(handle, 1.0), 2000);
    }

    void synchronisedSensorGoesOnMeasuring_data()
    {
        QTest::addColumn<QByteArray>("model");
        QTest::addColumn<int>("type");
        QTest::addColumn<QByteArray>("get");
        QTest::addColumn<QByteArray>("name");
        QTest::newRow("TX220") << QByteArray("TX220") << int(SensorType::TX220) << QByteArray("Get_Settings")
                               << QByteArray("Sync_TrgMode");
        for (const auto &[model, type] :
             {std::pair("CC430", SensorType::CC430), std::pair("TX260", SensorType::TX260),
              std::pair("CC440", SensorType::CC440), std::pair("PG110", SensorType::PG110),
              std::pair("MC340", SensorType::MC340), std::pair("QUnit", SensorType::QUnit),
              std::pair("CC450", SensorType::CC450), std::pair("CC460", SensorType::CC460),
              std::pair("CC470", SensorType::CC470), std::pair("CC480", SensorType::CC480),
              std::pair("Spessa", SensorType::Spessa), std::pair("TX290", SensorType::TX290),
              std::pair("WI610", SensorType::WI610), std::pair("TX310", SensorType::TX310),
              std::pair("WI620", SensorType::WI620), std::pair("CC490", SensorType::CC490),
              std::pair("CC495", SensorType::CC495)})
            QTest::newRow(model) << QByteArray(model) << int(type) << QByteArray("Get_SyncMode")
                                 << QByteArray("SyncMode");
    }
    void synchronisedSensorGoesOnMeasuring()
    {
        QFETCH(QByteArray, model);
        QFETCH(int, type);
        QFETCH(QByteArray, get);
        QFETCH(QByteArray, name);
        loadModel(model);
        Handle handle(type);
        QCOMPARE(handle.open(), 0);
        const QByteArray answer = "SA_" + name;
        QCOMPARE(ask(handle, get.constData(), answer.constData()), 0);
        const int free = valuesIn(handle, 1.0);
        set(handle, ("Set_" + name).constData(), ("SP_" + name).constData(), 1);
        QCOMPARE(ask(handle, get.constData(), answer.constData()), 1);
        QCOMPARE(valuesIn(handle, 1.0), free);
        set(handle, ("Set_" + name).constData(), ("SP_" + name).constData(), 0);
        QCOMPARE(ask(handle, get.constData(), answer.constData()), 0);
    }

    void terminationGoesWithTheSync()
    {
        loadModel("TX260");
        Handle handle(SensorType::TX260);
        handle.open();
        handle.set("SP_SyncTermination", 1);
        set(handle, "Set_SyncMode", "SP_SyncMode", 1);
        QCOMPARE(ask(handle, "Get_SyncMode", "SA_SyncTermination"), 1);
        handle.set("SP_SyncTermination", 0);
        set(handle, "Set_SyncMode", "SP_SyncMode", 0);
        QCOMPARE(ask(handle, "Get_SyncMode", "SA_SyncTermination"), 0);
        QCOMPARE(handle.getInt("SA_SyncMode"), 0);
    }

    void modeDecidesWhatIsMeasured_data()
    {
        QTest::addColumn<QByteArray>("model");
        QTest::addColumn<int>("type");
        QTest::addColumn<int>("mode");
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<int>("perFrame");
        const auto row = [](const char *model, int type, int mode, const char *name, int perFrame) {
            QTest::newRow((QByteArray(model) + " in mode " + QByteArray::number(mode)).constData())
                << QByteArray(model) << int(type) << mode << QByteArray(name) << perFrame;
        };
        row("TX260", SensorType::TX260, 0, "Distance 1", 1);
        row("TX260", SensorType::TX260, 1, "Distance 1", 1);
        row("TX260", SensorType::TX260, 2, "Thickness 1", 1);
        row("TX260", SensorType::TX260, 3, "Distance 1", 1);
        for (const auto &[model, type] :
             {std::pair("CC430", SensorType::CC430), std::pair("CC440", SensorType::CC440),
              std::pair("CC450", SensorType::CC450), std::pair("CC460", SensorType::CC460)}) {
            row(model, type, 0, "01DIST1", 2);
            row(model, type, 1, "01THICK12", 2);
            row(model, type, 4, "01DIST1", 2);
        }
    }
    void modeDecidesWhatIsMeasured()
    {
        QFETCH(QByteArray, model);
        QFETCH(int, type);
        QFETCH(int, mode);
        QFETCH(QByteArray, name);
        QFETCH(int, perFrame);
        loadModel(model);
        Handle handle(type);
        handle.open();
        QCOMPARE(ask(handle, "Get_MeasureMode", "SA_MeasureMode"), 0);
        set(handle, "Set_MeasureMode", "SP_MeasureMode", mode);
        QCOMPARE(ask(handle, "Get_MeasureMode", "SA_MeasureMode"), mode);
        QCOMPARE(valuesPerFrame(handle), perFrame);
        QCOMPARE(handle.getText("IA_Scaled_Name1"), name.toStdString());
        const double minimum = handle.getDouble("IA_Scaled_RangeMin1");
        const double maximum = handle.getDouble("IA_Scaled_RangeMax1");
        QCOMPARE(valuesIn(handle, 1.0), 2000 * perFrame);
        const Block block = takeBlock(handle, 2000 * perFrame);
        for (std::size_t i = 0; i < block.scaled.size(); i += static_cast<std::size_t>(perFrame))
            QVERIFY(block.scaled[i] >= minimum && block.scaled[i] <= maximum);
        CloseSensor(handle);
        handle.open();
        QCOMPARE(valuesPerFrame(handle), perFrame); // closing keeps the mode
    }

    void unknownModeIsRejected_data()
    {
        QTest::addColumn<QByteArray>("model");
        QTest::addColumn<int>("type");
        QTest::addColumn<int>("mode");
        QTest::newRow("TX260") << QByteArray("TX260") << int(SensorType::TX260) << 4;
        QTest::newRow("CC430") << QByteArray("CC430") << int(SensorType::CC430) << 5;
        QTest::newRow("negative") << QByteArray("CC430") << int(SensorType::CC430) << -1;
    }
    void unknownModeIsRejected()
    {
        QFETCH(QByteArray, model);
        QFETCH(int, type);
        QFETCH(int, mode);
        loadModel(model);
        Handle handle(type);
        handle.open();
        handle.set("SP_MeasureMode", mode);
        QVERIFY(handle.command("Set_MeasureMode") < 0);
        QCOMPARE(ask(handle, "Get_MeasureMode", "SA_MeasureMode"), 0);
    }

    void valuesOfTheOldFrameAreDiscarded()
    {
        loadModel("CC430", R"(, "measureModes": { "parameter": "SA_MeasureMode", "modes": [
            { "mode": 1, "signals": [ { "name": "a" }, { "name": "b" }, { "name": "c" } ] } ] })");
        Handle handle(SensorType::CC430);
        handle.open();
        QCOMPARE(valuesPerFrame(handle), 2);
        QCOMPARE(handle.getInt("IA_MaxValuesPerFrame"), 3);
        sondixsim::advance(1.0);
        QCOMPARE(handle.available(), 4000);
        set(handle, "Set_MeasureMode", "SP_MeasureMode", 1);
        QCOMPARE(handle.available(), 0);
        sondixsim::advance(1.0);
        QCOMPARE(handle.available(), 6000);
        set(handle, "Set_MeasureMode", "SP_MeasureMode", 1);
        QCOMPARE(handle.available(), 6000);
    }

    void standingValuesFollowTheMode()
    {
        loadModel("TX260", R"(, "standing": 50)");
        Handle handle(SensorType::TX260);
        handle.open();
        sondixsim::advance(1.0);
        set(handle, "Set_MeasureMode", "SP_MeasureMode", 2);
        const Block block = takeBlock(handle, 50);
        QCOMPARE(block.scaled.size(), std::size_t(50));
        for (const double value : block.scaled)
            QVERIFY(value > 1.1 && value < 1.3); // the distance would be 5 mm
    }

    void everyErrorValueHasAText()
    {
        sondixsim::loadBench(R"({ "clock": { "virtual": true }, "sensors": [
            { "model": "CC430", "serialNumber": "1", "place": { "interface": "WinUSB", "device": 1 },
              "signals": [ { "name": "d", "errors": [ { "key": -1, "every": 2 }, { "key": -92, "every": 3 } ] } ] },
            { "model": "MultiSensor", "serialNumber": "2", "place": { "interface": "WinUSB", "device": 2 },
              "members": [ "1" ], "rate": 1000 } ] })");
        for (const int type : {26, 57}) {
            Handle handle(type);
            QCOMPARE(handle.open(), 0);
            QCOMPARE(handle.command("Get_SensorErrorValueText"), 0);
            const std::string text = "\r\n" + handle.getText("SA_SensorErrorValueText") + "\r\n";
            QVERIFY(text.find("\r\n-1: No peak found\r\n") != std::string::npos);
            QVERIFY(text.find("\r\n-92: Error -92\r\n") != std::string::npos);
            CloseSensor(handle);
        }
    }
};

QTEST_GUILESS_MAIN(TestSimModes)
#include "tst_simmodes.moc"
