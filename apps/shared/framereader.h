// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/sensorinstance.h>

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <vector>

namespace SondixApp {

/// A block of complete frames; the pointers are valid during FrameReader::framesArrived() only.
struct FrameBlock
{
    qint64 firstFrame = 0;          ///< number of the first frame, counted from 0 at the start
    int frames = 0;                 ///< number of frames in the block
    int valuesPerFrame = 0;         ///< values of one frame
    const double *scaled = nullptr; ///< frames * valuesPerFrame values
    const int *raw = nullptr;       ///< the same values, raw
    double timestamp = 0.0;         ///< time of the first frame, in the sensor-access library's seconds
    double period = 0.0;            ///< seconds from frame to frame; 0 when the sample rate is not known
};

/// Reads an open sensor frame by frame until a number of frames or a time is reached.
///
/// Polls with a timer on its thread, which needs an event loop. Does not own the instance, which must outlive it.
class FrameReader : public QObject
{
    Q_OBJECT
public:
    struct Plan
    {
        qint64 frames = -1;    ///< frames to read; -1: no limit
        double seconds = -1.0; ///< time to read; below 0: no limit
        double silence = 5.0;  ///< maximum time without a frame, in seconds
    };

    enum End {
        Reached, ///< the requested number of frames or time is complete
        Stopped, ///< stop() was called
        Silent,  ///< no frame arrived for too long
        Failed,  ///< the sensor reported an error, see problem()
    };
    Q_ENUM(End)

    FrameReader(SondixQt::SensorInstance &instance, int valuesPerFrame, double rateKhz, QObject *parent = nullptr);

    void start(const Plan &plan);
    void stop();

    qint64 framesRead() const { return m_framesRead; }
    /// The number of lost frames, computed from gaps between the timestamps of blocks; 0 if the sample rate is not
    /// known.
    qint64 framesLost() const { return m_framesLost; }
    QString problem() const { return m_problem; }

Q_SIGNALS:
    void framesArrived(const SondixApp::FrameBlock &block);
    void finished(SondixApp::FrameReader::End end);

private:
    void poll();
    bool transfer(int capacity, int &count);
    void deliver(int count);
    void countLost(double blockTime);
    void end(End end, const QString &problem = QString());

    SondixQt::SensorInstance &m_instance;
    const int m_valuesPerFrame;
    const double m_rateKhz;
    Plan m_plan;
    QTimer m_timer;
    QElapsedTimer m_sinceStart;
    QElapsedTimer m_sinceFrame;
    std::vector<double> m_scaled;
    std::vector<int> m_raw;
    int m_left = 0; // number of values of an incomplete frame
    double m_timestamp = 0.0;
    double m_leftTimestamp = 0.0;
    double m_nextTimestamp = 0.0; // expected timestamp of the next frame
    qint64 m_framesRead = 0;
    qint64 m_framesLost = 0;
    double m_lastBlockSeconds = 0.0;
    QString m_problem;
    bool m_running = false;
};

} // namespace SondixApp
