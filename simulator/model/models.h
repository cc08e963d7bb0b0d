// SPDX-License-Identifier: MIT
#pragma once

#include "sensorspec.h"

#include <map>
#include <string>

namespace sondixsim::model {

/// The models by the names that bench files use.
const std::map<std::string, SensorSpec> &models();

/// The model of a base type, null when there is no such type.
const SensorSpec *modelOfBaseType(std::int32_t type);

struct EmbeddedFile
{
    const char *name;
    const char *text;
    unsigned size;
};
extern const EmbeddedFile embeddedModels[];
extern const unsigned embeddedModelsCount;
extern const EmbeddedFile embeddedBench[];
extern const EmbeddedFile embeddedPages[];
extern const unsigned embeddedPagesCount;

} // namespace sondixsim::model
