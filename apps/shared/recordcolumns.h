// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/datablock.h>
#include <SondixQt/transmitteddatainfo.h>

#include <QStringList>

#include <cmath>

namespace SondixApp {

/// What a file contains of each frame, and the names of its columns.
struct RecordColumns
{
    SondixQt::TransmittedDataInfo frame;
    bool scaled = true;
    bool raw = false;
    bool run = false;    ///< a column with the run of numbers
    bool number = false; ///< a column with the number of the frame

    /// The names of all columns: run, number, time, and for each signal the scaled and the raw value. No name occurs
    /// twice.
    QStringList names() const;
};

/// The times in a file: those of the sensor-access library, moved by an offset.
struct TimeAxis
{
    qint64 offset = 0;   ///< microseconds
    bool isKnown = true; ///< whether the offset is known; no frame has a time before

    qint64 microseconds(double time) const { return offset + std::llround(time * 1.0e6); }
};

/// The times of the frames of a block, which must outlive it.
class FrameTimes
{
public:
    FrameTimes(const SondixQt::DataBlock &block, const TimeAxis &axis)
        : m_block(block)
        , m_axis(axis)
        , m_offset(static_cast<double>(axis.offset) * 1.0e-6)
        , m_isRegular(axis.isKnown && block.time() && block.frameInterval())
        , m_first(block.time().value_or(0.0))
        , m_interval(block.frameInterval().value_or(0.0))
    {
    }
    bool isKnown(int frame) const
    {
        return m_isRegular || (m_axis.isKnown && m_block.frameTime(frame).has_value());
    }
    /// Only for a frame whose time is known.
    qint64 microseconds(int frame) const
    {
        return m_axis.microseconds(m_isRegular ? m_first + frame * m_interval : *m_block.frameTime(frame));
    }

    /// The same in seconds, as exactly as a double can be.
    double seconds(int frame) const
    {
        return m_offset + (m_isRegular ? m_first + frame * m_interval : *m_block.frameTime(frame));
    }

private:
    const SondixQt::DataBlock &m_block;
    TimeAxis m_axis;
    double m_offset; // seconds
    bool m_isRegular;
    double m_first;
    double m_interval;
};

} // namespace SondixApp
