// SPDX-License-Identifier: MIT
#include "modesbench.h"

#include <QSignalSpy>
#include <QtTest>

using namespace SondixQt;
using namespace modesbench;

namespace {

TransmittedDataInfo describe(SensorInstance &sensor)
{
    TransmittedDataInfo info;
    if (sensor.transmittedDataInfo(info) != NoError)
        QTest::qFail("no description", __FILE__, __LINE__);
    return info;
}

/// The calls of a description without those that ask for the frame.
QStringList videoCalls(QStringList calls)
{
    const int frame = calls.indexOf(QRegularExpression(name("GetParameters\\(\\d+\\)")));
    return calls.mid(frame + 1);
}

QStringList binaryNames(const SensorInstance &sensor)
{
    QStringList names;
    QString parameter;
    while (sensor.getBinaryVideoParam(parameter, names.size()))
        names.append(parameter);
    return names;
}

QList<int> enabledPositions(const SensorInstance &sensor)
{
    QMap<int, QString> names;
    sensor.getEnabledVideoSignals(&names);
    return names.keys();
}

/// An answer that holds all video switches of \a code: \a on are those that are on.
std::string switches(int code, const char *suffix, const QList<int> &on)
{
    QString pairs;
    int position = 0;
    for (const QString &stem : reference::video(code)->stems)
        pairs += name("SA_OutputVideo%1%2=%3 ").arg(stem, name(suffix)).arg(int(on.contains(position++)));
    return pairs.toStdString();
}

} // namespace

/// Which video signals a sensor sends, and how they are switched.
class VideoSignalsTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void switchesOfEveryType_data();
    void switchesOfEveryType();
    void sensorWithoutVideoIsNotAsked();
    void networkVideoIsNotAskedForAtASerialLine();
    void enabledSignalsKeepTheirPositions();
    void unreadableSwitchIsOff();
    void unansweredSwitchesAreOff();
    void streamModes_data();
    void streamModes();
    void exclusiveModes_data();
    void exclusiveModes();
    void signalOfTX240FollowsTheApplication();
    void switchesDoNotReachTheSignalOfTX240();

    void transmittedSignalsNeedVideoMode();
    void transmittedSignalsAreThoseOfTheLastDescription();
    void descriptionHoldsAllSignals();
    void failedDescriptionAsksForNoVideo();
    void lossOfVideoEmptiesTheTransmittedSignals();
    void answersOfTransmittedSignals_data();
    void answersOfTransmittedSignals();

    void signalIsSwitched_data();
    void signalIsSwitched();
    void signalOfTX240CannotBeSwitched_data();
    void signalOfTX240CannotBeSwitched();
    void positionsOutsideTheListDoNothing_data();
    void positionsOutsideTheListDoNothing();
    void switchIsOnlyStagedWhereItCannotBeWritten();
    void switchThatCannotBeStagedIsNotWritten();
    void refusedSwitchIsReported();
    void busVariantHasNoSignals();
};

void VideoSignalsTest::switchesOfEveryType_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<bool>("ethernet");
    for (const int code : {26, 29, 30, 37, 39, 42, 44, 46, 47, 51, 55, 58, 59, 62, 63}) {
        QTest::newRow(qPrintable(name("%1 in the network").arg(code))) << code << true;
        if (reference::video(code)->flags & reference::AnyInterface)
            QTest::newRow(qPrintable(name("%1 at a serial line").arg(code))) << code << false;
    }
}

void VideoSignalsTest::switchesOfEveryType()
{
    QFETCH(int, code);
    QFETCH(bool, ethernet);
    load({code});
    const reference::Video *video = reference::video(code);
    const char *suffix = ethernet ? "_ETH" : "_RS422";
    Sensor sensor(code, ethernet ? Ethernet : Serial);
    const QString command = name("Get_%1%2").arg(name(video->outputStem), name(suffix));
    const int last = video->stems.size() - 1;
    answer(command.toLatin1().constData(), switches(code, suffix, {last}).c_str());

    CallRecorder recorder;
    const TransmittedDataInfo info = describe(*sensor);
    QStringList expected;
    if (code == 26 || code == 29 || code == 30 || code == 39 || code == 44)
        expected += askInt("Get_MeasureMode", "SA_MeasureMode");
    expected += commandCalls(command);
    for (const QString &stem : video->stems)
        expected += getInt(name("SA_OutputVideo") + stem + name(suffix));
    QCOMPARE(videoCalls(recorder.take()), expected);

    QCOMPARE(sensor->getEnabledVideoSignalCount(), 1);
    QCOMPARE(enabledPositions(*sensor), QList<int>{last});
    QCOMPARE(info.videoSignalCount, video->stems.size());
    for (int position = 0; position <= last; ++position)
        QCOMPARE(info.videoSignals.at(position).enabled, position == last);
}

void VideoSignalsTest::sensorWithoutVideoIsNotAsked()
{
    load({41});
    Sensor sensor(41);
    CallRecorder recorder;
    const TransmittedDataInfo info = describe(*sensor);
    QCOMPARE(videoCalls(recorder.take()), QStringList());
    QCOMPARE(info.videoSignalCount, 0);
    QVERIFY(info.videoSignals.isEmpty());
}

void VideoSignalsTest::networkVideoIsNotAskedForAtASerialLine()
{
    load({26});
    answer("Get_MeasureMode", "SA_MeasureMode=4");
    answer("Get_OutputVideo_RS422", switches(26, "_RS422", {0, 1, 2, 3, 4}).c_str());
    Sensor sensor(26, Serial);
    CallRecorder recorder;
    describe(*sensor);
    QCOMPARE(videoCalls(recorder.take()), askInt("Get_MeasureMode", "SA_MeasureMode"));
    QVERIFY(sensor->isVideoModeEnabled());
    QCOMPARE(sensor->getEnabledVideoSignalCount(), 0);
}

void VideoSignalsTest::enabledSignalsKeepTheirPositions()
{
    load({47});
    answer("Get_Output_ETH", switches(47, "_ETH", {1, 4}).c_str());
    Sensor sensor(47);
    describe(*sensor);
    QMap<int, QString> names = {{9, name("kept")}};
    QCOMPARE(sensor->getEnabledVideoSignals(&names), 2);
    QCOMPARE(names, (QMap<int, QString>{
                        {1, name("OutputVideoDark_Ch1")}, {4, name("OutputVideoDark_Ch2")}, {9, name("kept")}}));
    QCOMPARE(sensor->getEnabledVideoSignals(nullptr), 2);
    QCOMPARE(sensor->getEnabledVideoSignalCount(), 2);
}

void VideoSignalsTest::unreadableSwitchIsOff()
{
    load({37});
    answer("Get_OutputVideo_ETH", switches(37, "_ETH", {0, 1, 2}).c_str());
    failParameter("SA_OutputVideoLight_ETH", -61);
    Sensor sensor(37);
    QSignalSpy messages(&*sensor, &SensorInstance::errorMessage);
    QString errorText = name("old");
    TransmittedDataInfo info;
    QCOMPARE(sensor->transmittedDataInfo(info, &errorText), NoError);
    QCOMPARE(enabledPositions(*sensor), (QList<int>{0, 2}));
    QCOMPARE(sensor->getEnabledVideoSignalCount(), 2);
    // Told by the signal alone.
    QCOMPARE(messages.size(), 1);
    QCOMPARE(errorText, QString());
}

void VideoSignalsTest::unansweredSwitchesAreOff()
{
    load({37});
    const int on = answer("Get_OutputVideo_ETH", switches(37, "_ETH", {0, 1, 2}).c_str());
    Sensor sensor(37);
    describe(*sensor);
    QCOMPARE(sensor->getEnabledVideoSignalCount(), 3);
    sondixsim::removeFault(on);
    failCommand("Get_OutputVideo_ETH", -62);
    CallRecorder recorder;
    describe(*sensor);
    QCOMPARE(withoutErrorTexts(videoCalls(recorder.take())), commandCalls(name("Get_OutputVideo_ETH")));
    QCOMPARE(sensor->getEnabledVideoSignalCount(), 0);
    QCOMPARE(enabledPositions(*sensor), QList<int>());
}

void VideoSignalsTest::streamModes_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<int>("mode");
    QTest::addColumn<int>("error");
    QTest::addColumn<bool>("videoBefore"); // along with measuring
    QTest::addColumn<bool>("video");
    QTest::addColumn<bool>("measuring");
    for (const int code : {26, 30, 39, 44}) {
        const auto add = [code](const char *what, int mode, int error, bool before, bool video, bool measuring) {
            QTest::newRow(qPrintable(name("%1: %2").arg(code).arg(name(what))))
                << code << mode << error << before << video << measuring;
        };
        add("video along with the values", 4, 0, false, true, true);
        add("neither", 2, 0, true, false, false);
        add("distance", 0, 0, true, false, true);
        add("thickness", 1, 0, false, false, true);
        add("unknown mode", 17, 0, true, false, true);
        add("no mode, off before", -1, 0, false, false, false);
        add("no mode, on before", -1, 0, true, true, true);
        add("failure with mode 4", 4, -63, false, false, false);
        add("failure with mode 2", 2, -63, true, true, true);
        add("failure with mode 0, off before", 0, -63, false, false, false);
        add("failure with mode 0, on before", 0, -63, true, true, true);
    }
}

void VideoSignalsTest::streamModes()
{
    QFETCH(int, code);
    QFETCH(int, mode);
    QFETCH(int, error);
    QFETCH(bool, videoBefore);
    load({code});
    Sensor sensor(code);
    if (videoBefore) {
        const int before = answer("Get_MeasureMode", "SA_MeasureMode=4");
        describe(*sensor);
        sondixsim::removeFault(before);
    }
    QCOMPARE(sensor->isVideoModeEnabled(), videoBefore);
    QCOMPARE(sensor->isMeasModeEnabled(), videoBefore);

    sondixsim::Fault fault;
    fault.command = "Get_MeasureMode";
    fault.answer = name("SA_MeasureMode=%1").arg(mode).toStdString();
    fault.code = error;
    sondixsim::inject(fault);
    describe(*sensor);
    QTEST(sensor->isVideoModeEnabled(), "video");
    QTEST(sensor->isMeasModeEnabled(), "measuring");
}

void VideoSignalsTest::exclusiveModes_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<int>("error");
    QTest::addColumn<bool>("video");
    QTest::newRow("video") << 3 << 0 << true;
    QTest::newRow("distance diffuse") << 0 << 0 << false;
    QTest::newRow("thickness") << 2 << 0 << false;
    QTest::newRow("mode of another model") << 4 << 0 << false;
    QTest::newRow("no mode") << -1 << 0 << false;
    QTest::newRow("failure with mode 3") << 3 << -64 << false;
    QTest::newRow("failure") << 0 << -64 << false;
}

void VideoSignalsTest::exclusiveModes()
{
    QFETCH(int, mode);
    QFETCH(int, error);
    QFETCH(bool, video);
    load({29});
    Sensor sensor(29);
    QVERIFY(sensor->isVideoModeEnabled());
    sondixsim::Fault fault;
    fault.command = "Get_MeasureMode";
    fault.answer = name("SA_MeasureMode=%1").arg(mode).toStdString();
    fault.code = error;
    sondixsim::inject(fault);
    describe(*sensor);
    QCOMPARE(sensor->isVideoModeEnabled(), video);
    QCOMPARE(sensor->isMeasModeEnabled(), !video);
}

void VideoSignalsTest::signalOfTX240FollowsTheApplication()
{
    load({23});
    Sensor sensor(23);
    CallRecorder recorder;
    describe(*sensor);
    QCOMPARE(videoCalls(recorder.take()), QStringList());
    QCOMPARE(sensor->getEnabledVideoSignalCount(), 0);
    sensor->setVideoTransmitted(true);
    QVERIFY(describe(*sensor).videoSignals.at(0).enabled);
    QCOMPARE(sensor->getEnabledVideoSignalCount(), 1);
    QCOMPARE(binaryNames(*sensor), QStringList(name("SA_VideoSignal")));
    sensor->setVideoTransmitted(false);
    QVERIFY(!describe(*sensor).videoSignals.at(0).enabled);
    QCOMPARE(sensor->getEnabledVideoSignalCount(), 0);
}

void VideoSignalsTest::switchesDoNotReachTheSignalOfTX240()
{
    // The switches are those of the model that was open before.
    load({23, 37});
    answer("Get_OutputVideo_ETH", switches(37, "_ETH", {0, 1, 2}).c_str());
    Sensor sensor(37);
    *sensor = SensorInstance(TX240);
    sensor->setVideoTransmitted(false);
    CallRecorder recorder;
    sensor->setMeasurementMode(0);
    const QStringList calls = withoutErrorTexts(recorder.take());
    QVERIFY(calls.contains(name("SetParameterString(\"S_Command\", \"Get_OutputVideo_ETH\")")));
    QVERIFY(calls.contains(getInt(name("SA_OutputVideoRaw_ETH"))));
    QCOMPARE(sensor->getEnabledVideoSignalCount(), 0);
    sensor->setVideoTransmitted(true);
    sensor->setMeasurementMode(0);
    QCOMPARE(enabledPositions(*sensor), QList<int>{0});
}

void VideoSignalsTest::transmittedSignalsNeedVideoMode()
{
    load({26});
    answer("Get_OutputVideo_ETH", switches(26, "_ETH", {0, 2}).c_str());
    Sensor sensor(26);
    const TransmittedDataInfo info = describe(*sensor);
    QVERIFY(!sensor->isVideoModeEnabled());
    QCOMPARE(sensor->getEnabledVideoSignalCount(), 2);
    QCOMPARE(info.videoSignals.size(), 5);
    QCOMPARE(binaryNames(*sensor), QStringList());
}

void VideoSignalsTest::transmittedSignalsAreThoseOfTheLastDescription()
{
    load({26});
    answer("Get_OutputVideo_ETH", switches(26, "_ETH", {0, 2}).c_str());
    Sensor sensor(26);
    describe(*sensor);
    QCOMPARE(sensor->setMeasurementMode(4), NoError);
    QVERIFY(sensor->isVideoModeEnabled());
    QCOMPARE(binaryNames(*sensor), QStringList());
    describe(*sensor);
    QCOMPARE(binaryNames(*sensor), QStringList({name("SA_VideoRaw"), name("SA_VideoLight")}));
    QString parameter = name("old");
    for (const int position : {-1, 2, 5, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()})
        QVERIFY(!sensor->getBinaryVideoParam(parameter, position));
    QCOMPARE(parameter, name("old"));
}

void VideoSignalsTest::descriptionHoldsAllSignals()
{
    load({29});
    answer("Get_OutputVideo_ETH", switches(29, "_ETH", {1}).c_str());
    Sensor sensor(29);
    const TransmittedDataInfo info = describe(*sensor);
    QCOMPARE(info.videoSignalCount, 2);
    QCOMPARE(info.videoSignals.size(), 2);
    QVERIFY(!info.videoSignals.at(0).enabled);
    QVERIFY(info.videoSignals.at(1).enabled);
    QCOMPARE(info.videoSignals.at(1).answerParameter, name("SA_VideoCorr"));
}

void VideoSignalsTest::failedDescriptionAsksForNoVideo()
{
    load({37});
    answer("Get_OutputVideo_ETH", switches(37, "_ETH", {0}).c_str());
    Sensor sensor(37);
    describe(*sensor);
    failCommand("Get_TransmittedDataInfo", -65);
    TransmittedDataInfo info;
    CallRecorder recorder;
    QCOMPARE(int(sensor->transmittedDataInfo(info)), -65);
    QCOMPARE(withoutErrorTexts(recorder.take()), commandCalls(name("Get_TransmittedDataInfo")));
    QCOMPARE(binaryNames(*sensor), QStringList(name("SA_VideoRaw")));
}

void VideoSignalsTest::lossOfVideoEmptiesTheTransmittedSignals()
{
    load({37, 41});
    answer("Get_OutputVideo_ETH", switches(37, "_ETH", {0, 1}).c_str());
    Sensor sensor(37);
    describe(*sensor);
    QCOMPARE(binaryNames(*sensor).size(), 2);
    sensor.become(41);
    QCOMPARE(binaryNames(*sensor).size(), 2);
    const TransmittedDataInfo info = describe(*sensor);
    QCOMPARE(binaryNames(*sensor), QStringList());
    // The list of the last model is not touched by one that has none of its own,
    QCOMPARE(info.videoSignalCount, 3);
    QCOMPARE(enabledPositions(*sensor), (QList<int>{0, 1}));
    QCOMPARE(sensor->getEnabledVideoSignalCount(), 2);
    // but by its modes: the switches are cleared, not counted again.
    QCOMPARE(sensor->setMeasurementMode(0), NoError);
    QCOMPARE(enabledPositions(*sensor), QList<int>());
    QCOMPARE(sensor->getEnabledVideoSignalCount(), 2);
}

void VideoSignalsTest::answersOfTransmittedSignals_data()
{
    QTest::addColumn<int>("code");
    for (const int code : {29, 37, 42, 46, 47, 51, 55, 58, 59, 62, 63, 26, 30, 39, 44})
        QTest::newRow(QByteArray::number(code).constData()) << code;
}

void VideoSignalsTest::answersOfTransmittedSignals()
{
    QFETCH(int, code);
    load({code});
    const reference::Video *video = reference::video(code);
    const QString command = name("Get_%1_ETH").arg(name(video->outputStem));
    answer(command.toLatin1().constData(), switches(code, "_ETH", {0, 1, 2, 3, 4, 5}).c_str());
    Sensor sensor(code);
    answer("Get_MeasureMode", code == 29 ? "SA_MeasureMode=3" : "SA_MeasureMode=4");
    describe(*sensor);
    QCOMPARE(binaryNames(*sensor), reference::prefixed("SA_Video", video->answers));
}

void VideoSignalsTest::signalIsSwitched_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<bool>("ethernet");
    QTest::addColumn<int>("position");
    QTest::addColumn<int>("value");
    QTest::addColumn<QString>("parameter");
    QTest::addColumn<QString>("command");
    const QString outputVideo = name("Update_OutputVideo_ETH");
    QTest::newRow("first on") << 26 << true << 0 << 1 << name("SP_OutputVideoRaw_ETH") << outputVideo;
    QTest::newRow("last off") << 26 << true << 4 << 0 << name("SP_OutputVideoLightTable_ETH") << outputVideo;
    QTest::newRow("other stem") << 47 << true << 3 << 1 << name("SP_OutputVideoRaw_Ch2_ETH")
                                << name("Update_Output_ETH");
    QTest::newRow("serial") << 42 << false << 0 << 1 << name("SP_OutputVideoRaw_RS422")
                            << name("Update_Output_RS422");
    QTest::newRow("MC340") << 37 << true << 1 << 1 << name("SP_OutputVideoLight_ETH") << outputVideo;
}

void VideoSignalsTest::signalIsSwitched()
{
    QFETCH(int, code);
    QFETCH(bool, ethernet);
    QFETCH(int, position);
    QFETCH(int, value);
    QFETCH(QString, parameter);
    QFETCH(QString, command);
    load({code});
    Sensor sensor(code, ethernet ? Ethernet : Serial);
    QString errorText = name("old");
    CallRecorder recorder;
    QCOMPARE(sensor->enableVideoSignal(position, value, &errorText), NoError);
    QCOMPARE(recorder.take(), QStringList(setInt(parameter, value)) + commandCalls(command));
    QCOMPARE(errorText, QString());
    // Known only when the sensor is asked again.
    QCOMPARE(sensor->getEnabledVideoSignalCount(), 0);
    describe(*sensor);
    QCOMPARE(enabledPositions(*sensor), value != 0 ? QList<int>{position} : QList<int>());
}

void VideoSignalsTest::signalOfTX240CannotBeSwitched_data()
{
    QTest::addColumn<int>("code");
    QTest::newRow("TX240") << 23;
    QTest::newRow("bus variant of TX240") << 10023;
}

void VideoSignalsTest::signalOfTX240CannotBeSwitched()
{
    QFETCH(int, code);
    load({37, code});
    // The list of the model before would do for the switch.
    Sensor sensor(37);
    sensor.become(code);
    QVERIFY(sensor->getAvailableVideoSignalCount() > 0);
    QString errorText = name("old");
    CallRecorder recorder;
    QCOMPARE(sensor->enableVideoSignal(0, 1, &errorText), NoError);
    QCOMPARE(recorder.take(), QStringList());
    QCOMPARE(errorText, name("old"));
}

void VideoSignalsTest::positionsOutsideTheListDoNothing_data()
{
    QTest::addColumn<int>("position");
    QTest::newRow("before the first") << -1;
    QTest::newRow("after the last") << 5;
    QTest::newRow("lowest") << std::numeric_limits<int>::min();
    QTest::newRow("highest") << std::numeric_limits<int>::max();
}

void VideoSignalsTest::positionsOutsideTheListDoNothing()
{
    QFETCH(int, position);
    load({26});
    Sensor sensor(26);
    QString errorText = name("old");
    CallRecorder recorder;
    QCOMPARE(sensor->enableVideoSignal(position, 1, &errorText), NoError);
    QCOMPARE(recorder.take(), QStringList());
    QCOMPARE(errorText, name("old"));
}

void VideoSignalsTest::switchIsOnlyStagedWhereItCannotBeWritten()
{
    load({26});
    Sensor sensor(26, Serial);
    CallRecorder recorder;
    QCOMPARE(sensor->enableVideoSignal(1, 1), NoError);
    QCOMPARE(recorder.take(), QStringList(setInt(name("SP_OutputVideoDark_RS422"), 1)));
}

void VideoSignalsTest::switchThatCannotBeStagedIsNotWritten()
{
    load({26});
    Sensor sensor(26);
    failParameter("SP_OutputVideoRaw_ETH", -66, "no room");
    QSignalSpy messages(&*sensor, &SensorInstance::errorMessage);
    QString errorText = name("old");
    CallRecorder recorder;
    QCOMPARE(int(sensor->enableVideoSignal(0, 1, &errorText)), -66);
    QCOMPARE(withoutErrorTexts(recorder.take()), QStringList(setInt(name("SP_OutputVideoRaw_ETH"), 1)));
    // Told by the signal alone.
    QCOMPARE(errorText, name("old"));
    QCOMPARE(messages.size(), 1);
    QCOMPARE(messages.at(0).at(1).toString(), name("no room"));
}

void VideoSignalsTest::refusedSwitchIsReported()
{
    load({26});
    Sensor sensor(26);
    failCommand("Update_OutputVideo_ETH", -67, "locked");
    QString errorText;
    QCOMPARE(int(sensor->enableVideoSignal(0, 1, &errorText)), -67);
    QCOMPARE(errorText, name("locked"));
}

void VideoSignalsTest::busVariantHasNoSignals()
{
    load({26});
    Sensor sensor(10026);
    CallRecorder recorder;
    QCOMPARE(sensor->enableVideoSignal(0, 1), NoError);
    QCOMPARE(recorder.take(), QStringList());
    QCOMPARE(describe(*sensor).videoSignalCount, 0);
    QCOMPARE(videoCalls(recorder.take()), QStringList());
}

QTEST_GUILESS_MAIN(VideoSignalsTest)
#include "tst_videosignals.moc"
