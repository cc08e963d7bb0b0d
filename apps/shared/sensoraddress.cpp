// SPDX-License-Identifier: MIT
#include "sensoraddress.h"

#include "catalognames.h"

#include <QStringList>

#include <algorithm>
#include <climits>

using namespace SondixQt;

namespace SondixApp {

namespace {

const QString interfaceParameter = QStringLiteral("IP_Interface");
constexpr int maxBaudRate = 100'000'000;
constexpr int maxTcpPort = 65535;

QString encode(const QString &text)
{
    return QString::fromLatin1(text.toUtf8().toPercentEncoding(QByteArrayLiteral(":/+")));
}

QString decode(const QString &text)
{
    return QString::fromUtf8(QByteArray::fromPercentEncoding(text.toUtf8()));
}

const AddressKey *keyOfParameter(const QString &parameter)
{
    for (const AddressKey &key : addressKeys())
        if (key.parameter == parameter)
            return &key;
    return nullptr;
}

const AddressKey *keyOfName(const QString &name)
{
    for (const AddressKey &key : addressKeys())
        if (key.name.compare(name, Qt::CaseInsensitive) == 0)
            return &key;
    return nullptr;
}

bool isTextParameter(const QString &parameter)
{
    if (const AddressKey *key = keyOfParameter(parameter))
        return key->isText;
    return parameter == interfaceParameter;
}

QVariant numberOrText(const QString &text)
{
    bool ok = false;
    const int number = text.toInt(&ok);
    if (ok)
        return number;
    const double real = text.toDouble(&ok);
    return ok ? QVariant(real) : QVariant(text);
}

// A text that looks like a number would be parsed as a number unless its parameter is known to be a text. Such a
// text gets a percent-encoded character as a mark.
QString encodedValue(const QString &parameter, const QVariant &value)
{
    const QString text = value.toString();
    QString plain = encode(text);
    const bool wasText = value.type() == QVariant::String;
    if (!wasText || isTextParameter(parameter) || numberOrText(text).type() == QVariant::String || text.isEmpty())
        return plain;
    return QLatin1Char('%') + QString::fromLatin1(text.left(1).toUtf8().toHex()) + encode(text.mid(1));
}

// Parameters that describe the sensor but are not needed to open it.
bool isDescription(const QString &parameter)
{
    static const QStringList descriptions{QStringLiteral("IP_SensorTypeName"),
                                          QStringLiteral("SA_Softwareversion"), QStringLiteral("SA_MacAddress")};
    return descriptions.contains(parameter);
}

bool parsePart(const QString &part, SensorAddress &address, QString &problem)
{
    const int equals = part.indexOf(QLatin1Char('='));
    if (equals <= 0) {
        problem = QStringLiteral("'%1' in a sensor's address is no <name>=<value>").arg(part);
        return false;
    }
    const QString name = part.left(equals);
    const QString value = part.mid(equals + 1);
    const AddressKey *key = keyOfName(name);
    if (!key && !name.contains(QLatin1Char('_'))) {
        QStringList names;
        for (const AddressKey &known : addressKeys())
            names += known.name;
        problem = unknownName(QStringLiteral("interface parameter"), name, names,
                              QStringLiteral("they are %1").arg(names.join(QStringLiteral(", "))));
        return false;
    }
    const QString parameter = key ? key->parameter : decode(name);
    const bool isMarkedAsText = value.contains(QLatin1Char('%'));
    problem = valueProblem(parameter, decode(value));
    if (!problem.isEmpty())
        return false;
    address.parameters.insert(parameter,
                              isMarkedAsText ? QVariant(decode(value)) : parameterValue(parameter, value));
    return true;
}

} // namespace

const QVector<AddressKey> &addressKeys()
{
    const auto text = [](const char *name, const char *parameter, const char *help) {
        return AddressKey{QString::fromLatin1(name), QString::fromLatin1(parameter), true, 0, 0,
                          QString::fromLatin1(help)};
    };
    const auto number = [](const char *name, const char *parameter, const char *help, int minimum = INT_MIN,
                           int maximum = INT_MAX) {
        return AddressKey{QString::fromLatin1(name), QString::fromLatin1(parameter), false, minimum, maximum,
                          QString::fromLatin1(help)};
    };
    static const QVector<AddressKey> keys{
        text("port", "IP_Port", "Serial port, such as COM3"),
        number("baudrate", "IP_Baudrate", "Baud rate of the serial line", 1, maxBaudRate),
        number("stopbits", "IP_Stopbits", "Stop bits of the serial line"),
        number("bytesize", "IP_ByteSize", "Data bits of the serial line"),
        number("parity", "IP_Parity", "Parity of the serial line, as a number"),
        number("sensor-address", "IP_SensorAddress", "The sensor's address on a bus"),
        text("address", "IP_RemoteAddr", "IP address"),
        number("remote-port", "IP_RemotePort", "TCP port for commands", 0, maxTcpPort),
        number("data-port", "IP_DataPort", "TCP port for measured values", 0, maxTcpPort),
        number("address-family", "IP_AddressFamily", "IP version, as a number"),
        number("card", "IP_CardInstance", "Number of the interface card"),
        number("device", "IP_DeviceInstance", "Number of the USB device"),
        number("channel", "IP_ChannelNumber", "Channel of the interface card or converter"),
        text("serial-number", "SA_SerialNumber", "Serial number of the device"),
    };
    return keys;
}

SensorAddress SensorAddress::of(const SensorInfo &info)
{
    return {info.sensorType(), info.getInterfaceParameters()};
}

std::optional<SensorAddress> SensorAddress::parse(const QString &text, QString &problem)
{
    const int at = text.indexOf(QLatin1Char('@'));
    if (at <= 0) {
        problem = QStringLiteral("'%1' is no sensor address; one reads <model>@<interface>,<name>=<value>,..., "
                                 "such as TX270@RS232,port=COM3,baudrate=115200")
                      .arg(text);
        return std::nullopt;
    }
    const auto type = findType(decode(text.left(at)));
    QStringList parts = text.mid(at + 1).split(QLatin1Char(','));
    const auto iface = findInterface(decode(parts.takeFirst()));
    if (!type.value || !iface.value) {
        problem = type.value ? iface.problem : type.problem;
        return std::nullopt;
    }
    SensorAddress address{*type.value, {{interfaceParameter, interfaceName(*iface.value, true)}}};
    for (const QString &part : parts)
        if (!parsePart(part, address, problem))
            return std::nullopt;
    return address;
}

QString SensorAddress::toString() const
{
    const SensorInterface iface = interfaceOf(parameters);
    const QString shownInterface =
        iface == NoInterface ? parameters.value(interfaceParameter).toString() : interfaceName(iface, true);
    QStringList parts{encode(sensorName(type, true)) + QLatin1Char('@') + encode(shownInterface)};
    for (const AddressKey &key : addressKeys())
        if (parameters.contains(key.parameter))
            parts += key.name + QLatin1Char('=') + encodedValue(key.parameter, parameters.value(key.parameter));
    for (auto it = parameters.cbegin(); it != parameters.cend(); ++it) {
        if (it.key() == interfaceParameter || isDescription(it.key()) || keyOfParameter(it.key()))
            continue;
        parts += encode(it.key()) + QLatin1Char('=') + encodedValue(it.key(), it.value());
    }
    return parts.join(QLatin1Char(','));
}

QString valueProblem(const QString &parameter, const QString &text)
{
    const AddressKey *key = keyOfParameter(parameter);
    if (!key || key->isText)
        return {};
    bool isNumber = false;
    const int number = text.toInt(&isNumber);
    if (!isNumber)
        return QStringLiteral("the %1 '%2' is no whole number").arg(key->name, text);
    if (number < key->minimum || number > key->maximum)
        return QStringLiteral("the %1 %2 is not from %3 to %4")
            .arg(key->name, text)
            .arg(key->minimum)
            .arg(key->maximum);
    return {};
}

bool isBaudRateList(const QString &text)
{
    const QStringList rates = text.split(QLatin1Char(','));
    return std::all_of(rates.cbegin(), rates.cend(), [](const QString &rate) {
        bool isNumber = false;
        const int number = rate.trimmed().toInt(&isNumber);
        return isNumber && number >= 1 && number <= maxBaudRate;
    });
}

QVariant parameterValue(const QString &parameter, const QString &text)
{
    return isTextParameter(parameter) ? QVariant(text) : numberOrText(text);
}

SensorInterface interfaceOf(const QMap<QString, QVariant> &parameters)
{
    const QString name = parameters.value(interfaceParameter).toString();
    for (const SensorInterface iface : allInterfaces())
        if (interfaceName(iface, true) == name)
            return iface;
    return NoInterface;
}

QString placeOf(const QMap<QString, QVariant> &parameters)
{
    const auto has = [&parameters](const char *parameter) {
        return parameters.contains(QLatin1String(parameter));
    };
    const auto text = [&parameters](const char *parameter) {
        return parameters.value(QLatin1String(parameter)).toString();
    };
    QStringList place;
    if (has("IP_Port"))
        place += text("IP_Port");
    else if (has("IP_RemoteAddr"))
        place += text("IP_RemoteAddr");
    else if (has("IP_CardInstance"))
        place += QStringLiteral("card ") + text("IP_CardInstance");
    else if (has("IP_DeviceInstance"))
        place += QStringLiteral("device ") + text("IP_DeviceInstance");
    if (has("IP_ChannelNumber"))
        place += QStringLiteral("channel ") + text("IP_ChannelNumber");
    if (parameters.value(QStringLiteral("IP_SensorAddress")).toInt() != 0)
        place += QStringLiteral("bus address ") + text("IP_SensorAddress");
    return place.join(QStringLiteral(", "));
}

} // namespace SondixApp
