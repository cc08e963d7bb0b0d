// SPDX-License-Identifier: MIT
#include "handle.h"
#include "SondixSimulator/control.h"

#include <QTest>

/// One sensor of a model at a virtual clock; \a more are further keys of it.
static void loadOne(const QByteArray &model, const std::string &more = "")
{
    sondixsim::loadBench(R"({ "clock": { "virtual": true }, "sensors": [ { "model": ")" + model.toStdString() +
                         R"(", "serialNumber": "1", "place": { "interface": "WinUSB" } )" + more + " } ] }");
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
    {"CP710", 15, "Get_Trigger", "SA_TrgMode", "Update_Trigger", "SP_TrgMode", 0, 1},
    {"CB910", 18, "Get_Trigger", "SA_TrgMode", "Update_Trigger", "SP_TrgMode", 0, 1},
    {"CP730", 33, "Get_Trigger", "SA_TrgMode", "Update_Trigger", "SP_TrgMode", 0, 1},
    {"XA300", 34, "Get_Trigger", "SA_TrgMode", "Update_Trigger", "SP_TrgMode", 0, 1},
    {"MV410_XA300ETH", 34, "Get_Trigger", "SA_TrgMode", "Update_Trigger", "SP_TrgMode", 0, 1},
    {"GenericKVBus", 43, "Get_Trigger", "SA_TrgMode", "Update_Trigger", "SP_TrgMode", 0, 1},
    {"EC830", 43, "Get_Trigger", "SA_TrgMode", "Update_Trigger", "SP_TrgMode", 0, 1},
    {"CB92xx", 45, "Get_Trigger", "SA_TrgMode", "Update_Trigger", "SP_TrgMode", 0, 2},
    {"CP750", 54, "Get_Trigger", "SA_TrgMode", "Update_Trigger", "SP_TrgMode", 0, 1},
    {"TX240", 23, "Get_Settings", "SA_OutputMode", "Set_OutputMode", "SP_OutputMode", 0, 1},
    {"TX250", 24, "Get_Settings", "SA_OutputMode", "Set_OutputMode", "SP_OutputMode", 0, 1},
    {"CC430", 26, "Get_TriggerMode", "SA_TriggerMode", "Update_TriggerMode", "SP_TriggerMode", 0, 1},
    {"TX260", 29, "Get_TriggerMode", "SA_TriggerMode", "Update_TriggerMode", "SP_TriggerMode", 0, 1},
    {"CC440", 30, "Get_TriggerMode", "SA_TriggerMode", "Update_TriggerMode", "SP_TriggerMode", 0, 1},
    {"PG110", 35, "Get_TriggerMode", "SA_TriggerMode", "Update_TriggerMode", "SP_TriggerMode", 0, 1},
    {"MC340", 37, "Get_TriggerMode", "SA_TriggerMode", "Update_TriggerMode", "SP_TriggerMode", 0, 1},
    {"QUnit", 38, "Get_TriggerMode", "SA_TriggerMode", "Update_TriggerMode", "SP_TriggerMode", 0, 1},
    {"CC450", 39, "Get_TriggerMode", "SA_TriggerMode", "Update_TriggerMode", "SP_TriggerMode", 0, 1},
    {"TX270", 41, "Get_TriggerMode", "SA_TriggerMode", "Update_TriggerMode", "SP_TriggerMode", 0, 3},
    {"TX280", 42, "Get_TriggerMode", "SA_TriggerMode", "Update_TriggerMode", "SP_TriggerMode", 0, 1},
    {"CC460", 44, "Get_TriggerMode", "SA_TriggerMode", "Update_TriggerMode", "SP_TriggerMode", 0, 1},
    {"Spessa", 48, "Get_TriggerMode", "SA_TriggerMode", "Update_TriggerMode", "SP_TriggerMode", 0, 1},
    {"TX300", 56, "Get_TriggerMode", "SA_TriggerMode", "Update_TriggerMode", "SP_TriggerMode", 0, 1},
    {"RG540", 60, "Get_TriggerMode", "SA_TriggerMode", "Update_TriggerMode", "SP_TriggerMode", 0, 1},
    {"EC810", 28, "Get_MeasureMode", "SA_MeasureMode", "Set_MeasureMode", "SP_MeasureMode", 1, 0},
    {"CC470", 46, "Get_TriggerSource", "SA_TriggerSource", "Update_TriggerSource", "SP_TriggerSource", 0, 1},
    {"CC480", 47, "Get_TriggerSource", "SA_TriggerSource", "Update_TriggerSource", "SP_TriggerSource", 0, 1},
    {"TX290", 51, "Get_TriggerSource", "SA_TriggerSource", "Update_TriggerSource", "SP_TriggerSource", 0, 1},
    {"WI610", 55, "Get_TriggerSource", "SA_TriggerSource", "Update_TriggerSource", "SP_TriggerSource", 0, 1},
    {"TX310", 58, "Get_TriggerSource", "SA_TriggerSource", "Update_TriggerSource", "SP_TriggerSource", 0, 1},
    {"WI620", 59, "Get_TriggerSource", "SA_TriggerSource", "Update_TriggerSource", "SP_TriggerSource", 0, 1},
    {"CC490", 62, "Get_TriggerSource", "SA_TriggerSource", "Update_TriggerSource", "SP_TriggerSource", 0, 1},
    {"CC495", 63, "Get_TriggerSource", "SA_TriggerSource", "Update_TriggerSource", "SP_TriggerSource", 0, 1},
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
    /// Values that arise in so many seconds.
    static int valuesIn(Handle &handle, double seconds)
    {
        handle.command("Get_Measure"); // refused by all but the polled ones
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
        loadOne(trigger.model);
        Handle handle(trigger.type);
        QCOMPARE(handle.open(), 0);
        QCOMPARE(ask(handle, trigger.get, trigger.answer), trigger.off);
        const int perFrame = valuesPerFrame(handle);
        const double rate = handle.getDouble("IA_Datarate");
        const bool measures = perFrame > 0; // the converter by itself has no values
        QCOMPARE(valuesIn(handle, 2.0) > 0, measures);
        set(handle, trigger.set, trigger.parameter, trigger.on);
        QCOMPARE(ask(handle, trigger.get, trigger.answer), trigger.on);
        QCOMPARE(valuesIn(handle, 2.0), 0);
        sondixsim::trigger("1");
        sondixsim::trigger("1");
        QCOMPARE(handle.available(), 2 * perFrame);
        handle.command("Get_TransmittedDataInfo");
        QCOMPARE(handle.getDouble("IA_Datarate"), rate); // how fast it can, not how often it is asked to
        set(handle, trigger.set, trigger.parameter, trigger.off);
        QCOMPARE(ask(handle, trigger.get, trigger.answer), trigger.off);
        QCOMPARE(valuesIn(handle, 2.0) > 0, measures);
    }

    void valuesBeforeTheTriggerWasSwitchedOnStay()
    {
        loadOne("TX270");
        Handle handle(41);
        handle.open();
        sondixsim::advance(0.01);
        set(handle, "Update_TriggerMode", "SP_TriggerMode", 1);
        sondixsim::advance(1.0);
        QCOMPARE(handle.available(), 20);
    }

    void triggeredFrameHasTheTimeOfItsTrigger()
    {
        loadOne("TX270", R"(, "settings": { "TriggerMode": { "SA_TriggerMode": 1 } },
            "signals": [ { "name": "d", "range": [0.0, 10.0], "rawRange": [0, 1000],
                           "generator": { "kind": "ramp", "from": 0.0, "to": 10.0, "period": 10.0 } } ])");
        Handle handle(41);
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

    void triggerIsIgnoredByWhoDoesNotWait()
    {
        loadOne("TX270");
        sondixsim::trigger("1"); // nobody has it open
        Handle handle(41);
        handle.open();
        sondixsim::trigger("1");
        QCOMPARE(handle.available(), 0);
        QVERIFY_EXCEPTION_THROWN(sondixsim::trigger("none"), std::invalid_argument);
    }

    void triggersOfTheBenchComeRegularly()
    {
        loadOne("TX270", R"(, "triggerRate": 8)");
        Handle handle(41);
        handle.open();
        QCOMPARE(valuesIn(handle, 1.0), 2000);
        set(handle, "Update_TriggerMode", "SP_TriggerMode", 1);
        QCOMPARE(valuesIn(handle, 1.0), 8);
    }

    void sensorIsNoFasterThanItCan()
    {
        loadOne("TX270", R"(, "triggerRate": 5000)");
        Handle handle(41);
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
        QTest::newRow("TX220") << QByteArray("TX220") << 2 << QByteArray("Get_Settings")
                               << QByteArray("Sync_TrgMode");
        for (const auto &[model, type] :
             {std::pair("CC430", 26), std::pair("TX260", 29), std::pair("CC440", 30), std::pair("PG110", 35),
              std::pair("MC340", 37), std::pair("QUnit", 38), std::pair("CC450", 39), std::pair("CC460", 44),
              std::pair("CC470", 46), std::pair("CC480", 47), std::pair("Spessa", 48), std::pair("TX290", 51),
              std::pair("WI610", 55), std::pair("TX310", 58), std::pair("WI620", 59), std::pair("CC490", 62),
              std::pair("CC495", 63)})
            QTest::newRow(model) << QByteArray(model) << type << QByteArray("Get_SyncMode")
                                 << QByteArray("SyncMode");
    }
    void synchronisedSensorGoesOnMeasuring()
    {
        QFETCH(QByteArray, model);
        QFETCH(int, type);
        QFETCH(QByteArray, get);
        QFETCH(QByteArray, name);
        loadOne(model);
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
        loadOne("TX260");
        Handle handle(29);
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
                << QByteArray(model) << type << mode << QByteArray(name) << perFrame;
        };
        row("TX260", 29, 0, "Distance 1", 1);
        row("TX260", 29, 1, "Distance 1", 1);
        row("TX260", 29, 2, "Thickness 1", 1);
        row("TX260", 29, 3, "Distance 1", 1);
        for (const auto &[model, type] :
             {std::pair("CC430", 26), std::pair("CC440", 30), std::pair("CC450", 39), std::pair("CC460", 44)}) {
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
        loadOne(model);
        Handle handle(type);
        handle.open();
        QCOMPARE(ask(handle, "Get_MeasureMode", "SA_MeasureMode"), 0);
        set(handle, "Set_MeasureMode", "SP_MeasureMode", mode);
        QCOMPARE(ask(handle, "Get_MeasureMode", "SA_MeasureMode"), mode);
        QCOMPARE(valuesPerFrame(handle), perFrame);
        QCOMPARE(handle.getText("IA_Scaled_Name1"), name.toStdString());
        const double least = handle.getDouble("IA_Scaled_RangeMin1");
        const double greatest = handle.getDouble("IA_Scaled_RangeMax1");
        QCOMPARE(valuesIn(handle, 1.0), 2000 * perFrame);
        const Block block = takeBlock(handle, 2000 * perFrame);
        for (std::size_t i = 0; i < block.scaled.size(); i += static_cast<std::size_t>(perFrame))
            QVERIFY(block.scaled[i] >= least && block.scaled[i] <= greatest);
        CloseSensor(handle);
        handle.open();
        QCOMPARE(valuesPerFrame(handle), perFrame); // the mode outlives closing
    }

    void modeThatThereIsNotIsRefused_data()
    {
        QTest::addColumn<QByteArray>("model");
        QTest::addColumn<int>("type");
        QTest::addColumn<int>("mode");
        QTest::newRow("TX260") << QByteArray("TX260") << 29 << 4;
        QTest::newRow("CC430") << QByteArray("CC430") << 26 << 5;
        QTest::newRow("negative") << QByteArray("CC430") << 26 << -1;
    }
    void modeThatThereIsNotIsRefused()
    {
        QFETCH(QByteArray, model);
        QFETCH(int, type);
        QFETCH(int, mode);
        loadOne(model);
        Handle handle(type);
        handle.open();
        handle.set("SP_MeasureMode", mode);
        QVERIFY(handle.command("Set_MeasureMode") < 0);
        QCOMPARE(ask(handle, "Get_MeasureMode", "SA_MeasureMode"), 0);
    }

    void valuesOfAnotherFrameAreThrownAway()
    {
        loadOne("CC430", R"(, "measureModes": { "parameter": "SA_MeasureMode", "modes": [
            { "mode": 1, "signals": [ { "name": "a" }, { "name": "b" }, { "name": "c" } ] } ] })");
        Handle handle(26);
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
        loadOne("TX260", R"(, "standing": 50)");
        Handle handle(29);
        handle.open();
        sondixsim::advance(1.0);
        set(handle, "Set_MeasureMode", "SP_MeasureMode", 2);
        const Block block = takeBlock(handle, 50);
        QCOMPARE(block.scaled.size(), std::size_t(50));
        for (const double value : block.scaled)
            QVERIFY(value > 1.1 && value < 1.3); // the distance is at 5 mm then
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
