// SPDX-License-Identifier: MIT
#include "expectedmodels.h"

#include <catalogue/sensortypes_p.h>
#include <SondixQt/sensorfeatures.h>
#include <SondixQt/sensorinfo.h>

#include <QtTest>

#include <atomic>
#include <limits>
#include <random>
#include <thread>
#include <vector>

using namespace SondixQt;

namespace {

const QList<int> numbersOfNoModel = {3,
                                     4,
                                     6,
                                     7,
                                     11,
                                     14,
                                     17,
                                     27,
                                     64,
                                     70,
                                     71,
                                     10000,
                                     10041,
                                     99998,
                                     100034,
                                     -1,
                                     -43,
                                     -9966,
                                     420043,
                                     std::numeric_limits<int>::min(),
                                     std::numeric_limits<int>::max()};

/// A straightforward implementation of the group list: inserts each type at the position of its sort key.
QList<SensorType> listedOneByOne(int groups, bool includeHidden)
{
    QList<SensorType> types;
    QList<int> orders;
    for (const expected::Model &model : expected::models) {
        if ((model.group & groups) == 0 || (model.can('V') && !includeHidden))
            continue;
        int place = 0;
        while (place < orders.size() && orders.at(place) < model.order)
            ++place;
        types.insert(place, model.type);
        orders.insert(place, model.order);
    }
    return types;
}

} // namespace

class TestSensorTypes : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Runs first, so that the threads race for the data initialised on first use.
    void lookupsFromSeveralThreadsAtOnce();
    void namesOfModel_data();
    void namesOfModel();
    void unknownTypeHasNoNameAndNoGroup_data();
    void unknownTypeHasNoNameAndNoGroup();
    void groupRecord_data();
    void groupRecord();
    void unknownGroupHasNoName_data();
    void unknownGroupHasNoName();
    void sensorGroupsAreAscendingWithAllGroupsFirst();
    void interfaceRecord_data();
    void interfaceRecord();
    void unknownInterfaceHasNoNameAndIndexZero_data();
    void unknownInterfaceHasNoNameAndIndexZero();
    void interfaceIndicesAreUnique();
    void sensorsInGroupFollowTheDisplayOrder_data();
    void sensorsInGroupFollowTheDisplayOrder();
    void sensorsInAnyCombinationOfGroups();
    void busGroupListsVariantsOnRequestOnly();
    void delmarGroupLeavesOutTheHiddenVariant();
    void noTwoListedTypesShareAnOrder();
    void typesWithoutGroupAreNeverListed();
    void listedTypesBelongToTheCaller();
    void metaTypesHavePlainAndQualifiedNames_data();
    void metaTypesHavePlainAndQualifiedNames();
    void typesTravelThroughQueuedCalls();
};

void TestSensorTypes::namesOfModel_data()
{
    QTest::addColumn<expected::Model>("model");
    for (const expected::Model &model : expected::models)
        QTest::addRow("%d %s", model.value, model.shortName) << model;
}

void TestSensorTypes::namesOfModel()
{
    QFETCH(expected::Model, model);
    QCOMPARE(sensorName(model.type, false), QString::fromLatin1(model.name));
    QCOMPARE(sensorName(model.type, true), QString::fromLatin1(model.shortName));
    QCOMPARE(sensorName(model.type), QString::fromLatin1(model.name));
    QCOMPARE(static_cast<int>(getSensorGroupFromSensorType(model.type)), model.group);
}

void TestSensorTypes::unknownTypeHasNoNameAndNoGroup_data()
{
    QTest::addColumn<int>("number");
    for (const int number : numbersOfNoModel)
        QTest::addRow("%d", number) << number;
}

void TestSensorTypes::unknownTypeHasNoNameAndNoGroup()
{
    QFETCH(int, number);
    const SensorType type = static_cast<SensorType>(number);
    QCOMPARE(sensorName(type, false), QString());
    QCOMPARE(sensorName(type, true), QString());
    QCOMPARE(getSensorGroupFromSensorType(type), NoGroup);
}

void TestSensorTypes::groupRecord_data()
{
    QTest::addColumn<SensorGroup>("group");
    QTest::addColumn<int>("value");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("shortName");
    QTest::addColumn<QString>("image");
    const auto row = [](SensorGroup group, int value, const char *name, const char *shortName,
                        const char *picture) {
        QTest::addRow("%d", value) << group << value << QString::fromLatin1(name) << QString::fromLatin1(shortName)
                                   << QStringLiteral(":/images/%1.png").arg(QLatin1String(picture));
    };
    row(AllGroups, -1, "Any group", "All sensor groups", "All-groups");
    row(NoGroup, 0, "", "", "genericSensor");
    row(Tavrin, 1, "Tavrin", "Tavrin", "TX-group");
    row(TavrinRG, 2, "Tavrin RG", "Tavrin RG", "RG-group");
    row(Oscura, 4, "Oscura", "Oscura CC", "CC480");
    row(Wavlen, 8, "Wavlen", "Wavlen", "WI610");
    row(Silvant, 16, "Silvant", "Silvant MC", "MC-group");
    row(Korrin, 32, "Korrin", "Korrin", "korrin-group");
    row(Delmar, 64, "Delmar", "Delmar", "delmar-group");
    row(Color, 128, "Color", "Color", "color-group");
    row(Gyrant, 256, "Gyrant", "Gyrant", "genericSensor");
    row(Morvik, 512, "Morvik", "Morvik", "korrin-group");
    row(Profax, 1024, "Profax", "Profax", "PF7xx");
    row(Interfaces, 2048, "Interfaces", "Interfaces", "interface-group");
    row(KVBus, 4096, "KV-BUS", "KV-BUS", "genericSensor");
    row(Other, 8192, "Other sensors", "Other", "thermo-group");
}

void TestSensorTypes::groupRecord()
{
    QFETCH(SensorGroup, group);
    QFETCH(QString, name);
    QFETCH(QString, shortName);
    QTEST(static_cast<int>(group), "value");
    QCOMPARE(sensorGroupName(group, false), name);
    QCOMPARE(sensorGroupName(group, true), shortName);
    QCOMPARE(sensorGroupName(group), name);
    QCOMPARE(groupTable().size(), 16);
    QVERIFY(groupTable().contains(group));
    QTEST(groupTable().value(group).image, "image");
}

void TestSensorTypes::unknownGroupHasNoName_data()
{
    QTest::addColumn<int>("group");
    QTest::newRow("Morvik and KVBus") << (512 | 4096);
    QTest::newRow("Tavrin and TavrinRG") << 3;
    QTest::newRow("all named groups") << 0x3FFF;
    QTest::newRow("a bit of no group") << 16384;
    QTest::newRow("-2") << -2;
    QTest::newRow("smallest") << std::numeric_limits<int>::min();
    QTest::newRow("largest") << std::numeric_limits<int>::max();
}

void TestSensorTypes::unknownGroupHasNoName()
{
    QFETCH(int, group);
    QCOMPARE(sensorGroupName(static_cast<SensorGroup>(group), false), QString());
    QCOMPARE(sensorGroupName(static_cast<SensorGroup>(group), true), QString());
}

void TestSensorTypes::sensorGroupsAreAscendingWithAllGroupsFirst()
{
    QList<int> values;
    const QList<SensorGroup> groups = sensorGroups();
    for (const SensorGroup group : groups)
        values.append(group);
    QCOMPARE(values, (QList<int>{-1, 0, 1, 2, 4, 8, 16, 32, 64, 128, 256, 512, 1024, 2048, 4096, 8192}));
}

void TestSensorTypes::interfaceRecord_data()
{
    QTest::addColumn<SensorInterface>("iface");
    QTest::addColumn<int>("value");
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("libraryName");
    QTest::addColumn<QString>("keys");
    const auto row = [](SensorInterface iface, int value, int index, const char *name, const char *libraryName,
                        const char *keys) {
        QTest::addRow("%d", value) << iface << value << index << QString::fromLatin1(name)
                                   << QString::fromLatin1(libraryName) << QString::fromLatin1(keys);
    };
    row(NoInterface, 0, 0, "No Interface", "", "");
    row(RS232, 1, 1, "RS232", "RS232",
        "IP_Interface IP_Port IP_Baudrate IP_Stopbits IP_ByteSize IP_Parity IP_SensorAddress");
    row(XA100_USB, 2, 8, "XA100/USB", "XA100_USB",
        "IP_Interface IP_DeviceInstance SA_SerialNumber IP_ChannelNumber IP_Port IP_Baudrate IP_Parity");
    row(TCPIP, 4, 3, "Ethernet", "TCP/IP",
        "IP_SensorTypeName SA_SerialNumber SA_Softwareversion IP_Interface IP_RemoteAddr IP_RemotePort "
        "IP_DataPort SA_MacAddress IP_AddressFamily");
    row(XA200, 8, 6, "XA200/PCI", "XA200", "IP_Interface IP_CardInstance IP_ChannelNumber IP_Baudrate IP_Parity");
    row(WinUSB, 16, 7, "USB", "WinUSB", "IP_SensorTypeName IP_Interface IP_DeviceInstance SA_SerialNumber");
    row(XA100, 32, 2, "XA100/PCI", "XA100", "IP_Interface IP_CardInstance IP_ChannelNumber IP_Baudrate");
    row(XA200_ETH, 64, 10, "XA200/ETH", "XA200_ETH",
        "SA_SerialNumber SA_Softwareversion IP_SensorTypeName IP_Interface IP_RemoteAddr SA_MacAddress "
        "IP_RemotePort IP_CardInstance IP_DeviceInstance IP_ChannelNumber IP_Baudrate IP_Parity "
        "IP_AddressFamily");
}

void TestSensorTypes::interfaceRecord()
{
    QFETCH(SensorInterface, iface);
    QFETCH(QString, name);
    QTEST(static_cast<int>(iface), "value");
    QTEST(interfaceIndex(iface), "index");
    QCOMPARE(interfaceName(iface, false), name);
    QCOMPARE(interfaceName(iface), name);
    QTEST(interfaceName(iface, true), "libraryName");
    QCOMPARE(interfaceTable().size(), 8);
    QVERIFY(interfaceTable().contains(iface));
    QTEST(interfaceTable().value(iface).parameterKeys.join(' '), "keys");
}

void TestSensorTypes::unknownInterfaceHasNoNameAndIndexZero_data()
{
    QTest::addColumn<int>("value");
    QTest::newRow("RS232 and TCPIP") << 5;
    QTest::newRow("all named interfaces") << 127;
    QTest::newRow("a bit of no interface") << 128;
    QTest::newRow("-1") << -1;
    QTest::newRow("smallest") << std::numeric_limits<int>::min();
    QTest::newRow("largest") << std::numeric_limits<int>::max();
}

void TestSensorTypes::unknownInterfaceHasNoNameAndIndexZero()
{
    QFETCH(int, value);
    const SensorInterface iface = static_cast<SensorInterface>(value);
    QCOMPARE(interfaceName(iface, false), QString());
    QCOMPARE(interfaceName(iface, true), QString());
    QCOMPARE(interfaceIndex(iface), 0);
}

void TestSensorTypes::interfaceIndicesAreUnique()
{
    QList<int> indices;
    for (const int value : {0, 1, 2, 4, 8, 16, 32, 64})
        indices.append(interfaceIndex(static_cast<SensorInterface>(value)));
    QCOMPARE(indices, (QList<int>{0, 1, 8, 3, 6, 7, 2, 10}));
}

void TestSensorTypes::sensorsInGroupFollowTheDisplayOrder_data()
{
    QTest::addColumn<int>("group");
    for (const int group : {-1, 0, 1, 2, 4, 8, 16, 32, 64, 128, 256, 512, 1024, 2048, 4096, 8192})
        QTest::addRow("%d", group) << group;
}

void TestSensorTypes::sensorsInGroupFollowTheDisplayOrder()
{
    QFETCH(int, group);
    const SensorGroups groups(static_cast<SensorGroup>(group));
    QCOMPARE(sensorsInGroup(groups, false), listedOneByOne(group, false));
    QCOMPARE(sensorsInGroup(groups, true), listedOneByOne(group, true));
    QCOMPARE(sensorsInGroup(groups), listedOneByOne(group, false));
}

void TestSensorTypes::sensorsInAnyCombinationOfGroups()
{
    std::mt19937 random(20240611);
    for (int i = 0; i < 2000; ++i) {
        const int groups = static_cast<int>(random());
        const bool includeHidden = (i % 2) == 0;
        QCOMPARE(sensorsInGroup(SensorGroups(static_cast<SensorGroup>(groups)), includeHidden),
                 listedOneByOne(groups, includeHidden));
    }
}

void TestSensorTypes::busGroupListsVariantsOnRequestOnly()
{
    const QList<SensorType> withoutVariants = {EC840, EC830, EC82x_ETH, EC850, CP740, GenericKVBus,
                                               MV4xx, DVxxx, GY310,     GY320, GY330};
    const QList<SensorType> withVariants = {
        EC840,          EC830,          EC82x_ETH,      EC82x,          EC850,          CP740,
        GenericKVBus,   GY310_XA300ETH, MV4xx_XA300ETH, MV410_XA300ETH, MV420_XA300ETH, MV430_XA300ETH,
        GY330_XA300ETH, CP740_XA300ETH, DVxxx_XA300ETH, MV4xx,          MV410,          MV420,
        MV430,          DVxxx,          GY310,          GY320,          GY330};
    QCOMPARE(sensorsInGroup(KVBus, false), withoutVariants);
    QCOMPARE(sensorsInGroup(KVBus, true), withVariants);
}

void TestSensorTypes::delmarGroupLeavesOutTheHiddenVariant()
{
    QCOMPARE(sensorsInGroup(Delmar, false), (QList<SensorType>{CP720, CP740, CP730, CP710, CP750, CB910, CB92xx}));
}

void TestSensorTypes::noTwoListedTypesShareAnOrder()
{
    const QMap<SensorType, SensorFeatures> &table = getSensorFeatures();
    const QList<SensorType> types = sensorsInGroup(AllGroups, true);
    for (int i = 1; i < types.size(); ++i)
        QVERIFY(table.value(types.at(i - 1)).order < table.value(types.at(i)).order);
}

void TestSensorTypes::typesWithoutGroupAreNeverListed()
{
    const QList<SensorType> types = sensorsInGroup(AllGroups, true);
    QCOMPARE(types.size(), 75);
    for (const SensorType type : {NoSensor, Unnamed, MultiSensor, File})
        QVERIFY(!types.contains(type));
    QVERIFY(sensorsInGroup(NoGroup, true).isEmpty());
}

void TestSensorTypes::listedTypesBelongToTheCaller()
{
    QList<SensorType> types = sensorsInGroup(Wavlen);
    types.prepend(File);
    QCOMPARE(sensorsInGroup(Wavlen), (QList<SensorType>{WI610, WI620}));
    QList<SensorGroup> groups = sensorGroups();
    groups.clear();
    QCOMPARE(sensorGroups().size(), 16);
}

void TestSensorTypes::metaTypesHavePlainAndQualifiedNames_data()
{
    QTest::addColumn<QByteArray>("plain");
    QTest::addColumn<QByteArray>("qualified");
    QTest::addColumn<int>("id");
    QTest::newRow("SensorType") << QByteArray("SensorType") << QByteArray("SondixQt::SensorType")
                                << qMetaTypeId<SensorType>();
    QTest::newRow("SensorGroup") << QByteArray("SensorGroup") << QByteArray("SondixQt::SensorGroup")
                                 << qMetaTypeId<SensorGroup>();
    QTest::newRow("SensorInterface") << QByteArray("SensorInterface") << QByteArray("SondixQt::SensorInterface")
                                     << qMetaTypeId<SensorInterface>();
    QTest::newRow("list") << QByteArray("QList<SensorType>") << QByteArray("QList<SondixQt::SensorType>")
                          << qMetaTypeId<QList<SensorType>>();
    QTest::newRow("SensorInfo") << QByteArray("SensorInfo") << QByteArray("SondixQt::SensorInfo")
                                << qMetaTypeId<SensorInfo>();
}

void TestSensorTypes::metaTypesHavePlainAndQualifiedNames()
{
    QFETCH(QByteArray, plain);
    QFETCH(QByteArray, qualified);
    QVERIFY(QMetaType::type(plain.constData()) != QMetaType::UnknownType);
    QTEST(QMetaType::type(plain.constData()), "id");
    QTEST(QMetaType::type(qualified.constData()), "id");
}

class Receiver : public QObject
{
    Q_OBJECT

public:
    SensorType lastType = NoSensor;
    QList<SensorType> lastList;
    SensorInfo lastInfo;

public Q_SLOTS:
    void takeType(SondixQt::SensorType type) { lastType = type; }
    void takeList(QList<SondixQt::SensorType> list, bool) { lastList.swap(list); }
    void takeInfo(const SondixQt::SensorInfo &info) { lastInfo = info; }
};

void TestSensorTypes::typesTravelThroughQueuedCalls()
{
    Receiver receiver;
    const QList<SensorType> list = {TX270, File};
    const SensorInfo info({{"IP_SensorType", 41}}, NoSensor);
    std::atomic<int> accepted{0};
    std::thread caller([&] {
        accepted += QMetaObject::invokeMethod(&receiver, "takeType", Qt::QueuedConnection,
                                              Q_ARG(SondixQt::SensorType, WI610));
        accepted += QMetaObject::invokeMethod(&receiver, "takeList", Qt::QueuedConnection,
                                              Q_ARG(QList<SondixQt::SensorType>, list), Q_ARG(bool, true));
        accepted += QMetaObject::invokeMethod(&receiver, "takeInfo", Qt::QueuedConnection,
                                              Q_ARG(SondixQt::SensorInfo, info));
    });
    caller.join();
    QCOMPARE(accepted.load(), 3);
    QTRY_COMPARE(receiver.lastInfo, info);
    QCOMPARE(receiver.lastType, WI610);
    QCOMPARE(receiver.lastList, list);
    QCOMPARE(receiver.lastInfo.sensorType(), TX270);
}

void TestSensorTypes::lookupsFromSeveralThreadsAtOnce()
{
    std::atomic<int> wrong{0};
    std::atomic<bool> go{false};
    const auto reader = [&] {
        while (!go)
            std::this_thread::yield();
        for (int round = 0; round < 20; ++round) {
            for (const expected::Model &model : expected::models) {
                const QString shortName = QString::fromLatin1(model.shortName);
                wrong += sensorName(model.type, true) != shortName;
                wrong += getSensorGroupFromSensorType(model.type) != model.group;
                wrong += getSensorTypeFromName(shortName) != (shortName.isEmpty() ? NoSensor : model.type);
                wrong += SensorInfo({}, model.type).supportsHelp() != model.can('H');
            }
            wrong += sensorsInGroup(AllGroups, true).size() != 75;
            wrong += sensorGroups().size() != 16;
            wrong += interfaceName(TCPIP, true) != "TCP/IP";
            wrong += interfaceIndex(XA200_ETH) != 10;
            wrong += sensorGroupName(Other, true) != "Other";
            wrong += !isKVBusSensorSupportedByXA300ETH("MV410");
        }
    };
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int i = 0; i < 4; ++i)
        threads.emplace_back(reader);
    go = true;
    for (std::thread &thread : threads)
        thread.join();
    QCOMPARE(wrong.load(), 0);
}

QTEST_GUILESS_MAIN(TestSensorTypes)
#include "tst_sensortypes.moc"
