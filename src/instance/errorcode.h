// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/sondixqtglobal.h>

#include <QMetaType>

namespace SondixQt {

/// The result of a sensor operation: 0 is success, every other value is a failure code of the
/// sensor-access library, passed through unchanged (its documentation lists them).
///
/// Values beyond the enumerators are normal: any code of the sensor-access library may occur.
enum ErrorCode : qint32 {
    NoError = 0,
};

} // namespace SondixQt

Q_DECLARE_METATYPE(SondixQt::ErrorCode)
