// SPDX-License-Identifier: MIT
#pragma once

#include "datablock_p.h"
#include "frameaccount_p.h"

namespace SondixQt {

/// Collects transferred values into one block. The values of an incomplete frame stay for the next block.
class BlockCollector
{
public:
    /// Room for \a count values behind those that are here.
    void reserve(int count);
    double *scaledRoom() { return scaled.data() + used; }
    qint32 *rawRoom() { return raw.data() + used; }

    /// Discards the last \a earlier values that are here, then accepts the values in the room from \a from on, up to
    /// \a end.
    void accept(int earlier, int from, int end);
    /// Adds the accepted frames to the block. take() the block before if isContinuedBy() is false.
    void append(const FrameAccount::Frames &frames, int valuesPerFrame);
    bool isContinuedBy(const FrameAccount::Frames &next) const;

    int frameCount() const { return frames; }
    int valueCount() const { return used; }
    /// The frames that were appended.
    DataBlock take(std::optional<double> wallClockOffset, double wallClockUncertainty);
    void clear();

private:
    QVector<double> scaled;
    QVector<qint32> raw;
    int used = 0;   ///< values
    int frames = 0; ///< whole frames among them
    int valuesPerFrame = 1;
    int run = 0;
    qint64 first = 0;
    QVector<double> times;
    std::optional<double> interval;
};

} // namespace SondixQt
