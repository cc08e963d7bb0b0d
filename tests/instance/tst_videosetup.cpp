// SPDX-License-Identifier: MIT
#include "modesbench.h"

#include <QtTest>

using namespace SondixQt;
using namespace modesbench;

namespace {

QStringList namesOf(const QMap<int, QString> &videoSignals)
{
    return videoSignals.values();
}

QVector<VideoInfo> described(SensorInstance &sensor)
{
    TransmittedDataInfo info;
    if (sensor.transmittedDataInfo(info) != NoError)
        QTest::qFail("no description", __FILE__, __LINE__);
    return info.videoSignals;
}

} // namespace

/// The video properties of a model after open().
class VideoSetupTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void nothingIsKnownBeforeTheSensorIsOpen();
    void videoOfEveryType_data();
    void videoOfEveryType();
    void signalsOfEveryType_data();
    void signalsOfEveryType();
    void lineOfMC340FollowsFromItsRange_data();
    void lineOfMC340FollowsFromItsRange();
    void unansweredRangeLeavesTheSignalsUnset();
    void unansweredRangeKeepsTheSignalsOfTheLastSensor();

    void networkIsRecognizedInCapitalLetters();
    void modelWithoutVideoLeavesTheListAndTheNames();
    void unchangedThresholdNames_data();
    void unchangedThresholdNames();
    void modelWithoutRegionNameKeepsTheLastOne();
    void channelCountStaysWithModelsThatDoNotSetIt();
    void listFollowsTheModel();

    void fileSupportsWhatItsProtocolHolds();
    void videoCanBeSaidToBeTransmitted();
    void pixelCountIsReplacedEverywhere();
    void videoModeIsEnabledOnSwitchedModels_data();
    void videoModeIsEnabledOnSwitchedModels();
    void videoModeNeedsNothingOnOtherModels_data();
    void videoModeNeedsNothingOnOtherModels();
    void flagsAreTheModelsUntilTheDataAreDescribed();
    void videoNeedsItsModeAndANewDescription();
    void refusedVideoModeIsNotEnabled();
    void videoModeThatCannotBeStagedIsNotSet();
};

void VideoSetupTest::nothingIsKnownBeforeTheSensorIsOpen()
{
    load({CC430});
    const SensorInstance sensor(CC430);
    QVERIFY(!sensor.isVideoSupported());
    QVERIFY(!sensor.supportsVideoStreamMode());
    QVERIFY(!sensor.isVideoModeEnabled());
    QVERIFY(!sensor.isVideoTransmitted());
    QVERIFY(!sensor.isThresholdSupported());
    QVERIFY(!sensor.isROISupported());
    QCOMPARE(sensor.GetThresholdCommandName(), QString());
    QCOMPARE(sensor.GetROICommandName(), QString());
    QCOMPARE(sensor.getVideoResolution(), 0);
    QCOMPARE(sensor.getVideoSignalPixelCount(), 0);
    QCOMPARE(sensor.getAvailableVideoSignals(nullptr), 0);
    QCOMPARE(sensor.getEnabledVideoSignals(nullptr), 0);
    QCOMPARE(sensor.getAvailableVideoSignalCount(), 0);
    QCOMPARE(sensor.getEnabledVideoSignalCount(), 0);
    QString parameter = "old";
    QVERIFY(!sensor.getBinaryVideoParam(parameter, 0));
    QCOMPARE(parameter, "old");
    QCOMPARE(sensor.getChannelCount(), 1);
}

void VideoSetupTest::videoOfEveryType_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<bool>("ethernet");
    QList<int> codes = models().keys();
    codes << 10000 + CC430 << 10000 + TX280;
    for (const int code : qAsConst(codes)) {
        QTest::newRow(qPrintable(QString("%1 in the network").arg(code))) << code << true;
        QTest::newRow(qPrintable(QString("%1 at a serial line").arg(code))) << code << false;
    }
}

void VideoSetupTest::videoOfEveryType()
{
    QFETCH(int, code);
    QFETCH(bool, ethernet);
    load({code});
    const reference::Video *video = reference::video(code);
    const int flags = video ? video->flags : 0;
    Sensor sensor(code, ethernet ? Ethernet : Serial);

    QCOMPARE(sensor->isVideoSupported(), (video && ethernet) || (flags & reference::AnyInterface));
    QCOMPARE(sensor->supportsVideoStreamMode(), bool(flags & reference::Stream));
    QCOMPARE(sensor->isVideoModeEnabled(), bool(flags & reference::VideoMode));
    QCOMPARE(sensor->isVideoTransmitted(), bool(flags & reference::Transmitted));
    QCOMPARE(sensor->isThresholdSupported(), bool(flags & reference::Threshold));
    QCOMPARE(sensor->isROISupported(), bool(flags & reference::Roi));
    QCOMPARE(sensor->GetThresholdCommandName(), video ? QString::fromLatin1(video->threshold) : QString());
    QCOMPARE(sensor->GetROICommandName(), video ? QString::fromLatin1(video->roi) : QString());
    QCOMPARE(sensor->getVideoResolution(), video ? video->resolution : 0);
    QCOMPARE(sensor->getVideoSignalPixelCount(), !video ? 0 : code == MC340 ? 768 : video->pixels);
    QCOMPARE(sensor->getChannelCount(), video && video->channels != 0 ? video->channels : 1);
    QCOMPARE(sensor->getEnabledVideoSignalCount(), 0);
}

void VideoSetupTest::signalsOfEveryType_data()
{
    QTest::addColumn<int>("code");
    for (const int code : models().keys())
        QTest::newRow(QByteArray::number(code).constData()) << code;
    QTest::newRow("bus variant of CC430") << 10026;
}

void VideoSetupTest::signalsOfEveryType()
{
    QFETCH(int, code);
    load({code});
    const reference::Video *video = reference::video(code);
    const int count = video ? video->stems.size() : 0;
    Sensor sensor(code);

    QMap<int, QString> names = {{77, "kept"}};
    QCOMPARE(sensor->getAvailableVideoSignals(&names), count);
    QCOMPARE(sensor->getAvailableVideoSignals(nullptr), count);
    QCOMPARE(sensor->getAvailableVideoSignalCount(), count);
    QCOMPARE(names.take(77), "kept");
    QCOMPARE(namesOf(names), video ? reference::prefixed("OutputVideo", video->stems) : QStringList());
    if (count > 0) {
        QCOMPARE(names.firstKey(), 0);
        QCOMPARE(names.lastKey(), count - 1);
    }

    const QVector<VideoInfo> infos = described(*sensor);
    QCOMPARE(infos.size(), count);
    for (int position = 0; position < count; ++position) {
        const VideoInfo &info = infos.at(position);
        QCOMPARE(info.index, 0);
        QCOMPARE(info.outputStem, "OutputVideo" + video->stems.at(position));
        QCOMPARE(info.answerParameter, "SA_Video" + video->answers.at(position));
        QCOMPARE(info.pixelCount, code == MC340 ? 768 : video->pixels);
        QCOMPARE(info.pixelSize, 2);
    }
}

void VideoSetupTest::lineOfMC340FollowsFromItsRange_data()
{
    QTest::addColumn<QString>("pairs");
    QTest::addColumn<int>("pixels");
    QTest::newRow("short range") << "SA_Range=46.0" << 768;
    QTest::newRow("long range") << "SA_Range=98.0" << 1536;
    QTest::newRow("no range") << "SA_Range=0.0" << 1536;
    QTest::newRow("almost the short range") << "SA_Range=46.000001" << 1536;
}

void VideoSetupTest::lineOfMC340FollowsFromItsRange()
{
    QFETCH(QString, pairs);
    QFETCH(int, pixels);
    load({MC340});
    scriptAnswer("Get_Info", pairs.toLatin1().constData());
    Sensor sensor(MC340);
    QCOMPARE(sensor->getVideoSignalPixelCount(), pixels);
    const QVector<VideoInfo> infos = described(*sensor);
    QCOMPARE(infos.size(), 3);
    for (const VideoInfo &info : infos)
        QCOMPARE(info.pixelCount, pixels);
}

void VideoSetupTest::unansweredRangeLeavesTheSignalsUnset()
{
    load({MC340});
    scriptAnswer("Get_Info", "SA_Other=1");
    SensorInstance sensor(MC340);
    QVERIFY(sensor.open(parameters(MC340, Serial)) != NoError);
    QCOMPARE(sensor.getAvailableVideoSignalCount(), 0);
    QCOMPARE(sensor.getVideoSignalPixelCount(), 0);
    QCOMPARE(sensor.getVideoResolution(), 0);
    QCOMPARE(sensor.GetThresholdCommandName(), QString());
    QCOMPARE(sensor.GetROICommandName(), QString());
    QVERIFY(!sensor.isThresholdSupported());
    QVERIFY(!sensor.isVideoModeEnabled());
    // The defaults that were set before the query remain.
    QVERIFY(sensor.supportsVideoStreamMode());
    QVERIFY(sensor.isVideoSupported());
    QVERIFY(sensor.isVideoTransmitted());
    QVERIFY(sensor.isROISupported());
}

void VideoSetupTest::unansweredRangeKeepsTheSignalsOfTheLastSensor()
{
    load({CC430, MC340});
    Sensor sensor(CC430);
    *sensor = SensorInstance(MC340);
    scriptCommandFailure("Get_Info", -51);
    QCOMPARE(int(sensor->open(parameters(MC340, Ethernet))), -51);
    QCOMPARE(sensor->getAvailableVideoSignalCount(), 5);
    QCOMPARE(sensor->getVideoResolution(), 16384);
}

void VideoSetupTest::networkIsRecognizedInCapitalLetters()
{
    load({CC430});
    Sensor sensor(CC430);
    sensor->storeInterfaceParameters({{"IP_Interface", "tcp/ip"}});
    QVERIFY(!sensor->isVideoSupported());
    sensor->storeInterfaceParameters({{"IP_Interface", "fast TCP/IP"}});
    QVERIFY(sensor->isVideoSupported());
    sensor->storeInterfaceParameters({});
    QVERIFY(!sensor->isVideoSupported());
}

void VideoSetupTest::modelWithoutVideoLeavesTheListAndTheNames()
{
    load({CC430, TX270});
    Sensor sensor(CC430);
    sensor.become(TX270);
    QCOMPARE(sensor->getAvailableVideoSignalCount(), 5);
    QCOMPARE(sensor->getVideoResolution(), 16384);
    QCOMPARE(sensor->getVideoSignalPixelCount(), 512);
    QCOMPARE(sensor->GetThresholdCommandName(), "Threshold");
    QCOMPARE(sensor->GetROICommandName(), "ROI");
    QVERIFY(!sensor->isVideoSupported());
    QVERIFY(!sensor->supportsVideoStreamMode());
    QVERIFY(!sensor->isVideoModeEnabled());
    QVERIFY(!sensor->isVideoTransmitted());
    QVERIFY(!sensor->isThresholdSupported());
    QVERIFY(!sensor->isROISupported());
}

void VideoSetupTest::unchangedThresholdNames_data()
{
    QTest::addColumn<int>("before");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("threshold");
    QTest::newRow("TX290 after CC430") << int(CC430) << int(TX290) << "Threshold";
    QTest::newRow("TX310 after CC470") << int(CC470) << int(TX310) << "MinimumThreshold";
    QTest::newRow("TX290 after TX280") << int(TX280) << int(TX290) << QString();
    QTest::newRow("TX280 has an empty one") << int(CC470) << int(TX280) << QString();
    QTest::newRow("CC430 after CC470") << int(CC470) << int(CC430) << "Threshold";
}

void VideoSetupTest::unchangedThresholdNames()
{
    QFETCH(int, before);
    QFETCH(int, code);
    load({before, code});
    Sensor sensor(before);
    sensor.become(code);
    QTEST(sensor->GetThresholdCommandName(), "threshold");
}

void VideoSetupTest::modelWithoutRegionNameKeepsTheLastOne()
{
    load({TX240, CC470});
    Sensor sensor(CC470);
    sensor.become(TX240);
    QCOMPARE(sensor->GetROICommandName(), "ROI");
    QVERIFY(!sensor->isROISupported());
    QCOMPARE(sensor->GetThresholdCommandName(), "Threshold");
    QVERIFY(!sensor->isThresholdSupported());
}

void VideoSetupTest::channelCountStaysWithModelsThatDoNotSetIt()
{
    load({TX270, TX280, CC480, WI610});
    Sensor sensor(CC480);
    QCOMPARE(sensor->getChannelCount(), 2);
    sensor.become(TX280);
    QCOMPARE(sensor->getChannelCount(), 2);
    sensor.become(TX270);
    QCOMPARE(sensor->getChannelCount(), 2);
    sensor.become(WI610);
    QCOMPARE(sensor->getChannelCount(), 1);
}

void VideoSetupTest::listFollowsTheModel()
{
    load({TX260, CC480});
    Sensor sensor(CC480);
    sensor.become(TX260);
    QMap<int, QString> names;
    QCOMPARE(sensor->getAvailableVideoSignals(&names), 2);
    QCOMPARE(namesOf(names), QStringList({"OutputVideoRaw", "OutputVideoCorr"}));
    sensor.become(CC480);
    QCOMPARE(sensor->getAvailableVideoSignals(&names), 6);
    QCOMPARE(names.value(5), "OutputVideoLight_Ch2");
}

void VideoSetupTest::fileSupportsWhatItsProtocolHolds()
{
    SensorInstance file(File);
    QVERIFY(!file.isVideoSupported());
    file.setProtocolVideo(true);
    QVERIFY(file.isVideoSupported());
    file.setProtocolVideo(false);
    QVERIFY(!file.isVideoSupported());

    load({CC430});
    Sensor sensor(CC430, Serial);
    sensor->setProtocolVideo(true);
    QVERIFY(!sensor->isVideoSupported());
}

void VideoSetupTest::videoCanBeSaidToBeTransmitted()
{
    SensorInstance file(File);
    file.setVideoTransmitted(true);
    QVERIFY(file.isVideoTransmitted());
    file.setVideoTransmitted(false);
    QVERIFY(!file.isVideoTransmitted());
}

void VideoSetupTest::pixelCountIsReplacedEverywhere()
{
    load({TX260});
    Sensor sensor(TX260);
    sensor->SetVideoPixelCount(640);
    QCOMPARE(sensor->getVideoSignalPixelCount(), 640);
    const QVector<VideoInfo> infos = described(*sensor);
    QCOMPARE(infos.size(), 2);
    for (const VideoInfo &info : infos)
        QCOMPARE(info.pixelCount, 640);
}

void VideoSetupTest::videoModeIsEnabledOnSwitchedModels_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<int>("mode");
    QTest::newRow("TX260") << int(TX260) << 3;
    QTest::newRow("bus variant of TX260") << 10000 + TX260 << 3;
    for (const int code : {26, 30, 39, 44, 10026})
        QTest::newRow(QByteArray::number(code).constData()) << code << 4;
}

void VideoSetupTest::videoModeIsEnabledOnSwitchedModels()
{
    QFETCH(int, code);
    QFETCH(int, mode);
    load({code});
    Sensor sensor(code);
    scriptAnswer("Get_MeasureMode", "SA_MeasureMode=0");
    described(*sensor);
    QVERIFY(!sensor->isVideoModeEnabled());
    QString errorText = "old";
    CallRecorder recorder;
    QCOMPARE(sensor->enableVideoMode(&errorText), NoError);
    QCOMPARE(recorder.take(), writeInt("Set_MeasureMode", "SP_MeasureMode", mode));
    QCOMPARE(errorText, QString());
    QVERIFY(sensor->isVideoModeEnabled());
}

void VideoSetupTest::videoModeNeedsNothingOnOtherModels_data()
{
    QTest::addColumn<int>("code");
    for (const int code : models().keys()) {
        if (code != 26 && code != 29 && code != 30 && code != 39 && code != 44)
            QTest::newRow(QByteArray::number(code).constData()) << code;
    }
    QTest::newRow("file") << int(File);
    QTest::newRow("no sensor") << int(NoSensor);
}

void VideoSetupTest::videoModeNeedsNothingOnOtherModels()
{
    QFETCH(int, code);
    load({});
    SensorInstance sensor{SensorType(code)};
    QString errorText = "old";
    CallRecorder recorder;
    QCOMPARE(sensor.enableVideoMode(&errorText), NoError);
    QCOMPARE(recorder.take(), QStringList());
    QCOMPARE(errorText, "old");
    QVERIFY(!sensor.isVideoModeEnabled());
}

void VideoSetupTest::flagsAreTheModelsUntilTheDataAreDescribed()
{
    load({TX260}); // in a mode that measures distances
    Sensor sensor(TX260);
    QVERIFY(sensor->isVideoModeEnabled());
    QVERIFY(!sensor->isMeasModeEnabled());
    TransmittedDataInfo info;
    QCOMPARE(sensor->transmittedDataInfo(info), NoError);
    QVERIFY(!sensor->isVideoModeEnabled());
    QVERIFY(sensor->isMeasModeEnabled());
}

void VideoSetupTest::videoNeedsItsModeAndANewDescription()
{
    load({CC430});
    Sensor sensor(CC430);
    QCOMPARE(sensor->enableVideoSignal(0, 1), NoError);
    TransmittedDataInfo info;
    QCOMPARE(sensor->transmittedDataInfo(info), NoError);
    QVERIFY(info.videoSignals.at(0).enabled);
    QString line;
    QVERIFY(!sensor->getBinaryVideoParam(line, 0));
    QCOMPARE(sensor->enableVideoMode(), NoError);
    QVERIFY(!sensor->getBinaryVideoParam(line, 0));

    QCOMPARE(sensor->transmittedDataInfo(info), NoError);
    QVERIFY(sensor->getBinaryVideoParam(line, 0));
    QByteArray pixels;
    QCOMPARE(sensor->sendCommand("Get_Video", {}, {{line, SensorInstance::resultPointer(&pixels)}}), NoError);
    const VideoInfo &video = info.videoSignals.at(0);
    QCOMPARE(video.index, 0);
    QCOMPARE(video.pixelSize, 2);
    QCOMPARE(pixels.size(), video.pixelCount * video.pixelSize);
}

void VideoSetupTest::refusedVideoModeIsNotEnabled()
{
    load({CC430});
    Sensor sensor(CC430);
    scriptCommandFailure("Set_MeasureMode", -52, "not now");
    QString errorText;
    QCOMPARE(int(sensor->enableVideoMode(&errorText)), -52);
    QCOMPARE(errorText, "not now");
    QVERIFY(!sensor->isVideoModeEnabled());
}

void VideoSetupTest::videoModeThatCannotBeStagedIsNotSet()
{
    load({CC430});
    Sensor sensor(CC430);
    scriptParameterFailure("SP_MeasureMode", -53, "no room");
    QString errorText;
    CallRecorder recorder;
    QCOMPARE(int(sensor->enableVideoMode(&errorText)), -53);
    QCOMPARE(errorText, "no room");
    QCOMPARE(withoutErrorTexts(recorder.take()), QStringList(setInt("SP_MeasureMode", 4)));
    QVERIFY(!sensor->isVideoModeEnabled());
}

QTEST_GUILESS_MAIN(VideoSetupTest)
#include "tst_videosetup.moc"
