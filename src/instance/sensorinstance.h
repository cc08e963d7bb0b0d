// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/errorcode.h>
#include <SondixQt/sensortypes.h>
#include <SondixQt/transmitteddatainfo.h>

#include <QByteArray>
#include <QMap>
#include <QObject>
#include <QPair>
#include <QScopedPointer>
#include <QString>
#include <QVariant>
#include <QVector>

#include <memory>

namespace SondixQt {

class SensorInstancePrivate;

/// Opens a sensor through the sensor-access library, sends commands to it and reads its measured values.
///
/// \par Use
/// Construct it for a type, open() it with the interface parameters of a SensorInfo, send commands, call
/// transmittedDataInfo(), poll one of the transfer functions such as transferDataScaled(), and close() it. A
/// command stops the measurement of an RG52x or RG53x, which need a special class: create() returns the right class
/// for every model. The other RG models (RG4xx, RG540) do not need a special class.
///
/// \par Results
/// Every operation that accesses the sensor returns an ErrorCode (NoError on success) and has an optional
/// parameter \c errorText, which is cleared on success and set to the error text of the sensor-access library on
/// failure. It may be null. Failures are also reported by the signal errorMessage(). The text is not changed if
/// the library has no error text for a failure, or if there is nothing to do. open() can return NoError and still
/// set a text, if the sensor's information, trigger or synchronisation could not be read.
///
/// \par Threads
/// Commands, open() and the transfers lock the recursive mutex of the instance for their whole sequence, so that
/// several threads can use them on one instance. Operations that send several commands (for example
/// transmittedDataInfo() on models with video) may be interleaved with commands of other threads. Construction,
/// destruction, close(), release(), move assignment, the info parameters and the plain accessors are not locked:
/// use them from one thread at a time. All calls block until the sensor has answered.
///
/// \par Parameter maps
/// Keys are the parameter names of the sensor-access library: "IP_" (interface), "SP_" (sent with a command),
/// "SA_" (sensor answers), "IA_" (interface answers), "CP_" (control). Values to send may be bool, int, double,
/// QString or QByteArray; values of other types are ignored. Parameters are staged in the order of their names;
/// the next command or open() consumes all of them. If staging a parameter fails, the command is not sent. The
/// parameters before it remain staged and would be sent with the next command: call clearAllParameters() after
/// such a failure.
class SONDIXQT_EXPORT SensorInstance : public QObject
{
    Q_OBJECT
public:
    /// Determines when answers are read after a command.
    enum ErrorHandling : qint32 {
        NoErrorHandling = 0,      ///< after success only
        ReadAfterSuccess = 1,     ///< after success only
        ReadAfterPartialFail = 2, ///< also after PartialFailure26 and PartialFailure27
        ReadAlways = 3,           ///< after any result
    };
    Q_ENUM(ErrorHandling)

    /// Levels of the log of the sensor-access library; its documentation defines more of them.
    enum LogLevel : qint32 {
        LogInformation = 32,
        LogAllLevels = 0x7fffffff,
    };
    Q_ENUM(LogLevel)

    /// Types of entries in the log of the sensor-access library; its documentation defines more of them.
    enum LogType : qint32 {
        LogAllTypes = 0x7fffffff,
    };
    Q_ENUM(LogType)

    /// Creates a library instance for \a type, or takes ownership of \a handle if it is not 0. For NoSensor and
    /// File no library instance is created. If the sensor of \a handle is already open, the command tables of the
    /// model are filled, and trigger and synchronisation are read. isValid() is false if the library cannot create
    /// an instance. isGetMeasureNeeded() is determined by open() only: with a \a handle that is already open, the
    /// transfers return no values of a bus sensor or a CP740 until open() is called.
    explicit SensorInstance(SensorType type, unsigned long handle = 0);
    ~SensorInstance() override;

    /// Creates an instance of the class that the model needs: a SpecialSensorInstanceRG52x for RG52x, a
    /// SpecialSensorInstanceRG531 for RG53x, and a SensorInstance for any other type. isValid() is false if the
    /// sensor-access library cannot create an instance.
    ///
    /// The special instance is of a subclass: its virtual command functions return the result of the command, and not
    /// that of the restart of the measurement after it. A failed restart is a warning in the log
    /// "SondixQt.SensorInstance" and is reported by errorMessage(); opening the sensor again starts the measurement as
    /// well. Any command makes the instance read the tracking mode, on which getSampleRateInKhz() depends.
    static std::unique_ptr<SensorInstance> create(SensorType type);

    SensorInstance(const SensorInstance &) = delete;
    SensorInstance &operator=(const SensorInstance &) = delete;

    /// Takes over the library instance and the type of \a other, but no other state. The state of the previous
    /// sensor is kept until the next open(); info parameters and a true isGetMeasureNeeded() are kept even then.
    /// isGetMeasureNeeded() is determined for the new sensor by open() only.
    SensorInstance &operator=(SensorInstance &&other) noexcept;

    /// \name Command layer
    /// \{

    /// Stages \a parameters, sends \a command and reads \a results. Each value of \a results is a pointer to the
    /// variable that receives the answer (bool *, int *, double *, QString *, QByteArray * or QVariant *, see
    /// resultPointer()). Reading stops at the first failure. If answers are read, the result of reading is
    /// returned instead of that of the command.
    virtual ErrorCode sendCommand(const QString &command, const QMap<QString, QVariant> &parameters,
                                  const QMap<QString, QVariant> &results, QString *errorText = nullptr,
                                  ErrorHandling errorHandling = ReadAfterSuccess);
    /// Stages \a parameters and sends \a command.
    virtual ErrorCode sendCommand(const QString &command, const QMap<QString, QVariant> &parameters,
                                  QString *errorText = nullptr);
    /// Sends \a command with the parameters that are staged.
    virtual ErrorCode sendCommand(const QString &command, QString *errorText = nullptr);
    /// Stages \a parameters, sends \a command and replaces \a results by the complete answer of the sensor.
    virtual ErrorCode sendCommandGetAll(const QString &command, const QMap<QString, QVariant> &parameters,
                                        QMap<QString, QVariant> &results, QString *errorText = nullptr,
                                        ErrorHandling errorHandling = ReadAfterSuccess);
    /// Sends \a command and reads the answer \a resultName. \a value is not changed on failure.
    virtual ErrorCode sendCommandGetInt(const QString &command, const QString &resultName, int &value,
                                        QString *errorText = nullptr);
    /// \copydoc sendCommandGetInt
    virtual ErrorCode sendCommandGetDouble(const QString &command, const QString &resultName, double &value,
                                           QString *errorText = nullptr);
    /// \copydoc sendCommandGetInt
    virtual ErrorCode sendCommandGetString(const QString &command, const QString &resultName, QString &value,
                                           QString *errorText = nullptr);

    /// Stages one parameter and sends \a command. Do not use it for an RG53x, which would not receive the
    /// parameter: see SpecialSensorInstanceRG531.
    ErrorCode sendCommand(const QString &command, const QString &parameterName, const QString &value,
                          QString *errorText = nullptr);
    /// \overload
    ErrorCode sendCommand(const QString &command, const QString &parameterName, int value,
                          QString *errorText = nullptr);
    /// \overload
    ErrorCode sendCommand(const QString &command, const QString &parameterName, double value,
                          QString *errorText = nullptr);
    /// \overload
    /// Staged as the integer 0 or 1.
    ErrorCode sendCommand(const QString &command, const QString &parameterName, bool value,
                          QString *errorText = nullptr);
    /// Deleted because a pointer (a string literal, or \c errorText if the value was forgotten) would be converted
    /// to bool.
    template<typename T>
    ErrorCode sendCommand(const QString &command, const QString &parameterName, T *value,
                          QString *errorText = nullptr) = delete;

    /// Wraps a pointer for the \c results map of sendCommand(). \a T is bool, int, double, QString, QByteArray or
    /// QVariant (which is read as a value of its current type).
    template<typename T>
    static QVariant resultPointer(T *target)
    {
        return QVariant::fromValue(target);
    }
    /// \}

    /// \name Lifetime
    /// \{

    /// Releases the library instance before destruction. Always returns NoError.
    ErrorCode release();
    /// Whether there is a library instance.
    bool isValid() const;
    /// Queries the library whether the sensor is open; false if the query fails.
    bool isOpen();
    /// The model: the type modulo 10000, or File.
    SensorType sensorType() const;
    /// The type that was passed to the constructor, or that of the instance assigned last.
    SensorType sensorTypeFull() const;
    /// The handle of the library instance; 0 if there is none.
    quint32 handle() const;
    /// \}

    /// \name Opening and closing
    /// \{

    /// Opens the sensor with the interface parameters \a parameters (see SensorInfo::getInterfaceParameters()) and
    /// reads its information. \a parameters are stored as by storeInterfaceParameters(), unless they are empty. If
    /// the sensor cannot be opened, an info map with the number of the sensor as "ST_Empty" is added for each
    /// sensor ("IP_SensorCount", default 1, at most 10000). Afterwards the model-dependent state is initialised. For an
    /// MC340 this requires "Get_Info": if it fails, its error is returned although the sensor is open. Finally the state
    /// of trigger and synchronisation is read; a failure of this is not returned. \a errorText is that of the last
    /// query; errorMessage() reports all failures.
    ErrorCode open(const QMap<QString, QVariant> &parameters, QString *errorText = nullptr);
    /// Opens the sensor with the parameters that are already staged.
    ErrorCode open(QString *errorText = nullptr);
    /// Closes the sensor. Does nothing for a File instance. Not locked.
    ErrorCode close(QString *errorText = nullptr);
    /// Discards all staged parameters, for example those that a failed call has left.
    ErrorCode clearAllParameters(QString *errorText = nullptr);
    /// \}

    /// \name Info parameters
    /// The information that the sensors report when they are opened: one map per sensor, numbered from 1. The maps
    /// are never cleared: if another sensor is opened with the same object, parameters and maps that the new
    /// sensor does not have are those of the previous one. Use a new object for another sensor.
    /// \{
    void addInfoParameters(const QMap<QString, QVariant> &map, int sensorIndex);
    /// Parses \a answer, which consists of lines of "key=value" pairs, and adds the result.
    void addInfoParameters(const QString &answer, int sensorIndex);
    /// The value of \a name of the sensor \a sensorIndex (from 1); invalid if there is none.
    QVariant getInfoParameter(const QString &name, int sensorIndex) const;
    const QVector<QMap<QString, QVariant>> &getInfoParameters() const;
    /// The settings among these parameters, by the commands that change them: for example the key "Set_Samplerate"
    /// with the parameter "SA_Measrate", which the command takes as "SP_Measrate". \a sensorIndex counts from 1.
    /// Empty if the sensor has not reported settings.
    QMap<QString, QMap<QString, QVariant>> getInfoSettings(int sensorIndex) const;

    /// Stores the parameters with which the sensor was or will be opened.
    void storeInterfaceParameters(const QMap<QString, QVariant> &parameters);
    QMap<QString, QVariant> storedInterfaceParameters() const;
    /// \}

    /// \name Logging
    /// The log is written by the sensor-access library, whose documentation defines the numbers. On Windows,
    /// characters of a file name that are not in the system's code page are replaced: the file then has another
    /// name, or the call fails.
    /// \{
    ErrorCode enableLogging(const QString &fileName, LogLevel level, LogType type, bool flag1, bool flag2,
                            int count, QString *errorText = nullptr);
    /// Logs everything into \a fileName. If the name contains a placeholder such as "%[10]" and \a count is at
    /// least 1, the log is a series of files.
    ErrorCode enableLogging(const QString &fileName, int count = 0, QString *errorText = nullptr);
    ErrorCode disableLogging(QString *errorText = nullptr);
    void logToFile(LogLevel level, const QString &source, const QString &message);
    /// Whether logging was requested, even if the request failed.
    bool GetLogging() const;
    /// \}

    /// \name Measuring modes, trigger and synchronisation
    /// The modes and settings of a model are available after open(). The flags are those last read from the sensor
    /// (trigger and synchronisation by open(), the mode by transmittedDataInfo() and setMeasurementMode()) or
    /// written to it; close() does not change them. If the object was used for another model before, the commands
    /// of that model are kept where the new model has none. The accessors, enableMeasMode() and disableTrigger()
    /// are not locked as a whole: use them in the thread that opens the sensor.
    /// \{

    /// The names and numbers of the modes for setMeasurementMode(). Empty for a model with only one mode and for
    /// bus variants. Valid until the next open().
    const QVector<QPair<QString, int>> &getAvailableMeasModi() const;
    /// Switches to the mode with the number \a mode ("SP_MeasureMode"). Then reads which video signals are
    /// enabled, even if the switch failed. \a mode is not validated here but by the sensor.
    ErrorCode setMeasurementMode(int mode, QString *errorText = nullptr);
    /// Switches a model that sends either measured values or video to measured values. For any other model nothing
    /// is sent and NoError is returned.
    ErrorCode enableMeasMode(QString *errorText = nullptr);
    /// Whether the sensor sends measured values and not only video. Read by transmittedDataInfo() and
    /// setMeasurementMode(); false before the first of these calls.
    bool isMeasModeEnabled() const;

    /// Whether the sensor waits for an external trigger.
    bool isTriggerEnabled() const;
    /// Makes the sensor measure without a trigger. Fails for a model without a trigger.
    ErrorCode disableTrigger(QString *errorText = nullptr);
    /// Whether the sensor is synchronised with others.
    bool isSyncEnabled() const;
    /// Switches the synchronisation off. Fails for a model without synchronisation.
    ErrorCode disableSync(QString *errorText = nullptr);
    /// Whether trigger and synchronisation are one setting of the sensor. Once true, it remains true for this
    /// object.
    bool isSyncSharedWithTrigger() const;
    /// \}

    /// \name Measured values
    /// Values are transferred as consecutive frames of TransmittedDataInfo::valuesPerFrame values each, in the
    /// order of its signals. A block ends inside a frame if the size of the caller's buffer or the number of
    /// available values is not a multiple of the frame size. The next block then begins with the rest of the
    /// frame.
    ///
    /// Timestamps are in seconds on the clock of the sensor-access library. The timestamp of a block is the time
    /// of the frame that contains its first value. The overloads with a vector do not change it if no value is
    /// available. Only differences of timestamps are meaningful. (The simulator counts from the time at which its
    /// bench was loaded.)
    ///
    /// The library buffers a limited number of values. If they are not read in time, the oldest frames are lost.
    /// This is not a failure: the transfers return NoError. For a sensor that measures without a trigger it can be
    /// detected by the timestamps: the difference between two consecutive blocks is then greater than the number
    /// of frames in the first block divided by TransmittedDataInfo::datarate.
    /// \{

    /// Reads the description of the data frames. \a info is not changed on failure. Not locked as a whole: use it
    /// from one thread at a time.
    ErrorCode transmittedDataInfo(TransmittedDataInfo &info, QString *errorText = nullptr);
    /// Reads the frame rate in kHz (TransmittedDataInfo::datarate is in Hz); 0.0 if it is unknown, which is not a
    /// failure. \a rate may be null; it is set to 0.0 on failure. It can be infinite or NaN if the sensor returns invalid settings. The rate of an RG52x
    /// or RG53x is computed without a query, from the info parameters of open(), which later settings do not
    /// change, and from the tracking mode, which is known after a command or setTrackingMode(). Until then the
    /// rate is 0.0 for an RG52x and 25 times too high for an RG53x that tracks speed.
    ErrorCode getSampleRateInKhz(double *rate, QString *errorText = nullptr);
    /// The number of measuring channels of the sensor.
    int getChannelCount() const;
    /// Whether the sensor must be polled before every transfer; the transfers do this themselves. Determined by
    /// open(). Once true, it remains true for this object.
    bool isGetMeasureNeeded() const;

    /// Reads the number of values (not frames) that are available for transfer; never negative.
    ErrorCode dataAvail(int &available, QString *errorText = nullptr);
    /// Transfers all available scaled values, in the units of SignalInfo::scaledUnit. \a values keeps its storage
    /// between calls; it is not changed if the number of available values cannot be read. This overload and the
    /// two other functions with a vector transfer at most 16,777,216 values, in whole frames; the rest remains for
    /// the next call. This overload emits errorMessage() twice for a failure.
    ErrorCode transferData(QVector<double> &values, QString *errorText = nullptr);
    /// Transfers up to \a count values into the caller's buffers, of which either may be null, and sets \a count
    /// to the number of transferred values. \a timestamp receives the time of the block and may be null. Does not
    /// allocate memory.
    ErrorCode transferData(double *scaled, int *raw, double *timestamp, int &count, QString *errorText = nullptr);
    /// Transfers all available raw values. \a errorText is not set if the number of available values cannot be
    /// read.
    ErrorCode transferDataRaw(QVector<int> &values, double &timestamp, QString *errorText = nullptr);
    /// Transfers all available scaled values with the timestamp of the block.
    ErrorCode transferDataScaled(QVector<double> &values, double &timestamp, QString *errorText = nullptr);
    /// \}

    /// \name Video
    /// A video signal is a line of the receiving element, or a corrected or reference line. The signals of a model
    /// are available after open(); a position is an index into the list of signals, from 0. Which signals are
    /// enabled is read by transmittedDataInfo() and setMeasurementMode(). The accessors are not locked: use them
    /// in the thread that calls open() and transmittedDataInfo().
    ///
    /// To receive video: call open(), enable signals with enableVideoSignal(), call enableVideoMode() and then
    /// transmittedDataInfo(), even if it was called before. Only then does getBinaryVideoParam() return the names
    /// of the answers in which "Get_Video" delivers the lines.
    /// \{

    /// Whether video is available on the interface on which the sensor was opened. For File, the value of
    /// setProtocolVideo().
    bool isVideoSupported() const;
    /// Whether the model can send video and measured values at the same time.
    bool supportsVideoStreamMode() const;
    /// Whether the sensor is in a mode in which it sends video. Read by transmittedDataInfo() and
    /// setMeasurementMode() if the model supports the query. After open() it is the default of the model, which
    /// may differ from the actual mode.
    bool isVideoModeEnabled() const;
    /// Switches a model that sends either measured values or video to video. For any other model nothing is sent
    /// and NoError is returned. Call transmittedDataInfo() afterwards to update the list of transmitted signals.
    ErrorCode enableVideoMode(QString *errorText = nullptr);

    /// Returns the number of video signals and inserts their names into \a names, keyed by position. Other entries
    /// are kept. \a names may be null.
    int getAvailableVideoSignals(QMap<int, QString> *names) const;
    int getAvailableVideoSignalCount() const;
    /// Like getAvailableVideoSignals(), but for enabled signals only; the positions can have gaps.
    int getEnabledVideoSignals(QMap<int, QString> *names) const;
    int getEnabledVideoSignalCount() const;
    /// Switches the signal at \a position on (\a value 1) or off (0). Does nothing and returns NoError if the
    /// model has no signal at \a position or if its only signal cannot be switched. If the switches cannot be
    /// written on the current interface, the value is only staged. A failure to stage it does not set \a
    /// errorText.
    ErrorCode enableVideoSignal(int position, int value, QString *errorText = nullptr);
    /// Sets \a name to the answer that contains the data of a transmitted video signal. \a position is an index
    /// into the signals that were enabled at the last call of transmittedDataInfo(). False if there is no such
    /// signal.
    bool getBinaryVideoParam(QString &name, int position) const;

    /// The number of pixels in a line.
    int getVideoSignalPixelCount() const;
    /// Sets the number of pixels in a line of every signal, until the next open().
    void SetVideoPixelCount(int pixels);
    /// The number of different values of a pixel.
    int getVideoResolution() const;

    /// Whether video is sent: the default of the model after open(), or the value of setVideoTransmitted().
    bool isVideoTransmitted() const;
    /// Sets whether video is sent. A model that does not support the query uses it as the state of its signal.
    void setVideoTransmitted(bool transmitted);
    /// Sets whether the recording of a File instance contains video.
    void setProtocolVideo(bool video);

    /// Whether the sensor has a detection threshold. GetThresholdCommandName() is the name in its command and is
    /// only valid if it has one.
    bool isThresholdSupported() const;
    QString GetThresholdCommandName() const;
    /// Whether the sensor has a region of interest. GetROICommandName() is the name in its command and is only
    /// valid if it has one.
    bool isROISupported() const;
    QString GetROICommandName() const;
    /// \}

    /// \name Error values
    /// \{

    /// The text of the error that the scaled value \a value encodes, see isErrorValue() and errorValueKey(). For a
    /// measured value, for NaN and for an error without a text it is the text of error 0, which may be empty. The
    /// texts are read at the first call, for all sensors of a multi-sensor or a recording, and are then kept. Sensors
    /// that cannot be queried have no texts. The reference is valid for the lifetime of the instance. Not locked: use
    /// it in one thread.
    const QString &getErrorValueText(double value);
    /// \}

    /// Reports a result of the sensor-access library. If \a code is not NoError, the text of the library's last
    /// error is written to the debug log and to \a errorText and, if \a emitSignal is set, emitted by
    /// errorMessage(). Otherwise \a errorText is cleared. May be called from any thread that uses the instance.
    void checkError(ErrorCode code, QString *errorText, bool emitSignal) const;

Q_SIGNALS:
    /// Emitted when a call fails, with the last error of the sensor-access library and its text. It is emitted in
    /// the thread of the call, which usually holds the mutex of the instance. A slot may send commands, but must
    /// not wait for another thread that uses the instance and must not delete the instance (deleteLater() is
    /// allowed).
    void errorMessage(SondixQt::ErrorCode errorCode, const QString &text);

protected:
    SensorInstance(SensorInstancePrivate &dd, SensorType type, unsigned long handle);

    QScopedPointer<SensorInstancePrivate> d_ptr;

private:
    Q_DECLARE_PRIVATE(SensorInstance)
};

} // namespace SondixQt

Q_DECLARE_METATYPE(bool *)
Q_DECLARE_METATYPE(int *)
Q_DECLARE_METATYPE(double *)
Q_DECLARE_METATYPE(QString *)
Q_DECLARE_METATYPE(QByteArray *)
Q_DECLARE_METATYPE(QVariant *)
