// SPDX-License-Identifier: MIT
#include "sensorfinder_p.h"

#include "catalogue/interfaceparameters.h"
#include "catalogue/searchtables_p.h"
#include "sensorinfo/sensoraddress.h"
#include "sondix/answervalue_p.h"

#include <QStringList>

#include <algorithm>

namespace SondixQt {

namespace {

/// The maximum number of addresses of a sensor. A longer list is a corrupt answer and must not exhaust the memory.
constexpr int maxAddressCount = 256;

constexpr std::size_t channelPosition = 3;

const std::array<QString, std::tuple_size_v<SensorIdentity>> &identityKeys()
{
    static const std::array<QString, std::tuple_size_v<SensorIdentity>> keys = {
        InterfaceParameter::SerialNumber,
        InterfaceParameter::RemoteAddr,
        InterfaceParameter::Port,
        InterfaceParameter::ChannelNumber,
        QStringLiteral("SA_SensorAddress"),
        QStringLiteral("SA_Address"),
        QStringLiteral("SA_UUID"),
        QStringLiteral("SA_IPAddress"),
        InterfaceParameter::InterfaceSerialNumber,
        InterfaceParameter::DeviceInstance,
        QStringLiteral("SA_Sensor"),
        QStringLiteral("SA_ArticleNumber"),
        InterfaceParameter::Interface,
    };
    return keys;
}

SensorIdentity identityOf(const SensorInfo &info)
{
    SensorIdentity identity;
    std::transform(identityKeys().begin(), identityKeys().end(), identity.begin(),
                   [&info](const QString &key) { return info.getParameter(key); });
    return identity;
}

/// Compares as isParamEqual() does. QVariant::operator== is not symmetric: the new values go on the left.
bool isSameSensor(const SensorIdentity &found, const SensorIdentity &known, bool ignoreChannel)
{
    for (std::size_t i = 0; i < found.size(); ++i) {
        if (!(ignoreChannel && i == channelPosition) && !(found[i] == known[i]))
            return false;
    }
    return true;
}

} // namespace

bool SensorFinder::isParamEqual(const SensorInfo &a, const SensorInfo &b, const QString &name)
{
    return a.getParameter(name) == b.getParameter(name);
}

SensorInfo SensorFinderPrivate::getResultInfo(int index)
{
    QMap<QString, QVariant> answer;
    sensorInstance.sendCommandGetAll(QStringLiteral("Get_FoundSensor"), {{QStringLiteral("IP_Index"), index}},
                                     answer, nullptr, SensorInstance::ReadAfterSuccess);
    answer.remove(QStringLiteral("SA_CompleteAnswer"));
    return SensorInfo(answer, NoSensor);
}

QList<SensorInfo> SensorFinderPrivate::AnalyseScanResult(const SensorInfo &result) const
{
    if (!searchRow(sensorInstance.sensorType()).addressList)
        return {result};

    const QMap<QString, QVariant> parameters = result.getParameters(QStringList());
    const QString addressList = parameters.value(QStringLiteral("SA_CurrentIPAddresses")).toString();
    if (addressList.isEmpty())
        return {};

    QList<SensorInfo> records;
    const QStringList addresses = addressList.split(QLatin1Char(' ')).mid(0, maxAddressCount);
    for (const QString &address : addresses) {
        const QString bareAddress = address.section(QLatin1Char('/'), 0, 0);
        QMap<QString, QVariant> copy = parameters;
        copy.insert(InterfaceParameter::RemoteAddr, bareAddress);
        copy.insert(QStringLiteral("SA_IPAddress"), bareAddress);
        records.append(SensorInfo(copy, NoSensor));
    }
    return records;
}

void SensorFinderPrivate::AddScanResult(const SensorInfo &result)
{
    Q_Q(SensorFinder);

    const int reportedType = intAnswer(result.getParameter(InterfaceParameter::SensorType));
    const bool isCard = getSensorGroupFromSensorType(SensorType(reportedType)) & Interfaces;
    SensorIdentity identity = identityOf(result);
    if (isKnown(identity, isCard))
        return;

    const QString typeName = result.getParameter(InterfaceParameter::SensorTypeName).toString();
    if (reportedType == NoSensor && typeName.contains(QLatin1String("Unknown")))
        return;

    if (fullSearch && !isReportedByFullSearch(result))
        return;

    foundIdentities.push_back(std::move(identity));
    qCInfo(sensorFinderLog).noquote() << QLatin1String("Found sensor ") + sensorName(result.sensorType());
    Q_EMIT q->sensorFound(result);
}

bool SensorFinderPrivate::isKnown(const SensorIdentity &identity, bool ignoreChannel) const
{
    const auto isSame = [&](const SensorIdentity &known) { return isSameSensor(identity, known, ignoreChannel); };
    return std::any_of(foundIdentities.begin(), foundIdentities.end(), isSame) ||
           std::any_of(blacklistIdentities.begin(), blacklistIdentities.end(), isSame);
}

bool SensorFinderPrivate::isReportedByFullSearch(const SensorInfo &result)
{
    // Ethernet and USB are scanned even if they are not requested.
    if (!(fullSearch->interfaces & result.interfaceType()))
        return false;
    if (!searchSimilarSensors && !fullSearch->types.contains(result.sensorType()))
        return false;
    // The searches for different families may report one sensor with different details.
    const QString address = SensorAddress::of(result).toString() + QLatin1Char(' ') +
                            result.getParameter(InterfaceParameter::SerialNumber).toString();
    if (fullSearch->addresses.contains(address))
        return false;
    fullSearch->addresses.insert(address);
    return true;
}

void SensorFinderPrivate::setBlacklist(const QList<SensorInfo> &blacklist)
{
    blacklistIdentities.clear();
    blacklistIdentities.reserve(std::size_t(blacklist.size()));
    for (const SensorInfo &known : blacklist)
        blacklistIdentities.push_back(identityOf(known));
}

} // namespace SondixQt
