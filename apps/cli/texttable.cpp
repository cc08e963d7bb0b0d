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

void TextTable::print(Console &console, int indent) const
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
    bool isHeader = !m_header.isEmpty();
    for (const QStringList &row : qAsConst(all)) {
        QString line(indent, QLatin1Char(' '));
        for (int i = 0; i < row.size(); ++i)
            line += row[i].leftJustified(widths[i] + 2);
        console.print(console.styled(trimmedRight(line), isHeader ? Console::Bold : Console::Plain));
        isHeader = false;
    }
}
