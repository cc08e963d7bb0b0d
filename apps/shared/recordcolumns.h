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
    qint64 offset = 0; ///< microseconds

    qint64 microseconds(double time) const { return offset + std::llround(time * 1.0e6); }
};

/// The times of the frames of a block.
class FrameTimes
{
public:
    FrameTimes(const SondixQt::DataBlock &block, const TimeAxis &axis)
        : m_axis(axis)
        , m_hasFirst(block.time().has_value())
        , m_hasAll(m_hasFirst && block.frameInterval().has_value())
        , m_first(block.time().value_or(0.0))
        , m_interval(block.frameInterval().value_or(0.0))
    {
    }
    bool isKnown(int frame) const { return frame == 0 ? m_hasFirst : m_hasAll; }
    qint64 microseconds(int frame) const { return m_axis.microseconds(m_first + frame * m_interval); }

private:
    TimeAxis m_axis;
    bool m_hasFirst;
    bool m_hasAll;
    double m_first;
    double m_interval;
};

} // namespace SondixApp
