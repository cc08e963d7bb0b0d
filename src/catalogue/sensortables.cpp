// SPDX-License-Identifier: MIT
#include "interfaceparameters.h"
#include "sensortypes_p.h"

namespace SondixQt {

namespace {

namespace P = InterfaceParameter;

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
        {RS232,       { 1, S("RS232"),        S("RS232"),      {P::Interface, P::Port, P::Baudrate, P::Stopbits, P::ByteSize, P::Parity,
                                                                P::SensorAddress}}},
        {XA100_USB,   { 8, S("XA100/USB"),    S("XA100_USB"),  {P::Interface, P::DeviceInstance, P::SerialNumber, P::ChannelNumber, P::Port,
                                                                P::Baudrate, P::Parity}}},
        {TCPIP,       { 3, S("Ethernet"),     S("TCP/IP"),     {P::SensorTypeName, P::SerialNumber, P::SoftwareVersion, P::Interface,
                                                                P::RemoteAddr, P::RemotePort, P::DataPort, P::MacAddress, P::AddressFamily}}},
        {XA200,       { 6, S("XA200/PCI"),    S("XA200"),      {P::Interface, P::CardInstance, P::ChannelNumber, P::Baudrate, P::Parity}}},
        {WinUSB,      { 7, S("USB"),          S("WinUSB"),     {P::SensorTypeName, P::Interface, P::DeviceInstance, P::SerialNumber}}},
        {XA100,       { 2, S("XA100/PCI"),    S("XA100"),      {P::Interface, P::CardInstance, P::ChannelNumber, P::Baudrate}}},
        {XA200_ETH,   {10, S("XA200/ETH"),    S("XA200_ETH"),  {P::SerialNumber, P::SoftwareVersion, P::SensorTypeName, P::Interface,
                                                                P::RemoteAddr, P::MacAddress, P::RemotePort, P::CardInstance,
                                                                P::DeviceInstance, P::ChannelNumber, P::Baudrate, P::Parity,
                                                                P::AddressFamily}}},
    };
}

#undef S
// clang-format on

/// Build the tables when the library is loaded, unless another static initialiser has used them before.
[[maybe_unused]] const QMap<SensorGroup, GroupRecord> &groupsBuiltAtLoadTime = groupTable();
[[maybe_unused]] const QMap<SensorInterface, InterfaceRecord> &interfacesBuiltAtLoadTime = interfaceTable();

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

} // namespace SondixQt
