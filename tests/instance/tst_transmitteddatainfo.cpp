// SPDX-License-Identifier: MIT
#include <SondixQt/TransmittedDataInfo>

#include <QtTest>

#include <functional>
#include <limits>

using namespace SondixQt;

using ChangeSignal = std::function<void(SignalInfo &)>;
using ChangeVideo = std::function<void(VideoInfo &)>;
using ChangeInfo = std::function<void(TransmittedDataInfo &)>;
Q_DECLARE_METATYPE(ChangeSignal)
Q_DECLARE_METATYPE(ChangeVideo)
Q_DECLARE_METATYPE(ChangeInfo)

class TestTransmittedDataInfo : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void defaults();
    void constructedFromParts();
    void differentSignals_data();
    void differentSignals();
    void signalsWithNaNDiffer();
    void videosCompare_data();
    void videosCompare();
    void descriptionsCompare_data();
    void descriptionsCompare();
    void sharedSignalsAreEqualAtOnce();
    void copiesAndMoves();
};

namespace {

const double notANumber = std::numeric_limits<double>::quiet_NaN();

SignalInfo sampleSignal()
{
    SignalInfo signal;
    signal.index = 4;
    signal.rawName = "Raw distance";
    signal.scaledName = "Distance";
    signal.rawRangeMin = 1.0;
    signal.rawRangeMax = 65535.0;
    signal.scaledRangeMin = -25.0;
    signal.scaledRangeMax = 25.0;
    signal.viewRange = 50.0;
    signal.rawUnit = "digit";
    signal.scaledUnit = "mm";
    signal.rawDatarate = 2.5;
    signal.scaledDatarate = 5.0;
    signal.majorSignal = true;
    signal.additionalInfo = "first";
    return signal;
}

TransmittedDataInfo sampleInfo()
{
    return TransmittedDataInfo(2500.0, 2, 6, 1, {sampleSignal(), SignalInfo()}, {VideoInfo()});
}

template<typename Change, typename Record>
bool changedDiffers(const Record &original, const Change &change)
{
    Record changed = original;
    change(changed);
    const bool differs = original != changed;
    // operator== must be the negation of operator!= for both orders of the operands.
    if ((original == changed) == differs || (changed != original) != differs)
        qFatal("operator== and operator!= contradict each other");
    return differs;
}

} // namespace

void TestTransmittedDataInfo::defaults()
{
    const TransmittedDataInfo info;
    QCOMPARE(info.datarate, -1.0);
    QCOMPARE(info.valuesPerFrame, 0);
    QCOMPARE(info.maxValuesPerFrame, 0);
    QCOMPARE(info.videoSignalCount, 0);
    QCOMPARE(info.reserved, -1);
    QVERIFY(info.signals.isEmpty());
    QVERIFY(info.videoSignals.isEmpty());

    const VideoInfo video;
    QCOMPARE(video.index, 0);
    QCOMPARE(video.enabled, false);
    QCOMPARE(video.answerParameter, QString());
    QCOMPARE(video.outputStem, QString());
    QCOMPARE(video.pixelCount, 0);
    QCOMPARE(video.pixelSize, 0);

    const SignalInfo signal;
    QCOMPARE(signal.rawName, QString());
    QCOMPARE(signal.scaledName, QString());
    QCOMPARE(signal.rawUnit, QString());
    QCOMPARE(signal.scaledUnit, QString());
    QCOMPARE(signal.additionalInfo, QString());
}

void TestTransmittedDataInfo::constructedFromParts()
{
    VideoInfo video;
    video.index = 7;
    const TransmittedDataInfo info(2500.0, 3, 6, 9, {sampleSignal()}, {video, VideoInfo()});
    QCOMPARE(info.datarate, 2500.0);
    QCOMPARE(info.valuesPerFrame, 3);
    QCOMPARE(info.maxValuesPerFrame, 6);
    QCOMPARE(info.videoSignalCount, 9);
    QCOMPARE(info.reserved, -1);
    QCOMPARE(info.signals, QVector<SignalInfo>{sampleSignal()});
    QCOMPARE(info.videoSignals.size(), 2);
    QCOMPARE(info.videoSignals.first().index, 7);
}

void TestTransmittedDataInfo::differentSignals_data()
{
    QTest::addColumn<ChangeSignal>("change");
    const auto add = [](const char *field, const ChangeSignal &change) { QTest::newRow(field) << change; };
    add("index", [](SignalInfo &signal) { signal.index = 5; });
    add("rawName", [](SignalInfo &signal) { signal.rawName += QLatin1Char('x'); });
    add("scaledName", [](SignalInfo &signal) { signal.scaledName = "distance"; });
    add("rawRangeMin", [](SignalInfo &signal) { signal.rawRangeMin = 1.0000000000000002; });
    add("rawRangeMax", [](SignalInfo &signal) { signal.rawRangeMax = 1.0; });
    add("scaledRangeMin", [](SignalInfo &signal) { signal.scaledRangeMin = 0.0; });
    add("scaledRangeMax", [](SignalInfo &signal) { signal.scaledRangeMax = 0.0; });
    add("viewRange", [](SignalInfo &signal) { signal.viewRange = 0.0; });
    add("rawUnit", [](SignalInfo &signal) { signal.rawUnit.clear(); });
    add("scaledUnit", [](SignalInfo &signal) { signal.scaledUnit = "OFF"; });
    add("rawDatarate", [](SignalInfo &signal) { signal.rawDatarate = 0.0; });
    add("scaledDatarate", [](SignalInfo &signal) { signal.scaledDatarate = 0.0; });
    add("majorSignal", [](SignalInfo &signal) { signal.majorSignal = false; });
    add("additionalInfo", [](SignalInfo &signal) { signal.additionalInfo.clear(); });
}

void TestTransmittedDataInfo::differentSignals()
{
    QFETCH(ChangeSignal, change);
    QVERIFY(!changedDiffers(sampleSignal(), [](SignalInfo &) {}));
    QVERIFY(changedDiffers(sampleSignal(), change));
}

void TestTransmittedDataInfo::signalsWithNaNDiffer()
{
    SignalInfo signal = sampleSignal();
    signal.viewRange = notANumber;
    QVERIFY(signal != signal);
    QVERIFY(!(signal == signal));
}

void TestTransmittedDataInfo::videosCompare_data()
{
    QTest::addColumn<ChangeVideo>("change");
    QTest::addColumn<bool>("differs");
    const auto add = [](const char *field, bool differs, const ChangeVideo &change) {
        QTest::newRow(field) << change << differs;
    };
    add("index", true, [](VideoInfo &video) { video.index = 1; });
    add("enabled", true, [](VideoInfo &video) { video.enabled = true; });
    add("answerParameter", false, [](VideoInfo &video) { video.answerParameter = "SA_VideoRaw"; });
    add("outputStem", false, [](VideoInfo &video) { video.outputStem = "OutputVideoRaw"; });
    add("both texts", false, [](VideoInfo &video) {
        video.answerParameter = "SA_VideoRaw";
        video.outputStem = "OutputVideoRaw";
    });
    add("pixelCount", true, [](VideoInfo &video) { video.pixelCount = 512; });
    add("pixelSize", true, [](VideoInfo &video) { video.pixelSize = 2; });
}

void TestTransmittedDataInfo::videosCompare()
{
    QFETCH(ChangeVideo, change);
    QFETCH(bool, differs);
    QCOMPARE(changedDiffers(VideoInfo(), change), differs);
}

void TestTransmittedDataInfo::descriptionsCompare_data()
{
    QTest::addColumn<ChangeInfo>("change");
    QTest::addColumn<bool>("differs");
    const auto add = [](const char *field, bool differs, const ChangeInfo &change) {
        QTest::newRow(field) << change << differs;
    };
    add("datarate", false, [](TransmittedDataInfo &info) { info.datarate = 1.0; });
    add("valuesPerFrame", true, [](TransmittedDataInfo &info) { info.valuesPerFrame = 3; });
    add("maxValuesPerFrame", false, [](TransmittedDataInfo &info) { info.maxValuesPerFrame = 3; });
    add("videoSignalCount", false, [](TransmittedDataInfo &info) { info.videoSignalCount = 3; });
    add("reserved", false, [](TransmittedDataInfo &info) { info.reserved = 3; });
    add("videoSignals", false, [](TransmittedDataInfo &info) { info.videoSignals.clear(); });
    add("equal signals of their own", false, [](TransmittedDataInfo &info) {
        info.signals = {sampleSignal(), SignalInfo()};
    });
    add("fewer signals", true, [](TransmittedDataInfo &info) { info.signals.removeLast(); });
    add("more signals", true, [](TransmittedDataInfo &info) { info.signals.append(SignalInfo()); });
    add("other first signal", true, [](TransmittedDataInfo &info) { info.signals[0].index = 77; });
    add("other last signal", true, [](TransmittedDataInfo &info) { info.signals[1].majorSignal = true; });
    add("NaN in a signal", true, [](TransmittedDataInfo &info) { info.signals[0].viewRange = notANumber; });
}

void TestTransmittedDataInfo::descriptionsCompare()
{
    QFETCH(ChangeInfo, change);
    QFETCH(bool, differs);
    QCOMPARE(changedDiffers(sampleInfo(), change), differs);
}

void TestTransmittedDataInfo::sharedSignalsAreEqualAtOnce()
{
    TransmittedDataInfo info = sampleInfo();
    info.signals[0].viewRange = notANumber;
    const TransmittedDataInfo copy = info;
    QVERIFY(info == copy);
    TransmittedDataInfo detached = info;
    detached.signals.detach();
    QVERIFY(info != detached);
}

void TestTransmittedDataInfo::copiesAndMoves()
{
    TransmittedDataInfo info = sampleInfo();
    TransmittedDataInfo copy = info;
    copy.signals[0].index = 12;
    QCOMPARE(info.signals.at(0).index, 4);

    const TransmittedDataInfo moved = std::move(copy);
    QCOMPARE(moved.signals.at(0).index, 12);
    QCOMPARE(moved.datarate, 2500.0);
    info = TransmittedDataInfo();
    QCOMPARE(info.datarate, -1.0);
    QVERIFY(info.signalList().isEmpty());
}

QTEST_GUILESS_MAIN(TestTransmittedDataInfo)
#include "tst_transmitteddatainfo.moc"
