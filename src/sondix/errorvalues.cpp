// SPDX-License-Identifier: MIT
#include "errorvalues_p.h"

#include <QStringList>

#include <limits>

namespace SondixQt {

namespace {

constexpr double firstErrorValue = -1.0e10;

} // namespace

int errorValueKey(double value)
{
    if (!(value <= firstErrorValue))
        return 0;
    const double key = value - firstErrorValue;
    // The cast truncates towards zero, so that everything above the lowest int minus 1 is in range.
    return key > std::numeric_limits<int>::min() - 1.0 ? static_cast<int>(key) : 0;
}

void addErrorValueTexts(const QString &source, QHash<int, QString> &texts)
{
    const QLatin1String separator(": ");
    const QStringList lines = source.split(QLatin1String("\r\n"));
    for (const QString &line : lines) {
        const int position = line.indexOf(separator);
        if (position > 0)
            texts.insert(line.left(position).toInt(), line.mid(position + separator.size()));
    }
}

} // namespace SondixQt
