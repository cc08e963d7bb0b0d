// SPDX-License-Identifier: MIT
#pragma once

#include "sensorinstance.h"

#include <mutex>

namespace SondixQt {

/// The state of a SensorInstance and the steps that its public operations are made of.
class SensorInstancePrivate
{
public:
    virtual ~SensorInstancePrivate() = default;

    void init(SensorInstance *q, SensorType type, unsigned long adoptedHandle);

    /// The one funnel for results of the C interface.
    ErrorCode check(qint32 code, QString *errorText) const;

    // Typed access to the library's parameters; each failure is reported.
    ErrorCode setParameter(const QString &name, int value, QString *errorText);
    ErrorCode setParameter(const QString &name, double value, QString *errorText);
    ErrorCode setParameter(const QString &name, const QString &value, QString *errorText);
    ErrorCode setParameter(const QString &name, const QByteArray &value, QString *errorText);
    ErrorCode setParameters(const QMap<QString, QVariant> &parameters, QString *errorText);
    ErrorCode getParameter(const QString &name, int &value, QString *errorText);
    ErrorCode getParameter(const QString &name, double &value, QString *errorText);
    ErrorCode getParameter(const QString &name, QString &value, QString *errorText);
    ErrorCode getParameter(const QString &name, QByteArray &value, QString *errorText);
    ErrorCode getParameter(const QString &name, bool &value, QString *errorText);
    /// Reads what the variant's current type asks for; a bool is read as an integer and becomes one.
    ErrorCode getParameter(const QString &name, QVariant &value, QString *errorText);
    template<typename Value>
    ErrorCode getVariant(const QString &name, QVariant &variant, QString *errorText);
    ErrorCode getParameters(const QMap<QString, QVariant> &results, QString *errorText);
    ErrorCode getAllParameters(QMap<QString, QVariant> &out, QString *errorText);

    template<typename Value>
    ErrorCode sendCommandGet(const QString &command, const QString &resultName, Value &value, QString *errorText);
    template<typename Value>
    ErrorCode sendCommandWith(const QString &command, const QString &parameterName, const Value &value,
                              QString *errorText);

    /// Whether answers are read after a command that ended with \a code.
    static bool readsResults(ErrorCode code, SensorInstance::ErrorHandling errorHandling);

    /// The model number; File stays File.
    SensorType baseType() const;

    void readSensorInformation(const QMap<QString, QVariant> &parameters, QString *errorText);

    /// Fills what depends on the model: video, trigger, sync and measuring modes. The result is that
    /// of the questions to the sensor that this takes.
    ErrorCode fillCommandTables();
    /// Asks the sensor whether trigger and sync are on, where it has them.
    void checkTriggerAndSync(QString *errorText);
    /// Asks the sensor which of its video signals are switched into the output.
    void refreshVideoInformation();

    ErrorCode determineGetMeasureSensorNumbers();
    ErrorCode getMeasureForKvBusSensors(QVector<QByteArray> &measures, QString *errorText);
    int determineOutChannelCount(const QVector<QByteArray> &measures) const;
    void setFrameValueCount(int count);

    // The steps that the transfers share; called with the mutex held.
    ErrorCode pollMeasures(int &frameValues, QString *errorText);
    ErrorCode announcedValues(int frameValues, int &count, QString *errorText);

    SensorInstance *q_ptr = nullptr;

    SensorType sensorType = NoSensor;
    quint32 handle = 0;
    QMap<QString, QVariant> interfaceParameters;
    QVector<QMap<QString, QVariant>> infoParameters;
    mutable std::recursive_mutex mutex;
    bool tcpInterface = false;

    bool triggerSupported = false;
    bool syncSupported = false;

    int frameValueCount = -1;
    int channelCount = 1;
    bool getMeasureNeeded = false;
    QVector<int> getMeasureSensorNumbers;
    bool videoCapable = false;
    QVector<VideoInfo> videoInfos;

    QVector<int> rawBuffer; // used while logging only
    bool loggingEnabled = false;

    Q_DECLARE_PUBLIC(SensorInstance)
};

} // namespace SondixQt
