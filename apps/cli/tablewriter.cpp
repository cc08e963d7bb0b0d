// SPDX-License-Identifier: MIT
#include "tablewriter.h"

#include "shared/csvwriter.h"

#include <SondixQt/errorvalue.h>

#include <algorithm>

using namespace SondixQt;
using namespace SondixApp;

TableWriter::TableWriter(const RecordColumns &columns, ErrorValues &errors)
    : m_columns(columns)
    , m_errors(errors)
{
    constexpr int widestValue = 12;
    for (const QString &name : m_columns.names())
        m_widths += std::max(widestValue, name.size());
}

void TableWriter::addCell(TextBuffer &out, const QByteArray &text, int column) const
{
    if (column > 0)
        out.add("  ");
    out.add(QByteArray(std::max(0, m_widths[column] - QString::fromUtf8(text).size()), ' '));
    out.add(text);
}

void TableWriter::begin(TextBuffer &out, const RecordHead *, bool)
{
    const QStringList names = m_columns.names();
    for (int i = 0; i < names.size(); ++i)
        addCell(out, names[i].toUtf8(), i);
    out.add('\n');
}

void TableWriter::addFrames(TextBuffer &out, const DataBlock &block, int first, int count)
{
    const FrameTimes times(block, m_axis);
    const auto number = [](double value, int digits) { return QByteArray::number(value, 'g', digits); };
    constexpr int digits = 7;
    for (int frame = first; frame < first + count; ++frame) {
        int column = 0;
        TextBuffer time;
        if (times.isKnown(frame))
            time.addSeconds(times.microseconds(frame));
        addCell(out, time.isEmpty() ? QByteArray("-") : time.data(), column++);
        for (int i = 0; i < block.valuesPerFrame(); ++i) {
            const double value = block.scaled(frame, i);
            const QByteArray error = isErrorValue(value) ? m_errors.count(value).text : QByteArray();
            if (m_columns.scaled)
                addCell(out, error.isEmpty() ? number(value, digits) : error, column++);
            if (m_columns.raw)
                addCell(out, QByteArray::number(block.raw(frame, i)), column++);
        }
        out.add('\n');
    }
}

void TableWriter::addGap(TextBuffer &out, const DataGap &gap)
{
    CsvWriter(m_columns, {}, m_errors).addGap(out, gap);
}

std::optional<FrameWriter::Resumption> TableWriter::resume(QFile &, QString &)
{
    return std::nullopt;
}

int TableWriter::frameSize() const
{
    return 16 * m_widths.size();
}
