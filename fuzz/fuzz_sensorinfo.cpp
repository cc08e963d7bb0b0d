// SPDX-License-Identifier: MIT
#include "mismatch.h"
#include "sondix/textcodec_p.h"

#include <SondixQt/ParameterPresentation>
#include <SondixQt/SensorInfo>

#include <QPair>
#include <QVector>

#include <cstddef>
#include <cstdint>
#include <fuzzer/FuzzedDataProvider.h>
#include <string>

using namespace SondixQt;

namespace {

using Parameters = QMap<QString, QVariant>;
using NameTypes = QVector<QPair<const char *, SensorType>>;

SensorType firstIn(const QString &name, const NameTypes &parts)
{
    for (const auto &part : parts) {
        if (name.indexOf(QString::fromLatin1(part.first)) >= 0)
            return part.second;
    }
    return NoSensor;
}

SensorType specificBusType(const QString &name, SensorType reported)
{
    if (reported == MV4xx || name.indexOf(QStringLiteral("MV4")) >= 0)
        return firstIn(name, {{"MV410", MV410}, {"MV420", MV420}, {"MV430", MV430}});
    return firstIn(name, {{"EC840", EC840}, {"EC830", EC830}, {"EC850", EC850}, {"DV-", DVxxx}});
}

SensorType genericBusType(QString name, SensorType reported)
{
    if (name == QLatin1String("GYSENS1_A"))
        name = QStringLiteral("GY330");
    else if (name == QLatin1String("GYIS1_DYN_B"))
        name = QStringLiteral("GY310D");
    else if (name == QLatin1String("GYIS1_B"))
        name = QStringLiteral("GY310S");
    for (const char superfluous : {'x', 'X', '_', ' '})
        name.replace(QLatin1Char(superfluous), QString());
    for (const SensorType type : sensorsInGroup(KVBus, true)) {
        QString model = sensorName(type, true);
        for (const char superfluous : {'x', 'X', '/'})
            model.replace(QLatin1Char(superfluous), QString());
        if (name.indexOf(model, 0, Qt::CaseInsensitive) >= 0)
            return type;
    }
    return reported;
}

/// Reference implementation: the real type, derived from the reported type and name.
SensorType expectedType(SensorType reported, const QString &name)
{
    if (reported == NoSensor || name.isEmpty())
        return reported;
    if (reported % 10000 == 34) {
        const SensorType behindConverter = firstIn(name, {{"XA300/ETH_MV410", MV410_XA300ETH},
                                                          {"XA300/ETH_MV420", MV420_XA300ETH},
                                                          {"XA300/ETH_MV430", MV430_XA300ETH},
                                                          {"XA300/ETH_MV4", MV4xx_XA300ETH},
                                                          {"XA300/ETH_GY330", GY330_XA300ETH},
                                                          {"XA300/ETH_GY310D", GY310_XA300ETH},
                                                          {"XA300/ETH_CP740", CP740_XA300ETH},
                                                          {"XA300/ETH_DV-", DVxxx_XA300ETH}});
        return behindConverter != NoSensor ? behindConverter : reported;
    }
    if (reported % 10000 != 43)
        return reported;
    const SensorType specific = specificBusType(name, reported);
    return specific != NoSensor ? specific : genericBusType(name, reported);
}

SensorInterface expectedInterface(const Parameters &parameters)
{
    switch (parameters.value(QStringLiteral("IP_InterfaceIdx")).toInt()) {
    case 1:
        return RS232;
    case 2:
        return XA100;
    case 3:
        return TCPIP;
    case 6:
        return XA200;
    case 7:
        return WinUSB;
    case 8:
        return XA100_USB;
    case 10:
        return XA200_ETH;
    default:
        return NoInterface;
    }
}

SensorType someType(FuzzedDataProvider &input)
{
    constexpr SensorType refined[] = {NoSensor, XA300, GenericKVBus, MV4xx, MV4xx_XA300ETH, TX270};
    return input.ConsumeBool() ? input.PickValueInArray(refined)
                               : static_cast<SensorType>(input.ConsumeIntegral<qint32>());
}

/// Sometimes leaves \a key out.
void maybeInsertText(Parameters &parameters, const QString &key, FuzzedDataProvider &input)
{
    if (input.ConsumeIntegralInRange(0, 3) > 0)
        parameters.insert(key, decodeText(QByteArray::fromStdString(input.ConsumeRandomLengthString(64))));
}

void checkSelections(const SensorInfo &info, const Parameters &parameters)
{
    if (info.getParameters({}) != parameters)
        reportMismatch("getParameters", parameters, info.getParameters({}), parameters);
    const bool hasInterface = expectedInterface(parameters) != NoInterface;
    for (const Parameters &part : {extractBasicParameters(info), info.getInterfaceParameters()}) {
        for (auto entry = part.begin(); entry != part.end(); ++entry) {
            if (parameters.value(entry.key()) != *entry)
                reportMismatch("selected parameter", entry.key(), *entry, parameters.value(entry.key()));
        }
    }
    if (!hasInterface && extractBasicParameters(info) != parameters)
        reportMismatch("extractBasicParameters", parameters, extractBasicParameters(info), parameters);
}

void checkConverterSupport(const QString &name)
{
    bool expected = false;
    for (const char *model : {"CP740", "MV4xx", "MV410", "MV420", "MV430", "GY310", "GY330", "DV-xxx"})
        expected = expected || QString::fromLatin1(model).indexOf(name) >= 0;
    const bool supported = isKVBusSensorSupportedByXA300ETH(name);
    if (supported != expected)
        reportMismatch("isKVBusSensorSupportedByXA300ETH", name, supported, expected);
}

} // namespace

/// The input determines the parameters of a found sensor.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    Parameters parameters;
    const SensorType explicitType = input.ConsumeIntegralInRange(0, 7) == 0 ? someType(input) : NoSensor;
    const SensorType reported = someType(input);
    if (input.ConsumeBool())
        parameters.insert(QStringLiteral("IP_SensorType"), int(reported));
    else
        parameters.insert(QStringLiteral("IP_SensorType"), QString::number(int(reported)));
    if (input.ConsumeBool())
        parameters.insert(QStringLiteral("IP_InterfaceIdx"), input.ConsumeIntegralInRange(-1, 12));
    maybeInsertText(parameters, QStringLiteral("SA_Sensor"), input);
    maybeInsertText(parameters, QStringLiteral("SA_ControllerName"), input);
    maybeInsertText(parameters, QStringLiteral("IP_Interface"), input);

    const SensorInfo info(parameters, explicitType);
    QString name = parameters.value(QStringLiteral("SA_Sensor")).toString();
    if (name.isEmpty())
        name = parameters.value(QStringLiteral("SA_ControllerName")).toString();
    const SensorType expected = explicitType != NoSensor ? explicitType : expectedType(reported, name);
    if (info.sensorType() != expected)
        reportMismatch("sensorType", parameters, int(info.sensorType()), int(expected));
    if (info.interfaceType() != expectedInterface(parameters))
        reportMismatch("interfaceType", parameters, int(info.interfaceType()), int(expectedInterface(parameters)));
    checkSelections(info, parameters);
    checkConverterSupport(name);
    return 0;
}
