// SPDX-License-Identifier: MIT
#pragma once

#include "reader/frameaccount_p.h"

/// A sensor that is transferred in blocks of any size, with the numbers of its frames as the truth.
class SimulatedStream
{
public:
    SimulatedStream(int valuesPerFrame, double period)
        : perFrame(valuesPerFrame)
        , distance(period)
    {
    }

    /// Transfers \a values; the time is that of the frame that contains the first of them.
    SondixQt::FrameAccount::Frames transfer(SondixQt::FrameAccount &account, int values)
    {
        const double time = clockOffset + static_cast<double>(position / perFrame) * distance;
        position += values;
        return account.add(values, time);
    }
    /// The buffer of the library overflows: whole frames are dropped, at the same place in a frame.
    void lose(qint64 frames) { position += frames * perFrame; }
    qint64 frame() const { return position / perFrame; }

    double clockOffset = 100.0;

private:
    const int perFrame;
    const double distance;
    qint64 position = 0; ///< of the next value
};
