// SPDX-License-Identifier: MIT
#include "valuewriter.h"

#include "json.h"

#include <SondixQt/errorvalue.h>

#include <QJsonArray>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <utility>

using namespace SondixQt;
using namespace SondixApp;

namespace {

template<typename... Arguments>
QByteArray number(Arguments... arguments)
{
    std::array<char, 400> buffer; // the largest double has 309 digits before the decimal point
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), arguments...).ptr;
    return QByteArray(buffer.data(), static_cast<int>(end - buffer.data()));
}

QByteArray quoted(QByteArray text)
{
    if (text.contains(',') || text.contains('"') || text.contains('\n') || text.contains('\r'))
        return '"' + text.replace('"', "\"\"") + '"';
    return text;
}

QByteArray titled(const QString &name, const QString &unit)
{
    return (unit.isEmpty() ? name : QStringLiteral("%1 [%2]").arg(name, unit)).toUtf8();
}

// The first value of a frame.
template<typename T>
const T *valuesOf(const T *values, const FrameBlock &block, int frame)
{
    return values + static_cast<std::ptrdiff_t>(frame) * block.valuesPerFrame;
}

double timeOf(const FrameBlock &block, int frame)
{
    return block.timestamp + frame * block.period;
}

} // namespace

ValueWriter::ValueWriter(Format format, const Columns &columns, ErrorText errorText)
    : m_format(format)
    , m_columns(columns)
    , m_errorText(std::move(errorText))
{
    constexpr int widestValue = 12;
    for (const QByteArray &name : columnNames())
        m_widths += std::max(widestValue, QString::fromUtf8(name).size());
}

QList<QByteArray> ValueWriter::columnNames() const
{
    QList<QByteArray> names{"time [s]"};
    for (const SignalInfo &info : m_columns.frame.signalList()) {
        if (m_columns.scaled)
            names += titled(info.scaledName, info.scaledUnit);
        if (m_columns.raw)
            names += titled(info.rawName + QStringLiteral(" raw"), info.rawUnit);
    }
    return names;
}

QByteArray ValueWriter::header() const
{
    if (m_format == JsonLines)
        return {};
    QByteArray line;
    const QList<QByteArray> names = columnNames();
    for (int i = 0; i < names.size(); ++i)
        appendCell(line, names[i], i);
    return line + '\n';
}

QByteArray ValueWriter::lines(const FrameBlock &block)
{
    QByteArray out;
    out.reserve(block.frames * static_cast<int>(m_widths.size()) * 16);
    for (int i = 0; i < block.frames; ++i)
        appendFrame(out, block, i);
    return out;
}

QString ValueWriter::errorMark(double value)
{
    const int key = errorValueKey(value);
    const auto known = m_errorMarks.constFind(key);
    if (known != m_errorMarks.constEnd())
        return *known;
    const QString text = m_errorText(value).simplified();
    return *m_errorMarks.insert(key, text.isEmpty() ? QStringLiteral("error %1").arg(key) : text);
}

void ValueWriter::appendFrame(QByteArray &out, const FrameBlock &block, int frame)
{
    const double *scaled = valuesOf(block.scaled, block, frame);
    const int *raw = valuesOf(block.raw, block, frame);
    const double time = timeOf(block, frame);
    for (int i = 0; i < block.valuesPerFrame; ++i)
        if (isErrorValue(scaled[i]))
            ++m_errorCounts[errorMark(scaled[i])];
    if (m_format == JsonLines) {
        appendJson(out, block, frame, time);
        return;
    }
    int column = 0;
    appendCell(out, number(time, std::chars_format::fixed, 6), column++);
    for (int i = 0; i < block.valuesPerFrame; ++i) {
        if (m_columns.scaled) {
            const QByteArray text =
                m_format == Csv ? number(scaled[i]) : number(scaled[i], std::chars_format::general, 7);
            appendCell(out, isErrorValue(scaled[i]) ? errorMark(scaled[i]).toUtf8() : text, column++);
        }
        if (m_columns.raw)
            appendCell(out, number(raw[i]), column++);
    }
    out += '\n';
}

void ValueWriter::appendJson(QByteArray &out, const FrameBlock &block, int frame, double time)
{
    const double *scaled = valuesOf(block.scaled, block, frame);
    const int *raw = valuesOf(block.raw, block, frame);
    QJsonArray scaledValues;
    QJsonArray rawValues;
    for (int i = 0; i < block.valuesPerFrame; ++i) {
        scaledValues.append(isErrorValue(scaled[i])
                                ? QJsonValue(QJsonObject{{QStringLiteral("error"), errorValueKey(scaled[i])},
                                                         {QStringLiteral("text"), errorMark(scaled[i])}})
                                : QJsonValue(scaled[i]));
        rawValues.append(raw[i]);
    }
    QJsonObject object{{QStringLiteral("frame"), block.firstFrame + frame},
                       {QStringLiteral("time"), std::round(time * 1.0e6) / 1.0e6}};
    if (m_columns.scaled)
        object.insert(QStringLiteral("values"), scaledValues);
    if (m_columns.raw)
        object.insert(QStringLiteral("raw"), rawValues);
    out += Json::line(object);
}

void ValueWriter::appendCell(QByteArray &out, const QByteArray &text, int column) const
{
    if (m_format == Csv) {
        if (column > 0)
            out += ',';
        out += quoted(text);
        return;
    }
    const int missing = m_widths[column] - QString::fromUtf8(text).size();
    out += (column > 0 ? QByteArray("  ") : QByteArray()) + QByteArray(std::max(0, missing), ' ') + text;
}
