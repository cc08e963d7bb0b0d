// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>
#include <QVector>

/// Rows of text in columns as wide as their widest cell.
class TextTable
{
public:
    explicit TextTable(const QStringList &header)
        : m_header(header)
    {
    }

    void addRow(const QStringList &cells) { m_rows.append(cells); }
    /// The header, if there is one, and the rows, each indented by \a indent spaces.
    QStringList lines(int indent = 0) const;

private:
    QStringList m_header;
    QVector<QStringList> m_rows;
};
