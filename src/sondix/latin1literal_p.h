// SPDX-License-Identifier: MIT
#pragma once

#include <QLatin1String>

#include <cstddef>

namespace SondixQt {

/// A QLatin1String for constant tables. Its constructor calls strlen(), which only some compilers evaluate in a
/// constant expression.
constexpr QLatin1String operator""_latin1(const char *text, std::size_t size)
{
    return QLatin1String(text, static_cast<int>(size));
}

} // namespace SondixQt
