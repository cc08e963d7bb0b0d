// SPDX-License-Identifier: MIT
#include "sensoraddress.h"

#include "catalogue/namelookup.h"
#include "catalogue/sensortypes_p.h"
#include "sensorinfo.h"

#include <QStringList>

#include <algorithm>
#include <limits>

namespace SondixQt {

namespace {

constexpr int lowest = std::numeric_limits<int>::min();
constexpr int highest = std::numeric_limits<int>::max();
constexpr int maxBaudRate = 100'000'000;
constexpr int maxTcpPort = 65535;

enum ValueKind { Text, Integer };

/// A parameter with a short name. An integer is from minimum to maximum.
struct KeyRow
{
    const char *name;
    QLatin1String parameter;
    ValueKind kind;
    int minimum;
    int maximum;
};

// clang-format off

constexpr KeyRow keyRows[] = {
    // name             parameter                           value    minimum  maximum
    {"port",            InterfaceParameter::Port,           Text,    0,       0},
    {"baudrate",        InterfaceParameter::Baudrate,       Integer, 1,       maxBaudRate},
    {"stopbits",        InterfaceParameter::Stopbits,       Integer, lowest,  highest},
    {"bytesize",        InterfaceParameter::ByteSize,       Integer, lowest,  highest},
    {"parity",          InterfaceParameter::Parity,         Integer, lowest,  highest},
    {"sensor-address",  InterfaceParameter::SensorAddress,  Integer, lowest,  highest},
    {"address",         InterfaceParameter::RemoteAddr,     Text,    0,       0},
    {"remote-port",     InterfaceParameter::RemotePort,     Integer, 0,       maxTcpPort},
    {"data-port",       InterfaceParameter::DataPort,       Integer, 0,       maxTcpPort},
    {"address-family",  InterfaceParameter::AddressFamily,  Integer, lowest,  highest},
    {"card",            InterfaceParameter::CardInstance,   Integer, lowest,  highest},
    {"device",          InterfaceParameter::DeviceInstance, Integer, lowest,  highest},
    {"channel",         InterfaceParameter::ChannelNumber,  Integer, lowest,  highest},
    {"serial-number",   InterfaceParameter::SerialNumber,   Text,    0,       0},
};

// Parameters that describe the sensor but are not needed to open it.
constexpr QLatin1String descriptions[] = {
    InterfaceParameter::SensorTypeName, InterfaceParameter::SoftwareVersion, InterfaceParameter::MacAddress,
};

// clang-format on

QString encode(const QString &plain)
{
    return QString::fromLatin1(plain.toUtf8().toPercentEncoding(QByteArrayLiteral(":/+")));
}

QString encodeAll(const QString &plain)
{
    const QByteArray bytes = plain.toUtf8();
    return QString::fromLatin1(bytes.toPercentEncoding(QByteArray(), bytes));
}

QString decode(const QString &encoded)
{
    const QByteArray bytes = QByteArray::fromPercentEncoding(encoded.toUtf8());
    return QString::fromUtf8(bytes.constData(), bytes.size()); // without the size it would end at a zero byte
}

const KeyRow *rowOfParameter(const QString &parameter)
{
    const auto row = std::find_if(std::begin(keyRows), std::end(keyRows),
                                  [&parameter](const KeyRow &key) { return key.parameter == parameter; });
    return row == std::end(keyRows) ? nullptr : row;
}

const KeyRow *rowOfName(const QString &name)
{
    const auto row = std::find_if(std::begin(keyRows), std::end(keyRows), [&name](const KeyRow &key) {
        return name.compare(QLatin1String(key.name), Qt::CaseInsensitive) == 0;
    });
    return row == std::end(keyRows) ? nullptr : row;
}

bool isTextParameter(const QString &parameter)
{
    const KeyRow *row = rowOfParameter(parameter);
    return row ? row->kind == Text : parameter == InterfaceParameter::Interface;
}

bool isDescription(const QString &parameter)
{
    return std::find(std::begin(descriptions), std::end(descriptions), parameter) != std::end(descriptions);
}

QVariant numberOrText(const QString &value)
{
    bool ok = false;
    const int integer = value.toInt(&ok);
    if (ok)
        return integer;
    const double real = value.toDouble(&ok);
    return ok ? QVariant(real) : QVariant(value);
}

// parseValue() would take the text of some values for another type. A text gets a percent-encoded character as a mark
// that it is one, and a double a decimal point.
QString encodedValue(const QString &parameter, const QVariant &value)
{
    if (value.type() == QVariant::Bool)
        return value.toBool() ? QStringLiteral("1") : QStringLiteral("0");
    const QString plain = value.toString();
    const QVariant parsed = isTextParameter(parameter) ? QVariant(plain) : numberOrText(plain);
    if (value.type() == QVariant::String && parsed.type() != QVariant::String)
        return encodeAll(plain.left(1)) + encode(plain.mid(1));
    if (value.type() == QVariant::Double && parsed.type() == QVariant::Int && !rowOfParameter(parameter))
        return encode(plain) + QLatin1String(".0");
    return encode(plain);
}

QString parsePart(const QString &part, SensorAddress &address)
{
    const int equals = part.indexOf(QLatin1Char('='));
    if (equals <= 0)
        return QStringLiteral("'%1' in a sensor's address is no <name>=<value>").arg(part);
    const QString name = part.left(equals);
    const QString value = part.mid(equals + 1);
    const KeyRow *row = rowOfName(name);
    if (!row && !name.contains(QLatin1Char('_'))) {
        QStringList names;
        for (const KeyRow &known : keyRows)
            names += QString::fromLatin1(known.name);
        return unknownNameText(QStringLiteral("interface parameter"), name, names,
                               QStringLiteral("they are %1").arg(names.join(QStringLiteral(", "))));
    }
    const QString parameter = row ? QString(row->parameter) : decode(name);
    if (address.parameters.contains(parameter))
        return QStringLiteral("the sensor's address has two values of '%1'").arg(name);
    QString problem;
    const std::optional<QVariant> parsed = SensorAddress::parseValue(parameter, decode(value), &problem);
    if (!parsed)
        return problem;
    const bool isMarkedAsText = value.contains(QLatin1Char('%'));
    address.parameters.insert(parameter, isMarkedAsText ? QVariant(decode(value)) : *parsed);
    return {};
}

void registerSensorAddresses()
{
    qRegisterMetaType<SensorAddress>();
    qRegisterMetaType<SensorAddress>("SensorAddress");
}
Q_CONSTRUCTOR_FUNCTION(registerSensorAddresses)

} // namespace

SensorAddress SensorAddress::of(const SensorInfo &info)
{
    return {info.sensorType(), info.getInterfaceParameters()};
}

std::optional<SensorAddress> SensorAddress::parse(const QString &text, QString *problem)
{
    const auto refuse = [problem](const QString &reason) {
        if (problem)
            *problem = reason;
        return std::nullopt;
    };
    const int at = text.indexOf(QLatin1Char('@'));
    if (at <= 0)
        return refuse(
            QStringLiteral("'%1' is no sensor address; one reads <model>@<interface>,<name>=<value>,..., "
                           "such as TX270@RS232,port=COM3,baudrate=115200")
                .arg(text));
    QString reason;
    const std::optional<SensorType> type = findSensorType(decode(text.left(at)), &reason);
    if (!type)
        return refuse(reason);
    QStringList parts = text.mid(at + 1).split(QLatin1Char(','));
    const std::optional<SensorInterface> iface = findSensorInterface(decode(parts.takeFirst()), &reason);
    if (!iface)
        return refuse(reason);
    SensorAddress address{*type, {{InterfaceParameter::Interface, interfaceName(*iface, true)}}};
    for (const QString &part : qAsConst(parts)) {
        reason = parsePart(part, address);
        if (!reason.isEmpty())
            return refuse(reason);
    }
    return address;
}

QString SensorAddress::toString() const
{
    const SensorInterface iface = interfaceType();
    const QString shownInterface = iface == NoInterface
                                       ? parameters.value(InterfaceParameter::Interface).toString()
                                       : interfaceName(iface, true);
    QStringList parts{encode(sensorName(type, true)) + QLatin1Char('@') + encode(shownInterface)};
    for (const KeyRow &row : keyRows) {
        const auto value = parameters.find(row.parameter);
        if (value != parameters.end())
            parts += QLatin1String(row.name) + QLatin1Char('=') + encodedValue(value.key(), *value);
    }
    for (auto it = parameters.cbegin(); it != parameters.cend(); ++it) {
        if (it.key() == InterfaceParameter::Interface || isDescription(it.key()) || rowOfParameter(it.key()))
            continue;
        parts += encode(it.key()) + QLatin1Char('=') + encodedValue(it.key(), *it);
    }
    return parts.join(QLatin1Char(','));
}

SensorInterface SensorAddress::interfaceType() const
{
    const QString name = parameters.value(InterfaceParameter::Interface).toString();
    const QMap<SensorInterface, InterfaceRecord> &table = interfaceTable();
    const auto found = std::find_if(table.begin(), table.end(),
                                    [&name](const InterfaceRecord &record) { return record.libraryName == name; });
    return found == table.end() ? NoInterface : found.key();
}

QString SensorAddress::place() const
{
    const auto has = [this](QLatin1String parameter) { return parameters.contains(parameter); };
    const auto shown = [this](QLatin1String parameter) { return parameters.value(parameter).toString(); };
    QStringList place;
    if (has(InterfaceParameter::Port))
        place += shown(InterfaceParameter::Port);
    else if (has(InterfaceParameter::RemoteAddr))
        place += shown(InterfaceParameter::RemoteAddr);
    else if (has(InterfaceParameter::CardInstance))
        place += QStringLiteral("card ") + shown(InterfaceParameter::CardInstance);
    else if (has(InterfaceParameter::DeviceInstance))
        place += QStringLiteral("device ") + shown(InterfaceParameter::DeviceInstance);
    if (has(InterfaceParameter::ChannelNumber))
        place += QStringLiteral("channel ") + shown(InterfaceParameter::ChannelNumber);
    if (parameters.value(InterfaceParameter::SensorAddress).toInt() != 0)
        place += QStringLiteral("bus address ") + shown(InterfaceParameter::SensorAddress);
    return place.join(QStringLiteral(", "));
}

QVector<SensorAddress::Key> SensorAddress::keys()
{
    QVector<Key> keys;
    for (const KeyRow &row : keyRows)
        keys.append({QString::fromLatin1(row.name), row.parameter});
    return keys;
}

std::optional<QVariant> SensorAddress::parseValue(const QString &parameter, const QString &text, QString *problem)
{
    const KeyRow *row = rowOfParameter(parameter);
    if (!row || row->kind == Text)
        return isTextParameter(parameter) ? QVariant(text) : numberOrText(text);
    bool isNumber = false;
    const int value = text.toInt(&isNumber);
    if (isNumber && value >= row->minimum && value <= row->maximum)
        return QVariant(value);
    const QString name = QString::fromLatin1(row->name);
    if (problem)
        *problem = isNumber ? QStringLiteral("the %1 %2 is not from %3 to %4")
                                  .arg(name, text)
                                  .arg(row->minimum)
                                  .arg(row->maximum)
                            : QStringLiteral("the %1 '%2' is no whole number").arg(name, text);
    return std::nullopt;
}

bool SensorAddress::operator==(const SensorAddress &other) const
{
    // Not by QVariant::operator==, which converts its right operand and is not symmetric.
    return type == other.type && toString() == other.toString();
}

} // namespace SondixQt
