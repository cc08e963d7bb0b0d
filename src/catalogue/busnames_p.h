// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace SondixQt {

/// The model that an inertial bus sensor means by the name it reports; other names are returned as
/// they are.
inline QString busSensorModel(const QString &reportedName)
{
    if (reportedName == QLatin1String("GYSENS1_A"))
        return QStringLiteral("GY330");
    if (reportedName == QLatin1String("GYIS1_DYN_B"))
        return QStringLiteral("GY310D");
    if (reportedName == QLatin1String("GYIS1_B"))
        return QStringLiteral("GY310S");
    return reportedName;
}

} // namespace SondixQt
