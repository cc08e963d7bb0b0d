// SPDX-License-Identifier: MIT
#include "handle.h"
#include "SondixSimulator/control.h"

#include <algorithm>
#include <cmath>
#include <QList>
#include <QTest>

namespace {

using Pixels = std::vector<int>;

const char *const network = R"({ "interface": "TCP/IP", "ip": "10.0.0.1" })";
const char *const serialLine = R"({ "interface": "RS232", "port": "COM3" })";

void loadVideoSensor(const QByteArray &model, const std::string &place, const std::string &more = "", int seed = 1)
{
    sondixsim::loadBench(R"({ "clock": { "virtual": true }, "seed": )" + std::to_string(seed) +
                         R"(, "sensors": [ { "model": ")" + model.toStdString() +
                         R"(", "serialNumber": "1", "place": )" + place + more + " } ] }");
}

/// Keys of a signal with a constant value.
std::string standingAt(double value, const std::string &more = "")
{
    return R"(, "signals": [ { "name": "d", "range": [0.0, 10.0],
        "generator": { "kind": "constant", "value": )" +
           std::to_string(value) + " }" + more + " } ]";
}

/// The pixels of an answer; empty without the answer.
Pixels pixelsOf(const Handle &handle, const QByteArray &answer)
{
    std::uint32_t length = 0;
    if (GetParameterBinary(handle, answer.constData(), nullptr, &length) != 0)
        return {};
    std::vector<unsigned char> bytes(length);
    if (GetParameterBinary(handle, answer.constData(), bytes.data(), &length) != 0)
        return {};
    Pixels pixels;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2)
        pixels.push_back(bytes[i] + 256 * bytes[i + 1]);
    return pixels;
}

bool switchTo(Handle &handle, const QByteArray &command, const QByteArray &parameter, int value)
{
    handle.set(parameter.constData(), value);
    return handle.command(command.constData()) == 0;
}

double mean(const Pixels &pixels)
{
    double sum = 0.0;
    for (const int pixel : pixels)
        sum += pixel;
    return sum / static_cast<double>(pixels.size());
}

/// The middle of the pixels above half of the maximum, 0 to 1.
double peakPlace(const Pixels &pixels)
{
    const int half = *std::max_element(pixels.begin(), pixels.end()) / 2;
    double weights = 0.0;
    double sum = 0.0;
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        const double weight = std::max(pixels[i] - half, 0);
        weights += weight;
        sum += weight * static_cast<double>(i);
    }
    return sum / weights / static_cast<double>(pixels.size() - 1);
}

} // namespace

class TestSimVideo : public QObject
{
    Q_OBJECT

private:
    /// Every model with switches at every interface over which it sends video.
    static void addModels()
    {
        QTest::addColumn<QByteArray>("model");
        QTest::addColumn<int>("type");
        QTest::addColumn<QByteArray>("suffix");
        QTest::addColumn<int>("mode"); // -1: video in any mode
        QTest::addColumn<int>("pixels");
        QTest::addColumn<int>("resolution");
        QTest::addColumn<QByteArray>("stem");
        QTest::addColumn<QList<QByteArray>>("videoSignals");
        const auto row = [](const char *model, int type, int mode, int pixels, int resolution, const char *stem,
                            const char *names, bool alsoSerial) {
            const QList<QByteArray> list = QByteArray(names).split(' ');
            QTest::newRow((QByteArray(model) + " in the network").constData())
                << QByteArray(model) << int(type) << QByteArray("_ETH") << mode << pixels << resolution
                << QByteArray(stem) << list;
            if (alsoSerial) {
                QTest::newRow((QByteArray(model) + " at a serial line").constData())
                    << QByteArray(model) << int(type) << QByteArray("_RS422") << mode << pixels << resolution
                    << QByteArray(stem) << list;
            }
        };
        for (const auto &[model, type] :
             {std::pair("CC430", SensorType::CC430), std::pair("CC440", SensorType::CC440),
              std::pair("CC450", SensorType::CC450), std::pair("CC460", SensorType::CC460)})
            row(model, type, 4, 512, 16384, "OutputVideo", "Raw Dark Light DarkTable LightTable", false);
        row("TX260", SensorType::TX260, 3, 512, 1024, "OutputVideo", "Raw Corr", false);
        row("MC340", SensorType::MC340, -1, 768, 4096, "OutputVideo", "Raw Light LightTable", false);
        row("TX280", SensorType::TX280, -1, 512, 65536, "Output", "Raw", true);
        row("CC470", SensorType::CC470, -1, 512, 4096, "Output", "Raw_Ch1 Dark_Ch1 Light_Ch1", true);
        for (const auto &[model, type] :
             {std::pair("CC480", SensorType::CC480), std::pair("CC490", SensorType::CC490),
              std::pair("CC495", SensorType::CC495)}) {
            row(model, type, -1, 512, 4096, "Output", "Raw_Ch1 Dark_Ch1 Light_Ch1 Raw_Ch2 Dark_Ch2 Light_Ch2",
                true);
        }
        for (const auto &[model, type] :
             {std::pair("TX290", SensorType::TX290), std::pair("TX310", SensorType::TX310)})
            row(model, type, -1, 512, 1024, "Output", "Raw", true);
        for (const auto &[model, type] :
             {std::pair("WI610", SensorType::WI610), std::pair("WI620", SensorType::WI620)})
            row(model, type, -1, 512, 4096, "Output", "Abs_Ch1", true);
    }

private Q_SLOTS:
    void switchedOnSignalsAreSent_data() { addModels(); }
    void switchedOnSignalsAreSent()
    {
        QFETCH(QByteArray, model);
        QFETCH(int, type);
        QFETCH(QByteArray, suffix);
        QFETCH(int, mode);
        QFETCH(int, pixels);
        QFETCH(int, resolution);
        QFETCH(QByteArray, stem);
        QFETCH(QList<QByteArray>, videoSignals);
        loadVideoSensor(model, suffix == "_ETH" ? network : serialLine);
        Handle handle(type);
        QCOMPARE(handle.open(), 0);
        if (mode >= 0)
            QVERIFY(switchTo(handle, "Set_MeasureMode", "SP_MeasureMode", mode));
        sondixsim::advance(0.5);
        const QByteArray get = "Get_" + stem + suffix;
        const QByteArray update = "Update_" + stem + suffix;
        QVERIFY(handle.command("Get_Video") < 0); // nothing is switched on
        int on = 0;
        for (const QByteArray &name : videoSignals) {
            const QByteArray setting = "OutputVideo" + name + suffix;
            QCOMPARE(handle.command(get.constData()), 0);
            QCOMPARE(handle.getInt(("SA_" + setting).constData()), 0);
            handle.command("Get_TransmittedDataInfo");
            QCOMPARE(handle.getInt("IA_VideoSignalsPerFrame"), on);
            QVERIFY(switchTo(handle, update, "SP_" + setting, 1));
            ++on;
            QCOMPARE(handle.command(get.constData()), 0);
            QCOMPARE(handle.getInt(("SA_" + setting).constData()), 1);
            handle.command("Get_TransmittedDataInfo");
            QCOMPARE(handle.getInt("IA_VideoSignalsPerFrame"), on);
            QCOMPARE(handle.command("Get_Video"), 0);
            int sent = 0;
            for (const QByteArray &candidate : videoSignals) {
                const Pixels line = pixelsOf(handle, "SA_Video" + candidate);
                if (line.empty())
                    continue;
                ++sent;
                QCOMPARE(static_cast<int>(line.size()), pixels);
                QVERIFY(*std::max_element(line.begin(), line.end()) < resolution);
                QVERIFY(*std::max_element(line.begin(), line.end()) > resolution / 32);
            }
            QCOMPARE(sent, on);
            QVERIFY(!pixelsOf(handle, "SA_Video" + name).empty());
        }
        QVERIFY(switchTo(handle, update, "SP_OutputVideo" + videoSignals.first() + suffix, 0));
        handle.command("Get_TransmittedDataInfo");
        QCOMPARE(handle.getInt("IA_VideoSignalsPerFrame"), on - 1);
    }

    void otherModesSendNoVideo_data()
    {
        QTest::addColumn<QByteArray>("model");
        QTest::addColumn<int>("type");
        QTest::addColumn<int>("mode");
        for (const int mode : {0, 1, 2})
            QTest::newRow(("TX260 " + QByteArray::number(mode)).constData())
                << QByteArray("TX260") << int(SensorType::TX260) << mode;
        for (const auto &[model, type] :
             {std::pair("CC430", SensorType::CC430), std::pair("CC440", SensorType::CC440),
              std::pair("CC450", SensorType::CC450), std::pair("CC460", SensorType::CC460)}) {
            for (const int mode : {0, 1}) {
                QTest::newRow((QByteArray(model) + ' ' + QByteArray::number(mode)).constData())
                    << QByteArray(model) << int(type) << mode;
            }
        }
    }
    void otherModesSendNoVideo()
    {
        QFETCH(QByteArray, model);
        QFETCH(int, type);
        QFETCH(int, mode);
        loadVideoSensor(model, network);
        Handle handle(type);
        handle.open();
        QVERIFY(switchTo(handle, "Update_OutputVideo_ETH", "SP_OutputVideoRaw_ETH", 1));
        QVERIFY(switchTo(handle, "Set_MeasureMode", "SP_MeasureMode", mode));
        handle.command("Get_TransmittedDataInfo");
        QCOMPARE(handle.getInt("IA_VideoSignalsPerFrame"), 0);
        QVERIFY(handle.command("Get_Video") < 0);
        QVERIFY(pixelsOf(handle, "SA_VideoRaw").empty());
    }

    void switchesOfTheOtherInterfaceDoNotCount()
    {
        loadVideoSensor("TX290", network);
        Handle handle(SensorType::TX290);
        handle.open();
        QVERIFY(switchTo(handle, "Update_Output_RS422", "SP_OutputVideoRaw_RS422", 1));
        handle.command("Get_TransmittedDataInfo");
        QCOMPARE(handle.getInt("IA_VideoSignalsPerFrame"), 0);
        QVERIFY(handle.command("Get_Video") < 0);
    }

    void sensorWithoutSwitchesSendsItsLineWhenAsked()
    {
        loadVideoSensor("TX240", serialLine);
        Handle handle(SensorType::TX240);
        handle.open();
        handle.command("Get_TransmittedDataInfo");
        QCOMPARE(handle.getInt("IA_VideoSignalsPerFrame"), 0);
        QCOMPARE(handle.command("Get_Video"), 0);
        const Pixels line = pixelsOf(handle, "SA_VideoSignal");
        QCOMPARE(line.size(), std::size_t(128));
        QVERIFY(*std::max_element(line.begin(), line.end()) < 1024);
    }

    void modelsWithoutVideoDoNotKnowTheCommand_data()
    {
        QTest::addColumn<QByteArray>("model");
        QTest::addColumn<int>("type");
        QTest::newRow("TX250") << QByteArray("TX250") << int(SensorType::TX250);
        QTest::newRow("TX270") << QByteArray("TX270") << int(SensorType::TX270);
        QTest::newRow("TX300") << QByteArray("TX300") << int(SensorType::TX300);
        QTest::newRow("QUnit") << QByteArray("QUnit") << int(SensorType::QUnit);
        QTest::newRow("CP730") << QByteArray("CP730") << int(SensorType::CP730);
    }
    void modelsWithoutVideoDoNotKnowTheCommand()
    {
        QFETCH(QByteArray, model);
        QFETCH(int, type);
        loadVideoSensor(model, serialLine);
        Handle handle(type);
        QCOMPARE(handle.open(), 0);
        QVERIFY(handle.command("Get_Video") < 0);
    }

    void peakIsAtTheValue_data()
    {
        QTest::addColumn<double>("value");
        for (const double value : {1.0, 2.5, 5.0, 7.75})
            QTest::newRow(QByteArray::number(value).constData()) << value;
    }
    void peakIsAtTheValue()
    {
        QFETCH(double, value);
        loadVideoSensor("TX290", network, standingAt(value));
        Handle handle(SensorType::TX290);
        handle.open();
        QVERIFY(switchTo(handle, "Update_Output_ETH", "SP_OutputVideoRaw_ETH", 1));
        sondixsim::advance(0.1);
        QCOMPARE(handle.command("Get_Video"), 0);
        const Pixels line = pixelsOf(handle, "SA_VideoRaw");
        QVERIFY(std::fabs(peakPlace(line) - value / 10.0) < 0.002);
        QVERIFY(*std::max_element(line.begin(), line.end()) > 512);
        // Most of the line is dark with some noise.
        Pixels sorted = line;
        std::sort(sorted.begin(), sorted.end());
        QVERIFY(sorted[sorted.size() / 2] < 1024 / 10);
        QVERIFY(sorted[0] < sorted[sorted.size() / 2]);
    }

    void peakFollowsTheLastMeasuredValue()
    {
        loadVideoSensor("TX290", network, R"(, "signals": [ { "name": "d", "range": [0.0, 10.0],
            "generator": { "kind": "ramp", "from": 1.0, "to": 9.0, "period": 8.0 } } ])");
        Handle handle(SensorType::TX290);
        handle.open();
        QVERIFY(switchTo(handle, "Update_Output_ETH", "SP_OutputVideoRaw_ETH", 1));
        for (int i = 0; i < 7; ++i) {
            sondixsim::advance(1.0);
            handle.command("Get_Video");
            const Block block = takeBlock(handle, 10000);
            QVERIFY(std::fabs(peakPlace(pixelsOf(handle, "SA_VideoRaw")) - block.scaled.back() / 10.0) < 0.002);
        }
    }

    void eachChannelShowsItsOwnValue()
    {
        loadVideoSensor("CC480", network, R"(, "signals": [
            { "name": "01DIST1", "range": [0.0, 10.0], "generator": { "kind": "constant", "value": 3.0 } },
            { "name": "02DIST1", "range": [0.0, 10.0], "generator": { "kind": "constant", "value": 8.0 } } ])");
        Handle handle(SensorType::CC480);
        handle.open();
        handle.set("SP_OutputVideoRaw_Ch1_ETH", 1);
        QVERIFY(switchTo(handle, "Update_Output_ETH", "SP_OutputVideoRaw_Ch2_ETH", 1));
        QCOMPARE(handle.command("Get_Video"), 0);
        QVERIFY(std::fabs(peakPlace(pixelsOf(handle, "SA_VideoRaw_Ch1")) - 0.3) < 0.002);
        QVERIFY(std::fabs(peakPlace(pixelsOf(handle, "SA_VideoRaw_Ch2")) - 0.8) < 0.002);
    }

    void errorValueHasNoPeak()
    {
        loadVideoSensor("TX290", network, standingAt(5.0, R"(, "errors": [ { "key": -1, "every": 1 } ])"));
        Handle handle(SensorType::TX290);
        handle.open();
        QVERIFY(switchTo(handle, "Update_Output_ETH", "SP_OutputVideoRaw_ETH", 1));
        sondixsim::advance(0.1);
        QCOMPARE(handle.command("Get_Video"), 0);
        const Pixels line = pixelsOf(handle, "SA_VideoRaw");
        QVERIFY(*std::max_element(line.begin(), line.end()) < 1024 / 10);
    }

    void correctedLineHasNoFloor()
    {
        loadVideoSensor("TX260", network, standingAt(5.0));
        Handle handle(SensorType::TX260);
        handle.open();
        handle.set("SP_OutputVideoCorr_ETH", 1);
        QVERIFY(switchTo(handle, "Update_OutputVideo_ETH", "SP_OutputVideoRaw_ETH", 1));
        QVERIFY(switchTo(handle, "Set_MeasureMode", "SP_MeasureMode", 3));
        QCOMPARE(handle.command("Get_Video"), 0);
        const Pixels raw = pixelsOf(handle, "SA_VideoRaw");
        const Pixels corrected = pixelsOf(handle, "SA_VideoCorr");
        QVERIFY(std::fabs(peakPlace(corrected) - 0.5) < 0.002);
        QVERIFY(mean(raw) - mean(corrected) > 1024 * 0.04);
    }

    void tablesAreTheLinesWithoutNoise()
    {
        loadVideoSensor("CC430", network);
        Handle handle(SensorType::CC430);
        handle.open();
        for (const char *name :
             {"SP_OutputVideoDark_ETH", "SP_OutputVideoLight_ETH", "SP_OutputVideoDarkTable_ETH"})
            handle.set(name, 1);
        QVERIFY(switchTo(handle, "Update_OutputVideo_ETH", "SP_OutputVideoLightTable_ETH", 1));
        QVERIFY(switchTo(handle, "Set_MeasureMode", "SP_MeasureMode", 4));
        Pixels dark[2];
        Pixels table[2];
        for (int i : {0, 1}) {
            sondixsim::advance(0.1);
            QCOMPARE(handle.command("Get_Video"), 0);
            dark[i] = pixelsOf(handle, "SA_VideoDark");
            table[i] = pixelsOf(handle, "SA_VideoDarkTable");
        }
        QVERIFY(dark[0] != dark[1]);
        QCOMPARE(table[0], table[1]);
        QVERIFY(std::fabs(mean(dark[0]) - mean(table[0])) < 16384 * 0.002);
        const Pixels light = pixelsOf(handle, "SA_VideoLight");
        QVERIFY(mean(light) > 5.0 * mean(dark[1]));
        QVERIFY(std::fabs(mean(light) - mean(pixelsOf(handle, "SA_VideoLightTable"))) < 16384 * 0.002);
    }

    void lineOfMicrometerFollowsFromItsRange_data()
    {
        QTest::addColumn<double>("range");
        QTest::addColumn<int>("pixels");
        QTest::newRow("46 mm") << 46.0 << 768;
        QTest::newRow("10 mm") << 10.0 << 1536;
        QTest::newRow("nearly 46 mm") << 46.5 << 1536;
    }
    void lineOfMicrometerFollowsFromItsRange()
    {
        QFETCH(double, range);
        QFETCH(int, pixels);
        loadVideoSensor("MC340", network,
                        R"(, "info": { "SA_Range": )" + std::to_string(range) + " }" + standingAt(4.0));
        Handle handle(SensorType::MC340);
        handle.open();
        QCOMPARE(handle.command("Get_Info"), 0);
        QCOMPARE(handle.getDouble("SA_Range"), range);
        QVERIFY(switchTo(handle, "Update_OutputVideo_ETH", "SP_OutputVideoRaw_ETH", 1));
        QCOMPARE(handle.command("Get_Video"), 0);
        const Pixels line = pixelsOf(handle, "SA_VideoRaw");
        QCOMPARE(static_cast<int>(line.size()), pixels);
        // The object is as wide as the measured value and blocks the light.
        const auto dark = std::count_if(line.begin(), line.end(), [](int pixel) { return pixel < 4096 / 4; });
        QVERIFY(std::fabs(static_cast<double>(dark) / pixels - 0.4) < 0.01);
    }

    void sameSeedAndTimeGiveTheSameLine()
    {
        const auto lineAt = [](int seed, double time) {
            loadVideoSensor("TX290", network, standingAt(5.0), seed);
            Handle handle(SensorType::TX290);
            handle.open();
            if (!switchTo(handle, "Update_Output_ETH", "SP_OutputVideoRaw_ETH", 1))
                return Pixels();
            sondixsim::advance(time);
            handle.command("Get_Video");
            return pixelsOf(handle, "SA_VideoRaw");
        };
        const Pixels line = lineAt(1, 0.5);
        QCOMPARE(line.size(), std::size_t(512));
        QCOMPARE(lineAt(1, 0.5), line);
        QVERIFY(lineAt(1, 0.6) != line);
        QVERIFY(lineAt(2, 0.5) != line);
    }

    void fetchingALineTakesNoValue()
    {
        loadVideoSensor("TX290", network);
        Handle handle(SensorType::TX290);
        handle.open();
        QVERIFY(switchTo(handle, "Update_Output_ETH", "SP_OutputVideoRaw_ETH", 1));
        sondixsim::advance(0.25);
        QCOMPARE(handle.command("Get_Video"), 0);
        QCOMPARE(handle.available(), 1000);
    }

    void errorsInVideoAreReported_data()
    {
        QTest::addColumn<QByteArray>("key");
        QTest::addColumn<QByteArray>("mistake");
        QTest::newRow("kind") << QByteArray(R"(, "video": { "pixels": 8, "resolution": 16,
                                     "lines": [ { "answer": "SA_VideoRaw", "kind": "grey" } ] })")
                              << QByteArray("there is no video line \"grey\"");
        QTest::newRow("pixels") << QByteArray(R"(, "video": { "pixels": 0, "resolution": 16, "lines": [] })")
                                << QByteArray("\"pixels\"");
        QTest::newRow("trigger") << QByteArray(R"(, "trigger": { "off": 0 })") << QByteArray("\"parameter\"");
        QTest::newRow("mode") << QByteArray(R"(, "measureModes": { "parameter": "SA_MeasureMode",
                                     "modes": [ { "mode": 1, "vidoe": true } ] })")
                              << QByteArray("\"vidoe\"");
        QTest::newRow("rate") << QByteArray(R"(, "triggerRate": -1)") << QByteArray("\"triggerRate\"");
    }
    void errorsInVideoAreReported()
    {
        QFETCH(QByteArray, key);
        QFETCH(QByteArray, mistake);
        try {
            loadVideoSensor("TX290", network, key.toStdString());
            QFAIL("the bench was taken");
        } catch (const sondixsim::BenchError &error) {
            QVERIFY2(QByteArray(error.what()).contains(mistake), error.what());
        }
    }
};

QTEST_GUILESS_MAIN(TestSimVideo)
#include "tst_simvideo.moc"
