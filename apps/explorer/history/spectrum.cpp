// SPDX-License-Identifier: MIT
#include "spectrum.h"

#include <cmath>
#include <complex>
#include <numeric>
#include <utility>

namespace Explorer {

namespace {

using Complex = std::complex<double>;

constexpr double pi = 3.14159265358979323846;

void reverseBits(std::vector<Complex> &values)
{
    for (std::size_t i = 1, j = 0; i < values.size(); ++i) {
        std::size_t bit = values.size() / 2;
        for (; (j & bit) != 0; bit /= 2)
            j ^= bit;
        j ^= bit;
        if (i < j)
            std::swap(values[i], values[j]);
    }
}

// Radix 2, in place. The factors come from a table: a recurrence would lose accuracy.
void transform(std::vector<Complex> &values)
{
    const std::size_t count = values.size();
    std::vector<Complex> factors(count / 2);
    for (std::size_t i = 0; i < factors.size(); ++i)
        factors[i] = std::polar(1.0, -2.0 * pi * static_cast<double>(i) / static_cast<double>(count));
    reverseBits(values);
    for (std::size_t half = 1; half < count; half *= 2) {
        const std::size_t step = count / (2 * half);
        for (std::size_t begin = 0; begin < count; begin += 2 * half)
            for (std::size_t i = 0; i < half; ++i) {
                const Complex &factor = factors[i * step];
                const Complex &value = values[begin + half + i];
                // Written out: std::complex checks for values that are not a number.
                const Complex product(value.real() * factor.real() - value.imag() * factor.imag(),
                                      value.real() * factor.imag() + value.imag() * factor.real());
                values[begin + half + i] = values[begin + i] - product;
                values[begin + i] += product;
            }
    }
}

} // namespace

std::vector<double> amplitudesOf(std::vector<double> values)
{
    const auto count = static_cast<double>(values.size());
    const double mean = std::accumulate(values.begin(), values.end(), 0.0) / count;
    std::vector<Complex> bins(values.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
        const double window = 0.5 - 0.5 * std::cos(2.0 * pi * static_cast<double>(i) / count);
        bins[i] = (values[i] - mean) * window;
    }
    transform(bins);
    // The mean of the window is 1/2; the amplitude of a sine is shared by a positive and a negative frequency.
    std::vector<double> amplitudes(values.size() / 2 + 1);
    for (std::size_t i = 0; i < amplitudes.size(); ++i) {
        const bool isShared = i > 0 && i < values.size() / 2;
        amplitudes[i] = std::abs(bins[i]) * (isShared ? 4.0 : 2.0) / count;
    }
    return amplitudes;
}

} // namespace Explorer
