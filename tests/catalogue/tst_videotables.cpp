// SPDX-License-Identifier: MIT
#include <SondixQt/SensorFeatures>

#include "catalogue/videotables_p.h"
#include "videoreference.h"

#include <QtTest>

#include <cmath>
#include <limits>

using namespace SondixQt;

Q_DECLARE_METATYPE(SondixQt::VideoModeRule)

/// Compares the video table with an independent list, and tests the names that are derived from it.
class VideoTablesTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void videoOfEveryType_data();
    void videoOfEveryType();
    void modeRules_data();
    void modeRules();
    void pixelsFollowFromTheRange_data();
    void pixelsFollowFromTheRange();
    void parameterNames_data();
    void parameterNames();
    void outputCommands_data();
    void outputCommands();
};

void VideoTablesTest::videoOfEveryType_data()
{
    QTest::addColumn<int>("code");
    QSet<int> codes;
    const QList<SensorType> types = getSensorFeatures().keys();
    for (const SensorType type : types)
        codes.insert(type);
    for (int code = -1; code <= 70; ++code) {
        codes.insert(code);
        codes.insert(10000 + code);
    }
    QList<int> sorted = codes.values();
    std::sort(sorted.begin(), sorted.end());
    for (const int code : qAsConst(sorted))
        QTest::newRow(QByteArray::number(code).constData()) << code;
}

void VideoTablesTest::videoOfEveryType()
{
    QFETCH(int, code);
    const reference::Video *expected = reference::video(code);
    const VideoRow *row = videoRow(SensorType(code));
    QCOMPARE(row != nullptr, expected != nullptr);
    if (!row)
        return;

    QStringList stems;
    QStringList answers;
    for (const VideoSignal &videoSignal : row->videoSignals) {
        stems.append(QLatin1String(videoSignal.outputStem));
        answers.append(QLatin1String(videoSignal.answerParameter));
    }
    QCOMPARE(stems, reference::prefixed("OutputVideo", expected->stems));
    QCOMPARE(answers, reference::prefixed("SA_Video", expected->answers));
    QCOMPARE(row->pixels, expected->pixels);
    QCOMPARE(row->resolution, expected->resolution);
    QCOMPARE(row->outputStem, expected->outputStem);
    QCOMPARE(row->thresholdName, expected->threshold);
    QCOMPARE(row->roiName, expected->roi);
    QCOMPARE(row->threshold, bool(expected->flags & reference::Threshold));
    QCOMPARE(row->roi, bool(expected->flags & reference::Roi));
    QCOMPARE(row->streamMode, bool(expected->flags & reference::Stream));
    QCOMPARE(row->overAnyInterface, bool(expected->flags & reference::AnyInterface));
    QCOMPARE(row->transmitted, bool(expected->flags & reference::Transmitted));
    QCOMPARE(row->videoMode, bool(expected->flags & reference::VideoMode));
    QCOMPARE(row->channels, expected->channels);
}

void VideoTablesTest::modeRules_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<VideoModeRule>("rule");
    QTest::newRow("23") << 23 << VideoModeRule::TransmittedFlag;
    for (const int code : {26, 30, 39, 44})
        QTest::newRow(QByteArray::number(code).constData()) << code << VideoModeRule::StreamMode;
    QTest::newRow("29") << 29 << VideoModeRule::ExclusiveMode;
    for (const int code : {37, 42, 46, 47, 51, 55, 58, 59, 62, 63})
        QTest::newRow(QByteArray::number(code).constData()) << code << VideoModeRule::Fixed;
}

void VideoTablesTest::modeRules()
{
    QFETCH(int, code);
    const VideoRow *row = videoRow(SensorType(code));
    QVERIFY(row);
    QTEST(row->modeRule, "rule");
}

void VideoTablesTest::pixelsFollowFromTheRange_data()
{
    QTest::addColumn<double>("range");
    QTest::addColumn<int>("pixels");
    QTest::newRow("short range") << 46.0 << 768;
    QTest::newRow("long range") << 95.0 << 1536;
    QTest::newRow("not exactly the short range") << std::nextafter(46.0, 47.0) << 1536;
    QTest::newRow("nothing") << 0.0 << 1536;
    QTest::newRow("negative") << -46.0 << 1536;
    QTest::newRow("not a number") << std::numeric_limits<double>::quiet_NaN() << 1536;
    QTest::newRow("infinite") << std::numeric_limits<double>::infinity() << 1536;
}

void VideoTablesTest::pixelsFollowFromTheRange()
{
    QFETCH(double, range);
    QTEST(pixelsOfRange(range), "pixels");
}

void VideoTablesTest::parameterNames_data()
{
    QTest::addColumn<bool>("answer");
    QTest::addColumn<bool>("ethernet");
    QTest::addColumn<QString>("name");
    QTest::newRow("answer, Ethernet") << true << true << "SA_OutputVideoRaw_ETH";
    QTest::newRow("answer, serial") << true << false << "SA_OutputVideoRaw_RS422";
    QTest::newRow("setting, Ethernet") << false << true << "SP_OutputVideoRaw_ETH";
    QTest::newRow("setting, serial") << false << false << "SP_OutputVideoRaw_RS422";
}

void VideoTablesTest::parameterNames()
{
    QFETCH(bool, answer);
    QFETCH(bool, ethernet);
    QTEST(videoParameterName("OutputVideoRaw", answer, ethernet), "name");
}

void VideoTablesTest::outputCommands_data()
{
    QTest::addColumn<bool>("get");
    QTest::addColumn<bool>("ethernet");
    QTest::addColumn<QString>("command");
    QTest::newRow("read, Ethernet") << true << true << "Get_OutputVideo_ETH";
    QTest::newRow("read, serial") << true << false << "Get_OutputVideo_RS422";
    QTest::newRow("write, Ethernet") << false << true << "Update_OutputVideo_ETH";
    QTest::newRow("write, serial") << false << false << "Update_OutputVideo_RS422";
}

void VideoTablesTest::outputCommands()
{
    QFETCH(bool, get);
    QFETCH(bool, ethernet);
    QTEST(videoOutputCommand("OutputVideo", get, ethernet), "command");
}

QTEST_GUILESS_MAIN(VideoTablesTest)
#include "tst_videotables.moc"
