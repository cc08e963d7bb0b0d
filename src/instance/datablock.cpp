// SPDX-License-Identifier: MIT
#include "datablock_p.h"

#include <limits>

namespace SondixQt {

int blockValues(int available, int frameValues)
{
    if (available <= maxBlockValues)
        return qMax(available, 0);
    if (frameValues <= 0 || frameValues > maxBlockValues)
        return maxBlockValues;
    return maxBlockValues - maxBlockValues % frameValues;
}

int transferredValues(int written, int capacity)
{
    return qBound(0, written, qMax(capacity, 0));
}

int outChannelCount(int frameValues, const QVector<QByteArray> &measures)
{
    qint64 count = frameValues;
    for (const QByteArray &measure : measures)
        count += measure.size() - 1;
    return static_cast<int>(qMin<qint64>(count, std::numeric_limits<int>::max()));
}

} // namespace SondixQt
