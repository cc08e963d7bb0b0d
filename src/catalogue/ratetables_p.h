// SPDX-License-Identifier: MIT
#pragma once

#include "constantlist_p.h"

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

/// The rule of one model and of all bus variants of it.
struct SampleRateRow
{
    SensorType model = NoSensor; ///< a base type
    SampleRateRule rule = SampleRateRule::Unknown;
    const char *command = nullptr;
    const char *answer = nullptr;
    ConstantList<double> rates = {}; ///< in kHz
};

/// The rate in kHz of a type whose rate never changes (0.0: not known); empty when a rule decides.
std::optional<double> fixedSampleRate(SensorType type);

/// The rule of \a type's model; SampleRateRule::Unknown for a model without one.
const SampleRateRow &sampleRateRow(SensorType type);

} // namespace SondixQt
