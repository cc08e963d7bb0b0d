// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/sensortypes.h>

#include <QLatin1String>
#include <QString>

#include <optional>

namespace SondixQt {

/// Where the frame rate of a model comes from.
enum class SampleRateRule {
    Unknown,            ///< nobody tells
    IndexTable,         ///< the answer is an index into the model's rates
    KilohertzAnswer,    ///< the answer is the rate
    HertzAnswer,        ///< the answer is the rate in Hz
    MicrosecondsAnswer, ///< the answer is the time between two frames
    DistanceTracking,   ///< the tracking mode and the measuring time of RG52x
    FrequencyAverage,   ///< the measuring frequency and the average of RG53x
    IndexAndAverage,    ///< the rate index and the averaging of EC810
};

/// A constant list of rates in kHz.
class SampleRates
{
public:
    constexpr SampleRates() = default;
    template<int Count>
    constexpr SampleRates(const double (&kilohertz)[Count])
        : rates(kilohertz)
        , count(Count)
    {
    }

    /// 0.0 for an index that the model does not have.
    constexpr double at(int index) const { return index >= 0 && index < count ? rates[index] : 0.0; }

private:
    const double *rates = nullptr;
    int count = 0;
};

/// The rule of one model and of all bus variants of it.
struct SampleRateRow
{
    qint32 model = 0;
    SampleRateRule rule = SampleRateRule::Unknown;
    QLatin1String command = {};
    QLatin1String answer = {};
    SampleRates rates = {};
};

/// The rate in kHz of a type whose rate never changes (0.0: not known); empty when a rule decides.
std::optional<double> fixedSampleRate(SensorType type);

/// The rule of \a type's model; SampleRateRule::Unknown for a model without one.
const SampleRateRow &sampleRateRow(SensorType type);

/// kHz from the microseconds between two frames.
double rateOfSampleTime(double microseconds);

/// kHz of an RG52x that tracks with \a trackingCommand; \a measureTime is its "SA_MeasureTime".
double rateOfDistanceTracking(const QString &trackingCommand, int measureTime);

/// kHz of an RG53x that measures with \a frequency Hz and averages \a average values.
double rateOfFrequencyAverage(int frequency, int average, bool speedTracking);

/// kHz of an EC810.
double rateOfIndexAndAverage(int rateIndex, int averageType, int averageNumber);

} // namespace SondixQt
