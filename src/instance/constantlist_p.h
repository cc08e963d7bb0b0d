// SPDX-License-Identifier: MIT
#pragma once

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

private:
    const Entry *entries = nullptr;
    int count = 0;
};

/// Whether the rows of \a table stand in ascending order of their \a key member, each key once.
template<typename Row, int Count>
constexpr bool isAscending(const Row (&table)[Count], int Row::*key)
{
    for (int position = 1; position < Count; ++position) {
        if (table[position - 1].*key >= table[position].*key)
            return false;
    }
    return true;
}

/// The entry of \a table whose \a key member is \a value, or null.
template<typename Row, int Count>
const Row *findRow(const Row (&table)[Count], int Row::*key, int value)
{
    for (const Row &row : table) {
        if (row.*key == value)
            return &row;
    }
    return nullptr;
}

} // namespace SondixQt
