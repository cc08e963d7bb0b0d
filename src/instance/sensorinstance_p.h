// SPDX-License-Identifier: MIT
#pragma once

#include "catalogue/videotables_p.h"
#include "instanceaccess_p.h"
#include "sensorinstance.h"

#include <QHash>

namespace SondixQt {

struct SettingCommands;

/// An optional setting of a model, with the commands that read and write it.
struct SettingState
{
    void setCommands(const SettingCommands &commands);
    /// Clears the read command; the write command is kept.
    void clearGetCommand();

    QString getCommand;
    QString getParameter;
    QString setCommand;
    QString setParameter;
    bool supported = false;
    bool enabled = false; ///< as last read or written
};

/// The video properties and the video state of a sensor.
struct VideoState
{
    bool capable = false; ///< the model has video
    bool overAnyInterface = false;
    bool streamModeSupported = false;
    bool thresholdSupported = false;
    bool roiSupported = false;
    bool modeEnabled = false;
    bool transmitted = false;
    bool protocolVideo = false; ///< the recording of a File instance contains video
    QString outputStem;         ///< stem of the command that reads or writes the switches; empty: none
    QString thresholdCommandName;
    QString roiCommandName;
    int resolution = 0;
    int enabledSignalCount = 0;
    int signalPixelCount = 0;
    QVector<VideoInfo> infos;            ///< all signals of the model
    QVector<VideoInfo> transmittedInfos; ///< signals enabled at the last transmittedDataInfo(), if in video mode
};

/// The state of a SensorInstance and the steps of its public operations.
class SensorInstancePrivate
{
public:
    virtual ~SensorInstancePrivate() = default;

    static SensorInstancePrivate *get(SensorInstance *q) { return q->d_func(); }

    void init(SensorInstance *q, SensorType type, unsigned long adoptedHandle);

    /// Reports a failure of the C interface. All its results pass through here.
    ErrorCode check(qint32 code, QString *errorText) const;

    // Typed access to the parameters of the sensor-access library; failures are reported with check().
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
    /// Reads a value of the current type of the variant. A bool is read as an int and becomes an int.
    ErrorCode getParameter(const QString &name, QVariant &value, QString *errorText);
    template<typename Value>
    ErrorCode getVariant(const QString &name, QVariant &variant, QString *errorText);
    ErrorCode getParameters(const QMap<QString, QVariant> &results, QString *errorText);
    ErrorCode getAllParameters(QMap<QString, QVariant> &out, QString *errorText);
    /// The bytes of the answer \a name; empty if it is missing, which is not reported.
    QByteArray optionalAnswer(const QString &name) const;

    template<typename Value>
    ErrorCode sendCommandGet(const QString &command, const QString &resultName, Value &value, QString *errorText);
    template<typename Value>
    ErrorCode sendCommandWith(const QString &command, const QString &parameterName, const Value &value,
                              QString *errorText);

    // Needed for the sample rate of models with tracking modes; overridden by their classes.
    /// The command of the current distance tracking mode; empty if there is none.
    virtual QString distanceTrackingCommand() const { return {}; }
    virtual bool isSpeedTracking() const { return false; }

    /// Whether answers are read after a command with the result \a code.
    static bool readsResults(ErrorCode code, SensorInstance::ErrorHandling errorHandling);

    /// The model of sensorType; File for File.
    SensorType baseType() const;

    void readSensorInformation(const QMap<QString, QVariant> &parameters, QString *errorText);

    /// Fills the model-dependent state: video, trigger, sync and measuring modes. Returns the result of the
    /// queries that this requires.
    ErrorCode fillCommandTables(QString *errorText);
    void fillTriggerCommandsForSensor();
    void fillSyncCommandsForSensor();
    void fillAvailableMeasModiForSensor();
    /// Reads whether trigger and sync are enabled, if the sensor has them.
    void checkTriggerAndSync(QString *errorText);
    ErrorCode checkIfTriggerIsEnabled(QString *errorText);
    ErrorCode checkIfSyncIsEnabled(QString *errorText);

    ErrorCode fillVideoCommandsForSensor(QVector<VideoInfo> &list, QString *errorText);
    void initializeVideoInfos(QVector<VideoInfo> &list, int pixels, int count);
    /// Reads whether the sensor sends video and which video signals are enabled. Returns -1 for a type without
    /// video, otherwise 0.
    int getVideoInformationFromSensor();
    void readVideoMode(VideoModeRule rule);
    void readVideoSwitches(bool switchable);
    void extractTransmittedVideoChannels(QVector<VideoInfo> &out) const;
    bool makeVideoParamName(QString &out, int position, const QVector<VideoInfo> &list, bool answer) const;
    bool getVideoOutCmdName(QString &out, bool get) const;

    const QHash<int, QString> &initErrorValueMap();
    void addErrorValueTextsOfType(SensorType type);

    ErrorCode determineGetMeasureSensorNumbers();
    /// Requests new values from the polled sensors; the next transfer returns them.
    ErrorCode getMeasureForKvBusSensors(QString *errorText);

    // Steps of the transfer functions; the caller holds the mutex.
    ErrorCode pollMeasures(QString *errorText);
    ErrorCode announcedValues(int &count, QString *errorText);

    SensorInstance *q_ptr = nullptr;

    SensorType sensorType = NoSensor;
    quint32 handle = 0;
    QMap<QString, QVariant> interfaceParameters;
    QVector<QMap<QString, QVariant>> infoParameters;
    QMap<int, QMap<QString, QMap<QString, QVariant>>> infoSettings; // by the number of the sensor and the command
    mutable std::recursive_mutex mutex;
    bool tcpInterface = false;

    SettingState trigger;
    SettingState sync;
    bool syncSharedWithTrigger = false;
    QVector<QPair<QString, int>> measuringModes;
    bool measuringModeEnabled = false;
    VideoState video;
    QHash<int, QString> errorValueTexts;

    int frameValueCount = -1;
    int channelCount = 1;
    bool getMeasureNeeded = false;
    QVector<int> getMeasureSensorNumbers;

    QVector<int> rawBuffer; // used only while logging
    bool loggingEnabled = false;

    Q_DECLARE_PUBLIC(SensorInstance)
};

inline InstanceLock::InstanceLock(const SensorInstancePrivate *d)
    : guard(d->mutex)
{
}

} // namespace SondixQt
