// SPDX-License-Identifier: MIT
#pragma once

#include "json.h"
#include "rules.h"
#include "value.h"

#include <string>
#include <vector>

namespace sondixsim::model {

/// How the frame rate of a model follows from its settings.
struct FrameRate
{
    enum class Unit { Fixed, KiloHertz, Hertz, Microseconds, Periods, Index };

    Unit unit = Unit::Fixed;
    double hertz = 0.0;         ///< Fixed
    std::string parameter;      ///< all other units: the setting that decides
    double factor = 1.0;        ///< Periods: seconds for each unit of the setting; Hertz: divides
    std::vector<double> table;  ///< Index: kHz at each index
    std::string divisor;        ///< setting that the rate is divided by
    std::string averageType;    ///< with value 3 of this setting the rate is divided by 2 (n + 1) + 1
    std::string averageNumber;  ///< n
    double minimum = 0.001;     ///< Hz
    double maximum = 1000000.0; ///< Hz

    /// A frame is the mean of so many measurements, and the rate of the frames is that of the measurements divided by it.
    double measurementsPerFrame(const ParameterList &settings) const;
    double of(const ParameterList &settings) const; ///< Hz; 0 when the settings give no valid rate
    /// Changes the settings so that the rate is \a hertz; returns the reason when that is not possible.
    std::string apply(double hertz, ParameterList &settings);
};

const ObjectRules &rateRules();
FrameRate readFrameRate(const Node &node);

} // namespace sondixsim::model
