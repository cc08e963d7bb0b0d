// SPDX-License-Identifier: MIT
#include "genericcommand.h"

#include <algorithm>

namespace sondixsim::model {

namespace {

constexpr std::string_view blanks = " \t\r\n\v\f";

std::string_view trimmed(std::string_view text)
{
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    text.remove_suffix(text.size() - std::min(text.find_last_not_of(blanks) + 1, text.size()));
    return text;
}

/// Not std::toupper(), whose result depends on the locale.
std::string inCapitals(std::string_view text)
{
    std::string capitals(text);
    for (char &c : capitals) {
        if (c >= 'a' && c <= 'z')
            c = static_cast<char>(c - 'a' + 'A');
    }
    return capitals;
}

GenericLine readLine(std::string_view line, int number)
{
    const std::size_t end = std::min(line.find_first_of(" \t="), line.size());
    GenericLine read{inCapitals(line.substr(0, end)), std::nullopt, number};
    std::string_view rest = trimmed(line.substr(end));
    const bool equals = !rest.empty() && rest.front() == '=';
    if (equals)
        rest = trimmed(rest.substr(1));
    if (equals || !rest.empty())
        read.value = std::string(rest);
    return read;
}

} // namespace

std::vector<GenericLine> genericLines(std::string_view text)
{
    std::vector<GenericLine> lines;
    for (int number = 1; !text.empty(); ++number) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = trimmed(text.substr(0, end));
        if (!line.empty() && line.front() != '#')
            lines.push_back(readLine(line, number));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return lines;
}

std::string genericName(std::string_view setting)
{
    constexpr std::string_view head = "SA_";
    if (setting.substr(0, head.size()) == head)
        setting.remove_prefix(head.size());
    return inCapitals(setting);
}

} // namespace sondixsim::model
