// SPDX-License-Identifier: MIT
#pragma once

#include "console.h"

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
    /// Prints the header, if there is one, in bold, and the rows, each indented by \a indent spaces.
    void print(Console &console, int indent = 0) const;

private:
    QStringList m_header;
    QVector<QStringList> m_rows;
};
