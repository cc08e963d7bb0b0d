// SPDX-License-Identifier: MIT
#include <SondixQt/SondixQt>

#include <QMetaEnum>
#include <QtTest>

using namespace SondixQt;

namespace {

template<typename T>
QString printed(const T &value)
{
    QString text;
    QDebug(&text).nospace() << value;
    return text;
}

/// Checks the meta-type of \a T under its full name and under the names that callers use.
template<typename T>
void addType(const char *name, const QByteArrayList &spellings)
{
    QTest::newRow(name) << qMetaTypeId<T>() << QByteArray(name) << (spellings + QByteArrayList{name});
}

SignalInfo distance()
{
    SignalInfo signal;
    signal.index = 1;
    signal.scaledName = "Distance";
    return signal;
}

TransmittedDataInfo description()
{
    return TransmittedDataInfo(2500.0, 1, 1, 1, {distance()}, {VideoInfo()});
}

} // namespace

/// Emits descriptions across threads, like a worker of an application.
class Describer : public QObject
{
    Q_OBJECT
Q_SIGNALS:
    void described(const SondixQt::TransmittedDataInfo &info);
    void signalDescribed(const SondixQt::SignalInfo &info);
    void videoDescribed(const SondixQt::VideoInfo &info);
};

/// The types of the library in QVariant, queued calls and debug output.
class TestMetaTypes : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void namesStay_data();
    void namesStay();
    void enumerationsPrintTheirNames_data();
    void enumerationsPrintTheirNames();
    void everyEnumeratorHasItsName();
    void aVariantTellsTheName();
    void descriptionsTravelInVariants();
    void variantsCompareDescriptions();
    void descriptionsTravelQueued();
};

void TestMetaTypes::namesStay_data()
{
    QTest::addColumn<int>("id");
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArrayList>("spellings");
    addType<ErrorCode>("SondixQt::ErrorCode", {"ErrorCode"});
    addType<SensorType>("SondixQt::SensorType", {"SensorType"});
    addType<SensorGroup>("SondixQt::SensorGroup", {"SensorGroup"});
    addType<SensorInterface>("SondixQt::SensorInterface", {"SensorInterface"});
    addType<WebInterface>("SondixQt::WebInterface", {"WebInterface"});
    addType<SensorInstance::ErrorHandling>("SondixQt::SensorInstance::ErrorHandling", {});
    addType<SensorInstance::LogLevel>("SondixQt::SensorInstance::LogLevel", {});
    addType<SensorInstance::LogType>("SondixQt::SensorInstance::LogType", {});
    addType<SpecialSensorInstance::ExecSpecialAction>("SondixQt::SpecialSensorInstance::ExecSpecialAction", {});
    addType<SensorFinder::Status>("SondixQt::SensorFinder::Status", {});
    addType<QList<SensorType>>("QList<SondixQt::SensorType>", {"QList<SensorType>"});
    addType<SensorInfo>("SondixQt::SensorInfo", {"SensorInfo"});
    addType<SignalInfo>("SondixQt::SignalInfo", {"SignalInfo"});
    addType<VideoInfo>("SondixQt::VideoInfo", {"VideoInfo"});
    addType<TransmittedDataInfo>("SondixQt::TransmittedDataInfo", {"TransmittedDataInfo"});
    addType<SensorGroups>("SondixQt::SensorGroups", {"SensorGroups"});
    addType<SensorInterfaces>("SondixQt::SensorInterfaces", {"SensorInterfaces"});
}

void TestMetaTypes::namesStay()
{
    QFETCH(int, id);
    QFETCH(QByteArray, name);
    QFETCH(QByteArrayList, spellings);
    QCOMPARE(QByteArray(QMetaType::typeName(id)), name);
    for (const QByteArray &spelling : spellings)
        QVERIFY2(QMetaType::type(spelling) == id, spelling.constData());
}

void TestMetaTypes::enumerationsPrintTheirNames_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *expected, const QString &text) {
        QTest::newRow(expected) << text << QString::fromLatin1(expected);
    };
    row("SondixQt::NoError", printed(NoError));
    row("SondixQt::PartialFailure26", printed(ErrorCode(-26)));
    row("SondixQt::PartialFailure27", printed(ErrorCode(-27)));
    row("SondixQt::ErrorCode(-33)", printed(ErrorCode(-33)));
    row("SondixQt::ErrorCode(-2147483648)", printed(ErrorCode(std::numeric_limits<qint32>::min())));
    row("SondixQt::TX270", printed(TX270));
    row("SondixQt::MV430", printed(MV430));
    row("SondixQt::SensorType(3)", printed(SensorType(3)));
    row("SondixQt::SensorType(-7)", printed(SensorType(-7)));
    row("SondixQt::TavrinRG", printed(TavrinRG));
    row("SondixQt::AllGroups", printed(AllGroups));
    row("SondixQt::SensorGroup(4608)", printed(getSensorGroupFromSensorType(MV4xx)));
    row("SondixQt::XA200_ETH", printed(XA200_ETH));
    row("SondixQt::SensorInterface(5)", printed(SensorInterface(5)));
    row("SondixQt::SerialWebInterface", printed(SerialWebInterface));
    row("SondixQt::WebInterface(3)", printed(WebInterface(3)));
    row("SondixQt::SensorInstance::ReadAlways", printed(SensorInstance::ReadAlways));
    row("SondixQt::SensorInstance::LogInformation", printed(SensorInstance::LogInformation));
    row("SondixQt::SensorInstance::LogLevel(16)", printed(SensorInstance::LogLevel(16)));
    row("SondixQt::SensorInstance::LogAllTypes", printed(SensorInstance::LogAllTypes));
    row("SondixQt::SpecialSensorInstance::ActionAfter", printed(SpecialSensorInstance::ActionAfter));
    row("SondixQt::SensorFinder::Searching", printed(SensorFinder::Searching));
    row("QFlags<SondixQt::SensorInterface>(RS232|TCPIP)", printed(SensorInterfaces(RS232 | TCPIP)));
    row("QFlags<SondixQt::SensorInterface>(NoInterface)", printed(SensorInterfaces()));
    row("QFlags<SondixQt::SensorInterface>(RS232)", printed(SensorInterfaces(QFlag(1 | 128))));
    row("QFlags<SondixQt::SensorGroup>(Morvik|KVBus)", printed(SensorGroups(Morvik | KVBus)));
    row("QFlags<SondixQt::SensorGroup>(AllGroups)", printed(SensorGroups(AllGroups)));
}

void TestMetaTypes::enumerationsPrintTheirNames()
{
    QFETCH(QString, text);
    QTEST(text, "expected");
}

void TestMetaTypes::everyEnumeratorHasItsName()
{
    const auto types = QMetaEnum::fromType<SensorType>();
    const QList<SensorType> models = getSensorFeatures().keys();
    QVERIFY(!models.isEmpty());
    for (const SensorType model : models)
        QVERIFY2(types.valueToKey(model), qPrintable(QString::number(model)));
    QCOMPARE(types.keyCount(), models.size());

    const auto groups = QMetaEnum::fromType<SensorGroup>();
    const QList<SensorGroup> families = sensorGroups();
    for (const SensorGroup family : families)
        QVERIFY2(groups.valueToKey(family), qPrintable(QString::number(family)));
    QCOMPARE(groups.keyCount(), families.size());
}

void TestMetaTypes::aVariantTellsTheName()
{
    const QVariant variant = QVariant::fromValue(TX270);
    QCOMPARE(variant.toString(), "TX270");
    QCOMPARE(variant.toInt(), 41);
    QCOMPARE(QVariant::fromValue(ErrorCode(-33)).toInt(), -33);
}

void TestMetaTypes::descriptionsTravelInVariants()
{
    QCOMPARE(QVariant::fromValue(distance()).value<SignalInfo>(), distance());
    const auto info = QVariant::fromValue(description()).value<TransmittedDataInfo>();
    QCOMPARE(info, description());
    QCOMPARE(info.datarate, 2500.0);
    VideoInfo video;
    video.pixelCount = 512;
    QCOMPARE(QVariant::fromValue(video).value<VideoInfo>(), video);
    QCOMPARE(QVariant::fromValue(info.signals).value<QVector<SignalInfo>>(), info.signals);
}

void TestMetaTypes::variantsCompareDescriptions()
{
    QVERIFY(QVariant::fromValue(description()) == QVariant::fromValue(description()));
    QVERIFY(QVariant::fromValue(description()) != QVariant::fromValue(TransmittedDataInfo()));
    QVERIFY(QVariant::fromValue(distance()) == QVariant::fromValue(distance()));
    QVERIFY(QVariant::fromValue(distance()) != QVariant::fromValue(SignalInfo()));
    QVERIFY(QVariant::fromValue(VideoInfo()) == QVariant::fromValue(VideoInfo()));
}

void TestMetaTypes::descriptionsTravelQueued()
{
    Describer describer;
    TransmittedDataInfo receivedInfo;
    SignalInfo receivedSignal;
    VideoInfo receivedVideo;
    receivedVideo.pixelCount = 7;
    connect(
        &describer, &Describer::described, this, [&](const TransmittedDataInfo &info) { receivedInfo = info; },
        Qt::QueuedConnection);
    connect(
        &describer, &Describer::signalDescribed, this, [&](const SignalInfo &info) { receivedSignal = info; },
        Qt::QueuedConnection);
    connect(
        &describer, &Describer::videoDescribed, this, [&](const VideoInfo &info) { receivedVideo = info; },
        Qt::QueuedConnection);
    Q_EMIT describer.described(description());
    Q_EMIT describer.signalDescribed(distance());
    Q_EMIT describer.videoDescribed(VideoInfo());
    QVERIFY(receivedInfo != description());
    QCoreApplication::sendPostedEvents();
    QCOMPARE(receivedInfo, description());
    QCOMPARE(receivedSignal, distance());
    QCOMPARE(receivedVideo, VideoInfo());
}

QTEST_GUILESS_MAIN(TestMetaTypes)
#include "tst_metatypes.moc"
