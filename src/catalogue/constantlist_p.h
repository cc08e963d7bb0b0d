// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/sensortypes.h>

namespace SondixQt {

/// A view of a constant array, for the columns of a table that hold several entries.
template<typename Entry>
class ConstantList
{
public:
    constexpr ConstantList() = default;
    template<int Count>
    constexpr ConstantList(const Entry (&array)[Count])
        : entries(array)
        , count(Count)
    {
    }

    constexpr const Entry *begin() const { return entries; }
    constexpr const Entry *end() const { return entries + count; }
    constexpr int size() const { return count; }
    constexpr bool isEmpty() const { return count == 0; }

    /// The entry at \a index, or a default-constructed entry if \a index is out of range.
    constexpr Entry value(int index) const { return index >= 0 && index < count ? entries[index] : Entry(); }

private:
    const Entry *entries = nullptr;
    int count = 0;
};

/// Whether the rows of \a table are sorted by \a key without duplicates.
template<typename Row, int Count>
constexpr bool isAscending(const Row (&table)[Count], SensorType Row::*key)
{
    for (int position = 1; position < Count; ++position) {
        if (table[position - 1].*key >= table[position].*key)
            return false;
    }
    return true;
}

/// The row of \a table whose \a key is \a type, or null.
template<typename Row, int Count>
const Row *findRow(const Row (&table)[Count], SensorType Row::*key, SensorType type)
{
    for (const Row &row : table) {
        if (row.*key == type)
            return &row;
    }
    return nullptr;
}

} // namespace SondixQt
