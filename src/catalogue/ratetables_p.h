// SPDX-License-Identifier: MIT
#pragma once

#include "constantlist_p.h"

#include <optional>

namespace SondixQt {

/// Where the frame rate of a model comes from.
enum class SampleRateRule {
    Unknown,            ///< the rate cannot be determined
    IndexTable,         ///< the answer is an index into the model's rates
    KilohertzAnswer,    ///< the answer is the rate in kHz
    HertzAnswer,        ///< the answer is the rate in Hz
    MicrosecondsAnswer, ///< the answer is the time between two frames in microseconds
    DistanceTracking,   ///< computed from the tracking mode and the measuring time of an RG52x
    FrequencyAverage,   ///< computed from the measuring frequency and the average of an RG53x
    IndexAndAverage,    ///< computed from the rate index and the averaging of an EC810
};

/// The rule of one model and all its bus variants.
struct SampleRateRow
{
    SensorType model = NoSensor; ///< a base type
    SampleRateRule rule = SampleRateRule::Unknown;
    const char *command = nullptr;
    const char *answer = nullptr;
    ConstantList<double> rates = {}; ///< in kHz
};

/// The rate in kHz of a type with a constant rate (0.0: unknown), or nullopt if a rule applies to the type.
std::optional<double> fixedSampleRate(SensorType type);

/// The row of the model of \a type; its rule is SampleRateRule::Unknown if the model has no row.
const SampleRateRow &sampleRateRow(SensorType type);

} // namespace SondixQt
