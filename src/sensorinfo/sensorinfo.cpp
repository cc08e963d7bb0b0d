// SPDX-License-Identifier: MIT
#include "sensorinfo.h"

#include "catalogue/basetype_p.h"
#include "catalogue/busnames_p.h"
#include "catalogue/interfaceparameters.h"
#include "catalogue/sensorfeatures_p.h"
#include "catalogue/sensortypes_p.h"
#include "sondix/answervalue_p.h"

#include <algorithm>
#include <vector>

namespace SondixQt {

namespace {

/// The type of the first part that \a name contains, or \a otherwise if it contains none.
SensorType firstContained(const QString &name, ConstantList<NamePart> parts, SensorType otherwise)
{
    const auto part = std::find_if(parts.begin(), parts.end(), [&name](const NamePart &candidate) {
        return name.contains(QLatin1String(candidate.text));
    });
    return part == parts.end() ? otherwise : part->type;
}

/// The model that a part of \a name identifies, or NoSensor.
SensorType busTypeByPart(const QString &name, SensorType reported)
{
    const ConstantList<BusFamily> families = busFamilies();
    const auto family = std::find_if(families.begin(), families.end(), [&](const BusFamily &candidate) {
        return candidate.type == reported || name.contains(QLatin1String(candidate.text));
    });
    return family == families.end() ? NoSensor : firstContained(name, family->models, NoSensor);
}

/// The short name of a bus sensor without "x" and "/", and its type.
struct BusName
{
    QString text;
    SensorType type;
};

std::vector<BusName> busNamesInDisplayOrder()
{
    std::vector<BusName> names;
    const QList<SensorType> types = sensorsInGroup(KVBus, true);
    for (const SensorType type : types) {
        QString text = sensorName(type, true);
        text.remove(QLatin1Char('x'), Qt::CaseInsensitive).remove(QLatin1Char('/'));
        names.push_back({text, type});
    }
    return names;
}

/// The first bus sensor in display order whose BusName::text is contained in \a name, or \a otherwise.
SensorType busTypeByName(QString name, SensorType otherwise)
{
    static const std::vector<BusName> busNames = busNamesInDisplayOrder();

    name = busSensorModel(name);
    name.remove(QLatin1Char('x'), Qt::CaseInsensitive).remove(QLatin1Char('_')).remove(QLatin1Char(' '));

    const auto hit = std::find_if(busNames.begin(), busNames.end(), [&name](const BusName &candidate) {
        return name.contains(candidate.text, Qt::CaseInsensitive);
    });
    return hit == busNames.end() ? otherwise : hit->type;
}

/// The short names of the bus sensors that can be connected to the XA300 converter, without the converter's
/// suffix.
QStringList modelsSupportedByConverter()
{
    const QLatin1String suffix("_XA300ETH");
    QStringList models;
    for (const NamePart &supported : converterModels()) {
        QString model = sensorName(supported.type, true);
        if (model.endsWith(suffix))
            model.chop(suffix.size());
        models.append(model);
    }
    return models;
}

bool hasFeature(SensorType type, bool SensorFeatures::*feature)
{
    const auto features = getSensorFeatures().find(type);
    return features != getSensorFeatures().end() && *features.*feature;
}

void registerSensorInfo()
{
    qRegisterMetaType<SensorInfo>();
    qRegisterMetaType<SensorInfo>("SensorInfo");
}
Q_CONSTRUCTOR_FUNCTION(registerSensorInfo)

} // namespace

SensorInfo::SensorInfo()
    : SensorInfo({}, NoSensor)
{
}

SensorInfo::SensorInfo(const QMap<QString, QVariant> &params, SensorType explicitType)
    : parameters(params)
    , type(explicitType)
{
    if (type != NoSensor || getSensorTypeFromParams() == NoSensor)
        return;
    QString modelName = parameters.value(QStringLiteral("SA_Sensor")).toString();
    if (modelName.isEmpty())
        modelName = parameters.value(QStringLiteral("SA_ControllerName")).toString();
    type = getRealSensorTypeFromParams(modelName);
}

SensorType SensorInfo::sensorType() const
{
    return type;
}

bool SensorInfo::contains(const QString &key) const
{
    return parameters.contains(key);
}

QVariant SensorInfo::getParameter(const QString &key) const
{
    return parameters.value(key);
}

QMap<QString, QVariant> SensorInfo::getParameters(const QStringList &keys) const
{
    if (keys.isEmpty())
        return parameters;
    QMap<QString, QVariant> selected;
    for (const QString &key : keys) {
        const QVariant value = parameters.value(key);
        if (value.isValid())
            selected.insert(key, value);
    }
    return selected;
}

SensorInterface SensorInfo::interfaceType() const
{
    if (parameters.isEmpty())
        return NoInterface;
    const int index = intAnswer(parameters.value(InterfaceParameter::InterfaceIndex));
    const QMap<SensorInterface, InterfaceRecord> &table = interfaceTable();
    const auto found = std::find_if(table.begin(), table.end(),
                                    [index](const InterfaceRecord &record) { return record.index == index; });
    return found == table.end() ? NoInterface : found.key();
}

QMap<QString, QVariant> SensorInfo::getInterfaceParameters() const
{
    QMap<QString, QVariant> selected;
    const QStringList keys = interfaceTable().value(interfaceType()).parameterKeys;
    for (const QString &key : keys) {
        const auto parameter = parameters.find(key);
        if (parameter != parameters.end())
            selected.insert(key, *parameter);
    }
    return selected;
}

WebInterface SensorInfo::getWebInterfaceSupport() const
{
    return webInterfaceTable().value(type, NoWebInterface);
}

bool SensorInfo::supportsASCIIProtocol() const
{
    return hasFeature(type, &SensorFeatures::hasASCIIProtocol);
}

bool SensorInfo::supportsGetAllParameters() const
{
    return hasFeature(type, &SensorFeatures::hasGetAllParameters);
}

bool SensorInfo::supportsHelp() const
{
    return hasFeature(type, &SensorFeatures::hasHelp);
}

bool SensorInfo::operator==(const SensorInfo &other) const
{
    return parameters == other.parameters;
}

SensorType SensorInfo::getSensorTypeFromParams() const
{
    return static_cast<SensorType>(intAnswer(parameters.value(InterfaceParameter::SensorType)));
}

SensorType SensorInfo::getRealSensorTypeFromParams(const QString &name) const
{
    const SensorType reported = getSensorTypeFromParams();
    if (name.isEmpty())
        return reported;
    const SensorType base = baseType(reported);
    if (base == XA300)
        return firstContained(name, converterModels(), reported);
    if (reported != NoSensor && base != GenericKVBus)
        return reported;

    const SensorType specific = busTypeByPart(name, reported);
    return specific != NoSensor ? specific : busTypeByName(name, reported);
}

bool isKVBusSensorSupportedByXA300ETH(const QString &name)
{
    static const QStringList models = modelsSupportedByConverter();
    return std::any_of(models.begin(), models.end(),
                       [&name](const QString &model) { return model.contains(name); });
}

} // namespace SondixQt
