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

/// The calls of transmittedDataInfo() without those that read the frame.
QStringList videoCalls(QStringList calls)
{
    const int frame = calls.indexOf(QRegularExpression("GetParameters\\(\\d+\\)"));
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

/// An answer with all video switches of \a code, of which \a on are on.
std::string switches(int code, const char *suffix, const QList<int> &on)
{
    QString pairs;
    int position = 0;
    for (const QString &stem : reference::video(code)->stems)
        pairs += QString("SA_OutputVideo%1%2=%3 ").arg(stem, QString(suffix)).arg(int(on.contains(position++)));
    return pairs.toStdString();
}

} // namespace

/// Reading and switching the video signals of a sensor.
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
        QTest::newRow(qPrintable(QString("%1 in the network").arg(code))) << code << true;
        if (reference::video(code)->flags & reference::AnyInterface)
            QTest::newRow(qPrintable(QString("%1 at a serial line").arg(code))) << code << false;
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
    const QString command = QString("Get_%1%2").arg(QString(video->outputStem), QString(suffix));
    const int last = video->stems.size() - 1;
    scriptAnswer(command.toStdString(), switches(code, suffix, {last}).c_str());

    CallRecorder recorder;
    const TransmittedDataInfo info = describe(*sensor);
    QStringList expected;
    if (code == CC430 || code == TX260 || code == CC440 || code == CC450 || code == CC460)
        expected += readInt("Get_MeasureMode", "SA_MeasureMode");
    expected += commandCalls(command);
    for (const QString &stem : video->stems)
        expected += getInt("SA_OutputVideo" + stem + QString(suffix));
    QCOMPARE(videoCalls(recorder.take()), expected);

    QCOMPARE(sensor->getEnabledVideoSignalCount(), 1);
    QCOMPARE(enabledPositions(*sensor), QList<int>{last});
    QCOMPARE(info.videoSignalCount, video->stems.size());
    for (int position = 0; position <= last; ++position)
        QCOMPARE(info.videoSignals.at(position).enabled, position == last);
}

void VideoSignalsTest::sensorWithoutVideoIsNotAsked()
{
    load({TX270});
    Sensor sensor(TX270);
    CallRecorder recorder;
    const TransmittedDataInfo info = describe(*sensor);
    QCOMPARE(videoCalls(recorder.take()), QStringList());
    QCOMPARE(info.videoSignalCount, 0);
    QVERIFY(info.videoSignals.isEmpty());
}

void VideoSignalsTest::networkVideoIsNotAskedForAtASerialLine()
{
    load({CC430});
    scriptAnswer("Get_MeasureMode", "SA_MeasureMode=4");
    scriptAnswer("Get_OutputVideo_RS422", switches(26, "_RS422", {0, 1, 2, 3, 4}).c_str());
    Sensor sensor(CC430, Serial);
    CallRecorder recorder;
    describe(*sensor);
    QCOMPARE(videoCalls(recorder.take()), readInt("Get_MeasureMode", "SA_MeasureMode"));
    QVERIFY(sensor->isVideoModeEnabled());
    QCOMPARE(sensor->getEnabledVideoSignalCount(), 0);
}

void VideoSignalsTest::enabledSignalsKeepTheirPositions()
{
    load({CC480});
    scriptAnswer("Get_Output_ETH", switches(47, "_ETH", {1, 4}).c_str());
    Sensor sensor(CC480);
    describe(*sensor);
    QMap<int, QString> names = {{9, "kept"}};
    QCOMPARE(sensor->getEnabledVideoSignals(&names), 2);
    QCOMPARE(names, (QMap<int, QString>{{1, "OutputVideoDark_Ch1"}, {4, "OutputVideoDark_Ch2"}, {9, "kept"}}));
    QCOMPARE(sensor->getEnabledVideoSignals(nullptr), 2);
    QCOMPARE(sensor->getEnabledVideoSignalCount(), 2);
}

void VideoSignalsTest::unreadableSwitchIsOff()
{
    load({MC340});
    scriptAnswer("Get_OutputVideo_ETH", switches(37, "_ETH", {0, 1, 2}).c_str());
    scriptParameterFailure("SA_OutputVideoLight_ETH", -61);
    Sensor sensor(MC340);
    QSignalSpy messages(&*sensor, &SensorInstance::errorMessage);
    QString errorText = "old";
    TransmittedDataInfo info;
    QCOMPARE(sensor->transmittedDataInfo(info, &errorText), NoError);
    QCOMPARE(enabledPositions(*sensor), (QList<int>{0, 2}));
    QCOMPARE(sensor->getEnabledVideoSignalCount(), 2);
    // Reported only by the signal.
    QCOMPARE(messages.size(), 1);
    QCOMPARE(errorText, QString());
}

void VideoSignalsTest::unansweredSwitchesAreOff()
{
    load({MC340});
    const int on = scriptAnswer("Get_OutputVideo_ETH", switches(37, "_ETH", {0, 1, 2}).c_str());
    Sensor sensor(MC340);
    describe(*sensor);
    QCOMPARE(sensor->getEnabledVideoSignalCount(), 3);
    sondixsim::removeFault(on);
    scriptCommandFailure("Get_OutputVideo_ETH", -62);
    CallRecorder recorder;
    describe(*sensor);
    QCOMPARE(withoutErrorTexts(videoCalls(recorder.take())), commandCalls("Get_OutputVideo_ETH"));
    QCOMPARE(sensor->getEnabledVideoSignalCount(), 0);
    QCOMPARE(enabledPositions(*sensor), QList<int>());
}

void VideoSignalsTest::streamModes_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<int>("mode");
    QTest::addColumn<int>("error");
    QTest::addColumn<bool>("videoBefore"); // and measuring
    QTest::addColumn<bool>("video");
    QTest::addColumn<bool>("measuring");
    for (const int code : {26, 30, 39, 44}) {
        const auto add = [code](const char *what, int mode, int error, bool before, bool video, bool measuring) {
            QTest::newRow(qPrintable(QString("%1: %2").arg(code).arg(QString(what))))
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
        const int before = scriptAnswer("Get_MeasureMode", "SA_MeasureMode=4");
        describe(*sensor);
        sondixsim::removeFault(before);
    }
    QCOMPARE(sensor->isVideoModeEnabled(), videoBefore);
    QCOMPARE(sensor->isMeasModeEnabled(), videoBefore);

    scriptAnswer("Get_MeasureMode", QString("SA_MeasureMode=%1").arg(mode).toLatin1(), error);
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
    load({TX260});
    Sensor sensor(TX260);
    QVERIFY(sensor->isVideoModeEnabled());
    scriptAnswer("Get_MeasureMode", QString("SA_MeasureMode=%1").arg(mode).toLatin1(), error);
    describe(*sensor);
    QCOMPARE(sensor->isVideoModeEnabled(), video);
    QCOMPARE(sensor->isMeasModeEnabled(), !video);
}

void VideoSignalsTest::signalOfTX240FollowsTheApplication()
{
    load({TX240});
    Sensor sensor(TX240);
    CallRecorder recorder;
    describe(*sensor);
    QCOMPARE(videoCalls(recorder.take()), QStringList());
    QCOMPARE(sensor->getEnabledVideoSignalCount(), 0);
    sensor->setVideoTransmitted(true);
    QVERIFY(describe(*sensor).videoSignals.at(0).enabled);
    QCOMPARE(sensor->getEnabledVideoSignalCount(), 1);
    QCOMPARE(binaryNames(*sensor), QStringList("SA_VideoSignal"));
    sensor->setVideoTransmitted(false);
    QVERIFY(!describe(*sensor).videoSignals.at(0).enabled);
    QCOMPARE(sensor->getEnabledVideoSignalCount(), 0);
}

void VideoSignalsTest::switchesDoNotReachTheSignalOfTX240()
{
    // The switches of the previous model are still in use.
    load({TX240, MC340});
    scriptAnswer("Get_OutputVideo_ETH", switches(37, "_ETH", {0, 1, 2}).c_str());
    Sensor sensor(MC340);
    *sensor = SensorInstance(TX240);
    sensor->setVideoTransmitted(false);
    CallRecorder recorder;
    sensor->setMeasurementMode(0);
    const QStringList calls = withoutErrorTexts(recorder.take());
    QVERIFY(calls.contains("SetParameterString(\"S_Command\", \"Get_OutputVideo_ETH\")"));
    QVERIFY(calls.contains(getInt("SA_OutputVideoRaw_ETH")));
    QCOMPARE(sensor->getEnabledVideoSignalCount(), 0);
    sensor->setVideoTransmitted(true);
    sensor->setMeasurementMode(0);
    QCOMPARE(enabledPositions(*sensor), QList<int>{0});
}

void VideoSignalsTest::transmittedSignalsNeedVideoMode()
{
    load({CC430});
    scriptAnswer("Get_OutputVideo_ETH", switches(26, "_ETH", {0, 2}).c_str());
    Sensor sensor(CC430);
    const TransmittedDataInfo info = describe(*sensor);
    QVERIFY(!sensor->isVideoModeEnabled());
    QCOMPARE(sensor->getEnabledVideoSignalCount(), 2);
    QCOMPARE(info.videoSignals.size(), 5);
    QCOMPARE(binaryNames(*sensor), QStringList());
}

void VideoSignalsTest::transmittedSignalsAreThoseOfTheLastDescription()
{
    load({CC430});
    scriptAnswer("Get_OutputVideo_ETH", switches(26, "_ETH", {0, 2}).c_str());
    Sensor sensor(CC430);
    describe(*sensor);
    QCOMPARE(sensor->setMeasurementMode(4), NoError);
    QVERIFY(sensor->isVideoModeEnabled());
    QCOMPARE(binaryNames(*sensor), QStringList());
    describe(*sensor);
    QCOMPARE(binaryNames(*sensor), QStringList({"SA_VideoRaw", "SA_VideoLight"}));
    QString parameter = "old";
    for (const int position : {-1, 2, 5, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()})
        QVERIFY(!sensor->getBinaryVideoParam(parameter, position));
    QCOMPARE(parameter, "old");
}

void VideoSignalsTest::descriptionHoldsAllSignals()
{
    load({TX260});
    scriptAnswer("Get_OutputVideo_ETH", switches(29, "_ETH", {1}).c_str());
    Sensor sensor(TX260);
    const TransmittedDataInfo info = describe(*sensor);
    QCOMPARE(info.videoSignalCount, 2);
    QCOMPARE(info.videoSignals.size(), 2);
    QVERIFY(!info.videoSignals.at(0).enabled);
    QVERIFY(info.videoSignals.at(1).enabled);
    QCOMPARE(info.videoSignals.at(1).answerParameter, "SA_VideoCorr");
}

void VideoSignalsTest::failedDescriptionAsksForNoVideo()
{
    load({MC340});
    scriptAnswer("Get_OutputVideo_ETH", switches(37, "_ETH", {0}).c_str());
    Sensor sensor(MC340);
    describe(*sensor);
    scriptCommandFailure("Get_TransmittedDataInfo", -65);
    TransmittedDataInfo info;
    CallRecorder recorder;
    QCOMPARE(int(sensor->transmittedDataInfo(info)), -65);
    QCOMPARE(withoutErrorTexts(recorder.take()), commandCalls("Get_TransmittedDataInfo"));
    QCOMPARE(binaryNames(*sensor), QStringList("SA_VideoRaw"));
}

void VideoSignalsTest::lossOfVideoEmptiesTheTransmittedSignals()
{
    load({MC340, TX270});
    scriptAnswer("Get_OutputVideo_ETH", switches(37, "_ETH", {0, 1}).c_str());
    Sensor sensor(MC340);
    describe(*sensor);
    QCOMPARE(binaryNames(*sensor).size(), 2);
    sensor.become(TX270);
    QCOMPARE(binaryNames(*sensor).size(), 2);
    const TransmittedDataInfo info = describe(*sensor);
    QCOMPARE(binaryNames(*sensor), QStringList());
    // A model without a signal list keeps the list of the previous model,
    QCOMPARE(info.videoSignalCount, 3);
    QCOMPARE(enabledPositions(*sensor), (QList<int>{0, 1}));
    QCOMPARE(sensor->getEnabledVideoSignalCount(), 2);
    // but its modes clear the switches, without updating the count.
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
    const QString command = QString("Get_%1_ETH").arg(QString(video->outputStem));
    scriptAnswer(command.toStdString(), switches(code, "_ETH", {0, 1, 2, 3, 4, 5}).c_str());
    Sensor sensor(code);
    scriptAnswer("Get_MeasureMode", code == TX260 ? "SA_MeasureMode=3" : "SA_MeasureMode=4");
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
    const QString outputVideo = "Update_OutputVideo_ETH";
    QTest::newRow("first on") << 26 << true << 0 << 1 << "SP_OutputVideoRaw_ETH" << outputVideo;
    QTest::newRow("last off") << 26 << true << 4 << 0 << "SP_OutputVideoLightTable_ETH" << outputVideo;
    QTest::newRow("other stem") << 47 << true << 3 << 1 << "SP_OutputVideoRaw_Ch2_ETH"
                                << "Update_Output_ETH";
    QTest::newRow("serial") << 42 << false << 0 << 1 << "SP_OutputVideoRaw_RS422"
                            << "Update_Output_RS422";
    QTest::newRow("MC340") << 37 << true << 1 << 1 << "SP_OutputVideoLight_ETH" << outputVideo;
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
    QString errorText = "old";
    CallRecorder recorder;
    QCOMPARE(sensor->enableVideoSignal(position, value, &errorText), NoError);
    QCOMPARE(recorder.take(), QStringList(setInt(parameter, value)) + commandCalls(command));
    QCOMPARE(errorText, QString());
    // Updated only when the sensor is queried again.
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
    // The list of the previous model would be sufficient for the switch.
    Sensor sensor(MC340);
    sensor.become(code);
    QVERIFY(sensor->getAvailableVideoSignalCount() > 0);
    QString errorText = "old";
    CallRecorder recorder;
    QCOMPARE(sensor->enableVideoSignal(0, 1, &errorText), NoError);
    QCOMPARE(recorder.take(), QStringList());
    QCOMPARE(errorText, "old");
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
    load({CC430});
    Sensor sensor(CC430);
    QString errorText = "old";
    CallRecorder recorder;
    QCOMPARE(sensor->enableVideoSignal(position, 1, &errorText), NoError);
    QCOMPARE(recorder.take(), QStringList());
    QCOMPARE(errorText, "old");
}

void VideoSignalsTest::switchIsOnlyStagedWhereItCannotBeWritten()
{
    load({CC430});
    Sensor sensor(CC430, Serial);
    CallRecorder recorder;
    QCOMPARE(sensor->enableVideoSignal(1, 1), NoError);
    QCOMPARE(recorder.take(), QStringList(setInt("SP_OutputVideoDark_RS422", 1)));
}

void VideoSignalsTest::switchThatCannotBeStagedIsNotWritten()
{
    load({CC430});
    Sensor sensor(CC430);
    scriptParameterFailure("SP_OutputVideoRaw_ETH", -66, "no room");
    QSignalSpy messages(&*sensor, &SensorInstance::errorMessage);
    QString errorText = "old";
    CallRecorder recorder;
    QCOMPARE(int(sensor->enableVideoSignal(0, 1, &errorText)), -66);
    QCOMPARE(withoutErrorTexts(recorder.take()), QStringList(setInt("SP_OutputVideoRaw_ETH", 1)));
    // Reported only by the signal.
    QCOMPARE(errorText, "old");
    QCOMPARE(messages.size(), 1);
    QCOMPARE(messages.at(0).at(1).toString(), "no room");
}

void VideoSignalsTest::refusedSwitchIsReported()
{
    load({CC430});
    Sensor sensor(CC430);
    scriptCommandFailure("Update_OutputVideo_ETH", -67, "locked");
    QString errorText;
    QCOMPARE(int(sensor->enableVideoSignal(0, 1, &errorText)), -67);
    QCOMPARE(errorText, "locked");
}

void VideoSignalsTest::busVariantHasNoSignals()
{
    load({CC430});
    Sensor sensor(10000 + CC430);
    CallRecorder recorder;
    QCOMPARE(sensor->enableVideoSignal(0, 1), NoError);
    QCOMPARE(recorder.take(), QStringList());
    QCOMPARE(describe(*sensor).videoSignalCount, 0);
    QCOMPARE(videoCalls(recorder.take()), QStringList());
}

QTEST_GUILESS_MAIN(VideoSignalsTest)
#include "tst_videosignals.moc"
