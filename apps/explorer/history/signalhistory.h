// SPDX-License-Identifier: MIT
#pragma once

#include "signalpyramid.h"
#include "spectrum.h"
#include "timeline.h"

#include <SondixQt/datablock.h>
#include <SondixQt/transmitteddatainfo.h>

#include <optional>
#include <vector>

namespace Explorer {

/// Frames from \c begin up to but not including \c end, by their index in the history.
struct FrameRange
{
    qint64 begin = 0;
    qint64 end = 0;

    qint64 count() const { return end - begin; }
    bool isEmpty() const { return end <= begin; }
};

/// How often values of a range occur.
struct Histogram
{
    double minimum = 0.0;       ///< lower end of the first class
    double maximum = 0.0;       ///< upper end of the last class
    std::vector<qint64> counts; ///< one number per class; empty if there are no measured values
    qint64 counted = 0;         ///< measured values that were counted
    qint64 available = 0;       ///< measured values in the range: more than \c counted if it was sampled
};

/// What a sensor has sent: the values of the last seconds, with everything that a plot asks of them.
///
/// Scaled values are kept exactly, error values included; raw values are not kept. The frames that are kept have
/// consecutive indices in the order of their arrival, beginning at firstFrame(); a gap takes no index. Where a frame
/// stands on the time axis is returned by timeLine().
///
/// The cost of a query does not depend on the length of its range: a summary of any range takes microseconds.
///
/// \par Memory
/// bytesFor() returns the memory that a history will need. The oldest frames are dropped when they are older than the time
/// to keep, or when the memory exceeds maximumBytes(). They are dropped in chunks, so that a few hundred frames more may be
/// kept. All histories together use at most sharedBytes(): beyond that those are cut that have more than an equal share.
/// cutFrames() counts the frames for which there was no memory.
///
/// \par Threads
/// That of the windows.
class SignalHistory
{
public:
    static constexpr qint64 defaultMaximumBytes = qint64(6) << 30;
    /// A histogram of more values than these is made from a sample of them.
    static constexpr qint64 histogramValues = 1 << 17;

    explicit SignalHistory(double keepSeconds = 600.0);
    ~SignalHistory();
    Q_DISABLE_COPY(SignalHistory)

    /// Forgets what is kept: the frames that follow are described by \a frame.
    void begin(const SondixQt::TransmittedDataInfo &frame);
    /// Appends frames. Values for which there is no signal are ignored, values that are missing are not a number.
    void append(const SondixQt::DataBlock &block);
    /// Appends a gap after the frames so far.
    void append(const SondixQt::DataGap &gap);
    /// Forgets what is kept, except frame().
    void clear();

    const SondixQt::TransmittedDataInfo &frame() const { return m_frame; }
    int signalCount() const { return static_cast<int>(m_signals.size()); }
    bool isEmpty() const { return firstFrame() == endFrame(); }
    /// Changes whenever frames or gaps are appended or forgotten.
    qint64 revision() const { return m_revision; }
    /// Changes whenever everything is forgotten: indices of frames are then others.
    int generation() const { return m_generation; }

    double keepSeconds() const { return m_keepSeconds; }
    void setKeepSeconds(double seconds);
    qint64 maximumBytes() const { return m_maximumBytes; }
    void setMaximumBytes(qint64 bytes);
    /// The memory that \a seconds of \a signalCount signals need at most, at \a rateHz frames per second.
    static qint64 bytesFor(double seconds, double rateHz, int signalCount);
    /// The memory that is used.
    qint64 bytes() const;
    /// What all histories may use together: half of the computer's memory.
    static qint64 sharedBytes();
    /// For tests: another limit; empty: half of the computer's memory.
    static void setSharedBytes(std::optional<qint64> bytes);
    /// What this history can use at most, if it is the only one.
    qint64 limitBytes() const { return qMin(m_maximumBytes, sharedBytes()); }
    /// The number of frames that were dropped for lack of memory, although the time to keep them was not over.
    qint64 cutFrames() const { return m_cutFrames; }

    qint64 firstFrame() const { return m_timeLine.first(); }
    qint64 endFrame() const { return m_timeLine.end(); }
    const TimeLine &timeLine() const { return m_timeLine; }
    /// The positions of the first and the last frame on the time axis; both 0 if there is none.
    double beginPosition() const { return isEmpty() ? 0.0 : m_timeLine.position(firstFrame()); }
    double endPosition() const { return isEmpty() ? 0.0 : m_timeLine.position(endFrame() - 1); }

    /// The value of a frame that is kept.
    double value(int signal, qint64 frame) const
    {
        return m_signals[static_cast<std::size_t>(signal)].value(frame);
    }
    /// The frames at positions from \a from to \a to, both included.
    FrameRange framesBetween(double from, double to) const;
    /// The frame nearest to \a position; empty if there is none at all.
    std::optional<qint64> nearestFrame(double position) const;
    /// The \a columns + 1 frames at which the columns of pixels of a plot from \a from to \a to begin and end.
    ///
    /// Where a column has many frames, its limits are moved by up to a quarter of a column to the limits of a summary.
    /// Every frame in the range belongs to exactly one column.
    std::vector<qint64> columnLimits(double from, double to, int columns) const;

    Extremes extremes(int signal, FrameRange range) const;
    Moments moments(int signal, FrameRange range) const;
    /// Frames per second in \a range, the time of the gaps not counted; empty on an axis in frames, and for fewer than
    /// two frames.
    std::optional<double> rate(FrameRange range) const;
    /// The number of frames that are known to be missing in \a range.
    qint64 missingFrames(FrameRange range) const;
    Histogram histogram(int signal, FrameRange range, int classes) const;
    /// The spectrum of the last frames of \a range: the largest power of two, at most Spectrum::most.
    Spectrum spectrum(int signal, FrameRange range) const;

    /// The frames from \a range.begin on that were delivered together, or that have times of their own and consecutive
    /// numbers: at most \a most of them and none behind the range. They have the numbers and times with which they came; raw values are 0.
    SondixQt::DataBlock block(FrameRange range, int maxCount) const;

private:
    void appendValues(const SondixQt::DataBlock &block, int first, int count);
    void drop();
    void cutTo(qint64 bytes);
    void shareMemory();
    void dropBefore(qint64 index);
    double assumedInterval() const;

    SondixQt::TransmittedDataInfo m_frame;
    std::vector<SignalPyramid> m_signals;
    TimeLine m_timeLine;
    double m_keepSeconds;
    qint64 m_maximumBytes = defaultMaximumBytes;
    qint64 m_revision = 0;
    int m_generation = 0;
    qint64 m_cutFrames = 0;
};

} // namespace Explorer
