// SPDX-License-Identifier: MIT
#pragma once

#include "catalogue/constantlist_p.h"

#include <QString>

namespace SondixQt {

/// The rate in kHz for the time between two frames.
double rateOfSampleTime(double microseconds);

/// The rate in kHz of an RG52x with the tracking mode of \a trackingCommand; \a measureTime is its
/// "SA_MeasureTime".
double rateOfDistanceTracking(const QString &trackingCommand, int measureTime);

/// The rate in kHz of an RG53x that measures at \a frequency Hz and averages \a average values.
double rateOfFrequencyAverage(int frequency, int average, bool speedTracking);

/// The rate in kHz of an EC810; \a rateIndex is an index into \a rates.
double rateOfIndexAndAverage(ConstantList<double> rates, int rateIndex, int averageType, int averageNumber);

} // namespace SondixQt
