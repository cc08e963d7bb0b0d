// SPDX-License-Identifier: MIT
#include "sensortypes.h"

#include "namematching_p.h"
#include "sensorfeatures.h"
#include "sensortypes_p.h"

#include <QPixmapCache>

#include <algorithm>
#include <vector>

namespace SondixQt {

namespace {

constexpr QLatin1String genericImage(":/images/genericSensor.png");

QString &applicationName()
{
    static QString name;
    return name;
}

// clang-format off
#define S QStringLiteral

QMap<SensorGroup, GroupRecord> makeGroupTable()
{
    return {
        // group       name                 second name               image
        {NoGroup,     {QString(),          QString(),               S(":/images/genericSensor.png")}},
        {Tavrin,      {S("Tavrin"),        S("Tavrin"),             S(":/images/TX-group.png")}},
        {TavrinRG,    {S("Tavrin RG"),     S("Tavrin RG"),          S(":/images/RG-group.png")}},
        {Oscura,      {S("Oscura"),        S("Oscura CC"),          S(":/images/CC480.png")}},
        {Wavlen,      {S("Wavlen"),        S("Wavlen"),             S(":/images/WI610.png")}},
        {Silvant,     {S("Silvant"),       S("Silvant MC"),         S(":/images/MC-group.png")}},
        {Korrin,      {S("Korrin"),        S("Korrin"),             S(":/images/korrin-group.png")}},
        {Delmar,      {S("Delmar"),        S("Delmar"),             S(":/images/delmar-group.png")}},
        {Color,       {S("Color"),         S("Color"),              S(":/images/color-group.png")}},
        {Gyrant,      {S("Gyrant"),        S("Gyrant"),             S(":/images/genericSensor.png")}},
        {Morvik,      {S("Morvik"),        S("Morvik"),             S(":/images/korrin-group.png")}},
        {Profax,      {S("Profax"),        S("Profax"),             S(":/images/PF7xx.png")}},
        {Interfaces,  {S("Interfaces"),    S("Interfaces"),         S(":/images/interface-group.png")}},
        {KVBus,       {S("KV-BUS"),        S("KV-BUS"),             S(":/images/genericSensor.png")}},
        {Other,       {S("Other sensors"), S("Other"),              S(":/images/thermo-group.png")}},
        {AllGroups,   {S("Any group"),     S("All sensor groups"),  S(":/images/All-groups.png")}},
    };
}

QMap<SensorInterface, InterfaceRecord> makeInterfaceTable()
{
    return {
        // interface   index name              library's name   parameters of a connection
        {NoInterface, { 0, S("No Interface"), QString(),       {}}},
        {RS232,       { 1, S("RS232"),        S("RS232"),      {S("IP_Interface"), S("IP_Port"), S("IP_Baudrate"), S("IP_Stopbits"), S("IP_ByteSize"), S("IP_Parity"),
                                                                S("IP_SensorAddress")}}},
        {XA100_USB,   { 8, S("XA100/USB"),    S("XA100_USB"),  {S("IP_Interface"), S("IP_DeviceInstance"), S("SA_SerialNumber"), S("IP_ChannelNumber"), S("IP_Port"),
                                                                S("IP_Baudrate"), S("IP_Parity")}}},
        {TCPIP,       { 3, S("Ethernet"),     S("TCP/IP"),     {S("IP_SensorTypeName"), S("SA_SerialNumber"), S("SA_Softwareversion"), S("IP_Interface"),
                                                                S("IP_RemoteAddr"), S("IP_RemotePort"), S("IP_DataPort"), S("SA_MacAddress"), S("IP_AddressFamily")}}},
        {XA200,       { 6, S("XA200/PCI"),    S("XA200"),      {S("IP_Interface"), S("IP_CardInstance"), S("IP_ChannelNumber"), S("IP_Baudrate"), S("IP_Parity")}}},
        {WinUSB,      { 7, S("USB"),          S("WinUSB"),     {S("IP_SensorTypeName"), S("IP_Interface"), S("IP_DeviceInstance"), S("SA_SerialNumber")}}},
        {XA100,       { 2, S("XA100/PCI"),    S("XA100"),      {S("IP_Interface"), S("IP_CardInstance"), S("IP_ChannelNumber"), S("IP_Baudrate")}}},
        {XA200_ETH,   {10, S("XA200/ETH"),    S("XA200_ETH"),  {S("SA_SerialNumber"), S("SA_Softwareversion"), S("IP_SensorTypeName"), S("IP_Interface"),
                                                                S("IP_RemoteAddr"), S("SA_MacAddress"), S("IP_RemotePort"), S("IP_CardInstance"),
                                                                S("IP_DeviceInstance"), S("IP_ChannelNumber"), S("IP_Baudrate"), S("IP_Parity"),
                                                                S("IP_AddressFamily")}}},
    };
}

#undef S
// clang-format on

/// A model in the order in which lists show it.
struct ListedType
{
    SensorType type;
    SensorGroups group;
    bool hidden;
};

std::vector<ListedType> typesInDisplayOrder()
{
    const QMap<SensorType, SensorFeatures> &features = getSensorFeatures();
    std::vector<ListedType> types;
    for (auto it = features.cbegin(); it != features.cend(); ++it)
        types.push_back({it.key(), it->group, it->hidden});
    std::sort(types.begin(), types.end(), [&features](const ListedType &a, const ListedType &b) {
        const qint32 orderA = features.find(a.type)->order;
        const qint32 orderB = features.find(b.type)->order;
        return orderA != orderB ? orderA < orderB : a.type > b.type;
    });
    return types;
}

NameMatcher catalogueMatcher()
{
    const QMap<SensorType, SensorFeatures> &features = getSensorFeatures();
    QVector<NameCandidate> candidates;
    for (auto it = features.cbegin(); it != features.cend(); ++it)
        candidates.append({it.key(), it->name, it->shortName});
    return NameMatcher(candidates);
}

QPixmap loadImage(const QString &image)
{
    return QPixmap(image.isEmpty() ? QString(genericImage) : image);
}

/// The ways in which callers write the types in queued calls.
void registerMetaTypes()
{
    qRegisterMetaType<SensorType>();
    qRegisterMetaType<SensorType>("SensorType");
    qRegisterMetaType<SensorGroup>();
    qRegisterMetaType<SensorGroup>("SensorGroup");
    qRegisterMetaType<SensorInterface>();
    qRegisterMetaType<SensorInterface>("SensorInterface");
    qRegisterMetaType<QList<SensorType>>();
    qRegisterMetaType<QList<SensorType>>("QList<SensorType>");
}

[[maybe_unused]] const QMap<SensorGroup, GroupRecord> &groupsBuiltAtLoadTime = groupTable();
[[maybe_unused]] const QMap<SensorInterface, InterfaceRecord> &interfacesBuiltAtLoadTime = interfaceTable();
Q_CONSTRUCTOR_FUNCTION(registerMetaTypes)

} // namespace

const QMap<SensorGroup, GroupRecord> &groupTable()
{
    static const QMap<SensorGroup, GroupRecord> table = makeGroupTable();
    return table;
}

const QMap<SensorInterface, InterfaceRecord> &interfaceTable()
{
    static const QMap<SensorInterface, InterfaceRecord> table = makeInterfaceTable();
    return table;
}

QString usedByApplicationName()
{
    return applicationName();
}

void setUsedByApplicationName(const QString &name)
{
    applicationName() = name;
}

QString sensorName(SensorType type, bool shortName)
{
    const auto features = getSensorFeatures().find(type);
    if (features == getSensorFeatures().end())
        return {};
    return shortName ? features->shortName : features->name;
}

SensorType getSensorTypeFromName(const QString &name)
{
    static const NameMatcher matcher = catalogueMatcher();
    return matcher.match(name);
}

SensorGroup getSensorGroupFromSensorType(SensorType type)
{
    const auto features = getSensorFeatures().find(type);
    if (features == getSensorFeatures().end())
        return NoGroup;
    return static_cast<SensorGroup>(static_cast<SensorGroups::Int>(features->group));
}

QPixmap getSensorImage(SensorType type)
{
    const auto features = getSensorFeatures().find(type);
    return loadImage(features == getSensorFeatures().end() ? QString() : features->image);
}

QPixmap getSensorGroupImage(SensorGroup group)
{
    const auto record = groupTable().find(group);
    return loadImage(record == groupTable().end() ? QString() : record->image);
}

QString sensorGroupName(SensorGroup group, bool shortName)
{
    const auto record = groupTable().find(group);
    if (record == groupTable().end())
        return {};
    return shortName ? record->shortName : record->name;
}

QList<SensorGroup> sensorGroups()
{
    static const QList<SensorGroup> groups = groupTable().keys();
    return groups;
}

QList<SensorType> sensorsInGroup(SensorGroups groups, bool includeHidden)
{
    static const std::vector<ListedType> listed = typesInDisplayOrder();
    QList<SensorType> types;
    for (const ListedType &entry : listed) {
        if ((entry.group & groups) && (includeHidden || !entry.hidden))
            types.append(entry.type);
    }
    return types;
}

QString interfaceName(SensorInterface iface, bool libraryName)
{
    const auto record = interfaceTable().find(iface);
    if (record == interfaceTable().end())
        return {};
    return libraryName ? record->libraryName : record->name;
}

int interfaceIndex(SensorInterface iface)
{
    const auto record = interfaceTable().find(iface);
    return record == interfaceTable().end() ? 0 : record->index;
}

} // namespace SondixQt
