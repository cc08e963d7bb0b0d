// SPDX-License-Identifier: MIT
#include "parameterfile.h"

#include "englishtexts.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

#include <cmath>
#include <limits>

namespace Explorer {

namespace {

struct FileTexts
{
    Q_DECLARE_TR_FUNCTIONS(Explorer::ParameterFile)
};

constexpr qint64 largestFile = 4 << 20;
constexpr int fileVersion = 1;
const QLatin1String formatKey("format");
const QLatin1String formatName("SondixQt settings");
const QLatin1String versionKey("version");
const QLatin1String modelKey("model");
const QLatin1String serialNumberKey("serialNumber");
const QLatin1String settingsKey("settings");

QJsonObject objectOf(const SensorSettings &settings)
{
    QJsonObject object;
    for (auto group = settings.cbegin(); group != settings.cend(); ++group)
        object.insert(group.key(), QJsonObject::fromVariantMap(group.value()));
    return object;
}

// Numbers without a fraction become int: the model converts them to the type of the setting.
std::optional<QVariant> valueOf(const QJsonValue &json)
{
    if (json.isString())
        return json.toString();
    if (!json.isDouble())
        return std::nullopt;
    const double number = json.toDouble();
    const bool isInt = std::abs(number) <= std::numeric_limits<int>::max() && !(std::floor(number) < number);
    return isInt ? QVariant(static_cast<int>(number)) : QVariant(number);
}

std::optional<SensorSettings> settingsOf(const QJsonObject &object, QString *problem)
{
    SensorSettings settings;
    for (auto group = object.begin(); group != object.end(); ++group) {
        const QJsonObject parameters = group.value().toObject();
        if (!group.value().isObject() || parameters.isEmpty()) {
            *problem = FileTexts::tr("'%1' has no settings").arg(group.key());
            return std::nullopt;
        }
        for (auto parameter = parameters.begin(); parameter != parameters.end(); ++parameter) {
            const std::optional<QVariant> value = valueOf(parameter.value());
            if (!value) {
                *problem = FileTexts::tr("'%1' is neither a number nor a text").arg(parameter.key());
                return std::nullopt;
            }
            settings[group.key()].insert(parameter.key(), *value);
        }
    }
    return settings;
}

std::optional<ParameterFile> parsed(const QByteArray &bytes, QString *problem)
{
    QJsonParseError error;
    const QJsonObject object = QJsonDocument::fromJson(bytes, &error).object();
    if (error.error != QJsonParseError::NoError) {
        const int line = static_cast<int>(bytes.left(error.offset).count('\n')) + 1;
        *problem = FileTexts::tr("line %1: %2").arg(QString::number(line), error.errorString());
        return std::nullopt;
    }
    if (object.value(formatKey).toString() != formatName) {
        *problem = FileTexts::tr("it is not a file with settings of a sensor");
        return std::nullopt;
    }
    if (object.value(versionKey).toInt() != fileVersion) {
        *problem = FileTexts::tr("it was written by a newer version of this program");
        return std::nullopt;
    }
    ParameterFile file;
    file.model = object.value(modelKey).toString();
    file.serialNumber = object.value(serialNumberKey).toString();
    const std::optional<SensorSettings> settings = settingsOf(object.value(settingsKey).toObject(), problem);
    if (!settings)
        return std::nullopt;
    if (settings->isEmpty()) {
        *problem = FileTexts::tr("it has no settings");
        return std::nullopt;
    }
    file.settings = *settings;
    return file;
}

} // namespace

bool ParameterFile::save(const QString &path, QString *problem) const
{
    const QJsonObject object{{formatKey, QString(formatName)},
                             {versionKey, fileVersion},
                             {modelKey, model},
                             {serialNumberKey, serialNumber},
                             {QStringLiteral("saved"), QDateTime::currentDateTime().toString(Qt::ISODate)},
                             {settingsKey, objectOf(settings)}};
    QSaveFile file(path);
    const QByteArray bytes = QJsonDocument(object).toJson();
    if (file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit())
        return true;
    *problem = FileTexts::tr("'%1' cannot be written: %2").arg(path, shownText(file.errorString()));
    return false;
}

std::optional<ParameterFile> ParameterFile::load(const QString &path, QString *problem)
{
    QFile file(path);
    const auto failed = [&](const QString &reason) {
        *problem = FileTexts::tr("'%1' cannot be loaded: %2").arg(QFileInfo(path).fileName(), reason);
        return std::nullopt;
    };
    if (!file.open(QIODevice::ReadOnly))
        return failed(file.errorString());
    const QByteArray bytes = file.read(largestFile + 1);
    if (bytes.size() > largestFile)
        return failed(FileTexts::tr("it is not a file with settings of a sensor"));
    QString reason;
    const std::optional<ParameterFile> result = parsed(bytes, &reason);
    return result ? result : failed(reason);
}

} // namespace Explorer
