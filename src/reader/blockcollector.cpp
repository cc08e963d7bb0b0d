// SPDX-License-Identifier: MIT
#include "blockcollector_p.h"

#include <algorithm>

namespace SondixQt {

void BlockCollector::reserve(int count)
{
    if (scaled.size() < used + count) {
        scaled.resize(used + count);
        raw.resize(used + count);
    }
}

void BlockCollector::accept(int earlier, int from, int end)
{
    const int begin = used - earlier;
    const int shift = earlier + from;
    if (shift > 0) {
        std::move(scaled.begin() + used + from, scaled.begin() + used + end, scaled.begin() + begin);
        std::move(raw.begin() + used + from, raw.begin() + used + end, raw.begin() + begin);
    }
    used = begin + (end - from);
}

bool BlockCollector::isContinuedBy(const FrameAccount::Frames &next) const
{
    return frames == 0 || (!next.gap && next.continues && next.time.has_value() == !times.isEmpty() &&
                           next.interval.has_value() == interval.has_value());
}

void BlockCollector::append(const FrameAccount::Frames &next, int perFrame)
{
    if (next.count == 0)
        return;
    if (frames == 0) {
        valuesPerFrame = perFrame;
        run = next.run;
        first = next.first;
    }
    interval = next.interval;
    if (!interval && next.time) {
        times.resize(frames + next.count);
        std::fill(times.begin() + frames, times.end(), std::numeric_limits<double>::quiet_NaN());
        times[frames] = *next.time;
    } else if (frames == 0 && next.time) {
        times = {*next.time};
    }
    frames += next.count;
}

DataBlock BlockCollector::take(std::optional<double> wallClockOffset, double wallClockUncertainty)
{
    auto *data = new DataBlockData;
    data->run = run;
    data->firstFrame = first;
    data->valuesPerFrame = valuesPerFrame;
    data->times = std::move(times);
    data->interval = interval;
    data->wallClockOffset = wallClockOffset;
    data->wallClockUncertainty = wallClockUncertainty;

    const int values = frames * valuesPerFrame;
    const int rest = used - values;
    const QVector<double> scaledRest = scaled.mid(values, rest);
    const QVector<qint32> rawRest = raw.mid(values, rest);
    scaled.resize(values);
    raw.resize(values);
    // The room for a transfer may be much larger than what has arrived, and blocks may wait for delivery.
    if (scaled.capacity() > 2 * values) {
        scaled.squeeze();
        raw.squeeze();
    }
    data->scaled = std::move(scaled);
    data->raw = std::move(raw);
    clear();
    scaled = scaledRest;
    raw = rawRest;
    used = rest;
    return DataBlockBuilder::block(data);
}

void BlockCollector::clear()
{
    *this = BlockCollector();
}

} // namespace SondixQt
