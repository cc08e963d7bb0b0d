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

/// exp(-2 pi i k / count) for the first half of the circle. A recurrence would lose accuracy.
const std::vector<Complex> &factorsOf(std::size_t count)
{
    static thread_local std::vector<Complex> factors; // of the last size, which is mostly the next one
    if (factors.size() == count / 2)
        return factors;
    factors.resize(count / 2);
    for (std::size_t i = 0; i < factors.size(); ++i)
        factors[i] = std::polar(1.0, -2.0 * pi * static_cast<double>(i) / static_cast<double>(count));
    return factors;
}

// Written out: std::complex checks for values that are not a number.
Complex product(const Complex &a, const Complex &b)
{
    return {a.real() * b.real() - a.imag() * b.imag(), a.real() * b.imag() + a.imag() * b.real()};
}

// Radix 2, in place. The factors are those of twice as many values.
void transform(std::vector<Complex> &values, const std::vector<Complex> &factors)
{
    const std::size_t count = values.size();
    reverseBits(values);
    for (std::size_t half = 1; half < count; half *= 2) {
        const std::size_t step = count / half;
        for (std::size_t begin = 0; begin < count; begin += 2 * half)
            for (std::size_t i = 0; i < half; ++i) {
                const Complex rotated = product(values[begin + half + i], factors[i * step]);
                values[begin + half + i] = values[begin + i] - rotated;
                values[begin + i] += rotated;
            }
    }
}

} // namespace

// Real values are transformed as half as many complex ones: the even values are their real parts, the odd values their
// imaginary parts. Their two spectra are then separated and put together.
std::vector<double> amplitudesOf(const std::vector<double> &values)
{
    const std::size_t count = values.size();
    const std::size_t half = count / 2;
    const double mean = std::accumulate(values.begin(), values.end(), 0.0) / static_cast<double>(count);
    const std::vector<Complex> &factors = factorsOf(count);
    const auto windowed = [&](std::size_t i) {
        const double cosine = i < half ? factors[i].real() : -factors[i - half].real();
        return (values[i] - mean) * (0.5 - 0.5 * cosine);
    };
    std::vector<Complex> bins(half);
    for (std::size_t i = 0; i < half; ++i)
        bins[i] = {windowed(2 * i), windowed(2 * i + 1)};
    transform(bins, factors);
    // The mean of the window is 1/2; the amplitude of a sine is shared by a positive and a negative frequency.
    std::vector<double> amplitudes(half + 1);
    const double scale = 2.0 / static_cast<double>(count);
    amplitudes[0] = std::abs(bins[0].real() + bins[0].imag()) * scale;
    amplitudes[half] = std::abs(bins[0].real() - bins[0].imag()) * scale;
    for (std::size_t i = 1; i < half; ++i) {
        const Complex mirrored = std::conj(bins[half - i]);
        const Complex even = bins[i] + mirrored;
        const Complex odd = product(Complex(0.0, -1.0), bins[i] - mirrored);
        amplitudes[i] = std::abs(even + product(factors[i], odd)) * scale; // twice the sum
    }
    return amplitudes;
}

} // namespace Explorer
