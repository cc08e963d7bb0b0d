// SPDX-License-Identifier: MIT
#include "catalogue/interfaceparameters.h"
#include "sensorinstance_p.h"
#include "sondix/answervalue_p.h"
#include "sondix/errorvalue.h"
#include "sondix/errorvalues_p.h"

namespace SondixQt {

const QString &SensorInstance::getErrorValueText(double value)
{
    Q_D(SensorInstance);
    if (d->errorValueTexts.isEmpty()) {
        // The entry for error 0 marks the texts as loaded, even if there are none. It is inserted first because a
        // slot connected to errorMessage() may call this function again.
        d->errorValueTexts.insert(0, QString());
        d->initErrorValueMap();
    }
    const auto text = d->errorValueTexts.constFind(errorValueKey(value));
    return text != d->errorValueTexts.constEnd() ? *text : d->errorValueTexts[0];
}

const QHash<int, QString> &SensorInstancePrivate::initErrorValueMap()
{
    Q_Q(SensorInstance);
    if (sensorType == File) {
        for (const QMap<QString, QVariant> &sensor : qAsConst(infoParameters)) {
            const int type = intAnswer(sensor.value(InterfaceParameter::SensorType));
            if (type != MultiSensor && type != NoSensor && type != File)
                addErrorValueTextsOfType(SensorType(type));
        }
    } else if (sensorType == MultiSensor) {
        const int count =
            qMin(intAnswer(interfaceParameters.value(InterfaceParameter::SensorCount)), maxSensorCount);
        for (int number = 1; number <= count; ++number) {
            int type = NoSensor;
            const ErrorCode result = q->sendCommandGetInt(
                QStringLiteral("Get_DrvSetting"), QStringLiteral("IA_SensorType#%1").arg(number), type, nullptr);
            if (result == NoError && type != MultiSensor && type != NoSensor)
                addErrorValueTextsOfType(SensorType(type));
        }
    } else {
        QString source;
        q->sendCommandGetString(QStringLiteral("Get_SensorErrorValueText"),
                                QStringLiteral("SA_SensorErrorValueText"), source, nullptr);
        addErrorValueTexts(source, errorValueTexts);
    }
    return errorValueTexts;
}

// An instance that is not open is sufficient: the sensor-access library knows the texts of each type.
void SensorInstancePrivate::addErrorValueTextsOfType(SensorType type)
{
    SensorInstance sensor(type);
    const QHash<int, QString> &texts = sensor.d_func()->initErrorValueMap();
    for (auto text = texts.cbegin(); text != texts.cend(); ++text)
        errorValueTexts.insert(text.key(), text.value());
}

} // namespace SondixQt
