// SPDX-License-Identifier: MIT
#include "text.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace sondixsim::model {

namespace {

// The upper half of windows-1250 as Unicode; 0 where the code page has no character.
// clang-format off
constexpr std::array<std::uint16_t, 128> upperHalf = {
    0x20AC, 0x0000, 0x201A, 0x0000, 0x201E, 0x2026, 0x2020, 0x2021, 0x0000, 0x2030, 0x0160, 0x2039,
    0x015A, 0x0164, 0x017D, 0x0179, 0x0000, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
    0x0000, 0x2122, 0x0161, 0x203A, 0x015B, 0x0165, 0x017E, 0x017A, 0x00A0, 0x02C7, 0x02D8, 0x0141,
    0x00A4, 0x0104, 0x00A6, 0x00A7, 0x00A8, 0x00A9, 0x015E, 0x00AB, 0x00AC, 0x00AD, 0x00AE, 0x017B,
    0x00B0, 0x00B1, 0x02DB, 0x0142, 0x00B4, 0x00B5, 0x00B6, 0x00B7, 0x00B8, 0x0105, 0x015F, 0x00BB,
    0x013D, 0x02DD, 0x013E, 0x017C, 0x0154, 0x00C1, 0x00C2, 0x0102, 0x00C4, 0x0139, 0x0106, 0x00C7,
    0x010C, 0x00C9, 0x0118, 0x00CB, 0x011A, 0x00CD, 0x00CE, 0x010E, 0x0110, 0x0143, 0x0147, 0x00D3,
    0x00D4, 0x0150, 0x00D6, 0x00D7, 0x0158, 0x016E, 0x00DA, 0x0170, 0x00DC, 0x00DD, 0x0162, 0x00DF,
    0x0155, 0x00E1, 0x00E2, 0x0103, 0x00E4, 0x013A, 0x0107, 0x00E7, 0x010D, 0x00E9, 0x0119, 0x00EB,
    0x011B, 0x00ED, 0x00EE, 0x010F, 0x0111, 0x0144, 0x0148, 0x00F3, 0x00F4, 0x0151, 0x00F6, 0x00F7,
    0x0159, 0x016F, 0x00FA, 0x0171, 0x00FC, 0x00FD, 0x0163, 0x02D9,
};
// clang-format on

constexpr std::uint32_t invalid = 0xFFFFFFFF;

std::uint32_t nextCharacter(std::string_view &text)
{
    const auto first = static_cast<unsigned char>(text.front());
    text.remove_prefix(1);
    if (first < 0x80)
        return first;
    const int following = first >= 0xF0 ? 3 : first >= 0xE0 ? 2 : first >= 0xC0 ? 1 : 0;
    if (following == 0)
        return invalid;
    std::uint32_t character = first & (0x3Fu >> following);
    for (int i = 0; i < following; ++i) {
        if (text.empty() || (static_cast<unsigned char>(text.front()) & 0xC0u) != 0x80u)
            return invalid;
        character = (character << 6) | (static_cast<unsigned char>(text.front()) & 0x3Fu);
        text.remove_prefix(1);
    }
    return character;
}

std::optional<char> encoded(std::uint32_t character)
{
    if (character < 0x80)
        return static_cast<char>(character);
    // Many keyboards enter the Greek mu instead of the micro sign.
    if (character == 0x03BC)
        character = 0x00B5;
    const auto *const found = std::find(upperHalf.begin(), upperHalf.end(), character);
    if (found == upperHalf.end())
        return std::nullopt;
    return static_cast<char>(0x80 + (found - upperHalf.begin()));
}

} // namespace

std::optional<std::string> toWindows1250(std::string_view utf8)
{
    std::string text;
    text.reserve(utf8.size());
    while (!utf8.empty()) {
        const auto byte = encoded(nextCharacter(utf8));
        if (!byte)
            return std::nullopt;
        text += *byte;
    }
    return text;
}

std::string toWindows1250Lossy(std::string_view utf8)
{
    std::string text;
    text.reserve(utf8.size());
    while (!utf8.empty())
        text += encoded(nextCharacter(utf8)).value_or('?');
    return text;
}

std::string fromWindows1250(std::string_view text)
{
    std::string utf8;
    utf8.reserve(text.size());
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        const unsigned character = byte < 0x80 ? byte : upperHalf[byte - 0x80u];
        if (character == 0 && byte != 0) {
            utf8 += '?';
        } else if (character < 0x80) {
            utf8 += static_cast<char>(character);
        } else {
            if (character < 0x800) {
                utf8 += static_cast<char>(0xC0 | (character >> 6));
            } else {
                utf8 += static_cast<char>(0xE0 | (character >> 12));
                utf8 += static_cast<char>(0x80 | ((character >> 6) & 0x3F));
            }
            utf8 += static_cast<char>(0x80 | (character & 0x3F));
        }
    }
    return utf8;
}

} // namespace sondixsim::model
