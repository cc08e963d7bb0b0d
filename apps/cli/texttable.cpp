// SPDX-License-Identifier: MIT
#include "texttable.h"

#include <algorithm>

namespace {

QString trimmedRight(QString line)
{
    while (line.endsWith(QLatin1Char(' ')))
        line.chop(1);
    return line;
}

} // namespace

QStringList TextTable::lines(int indent) const
{
    QVector<QStringList> all = m_rows;
    if (!m_header.isEmpty())
        all.prepend(m_header);
    QVector<int> widths;
    for (const QStringList &row : qAsConst(all)) {
        widths.resize(std::max(widths.size(), row.size()));
        for (int i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], row[i].size());
    }
    QStringList result;
    for (const QStringList &row : qAsConst(all)) {
        QString line(indent, QLatin1Char(' '));
        for (int i = 0; i < row.size(); ++i)
            line += row[i].leftJustified(widths[i] + 2);
        result += trimmedRight(line);
    }
    return result;
}
