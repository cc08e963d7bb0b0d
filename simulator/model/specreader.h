// SPDX-License-Identifier: MIT
#pragma once

#include "objectreader.h"
#include "sensorspec.h"

namespace sondixsim::model {

std::vector<KeyRule> commonKeys();
/// Reads the keys that models and sensors have in common; \a spec keeps the values of keys that are absent. File names
/// are relative to \a folder.
void readCommonKeys(ObjectReader &reader, SensorSpec &spec, const std::string &folder);

const ObjectRules &signalRules();
std::vector<Signal> readSignals(const Node &node, const std::string &folder);

std::vector<Choice> functionChoices(); ///< the functions of the C interface
std::vector<Choice> commandChoices();  ///< the commands that models have

const ObjectRules &faultRules();
SpecFault readFault(const Node &node);

} // namespace sondixsim::model
