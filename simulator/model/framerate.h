// SPDX-License-Identifier: MIT
#pragma once

#include "json.h"
#include "value.h"

#include <string>
#include <vector>

namespace sondixsim::model {

/// How a model's settings decide how many frames it sends a second.
struct FrameRate
{
    enum class Unit { Fixed, KiloHertz, Hertz, Microseconds, Periods, Index };

    Unit unit = Unit::Fixed;
    double hertz = 0.0;          ///< Fixed
    std::string parameter;       ///< the setting, else
    double factor = 1.0;         ///< Periods: seconds for each unit of the setting; Hertz: divides
    std::vector<double> table;   ///< Index: kHz at each index
    std::string divisor;         ///< setting that the rate is divided by
    std::string averageType;     ///< with value 3 of this setting the rate is divided by 2 (n + 1) + 1
    std::string averageNumber;   ///< n
    double least = 0.001;        ///< Hz
    double greatest = 1000000.0; ///< Hz

    double of(const ParameterList &settings) const; ///< Hz; 0 when the settings make no sense
    /// Changes the settings so that the sensor has this rate; the reason when it cannot.
    std::string apply(double hertz, ParameterList &settings);
};

FrameRate readFrameRate(const Node &node);

} // namespace sondixsim::model
