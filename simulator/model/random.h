// SPDX-License-Identifier: MIT
#pragma once

#include <cmath>
#include <cstdint>
#include <string_view>

namespace sondixsim::model {

// Random numbers are hashes of seed, sensor, signal and frame, not a sequence: the values of a sensor do not depend on
// how often and by how many threads it is read.

constexpr std::uint64_t mix(std::uint64_t x)
{
    x += 0x9E3779B97F4A7C15ull;
    x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9ull;
    x = (x ^ (x >> 27)) * 0x94D049BB133111EBull;
    return x ^ (x >> 31);
}

constexpr std::uint64_t mix(std::uint64_t a, std::uint64_t b)
{
    return mix(mix(a) ^ b);
}

constexpr std::uint64_t mix(std::uint64_t seed, std::string_view text)
{
    std::uint64_t hash = 0xCBF29CE484222325ull;
    for (const char c : text)
        hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3ull;
    return mix(seed, hash);
}

/// In the range [0, 1).
constexpr double uniform(std::uint64_t bits)
{
    return static_cast<double>(bits >> 11) * 0x1.0p-53;
}

/// Normal with mean 0 and standard deviation 1, with tails up to 8.5.
inline double normal(std::uint64_t bits)
{
    constexpr double twoPi = 6.283185307179586;
    const double radius = std::sqrt(-2.0 * std::log(1.0 - uniform(bits)));
    return radius * std::cos(twoPi * uniform(mix(bits)));
}

} // namespace sondixsim::model
