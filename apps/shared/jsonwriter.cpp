// SPDX-License-Identifier: MIT
#include "jsonwriter.h"

#include <SondixQt/errorvalue.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>

using namespace SondixQt;

namespace SondixApp {

namespace {

QByteArray compact(const QJsonObject &object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

// An object whose only member is \a name.
void addObject(TextBuffer &out, const QString &name, const QJsonValue &value)
{
    out.add(compact({{name, value}}));
    out.add('\n');
}

QJsonValue seconds(const std::optional<double> &time, const TimeAxis &axis)
{
    return time && axis.isKnown ? QJsonValue(static_cast<double>(axis.microseconds(*time)) / 1.0e6) : QJsonValue();
}

} // namespace

JsonWriter::JsonWriter(const RecordColumns &columns, const FormatOptions &options, ErrorValues &errors)
    : m_columns(columns)
    , m_options(options)
    , m_errors(errors)
{
}

void JsonWriter::begin(TextBuffer &out, const RecordHead *head, bool)
{
    if (head)
        addObject(out, QStringLiteral("head"), head->toJson(m_columns));
}

void JsonWriter::addScaled(TextBuffer &out, double value)
{
    if (isErrorValue(value)) {
        const ErrorValues::Error &error = m_errors.count(value);
        if (m_options.errors == ErrorStyle::Text)
            out.add(error.json);
        else
            out.add("null");
    } else if (std::isfinite(value)) {
        out.addNumber(value);
    } else {
        out.add("null");
    }
}

void JsonWriter::addFrames(TextBuffer &out, const DataBlock &block, int first, int count)
{
    const FrameTimes times(block, m_axis);
    const int values = block.valuesPerFrame();
    const qint64 number = block.firstFrame();
    for (int frame = first; frame < first + count; ++frame) {
        const auto begin = static_cast<std::ptrdiff_t>(frame) * values;
        const double *scaled = block.scaledData().constData() + begin;
        const qint32 *raw = block.rawData().constData() + begin;
        out.add("{\"frame\":");
        out.addInteger(number + frame);
        out.add(",\"time\":");
        if (times.isKnown(frame))
            out.addSeconds(times.microseconds(frame));
        else
            out.add("null");
        if (m_columns.scaled) {
            out.add(",\"values\":");
            for (int i = 0; i < values; ++i) {
                out.add(i == 0 ? '[' : ',');
                addScaled(out, scaled[i]);
            }
            out.add(']');
        }
        if (m_columns.raw) {
            out.add(",\"raw\":");
            for (int i = 0; i < values; ++i) {
                out.add(i == 0 ? '[' : ',');
                out.addInteger(raw[i]);
                if (!m_columns.scaled && isErrorValue(scaled[i]))
                    m_errors.count(scaled[i]);
            }
            out.add(']');
        }
        out.add("}\n");
    }
}

void JsonWriter::addGap(TextBuffer &out, const DataGap &gap)
{
    addObject(out, QStringLiteral("gap"),
              QJsonObject{{QStringLiteral("run"), gap.run},
                          {QStringLiteral("firstFrame"), gap.firstFrame},
                          {QStringLiteral("frames"), gap.frames ? QJsonValue(*gap.frames) : QJsonValue()},
                          {QStringLiteral("reason"), gapReasonKey(gap.reason)},
                          {QStringLiteral("begin"), seconds(gap.beginTime, m_axis)},
                          {QStringLiteral("end"), seconds(gap.endTime, m_axis)}});
}

std::optional<FrameWriter::Resumption> JsonWriter::resume(QFile &file, QString &problem)
{
    const std::optional<LastLine> last = lastLine(file, problem);
    if (!last)
        return std::nullopt;
    Resumption resumption;
    resumption.end = last->end;
    if (!last->incomplete.isEmpty()) {
        // The incomplete line of a program that was killed cannot be repaired, but is kept.
        resumption.lead = compact({{QStringLiteral("incomplete"), QString::fromUtf8(last->incomplete)}}) + '\n';
        resumption.repair = QStringLiteral("its last line was incomplete and is an object 'incomplete' now");
    }
    constexpr qint64 longest = 1 << 20;
    file.seek(0);
    while (file.pos() < last->end) {
        const QJsonDocument line = QJsonDocument::fromJson(file.readLine(longest));
        if (!line.isObject()) {
            problem = QStringLiteral("it does not consist of JSON objects, one per line");
            return std::nullopt;
        }
        if (!line.object().contains(QStringLiteral("frame")))
            continue;
        problem = misfit(line.object());
        if (!problem.isEmpty())
            return std::nullopt;
        break;
    }
    return resumption;
}

QString JsonWriter::misfit(const QJsonObject &frame) const
{
    const int values = m_columns.frame.signalList().size();
    const auto fits = [&](const char *member, bool isWritten) {
        const QJsonValue value = frame.value(QLatin1String(member));
        return isWritten ? value.isArray() && value.toArray().size() == values : value.isUndefined();
    };
    if (fits("values", m_columns.scaled) && fits("raw", m_columns.raw))
        return {};
    return QStringLiteral("its frames have other values: %1").arg(QString::fromUtf8(compact(frame).left(200)));
}

int JsonWriter::frameSize() const
{
    constexpr int fixed = 50;
    constexpr int value = 18;
    return fixed + value * m_columns.names().size();
}

} // namespace SondixApp
