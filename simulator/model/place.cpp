// SPDX-License-Identifier: MIT
#include "place.h"

#include "ipaddress.h"
#include "objectreader.h"

#include <algorithm>

namespace sondixsim::model {

namespace {

constexpr int requiredText = -1;

std::string bareAddress(const std::string &address)
{
    return address.substr(0, address.find('/'));
}

std::vector<std::string> readAddresses(const Node &node)
{
    std::vector<std::string> addresses;
    if (node.kind == Node::Kind::Text)
        addresses.push_back(node.text);
    else {
        for (const Node &element : readArray(node, "\"ip\""))
            addresses.push_back(readPlainText(element, "\"ip\""));
    }
    for (const std::string &address : addresses) {
        if (!isDeviceAddress(address))
            throw ParseError(node.line, "\"" + address + "\" is not the IP address of a device");
    }
    if (addresses.empty())
        throw ParseError(node.line, "\"ip\" must name at least one address");
    return addresses;
}

std::vector<Choice> interfaceNames()
{
    std::vector<Choice> choices;
    for (const InterfaceRow &row : interfaceRows())
        choices.push_back({row.name, {}});
    return choices;
}

} // namespace

const std::vector<InterfaceRow> &interfaceRows()
{
    // clang-format off
    // The largest values are far above any real one; on a computer there are not more.
    static const PlaceKey remotePort    {"remotePort",    "IP_RemotePort",     23,           true,  1,   65535, "Port for commands"};
    static const PlaceKey dataPort      {"dataPort",      "IP_DataPort",       1024,         false, 1,   65535, "Port for values"};
    static const PlaceKey addressFamily {"addressFamily", "IP_AddressFamily",  2,            false, 2,   255, "Address family: 2 is IPv4"};
    static const PlaceKey device        {"device",        "IP_DeviceInstance", 0,            true,  0,   65535, "Number of the device"};
    static const PlaceKey card          {"card",          "IP_CardInstance",   0,            true,  0,   65535, "Number of the card"};
    static const PlaceKey channel       {"channel",       "IP_ChannelNumber",  0,            true,  0,   65535, "Channel of the card or device"};
    static const PlaceKey comPort       {"port",          "IP_Port",           requiredText, true,  0,   0, "Serial port, such as \"COM3\""};
    static const PlaceKey baudrate      {"baudrate",      "IP_Baudrate",       115200,       false, 50,  20000000, "Baud rate"};
    static const PlaceKey cardBaudrate  {"baudrate",      "IP_Baudrate",       691200,       false, 50,  20000000, "Baud rate"};
    static const PlaceKey stopbits      {"stopbits",      "IP_Stopbits",       1,            false, 0,   2, "Stop bits"};
    static const PlaceKey byteSize      {"byteSize",      "IP_ByteSize",       8,            false, 5,   8, "Bits of a byte"};
    static const PlaceKey parity        {"parity",        "IP_Parity",         0,            false, 0,   4, "Parity: 0 is none"};
    static const PlaceKey busAddress    {"busAddress",    "IP_SensorAddress",  0,            true,  0,   255, "Address on the bus; bus sensors only"};

    static const std::vector<InterfaceRow> rows = {
        {ScanHardware::Rs232,    "RS232",     1,  false, {comPort, baudrate, stopbits, byteSize, parity,
                                                         busAddress}},
        {ScanHardware::Xa100Usb, "XA100_USB", 8,  false, {device, channel, comPort, cardBaudrate, parity}},
        {ScanHardware::Tcpip,    "TCP/IP",    3,  true,  {remotePort, dataPort, addressFamily}},
        {ScanHardware::Xa200,    "XA200",     6,  false, {card, channel, cardBaudrate, parity}},
        {ScanHardware::WinUsb,   "WinUSB",    7,  false, {device}},
        {ScanHardware::Xa100,    "XA100",     2,  false, {card, channel, cardBaudrate}},
        {ScanHardware::Xa200Eth, "XA200_ETH", 10, true,  {remotePort, card, device, channel, cardBaudrate, parity,
                                                         addressFamily}},
    };
    // clang-format on
    return rows;
}

std::string Place::text() const
{
    if (!addresses.empty()) {
        std::string text = bareAddress(addresses.front());
        if (const Value *channel = parameters.find("IP_ChannelNumber"))
            text += ", channel " + toText(*channel);
        return text;
    }
    std::string text = interface->name;
    for (const PlaceKey &key : interface->keys) {
        if (key.identifies)
            text += std::string(", ") + key.fileKey + ' ' + toText(*parameters.find(key.parameter));
    }
    return text;
}

ParameterList Place::foundParameters() const
{
    ParameterList found;
    found.set("IP_InterfaceIdx", interface->index);
    found.set("IP_Interface", std::string(interface->name));
    if (!addresses.empty()) {
        found.set("IP_RemoteAddr", bareAddress(addresses.front()));
        found.set("SA_IPAddress", bareAddress(addresses.front()));
    }
    found.add(parameters);
    return found;
}

bool Place::agreesWith(const ParameterList &staged) const
{
    const auto agrees = [&staged](const char *name, const std::string &text) {
        const Value *value = staged.find(name);
        return value == nullptr || toText(*value) == text;
    };
    if (!agrees("IP_Interface", interface->name))
        return false;
    const Value *const address = staged.find("IP_RemoteAddr");
    const auto isStaged = [&](const std::string &own) { return bareAddress(own) == toText(*address); };
    if (address != nullptr && std::none_of(addresses.begin(), addresses.end(), isStaged))
        return false;
    return std::all_of(parameters.begin(), parameters.end(), [&](const Parameter &parameter) {
        return parameter.name == "IP_Baudrate" || agrees(parameter.name.c_str(), toText(parameter.value));
    });
}

std::vector<std::string> Place::identities() const
{
    std::string identity = interface->name;
    for (const PlaceKey &key : interface->keys) {
        if (key.identifies)
            identity += '\n' + toText(*parameters.find(key.parameter));
    }
    if (!interface->network)
        return {identity};
    std::vector<std::string> identities;
    for (const std::string &address : addresses) {
        std::string text = bareAddress(address) + '\n' + identity;
        if (std::find(identities.begin(), identities.end(), text) == identities.end())
            identities.push_back(std::move(text));
    }
    return identities;
}

const ObjectRules &placeRules()
{
    using namespace keys;
    static const auto &rules = *[] {
        auto *all = new ObjectRules{"place", "a place", {}, "interface"};
        all->keys.push_back({"interface", required, oneOf(interfaceNames, "interface"), "The interface"});
        for (const InterfaceRow &row : interfaceRows()) {
            if (row.network)
                all->keys.push_back({"ip", required, either(plainText(), arrayOf(plainText())),
                                     "Address, or an array of addresses; each may end in a prefix length",
                                     row.name});
            for (const PlaceKey &key : row.keys) {
                const bool isText = key.defaultValue == requiredText;
                all->keys.push_back({key.fileKey, isText ? required : optional,
                                     isText ? word() : whole(key.minimum, key.maximum), key.description,
                                     row.name});
            }
        }
        all->keys.push_back({"inUse", optional, boolean(), "true: another program uses the sensor (false)"});
        return all;
    }();
    return rules;
}

Place readPlace(const Node &node, bool busSensor)
{
    ObjectReader reader(node, placeRules());
    Place place;
    const std::string interface = reader.readKind();
    const auto &rows = interfaceRows();
    place.interface = &*std::find_if(rows.begin(), rows.end(),
                                     [&interface](const InterfaceRow &row) { return row.name == interface; });
    for (const PlaceKey &key : place.interface->keys) {
        if (key.defaultValue == requiredText) {
            std::string text;
            reader.read(key.fileKey, text);
            place.parameters.set(key.parameter, text);
            continue;
        }
        std::int32_t number = key.defaultValue;
        if (reader.read(key.fileKey, number) && !busSensor && number != 0 &&
            std::string_view(key.fileKey) == "busAddress")
            throw ParseError(reader.required(key.fileKey).line,
                             "a sensor that is not on a bus has no \"busAddress\"");
        place.parameters.set(key.parameter, number);
    }
    if (place.interface->network)
        place.addresses = readAddresses(reader.required("ip"));
    reader.read("inUse", place.inUse);
    reader.finish();
    place.onBus = busSensor;
    return place;
}

} // namespace sondixsim::model
