// SPDX-License-Identifier: MIT
#include "ipaddress.h"

#include <algorithm>
#include <charconv>
#include <cstddef>

namespace sondixsim::model {

namespace {

/// The whole text as a number up to \a maximum, -1 when it is none.
int numberIn(std::string_view text, int base, int maximum)
{
    const std::size_t maxDigits = base == 16 ? 4 : 3;
    int number = 0;
    const char *const end = text.data() + text.size();
    if (text.empty() || text.size() > maxDigits || text.front() == '-')
        return -1;
    const auto result = std::from_chars(text.data(), end, number, base);
    return result.ec == std::errc() && result.ptr == end && number <= maximum ? number : -1;
}

std::string_view takeUpTo(std::string_view &text, char separator)
{
    const std::string_view part = text.substr(0, text.find(separator));
    text.remove_prefix(std::min(part.size() + 1, text.size()));
    return part;
}

bool isIpv4(std::string_view text)
{
    if (std::count(text.begin(), text.end(), '.') != 3)
        return false;
    constexpr int multicast = 224;
    const int first = numberIn(takeUpTo(text, '.'), 10, multicast - 1);
    if (first < 1)
        return false;
    for (int i = 0; i < 3; ++i) {
        if (numberIn(takeUpTo(text, '.'), 10, 255) < 0)
            return false;
    }
    return true;
}

/// The number of groups of four digits, separated by ":"; -1 when something else is in the text.
int groupsIn(std::string_view text)
{
    if (text.empty())
        return 0;
    int groups = 0;
    while (true) {
        const std::size_t colon = text.find(':');
        if (numberIn(text.substr(0, colon), 16, 0xFFFF) < 0)
            return -1;
        ++groups;
        if (colon == std::string_view::npos)
            return groups;
        text.remove_prefix(colon + 1);
    }
}

bool isIpv6(std::string_view text)
{
    constexpr int allGroups = 8;
    const bool multicast =
        text.size() > 2 && (text[0] == 'f' || text[0] == 'F') && (text[1] == 'f' || text[1] == 'F');
    if (multicast)
        return false;
    const std::size_t gap = text.find("::");
    if (gap == std::string_view::npos)
        return groupsIn(text) == allGroups;
    const int before = groupsIn(text.substr(0, gap));
    const int after = groupsIn(text.substr(gap + 2));
    return before >= 0 && after >= 0 && before + after > 0 && before + after < allGroups;
}

} // namespace

bool isDeviceAddress(std::string_view text)
{
    const std::size_t slash = text.find('/');
    const std::string_view address = text.substr(0, slash);
    const bool ipv6 = address.find(':') != std::string_view::npos;
    if (slash != std::string_view::npos && numberIn(text.substr(slash + 1), 10, ipv6 ? 128 : 32) < 0)
        return false;
    return ipv6 ? isIpv6(address) : isIpv4(address);
}

} // namespace sondixsim::model
