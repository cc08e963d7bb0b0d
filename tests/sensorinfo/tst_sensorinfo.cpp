// SPDX-License-Identifier: MIT
#include "catalogue/expectedmodels.h"

#include <SondixQt/sensorinfo.h>

#include <QtTest>

#include <limits>

using namespace SondixQt;

using Parameters = QMap<QString, QVariant>;
Q_DECLARE_METATYPE(Parameters)

namespace {

const QString typeKey = "IP_SensorType";
const QString indexKey = "IP_InterfaceIdx";
const QString sensorKey = "SA_Sensor";
const QString controllerKey = "SA_ControllerName";

SensorType decided(int reported, const QString &name)
{
    return SensorInfo({{typeKey, reported}, {sensorKey, name}}, NoSensor).sensorType();
}

void addDecision(int reported, const char *name, SensorType type)
{
    QTest::addRow("%d '%s'", reported, name) << reported << QString::fromLatin1(name) << type;
}

void addDecisionColumns()
{
    QTest::addColumn<int>("reported");
    QTest::addColumn<QString>("name");
    QTest::addColumn<SensorType>("type");
}

void compareDecision()
{
    QFETCH(int, reported);
    QFETCH(QString, name);
    QTEST(decided(reported, name), "type");
}

} // namespace

class TestSensorInfo : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void defaultDescriptionIsEmpty();
    void explicitTypeIsKept();
    void withoutReportedTypeTheTypeStaysUnknown();
    void reportedTypeIsReadFromAnyNumber_data();
    void reportedTypeIsReadFromAnyNumber();
    void controllerNameStandsInForAnEmptySensorName_data();
    void controllerNameStandsInForAnEmptySensorName();
    void sensorBehindTheConverter_data();
    void sensorBehindTheConverter() { compareDecision(); }
    void busSensorBySpecificName_data();
    void busSensorBySpecificName() { compareDecision(); }
    void busSensorByCatalogueName_data();
    void busSensorByCatalogueName() { compareDecision(); }
    void busSensorByAlias_data();
    void busSensorByAlias() { compareDecision(); }
    void otherTypesAreNotRefined_data();
    void otherTypesAreNotRefined() { compareDecision(); }
    void equalityIgnoresTheType();
    void equalityComparesParameters_data();
    void equalityComparesParameters();
    void parametersAreFoundByExactKey();
    void emptyKeyListSelectsAllParameters();
    void absentAndInvalidParametersAreLeftOut();
    void interfaceIsFoundByItsIndex_data();
    void interfaceIsFoundByItsIndex();
    void interfaceParametersAreThoseOfTheInterface_data();
    void interfaceParametersAreThoseOfTheInterface();
    void interfaceParametersMayBeInvalid();
    void capabilitiesOfModel_data();
    void capabilitiesOfModel();
    void unknownTypeCanNothing_data();
    void unknownTypeCanNothing();
    void webInterfacesAreOfferedByThirtyFiveModels();
    void copiesAndMovesKeepBothParts();
    void converterCarriesSensor_data();
    void converterCarriesSensor();
};

void TestSensorInfo::defaultDescriptionIsEmpty()
{
    const SensorInfo info;
    QCOMPARE(info.sensorType(), NoSensor);
    QVERIFY(info.getParameters({}).isEmpty());
    QCOMPARE(info.interfaceType(), NoInterface);
    QVERIFY(info.getInterfaceParameters().isEmpty());
    QCOMPARE(info, SensorInfo({}, NoSensor));
}

void TestSensorInfo::explicitTypeIsKept()
{
    QCOMPARE(SensorInfo({{typeKey, 1}}, TX270).sensorType(), TX270);
    QCOMPARE(SensorInfo({{typeKey, 43}, {sensorKey, "EC840"}}, MV4xx).sensorType(), MV4xx);
    QCOMPARE(SensorInfo({}, static_cast<SensorType>(-7)).sensorType(), static_cast<SensorType>(-7));
}

void TestSensorInfo::withoutReportedTypeTheTypeStaysUnknown()
{
    QCOMPARE(SensorInfo({{sensorKey, "MV410"}}, NoSensor).sensorType(), NoSensor);
    QCOMPARE(SensorInfo({{sensorKey, "TX270"}}, NoSensor).sensorType(), NoSensor);
    QCOMPARE(decided(0, "MV410"), NoSensor);
    QCOMPARE(decided(0, "EC840"), NoSensor);
}

void TestSensorInfo::reportedTypeIsReadFromAnyNumber_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<int>("type");
    QTest::newRow("int") << QVariant(41) << 41;
    QTest::newRow("text") << QVariant("41") << 41;
    QTest::newRow("bytes") << QVariant(QByteArray("41")) << 41;
    QTest::newRow("double") << QVariant(41.0) << 41;
    QTest::newRow("unsigned") << QVariant(41U) << 41;
    QTest::newRow("long") << QVariant(qlonglong(41)) << 41;
    QTest::newRow("type itself") << QVariant::fromValue(TX270) << 41;
    QTest::newRow("type in no catalogue") << QVariant(12345) << 12345;
    QTest::newRow("negative") << QVariant(-41) << -41;
    QTest::newRow("smallest") << QVariant(std::numeric_limits<int>::min()) << std::numeric_limits<int>::min();
    QTest::newRow("largest") << QVariant(std::numeric_limits<int>::max()) << std::numeric_limits<int>::max();
    QTest::newRow("model name") << QVariant("TX270") << 0;
    QTest::newRow("empty text") << QVariant(QString()) << 0;
    QTest::newRow("text with a fraction") << QVariant("41.5") << 0;
    QTest::newRow("hexadecimal text") << QVariant("0x29") << 0;
    QTest::newRow("text beyond int") << QVariant("4294967337") << 0;
    QTest::newRow("long beyond int") << QVariant(qlonglong(4294967337)) << 0;
    QTest::newRow("unsigned beyond int") << QVariant(4294967295U) << 0;
    QTest::newRow("double beyond int") << QVariant(1e300) << 0;
    QTest::newRow("not a number") << QVariant(qQNaN()) << 0;
    QTest::newRow("list") << QVariant(QVariantList{41}) << 0;
    QTest::newRow("invalid") << QVariant() << 0;
}

void TestSensorInfo::reportedTypeIsReadFromAnyNumber()
{
    QFETCH(QVariant, value);
    QTEST(static_cast<int>(SensorInfo({{typeKey, value}}, NoSensor).sensorType()), "type");
}

void TestSensorInfo::controllerNameStandsInForAnEmptySensorName_data()
{
    QTest::addColumn<Parameters>("parameters");
    QTest::addColumn<SensorType>("type");
    const QString converterName = "XA300/ETH_DV-12";
    const QString converterMV = "XA300/ETH_MV410";
    QTest::newRow("empty sensor name") << Parameters{{typeKey, 34},
                                                     {sensorKey, QString()},
                                                     {controllerKey, converterName}}
                                       << DVxxx_XA300ETH;
    QTest::newRow("no sensor name") << Parameters{{typeKey, 34}, {controllerKey, converterName}} << DVxxx_XA300ETH;
    QTest::newRow("invalid sensor name")
        << Parameters{{typeKey, 34}, {sensorKey, QVariant()}, {controllerKey, converterName}} << DVxxx_XA300ETH;
    QTest::newRow("both names") << Parameters{{typeKey, 34},
                                              {sensorKey, converterMV},
                                              {controllerKey, converterName}}
                                << MV410_XA300ETH;
    QTest::newRow("sensor name that says nothing")
        << Parameters{{typeKey, 34}, {sensorKey, "?"}, {controllerKey, converterName}} << XA300;
    QTest::newRow("no name") << Parameters{{typeKey, 34}} << XA300;
    QTest::newRow("bus family without name") << Parameters{{typeKey, 43}} << GenericKVBus;
}

void TestSensorInfo::controllerNameStandsInForAnEmptySensorName()
{
    QFETCH(Parameters, parameters);
    QTEST(SensorInfo(parameters, NoSensor).sensorType(), "type");
}

void TestSensorInfo::sensorBehindTheConverter_data()
{
    addDecisionColumns();
    const auto row = addDecision;
    row(34, "XA300/ETH_MV410", MV410_XA300ETH);
    row(34, "XA300/ETH_MV420", MV420_XA300ETH);
    row(34, "XA300/ETH_MV430", MV430_XA300ETH);
    row(34, "XA300/ETH_MV4", MV4xx_XA300ETH);
    row(34, "XA300/ETH_GY330", GY330_XA300ETH);
    row(34, "XA300/ETH_GY310D", GY310_XA300ETH);
    row(34, "XA300/ETH_CP740", CP740_XA300ETH);
    row(34, "XA300/ETH_DV-", DVxxx_XA300ETH);
    row(34, "XA300/ETH_MV450", MV4xx_XA300ETH);
    row(34, "XA300/ETH_MV410-S", MV410_XA300ETH);
    row(34, "a XA300/ETH_CP740 b", CP740_XA300ETH);
    row(34, "XA300/ETH_MV4 XA300/ETH_MV430", MV430_XA300ETH);
    row(34, "XA300/ETH_MV420 XA300/ETH_MV410", MV410_XA300ETH);
    row(34, "XA300/ETH_DV-1 XA300/ETH_CP740", CP740_XA300ETH);
    row(34, "XA300/ETH_GY310D XA300/ETH_GY330", GY330_XA300ETH);
    row(34, "XA300/ETH_GY310S", XA300);
    row(34, "XA300/ETH_EC840", XA300);
    row(34, "xa300/eth_mv410", XA300);
    row(34, "MV410", XA300);
    row(34, "XA300/ETH", XA300);
    row(10034, "XA300/ETH_GY330", GY330_XA300ETH);
    row(40034, "XA300/ETH_MV430", MV430_XA300ETH);
    row(310034, "no model", MV430_XA300ETH);
    row(170034, "XA300/ETH_DV-7", DVxxx_XA300ETH);
    row(990034, "XA300/ETH_MV4", MV4xx_XA300ETH);
}

void TestSensorInfo::busSensorBySpecificName_data()
{
    addDecisionColumns();
    const auto row = addDecision;
    row(20043, "MV420-S", MV420);
    row(20043, "MV410", MV410);
    row(20043, "MV430", MV430);
    row(43, "MV410", MV410);
    row(43, "MV420", MV420);
    row(43, "MV430", MV430);
    row(43, "MV430 MV410", MV410);
    row(43, "MV430 MV420", MV420);
    row(43, "MV4 EC840 MV430", MV430);
    row(43, "EC840", EC840);
    row(43, "EC830", EC830);
    row(43, "EC850", EC850);
    row(43, "DV-12", DVxxx);
    row(43, "EC850 EC830", EC830);
    row(43, "EC830 EC840", EC840);
    row(43, "DV-1 EC850", EC850);
    row(43, "GY330 DV-1", DVxxx);
    row(30043, "EC850", EC850);
    row(70043, "EC840", EC840);
    row(9990043, "EC840", EC840);
}

void TestSensorInfo::busSensorByCatalogueName_data()
{
    addDecisionColumns();
    const auto row = addDecision;
    row(43, "GY310", GY310);
    row(43, "GY320", GY320);
    row(43, "GY330", GY330);
    row(43, "CP740", CP740);
    row(43, "EC82x", EC82x);
    row(43, "EC829", EC82x);
    row(43, "EC82x_ETH", EC82x);
    row(43, "MV455", MV4xx);
    row(43, "MV4", MV4xx);
    row(20043, "DV-12", DVxxx);
    row(20043, "EC850", EC850);
    row(20043, "GY320", GY320);
    // The first type in display order, not the longest name or the first name in the text.
    row(43, "mv410", MV4xx);
    row(43, "mv430 cp740", CP740);
    row(43, "gy330 gy310", GY310);
    row(43, "MV4 EC840", EC840);
    row(43, "MV4 EC830 EC840", EC840);
    row(43, "ec830 ec840", EC840);
    row(43, "dv-12", DVxxx);
    row(43, "E_C 8x4_0", EC840);
    row(43, "G Y 3 X 1 _0", GY310);
    row(43, "kv-bus probe", GenericKVBus);
    row(30043, "KV-BUS", GenericKVBus);
    row(30043, "GY330", GY330);
    row(30043, "unheard of", GY310);
    row(43, "GY310_XA300ETH", GY310);
    row(43, "DV", GenericKVBus);
    row(43, "TX270", GenericKVBus);
    row(43, "x_ X", GenericKVBus);
    row(90043, "x_ X", GY320);
}

void TestSensorInfo::busSensorByAlias_data()
{
    addDecisionColumns();
    const auto row = addDecision;
    row(43, "GYSENS1_A", GY330);
    row(43, "GYIS1_DYN_B", GY310);
    row(43, "GYIS1_B", GY310);
    row(30043, "GYIS1_B", GY310);
    row(90043, "GYIS1_B", GY310);
    row(30043, "GYSENS1_A", GY330);
    row(90043, "GYIS1_DYN_B", GY310);
    row(90043, "GYIS1_B ", GY320);
    row(90043, "gyis1_b", GY320);
    row(90043, "my GYSENS1_A", GY320);
}

void TestSensorInfo::otherTypesAreNotRefined_data()
{
    addDecisionColumns();
    const auto row = addDecision;
    row(41, "MV410", TX270);
    row(41, "XA300/ETH_MV410", TX270);
    row(41, "EC840", TX270);
    row(40, "EC840", CP740);
    row(50, "EC840", EC82x_ETH);
    row(53, "HV210", HV2);
    row(10053, "HV220", HV210);
    row(99999, "EC840", File);
    row(4343, "EC840", static_cast<SensorType>(4343));
    row(-9957, "EC840", static_cast<SensorType>(-9957));
    row(-43, "EC840", static_cast<SensorType>(-43));
    row(-34, "XA300/ETH_MV410", static_cast<SensorType>(-34));
}

void TestSensorInfo::equalityIgnoresTheType()
{
    const Parameters parameters = {{typeKey, 1}};
    const SensorInfo explicitly(parameters, TX270);
    const SensorInfo decidedHere(parameters, NoSensor);
    QCOMPARE(explicitly.sensorType(), TX270);
    QCOMPARE(decidedHere.sensorType(), TX210);
    QVERIFY(explicitly == decidedHere);
    QVERIFY(!(explicitly != decidedHere));
}

void TestSensorInfo::equalityComparesParameters_data()
{
    QTest::addColumn<Parameters>("one");
    QTest::addColumn<Parameters>("other");
    QTest::addColumn<bool>("equal");
    const QString key = "SA_SerialNumber";
    QTest::newRow("both empty") << Parameters{} << Parameters{} << true;
    QTest::newRow("equal") << Parameters{{key, 7}, {typeKey, 1}} << Parameters{{typeKey, 1}, {key, 7}} << true;
    QTest::newRow("other value") << Parameters{{key, 7}} << Parameters{{key, 8}} << false;
    QTest::newRow("other key") << Parameters{{key, 7}} << Parameters{{key.toLower(), 7}} << false;
    QTest::newRow("one more") << Parameters{{key, 7}} << Parameters{{key, 7}, {typeKey, 1}} << false;
    QTest::newRow("one less") << Parameters{{key, 7}, {typeKey, 1}} << Parameters{{key, 7}} << false;
}

void TestSensorInfo::equalityComparesParameters()
{
    QFETCH(Parameters, one);
    QFETCH(Parameters, other);
    QFETCH(bool, equal);
    QCOMPARE(SensorInfo(one, TX270) == SensorInfo(other, TX270), equal);
    QCOMPARE(SensorInfo(one, TX270) != SensorInfo(other, TX270), !equal);
}

void TestSensorInfo::parametersAreFoundByExactKey()
{
    const SensorInfo info({{sensorKey, "probe"}, {typeKey, QVariant()}}, NoSensor);
    QVERIFY(info.contains(sensorKey));
    QVERIFY(info.contains(typeKey));
    QVERIFY(!info.contains(sensorKey.toLower()));
    QVERIFY(!info.contains(QString()));
    QCOMPARE(info.getParameter(sensorKey), QVariant("probe"));
    QVERIFY(!info.getParameter(typeKey).isValid());
    QVERIFY(!info.getParameter("SA_sensor").isValid());
}

void TestSensorInfo::emptyKeyListSelectsAllParameters()
{
    const Parameters parameters = {{sensorKey, "probe"}, {typeKey, 41}, {indexKey, QVariant()}};
    QCOMPARE(SensorInfo(parameters, NoSensor).getParameters({}), parameters);
}

void TestSensorInfo::absentAndInvalidParametersAreLeftOut()
{
    const SensorInfo info({{sensorKey, QString()}, {typeKey, 41}, {indexKey, QVariant()}}, NoSensor);
    const Parameters selected = {{sensorKey, QString()}, {typeKey, 41}};
    QCOMPARE(info.getParameters({sensorKey, typeKey, indexKey, controllerKey, typeKey}), selected);
    QVERIFY(info.getParameters({controllerKey, "ip_sensortype"}).isEmpty());
    QVERIFY(info.getParameters({QString()}).isEmpty());
}

void TestSensorInfo::interfaceIsFoundByItsIndex_data()
{
    QTest::addColumn<QVariant>("index");
    QTest::addColumn<SensorInterface>("iface");
    QTest::newRow("0") << QVariant(0) << NoInterface;
    QTest::newRow("1") << QVariant(1) << RS232;
    QTest::newRow("2") << QVariant(2) << XA100;
    QTest::newRow("3") << QVariant(3) << TCPIP;
    QTest::newRow("4") << QVariant(4) << NoInterface;
    QTest::newRow("5") << QVariant(5) << NoInterface;
    QTest::newRow("6") << QVariant(6) << XA200;
    QTest::newRow("7") << QVariant(7) << WinUSB;
    QTest::newRow("8") << QVariant(8) << XA100_USB;
    QTest::newRow("9") << QVariant(9) << NoInterface;
    QTest::newRow("10") << QVariant(10) << XA200_ETH;
    QTest::newRow("flag value") << QVariant(64) << NoInterface;
    QTest::newRow("negative") << QVariant(-1) << NoInterface;
    QTest::newRow("text") << QVariant("10") << XA200_ETH;
    QTest::newRow("no number") << QVariant("TCP/IP") << NoInterface;
    QTest::newRow("beyond int") << QVariant(qlonglong(4294967306)) << NoInterface;
    QTest::newRow("invalid") << QVariant() << NoInterface;
}

void TestSensorInfo::interfaceIsFoundByItsIndex()
{
    QFETCH(QVariant, index);
    QTEST(SensorInfo({{indexKey, index}}, NoSensor).interfaceType(), "iface");
}

void TestSensorInfo::interfaceParametersAreThoseOfTheInterface_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("keys");
    const auto row = [](int index, const char *keys) {
        QTest::addRow("%d", index) << index << QString::fromLatin1(keys);
    };
    row(0, "");
    row(1, "IP_Interface IP_Port IP_Baudrate IP_Stopbits IP_ByteSize IP_Parity IP_SensorAddress");
    row(2, "IP_Interface IP_CardInstance IP_ChannelNumber IP_Baudrate");
    row(3, "IP_SensorTypeName SA_SerialNumber SA_Softwareversion IP_Interface IP_RemoteAddr IP_RemotePort "
           "IP_DataPort SA_MacAddress IP_AddressFamily");
    row(4, "");
    row(6, "IP_Interface IP_CardInstance IP_ChannelNumber IP_Baudrate IP_Parity");
    row(7, "IP_SensorTypeName IP_Interface IP_DeviceInstance SA_SerialNumber");
    row(8, "IP_Interface IP_DeviceInstance SA_SerialNumber IP_ChannelNumber IP_Port IP_Baudrate IP_Parity");
    row(10, "SA_SerialNumber SA_Softwareversion IP_SensorTypeName IP_Interface IP_RemoteAddr SA_MacAddress "
            "IP_RemotePort IP_CardInstance IP_DeviceInstance IP_ChannelNumber IP_Baudrate IP_Parity "
            "IP_AddressFamily");
}

void TestSensorInfo::interfaceParametersAreThoseOfTheInterface()
{
    QFETCH(int, index);
    QFETCH(QString, keys);
    const QStringList everything =
        QString("IP_Interface IP_Port IP_Baudrate IP_Stopbits IP_ByteSize IP_Parity IP_SensorAddress "
                "IP_DeviceInstance SA_SerialNumber IP_ChannelNumber IP_SensorTypeName SA_Softwareversion "
                "IP_RemoteAddr IP_RemotePort IP_DataPort SA_MacAddress IP_AddressFamily IP_CardInstance "
                "IP_SensorType SA_Sensor SA_ControllerName SA_ArticleNumber")
            .split(' ');
    Parameters parameters = {{indexKey, index}};
    for (const QString &key : everything)
        parameters.insert(key, "value of " + key);

    QStringList listed = keys.split(' ', Qt::SkipEmptyParts);
    listed.sort();
    const Parameters selected = SensorInfo(parameters, NoSensor).getInterfaceParameters();
    QCOMPARE(QStringList(selected.keys()), listed);
    for (auto it = selected.begin(); it != selected.end(); ++it)
        QCOMPARE(it.value(), QVariant("value of " + it.key()));

    QVERIFY(SensorInfo({{indexKey, index}}, NoSensor).getInterfaceParameters().isEmpty());
}

void TestSensorInfo::interfaceParametersMayBeInvalid()
{
    const QString port = "IP_Port";
    const Parameters selected = SensorInfo({{indexKey, 1}, {port, QVariant()}}, NoSensor).getInterfaceParameters();
    QCOMPARE(selected.keys(), QList<QString>{port});
    QVERIFY(!selected.value(port).isValid());
}

void TestSensorInfo::capabilitiesOfModel_data()
{
    QTest::addColumn<expected::Model>("model");
    for (const expected::Model &model : expected::models)
        QTest::addRow("%d %s", model.value, model.shortName) << model;
}

void TestSensorInfo::capabilitiesOfModel()
{
    QFETCH(expected::Model, model);
    const SensorInfo info({}, model.type);
    QCOMPARE(info.supportsHelp(), model.can('H'));
    QCOMPARE(info.supportsGetAllParameters(), model.can('G'));
    QCOMPARE(info.supportsASCIIProtocol(), model.can('A'));
    QCOMPARE(static_cast<int>(info.getWebInterfaceSupport()), model.web);
}

void TestSensorInfo::unknownTypeCanNothing_data()
{
    QTest::addColumn<int>("type");
    for (const int type : {3, 70, 71, 10041, -1, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()})
        QTest::addRow("%d", type) << type;
}

void TestSensorInfo::unknownTypeCanNothing()
{
    QFETCH(int, type);
    const SensorInfo info({}, static_cast<SensorType>(type));
    QVERIFY(!info.supportsHelp());
    QVERIFY(!info.supportsGetAllParameters());
    QVERIFY(!info.supportsASCIIProtocol());
    QCOMPARE(info.getWebInterfaceSupport(), NoWebInterface);
}

void TestSensorInfo::webInterfacesAreOfferedByThirtyFiveModels()
{
    static_assert(NoWebInterface == 0 && NativeWebInterface == 1 && SerialWebInterface == 2);
    QList<SensorType> serial;
    int native = 0;
    for (int number = 0; number < 400000; ++number) {
        const SensorType type = static_cast<SensorType>(number);
        const WebInterface web = SensorInfo({}, type).getWebInterfaceSupport();
        native += web == NativeWebInterface ? 1 : 0;
        if (web == SerialWebInterface)
            serial.append(type);
    }
    QCOMPARE(serial, (QList<SensorType>{TX270, TX280, TX290, TX300, TX310}));
    QCOMPARE(native + serial.size(), 35);
}

void TestSensorInfo::copiesAndMovesKeepBothParts()
{
    const Parameters parameters = {{typeKey, 41}};
    SensorInfo original(parameters, WI610);
    SensorInfo copied(original);
    QCOMPARE(copied.getParameters({}), parameters);
    QCOMPARE(copied.sensorType(), WI610);
    SensorInfo moved(std::move(original));
    QCOMPARE(moved.getParameters({}), parameters);
    QCOMPARE(moved.sensorType(), WI610);
    SensorInfo target;
    target = copied;
    QCOMPARE(target.sensorType(), WI610);
    target = SensorInfo();
    QCOMPARE(target.sensorType(), NoSensor);
    target = std::move(moved);
    QCOMPARE(target.getParameters({}), parameters);
    QCOMPARE(target.sensorType(), WI610);
}

void TestSensorInfo::converterCarriesSensor_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("carried");
    const auto row = [](const char *name, bool carried) {
        QTest::addRow("'%s'", name) << QString::fromLatin1(name) << carried;
    };
    row("CP740", true);
    row("MV4xx", true);
    row("MV410", true);
    row("MV420", true);
    row("MV430", true);
    row("GY310", true);
    row("GY330", true);
    row("DV-xxx", true);
    row("", true);
    row("MV4", true);
    row("GY3", true);
    row("DV-", true);
    row("740", true);
    row("xxx", true);
    row("EC840", false);
    row("GY320", false);
    row("mv410", false);
    row("MV410-S", false);
    row("MV410_XA300ETH", false);
    row("XA300ETH", false);
    row("_", false);
    row("DVxxx", false);
    row("KV-BUS", false);
}

void TestSensorInfo::converterCarriesSensor()
{
    QFETCH(QString, name);
    QTEST(isKVBusSensorSupportedByXA300ETH(name), "carried");
}

QTEST_GUILESS_MAIN(TestSensorInfo)
#include "tst_sensorinfo.moc"
