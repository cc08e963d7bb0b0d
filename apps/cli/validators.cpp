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

std::optional<long long> sizeOf(const std::string &text)
{
    constexpr long long maximum = 1'000'000'000'000'000;
    const std::string units = "kMG";
    long long unit = 1;
    QString number = QString::fromStdString(text);
    if (const auto place = units.find(text.empty() ? ' ' : text.back()); place != std::string::npos) {
        for (size_t i = 0; i <= place; ++i)
            unit *= 1000;
        number.chop(1);
    }
    bool isNumber = false;
    const qlonglong value = number.toLongLong(&isNumber);
    if (!isNumber || value < 1 || value > maximum / unit)
        return std::nullopt;
    return value * unit;
}

Check size()
{
    return [](const std::string &text) {
        if (sizeOf(text))
            return std::string();
        return QStringLiteral("'%1' is no number of bytes, such as 500000, 500k, 100M or 2G")
            .arg(QString::fromStdString(text))
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
