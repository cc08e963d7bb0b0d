// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/datablock.h>
#include <SondixQt/transmitteddatainfo.h>

#include <cmath>
#include <limits>
#include <optional>
#include <random>

/// What the tests of the history and of the plot have in common.
namespace HistoryData {

inline SondixQt::TransmittedDataInfo frameOf(int signalCount, double rate = 1000.0,
                                             const QStringList &units = {QStringLiteral("mm")})
{
    SondixQt::TransmittedDataInfo frame;
    frame.datarate = rate;
    frame.valuesPerFrame = signalCount;
    for (int i = 0; i < signalCount; ++i) {
        SondixQt::SignalInfo info;
        info.index = i;
        info.scaledName = QStringLiteral("Signal %1").arg(i + 1);
        info.rawName = info.scaledName;
        info.scaledUnit = units.at(i % units.size());
        info.scaledRangeMax = 10.0;
        frame.signals.append(info);
    }
    return frame;
}

/// A block of one signal.
inline SondixQt::DataBlock blockOf(const QVector<double> &values, qint64 first = 0,
                                   std::optional<double> time = std::nullopt,
                                   std::optional<double> interval = 0.001, int run = 0)
{
    return SondixQt::DataBlock(run, first, 1, values, QVector<qint32>(values.size(), 0), time, interval);
}

inline SondixQt::DataGap gapOf(std::optional<qint64> frames,
                               SondixQt::DataGap::Reason reason = SondixQt::DataGap::ConsumerOverrun)
{
    SondixQt::DataGap gap;
    gap.frames = frames;
    gap.reason = reason;
    return gap;
}

/// Random values around \a middle, one in fifty an error value or not a number.
inline QVector<double> randomValues(int count, double middle, unsigned seed)
{
    std::mt19937 random(seed);
    std::normal_distribution<double> deviation(0.0, 1.0);
    QVector<double> values(count);
    for (double &value : values) {
        const auto dice = static_cast<int>(random() % 100);
        if (dice == 0)
            value = -1.0e10 - 1.0 - static_cast<double>(random() % 5);
        else if (dice == 1)
            value = std::numeric_limits<double>::quiet_NaN();
        else
            value = middle + deviation(random);
    }
    return values;
}

} // namespace HistoryData
