// SPDX-License-Identifier: MIT
#pragma once

/// The processor time that this thread has used, in seconds. Unlike the time on the clock it does not depend on what else
/// the machine does.
double threadProcessorSeconds();

/// The time for which this thread was ready to run while others had the processors, in seconds. Only Linux reports
/// it.
double threadReadySeconds();
