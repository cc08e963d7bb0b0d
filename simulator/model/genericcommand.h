// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sondixsim::model {

/// One line of the sensor's own command language: "NAME", "NAME VALUE" or "NAME=VALUE".
struct GenericLine
{
    std::string name;                 ///< in capital letters
    std::optional<std::string> value; ///< without leading and trailing blanks
    int number = 1;                   ///< line number in the text, from 1
};

/// Splits a text into lines and skips empty ones and comments, which begin with "#".
std::vector<GenericLine> genericLines(std::string_view text);

/// "MEASRATE" for the setting "SA_Measrate".
std::string genericName(std::string_view setting);

} // namespace sondixsim::model
