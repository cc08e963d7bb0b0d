// SPDX-License-Identifier: MIT
#pragma once

#include "catalogue/constantlist_p.h"

#include <QString>

namespace SondixQt {

/// kHz from the microseconds between two frames.
double rateOfSampleTime(double microseconds);

/// kHz of an RG52x that tracks with \a trackingCommand; \a measureTime is its "SA_MeasureTime".
double rateOfDistanceTracking(const QString &trackingCommand, int measureTime);

/// kHz of an RG53x that measures with \a frequency Hz and averages \a average values.
double rateOfFrequencyAverage(int frequency, int average, bool speedTracking);

/// kHz of an EC810 with the rates \a rates.
double rateOfIndexAndAverage(ConstantList<double> rates, int rateIndex, int averageType, int averageNumber);

} // namespace SondixQt
