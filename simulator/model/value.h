// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace sondixsim::model {

/// A type of its own for the sake of Value: a variant of standard types only takes itself for one that never is without
/// a value, and destroys what is not there when a copy runs out of memory (libstdc++ 12).
struct Bytes : std::vector<unsigned char>
{
    using std::vector<unsigned char>::vector;
};

using Value = std::variant<std::int32_t, double, std::string, Bytes>;

struct Parameter
{
    std::string name;
    Value value;
};

/// Named values in the order in which they were first set. Texts are windows-1250.
class ParameterList
{
public:
    const Value *find(std::string_view name) const;
    void set(std::string_view name, Value value); ///< replaces a value of that name
    void append(std::string name, Value value);   ///< does not check whether the name exists already
    void add(const ParameterList &other);
    void remove(std::string_view name);
    void clear() { m_parameters.clear(); }
    bool empty() const { return m_parameters.empty(); }

    std::vector<Parameter>::const_iterator begin() const { return m_parameters.begin(); }
    std::vector<Parameter>::const_iterator end() const { return m_parameters.end(); }

private:
    std::vector<Parameter> m_parameters;
};

std::optional<std::int32_t> toInt(const Value &value);
std::optional<double> toDouble(const Value &value);
std::string toText(const Value &value); ///< empty for bytes

/// The shortest text that is parsed to the same number, always with a decimal point.
std::string formatDouble(double value);

/// \a value converted to the type of \a like; nullopt when that is not possible.
std::optional<Value> convertedLike(const Value &value, const Value &like);

/// "key=value" pairs; texts in double quotes, bytes left out.
std::string pairsText(const ParameterList &parameters, std::string_view separator);

/// Parses such a text. A value without quotes is a number if it can be parsed as one.
ParameterList parsePairs(std::string_view text);

} // namespace sondixsim::model
