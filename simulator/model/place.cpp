// SPDX-License-Identifier: MIT
#include "place.h"

#include "objectreader.h"

#include <algorithm>
#include <cctype>

namespace sondixsim::model {

namespace {

constexpr int requiredText = -1;

std::string bareAddress(const std::string &address)
{
    return address.substr(0, address.find('/'));
}

bool isIpAddress(const std::string &text)
{
    const std::string address = bareAddress(text);
    const bool wellFormed = !address.empty() && std::all_of(address.begin(), address.end(), [](unsigned char c) {
        return std::isxdigit(c) != 0 || c == '.' || c == ':';
    });
    return wellFormed && text.find(' ') == std::string::npos;
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
        if (!isIpAddress(address))
            throw ParseError(node.line, "\"" + address + "\" is not an IP address");
    }
    if (addresses.empty())
        throw ParseError(node.line, "\"ip\" must name at least one address");
    return addresses;
}

const InterfaceRow &readInterface(const Node &node)
{
    const std::string name = readPlainText(node, "\"interface\"");
    std::string known;
    for (const InterfaceRow &row : interfaceRows()) {
        if (row.name == name)
            return row;
        known += (known.empty() ? "" : ", ") + std::string(row.name);
    }
    throw ParseError(node.line, "there is no interface \"" + name + "\"; there are: " + known);
}

} // namespace

const std::vector<InterfaceRow> &interfaceRows()
{
    // clang-format off
    static const PlaceKey remotePort    {"remotePort",    "IP_RemotePort",     23,           true};
    static const PlaceKey dataPort      {"dataPort",      "IP_DataPort",       1024,         false};
    static const PlaceKey addressFamily {"addressFamily", "IP_AddressFamily",  2,            false};
    static const PlaceKey device        {"device",        "IP_DeviceInstance", 0,            true};
    static const PlaceKey card          {"card",          "IP_CardInstance",   0,            true};
    static const PlaceKey channel       {"channel",       "IP_ChannelNumber",  0,            true};
    static const PlaceKey comPort       {"port",          "IP_Port",           requiredText, true};
    static const PlaceKey baudrate      {"baudrate",      "IP_Baudrate",       115200,       false};
    static const PlaceKey cardBaudrate  {"baudrate",      "IP_Baudrate",       691200,       false};
    static const PlaceKey stopbits      {"stopbits",      "IP_Stopbits",       1,            false};
    static const PlaceKey byteSize      {"byteSize",      "IP_ByteSize",       8,            false};
    static const PlaceKey parity        {"parity",        "IP_Parity",         0,            false};
    static const PlaceKey busAddress    {"busAddress",    "IP_SensorAddress",  0,            true};

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

bool Place::isSameAs(const Place &other) const
{
    if (interface != other.interface)
        return false;
    const auto isShared = [&](const std::string &address) {
        return std::any_of(other.addresses.begin(), other.addresses.end(),
                           [&](const std::string &theirs) { return bareAddress(theirs) == bareAddress(address); });
    };
    if (interface->network && std::none_of(addresses.begin(), addresses.end(), isShared))
        return false;
    return std::all_of(interface->keys.begin(), interface->keys.end(), [&](const PlaceKey &key) {
        return !key.identifies ||
               toText(*parameters.find(key.parameter)) == toText(*other.parameters.find(key.parameter));
    });
}

Place readPlace(const Node &node, bool busSensor)
{
    ObjectReader reader(node, "a place");
    Place place;
    place.interface = &readInterface(reader.required("interface"));
    for (const PlaceKey &key : place.interface->keys) {
        const std::string what = '"' + std::string(key.fileKey) + '"';
        if (key.defaultValue == requiredText) {
            place.parameters.set(key.parameter, readText(reader.required(key.fileKey), what));
            continue;
        }
        const Node *value = reader.optional(key.fileKey);
        place.parameters.set(key.parameter, value != nullptr ? readInt(*value, what, 0) : key.defaultValue);
    }
    if (place.interface->network)
        place.addresses = readAddresses(reader.required("ip"));
    if (const Node *inUse = reader.optional("inUse"))
        place.inUse = readBool(*inUse, "\"inUse\"");
    reader.finish();
    place.onBus = busSensor;
    return place;
}

} // namespace sondixsim::model
