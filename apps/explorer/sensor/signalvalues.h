// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/datablock.h>
#include <SondixQt/transmitteddatainfo.h>

#include <QString>

#include <optional>
#include <vector>

namespace Explorer {

/// The present value of a signal with its extremes since the last reset. Error values never count as values.
struct SignalValue
{
    std::optional<double> present; ///< the last value; empty before the first one
    std::optional<double> minimum;
    std::optional<double> maximum;
    qint64 errors = 0; ///< error values since the last reset

    bool isError() const; ///< the present value is an error value
};

/// Lower and upper limit for a value on the screen, and an offset that is subtracted from it.
struct DisplayLimits
{
    enum Result { Within, Below, Above };

    std::optional<double> lower;
    std::optional<double> upper;
    double offset = 0.0; ///< the limits apply to the value after the offset was subtracted

    Result check(double value) const;
    bool operator==(const DisplayLimits &other) const;
    bool operator!=(const DisplayLimits &other) const { return !(*this == other); }
};

/// The present values of all signals of a sensor.
class SignalValues
{
public:
    /// Forgets all values; there are \a count signals from now on.
    void begin(int count);
    void add(const SondixQt::DataBlock &block);
    /// Forgets minimum, maximum and the number of errors.
    void reset();

    int count() const { return static_cast<int>(m_values.size()); }
    const SignalValue &at(int signal) const { return m_values.at(static_cast<size_t>(signal)); }

private:
    std::vector<SignalValue> m_values;
};

/// The number of decimal places with which a value of \a info is shown: a hundred-thousandth of its range is visible.
int decimalPlaces(const SondixQt::SignalInfo &info);
/// \a value for the screen, as the locale writes it.
QString shownNumber(double value, int decimals);
/// \a value with the fewest digits that represent it exactly, with a decimal point in every locale.
QString exactNumber(double value);

} // namespace Explorer
