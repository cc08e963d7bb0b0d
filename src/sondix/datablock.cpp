// SPDX-License-Identifier: MIT
#include "datablock_p.h"

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

} // namespace SondixQt
