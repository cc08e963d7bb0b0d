// SPDX-License-Identifier: MIT
#pragma once

#include "sensorspec.h"

#include <map>
#include <string>

namespace sondixsim::model {

/// The models by their names, which are those that the library prints.
const std::map<std::string, SensorSpec> &models();

/// The model that a bench file calls \a name, which may be an alias; null when there is none.
const SensorSpec *modelNamed(const std::string &name);

std::vector<std::string> modelNames(); ///< with the aliases

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
