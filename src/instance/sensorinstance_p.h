// SPDX-License-Identifier: MIT
#pragma once

#include "catalogue/videotables_p.h"
#include "instanceaccess_p.h"
#include "sensorinstance.h"

#include <QHash>

namespace SondixQt {

struct SettingCommands;

/// A setting that a model may have, with the commands that read and write it.
struct SettingState
{
    void setCommands(const SettingCommands &commands);
    /// Forgets how the setting is read; how it is written stays known.
    void clearGetCommand();

    QString getCommand;
    QString getParameter;
    QString setCommand;
    QString setParameter;
    bool supported = false;
    bool enabled = false; ///< as last read or written
};

/// What is known of the sensor's video.
struct VideoState
{
    bool capable = false; ///< the model has video
    bool overAnyInterface = false;
    bool streamModeSupported = false;
    bool thresholdSupported = false;
    bool roiSupported = false;
    bool modeEnabled = false;
    bool transmitted = false;
    bool protocolVideo = false; ///< what a file's recording holds
    QString outputStem;         ///< of the command that reads or writes the switches; empty: none
    QString thresholdCommandName;
    QString roiCommandName;
    int resolution = 0;
    int enabledSignalCount = 0;
    int signalPixelCount = 0;
    QVector<VideoInfo> infos;            ///< all signals of the model
    QVector<VideoInfo> transmittedInfos; ///< those that were on, with video mode, when the data were described
};

/// The state of a SensorInstance and the steps that its public operations are made of.
class SensorInstancePrivate
{
public:
    virtual ~SensorInstancePrivate() = default;

    static SensorInstancePrivate *get(SensorInstance *q) { return q->d_func(); }

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
    /// The bytes of an answer that need not be there: empty then, without a word.
    QByteArray optionalAnswer(const QString &name) const;

    template<typename Value>
    ErrorCode sendCommandGet(const QString &command, const QString &resultName, Value &value, QString *errorText);
    template<typename Value>
    ErrorCode sendCommandWith(const QString &command, const QString &parameterName, const Value &value,
                              QString *errorText);

    // What the sample rate of a model that tracks depends on; the classes of these models know it.
    /// The command that starts the present tracking of distances, empty if there is none.
    virtual QString distanceTrackingCommand() const { return {}; }
    virtual bool isSpeedTracking() const { return false; }

    /// Whether answers are read after a command that ended with \a code.
    static bool readsResults(ErrorCode code, SensorInstance::ErrorHandling errorHandling);

    /// The model number; File stays File.
    SensorType baseType() const;

    void readSensorInformation(const QMap<QString, QVariant> &parameters, QString *errorText);

    /// Fills what depends on the model: video, trigger, sync and measuring modes. The result is that
    /// of the questions to the sensor that this takes.
    ErrorCode fillCommandTables(QString *errorText);
    void fillTriggerCommandsForSensor();
    void fillSyncCommandsForSensor();
    void fillAvailableMeasModiForSensor();
    /// Asks the sensor whether trigger and sync are on, where it has them.
    void checkTriggerAndSync(QString *errorText);
    ErrorCode checkIfTriggerIsEnabled(QString *errorText);
    ErrorCode checkIfSyncIsEnabled(QString *errorText);

    ErrorCode fillVideoCommandsForSensor(QVector<VideoInfo> &list, QString *errorText);
    void initializeVideoInfos(QVector<VideoInfo> &list, int pixels, int count);
    /// Asks the sensor whether it sends video and which of its video signals are switched into the
    /// output. -1 for a type without video, else 0.
    int getVideoInformationFromSensor();
    void readVideoMode(VideoModeRule rule);
    void readVideoSwitches(bool switchable);
    void extractTransmittedVideoChannels(QVector<VideoInfo> &out) const;
    bool makeVideoParamName(QString &out, int position, const QVector<VideoInfo> &list, bool answer) const;
    bool getVideoOutCmdName(QString &out, bool get) const;

    const QHash<int, QString> &initErrorValueMap();
    void addErrorValueTextsOfType(SensorType type);

    ErrorCode determineGetMeasureSensorNumbers();
    /// Asks for the values of these sensors, which come with the next transfer.
    ErrorCode getMeasureForKvBusSensors(QString *errorText);

    // The steps that the transfers share; called with the mutex held.
    ErrorCode pollMeasures(QString *errorText);
    ErrorCode announcedValues(int &count, QString *errorText);

    SensorInstance *q_ptr = nullptr;

    SensorType sensorType = NoSensor;
    quint32 handle = 0;
    QMap<QString, QVariant> interfaceParameters;
    QVector<QMap<QString, QVariant>> infoParameters;
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

    QVector<int> rawBuffer; // used while logging only
    bool loggingEnabled = false;

    Q_DECLARE_PUBLIC(SensorInstance)
};

inline InstanceLock::InstanceLock(const SensorInstancePrivate *d)
    : guard(d->mutex)
{
}

} // namespace SondixQt
