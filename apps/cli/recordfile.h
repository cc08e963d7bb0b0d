// SPDX-License-Identifier: MIT
#pragma once

#include "record.h"

#include <QString>

/// Reads a record of calls; throws Failure if it cannot be read or has a mistake.
sondixrec::Record readRecordFile(const QString &path);
