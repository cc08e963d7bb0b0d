// SPDX-License-Identifier: MIT
#include "value.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>

namespace sondixsim::model {

const Value *ParameterList::find(std::string_view name) const
{
    for (const Parameter &parameter : m_parameters) {
        if (parameter.name == name)
            return &parameter.value;
    }
    return nullptr;
}

void ParameterList::set(std::string_view name, Value value)
{
    for (Parameter &parameter : m_parameters) {
        if (parameter.name == name) {
            parameter.value = std::move(value);
            return;
        }
    }
    m_parameters.push_back({std::string(name), std::move(value)});
}

void ParameterList::append(std::string name, Value value)
{
    m_parameters.push_back({std::move(name), std::move(value)});
}

void ParameterList::add(const ParameterList &other)
{
    for (const Parameter &parameter : other)
        set(parameter.name, parameter.value);
}

void ParameterList::remove(std::string_view name)
{
    const auto isIt = [name](const Parameter &parameter) { return parameter.name == name; };
    m_parameters.erase(std::remove_if(m_parameters.begin(), m_parameters.end(), isIt), m_parameters.end());
}

std::optional<std::int32_t> toInt(const Value &value)
{
    if (const auto *number = std::get_if<std::int32_t>(&value))
        return *number;
    if (const auto *number = std::get_if<double>(&value)) {
        const double rounded = std::nearbyint(*number);
        if (rounded >= std::numeric_limits<std::int32_t>::min() &&
            rounded <= std::numeric_limits<std::int32_t>::max())
            return static_cast<std::int32_t>(rounded);
    }
    return std::nullopt;
}

std::optional<double> toDouble(const Value &value)
{
    if (const auto *number = std::get_if<std::int32_t>(&value))
        return *number;
    if (const auto *number = std::get_if<double>(&value))
        return *number;
    return std::nullopt;
}

std::string toText(const Value &value)
{
    if (const auto *text = std::get_if<std::string>(&value))
        return *text;
    if (const auto *number = std::get_if<std::int32_t>(&value))
        return std::to_string(*number);
    if (const auto *number = std::get_if<double>(&value))
        return formatDouble(*number);
    return {};
}

std::string formatDouble(double value)
{
    std::array<char, 64> buffer{};
    const double size = std::fabs(value);
    const bool readable = value == 0.0 || (size >= 1.0e-4 && size < 1.0e15);
    const auto format = readable ? std::chars_format::fixed : std::chars_format::scientific;
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, format).ptr;
    std::string text(buffer.data(), end);
    if (!std::isfinite(value) || text.find('.') != std::string::npos)
        return text;
    return text.insert(std::min(text.find('e'), text.size()), ".0");
}

namespace {

std::optional<Value> parsedNumber(std::string_view text)
{
    std::int32_t integer = 0;
    auto result = std::from_chars(text.data(), text.data() + text.size(), integer);
    if (result.ec == std::errc() && result.ptr == text.data() + text.size())
        return Value(integer);
    double real = 0.0;
    result = std::from_chars(text.data(), text.data() + text.size(), real);
    if (result.ec == std::errc() && result.ptr == text.data() + text.size())
        return Value(real);
    return std::nullopt;
}

} // namespace

std::optional<Value> convertedLike(const Value &value, const Value &like)
{
    if (value.index() == like.index())
        return value;
    if (std::holds_alternative<std::string>(like))
        return std::holds_alternative<Bytes>(value) ? std::nullopt : std::optional<Value>(toText(value));
    Value number = value;
    if (const auto *text = std::get_if<std::string>(&value)) {
        const auto parsed = parsedNumber(*text);
        if (!parsed)
            return std::nullopt;
        number = *parsed;
    }
    if (std::holds_alternative<double>(like)) {
        if (const auto real = toDouble(number))
            return Value(*real);
    } else if (std::holds_alternative<std::int32_t>(like)) {
        if (const auto integer = toInt(number))
            return Value(*integer);
    }
    return std::nullopt;
}

std::string pairsText(const ParameterList &parameters, std::string_view separator)
{
    std::string text;
    for (const Parameter &parameter : parameters) {
        if (std::holds_alternative<Bytes>(parameter.value))
            continue;
        if (!text.empty())
            text += separator;
        text += parameter.name;
        text += '=';
        if (const auto *words = std::get_if<std::string>(&parameter.value)) {
            text += '"';
            for (const char c : *words) {
                if (c == '"' || c == '\\')
                    text += '\\';
                text += c;
            }
            text += '"';
        } else {
            text += toText(parameter.value);
        }
    }
    return text;
}

ParameterList parsePairs(std::string_view text)
{
    constexpr std::string_view blanks = " \t\r\n";
    ParameterList parameters;
    while (true) {
        text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
        const std::size_t equals = text.find('=');
        if (equals == std::string_view::npos)
            return parameters;
        const std::string_view name = text.substr(0, equals);
        text.remove_prefix(equals + 1);
        if (text.empty() || text.front() != '"') {
            const std::string_view word = text.substr(0, text.find_first_of(blanks));
            text.remove_prefix(word.size());
            const auto number = parsedNumber(word);
            parameters.set(name, number ? *number : Value(std::string(word)));
            continue;
        }
        std::string words;
        text.remove_prefix(1);
        while (!text.empty() && text.front() != '"') {
            if (text.front() == '\\' && text.size() > 1)
                text.remove_prefix(1);
            words += text.front();
            text.remove_prefix(1);
        }
        text.remove_prefix(std::min<std::size_t>(1, text.size()));
        parameters.set(name, std::move(words));
    }
}

} // namespace sondixsim::model
