// SPDX-License-Identifier: MIT
#include "mismatch.h"

#include <SondixQt/NameLookup>
#include <SondixQt/SensorAddress>
#include <SondixQt/SensorFeatures>

#include <cstddef>
#include <cstdint>
#include <cstring>

using namespace SondixQt;

namespace {

using Parameters = QMap<QString, QVariant>;

/// The value that one byte for its type and the rest of a line stand for.
QVariant valueOf(const QByteArray &bytes)
{
    const QString text = QString::fromUtf8(bytes.mid(1).constData(), bytes.size() - 1);
    switch (bytes.isEmpty() ? 0 : bytes.at(0) % 4) {
    case 1:
        return text.toInt();
    case 2: {
        double value = 0.0;
        std::memcpy(&value, bytes.mid(1).leftJustified(sizeof value, '\0').constData(), sizeof value);
        return value;
    }
    default:
        return text;
    }
}

/// An address from lines of names and values, with a model and an interface of the catalogue.
SensorAddress addressFrom(const QByteArray &bytes)
{
    const QList<SensorType> types = sensorsInGroup(AllGroups, true);
    const QList<SensorInterface> interfaces = sensorInterfaces();
    const QVector<SensorAddress::Key> keys = SensorAddress::keys();
    const auto number = [&bytes](int position) {
        return position < bytes.size() ? static_cast<unsigned char>(bytes.at(position)) : 0;
    };
    Parameters parameters;
    for (const QByteArray &line : bytes.mid(2).split('\n')) {
        const int index = line.isEmpty() ? 0 : static_cast<unsigned char>(line.at(0));
        const QString name = QLatin1String("IP_") + QString::fromUtf8(line.mid(1, line.indexOf('=') - 1));
        const QString parameter = index < keys.size() ? keys[index].parameter : name;
        const QVariant value = valueOf(line.mid(line.indexOf('=') + 1));
        if (SensorAddress::parseValue(parameter, value.toString()))
            parameters.insert(parameter, value);
    }
    parameters.insert(InterfaceParameter::Interface,
                      interfaceName(interfaces[number(1) % interfaces.size()], true));
    for (const QLatin1String description :
         {InterfaceParameter::SensorTypeName, InterfaceParameter::SoftwareVersion, InterfaceParameter::MacAddress})
        parameters.remove(description);
    return {types[number(0) % types.size()], parameters};
}

/// The text form of an address leads back to it.
void checkRoundTrip(const SensorAddress &address)
{
    const QString text = address.toString();
    QString problem;
    const std::optional<SensorAddress> again = SensorAddress::parse(text, &problem);
    if (!again)
        reportMismatch("SensorAddress::parse", text, problem, QString());
    if (*again != address)
        reportMismatch("SensorAddress::parse", text, again->parameters, address.parameters);
}

} // namespace

/// The input is the text form of an address if its first byte is even, otherwise its parts.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size == 0)
        return 0;
    const QByteArray bytes(reinterpret_cast<const char *>(data + 1), static_cast<int>(size - 1));
    if (data[0] % 2 != 0) {
        checkRoundTrip(addressFrom(bytes));
        return 0;
    }
    QString problem;
    const QString text = QString::fromUtf8(bytes.constData(), bytes.size());
    const std::optional<SensorAddress> address = SensorAddress::parse(text, &problem);
    if (address)
        checkRoundTrip(*address);
    if (address.has_value() != problem.isEmpty())
        reportMismatch("SensorAddress::parse", text, problem, QString());
    return 0;
}
