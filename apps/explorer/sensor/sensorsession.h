// SPDX-License-Identifier: MIT
#pragma once

#include "signalvalues.h"

#include "explorer/history/signalhistory.h"
#include "shared/lossaccount.h"

#include <SondixQt/sensorreader.h>

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <optional>

namespace Explorer {

/// Whether a sensor that has reported \a information about itself belongs to the bench simulator.
bool isSimulated(const QMap<QString, QVariant> &information);

/// A sensor that is open in the explorer: its reader, what it has sent, and what is known about it.
///
/// The reader opens the sensor again when it is gone, without a time limit. A sensor that cannot be opened at the first
/// attempt is Failed until reopen() is called.
///
/// Threads: that of the window. No function waits for the sensor; only the destructor does, as that of SensorReader, if
/// the sensor-access library hangs.
class SensorSession : public QObject
{
    Q_OBJECT
public:
    /// \a name is the title until the sensor has answered; empty: model and place.
    explicit SensorSession(const SondixQt::SensorAddress &address, const QString &name = QString(),
                           QObject *parent = nullptr);
    ~SensorSession() override;

    SondixQt::SensorReader &reader() { return m_reader; }
    const SondixQt::SensorReader &reader() const { return m_reader; }
    SignalHistory &history() { return m_history; }
    const SondixQt::SensorAddress &address() const { return m_address; }

    /// Begins to read.
    void open();
    /// Begins again after a failure, or when something else has the sensor: see reopening().
    void reopen();
    /// Ends reading for good: closed() follows when what has been read was delivered.
    void close();

    SondixQt::SensorReader::State state() const { return m_reader.state(); }
    /// The state in one word or two, such as "reading".
    QString stateText() const;
    /// Why the sensor is not being read, and what may help; empty while it is.
    QString problem() const;

    /// Model and serial number, such as "TX270 1018001".
    QString title() const;
    /// The model that has answered; the one of the address before.
    SondixQt::SensorType model() const;
    /// Where the sensor is connected, such as "COM3".
    QString place() const;
    QString serialNumber() const;
    /// Whether the values come from the bench simulator.
    bool isSimulated() const { return Explorer::isSimulated(information()); }
    /// What the sensor has reported about itself; empty before it was opened.
    QMap<QString, QVariant> information() const;

    const SondixQt::TransmittedDataInfo &frame() const { return m_frame; }
    /// Frames a second; empty if it is not known.
    std::optional<double> rate() const;
    const SignalValues &values() const { return m_values; }
    void resetValues();
    /// The text of an error value, never empty.
    QString errorText(double value) const;

    const SondixApp::LossAccount &losses() const { return m_losses; }
    qint64 framesRead() const { return m_framesRead; }
    /// Seconds without a value while the sensor is being read and should send some; 0 otherwise.
    double secondsSilent() const;
    /// Seconds since open() was called last.
    double secondsOpen() const;

    /// Sends a command, see SensorReader::post().
    void post(const QString &command, const QMap<QString, QVariant> &parameters = {}, QObject *context = nullptr,
              const SondixQt::SensorReader::Callback &callback = {});

Q_SIGNALS:
    /// State, error, identity or frame have changed. Losses may grow a hundred times a second: read them when they are
    /// shown.
    void changed();
    void frameChanged();
    /// Frames have arrived, or are missing. The runs are numbered through: while the sensor was closed, for its web
    /// interface for example, is a gap.
    void blockArrived(const SondixQt::DataBlock &block);
    void gapArrived(const SondixQt::DataGap &gap);
    /// Values or gaps have arrived.
    void dataArrived();
    /// reopen() was called. What has the sensor at present, such as its web interface, sets \a isTaken, gives the sensor
    /// back and then calls open().
    void reopening(bool *isTaken);
    /// close() has ended reading: nothing more will arrive.
    void closed();
    /// For the log: what happened to the sensor. \a isProblem: it is an error.
    void happened(const QString &text, bool isProblem);
    /// For the log: values are missing.
    void gapHappened(const SondixQt::DataGap &gap);

private:
    /// The number of the frame that is to follow.
    struct DataEnd
    {
        int run = -1;
        qint64 frame = 0;
    };

    void takeBlock(const SondixQt::DataBlock &ofThisStart);
    void takeGap(const SondixQt::DataGap &ofThisStart);
    void takeFrame(const SondixQt::TransmittedDataInfo &frame);
    void takeState(SondixQt::SensorReader::State state);
    void takeError(SondixQt::ErrorCode code, const QString &text);
    QString answer(const QString &name) const;

    const SondixQt::SensorAddress m_address;
    const QString m_name;
    SondixQt::TransmittedDataInfo m_frame;
    SignalHistory m_history;
    bool m_isNewStart = true; // the frames of the reader are counted from 0 again
    int m_firstRun = 0;       // of the present start
    DataEnd m_end;
    SignalValues m_values;
    SondixApp::LossAccount m_losses;
    qint64 m_framesRead = 0;
    std::optional<double> m_interval;
    QElapsedTimer m_sinceOpen;
    QElapsedTimer m_sinceData;
    bool m_isClosing = false;
    SondixQt::SensorReader m_reader; // last: it ends before the others
};

} // namespace Explorer
