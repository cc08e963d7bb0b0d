// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/datablock.h>
#include <SondixQt/errorcode.h>
#include <SondixQt/sensoraddress.h>
#include <SondixQt/transmitteddatainfo.h>

#include <QMap>
#include <QObject>
#include <QScopedPointer>
#include <QVariant>
#include <QVector>

#include <chrono>
#include <functional>
#include <optional>

namespace SondixQt {

class SensorInfo;
class SensorInstance;
class SensorReaderPrivate;

/// The outcome of a command that was sent with SensorReader::post() or addSetting().
struct SONDIXQT_EXPORT CommandResult
{
    ErrorCode code = NoError;       ///< the result of the command
    QString errorText;              ///< the error text of the sensor-access library
    QMap<QString, QVariant> answer; ///< the complete answer of the sensor
};

/// How a SensorReader opens its sensor again.
struct SONDIXQT_EXPORT Reconnect
{
    std::chrono::milliseconds first{500};     ///< the pause before the first attempt
    std::chrono::milliseconds longest{10000}; ///< each pause is twice the previous one, up to this
    /// The reader fails this long after the loss; empty: never.
    std::optional<std::chrono::milliseconds> giveUpAfter;
    /// The errors of a transfer that mean that the sensor is disconnected; empty: every error.
    QVector<ErrorCode> errors;
    /// The sensor also counts as disconnected if it sends no frame for this long, unless it waits for a trigger; empty: it
    /// may be silent for any time. The time of commands that are sent through the reader does not count, and of a time in
    /// which the reader could not look for frames, because the process was stopped for example, half of the silence at most.
    std::optional<std::chrono::milliseconds> silence;
};

/// Reads one sensor continuously, in a thread of its own.
///
/// \code
/// SensorReader reader(*SensorAddress::parse("TX270@RS232,port=COM3"));
/// connect(&reader, &SensorReader::blockReady, this, [](const DataBlock &block) { ... });
/// connect(&reader, &SensorReader::gapDetected, this, [](const DataGap &gap) { ... });
/// reader.start();
/// \endcode
///
/// \par Losses
/// Whatever is missing is reported by gapDetected(), in its place between the blocks: the frames delivered and the
/// frames of the gaps are together all that the sensor has generated, as far as its sample rate and the times of the
/// blocks show it. For sensors that measure when they are triggered or polled, and for those without a sample rate,
/// missing frames cannot be noticed unless the times jump back. Nor can they be noticed between the first transfers after a
/// command that changes the rate or ends triggering, or after an opening with settings, while values from before may still
/// arrive. Between values that waited before the start, only a jump of their times by whole periods is reported: any other
/// jump is a changed rate or a restarted measurement. A loss is noticed by the time of the next transfer: if frames were
/// lost between values that the library transfers together, the gap follows these values.
/// If a command changes the values of a frame, those that wait in the sensor-access library are discarded and are a part of
/// the gap: they may belong to the frame before. If settings do this at an opening, the values that were measured before them
/// are discarded. If the description cannot be read after a command, values wait until it can.
/// If reading ends by an error of the sensor, a gap of unknown length stands at the end: it is not known what the
/// sensor has measured after the last transfer.
///
/// \par Threads
/// A reader and all its functions belong to the thread in which it lives, which needs an event loop. Its signals are
/// emitted there, in the order in which things happened, and no lock is held meanwhile: a slot may stop, start or delete
/// the reader. No function waits for the sensor.
///
/// \par Destruction
/// The destructor stops reading and waits at most two seconds. If a call is still hanging in the sensor-access library
/// then, the thread ends when the call returns; an instance that was passed to the constructor must exist until then.
class SONDIXQT_EXPORT SensorReader : public QObject
{
    Q_OBJECT
    Q_PROPERTY(State state READ state NOTIFY stateChanged)
public:
    enum State {
        Stopped,           ///< not reading
        Opening,           ///< opens the sensor, applies the settings and reads the description of its frames
        Reading,           ///< measured values arrive, or may arrive at any time
        WaitingForTrigger, ///< the sensor measures when it is triggered, and no trigger has come for a while
        Reconnecting,      ///< the sensor is disconnected; the reader tries to open it again
        Failed,            ///< reading has ended by an error; start() may be called again
    };
    Q_ENUM(State)

    /// A reader that opens the sensor at \a address itself and closes it in the end.
    explicit SensorReader(const SensorAddress &address, QObject *parent = nullptr);
    /// A reader for a sensor that a search has found.
    explicit SensorReader(const SensorInfo &info, QObject *parent = nullptr);
    /// A reader that uses \a instance, which it does not own. If it is not open, it is opened with its
    /// SensorInstance::storedInterfaceParameters() and closed in the end. Meanwhile nothing else may open or close the
    /// instance, transfer its values, or use its functions that are not locked. Commands that read may be sent; those that change
    /// the frames, the rate or the trigger are sent through the reader, which does not notice others.
    explicit SensorReader(SensorInstance &instance, QObject *parent = nullptr);
    ~SensorReader() override;

    /// \name Settings of the reader
    /// They take effect at the next start().
    /// \{

    /// How often blocks are delivered: 1 ms to 1 hour, 50 ms by default. A block is delivered earlier if it has 1,048,576
    /// values.
    void setDeliveryInterval(std::chrono::milliseconds interval);
    std::chrono::milliseconds deliveryInterval() const;
    /// Opens the sensor again after a disconnection. Without a value, which is the default, the reader fails.
    void setReconnect(const std::optional<Reconnect> &reconnect);
    std::optional<Reconnect> reconnect() const;
    /// The number of values that may wait for delivery. If there are more, the oldest blocks are discarded, which
    /// gapDetected() reports as DataGap::ConsumerOverrun. 2,000,000 by default.
    void setQueueLimit(qint64 values);
    qint64 queueLimit() const;
    /// \}

    /// \name Commands
    /// They are sent by the thread of the reader between two transfers. \a callback is called in the thread of the
    /// reader object, unless \a context or the reader has been destroyed before. If the reader is not running, or stops
    /// before the command is sent, the result is StoppedError.
    /// \{
    using Callback = std::function<void(const CommandResult &)>;

    /// Sends \a command with \a parameters.
    void post(const QString &command, const QMap<QString, QVariant> &parameters, QObject *context = nullptr,
              const Callback &callback = {});
    /// Sends \a command with \a parameters now, if the reader is running, and after every opening, in the order of the
    /// calls. A setting replaces an earlier one with the same command, the same parameter names and the same
    /// interface parameters ("IP_"). A setting that the sensor refuses now is forgotten, and an earlier one remains;
    /// if it is refused after an opening, the reader fails.
    void addSetting(const QString &command, const QMap<QString, QVariant> &parameters, QObject *context = nullptr,
                    const Callback &callback = {});
    /// Whether a work of call() may change what the sensor sends.
    enum WorkEffect {
        OnlyReads, ///< reads something that does not change the frames
        MayChange, ///< the description of the frames is read again afterwards
    };
    using Work = std::function<CommandResult(SensorInstance &instance)>;

    /// Calls \a work with the open sensor, for all that post() cannot do: answers in bytes, video signals, several
    /// commands in a row. It is called in the thread of the reader between two transfers, must not open, close, transfer
    /// or throw, and delays reading while it runs. \a callback receives its result as that of a command.
    void call(const Work &work, WorkEffect effect, QObject *context = nullptr, const Callback &callback = {});
    /// Forgets all settings. The sensor keeps what it has been set to.
    void clearSettings();
    /// \}

    State state() const;
    /// The error that errorOccurred() has reported last, since the last start().
    ErrorCode error() const;
    QString errorString() const;
    /// The description of the frames of the blocks that are delivered at present.
    TransmittedDataInfo frame() const;
    /// What the sensor has reported about itself at the last opening, one map per sensor.
    QVector<QMap<QString, QVariant>> sensorInformation() const;
    /// The settings of the sensor at the last opening, one map per sensor, see SensorInstance::getInfoSettings().
    QVector<QMap<QString, QMap<QString, QVariant>>> sensorSettings() const;
    /// The text of the error that the scaled value \a value encodes, see SensorInstance::getErrorValueText(). The texts
    /// are read at the first opening; before, and if the reader uses an instance of the caller's, the text is empty.
    QString errorValueText(double value) const;

    /// The frames that blockReady() has delivered, and those that gapDetected() has reported as missing, since the last
    /// start().
    qint64 framesDelivered() const;
    /// \copydoc framesDelivered
    qint64 framesLost() const;
    /// Whether a gap of unknown length was reported since the last start().
    bool hasUnknownGaps() const;

public Q_SLOTS:
    /// Begins to read. Nothing happens if the reader is running; after stop() and after an error that ends reading,
    /// it starts again as soon as it has ended.
    void start();
    /// Ends reading: what has been read is delivered, then the state becomes Stopped.
    void stop();

Q_SIGNALS:
    /// Delivers whole frames in order, at least once per deliveryInterval() while frames arrive.
    void blockReady(const SondixQt::DataBlock &block);
    /// Missing frames; emitted between the blocks before and after them.
    void gapDetected(const SondixQt::DataGap &gap);
    /// state() has this value already.
    void stateChanged(SondixQt::SensorReader::State state);
    /// An error that ends reading (the state becomes Failed) or begins Reconnecting. \a text is for users.
    void errorOccurred(SondixQt::ErrorCode code, const QString &text);
    /// The frames of the next block are described by \a frame. Emitted after the first opening, and later if the
    /// description has changed.
    void frameChanged(const SondixQt::TransmittedDataInfo &frame);

private:
    QScopedPointer<SensorReaderPrivate> d_ptr;
    Q_DECLARE_PRIVATE(SensorReader)
    Q_PRIVATE_SLOT(d_func(), void deliver())
};

} // namespace SondixQt

Q_DECLARE_METATYPE(SondixQt::CommandResult)
