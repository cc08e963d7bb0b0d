// SPDX-License-Identifier: MIT
#include "catalogue/basetype_p.h"
#include "catalogue/busnames_p.h"
#include "catalogue/interfaceparameters.h"
#include "catalogue/namematching_p.h"
#include "sensorinstance_p.h"
#include "sondix/answerparser_p.h"
#include "sondix/sondixapi_p.h"
#include "sondix/textcodec_p.h"

namespace SondixQt {

namespace {

/// The maximum length of an answer. A larger length is an error of the sensor and must not exhaust the memory.
constexpr uint32_t maxAnswerLength = 64 * 1024 * 1024;

/// Reads data in two calls of \a get: the first one returns the length, the second one fills a buffer of that
/// length. \a check is called with the result of each call.
template<typename Get, typename Check>
ErrorCode readBytes(QByteArray &bytes, Get get, Check check)
{
    uint32_t length = 0;
    ErrorCode result = check(get(nullptr, &length));
    if (result != NoError)
        return result;
    length = qMin(length, maxAnswerLength);
    // One byte more than announced, in case the library does not count the terminating zero that it writes.
    QByteArray buffer(int(length) + 1, '\0');
    uint32_t written = length;
    result = check(get(buffer.data(), &written));
    if (result != NoError)
        return result;
    buffer.resize(int(qMin(written, length)));
    bytes = buffer;
    return NoError;
}

/// The pointer in \a pointer if it is a T *, otherwise null.
template<typename T>
T *targetOf(const QVariant &pointer)
{
    return pointer.userType() == qMetaTypeId<T *>() ? pointer.value<T *>() : nullptr;
}

} // namespace

ErrorCode SensorInstancePrivate::setParameter(const QString &name, int value, QString *errorText)
{
    return check(SetParameterInt(handle, name.toLatin1().constData(), value), errorText);
}

ErrorCode SensorInstancePrivate::setParameter(const QString &name, double value, QString *errorText)
{
    return check(SetParameterDouble(handle, name.toLatin1().constData(), value), errorText);
}

ErrorCode SensorInstancePrivate::setParameter(const QString &name, const QString &value, QString *errorText)
{
    const QByteArray text = value.toLatin1();
    return check(SetParameterString(handle, name.toLatin1().constData(), text.constData()), errorText);
}

ErrorCode SensorInstancePrivate::setParameter(const QString &name, const QByteArray &value, QString *errorText)
{
    return check(
        SetParameterBinary(handle, name.toLatin1().constData(), value.constData(), uint32_t(value.size())),
        errorText);
}

ErrorCode SensorInstancePrivate::setParameters(const QMap<QString, QVariant> &parameters, QString *errorText)
{
    ErrorCode result = NoError;
    for (auto it = parameters.cbegin(); it != parameters.cend() && result == NoError; ++it) {
        switch (it->userType()) {
        case QMetaType::Bool:
        case QMetaType::Int:
            result = setParameter(it.key(), it->toInt(), errorText);
            break;
        case QMetaType::Double:
            result = setParameter(it.key(), it->toDouble(), errorText);
            break;
        case QMetaType::QString:
            result = setParameter(it.key(), it->toString(), errorText);
            break;
        case QMetaType::QByteArray:
            result = setParameter(it.key(), it->toByteArray(), errorText);
            break;
        default:
            break;
        }
    }
    return result;
}

ErrorCode SensorInstancePrivate::getParameter(const QString &name, int &value, QString *errorText)
{
    int32_t answer = 0;
    const ErrorCode result = check(GetParameterInt(handle, name.toLatin1().constData(), &answer), errorText);
    if (result == NoError)
        value = answer;
    return result;
}

ErrorCode SensorInstancePrivate::getParameter(const QString &name, double &value, QString *errorText)
{
    double answer = 0.0;
    const ErrorCode result = check(GetParameterDouble(handle, name.toLatin1().constData(), &answer), errorText);
    if (result == NoError)
        value = answer;
    return result;
}

ErrorCode SensorInstancePrivate::getParameter(const QString &name, QByteArray &value, QString *errorText)
{
    const QByteArray key = name.toLatin1();
    return readBytes(
        value,
        [&](void *buffer, uint32_t *length) {
            return GetParameterBinary(handle, key.constData(), buffer, length);
        },
        [&](qint32 code) { return check(code, errorText); });
}

QByteArray SensorInstancePrivate::optionalAnswer(const QString &name) const
{
    const QByteArray key = name.toLatin1();
    QByteArray bytes;
    readBytes(
        bytes,
        [&](void *buffer, uint32_t *length) {
            return GetParameterBinary(handle, key.constData(), buffer, length);
        },
        [](qint32 code) { return ErrorCode(code); });
    return bytes;
}

ErrorCode SensorInstancePrivate::getParameter(const QString &name, QString &value, QString *errorText)
{
    const QByteArray key = name.toLatin1();
    QByteArray bytes;
    const ErrorCode result = readBytes(
        bytes,
        [&](void *buffer, uint32_t *length) {
            return GetParameterString(handle, key.constData(), static_cast<char *>(buffer), length);
        },
        [&](qint32 code) { return check(code, errorText); });
    if (result == NoError)
        value = decodeText(bytes);
    return result;
}

ErrorCode SensorInstancePrivate::getParameter(const QString &name, bool &value, QString *errorText)
{
    int number = 0;
    const ErrorCode result = getParameter(name, number, errorText);
    if (result == NoError)
        value = number != 0;
    return result;
}

template<typename Value>
ErrorCode SensorInstancePrivate::getVariant(const QString &name, QVariant &variant, QString *errorText)
{
    Value value{};
    const ErrorCode result = getParameter(name, value, errorText);
    if (result == NoError)
        variant = value;
    return result;
}

ErrorCode SensorInstancePrivate::getParameter(const QString &name, QVariant &value, QString *errorText)
{
    switch (value.userType()) {
    case QMetaType::Bool:
    case QMetaType::Int:
        return getVariant<int>(name, value, errorText);
    case QMetaType::Double:
        return getVariant<double>(name, value, errorText);
    case QMetaType::QString:
        return getVariant<QString>(name, value, errorText);
    case QMetaType::QByteArray:
        return getVariant<QByteArray>(name, value, errorText);
    default:
        return NoError;
    }
}

ErrorCode SensorInstancePrivate::getParameters(const QMap<QString, QVariant> &results, QString *errorText)
{
    ErrorCode result = NoError;
    for (auto it = results.cbegin(); it != results.cend() && result == NoError; ++it) {
        const auto read = [&](auto *target) {
            if (target)
                result = getParameter(it.key(), *target, errorText);
        };
        read(targetOf<bool>(*it));
        read(targetOf<int>(*it));
        read(targetOf<double>(*it));
        read(targetOf<QString>(*it));
        read(targetOf<QByteArray>(*it));
        read(targetOf<QVariant>(*it));
    }
    return result;
}

ErrorCode SensorInstancePrivate::getAllParameters(QMap<QString, QVariant> &out, QString *errorText)
{
    QByteArray answer;
    const ErrorCode result = readBytes(
        answer,
        [&](void *buffer, uint32_t *length) { return GetParameters(handle, static_cast<char *>(buffer), length); },
        [&](qint32 code) { return check(code, errorText); });
    if (result != NoError)
        return result;
    out = parseAllParameters(decodeText(answer));

    const auto controller = out.find(QStringLiteral("SA_ControllerName"));
    if (controller != out.end()) {
        const QString reported = controller->toString();
        const QString model = busSensorModel(reported);
        if (model != reported)
            *controller = model;
    }
    if (isVariant(sensorType) &&
        confirmsModel(sensorName(sensorType, true), out.value(QStringLiteral("SA_Sensor")).toString()))
        out.insert(InterfaceParameter::SensorType, int(sensorType));
    return NoError;
}

} // namespace SondixQt
