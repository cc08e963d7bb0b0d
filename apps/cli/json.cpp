// SPDX-License-Identifier: MIT
#include "json.h"

#include <SondixQt/sensoraddress.h>
#include <SondixQt/sensorfeatures.h>

#include <QJsonArray>
#include <QJsonDocument>

using namespace SondixQt;

namespace Json {

QByteArray line(const QJsonObject &object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n';
}

QJsonObject ofParameters(const QMap<QString, QVariant> &parameters)
{
    QJsonObject object;
    for (auto it = parameters.cbegin(); it != parameters.cend(); ++it)
        if (it.value().type() == QVariant::ByteArray)
            object.insert(it.key(), QJsonObject{{QStringLiteral("base64"),
                                                 QString::fromLatin1(it.value().toByteArray().toBase64())}});
        else
            object.insert(it.key(), QJsonValue::fromVariant(it.value()));
    return object;
}

QJsonObject ofModel(SensorType type)
{
    const SensorFeatures features = getSensorFeatures().value(type);
    QJsonArray groups;
    for (const SensorGroup group : sensorGroups())
        if (group != AllGroups && group != NoGroup && features.group.testFlag(group))
            groups.append(sensorGroupName(group));
    return {
        {QStringLiteral("model"), features.shortName},
        {QStringLiteral("name"), features.name},
        {QStringLiteral("number"), static_cast<int>(type)},
        {QStringLiteral("groups"), groups},
        {QStringLiteral("hidden"), features.hidden},
        {QStringLiteral("help"), features.hasHelp},
        {QStringLiteral("getAllParameters"), features.hasGetAllParameters},
        {QStringLiteral("asciiProtocol"), features.hasASCIIProtocol},
    };
}

QJsonObject ofFoundSensor(const SensorInfo &info)
{
    const QMap<QString, QVariant> parameters = info.getParameters({});
    return {
        {QStringLiteral("model"), sensorName(info.sensorType(), true)},
        {QStringLiteral("name"), sensorName(info.sensorType())},
        {QStringLiteral("number"), static_cast<int>(info.sensorType())},
        {QStringLiteral("interface"), interfaceName(info.interfaceType())},
        {QStringLiteral("place"), SensorAddress{info.sensorType(), parameters}.place()},
        {QStringLiteral("serialNumber"), info.getParameter(InterfaceParameter::SerialNumber).toString()},
        {QStringLiteral("address"), SensorAddress::of(info).toString()},
        {QStringLiteral("parameters"), ofParameters(parameters)},
    };
}

static QJsonObject ofSignal(const SignalInfo &signalInfo)
{
    return {
        {QStringLiteral("index"), signalInfo.index},
        {QStringLiteral("name"), signalInfo.scaledName},
        {QStringLiteral("unit"), signalInfo.scaledUnit},
        {QStringLiteral("rangeMin"), signalInfo.scaledRangeMin},
        {QStringLiteral("rangeMax"), signalInfo.scaledRangeMax},
        {QStringLiteral("datarate"), signalInfo.scaledDatarate},
        {QStringLiteral("rawName"), signalInfo.rawName},
        {QStringLiteral("rawUnit"), signalInfo.rawUnit},
        {QStringLiteral("rawRangeMin"), signalInfo.rawRangeMin},
        {QStringLiteral("rawRangeMax"), signalInfo.rawRangeMax},
        {QStringLiteral("rawDatarate"), signalInfo.rawDatarate},
        {QStringLiteral("viewRange"), signalInfo.viewRange},
        {QStringLiteral("major"), signalInfo.majorSignal},
        {QStringLiteral("additionalInfo"), signalInfo.additionalInfo},
    };
}

QJsonObject ofFrame(const TransmittedDataInfo &frame, double rateKhz)
{
    QJsonArray signalArray;
    for (const SignalInfo &signalInfo : frame.signalList())
        signalArray.append(ofSignal(signalInfo));
    return {
        {QStringLiteral("sampleRateKhz"), rateKhz > 0.0 ? QJsonValue(rateKhz) : QJsonValue()},
        {QStringLiteral("datarate"), frame.datarate},
        {QStringLiteral("valuesPerFrame"), frame.valuesPerFrame},
        {QStringLiteral("maxValuesPerFrame"), frame.maxValuesPerFrame},
        {QStringLiteral("videoSignals"), frame.videoSignalCount},
        {QStringLiteral("signals"), signalArray},
    };
}

} // namespace Json
