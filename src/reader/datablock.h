// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/sondixqtglobal.h>

#include <QDateTime>
#include <QMetaType>
#include <QSharedDataPointer>
#include <QVector>

#include <optional>

namespace SondixQt {

class DataBlockData;

/// Consecutive whole frames that a SensorReader has read. Implicitly shared: copying is cheap.
///
/// Values are stored frame by frame: value \c s of frame \c f is at the index <tt>f * valuesPerFrame() + s</tt>, in the
/// order of TransmittedDataInfo::signals. Frames and signals are counted from 0 within the block.
///
/// \par Numbers
/// The frames of a run() have the numbers 0, 1, 2, ... A gap of known length advances the number, so that the number of a
/// frame never changes its meaning. A gap of unknown length starts the next run, with the number 0.
///
/// \par Times
/// Times are in seconds on the clock of the sensor-access library; only their differences are meaningful.
/// wallClockTime() relates them to the clock of the computer. Nothing is invented: a frame whose time is not known has
/// none.
///
/// \par Threads
/// A value type: different objects may be used in different threads.
class SONDIXQT_EXPORT DataBlock
{
public:
    /// An empty block.
    DataBlock();
    /// A block of whole frames. \a raw and \a scaled have the same size, a multiple of \a valuesPerFrame; the rest of
    /// an incomplete frame is discarded. Without \a time the times of the frames are not known.
    DataBlock(int run, qint64 firstFrame, int valuesPerFrame, const QVector<double> &scaled,
              const QVector<qint32> &raw, std::optional<double> time = std::nullopt,
              std::optional<double> frameInterval = std::nullopt);
    /// A block whose frames have the times \a times, one per frame, for frames at irregular distances. NaN: not known.
    static DataBlock withTimes(int run, qint64 firstFrame, int valuesPerFrame, const QVector<double> &scaled,
                               const QVector<qint32> &raw, const QVector<double> &times);
    DataBlock(const DataBlock &other);
    DataBlock(DataBlock &&other) noexcept;
    ~DataBlock();
    DataBlock &operator=(const DataBlock &other);
    DataBlock &operator=(DataBlock &&other) noexcept;

    bool isEmpty() const { return frameCount() == 0; }
    int frameCount() const;
    int valuesPerFrame() const;

    /// The run of numbers to which firstFrame() belongs; from 0 at every start of the reader.
    int run() const;
    /// The number of the first frame within the run.
    qint64 firstFrame() const;

    /// A value in the unit SignalInfo::scaledUnit. NaN and values of -1.0e10 and below are errors, see isErrorValue().
    double scaled(int frame, int signal) const;
    /// A value as the sensor sends it.
    qint32 raw(int frame, int signal) const;
    /// All values of one signal.
    QVector<double> scaledValues(int signal) const;
    /// All values, frame by frame.
    const QVector<double> &scaledData() const;
    /// All values as the sensor sends them, frame by frame.
    const QVector<qint32> &rawData() const;

    /// The time of the first frame, as the sensor-access library reports it; empty if it reports none.
    std::optional<double> time() const;
    /// The distance of two frames in seconds: the sample rate that the sensor reports, corrected by the times of the
    /// blocks. Empty if the sensor reports no rate, and for sensors that measure when they are triggered or polled.
    std::optional<double> frameInterval() const;
    /// The time of any frame; empty if it is not known.
    std::optional<double> frameTime(int frame) const;

    /// The time of the first frame on the clock of the computer, in UTC; invalid if time() is empty, or while the
    /// clocks could not yet be related. Every transfer relates them more exactly, and drift between them is followed.
    QDateTime wallClockTime() const;
    /// The same in microseconds since 1970-01-01 00:00 UTC.
    std::optional<qint64> wallClockMicroseconds() const;
    /// The maximum error of wallClockTime() in seconds, on the assumption that a value is available as soon as it has
    /// been measured.
    double wallClockUncertainty() const;

    /// The frames from \a first on, at most \a count; all of them if \a count is -1.
    DataBlock mid(int first, int count = -1) const;
    /// The same frames as part of another run, for a consumer that joins what several starts of a reader have delivered.
    DataBlock inRun(int run) const;

private:
    friend class DataBlockBuilder;
    QSharedDataPointer<DataBlockData> d;
};

/// Values that are missing between two blocks.
///
/// Missing frames are counted by the times of the frames around them and the distance of frames. The number is exact, or it
/// is not known: without a distance or a time, if a command may have interrupted the measurement, and if so many frames are
/// missing that the error of the distance, at first 0.1 % and after some blocks much less, makes half a frame. On a line
/// that is too slow for the sensor one gap stands for all frames that are missing during a transfer.
struct SONDIXQT_EXPORT DataGap
{
    enum Reason {
        LibraryOverrun, ///< the sensor-access library discarded them: its buffer was full, or the line was too slow
        ConsumerOverrun, ///< the queue of the reader was full: its signals were not delivered in time
        Disconnected,    ///< the sensor was disconnected
        Restarted,       ///< a command or setting has interrupted the measurement
        Unknown,         ///< the times of the blocks do not fit, for example because they jump back
    };

    int run = 0;                  ///< the run of numbers in which the gap begins
    qint64 firstFrame = 0;        ///< the number that the first missing frame has or would have
    std::optional<qint64> frames; ///< the number of missing frames; empty: not known, the next run follows
    Reason reason = Unknown;
    std::optional<double> beginTime; ///< the time of the last frame before the gap, as in DataBlock::frameTime()
    std::optional<double> endTime;   ///< the time of the first frame after it; empty while it is not known

    bool operator==(const DataGap &other) const;
    bool operator!=(const DataGap &other) const { return !(*this == other); }
};

/// A text for \a reason in English, such as "the sensor was disconnected".
SONDIXQT_EXPORT QString gapReasonText(DataGap::Reason reason);

} // namespace SondixQt

Q_DECLARE_METATYPE(SondixQt::DataBlock)
Q_DECLARE_METATYPE(SondixQt::DataGap)
