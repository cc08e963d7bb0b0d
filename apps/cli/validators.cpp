// SPDX-License-Identifier: MIT
#include "validators.h"

#include <QString>

#include <cmath>

namespace Validators {

Check notEmpty()
{
    return [](const std::string &text) { return text.empty() ? "the value must not be empty" : std::string(); };
}

Check seconds(double maximum)
{
    return [maximum](const std::string &text) {
        bool isNumber = false;
        const double value = QString::fromStdString(text).toDouble(&isNumber);
        if (isNumber && std::isfinite(value) && value > 0.0 && value <= maximum)
            return std::string();
        return QStringLiteral("'%1' is no number of seconds above 0 and up to %2")
            .arg(QString::fromStdString(text))
            .arg(maximum, 0, 'f', 0)
            .toStdString();
    };
}

Check count(long long maximum)
{
    return [maximum](const std::string &text) {
        bool isNumber = false;
        const qlonglong value = QString::fromStdString(text).toLongLong(&isNumber);
        if (isNumber && value >= 1 && value <= maximum)
            return std::string();
        return QStringLiteral("'%1' is no whole number from 1 to %2")
            .arg(QString::fromStdString(text))
            .arg(maximum)
            .toStdString();
    };
}

} // namespace Validators
