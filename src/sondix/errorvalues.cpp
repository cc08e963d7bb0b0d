// SPDX-License-Identifier: MIT
#include "errorvalues_p.h"

#include <QStringList>

namespace SondixQt {

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
