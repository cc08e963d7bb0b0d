// SPDX-License-Identifier: MIT
#include "sensorinstance.h"

#include "catalogue/basetype_p.h"
#include "catalogue/interfaceparameters.h"
#include "instancelog_p.h"
#include "sensorinstance_p.h"
#include "sondix/answervalue_p.h"
#include "sondix/sondixapi_p.h"
#include "sondix/textcodec_p.h"

namespace SondixQt {

namespace {

constexpr int errorTextSize = 4096;

int sensorCount(const QMap<QString, QVariant> &parameters)
{
    return qMin(intAnswer(parameters.value(InterfaceParameter::SensorCount, 1)), maxSensorCount);
}

/// Registers the names that queued connections and QMetaObject::invokeMethod() use for these types.
void registerInstanceTypes()
{
    qRegisterMetaType<ErrorCode>("ErrorCode");
    qRegisterMetaType<ErrorCode>("SondixQt::ErrorCode");
    qRegisterMetaType<bool *>("bool *");
    qRegisterMetaType<int *>("int *");
    qRegisterMetaType<double *>("double *");
    qRegisterMetaType<QString *>("QString *");
    qRegisterMetaType<QByteArray *>("QByteArray *");
    qRegisterMetaType<QVariant *>("QVariant *");
}
Q_CONSTRUCTOR_FUNCTION(registerInstanceTypes)

} // namespace

SensorInstance::SensorInstance(SensorType type, unsigned long handle)
    : SensorInstance(*new SensorInstancePrivate, type, handle)
{
}

SensorInstance::SensorInstance(SensorInstancePrivate &dd, SensorType type, unsigned long handle)
    : d_ptr(&dd)
{
    d_ptr->init(this, type, handle);
}

SensorInstance::~SensorInstance()
{
    release();
}

SensorInstance &SensorInstance::operator=(SensorInstance &&other) noexcept
{
    if (this != &other) {
        release();
        d_ptr->handle = std::exchange(other.d_ptr->handle, 0U);
        d_ptr->sensorType = other.d_ptr->sensorType;
    }
    return *this;
}

void SensorInstancePrivate::init(SensorInstance *q, SensorType type, unsigned long adoptedHandle)
{
    q_ptr = q;
    sensorType = type;
    handle = quint32(adoptedHandle);
    if (type != NoSensor && type != File && handle == 0)
        handle = CreateSensorInstance(SondixQt::baseType(type));
    if (q->isOpen()) {
        fillCommandTables(nullptr);
        checkTriggerAndSync(nullptr);
    }
}

SensorType SensorInstancePrivate::baseType() const
{
    return sensorType == File ? File : SondixQt::baseType(sensorType);
}

ErrorCode SensorInstance::release()
{
    Q_D(SensorInstance);
    if (d->handle != 0)
        ReleaseSensorInstance(std::exchange(d->handle, 0U));
    return NoError;
}

bool SensorInstance::isValid() const
{
    Q_D(const SensorInstance);
    return d->handle != 0;
}

bool SensorInstance::isOpen()
{
    if (!isValid())
        return false;
    int open = 0;
    sendCommandGetInt(QStringLiteral("Get_OpenState"), QStringLiteral("IA_SensorOpen"), open, nullptr);
    return open != 0;
}

SensorType SensorInstance::sensorType() const
{
    Q_D(const SensorInstance);
    return d->baseType();
}

SensorType SensorInstance::sensorTypeFull() const
{
    Q_D(const SensorInstance);
    return d->sensorType;
}

quint32 SensorInstance::handle() const
{
    Q_D(const SensorInstance);
    return d->handle;
}

ErrorCode SensorInstance::open(const QMap<QString, QVariant> &parameters, QString *errorText)
{
    Q_D(SensorInstance);
    const InstanceLock lock(d);
    if (!parameters.isEmpty())
        storeInterfaceParameters(parameters);

    ErrorCode result = d->setParameters(parameters, errorText);
    if (result != NoError)
        return result;
    result = d->check(SetParameterInt(d->handle, "CP_LogSensorInformation", 1), nullptr);
    if (result != NoError)
        return result;
    result = d->check(OpenSensor(d->handle), errorText);
    qCDebug(instanceCallLog).noquote() << sensorName(d->sensorType, true) << "open ->" << int(result);
    if (result != NoError) {
        const int count = sensorCount(parameters);
        for (int index = 1; index <= count; ++index)
            addInfoParameters({{QStringLiteral("ST_Empty"), index}}, index);
        d->determineGetMeasureSensorNumbers();
        return result;
    }

    d->readSensorInformation(parameters, errorText);
    result = d->fillCommandTables(errorText);
    if (result == NoError)
        d->checkTriggerAndSync(errorText);
    d->determineGetMeasureSensorNumbers();
    return result;
}

ErrorCode SensorInstance::open(QString *errorText)
{
    return open(QMap<QString, QVariant>(), errorText);
}

void SensorInstancePrivate::readSensorInformation(const QMap<QString, QVariant> &parameters, QString *errorText)
{
    Q_Q(SensorInstance);
    QString information;
    if (baseType() == MultiSensor) {
        const int count = sensorCount(parameters);
        for (int index = 1; index <= count; ++index) {
            const QString name = QStringLiteral("SA_SensorInformation#S%1").arg(index);
            if (getParameter(name, information, errorText) == NoError)
                q->addInfoParameters(information, index);
        }
    }
    if (getParameter(QStringLiteral("SA_SensorInformation"), information, errorText) == NoError)
        q->addInfoParameters(information, 1);
}

ErrorCode SensorInstance::close(QString *errorText)
{
    Q_D(SensorInstance);
    const ErrorCode result = d->check(d->sensorType == File ? NoError : CloseSensor(d->handle), errorText);
    qCDebug(instanceCallLog).noquote() << sensorName(d->sensorType, true) << "close ->" << int(result);
    return result;
}

ErrorCode SensorInstance::clearAllParameters(QString *errorText)
{
    Q_D(SensorInstance);
    const InstanceLock lock(d);
    return d->check(ClearAllParameters(d->handle), errorText);
}

ErrorCode SensorInstancePrivate::check(qint32 code, QString *errorText) const
{
    // Fast path: transfers succeed thousands of times a second and there is no text to clear.
    if (code != NoError || errorText)
        q_func()->checkError(ErrorCode(code), errorText, true);
    return ErrorCode(code);
}

void SensorInstance::checkError(ErrorCode code, QString *errorText, bool emitSignal) const
{
    Q_D(const SensorInstance);
    if (code == NoError) {
        if (errorText)
            errorText->clear();
        return;
    }
    QByteArray buffer(errorTextSize, '\0');
    const auto lastError = ErrorCode(GetError(d->handle, buffer.data(), errorTextSize));
    if (lastError == NoError)
        return;
    QString text = decodeText(buffer);
    if (text.isNull()) // depends on the codec; a null text would mean that there was no error
        text = QStringLiteral("");
    qCDebug(instanceLog).noquote() << "SensorInstance::checkError:" << text;
    if (errorText)
        *errorText = text;
    if (emitSignal)
        Q_EMIT const_cast<SensorInstance *>(this)->errorMessage(lastError, text);
}

} // namespace SondixQt
