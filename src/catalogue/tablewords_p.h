// SPDX-License-Identifier: MIT
#pragma once

namespace SondixQt {

// Short words for the cells of tables.
constexpr bool yes = true;
constexpr bool no = false;
constexpr const char *unchanged = nullptr;

} // namespace SondixQt
