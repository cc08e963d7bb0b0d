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

namespace SondixQt {

class SensorInstancePrivate;

/// One sensor that is, or is to be, opened through the sensor-access library.
///
/// \par Use
/// Construct it for a type, open() it with the interface parameters of a SensorInfo, send commands,
/// read transmittedDataInfo() and poll transferDataScaled() or one of its siblings, close() it.
/// A command stops the measurement of an RG52x or RG53x: use SpecialSensorInstanceRG52x or
/// SpecialSensorInstanceRG531 for these. The other RG models (RG4xx, RG540) need no class of their own.
///
/// \par Results
/// Every operation that reaches the sensor returns an ErrorCode (0: done) and takes an optional
/// \c errorText: cleared on success, filled with the sensor-access library's own text on failure.
/// A null pointer means that no text is wanted. Failures are signalled by errorMessage() as well. A
/// failure for which the library knows no error of its own leaves the text alone, and so does an
/// operation that finds nothing to do. open() may succeed with a text: that of the sensor's
/// information, trigger or synchronisation, which could not be read.
///
/// \par Threads
/// Commands, open() and the transfers hold the instance's recursive mutex for their whole sequence,
/// so several threads may issue them on one instance. Operations that send several commands
/// (transmittedDataInfo() on models with video, for one) let others in between. Construction,
/// destruction, close(), release(), move assignment, the info parameters and the plain accessors are
/// not locked: keep them to one thread at a time. All calls block until the sensor has answered.
///
/// \par Parameter maps
/// Keys are the sensor-access library's names: "IP_" (interface), "SP_" (sent with a command), "SA_"
/// (sensor answers), "IA_" (interface answers), "CP_" (control). Values that are staged may be bool,
/// int, double, QString or QByteArray; values of any other type are skipped.
/// Parameters are staged in the order of their names; the next command or open() consumes all of them. When
/// staging one fails, the command is not sent and those before stay staged, so that the next command would
/// take them along: call clearAllParameters() after such a failure.
class SONDIXQT_EXPORT SensorInstance : public QObject
{
    Q_OBJECT
public:
    /// When result parameters are read after a command.
    enum ErrorHandling : qint32 {
        NoErrorHandling = 0,      ///< after success only
        ReadAfterSuccess = 1,     ///< after success only
        ReadAfterPartialFail = 2, ///< also after PartialFailure26 and PartialFailure27
        ReadAlways = 3,           ///< always: whatever the sensor did answer
    };
    Q_ENUM(ErrorHandling)

    /// Levels of the sensor-access library's log; its documentation defines further ones.
    enum LogLevel : qint32 {
        LogInformation = 32,
        LogAllLevels = 0x7fffffff,
    };
    Q_ENUM(LogLevel)

    /// Kinds of entries in the sensor-access library's log; its documentation defines further ones.
    enum LogType : qint32 {
        LogAllTypes = 0x7fffffff,
    };
    Q_ENUM(LogType)

    /// Creates the library instance for \a type, or adopts \a handle when it is not 0. For NoSensor
    /// and File no library instance is created. On a library instance that is already open the
    /// command tables of the model are filled at once and trigger and sync are checked.
    /// Where the library cannot create an instance, isValid() is false.
    /// A sensor that is open already is not asked whether its values must be asked for (isGetMeasureNeeded()):
    /// from a bus sensor or a CP740 the transfers of this object get no values before open().
    explicit SensorInstance(SensorType type, unsigned long handle = 0);
    ~SensorInstance() override;

    SensorInstance(const SensorInstance &) = delete;
    SensorInstance &operator=(const SensorInstance &) = delete;

    /// Takes over the library instance and the type of \a other; nothing else moves. What this object
    /// knew of its former sensor stays until it is opened again, the info parameters and a true
    /// isGetMeasureNeeded() even then. Before open() the sensor is not asked whether its values must be asked for.
    SensorInstance &operator=(SensorInstance &&other) noexcept;

    /// \name Command layer
    /// \{

    /// Stages \a parameters, sends \a command and reads \a results: each value of \a results holds a
    /// pointer (bool *, int *, double *, QString *, QByteArray * or QVariant *, see resultPointer)
    /// that says where an answer goes. Reads stop at the first that fails; where results are read,
    /// the read's result replaces the command's.
    virtual ErrorCode sendCommand(const QString &command, const QMap<QString, QVariant> &parameters,
                                  const QMap<QString, QVariant> &results, QString *errorText = nullptr,
                                  ErrorHandling errorHandling = ReadAfterSuccess);
    /// Stages \a parameters and sends \a command.
    virtual ErrorCode sendCommand(const QString &command, const QMap<QString, QVariant> &parameters,
                                  QString *errorText = nullptr);
    /// Sends \a command with what is staged.
    virtual ErrorCode sendCommand(const QString &command, QString *errorText = nullptr);
    /// Stages \a parameters, sends \a command and replaces \a results by the sensor's whole answer.
    virtual ErrorCode sendCommandGetAll(const QString &command, const QMap<QString, QVariant> &parameters,
                                        QMap<QString, QVariant> &results, QString *errorText = nullptr,
                                        ErrorHandling errorHandling = ReadAfterSuccess);
    /// Sends \a command and reads the answer \a resultName; \a value is untouched on failure.
    virtual ErrorCode sendCommandGetInt(const QString &command, const QString &resultName, int &value,
                                        QString *errorText = nullptr);
    /// \copydoc sendCommandGetInt
    virtual ErrorCode sendCommandGetDouble(const QString &command, const QString &resultName, double &value,
                                           QString *errorText = nullptr);
    /// \copydoc sendCommandGetInt
    virtual ErrorCode sendCommandGetString(const QString &command, const QString &resultName, QString &value,
                                           QString *errorText = nullptr);

    /// Stages one parameter and sends \a command. Not for an RG53x, whose parameter would be lost: see
    /// SpecialSensorInstanceRG531.
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
    /// Any pointer, a string literal or a forgotten value's \c errorText, would silently become true.
    template<typename T>
    ErrorCode sendCommand(const QString &command, const QString &parameterName, T *value,
                          QString *errorText = nullptr) = delete;

    /// Wraps a pointer for the \c results map of sendCommand. \a T is bool, int, double, QString,
    /// QByteArray or QVariant (read according to the variant's type at that time).
    template<typename T>
    static QVariant resultPointer(T *target)
    {
        return QVariant::fromValue(target);
    }
    /// \}

    /// \name Lifetime
    /// \{

    /// Gives the library instance back early. Always 0.
    ErrorCode release();
    /// Whether there is a library instance.
    bool isValid() const;
    /// Asks the library whether the sensor is open; false when that fails.
    bool isOpen();
    /// The model: the type modulo 10000, File unchanged.
    SensorType sensorType() const;
    /// The type as it was given to the constructor.
    SensorType sensorTypeFull() const;
    /// The library's handle of this instance, 0 when there is none.
    quint32 handle() const;
    /// \}

    /// \name Opening and closing
    /// \{

    /// Opens the sensor with the interface parameters \a parameters (see
    /// SensorInfo::getInterfaceParameters) and reads its information. A map that is not empty is kept
    /// with storeInterfaceParameters. When the sensor cannot be opened, one info map a sensor
    /// ("IP_SensorCount", else 1) holds its number as "ST_Empty".
    /// Then what depends on the model is filled. For an MC340 that takes "Get_Info": if it fails, its error
    /// and text are returned although the sensor is open. Otherwise it is asked whether trigger and
    /// synchronisation are on; a failure there is not in the result. \a errorText is that of the last
    /// question: errorMessage() reports each failure.
    ErrorCode open(const QMap<QString, QVariant> &parameters, QString *errorText = nullptr);
    /// Opens the sensor with the parameters that are staged already.
    ErrorCode open(QString *errorText = nullptr);
    /// Closes the sensor; a File instance has nothing to close. Not locked.
    ErrorCode close(QString *errorText = nullptr);
    /// Drops all staged parameters, such as those that a failed call has left.
    ErrorCode clearAllParameters(QString *errorText = nullptr);
    /// \}

    /// \name Info parameters
    /// What the sensors told of themselves when they were opened: one map a sensor, numbered from 1.
    /// Nothing removes them: after opening another sensor with the same object, parameters that it does not
    /// have, and maps beyond its number of sensors, are those of the earlier one. Use a new object for another
    /// sensor.
    /// \{
    void addInfoParameters(const QMap<QString, QVariant> &map, int sensorIndex);
    /// Parses \a answer, lines of "key=value" pairs as the library writes them, and adds the result.
    void addInfoParameters(const QString &answer, int sensorIndex);
    /// The value of \a name of sensor \a sensorIndex (from 1), invalid when there is none.
    QVariant getInfoParameter(const QString &name, int sensorIndex) const;
    const QVector<QMap<QString, QVariant>> &getInfoParameters() const;

    /// Keeps a copy of how the sensor is reached.
    void storeInterfaceParameters(const QMap<QString, QVariant> &parameters);
    QMap<QString, QVariant> storedInterfaceParameters() const;
    /// \}

    /// \name Logging
    /// The log is written by the sensor-access library, whose documentation defines the numbers. On Windows
    /// characters of a file's name that the system's code page lacks are replaced: the file bears another name, or there
    /// is none and the call fails.
    /// \{
    ErrorCode enableLogging(const QString &fileName, LogLevel level, LogType type, bool flag1, bool flag2,
                            int count, QString *errorText = nullptr);
    /// Logs everything into \a fileName; with a placeholder such as "%[10]" in the name and a
    /// \a count of 1 or more into a series of files.
    ErrorCode enableLogging(const QString &fileName, int count = 0, QString *errorText = nullptr);
    ErrorCode disableLogging(QString *errorText = nullptr);
    void logToFile(LogLevel level, const QString &source, const QString &message);
    /// Whether logging was asked for, also when that failed.
    bool GetLogging() const;
    /// \}

    /// \name Measuring modes, trigger and synchronisation
    /// What a model offers is known once it is open. The flags hold what was last read from the sensor
    /// (trigger and synchronisation by open(), the mode by transmittedDataInfo() and
    /// setMeasurementMode()) or written to it; close() leaves them. An object that was open for another
    /// model before keeps that one's commands where its own model has none.
    /// The queries, enableMeasMode() and disableTrigger() are not locked as a whole: keep them to the
    /// thread that opens.
    /// \{

    /// The modes that setMeasurementMode() takes for this model, with their names; empty for a model
    /// with one mode only, and for bus variants. Valid until the next open().
    const QVector<QPair<QString, int>> &getAvailableMeasModi() const;
    /// Switches to the mode with the number \a mode ("SP_MeasureMode"), then asks which video signals
    /// are on, whether the switch succeeded or not. Takes any number: the sensor refuses what it lacks.
    ErrorCode setMeasurementMode(int mode, QString *errorText = nullptr);
    /// Switches a model that sends measured values or video to measured values. 0 without any
    /// command for every other model.
    ErrorCode enableMeasMode(QString *errorText = nullptr);
    /// Whether the sensor measures rather than sending video alone. Asked by transmittedDataInfo() and
    /// setMeasurementMode(); false before, whatever the sensor does.
    bool isMeasModeEnabled() const;

    /// Whether the sensor waits for an external trigger.
    bool isTriggerEnabled() const;
    /// Makes the sensor measure without a trigger. A model that has none refuses.
    ErrorCode disableTrigger(QString *errorText = nullptr);
    /// Whether the sensor is synchronised with others.
    bool isSyncEnabled() const;
    /// Makes the sensor measure on its own. A model that has no synchronisation refuses.
    ErrorCode disableSync(QString *errorText = nullptr);
    /// Whether one setting of the sensor serves trigger and synchronisation. Stays true once it was.
    bool isSyncSharedWithTrigger() const;
    /// \}

    /// \name Measured values
    /// Values come as consecutive frames of TransmittedDataInfo::valuesPerFrame values each, in the order of
    /// its signals. A block may end inside a frame: where the caller's buffers are no multiple of the frame, or
    /// where the library announces such a count. The rest of the frame then begins the next block.
    ///
    /// Timestamps are seconds on the clock of the sensor-access library. That of a block tells when the frame
    /// of its first value arose; it is left alone by the vector forms when no value waits. Only differences of
    /// timestamps mean something. (The simulator counts from the loading of its bench.)
    ///
    /// The library keeps a limited number of values. When nobody fetches them, the oldest frames are lost, which
    /// is no failure: the transfers return 0. It shows in the timestamps of a sensor that measures without a
    /// trigger: the difference between two consecutive blocks is then more than the first one's number of frames
    /// divided by TransmittedDataInfo::datarate.
    /// \{

    /// Describes what the sensor sends with every frame; \a info is untouched on failure. Not locked as a
    /// whole: one thread at a time.
    ErrorCode transmittedDataInfo(TransmittedDataInfo &info, QString *errorText = nullptr);
    /// The frame rate in kHz; 0.0 means that it is not known, which is no failure. \a rate is written
    /// always, with 0.0 on failure; it may be null. A sensor that tells nonsense may make it infinite or
    /// not a number.
    /// The rate of an RG52x or RG53x is computed without a question, from the info parameters of open(), which
    /// later settings do not change, and from the tracking mode, which is known after a command or
    /// setTrackingMode(). Until then an RG52x has the rate 0.0 and an RG53x that tracks speed 25 times its own.
    ErrorCode getSampleRateInKhz(double *rate, QString *errorText = nullptr);
    /// The measuring channels of the sensor.
    int getChannelCount() const;
    /// Whether values must be asked for before every transfer, which the transfers do themselves. Decided by
    /// open(); once true it stays true for this object.
    bool isGetMeasureNeeded() const;

    /// The number of values (not frames) that wait in the library; never negative.
    ErrorCode dataAvail(int &available, QString *errorText = nullptr);
    /// Takes all waiting scaled values: consecutive frames in the units of SignalInfo::scaledUnit.
    /// \a values keeps its storage from call to call; it is untouched when the count cannot be read.
    /// This and the two other forms with a vector take 16,777,216 values at most, in whole frames; more
    /// stay for the next call. A failure of this form is signalled twice.
    ErrorCode transferData(QVector<double> &values, QString *errorText = nullptr);
    /// Takes up to \a count values into the caller's buffers (either may be null) and sets \a count
    /// to the number taken. \a timestamp is the library's, of this block, and may be null. Allocates nothing.
    ErrorCode transferData(double *scaled, int *raw, double *timestamp, int &count, QString *errorText = nullptr);
    /// Takes all waiting raw values. \a errorText tells of a failing transfer, not of a count that cannot
    /// be read.
    ErrorCode transferDataRaw(QVector<int> &values, double &timestamp, QString *errorText = nullptr);
    /// Takes all waiting scaled values with the timestamp of the block.
    ErrorCode transferDataScaled(QVector<double> &values, double &timestamp, QString *errorText = nullptr);
    /// \}

    /// \name Video
    /// A video signal is one line of the receiving element, or a corrected or reference line. A
    /// model's signals are known once it is open; a position is the place in that list, from 0. Which
    /// of them are on is what transmittedDataInfo() or setMeasurementMode() last found.
    /// The queries are not locked: keep them to the thread that opens and describes.
    ///
    /// To get video: open(), switch signals on with enableVideoSignal(), call enableVideoMode(), then
    /// transmittedDataInfo(), also when it was called before. Only then does getBinaryVideoParam() name the
    /// answers in which "Get_Video" delivers the lines.
    /// \{

    /// Whether video can be had over the interface by which the sensor was opened. For a File: what
    /// setProtocolVideo() was told.
    bool isVideoSupported() const;
    /// Whether the model can send video along with the measured values.
    bool supportsVideoStreamMode() const;
    /// Whether the sensor is in the mode in which it sends video. Asked by transmittedDataInfo() and
    /// setMeasurementMode(), where the model can be asked; after open() what is usual for the model, whatever
    /// the sensor does.
    bool isVideoModeEnabled() const;
    /// Switches a model that sends measured values or video to video; 0 without any command for every
    /// other model. Call transmittedDataInfo() afterwards: the list of transmitted signals is that of its last
    /// call.
    ErrorCode enableVideoMode(QString *errorText = nullptr);

    /// Writes the names of all video signals into \a names, keyed by position; other entries stay.
    /// \a names may be null. Returns their number.
    int getAvailableVideoSignals(QMap<int, QString> *names) const;
    int getAvailableVideoSignalCount() const;
    /// As getAvailableVideoSignals() for the signals that are on: positions may have gaps.
    int getEnabledVideoSignals(QMap<int, QString> *names) const;
    int getEnabledVideoSignalCount() const;
    /// Switches the signal at \a position on (\a value 1) or off (0). A position that the model lacks
    /// is no failure and does nothing; neither does a model whose only signal cannot be switched. Where
    /// the switches cannot be written over the present interface, the value is only staged. A failure to
    /// stage it leaves \a errorText alone.
    ErrorCode enableVideoSignal(int position, int value, QString *errorText = nullptr);
    /// The answer that carries the data of a transmitted video signal; \a position counts the signals
    /// that were on when transmittedDataInfo() was last called. False when there is no such signal.
    bool getBinaryVideoParam(QString &name, int position) const;

    /// The pixels of one line.
    int getVideoSignalPixelCount() const;
    /// Replaces the pixels of one line, of every signal, until the next open().
    void SetVideoPixelCount(int pixels);
    /// The number of steps of a pixel's value.
    int getVideoResolution() const;

    /// Whether video is sent, as far as the model (at open()) or the application says.
    bool isVideoTransmitted() const;
    /// Says whether video is sent; the signal of a model that cannot be asked follows it.
    void setVideoTransmitted(bool transmitted);
    /// Says whether the recording of a File instance holds video.
    void setProtocolVideo(bool video);

    /// Whether the sensor has a detection threshold to set, and with which command; only then the name
    /// means something.
    bool isThresholdSupported() const;
    QString GetThresholdCommandName() const;
    /// Whether the sensor has a region of interest to set, and with which command; only then the name
    /// means something.
    bool isROISupported() const;
    QString GetROICommandName() const;
    /// \}

    /// \name Error values
    /// \{

    /// The text of the error that the scaled value \a value stands for: sensors report a failed
    /// measurement as a value of -1.0e10 or below. For a measured value, for one that is not a number
    /// and for an error without a text, the text of error 0, which may be empty.
    /// The texts are asked for at the first call, of every sensor of a multi-sensor or a recording,
    /// and kept; sensors that cannot be asked contribute none. The reference stays valid while the
    /// instance lives. Not locked: keep it to one thread.
    const QString &getErrorValueText(double value);
    /// \}

    /// Turns a result of the sensor-access library into its text: for a \a code other than 0 the
    /// library is asked for its last error, whose text goes to the debug log, to \a errorText and, on
    /// demand, into errorMessage(). Success clears \a errorText. Any thread that uses the instance.
    void checkError(ErrorCode code, QString *errorText, bool emitSignal) const;

Q_SIGNALS:
    /// A call failed: the library's last error and its text. Emitted on the thread of that call, while
    /// it holds the instance's mutex: a slot may send commands, but must neither wait for another
    /// thread that uses the instance nor delete the instance (deleteLater() is fine).
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
