// SPDX-License-Identifier: MIT
#include "binaryanswers.h"

using namespace SondixQt;

namespace SondixApp {

QStringList binaryAnswers(SensorInstance &instance, const QString &command)
{
    if (command == QLatin1String("Get_HTTP"))
        return {QStringLiteral("SA_HTTPBody")};
    if (command != QLatin1String("Get_Video"))
        return {};
    // Some models cannot report whether they send video: the instance must be told.
    instance.setVideoTransmitted(true);
    TransmittedDataInfo frame;
    QStringList names;
    QString name;
    if (instance.transmittedDataInfo(frame) == NoError)
        while (instance.getBinaryVideoParam(name, names.size()))
            names += name;
    return names;
}

QMap<QString, QVariant> askBinary(SensorInstance &instance, const QString &command,
                                  const QMap<QString, QVariant> &parameters, const QStringList &names)
{
    QMap<QString, QByteArray> data;
    QMap<QString, QVariant> results;
    for (const QString &name : names)
        results.insert(name, SensorInstance::resultPointer(&data[name]));
    instance.sendCommand(command, parameters, results);
    QMap<QString, QVariant> answer;
    for (auto it = data.cbegin(); it != data.cend(); ++it)
        if (!it->isNull())
            answer.insert(it.key(), *it);
    return answer;
}

} // namespace SondixApp
