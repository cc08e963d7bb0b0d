// SPDX-License-Identifier: MIT
#include "samplerate_p.h"

namespace SondixQt {

namespace {

constexpr int movingAverage = 3;

} // namespace

double rateOfSampleTime(double microseconds)
{
    return 1.0 / (microseconds * 0.001);
}

double rateOfDistanceTracking(const QString &trackingCommand, int measureTime)
{
    if (trackingCommand == QLatin1String("DistanceTracking10Hz"))
        return 0.01;
    if (trackingCommand == QLatin1String("DistanceTracking50Hz"))
        return 0.05;
    if (measureTime <= 0)
        return 0.0;
    if (trackingCommand == QLatin1String("DistanceTracking"))
        return 1.0 / (measureTime * 240.0);
    if (trackingCommand == QLatin1String("DistanceTracking7m"))
        return 1.0 / (measureTime * 150.0);
    return 0.0;
}

double rateOfFrequencyAverage(int frequency, int average, bool speedTracking)
{
    double hertz = static_cast<double>(frequency) / static_cast<double>(average);
    if (speedTracking)
        hertz /= 25.0;
    return hertz / 1000.0;
}

double rateOfIndexAndAverage(ConstantList<double> rates, int rateIndex, int averageType, int averageNumber)
{
    if (averageNumber < 0)
        return 0.0;
    const double rate = rates.value(rateIndex);
    if (averageType != movingAverage)
        return rate;
    return rate / (2.0 * (averageNumber + 1.0) + 1.0);
}

} // namespace SondixQt
