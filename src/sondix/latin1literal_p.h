// SPDX-License-Identifier: MIT
#pragma once

#include <QLatin1String>

#include <cstddef>

namespace SondixQt {

/// A text for constant tables. QLatin1String's own constructor measures the text with a function that only some
/// compilers evaluate in a constant expression.
constexpr QLatin1String operator""_latin1(const char *text, std::size_t size)
{
    return QLatin1String(text, static_cast<int>(size));
}

} // namespace SondixQt
