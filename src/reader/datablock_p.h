// SPDX-License-Identifier: MIT
#pragma once

#include "datablock.h"

#include <QSharedData>

#include <limits>

namespace SondixQt {

class DataBlockData : public QSharedData
{
public:
    int frameCount() const { return valuesPerFrame > 0 ? scaled.size() / valuesPerFrame : 0; }

    int run = 0;
    qint64 firstFrame = 0;
    int valuesPerFrame = 0;
    QVector<double> scaled;
    QVector<qint32> raw;
    /// The times of the first frames: one if the others follow at the distance \c interval, one per frame if they are
    /// irregular (NaN: not known), none if no time is known.
    QVector<double> times;
    std::optional<double> interval;
    /// Clock of the computer in seconds since 1970 minus time.
    std::optional<double> wallClockOffset;
    double wallClockUncertainty = std::numeric_limits<double>::infinity();
};

/// Makes blocks of the data that the reader has collected.
class DataBlockBuilder
{
public:
    static DataBlock block(DataBlockData *data)
    {
        DataBlock result;
        result.d = data;
        return result;
    }
    static const DataBlockData &data(const DataBlock &block) { return *block.d; }
};

} // namespace SondixQt
