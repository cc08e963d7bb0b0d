// SPDX-License-Identifier: MIT
#pragma once

#include "model/text.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace sondixsim::capi {

using nlohmann::json;

struct RequestError : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

/// The members of a request. Each must be read, or finish() reports it.
class RequestReader
{
public:
    explicit RequestReader(const json &request)
        : m_request(request)
    {
    }

    bool has(const char *key) const { return m_request.contains(key); }

    template<typename T>
    void read(const char *key, T &value)
    {
        const auto found = m_request.find(key);
        if (found == m_request.end())
            return;
        m_known.emplace_back(key);
        convert(*found, key, value);
    }
    template<typename T>
    void read(const char *key, std::optional<T> &value)
    {
        if (!has(key))
            return;
        value.emplace();
        read(key, *value);
    }
    template<typename T>
    T required(const char *key)
    {
        if (!has(key))
            throw RequestError(std::string("the request lacks \"") + key + '"');
        T value{};
        read(key, value);
        return value;
    }
    /// Throws if there is a member that was not read.
    void finish() const
    {
        for (const auto &[key, value] : m_request.items()) {
            if (std::find(m_known.begin(), m_known.end(), key) == m_known.end())
                throw RequestError("the request has an unknown member \"" + key + '"');
        }
    }

private:
    [[noreturn]] static void refuse(const char *key, const char *kind)
    {
        throw RequestError(std::string("\"") + key + "\" must be " + kind);
    }
    static void convert(const json &from, const char *key, std::string &to)
    {
        if (!from.is_string())
            refuse(key, "a text");
        to = from.get<std::string>();
    }
    static void convert(const json &from, const char *key, bool &to)
    {
        if (!from.is_boolean())
            refuse(key, "true or false");
        to = from.get<bool>();
    }
    static void convert(const json &from, const char *key, double &to)
    {
        if (!from.is_number() || !std::isfinite(from.get<double>()) || from.get<double>() < 0.0)
            refuse(key, "a number that is not negative");
        to = from.get<double>();
    }
    template<typename Integer>
    static void convert(const json &from, const char *key, Integer &to)
    {
        constexpr auto lowest = static_cast<double>(std::numeric_limits<Integer>::min());
        constexpr auto highest = static_cast<double>(std::numeric_limits<Integer>::max());
        if (!from.is_number_integer() || from.get<double>() < lowest || from.get<double>() > highest)
            refuse(key, "a whole number");
        to = from.get<Integer>();
    }

    const json &m_request;
    std::vector<std::string> m_known;
};

/// The texts of the simulator are windows-1250.
inline std::string inLibraryText(const std::string &utf8, const char *key)
{
    const auto text = model::toWindows1250(utf8);
    if (!text)
        throw RequestError(std::string("\"") + key + "\" has characters that do not exist in windows-1250");
    return *text;
}

} // namespace sondixsim::capi
