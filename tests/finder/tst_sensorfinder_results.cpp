// SPDX-License-Identifier: MIT
#include "scriptedsearch.h"

using namespace SondixQt;
using namespace scriptedsearch;

namespace {

using Parameters = QMap<QString, QVariant>;

/// A description with all parameters by which sensors are distinguished.
Parameters fullDescription()
{
    return {
        {"IP_SensorType", int(TX270)},
        {"IP_SensorTypeName", "TX270"},
        {"IP_ChannelNumber", 1},
        {"IP_Port", "COM1"},
        {"SA_Sensor", "TX270-10"},
        {"SA_SerialNumber", "1001"},
        {"SA_ArticleNumber", "4120"},
        {"SA_Address", 7},
        {"SA_UUID", "ab-cd"},
        {"IP_DeviceInstance", 0},
        {"IP_SerialNumber", "77"},
        {"SA_SensorAddress", 3},
        {"SA_IPAddress", "192.168.0.1"},
        {"IP_RemoteAddr", "192.168.0.2"},
        {"IP_Interface", "RS232"},
        {"IP_Baudrate", 115200},
    };
}

QByteArray answerOf(const Parameters &parameters)
{
    QByteArray answer;
    for (auto it = parameters.begin(); it != parameters.end(); ++it) {
        const QByteArray value = it.value().toString().toLatin1();
        answer +=
            it.key().toLatin1() + '=' + (it.value().type() == QVariant::String ? '"' + value + '"' : value) + ' ';
    }
    return answer.trimmed();
}

QByteArray answerWith(Parameters parameters, const QByteArray &key, const QVariant &value)
{
    parameters.insert(QLatin1String(key), value);
    return answerOf(parameters);
}

QByteArray answerWithout(Parameters parameters, const QByteArray &key)
{
    parameters.remove(QLatin1String(key));
    return answerOf(parameters);
}

/// Searches for \a type until the end and returns the reported sensors.
QList<SensorInfo> search(SensorType type, bool similar = false)
{
    SensorFinder finder;
    finder.setSearchSimilarSensors(similar);
    Recorder recorder(finder);
    finder.startSearch(QList<SensorType>{type}, true);
    return recorder.waitForEnd() ? recorder.found : QList<SensorInfo>{SensorInfo(), SensorInfo(), SensorInfo()};
}

QStringList remoteAddresses(const QList<SensorInfo> &infos)
{
    QStringList addresses;
    for (const SensorInfo &info : infos)
        addresses << info.getParameter("IP_RemoteAddr").toString();
    return addresses;
}

} // namespace

class TestSensorFinderResults : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { begin(); }
    void resultsOfOtherTypesAreDropped_data();
    void resultsOfOtherTypesAreDropped();
    void companionsInTheQueueAreWanted();
    void theDescriptionIsKeptWithoutTheRawAnswer();
    void sensorsDifferInAnyOfThirteenParameters_data();
    void sensorsDifferInAnyOfThirteenParameters();
    void sensorsDoNotDifferInAnythingElse_data();
    void sensorsDoNotDifferInAnythingElse();
    void channelsOfAnInterfaceCardAreOneDevice_data();
    void channelsOfAnInterfaceCardAreOneDevice();
    void aSensorIsAnnouncedOnceInASearch();
    void aNewSearchAnnouncesAgain();
    void knownSensorsAreNeverAnnounced();
    void channelsOfAKnownInterfaceCardAreKnown();
    void unidentifiedAnswersAreDropped_data();
    void unidentifiedAnswersAreDropped();
    void aResultThatCannotBeReadIsLikeAnyOther();
    void colourSensorsAreSplitByAddress_data();
    void colourSensorsAreSplitByAddress();
    void otherSensorsAreNotSplit();
    void splitRecordsAreComparedLikeOthers();
    void parametersAreEqualAsVariants_data();
    void parametersAreEqualAsVariants();
};

void TestSensorFinderResults::resultsOfOtherTypesAreDropped_data()
{
    QTest::addColumn<SensorType>("searched");
    QTest::addColumn<int>("reported");
    QTest::addColumn<bool>("similar");
    QTest::addColumn<bool>("expected");
    QTest::addRow("the type itself") << TX270 << int(TX270) << false << true;
    QTest::addRow("another type") << TX270 << int(TX280) << false << false;
    QTest::addRow("another type, similar") << TX270 << int(TX280) << true << true;
    QTest::addRow("bus variant for the bus") << GenericKVBus << int(MV4xx) << false << true;
    QTest::addRow("high bus variant for the bus") << GenericKVBus << int(MV410) << false << true;
    QTest::addRow("converter variant for the converter") << XA300 << int(MV410_XA300ETH) << false << true;
    QTest::addRow("converter variant for the bus") << GenericKVBus << int(MV4xx_XA300ETH) << false << false;
    QTest::addRow("the bus for a bus variant") << EC830 << int(GenericKVBus) << false << false;
    QTest::addRow("a variant for another variant") << EC830 << int(EC840) << false << false;
    QTest::addRow("a variant for itself") << EC830 << int(EC830) << false << true;
    QTest::addRow("CP740 for the bus") << GenericKVBus << int(CP740) << false << true;
    QTest::addRow("the bus for CP740") << CP740 << int(GenericKVBus) << false << false;
    QTest::addRow("the bus for EC82x_ETH") << EC82x_ETH << int(GenericKVBus) << false << true;
    QTest::addRow("CP740 for EC82x_ETH") << EC82x_ETH << int(CP740) << false << false;
    QTest::addRow("no type") << TX270 << int(NoSensor) << false << false;
    QTest::addRow("no type, similar") << TX270 << int(NoSensor) << true << true;
}

void TestSensorFinderResults::resultsOfOtherTypesAreDropped()
{
    QFETCH(SensorType, searched);
    QFETCH(int, reported);
    QFETCH(bool, similar);
    QFETCH(bool, expected);
    findAtOnce({"SA_SerialNumber=\"1\" IP_SensorType=" + QByteArray::number(reported)});
    const QList<SensorInfo> found = search(searched, similar);
    QCOMPARE(found.size(), expected ? 1 : 0);
    if (expected)
        QCOMPARE(found.first().sensorType(), SensorType(reported));
}

// MV420 does not match the base type that is searched, but is one of the pending types.
void TestSensorFinderResults::companionsInTheQueueAreWanted()
{
    answerProgress({{"100.0", 2}}, GenericKVBus);
    answerProgress({{"100.0", 0}}, XA300);
    answerResults({"IP_SensorType=20043 SA_Sensor=\"MV420-S\" SA_SerialNumber=\"1\"",
                   "IP_SensorType=43 SA_Sensor=\"EC840\" SA_SerialNumber=\"2\""});
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch(MV4xx);
    QVERIFY(recorder.waitForEnd());
    QCOMPARE(recorder.linesOf("found"), QStringList("found 1"));
    QCOMPARE(recorder.found.first().sensorType(), MV420);
}

void TestSensorFinderResults::theDescriptionIsKeptWithoutTheRawAnswer()
{
    Parameters expected = fullDescription();
    findAtOnce({answerWith(expected, "SA_CompleteAnswer", "raw")});
    const QList<SensorInfo> found = search(TX270);
    QCOMPARE(found.size(), 1);
    QVERIFY(!found.first().contains("SA_CompleteAnswer"));
    QCOMPARE(found.first().getParameters(QStringList()), expected);
}

void TestSensorFinderResults::sensorsDifferInAnyOfThirteenParameters_data()
{
    QTest::addColumn<QByteArray>("key");
    const QByteArrayList keys = {
        "IP_ChannelNumber", "IP_Port",       "SA_Sensor",         "SA_SerialNumber", "SA_ArticleNumber",
        "SA_Address",       "SA_UUID",       "IP_DeviceInstance", "IP_SerialNumber", "SA_SensorAddress",
        "SA_IPAddress",     "IP_RemoteAddr", "IP_Interface",
    };
    QCOMPARE(keys.size(), 13);
    for (const QByteArray &key : keys)
        QTest::addRow("%s", key.constData()) << key;
}

void TestSensorFinderResults::sensorsDifferInAnyOfThirteenParameters()
{
    QFETCH(QByteArray, key);
    const Parameters base = fullDescription();
    const QVariant value = base.value(QLatin1String(key));
    QVERIFY(value.isValid());
    const QVariant other = value.type() == QVariant::Int ? QVariant(value.toInt() + 1)
                                                         : QVariant(value.toString() + QLatin1Char('9'));
    findAtOnce({answerWithout(base, key), answerOf(base), answerWith(base, key, other), answerWithout(base, key)});
    QCOMPARE(search(TX270).size(), 3);
}

void TestSensorFinderResults::sensorsDoNotDifferInAnythingElse_data()
{
    QTest::addColumn<QByteArray>("first");
    QTest::addColumn<QByteArray>("second");
    const Parameters base = fullDescription();
    QTest::addRow("all equal") << answerOf(base) << answerOf(base);
    QTest::addRow("another baud rate") << answerOf(base) << answerWith(base, "IP_Baudrate", 9600);
    QTest::addRow("another type name") << answerOf(base) << answerWith(base, "IP_SensorTypeName", "TX270-X");
    QTest::addRow("a further parameter") << answerOf(base) << answerWith(base, "SA_MacAddress", "00:11");
    QTest::addRow("nothing at all to compare") << QByteArray("IP_SensorType=41") << QByteArray("IP_SensorType=41");
    QTest::addRow("missing on both sides")
        << answerWithout(base, "SA_SerialNumber") << answerWithout(base, "SA_SerialNumber");
    QTest::addRow("number, then the same number as text")
        << answerWith(base, "SA_SerialNumber", 12) << answerWith(base, "SA_SerialNumber", "12");
    QTest::addRow("text, then the same text as a number")
        << answerWith(base, "SA_SerialNumber", "12") << answerWith(base, "SA_SerialNumber", 12);
}

void TestSensorFinderResults::sensorsDoNotDifferInAnythingElse()
{
    QFETCH(QByteArray, first);
    QFETCH(QByteArray, second);
    findAtOnce({first, second});
    QCOMPARE(search(TX270).size(), 1);
}

void TestSensorFinderResults::channelsOfAnInterfaceCardAreOneDevice_data()
{
    QTest::addColumn<SensorType>("type");
    QTest::addColumn<int>("expected");
    QTest::addRow("controller") << CP720 << 2;
    for (SensorType card : {XA100PCI, XA200PCI, XA100USB, XA200ETH, XA300, UC100, QUnit})
        QTest::addRow("%d", int(card)) << card << 1;
}

void TestSensorFinderResults::channelsOfAnInterfaceCardAreOneDevice()
{
    QFETCH(SensorType, type);
    QFETCH(int, expected);
    Parameters base = fullDescription();
    base.insert("IP_SensorType", int(type));
    findAtOnce({answerOf(base), answerWith(base, "IP_ChannelNumber", 2)});
    QCOMPARE(search(type).size(), expected);

    sondixsim::clearFaults();
    findAtOnce({answerOf(base), answerWith(base, "IP_Port", "COM2")});
    QCOMPARE(search(type).size(), 2);
}

void TestSensorFinderResults::aSensorIsAnnouncedOnceInASearch()
{
    answerProgress({{"30.0", 2}, {"100.0", 4}});
    answerResults({"IP_SensorType=41 SA_SerialNumber=\"1\"", "IP_SensorType=41 SA_SerialNumber=\"2\"",
                   "IP_SensorType=41 SA_SerialNumber=\"1\"", "IP_SensorType=41 SA_SerialNumber=\"3\""});
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch(TX270);
    QVERIFY(recorder.waitForEnd());
    QCOMPARE(recorder.linesOf("found"), QStringList({"found 1", "found 2", "found 3"}));
    QVERIFY(recorder.lines.contains("text Scan finished, devices found: 3"));
}

void TestSensorFinderResults::aNewSearchAnnouncesAgain()
{
    findAtOnce({"IP_SensorType=41 SA_SerialNumber=\"1\""});
    SensorFinder finder;
    Recorder recorder(finder);
    finder.startSearch(TX270);
    QVERIFY(recorder.waitForEnd());
    finder.startSearch(TX270);
    QVERIFY(recorder.waitForEnd(2));
    QCOMPARE(recorder.linesOf("found"), QStringList({"found 1", "found 1"}));
    QCOMPARE(recorder.lines.count("text Scan finished, devices found: 1"), 2);
}

void TestSensorFinderResults::knownSensorsAreNeverAnnounced()
{
    const Parameters known = fullDescription();
    findAtOnce({answerOf(known)});
    SensorFinder finder;
    Recorder recorder(finder);
    finder.setOutputFoundSensorBlacklist({SensorInfo(Parameters(), CC480), SensorInfo(known, NoSensor)});
    for (int searches = 1; searches <= 2; ++searches) {
        finder.startSearch(TX270);
        QVERIFY(recorder.waitForEnd(searches));
        QCOMPARE(recorder.found.size(), 0);
        QCOMPARE(recorder.lines.count("nothing"), searches);
        QCOMPARE(recorder.lines.count("text Scan finished, devices found: 0"), searches);
    }

    finder.setOutputFoundSensorBlacklist({SensorInfo(Parameters(), CC480)});
    finder.startSearch(TX270);
    QVERIFY(recorder.waitForEnd(3));
    QCOMPARE(recorder.linesOf("found"), QStringList("found 1001"));
}

void TestSensorFinderResults::channelsOfAKnownInterfaceCardAreKnown()
{
    Parameters known = fullDescription();
    known.insert("IP_SensorType", int(XA200ETH));
    findAtOnce({answerWith(known, "IP_ChannelNumber", 5)});
    SensorFinder finder;
    Recorder recorder(finder);
    finder.setOutputFoundSensorBlacklist({SensorInfo(known, NoSensor)});
    finder.startSearch(XA200ETH);
    QVERIFY(recorder.waitForEnd());
    QCOMPARE(recorder.found.size(), 0);
}

void TestSensorFinderResults::unidentifiedAnswersAreDropped_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<bool>("expected");
    QTest::addRow("unknown, type 0") << QByteArray("IP_SensorTypeName=\"Unknown\" IP_SensorType=0") << false;
    QTest::addRow("unknown, no type") << QByteArray("IP_SensorTypeName=\"Unknown\"") << false;
    QTest::addRow("unknown within, type 0")
        << QByteArray("IP_SensorTypeName=\"An Unknown one\" IP_SensorType=0") << false;
    QTest::addRow("lower case, type 0") << QByteArray("IP_SensorTypeName=\"unknown\" IP_SensorType=0") << true;
    QTest::addRow("unknown, with a type") << QByteArray("IP_SensorTypeName=\"Unknown\" IP_SensorType=41") << true;
    QTest::addRow("another name, type 0") << QByteArray("IP_SensorTypeName=\"TX270\" IP_SensorType=0") << true;
    QTest::addRow("no name, type 0") << QByteArray("IP_SensorType=0") << true;
}

void TestSensorFinderResults::unidentifiedAnswersAreDropped()
{
    QFETCH(QByteArray, answer);
    QFETCH(bool, expected);
    findAtOnce({answer + " SA_SerialNumber=\"1\"", "IP_SensorType=41 SA_SerialNumber=\"2\"",
                answer + " SA_SerialNumber=\"3\""});
    QStringList serials;
    for (const SensorInfo &info : search(TX270, true))
        serials << info.getParameter("SA_SerialNumber").toString();
    QCOMPARE(serials, expected ? QStringList({"1", "2", "3"}) : QStringList("2"));
}

void TestSensorFinderResults::aResultThatCannotBeReadIsLikeAnyOther()
{
    answerProgress({{"100.0", 2}});
    refuseCommand("Get_FoundSensor");
    QCOMPARE(search(TX270, false).size(), 0);
    sondixsim::clearFaults();
    answerProgress({{"100.0", 2}});
    refuseCommand("Get_FoundSensor");
    const QList<SensorInfo> found = search(TX270, true);
    QCOMPARE(found.size(), 1);
    QCOMPARE(found.first(), SensorInfo());
}

void TestSensorFinderResults::colourSensorsAreSplitByAddress_data()
{
    QTest::addColumn<SensorType>("type");
    QTest::addColumn<QByteArray>("addresses");
    QTest::addColumn<QStringList>("announced");
    const QString first = "192.168.0.9";
    const QString second = "10.0.0.7";
    for (SensorType type : {HV2, HV210, HV220}) {
        QTest::addRow("%d: two", int(type))
            << type << QByteArray("SA_CurrentIPAddresses=\"192.168.0.9/24 10.0.0.7\"")
            << QStringList{second, first};
        QTest::addRow("%d: one", int(type))
            << type << QByteArray("SA_CurrentIPAddresses=\"192.168.0.9\"") << QStringList{first};
        QTest::addRow("%d: two slashes", int(type))
            << type << QByteArray("SA_CurrentIPAddresses=\"192.168.0.9/24/7\"") << QStringList{first};
        QTest::addRow("%d: empty part", int(type))
            << type << QByteArray("SA_CurrentIPAddresses=\"192.168.0.9  10.0.0.7/8\"")
            << QStringList{second, QString(), first};
        QTest::addRow("%d: empty", int(type)) << type << QByteArray("SA_CurrentIPAddresses=\"\"") << QStringList();
        QTest::addRow("%d: missing", int(type)) << type << QByteArray() << QStringList();
    }
    QByteArray many;
    QStringList announced;
    for (int i = 0; i < 300; ++i) {
        many += " 10.0.1." + QByteArray::number(i);
        if (i < 256)
            announced.prepend(QStringLiteral("10.0.1.%1").arg(i));
    }
    QTest::addRow("more than a sensor can have")
        << HV2 << QByteArray("SA_CurrentIPAddresses=\"" + many.mid(1) + '"') << announced;
}

void TestSensorFinderResults::colourSensorsAreSplitByAddress()
{
    QFETCH(SensorType, type);
    QFETCH(QByteArray, addresses);
    QFETCH(QStringList, announced);
    findAtOnce({"SA_SerialNumber=\"1\" IP_SensorType=" + QByteArray::number(int(type)) +
                " IP_RemoteAddr=\"1.2.3.4\" " + addresses});
    const QList<SensorInfo> found = search(type);
    QCOMPARE(remoteAddresses(found), announced);
    for (const SensorInfo &info : found) {
        QCOMPARE(info.getParameter("SA_IPAddress"), info.getParameter("IP_RemoteAddr"));
        QCOMPARE(info.getParameter("SA_SerialNumber"), QVariant("1"));
        QCOMPARE(info.sensorType(), type);
    }
}

void TestSensorFinderResults::otherSensorsAreNotSplit()
{
    findAtOnce({"IP_SensorType=41 IP_RemoteAddr=\"1.2.3.4\" SA_CurrentIPAddresses=\"10.0.0.7 10.0.0.8\""});
    QCOMPARE(remoteAddresses(search(TX270)), QStringList("1.2.3.4"));
}

void TestSensorFinderResults::splitRecordsAreComparedLikeOthers()
{
    findAtOnce({"IP_SensorType=53 SA_SerialNumber=\"1\" SA_CurrentIPAddresses=\"10.0.0.7/8 10.0.0.8/8\"",
                "IP_SensorType=53 SA_SerialNumber=\"1\" SA_CurrentIPAddresses=\"10.0.0.8 10.0.0.9\""});
    QCOMPARE(remoteAddresses(search(HV2)), QStringList({"10.0.0.8", "10.0.0.7", "10.0.0.9"}));
}

void TestSensorFinderResults::parametersAreEqualAsVariants_data()
{
    QTest::addColumn<QVariant>("a");
    QTest::addColumn<QVariant>("b");
    QTest::addColumn<bool>("expected");
    const QString text = "12";
    QTest::addRow("missing on both sides") << QVariant() << QVariant() << true;
    QTest::addRow("missing on the right") << QVariant(text) << QVariant() << false;
    QTest::addRow("missing on the left") << QVariant() << QVariant(text) << false;
    QTest::addRow("missing and zero") << QVariant() << QVariant(0) << false;
    QTest::addRow("equal texts") << QVariant(text) << QVariant(text) << true;
    QTest::addRow("texts in another case") << QVariant("a") << QVariant("A") << false;
    QTest::addRow("text and number") << QVariant(text) << QVariant(12) << true;
    QTest::addRow("int and double") << QVariant(12) << QVariant(12.0) << true;
    QTest::addRow("different numbers") << QVariant(12) << QVariant(13) << false;
}

void TestSensorFinderResults::parametersAreEqualAsVariants()
{
    QFETCH(QVariant, a);
    QFETCH(QVariant, b);
    QFETCH(bool, expected);
    const QString name = "SA_SerialNumber";
    const auto info = [&](const QVariant &value) {
        return SensorInfo(value.isValid() ? Parameters{{name, value}} : Parameters(), NoSensor);
    };
    QCOMPARE(SensorFinder::isParamEqual(info(a), info(b), name), expected);
}

QTEST_GUILESS_MAIN(TestSensorFinderResults)
#include "tst_sensorfinder_results.moc"
