// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/datablock.h>

#include <deque>
#include <optional>
#include <vector>

namespace Explorer {

/// A gap in what was measured, and where it is.
struct GapMark
{
    SondixQt::DataGap gap;
    qint64 index = 0;   ///< of the first frame after the gap
    double begin = 0.0; ///< position of the last frame before the gap
    double end = 0.0;   ///< position of the first frame after it; \c begin while there is none
};

/// The positions of frames on the time axis, in the order in which they arrived.
///
/// \par The axis
/// If the first block has a time the axis is in seconds, and 0 is the first frame. Without times it is in frames:
/// the number of the frame, to which a new run adds where the previous one ended. The kind of the axis does not change
/// until clear().
///
/// \par Never backwards
/// Positions never decrease, so that they can be searched. Blocks of the same clock keep their exact distances. If the
/// time jumps back, or if the clock has another zero after a sensor was opened again, the clock of the computer decides
/// where the axis goes on. Where that is not known either, the new frames follow at the distance of one frame.
/// Frames without a time, on an axis in seconds, follow at the distance of the frames before them.
class TimeLine
{
public:
    enum Kind { Seconds, Frames };

    /// Frames that were delivered together.
    struct Stretch
    {
        qint64 index = 0;      ///< of the first frame, in the order of arrival
        qint64 number = 0;     ///< of the first frame, as in DataBlock::firstFrame()
        double position = 0.0; ///< of the first frame
        double step = 0.0;     ///< distance of the positions
        double time = 0.0;     ///< as in DataBlock::time(); NaN: not known
        double interval = 0.0; ///< as in DataBlock::frameInterval(); NaN: not known
        int run = 0;           ///< as in DataBlock::run()
        bool isSpread = false; ///< only the first frame has a time: the step follows from the next time
    };

    /// Appends the frames of \a block. \a interval is the distance to assume where the block has none; may be 0.
    void append(const SondixQt::DataBlock &block, double interval);
    void append(const SondixQt::DataGap &gap);
    /// Removes what is only needed for frames before \a index.
    void dropBefore(qint64 index);
    void clear();

    Kind kind() const { return m_kind; }
    qint64 first() const { return m_first; }
    qint64 end() const { return m_end; }
    bool isEmpty() const { return m_first == m_end; }

    double position(qint64 index) const;
    /// The first frame whose position is \a position or greater; end() if there is none.
    qint64 indexAt(double position) const;
    /// The stretch to which a frame belongs.
    const Stretch &stretchOf(qint64 index) const;
    /// Where the frames from \a index on end that can be one block, \a limit at most: those of its stretch, or those of
    /// consecutive stretches whose frames have times of their own.
    qint64 blockEnd(qint64 index, qint64 limit) const;
    /// The time with which a frame came; NaN if it is not known.
    double timeOf(qint64 index) const;

    /// In the order of their places.
    const std::deque<GapMark> &gaps() const { return m_gaps; }
    /// The gaps that reach into the part of the axis from \a from to \a to, both included. Its cost depends on their
    /// number, and hardly on that of all gaps.
    std::vector<GapMark> gapsBetween(double from, double to) const;
    /// The first gap in gaps() whose next frame is after \a index.
    std::deque<GapMark>::const_iterator gapAfter(qint64 index) const;
    /// The frames in the range from \a begin to \a end, both included, before which frames are missing or another run
    /// begins. The first frame of all is never one of them.
    std::vector<qint64> breaks(qint64 begin, qint64 end) const;
    /// The time since 1970-01-01 00:00 UTC of the position 0, in seconds; empty while it is not known.
    std::optional<double> wallClockOffset() const { return m_wallClockOffset; }

    qint64 bytes() const;

private:
    void appendRegular(const SondixQt::DataBlock &block, double interval);
    void appendIrregular(const SondixQt::DataBlock &block, double interval);
    void appendNumbered(const SondixQt::DataBlock &block);
    double startOf(const SondixQt::DataBlock &block, double time, double step);
    bool continues(const SondixQt::DataBlock &block) const;
    void beginBlock(const SondixQt::DataBlock &block);
    void add(Stretch stretch, qint64 count);
    void settleGaps();
    std::size_t stretchIndex(qint64 index) const;

    Kind m_kind = Seconds;
    std::deque<Stretch> m_stretches;
    std::deque<GapMark> m_gaps;
    std::deque<qint64> m_breaks;
    qint64 m_first = 0;
    qint64 m_end = 0;
    double m_offset = 0.0; // position minus time; of an axis in frames: position minus number
    std::optional<double> m_wallClockOffset;
    std::optional<qint64> m_blockWallClock; // of the present block, microseconds
    std::size_t m_openGaps = 0;             // at the end of m_gaps
};

} // namespace Explorer
