// SPDX-License-Identifier: MIT
#pragma once

#include "framesink.h"
#include "lossaccount.h"

#include <SondixQt/sensorreader.h>

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <optional>

namespace SondixApp {

/// Reads one sensor into a sink until the plan is fulfilled, somebody stops it, or something fails.
///
/// Threads: that of the reader, which needs an event loop.
class ReadRun : public QObject
{
    Q_OBJECT
public:
    struct Plan
    {
        std::optional<qint64> frames;  ///< frames to read
        std::optional<double> seconds; ///< time to read
        /// Give up if no frame arrives for this time, in seconds. Times at which the process did not run do not count.
        std::optional<double> silence;
        bool isTriggerSilence = false; ///< waiting for a trigger counts as silence
    };

    enum End {
        Running,
        Reached,     ///< the requested frames or time are complete
        Stopped,     ///< stop() was called
        Silent,      ///< no frame arrived for too long
        ReadFailed,  ///< the sensor reported an error, see problem()
        WriteFailed, ///< the sink failed, see problem()
    };
    Q_ENUM(End)

    /// \a reader and \a sink must outlive the run. \a frame describes the frames that \a sink can write: the run fails if
    /// the sensor sends others.
    ReadRun(SondixQt::SensorReader &reader, FrameSink &sink, const SondixQt::TransmittedDataInfo &frame,
            const Plan &plan, QObject *parent = nullptr);

    void start();
    /// Ends the run when what was read so far is written; after five seconds even if the sensor-access library hangs.
    void stop();

    End end() const { return m_end; }
    QString problem() const { return m_problem; }
    /// All whole frames that were read, up to the frame at which the run ended.
    qint64 framesRead() const { return m_framesRead; }
    /// What was lost up to that frame.
    const LossAccount &losses() const { return m_losses; }
    /// The last frame that was read.
    const SondixQt::DataBlock &lastFrame() const { return m_lastFrame; }
    double secondsRead() const { return m_secondsRead; }
    /// Whether a call in the sensor-access library has not returned in time after the end, before everything was read.
    /// What it would have brought is a loss of unknown length.
    bool isHanging() const { return m_isHanging; }

Q_SIGNALS:
    /// Frames were read or the state of the reader has changed.
    void advanced();
    void finished();

private:
    void takeBlock(const SondixQt::DataBlock &block);
    void takeGap(const SondixQt::DataGap &gap);
    void takeFrame(const SondixQt::TransmittedDataInfo &frame);
    void takeState(SondixQt::SensorReader::State state);
    void tick();
    void endBy(End end, const QString &problem = QString());
    void failToWrite();
    void giveUp();
    void finish();

    SondixQt::SensorReader &m_reader;
    FrameSink &m_sink;
    const SondixQt::TransmittedDataInfo m_frame;
    const Plan m_plan;
    QTimer m_timer;
    QElapsedTimer m_sinceStart;
    QElapsedTimer m_sinceTick;
    double m_silentFor = 0.0;
    qint64 m_framesRead = 0;
    LossAccount m_losses;
    SondixQt::DataBlock m_lastFrame;
    SondixQt::DataGap m_here; // where the next frame belongs
    double m_secondsRead = 0.0;
    End m_end = Running;
    QString m_problem;
    bool m_isComplete = false; // nothing more is written
    bool m_isHanging = false;
    bool m_isFinished = false;
};

} // namespace SondixApp
