// SPDX-License-Identifier: MIT
#pragma once

#include "json.h"
#include "rules.h"
#include "SondixSimulator/control.h"
#include "value.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace sondixsim::model {

/// What a bench file expects of the programs that use the bench: a number of calls or of frames, or the value of a setting
/// at the end. Its texts are windows-1250.
struct SpecExpectation
{
    std::string name; ///< for reports
    Fault calls;      ///< its filters select the calls that count; without any, no calls are expected
    std::uint64_t FrameCounts::*frames = nullptr; ///< those that count; null: no frames are expected
    std::string setting;                          ///< an "SA_" key; empty: no setting is expected
    Value value;                                  ///< of the setting
    std::optional<std::int64_t> minimum;          ///< of calls or frames
    std::optional<std::int64_t> maximum;
    int line = 0; ///< in the bench file

    bool isOfCalls() const { return frames == nullptr && setting.empty(); }
    /// Such as "exactly 2", or the value of the setting.
    std::string expected() const;
    bool isMetBy(std::int64_t count) const;
};

const ObjectRules &expectationRules();
const ObjectRules &benchExpectationRules();
/// Reads the expectations of a sensor, or those of the whole bench, which has no settings. Throws ParseError.
std::vector<SpecExpectation> readExpectations(const Node &node, bool ofSensor);

} // namespace sondixsim::model
